// The extension class of the element, its objects, and finding the element
// in a parsed document.
#include "config/XMLConfig.h"

#include <cstdlib>
#include <cstring>

#include "config/config_object.hpp"
#include "vexar/report_line.hpp"

namespace {

using vexar::reportError;
using vexar::xmlconfig::configOf;

constexpr const char *kClassSource = "QTV_VX_XMLConfig_createXMLExtensionClass";
constexpr const char *kNewSource = "QTV_VX_XMLConfig_new";

using Listener = QTV_VX_XMLConfig_ExtensionClassListener;

const Listener *listenerOf(const DDS_XMLExtensionClass *extensionClass) noexcept {
    return static_cast<const Listener *>(DDS_XMLExtensionClass_get_user_data(extensionClass));
}

// A record that QTV_VX_XMLConfig_new gives up on before its XML object was
// initialized.
DDS_XMLObject *abandon(QTV_VX_XMLConfig *self, const char *text) noexcept {
    reportError(text, kNewSource);
    std::free(self);
    return nullptr;
}

// Options that do not start the logger unless the element says <enabled>.
QTV_VX_Options *disabledDefaultOptions() noexcept {
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    if (options != nullptr) options->enabled = 0;
    return options;
}

}  // namespace

extern "C" {

DDS_XMLExtensionClass *QTV_VX_XMLConfig_createXMLExtensionClass(QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction) {
    if (errorFunction == nullptr) {
        reportError("invalid log function", kClassSource);
        return nullptr;
    }
    auto *listener = static_cast<Listener *>(std::malloc(sizeof(Listener)));
    if (listener == nullptr) {
        reportError("could not allocate extension class listener", kClassSource);
        return nullptr;
    }
    listener->parserErrorLogFunction = errorFunction;
    DDS_XMLExtensionClass *extensionClass = DDS_XMLExtensionClass_new(
        QTV_VX_XMLCONFIG_TAG_NAME, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE, QTV_VX_XMLConfig_onStartElement,
        QTV_VX_XMLConfig_onEndElement, QTV_VX_XMLConfig_new, QTV_VX_XMLConfig_delete, QTV_VX_XMLConfig_save, listener);
    if (extensionClass == nullptr) {
        std::free(listener);
        reportError("creation of XML extension class failed", kClassSource);
    }
    return extensionClass;
}

void QTV_VX_XMLConfig_destroyXMLExtensionClass(DDS_XMLExtensionClass *extensionClass) {
    if (extensionClass == nullptr) return;
    void *listener = DDS_XMLExtensionClass_get_user_data(extensionClass);
    DDS_XMLExtensionClass_delete(extensionClass);
    std::free(listener);
}

QTV_VX_XMLConfig *QTV_VX_XMLConfig_create(void) {
    auto *self = static_cast<QTV_VX_XMLConfig *>(std::calloc(1, sizeof(QTV_VX_XMLConfig)));
    if (self == nullptr) reportError("could not allocate XML options object", "QTV_VX_XMLConfig_create");
    return self;
}

DDS_XMLObject *QTV_VX_XMLConfig_new(const DDS_XMLExtensionClass *extensionClass, DDS_XMLObject *parent,
                                    const char **attributes, DDS_XMLContext *context) {
    QTV_VX_XMLConfig *self = QTV_VX_XMLConfig_create();
    if (self == nullptr) return abandon(self, "XML object creation failed");
    const Listener *listener = listenerOf(extensionClass);
    if (listener == nullptr) return abandon(self, "could not get extension listener");
    if (listener->parserErrorLogFunction == nullptr) return abandon(self, "invalid parsing error log function");
    // The class owns the listener; the element only reports through it.
    self->extensionListener = const_cast<Listener *>(listener);
    self->parsedVXOptions = disabledDefaultOptions();
    if (self->parsedVXOptions == nullptr) return abandon(self, "XML object creation failed");
    self->baseObject = DDS_XMLObject{};
    // The class is the parser's; initialize only records it in the object.
    if (!DDS_XMLObject_initialize(&self->baseObject, const_cast<DDS_XMLExtensionClass *>(extensionClass), parent,
                                  QTV_VX_XMLCONFIG_TAG_NAME, attributes)) {
        listener->parserErrorLogFunction("XML object initialization failed", kNewSource,
                                         DDS_XMLContext_get_current_line_number(context));
        QTV_VX_XMLConfig_finalize(&self->baseObject);
        return nullptr;
    }
    self->currentStatus = VX_XMLCONFIG_OTHER;
    return &self->baseObject;
}

void QTV_VX_XMLConfig_delete(DDS_XMLObject *object) { QTV_VX_XMLConfig_finalize(object); }

void QTV_VX_XMLConfig_finalize(DDS_XMLObject *object) {
    if (object == nullptr) return;
    QTV_VX_XMLConfig *self = configOf(object);
    if (self->parsedVXOptions != nullptr) QTV_VX_Options_delete(self->parsedVXOptions);
    DDS_XMLObject_finalize(&self->baseObject);
    std::free(self);
}

DDS_XMLObject *QTV_VX_XMLConfig_getVXXMLObjectFromRoot(DDS_XMLObject *root) {
    // Siblings in a loop, children by recursion: depth-first, in document order.
    for (DDS_XMLObject *object = root; object != nullptr; object = DDS_XMLObject_get_next_sibling(object)) {
        const char *tagName = DDS_XMLObject_get_tag_name(object);
        if (tagName != nullptr && std::strcmp(tagName, QTV_VX_XMLCONFIG_TAG_NAME) == 0) return object;
        if (DDS_XMLObject *found = QTV_VX_XMLConfig_getVXXMLObjectFromRoot(DDS_XMLObject_get_first_child(object))) {
            return found;
        }
    }
    return nullptr;
}

QTV_VX_XMLConfig *QTV_VX_XMLConfig_getXMLConfigFromXMLRoot(DDS_XMLObject *root) {
    return configOf(QTV_VX_XMLConfig_getVXXMLObjectFromRoot(root));
}

QTV_VX_Options *QTV_VX_XMLConfig_getVXOptions(const QTV_VX_XMLConfig *self) {
    if (!vexar::present(self, "QTV_VX_XMLConfig_getVXOptions", "invalid XML configuration object")) return nullptr;
    return self->parsedVXOptions;
}

}  // extern "C"
