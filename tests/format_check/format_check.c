/* Good printf formats; with VEXAR_BAD_FORMAT one that does not fit. */
#include "vexar/FormattedLogging.h"

void logSomething(QTV_VX_Vexar *logger);

void logSomething(QTV_VX_Vexar *logger) {
#ifdef VEXAR_BAD_FORMAT
    QTV_VX_Vexar_logf(logger, QTV_VX_LOG_LEVEL_INFO, "net", "retry %d of %d", 1, "3");
#else
    QTV_VX_Vexar_logf(logger, QTV_VX_LOG_LEVEL_INFO, "net", "retry %d of %d", 1, 3);
    VX_LOG_INFO("net", "retry %d of %s", 1, "3");
    VX_LOG_INFO("net", "no arguments");
#endif
}
