#include "platform/log/failure_causes.hpp"

#include <new>
#include <string_view>

namespace vexar::log {
namespace {

thread_local FailureCauses *tInnermost = nullptr;

std::string causeText(const LogRecord &record) {
    std::string_view text = record.text;
    if (text.ends_with('\n')) text.remove_suffix(1);
    std::string cause;
    if (record.function != nullptr && record.function[0] != '\0') cause.append(record.function).append(": ");
    return cause.append(text);
}

}  // namespace

FailureCauses::FailureCauses() noexcept : outer_(tInnermost) { tInnermost = this; }

FailureCauses::~FailureCauses() { tInnermost = outer_; }

bool collectingFailureCauses() noexcept { return tInnermost != nullptr; }

void keepFailureCause(const LogRecord &record) noexcept {
    FailureCauses *causes = tInnermost;
    if (causes == nullptr || record.level != OBLX_CONFIG_LOG_LEVEL_ERROR) return;
    if (causes->lines_.size() >= FailureCauses::kKept) {
        ++causes->omitted_;
        return;
    }
    try {
        causes->lines_.push_back(causeText(record));
    } catch (const std::bad_alloc &) {
        ++causes->omitted_;
    }
}

}  // namespace vexar::log
