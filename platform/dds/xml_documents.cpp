// The factory's XML store: parse, accept, commit; unload; save.
#include "platform/dds/xml_documents.hpp"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>

#include "platform/dds/qos_libraries.hpp"
#include "platform/log/report.h"
#include "platform/runtime/posix_failure.hpp"
#include "platform/xml/save_tree.hpp"

namespace vexar::dds {

// The store's lock for one operation. Not taken, and reported, when the
// calling thread holds it already: a callback of an operation in progress.
class XmlDocuments::Hold {
public:
    Hold(runtime::OwnedLock &lock, const char *operation) noexcept : lock_(lock), held_(lock.take()) {
        if (!held_) OBLX_Report_failure(operation, "called from an XML extension callback of the factory");
    }
    ~Hold() {
        if (held_) lock_.give();
    }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

    explicit operator bool() const noexcept { return held_; }

private:
    runtime::OwnedLock &lock_;
    const bool held_;
};

namespace {

// The whole file, or nothing (reported) when it cannot be read.
std::optional<std::string> readFile(const char *path, const char *operation) {
    std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(path, "rb"), &std::fclose);
    if (file == nullptr) {
        vexar::runtime::reportPosixFailure(operation, (std::string("fopen ") + path).c_str(), errno);
        return std::nullopt;
    }
    std::string text;
    char buffer[16384];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file.get())) > 0;) text.append(buffer, got);
    if (std::ferror(file.get()) != 0) {
        vexar::runtime::reportPosixFailure(operation, (std::string("fread ") + path).c_str(), errno);
        return std::nullopt;
    }
    return text;
}

// The root and the built-in elements are the factory's own.
bool isFactoryTag(const std::string &tag) noexcept { return tag == xml::kRootTag || tag == xml::kQosLibraryTag; }

}  // namespace

DDS_ReturnCode_t XmlDocuments::registerClass(DDS_XMLExtensionClass &extensionClass, const char *operation) {
    Hold hold(lock_, operation);
    if (!hold) return DDS_RETCODE_ILLEGAL_OPERATION;
    const std::string &tag = extensionClass.tagName;
    if (isFactoryTag(tag)) {
        OBLX_Report_failure(operation, ("<" + tag + "> is the factory's own element").c_str());
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    if (std::ranges::any_of(classes_, [&](const DDS_XMLExtensionClass *known) { return known->tagName == tag; })) {
        OBLX_Report_failure(operation, ("a class for <" + tag + "> is registered already").c_str());
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    classes_.push_back(&extensionClass);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t XmlDocuments::unregisterClass(DDS_XMLExtensionClass &extensionClass, const char *operation) {
    Hold hold(lock_, operation);
    if (!hold) return DDS_RETCODE_ILLEGAL_OPERATION;
    const auto registered = std::ranges::find(classes_, &extensionClass);
    if (registered == classes_.end()) {
        OBLX_Report_badParameter(operation, "extension_class (not registered)");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    if (root_ != nullptr && xml::holdsObjectsOf(*root_, extensionClass)) {
        OBLX_Report_failure(operation, "loaded documents hold objects of the class: unload them first");
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    classes_.erase(registered);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t XmlDocuments::load(std::string_view text, const std::string &documentName, const char *operation) {
    Hold hold(lock_, operation);
    if (!hold) return DDS_RETCODE_ILLEGAL_OPERATION;
    xml::ParseResult parsed = xml::parse(text, documentName, classes_, rootObject());
    // Later steps read only what was wholly read.
    if (parsed.wellFormed) acceptQosLibraries(parsed.staged, *root_, parsed.errors);
    if (!parsed.errors.empty()) {
        xml::reportXmlErrors(operation, documentName, parsed.errors);
        return DDS_RETCODE_ERROR;
    }
    for (xml::OwnedTree &object : parsed.staged) xml::appendChild(*root_, *object.release());
    loaded_ = true;
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t XmlDocuments::loadFile(const char *path, const char *operation) {
    const std::optional<std::string> text = readFile(path, operation);
    return text ? load(*text, path, operation) : DDS_RETCODE_ERROR;
}

DDS_XMLObject *XmlDocuments::root(const char *operation) {
    Hold hold(lock_, operation);
    return hold && loaded_ ? root_.get() : nullptr;
}

bool XmlDocuments::read(const char *operation, const std::function<void(const DDS_XMLObject *root)> &read) {
    Hold hold(lock_, operation);
    if (!hold) return false;
    read(loaded_ ? root_.get() : nullptr);
    return true;
}

DDS_ReturnCode_t XmlDocuments::unload(const char *operation) {
    Hold hold(lock_, operation);
    if (!hold) return DDS_RETCODE_ILLEGAL_OPERATION;
    root_.reset();
    loaded_ = false;
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t XmlDocuments::save(FILE *out, const char *operation) {
    Hold hold(lock_, operation);
    if (!hold) return DDS_RETCODE_ILLEGAL_OPERATION;
    DDS_XMLSaveContext context;
    DDS_XMLSaveContext_initialize(&context, out);
    xml::saveTree(rootObject(), context);
    const bool failed = context.error != 0 || std::fflush(out) != 0 || std::ferror(out) != 0;
    DDS_XMLSaveContext_finalize(&context);
    if (failed) {
        OBLX_Report_failure(operation, "writing the XML configuration failed");
        return DDS_RETCODE_ERROR;
    }
    return DDS_RETCODE_OK;
}

DDS_XMLObject &XmlDocuments::rootObject() {
    if (root_ == nullptr) root_ = xml::newPlainObject(nullptr, xml::kRootTag, nullptr);
    return *root_;
}

XmlDocuments &xmlDocuments() {
    static XmlDocuments *const store = new XmlDocuments();
    return *store;
}

}  // namespace vexar::dds
