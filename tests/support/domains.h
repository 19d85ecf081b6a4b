// DDS domain ids for tests. Tests run concurrently (ctest -j), so every test
// that creates DDS entities takes its own id from the range of its area.
#pragma once

namespace vexar_test::domains {
constexpr int kPlatformSmoke = 1;    // 1..9   platform, middleware logger
constexpr int kBridgeBase = 10;      // 10..49 DDS bridge
constexpr int kTypedEndpoints = 11;  // 11..19 of those: typed endpoints (18, 19: bench/dds_throughput_bench)
constexpr int kLoggerBase = 50;      // 50..119 logger end to end
constexpr int kToolsBase = 120;      // 120..199 command-line tool (170..179: tests/scripts/record_*_test.sh,
                                     // 190..199: web_*_test.sh and scripts/bench-web.sh)
constexpr int kToolsIdentity = 180;  // 180..189 of those: tests/scripts/cli_identity*_test.sh
constexpr int kBenchBase = 200;      // 200..209 benchmarks (bench/logger_*_bench, 203: instance_iteration_bench)
constexpr int kApiBase = 210;  // 210..219 formatted calls and the C++ API (219: tests/scripts/cpp_location_test.sh)
constexpr int kSecurityBase = 220;  // 220..229 DDS Security (tests/scripts/security_admin_test.sh: 220, 222, 223)
}  // namespace vexar_test::domains
