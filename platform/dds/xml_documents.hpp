// The participant factory's XML configuration: the registered extension
// classes and the tree of every document loaded, behind one lock.
//
// The lock is held across a whole load, unload or save, so extension
// callbacks run under it; a callback that calls back into these operations
// is refused (the lock knows its holder) rather than left hanging.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "platform/runtime/owned_lock.hpp"
#include "platform/xml/parser.hpp"

namespace vexar::dds {

class XmlDocuments {
public:
    // Each reports its failures under `operation`.
    DDS_ReturnCode_t registerClass(DDS_XMLExtensionClass &extensionClass, const char *operation);
    DDS_ReturnCode_t unregisterClass(DDS_XMLExtensionClass &extensionClass, const char *operation);
    // Parses, accepts and commits one document, or leaves everything as it was.
    DDS_ReturnCode_t load(std::string_view text, const std::string &documentName, const char *operation);
    // Reads the file and loads it as above; its errors name `path`.
    DDS_ReturnCode_t loadFile(const char *path, const char *operation);
    // Null when nothing is loaded.
    DDS_XMLObject *root(const char *operation);
    DDS_ReturnCode_t unload(const char *operation);
    // Runs `read` with the loaded tree (null when nothing is loaded) under
    // the lock; false, without running it, from inside a callback.
    bool read(const char *operation, const std::function<void(const DDS_XMLObject *root)> &read);
    DDS_ReturnCode_t save(FILE *out, const char *operation);

private:
    class Hold;
    // The root, made when first needed. Throws std::bad_alloc.
    DDS_XMLObject &rootObject();

    runtime::OwnedLock lock_{false};
    xml::ExtensionClasses classes_;  // under lock_, as everything below
    xml::OwnedTree root_;            // made by the first load, kept until unload
    bool loaded_ = false;            // a document was loaded into root_
};

// The process's one store, never freed: its tree may outlive every caller.
XmlDocuments &xmlDocuments();

}  // namespace vexar::dds
