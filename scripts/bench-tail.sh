#!/usr/bin/env bash
# Whether `vexar tail` keeps up with the logger at its end-to-end rate: the
# logger benchmark's producer logs N numbered messages at RATE per second (the
# logger's end-to-end target), and `vexar tail`, their only subscriber,
# prints them all to a file. Reports what tail printed, the messages it
# missed, the losses it reported, its CPU time and its peak resident memory.
#   scripts/bench-tail.sh [messages [rate]]   (default 600000 at 150000/s;
#   build dir: $VEXAR_BENCH_DIR or build/bench-tail)
set -euo pipefail
source "$(dirname "$0")/env.sh"
messages=${1:-600000}
rate=${2:-150000}
dir=${VEXAR_BENCH_DIR:-build/bench-tail}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_TOOLS=ON -DVEXAR_BUILD_BENCH=ON
cmake --build "$VEXAR_ROOT/$dir" --target vexar_tool logger_throughput_bench -j"$VEXAR_JOBS" >/dev/null
vexar="$VEXAR_ROOT/$dir/tools/vexar/vexar"
producer="$VEXAR_ROOT/$dir/bench/logger_throughput_bench"
domain=201 # tests/support/domains.h: kBenchBase + 1, the producer's domain
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

echo "load: $(uptime)"
# Only the producer's numbered messages count; the logger's own lines may come too.
# GNU time's %M is the peak resident set (VmHWM) when tail exits, in KiB.
/usr/bin/time -o "$out/tail.time" -f 'tail: %U s user, %S s system, %e s elapsed, peak RSS %M KiB' \
  "$vexar" tail --domain "$domain" --grep '^seq ' --count "$messages" --timeout $((messages / rate + 30)) \
  --no-color >"$out/lines" 2>"$out/tail.err" &
tail_pid=$!
# The producer starts logging once tail's reader has matched its writer.
"$producer" pub "$messages" "$rate"
tail_status=0
wait "$tail_pid" || tail_status=$?
cat "$out/tail.time"
grep -v '^vexar tail: lost' "$out/tail.err" || true
reported=$(sed -n 's/^vexar tail: lost \([0-9]*\).*/\1/p' "$out/tail.err" | awk '{ n += $1 } END { print n + 0 }')
printed=$(wc -l <"$out/lines")
distinct=$(grep -o 'seq [0-9]*' "$out/lines" | sort -u | wc -l)
echo "tail: exit $tail_status, printed $printed lines, $distinct distinct messages, missed $((messages - distinct)) of $messages, reported lost $reported"
