#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main demo on loopback.
set -euo pipefail
source "$(dirname "$0")/env.sh"
bash "$VEXAR_ROOT/scripts/install-deps.sh"
vexar_configure build/release -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF
vexar_build build/release
"$VEXAR_ROOT/build/release/examples/foundation_tour"
