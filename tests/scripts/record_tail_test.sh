# vexar tail --db: the recorded history first, then the live messages, with
# no gap and no duplicate at the seam, for -n and --since, history marked
# in JSON.
DOMAIN=171
source "$(dirname "$0")/record_support.sh"
OUT=$WORK/tail

start_recorder
start_demo alpha --kind alpha --rate 100 --level TRACE --duration 12
sleep 4 # a few hundred messages recorded, and recorded before tail starts

# The message numbers of a tail output, in the order printed.
numbers_of() { grep -o '"message":"message [0-9]*' "$1" | grep -o '[0-9]*$'; }
# Fails unless the numbers run on from the first without a gap or a repeat.
expect_consecutive() { # file what
  numbers_of "$1" >"$1.numbers"
  local first
  first=$(head -1 "$1.numbers")
  diff <(seq "$first" $((first + $(wc -l <"$1.numbers") - 1))) "$1.numbers" >/dev/null ||
    { awk 'NR > 1 && $1 != p + 1 { print "after " p ": " $1 } { p = $1 }' "$1.numbers" | head -5 >&2; fail "$2"; }
}

# -n 30: thirty recorded (marked), then live ones that go straight on.
run_vexar "$OUT" tail --domain "$DOMAIN" --db "$DB" -n 30 --count 250 --json --timeout 20
expect_rc 0 "tail --db -n 30"
[[ $(grep -c '"history":true}$' "$OUT") -eq 30 ]] || fail "-n 30: $(grep -c '"history":true' "$OUT") history lines"
head -30 "$OUT" >"$OUT.first"
expect_every_line '"history":true\}$' "$OUT.first" "the history comes first"
expect_consecutive "$OUT" "-n 30: history then live"

# --since: everything of the last 3 seconds from the database, then live.
run_vexar "$OUT" tail --domain "$DOMAIN" --db "$DB" --since 3s --count 400 --json --timeout 20
expect_rc 0 "tail --db --since 3s"
history=$(grep -c '"history":true' "$OUT")
[[ $history -ge 150 ]] || fail "--since 3s: only $history history lines"
expect_consecutive "$OUT" "--since: history then live"

# Filters apply to both parts; plain lines carry no mark.
run_vexar "$OUT" tail --domain "$DOMAIN" --db "$DB" -n 5 --level error --count 20 --no-color --timeout 20
expect_rc 0 "tail --db --level error"
expect_every_line " alpha +$IDENTITY +(FATAL|SEVERE|ERROR) " "$OUT" "tail --db --level error"
[[ $(numbers_of <(sed 's/.*\(message [0-9]*\).*/"message":"\1/' "$OUT") | sort -n | uniq -d | wc -l) -eq 0 ]] ||
  fail "tail --db --level error repeats a message"

run_vexar "$OUT" tail --domain "$DOMAIN" -n 5
expect_rc 64 "-n without --db"
echo "tail --db: all cases passed"
