# Two applications of one kind on a terminal: under tmux, `vexar apps` and
# `vexar tail` show each with its own exe@host[pid], read back from tmux's
# rendering of the panes (capture-pane). Skipped without tmux.
DOMAIN=181
source "$(dirname "$0")/cli_support.sh"
command -v tmux >/dev/null || { echo "SKIP: tmux is not installed"; exit 77; }
SOCKET="vexar-identity-test-$$"
trap 'tmux -L "$SOCKET" kill-server 2>/dev/null || true; stop_demos; rm -rf "$WORK"' EXIT
HOST=$(hostname)

start_demo first --kind twin --rate 20 --level TRACE --duration 120
FIRST=$DEMO_ID FIRST_NAME="vexar@$HOST[${DEMO_PIDS[-1]}]"
start_demo second --kind twin --rate 20 --level TRACE --duration 120
SECOND=$DEMO_ID SECOND_NAME="vexar@$HOST[${DEMO_PIDS[-1]}]"
sleep 1

export TERM=xterm-256color
# run_in_pane NAME COMMAND...: runs vexar in a pane of its own until it ends,
# then leaves the pane's text in $WORK/NAME.
run_in_pane() {
  local name=$1; shift
  tmux -L "$SOCKET" -f /dev/null new-session -d -x 220 -y 50 -s "$name" \
    "CYCLONEDDS_URI='$CYCLONEDDS_URI' '$VEXAR' $*; echo pane-finished; sleep 60"
  local tries
  for tries in $(seq 300); do
    tmux -L "$SOCKET" capture-pane -p -t "$name" >"$WORK/$name"
    grep -q pane-finished "$WORK/$name" && return 0
    sleep 0.2
  done
  cat "$WORK/$name" >&2
  fail "$name did not finish in its pane"
}
run_in_pane apps apps --domain "$DOMAIN"
run_in_pane tail tail --domain "$DOMAIN" -a twin --timeout 3

for pair in "$FIRST $FIRST_NAME" "$SECOND $SECOND_NAME"; do
  read -r id name <<<"$pair"
  grep -qF "$id  twin  $name  OPERATIONAL" "$WORK/apps" || { cat "$WORK/apps" >&2; fail "apps pane: no row '$id twin $name'"; }
  grep -qF "  $id twin          $name " "$WORK/tail" || { cat "$WORK/tail" >&2; fail "tail pane: no line of $name"; }
done
# Each tail line names the one process that logged it.
grep -E 'message [0-9]+:' "$WORK/tail" | awk -v a="$FIRST $FIRST_NAME" -v b="$SECOND $SECOND_NAME" '
  { if (index($0, substr(a, 1, 17)) && !index($0, substr(a, 19))) bad = 1
    if (index($0, substr(b, 1, 17)) && !index($0, substr(b, 19))) bad = 1 }
  END { exit bad }' || fail "a tail line carries the other process's identity"
echo "cli identity terminal: ok"
