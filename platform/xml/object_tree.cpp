// Making, linking, walking and deleting object trees.
#include "platform/xml/object_tree.hpp"

#include <cstring>
#include <new>

namespace vexar::xml {
namespace {

bool isPlain(const DDS_XMLObject &object) noexcept { return object.extension_class == nullptr; }

void deleteObject(DDS_XMLObject *object) noexcept {
    if (isPlain(*object)) {
        DDS_XMLObject_finalize(object);
        delete object;
    } else {
        object->extension_class->deleteObject(object);
    }
}

}  // namespace

void deleteTree(DDS_XMLObject *top) noexcept {
    // Always down to the first child until a leaf, which goes; its parent
    // becomes a leaf once its last child went.
    DDS_XMLObject *object = top;
    while (object != nullptr) {
        if (isPlain(*object) && object->first_child != nullptr) {
            object = object->first_child;
            continue;
        }
        DDS_XMLObject *next = nullptr;
        if (object != top) {
            object->parent->first_child = object->next_sibling;
            next = object->next_sibling != nullptr ? object->next_sibling : object->parent;
        }
        deleteObject(object);
        object = next;
    }
}

OwnedTree newPlainObject(DDS_XMLObject *parent, const char *tag, const char **attributes) {
    auto object = std::make_unique<DDS_XMLObject>();
    if (!DDS_XMLObject_initialize(object.get(), nullptr, parent, tag, attributes)) throw std::bad_alloc();
    return OwnedTree(object.release());
}

void appendChild(DDS_XMLObject &parent, DDS_XMLObject &child) noexcept {
    child.parent = &parent;
    child.next_sibling = nullptr;
    if (parent.last_child != nullptr) {
        parent.last_child->next_sibling = &child;
    } else {
        parent.first_child = &child;
    }
    parent.last_child = &child;
}

const DDS_XMLObject *nextInTree(const DDS_XMLObject *object, const DDS_XMLObject &top) noexcept {
    if (isPlain(*object) && object->first_child != nullptr) return object->first_child;
    for (; object != &top; object = object->parent) {
        if (object->next_sibling != nullptr) return object->next_sibling;
    }
    return nullptr;
}

bool holdsObjectsOf(const DDS_XMLObject &top, const DDS_XMLExtensionClass &extensionClass) noexcept {
    for (const DDS_XMLObject *object = &top; object != nullptr; object = nextInTree(object, top)) {
        if (object->extension_class == &extensionClass) return true;
    }
    return false;
}

const char *findAttribute(const char *const *attributes, const char *name) noexcept {
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
        if (std::strcmp(attributes[0], name) == 0) return attributes[1];
    }
    return nullptr;
}

bool isNamed(const DDS_XMLObject &object, const DDS_XMLExtensionClass &extensionClass, const char *name) noexcept {
    const char *objectName = findAttribute(object.attributes, "name");
    return object.extension_class == &extensionClass && objectName != nullptr && std::strcmp(objectName, name) == 0;
}

const DDS_XMLObject *findNamed(const DDS_XMLObject *first, const DDS_XMLExtensionClass &extensionClass,
                               const char *name) noexcept {
    for (const DDS_XMLObject *object = first; object != nullptr; object = object->next_sibling) {
        if (isNamed(*object, extensionClass, name)) return object;
    }
    return nullptr;
}

}  // namespace vexar::xml
