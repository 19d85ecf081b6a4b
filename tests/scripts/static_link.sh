#!/usr/bin/env bash
# A C application linked statically with libvexar.a, the way the installed
# pkg-config file tells (`pkg-config --static`); Cyclone DDS stays shared, as
# Debian has no static one. Installs the build into a scratch prefix without
# the shared library, builds tests/static_link_program.c there, checks what
# it links and runs it: it logs one line on loopback and flushes it.
#   static_link.sh BUILD_DIR PROGRAM.c C_COMPILER [EXTRA_FLAGS]
# EXTRA_FLAGS are the build's sanitizer flags: a sanitized archive needs its
# runtime in the program.
set -euo pipefail

BUILD_DIR=${1:?usage: $0 BUILD_DIR PROGRAM.c C_COMPILER [EXTRA_FLAGS]}
PROGRAM=${2:?}
CC=${3:?}
read -r -a EXTRA_FLAGS <<<"${4:-}"
DOMAIN=113 # tests/support/domains.h: logger range, kLoggerBase + 63
: "${CYCLONEDDS_URI:?CYCLONEDDS_URI must point at the loopback configuration}"

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
fail() {
  echo "FAIL: $*" >&2
  exit 1
}

cmake --install "$BUILD_DIR" --prefix "$WORK/prefix" >/dev/null
pc_file=$(find "$WORK/prefix" -name vexar.pc)
[[ -n $pc_file ]] || fail "no vexar.pc installed"
export PKG_CONFIG_PATH=${pc_file%/*}
libdir=$(pkg-config --variable=libdir vexar)
[[ -f $libdir/libvexar.a ]] || fail "no libvexar.a in $libdir"
rm -f "$libdir"/libvexar.so* # so that -lvexar can only mean the archive

read -r -a flags <<<"$(pkg-config --static --cflags --libs vexar)"
"$CC" -std=c11 -Wall -Wextra -Werror "${EXTRA_FLAGS[@]}" "$PROGRAM" -o "$WORK/program" "${flags[@]}" ||
  fail "linking with: ${flags[*]}"

linked=$(ldd "$WORK/program")
grep -q libvexar <<<"$linked" && fail "the program loads a shared libvexar:"$'\n'"$linked"
grep -q libddsc <<<"$linked" || fail "the program does not load Cyclone's shared library:"$'\n'"$linked"

output=$("$WORK/program" "$DOMAIN") || fail "the program failed: $output"
[[ $output == "flush 0, published 1" ]] || fail "unexpected output: $output"
echo "linked with: ${flags[*]}; $output"
