# Remote administration under DDS Security, with credentials made by
# scripts/security/make-credentials.sh: applications log, an operator
# commands them, an observer only reads, a participant without credentials
# neither reads nor commands, the web console steers only as an operator,
# refusals say why, and with encryption no
# message text crosses lo in clear. Skipped without openssl or Cyclone's
# security plugins.
DOMAIN=220
source "$(dirname "$0")/cli_support.sh"
ROOT=$(cd "$(dirname "$0")/../.." && pwd)
source "$ROOT/scripts/security/plugins.sh"
skip() {
  echo "SKIPPED: $*"
  exit 77
}
command -v openssl >/dev/null || skip "openssl is missing"
security_plugin_dir >/dev/null || skip "Cyclone's DDS Security plugins are missing (Debian: libddsc0debian)"

PLAIN=$CYCLONEDDS_URI
OUT=$WORK/out
credentials() { # dir, protection, domains
  bash "$ROOT/scripts/security/make-credentials.sh" --protection "$2" --domains "$3" "$1" >/dev/null ||
    fail "make-credentials.sh failed"
}
credentials "$WORK/encrypt" encrypt 220-229
# as IDENTITY COMMAND...: the command with that identity of the encrypting deployment.
as() {
  local who=$1
  shift
  CYCLONEDDS_URI="$PLAIN,file://$WORK/encrypt/$who/cyclonedds.xml" "$@"
}
apps() { as operator run_vexar "$OUT" apps --json --domain "$DOMAIN" --timeout 20; }
level_of() { # ID: its filter level as the operator's apps sees it
  apps
  sed -n "s/.*\"id\":\"$1\".*\"filterLevel\":\([0-9]*\),.*/\1/p" "$OUT"
}

# A logger on its own participant and one on the participant of its
# application (started from an XML configuration).
as application start_demo alpha --kind alpha --rate 20 --duration 120
ALPHA=$DEMO_ID
as application start_demo beta --kind beta --config "$ROOT/etc/vexar-example.xml" --qos-library VexarExample \
  --qos-profile KeepAllLogs --rate 20 --duration 120
BETA=$DEMO_ID

# The operator lists and commands both.
apps
expect_rc 0 "operator's apps"
expect_grep "\"id\":\"$ALPHA\",.*\"kind\":\"alpha\"" "$OUT" "alpha listed"
expect_grep "\"id\":\"$BETA\",.*\"kind\":\"beta\"" "$OUT" "beta listed"
for target in alpha "$BETA"; do
  as operator run_vexar "$OUT" set-level "$target" debug --domain "$DOMAIN" --timeout 20
  expect_rc 0 "operator's set-level $target"
  expect_grep ": OK$" "$OUT" "operator's set-level $target answer"
done
[[ $(level_of "$ALPHA") == 700 ]] || fail "alpha's level after the operator's set-level: $(cat "$OUT")"
[[ $(level_of "$BETA") == 700 ]] || fail "beta's level after the operator's set-level: $(cat "$OUT")"

# The observer reads the logs but cannot command: security refuses, says
# so, and the State stays as it was.
as observer run_vexar "$OUT" tail --domain "$DOMAIN" --count 5 --timeout 20 --no-color
expect_rc 0 "observer's tail"
expect_every_line " (alpha|beta) " "$OUT" "observer's tail lines"
as observer run_vexar "$OUT" set-level alpha 500 --domain "$DOMAIN" --timeout 10
[[ $RC -ne 0 ]] || fail "observer's set-level succeeded: $(cat "$OUT")"
expect_grep "Not Allowed By Security" "$OUT.err" "observer's set-level refusal"
[[ $(level_of "$ALPHA") == 700 ]] || fail "alpha's level changed by the observer: $(cat "$OUT")"

# Without credentials: no logger to be seen, no log, no command answered.
run_vexar "$OUT" tail --domain "$DOMAIN" --timeout 4 --no-color
[[ ! -s $OUT ]] || fail "an unsecured tail printed logs: $(head -3 "$OUT")"
run_vexar "$OUT" set-level "$ALPHA" 500 --domain "$DOMAIN" --timeout 4
expect_rc 3 "unsecured set-level"
[[ $(level_of "$ALPHA") == 700 ]] || fail "alpha's level changed without credentials: $(cat "$OUT")"

# The web console: an observer's shows the loggers and refuses its
# controls, saying why; an operator's steers them.
source "$(dirname "$0")/web_support.sh"
as observer start_web
[[ $(wait_for_app alpha) == "$ALPHA" ]] || fail "observer's console does not list alpha"
api POST "/api/apps/$ALPHA/level" -H "X-Vexar-Token: $TOKEN" -d '{"level":"INFO"}'
expect_status 403 "observer's console control"
expect_jq '.error | contains("may not command")' "observer's console saying why"
kill "$WEB_PID"
as operator start_web
wait_for_app alpha >/dev/null
api POST "/api/apps/$ALPHA/level" -H "X-Vexar-Token: $TOKEN" -d '{"level":"WARNING"}'
expect_status 200 "operator's console control"
expect_jq '.result == "OK"' "operator's console control answered"
[[ $(level_of "$ALPHA") == 400 ]] || fail "alpha's level after the operator's console: $(cat "$OUT")"
kill "$WEB_PID"

# Refusals name their reason: a logger without the right to publish logs,
# and a participant whose certificate the identity CA did not sign.
as observer run_vexar "$OUT" demo --domain "$DOMAIN" --kind intruder --duration 1
[[ $RC -ne 0 ]] || fail "an observer started a logger"
expect_grep "caused by: .*Not Allowed By Security" "$OUT" "refused log writer's reason"
sed "s#<IdentityCertificate>[^<]*#<IdentityCertificate>file:$WORK/encrypt/ca/permissions_ca.pem#" \
  "$WORK/encrypt/operator/cyclonedds.xml" >"$WORK/forged.xml"
CYCLONEDDS_URI="$PLAIN,file://$WORK/forged.xml" run_vexar "$OUT" demo --domain "$DOMAIN" --duration 1
[[ $RC -ne 0 ]] || fail "a logger started with a certificate the identity CA did not sign"
expect_grep "caused by: .*dds_create_participant: Error \(because .*Certificate not valid" "$OUT" \
  "forged certificate's reason"

# On the wire: with encryption no message text, with signing only the texts
# are there (which also shows that the capture sees the traffic).
if [[ $(id -u) -ne 0 ]] || ! command -v dumpcap >/dev/null; then
  echo "capture on lo skipped: needs root and dumpcap"
  echo "security admin: ok"
  exit 0
fi
# texts_on_wire PROTECTION: sets TEXTS to the number of captured lines of
# $DOMAIN's ports that carry demo texts. Participant indices put the
# unicast ports, otherwise any free port, into the domain's range too.
texts_on_wire() {
  local protection=$1 base=$((7400 + 250 * DOMAIN))
  local indexed="$PLAIN,<Discovery><ParticipantIndex>auto</ParticipantIndex></Discovery>"
  [[ -d $WORK/$protection ]] || credentials "$WORK/$protection" "$protection" 220-229
  dumpcap -q -i lo -f "udp portrange $base-$((base + 249))" -w "$WORK/$protection.pcapng" -a duration:8 \
    >"$WORK/dumpcap.out" 2>&1 &
  local capture=$!
  sleep 1
  CYCLONEDDS_URI="$indexed,file://$WORK/$protection/application/cyclonedds.xml" \
    start_demo "wire-$protection" --kind wire --rate 200 --duration 6
  CYCLONEDDS_URI="$indexed,file://$WORK/$protection/observer/cyclonedds.xml" \
    run_vexar "$WORK/$protection.tail" tail --domain "$DOMAIN" --timeout 5 --no-color
  wait "$capture" || { cat "$WORK/dumpcap.out" >&2; fail "dumpcap failed"; }
  [[ -s $WORK/$protection.tail ]] || fail "the $protection observer saw no logs"
  TEXTS=$(grep -ac -E "connection accepted|request served|quick brown fox" "$WORK/$protection.pcapng" || true)
}
# Each capture on a domain of its own, so that it holds only its own traffic.
DOMAIN=222
texts_on_wire encrypt
encrypted=$TEXTS
DOMAIN=223
texts_on_wire sign
signed=$TEXTS
[[ $signed -gt 0 ]] || fail "no demo text in the capture of signed traffic: the capture saw nothing"
[[ $encrypted -eq 0 ]] || fail "$encrypted captured lines carry demo texts in clear under encryption"
echo "captured: demo texts in $signed lines signed, $encrypted encrypted"
echo "security admin: ok"
