// Runs a piece of code and returns what it printed on standard output.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>

namespace vexar_test {

template <typename Action>
std::string capturedStdout(Action &&action) {
    std::fflush(stdout);
    testing::internal::CaptureStdout();
    std::forward<Action>(action)();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

}  // namespace vexar_test
