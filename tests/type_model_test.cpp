// Type codes of the data types: what the encoder and the sample functions
// read from them must match the C records and the published type model.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "type/vexar.h"

namespace {

struct NamedType {
    const DDS_TypeCode *(*getTypeCode)();
    const char *typeName;
    size_t sampleSize;
};

#define NAMED(Type) \
    { Type##_get_typecode, Type##TYPENAME, sizeof(Type) }

// Enumerators, unions and extensibility are exercised by the encoding tests.
const NamedType kAllTypes[] = {
    NAMED(QTV_VX_HostAndAppId),
    NAMED(QTV_VX_LogMessage),
    NAMED(QTV_VX_ADMIN_QTVLoggerVerbosity),
    NAMED(QTV_VX_ADMIN_QTVLoggerCategory),
    NAMED(QTV_VX_ADMIN_QTVLoggerPrintFormat),
    NAMED(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity),
    NAMED(QTV_VX_ADMIN_StateKind),
    NAMED(QTV_VX_ADMIN_State),
    NAMED(QTV_VX_ADMIN_CommandKind),
    NAMED(QTV_VX_ADMIN_Command),
    NAMED(QTV_VX_ADMIN_CommandRequest),
    NAMED(QTV_VX_ADMIN_CommandResult),
    NAMED(QTV_VX_ADMIN_CommandResponse),
};

}  // namespace

// A wrong offset in a member table would make every walker read the wrong
// bytes; members must follow each other inside the sample without overlap.
TEST(TypeCode, NamesSizesAndMemberOffsetsMatchTheCRecords) {
    for (const NamedType &type : kAllTypes) {
        const DDS_TypeCode *tc = type.getTypeCode();
        SCOPED_TRACE(type.typeName);
        EXPECT_STREQ(DDS_TypeCode_name(tc), type.typeName);
        EXPECT_EQ(DDS_TypeCode_sample_size(tc), type.sampleSize);
        if (DDS_TypeCode_kind(tc) != DDS_TK_STRUCT) continue;
        size_t end = 0;
        for (DDS_UnsignedLong i = 0; i < DDS_TypeCode_member_count(tc); ++i) {
            const DDS_TypeCode *memberType = DDS_TypeCode_member_type(tc, i);
            ASSERT_NE(memberType, nullptr) << DDS_TypeCode_member_name(tc, i);
            EXPECT_EQ(DDS_TypeCode_member_id(tc, i), static_cast<DDS_Long>(i));
            EXPECT_GE(DDS_TypeCode_member_offset(tc, i), end);
            end = DDS_TypeCode_member_offset(tc, i) + DDS_TypeCode_sample_size(memberType);
        }
        EXPECT_LE(end, type.sampleSize);
    }
}

// Each test runs in its own process, so these really are the first calls.
TEST(TypeCodeConcurrency, FirstCallsFromManyThreadsSeeCompleteCodes) {
    std::vector<const DDS_TypeCode *> seen(4);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < seen.size(); ++t)
        threads.emplace_back([&seen, t] { seen[t] = QTV_VX_ADMIN_CommandRequest_get_typecode(); });
    for (std::thread &thread : threads) thread.join();
    for (const DDS_TypeCode *tc : seen) {
        ASSERT_EQ(tc, seen[0]);
        const DDS_TypeCode *command = DDS_TypeCode_member_type(tc, 3);
        ASSERT_NE(command, nullptr);
        EXPECT_NE(DDS_TypeCode_content_type(DDS_TypeCode_member_type(command, 1)), nullptr);
    }
}
