// The options record: refusals with their printed lines, text ownership and
// copy.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>

#include "support/captured_stdout.h"
#include "support/running_logger.hpp"
#include "vexar/Options.h"

using vexar_test::capturedStdout;
using vexar_test::OptionsPtr;

namespace {

std::string errorLine(const std::string &source, const std::string &text) {
    return "VX Error: " + source + ": " + text + "\n";
}

// A null record or an out-of-range value is refused with a line naming the
// accessor (some names are not the function's own); each kind of accessor
// has its own failure value, and a refused value leaves the record alone.
TEST(Options, NullRecordsAndOutOfRangeValuesAreRefusedWithALine) {
    OptionsPtr options(QTV_VX_Options_createDefault());
    QTV_VX_Options *o = options.get();
    const std::string isNull = "QTV_VX_Options is null";
    const long long bad = DDS_RETCODE_BAD_PARAMETER;
    // "hetDomainId" and "QTV_VX_Option s" are deliberate: the published report texts.
    const struct {
        std::string printed;
        std::function<long long()> call;
        long long result;
    } cases[] = {
        {errorLine("QTV_VX_Options_setDomainParticipant", isNull),
         [] { return QTV_VX_Options_setDomainParticipant(nullptr, reinterpret_cast<DDS_DomainParticipant *>(8)); }, 11},
        {errorLine("QTV_VX_Options_isRemoteAdministrationEnabled", isNull),
         [] { return QTV_VX_Options_isRemoteAdministrationEnabled(nullptr); }, 0},
        {errorLine("QTV_VX_Options_hetDomainId", isNull), [] { return QTV_VX_Options_getDomainId(nullptr); }, -1},
        {errorLine("QTV_VX_Options_getQoSLibrary", isNull),
         [] { return QTV_VX_Options_getQosLibrary(nullptr) != nullptr; }, 0},
        {errorLine("QTV_VX_Options_copy", "Pointer to destination QTV_VX_Options is NULL"),
         [&] { return QTV_VX_Options_copy(nullptr, o); }, 0},
        {errorLine("QTV_VX_Options_copy", "Pointer to origin QTV_VX_Option s is NULL"),
         [&] { return QTV_VX_Options_copy(o, nullptr); }, 0},
        {"VX Info: QTV_VX_Options_delete: QTV_VX_Options was already NULL\n",
         [] { return QTV_VX_Options_delete(nullptr) != nullptr; }, 0},
        {errorLine("QTV_VX_Options_setQueueSize", "Queue Size must be positive"),
         [&] { return QTV_VX_Options_setQueueSize(o, 0); }, bad},
        {errorLine("QTV_VX_Options_setFilterLevel", "Filter Level must be positive or zero"),
         [&] { return QTV_VX_Options_setFilterLevel(o, -1); }, bad},
        {errorLine("QTV_VX_Options_setDomainId", "Domain Id must be positive or zero"),
         [&] { return QTV_VX_Options_setDomainId(o, -1); }, bad},
        {errorLine("QTV_VX_Options_setDomainParticipant", "domainParticipant is null"),
         [&] { return QTV_VX_Options_setDomainParticipant(o, nullptr); }, bad},
        {errorLine("QTV_VX_Options_setQoSLibrary", "QoS Library is NULL"),
         [&] { return QTV_VX_Options_setQosLibrary(o, nullptr); }, bad},
        {errorLine("QTV_VX_Options_setThreadSettings", "couldn't copy thread settings"),
         [&] { return QTV_VX_Options_setThreadSettings(o, nullptr); }, DDS_RETCODE_ERROR},
    };
    for (const auto &c : cases) {
        long long result = 42;
        EXPECT_EQ(capturedStdout([&] { result = c.call(); }), c.printed);
        EXPECT_EQ(result, c.result) << c.printed;
    }
    EXPECT_EQ(QTV_VX_Options_getQueueSize(o), 128);
    EXPECT_EQ(QTV_VX_Options_getFilterLevel(o), 600);
    EXPECT_EQ(QTV_VX_Options_getDomainId(o), 0);

    EXPECT_EQ(QTV_VX_Options_setQueueSize(o, 1), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_Options_setFilterLevel(o, 0), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_Options_setDomainId(o, 0), DDS_RETCODE_OK);
}

TEST(Options, SettersKeepTheirOwnCopies) {
    OptionsPtr options(QTV_VX_Options_createDefault());
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

    // Thread settings are copied deep.
    DDS_ThreadSettings_t settings = DDS_THREAD_SETTINGS_DEFAULT;
    const DDS_Long cpus[] = {0, 3};
    ASSERT_TRUE(DDS_LongSeq_from_array(&settings.cpu_list, cpus, 2));
    ASSERT_EQ(QTV_VX_Options_setThreadSettings(options.get(), &settings), DDS_RETCODE_OK);
    *DDS_LongSeq_get_reference(&settings.cpu_list, 1) = 7;
    DDS_ThreadSettings_t_finalize(&settings);

    DDS_LongSeq *cpuList = const_cast<DDS_LongSeq *>(&QTV_VX_Options_getThreadSettings(options.get())->cpu_list);
    ASSERT_EQ(DDS_LongSeq_get_length(cpuList), 2);
    EXPECT_EQ(DDS_LongSeq_get(cpuList, 1), 3);
}

TEST(OptionsCopy, CopiesAllButTheTwoOutputFlags) {
    OptionsPtr origin(QTV_VX_Options_createDefault());
    OptionsPtr destination(QTV_VX_Options_createDefault());
    QTV_VX_Options &o = *origin;
    o.domainParticipant = reinterpret_cast<DDS_DomainParticipant *>(0x1000);
    o.enabled = o.remoteAdministrationEnabled = o.logInfrastructureMessages = 0;
    o.echoToStdout = 1;
    o.filterLevel = 300;
    o.domainId = 42;
    o.queueSize = 16;
    o.threadSettings.priority = 12;
    QTV_VX_Options_setApplicationKind(&o, "sensor");
    QTV_VX_Options_setQosLibrary(&o, "lib");
    QTV_VX_Options_setQosProfile(destination.get(), "kept");  // the origin has none: the destination's stays

    ASSERT_EQ(QTV_VX_Options_copy(destination.get(), &o), 1);
    const QTV_VX_Options &d = *destination;
    EXPECT_EQ(std::tuple(d.domainParticipant, d.enabled, d.remoteAdministrationEnabled, d.filterLevel, d.domainId,
                         d.queueSize, d.threadSettings.priority, d.echoToStdout, d.logInfrastructureMessages),
              std::tuple(o.domainParticipant, 0, 0, 300, 42u, 16u, 12, 0, 1));
    EXPECT_STREQ(d.applicationKind, "sensor");
    EXPECT_NE(d.applicationKind, o.applicationKind);
    EXPECT_STREQ(d.qosLibrary, "lib");
    EXPECT_STREQ(d.qosProfile, "kept");
    ASSERT_EQ(QTV_VX_Options_copy(destination.get(), &o), 1);  // replaces the texts without leaking them
}

}  // namespace
