# vexar tail on a terminal: under tmux, with TERM=xterm-256color, the levels
# are coloured and the columns line up (checked on tmux's own rendering of
# the pane, captured with its escape sequences).
DOMAIN=140
source "$(dirname "$0")/cli_support.sh"
command -v tmux >/dev/null || fail "tmux is not installed (scripts/install-deps.sh installs it)"
SOCKET="vexar-cli-test-$$"
trap 'tmux -L "$SOCKET" kill-server 2>/dev/null || true; stop_demos; rm -rf "$WORK"' EXIT

start_demo colours --kind colours --rate 40 --level TRACE --duration 120
LINES_WANTED=24
export TERM=xterm-256color
tmux -L "$SOCKET" -f /dev/null new-session -d -x 200 -y 40 -s tail \
  "CYCLONEDDS_URI='$CYCLONEDDS_URI' '$VEXAR' tail --domain $DOMAIN --count $LINES_WANTED --timeout 60; echo tail-finished; sleep 60"
for tries in $(seq 300); do
  tmux -L "$SOCKET" capture-pane -p -t tail >"$WORK/plain"
  grep -q tail-finished "$WORK/plain" && break
  sleep 0.2
done
grep -q tail-finished "$WORK/plain" || { cat "$WORK/plain"; fail "tail did not finish in the pane"; }
tmux -L "$SOCKET" capture-pane -p -e -t tail >"$WORK/escaped"
grep -E 'message [0-9]+:' "$WORK/escaped" >"$WORK/lines"
[[ $(wc -l <"$WORK/lines") -eq $LINES_WANTED ]] || { cat "$WORK/escaped"; fail "expected $LINES_WANTED lines in the pane"; }

# Each level in its colour (tmux writes attributes as separate sequences).
esc=$'\e'
while read -r level sgr; do
  grep -qF "$sgr$level" "$WORK/lines" || { cat -v "$WORK/lines" >&2; fail "$level is not coloured as ${sgr//$esc/ESC}"; }
done <<CASES
FATAL ${esc}[1m${esc}[31m
SEVERE ${esc}[1m${esc}[31m
ERROR ${esc}[31m
WARNING ${esc}[33m
NOTICE ${esc}[36m
INFO ${esc}[32m
DEBUG ${esc}[2m
TRACE ${esc}[2m
CASES

# Without the escapes, every line has its level and its text at the same columns.
sed "s/$esc\[[0-9;]*m//g" "$WORK/lines" >"$WORK/stripped"
awk '{ text = index($0, "message "); match($0, /\[[0-9]+\] +/); level = RSTART + RLENGTH
       if (!seen++) { first_text = text; first_level = level }
       if (substr($0, 57, 1) != " " || substr($0, 58, 1) == " " || level != first_level || text != first_text) {
         print "misaligned: " $0; bad = 1 } }
     END { exit bad }' "$WORK/stripped" || fail "columns are not aligned"
echo "cli terminal: ok"
