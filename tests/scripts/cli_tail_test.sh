# vexar tail against two demo applications in other processes: the plain
# and JSON lines of known messages, and every filter option.
DOMAIN=121
source "$(dirname "$0")/cli_support.sh"
OUT=$WORK/tail

start_demo alpha --kind alpha --rate 40 --level TRACE --duration 120
ALPHA=$DEMO_ID
start_demo beta --kind beta --rate 40 --level TRACE --duration 120
BETA=$DEMO_ID
tail() { run_vexar "$OUT" tail --domain "$DOMAIN" --no-color --timeout 30 "$@"; }

# Plain lines: time, HOST:APP, kind once the State is seen, level, category, text.
tail --count 60
expect_rc 0 "tail --count 60"
[[ $(wc -l <"$OUT") -eq 60 ]] || fail "tail --count 60 printed $(wc -l <"$OUT") lines"
line='^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}  [0-9a-f]{8}:[0-9a-f]{8} (alpha|beta)? +'"$IDENTITY"' +'
line+='(FATAL  |SEVERE |ERROR  |WARNING|NOTICE |INFO   |DEBUG  |TRACE  )  (          |net       |db        |ui        |sched     )  message [0-9]+: '
expect_every_line "$line" "$OUT" "plain tail lines"
for id in "$ALPHA alpha" "$BETA beta"; do
  expect_grep "  $id  " "$OUT" "messages of $id"
done
for level in FATAL SEVERE ERROR WARNING NOTICE INFO DEBUG TRACE; do
  expect_grep " $level +" "$OUT" "level $level"
done
# The demo logs message i at level 100 * (1 + i % 8) in category i % 5:
# each line's columns must hold what its text says.
awk -v levels="FATAL SEVERE ERROR WARNING NOTICE INFO DEBUG TRACE" -v categories=",net,db,ui,sched" '
  BEGIN { split(levels, level, " "); split(categories, category, ",") }
  {
    match($0, /message [0-9]+:/); i = substr($0, RSTART + 8, RLENGTH - 9) + 0
    match($0, /\[[0-9]+\] +/); at = RSTART + RLENGTH  # the level follows the identity
    got_level = substr($0, at, 7); sub(/ +$/, "", got_level)
    got_category = substr($0, at + 9, 10); sub(/ +$/, "", got_category)
    if (got_level != level[i % 8 + 1] || got_category != category[i % 5 + 1]) { print "wrong columns: " $0; bad = 1 }
  }
  END { exit bad }' "$OUT" || fail "columns do not match the messages"

# JSON: one object per line with every field.
tail --json --count 20 --app "$ALPHA"
expect_rc 0 "tail --json"
json='^\{"time":"[0-9-]{10}T[0-9:]{8}\.[0-9]{9}Z","host":-?[0-9]+,"app":-?[0-9]+,"id":"'"$ALPHA"'","kind":("alpha"|null),"identity":"'"$IDENTITY"'",'
json+='"level":[1-8]00,"levelName":"[A-Z]+","category":"(|net|db|ui|sched)","message":"message [0-9]+: [^"]+"\}$'
expect_every_line "$json" "$OUT" "JSON lines"
expect_grep '"kind":"alpha"' "$OUT" "kind in JSON"

# Filters, each alone and together.
tail --level warning --count 20
expect_every_line ' (FATAL|SEVERE|ERROR|WARNING) ' "$OUT" "--level warning"
tail --level 200 --count 10
expect_every_line ' (FATAL|SEVERE) ' "$OUT" "--level 200"
tail --app "$BETA" --count 20
expect_every_line "  $BETA beta " "$OUT" "--app HOST:APP"
tail --app alpha --count 20
expect_every_line "  $ALPHA alpha " "$OUT" "--app KIND"
tail --category net --count 20
expect_every_line '  net {9}message' "$OUT" "--category net"
tail --category '[du]*' --count 20
expect_every_line '  (db|ui) +message' "$OUT" "--category glob"
tail --grep 'message [0-9]*7: ' --count 10
expect_every_line 'message [0-9]*7: ' "$OUT" "--grep"
tail --category net --category ui --count 20
expect_every_line '  (net|ui) +message' "$OUT" "--category twice: either"
grep -q '  net ' "$OUT" && grep -q '  ui ' "$OUT" || fail "--category twice: not both categories"
tail --app beta --level ERROR --category 'sched' --count 3
expect_every_line "  $BETA beta +$IDENTITY +(FATAL|SEVERE|ERROR) +sched " "$OUT" "combined filters"

# Every 50th message is long and arrives whole.
tail --grep 'a long one' --count 1
expect_rc 0 "long message"
(($(wc -c <"$OUT") > 1500)) || fail "the long message was cut: $(wc -c <"$OUT") bytes"
expect_grep 'lazy dog\)$' "$OUT" "end of the long message"

# --count that cannot be reached before --timeout exits 3.
run_vexar "$OUT" tail --domain "$DOMAIN" --grep 'no such message' --count 1 --timeout 2
expect_rc 3 "--count not reached"
[[ ! -s $OUT ]] || fail "nothing should match"
echo "cli tail: ok"
