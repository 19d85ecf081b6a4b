// Saving a tree: plain elements here, extension elements by their class.
#include "platform/xml/save_tree.hpp"

#include "platform/xml/extension_class.hpp"
#include "platform/xml/save_output.hpp"

namespace vexar::xml {
namespace {

void writeStartTag(const DDS_XMLObject &object, DDS_XMLSaveContext &context) noexcept {
    writeIndent(context);
    write(context, "<");
    write(context, object.tag_name);
    for (char **attribute = object.attributes; attribute != nullptr && attribute[0] != nullptr; attribute += 2) {
        write(context, " ");
        write(context, attribute[0]);
        write(context, "=\"");
        writeEscaped(context, attribute[1], Escape::attribute);
        write(context, "\"");
    }
}

void writeEndTag(const DDS_XMLObject &object, DDS_XMLSaveContext &context) noexcept {
    write(context, "</");
    write(context, object.tag_name);
    write(context, ">\n");
}

// A plain element without children, whole.
void savePlainLeaf(const DDS_XMLObject &object, DDS_XMLSaveContext &context) noexcept {
    writeStartTag(object, context);
    if (object.text == nullptr) return write(context, "/>\n");
    write(context, ">");
    writeEscaped(context, object.text, Escape::text);
    writeEndTag(object, context);
}

// A plain element with children: its start tag and text, one level deeper.
void openPlain(const DDS_XMLObject &object, DDS_XMLSaveContext &context) noexcept {
    writeStartTag(object, context);
    write(context, ">\n");
    ++context.depth;
    if (object.text == nullptr) return;
    writeIndent(context);
    writeEscaped(context, object.text, Escape::text);
    write(context, "\n");
}

void closePlain(const DDS_XMLObject &object, DDS_XMLSaveContext &context) noexcept {
    --context.depth;
    writeIndent(context);
    writeEndTag(object, context);
}

// The callback may leave the depth anywhere; the next element does not care.
void saveExtension(const DDS_XMLObject &object, DDS_XMLSaveContext &context) noexcept {
    const DDS_Long depth = context.depth;
    object.extension_class->save(&object, &context);
    context.depth = depth;
}

}  // namespace

void saveTree(const DDS_XMLObject &top, DDS_XMLSaveContext &context) noexcept {
    const DDS_XMLObject *object = &top;
    for (;;) {
        if (object->extension_class != nullptr) {
            saveExtension(*object, context);
        } else if (object->first_child != nullptr) {
            openPlain(*object, context);
            object = object->first_child;
            continue;
        } else {
            savePlainLeaf(*object, context);
        }
        // Up past the parents whose last child this was, closing each.
        while (object != &top && object->next_sibling == nullptr) {
            object = object->parent;
            closePlain(*object, context);
        }
        if (object == &top) return;
        object = object->next_sibling;
    }
}

}  // namespace vexar::xml
