// Arbitrary text into the participant factory's XML loading, with the
// logger's <vexar> element and two test extension classes registered (<item>
// anywhere, <group> only at the top); QoS libraries are the factory's own.
// A refused document must leave nothing loaded; a loaded one must save, load
// back and save again to the same text. Everything is unloaded after each
// input, so leaks show up at once.
#include <cstddef>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>

#include "config/XMLConfig.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/log/logger.h"
#include "platform/runtime/dds_string.h"

namespace {

// An element of a test class: the text of its last inner <text> and the value
// of its last inner <flag>.
struct Item {
    DDS_XMLObject object;  // first, so that the tree's pointer is the record's
    char *text;
    DDS_Boolean flag;
    DDS_Boolean hasFlag;
};

Item &itemOf(DDS_XMLObject *object) { return *reinterpret_cast<Item *>(object); }

DDS_XMLObject *newItem(const DDS_XMLExtensionClass *extensionClass, DDS_XMLObject *parent, const char **attributes,
                       DDS_XMLContext *) {
    for (const char **attribute = attributes; attribute[0] != nullptr; attribute += 2)
        if (std::strcmp(attribute[0], "refuse") == 0) return nullptr;
    auto *item = new Item{};
    auto *mutableClass = const_cast<DDS_XMLExtensionClass *>(extensionClass);
    if (!DDS_XMLObject_initialize(&item->object, mutableClass, parent,
                                  DDS_XMLExtensionClass_get_tag_name(extensionClass), attributes)) {
        delete item;
        return nullptr;
    }
    return &item->object;
}

void deleteItem(DDS_XMLObject *object) {
    DDS_String_free(itemOf(object).text);
    DDS_XMLObject_finalize(object);
    delete &itemOf(object);
}

void onStartTag(DDS_XMLObject *, const char *, const char **, DDS_XMLContext *) {}

void onEndTag(DDS_XMLObject *object, const char *tag, const char *text, DDS_XMLContext *context) {
    Item &item = itemOf(object);
    if (std::strcmp(tag, "flag") == 0) item.hasFlag = DDS_XMLHelper_str_to_boolean(&item.flag, text, context);
    if (std::strcmp(tag, "text") != 0) return;
    DDS_String_free(item.text);
    item.text = DDS_String_dup(text);
    if (item.text == nullptr || !DDS_XMLHelper_trim(item.text)) context->error = 1;
}

void saveItem(const DDS_XMLObject *object, DDS_XMLSaveContext *context) {
    const Item &item = itemOf(const_cast<DDS_XMLObject *>(object));
    DDS_XMLHelper_save_tag(object->tag_name, DDS_XML_SAVE_TAG_OPEN, context);
    DDS_XMLHelper_save_string("text", item.text, context);
    if (item.hasFlag) DDS_XMLHelper_save_string("flag", item.flag ? "true" : "false", context);
    DDS_XMLHelper_save_tag(object->tag_name, DDS_XML_SAVE_TAG_CLOSE, context);
}

void discard(OBLX_Config_LoggerDevice *, const OBLX_Config_LogMessage *) {}

void ignoreParseError(const char *, const char *, DDS_UnsignedLong) {}

DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

std::string saved() {
    char *buffer = nullptr;
    std::size_t size = 0;
    FILE *out = open_memstream(&buffer, &size);
    if (out == nullptr || DDS_DomainParticipantFactory_save_xml(factory(), out) != DDS_RETCODE_OK) std::abort();
    std::fclose(out);
    std::string text(buffer, size);
    std::free(buffer);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    // Errors are formatted as always, then dropped: the fuzzer's output stays readable.
    static OBLX_Config_LoggerDevice silent{nullptr, discard, nullptr};
    OBLX_Config_Logger_set_output_device(OBLX_Config_Logger_get_instance(), &silent);
    // The logger's own report lines (a refused queue size, ...) go to standard
    // output; libFuzzer reports on standard error.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
    for (const auto &[tag, isRoot, allowDuplicates] : {std::tuple{"item", false, false}, {"group", true, true}}) {
        DDS_XMLExtensionClass *extensionClass = DDS_XMLExtensionClass_new(
            tag, isRoot, allowDuplicates, onStartTag, onEndTag, newItem, deleteItem, saveItem, nullptr);
        if (DDS_DomainParticipantFactory_register_xml_extension_class(factory(), extensionClass) != DDS_RETCODE_OK)
            std::abort();
    }
    if (DDS_DomainParticipantFactory_register_xml_extension_class(
            factory(), QTV_VX_XMLConfig_createXMLExtensionClass(ignoreParseError)) != DDS_RETCODE_OK)
        std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string document(reinterpret_cast<const char *>(data), size);
    // The <vexar> element's numbers take a range error left in errno as
    // their own, on purpose: each input starts as a fresh program would.
    errno = 0;
    if (DDS_DomainParticipantFactory_load_xml_string(factory(), document.c_str()) == DDS_RETCODE_OK) {
        const std::string first = saved();
        DDS_DomainParticipantFactory_unload_xml(factory());
        errno = 0;
        if (DDS_DomainParticipantFactory_load_xml_string(factory(), first.c_str()) != DDS_RETCODE_OK) std::abort();
        if (saved() != first) std::abort();
    } else if (DDS_DomainParticipantFactory_get_xml_root(factory()) != nullptr) {
        std::abort();
    }
    DDS_DomainParticipantFactory_unload_xml(factory());
    return 0;
}
