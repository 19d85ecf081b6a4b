// Starting the logger from the options of a parsed element.
#include "config/XMLConfig.h"
#include "vexar/Vexar.h"
#include "vexar/report_line.hpp"

extern "C" {

DDS_Long QTV_VX_XMLConfig_startWithXMLConfiguration(DDS_DomainParticipant *participant, QTV_VX_Options *options,
                                                    const char *applicationKind) {
    constexpr const char *source = "QTV_VX_XMLConfig_startWithXMLConfiguration";
    if (options == nullptr) {
        vexar::reportError("no options found in XML configuration", source);
        return 0;
    }
    if (participant == nullptr) {
        vexar::reportError("invalid DomainParticipant", source);
        return 0;
    }
    // Not starting, or leaving a running logger alone, is what was asked:
    // both are successes.
    if (options->enabled == 0) {
        vexar::reportNote("VX not enabled in XML Options. It won't be created", source);
        return 1;
    }
    if (QTV_VX_Vexar_isVexarRunning()) {
        vexar::reportNote("VX already running. XML Options don't apply", source);
        return 1;
    }
    QTV_VX_Options_setDomainParticipant(options, participant);
    if (applicationKind != nullptr && QTV_VX_Options_setApplicationKind(options, applicationKind) != DDS_RETCODE_OK) {
        vexar::reportError("could not set the application kind", source);
        return 0;
    }
    if (!QTV_VX_Vexar_setOptions(options)) {
        vexar::reportError("could not set VX options; instance already created", source);
        return 0;
    }
    if (QTV_VX_Vexar_getInstance() == nullptr) {
        vexar::reportError("Vexar could not be started", source);
        return 0;
    }
    return 1;
}

}  // extern "C"
