// The factory's XML operations: arguments checked at the C boundary, the
// work done by the factory's XML store.
#include <string>

#include "platform/dds/entity.hpp"
#include "platform/dds/xml_documents.hpp"

using namespace vexar::dds;

namespace {

// What errors and objects of a document given as text name it.
const std::string kStringDocumentName = "<string>";

// The factory and an argument, checked; BAD_PARAMETER (reported) otherwise.
DDS_ReturnCode_t checkCall(const DDS_DomainParticipantFactory *self, const void *argument, const char *argumentName,
                           const char *operation) noexcept {
    if (!isFactory(self, operation) || !isGiven(argument, operation, argumentName)) return DDS_RETCODE_BAD_PARAMETER;
    return DDS_RETCODE_OK;
}

}  // namespace

extern "C" {

DDS_ReturnCode_t DDS_DomainParticipantFactory_register_xml_extension_class(DDS_DomainParticipantFactory *self,
                                                                           DDS_XMLExtensionClass *extension_class) {
    const char *operation = "DDS_DomainParticipantFactory_register_xml_extension_class";
    if (DDS_ReturnCode_t refused = checkCall(self, extension_class, "extension_class", operation)) return refused;
    return guarded(operation, DDS_RETCODE_ERROR,
                   [&] { return xmlDocuments().registerClass(*extension_class, operation); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_unregister_xml_extension_class(DDS_DomainParticipantFactory *self,
                                                                             DDS_XMLExtensionClass *extension_class) {
    const char *operation = "DDS_DomainParticipantFactory_unregister_xml_extension_class";
    if (DDS_ReturnCode_t refused = checkCall(self, extension_class, "extension_class", operation)) return refused;
    return guarded(operation, DDS_RETCODE_ERROR,
                   [&] { return xmlDocuments().unregisterClass(*extension_class, operation); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_load_xml_file(DDS_DomainParticipantFactory *self, const char *path) {
    const char *operation = "DDS_DomainParticipantFactory_load_xml_file";
    if (DDS_ReturnCode_t refused = checkCall(self, path, "path", operation)) return refused;
    return guarded(operation, DDS_RETCODE_ERROR, [&] { return xmlDocuments().loadFile(path, operation); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_load_xml_string(DDS_DomainParticipantFactory *self, const char *text) {
    const char *operation = "DDS_DomainParticipantFactory_load_xml_string";
    if (DDS_ReturnCode_t refused = checkCall(self, text, "text", operation)) return refused;
    return guarded(operation, DDS_RETCODE_ERROR,
                   [&] { return xmlDocuments().load(text, kStringDocumentName, operation); });
}

DDS_XMLObject *DDS_DomainParticipantFactory_get_xml_root(DDS_DomainParticipantFactory *self) {
    const char *operation = "DDS_DomainParticipantFactory_get_xml_root";
    if (!isFactory(self, operation)) return nullptr;
    return guarded(operation, static_cast<DDS_XMLObject *>(nullptr), [&] { return xmlDocuments().root(operation); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_unload_xml(DDS_DomainParticipantFactory *self) {
    const char *operation = "DDS_DomainParticipantFactory_unload_xml";
    if (!isFactory(self, operation)) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(operation, DDS_RETCODE_ERROR, [&] { return xmlDocuments().unload(operation); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_save_xml(DDS_DomainParticipantFactory *self, FILE *out) {
    const char *operation = "DDS_DomainParticipantFactory_save_xml";
    if (DDS_ReturnCode_t refused = checkCall(self, out, "out", operation)) return refused;
    return guarded(operation, DDS_RETCODE_ERROR, [&] { return xmlDocuments().save(out, operation); });
}

}  // extern "C"
