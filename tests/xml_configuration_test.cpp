// The participant factory's XML configuration: documents loaded into one
// tree, extension classes fed their elements, refused documents leaving the
// tree alone, saving and loading back, unloading.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/dds/domain_participant_factory.h"
#include "support/log_capture.h"
#include "support/saved_xml.hpp"
#include "support/temp_file.hpp"

namespace {

using vexar_test::savedXml;
using vexar_test::TempFile;

DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

// What the test classes were told, in order, and how many of their objects live.
struct Recorder {
    std::vector<std::string> events;
    int liveObjects = 0;
};

// The record of a <sensor> (or <station>) element.
struct Sensor {
    DDS_XMLObject object;  // first, so that the tree's pointer is the record's
    DDS_Long rate;
    DDS_Boolean enabled;
};

Recorder &recorderOf(const DDS_XMLExtensionClass *extensionClass) {
    return *static_cast<Recorder *>(DDS_XMLExtensionClass_get_user_data(extensionClass));
}

std::string where(const DDS_XMLContext *context) {
    return std::string(DDS_XMLContext_get_document_name(context)) + ":" +
           std::to_string(DDS_XMLContext_get_current_line_number(context));
}

const char *attribute(const char **attributes, const char *name) {
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2)
        if (std::strcmp(attributes[0], name) == 0) return attributes[1];
    return nullptr;
}

DDS_XMLObject *newSensor(const DDS_XMLExtensionClass *extensionClass, DDS_XMLObject *parent, const char **attributes,
                         DDS_XMLContext *context) {
    Recorder &recorder = recorderOf(extensionClass);
    const char *name = attribute(attributes, "name");
    recorder.events.push_back("new " + std::string(name != nullptr ? name : "-") + " under " +
                              DDS_XMLObject_get_tag_name(parent) + " at " + where(context));
    if (attribute(attributes, "refuse") != nullptr) return nullptr;
    auto *sensor = new Sensor{};
    EXPECT_TRUE(DDS_XMLObject_initialize(&sensor->object, const_cast<DDS_XMLExtensionClass *>(extensionClass), parent,
                                         DDS_XMLExtensionClass_get_tag_name(extensionClass), attributes));
    ++recorder.liveObjects;
    return &sensor->object;
}

void deleteSensor(DDS_XMLObject *object) {
    Recorder &recorder = recorderOf(object->extension_class);
    const char *name = DDS_XMLObject_get_attribute(object, "name");
    recorder.events.push_back("delete " + std::string(name != nullptr ? name : "-"));
    --recorder.liveObjects;
    DDS_XMLObject_finalize(object);
    delete reinterpret_cast<Sensor *>(object);
}

void sensorStartTag(DDS_XMLObject *object, const char *tag, const char **, DDS_XMLContext *context) {
    Recorder &recorder = recorderOf(object->extension_class);
    recorder.events.push_back("start " + std::string(tag) + " at " + where(context));
    if (std::strcmp(tag, "reenter") == 0) {
        const DDS_ReturnCode_t loaded = DDS_DomainParticipantFactory_load_xml_string(factory(), "<qos_library/>");
        const bool rootGiven = DDS_DomainParticipantFactory_get_xml_root(factory()) != nullptr;
        recorder.events.push_back("reentered: " + std::to_string(loaded) + (rootGiven ? " root" : " no root"));
    }
}

void sensorEndTag(DDS_XMLObject *object, const char *tag, const char *text, DDS_XMLContext *context) {
    recorderOf(object->extension_class)
        .events.push_back("end " + std::string(tag) + " [" + text + "] at " + where(context));
    auto *sensor = reinterpret_cast<Sensor *>(object);
    if (std::strcmp(tag, "rate") == 0) sensor->rate = std::atoi(text);
    if (std::strcmp(tag, "enabled") == 0) DDS_XMLHelper_str_to_boolean(&sensor->enabled, text, context);
}

void saveSensor(const DDS_XMLObject *object, DDS_XMLSaveContext *context) {
    const auto *sensor = reinterpret_cast<const Sensor *>(object);
    DDS_XMLHelper_save_indent(context);
    DDS_XMLHelper_save_freeform(context, "<%s name=\"%s\">\n", object->tag_name,
                                DDS_XMLObject_get_attribute(object, "name"));
    ++context->depth;
    DDS_XMLHelper_save_long("rate", sensor->rate, context);
    DDS_XMLHelper_save_string("enabled", sensor->enabled ? "true" : "false", context);
    DDS_XMLHelper_save_tag(object->tag_name, DDS_XML_SAVE_TAG_CLOSE, context);
}

DDS_XMLExtensionClass *newClass(const char *tag, bool isRoot, bool allowDuplicates, Recorder &recorder) {
    return DDS_XMLExtensionClass_new(tag, isRoot, allowDuplicates, sensorStartTag, sensorEndTag, newSensor,
                                     deleteSensor, saveSensor, &recorder);
}

// Two classes registered: <sensor> (nested too, no duplicate names) and
// <station> (top only, duplicates allowed). Everything unloaded at the end.
class XmlConfiguration : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(DDS_DomainParticipantFactory_register_xml_extension_class(factory(), sensorClass), DDS_RETCODE_OK);
        ASSERT_EQ(DDS_DomainParticipantFactory_register_xml_extension_class(factory(), stationClass), DDS_RETCODE_OK);
    }
    void TearDown() override {
        EXPECT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK);
        EXPECT_EQ(recorder.liveObjects, 0);
        EXPECT_EQ(DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), sensorClass), DDS_RETCODE_OK);
        EXPECT_EQ(DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), stationClass), DDS_RETCODE_OK);
        DDS_XMLExtensionClass_delete(sensorClass);
        DDS_XMLExtensionClass_delete(stationClass);
    }
    DDS_ReturnCode_t load(const char *text) { return DDS_DomainParticipantFactory_load_xml_string(factory(), text); }

    Recorder recorder;
    DDS_XMLExtensionClass *sensorClass = newClass("sensor", false, false, recorder);
    DDS_XMLExtensionClass *stationClass = newClass("station", true, true, recorder);
};

TEST_F(XmlConfiguration, DocumentsOfBothShapesAddPlainElementsUnderOneRoot) {
    EXPECT_EQ(DDS_DomainParticipantFactory_get_xml_root(factory()), nullptr);
    ASSERT_EQ(load("<dds>\n"
                   "<qos_library name=\"lib\">\n"
                   "  <qos_profile name=\"x &amp; y\">\n"
                   "    <domain_participant_qos><participant_name>\n"
                   "      <name>  some\n  text  </name><role_name/>\n"
                   "    </participant_name></domain_participant_qos>\n"
                   "  </qos_profile>\n"
                   "</qos_library>\n"
                   "</dds>"),
              DDS_RETCODE_OK);
    ASSERT_EQ(load("<qos_library name=\"second\"/>"), DDS_RETCODE_OK);

    DDS_XMLObject *root = DDS_DomainParticipantFactory_get_xml_root(factory());
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(DDS_XMLObject_get_tag_name(root), "dds");
    EXPECT_EQ(DDS_XMLObject_get_parent(root), nullptr);
    DDS_XMLObject *library = DDS_XMLObject_get_first_child(root);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(DDS_XMLObject_get_parent(library), root);
    EXPECT_STREQ(DDS_XMLObject_get_attribute(library, "name"), "lib");
    EXPECT_STREQ(DDS_XMLObject_get_document_name(library), "<string>");
    EXPECT_EQ(DDS_XMLObject_get_line_number(library), 2u);
    EXPECT_EQ(DDS_XMLObject_get_extension_class(library), nullptr);

    DDS_XMLObject *profile = DDS_XMLObject_get_first_child(library);
    ASSERT_NE(profile, nullptr);
    EXPECT_STREQ(DDS_XMLObject_get_attribute(profile, "name"), "x & y");
    EXPECT_EQ(DDS_XMLObject_get_attribute(profile, "missing"), nullptr);
    EXPECT_EQ(DDS_XMLObject_get_text(profile), nullptr);  // white space around children is no text
    DDS_XMLObject *entityName = DDS_XMLObject_get_first_child(DDS_XMLObject_get_first_child(profile));
    ASSERT_NE(entityName, nullptr);
    EXPECT_STREQ(DDS_XMLObject_get_tag_name(entityName), "participant_name");
    EXPECT_EQ(DDS_XMLObject_get_text(entityName), nullptr);
    DDS_XMLObject *name = DDS_XMLObject_get_first_child(entityName);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(DDS_XMLObject_get_parent(name), entityName);
    EXPECT_STREQ(DDS_XMLObject_get_text(name), "some\n  text");  // trimmed, inner white space kept
    EXPECT_EQ(DDS_XMLObject_get_line_number(name), 5u);
    DDS_XMLObject *roleName = DDS_XMLObject_get_next_sibling(name);
    ASSERT_NE(roleName, nullptr);
    EXPECT_STREQ(DDS_XMLObject_get_tag_name(roleName), "role_name");
    EXPECT_EQ(DDS_XMLObject_get_text(roleName), nullptr);
    EXPECT_EQ(DDS_XMLObject_get_next_sibling(roleName), nullptr);

    DDS_XMLObject *second = DDS_XMLObject_get_next_sibling(library);
    ASSERT_NE(second, nullptr);
    EXPECT_STREQ(DDS_XMLObject_get_attribute(second, "name"), "second");
    EXPECT_EQ(DDS_XMLObject_get_next_sibling(second), nullptr);
}

TEST_F(XmlConfiguration, ExtensionClassIsToldEveryTagWithItsTextAndLine) {
    const TempFile file("<dds>\n"
                        "<sensor name=\"s1\"><rate> 5 </rate>\n"
                        "<limits><low>1</low></limits>tail</sensor>\n"
                        "<qos_library name=\"lib\">\n"
                        "<qos_profile name=\"p\"/>\n"
                        "</qos_library>\n"
                        "<sensor name=\"s2\"/>\n"
                        "</dds>\n");
    ASSERT_EQ(DDS_DomainParticipantFactory_load_xml_file(factory(), file.path()), DDS_RETCODE_OK);
    const std::string at = std::string(" at ") + file.path() + ":";
    const std::vector<std::string> expected{
        "new s1 under dds" + at + "2", "start rate" + at + "2",          "end rate [ 5 ]" + at + "2",
        "start limits" + at + "3",     "start low" + at + "3",           "end low [1]" + at + "3",
        "end limits []" + at + "3",    "end sensor [\ntail]" + at + "3", "new s2 under dds" + at + "7",
        "end sensor []" + at + "7",
    };
    EXPECT_EQ(recorder.events, expected);

    DDS_XMLObject *s1 = DDS_XMLObject_get_first_child(DDS_DomainParticipantFactory_get_xml_root(factory()));
    ASSERT_NE(s1, nullptr);
    EXPECT_EQ(DDS_XMLObject_get_extension_class(s1), sensorClass);
    EXPECT_EQ(DDS_XMLObject_get_first_child(s1), nullptr);  // its inner tags went to the class
    EXPECT_STREQ(DDS_XMLObject_get_document_name(s1), file.path());
    EXPECT_EQ(DDS_XMLObject_get_line_number(s1), 2u);
    EXPECT_EQ(reinterpret_cast<Sensor *>(s1)->rate, 5);
    DDS_XMLObject *library = DDS_XMLObject_get_next_sibling(s1);
    EXPECT_EQ(DDS_XMLObject_get_extension_class(library), nullptr);
    DDS_XMLObject *s2 = DDS_XMLObject_get_next_sibling(library);
    ASSERT_NE(s2, nullptr);
    EXPECT_EQ(DDS_XMLObject_get_parent(s2), DDS_DomainParticipantFactory_get_xml_root(factory()));
    EXPECT_EQ(DDS_XMLObject_get_extension_class(s2), sensorClass);

    recorder.events.clear();
    ASSERT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK);
    EXPECT_EQ(recorder.events, (std::vector<std::string>{"delete s1", "delete s2"}));
    EXPECT_EQ(DDS_DomainParticipantFactory_get_xml_root(factory()), nullptr);
}

TEST_F(XmlConfiguration, DuplicatesAreSameNamedElementsOfAStrictClassUnderOneParent) {
    EXPECT_EQ(load("<dds><sensor/><sensor/><sensor name=\"a\"/><sensor name=\"b\"/>"
                   "<station name=\"s\"/><station name=\"s\"/></dds>"),
              DDS_RETCODE_OK);
    EXPECT_EQ(recorder.liveObjects, 6);
}

// Each document has errors: all of them are reported, the document's
// objects are deleted and what was loaded before stays as it was.
TEST_F(XmlConfiguration, RefusedDocumentReportsEveryErrorAndLeavesTheTreeAlone) {
    const struct {
        const char *document;
        std::vector<std::string> errors;
    } cases[] = {
        {"", {"<string>:1: malformed XML: no element found"}},
        {"<dds>\n<qos_library>\n</dds>", {"<string>:3: malformed XML: mismatched tag"}},
        {"<dds>\n<unknown><sensor name=\"x\"/></unknown>\n<qos_library name=\"fine\"/>\n<other/>\n<dds/></dds>",
         {"<string>:2: unknown element <unknown>", "<string>:4: unknown element <other>",
          "<string>:5: unknown element <dds>"}},
        {"<dds>\n<sensor name=\"a\"/>\n<sensor name=\"a\"/>\n</dds>",
         {"<string>:3: duplicate <sensor> named \"a\" (the first is at <string>:2)"}},
        {"<sensor name=\"loaded\"/>", {"<string>:1: duplicate <sensor> named \"loaded\" (the first is at <string>:2)"}},
        // Nested extension objects: duplicates are per parent, and a QoS
        // library holds none.
        {"<qos_library name=\"L\">\n<qos_profile name=\"P\">\n<sensor name=\"a\"/><sensor name=\"a\"/></qos_profile>"
         "</qos_library>",
         {"<string>:3: duplicate <sensor> named \"a\" (the first is at <string>:3)",
          "<string>:3: unknown element <sensor> in <qos_profile>"}},
        {"<dds><qos_library name=\"A\">\n<sensor name=\"a\"/></qos_library>\n"
         "<qos_library name=\"B\"><sensor name=\"a\"/></qos_library></dds>",
         {"<string>:2: unknown element <sensor> in <qos_library> (expected <qos_profile>)",
          "<string>:3: unknown element <sensor> in <qos_library> (expected <qos_profile>)"}},
        {"<sensor name=\"b\">\n<enabled> maybe </enabled>\n</sensor>",
         {"<string>:2: malformed boolean \" maybe \" (expected true/false, 1/0 or yes/no)"}},
        {"<dds><sensor name=\"c\"/>\n<sensor name=\"d\" refuse=\"yes\"/></dds>",
         {"<string>:2: <sensor> refused by the extension class <sensor>"}},
        {"<qos_library name=\"L\">\n<station/>\n</qos_library>",
         {"<string>:2: <station> may stand only at the top of a document"}},
    };
    ASSERT_EQ(load("\n<sensor name=\"loaded\"/>"), DDS_RETCODE_OK);
    const std::string before = savedXml();
    for (const auto &c : cases) {
        const vexar_test::LogCapture capture;
        EXPECT_EQ(load(c.document), DDS_RETCODE_ERROR) << c.document;
        const std::string log = capture.text();
        for (const std::string &error : c.errors) EXPECT_TRUE(capture.contains(error)) << error << "\nin: " << log;
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), static_cast<long>(c.errors.size())) << log;
        EXPECT_EQ(savedXml(), before) << c.document;
        EXPECT_EQ(recorder.liveObjects, 1) << c.document;
    }
}

TEST_F(XmlConfiguration, SavedConfigurationLoadsBackToTheSameTree) {
    ASSERT_EQ(load("<dds>\n"
                   "<qos_library name=\"lib &amp; co\">\n"
                   "<qos_profile name=\"tab&#9;nl&#10;q&quot;'&lt;&#13;\">\n"
                   "<domain_participant_qos><participant_name>\n"
                   "  <name>text &lt;&amp;&gt;</name>\n"
                   "  <role_name/>\n"
                   "</participant_name></domain_participant_qos>\n"
                   "</qos_profile>\n"
                   "</qos_library>\n"
                   "<sensor name=\"s\"><rate>7</rate><enabled>yes</enabled></sensor>\n"
                   "</dds>"),
              DDS_RETCODE_OK);
    const std::string saved = savedXml();
    EXPECT_EQ(saved, "<dds>\n"
                     "    <qos_library name=\"lib &amp; co\">\n"
                     "        <qos_profile name=\"tab&#9;nl&#10;q&quot;&apos;&lt;&#13;\">\n"
                     "            <domain_participant_qos>\n"
                     "                <participant_name>\n"
                     "                    <name>text &lt;&amp;&gt;</name>\n"
                     "                    <role_name/>\n"
                     "                </participant_name>\n"
                     "            </domain_participant_qos>\n"
                     "        </qos_profile>\n"
                     "    </qos_library>\n"
                     "    <sensor name=\"s\">\n"
                     "        <rate>7</rate>\n"
                     "        <enabled>true</enabled>\n"
                     "    </sensor>\n"
                     "</dds>\n");
    ASSERT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK);
    EXPECT_EQ(savedXml(), "<dds/>\n");
    ASSERT_EQ(load(saved.c_str()), DDS_RETCODE_OK);
    EXPECT_EQ(savedXml(), saved);
    const DDS_XMLObject *library = DDS_XMLObject_get_first_child(DDS_DomainParticipantFactory_get_xml_root(factory()));
    EXPECT_STREQ(DDS_XMLObject_get_attribute(DDS_XMLObject_get_first_child(library), "name"), "tab\tnl\nq\"'<\r");
}

TEST_F(XmlConfiguration, ClassesAreRegisteredOncePerTagAndUnregisteredOnlyWhenUnused) {
    const vexar_test::LogCapture quiet;
    Recorder other;
    for (const char *tag : {"sensor", "dds", "qos_library"}) {
        DDS_XMLExtensionClass *refused = newClass(tag, false, false, other);
        EXPECT_EQ(DDS_DomainParticipantFactory_register_xml_extension_class(factory(), refused),
                  DDS_RETCODE_PRECONDITION_NOT_MET)
            << tag;
        EXPECT_EQ(DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), refused),
                  DDS_RETCODE_BAD_PARAMETER);
        DDS_XMLExtensionClass_delete(refused);
    }
    ASSERT_EQ(load("<sensor name=\"loaded\"/>"), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), sensorClass),
              DDS_RETCODE_PRECONDITION_NOT_MET);
    EXPECT_EQ(DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), stationClass), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipantFactory_register_xml_extension_class(factory(), stationClass), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipantFactory_register_xml_extension_class(nullptr, stationClass),
              DDS_RETCODE_BAD_PARAMETER);
}

TEST_F(XmlConfiguration, CallbacksCannotCallBackIntoTheFactory) {
    const vexar_test::LogCapture capture;
    ASSERT_EQ(load("<sensor name=\"r\"><reenter/></sensor>"), DDS_RETCODE_OK);
    EXPECT_EQ(recorder.events.at(2), "reentered: " + std::to_string(DDS_RETCODE_ILLEGAL_OPERATION) + " no root");
    EXPECT_EQ(DDS_XMLObject_get_next_sibling(
                  DDS_XMLObject_get_first_child(DDS_DomainParticipantFactory_get_xml_root(factory()))),
              nullptr);
    EXPECT_TRUE(capture.contains("load_xml_string: failure: called from an XML extension callback"));
}

TEST_F(XmlConfiguration, FileErrorsNameTheFile) {
    const TempFile malformed("<dds>\n<qos_library>\n</dds>\n");
    const vexar_test::LogCapture capture;
    EXPECT_EQ(DDS_DomainParticipantFactory_load_xml_file(factory(), malformed.path()), DDS_RETCODE_ERROR);
    EXPECT_TRUE(capture.contains(std::string(malformed.path()) + ":3: malformed XML: mismatched tag"));
    EXPECT_EQ(DDS_DomainParticipantFactory_load_xml_file(factory(), "/nonexistent/vexar.xml"), DDS_RETCODE_ERROR);
    EXPECT_TRUE(capture.contains("fopen /nonexistent/vexar.xml: No such file or directory")) << capture.text();
}

// Loads, saves, unloads and profile look-ups from several threads at once.
TEST(XmlConfigurationConcurrency, OperationsFromManyThreadsAreSerialized) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 100;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &failures] {
            FILE *sink = std::fopen("/dev/null", "w");
            for (int i = 0; i < kRounds; ++i) {
                // A profile name of its own each round: a library may grow
                // over several documents, but never repeat a profile.
                const std::string library = "t" + std::to_string(t);
                const std::string document = "<qos_library name=\"" + library + "\"><qos_profile name=\"p" +
                                             std::to_string(i) + "\"/></qos_library>";
                bool ok = DDS_DomainParticipantFactory_load_xml_string(factory(), document.c_str()) == DDS_RETCODE_OK;
                ok = ok && DDS_DomainParticipantFactory_save_xml(factory(), sink) == DDS_RETCODE_OK;
                DDS_StringSeq names = DDS_SEQUENCE_INITIALIZER;
                ok = ok && DDS_DomainParticipantFactory_get_qos_profiles(factory(), &names, library.c_str()) ==
                               DDS_RETCODE_OK;
                DDS_StringSeq_finalize(&names);
                if (i % 10 == t) ok = ok && DDS_DomainParticipantFactory_unload_xml(factory()) == DDS_RETCODE_OK;
                if (!ok) ++failures;
            }
            std::fclose(sink);
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK);
}

}  // namespace
