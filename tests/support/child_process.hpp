// Runs a helper program of the test build (tests/helpers/*.cpp) as a
// separate process and waits for it with a time limit. The child inherits
// the environment, so it uses the same loopback Cyclone configuration.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

extern char **environ;

namespace vexar_test {

class ChildProcess {
public:
    // Starts VEXAR_TEST_BIN_DIR/<program> with `arguments`.
    ChildProcess(const std::string &program, std::vector<std::string> arguments) {
        std::string path = std::string(VEXAR_TEST_BIN_DIR) + "/" + program;
        std::vector<char *> argv{path.data()};
        for (std::string &argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        if (posix_spawn(&pid_, path.c_str(), nullptr, nullptr, argv.data(), environ) != 0) pid_ = -1;
    }
    ~ChildProcess() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    bool started() const { return pid_ > 0; }

    // Sends `signal` (SIGSTOP, SIGCONT: a subscriber that stalls) to the child.
    bool signal(int signal) const { return pid_ > 0 && kill(pid_, signal) == 0; }

    // The exit status, or -1 when the child did not exit normally within
    // `timeout` (it is then killed).
    int wait(std::chrono::milliseconds timeout) {
        if (pid_ <= 0) return -1;
        auto deadline = std::chrono::steady_clock::now() + timeout;
        int status = 0;
        while (waitpid(pid_, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) return -1;  // the destructor kills it
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t pid_ = -1;
};

}  // namespace vexar_test
