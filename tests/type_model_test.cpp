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
    DDS_TCKind kind;
    bool isMutable;
};

#define NAMED(Type, kind, isMutable) {Type##_get_typecode, Type##TYPENAME, sizeof(Type), kind, isMutable}

const NamedType kAllTypes[] = {
    NAMED(QTV_VX_HostAndAppId, DDS_TK_STRUCT, false),
    NAMED(QTV_VX_LogMessage, DDS_TK_STRUCT, true),
    NAMED(QTV_VX_ADMIN_QTVLoggerVerbosity, DDS_TK_ENUM, false),
    NAMED(QTV_VX_ADMIN_QTVLoggerCategory, DDS_TK_ENUM, false),
    NAMED(QTV_VX_ADMIN_QTVLoggerPrintFormat, DDS_TK_ENUM, false),
    NAMED(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity, DDS_TK_STRUCT, false),
    NAMED(QTV_VX_ADMIN_StateKind, DDS_TK_ENUM, false),
    NAMED(QTV_VX_ADMIN_State, DDS_TK_STRUCT, true),
    NAMED(QTV_VX_ADMIN_CommandKind, DDS_TK_ENUM, false),
    NAMED(QTV_VX_ADMIN_Command, DDS_TK_UNION, true),
    NAMED(QTV_VX_ADMIN_CommandRequest, DDS_TK_STRUCT, true),
    NAMED(QTV_VX_ADMIN_CommandResult, DDS_TK_ENUM, false),
    NAMED(QTV_VX_ADMIN_CommandResponse, DDS_TK_STRUCT, true),
};

} // namespace

TEST(TypeCode, EveryTypeCarriesItsNameKindExtensibilityAndSize) {
    for (const NamedType &type : kAllTypes) {
        const DDS_TypeCode *tc = type.getTypeCode();
        SCOPED_TRACE(type.typeName);
        EXPECT_STREQ(DDS_TypeCode_name(tc), type.typeName);
        EXPECT_EQ(DDS_TypeCode_kind(tc), type.kind);
        EXPECT_EQ(DDS_TypeCode_is_mutable(tc) != 0, type.isMutable);
        EXPECT_EQ(DDS_TypeCode_kind_with_extensibility(tc),
                  type.kind | (type.isMutable ? DDS_TK_MUTABLE_EXTENSIBILITY : 0));
        EXPECT_EQ(DDS_TypeCode_sample_size(tc), type.sampleSize);
        EXPECT_EQ(tc, type.getTypeCode());
    }
}

// A wrong offset in a member table would make every walker read the wrong
// bytes; members must follow each other inside the sample without overlap.
TEST(TypeCode, MemberOffsetsTileTheCStructs) {
    for (const NamedType &type : kAllTypes) {
        const DDS_TypeCode *tc = type.getTypeCode();
        if (type.kind != DDS_TK_STRUCT) {
            continue;
        }
        SCOPED_TRACE(type.typeName);
        size_t end = 0;
        for (DDS_UnsignedLong i = 0; i < DDS_TypeCode_member_count(tc); ++i) {
            const DDS_TypeCode *memberType = DDS_TypeCode_member_type(tc, i);
            ASSERT_NE(memberType, nullptr) << DDS_TypeCode_member_name(tc, i);
            EXPECT_EQ(DDS_TypeCode_member_id(tc, i), static_cast<DDS_Long>(i));
            EXPECT_EQ(DDS_TypeCode_member_visibility(tc, i), DDS_PUBLIC_MEMBER);
            EXPECT_GE(DDS_TypeCode_member_offset(tc, i), end);
            end = DDS_TypeCode_member_offset(tc, i) + DDS_TypeCode_sample_size(memberType);
        }
        EXPECT_LE(end, type.sampleSize);
    }
}

TEST(TypeCode, CommandUnionBranchesLabelsAndDiscriminator) {
    const DDS_TypeCode *command = QTV_VX_ADMIN_Command_get_typecode();
    EXPECT_EQ(DDS_TypeCode_default_index(command), DDS_TYPECODE_NO_DEFAULT_INDEX);
    EXPECT_EQ(DDS_TypeCode_discriminator_type(command), QTV_VX_ADMIN_CommandKind_get_typecode());
    EXPECT_EQ(QTV_VX_ADMIN_Command_getDefaultDiscriminator(), QTV_VX_SET_LOG_LEVEL);
    EXPECT_EQ(DDS_TypeCode_find_member_by_label(command, 7), -1);

    // Branch offsets are measured from the start of the union record.
    EXPECT_EQ(DDS_TypeCode_member_offset(command, 2), offsetof(QTV_VX_ADMIN_Command, _u.printFormat));
    EXPECT_NE(DDS_TypeCode_member_type(command, 1)->sequence_ops, nullptr);
}

TEST(TypeCode, EnumeratorsCarryTheirValues) {
    const DDS_TypeCode *format = QTV_VX_ADMIN_QTVLoggerPrintFormat_get_typecode();
    ASSERT_EQ(DDS_TypeCode_member_count(format), 7u);
    EXPECT_STREQ(DDS_TypeCode_member_name(format, 6), "QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL");
    EXPECT_EQ(DDS_TypeCode_member_label(format, 6), QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL);
    EXPECT_EQ(DDS_TypeCode_member_count(QTV_VX_ADMIN_QTVLoggerVerbosity_get_typecode()), 6u);
}

// Each test runs in its own process, so these really are the first calls.
TEST(TypeCodeConcurrency, FirstCallsFromManyThreadsSeeCompleteCodes) {
    std::vector<const DDS_TypeCode *> seen(4);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < seen.size(); ++t) {
        threads.emplace_back([&seen, t] { seen[t] = QTV_VX_ADMIN_CommandRequest_get_typecode(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const DDS_TypeCode *tc : seen) {
        ASSERT_EQ(tc, seen[0]);
        const DDS_TypeCode *command = DDS_TypeCode_member_type(tc, 3);
        ASSERT_NE(command, nullptr);
        EXPECT_NE(DDS_TypeCode_content_type(DDS_TypeCode_member_type(command, 1)), nullptr);
    }
}
