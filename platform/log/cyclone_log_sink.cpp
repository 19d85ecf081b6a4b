#include "platform/log/cyclone_log_sink.hpp"

#include <dds/ddsrt/log.h>

#include <array>
#include <charconv>
#include <cstring>
#include <optional>

#include "platform/log/collapsing_writer.hpp"
#include "platform/log/failure_causes.hpp"
#include "platform/log/logger.hpp"

namespace vexar::log {
namespace {

// Cyclone's categories, most severe first: a line's first matching bit wins.
// A category with no subject of its own (the log categories and the generic
// trace) is placed by the source file that raised it.
struct CycloneCategory {
    uint32_t bit;
    const char *name;
    OBLX_Config_LogLevel level;
    std::optional<OBLX_Config_LogCategory> subject;
};

constexpr auto kBySourceFile = std::nullopt;

constexpr std::array<CycloneCategory, 19> kCycloneCategories{{
    {DDS_LC_FATAL, "fatal", OBLX_CONFIG_LOG_LEVEL_ERROR, kBySourceFile},
    {DDS_LC_ERROR, "error", OBLX_CONFIG_LOG_LEVEL_ERROR, kBySourceFile},
    {DDS_LC_WARNING, "warning", OBLX_CONFIG_LOG_LEVEL_WARNING, kBySourceFile},
    {DDS_LC_INFO, "info", OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL, kBySourceFile},
    {DDS_LC_CONFIG, "config", OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL, OBLX_CONFIG_LOG_CATEGORY_PLATFORM},
    {DDS_LC_DISCOVERY, "discovery", OBLX_CONFIG_LOG_LEVEL_STATUS_REMOTE, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {DDS_LC_DATA, "data", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {DDS_LC_TRACE, "trace", OBLX_CONFIG_LOG_LEVEL_DEBUG, kBySourceFile},
    {DDS_LC_RADMIN, "radmin", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {DDS_LC_TIMING, "timing", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_PLATFORM},
    {DDS_LC_TRAFFIC, "traffic", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {DDS_LC_TOPIC, "topic", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
    {DDS_LC_TCP, "tcp", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {DDS_LC_PLIST, "plist", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
    {DDS_LC_WHC, "whc", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {DDS_LC_THROTTLE, "throttle", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {DDS_LC_RHC, "rhc", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {DDS_LC_CONTENT, "content", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {DDS_LC_SHM, "shm", OBLX_CONFIG_LOG_LEVEL_DEBUG, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
}};

constexpr CycloneCategory kUnknownCategory{0, "cyclone", OBLX_CONFIG_LOG_LEVEL_DEBUG, kBySourceFile};

// Subjects of Cyclone's source files, by a word in the file name; first match wins.
struct FileSubject {
    const char *word;
    OBLX_Config_LogCategory category;
};

constexpr FileSubject kFileSubjects[] = {
    {"serdata", OBLX_CONFIG_LOG_CATEGORY_DATABASE},       {"sertype", OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {"whc", OBLX_CONFIG_LOG_CATEGORY_DATABASE},           {"rhc", OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {"cdrstream", OBLX_CONFIG_LOG_CATEGORY_DATABASE},     {"_write.", OBLX_CONFIG_LOG_CATEGORY_DATABASE},
    {"_read.", OBLX_CONFIG_LOG_CATEGORY_DATABASE},        {"discovery", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"pmd", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},      {"lease", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"tcp", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},      {"udp", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"raweth", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},   {"ipaddr", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"ownip", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},    {"mcgroup", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"sock", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},     {"transmit", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"receive", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},  {"radmin", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"xmsg", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},     {"xevent", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"acknack", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},  {"addrset", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"security", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION}, {"handshake", OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION},
    {"topic", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},         {"plist", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
    {"qos", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},           {"entity", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
    {"participant", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},   {"endpoint", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
    {"reader", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},        {"writer", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
    {"type", OBLX_CONFIG_LOG_CATEGORY_ENTITIES},
};

const CycloneCategory &cycloneCategoryOf(uint32_t priority) noexcept {
    for (const auto &category : kCycloneCategories)
        if ((priority & category.bit) != 0) return category;
    return kUnknownCategory;
}

// The ddsc layer is Cyclone's API; everything else not named above is the
// runtime underneath (configuration, threads, memory, start-up).
OBLX_Config_LogCategory subjectOfFile(const char *file) noexcept {
    if (file == nullptr) return OBLX_CONFIG_LOG_CATEGORY_PLATFORM;
    const char *slash = strrchr(file, '/');
    const char *name = slash != nullptr ? slash + 1 : file;
    for (const auto &subject : kFileSubjects)
        if (strstr(name, subject.word) != nullptr) return subject.category;
    return strstr(file, "/ddsc/") != nullptr ? OBLX_CONFIG_LOG_CATEGORY_API : OBLX_CONFIG_LOG_CATEGORY_PLATFORM;
}

// Input from the network that Cyclone could not use: a datagram without a
// byte ("UDP recvmsg sock 5: ret 0 retcode 0", raised at ERROR), or a line
// naming the sender's vendor ("malformed packet received from vendor 1.16
// ...", "invalid parameter list (vendor 1.16, version 2.1): ...",
// "plist(vendor 1.16): quickscan: ...", "data(builtin, vendor 1.16): ...
// deserialization failed"). Anyone who reaches a port raises these at will,
// one per datagram, so they must never count as errors of this process.
bool isEmptyDatagram(std::string_view text) noexcept {
    return text.starts_with("UDP recvmsg sock ") && text.find(": ret 0 ") != std::string_view::npos;
}

// "1.16": digits, a dot and a digit.
bool startsWithNumberPair(std::string_view text) noexcept {
    const size_t dot = text.find_first_not_of("0123456789");
    return dot != 0 && dot != std::string_view::npos && text[dot] == '.' &&
           text.find_first_of("0123456789", dot + 1) == dot + 1;
}

// "vendor 1.16": how Cyclone names the sender of what it received.
bool namesSendersVendor(std::string_view text) noexcept {
    constexpr std::string_view kVendor = "vendor ";
    for (size_t at = text.find(kVendor); at != std::string_view::npos; at = text.find(kVendor, at + 1)) {
        if (startsWithNumberPair(text.substr(at + kVendor.size()))) return true;
    }
    return false;
}

bool reportsNetworkInput(const CycloneCategory &category, std::string_view text) noexcept {
    const bool errorOrWarning = category.bit == DDS_LC_ERROR || category.bit == DDS_LC_WARNING;
    return errorOrWarning && (isEmptyDatagram(text) || namesSendersVendor(text));
}

constexpr uint32_t everyClassifiedCategory() noexcept {
    uint32_t mask = 0;
    for (const auto &category : kCycloneCategories) mask |= category.bit;
    return mask;
}

// Cyclone calls this from any of its threads, holding its sink lock shared:
// it must not call back into Cyclone's sink or mask setters. An error is kept
// as a failure cause before the verbosity is asked.
void cycloneSink(void *writer, const dds_log_data_t *data) noexcept {
    auto &target = *static_cast<CollapsingWriter *>(writer);
    const std::string_view text(data->message, data->size);
    const CycloneLineOrigin origin = classifyCycloneLine(data->priority, data->file, text);
    const bool error = origin.level == OBLX_CONFIG_LOG_LEVEL_ERROR;
    const bool passes = logPasses(target.logger(), origin.category, origin.level);
    if (!passes && !error) return;
    const std::string_view header(data->message - data->hdrsize, data->hdrsize);
    const LogRecord record{origin.category,
                           origin.level,
                           origin.source,
                           data->function,
                           data->file,
                           static_cast<int>(data->line),
                           domainFromCycloneHeader(header),
                           text};
    if (error) keepFailureCause(record);
    if (passes) target.write(record);
}

}  // namespace

CycloneLineOrigin classifyCycloneLine(uint32_t priority, const char *file, std::string_view text) noexcept {
    const CycloneCategory &category = cycloneCategoryOf(priority);
    if (reportsNetworkInput(category, text)) {
        return {OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_LEVEL_WARNING, category.name};
    }
    return {category.subject ? *category.subject : subjectOfFile(file), category.level, category.name};
}

uint32_t domainFromCycloneHeader(std::string_view header) noexcept {
    const size_t open = header.find('[');
    const size_t close = header.find(']', open);
    if (open == std::string_view::npos || close == std::string_view::npos) return kNoDomain;
    uint32_t domain = kNoDomain;
    const char *first = header.data() + open + 1;
    const char *last = header.data() + close;
    const auto [end, error] = std::from_chars(first, last, domain);
    return error == std::errc{} && end == last ? domain : kNoDomain;
}

void hookCycloneDiagnostics(OBLX_Config_Logger &logger) {
    // Never destroyed: Cyclone may still log from its threads during exit.
    auto *writer = new CollapsingWriter(logger);
    // One callback for both sinks: Cyclone then calls it once per line.
    dds_set_log_sink(cycloneSink, writer);
    dds_set_trace_sink(cycloneSink, writer);
    dds_set_log_mask(everyClassifiedCategory());
}

}  // namespace vexar::log
