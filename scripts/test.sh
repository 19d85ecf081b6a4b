#!/usr/bin/env bash
# Installs what is missing, checks the layering of the includes and the format,
# builds and runs every test: once normally, once
# under AddressSanitizer + UndefinedBehaviorSanitizer, the concurrency tests
# under ThreadSanitizer, and the decoders under libFuzzer for a bounded time.
set -euo pipefail
source "$(dirname "$0")/env.sh"
bash "$VEXAR_ROOT/scripts/install-deps.sh"
cd "$VEXAR_ROOT"

phase() { echo; echo "==== $* ===="; }
ctest_run() { ctest --test-dir "$1" -j"$VEXAR_JOBS" --output-on-failure --no-tests=error "${@:2}"; }

phase "source checks: layering and format"
bash "$VEXAR_ROOT/scripts/check-layers.sh"
bash "$VEXAR_ROOT/scripts/check-format.sh"

phase "normal build"
vexar_configure build/test -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXAR_WERROR=ON
vexar_build build/test
ctest_run build/test

phase "AddressSanitizer + UndefinedBehaviorSanitizer"
vexar_configure build/asan -DCMAKE_BUILD_TYPE=Debug -DVEXAR_WERROR=ON -DVEXAR_SANITIZE=ON -DVEXAR_BUILD_BENCH=OFF
vexar_build build/asan
ctest_run build/asan

phase "ThreadSanitizer (concurrency tests)"
vexar_configure build/tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXAR_WERROR=ON -DVEXAR_TSAN=ON -DVEXAR_BUILD_BENCH=OFF -DVEXAR_BUILD_TOOLS=OFF
vexar_build build/tsan
ctest_run build/tsan -R 'Concurrency'

phase "libFuzzer (bounded runs over the decoders, the XML loader and the tool's parsers)"
CC=clang CXX=clang++ vexar_configure build/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXAR_FUZZ=ON -DVEXAR_BUILD_TESTS=OFF -DVEXAR_BUILD_BENCH=OFF -DVEXAR_BUILD_TOOLS=OFF
vexar_build build/fuzz
bash "$VEXAR_ROOT/tests/fuzz/run.sh" build/fuzz

echo
echo "all test phases passed"
