// Logging from C++ (17 and later): a Logger made from options and taken down
// with its scope, fmt formats checked at compile time, a category handle,
// and VX_ macros that end each text with the file and line of the call.
//
// Usage: cpp_logging [domain id [messages]]   (default 0 and 3)
#include <cstdio>
#include <cstdlib>
#include <string>

#include "vexar/vexar.hpp"

namespace {

int argumentOr(int argc, char **argv, int index, int fallback) {
    return argc > index ? std::atoi(argv[index]) : fallback;
}

int expensiveProbe() {
    std::puts("-- the probe ran");
    return 42;
}

}  // namespace

int main(int argc, char **argv) {
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    QTV_VX_Options_setDomainId(options, argumentOr(argc, argv, 1, 0));
    QTV_VX_Options_setApplicationKind(options, "cpp_logging");
    vexar::Settings settings;
    settings.location = vexar::Location::fileName;
    // The logger copies the options; flushed, then finalized, at the end of main.
    vexar::Logger logger(options, settings);
    QTV_VX_Options_delete(options);
    if (!logger) return EXIT_FAILURE;

    const int messages = argumentOr(argc, argv, 2, 3);
    for (int i = 1; i <= messages; ++i) logger.info("retry {} of {} on {}", i, messages, "eth0");

    auto net = logger.category("net");
    net.warn("link {} down after {:.1f} s", "eth0", 2.5);
    VX_ERROR(net, "link {} lost {} packets", std::string("eth1"), 17);
    VX_NOTICE(logger, "no arguments at all");

    logger.setFilterLevel(QTV_VX_LOG_LEVEL_NOTICE);
    std::puts("-- filter level NOTICE: the DEBUG line below neither formats nor probes");
    VX_DEBUG(net, "probe says {}", expensiveProbe());
    return EXIT_SUCCESS;
}
