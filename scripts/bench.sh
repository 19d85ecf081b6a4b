#!/usr/bin/env bash
# Builds in release mode and runs every benchmark (or those named) on loopback.
set -euo pipefail
source "$(dirname "$0")/env.sh"
bash "$VEXAR_ROOT/scripts/install-deps.sh"
vexar_configure build/bench -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF
vexar_build build/bench
for b in "$VEXAR_ROOT"/build/bench/bench/*_bench; do
  name=$(basename "$b")
  if (($#)) && [[ ! " $* " == *" $name "* ]]; then continue; fi
  echo "==== $name"; "$b"
done
