#include "loss_report.hpp"

#include <ctime>

#include "line_format.hpp"

namespace vexar::cli {
namespace {

constexpr auto kQuietTime = std::chrono::seconds(1);

std::int64_t secondsOf(WallClock::time_point time) {
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

}  // namespace

std::optional<LossNotice> LossCounter::add(std::int64_t lost, WallClock::time_point now) {
    pending_ += lost;
    if (lastNotice_ && now - *lastNotice_ < kQuietTime) return std::nullopt;
    return flush(now);
}

std::optional<LossNotice> LossCounter::flush(WallClock::time_point now) {
    if (pending_ <= 0) return std::nullopt;
    LossNotice notice{pending_, since_};
    pending_ = 0;
    since_ = now;
    lastNotice_ = now;
    return notice;
}

std::string lossLine(const LossNotice &notice, std::string_view command) {
    std::time_t since = static_cast<std::time_t>(secondsOf(notice.since));
    std::tm parts{};
    localtime_r(&since, &parts);
    char clock[16];
    std::strftime(clock, sizeof clock, "%H:%M:%S", &parts);
    const char *noun = notice.count == 1 ? " message" : " messages";
    return "vexar " + std::string(command) + ": lost " + std::to_string(notice.count) + noun + " since " + clock + "\n";
}

std::string lossJson(const LossNotice &notice) {
    auto sinceEpoch = notice.since.time_since_epoch();
    auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count() % 1'000'000'000;
    std::string json = "{\"lost\":" + std::to_string(notice.count) + ",\"since\":";
    json += '"';
    appendUtcTime(json, secondsOf(notice.since), static_cast<std::uint32_t>(nanoseconds));
    json += "\"}\n";
    return json;
}

}  // namespace vexar::cli
