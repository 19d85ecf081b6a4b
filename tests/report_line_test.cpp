// The library's console lines, level names and the millisecond sleep.
#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/captured_stdout.h"
#include "vexar/VexarUtility.h"

using vexar_test::capturedStdout;

namespace {

struct PrintCase {
    const char *message;
    const char *source;
    DDS_Long level;
    const char *printed;
    DDS_Long result;
};

TEST(PrintMessage, PrintsLevelSourceAndTextAsOneLine) {
    const PrintCase cases[] = {
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
        {"", "S", 300, "VX Error: QTV_VX_Vexar_printMessage: Message to print is empty.\n",
         DDS_RETCODE_BAD_PARAMETER},
    };
    for (const PrintCase &c : cases) {
        DDS_Long result = -1;
        const std::string out = capturedStdout([&] { result = QTV_VX_Vexar_printMessage(c.message, c.source, c.level); });
        EXPECT_EQ(out, c.printed);
        EXPECT_EQ(result, c.result) << c.printed;
    }
    const std::string longMessage(100000, 'x');
    EXPECT_EQ(capturedStdout([&] { QTV_VX_Vexar_printMessage(longMessage.c_str(), "Big", 400); }),
              "VX Warning: Big: " + longMessage + "\n");
}

TEST(LevelName, NamesTheEightLevelsAndNothingElse) {
    const std::pair<DDS_Long, const char *> names[] = {
        {100, "VX Fatal"}, {200, "VX Severe"}, {300, "VX Error"}, {400, "VX Warning"}, {500, "VX Notice"},
        {600, "VX Info"},  {700, "VX Debug"},  {800, "VX Trace"}, {0, "VX Silent"},    {-100, "VX Silent"},
        {301, "VX Silent"}, {900, "VX Silent"},
    };
    for (const auto &[level, name] : names) {
        char buffer[QTV_VX_LOG_LEVEL_NAME_SIZE];
        ASSERT_EQ(QTV_VX_translateFromVXLogLevelToString(level, buffer), DDS_RETCODE_OK);
        EXPECT_STREQ(buffer, name) << level;
    }
    EXPECT_EQ(QTV_VX_translateFromVXLogLevelToString(100, nullptr), DDS_RETCODE_BAD_PARAMETER);
}

TEST(UtilitySleep, TakesTheRemainderAsNanoseconds) {
    const auto start = std::chrono::steady_clock::now();
    QTV_VX_Utility_sleep(1999);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::seconds(1));
    // 999 ms more would mean the remainder was taken as milliseconds.
    EXPECT_LT(elapsed, std::chrono::milliseconds(1900));
}

// Lines of concurrent threads must never be cut into each other.
TEST(PrintMessageConcurrency, LinesOfManyThreadsStayWhole) {
    constexpr int kThreads = 4;
    constexpr int kLinesPerThread = 200;
    std::vector<std::string> messages;
    for (int t = 0; t < kThreads; ++t) {
        messages.emplace_back(700 + 300 * t, static_cast<char>('a' + t));
    }
    const std::string out = capturedStdout([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < kLinesPerThread; ++i) {
                    QTV_VX_Vexar_printMessage(messages[t].c_str(), "T", 600);
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
    });
    std::istringstream lines(out);
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        const std::string prefix = "VX Info: T: ";
        ASSERT_EQ(line.compare(0, prefix.size(), prefix), 0) << line.substr(0, 40);
        const std::string body = line.substr(prefix.size());
        ASSERT_FALSE(body.empty());
        ASSERT_EQ(body, messages[body[0] - 'a']);
        ++count;
    }
    EXPECT_EQ(count, kThreads * kLinesPerThread);
}

}  // namespace
