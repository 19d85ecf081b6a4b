/* Symbol export and C linkage for every public header. */
#ifndef VEXAR_PLATFORM_EXPORT_H
#define VEXAR_PLATFORM_EXPORT_H

/* The library is built with hidden visibility; only what a header marks
 * VEXAR_API is part of the shared library's interface. */
#if defined(VEXAR_BUILDING_LIBRARY)
#define VEXAR_API __attribute__((visibility("default")))
#else
#define VEXAR_API
#endif

#ifdef __cplusplus
#define VEXAR_BEGIN_DECLS extern "C" {
#define VEXAR_END_DECLS }
#else
#define VEXAR_BEGIN_DECLS
#define VEXAR_END_DECLS
#endif

#endif
