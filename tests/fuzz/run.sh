#!/usr/bin/env bash
# Runs every fuzz target for a bounded time over its seed corpus.
set -euo pipefail
build=$1
seconds=${VEXAR_FUZZ_SECONDS:-20}
root=$(cd "$(dirname "$0")" && pwd)
shopt -s nullglob
count=0
for target in "$build"/tests/fuzz/*_fuzz; do
  name=$(basename "$target")
  corpus=$(mktemp -d)
  [ -d "$root/corpus/$name" ] && cp "$root/corpus/$name"/* "$corpus"/ 2>/dev/null || true
  echo "fuzzing $name for ${seconds}s"
  "$target" -max_total_time="$seconds" -rss_limit_mb=2048 -print_final_stats=0 "$corpus" 2>&1 | tail -n 3
  rm -rf "$corpus"
  count=$((count + 1))
done
echo "fuzz targets run: $count"
((count > 0)) || { echo "no fuzz targets found in $build" >&2; exit 1; }
