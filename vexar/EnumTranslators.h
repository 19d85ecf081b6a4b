/* Translation between the middleware logger's numeric values (verbosity
 * masks, categories, print-format bit sets, line levels) and the
 * enumerations that the administration State and the remote commands carry.
 * Each maps a value outside its table to a fixed default. */
#ifndef VEXAR_VEXAR_ENUMTRANSLATORS_H
#define VEXAR_VEXAR_ENUMTRANSLATORS_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* Middleware verbosity mask -> QTV_VX_ADMIN_QTVLoggerVerbosity; others: WARNING (2). */
VEXAR_API DDS_Long QTV_VX_translateFromQTVLoggerVerbosityToVXVerbosity(DDS_Long verbosity);
/* QTV_VX_ADMIN_QTVLoggerVerbosity -> middleware mask; others: WARNING (3). */
VEXAR_API DDS_Long QTV_VX_translateFromVXVerbosityToQTVLoggerVerbosity(DDS_Long verbosity);

/* Categories are numbered alike on both sides (0..4); others, including the
 * middleware's ALL (5): API (4). */
VEXAR_API DDS_Long QTV_VX_translateFromQTVLoggerCategoryToVXCategory(DDS_Long category);
VEXAR_API DDS_Long QTV_VX_translateFromVXCategoryToQTVLoggerCategory(DDS_Long category);

/* Middleware print format -> QTV_VX_ADMIN_QTVLoggerPrintFormat; others: DEFAULT (0). */
VEXAR_API DDS_Long QTV_VX_translateFromQTVLoggerPrintFormatToVXPrintFormat(DDS_Long format);
/* QTV_VX_ADMIN_QTVLoggerPrintFormat -> middleware format; others: DEFAULT (0x412). */
VEXAR_API DDS_Long QTV_VX_translateFromVXPrintFormatToQTVLoggerPrintFormat(DDS_Long format);

/* Middleware line level (1 ERROR .. 5 DEBUG) -> log level (300 .. 700); others: INFO (600). */
VEXAR_API DDS_Long QTV_VX_translateFromQTVLoggerLogLevelToVXLevel(DDS_Long level);

VEXAR_END_DECLS

#endif
