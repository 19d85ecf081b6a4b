# The web console in a real browser (headless chromium through
# chromedriver), against two demo applications and a logger of hostile
# text: live rows appear and stay few in the DOM, a filter narrows them and
# lands in the address, a control without the token is refused, a level
# change from the page reaches the logger's State, and a <script> message
# is shown as text. Leaves a screenshot in the build folder.
DOMAIN=191
source "$(dirname "$0")/cli_support.sh"
source "$(dirname "$0")/web_support.sh"
source "$(dirname "$0")/web_webdriver.sh"
OUT=$WORK/api
trap 'stop_browser; stop_demos; rm -rf "$WORK"' EXIT

start_demo alpha --kind alpha --rate 40 --duration 180
ALPHA=$DEMO_ID
start_demo beta --kind beta --rate 40 --duration 180
HOSTILE='<script>window.pwned=1</script><img src=x onerror="window.pwned=2"> hostile'
start_logger hostile hostile 5 0 1 "$HOSTILE"
start_web
wait_for_app alpha >/dev/null
wait_for_app beta >/dev/null
start_browser
wd POST /url "{\"url\":\"$URL/\"}" >/dev/null

# Live rows, and only a window of them in the DOM.
wait_js 'vexarConsole.stats.received > 300 && document.querySelectorAll("#rows .row:not([hidden])").length > 10' \
  "live rows"
wait_js 'vexarConsole.rowsHeld() > document.querySelectorAll("#rows .row").length' "more rows held than drawn"
[[ $(js 'return document.querySelectorAll("#rows .row").length') -lt 120 ]] || fail "the DOM holds too many rows"

# A filter from the form: only alpha's warnings and worse, and the address says so.
js 'document.querySelector("#filters [name=level]").value = "WARNING"' >/dev/null
type_into '#filters [name=app]' alpha
click '#apply'
wait_js 'location.search === "?level=WARNING&app=alpha"' "the filter in the address"
wait_js 'vexarConsole.stats.received > 20' "filtered rows"
rows='[...document.querySelectorAll("#rows .row:not([hidden])")]'
wait_js "$rows.length > 5 && $rows.every(r => r.querySelector(\".app\").textContent.startsWith(\"$ALPHA alpha \")
  && [\"FATAL\", \"SEVERE\", \"ERROR\", \"WARNING\"].includes(r.querySelector(\".level\").textContent))" \
  "only alpha's warnings and worse shown"

# Hostile text is text: no element made of it, nothing of it run.
type_into '#filters [name=app]' hostile
js 'document.querySelector("#filters [name=level]").value = ""' >/dev/null
click '#apply'
wait_js "$rows.some(r => r.querySelector(\".message\").textContent.startsWith(\"<script>window.pwned=1</script>\"))" \
  "the hostile message shown"
[[ $(js 'return document.querySelectorAll("#rows script, #rows img").length + " " + (window.pwned === undefined)') \
  == '"0 true"' ]] || fail "the hostile message became markup"

# A control without the token is refused and the page asks for it; with it
# the level changes and the logger's State shows it.
card="[data-id=\"$ALPHA\"]"
js "document.querySelector('$card select[name=level]').value = 'DEBUG'" >/dev/null
click "$card [data-control=level]"
wait_js "document.querySelector('$card .answer').textContent.startsWith('REFUSED')" "refused without the token"
wait_js '!document.getElementById("token-box").hidden' "the page asks for the token"
type_into '#token' "$TOKEN"
click '#token-form button'
click "$card [data-control=level]"
wait_js "document.querySelector('$card .answer').textContent === 'OK'" "the level change answered" 15
wait_js "document.querySelector('$card').dataset.level === 'DEBUG'" "alpha's State at DEBUG" 15
api GET /api/apps
expect_jq "any(.[]; .id == \"$ALPHA\" and .filterLevel == 700)" "the level set from the page"

# The screenshot: everything, both demos in the panel.
js 'document.getElementById("filters").reset()' >/dev/null
click '#apply'
wait_js 'vexarConsole.stats.received > 100' "rows again"
sleep 3
wd GET /screenshot | jq -r . | base64 -d >"$BUILD_DIR/web-console.png"
[[ -s $BUILD_DIR/web-console.png ]] || fail "no screenshot"
echo "web console in chromium: all checks passed; screenshot $BUILD_DIR/web-console.png"
