#!/usr/bin/env bash
# The logger's benchmarks on loopback: the cost of an accepted and of a
# filtered call (next to spdlog), end-to-end messages per second to a
# subscriber in another process with the count lost, and the resident
# memory a running logger adds; Cyclone's own ddsperf between two processes
# in the same run, as the anchor for the end-to-end rate. The logger runs
# under VexarQosLibrary::Lossless; the unpaced run is repeated with the
# default QoS for comparison.
#   scripts/bench-logger.sh [messages]   (default 1000000; build dir: $VEXAR_BENCH_DIR or build/bench)
set -euo pipefail
source "$(dirname "$0")/env.sh"
source "$(dirname "$0")/ddsperf.sh"
dir=${VEXAR_BENCH_DIR:-build/bench}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_TOOLS=OFF -DVEXAR_BUILD_BENCH=ON
cmake --build "$VEXAR_ROOT/$dir" --target logger_call_bench logger_throughput_bench logger_memory_bench \
  -j"$VEXAR_JOBS" >/dev/null
bench="$VEXAR_ROOT/$dir/bench"
echo "load: $(uptime)"
echo "==== cost of one call (a: accepted, b: filtered)"
"$bench/logger_call_bench"
messages=${1:-1000000}
end_to_end() { # rate, profile
  local pace="as fast as carried away"
  [ "$1" = 0 ] || pace="paced at $1/s"
  echo "==== end to end to another process (c), $pace, QoS $2"
  VEXAR_BENCH_PROFILE=$2 "$bench/logger_throughput_bench" "$messages" "$1"
}
end_to_end 0 Lossless
end_to_end 0 default
end_to_end 150000 Lossless
end_to_end 200000 Lossless
# The logger's sample of a 100-character message is 136 bytes with its
# encapsulation header (bench-dds.sh prints it); ddsperf counts without it.
echo "==== Cyclone's ddsperf, 132-byte payload, between two processes (anchor for c)"
echo "ddsperf rate $(ddsperf_rate 209 6 132)"
echo "==== resident memory added by a running logger (d)"
"$bench/logger_memory_bench"
