// The `vexar` element through the participant factory's real parser: a test
// fixture that registers an extension class for the element, records the
// parse errors that reach the application's function, loads documents and
// finds the element; it unloads and unregisters when the test ends.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "config/XMLConfig.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/xml_configuration.h"

namespace vexar_test {

struct ParseError {
    std::string message;
    std::string reportingName;
    DDS_UnsignedLong line;
    bool operator==(const ParseError &) const = default;
};

inline void PrintTo(const ParseError &error, std::ostream *out) {
    *out << error.reportingName << ": " << error.message << " (line " << error.line << ")";
}

// The application's parse-error function is a plain C function, so what it
// receives goes into this one list.
inline std::vector<ParseError> &recordedParseErrors() {
    static std::vector<ParseError> errors;
    return errors;
}

inline void recordParseError(const char *message, const char *reportingName, DDS_UnsignedLong line) {
    recordedParseErrors().push_back({message, reportingName, line});
}

inline DDS_DomainParticipantFactory *participantFactory() { return DDS_DomainParticipantFactory_get_instance(); }

// The library's own report lines among what was printed; the middleware's
// logger prints its account of a refused document there too.
inline std::string reportLines(const std::string &printed) {
    std::istringstream lines(printed);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("VX ")) kept += line + "\n";
    }
    return kept;
}

// <dds> on line 1, <vexar> on line 2, `body` from line 3 on.
inline std::string vexarDocument(const std::string &body) { return "<dds>\n<vexar>\n" + body + "\n</vexar>\n</dds>\n"; }

class XmlConfigDocument : public testing::Test {
protected:
    void SetUp() override {
        recordedParseErrors().clear();
        useClass(QTV_VX_XMLConfig_createXMLExtensionClass(recordParseError), QTV_VX_XMLConfig_destroyXMLExtensionClass);
    }
    void TearDown() override { dropClass(); }

    // Registers `extensionClass` instead of the current one; `destroy`
    // deletes it at the end.
    void useClass(DDS_XMLExtensionClass *extensionClass, void (*destroy)(DDS_XMLExtensionClass *)) {
        dropClass();
        ASSERT_NE(extensionClass, nullptr);
        extensionClass_ = extensionClass;
        destroy_ = destroy;
        ASSERT_EQ(DDS_DomainParticipantFactory_register_xml_extension_class(participantFactory(), extensionClass),
                  DDS_RETCODE_OK);
    }

    // errno is cleared first: the converters read a range error left over
    // on the thread as their own, and each document here stands alone.
    DDS_ReturnCode_t load(const std::string &document) {
        errno = 0;
        return DDS_DomainParticipantFactory_load_xml_string(participantFactory(), document.c_str());
    }
    void unload() { EXPECT_EQ(DDS_DomainParticipantFactory_unload_xml(participantFactory()), DDS_RETCODE_OK); }

    DDS_XMLObject *root() const { return DDS_DomainParticipantFactory_get_xml_root(participantFactory()); }
    QTV_VX_XMLConfig *element() const { return QTV_VX_XMLConfig_getXMLConfigFromXMLRoot(root()); }
    // The first element's options; null (a failure) without one.
    QTV_VX_Options *options() const {
        QTV_VX_XMLConfig *found = element();
        EXPECT_NE(found, nullptr);
        return found != nullptr ? found->parsedVXOptions : nullptr;
    }

    DDS_XMLExtensionClass *extensionClass() const { return extensionClass_; }

private:
    void dropClass() {
        if (extensionClass_ == nullptr) return;
        unload();
        EXPECT_EQ(DDS_DomainParticipantFactory_unregister_xml_extension_class(participantFactory(), extensionClass_),
                  DDS_RETCODE_OK);
        destroy_(extensionClass_);
        extensionClass_ = nullptr;
    }

    DDS_XMLExtensionClass *extensionClass_ = nullptr;
    void (*destroy_)(DDS_XMLExtensionClass *) = nullptr;
};

}  // namespace vexar_test
