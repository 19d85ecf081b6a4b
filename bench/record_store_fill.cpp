// Fills a log database through the recorder's own store, without DDS, for
// scripts/bench-record.sh: N messages from 20 applications (kinds kind00 ..
// kind19) spread evenly over the last DAYS days up to now, at every level,
// with texts drawn from a fixed vocabulary (word000 .. word999, the lower
// numbers far more frequent), committed in batches as the recorder does.
//
//   record_store_fill PATH MESSAGES [DAYS]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "log_store.hpp"
#include "time_text.hpp"

namespace {

using vexar::cli::AppId;
using vexar::cli::StoredMessage;
using vexar::cli::StoredState;

constexpr int kApps = 20;
constexpr std::size_t kBatch = 50000;
constexpr std::int32_t kLevels[] = {100, 200, 300, 400, 500, 600, 700, 800};
constexpr const char *kCategories[] = {"", "net", "db", "ui", "sched"};

std::vector<StoredState> statesOfApps(std::int64_t now) {
    std::vector<StoredState> states;
    for (int app = 0; app < kApps; ++app) {
        StoredState state;
        state.record.id = AppId{0x01100000 + app, 0x2000 + app};
        char kind[16];
        std::snprintf(kind, sizeof kind, "kind%02d", app);
        state.record.kind = kind;
        state.receivedTime = now;
        states.push_back(state);
    }
    return states;
}

// About 8 words; word k is drawn with a weight falling as 1/(k+1).
std::string textOf(std::mt19937_64 &random, std::uint64_t index) {
    static std::discrete_distribution<int> words = [] {
        std::vector<double> weights(1000);
        for (std::size_t k = 0; k < weights.size(); ++k) weights[k] = 1.0 / double(k + 1);
        return std::discrete_distribution<int>(weights.begin(), weights.end());
    }();
    std::string text = "event " + std::to_string(index) + ":";
    char word[16];
    for (int i = 0; i < 8; ++i) {
        std::snprintf(word, sizeof word, " word%03d", words(random));
        text += word;
    }
    return text;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s PATH MESSAGES [DAYS]\n", argv[0]);
        return 2;
    }
    std::int64_t messages = std::atoll(argv[2]);
    double days = argc > 3 ? std::atof(argv[3]) : 7.0;
    std::int64_t now = vexar::cli::wallClockNow();
    std::int64_t span = static_cast<std::int64_t>(days * 86400e9);
    std::int64_t step = span / messages;
    try {
        vexar::cli::LogStore store(argv[1]);
        std::vector<StoredState> states = statesOfApps(now);
        std::vector<StoredMessage> batch;
        std::mt19937_64 random(15);
        auto start = std::chrono::steady_clock::now();
        for (std::int64_t i = 0; i < messages; ++i) {
            StoredMessage message;
            message.sourceTime = now - span + i * step;
            message.receivedTime = message.sourceTime + 1000000;
            message.app = states[static_cast<std::size_t>(random() % kApps)].record.id;
            message.level = kLevels[random() % 8];
            message.category = kCategories[random() % 5];
            message.text = textOf(random, static_cast<std::uint64_t>(i));
            batch.push_back(std::move(message));
            if (batch.size() == kBatch || i + 1 == messages) {
                store.write(batch, states);
                states.clear();
                batch.clear();
            }
        }
        double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        std::printf("fill: %lld messages stored in %.1f s (%.0f/s through the store)\n",
                    static_cast<long long>(messages), seconds, double(messages) / seconds);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "record_store_fill: %s\n", error.what());
        return 1;
    }
    return 0;
}
