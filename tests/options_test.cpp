// The options record: defaults, refusals with their printed lines, text
// ownership and copy.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "support/captured_stdout.h"
#include "vexar/Options.h"

using vexar_test::capturedStdout;

namespace {

struct OptionsDeleter {
    void operator()(QTV_VX_Options *options) const { QTV_VX_Options_delete(options); }
};
using OptionsPtr = std::unique_ptr<QTV_VX_Options, OptionsDeleter>;

OptionsPtr makeOptions() {
    OptionsPtr options(QTV_VX_Options_createDefault());
    EXPECT_NE(options, nullptr);
    return options;
}

std::string errorLine(const std::string &source, const std::string &text) {
    return "VX Error: " + source + ": " + text + "\n";
}

TEST(Options, DefaultsAreTheDocumentedOnes) {
    OptionsPtr options = makeOptions();
    EXPECT_EQ(options->domainParticipant, nullptr);
    EXPECT_EQ(options->enabled, 1);
    EXPECT_EQ(options->remoteAdministrationEnabled, 1);
    EXPECT_EQ(options->filterLevel, 600);
    EXPECT_EQ(options->domainId, 0u);
    EXPECT_EQ(options->qosLibrary, nullptr);
    EXPECT_EQ(options->qosProfile, nullptr);
    EXPECT_EQ(options->queueSize, 128u);
    EXPECT_EQ(options->threadSettings.mask, 0u);
    EXPECT_EQ(options->threadSettings.priority, -9999999);
    EXPECT_EQ(options->threadSettings.stack_size, -1);
    EXPECT_EQ(DDS_LongSeq_get_length(&options->threadSettings.cpu_list), 0);
    EXPECT_EQ(options->threadSettings.cpu_rotation, DDS_THREAD_SETTINGS_CPU_NO_ROTATION);
    EXPECT_EQ(options->applicationKind, nullptr);
    EXPECT_EQ(options->echoToStdout, 0);
    EXPECT_EQ(options->logInfrastructureMessages, 1);
}

// Every accessor refuses a null record under its own (sometimes odd) name.
TEST(Options, NullRecordIsRefusedByEveryAccessor) {
    struct Case {
        const char *source;
        std::function<long long()> call;
        long long result;
    };
    DDS_ThreadSettings_t settings = DDS_THREAD_SETTINGS_DEFAULT;
    const Case cases[] = {
        {"QTV_VX_Options_getDomainParticipant", [] { return QTV_VX_Options_getDomainParticipant(nullptr) != nullptr; }, 0},
        {"QTV_VX_Options_setDomainParticipant",
         [] { return QTV_VX_Options_setDomainParticipant(nullptr, reinterpret_cast<DDS_DomainParticipant *>(8)); }, 11},
        {"QTV_VX_Options_isRemoteAdministrationEnabled", [] { return QTV_VX_Options_isRemoteAdministrationEnabled(nullptr); }, 0},
        {"QTV_VX_Options_setRemoteAdministrationEnabled", [] { return QTV_VX_Options_setRemoteAdministrationEnabled(nullptr, 1); }, 11},
        {"QTV_VX_Options_getFilterLevel", [] { return QTV_VX_Options_getFilterLevel(nullptr); }, -1},
        {"QTV_VX_Options_setFilterLevel", [] { return QTV_VX_Options_setFilterLevel(nullptr, 1); }, 11},
        {"QTV_VX_Options_hetDomainId", [] { return QTV_VX_Options_getDomainId(nullptr); }, -1},
        {"QTV_VX_Options_setDomainId", [] { return QTV_VX_Options_setDomainId(nullptr, 1); }, 11},
        {"QTV_VX_Options_getQoSLibrary", [] { return QTV_VX_Options_getQosLibrary(nullptr) != nullptr; }, 0},
        {"QTV_VX_Options_setQoSLibrary", [] { return QTV_VX_Options_setQosLibrary(nullptr, "lib"); }, 11},
        {"QTV_VX_Options_getQoSProfile", [] { return QTV_VX_Options_getQosProfile(nullptr) != nullptr; }, 0},
        {"QTV_VX_Options_setQoSProfile", [] { return QTV_VX_Options_setQosProfile(nullptr, "prof"); }, 11},
        {"QTV_VX_Options_getQueueSize", [] { return QTV_VX_Options_getQueueSize(nullptr); }, -1},
        {"QTV_VX_Options_setQueueSize", [] { return QTV_VX_Options_setQueueSize(nullptr, 4); }, 11},
        {"QTV_VX_Options_getThreadSettings", [] { return QTV_VX_Options_getThreadSettings(nullptr) != nullptr; }, 0},
        {"QTV_VX_Options_setThreadSettings", [&] { return QTV_VX_Options_setThreadSettings(nullptr, &settings); }, 11},
        {"QTV_VX_Options_getApplicationKind", [] { return QTV_VX_Options_getApplicationKind(nullptr) != nullptr; }, 0},
        {"QTV_VX_Options_setApplicationKind", [] { return QTV_VX_Options_setApplicationKind(nullptr, "kind"); }, 11},
        {"QTV_VX_Options_getEchoToStdout", [] { return QTV_VX_Options_getEchoToStdout(nullptr); }, 0},
        {"QTV_VX_Options_setEchoToStdout", [] { return QTV_VX_Options_setEchoToStdout(nullptr, 1); }, 11},
        {"QTV_VX_Options_getLogInfrastructureMessages", [] { return QTV_VX_Options_getLogInfrastructureMessages(nullptr); }, 0},
        {"QTV_VX_Options_setLogInfrastructureMessages", [] { return QTV_VX_Options_setLogInfrastructureMessages(nullptr, 0); }, 11},
    };
    for (const Case &c : cases) {
        long long result = 42;
        EXPECT_EQ(capturedStdout([&] { result = c.call(); }), errorLine(c.source, "QTV_VX_Options is null"));
        EXPECT_EQ(result, c.result) << c.source;
    }
}

// Out-of-range values are refused with a line and leave the record alone;
// the smallest accepted values pass.
TEST(Options, SettersRefuseOutOfRangeValues) {
    OptionsPtr options = makeOptions();
    QTV_VX_Options *o = options.get();
    struct Case {
        const char *source;
        const char *text;
        std::function<DDS_ReturnCode_t()> call;
    };
    const Case refused[] = {
        {"QTV_VX_Options_setQueueSize", "Queue Size must be positive", [&] { return QTV_VX_Options_setQueueSize(o, 0); }},
        {"QTV_VX_Options_setFilterLevel", "Filter Level must be positive or zero",
         [&] { return QTV_VX_Options_setFilterLevel(o, -1); }},
        {"QTV_VX_Options_setDomainId", "Domain Id must be positive or zero", [&] { return QTV_VX_Options_setDomainId(o, -1); }},
        {"QTV_VX_Options_setDomainParticipant", "domainParticipant is null",
         [&] { return QTV_VX_Options_setDomainParticipant(o, nullptr); }},
        {"QTV_VX_Options_setQoSLibrary", "QoS Library is NULL", [&] { return QTV_VX_Options_setQosLibrary(o, nullptr); }},
        {"QTV_VX_Options_setQoSProfile", "QoS Profile is NULL", [&] { return QTV_VX_Options_setQosProfile(o, nullptr); }},
        {"QTV_VX_Options_setApplicationKind", "application kind is NULL",
         [&] { return QTV_VX_Options_setApplicationKind(o, nullptr); }},
    };
    for (const Case &c : refused) {
        DDS_ReturnCode_t result = -1;
        EXPECT_EQ(capturedStdout([&] { result = c.call(); }), errorLine(c.source, c.text));
        EXPECT_EQ(result, DDS_RETCODE_BAD_PARAMETER) << c.source;
    }
    EXPECT_EQ(QTV_VX_Options_getQueueSize(o), 128);
    EXPECT_EQ(QTV_VX_Options_getFilterLevel(o), 600);
    EXPECT_EQ(QTV_VX_Options_getDomainId(o), 0);

    EXPECT_EQ(QTV_VX_Options_setQueueSize(o, 1), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_Options_setFilterLevel(o, 0), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_Options_setDomainId(o, 0), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_Options_getQueueSize(o), 1);
    EXPECT_EQ(QTV_VX_Options_getFilterLevel(o), 0);
}

TEST(Options, TextSettersKeepTheirOwnCopy) {
    OptionsPtr options = makeOptions();
    char caller[] = "first";
    ASSERT_EQ(QTV_VX_Options_setApplicationKind(options.get(), caller), DDS_RETCODE_OK);
    caller[0] = 'X';
    EXPECT_STREQ(QTV_VX_Options_getApplicationKind(options.get()), "first");
    EXPECT_NE(QTV_VX_Options_getApplicationKind(options.get()), caller);

    // Replacing frees the old text (leaks show under ASan), even when the new
    // text is the record's own.
    ASSERT_EQ(QTV_VX_Options_setQosLibrary(options.get(), "one"), DDS_RETCODE_OK);
    ASSERT_EQ(QTV_VX_Options_setQosLibrary(options.get(), "two"), DDS_RETCODE_OK);
    ASSERT_EQ(QTV_VX_Options_setQosLibrary(options.get(), QTV_VX_Options_getQosLibrary(options.get())), DDS_RETCODE_OK);
    EXPECT_STREQ(QTV_VX_Options_getQosLibrary(options.get()), "two");
}

TEST(Options, ThreadSettingsAreDeepCopied) {
    OptionsPtr options = makeOptions();
    DDS_ThreadSettings_t settings = DDS_THREAD_SETTINGS_DEFAULT;
    const DDS_Long cpus[] = {0, 3};
    ASSERT_TRUE(DDS_LongSeq_from_array(&settings.cpu_list, cpus, 2));
    settings.stack_size = 65536;
    ASSERT_EQ(QTV_VX_Options_setThreadSettings(options.get(), &settings), DDS_RETCODE_OK);
    *DDS_LongSeq_get_reference(&settings.cpu_list, 1) = 7;
    DDS_ThreadSettings_t_finalize(&settings);

    const DDS_ThreadSettings_t *stored = QTV_VX_Options_getThreadSettings(options.get());
    EXPECT_EQ(stored->stack_size, 65536);
    DDS_LongSeq *cpuList = const_cast<DDS_LongSeq *>(&stored->cpu_list);
    ASSERT_EQ(DDS_LongSeq_get_length(cpuList), 2);
    EXPECT_EQ(DDS_LongSeq_get(cpuList, 1), 3);

    DDS_ReturnCode_t result = 0;
    EXPECT_EQ(capturedStdout([&] { result = QTV_VX_Options_setThreadSettings(options.get(), nullptr); }),
              errorLine("QTV_VX_Options_setThreadSettings", "couldn't copy thread settings"));
    EXPECT_EQ(result, DDS_RETCODE_ERROR);
}

TEST(OptionsCopy, CopiesAllButTheTwoOutputFlags) {
    OptionsPtr origin = makeOptions();
    OptionsPtr destination = makeOptions();
    auto *participant = reinterpret_cast<DDS_DomainParticipant *>(0x1000);
    QTV_VX_Options_setDomainParticipant(origin.get(), participant);
    origin->enabled = 0;
    QTV_VX_Options_setRemoteAdministrationEnabled(origin.get(), 0);
    QTV_VX_Options_setFilterLevel(origin.get(), 300);
    QTV_VX_Options_setDomainId(origin.get(), 42);
    QTV_VX_Options_setQueueSize(origin.get(), 16);
    QTV_VX_Options_setApplicationKind(origin.get(), "sensor");
    QTV_VX_Options_setQosLibrary(origin.get(), "lib");
    origin->threadSettings.priority = 12;
    QTV_VX_Options_setEchoToStdout(origin.get(), 1);
    QTV_VX_Options_setLogInfrastructureMessages(origin.get(), 0);
    // A text that the origin lacks keeps the destination's.
    QTV_VX_Options_setQosProfile(destination.get(), "kept");

    ASSERT_EQ(QTV_VX_Options_copy(destination.get(), origin.get()), 1);
    EXPECT_EQ(destination->domainParticipant, participant);
    EXPECT_EQ(destination->enabled, 0);
    EXPECT_EQ(destination->remoteAdministrationEnabled, 0);
    EXPECT_EQ(destination->filterLevel, 300);
    EXPECT_EQ(destination->domainId, 42u);
    EXPECT_EQ(destination->queueSize, 16u);
    EXPECT_STREQ(destination->applicationKind, "sensor");
    EXPECT_NE(destination->applicationKind, origin->applicationKind);
    EXPECT_STREQ(destination->qosLibrary, "lib");
    EXPECT_STREQ(destination->qosProfile, "kept");
    EXPECT_EQ(destination->threadSettings.priority, 12);
    EXPECT_EQ(destination->echoToStdout, 0);
    EXPECT_EQ(destination->logInfrastructureMessages, 1);

    // Copying again replaces the texts without leaking them.
    ASSERT_EQ(QTV_VX_Options_copy(destination.get(), origin.get()), 1);
}

TEST(OptionsCopy, RefusesNullRecords) {
    OptionsPtr options = makeOptions();
    DDS_Long result = -1;
    EXPECT_EQ(capturedStdout([&] { result = QTV_VX_Options_copy(nullptr, options.get()); }),
              errorLine("QTV_VX_Options_copy", "Pointer to destination QTV_VX_Options is NULL"));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(capturedStdout([&] { result = QTV_VX_Options_copy(options.get(), nullptr); }),
              errorLine("QTV_VX_Options_copy", "Pointer to origin QTV_VX_Option s is NULL"));
    EXPECT_EQ(result, 0);
}

TEST(Options, DeletingNullIsNotedAtInfo) {
    QTV_VX_Options *result = reinterpret_cast<QTV_VX_Options *>(1);
    EXPECT_EQ(capturedStdout([&] { result = QTV_VX_Options_delete(nullptr); }),
              "VX Info: QTV_VX_Options_delete: QTV_VX_Options was already NULL\n");
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(QTV_VX_Options_delete(QTV_VX_Options_createDefault()), nullptr);
}

}  // namespace
