#!/usr/bin/env bash
# What DDS Security costs the logger: end-to-end messages per second under
# VexarQosLibrary::Lossless from a logger in one process to a subscriber in
# another, on loopback, without security, with signing only and with
# encryption, in the same run. The logger benchmark's producer runs as an
# application and its subscriber as an observer, each with the credentials
# that scripts/security/make-credentials.sh makes for the run.
#   scripts/bench-security.sh [messages] [runs]   (default 300000, 3 runs of each, interleaved;
#   build dir: $VEXAR_BENCH_DIR or build/bench)
set -euo pipefail
source "$(dirname "$0")/env.sh"
source "$VEXAR_ROOT/scripts/security/plugins.sh"
security_plugin_dir >/dev/null || { echo "Cyclone's DDS Security plugins are missing (libddsc0debian)" >&2; exit 1; }
messages=${1:-300000}
runs=${2:-3}
dir=${VEXAR_BENCH_DIR:-build/bench}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_TOOLS=OFF -DVEXAR_BUILD_BENCH=ON
cmake --build "$VEXAR_ROOT/$dir" --target logger_throughput_bench -j"$VEXAR_JOBS" >/dev/null
bench="$VEXAR_ROOT/$dir/bench/logger_throughput_bench"
domain=201 # tests/support/domains.h: kBenchBase + 1, the producer's domain
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
for protection in sign encrypt; do
  bash "$VEXAR_ROOT/scripts/security/make-credentials.sh" --protection "$protection" "$out/$protection" >/dev/null
done
plain=$CYCLONEDDS_URI

# end_to_end none|sign|encrypt: one run; prints the subscriber's rate and losses.
end_to_end() {
  local producer_uri=$plain subscriber_uri=$plain
  if [[ $1 != none ]]; then
    producer_uri="$plain,file://$out/$1/application/cyclonedds.xml"
    subscriber_uri="$plain,file://$out/$1/observer/cyclonedds.xml"
  fi
  CYCLONEDDS_URI=$subscriber_uri VEXAR_BENCH_PROFILE=Lossless "$bench" sub "$domain" "$messages" >"$out/sub" &
  local subscriber=$!
  CYCLONEDDS_URI=$producer_uri VEXAR_BENCH_PROFILE=Lossless "$bench" pub "$messages" 0 >"$out/pub"
  wait "$subscriber" || { cat "$out/pub" "$out/sub" >&2; echo "the subscriber failed" >&2; exit 1; }
  local rate distinct
  rate=$(sed -n 's/^rate //p' "$out/sub")
  distinct=$(sed -n 's/^distinct //p' "$out/sub")
  printf '%-8s %10s messages/s, lost %d of %d\n' "$1" "$rate" $((messages - distinct)) "$messages"
  if ((distinct < messages)); then grep -E '^(missing|received|logger|producer)' "$out/sub" "$out/pub" | sed 's/^/    /'; fi
  echo "$1 $rate" >>"$out/rates"
}

echo "load: $(uptime)"
echo "==== end to end to another process, as fast as carried away, QoS Lossless, $messages messages"
for run in $(seq "$runs"); do
  for protection in none sign encrypt; do end_to_end "$protection"; done
done
echo "==== median of $runs runs"
for protection in none sign encrypt; do
  median=$(awk -v p="$protection" '$1 == p { print $2 }' "$out/rates" | sort -n | awk '{ r[NR] = $1 } END { print r[int((NR + 1) / 2)] }')
  printf '%-8s %10s messages/s\n' "$protection" "$median"
done
