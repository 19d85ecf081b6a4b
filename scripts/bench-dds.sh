#!/usr/bin/env bash
# Throughput of typed LogMessage samples between two processes on loopback,
# next to Cyclone's own ddsperf with a payload of the same size. ddsperf
# batches its writes, so the compared run does too; the unbatched run (one
# packet per write, as the logger's writers send) is printed for information.
#   scripts/bench-dds.sh [seconds]      (default 6; build dir: $VEXAR_BENCH_DIR or build/bench)
set -euo pipefail
source "$(dirname "$0")/env.sh"
source "$(dirname "$0")/ddsperf.sh"
seconds=${1:-6}
# The reader counts whole seconds and drops the first (start-up): fewer than
# three leave no steady second to report.
if ! [[ $seconds =~ ^[0-9]+$ ]] || ((seconds < 3)); then
  echo "usage: $0 [seconds >= 3]" >&2
  exit 2
fi
dir=${VEXAR_BENCH_DIR:-build/bench}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_TOOLS=OFF -DVEXAR_BUILD_BENCH=ON
cmake --build "$VEXAR_ROOT/$dir" --target dds_throughput_bench -j"$VEXAR_JOBS" >/dev/null
bench="$VEXAR_ROOT/$dir/bench/dds_throughput_bench"
domain=19   # tests/support/domains.h: typed endpoints, bench
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

run_vexar() { # name, extra pub arguments...
  local name=$1; shift
  "$bench" sub "$domain" "$seconds" >"$out/${name}_sub" &
  local sub=$!
  "$bench" pub "$domain" "$seconds" "$@" >"$out/${name}_pub"
  wait "$sub"
  cat "$out/${name}_pub" "$out/${name}_sub"
}
run_vexar batched
run_vexar unbatched unbatched
vexar_rate=$(awk '/^rate/ {print $2}' "$out/batched_sub")
unbatched_rate=$(awk '/^rate/ {print $2}' "$out/unbatched_sub")
size=$(awk '/^pub:/ {print $5}' "$out/batched_pub")

# ddsperf's KS topic counts its payload size without the 4-byte encapsulation header.
payload=$((size - 4))
ddsperf_rate=$(ddsperf_rate "$domain" "$seconds" "$payload")

printf '%-44s %12s samples/s\n' "Vexar typed LogMessage ($size B), batched" "$vexar_rate" \
  "ddsperf KS (payload $payload B)" "$ddsperf_rate" \
  "Vexar typed LogMessage, unbatched" "$unbatched_rate"
awk -v v="$vexar_rate" -v d="$ddsperf_rate" 'BEGIN { if (d > 0) printf "ratio %.0f%% of ddsperf\n", 100 * v / d }'
