/* A C application built against the static library through pkg-config
 * (`pkg-config --static`): it starts the logger, logs one line, flushes
 * and finalizes, and succeeds when that line was published. */
#include <stdio.h>
#include <stdlib.h>

#include "vexar/Options.h"
#include "vexar/Statistics.h"
#include "vexar/Vexar.h"

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s DOMAIN_ID\n", argv[0]);
        return 2;
    }
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    if (options == NULL || QTV_VX_Options_setDomainId(options, atoi(argv[1])) != DDS_RETCODE_OK ||
        QTV_VX_Options_setRemoteAdministrationEnabled(options, 0) != DDS_RETCODE_OK ||
        QTV_VX_Vexar_setOptions(options) != 1) {
        return 1;
    }
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    if (logger == NULL) return 1;
    QTV_VX_Vexar_info(logger, "logged from a statically linked C program");
    const DDS_Duration_t timeout = {5, 0};
    const DDS_ReturnCode_t flushed = QTV_VX_Vexar_flush(logger, &timeout);
    QTV_VX_Statistics statistics;
    const DDS_ReturnCode_t counted = QTV_VX_Vexar_getStatistics(&statistics);
    QTV_VX_Vexar_finalizeInstance();
    QTV_VX_Options_delete(options);
    printf("flush %d, published %llu\n", (int)flushed, (unsigned long long)statistics.published);
    return flushed == DDS_RETCODE_OK && counted == DDS_RETCODE_OK && statistics.published == 1 ? 0 : 1;
}
