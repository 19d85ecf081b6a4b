#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main demo on loopback.
set -euo pipefail
source "$(dirname "$0")/env.sh"
bash "$VEXAR_ROOT/scripts/install-deps.sh"
vexar_configure build/release -DCMAKE_BUILD_TYPE=Release -DVEXAR_BUILD_TESTS=OFF
vexar_build build/release

# A demo application logs through Vexar while `vexar tail` prints its
# messages, `vexar apps` shows its State and `vexar set-level` raises its
# filter level halfway, so that DEBUG and TRACE messages start to arrive.
vexar="$VEXAR_ROOT/build/release/tools/vexar/vexar"
domain=${VEXAR_DEMO_DOMAIN:-0}
step() { printf '\n== %s\n' "$*"; }

step "vexar demo --kind demo --rate 4: an application that logs like a healthy service, filter level INFO"
"$vexar" demo --domain "$domain" --kind demo --rate 4 &
demo=$!
trap 'kill "$demo" 2>/dev/null || true' EXIT
sleep 1

step "vexar apps: the loggers in the domain and their State"
"$vexar" apps --domain "$domain"

step "vexar tail for 8 s: INFO and more severe"
(
  sleep 4
  step "vexar set-level demo TRACE: from now on DEBUG and TRACE too"
  "$vexar" set-level --domain "$domain" demo TRACE
) &
setter=$!
"$vexar" tail --domain "$domain" --timeout 8
wait "$setter"

step "vexar apps: the State shows the new level"
"$vexar" apps --domain "$domain"

kill -TERM "$demo"
wait "$demo"
