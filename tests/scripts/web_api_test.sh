# vexar web's JSON API against demo applications and a recorder in other
# processes: the loggers listed, the live stream filtered by the server,
# the recorded history and its seam with live, and the controls with their
# token, their answers and their refusals.
DOMAIN=190
source "$(dirname "$0")/cli_support.sh"
source "$(dirname "$0")/web_support.sh"
OUT=$WORK/api
DB=$WORK/logs.db

start_demo alpha --kind alpha --rate 50 --duration 120
ALPHA=$DEMO_ID
start_demo beta --kind beta --rate 50 --duration 120
"$VEXAR" record --domain "$DOMAIN" --db "$DB" >"$WORK/record.out" 2>&1 &
DEMO_PIDS+=($!)
start_web --db "$DB"
wait_for_app alpha >/dev/null
BETA=$(wait_for_app beta)

api GET /api/apps
expect_status 200 "apps"
expect_jq "any(.[]; .id == \"$ALPHA\" and (.label | startswith(\"$ALPHA alpha \")) and (.label | endswith(\"]\")) and .state == \"OPERATIONAL\"
  and .filterLevel == 600 and (.counts | type) == \"object\")" "alpha listed with its label and State"

# stream QUERY FILE: what the live stream sends in 3 s, as one array of messages.
stream() {
  curl -s -N --max-time 3 "$URL/api/stream?$1" >"$2.events" || true
  { grep -A1 '^event: logs$' "$2.events" || true; } | sed -n 's/^data: //p' | jq -s 'add // []' >"$2"
}
# Each filter, and what every message it lets through must satisfy.
filters=(
  "level=WARNING|.level <= 400"
  "app=beta|.kind == \"beta\" and (.label | startswith(\"$BETA beta\"))"
  "app=$ALPHA&level=ERROR|.id == \"$ALPHA\" and .level <= 300"
  "category=net|.category == \"net\""
  "category=d*|.category == \"db\""
  "grep=cache|(.message | test(\"cache\"))"
  "exclude-category=net&exclude-grep=cache&exclude-grep=queue|.category != \"net\" and (.message | test(\"cache|queue\") | not)"
)
for i in "${!filters[@]}"; do stream "${filters[$i]%%|*}" "$WORK/stream$i" & done
wait_streams() { local job; for job in $(jobs -p); do [[ " ${DEMO_PIDS[*]} " == *" $job "* ]] || wait "$job"; done; }
wait_streams
for i in "${!filters[@]}"; do
  OUT=$WORK/stream$i
  expect_jq "length > 0" "stream ${filters[$i]%%|*}: messages"
  expect_jq "all(.[]; ${filters[$i]#*|})" "stream ${filters[$i]%%|*}"
done
OUT=$WORK/api

# Bad filters are refused before any stream starts.
for query in "level=LOUD" "grep=(" "colour=red" "app=1:2:3" "until=1m"; do
  api GET "/api/stream?$query"
  expect_status 400 "stream ?$query"
  expect_jq '.error | length > 0' "stream ?$query explained"
done

# History: the newest N that match, oldest first; then history and live
# through one stream, without a repeat at the seam.
sleep 2
api GET "/api/logs?level=ERROR&app=alpha&limit=5"
expect_status 200 "logs"
expect_jq '.messages | length == 5 and all(.[]; .level <= 300 and .kind == "alpha" and .history)' "logs filtered"
expect_jq '.messages | . == sort_by(.time)' "logs oldest first"
api GET "/api/logs?since=tomorrow-ish"
expect_status 400 "logs with a bad time"
curl -s -N --max-time 5 "$URL/api/stream?since=1m&app=beta" >"$OUT.events" || true
grep -q '^event: historyEnd$' "$OUT.events" || fail "no end of history in the stream"
sed -n 's/^data: //p' "$OUT.events" | jq -s '[.[] | arrays | .[]]' >"$OUT"
expect_jq 'any(.[]; .history) and any(.[]; .history | not)' "history then live"
expect_jq 'all(.[]; .kind == "beta")' "history filtered"
expect_jq 'map([.id, .time, .message]) | length == (unique | length)' "no message twice at the seam"
expect_jq '(map(select(.history)) | last | .time) <= (map(select(.history | not)) | first | .time)' "live after history"

# Controls: POST only, with the token; each answer as the logger gave it.
control() { # id, kind, body, curl options...
  local id=$1 kind=$2 body=$3; shift 3
  api POST "/api/apps/$id/$kind" -H 'Content-Type: application/json' -d "$body" "$@"
}
with_token=(-H "X-Vexar-Token: $TOKEN")
control "$ALPHA" level '{"level":"DEBUG"}'
expect_status 401 "a control without the token"
control "$ALPHA" level '{"level":"DEBUG"}' -H "X-Vexar-Token: x$TOKEN"
expect_status 403 "a control with a wrong token"
api GET "/api/apps/$ALPHA/level"
expect_status 405 "a control by GET"
api POST "/api/apps/$ALPHA/level" -H "X-Vexar-Token: $TOKEN" -H 'Host: attacker.example:80'
expect_status 403 "another site's Host"
while IFS='|' read -r kind body expected; do
  control "$ALPHA" "$kind" "$body" "${with_token[@]}"
  expect_status "$expected" "$kind $body"
done <<'TABLE'
level|{"level":"loud"}|400
level|not json|400
verbosity|{"category":"ALL"}|400
format|{"format":"SHINY"}|400
TABLE
control 01020304:05060708 level '{"level":"INFO"}' "${with_token[@]}"
expect_status 404 "a control for a logger nobody saw"

control "$ALPHA" level '{"level":"debug"}' "${with_token[@]}"
expect_status 200 "set level"
expect_jq ".result == \"OK\" and .id == \"$ALPHA\" and (.label | startswith(\"$ALPHA alpha\"))" "set level answered"
control "$BETA" level '{"level":"-5"}' "${with_token[@]}"
expect_jq '.result == "ERROR" and (.message | test("Filter Level"))' "a level the logger refuses"
control "$BETA" verbosity '{"category":"communication","verbosity":"status_local"}' "${with_token[@]}"
expect_jq '.result == "OK"' "set verbosity"
control "$BETA" format '{"format":"Maximal"}' "${with_token[@]}"
expect_jq '.result == "OK"' "set format"
for tries in $(seq 30); do
  api GET /api/apps
  jq -e "any(.[]; .id == \"$ALPHA\" and .filterLevel == 700) and any(.[]; .id == \"$BETA\"
    and .verbosities.COMMUNICATION == \"STATUS_LOCAL\" and .printFormat == \"MAXIMAL\")" "$OUT" >/dev/null && break
  sleep 0.2
done
expect_jq "any(.[]; .id == \"$ALPHA\" and .filterLevel == 700)" "alpha's State after set level"
expect_jq "any(.[]; .id == \"$BETA\" and .verbosities.COMMUNICATION == \"STATUS_LOCAL\" and .printFormat == \"MAXIMAL\")" \
  "beta's State after set verbosity and format"

# A logger that does not answer (stopped): 504 and NO_ANSWER, in time.
kill -STOP "${DEMO_PIDS[1]}"
control "$BETA" level '{"level":"INFO"}' "${with_token[@]}" --max-time 15
kill -CONT "${DEMO_PIDS[1]}"
expect_status 504 "a stopped logger"
expect_jq '.result == "NO_ANSWER"' "no answer said"
echo "web API: all checks passed"
