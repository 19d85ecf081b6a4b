// The library's console lines and their level names.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/captured_stdout.h"
#include "vexar/VexarUtility.h"

using vexar_test::capturedStdout;

namespace {

TEST(PrintMessage, PrintsLevelSourceAndTextAsOneLine) {
    const struct {
        const char *message, *source;
        DDS_Long level;
        const char *printed;
        DDS_Long result;
    } cases[] = {
        {"disk full", "Writer_write", 300, "VX Error: Writer_write: disk full\n", DDS_RETCODE_OK},
        // A message that already ends its line gets no second newline.
        {"ready\n", "Start", 600, "VX Info: Start: ready\n", DDS_RETCODE_OK},
        // The echo of a logged message has the empty source.
        {"hello", "", 700, "VX Debug: : hello\n", DDS_RETCODE_OK},
        {"odd", "S", 350, "VX Silent: S: odd\n", DDS_RETCODE_OK},
        {nullptr, "S", 300, "VX Error: QTV_VX_Vexar_printMessage: String passed as parameter is NULL.\n",
         DDS_RETCODE_PRECONDITION_NOT_MET},
        {"text", nullptr, 300, "VX Error: QTV_VX_Vexar_printMessage: String passed as parameter is NULL.\n",
         DDS_RETCODE_PRECONDITION_NOT_MET},
        {"", "S", 300, "VX Error: QTV_VX_Vexar_printMessage: Message to print is empty.\n", DDS_RETCODE_BAD_PARAMETER},
        // The other level names; every other level is Silent.
        {"x", "S", 100, "VX Fatal: S: x\n", DDS_RETCODE_OK},
        {"x", "S", 200, "VX Severe: S: x\n", DDS_RETCODE_OK},
        {"x", "S", 500, "VX Notice: S: x\n", DDS_RETCODE_OK},
        {"x", "S", 800, "VX Trace: S: x\n", DDS_RETCODE_OK},
        {"x", "S", 0, "VX Silent: S: x\n", DDS_RETCODE_OK},
        {"x", "S", 900, "VX Silent: S: x\n", DDS_RETCODE_OK},
    };
    for (const auto &c : cases) {
        DDS_Long result = -1;
        const std::string out =
            capturedStdout([&] { result = QTV_VX_Vexar_printMessage(c.message, c.source, c.level); });
        EXPECT_EQ(out, c.printed);
        EXPECT_EQ(result, c.result) << c.printed;
    }
    EXPECT_EQ(QTV_VX_translateFromVXLogLevelToString(100, nullptr), DDS_RETCODE_BAD_PARAMETER);
    const std::string longMessage(100000, 'x');
    EXPECT_EQ(capturedStdout([&] { QTV_VX_Vexar_printMessage(longMessage.c_str(), "Big", 400); }),
              "VX Warning: Big: " + longMessage + "\n");
}

// Lines of concurrent threads must never be cut into each other: each
// thread prints its own letter, in lines longer than any stdio buffer.
TEST(PrintMessageConcurrency, LinesOfManyThreadsStayWhole) {
    constexpr int kThreads = 4;
    constexpr int kLinesPerThread = 200;
    const std::string out = capturedStdout([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([t] {
                const std::string message(700 + 300 * t, static_cast<char>('a' + t));
                for (int i = 0; i < kLinesPerThread; ++i) QTV_VX_Vexar_printMessage(message.c_str(), "T", 600);
            });
        }
        for (std::thread &thread : threads) thread.join();
    });
    std::istringstream lines(out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const std::string prefix = "VX Info: T: ";
        ASSERT_EQ(line.compare(0, prefix.size(), prefix), 0) << line.substr(0, 40);
        ASSERT_GT(line.size(), prefix.size());
        const int t = line[prefix.size()] - 'a';
        ASSERT_TRUE(t >= 0 && t < kThreads) << line.substr(0, 40);
        ASSERT_EQ(line.substr(prefix.size()), std::string(700 + 300 * t, static_cast<char>('a' + t)));
    }
    EXPECT_EQ(count, kThreads * kLinesPerThread);
}

}  // namespace
