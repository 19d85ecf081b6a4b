#include "vexar/EnumTranslators.h"

#include <cstddef>

#include "platform/log/logger.h"
#include "type/vexar.h"

namespace {

// One row per value: the logger's enumerator beside the middleware's value.
struct Correspondence {
    DDS_Long vexar;
    DDS_Long middleware;
};

template <std::size_t N>
struct Table {
    Correspondence rows[N];
    DDS_Long vexarDefault;
    DDS_Long middlewareDefault;

    constexpr DDS_Long toVexar(DDS_Long middleware) const noexcept {
        for (const Correspondence &row : rows) {
            if (row.middleware == middleware) return row.vexar;
        }
        return vexarDefault;
    }
    constexpr DDS_Long toMiddleware(DDS_Long vexar) const noexcept {
        for (const Correspondence &row : rows) {
            if (row.vexar == vexar) return row.middleware;
        }
        return middlewareDefault;
    }
};

constexpr Table<6> kVerbosities{
    {{QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_SILENT, OBLX_CONFIG_LOG_VERBOSITY_SILENT},
     {QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR, OBLX_CONFIG_LOG_VERBOSITY_ERROR},
     {QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING, OBLX_CONFIG_LOG_VERBOSITY_WARNING},
     {QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL, OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL},
     {QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE, OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE},
     {QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL, OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL}},
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING,
    OBLX_CONFIG_LOG_VERBOSITY_WARNING};

constexpr Table<5> kCategories{{{QTV_VX_OBLX_CONFIG_LOG_CATEGORY_PLATFORM, OBLX_CONFIG_LOG_CATEGORY_PLATFORM},
                                {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
                                {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE, OBLX_CONFIG_LOG_CATEGORY_DATABASE},
                                {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_ENTITIES, OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
                                {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_CATEGORY_API}},
                               QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API,
                               OBLX_CONFIG_LOG_CATEGORY_API};

constexpr Table<7> kPrintFormats{
    {{QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT, OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT},
     {QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_TIMESTAMPED, OBLX_CONFIG_LOG_PRINT_FORMAT_TIMESTAMPED},
     {QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE, OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE},
     {QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE_TIMESTAMPED, OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE_TIMESTAMPED},
     {QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG, OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG},
     {QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL, OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL},
     {QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL, OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL}},
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT,
    OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT};

// Only the middleware-to-logger direction exists for line levels.
constexpr Table<5> kLineLevels{{{300, OBLX_CONFIG_LOG_LEVEL_ERROR},
                                {400, OBLX_CONFIG_LOG_LEVEL_WARNING},
                                {500, OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL},
                                {600, OBLX_CONFIG_LOG_LEVEL_STATUS_REMOTE},
                                {700, OBLX_CONFIG_LOG_LEVEL_DEBUG}},
                               600,
                               OBLX_CONFIG_LOG_LEVEL_STATUS_REMOTE};

}  // namespace

extern "C" {

DDS_Long QTV_VX_translateFromQTVLoggerVerbosityToVXVerbosity(DDS_Long verbosity) {
    return kVerbosities.toVexar(verbosity);
}
DDS_Long QTV_VX_translateFromVXVerbosityToQTVLoggerVerbosity(DDS_Long verbosity) {
    return kVerbosities.toMiddleware(verbosity);
}
DDS_Long QTV_VX_translateFromQTVLoggerCategoryToVXCategory(DDS_Long category) { return kCategories.toVexar(category); }
DDS_Long QTV_VX_translateFromVXCategoryToQTVLoggerCategory(DDS_Long category) {
    return kCategories.toMiddleware(category);
}
DDS_Long QTV_VX_translateFromQTVLoggerPrintFormatToVXPrintFormat(DDS_Long format) {
    return kPrintFormats.toVexar(format);
}
DDS_Long QTV_VX_translateFromVXPrintFormatToQTVLoggerPrintFormat(DDS_Long format) {
    return kPrintFormats.toMiddleware(format);
}
DDS_Long QTV_VX_translateFromQTVLoggerLogLevelToVXLevel(DDS_Long level) { return kLineLevels.toVexar(level); }

}  // extern "C"
