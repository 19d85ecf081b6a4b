// The CDR stream on its own: byte order, alignment, strings, sequences and
// parameter headers, and that no input moves a read past the buffer.
#include <gtest/gtest.h>

#include <string>

#include "support/cdr_test_support.hpp"
#include "platform/cdr/cdr_stream.h"

using vexar_test::Bytes;
using vexar_test::WireBytes;

namespace {

struct Stream {
    Bytes buffer;
    OBLX_CdrStream s;
    explicit Stream(size_t size, bool bigEndian = false) : buffer(size, 0xEE) {
        OBLX_CdrStream_init(&s, buffer.data(), static_cast<DDS_UnsignedLong>(size));
        OBLX_CdrStream_setBigEndian(&s, bigEndian ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE);
    }
    explicit Stream(const Bytes &bytes, bool bigEndian = false) : buffer(bytes) {
        OBLX_CdrStream_initForRead(&s, buffer.data(), static_cast<DDS_UnsignedLong>(buffer.size()));
        OBLX_CdrStream_setBigEndian(&s, bigEndian ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE);
    }
    Bytes written() const { return Bytes(buffer.begin(), buffer.begin() + OBLX_CdrStream_getPosition(&s)); }
};

}  // namespace

TEST(CdrStream, EncapsulationHeaderIsBigEndianAndAlignmentRestartsAfterIt) {
    Stream out(16, /*bigEndian=*/false);
    ASSERT_TRUE(OBLX_CdrStream_serializeUnsignedShort(&out.s, 0xFFFF));  // the header sits at offset 2
    ASSERT_TRUE(OBLX_CdrStream_serializeEncapsulation(&out.s, OBLX_CDR_ENCAPSULATION_PL_CDR_LE, 0));
    DDS_UnsignedLong origin = OBLX_CdrStream_resetAlignment(&out.s);
    ASSERT_TRUE(OBLX_CdrStream_serializeLong(&out.s, 1));  // at 6: aligned from the new origin, no padding
    OBLX_CdrStream_restoreAlignment(&out.s, origin);
    ASSERT_TRUE(OBLX_CdrStream_serializeLong(&out.s, 2));  // at 10: padded to 12 from the old origin
    EXPECT_EQ(out.written(), (Bytes{0xFF, 0xFF, 0x00, 0x03, 0x00, 0x00, 1, 0, 0, 0, 0, 0, 2, 0, 0, 0}));

    Stream in(Bytes{0x00, 0x02, 0x00, 0x00});
    DDS_UnsignedShort id = 99, options = 99;
    ASSERT_TRUE(OBLX_CdrStream_deserializeEncapsulation(&in.s, &id, &options));
    EXPECT_EQ(id, OBLX_CDR_ENCAPSULATION_PL_CDR_BE);
    EXPECT_EQ(options, 0);
}

TEST(CdrStream, StringsAreBoundedBothWays) {
    // Bound 4 = three characters and the NUL.
    Stream out(64);
    EXPECT_TRUE(OBLX_CdrStream_serializeString(&out.s, "abc", 4));
    EXPECT_EQ(out.written(), WireBytes(false).str("abc").bytes);
    DDS_UnsignedLong before = OBLX_CdrStream_getPosition(&out.s);
    EXPECT_FALSE(OBLX_CdrStream_serializeString(&out.s, "abcd", 4));
    EXPECT_FALSE(OBLX_CdrStream_serializeString(&out.s, nullptr, 4));
    EXPECT_EQ(OBLX_CdrStream_getPosition(&out.s), before);

    char buffer[4] = "zz";
    Stream fits(WireBytes(false).str("abc").bytes);
    EXPECT_TRUE(OBLX_CdrStream_deserializeString(&fits.s, buffer, 4));
    EXPECT_STREQ(buffer, "abc");
    Stream tooLong(WireBytes(false).str("abcd").bytes);
    EXPECT_FALSE(OBLX_CdrStream_deserializeString(&tooLong.s, buffer, 4));
    Stream unterminated(WireBytes(false).u32(3).octets({'a', 'b', 'c'}).bytes);
    EXPECT_FALSE(OBLX_CdrStream_deserializeString(&unterminated.s, buffer, 4));
    // A length that claims more bytes than remain fails before copying anything.
    Stream truncated(WireBytes(false).u32(4).octets({'a', 'b'}).bytes);
    EXPECT_FALSE(OBLX_CdrStream_deserializeString(&truncated.s, buffer, 4));
}

namespace {
DDS_Boolean pairElement(OBLX_CdrStream *stream, void *element, void *context) {
    auto *pair = static_cast<DDS_Long *>(element);
    bool writing = context != nullptr;
    if (writing) return OBLX_CdrStream_serializeLong(stream, pair[0]) && OBLX_CdrStream_serializeLong(stream, pair[1]);
    return OBLX_CdrStream_deserializeLong(stream, &pair[0]) && OBLX_CdrStream_deserializeLong(stream, &pair[1]);
}
}  // namespace

TEST(CdrStream, SequencesOfCompositeElementsRespectTheirMaximum) {
    DDS_Long pairs[3][2] = {{1, 2}, {3, 4}, {5, 6}};
    int writing = 1;
    Stream out(64, /*bigEndian=*/true);
    ASSERT_TRUE(OBLX_CdrStream_serializeComplexSequence(&out.s, pairs, 2, 3, sizeof pairs[0], pairElement, &writing));
    EXPECT_EQ(out.written(), WireBytes(true).u32(2).i32(1).i32(2).i32(3).i32(4).bytes);
    EXPECT_FALSE(OBLX_CdrStream_serializeComplexSequence(&out.s, pairs, 3, 2, sizeof pairs[0], pairElement, &writing));

    DDS_Long read[1][2] = {};
    DDS_UnsignedLong length = 0;
    Stream overMaximum(out.written(), /*bigEndian=*/true);
    EXPECT_FALSE(OBLX_CdrStream_deserializeComplexSequence(&overMaximum.s, read, &length, 1, sizeof read[0],
                                                           pairElement, nullptr));
}

// The encoders write short headers (their bytes are checked with the types);
// the extended form carries must-understand in its long id.
TEST(CdrStream, ParameterHeadersCarryTheirLengthAndNeverReachPastTheEnd) {
    Stream out(64, /*bigEndian=*/true);
    OBLX_CdrParameterHeader header;
    ASSERT_TRUE(OBLX_CdrStream_serializeParameterHeader(&out.s, &header, 0x12345, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE));
    ASSERT_TRUE(OBLX_CdrStream_serializeLong(&out.s, 9));
    ASSERT_TRUE(OBLX_CdrStream_finishParameterHeader(&out.s, &header));
    Bytes expected = WireBytes(true).pid(0x7F01, 8).u32(0x40012345).u32(4).i32(9).bytes;
    EXPECT_EQ(out.written(), expected);

    Stream in(expected, /*bigEndian=*/true);
    ASSERT_TRUE(OBLX_CdrStream_deserializeParameterHeader(&in.s, &header));
    EXPECT_EQ(header.memberId, 0x12345u);
    EXPECT_EQ(header.length, 4u);
    EXPECT_TRUE(header.extended);
    EXPECT_TRUE(header.mustUnderstand);

    // A short header cannot carry a long id or a length over 65535.
    Stream big(70000);
    EXPECT_FALSE(
        OBLX_CdrStream_serializeParameterHeader(&big.s, &header, 0x3F02, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE));
    ASSERT_TRUE(OBLX_CdrStream_serializeParameterHeader(&big.s, &header, 1, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE));
    ASSERT_TRUE(OBLX_CdrStream_setPosition(&big.s, OBLX_CdrStream_getPosition(&big.s) + 65536));
    EXPECT_FALSE(OBLX_CdrStream_finishParameterHeader(&big.s, &header));

    // A header whose length points past the end, in either form, fails.
    Stream shortForm(WireBytes(false).pid(1, 5).octets({1, 2, 3, 4}).bytes);
    EXPECT_FALSE(OBLX_CdrStream_deserializeParameterHeader(&shortForm.s, &header));
    Stream extendedForm(WireBytes(false).pid(0x3F01, 8).u32(1).u32(0xFFFFFFF0u).bytes);
    EXPECT_FALSE(OBLX_CdrStream_deserializeParameterHeader(&extendedForm.s, &header));
    Stream cutExtended(WireBytes(false).pid(0x3F01, 8).u32(1).bytes);
    EXPECT_FALSE(OBLX_CdrStream_deserializeParameterHeader(&cutExtended.s, &header));
}
