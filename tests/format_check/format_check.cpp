// Good fmt formats; with VEXAR_BAD_FORMAT one with an argument missing, in a
// macro, or with VEXAR_CHECK_MEMBER in a member call.
#include "vexar/vexar.hpp"

void logSomething(const vexar::Logger &logger);

void logSomething(const vexar::Logger &logger) {
#if defined(VEXAR_BAD_FORMAT) && defined(VEXAR_CHECK_MEMBER)
    logger.info("retry {} of {}", 1);
#elif defined(VEXAR_BAD_FORMAT)
    VX_INFO(logger, "retry {} of {}", 1);
#else
    logger.info("retry {} of {}", 1, 3);
    VX_INFO(logger, "retry {} of {}", 1, "3");
    VX_INFO(logger, "no arguments");
#endif
}
