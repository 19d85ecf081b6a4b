# Shared by the cli_*_test.sh scripts: the vexar program of the build under
# test, demo applications in the background, and checks that explain what
# went wrong. Source it after setting DOMAIN.
set -euo pipefail

BUILD_DIR=${1:?usage: $0 BUILD_DIR}
VEXAR="$BUILD_DIR/tools/vexar/vexar"
WORK=$(mktemp -d)
# The demos' exe@host[pid], as apps, tail and set-* show it.
IDENTITY='vexar@[^ ]+\[[0-9]+\]'
DEMO_PIDS=()

[[ -x $VEXAR ]] || { echo "no vexar program at $VEXAR"; exit 1; }
: "${CYCLONEDDS_URI:?CYCLONEDDS_URI must point at the loopback configuration}"

stop_demos() {
  local pid
  for pid in "${DEMO_PIDS[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${DEMO_PIDS[@]}"; do wait "$pid" 2>/dev/null || true; done
  DEMO_PIDS=()
}
trap 'stop_demos; rm -rf "$WORK"' EXIT

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

# start_demo NAME [demo options...]: runs `vexar demo --domain $DOMAIN
# --every-level` (each level and category in turn, for the filters) in
# the background and sets DEMO_ID to its HOST:APP once it has printed it.
start_demo() {
  local name=$1; shift
  "$VEXAR" demo --domain "$DOMAIN" --every-level "$@" >"$WORK/$name.out" 2>&1 &
  DEMO_PIDS+=($!)
  local tries
  for tries in $(seq 100); do
    DEMO_ID=$(grep -Eom1 '^demo [0-9a-f]{8}:[0-9a-f]{8} ' "$WORK/$name.out" | cut -d' ' -f2 || true)
    [[ -n $DEMO_ID ]] && return 0
    sleep 0.1
  done
  cat "$WORK/$name.out" >&2
  fail "demo $name did not start"
}

# run_vexar OUTFILE ARGS...: runs vexar, stdout to OUTFILE, stderr to
# OUTFILE.err; sets RC.
run_vexar() {
  local out=$1; shift
  set +e
  "$VEXAR" "$@" >"$out" 2>"$out.err"
  RC=$?
  set -e
}

expect_rc() { # expected, what
  [[ $RC -eq $1 ]] || { cat "$OUT" "$OUT.err" >&2; fail "$2: exit status $RC, expected $1"; }
}

expect_grep() { # pattern, file, what
  grep -Eq -- "$1" "$2" || { cat "$2" >&2; fail "$3: no line matches /$1/"; }
}

expect_no_grep() { # pattern, file, what
  if grep -Eq -- "$1" "$2"; then grep -E -- "$1" "$2" | head -5 >&2; fail "$3: lines match /$1/"; fi
}

# Every line of the file matches the pattern (and there is at least one).
expect_every_line() { # pattern, file, what
  [[ -s $2 ]] || fail "$3: no output"
  if grep -Evq -- "$1" "$2"; then grep -Ev -- "$1" "$2" | head -5 >&2; fail "$3: lines not matching /$1/"; fi
}
