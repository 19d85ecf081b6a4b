// The `vexar` element, read from documents by the real parser: what each
// child's text stores, what it refuses and how the refusal is reported,
// which tags count where; its extension class and objects, finding the
// element, starting the logger from it and saving it back.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "config/XMLConfig.h"
#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/participant.hpp"
#include "support/saved_xml.hpp"
#include "support/xml_config_document.hpp"
#include "vexar/Vexar.h"

using namespace vexar_test;

namespace {

using Field = std::function<long long(const QTV_VX_Options &)>;

const Field filterLevel = [](const QTV_VX_Options &o) { return o.filterLevel; };
const Field enabled = [](const QTV_VX_Options &o) { return o.enabled; };
const Field echoToStdout = [](const QTV_VX_Options &o) { return o.echoToStdout; };
const Field logInfrastructure = [](const QTV_VX_Options &o) { return o.logInfrastructureMessages; };
const Field queueSize = [](const QTV_VX_Options &o) { return o.queueSize; };
const Field mask = [](const QTV_VX_Options &o) { return o.threadSettings.mask; };
const Field priority = [](const QTV_VX_Options &o) { return o.threadSettings.priority; };
const Field stackSize = [](const QTV_VX_Options &o) { return o.threadSettings.stack_size; };
const Field cpuRotation = [](const QTV_VX_Options &o) { return o.threadSettings.cpu_rotation; };

std::string thread(const std::string &children) { return "<thread>" + children + "</thread>"; }
std::string child(const std::string &tag, const std::string &text) { return "<" + tag + ">" + text + "</" + tag + ">"; }
std::string threadChild(const std::string &tag, const std::string &text) { return thread(child(tag, text)); }

struct StoredCase {
    std::string body;
    Field field;
    long long expected;
};

struct RefusedCase {
    std::string body;                                         // one line: the errors are on line 3
    std::vector<std::pair<std::string, std::string>> errors;  // message, reporting name
};

class XmlConfigElement : public XmlConfigDocument {
protected:
    // Every row is its own document; each loads without a parse error and
    // stores its value.
    void expectStored(const std::vector<StoredCase> &cases) {
        for (const StoredCase &c : cases) {
            recordedParseErrors().clear();
            ASSERT_EQ(load(vexarDocument(c.body)), DDS_RETCODE_OK) << c.body;
            EXPECT_TRUE(recordedParseErrors().empty()) << c.body;
            if (QTV_VX_Options *stored = options()) {
                EXPECT_EQ(c.field(*stored), c.expected) << c.body;
            }
            unload();
        }
    }
};

}  // namespace

TEST_F(XmlConfigElement, EveryChildStoresWhatItsTextSays) {
    const std::string longMask = "STDIO" + std::string(QTV_VX_XMLCONFIG_MASK_BUFFER_SIZE - 1 - 5, ' ');
    const std::vector<StoredCase> cases = {
        {"", enabled, 0},  // without <enabled> the element does not start the logger
        {child("filter_level", "WARNING"), filterLevel, 400},
        {child("filter_level", "450"), filterLevel, 450},
        {child("filter_level", "12abc"), filterLevel, 12},
        {child("enabled", "true"), enabled, 1},
        {child("enabled", "YES"), enabled, 1},
        {child("enabled", "0"), enabled, 0},
        {child("echo_to_stdout", "true"), echoToStdout, 1},
        {child("log_infrastructure_messages", "false"), logInfrastructure, 0},
        {threadChild("mask", " stdio | floating_point "), mask, 3},
        {threadChild("mask", "DDS_THREAD_SETTINGS_REALTIME_PRIORITY|thread_settings_priority_enforce"), mask, 24},
        {threadChild("mask", "MASK_DEFAULT | Stdio"), mask, 2},
        {threadChild("mask", longMask), mask, 2},  // the longest text that the buffer holds
        {threadChild("priority", "THREAD_PRIORITY_HIGH"), priority, -9999999},
        {threadChild("priority", "20"), priority, 20},
        {threadChild("priority", "-5"), priority, -5},
        {threadChild("stack_size", "thread_stack_size_default"), stackSize, -1},
        {threadChild("stack_size", "0x10000"), stackSize, 65536},
        {threadChild("stack_size", "010"), stackSize, 8},
        {threadChild("cpu_rotation", "cpu_rr_rotation"), cpuRotation, 1},
        {threadChild("cpu_rotation", "DDS_THREAD_SETTINGS_CPU_NO_ROTATION"), cpuRotation, 0},
        {child("queue_size", "0x20"), queueSize, 32},
    };
    expectStored(cases);
}

// Only the element's own children open everywhere; the thread's children
// count only straight inside <thread>, and tags are case-sensitive.
TEST_F(XmlConfigElement, ChildTagsCountOnlyWhereTheyBelong) {
    const std::vector<StoredCase> cases = {
        {child("mask", "STDIO"), mask, 0},
        {thread(child("queue_size", "5") + child("mask", "STDIO")), mask, 0},
        {thread(child("queue_size", "5") + child("mask", "STDIO")), queueSize, 5},
        {thread(child("priority", "5")) + child("filter_level", "DEBUG"), filterLevel, 700},
        {child("Filter_Level", "DEBUG"), filterLevel, 600},
        {child("unknown", "7") + child("queue_size", "7"), queueSize, 7},
    };
    expectStored(cases);
}

// A refused text reaches the application's function with the reporting
// function's name and the line, and the parser refuses the document.
TEST_F(XmlConfigElement, RefusedTextsAreReportedWithNameAndLineAndFailTheDocument) {
    const std::string filter = "QTV_VX_XMLConfig_getFilterLevelFromString";
    const std::string invalidFilter = "invalid filter level string in XML configuration";
    const std::string end = "QTV_VX_XMLConfig_onEndElement";
    const std::string maskName = "QTV_VX_XMLConfig_getThreadSettingsKindMask";
    const std::string illegalKind = "illegal value on thread mask XML tag";
    const std::string stack = "QTV_VX_XMLConfig_getThreadStackSize";
    const std::string cpu = "QTV_VX_XMLConfig_addElementToCpuList";
    const std::string queue = "QTV_VX_XMLConfig_getQueueSize";
    const std::string expected = "integer expected in XML text";
    const std::string outOfBounds = "integer out of bounds in XML text";
    const std::string positive = "positive integer expected";
    const std::string huge = "99999999999999999999";
    const std::vector<RefusedCase> cases = {
        {child("filter_level", "-5"),
         {{"negative integer not allowed for filter level", filter}, {invalidFilter, end}}},
        {child("filter_level", "warning"), {{expected, filter}, {invalidFilter, end}}},
        {threadChild("mask", "STDIO|BOGUS|REALTIME_PRIORITY"), {{illegalKind, maskName}}},
        {threadChild("mask", "CANCEL_ASYNCHRONOUS"), {{illegalKind, maskName}}},
        {threadChild("mask", std::string(QTV_VX_XMLCONFIG_MASK_BUFFER_SIZE, 'S')),
         {{"thread settings mask string too long", maskName}}},
        {threadChild("priority", "high"), {{expected, "QTV_VX_XMLConfig_getThreadPriority"}}},
        {threadChild("stack_size", "-1"), {{positive, stack}}},
        {threadChild("stack_size", "0x80000000"), {{positive, stack}}},  // negative as 32 bits
        {threadChild("stack_size", huge), {{outOfBounds, stack}}},
        {thread("<cpu_list><element>-2</element></cpu_list>"), {{positive, cpu}}},
        {threadChild("cpu_rotation", "ROUND_ROBIN"),
         {{"error getting cpu_rotation", "QTV_VX_XMLConfig_getCpuRotation"}}},
        {child("queue_size", "0"), {{positive, queue}}},
        {child("queue_size", "abc"), {{expected, queue}}},
        {child("queue_size", huge), {{outOfBounds, queue}}},
        {child("enabled", "perhaps"), {}},  // the middleware reports a malformed boolean itself
    };
    for (const RefusedCase &c : cases) {
        recordedParseErrors().clear();
        std::vector<ParseError> expectedErrors;
        for (const auto &[message, reportingName] : c.errors) expectedErrors.push_back({message, reportingName, 3});
        capturedStdout([&] { EXPECT_EQ(load(vexarDocument(c.body)), DDS_RETCODE_ERROR) << c.body.substr(0, 80); });
        EXPECT_EQ(recordedParseErrors(), expectedErrors) << c.body.substr(0, 80);
        EXPECT_EQ(root(), nullptr) << "a refused document leaves nothing loaded";
    }
}

// errno is deliberately not cleared before a conversion: a range error left
// on the thread by an earlier one refuses a later number too.
TEST_F(XmlConfigElement, ARangeErrorLeftOnTheThreadRefusesTheNextNumber) {
    std::string printed = capturedStdout([&] {
        EXPECT_EQ(
            load(vexarDocument(threadChild("stack_size", "99999999999999999999") + "\n" + child("queue_size", "5"))),
            DDS_RETCODE_ERROR);
    });
    const std::vector<ParseError> expected = {
        {"integer out of bounds in XML text", "QTV_VX_XMLConfig_getThreadStackSize", 3},
        {"integer out of bounds in XML text", "QTV_VX_XMLConfig_getQueueSize", 4},
    };
    EXPECT_EQ(recordedParseErrors(), expected);
    EXPECT_EQ(reportLines(printed), "VX Error: QTV_VX_Options_setQueueSize: Queue Size must be positive\n");
}

namespace {

// Forwards to the element's end-tag callback, then takes its error flag
// back, so that the parser keeps the document and the test can see what a
// refused text left in the options.
void endTagKeepingTheDocument(DDS_XMLObject *object, const char *tag, const char *text, DDS_XMLContext *context) {
    QTV_VX_XMLConfig_onEndElement(object, tag, text, context);
    context->error = 0;
}

QTV_VX_XMLConfig_ExtensionClassListener gRecordingListener{recordParseError};

DDS_XMLExtensionClass *classKeepingRefusedDocuments() {
    return DDS_XMLExtensionClass_new("vexar", DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE, QTV_VX_XMLConfig_onStartElement,
                                     endTagKeepingTheDocument, QTV_VX_XMLConfig_new, QTV_VX_XMLConfig_delete,
                                     QTV_VX_XMLConfig_save, &gRecordingListener);
}

}  // namespace

// A refused text leaves the option as it was, except the priority, stored
// as 0, and the queue size, passed to its setter as 0 (which refuses it).
TEST_F(XmlConfigElement, RefusedTextsLeaveTheOptionsAsTheyWere) {
    useClass(classKeepingRefusedDocuments(), DDS_XMLExtensionClass_delete);
    const std::string body = child("filter_level", "DEBUG") + child("filter_level", "loud") +
                             thread(child("mask", "STDIO|BOGUS|REALTIME_PRIORITY") + child("priority", "high") +
                                    child("stack_size", "4096") + child("stack_size", "-7") +
                                    "<cpu_list><element>1</element><element>-2</element></cpu_list>" +
                                    child("cpu_rotation", "cpu_rr_rotation") + child("cpu_rotation", "sideways")) +
                             child("queue_size", "64") + child("queue_size", "0");
    std::string printed = capturedStdout([&] { ASSERT_EQ(load(vexarDocument(body)), DDS_RETCODE_OK); });

    QTV_VX_Options &o = *options();
    EXPECT_EQ(o.filterLevel, 700);
    EXPECT_EQ(o.threadSettings.mask, 2u);  // the bits before the unknown name
    EXPECT_EQ(o.threadSettings.priority, 0);
    EXPECT_EQ(o.threadSettings.stack_size, 4096);
    DDS_LongSeq &cpus = o.threadSettings.cpu_list;
    ASSERT_EQ(DDS_LongSeq_get_length(&cpus), 2);  // grown, its last entry unwritten
    EXPECT_EQ(DDS_LongSeq_get(&cpus, 0), 1);
    EXPECT_EQ(o.threadSettings.cpu_rotation, DDS_THREAD_SETTINGS_CPU_RR_ROTATION);
    EXPECT_EQ(o.queueSize, 64u);
    EXPECT_EQ(printed, "VX Error: QTV_VX_Options_setQueueSize: Queue Size must be positive\n");
    EXPECT_EQ(recordedParseErrors().size(), 8u);
}

// Called outside a parse, a converter prints what it would have reported.
TEST(XmlConfigConverters, WithoutAnErrorFunctionTheyPrint) {
    DDS_Long size = 9;
    EXPECT_EQ(capturedStdout([&] { EXPECT_FALSE(QTV_VX_XMLConfig_getQueueSize("0", nullptr, nullptr, &size)); }),
              "VX Error: QTV_VX_XMLConfig_getQueueSize: positive integer expected\n");
    EXPECT_EQ(size, 9);
}

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

// The cpu list keeps the document's order.
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
                                 "<cpu_list><element>3</element><element>0x1</element><element>0</element></cpu_list>"
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
              "            <element>0</element>\n"
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
