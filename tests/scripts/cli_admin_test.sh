# vexar apps and set-level / set-verbosity / set-format against demo
# applications in other processes: the States and message counts listed,
# each command's exit status and the State changing accordingly.
DOMAIN=130
source "$(dirname "$0")/cli_support.sh"
OUT=$WORK/admin

start_demo alpha --kind alpha --rate 5 --duration 120
ALPHA=$DEMO_ID
start_demo beta --kind beta --rate 5 --duration 120
BETA=$DEMO_ID
apps() { run_vexar "$OUT" apps --domain "$DOMAIN" --timeout 20 "$@"; }
# state_of ID: the --json line of that logger.
state_of() { apps --json; grep -F "\"id\":\"$1\"" "$OUT" >"$OUT.one" || true; }
command() { run_vexar "$OUT" "$@" --domain "$DOMAIN" --timeout 20; }

apps
expect_rc 0 "apps"
expect_grep '^HOST:APP +KIND +IDENTITY +STATE +LEVEL +DROPPED$' "$OUT" "apps header"
expect_grep "^$ALPHA +alpha +$IDENTITY +OPERATIONAL +INFO +0$" "$OUT" "alpha's State"
apps --middleware
expect_grep '^ +MIDDLEWARE LOGGER: VERBOSITY PER CATEGORY, PRINT FORMAT$' "$OUT" "the middleware columns' group"
expect_grep '^HOST:APP +KIND +IDENTITY +STATE +LEVEL +DROPPED +PLATFORM +COMMUNICATION +DATABASE +ENTITIES +API +FORMAT$' \
  "$OUT" "apps --middleware header"
expect_grep "^$ALPHA +alpha +$IDENTITY +OPERATIONAL +INFO +0 +ERROR +ERROR +ERROR +ERROR +ERROR +DEFAULT$" "$OUT" \
  "alpha's State"
expect_grep "^$BETA +beta +$IDENTITY +OPERATIONAL +INFO +0 +ERROR +ERROR +ERROR +ERROR +ERROR +DEFAULT$" "$OUT" \
  "beta's State"

# A burst into a queue of one: apps shows what the demo's own statistics
# counted dropped, once its logger has published them (within a second).
start_demo delta --kind delta --rate 5 --queue 1 --burst 2000 --duration 120
DELTA=$DEMO_ID
for tries in $(seq 100); do
  DROPPED=$(sed -nE "s/^demo $DELTA: burst of 2000 messages, ([0-9]+) dropped by the full queue$/\1/p" \
    "$WORK/delta.out")
  [[ -n $DROPPED ]] && break
  sleep 0.1
done
[[ ${DROPPED:-0} -gt 0 ]] || { cat "$WORK/delta.out" >&2; fail "the burst was not dropped in part"; }
for tries in $(seq 5); do
  state_of "$DELTA"
  grep -Eq "\"counts\":\{\"accepted\":[0-9]+,\"refused\":[0-9]+,\"dropped\":$DROPPED," "$OUT.one" && break
done
expect_grep "\"counts\":\{\"accepted\":[0-9]+,\"refused\":[0-9]+,\"dropped\":$DROPPED,\"published\":[0-9]+,\"failed\":0,\"discarded\":0\}\}$" \
  "$OUT.one" "delta's counts"
apps
expect_grep "^$DELTA +delta +$IDENTITY +OPERATIONAL +INFO +$DROPPED$" "$OUT" "delta's DROPPED"

# set-level by kind and by HOST:APP, names in any case or as numbers.
command set-level alpha debug
expect_rc 0 "set-level alpha debug"
expect_grep "^$ALPHA alpha $IDENTITY: OK$" "$OUT" "set-level answer"
state_of "$ALPHA"
expect_grep '"filterLevel":700,' "$OUT.one" "alpha's level after set-level"
command set-level "$BETA" 500
expect_rc 0 "set-level by HOST:APP"
state_of "$BETA"
expect_grep '"filterLevel":500,' "$OUT.one" "beta's level after set-level"

# A level the logger refuses: exit 2 with its message.
command set-level beta -5
expect_rc 2 "set-level beta -5"
expect_grep "^$BETA beta $IDENTITY: ERROR: .*Filter Level" "$OUT" "refused level"

command set-verbosity beta communication=status_local API=4 database=silent
expect_rc 0 "set-verbosity"
state_of "$BETA"
expect_grep '"verbosities":\{"PLATFORM":"ERROR","COMMUNICATION":"STATUS_LOCAL","DATABASE":"SILENT","ENTITIES":"ERROR","API":"STATUS_REMOTE"\}' \
  "$OUT.one" "beta's verbosities"
command set-verbosity alpha ALL=warning
expect_rc 0 "set-verbosity ALL"
state_of "$ALPHA"
expect_grep '"verbosities":\{("[A-Z]+":"WARNING",?){5}\}' "$OUT.one" "alpha's verbosities"

command set-format alpha Maximal
expect_rc 0 "set-format"
state_of "$ALPHA"
expect_grep '"printFormat":"MAXIMAL"' "$OUT.one" "alpha's print format"
apps --middleware
expect_grep "^$ALPHA +alpha +$IDENTITY +OPERATIONAL +DEBUG +0 +WARNING +WARNING +WARNING +WARNING +WARNING +MAXIMAL$" "$OUT" \
  "alpha's row after the commands"

# Nobody answers: exit 3.
run_vexar "$OUT" set-level 0x1:0x2 INFO --domain "$DOMAIN" --timeout 2
expect_rc 3 "set-level to a logger that does not exist"
expect_grep "no answer from 00000001:00000002" "$OUT.err" "no answer"
run_vexar "$OUT" set-format nobody DEFAULT --domain "$DOMAIN" --timeout 2
expect_rc 3 "set-format to a kind that does not exist"

# A kind that names two loggers is not a target.
start_demo twin1 --kind twin --rate 1 --duration 120
start_demo twin2 --kind twin --rate 1 --duration 120
command set-level twin INFO
expect_rc 64 "set-level to an ambiguous kind"
expect_grep "kind 'twin' names 2 loggers" "$OUT.err" "ambiguous kind"

# apps --watch marks a logger that goes away.
"$VEXAR" apps --watch --json --domain "$DOMAIN" --timeout 12 >"$WORK/watch" 2>&1 &
watcher=$!
start_demo gamma --kind gamma --rate 5 --duration 3
GAMMA=$DEMO_ID
wait "$watcher" || fail "apps --watch failed"
expect_grep "\"id\":\"$GAMMA\",.*\"state\":\"OPERATIONAL\",\"gone\":false" "$WORK/watch" "gamma seen alive"
expect_grep "\"id\":\"$GAMMA\",.*\"gone\":true" "$WORK/watch" "gamma marked gone"
echo "cli admin: ok"
