# vexar record with two demo applications in other processes, then vexar
# query by every filter and time form against what the demos logged.
DOMAIN=170
source "$(dirname "$0")/record_support.sh"
OUT=$WORK/query

start_recorder
start_demo alpha --kind alpha --rate 200 --level TRACE --duration 2
ALPHA=$DEMO_ID
start_demo beta --kind beta --rate 100 --level TRACE --duration 2
BETA=$DEMO_ID
wait_demo alpha; NA=$LOGGED
wait_demo beta; NB=$LOGGED
sleep 1.5 # the last batch is committed within a second
stop_recorder

recorded_numbers alpha >"$WORK/alpha.numbers"
expect_all_numbers "$WORK/alpha.numbers" "$NA" "every message of alpha recorded once"
[[ $(sql "SELECT count(*) FROM states") -ge 2 ]] || fail "States not recorded"

# How many of message numbers 0 .. n-1 (demo message i: level 100 * (1 + i % 8),
# category i % 5, event i % 7) pass an awk condition on i.
numbers() { # n condition
  seq 0 $(($1 - 1)) | awk "{ i = \$1 } $2 { n++ } END { print n + 0 }"
}
# The time of the k-th line (from 1) of the whole record, in JSON's form.
run_vexar "$WORK/all.json" query --db "$DB" --json
MIDDLE=$(sed -n "$(((NA + NB) / 2))p" "$WORK/all.json" | sed 's/.*"time":"\([^"]*\)".*/\1/')
BEFORE_MIDDLE=$(((NA + NB) / 2 - 1))

# name | options | every line matches | expected count
cases=(
  "all||message [0-9]+: |$((NA + NB))"
  "level|--level error| (FATAL|SEVERE|ERROR) |$(($(numbers "$NA" 'i % 8 < 3') + $(numbers "$NB" 'i % 8 < 3')))"
  "level number|--level 100| FATAL |$(($(numbers "$NA" 'i % 8 == 0') + $(numbers "$NB" 'i % 8 == 0')))"
  "app kind|--app beta|  $BETA beta |$NB"
  "app id|--app $ALPHA|  $ALPHA alpha |$NA"
  "category|--category net|  net {9}message|$(($(numbers "$NA" 'i % 5 == 1') + $(numbers "$NB" 'i % 5 == 1')))"
  "category glob|--category s*|  sched  |$(($(numbers "$NA" 'i % 5 == 4') + $(numbers "$NB" 'i % 5 == 4')))"
  "grep|--grep message [0-9]*7: |message [0-9]*7: |$(($(numbers "$NA" 'i % 10 == 7') + $(numbers "$NB" 'i % 10 == 7')))"
  "text|--text retrying timeout|: retrying after timeout|$(($(numbers "$NA" 'i % 7 == 3') + $(numbers "$NB" 'i % 7 == 3')))"
  "text prefix|--text checkp*|: checkpoint written|$(($(numbers "$NA" 'i % 7 == 6') + $(numbers "$NB" 'i % 7 == 6')))"
  "text punctuation|--text brown-fox \"quick|the quick brown fox|$(($(numbers "$NA" 'i % 50 == 0') + $(numbers "$NB" 'i % 50 == 0')))"
  "together|--level warning --app alpha --text request --since 1h| alpha +$IDENTITY +(FATAL|SEVERE|ERROR|WARNING) .*request served|$(numbers "$NA" 'i % 8 < 4 && i % 7 == 2')"
  "last|-n 7 --app alpha|  $ALPHA alpha |7"
  "last filtered after|-n 3 --grep 9: |9: |3"
  "since relative|--since 10m|message|$((NA + NB))"
  "since future|--since 2099-01-01|message|0"
  "since yesterday|--since yesterday|message|$((NA + NB))"
  "until yesterday|--until yesterday|message|0"
  "until zone|--until 2099-01-01T00:00:00+02:00|message|$((NA + NB))"
  "since absolute|--since $MIDDLE|message|$((NA + NB - BEFORE_MIDDLE))"
  "until absolute|--until $MIDDLE|message|$BEFORE_MIDDLE"
  "since local minute|--since $(date '+%Y-%m-%d %H:%M' -d '-10 minutes')|message|$((NA + NB))"
)
for case in "${cases[@]}"; do
  # The pattern may hold '|': it is what lies between the second and the last.
  name=${case%%|*} rest=${case#*|}
  options=${rest%%|*} rest=${rest#*|}
  count=${rest##*|} pattern=${rest%|*}
  read -ra words <<<"$options"
  # Options whose value holds spaces keep them: the text after the option name.
  case $name in
    grep) words=(--grep "message [0-9]*7: ") ;;
    "text") words=(--text "retrying timeout") ;;
    "text punctuation") words=(--text 'brown-fox "quick') ;;
    "last filtered after") words=(-n 3 --grep "9: ") ;;
    "since local minute") words=(--since "${options#--since }") ;;
  esac
  run_vexar "$OUT" query --db "$DB" --no-color "${words[@]}"
  expect_rc 0 "query $name"
  got=$(wc -l <"$OUT")
  [[ $got -eq $count ]] || { head -3 "$OUT" >&2; fail "query $name ($options): $got lines, expected $count"; }
  [[ $count -eq 0 ]] || expect_every_line "$pattern" "$OUT" "query $name"
  # Source-time order, whatever the filter.
  cut -c1-23 "$OUT" | sort -c || fail "query $name: lines out of time order"
done

# -n gives the last ones: the tail of the whole output.
run_vexar "$OUT" query --db "$DB" --no-color -n 5
run_vexar "$WORK/all" query --db "$DB" --no-color
diff <(tail -n 5 "$WORK/all") "$OUT" || fail "-n 5 is not the last five"
# The lines are tail's: JSON has every field, and no history mark.
json='^\{"time":"[0-9-]{10}T[0-9:]{8}\.[0-9]{9}Z","host":-?[0-9]+,"app":-?[0-9]+,"id":"[0-9a-f:]{17}","kind":"(alpha|beta)","identity":"'"$IDENTITY"'",'
json+='"level":[1-8]00,"levelName":"[A-Z]+","category":"(|net|db|ui|sched)","message":"message [0-9]+: [^"]+"\}$'
expect_every_line "$json" "$WORK/all.json" "query --json"

# Wrong options: one line, status 64.
for options in "--since soon" "--until 2026-13-01" "--text  " "-n 0" "--level loud"; do
  read -ra words <<<"$options"
  [[ $options == "--text  " ]] && words=(--text " ")
  run_vexar "$OUT" query --db "$DB" "${words[@]}"
  expect_rc 64 "query $options"
  [[ $(wc -l <"$OUT.err") -eq 1 ]] || fail "query $options: not one line"
done
run_vexar "$OUT" query
expect_rc 64 "query without --db"
echo "record and query: all cases passed"
