// The parser's start- and end-tag callbacks: which child of the element is
// open, and what its text sets in the options.
#include <array>
#include <cstring>
#include <span>

#include "config/XMLConfig.h"
#include "config/config_object.hpp"
#include "config/parse_errors.hpp"
#include "vexar/report_line.hpp"

namespace {

using vexar::xmlconfig::configOf;
using vexar::xmlconfig::ParseErrorReporter;

constexpr const char *kStartSource = "QTV_VX_XMLConfig_onStartElement";
constexpr const char *kEndSource = "QTV_VX_XMLConfig_onEndElement";
constexpr const char *kNoObject = "invalid XML configuration object";

struct ChildTag {
    const char *name;
    VX_XMLConfig_TagType state;
};

// Open wherever the parse is inside the element.
constexpr std::array<ChildTag, 6> kElementChildren{{
    {"filter_level", VX_XMLCONFIG_FILTER_LEVEL_TAG},
    {"enabled", VX_XMLCONFIG_ENABLED_TAG},
    {"thread", VX_XMLCONFIG_THREAD_TAG},
    {"queue_size", VX_XMLCONFIG_QUEUE_SIZE_TAG},
    {"echo_to_stdout", VX_XMLCONFIG_ECHO_TO_STDOUT_TAG},
    {"log_infrastructure_messages", VX_XMLCONFIG_LOG_INFRASTRUCTURE_MESSAGES_TAG},
}};

// Open only directly inside <thread>.
constexpr std::array<ChildTag, 5> kThreadChildren{{
    {"mask", VX_XMLCONFIG_THREAD_MASK_TAG},
    {"priority", VX_XMLCONFIG_THREAD_PRIORITY_TAG},
    {"stack_size", VX_XMLCONFIG_THREAD_STACK_SIZE_TAG},
    {"cpu_list", VX_XMLCONFIG_THREAD_CPU_LIST_TAG},
    {"cpu_rotation", VX_XMLCONFIG_THREAD_CPU_ROTATION_TAG},
}};

const ChildTag *childTagNamed(std::span<const ChildTag> tags, const char *tagName) noexcept {
    for (const ChildTag &tag : tags) {
        if (std::strcmp(tag.name, tagName) == 0) return &tag;
    }
    return nullptr;
}

using ThreadValueConverter = DDS_Boolean (*)(const char *, DDS_XMLContext *, QTV_VX_XMLConfig_ParseErrorLogFunction,
                                             DDS_Long *);

// One end tag, as the open child's handler sees it. Each handler returns
// the state after the tag; an end tag other than the open child's keeps it.
struct EndTag {
    QTV_VX_XMLConfig &config;
    const char *tagName;
    const char *text;
    DDS_XMLContext *context;
    QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction;

    bool is(const char *name) const noexcept { return tagName != nullptr && std::strcmp(tagName, name) == 0; }
    QTV_VX_Options *options() const noexcept { return config.parsedVXOptions; }
    // The element owns its options; the getter's const is for borrowers.
    DDS_ThreadSettings_t *threadSettings() const noexcept {
        return const_cast<DDS_ThreadSettings_t *>(QTV_VX_Options_getThreadSettings(options()));
    }
};

VX_XMLConfig_TagType afterFilterLevel(const EndTag &end) noexcept {
    if (!end.is("filter_level")) return end.config.currentStatus;
    const DDS_Long level = QTV_VX_XMLConfig_getFilterLevelFromString(end.text, end.context, end.errorFunction);
    if (level == -1) {
        ParseErrorReporter{end.errorFunction, end.context, kEndSource}.fail(
            "invalid filter level string in XML configuration");
        return VX_XMLCONFIG_FILTER_LEVEL_TAG;
    }
    QTV_VX_Options_setFilterLevel(end.options(), level);
    return VX_XMLCONFIG_OTHER;
}

// `enabled`, `echo_to_stdout`, `log_infrastructure_messages`: stored as 1
// or 0, 0 when the text is not a boolean (the helper reports that itself).
// Stored directly: the echo setter would take the global lock while the
// parser holds the factory's.
VX_XMLConfig_TagType afterFlag(const EndTag &end, const char *tag, DDS_Long QTV_VX_Options::*flag) noexcept {
    if (!end.is(tag)) return end.config.currentStatus;
    DDS_Boolean value = DDS_BOOLEAN_FALSE;
    DDS_XMLHelper_str_to_boolean(&value, end.text, end.context);
    if (vexar::present(end.options(), kEndSource, "QTV_VX_Options is null")) end.options()->*flag = value ? 1 : 0;
    return VX_XMLCONFIG_OTHER;
}

// A value child of <thread>; back inside <thread> afterwards, even when the
// text was refused. The converter's target is 32 bits wide whatever the
// field's own type.
template <typename Field>
VX_XMLConfig_TagType afterThreadValue(const EndTag &end, const char *tag, Field DDS_ThreadSettings_t::*field,
                                      ThreadValueConverter convert) noexcept {
    if (!end.is(tag)) return end.config.currentStatus;
    if (DDS_ThreadSettings_t *settings = end.threadSettings()) {
        auto value = static_cast<DDS_Long>(settings->*field);
        convert(end.text, end.context, end.errorFunction, &value);
        settings->*field = static_cast<Field>(value);
    }
    return VX_XMLCONFIG_THREAD_TAG;
}

VX_XMLConfig_TagType afterCpuListPart(const EndTag &end) noexcept {
    if (end.is("cpu_list")) return VX_XMLCONFIG_THREAD_TAG;
    if (!end.is("element")) return VX_XMLCONFIG_THREAD_CPU_LIST_TAG;
    if (DDS_ThreadSettings_t *settings = end.threadSettings()) {
        QTV_VX_XMLConfig_addElementToThreadCpuList(end.text, end.context, end.errorFunction, &settings->cpu_list);
    }
    return VX_XMLCONFIG_THREAD_CPU_LIST_TAG;
}

VX_XMLConfig_TagType afterQueueSize(const EndTag &end) noexcept {
    if (!end.is("queue_size")) return end.config.currentStatus;
    DDS_Long size = 0;
    QTV_VX_XMLConfig_getQueueSize(end.text, end.context, end.errorFunction, &size);
    // deliberate: a refused text still reaches the setter, as 0, which
    // refuses it again with its own line.
    QTV_VX_Options_setQueueSize(end.options(), size);
    return VX_XMLCONFIG_OTHER;
}

VX_XMLConfig_TagType stateAfter(const EndTag &end) noexcept {
    switch (end.config.currentStatus) {
    case VX_XMLCONFIG_FILTER_LEVEL_TAG:
        return afterFilterLevel(end);
    case VX_XMLCONFIG_ENABLED_TAG:
        return afterFlag(end, "enabled", &QTV_VX_Options::enabled);
    case VX_XMLCONFIG_THREAD_TAG:
        return end.is("thread") ? VX_XMLCONFIG_OTHER : VX_XMLCONFIG_THREAD_TAG;
    case VX_XMLCONFIG_THREAD_MASK_TAG:
        return afterThreadValue(end, "mask", &DDS_ThreadSettings_t::mask, QTV_VX_XMLConfig_getThreadSettingsKindMask);
    case VX_XMLCONFIG_THREAD_PRIORITY_TAG:
        return afterThreadValue(end, "priority", &DDS_ThreadSettings_t::priority, QTV_VX_XMLConfig_getThreadPriority);
    case VX_XMLCONFIG_THREAD_STACK_SIZE_TAG:
        return afterThreadValue(end, "stack_size", &DDS_ThreadSettings_t::stack_size,
                                QTV_VX_XMLConfig_getThreadStackSize);
    case VX_XMLCONFIG_THREAD_CPU_LIST_TAG:
        return afterCpuListPart(end);
    case VX_XMLCONFIG_THREAD_CPU_ROTATION_TAG:
        return afterThreadValue(end, "cpu_rotation", &DDS_ThreadSettings_t::cpu_rotation,
                                QTV_VX_XMLConfig_getThreadCpuRotation);
    case VX_XMLCONFIG_QUEUE_SIZE_TAG:
        return afterQueueSize(end);
    case VX_XMLCONFIG_ECHO_TO_STDOUT_TAG:
        return afterFlag(end, "echo_to_stdout", &QTV_VX_Options::echoToStdout);
    case VX_XMLCONFIG_LOG_INFRASTRUCTURE_MESSAGES_TAG:
        return afterFlag(end, "log_infrastructure_messages", &QTV_VX_Options::logInfrastructureMessages);
    case VX_XMLCONFIG_OTHER:
        break;
    }
    return end.config.currentStatus;
}

}  // namespace

extern "C" {

void QTV_VX_XMLConfig_onStartElement(DDS_XMLObject *object, const char *tagName, const char ** /*attributes*/,
                                     DDS_XMLContext * /*context*/) {
    if (!vexar::present(object, kStartSource, kNoObject) || tagName == nullptr) return;
    QTV_VX_XMLConfig &config = *configOf(object);
    if (const ChildTag *child = childTagNamed(kElementChildren, tagName)) {
        config.currentStatus = child->state;
    } else if (config.currentStatus == VX_XMLCONFIG_THREAD_TAG) {
        if (const ChildTag *threadChild = childTagNamed(kThreadChildren, tagName)) {
            config.currentStatus = threadChild->state;
        }
    }
}

void QTV_VX_XMLConfig_onEndElement(DDS_XMLObject *object, const char *tagName, const char *elementText,
                                   DDS_XMLContext *context) {
    if (!vexar::present(object, kEndSource, kNoObject)) return;
    QTV_VX_XMLConfig &config = *configOf(object);
    // Without an error function there is nowhere to report to but stdout.
    if (config.extensionListener == nullptr) {
        vexar::reportError("invalid extension listener", kEndSource);
        return;
    }
    if (config.extensionListener->parserErrorLogFunction == nullptr) {
        vexar::reportError("invalid log parse error function pointer", kEndSource);
        return;
    }
    const EndTag end{config, tagName, elementText, context, config.extensionListener->parserErrorLogFunction};
    config.currentStatus = stateAfter(end);
}

}  // extern "C"
