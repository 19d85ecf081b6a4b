# The C++ example's VX_ macros end their texts with the call's file and
# line: vexar tail, and vexar query on what vexar record stored, show it in
# a column of its own and as JSON fields; the member calls' texts have none.
DOMAIN=219
source "$(dirname "$0")/record_support.sh"
EXAMPLE="$BUILD_DIR/examples/cpp_logging"
[[ -x $EXAMPLE ]] || fail "no example program at $EXAMPLE"

# Two subscribers at once: they must have matched before the example logs.
"$VEXAR" tail --domain "$DOMAIN" --no-color --count 6 --timeout 60 >"$WORK/plain" 2>&1 &
PLAIN=$!
"$VEXAR" tail --domain "$DOMAIN" --json --count 6 --timeout 60 >"$WORK/json" 2>&1 &
JSON=$!
start_recorder
"$EXAMPLE" "$DOMAIN" 3 >"$WORK/example.out" || { cat "$WORK/example.out" >&2; fail "the example failed"; }
wait "$PLAIN" || { cat "$WORK/plain" >&2; fail "plain tail did not see 6 messages"; }
wait "$JSON" || { cat "$WORK/json" >&2; fail "JSON tail did not see 6 messages"; }
stop_recorder
run_vexar "$WORK/query" query --db "$DB" --no-color
expect_rc 0 "query"
run_vexar "$WORK/query.json" query --db "$DB" --json
expect_rc 0 "query --json"

# Where the example's two macro calls are.
error_line=$(grep -n 'VX_ERROR(net' "$(dirname "$0")/../../examples/cpp_logging.cpp" | cut -d: -f1)
notice_line=$(grep -n 'VX_NOTICE(logger' "$(dirname "$0")/../../examples/cpp_logging.cpp" | cut -d: -f1)
for shown in plain query; do
  expect_grep "  ERROR    net         cpp_logging\.cpp:$error_line  link eth1 lost 17 packets$" "$WORK/$shown" \
    "$shown: the location column of VX_ERROR"
  expect_grep "  NOTICE {15}cpp_logging\.cpp:$notice_line  no arguments at all$" "$WORK/$shown" \
    "$shown: the location column of VX_NOTICE"
  expect_grep '  INFO {17}retry 3 of 3 on eth0$' "$WORK/$shown" "$shown: a member call's text without location"
done
for shown in json query.json; do
  expect_grep "\"message\":\"link eth1 lost 17 packets\",\"file\":\"cpp_logging\\.cpp\",\"line\":$error_line[,}]" \
    "$WORK/$shown" "$shown: the JSON fields of VX_ERROR"
  expect_grep '"message":"link eth0 down after 2\.5 s"[,}]' "$WORK/$shown" "$shown: a member call's JSON without location"
done
echo "PASS"
