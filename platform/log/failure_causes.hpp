// Why a call failed, kept for its caller: the ERROR lines raised on one
// thread while a FailureCauses lives, Cyclone's and ours, whatever the
// verbosity. The logger silences the middleware logger while it builds its
// entities, yet a failed participant must still say what Cyclone said
// ("can't open configuration file ..."); the caller prints these with its
// own failure line.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/log/logger.hpp"

namespace vexar::log {

class FailureCauses {
public:
    // Lines kept at most; the others are only counted.
    static constexpr std::size_t kKept = 8;

    // Collects on the constructing thread until destroyed; the innermost of
    // nested ones collects.
    FailureCauses() noexcept;
    ~FailureCauses();
    FailureCauses(const FailureCauses &) = delete;
    FailureCauses &operator=(const FailureCauses &) = delete;

    // "function: text" (the function when known), oldest first.
    const std::vector<std::string> &lines() const noexcept { return lines_; }
    std::size_t omitted() const noexcept { return omitted_; }

private:
    friend void keepFailureCause(const LogRecord &record) noexcept;

    FailureCauses *outer_;
    std::vector<std::string> lines_;
    std::size_t omitted_ = 0;
};

// Whether this thread collects causes: every producer asks before its
// verbosity gate, for ERROR lines only.
bool collectingFailureCauses() noexcept;

// Keeps `record` in this thread's innermost FailureCauses, if any.
void keepFailureCause(const LogRecord &record) noexcept;

}  // namespace vexar::log
