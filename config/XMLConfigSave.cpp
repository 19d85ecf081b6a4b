// Writing the element back as XML when the configuration is saved.
#include <cstdint>

#include "config/XMLConfig.h"
#include "config/config_object.hpp"
#include "config/xml_names.hpp"
#include "vexar/Vexar.h"
#include "vexar/logger_core.hpp"

namespace {

using vexar::xmlconfig::kCpuRotations;
using vexar::xmlconfig::kMaskKinds;

const char *trueOrFalse(bool value) noexcept { return value ? "true" : "false"; }

// The running logger's level, which remote commands may have changed since
// it started; the options' own otherwise. Saving must not race with the
// logger's finalization.
DDS_Long filterLevelToSave(const QTV_VX_Options *options) noexcept {
    if (QTV_VX_Vexar_isVexarRunning()) {
        if (QTV_VX_Vexar *logger = vexar::shared(QTV_VX_Vexar_instance).load()) {
            return vexar::shared(logger->filterLevel).load();
        }
    }
    return QTV_VX_Options_getFilterLevel(options);
}

void saveFilterLevel(DDS_Long level, DDS_XMLSaveContext *context) noexcept {
    for (const auto &[name, namedLevel] : vexar::xmlconfig::kFilterLevelNames) {
        if (namedLevel == level) {
            DDS_XMLHelper_save_freeform(context, "<filter_level>%s</filter_level>\n", name);
            return;
        }
    }
    DDS_XMLHelper_save_freeform(context, "<filter_level>%u</filter_level>\n", static_cast<unsigned>(level));
}

// The kind names joined by " | "; an empty element for no bits.
void saveMask(DDS_ThreadSettingsKindMask mask, DDS_XMLSaveContext *context) noexcept {
    DDS_XMLHelper_save_freeform(context, "<mask>");
    const char *separator = "";
    for (const auto &kind : kMaskKinds) {
        if (kind.value == DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT || (mask & kind.value) == 0) continue;
        DDS_XMLHelper_save_freeform(context, "%s%s", separator, kind.saved);
        separator = " | ";
    }
    DDS_XMLHelper_save_freeform(context, "</mask>\n");
}

void savePriority(DDS_Long priority, DDS_XMLSaveContext *context) noexcept {
    // deliberate: indented before the choice, so a numeric priority, which
    // save_long indents again, stands further in; the saved form is fixed.
    DDS_XMLHelper_save_indent(context);
    if (priority == OBLX_THREAD_PRIORITY_DEFAULT) {
        DDS_XMLHelper_save_freeform(context, "<priority>%s</priority>\n", vexar::xmlconfig::kDefaultPriorityName);
    } else {
        DDS_XMLHelper_save_long("priority", priority, context);
    }
}

const char *cpuRotationName(DDS_ThreadSettingsCpuRotationKind rotation) noexcept {
    for (const auto &kind : kCpuRotations) {
        if (kind.value == rotation) return kind.saved;
    }
    return nullptr;
}

bool areDefaults(const DDS_ThreadSettings_t &settings) noexcept {
    const DDS_ThreadSettings_t defaults = DDS_THREAD_SETTINGS_DEFAULT;
    return DDS_ThreadSettings_is_equal(&settings, &defaults);
}

}  // namespace

extern "C" {

void QTV_VX_XMLConfig_save(const DDS_XMLObject *object, DDS_XMLSaveContext *context) {
    if (context == nullptr) return;
    DDS_XMLHelper_save_indent(context);
    DDS_XMLHelper_save_freeform(context, "<vexar>\n");
    context->depth += 1;
    DDS_XMLHelper_save_indent(context);
    // Read without QTV_VX_XMLConfig_getVXOptions: a save reports through
    // the error flag only, never on stdout.
    const QTV_VX_XMLConfig *element = vexar::xmlconfig::configOf(object);
    const QTV_VX_Options *options = element != nullptr ? element->parsedVXOptions : nullptr;
    if (options == nullptr) {
        context->error = 1;
        return;
    }
    saveFilterLevel(filterLevelToSave(options), context);
    DDS_XMLHelper_save_indent(context);
    DDS_XMLHelper_save_freeform(context, "<enabled>%s</enabled>\n", trueOrFalse(options->enabled != 0));
    // deliberate: these two lines get no indentation of their own; the
    // saved form is fixed.
    DDS_XMLHelper_save_freeform(context, "<echo_to_stdout>%s</echo_to_stdout>\n",
                                trueOrFalse(options->echoToStdout == 1));
    DDS_XMLHelper_save_freeform(context, "<log_infrastructure_messages>%s</log_infrastructure_messages>\n",
                                trueOrFalse(options->logInfrastructureMessages != 0));
    QTV_VX_XMLConfig_saveThreadSettings("thread", &options->threadSettings, context);
    if (context->error != 0) return;
    DDS_XMLHelper_save_indent(context);
    DDS_XMLHelper_save_freeform(context, "<queue_size>%d</queue_size>\n", static_cast<int>(options->queueSize));
    context->depth -= 1;
    DDS_XMLHelper_save_indent(context);
    DDS_XMLHelper_save_freeform(context, "</vexar>\n");
}

void QTV_VX_XMLConfig_saveThreadSettings(const char *elementName, const DDS_ThreadSettings_t *settings,
                                         DDS_XMLSaveContext *context) {
    if (context == nullptr) return;
    if (elementName == nullptr || settings == nullptr) {
        context->error = 1;
        return;
    }
    if (areDefaults(*settings)) return;
    DDS_XMLHelper_save_tag(elementName, DDS_XML_SAVE_TAG_OPEN, context);
    DDS_XMLHelper_save_indent(context);
    saveMask(settings->mask, context);
    savePriority(settings->priority, context);
    if (settings->stack_size != OBLX_THREAD_STACK_SIZE_DEFAULT) {
        DDS_XMLHelper_save_long("stack_size", settings->stack_size, context);
    }
    DDS_XMLHelper_save_long_seq("cpu_list", &settings->cpu_list, context);
    const char *rotation = cpuRotationName(settings->cpu_rotation);
    if (rotation == nullptr) {
        // Left open: the error flag fails the whole save.
        context->error = 1;
        return;
    }
    DDS_XMLHelper_save_string("cpu_rotation", rotation, context);
    DDS_XMLHelper_save_tag(elementName, DDS_XML_SAVE_TAG_CLOSE, context);
}

}  // extern "C"
