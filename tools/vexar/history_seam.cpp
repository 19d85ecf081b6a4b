#include "history_seam.hpp"

#include <functional>
#include <string_view>

namespace vexar::cli {

HistorySeam::Key HistorySeam::keyOf(const LogLine &line) {
    std::int64_t time = line.seconds * 1000000000 + line.nanoseconds;
    return {line.app, line.level, time, std::hash<std::string_view>{}(line.message)};
}

void HistorySeam::printed(const LogLine &line) {
    Key key = keyOf(line);
    printed_.insert(key);
    auto [latest, added] = latest_.try_emplace(line.app, std::get<2>(key));
    if (!added && latest->second < std::get<2>(key)) latest->second = std::get<2>(key);
}

bool HistorySeam::covers(const LogLine &line) const {
    Key key = keyOf(line);
    if (std::get<2>(key) < start_) return true;
    auto latest = latest_.find(line.app);
    if (latest == latest_.end()) return false;
    return std::get<2>(key) <= latest->second && printed_.contains(key);
}

}  // namespace vexar::cli
