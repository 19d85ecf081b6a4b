// The XML object tree inside the library: making plain objects, linking,
// walking and deleting trees. Walks follow the parent links instead of
// recursing, so a deeply nested document cannot exhaust the stack.
#pragma once

#include <memory>

#include "platform/xml/extension_class.hpp"
#include "platform/xml/xml_object.h"

namespace vexar::xml {

// Deletes `top` and everything below it: plain objects here, extension
// objects through their class. `top` must not be in a list of children.
void deleteTree(DDS_XMLObject *top) noexcept;

struct TreeDeleter {
    void operator()(DDS_XMLObject *top) const noexcept { deleteTree(top); }
};
using OwnedTree = std::unique_ptr<DDS_XMLObject, TreeDeleter>;

// A plain object under `parent`, not yet linked. Throws std::bad_alloc.
OwnedTree newPlainObject(DDS_XMLObject *parent, const char *tag, const char **attributes);

// Makes `child` the last child of `parent`.
void appendChild(DDS_XMLObject &parent, DDS_XMLObject &child) noexcept;

// The object after `object` in document order within the tree of `top`;
// extension objects are not entered. Null after the last.
const DDS_XMLObject *nextInTree(const DDS_XMLObject *object, const DDS_XMLObject &top) noexcept;

// Whether the tree of `top` holds an object of `extensionClass`.
bool holdsObjectsOf(const DDS_XMLObject &top, const DDS_XMLExtensionClass &extensionClass) noexcept;

// The value of attribute `name` in a list of name, value, ..., null (or a
// null list); null when absent.
const char *findAttribute(const char *const *attributes, const char *name) noexcept;

// Whether `object` is of `extensionClass` and named `name` (its "name" attribute).
bool isNamed(const DDS_XMLObject &object, const DDS_XMLExtensionClass &extensionClass, const char *name) noexcept;

// The first of `first` and its next siblings that isNamed; null when none is.
const DDS_XMLObject *findNamed(const DDS_XMLObject *first, const DDS_XMLExtensionClass &extensionClass,
                               const char *name) noexcept;

}  // namespace vexar::xml
