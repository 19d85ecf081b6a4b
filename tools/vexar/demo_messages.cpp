#include "demo_messages.hpp"

#include <iterator>

#include "vexar/VexarUtility.h"

namespace vexar::cli {
namespace {

struct Event {
    const char *category;
    const char *text;  // %N is replaced by a number that varies per message
};

constexpr Event kInfoEvents[] = {
    {"net.http", "GET /api/v1/status 200 in %N ms"},
    {"net.http", "POST /api/v1/jobs 201 in %N ms"},
    {"sched", "job %N started"},
    {"sched", "job %N finished"},
    {"auth", "session %N renewed"},
    {"db.pool", "checkpoint %N written"},
};
constexpr Event kDebugEvents[] = {
    {"db.pool", "connection %N returned to the pool"},
    {"cache", "hit for key user:%N"},
    {"net.http", "keep-alive socket %N reused"},
    {"sched", "queue depth %N"},
};
constexpr Event kNoticeEvents[] = {{"cache", "cache of %N entries refreshed"}, {"auth", "operator %N logged in"}};
constexpr Event kWarningEvents[] = {{"db.pool", "slow query: %N ms (limit 500 ms)"},
                                    {"net.http", "upstream timeout, retrying (attempt %N of 5)"}};
constexpr Event kErrorEvents[] = {{"net.http", "upstream refused connection %N: connection reset by peer"}};

// Spreads consecutive indices over [0, 1000) without visible pattern.
std::uint64_t permille(std::uint64_t index) {
    std::uint64_t x = index + 0x9e3779b97f4a7c15ull;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
    return (x ^ (x >> 31)) % 1000;
}

template <std::size_t N>
DemoMessage fromEvents(std::int32_t level, const Event (&events)[N], std::uint64_t index) {
    const Event &event = events[index % N];
    std::string text = event.text;
    std::size_t at = text.find("%N");
    if (at != std::string::npos) text.replace(at, 2, std::to_string(10 + (index * 7919) % 990));
    return {level, event.category, std::move(text)};
}

constexpr std::uint64_t kLongHealthyEvery = 600;

std::string longConfigurationText(std::uint64_t index) {
    std::string text = "configuration reloaded (generation " + std::to_string(index / kLongHealthyEvery) + "):";
    const char *settings[] = {"listen=0.0.0.0:8080", "workers=8",
                              "queue.size=4096",     "db.pool.min=4",
                              "db.pool.max=32",      "cache.ttl=300s",
                              "upstream.timeout=2s", "upstream.retries=5",
                              "log.level=INFO",      "tls.certificate=/etc/service/tls/server.pem"};
    for (const char *setting : settings) text += std::string(" ") + setting;
    return text;
}

}  // namespace

DemoMessage healthyDemoMessage(std::uint64_t index) {
    if (index % kLongHealthyEvery == kLongHealthyEvery / 2) {
        return {QTV_VX_LOG_LEVEL_INFO, "config", longConfigurationText(index)};
    }
    std::uint64_t draw = permille(index);
    if (index > 0 && draw < 2) return fromEvents(QTV_VX_LOG_LEVEL_ERROR, kErrorEvents, index);
    if (index > 0 && draw < 25) return fromEvents(QTV_VX_LOG_LEVEL_WARNING, kWarningEvents, index);
    if (draw < 50) return fromEvents(QTV_VX_LOG_LEVEL_NOTICE, kNoticeEvents, index);
    if (draw < 600) return fromEvents(QTV_VX_LOG_LEVEL_INFO, kInfoEvents, index);
    return fromEvents(QTV_VX_LOG_LEVEL_DEBUG, kDebugEvents, index);
}

DemoMessage everyLevelDemoMessage(std::uint64_t index) {
    static constexpr std::int32_t kLevels[] = {100, 200, 300, 400, 500, 600, 700, 800};
    static constexpr const char *kCategories[] = {"", "net", "db", "ui", "sched"};
    static constexpr const char *kEvents[] = {"connection accepted",    "cache refreshed",        "request served",
                                              "retrying after timeout", "configuration reloaded", "queue drained",
                                              "checkpoint written"};
    constexpr std::uint64_t kLongEvery = 50;
    std::string text = "message " + std::to_string(index) + ": " + kEvents[index % std::size(kEvents)];
    if (index % kLongEvery == 0) {
        text += " (a long one:";
        while (text.size() < 1500) text += " the quick brown fox jumps over the lazy dog";
        text += ")";
    }
    return {kLevels[index % std::size(kLevels)], kCategories[index % std::size(kCategories)], std::move(text)};
}

}  // namespace vexar::cli
