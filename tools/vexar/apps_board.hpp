// The loggers as `vexar web` shows them: the DDS thread posts the latest
// records and when each application last logged; the HTTP threads read a
// consistent copy.
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>

#include "apps_table.hpp"
#include "line_format.hpp"

namespace vexar::cli {

class AppsBoard {
public:
    using Clock = std::chrono::steady_clock;

    void replace(const std::map<AppId, AppRecord> &records);
    void messagesFrom(std::span<const LogLine> lines, Clock::time_point now);

    std::optional<AppRecord> find(AppId id) const;
    // A JSON array of the loggers, each as web_json's appJson.
    std::string json(Clock::time_point now) const;

private:
    mutable std::mutex mutex_;
    std::map<AppId, AppRecord> records_;
    std::map<AppId, Clock::time_point> lastMessage_;
};

}  // namespace vexar::cli
