#!/usr/bin/env bash
# What `vexar record` and `vexar query` cost (figures in bench/README.md):
#  (a) ingest: the logger benchmark's producer logs N messages of 100
#      characters as fast as they are carried away, under the Lossless
#      profile, and `vexar record` is their only subscriber. Reports the
#      messages stored per second (first to last reception), the ones
#      missing, and the database's bytes per message.
#  (b) queries: a database of F messages from 20 applications over 7 days,
#      filled through the recorder's store (bench/record_store_fill, no
#      DDS); the wall time of whole `vexar query` runs (median of 5), and
#      bytes per message.
#   scripts/bench-record.sh [messages [fill]]   (default 1000000 and 10000000;
#   build dir: $VEXAR_BENCH_DIR or build/bench-record; files in $TMPDIR)
set -euo pipefail
source "$(dirname "$0")/env.sh"
messages=${1:-1000000}
fill=${2:-10000000}
dir=${VEXAR_BENCH_DIR:-build/bench-record}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_TOOLS=ON -DVEXAR_BUILD_BENCH=ON
cmake --build "$VEXAR_ROOT/$dir" --target vexar_tool logger_throughput_bench record_store_fill -j"$VEXAR_JOBS" >/dev/null
vexar="$VEXAR_ROOT/$dir/tools/vexar/vexar"
producer="$VEXAR_ROOT/$dir/bench/logger_throughput_bench"
filler="$VEXAR_ROOT/$dir/bench/record_store_fill"
domain=201 # tests/support/domains.h: kBenchBase + 1, the producer's domain
out=$(mktemp -d)
trap 'kill "${recorder:-}" 2>/dev/null || true; rm -rf "$out"' EXIT
echo "load: $(uptime)"

# (a) ingest: from the first reception to the moment all are in the
# database (counted every 0.1 s), or until the count stops for 10 s.
"$vexar" record --domain "$domain" --db "$out/ingest.db" 2>"$out/record.err" &
recorder=$!
sleep 1
"$producer" pub "$messages" 0 &
producer_pid=$!
# The newest row id is read in no time; counting the benchmark's own rows
# scans the table, so that is done only when the id says they may all be in
# (a reader that scanned all along would slow the recorder it measures).
newest() { sqlite3 "$out/ingest.db" "SELECT coalesce(max(id), 0) FROM messages" 2>/dev/null || echo 0; }
count() { sqlite3 "$out/ingest.db" "SELECT count(*) FROM messages WHERE text LIKE 'seq %'" 2>/dev/null || echo 0; }
previous=-1 still=0
while :; do
  now=$(newest)
  [[ $now -ge $messages && $(count) -ge $messages ]] && break
  if [[ $now -eq $previous ]]; then ((still += 1)); else still=0; fi
  ((still < 100)) || break
  previous=$now
  sleep 0.1
done
done_ns=$(date +%s%N)
wait "$producer_pid" || true
kill "$recorder"
wait "$recorder" || true
recorder=
cat "$out/record.err"
sqlite3 -separator ' ' "$out/ingest.db" "
  SELECT count(DISTINCT substr(text, 1, 12)), ($done_ns - min(received_time)) / 1e9
  FROM messages WHERE text LIKE 'seq %'" >"$out/ingest"
read -r stored seconds <"$out/ingest"
bytes=$(($(stat -c %s "$out/ingest.db") + $(stat -c %s "$out/ingest.db-wal" 2>/dev/null || echo 0)))
awk -v n="$messages" -v s="$stored" -v t="$seconds" -v b="$bytes" 'BEGIN {
  printf "ingest: %d of %d stored, %d missing, %.0f messages/s stored (first reception to all committed, %.2f s), %.0f bytes per message\n",
    s, n, n - s, s / t, t, b / s }'
rm -f "$out"/ingest.db*

# (b) queries on a filled database
"$filler" "$out/big.db" "$fill" 7
sqlite3 "$out/big.db" "PRAGMA wal_checkpoint(TRUNCATE)" >/dev/null
bytes=$(stat -c %s "$out/big.db")
awk -v n="$fill" -v b="$bytes" 'BEGIN { printf "database: %d messages, %.2f GB, %.0f bytes per message\n", n, b / 1e9, b / n }'
# median_ms ARGS...: the median wall time of 5 runs of `vexar query ARGS`, and its line count.
median_ms() {
  local runs=() run start
  for run in 1 2 3 4 5; do
    start=$(date +%s%N)
    "$vexar" query --db "$out/big.db" --no-color "$@" >"$out/lines"
    runs+=($((($(date +%s%N) - start) / 1000000)))
  done
  printf '%s\n' "${runs[@]}" | sort -n | sed -n 3p | tr -d '\n'
  echo " ms median of 5 (runs: ${runs[*]} ms), $(wc -l <"$out/lines") lines"
}
for query in "--level error --app kind07 --since 1h" "--text word050 -n 100" "--text word900 -n 100" \
  "--level error --app kind07 --since 1d -n 100" "--grep word9[0-9]9 --since 10m"; do
  read -ra words <<<"$query"
  echo "query $query: $(median_ms "${words[@]}")"
done
