# Applications told apart by their identity, exe@host[pid], against demo
# applications in other processes: shown by apps, tail and query and matched
# by every target form; set-* on two loggers of one kind with --all or a
# glob, and each exit status; short options; the domain from the environment.
DOMAIN=180
source "$(dirname "$0")/record_support.sh"
OUT=$WORK/identity
HOST=$(hostname)
# A literal text as an extended regular expression.
literal() { sed 's/[][\.*^$(){}?+|]/\\&/g' <<<"$1"; }

start_recorder
start_demo one --kind lidar --rate 20 --level TRACE --duration 120
ONE=$DEMO_ID ONE_NAME="vexar@$HOST[${DEMO_PIDS[-1]}]"
start_demo two --kind lidar --rate 20 --level TRACE --duration 120
TWO=$DEMO_ID TWO_NAME="vexar@$HOST[${DEMO_PIDS[-1]}]"
start_demo cam --kind camera --rate 20 --level TRACE --duration 120 --no-remote-administration
CAM=$DEMO_ID CAM_NAME="vexar@$HOST[${DEMO_PIDS[-1]}]"
sleep 2 # some history for tail to start with

# The domain: VEXAR_DOMAIN, else ROS_DOMAIN_ID; --domain wins (the order of
# the three is the parsing test's).
env_apps() { # VEXAR_DOMAIN ROS_DOMAIN_ID [options...]
  local vexar=$1 ros=$2; shift 2
  set +e
  env -u VEXAR_DOMAIN -u ROS_DOMAIN_ID ${vexar:+VEXAR_DOMAIN=$vexar} ${ros:+ROS_DOMAIN_ID=$ros} \
    "$VEXAR" apps --timeout 10 "$@" >"$OUT" 2>"$OUT.err"
  RC=$?
  set -e
}
env_apps "$DOMAIN" ""
expect_rc 0 "apps from VEXAR_DOMAIN"
for row in "$ONE lidar $ONE_NAME" "$TWO lidar $TWO_NAME" "$CAM camera $CAM_NAME"; do
  read -r id kind name <<<"$row"
  expect_grep "^$id +$kind +$(literal "$name") +OPERATIONAL +TRACE +0$" "$OUT" "apps row of $name"
done
env_apps "" "$DOMAIN"
expect_grep "^$ONE " "$OUT" "apps from ROS_DOMAIN_ID"
env_apps "$((DOMAIN + 1))" "" --domain "$DOMAIN" -o json
expect_grep "^\{\"id\":\"$ONE\",.*\"kind\":\"lidar\",\"identity\":\"$(literal "$ONE_NAME")\"," "$OUT" \
  "--domain before VEXAR_DOMAIN, -o json"

# Every target form, with short options: the applications whose messages tail shows.
ids_shown() { # tail options...
  # Long enough for every matching logger's history to arrive, whichever matches first.
  run_vexar "$OUT" tail --domain "$DOMAIN" -o json --timeout 3 "$@"
  expect_rc 0 "tail $*"
  sed -E 's/.*"id":"([0-9a-f:]+)".*/\1/' "$OUT" | sort -u | tr '\n' ' '
}
sorted() { printf '%s\n' "$@" | sort | tr '\n' ' '; }
ONE_HOST_ID=${ONE%%:*}
SAME_HOST_ID=$(for id in "$ONE" "$TWO" "$CAM"; do if [[ ${id%%:*} == "$ONE_HOST_ID" ]]; then echo "$id"; fi; done)
while IFS='|' read -r what options expected; do
  # shellcheck disable=SC2086 # the options are words
  got=$(ids_shown $options)
  [[ $got == "$(sorted $expected)" ]] || fail "$what ($options): shown $got, expected $(sorted $expected)"
done <<CASES
HOST:APP|-a $ONE|$ONE
kind|-a lidar|$ONE $TWO
executable|-a vexar|$ONE $TWO $CAM
exe@host[pid]|-a $TWO_NAME|$TWO
host name glob|-a $HOST:*|$ONE $TWO $CAM
host id glob|-a $ONE_HOST_ID:*|$SAME_HOST_ID
glob|-a lid*|$ONE $TWO
either of two|-a $ONE -a $CAM|$ONE $CAM
CASES
expect_every_line "\"identity\":\"vexar@$(literal "$HOST")\[[0-9]+\]\"" "$OUT" "identity in JSON"

run_vexar "$OUT" tail --domain "$DOMAIN" -a nosuch -a lidar --timeout 3
expect_grep "^vexar tail: no logger of kind 'nosuch' in domain $DOMAIN yet \(seen: camera, lidar\)$" "$OUT.err" \
  "tail: a target that fits none"
expect_no_grep "kind 'lidar'" "$OUT.err" "tail: a target that fits"

# Short options, a kind repeated (either) and kinds together (all).
run_vexar "$OUT" tail --domain "$DOMAIN" -a camera -l warning -c net -c db -g 'request|cache' --count 10 --timeout 20 -f
expect_rc 0 "short filters"
expect_every_line "^.{24} $CAM camera +$(literal "$CAM_NAME") +(FATAL|SEVERE|ERROR|WARNING) +(net|db) +message [0-9]+: (request|cache)" \
  "$OUT" "short filters: -a and -l and (-c or -c) and -g"

# set-*: a kind of two loggers needs --all; a glob steers all it fits.
run_vexar "$OUT" set-level --domain "$DOMAIN" --timeout 10 lidar DEBUG
expect_rc 64 "set-level to a kind of two"
expect_grep "kind 'lidar' names 2 loggers \(.*$(literal "$ONE_NAME").*$(literal "$TWO_NAME")|kind 'lidar' names 2 loggers \(.*$(literal "$TWO_NAME").*$(literal "$ONE_NAME")" \
  "$OUT.err" "both named"
answered() { # exit status, what, then one "ID KIND NAME: RESULT" per logger
  local status=$1 what=$2 line; shift 2
  expect_rc "$status" "$what"
  [[ $(wc -l <"$OUT") -eq $# ]] || { cat "$OUT" >&2; fail "$what: expected $# lines"; }
  for line in "$@"; do grep -qxF -- "$line" "$OUT" || { cat "$OUT" >&2; fail "$what: no line '$line'"; }; done
}
run_vexar "$OUT" set-level --domain "$DOMAIN" --timeout 10 --all lidar DEBUG
answered 0 "set-level --all" "$ONE lidar $ONE_NAME: OK" "$TWO lidar $TWO_NAME: OK"
run_vexar "$OUT" set-level --domain "$DOMAIN" --timeout 10 'lid*' -5
expect_grep "^$ONE lidar $(literal "$ONE_NAME"): ERROR: " "$OUT" "a refusal has its line"
[[ $(grep -c ': ERROR: ' "$OUT") -eq 2 ]] || fail "both refuse"
expect_rc 2 "set-level to a glob, both refusing"
# The camera takes no commands: 3 wins over the answers of the others.
run_vexar "$OUT" set-format --domain "$DOMAIN" --timeout 3 --all vexar MINIMAL
answered 3 "set-format to all, one silent" "$ONE lidar $ONE_NAME: OK" "$TWO lidar $TWO_NAME: OK"
expect_grep "^no answer from $CAM camera $(literal "$CAM_NAME") in domain $DOMAIN" "$OUT.err" "the silent one named"
run_vexar "$OUT" set-level --domain "$DOMAIN" --timeout 10 "$ONE_NAME" WARNING
answered 0 "set-level by exe@host[pid]" "$ONE lidar $ONE_NAME: OK"
run_vexar "$OUT" apps --domain "$DOMAIN" --json
expect_grep "\"id\":\"$ONE\",.*\"filterLevel\":400," "$OUT" "one at WARNING"
expect_grep "\"id\":\"$TWO\",.*\"filterLevel\":700," "$OUT" "two left at DEBUG"
run_vexar "$OUT" set-level --domain "$DOMAIN" --timeout 2 nosuch INFO
expect_rc 3 "set-level to an unknown kind"
expect_grep "^no logger of kind 'nosuch' in domain $DOMAIN \(seen: camera, lidar\)$" "$OUT.err" "what is there"

# The recorder stored the identities: query shows and selects by them.
sleep 1.5
stop_recorder
run_vexar "$OUT" query --db "$DB" -a "$TWO_NAME" -n 5
expect_rc 0 "query by exe@host[pid]"
[[ $(wc -l <"$OUT") -eq 5 ]] || fail "query -n 5: $(wc -l <"$OUT") lines"
expect_every_line "  $TWO lidar +$(literal "$TWO_NAME") " "$OUT" "query lines of two"
run_vexar "$OUT" query --db "$DB" -a nosuch
expect_grep "no logger of kind 'nosuch' in $DB \(seen: camera, lidar\)" "$OUT.err" "query: what is there"
echo "cli identity: ok"
