# Shared by the scripts that drive Debian's chromium through chromedriver
# (WebDriver: HTTP and JSON, spoken here with curl and jq). Source it after
# cli_support.sh. Exits 77 (skipped) when chromium or chromedriver is missing.

CHROMIUM=$(command -v chromium || true)
CHROMEDRIVER=$(command -v chromedriver || true)
if [[ -z $CHROMIUM || -z $CHROMEDRIVER ]]; then
  echo "SKIPPED: chromium and chromium-driver are not installed (scripts/install-deps.sh installs them)"
  exit 77
fi

# start_browser: chromedriver on a free loopback port and one headless
# session; sets WD (the session's URL) and BROWSER_PID.
start_browser() {
  local tries port
  for tries in $(seq 20); do
    port=$((20000 + RANDOM % 40000))
    "$CHROMEDRIVER" --port="$port" --allowed-ips=127.0.0.1 >"$WORK/chromedriver.out" 2>&1 &
    BROWSER_PID=$!
    DEMO_PIDS+=("$BROWSER_PID")
    for _ in $(seq 50); do
      curl -s "http://127.0.0.1:$port/status" | jq -e '.value.ready' >/dev/null 2>&1 && break 2
      sleep 0.1
    done
    kill "$BROWSER_PID" 2>/dev/null || true
  done
  # Nothing but loopback: every other address goes to a proxy that is not there.
  local args='["--headless=new","--no-sandbox","--disable-gpu","--disable-dev-shm-usage","--window-size=1500,900",
    "--no-first-run","--disable-background-networking","--disable-component-update","--disable-sync",
    "--disable-default-apps","--proxy-server=http://127.0.0.1:9","--user-data-dir='"$WORK"'/profile"]'
  local session
  session=$(curl -s -X POST "http://127.0.0.1:$port/session" -H 'Content-Type: application/json' -d '{"capabilities":
    {"alwaysMatch":{"browserName":"chrome","goog:chromeOptions":{"binary":"'"$CHROMIUM"'","args":'"$args"'}}}}' |
    jq -r '.value.sessionId // empty')
  [[ -n $session ]] || { cat "$WORK/chromedriver.out" >&2; fail "chromedriver made no session"; }
  WD="http://127.0.0.1:$port/session/$session"
}

stop_browser() { curl -s -X DELETE "$WD" >/dev/null || true; }

wd() { # METHOD PATH [JSON]: the reply's value
  curl -s -X "$1" "$WD$2" -H 'Content-Type: application/json' ${3:+-d "$3"} | jq -c '.value'
}

js() { # SCRIPT: what it returns, as JSON
  wd POST /execute/sync "$(jq -n --arg s "$1" '{script: $s, args: []}')"
}

# wait_js CONDITION WHAT [SECONDS]: until the expression is true in the page.
wait_js() {
  local tries
  for tries in $(seq $((${3:-20} * 5))); do
    [[ $(js "return !!($1)") == true ]] && return 0
    sleep 0.2
  done
  fail "$2: never true in the page: $1"
}

element() { # CSS: the element's id
  wd POST /element "$(jq -n --arg css "$1" '{using: "css selector", value: $css}')" | jq -r 'to_entries[0].value'
}

click() { wd POST "/element/$(element "$1")/click" '{}' >/dev/null; }

type_into() { # CSS TEXT: clears the field and types
  local id
  id=$(element "$1")
  wd POST "/element/$id/clear" '{}' >/dev/null
  wd POST "/element/$id/value" "$(jq -n --arg t "$2" '{text: $t}')" >/dev/null
}
