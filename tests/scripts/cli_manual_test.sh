# What `cmake --install` puts beside the program: the man page and the bash
# completion. Both are written by hand, so they are checked against the
# program: every command it lists is in the page, and every option that a
# command's --help lists is completed.
set -euo pipefail
BUILD_DIR=${1:?usage: $0 BUILD_DIR}
PREFIX=$(mktemp -d)
trap 'rm -rf "$PREFIX"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cmake --install "$BUILD_DIR" --prefix "$PREFIX" >/dev/null
VEXAR=$PREFIX/bin/vexar
PAGE=$PREFIX/share/man/man1/vexar.1
COMPLETION=$PREFIX/share/bash-completion/completions/vexar
[[ -x $VEXAR && -f $PAGE && -f $COMPLETION ]] || fail "vexar, its man page or its completion not installed"

commands=$("$VEXAR" --help | sed -n '/^commands:/,/^$/p' | awk 'NF > 1 { print $1 }')
[[ -n $commands ]] || fail "no commands in vexar --help"
if command -v man >/dev/null; then
  rendered=$(MANWIDTH=100 man -l "$PAGE" 2>&1) || fail "man cannot render the page: $rendered"
else
  rendered=$(cat "$PAGE")
fi
for command in $commands; do
  grep -Fq -- "${command//-/\\-}" "$PAGE" || fail "the man page does not describe '$command'"
done
grep -q 'VEXAR_DOMAIN' <<<"$rendered" || fail "the man page does not name VEXAR_DOMAIN"

# Completion as bash asks for it: COMP_WORDS up to the cursor.
source "$COMPLETION"
complete_words() {
  COMP_WORDS=("$@")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  _vexar
  printf '%s\n' "${COMPREPLY[@]}"
}
for command in $commands; do
  complete_words vexar "${command:0:3}" | grep -qx -- "$command" || fail "'$command' is not completed"
  offered=$(complete_words vexar "$command" -)
  for option in $("$VEXAR" "$command" --help | sed -n '/^options:/,$p' | grep -oE '(^| )--?[a-z][a-z-]*' ); do
    grep -qx -- "$option" <<<"$offered" || fail "'vexar $command $option' is not completed"
  done
done
complete_words vexar tail --level war | grep -qx WARNING || fail "levels are not completed"
complete_words vexar tail -o j | grep -qx json || fail "-o values are not completed"
echo "cli manual: ok"
