/* Formatted logging from C: QTV_VX_Vexar_logf on a logger at hand, and the
 * VX_LOG_<LEVEL> macros on the process-wide one, whose arguments are not
 * even evaluated when their level is filtered out.
 *
 * Usage: formatted_logging [domain id]   (default 0) */
#include <stdio.h>
#include <stdlib.h>

#include "vexar/FormattedLogging.h"

static int domainFromArguments(int argc, char **argv) { return argc > 1 ? atoi(argv[1]) : 0; }

static int expensiveProbe(void) {
    printf("-- the probe ran\n");
    return 42;
}

int main(int argc, char **argv) {
    /* Options outlive the logger: the logger keeps the pointer. */
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    if (options == NULL || QTV_VX_Options_setDomainId(options, domainFromArguments(argc, argv)) != DDS_RETCODE_OK ||
        QTV_VX_Options_setApplicationKind(options, "formatted_logging") != DDS_RETCODE_OK ||
        !QTV_VX_Vexar_setOptions(options)) {
        fprintf(stderr, "formatted_logging: cannot register the options\n");
        QTV_VX_Options_delete(options);
        return EXIT_FAILURE;
    }
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    if (logger == NULL) {
        QTV_VX_Options_delete(options);
        return EXIT_FAILURE;
    }

    for (int attempt = 1; attempt <= 3; ++attempt) {
        QTV_VX_Vexar_logf(logger, QTV_VX_LOG_LEVEL_WARNING, "net", "retry %d of %d on %s", attempt, 3, "eth0");
    }
    VX_LOG_INFO("pump", "pressure %.2f bar, valve %c at %d %%", 3.25, 'B', 40);
    VX_LOG_NOTICE("pump", "no arguments at all");

    printf("-- filter level NOTICE: the DEBUG line below neither formats nor probes\n");
    QTV_VX_Vexar_setFilterLevel(logger, QTV_VX_LOG_LEVEL_NOTICE);
    VX_LOG_DEBUG("pump", "probe says %d", expensiveProbe());
    VX_LOG_ERROR("pump", "probe says %d", expensiveProbe());

    /* Flush, then finalize: finalization discards what is still queued. */
    DDS_Duration_t timeout = {5, 0};
    QTV_VX_Vexar_flush(logger, &timeout);
    QTV_VX_Vexar_finalizeInstance();
    QTV_VX_Options_delete(options);
    return EXIT_SUCCESS;
}
