# Shared by the web_*_test.sh scripts (after cli_support.sh): a `vexar web`
# in the background on a free loopback port, and curl against it.

TOKEN=test-token-$$
# The helper program that logs numbered (or chosen) texts.
MIXED_LOGGER="$BUILD_DIR/tests/mixed_logger"

# start_web [web options...]: sets WEB_PID, PORT and URL once it serves.
start_web() {
  "$VEXAR" web --domain "$DOMAIN" --listen 127.0.0.1:0 --token "$TOKEN" "$@" >"$WORK/web.out" 2>"$WORK/web.err" &
  WEB_PID=$!
  DEMO_PIDS+=("$WEB_PID")
  local tries
  for tries in $(seq 100); do
    PORT=$(grep -Eom1 'http://127\.0\.0\.1:[0-9]+/' "$WORK/web.out" | grep -Eo '[0-9]+/$' | tr -d / || true)
    [[ -n $PORT ]] && { URL="http://127.0.0.1:$PORT"; return 0; }
    sleep 0.1
  done
  cat "$WORK/web.out" "$WORK/web.err" >&2
  fail "vexar web did not start"
}

# start_logger NAME KIND RATE COUNT WARNING_EVERY [TEXT]: mixed_logger in the background.
start_logger() {
  local name=$1; shift
  "$MIXED_LOGGER" "$DOMAIN" "$@" >"$WORK/$name.out" 2>&1 &
  DEMO_PIDS+=($!)
}

# api METHOD PATH [curl options...]: the body into $OUT, the status into STATUS.
api() {
  local method=$1 path=$2; shift 2
  STATUS=$(curl -s -o "$OUT" -w '%{http_code}' -X "$method" "$@" "$URL$path")
}

expect_status() { # expected, what
  [[ $STATUS == "$1" ]] || { cat "$OUT" >&2; echo >&2; fail "$2: HTTP $STATUS, expected $1"; }
}

expect_jq() { # jq expression that must be true, what
  jq -e "$1" "$OUT" >/dev/null || { head -c 2000 "$OUT" >&2; echo >&2; fail "$2: not $1"; }
}

# wait_for_app KIND: the id of the logger of KIND once /api/apps lists it.
wait_for_app() {
  local tries id
  for tries in $(seq 100); do
    api GET /api/apps
    id=$(jq -r --arg kind "$1" '.[] | select(.kind == $kind and .gone == false) | .id' "$OUT" 2>/dev/null | head -1)
    [[ -n $id ]] && { echo "$id"; return 0; }
    sleep 0.2
  done
  fail "no logger of kind $1 in /api/apps"
}
