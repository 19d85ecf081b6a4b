// The `vexar` element's extension class and objects, finding the element,
// starting the logger from it and saving it back.
#include <gtest/gtest.h>

#include <string>

#include "config/XMLConfig.h"
#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/participant.hpp"
#include "support/saved_xml.hpp"
#include "support/xml_config_document.hpp"
#include "vexar/Vexar.h"

using namespace vexar_test;

namespace {

constexpr int kStartDomain = domains::kLoggerBase + 30;

using XmlConfigClass = XmlConfigDocument;
using XmlConfigStart = XmlConfigDocument;
using XmlConfigSave = XmlConfigDocument;

std::string errorLine(const std::string &source, const std::string &text) {
    return "VX Error: " + source + ": " + text + "\n";
}

// A class for the element whose listener is `listener`, for the refusals of
// QTV_VX_XMLConfig_new.
DDS_XMLExtensionClass *classWithListener(QTV_VX_XMLConfig_ExtensionClassListener *listener) {
    return DDS_XMLExtensionClass_new("vexar", DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE, QTV_VX_XMLConfig_onStartElement,
                                     QTV_VX_XMLConfig_onEndElement, QTV_VX_XMLConfig_new, QTV_VX_XMLConfig_delete,
                                     QTV_VX_XMLConfig_save, listener);
}

// The element as QTV_VX_XMLConfig_save writes it, from depth 0.
std::string savedElement(const QTV_VX_XMLConfig *element, DDS_Long *error = nullptr) {
    DDS_XMLSaveContext context;
    DDS_XMLSaveContext_initialize(&context, nullptr);
    QTV_VX_XMLConfig_save(element != nullptr ? &element->baseObject : nullptr, &context);
    std::string saved = DDS_XMLSaveContext_get_string(&context);
    if (error != nullptr) *error = context.error;
    DDS_XMLSaveContext_finalize(&context);
    return saved;
}

void expectSameOptions(const QTV_VX_Options &read, const QTV_VX_Options &saved) {
    EXPECT_EQ(read.enabled, saved.enabled);
    EXPECT_EQ(read.filterLevel, saved.filterLevel);
    EXPECT_EQ(read.queueSize, saved.queueSize);
    EXPECT_EQ(read.echoToStdout, saved.echoToStdout);
    EXPECT_EQ(read.logInfrastructureMessages, saved.logInfrastructureMessages);
    EXPECT_TRUE(DDS_ThreadSettings_is_equal(&read.threadSettings, &saved.threadSettings));
}

}  // namespace

TEST_F(XmlConfigClass, IsMadeWithTheApplicationsErrorFunctionOnly) {
    EXPECT_EQ(capturedStdout([] { EXPECT_EQ(QTV_VX_XMLConfig_createXMLExtensionClass(nullptr), nullptr); }),
              errorLine("QTV_VX_XMLConfig_createXMLExtensionClass", "invalid log function"));
    auto *listener =
        static_cast<QTV_VX_XMLConfig_ExtensionClassListener *>(DDS_XMLExtensionClass_get_user_data(extensionClass()));
    EXPECT_EQ(listener->parserErrorLogFunction, recordParseError);
    QTV_VX_XMLConfig_destroyXMLExtensionClass(nullptr);
}

// The parser makes one object per element: an XML object of the class under
// the document's root, with the defaults except that it is not enabled.
TEST_F(XmlConfigClass, MakesOneDisabledDefaultObjectPerElement) {
    ASSERT_EQ(load("<dds>\n<vexar name=\"main\">\n</vexar>\n</dds>\n"), DDS_RETCODE_OK);
    QTV_VX_XMLConfig *element = this->element();
    ASSERT_NE(element, nullptr);
    EXPECT_STREQ(DDS_XMLObject_get_attribute(&element->baseObject, "name"), "main");
    EXPECT_EQ(DDS_XMLObject_get_extension_class(&element->baseObject), extensionClass());
    EXPECT_EQ(element->currentStatus, VX_XMLCONFIG_OTHER);

    QTV_VX_Options *defaults = QTV_VX_Options_createDefault();
    defaults->enabled = 0;
    expectSameOptions(*QTV_VX_XMLConfig_getVXOptions(element), *defaults);
    QTV_VX_Options_delete(defaults);

    // Duplicates are not allowed: a second element of the same name is refused.
    EXPECT_EQ(load("<dds><vexar name=\"main\"/></dds>"), DDS_RETCODE_ERROR);
}

TEST_F(XmlConfigClass, WithoutAnErrorFunctionNoObjectIsMade) {
    QTV_VX_XMLConfig_ExtensionClassListener silent{nullptr};
    const struct {
        DDS_XMLExtensionClass *extensionClass;
        std::string printed;
    } cases[] = {
        {classWithListener(nullptr), errorLine("QTV_VX_XMLConfig_new", "could not get extension listener")},
        {classWithListener(&silent), errorLine("QTV_VX_XMLConfig_new", "invalid parsing error log function")},
    };
    for (const auto &c : cases) {
        useClass(c.extensionClass, DDS_XMLExtensionClass_delete);
        EXPECT_EQ(reportLines(capturedStdout([&] { EXPECT_EQ(load(vexarDocument("")), DDS_RETCODE_ERROR); })),
                  c.printed);
    }
}

TEST_F(XmlConfigClass, TheFirstElementInDocumentOrderIsFound) {
    ASSERT_EQ(load(vexarDocument("<filter_level>100</filter_level>")), DDS_RETCODE_OK);
    ASSERT_EQ(load("<dds><vexar><filter_level>200</filter_level></vexar><vexar/></dds>"), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_XMLConfig_getVXOptions(element())->filterLevel, 100);

    // Depth first: a match among the first child's descendants comes before
    // a later sibling; the siblings of the starting object are searched too.
    char plainTag[] = "plain", vexarTag[] = "vexar";
    DDS_XMLObject sibling{.tag_name = vexarTag}, nested{.tag_name = vexarTag};
    DDS_XMLObject plain{.tag_name = plainTag, .first_child = &nested, .next_sibling = &sibling};
    DDS_XMLObject top{.tag_name = plainTag, .first_child = &plain};
    DDS_XMLObject leaf{.tag_name = plainTag, .next_sibling = &sibling};
    EXPECT_EQ(QTV_VX_XMLConfig_getVXXMLObjectFromRoot(&top), &nested);
    EXPECT_EQ(QTV_VX_XMLConfig_getVXXMLObjectFromRoot(&leaf), &sibling);
    EXPECT_EQ(QTV_VX_XMLConfig_getVXXMLObjectFromRoot(nullptr), nullptr);
    EXPECT_EQ(QTV_VX_XMLConfig_getXMLConfigFromXMLRoot(nullptr), nullptr);
    EXPECT_EQ(capturedStdout([] { EXPECT_EQ(QTV_VX_XMLConfig_getVXOptions(nullptr), nullptr); }),
              errorLine("QTV_VX_XMLConfig_getVXOptions", "invalid XML configuration object"));
}

TEST_F(XmlConfigStart, RefusesMissingOptionsOrParticipantAndSkipsADisabledElement) {
    const std::string source = "QTV_VX_XMLConfig_startWithXMLConfiguration";
    ASSERT_EQ(load(vexarDocument("<queue_size>64</queue_size>")), DDS_RETCODE_OK);
    QTV_VX_Options *options = QTV_VX_XMLConfig_getVXOptions(element());
    auto *someParticipant = reinterpret_cast<DDS_DomainParticipant *>(8);  // never used: the element is disabled

    EXPECT_EQ(capturedStdout(
                  [&] { EXPECT_EQ(QTV_VX_XMLConfig_startWithXMLConfiguration(someParticipant, nullptr, nullptr), 0); }),
              errorLine(source, "no options found in XML configuration"));
    EXPECT_EQ(
        capturedStdout([&] { EXPECT_EQ(QTV_VX_XMLConfig_startWithXMLConfiguration(nullptr, options, nullptr), 0); }),
        errorLine(source, "invalid DomainParticipant"));
    EXPECT_EQ(capturedStdout(
                  [&] { EXPECT_EQ(QTV_VX_XMLConfig_startWithXMLConfiguration(someParticipant, options, "app"), 1); }),
              "VX Info: " + source + ": VX not enabled in XML Options. It won't be created\n");
    EXPECT_EQ(QTV_VX_Vexar_isVexarRunning(), 0);
    EXPECT_EQ(options->domainParticipant, nullptr);
}

// The logger runs on the application's participant with the element's own
// options; a second start leaves it alone, and a save writes the level that
// the running logger has now.
TEST_F(XmlConfigStart, StartsTheLoggerOnceFromTheElement) {
    Participant participant(kStartDomain);
    ASSERT_NE(participant.get(), nullptr);
    // The logger reads the element's options: it goes before the document.
    struct FinalizedAtTheEnd {
        ~FinalizedAtTheEnd() { QTV_VX_Vexar_finalizeInstance(); }
    } finalizeLogger;
    ASSERT_EQ(load(vexarDocument("<enabled>true</enabled>\n<filter_level>DEBUG</filter_level>\n"
                                 "<queue_size>64</queue_size>")),
              DDS_RETCODE_OK);
    QTV_VX_Options *options = QTV_VX_XMLConfig_getVXOptions(element());
    ASSERT_EQ(QTV_VX_XMLConfig_startWithXMLConfiguration(participant.get(), options, "xml-started"), 1);
    ASSERT_EQ(QTV_VX_Vexar_isVexarRunning(), 1);
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    EXPECT_EQ(logger->options, options);
    EXPECT_EQ(logger->filterLevel, 700);
    EXPECT_EQ(options->domainParticipant, participant.get());
    EXPECT_STREQ(options->applicationKind, "xml-started");

    EXPECT_EQ(capturedStdout([&] {
                  EXPECT_EQ(QTV_VX_XMLConfig_startWithXMLConfiguration(participant.get(), options, "again"), 1);
              }),
              "VX Info: QTV_VX_XMLConfig_startWithXMLConfiguration: VX already running. XML Options don't apply\n");
    EXPECT_STREQ(options->applicationKind, "xml-started");

    QTV_VX_Vexar_setFilterLevel(logger, 300);
    EXPECT_NE(savedElement(element()).find("<filter_level>ERROR</filter_level>"), std::string::npos);
}

TEST_F(XmlConfigSave, WritesTheElementInItsFixedForm) {
    ASSERT_EQ(load(vexarDocument("<enabled>yes</enabled>")), DDS_RETCODE_OK);
    EXPECT_EQ(savedElement(element()), "<vexar>\n"
                                       "    <filter_level>INFO</filter_level>\n"
                                       "    <enabled>true</enabled>\n"
                                       "<echo_to_stdout>false</echo_to_stdout>\n"
                                       "<log_infrastructure_messages>true</log_infrastructure_messages>\n"
                                       "    <queue_size>128</queue_size>\n"
                                       "</vexar>\n");
    unload();

    ASSERT_EQ(load(vexarDocument("<filter_level>450</filter_level><echo_to_stdout>1</echo_to_stdout>"
                                 "<thread><mask>priority_enforce|stdio|FLOATING_POINT|REALTIME_PRIORITY</mask>"
                                 "<priority>20</priority><stack_size>65536</stack_size>"
                                 "<cpu_list><element>3</element><element>1</element></cpu_list>"
                                 "<cpu_rotation>CPU_RR_ROTATION</cpu_rotation></thread>"
                                 "<queue_size>256</queue_size>")),
              DDS_RETCODE_OK);
    // A numeric priority is indented once before the choice and once more
    // by the helper that writes it.
    EXPECT_EQ(savedElement(element()),
              "<vexar>\n"
              "    <filter_level>450</filter_level>\n"
              "    <enabled>false</enabled>\n"
              "<echo_to_stdout>true</echo_to_stdout>\n"
              "<log_infrastructure_messages>true</log_infrastructure_messages>\n"
              "    <thread>\n"
              "        <mask>THREAD_SETTINGS_FLOATING_POINT | THREAD_SETTINGS_STDIO | THREAD_SETTINGS_REALTIME_PRIORITY"
              " | THREAD_SETTINGS_PRIORITY_ENFORCE</mask>\n"
              "                <priority>20</priority>\n"
              "        <stack_size>65536</stack_size>\n"
              "        <cpu_list>\n"
              "            <element>3</element>\n"
              "            <element>1</element>\n"
              "        </cpu_list>\n"
              "        <cpu_rotation>THREAD_SETTINGS_CPU_RR_ROTATION</cpu_rotation>\n"
              "    </thread>\n"
              "    <queue_size>256</queue_size>\n"
              "</vexar>\n");
}

TEST_F(XmlConfigSave, WhatIsSavedReadsBackAsTheSameOptions) {
    const std::string bodies[] = {
        "<enabled>true</enabled>",
        "<filter_level>450</filter_level><log_infrastructure_messages>no</log_infrastructure_messages>"
        "<thread><mask>STDIO | REALTIME_PRIORITY</mask><priority>-3</priority><stack_size>0x8000</stack_size>"
        "<cpu_list><element>2</element><element>0</element></cpu_list><cpu_rotation>CPU_RR_ROTATION</cpu_rotation>"
        "</thread><queue_size>17</queue_size><echo_to_stdout>true</echo_to_stdout>",
        "<thread><priority>THREAD_PRIORITY_LOW</priority><cpu_list><element>1</element></cpu_list></thread>",
    };
    for (const std::string &body : bodies) {
        ASSERT_EQ(load(vexarDocument(body)), DDS_RETCODE_OK) << body;
        QTV_VX_Options *read = QTV_VX_Options_createDefault();
        QTV_VX_Options_copy(read, options());
        read->echoToStdout = options()->echoToStdout;  // the two flags that copy leaves alone
        read->logInfrastructureMessages = options()->logInfrastructureMessages;
        const std::string saved = vexar_test::savedXml();
        unload();

        ASSERT_EQ(load(saved), DDS_RETCODE_OK) << saved;
        EXPECT_TRUE(recordedParseErrors().empty()) << saved;
        expectSameOptions(*options(), *read);
        QTV_VX_Options_delete(read);
        unload();
    }
}

// The save reports its failures through the context's error flag. (The
// other failure, a rotation outside the enumeration, cannot be made in C++
// without undefined behaviour.)
TEST_F(XmlConfigSave, WithoutOptionsTheSaveFails) {
    DDS_Long error = 0;
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(savedElement(nullptr, &error), "<vexar>\n    "); }), "");
    EXPECT_EQ(error, 1);
}
