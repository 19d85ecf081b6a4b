// The CDR encoding of the data types: bytes derived by hand, round trips,
// crafted and truncated inputs, bounds and the size tables.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <set>
#include <string>

#include "support/cdr_test_support.hpp"

using namespace vexar_test;

namespace {

std::string hex(const Bytes &bytes) {
    std::string out;
    char byte[8];
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::snprintf(byte, sizeof byte, "%02X%s", bytes[i], (i % 4 == 3) ? " | " : " ");
        out += byte;
    }
    return out;
}

// The sample writes exactly `expected` when asked for CDR in that order
// (parameter-list types write it as PL_CDR), and `expected` reads back to a
// sample that writes it again.
template <typename T>
void expectWire(const T &sample, bool bigEndian, const Bytes &expected) {
    const DDS_UnsignedShort requestedId = bigEndian ? 0 : 1;
    EXPECT_EQ(hex(serialized(sample, requestedId)), hex(expected));
    Owned<T> back;
    ASSERT_TRUE(deserialized(*back.get(), expected));
    EXPECT_EQ(hex(serialized(*back.get(), requestedId)), hex(expected));
}

}  // namespace

// One parameter per line: its header, then its value.
TEST(HandDerivedBytes, EveryTopicTypeTheCommandInEachBranchAndAPlainStruct) {
    for (bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian ? "big-endian" : "little-endian");
        auto list = [bigEndian] { return WireBytes(bigEndian).encapsulation(bigEndian ? 2 : 3); };
        Owned<QTV_VX_LogMessage> log;
        log->hostAndAppId = {1, 2};
        log->level = 300;
        setText(log->message, "x");
        WireBytes logBytes = list();
        logBytes.pid(0, 8).i32s({1, 2});     // hostAndAppId
        logBytes.pid(1, 4).i32(300);         // level
        logBytes.pid(2, 5).str("").pad(3);   // category
        logBytes.pid(3, 6).str("x").pad(2);  // message
        expectWire(log.sample, bigEndian, logBytes.sentinel().bytes);

        WireBytes state = list();
        state.pid(0, 8).i32s({0x01020304, -2});                 // hostAndAppId
        state.pid(1, 4).i32(7);                                 // administrationDomainId
        state.pid(2, 4).i32(1);                                 // state OPERATIONAL
        state.pid(3, 8).str("app");                             // applicationKind: 4 + 4, no padding
        state.pid(4, 4).i32(600);                               // filterLevel
        state.pid(5, 40).i32s({0, 1, 1, 2, 2, 3, 3, 4, 4, 5});  // five (category, verbosity) pairs, no count
        state.pid(6, 4).i32(2);                                 // qtvLoggerPrintFormat VERBOSE
        expectWire(Filled<QTV_VX_ADMIN_State>().sample, bigEndian, state.sentinel().bytes);

        // SET_QTV_LOGGER_LEVEL is checked inside the request below.
        Owned<QTV_VX_ADMIN_Command> command;
        command->_d = QTV_VX_SET_LOG_LEVEL;
        command->_u.filterLevel = 500;
        expectWire(command.sample, bigEndian, list().pid(0, 4).i32(0).pid(1, 4).i32(500).sentinel().bytes);
        command->_d = QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT;
        command->_u.printFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL;
        expectWire(command.sample, bigEndian, list().pid(0, 4).i32(2).pid(3, 4).i32(6).sentinel().bytes);

        // The request nests the command with its own sentinel.
        WireBytes request = list();
        request.pid(0, 8).i32s({11, 12});                                          // targetHostAndAppId
        request.pid(1, 8).i32s({21, 22});                                          // originatorHostAndAppId
        request.pid(2, 4).i32(42);                                                 // invocation
        request.pid(3, 36);                                                        // command: 8 + 24 + 4
        request.pid(0, 4).i32(1).pid(2, 20).u32(2).i32s({1, 3, 4, 5}).sentinel();  // count, then the pairs
        expectWire(Filled<QTV_VX_ADMIN_CommandRequest>().sample, bigEndian, request.sentinel().bytes);

        WireBytes response = list();
        response.pid(0, 8).i32s({11, 12});
        response.pid(1, 8).i32s({21, 22});
        response.pid(2, 4).i32(42);
        response.pid(3, 4).i32(1);                           // NOT_SUPPORTED
        response.pid(4, 21).str("no such category").pad(3);  // 4 + 17
        expectWire(Filled<QTV_VX_ADMIN_CommandResponse>().sample, bigEndian, response.sentinel().bytes);

        // A count aligns to 8 from the origin: after the first, each header
        // leaves the value 4 bytes short of it, padding counted in the length.
        WireBytes statistics = list();
        statistics.pid(0, 8).i32s({11, 12});
        statistics.pid(1, 8).u64(0x0000000100000002ull);  // accepted at 16
        statistics.pid(2, 12).pad(4).u64(0x0000000300000004ull);
        statistics.pid(3, 12).pad(4).u64(0x0000000500000006ull);
        statistics.pid(4, 12).pad(4).u64(0x0000000700000008ull);
        statistics.pid(5, 12).pad(4).u64(0x000000090000000Aull);
        statistics.pid(6, 12).pad(4).u64(0x0000000B0000000Cull);
        expectWire(Filled<QTV_VX_ADMIN_Statistics>().sample, bigEndian, statistics.sentinel().bytes);

        QTV_VX_HostAndAppId id;
        fill(id);
        const unsigned plainCdr = bigEndian ? 0 : 1;
        expectWire(id, bigEndian, WireBytes(bigEndian).encapsulation(plainCdr).i32s({0x01020304, -2}).bytes);
    }
}

// --- every type, every encapsulation --------------------------------------

template <typename T>
class RoundTrip : public ::testing::Test {};
// The enumerations share one code path; StateKind stands for them all.
using AllTypes = ::testing::Types<QTV_VX_HostAndAppId, QTV_VX_LogMessage, QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity,
                                  QTV_VX_ADMIN_StateKind, QTV_VX_ADMIN_State, QTV_VX_ADMIN_Command,
                                  QTV_VX_ADMIN_CommandRequest, QTV_VX_ADMIN_CommandResponse, QTV_VX_ADMIN_Statistics>;
TYPED_TEST_SUITE(RoundTrip, AllTypes);

TYPED_TEST(RoundTrip, EveryEncapsulationReadsBackSizesAndSkipsExactly) {
    using T = TypeParam;
    Filled<T> original;
    for (DDS_UnsignedShort id = 0; id <= 3; ++id) {
        SCOPED_TRACE(id);
        Bytes bytes = serialized(original.sample, id);
        ASSERT_FALSE(bytes.empty());
        Owned<T> back;
        ASSERT_TRUE(deserialized(*back.get(), bytes));
        EXPECT_EQ(hex(serialized(*back.get(), id)), hex(bytes));
        EXPECT_EQ(Plugin<T>::sampleSize(nullptr, DDS_BOOLEAN_TRUE, id, 0, original.get()), bytes.size());

        OBLX_CdrStream stream;
        OBLX_CdrStream_initForRead(&stream, bytes.data(), static_cast<DDS_UnsignedLong>(bytes.size()));
        EXPECT_TRUE(Plugin<T>::skip(nullptr, &stream, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE, nullptr));
        EXPECT_EQ(OBLX_CdrStream_getPosition(&stream), bytes.size());
    }
}

// --- crafted inputs --------------------------------------------------------

namespace {

// A little-endian LogMessage {1, 2}, level 300, "", "x" with `extra` bytes
// inserted after the level member.
Bytes logMessageWith(const Bytes &extra) {
    WireBytes head(false);
    head.encapsulation(3).pid(0, 8).i32(1).i32(2).pid(1, 4).i32(300);
    head.bytes.insert(head.bytes.end(), extra.begin(), extra.end());
    return head.pid(2, 5).str("").pad(3).pid(3, 6).str("x").pad(2).sentinel().bytes;
}

}  // namespace

TEST(ParameterListReading, UnknownMembersPassUnlessTheyMustBeUnderstood) {
    Owned<QTV_VX_LogMessage> log;
    ASSERT_TRUE(deserialized(log.sample, logMessageWith(WireBytes(false).pid(9, 4).i32(77).bytes)));
    EXPECT_EQ(log->level, 300);
    EXPECT_STREQ(log->message, "x");
    EXPECT_FALSE(deserialized(log.sample, logMessageWith(WireBytes(false).pid(0x4009, 4).i32(77).bytes)));
    EXPECT_FALSE(
        deserialized(log.sample, logMessageWith(WireBytes(false).pid(0x7F01, 8).u32(0x40000009).u32(0).bytes)));
    // A member's reader stays inside its parameter: a 2-byte level may not borrow from the next one.
    EXPECT_FALSE(deserialized(log.sample, WireBytes(false).encapsulation(3).pid(1, 2).i32(300).sentinel().bytes));

    // The command accepts only its discriminator and branches, whatever the flags.
    Owned<QTV_VX_ADMIN_Command> command;
    for (std::uint16_t unknownId : {4, 9, 0x4009}) {
        EXPECT_FALSE(
            deserialized(command.sample,
                         WireBytes(false).encapsulation(3).pid(0, 4).i32(0).pid(unknownId, 4).i32(1).sentinel().bytes));
    }
}

TEST(ParameterListReading, IgnoredParametersAndExtendedHeadersAreRead) {
    Owned<QTV_VX_LogMessage> log;
    ASSERT_TRUE(deserialized(log.sample, logMessageWith(WireBytes(false).pid(0x3F03, 8).i32(1).i32(2).bytes)));
    EXPECT_STREQ(log->message, "x");

    WireBytes extended = WireBytes(false).encapsulation(3);
    extended.pid(0x7F01, 8).u32(0).u32(8).i32s({5, 6});  // hostAndAppId
    extended.pid(1, 4).i32(700);
    extended.pid(0x7F01, 8).u32(3).u32(8).str("abc");  // message; category absent
    ASSERT_TRUE(deserialized(log.sample, extended.sentinel().bytes));
    EXPECT_EQ(log->hostAndAppId.rtps_app_id, 6);
    EXPECT_EQ(log->level, 700);
    EXPECT_STREQ(log->category, "");
    EXPECT_STREQ(log->message, "abc");
}

TEST(ParameterListReading, AnEmptyListGivesInitialValues) {
    Filled<QTV_VX_LogMessage> log;
    ASSERT_TRUE(deserialized(log.sample, WireBytes(true).encapsulation(2).sentinel().bytes));
    EXPECT_EQ(log->hostAndAppId.rtps_host_id, 0);
    EXPECT_EQ(log->level, 0);
    EXPECT_STREQ(log->category, "");
    EXPECT_STREQ(log->message, "");
}

TEST(ParameterListReading, ACommandKeepsWhatItsBytesLeaveOutWhileARequestStartsOver) {
    Owned<QTV_VX_ADMIN_Command> command;
    command->_u.filterLevel = 55;
    ASSERT_TRUE(deserialized(command.sample, WireBytes(false).encapsulation(3).pid(0, 4).i32(2).sentinel().bytes));
    EXPECT_EQ(command->_d, QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT);
    EXPECT_EQ(command->_u.filterLevel, 55);

    Owned<QTV_VX_ADMIN_CommandRequest> request;
    request->invocation = 9;
    request->command._u.filterLevel = 55;
    WireBytes discriminatorOnly = WireBytes(false).encapsulation(3);
    discriminatorOnly.pid(3, 12).pid(0, 4).i32(2).sentinel();  // command: discriminator only
    ASSERT_TRUE(deserialized(request.sample, discriminatorOnly.sentinel().bytes));
    EXPECT_EQ(request->invocation, 0);
    EXPECT_EQ(request->command._d, QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT);
    EXPECT_EQ(request->command._u.filterLevel, 0);
}

TEST(ParameterListReading, ATruncatedSampleReadsOnlyWhereItEndsBetweenMembers) {
    // Offsets in the hand-derived LogMessage: header 0-3; members end at 16,
    // 24, 33 (before padding) and 46; the sentinel ends at 52. A list that
    // simply ends between members is complete; a cut inside a header, a
    // value or the padding before a header fails.
    Bytes full = logMessageWith({});
    std::set<size_t> readable;
    for (size_t size = 0; size < full.size(); ++size) {
        Owned<QTV_VX_LogMessage> log;
        if (deserialized(log.sample, Bytes(full.begin(), full.begin() + size))) readable.insert(size);
    }
    EXPECT_EQ(readable, (std::set<size_t>{4, 16, 24, 33, 46}));
}

namespace {
// Reads every truncation of the filled sample and writes it into heap
// buffers of every length up to its size: no read or write passes the end
// (AddressSanitizer checks), only the exact length writes, and the same bytes.
template <typename T>
void cutAtEveryLength(DDS_UnsignedShort id) {
    Filled<T> original;
    Bytes full = serialized(original.sample, id);
    ASSERT_FALSE(full.empty());
    for (size_t size = 0; size <= full.size(); ++size) {
        Owned<T> back;
        deserialized(back.sample, Bytes(full.begin(), full.begin() + size));
        OBLX_CdrStream stream;
        OBLX_CdrStream_initForRead(&stream, full.data(), static_cast<DDS_UnsignedLong>(size));
        Plugin<T>::skip(nullptr, &stream, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE, nullptr);
        EXPECT_LE(OBLX_CdrStream_getPosition(&stream), size);

        Bytes buffer(size);
        OBLX_CdrStream_init(&stream, buffer.data(), static_cast<DDS_UnsignedLong>(size));
        bool written =
            Plugin<T>::serialize(nullptr, &original.sample, &stream, DDS_BOOLEAN_TRUE, id, DDS_BOOLEAN_TRUE, nullptr);
        EXPECT_EQ(written, size == full.size()) << "buffer of " << size << " bytes, identifier " << id;
        if (written) {
            EXPECT_EQ(buffer, full);
        }
    }
}
}  // namespace

TEST(ParameterListCuts, NoTopicSampleIsReadOrWrittenPastItsEnd) {
    for (DDS_UnsignedShort id : {0, 1}) {
        cutAtEveryLength<QTV_VX_LogMessage>(id);
        cutAtEveryLength<QTV_VX_ADMIN_State>(id);
        cutAtEveryLength<QTV_VX_ADMIN_CommandRequest>(id);
        cutAtEveryLength<QTV_VX_ADMIN_CommandResponse>(id);
    }
}

namespace {
// Reads a State from `bytes` without the final check; true when a value was
// out of range.
bool readStateSkippingUnassignable(Bytes bytes, QTV_VX_ADMIN_State &state) {
    OBLX_CdrStream stream;
    OBLX_CdrStream_initForRead(&stream, bytes.data(), static_cast<DDS_UnsignedLong>(bytes.size()));
    EXPECT_TRUE(QTV_VX_ADMIN_StatePlugin_deserialize_sample(nullptr, &state, &stream, DDS_BOOLEAN_TRUE,
                                                            DDS_BOOLEAN_TRUE, nullptr));
    return OBLX_CdrStream_getUnassignable(&stream);
}
}  // namespace

// An out-of-range value fails the sample, but the reader stores every other
// field: values that lie together are read as one block unless one of them
// is out of range, and then only that one is left alone.
TEST(EnumerationReading, AValueOutOfRangeFailsTheSampleAndLeavesOnlyItsOwnField) {
    Bytes bytes = WireBytes(false).encapsulation(3).pid(1, 4).i32(9).pid(2, 4).i32(7).sentinel().bytes;
    Owned<QTV_VX_ADMIN_State> state;
    EXPECT_FALSE(deserialized(state.sample, bytes));
    EXPECT_TRUE(readStateSkippingUnassignable(bytes, state.sample));
    EXPECT_EQ(state->administrationDomainId, 9);
    EXPECT_EQ(state->state, QTV_VX_STATE_INITIALIZING) << "the field keeps its value";

    WireBytes wire = WireBytes(false).encapsulation(3).pid(5, 40);  // the five (category, verbosity) pairs
    for (DDS_Long category = 0; category < QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH; ++category)
        wire.i32(category).i32(category == 2 ? 9 : QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    EXPECT_TRUE(readStateSkippingUnassignable(wire.sentinel().bytes, state.sample));
    for (DDS_Long category = 0; category < QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH; ++category) {
        const QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity &pair = state->qtvLoggerVerbosities[category];
        EXPECT_EQ(pair.category, category);
        EXPECT_EQ(pair.verbosity, category == 2 ? QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_SILENT
                                                : QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    }

    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity pair{};
    EXPECT_FALSE(deserialized(pair, WireBytes(false).encapsulation(1).i32(4).i32(6).bytes));
    Owned<QTV_VX_ADMIN_Command> command;
    EXPECT_FALSE(deserialized(command.sample, WireBytes(false).encapsulation(3).pid(0, 4).i32(7).sentinel().bytes));
}

TEST(Bounds, StringsAndSequencesOverTheirBoundsFailBothWays) {
    Owned<QTV_VX_LogMessage> log;
    setText(log->message, std::string(4096, 'm'));
    EXPECT_FALSE(serialized(log.sample, 1).empty());
    std::string overlong(4097, 'm');
    char *buffer = log->message;
    log->message = overlong.data();
    EXPECT_TRUE(serialized(log.sample, 1).empty());
    DDS_UnsignedLong size = 0;
    EXPECT_FALSE(QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer(nullptr, &size, log.get())) << size;
    log->message = buffer;

    auto withMessage = [](size_t characters) {
        auto length = static_cast<std::uint16_t>(4 + characters + 1);
        return WireBytes(false).encapsulation(3).pid(3, length).str(std::string(characters, 'm')).bytes;
    };
    EXPECT_TRUE(deserialized(log.sample, withMessage(4096)));
    EXPECT_EQ(std::string(log->message).size(), 4096u);
    EXPECT_FALSE(deserialized(log.sample, withMessage(4097)));

    Owned<QTV_VX_ADMIN_Command> command;
    WireBytes six(false);
    six.encapsulation(3).pid(0, 4).i32(1).pid(2, 52).u32(6);
    for (int i = 0; i < 6; ++i) six.i32(0).i32(0);
    EXPECT_FALSE(deserialized(command.sample, six.sentinel().bytes));
}

TEST(Encapsulation, IdentifiersOutsideZeroToThreeFail) {
    QTV_VX_HostAndAppId id{1, 2};
    EXPECT_TRUE(serialized(id, 4).empty());
    EXPECT_FALSE(deserialized(id, WireBytes(false).encapsulation(4).i32(1).i32(2).bytes));
    Owned<QTV_VX_LogMessage> log;
    EXPECT_TRUE(serialized(log.sample, 4).empty());
}

// The buffer form is always the little-endian parameter list (its bytes are
// checked above) and tells its size when asked without a buffer.
TEST(BufferForm, WritesTheLittleEndianParameterListIntoABufferLargeEnough) {
    Filled<QTV_VX_LogMessage> log;
    const Bytes expected = serialized(log.sample, 1);
    char buffer[128];
    DDS_UnsignedLong length = sizeof buffer;
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer(buffer, &length, log.get()));
    EXPECT_EQ(hex(Bytes(buffer, buffer + length)), hex(expected));
    DDS_UnsignedLong needed = 0;
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer(nullptr, &needed, log.get()));
    EXPECT_EQ(needed, expected.size());
    length = 8;
    EXPECT_FALSE(QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer(buffer, &length, log.get()));
    EXPECT_FALSE(QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer(buffer, nullptr, log.get()));
}

TEST(ParameterListWriting, TheSkipListEndMarkLeavesOutTheSentinelAndIsKept) {
    Owned<QTV_VX_ADMIN_Command> command;
    Bytes buffer(64);
    OBLX_CdrStream stream;
    OBLX_CdrStream_init(&stream, buffer.data(), 64);
    OBLX_CdrStream_setDirty(&stream, DDS_BOOLEAN_TRUE);
    OBLX_CdrStream_setSkipListEnd(&stream, DDS_BOOLEAN_TRUE);
    ASSERT_TRUE(QTV_VX_ADMIN_CommandPlugin_serialize(nullptr, command.get(), &stream, DDS_BOOLEAN_FALSE, 0,
                                                     DDS_BOOLEAN_TRUE, nullptr));
    buffer.resize(OBLX_CdrStream_getPosition(&stream));
    EXPECT_EQ(hex(buffer), hex(WireBytes(OBLX_CdrStream_isNativeBigEndian()).pid(0, 4).i32(0).pid(1, 4).i32(0).bytes));
    EXPECT_TRUE(OBLX_CdrStream_getSkipListEnd(&stream));
}

// --- sizes -------------------------------------------------------------------

namespace {
// Maximum and minimum, each without and with the encapsulation header.
template <typename T>
std::array<DDS_UnsignedLong, 4> sizesOf() {
    return {Plugin<T>::maxSize(nullptr, DDS_BOOLEAN_FALSE, 0, 0), Plugin<T>::maxSize(nullptr, DDS_BOOLEAN_TRUE, 0, 0),
            Plugin<T>::minSize(nullptr, DDS_BOOLEAN_FALSE, 0, 0), Plugin<T>::minSize(nullptr, DDS_BOOLEAN_TRUE, 0, 0)};
}
using Sizes = std::array<DDS_UnsignedLong, 4>;
}  // namespace

TEST(SerializedSizes, MaximaAndMinimaComeOutOfTheTypeCodes) {
    EXPECT_EQ(sizesOf<QTV_VX_LogMessage>(), (Sizes{4696, 4700, 72, 76}));
    EXPECT_EQ(sizesOf<QTV_VX_ADMIN_State>(), (Sizes{424, 428, 128, 132}));
    EXPECT_EQ(sizesOf<QTV_VX_ADMIN_Command>(), (Sizes{84, 88, 28, 32}));
    EXPECT_EQ(sizesOf<QTV_VX_ADMIN_CommandRequest>(), (Sizes{164, 168, 92, 96}));
    EXPECT_EQ(sizesOf<QTV_VX_ADMIN_CommandResponse>(), (Sizes{2152, 2156, 80, 84}));
    EXPECT_EQ(sizesOf<QTV_VX_ADMIN_Statistics>(), (Sizes{172, 176, 116, 120}));
    EXPECT_EQ(sizesOf<QTV_VX_HostAndAppId>(), (Sizes{8, 12, 8, 12}));
}

TEST(SerializedSizes, AlignmentCountsAndTheExtendedFormReportsNoOverflow) {
    // From position 2 a HostAndAppId pads to 4 first; the header aligns to 2 only.
    EXPECT_EQ(QTV_VX_HostAndAppIdPlugin_get_serialized_sample_max_size(nullptr, DDS_BOOLEAN_FALSE, 0, 2), 10u);
    EXPECT_EQ(QTV_VX_HostAndAppIdPlugin_get_serialized_sample_max_size(nullptr, DDS_BOOLEAN_TRUE, 0, 2), 12u);
    DDS_Boolean overflow = DDS_BOOLEAN_TRUE;
    EXPECT_EQ(QTV_VX_LogMessagePlugin_get_serialized_sample_max_size_ex(nullptr, &overflow, DDS_BOOLEAN_TRUE, 1, 0),
              4700u);
    EXPECT_FALSE(overflow);
}
