#!/usr/bin/env bash
# The logger's benchmarks on loopback: the cost of an accepted and of a
# filtered call (next to spdlog), end-to-end messages per second to a
# subscriber in another process with the count lost, and the resident
# memory a running logger adds.
#   scripts/bench-logger.sh [messages]   (default 1000000; build dir: $VEXAR_BENCH_DIR or build/bench)
set -euo pipefail
source "$(dirname "$0")/env.sh"
dir=${VEXAR_BENCH_DIR:-build/bench}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_TOOLS=OFF -DVEXAR_BUILD_BENCH=ON
cmake --build "$VEXAR_ROOT/$dir" --target logger_call_bench logger_throughput_bench logger_memory_bench \
  -j"$VEXAR_JOBS" >/dev/null
bench="$VEXAR_ROOT/$dir/bench"
echo "load: $(uptime)"
echo "==== cost of one call (a: accepted, b: filtered)"
"$bench/logger_call_bench"
messages=${1:-1000000}
for rate in 0 150000 200000; do
  if [ "$rate" = 0 ]; then
    echo "==== end to end to another process (c), as fast as carried away"
  else
    echo "==== end to end to another process (c), paced at $rate/s"
  fi
  "$bench/logger_throughput_bench" "$messages" "$rate"
done
echo "==== resident memory added by a running logger (d)"
"$bench/logger_memory_bench"
