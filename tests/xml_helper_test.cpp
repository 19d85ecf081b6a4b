// The helpers of XML extension callbacks: booleans, trimming, and the
// writers that save elements back.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/xml/xml_helper.h"
#include "support/log_capture.h"

namespace {

TEST(XmlHelper, BooleansAreReadInAnyCaseWithWhiteSpaceAround) {
    const struct {
        const char *text;
        bool valid;
        DDS_Boolean value;
    } cases[] = {
        {"true", true, 1},   {" TRUE\n", true, 1}, {"\tYes ", true, 1}, {"1", true, 1}, {"False", true, 0},
        {"no", true, 0},     {" 0 ", true, 0},     {"maybe", false, 0}, {"", false, 0}, {"truee", false, 0},
        {"t rue", false, 0}, {"2", false, 0},      {nullptr, false, 0},
    };
    for (const auto &c : cases) {
        const vexar_test::LogCapture capture;
        DDS_XMLContext context{0, nullptr};
        DDS_Boolean value = 1;
        EXPECT_EQ(DDS_XMLHelper_str_to_boolean(&value, c.text, &context), c.valid) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
        EXPECT_EQ(context.error, c.valid ? 0 : 1) << c.text;
        EXPECT_EQ(capture.contains("malformed boolean"), !c.valid) << c.text;
    }
}

TEST(XmlHelper, TrimRemovesWhiteSpaceAtBothEndsOnly) {
    const struct {
        const char *text, *trimmed;
    } cases[] = {
        {" \t\r\n a  b \n\t", "a  b"},
        {"ab", "ab"},
        {"  ", ""},
        {"", ""},
    };
    for (const auto &c : cases) {
        std::string text = c.text;
        EXPECT_TRUE(DDS_XMLHelper_trim(text.data()));
        EXPECT_STREQ(text.c_str(), c.trimmed);
    }
    EXPECT_FALSE(DDS_XMLHelper_trim(nullptr));
}

// Writes every kind of helper output into `context`.
void saveSample(DDS_XMLSaveContext &context) {
    DDS_Long values[] = {3, -40};
    DDS_LongSeq sequence = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_from_array(&sequence, values, 2));
    DDS_LongSeq empty = DDS_SEQUENCE_INITIALIZER;

    DDS_XMLHelper_save_tag("qos", DDS_XML_SAVE_TAG_OPEN, &context);
    DDS_XMLHelper_save_long("depth", -2147483647 - 1, &context);
    DDS_XMLHelper_save_string("name", "a<b>&\"c'", &context);
    DDS_XMLHelper_save_string("none", nullptr, &context);
    DDS_XMLHelper_save_long_seq("ports", &sequence, &context);
    DDS_XMLHelper_save_long_seq("unused", &empty, &context);
    DDS_XMLHelper_save_long_seq("unused", nullptr, &context);
    DDS_XMLHelper_save_indent(&context);
    DDS_XMLHelper_save_freeform(&context, "<raw n=\"%d\"/>\n", 7);
    DDS_XMLHelper_save_tag("qos", DDS_XML_SAVE_TAG_CLOSE, &context);
    DDS_LongSeq_finalize(&sequence);
}

TEST(XmlHelper, SaveHelpersWriteIndentedEscapedElements) {
    DDS_XMLSaveContext context;
    ASSERT_TRUE(DDS_XMLSaveContext_initialize(&context, nullptr));
    EXPECT_STREQ(DDS_XMLSaveContext_get_string(&context), "");
    context.indent = 2;
    context.depth = 1;
    saveSample(context);
    EXPECT_STREQ(DDS_XMLSaveContext_get_string(&context), "  <qos>\n"
                                                          "    <depth>-2147483648</depth>\n"
                                                          "    <name>a&lt;b&gt;&amp;&quot;c&apos;</name>\n"
                                                          "    <ports>\n"
                                                          "      <element>3</element>\n"
                                                          "      <element>-40</element>\n"
                                                          "    </ports>\n"
                                                          "    <raw n=\"7\"/>\n"
                                                          "  </qos>\n");
    EXPECT_EQ(context.depth, 1);
    EXPECT_EQ(context.error, 0);
    DDS_XMLSaveContext_finalize(&context);
}

TEST(XmlHelper, SaveContextWritesTheSameIntoAFileAsIntoItsString) {
    DDS_XMLSaveContext intoString;
    ASSERT_TRUE(DDS_XMLSaveContext_initialize(&intoString, nullptr));
    for (int i = 0; i < 200; ++i) saveSample(intoString);  // past several growths of the string

    char *buffer = nullptr;
    std::size_t size = 0;
    FILE *file = open_memstream(&buffer, &size);
    DDS_XMLSaveContext intoFile;
    ASSERT_TRUE(DDS_XMLSaveContext_initialize(&intoFile, file));
    for (int i = 0; i < 200; ++i) saveSample(intoFile);
    EXPECT_STREQ(DDS_XMLSaveContext_get_string(&intoFile), "");
    std::fclose(file);

    EXPECT_EQ(std::string(buffer, size), DDS_XMLSaveContext_get_string(&intoString));
    EXPECT_EQ(intoString.length, size);
    std::free(buffer);
    DDS_XMLSaveContext_finalize(&intoFile);
    DDS_XMLSaveContext_finalize(&intoString);
}

}  // namespace
