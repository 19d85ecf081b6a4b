#include "xml_files.hpp"

#include <cstdio>
#include <cstring>

#include "dds_session.hpp"
#include "platform/dds/domain_participant_factory.h"
#include "platform/log/logger.h"

namespace vexar::cli {
namespace {

// The element's parse errors name no file: the file being loaded is this one.
std::string gLoadingPath;

void printParseError(const char *message, const char *, DDS_UnsignedLong line) {
    std::fprintf(stderr, "%s:%lu: %s\n", gLoadingPath.c_str(), static_cast<unsigned long>(line), message);
}

// The middleware's own reports of a file already read "FILE:LINE: message":
// while loading, its lines carry no decoration of their own.
class BareDiagnostics {
public:
    BareDiagnostics()
        : logger_(OBLX_Config_Logger_get_instance()), format_(OBLX_Config_Logger_get_print_format(logger_)) {
        OBLX_Config_Logger_set_print_format(logger_, static_cast<OBLX_Config_LogPrintFormat>(0));
    }
    ~BareDiagnostics() { OBLX_Config_Logger_set_print_format(logger_, format_); }
    BareDiagnostics(const BareDiagnostics &) = delete;
    BareDiagnostics &operator=(const BareDiagnostics &) = delete;

private:
    OBLX_Config_Logger *logger_;
    OBLX_Config_LogPrintFormat format_;
    DiagnosticsToStderr toStderr_;
};

DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

const char *attribute(const DDS_XMLObject *object, const char *name) {
    const char *value = DDS_XMLObject_get_attribute(object, name);
    return value != nullptr ? value : "";
}

bool fromFile(const DDS_XMLObject *object, const std::string &path) {
    const char *document = DDS_XMLObject_get_document_name(object);
    return document != nullptr && path == document;
}

}  // namespace

XmlFiles::XmlFiles() : vexarClass_(QTV_VX_XMLConfig_createXMLExtensionClass(printParseError)) {
    if (vexarClass_ == nullptr ||
        DDS_DomainParticipantFactory_register_xml_extension_class(factory(), vexarClass_) != DDS_RETCODE_OK) {
        QTV_VX_XMLConfig_destroyXMLExtensionClass(vexarClass_);
        throw DdsFailure("cannot register the vexar XML element");
    }
}

XmlFiles::~XmlFiles() {
    DDS_DomainParticipantFactory_unload_xml(factory());
    DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), vexarClass_);
    QTV_VX_XMLConfig_destroyXMLExtensionClass(vexarClass_);
}

bool XmlFiles::load(const std::string &path) {
    gLoadingPath = path;
    BareDiagnostics bare;
    return DDS_DomainParticipantFactory_load_xml_file(factory(), path.c_str()) == DDS_RETCODE_OK;
}

QTV_VX_XMLConfig *XmlFiles::vexarElement() const {
    return QTV_VX_XMLConfig_getXMLConfigFromXMLRoot(DDS_DomainParticipantFactory_get_xml_root(factory()));
}

std::vector<XmlEntry> entriesOf(const std::string &path) {
    std::vector<XmlEntry> entries;
    const DDS_XMLObject *root = DDS_DomainParticipantFactory_get_xml_root(factory());
    for (const DDS_XMLObject *top = DDS_XMLObject_get_first_child(root); top != nullptr;
         top = DDS_XMLObject_get_next_sibling(top)) {
        if (!fromFile(top, path)) continue;
        std::string tag = DDS_XMLObject_get_tag_name(top);
        entries.push_back({tag, attribute(top, "name"), DDS_XMLObject_get_line_number(top)});
        if (tag != "qos_library") continue;
        for (const DDS_XMLObject *profile = DDS_XMLObject_get_first_child(top); profile != nullptr;
             profile = DDS_XMLObject_get_next_sibling(profile)) {
            if (std::strcmp(DDS_XMLObject_get_tag_name(profile), "qos_profile") != 0) continue;
            entries.push_back({"qos_profile", std::string(attribute(top, "name")) + "::" + attribute(profile, "name"),
                               DDS_XMLObject_get_line_number(profile)});
        }
    }
    return entries;
}

}  // namespace vexar::cli
