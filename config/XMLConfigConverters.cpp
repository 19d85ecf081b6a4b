// The converters from the element's texts to option values.
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>

#include "config/XMLConfig.h"
#include "config/parse_errors.hpp"
#include "config/xml_names.hpp"
#include "platform/runtime/text.hpp"

namespace {

using vexar::xmlconfig::ParseErrorReporter;
using vexar::xmlconfig::SpelledValue;

constexpr const char *kIntegerExpected = "integer expected in XML text";
constexpr const char *kIntegerOutOfBounds = "integer out of bounds in XML text";
constexpr const char *kPositiveIntegerExpected = "positive integer expected";
constexpr const char *kMaskTrimFailed = "error trimming thread settings mask string";

// Every named priority is the platform's default: it has one normal priority.
constexpr std::array<const char *, 15> kPriorityNames{"DDS_THREAD_PRIORITY_DEFAULT",
                                                      "THREAD_PRIORITY_DEFAULT",
                                                      "DDS_THREAD_PRIORITY_HIGH",
                                                      "THREAD_PRIORITY_HIGH",
                                                      "MAX_PRIORITY",
                                                      "DDS_THREAD_PRIORITY_ABOVE_NORMAL",
                                                      "THREAD_PRIORITY_ABOVE_NORMAL",
                                                      "DDS_THREAD_PRIORITY_NORMAL",
                                                      "THREAD_PRIORITY_NORMAL",
                                                      "NORM_PRIORITY",
                                                      "DDS_THREAD_PRIORITY_BELOW_NORMAL",
                                                      "THREAD_PRIORITY_BELOW_NORMAL",
                                                      "DDS_THREAD_PRIORITY_LOW",
                                                      "THREAD_PRIORITY_LOW",
                                                      "MIN_PRIORITY"};

constexpr std::array<const char *, 2> kStackSizeNames{"DDS_THREAD_STACK_SIZE_DEFAULT", "THREAD_STACK_SIZE_DEFAULT"};

bool isAnyOfIgnoringCase(const char *text, std::span<const char *const> names) noexcept {
    for (const char *name : names) {
        if (vexar::runtime::equalsIgnoringCase(text, name)) return true;
    }
    return false;
}

const SpelledValue *spelledValueOf(std::span<const SpelledValue> values, const char *text) noexcept {
    for (const SpelledValue &value : values) {
        if (isAnyOfIgnoringCase(text, std::array{value.bare, value.prefixed, value.saved})) return &value;
    }
    return nullptr;
}

// A number in C notation (decimal, 0x hexadecimal, leading-zero octal) of
// at least `minimum`, taken as 32 bits: the stack size, a CPU number, the
// queue size.
std::optional<DDS_Long> countFromText(const char *text, DDS_Long minimum, const ParseErrorReporter &reporter) noexcept {
    // deliberate: errno is not cleared first, so a range error left over on
    // this thread reads as out of bounds. The element has always done so.
    char *end = nullptr;
    const long converted = text != nullptr ? std::strtol(text, &end, 0) : 0;
    if (text == nullptr || end == text) {
        reporter.fail(kIntegerExpected);
        return std::nullopt;
    }
    if (errno == ERANGE) {
        reporter.fail(kIntegerOutOfBounds);
        return std::nullopt;
    }
    const auto value = static_cast<DDS_Long>(converted);
    if (value < minimum) {
        reporter.fail(kPositiveIntegerExpected);
        return std::nullopt;
    }
    return value;
}

// Writes the count into `target` when the text holds one.
bool storeCount(const char *text, DDS_Long minimum, const ParseErrorReporter &reporter, DDS_Long &target) noexcept {
    const std::optional<DDS_Long> count = countFromText(text, minimum, reporter);
    if (count) target = *count;
    return count.has_value();
}

// The converters write through their target; a null one is the caller's
// mistake, reported like a bad value.
template <typename Target>
bool hasTarget(const Target *target, const ParseErrorReporter &reporter) noexcept {
    return target != nullptr || reporter.fail("null target for the converted XML value");
}

}  // namespace

extern "C" {

DDS_Long QTV_VX_XMLConfig_getFilterLevelFromString(const char *text, DDS_XMLContext *context,
                                                   QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction) {
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_getFilterLevelFromString"};
    if (text == nullptr) {
        reporter.fail("null string found for filter level");
        return -1;
    }
    for (const auto &[name, level] : vexar::xmlconfig::kFilterLevelNames) {
        if (std::strcmp(text, name) == 0) return level;
    }
    char *end = nullptr;
    const auto level = static_cast<DDS_Long>(std::strtol(text, &end, 10));
    if (end == text) {
        reporter.fail(kIntegerExpected);
        return -1;
    }
    if (level < 0) {
        reporter.fail("negative integer not allowed for filter level");
        return -1;
    }
    return level;
}

DDS_Boolean QTV_VX_XMLConfig_getThreadSettingsKindMask(const char *text, DDS_XMLContext *context,
                                                       QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                       DDS_Long *mask) {
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_getThreadSettingsKindMask"};
    if (!hasTarget(mask, reporter)) return DDS_BOOLEAN_FALSE;
    *mask = DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT;
    if (text == nullptr) return reporter.fail(kMaskTrimFailed);
    char buffer[QTV_VX_XMLCONFIG_MASK_BUFFER_SIZE];
    const std::size_t length = std::strlen(text);
    if (length >= sizeof buffer) return reporter.fail("thread settings mask string too long");
    std::memcpy(buffer, text, length + 1);
    if (!DDS_XMLHelper_trim(buffer)) return reporter.fail(kMaskTrimFailed);
    if (buffer[0] == '\0') return DDS_BOOLEAN_TRUE;
    for (char *kindName = buffer; kindName != nullptr;) {
        char *rest = QTV_VX_XMLConfig_separateFirstElementFromMask(kindName);
        if (!DDS_XMLHelper_trim(kindName)) reporter.fail(kMaskTrimFailed);
        const SpelledValue *kind = spelledValueOf(vexar::xmlconfig::kMaskKinds, kindName);
        if (kind == nullptr) return reporter.fail("illegal value on thread mask XML tag");
        *mask |= kind->value;
        kindName = rest;
    }
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean QTV_VX_XMLConfig_getThreadPriority(const char *text, DDS_XMLContext *context,
                                               QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                               DDS_Long *priority) {
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_getThreadPriority"};
    if (!hasTarget(priority, reporter)) return DDS_BOOLEAN_FALSE;
    if (text != nullptr && isAnyOfIgnoringCase(text, kPriorityNames)) {
        *priority = OBLX_THREAD_PRIORITY_DEFAULT;
        return DDS_BOOLEAN_TRUE;
    }
    char *end = nullptr;
    // deliberate: stored before it is checked, so a text without digits
    // leaves the priority 0.
    *priority = static_cast<DDS_Long>(text != nullptr ? std::strtol(text, &end, 10) : 0);
    if (text == nullptr || end == text) return reporter.fail(kIntegerExpected);
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean QTV_VX_XMLConfig_getThreadStackSize(const char *text, DDS_XMLContext *context,
                                                QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                DDS_Long *stackSize) {
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_getThreadStackSize"};
    if (!hasTarget(stackSize, reporter)) return DDS_BOOLEAN_FALSE;
    if (text != nullptr && isAnyOfIgnoringCase(text, kStackSizeNames)) {
        *stackSize = OBLX_THREAD_STACK_SIZE_DEFAULT;
        return DDS_BOOLEAN_TRUE;
    }
    return storeCount(text, 0, reporter, *stackSize);
}

DDS_Boolean QTV_VX_XMLConfig_addElementToThreadCpuList(const char *text, DDS_XMLContext *context,
                                                       QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                       DDS_LongSeq *cpuList) {
    // deliberate: reported under this name, not the operation's own; the
    // reporting names are fixed texts that applications may match on.
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_addElementToCpuList"};
    if (!hasTarget(cpuList, reporter)) return DDS_BOOLEAN_FALSE;
    const DDS_Long index = DDS_LongSeq_get_length(cpuList);
    if (!DDS_LongSeq_ensure_length(cpuList, index + 1, index + 1)) {
        return reporter.fail("failed to ensure sequence length");
    }
    return storeCount(text, 0, reporter, *DDS_LongSeq_get_reference(cpuList, index));
}

DDS_Boolean QTV_VX_XMLConfig_getThreadCpuRotation(const char *text, DDS_XMLContext *context,
                                                  QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                  DDS_Long *rotation) {
    // deliberate: not the operation's own name either, like the CPU list's.
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_getCpuRotation"};
    if (!hasTarget(rotation, reporter)) return DDS_BOOLEAN_FALSE;
    const SpelledValue *kind = text != nullptr ? spelledValueOf(vexar::xmlconfig::kCpuRotations, text) : nullptr;
    if (kind == nullptr) return reporter.fail("error getting cpu_rotation");
    *rotation = kind->value;
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean QTV_VX_XMLConfig_getQueueSize(const char *text, DDS_XMLContext *context,
                                          QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction, DDS_Long *queueSize) {
    const ParseErrorReporter reporter{errorFunction, context, "QTV_VX_XMLConfig_getQueueSize"};
    if (!hasTarget(queueSize, reporter)) return DDS_BOOLEAN_FALSE;
    return storeCount(text, 1, reporter, *queueSize);
}

char *QTV_VX_XMLConfig_separateFirstElementFromMask(char *text) {
    char *separator = text != nullptr ? std::strchr(text, '|') : nullptr;
    if (separator == nullptr) return nullptr;
    *separator = '\0';
    return separator + 1;
}

}  // extern "C"
