/* The logger from an application's side: register options, take the
 * process-wide logger, log at every level, tighten the filter and finalize.
 *
 * Usage: vexar_example [domain id]   (default 0) */
#include <stdio.h>
#include <stdlib.h>

#include "vexar/QosLibrary.h"
#include "vexar/Vexar.h"

static int domainFromArguments(int argc, char **argv) { return argc > 1 ? atoi(argv[1]) : 0; }

/* Options outlive the logger: the logger keeps the pointer, not a copy.
 * The built-in Lossless profile keeps every message for live subscribers;
 * what cannot be kept is dropped only at the queue, and counted. */
static QTV_VX_Options *exampleOptions(int domainId) {
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    if (options == NULL) {
        return NULL;
    }
    if (QTV_VX_Options_setDomainId(options, domainId) != DDS_RETCODE_OK ||
        QTV_VX_Options_setApplicationKind(options, "vexar_example") != DDS_RETCODE_OK ||
        QTV_VX_Options_setQosLibrary(options, QTV_VX_QOS_LIBRARY_NAME) != DDS_RETCODE_OK ||
        QTV_VX_Options_setQosProfile(options, QTV_VX_QOS_PROFILE_LOSSLESS) != DDS_RETCODE_OK ||
        QTV_VX_Options_setEchoToStdout(options, 1) != DDS_RETCODE_OK) {
        return QTV_VX_Options_delete(options);
    }
    return options;
}

static void logAtEveryLevel(QTV_VX_Vexar *logger) {
    QTV_VX_Vexar_fatal(logger, "the reactor is on fire");
    QTV_VX_Vexar_severe(logger, "the coolant is leaking");
    QTV_VX_Vexar_error(logger, "a pump failed");
    QTV_VX_Vexar_warning(logger, "pressure is rising");
    QTV_VX_Vexar_notice(logger, "shift change at 18:00");
    QTV_VX_Vexar_info(logger, "all systems nominal");
    QTV_VX_Vexar_debug(logger, "valve 7 at 42 %");
    QTV_VX_Vexar_trace(logger, "entering control loop");
}

int main(int argc, char **argv) {
    QTV_VX_Options *options = exampleOptions(domainFromArguments(argc, argv));
    if (options == NULL || !QTV_VX_Vexar_setOptions(options)) {
        fprintf(stderr, "vexar_example: cannot register the options\n");
        QTV_VX_Options_delete(options);
        return EXIT_FAILURE;
    }
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    if (logger == NULL) {
        QTV_VX_Options_delete(options);
        return EXIT_FAILURE;
    }

    printf("-- every level is echoed; those up to INFO (600) are published\n");
    logAtEveryLevel(logger);

    printf("-- filter level WARNING (400): still echoed, only up to WARNING published\n");
    QTV_VX_Vexar_setFilterLevel(logger, QTV_VX_LOG_LEVEL_WARNING);
    logAtEveryLevel(logger);
    QTV_VX_Vexar_logMessageWithLevelCategory(logger, QTV_VX_LOG_LEVEL_ERROR, "a message with a category",
                                             "example.pumps");

    /* Finalization drops what is still queued: flush first, waiting at
     * most five seconds for the subscribers to acknowledge every message. */
    const DDS_Duration_t flushTimeout = {5, 0};
    if (QTV_VX_Vexar_flush(logger, &flushTimeout) != DDS_RETCODE_OK) {
        fprintf(stderr, "vexar_example: not every message was acknowledged\n");
    }
    QTV_VX_Vexar_finalizeInstance();
    QTV_VX_Options_delete(options);
    return EXIT_SUCCESS;
}
