#!/usr/bin/env bash
# Checks that every C and C++ source is formatted as .clang-format says;
# names the files that are not. Fix them with: scripts/check-format.sh --fix
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t sources < <(git ls-files '*.c' '*.cpp' '*.h' '*.hpp')
if [ "${1:-}" = --fix ]; then
  clang-format -i "${sources[@]}"
  exit 0
fi
unformatted=()
for f in "${sources[@]}"; do
  clang-format --dry-run -Werror "$f" >/dev/null 2>&1 || unformatted+=("$f")
done
if ((${#unformatted[@]})); then
  printf 'not formatted: %s\n' "${unformatted[@]}"
  echo "format: ${#unformatted[@]} file(s) differ from .clang-format; run scripts/check-format.sh --fix"
  exit 1
fi
echo "format: all ${#sources[@]} sources as .clang-format says"
