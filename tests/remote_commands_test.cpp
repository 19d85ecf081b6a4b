// Remote commands over the network: each kind applied and answered once,
// refused and unknown commands answered as such, requests for other
// applications never answered.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "platform/log/logger.h"
#include "support/administrator.hpp"
#include "support/captured_stdout.h"
#include "support/domains.h"

namespace {

using vexar_test::AdministeredLogger;
using vexar_test::Administrator;
using vexar_test::CollectedResponses;
using vexar_test::CollectedStates;
using vexar_test::Request;
using vexar_test::ResponseSeen;

// Each test on its own domain: responses are not addressed to anyone.
constexpr int kDomain = vexar_test::domains::kLoggerBase + 20;  // .. + 21

// A running logger, and an administrator that sees its State and talks to it.
class Administered {
public:
    explicit Administered(int domain) : logger(domain), administrator(domain) {}

    bool ready() { return logger.logger() != nullptr && states.atLeast(1).size() == 1; }

    // Sends `request` and checks its one response.
    void expectAnswer(const Request &request, QTV_VX_ADMIN_CommandResult result, const char *message = "") {
        const size_t before = responses.now().size();
        administrator.send(request);
        const std::vector<ResponseSeen> &all = responses.atLeast(before + 1);
        ASSERT_EQ(all.size(), before + 1) << "one response per request";
        const ResponseSeen &response = all.back();
        EXPECT_EQ(response.hostAndAppId.rtps_app_id, logger.id().rtps_app_id);
        EXPECT_EQ(response.originatorHostAndAppId.rtps_app_id, request.sample.originatorHostAndAppId.rtps_app_id);
        EXPECT_EQ(response.invocation, request.sample.invocation);
        EXPECT_EQ(response.commandResult, result);
        EXPECT_EQ(response.text, message);
    }

    DDS_Long filterLevel() const { return __atomic_load_n(&logger.logger()->filterLevel, __ATOMIC_SEQ_CST); }

    AdministeredLogger logger;
    Administrator administrator;
    CollectedStates states = administrator.stateReader();
    CollectedResponses responses = administrator.connect();
};

Request setLogLevel(QTV_VX_HostAndAppId target, DDS_Long invocation, DDS_Long level) {
    return Request(target, invocation, QTV_VX_SET_LOG_LEVEL, level);
}

// Every category starts at ERROR; each pair is applied and the State written
// in turn, then the print format once more; an unknown kind is answered
// NOT_SUPPORTED and changes nothing. Filter levels are applied and published,
// a negative one refused. The requests for others go first on the same
// reliable writer: had they passed the filter, they would have been answered
// before ours.
TEST(RemoteCommands, EachKindIsAppliedPublishedAndAnsweredOnlyForTheTarget) {
    Administered side(kDomain);
    ASSERT_TRUE(side.ready());
    const QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity pairs[] = {
        {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL},
        {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING},
        {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_PLATFORM, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_SILENT},
    };
    Request verbosities(side.logger.id(), 4, QTV_VX_SET_QTV_LOGGER_LEVEL);
    ASSERT_TRUE(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_from_array(
        &verbosities.sample.command._u.categoryAndVerbosity, pairs, 3));
    side.expectAnswer(verbosities, QTV_VX_COMMAND_RESULT_OK);
    EXPECT_EQ(
        OBLX_Config_Logger_get_verbosity_by_category(OBLX_Config_Logger_get_instance(), OBLX_CONFIG_LOG_CATEGORY_API),
        OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    const auto &states = side.states.atLeast(4);
    ASSERT_EQ(states.size(), 4u);
    for (size_t written = 1; written <= 3; ++written) {
        for (size_t pair = 0; pair < 3; ++pair) {
            EXPECT_EQ(states[written].qtvLoggerVerbosities[pairs[pair].category].verbosity,
                      pair < written ? pairs[pair].verbosity : QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR)
                << "write " << written << ", pair " << pair;
        }
    }

    Request verbose(side.logger.id(), 5, QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT);
    verbose.sample.command._u.printFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE;
    side.expectAnswer(verbose, QTV_VX_COMMAND_RESULT_OK);
    EXPECT_EQ(OBLX_Config_Logger_get_print_format(OBLX_Config_Logger_get_instance()),
              OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE);
    ASSERT_EQ(side.states.atLeast(5).size(), 5u);
    EXPECT_EQ(side.states.now()[4].qtvLoggerPrintFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE);

    // Applied directly: a kind without an enumerator does not survive decoding.
    Request unknown = setLogLevel(side.logger.id(), 6, 100);
    const DDS_Long unknownKind = 7;  // stored as C code would: no such enumerator
    std::memcpy(&unknown.sample.command._d, &unknownKind, sizeof unknownKind);
    QTV_VX_Vexar_processCommand(side.logger.logger(), &unknown.sample);
    ASSERT_EQ(side.responses.atLeast(3).size(), 3u);
    EXPECT_EQ(side.responses.now()[2].commandResult, QTV_VX_COMMAND_RESULT_NOT_SUPPORTED);
    EXPECT_EQ(side.responses.now()[2].text, "");
    EXPECT_EQ(side.filterLevel(), QTV_VX_LOG_LEVEL_INFO) << "the unknown command changed nothing";
    EXPECT_EQ(side.states.now().size(), 5u);

    const QTV_VX_HostAndAppId self = side.logger.id();
    side.administrator.send(setLogLevel({self.rtps_host_id, self.rtps_app_id + 1}, 10, 100));
    side.administrator.send(setLogLevel({self.rtps_host_id + 1, self.rtps_app_id}, 11, 100));
    side.expectAnswer(setLogLevel(self, 1, 400), QTV_VX_COMMAND_RESULT_OK);
    EXPECT_EQ(side.filterLevel(), 400);
    ASSERT_EQ(side.states.atLeast(6).size(), 6u);
    EXPECT_EQ(side.states.now()[5].filterLevel, 400);
    side.expectAnswer(setLogLevel(self, 2, 0), QTV_VX_COMMAND_RESULT_OK);
    EXPECT_EQ(side.filterLevel(), 0);

    const std::string printed = vexar_test::capturedStdout([&] {
        side.expectAnswer(setLogLevel(self, 3, -5), QTV_VX_COMMAND_RESULT_ERROR,
                          "Vexar: Trouble setting new Filter Level.");
    });
    EXPECT_NE(printed.find("VX Warning: QTV_VX_Vexar_processCommand: Vexar: Trouble setting new Filter Level.\n"),
              std::string::npos);
    EXPECT_EQ(side.filterLevel(), 0);
}

// The State changes on the application's thread and on the command listener
// while a State reader joins: no race, and the last State published is the
// level in force.
TEST(RemoteCommandsConcurrency, ApplicationAndRemoteChangesInterleaveSafely) {
    constexpr int kChanges = 50;
    AdministeredLogger logger(kDomain + 1);
    ASSERT_NE(logger.logger(), nullptr);
    Administrator administrator(kDomain + 1);
    CollectedResponses responses = administrator.connect();
    std::thread application([&] {
        for (int i = 0; i < kChanges; ++i) QTV_VX_Vexar_setFilterLevel(logger.logger(), 300 + i % 2);
    });
    std::thread remote([&] {
        for (int i = 0; i < kChanges; ++i) administrator.send(setLogLevel(logger.id(), i, 500 + i % 2));
    });
    CollectedStates states = administrator.stateReader();
    application.join();
    remote.join();
    ASSERT_EQ(responses.atLeast(kChanges).size(), static_cast<size_t>(kChanges));

    const DDS_Long inForce = __atomic_load_n(&logger.logger()->filterLevel, __ATOMIC_SEQ_CST);
    EXPECT_TRUE(vexar_test::eventuallyWithin(
        std::chrono::seconds(5), [&] { return !states.now().empty() && states.now().back().filterLevel == inForce; }))
        << "in force: " << inForce;
}

}  // namespace
