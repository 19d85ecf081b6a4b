// What extension callbacks may ask of the parse that calls them.
#include "platform/xml/parser.hpp"

extern "C" {

DDS_UnsignedLong DDS_XMLContext_get_current_line_number(const DDS_XMLContext *self) {
    return self != nullptr ? vexar::xml::currentLine(*self) : 0;
}

const char *DDS_XMLContext_get_document_name(const DDS_XMLContext *self) {
    return self != nullptr ? vexar::xml::documentName(*self) : "";
}

}  // extern "C"
