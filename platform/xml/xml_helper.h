/* Helpers for the callbacks of XML extension classes: reading values out of
 * element text, and writing elements back when the configuration is saved.
 *
 * A save context writes either into a FILE or into a string that grows as
 * needed. Each element stands on its own line, indented by `indent` spaces
 * per `depth`; callbacks may change `depth` and set `error` directly. */
#ifndef VEXAR_PLATFORM_XML_XML_HELPER_H
#define VEXAR_PLATFORM_XML_XML_HELPER_H

#include <stddef.h>
#include <stdio.h>

#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/types/sequence.h"
#include "platform/xml/xml_object.h"

VEXAR_BEGIN_DECLS

/* ---- reading ------------------------------------------------------------ */

/* Reads true/false, 1/0 or yes/no, in any case, white space around allowed.
 * Anything else (or null) is reported as malformed with the context's
 * document and line, sets the context's error flag (when a context is
 * given), leaves `value` false and returns false. */
VEXAR_API DDS_Boolean DDS_XMLHelper_str_to_boolean(DDS_Boolean *value, const char *text, DDS_XMLContext *context);

/* Removes white space (space, tab, CR, LF) at both ends of `text` in place.
 * Returns false only for null. */
VEXAR_API DDS_Boolean DDS_XMLHelper_trim(char *text);

/* ---- saving ------------------------------------------------------------- */

struct DDS_XMLSaveContext {
    FILE *file;      /* output, when not null; otherwise the string below */
    char *buffer;    /* owned: the string written so far, NUL-terminated */
    size_t length;   /* of the string, without the NUL */
    size_t capacity; /* of `buffer` */
    DDS_Long depth;  /* nesting of the element being written */
    DDS_Long indent; /* spaces per level of depth; 4 after initialize */
    DDS_Long error;  /* set to 1 by a failed write or by a save callback */
};

/* Writes into `file`, or into a growing string when `file` is null. */
VEXAR_API DDS_Boolean DDS_XMLSaveContext_initialize(DDS_XMLSaveContext *self, FILE *file);
VEXAR_API void DDS_XMLSaveContext_finalize(DDS_XMLSaveContext *self);
/* The string written so far ("" when writing to a file or for null). */
VEXAR_API const char *DDS_XMLSaveContext_get_string(const DDS_XMLSaveContext *self);

/* printf-style text, written as it is (no indentation of its own). */
VEXAR_API void DDS_XMLHelper_save_freeform(DDS_XMLSaveContext *context, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
/* The indentation of the current depth. */
VEXAR_API void DDS_XMLHelper_save_indent(DDS_XMLSaveContext *context);

typedef enum DDS_XMLSaveTagKind {
    DDS_XML_SAVE_TAG_OPEN = 0,  /* indentation, "<tag>", a line break; then one level deeper */
    DDS_XML_SAVE_TAG_CLOSE = 1, /* one level shallower; then indentation, "</tag>", a line break */
} DDS_XMLSaveTagKind;
VEXAR_API void DDS_XMLHelper_save_tag(const char *tag_name, DDS_XMLSaveTagKind kind, DDS_XMLSaveContext *context);

/* Indentation, "<tag>value</tag>", a line break. */
VEXAR_API void DDS_XMLHelper_save_long(const char *tag_name, DDS_Long value, DDS_XMLSaveContext *context);
/* The text with &, <, > and quotes escaped; a null value writes nothing. */
VEXAR_API void DDS_XMLHelper_save_string(const char *tag_name, const char *value, DDS_XMLSaveContext *context);
/* "<tag>", one "<element>value</element>" line per entry, "</tag>"; an
 * empty or null sequence writes nothing. */
VEXAR_API void DDS_XMLHelper_save_long_seq(const char *tag_name, const DDS_LongSeq *value, DDS_XMLSaveContext *context);

VEXAR_END_DECLS

#endif
