#include "platform/log/repeated_lines.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vexar::log {
namespace {

std::string_view withoutFinalNewline(std::string_view text) noexcept {
    return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

bool sameText(const char *kept, const char *given) noexcept {
    return kept == given || (kept != nullptr && given != nullptr && std::strcmp(kept, given) == 0);
}

}  // namespace

KeptLine::KeptLine(const LogRecord &record)
    : category(record.category),
      level(record.level),
      source(record.source),
      function(record.function),
      file(record.file),
      line(record.line),
      domain(record.domain),
      text(withoutFinalNewline(record.text)) {}

bool KeptLine::sameAs(const LogRecord &record) const noexcept {
    return record.line == line && record.level == level && record.category == category && record.domain == domain &&
           withoutFinalNewline(record.text) == text && sameText(file, record.file) &&
           sameText(function, record.function) && sameText(source, record.source);
}

std::string RepeatCount::text() const {
    return line.text + " (repeated " + std::to_string(copies) + (copies == 1 ? " time)" : " times)");
}

bool RepeatedLines::admit(const LogRecord &record, Clock::time_point now, std::vector<RepeatCount> &due) {
    expire(now, due);
    const auto found =
        std::find_if(tracked_.begin(), tracked_.end(), [&](const Tracked &each) { return each.line.sameAs(record); });
    if (found != tracked_.end()) {
        ++found->copies;
        return false;
    }
    if (tracked_.size() >= kTracked) {
        forget(std::min_element(tracked_.begin(), tracked_.end(),
                                [](const Tracked &a, const Tracked &b) { return a.windowEnd < b.windowEnd; }),
               due);
    }
    tracked_.push_back({KeptLine(record), now + kWindow, 0});
    return true;
}

void RepeatedLines::expire(Clock::time_point now, std::vector<RepeatCount> &due) {
    for (auto each = tracked_.begin(); each != tracked_.end();) {
        each = each->windowEnd <= now ? forget(each, due) : std::next(each);
    }
}

RepeatedLines::Clock::time_point RepeatedLines::nextDue() const noexcept {
    auto earliest = Clock::time_point::max();
    for (const Tracked &each : tracked_) {
        if (each.copies > 0) earliest = std::min(earliest, each.windowEnd);
    }
    return earliest;
}

auto RepeatedLines::forget(std::vector<Tracked>::iterator tracked, std::vector<RepeatCount> &due)
    -> std::vector<Tracked>::iterator {
    if (tracked->copies > 0) due.push_back({std::move(tracked->line), tracked->copies});
    return tracked_.erase(tracked);
}

}  // namespace vexar::log
