// Ends the process when a test does not finish in time: a deadlock would
// otherwise hang the suite until ctest's own time-out, without a word.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>

namespace vexar_test {

class Watchdog {
public:
    Watchdog(std::string name, std::chrono::seconds limit)
        : thread_([name = std::move(name), limit, done = finished_.get_future()] {
              if (done.wait_for(limit) == std::future_status::ready) return;
              std::fprintf(stderr, "%s: no end within %lld s, deadlock?\n", name.c_str(),
                           static_cast<long long>(limit.count()));
              std::_Exit(3);
          }) {}
    ~Watchdog() {
        finished_.set_value();
        thread_.join();
    }
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

private:
    std::promise<void> finished_;
    std::thread thread_;
};

}  // namespace vexar_test
