// Reads one XML document into objects of the tree without touching the tree:
// the document's top-level elements come back staged, for the caller to link
// under the root once the whole document is accepted.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/object_tree.hpp"
#include "platform/xml/xml_report.hpp"

namespace vexar::xml {

// The element that may wrap a document's elements, and the root's tag.
inline constexpr const char *kRootTag = "dds";
// The built-in element accepted at the top besides the extension classes.
inline constexpr const char *kQosLibraryTag = "qos_library";

using ExtensionClasses = std::vector<DDS_XMLExtensionClass *>;

struct ParseResult {
    std::vector<OwnedTree> staged;  // top-level objects, with `root` as parent but not among its children
    std::vector<XmlError> errors;   // in document order: the document is refused when there is any
    bool wellFormed = false;        // expat read the whole document
};

// Reads `text`, named `documentName` in errors and objects. Elements named
// after one of `classes` go to that class; a top-level element is also
// checked for duplicates against the children that `root` already has.
// Staged objects stay in the result even when there are errors (dropping it
// deletes them). Throws std::bad_alloc.
ParseResult parse(std::string_view text, const std::string &documentName, const ExtensionClasses &classes,
                  DDS_XMLObject &root);

// The parse behind a context, for the helpers that callbacks call: its line
// and document (0 and "" outside a parse).
DDS_UnsignedLong currentLine(const DDS_XMLContext &context) noexcept;
const char *documentName(const DDS_XMLContext &context) noexcept;

// Refuses the element being read: sets the context's error flag and records
// `message` as an error of the document at the current line. Without a parse
// behind the context (or without a context) it is reported at once under
// `operation`. Throws std::bad_alloc.
void refuse(DDS_XMLContext *context, const char *operation, const std::string &message);

}  // namespace vexar::xml
