// The middleware logger: verbosity gate, print formats, output devices, the
// misuse reports and Cyclone's own diagnostics flowing through it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <dds/ddsrt/log.h>

#include "platform/dds/cyclone.hpp"
#include "platform/log/cyclone_log_sink.hpp"
#include "platform/log/failure_causes.hpp"
#include "platform/log/log_line_format.hpp"
#include "platform/log/logger.h"
#include "platform/log/repeated_lines.hpp"
#include "platform/log/report.h"
#include "support/captured_stdout.h"
#include "support/domains.h"

using vexar_test::capturedStdout;

namespace {

struct Line {
    std::string text;
    OBLX_Config_LogLevel level;
};

// An output device that keeps every line it is given, counts its closes and
// the writes that overlapped or followed one.
class RecordingDevice {
public:
    OBLX_Config_LoggerDevice *device() { return &device_; }

    std::vector<Line> lines() const {
        std::lock_guard lock(mutex_);
        return lines_;
    }
    std::string text() const {
        std::string all;
        for (const Line &line : lines()) all += line.text;
        return all;
    }
    const Line *find(std::string_view fragment) const {
        std::lock_guard lock(mutex_);
        const auto found = std::find_if(lines_.begin(), lines_.end(), [&](const Line &line) {
            return line.text.find(fragment) != std::string::npos;
        });
        return found != lines_.end() ? &*found : nullptr;
    }
    void clear() {
        std::lock_guard lock(mutex_);
        lines_.clear();
    }
    int closes() const { return closes_.load(); }
    int writesAfterClose() const { return writesAfterClose_.load(); }

private:
    static RecordingDevice &of(OBLX_Config_LoggerDevice *device) {
        return *static_cast<RecordingDevice *>(device->device_data);
    }
    static void write(OBLX_Config_LoggerDevice *device, const OBLX_Config_LogMessage *message) {
        RecordingDevice &self = of(device);
        if (self.closes_ > 0) ++self.writesAfterClose_;
        std::this_thread::yield();  // widen the window in which a swap can overlap the write
        if (self.closes_ > 0) ++self.writesAfterClose_;
        std::lock_guard lock(self.mutex_);
        self.lines_.push_back({message->text, message->level});
    }
    static void close(OBLX_Config_LoggerDevice *device) { ++of(device).closes_; }

    OBLX_Config_LoggerDevice device_{this, &RecordingDevice::write, &RecordingDevice::close};
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
    std::atomic<int> closes_{0};
    std::atomic<int> writesAfterClose_{0};
};

// Records everything the logger writes during a test, then restores the defaults.
class MiddlewareLogger : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, recorder.device())); }
    void TearDown() override {
        OBLX_Config_Logger_set_output_device(logger, nullptr);
        OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_ERROR);
        OBLX_Config_Logger_set_print_format(logger, OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT);
    }

    void setVerbosity(OBLX_Config_LogCategory category, OBLX_Config_LogVerbosity verbosity) {
        OBLX_Config_Logger_set_verbosity_by_category(logger, category, verbosity);
    }
    static void log(OBLX_Config_LogCategory category, OBLX_Config_LogLevel level, const char *text) {
        OBLX_Config_Logger_log(category, level, "producer", __FILE__, __LINE__, "%s", text);
    }

    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    RecordingDevice recorder;
};

TEST_F(MiddlewareLogger, LevelPassesWhenItsBitIsInTheCategoryVerbosity) {
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_ERROR, "api error");
    log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_WARNING, "api warning");
    log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL, "api status");
    log(OBLX_CONFIG_LOG_CATEGORY_PLATFORM, OBLX_CONFIG_LOG_LEVEL_WARNING, "platform warning");
    // A verbosity is a set of levels, not a threshold.
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_DATABASE, static_cast<OBLX_Config_LogVerbosity>(0x04));
    log(OBLX_CONFIG_LOG_CATEGORY_DATABASE, OBLX_CONFIG_LOG_LEVEL_ERROR, "database error");
    log(OBLX_CONFIG_LOG_CATEGORY_DATABASE, OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL, "database status");
    // Levels outside 1..5 have no bit.
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_ENTITIES, OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    log(OBLX_CONFIG_LOG_CATEGORY_ENTITIES, static_cast<OBLX_Config_LogLevel>(0), "level 0");
    log(OBLX_CONFIG_LOG_CATEGORY_ENTITIES, static_cast<OBLX_Config_LogLevel>(6), "level 6");

    const std::vector<Line> lines = recorder.lines();
    ASSERT_EQ(lines.size(), 3u) << recorder.text();
    EXPECT_EQ(lines[0].text, "ERROR API producer: api error\n");
    EXPECT_EQ(lines[0].level, OBLX_CONFIG_LOG_LEVEL_ERROR);
    EXPECT_EQ(lines[1].text, "WARNING API producer: api warning\n");
    EXPECT_EQ(lines[1].level, OBLX_CONFIG_LOG_LEVEL_WARNING);
    EXPECT_EQ(lines[2].text, "STATUS_LOCAL DATABASE producer: database status\n");
}

TEST_F(MiddlewareLogger, CategoryAllAndSetVerbosityReachEveryCategoryAndABadOneNone) {
    const auto expectEveryCategory = [&](OBLX_Config_LogVerbosity expected) {
        for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category)
            EXPECT_EQ(
                OBLX_Config_Logger_get_verbosity_by_category(logger, static_cast<OBLX_Config_LogCategory>(category)),
                expected);
    };
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_ALL, OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE);
    setVerbosity(static_cast<OBLX_Config_LogCategory>(6), OBLX_CONFIG_LOG_VERBOSITY_SILENT);
    expectEveryCategory(OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE);
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    expectEveryCategory(OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    EXPECT_NE(recorder.find("OBLX_Config_Logger_set_verbosity_by_category: bad parameter: category"), nullptr)
        << recorder.text();
}

// Reports whose text other tests already see in context are left out.
TEST_F(MiddlewareLogger, ReportsRaiseOneApiErrorLineNamingTheirContext) {
    // Each report and its line after "ERROR API ".
    const std::pair<std::function<void()>, const char *> cases[] = {
        {[] { OBLX_Report_badParameter("Seq_copy", nullptr); }, "Seq_copy: bad parameter: (null)\n"},
        {[] { OBLX_Report_assertionFailure("Seq_get", "index out"); }, "Seq_get: assertion failure: index out\n"},
        {[] { OBLX_Report_insufficientSpace("Copy", 4, 8); }, "Copy: insufficient space: 4 available, 8 requested\n"},
        {[] { OBLX_Report_allocationFailure("Seq_grow", 120); }, "Seq_grow: memory allocation of 120 bytes failed\n"},
        {[] { OBLX_Report_setFailure("Seq_set_length", "length"); }, "Seq_set_length: set failure: length\n"},
        {[] { OBLX_Report_getFailure("Seq_loan", "token (NULL)"); }, "Seq_loan: get failure: token (NULL)\n"},
    };
    for (const auto &[report, line] : cases) {
        recorder.clear();
        report();
        const std::vector<Line> lines = recorder.lines();
        ASSERT_EQ(lines.size(), 1u) << line;
        EXPECT_EQ(lines[0].text, std::string("ERROR API ") + line);
        EXPECT_EQ(lines[0].level, OBLX_CONFIG_LOG_LEVEL_ERROR);
    }

    recorder.clear();
    OBLX_Report_memoryAllocated("Seq_set_maximum", 4, 8);
    EXPECT_EQ(recorder.text(), "") << "a note needs STATUS_LOCAL";
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL);
    OBLX_Report_memoryAllocated("Seq_set_maximum", 4, 8);
    EXPECT_EQ(recorder.text(), "STATUS_LOCAL API Seq_set_maximum: memory allocated: from 4 to 8 elements\n");
}

// The record and stamp that the format cases render; TZ=UTC pins the timestamp.
class MiddlewareLoggerFormat : public testing::Test {
protected:
    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
    }

    // category, level, source, function, file, line, domain, text
    vexar::log::LogRecord record{OBLX_CONFIG_LOG_CATEGORY_ENTITIES,
                                 OBLX_CONFIG_LOG_LEVEL_WARNING,
                                 "discovery",
                                 "match",
                                 "/build/src/ddsi_endpoint.c",
                                 42,
                                 7,
                                 "no match\n"};
    vexar::log::LineStamp stamp{{0, 123456789}, 77, "recv"};
};

TEST_F(MiddlewareLoggerFormat, NamedFormatsShowTheirFieldsInOrder) {
    const struct {
        OBLX_Config_LogPrintFormat format;
        const char *line;
    } cases[] = {
        {OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT, "WARNING ENTITIES match: no match\n"},
        {OBLX_CONFIG_LOG_PRINT_FORMAT_TIMESTAMPED, "1970-01-01 00:00:00.123456 WARNING ENTITIES match: no match\n"},
        {OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE,
         "[pid 77] [domain 7] WARNING ENTITIES match ddsi_endpoint.c:42: no match\n"},
        {OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE_TIMESTAMPED,
         "1970-01-01 00:00:00.123456 [pid 77] [domain 7] WARNING ENTITIES match ddsi_endpoint.c:42: no match\n"},
        {OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG,
         "[thread recv] [domain 7] W (discovery) match ddsi_endpoint.c:42: no match\n"},
        {OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL, "W ENTITIES: no match\n"},
        {OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL,
         "1970-01-01 00:00:00.123456 [pid 77] [thread recv] [domain 7] WARNING ENTITIES (discovery) match "
         "ddsi_endpoint.c:42: no match\n"},
    };
    for (const auto &c : cases) EXPECT_EQ(vexar::log::formatLogLine(record, c.format, stamp), c.line);
}

TEST_F(MiddlewareLoggerFormat, FieldsThatAreNotKnownAreLeftOut) {
    record.source = nullptr;
    record.function = "";
    record.file = nullptr;
    record.domain = vexar::log::kNoDomain;
    EXPECT_EQ(vexar::log::formatLogLine(record, OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL, stamp),
              "1970-01-01 00:00:00.123456 [pid 77] [thread recv] WARNING ENTITIES: no match\n");
    EXPECT_EQ(vexar::log::formatLogLine(record, static_cast<OBLX_Config_LogPrintFormat>(0), stamp), "no match\n");
}

// Lines go to the installed device, else to stdout; a device is closed once,
// when replaced, and never when installed again or when a bad one is refused.
TEST(MiddlewareLoggerDevice, LinesGoToTheInstalledDeviceWhichIsClosedOnceWhenReplaced) {
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    RecordingDevice first;
    RecordingDevice second;
    const auto logError = [](const char *text) {
        OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_ERROR, "f", nullptr, 0, "%s", text);
    };
    EXPECT_EQ(capturedStdout([&] { logError("before"); }), "ERROR API f: before\n");

    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, first.device()));
    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, first.device()));
    EXPECT_EQ(capturedStdout([&] { logError("during"); }), "");
    EXPECT_EQ(first.text(), "ERROR API f: during\n");
    OBLX_Config_LoggerDevice withoutWrite{nullptr, nullptr, nullptr};
    EXPECT_FALSE(OBLX_Config_Logger_set_output_device(logger, &withoutWrite));
    EXPECT_EQ(OBLX_Config_Logger_get_output_device(logger), first.device());
    EXPECT_NE(first.find("bad parameter: device"), nullptr);
    EXPECT_EQ(first.closes(), 0);

    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, second.device()));
    EXPECT_EQ(first.closes(), 1);
    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, nullptr));
    EXPECT_EQ(first.closes(), 1);
    EXPECT_EQ(second.closes(), 1);
    EXPECT_EQ(capturedStdout([&] { logError("after"); }), "ERROR API f: after\n");
    EXPECT_EQ(second.text(), "");
}

// A device whose write raises another line must not be called for it again.
TEST(MiddlewareLoggerDevice, LineRaisedInsideADeviceWriteGoesToStdout) {
    OBLX_Config_LoggerDevice device{nullptr,
                                    [](OBLX_Config_LoggerDevice *, const OBLX_Config_LogMessage *) {
                                        OBLX_Report_failure("nestedWrite", "inside the device");
                                    },
                                    nullptr};
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, &device));
    const std::string printed = capturedStdout([] { OBLX_Report_failure("outer", "line"); });
    OBLX_Config_Logger_set_output_device(logger, nullptr);
    EXPECT_EQ(printed, "ERROR API nestedWrite: failure: inside the device\n");
}

// Cyclone's own diagnostics, provoked through domain configurations that
// stay on the loopback interface.
constexpr const char *kUnknownElementConfig =
    "<General><Interfaces><NetworkInterface name=\"lo\"/></Interfaces></General><VexarUnknownElement/>";
constexpr const char *kDeprecatedElementConfig =
    "<General><NetworkInterfaceAddress>lo</NetworkInterfaceAddress></General>";
constexpr const char *kDiscoveryTracingConfig =
    "<General><Interfaces><NetworkInterface name=\"lo\" multicast=\"true\"/></Interfaces></General>"
    "<Tracing><Category>discovery</Category><OutputFile>/dev/null</OutputFile></Tracing>";

TEST_F(MiddlewareLogger, CycloneDiagnosticsFollowTheVerbosity) {
    const dds_domainid_t domain = vexar_test::domains::kPlatformSmoke + 1;
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_SILENT);
    EXPECT_LT(dds_create_domain(domain, kUnknownElementConfig), 0);
    EXPECT_TRUE(recorder.lines().empty()) << recorder.text();

    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    EXPECT_LT(dds_create_domain(domain, kUnknownElementConfig), 0);
    const Line *error = recorder.find("VexarUnknownElement: unknown element");
    ASSERT_NE(error, nullptr) << recorder.text();
    EXPECT_EQ(error->level, OBLX_CONFIG_LOG_LEVEL_ERROR);
    EXPECT_EQ(error->text.rfind("ERROR PLATFORM cfg_note: config: ", 0), 0u) << error->text;

    const auto createDeprecated = [&] {
        const dds_entity_t created = dds_create_domain(domain, kDeprecatedElementConfig);
        ASSERT_GT(created, 0) << dds_strretcode(created);
        EXPECT_EQ(dds_delete(created), 0);
    };
    createDeprecated();
    EXPECT_EQ(recorder.find("deprecated element"), nullptr) << "a warning needs WARNING verbosity";
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    ASSERT_TRUE(OBLX_Config_Logger_set_print_format(logger, OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE));
    // A format with unknown bits is refused and the installed one shapes the lines.
    EXPECT_FALSE(OBLX_Config_Logger_set_print_format(logger, static_cast<OBLX_Config_LogPrintFormat>(0x40)));
    createDeprecated();
    const Line *warning = recorder.find("deprecated element");
    ASSERT_NE(warning, nullptr) << recorder.text();
    EXPECT_EQ(warning->level, OBLX_CONFIG_LOG_LEVEL_WARNING);
    const std::string expectedFields =
        "[domain " + std::to_string(domain) + "] WARNING PLATFORM cfg_note ddsi_config.c:";
    EXPECT_NE(warning->text.find(expectedFields), std::string::npos) << warning->text;
}

// Trace lines exist only in a domain configured for tracing; the logger's
// verbosity then decides at run time which of them are kept.
TEST_F(MiddlewareLogger, TracedDomainDiscoveryLinesFollowCommunicationVerbosity) {
    const dds_domainid_t domainId = vexar_test::domains::kPlatformSmoke + 3;
    const dds_entity_t domain = dds_create_domain(domainId, kDiscoveryTracingConfig);
    ASSERT_GT(domain, 0) << dds_strretcode(domain);
    ASSERT_TRUE(OBLX_Config_Logger_set_print_format(
        logger, static_cast<OBLX_Config_LogPrintFormat>(OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT |
                                                        OBLX_CONFIG_LOG_PRINT_BIT_SOURCE)));

    dds_entity_t participant = dds_create_participant(domainId, nullptr, nullptr);
    ASSERT_GT(participant, 0);
    dds_delete(participant);
    EXPECT_EQ(recorder.find("(discovery)"), nullptr) << recorder.text();

    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE);
    participant = dds_create_participant(domainId, nullptr, nullptr);
    ASSERT_GT(participant, 0);
    dds_delete(participant);
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    dds_delete(domain);
    const Line *line = recorder.find("STATUS_REMOTE COMMUNICATION (discovery)");
    ASSERT_NE(line, nullptr) << recorder.text();
    EXPECT_EQ(line->level, OBLX_CONFIG_LOG_LEVEL_STATUS_REMOTE);
}

// Errors are kept as causes even while silenced, by the innermost collector
// of this thread only, up to its limit.
TEST_F(MiddlewareLogger, FailureCausesKeepThisThreadsErrorsWhateverTheVerbosity) {
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_SILENT);
    vexar::log::FailureCauses outer;
    OBLX_Report_failure("outer_call", "refused");
    {
        vexar::log::FailureCauses inner;
        for (size_t error = 0; error < vexar::log::FailureCauses::kKept + 2; ++error) {
            OBLX_Report_badParameter("inner_call", "self");
        }
        log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_WARNING, "a warning is no cause");
        std::thread([] { OBLX_Report_failure("other_thread", "not ours"); }).join();
        ASSERT_EQ(inner.lines().size(), vexar::log::FailureCauses::kKept);
        EXPECT_EQ(inner.lines()[0], "inner_call: bad parameter: self");
        EXPECT_EQ(inner.omitted(), 2u);
    }
    EXPECT_EQ(outer.lines(), std::vector<std::string>{"outer_call: failure: refused"});
    EXPECT_TRUE(recorder.lines().empty()) << recorder.text();
}

// Texts that Cyclone 0.10.2 raised for datagrams sent to its ports: a sender
// decides how many, so none may be an error here.
TEST(CycloneLineClassification, InputFromTheNetworkIsACommunicationWarning) {
    const struct {
        uint32_t priority;
        const char *file;
        const char *text;
        OBLX_Config_LogCategory category;
        OBLX_Config_LogLevel level;
    } cases[] = {
        {DDS_LC_ERROR, "src/ddsi_udp.c", "UDP recvmsg sock 5: ret 0 retcode 0", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION,
         OBLX_CONFIG_LOG_LEVEL_WARNING},
        {DDS_LC_WARNING, "src/q_receive.c",
         "malformed packet received from vendor 153.153 state parse:INFO_TS <52545053 02019999> smid 0x9",
         OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_WARNING},
        {DDS_LC_WARNING, "src/ddsi_plist.c", "plist(vendor 50.133): quickscan: parameter length 45316 out of bounds",
         OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_WARNING},
        {DDS_LC_WARNING, "src/ddsi_serdata_plist.c",
         "Invalid ParticipantBuiltinTopicData (vendor 1.16): invalid qos/parameters",
         OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_WARNING},
        {DDS_LC_WARNING | DDS_LC_DISCOVERY, "src/q_ddsi_discovery.c",
         "data(builtin, vendor 1.16): 110545b:b69444a8:209caa13:100c2 #2: deserialization failed",
         OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_WARNING},
        // A failing socket is this process's own error; a trace line stays a trace line.
        // (Configuration lines: CycloneDiagnosticsFollowTheVerbosity.)
        {DDS_LC_ERROR, "src/ddsi_udp.c", "UDP recvmsg sock 5: ret -1 retcode -1",
         OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_ERROR},
        {DDS_LC_TRACE, "src/q_receive.c",
         "data(application, vendor 1.16): 1:2:3:102 #372: deserialization qtv/vexar failed (for reasons unknown)",
         OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_DEBUG},
    };
    for (const auto &c : cases) {
        const vexar::log::CycloneLineOrigin origin = vexar::log::classifyCycloneLine(c.priority, c.file, c.text);
        EXPECT_EQ(origin.category, c.category) << c.text;
        EXPECT_EQ(origin.level, c.level) << c.text;
    }
}

std::chrono::milliseconds repeatedLinesWindow() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(vexar::log::RepeatedLines::kWindow);
}

vexar::log::LogRecord cycloneRecord(const char *text, int line = 120) {
    return {OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION,
            OBLX_CONFIG_LOG_LEVEL_WARNING,
            "error",
            "ddsi_udp_conn_read",
            "ddsi_udp.c",
            line,
            vexar::log::kNoDomain,
            text};
}

TEST(RepeatedLines, CopiesWithinTheWindowAreCountedAndTheCountFallsDueWhenItEnds) {
    using std::chrono::milliseconds;
    using vexar::log::RepeatCount;
    using vexar::log::RepeatedLines;
    RepeatedLines lines;
    std::vector<RepeatCount> due;
    const RepeatedLines::Clock::time_point start{};
    EXPECT_TRUE(lines.admit(cycloneRecord("sock 5\n"), start, due));
    EXPECT_FALSE(lines.admit(cycloneRecord("sock 5"), start + milliseconds(10), due));  // the newline is no difference
    EXPECT_TRUE(lines.admit(cycloneRecord("sock 6"), start + milliseconds(20), due));
    EXPECT_TRUE(lines.admit(cycloneRecord("sock 5", 121), start + milliseconds(30), due));
    EXPECT_FALSE(lines.admit(cycloneRecord("sock 5"), start + milliseconds(999), due));
    EXPECT_EQ(lines.nextDue(), start + RepeatedLines::kWindow);
    lines.expire(start + milliseconds(999), due);
    EXPECT_TRUE(due.empty());

    // The window ends with the first line's second: the count falls due, and
    // the next copy is written again.
    lines.expire(start + RepeatedLines::kWindow, due);
    ASSERT_EQ(due.size(), 1u);
    EXPECT_EQ(due[0].text(), "sock 5 (repeated 2 times)");
    EXPECT_EQ(due[0].line.record().line, 120);
    EXPECT_EQ(lines.nextDue(), RepeatedLines::Clock::time_point::max());  // "sock 6" had no copy
    EXPECT_TRUE(lines.admit(cycloneRecord("sock 5"), start + RepeatedLines::kWindow, due));

    // More distinct lines than are tracked: the oldest is forgotten, and its
    // count falls due at once rather than being lost.
    due.clear();
    RepeatedLines crowded;
    EXPECT_TRUE(crowded.admit(cycloneRecord("first"), start, due));
    EXPECT_FALSE(crowded.admit(cycloneRecord("first"), start, due));
    for (size_t other = 0; other < RepeatedLines::kTracked; ++other) {
        crowded.admit(cycloneRecord(("other " + std::to_string(other)).c_str()), start + milliseconds(1), due);
    }
    ASSERT_EQ(due.size(), 1u);
    EXPECT_EQ(due[0].text(), "first (repeated 1 time)");
}

// Through Cyclone's own log call: a flood of one line becomes the line and,
// once its second has passed, a count, although no later line arrives.
TEST_F(MiddlewareLogger, RepeatedCycloneLinesReachTheDeviceAsTheFirstAndACount) {
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    for (int copy = 0; copy < 500; ++copy) {
        dds_log(DDS_LC_ERROR, "src/core/ddsi/src/ddsi_udp.c", 120, "ddsi_udp_conn_read",
                "UDP recvmsg sock 77: ret 0 retcode 0\n");
    }
    EXPECT_EQ(recorder.text(), "WARNING COMMUNICATION ddsi_udp_conn_read: UDP recvmsg sock 77: ret 0 retcode 0\n");
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (recorder.lines().size() < 2 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const std::vector<Line> lines = recorder.lines();
    ASSERT_EQ(lines.size(), 2u) << recorder.text();
    EXPECT_EQ(lines[1].text,
              "WARNING COMMUNICATION ddsi_udp_conn_read: UDP recvmsg sock 77: ret 0 retcode 0 (repeated 499 times)\n");
    EXPECT_EQ(lines[1].level, OBLX_CONFIG_LOG_LEVEL_WARNING);
}

// Threads raising the same lines and more distinct lines than are tracked:
// every line raised is written, or counted in exactly one count line.
TEST_F(MiddlewareLogger, ConcurrencyOfRepeatedCycloneLinesLosesNoCopy) {
    constexpr int kThreads = 4;
    constexpr int kLinesPerThread = 3000;
    setVerbosity(OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < kLinesPerThread; ++i) {
                dds_log(DDS_LC_WARNING, "src/q_receive.c", 1, "handle", "line %d\n", i % 3 == 0 ? i : i % 40);
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    std::this_thread::sleep_for(repeatedLinesWindow() + std::chrono::milliseconds(300));

    long accounted = 0;
    for (const Line &line : recorder.lines()) {
        const size_t count = line.text.find(" (repeated ");
        accounted += count == std::string::npos ? 1 : std::stol(line.text.substr(count + 11));
    }
    EXPECT_EQ(accounted, long{kThreads} * kLinesPerThread);
}

TEST(MiddlewareLoggerConcurrency, SwappingTheDeviceNeverClosesItDuringAWrite) {
    constexpr int kWriters = 4;
    constexpr int kLinesPerWriter = 2000;
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    std::deque<RecordingDevice> devices(1);  // a deque never moves its elements
    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, devices.back().device()));

    std::atomic<int> writersDone{0};
    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w) {
        writers.emplace_back([&] {
            for (int i = 0; i < kLinesPerWriter; ++i)
                OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_ERROR, "writer", nullptr, 0,
                                       "line %d", i);
            ++writersDone;
        });
    }
    while (writersDone.load() < kWriters) {
        devices.emplace_back();
        ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, devices.back().device()));
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    for (std::thread &writer : writers) writer.join();
    ASSERT_TRUE(OBLX_Config_Logger_set_output_device(logger, nullptr));

    size_t written = 0;
    for (const RecordingDevice &device : devices) {
        EXPECT_EQ(device.closes(), 1);
        EXPECT_EQ(device.writesAfterClose(), 0);
        written += device.lines().size();
    }
    EXPECT_EQ(written, size_t{kWriters * kLinesPerWriter});
    EXPECT_GT(devices.size(), 1u);
}

}  // namespace
