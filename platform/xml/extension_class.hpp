// The record behind DDS_XMLExtensionClass, read by the parser and the tree.
#pragma once

#include <string>

#include "platform/xml/xml_object.h"

struct DDS_XMLExtensionClass {
    std::string tagName;
    bool isRoot;
    bool allowDuplicates;
    DDS_XMLExtensionClass_OnStartTagFunction onStartTag;
    DDS_XMLExtensionClass_OnEndTagFunction onEndTag;
    DDS_XMLExtensionClass_NewObjectFunction newObject;
    DDS_XMLExtensionClass_DeleteObjectFunction deleteObject;
    DDS_XMLExtensionClass_SaveFunction save;
    void *userData;
};
