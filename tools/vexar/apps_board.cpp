#include "apps_board.hpp"

#include "web_json.hpp"

namespace vexar::cli {

void AppsBoard::replace(const std::map<AppId, AppRecord> &records) {
    std::lock_guard lock(mutex_);
    records_ = records;
}

void AppsBoard::messagesFrom(std::span<const LogLine> lines, Clock::time_point now) {
    std::lock_guard lock(mutex_);
    for (const LogLine &line : lines) lastMessage_[line.app] = now;
}

std::optional<AppRecord> AppsBoard::find(AppId id) const {
    std::lock_guard lock(mutex_);
    auto found = records_.find(id);
    if (found == records_.end()) return std::nullopt;
    return found->second;
}

std::string AppsBoard::json(Clock::time_point now) const {
    std::lock_guard lock(mutex_);
    std::string out = "[";
    for (const auto &[id, record] : records_) {
        if (out.size() > 1) out += ',';
        std::optional<double> ago;
        if (auto last = lastMessage_.find(id); last != lastMessage_.end()) {
            ago = std::chrono::duration<double>(now - last->second).count();
        }
        out += appJson(record, ago);
    }
    return out + "]";
}

}  // namespace vexar::cli
