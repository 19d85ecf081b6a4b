#!/usr/bin/env bash
# The web console under load: one logger at RATE messages per second (every
# tenth at WARNING), `vexar web` serving it, and a headless chromium with
# the page open and filtering to WARNING. Reports the server's and the
# browser's CPU over the run, what the page received against what matched,
# the losses it was told of, and how many rows its DOM held.
#   scripts/bench-web.sh [seconds [rate]]   (default 20 s at 50000/s;
#   build dir: $VEXAR_BENCH_DIR or build/bench-web)
set -euo pipefail
source "$(dirname "$0")/env.sh"
seconds=${1:-20}
rate=${2:-50000}
dir=${VEXAR_BENCH_DIR:-build/bench-web}
vexar_configure "$dir" -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=ON -DVEXAR_BUILD_TOOLS=ON -DVEXAR_BUILD_BENCH=OFF
cmake --build "$VEXAR_ROOT/$dir" --target vexar_tool mixed_logger -j"$VEXAR_JOBS" >/dev/null
DOMAIN=192 # tests/support/domains.h: the web console's range
source "$VEXAR_ROOT/tests/scripts/cli_support.sh" "$VEXAR_ROOT/$dir"
source "$VEXAR_ROOT/tests/scripts/web_support.sh"
source "$VEXAR_ROOT/tests/scripts/web_webdriver.sh"
trap 'stop_browser; stop_demos; rm -rf "$WORK"' EXIT

cpu_ticks() { # PIDS...: user + system clock ticks of those processes
  local pid total=0
  for pid in "$@"; do
    [[ -r /proc/$pid/stat ]] || continue
    total=$((total + $(awk '{ print $14 + $15 }' "/proc/$pid/stat")))
  done
  echo "$total"
}
browser_pids() { pgrep -f -- "--user-data-dir=$WORK/profile" || true; }

echo "load: $(uptime)"
start_web
start_browser
wd POST /url "{\"url\":\"$URL/?level=WARNING&grep=%5Ebench%20\"}" >/dev/null
wait_js 'document.getElementById("status").textContent === "live"' "the page live"
messages=$((seconds * rate))
start_logger bench bench "$rate" "$messages" 10 bench
logger_pid=${DEMO_PIDS[-1]}
for _ in $(seq 100); do grep -q '^logging' "$WORK/bench.out" 2>/dev/null && break; sleep 0.1; done
web_before=$(cpu_ticks "$WEB_PID")
browser_before=$(cpu_ticks $(browser_pids))
started=$(date +%s.%N)
wait "$logger_pid" || true
ended=$(date +%s.%N)
web_after=$(cpu_ticks "$WEB_PID")
browser_after=$(cpu_ticks $(browser_pids))
sleep 2
cat "$WORK/bench.out"
warned=$(sed -nE 's/^logged [0-9]+ warned ([0-9]+).*/\1/p' "$WORK/bench.out")
page=$(js 'const s = vexarConsole.stats; return [s.received, new Set(vexarConsole.rows().map(m => m.message)).size,
  s.lost, s.batches, document.querySelectorAll("#rows .row").length].join(" ")' | tr -d '"')
read -r received distinct lost batches dom_rows <<<"$page"
hz=$(getconf CLK_TCK)
awk -v s="$started" -v e="$ended" -v w=$((web_after - web_before)) -v b=$((browser_after - browser_before)) -v hz="$hz" \
  'BEGIN { d = e - s; printf "over %.1f s: vexar web %.1f%% of a core, chromium %.1f%% of a core\n", d, 100 * w / hz / d, 100 * b / hz / d }'
echo "page: received $received of $warned matching ($distinct distinct), missed $((warned - distinct)), told lost $lost," \
  "$batches batches, $dom_rows rows in the DOM"
