/* Heap strings of the middleware: allocated, duplicated and freed here so that
 * every string a sample owns comes from one allocator. These functions print
 * nothing (sample code built on them must stay silent): a null result says
 * all there is to say. */
#ifndef VEXAR_PLATFORM_DDS_STRING_H
#define VEXAR_PLATFORM_DDS_STRING_H

#include <stddef.h>

#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* An empty string with room for `length` characters plus the terminator
 * (only the first byte is set). Null when out of memory. */
VEXAR_API char *DDS_String_alloc(size_t length);
/* A heap copy of `text`; null for null or when out of memory. */
VEXAR_API char *DDS_String_dup(const char *text);
/* Frees a string from DDS_String_alloc or DDS_String_dup. Accepts null. */
VEXAR_API void DDS_String_free(char *text);
/* Copies `src` with its terminator into `dst`, which holds `capacity` bytes,
 * without reallocating it. Returns `dst`, or null (leaving `dst` unchanged)
 * when an argument is null or `src` needs more than `capacity` bytes. */
VEXAR_API char *DDS_String_copy_bounded(char *dst, const char *src, size_t capacity);

VEXAR_END_DECLS

#endif
