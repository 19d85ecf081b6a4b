#!/usr/bin/env bash
# Checks that every #include of the library and the tools goes down the
# layers, never up or sideways, and that Cyclone's headers are reached only
# from the places that bridge to it. Prints each offending line; exit 1 if any.
#   scripts/check-layers.sh
set -euo pipefail
cd "$(dirname "$0")/.."

# The layers, lowest first: a folder may include its own headers and those of
# the folders above it in this list, nothing below it.
layers=(
  platform
  platform/log
  platform/runtime
  platform/types
  platform/cdr
  platform/plugin
  platform/filter
  platform/xml
  platform/dds
  type
  vexar
  config
  tools
)

# Where Cyclone's own headers may be included: the entity layer, the sink
# that captures Cyclone's log lines, and the key hash's MD5.
cyclone_allowed='^(platform/dds/|platform/log/cyclone_log_sink\.cpp$|platform/cdr/keys\.cpp$)'

rank_of() { # folder -> its position in the list, or nothing
  local i
  for i in "${!layers[@]}"; do
    [ "${layers[$i]}" = "$1" ] && { echo "$i"; return; }
  done
}

folder_of() { # path of a source file or of an included header -> its layer folder
  case $1 in
    platform/*/*) echo "${1%/*}" ;;
    platform/*) echo platform ;;
    tools/*) echo tools ;;
    */*) echo "${1%%/*}" ;;
  esac
}

failures=0
offend() { echo "$1: $2"; failures=$((failures + 1)); }

while IFS= read -r file; do
  own=$(folder_of "$file")
  own_rank=$(rank_of "$own")
  [ -n "$own_rank" ] || continue
  while IFS= read -r hit; do
    line=${hit%%:*}
    text=${hit#*:}
    if [[ $text =~ \#include\ *\<dds/ ]]; then
      [[ $file =~ $cyclone_allowed ]] || offend "$file:$line" "$text (Cyclone's headers belong to platform/dds/)"
      continue
    fi
    [[ $text =~ \#include\ *\"([^\"]+/[^\"]+)\" ]] || continue
    target=$(folder_of "${BASH_REMATCH[1]}")
    target_rank=$(rank_of "$target")
    [ -n "$target_rank" ] || continue
    if ((target_rank > own_rank)); then
      offend "$file:$line" "$text ($own may not include $target)"
    fi
  done < <(grep -n '^[[:space:]]*#[[:space:]]*include' "$file" || true)
done < <(git ls-files -- platform type vexar config tools | grep -E '\.(h|hpp|c|cpp)$')

if ((failures)); then
  echo "layering: $failures include(s) against the order of the layers"
  exit 1
fi
echo "layering: every include goes down the layers"
