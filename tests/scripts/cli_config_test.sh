# vexar config check and save over real files, and the demo started from the
# example configuration with its QoS profile.
DOMAIN=151
source "$(dirname "$0")/cli_support.sh"
OUT=$WORK/config
EXAMPLE="$(dirname "$0")/../../etc/vexar-example.xml"

run_vexar "$OUT" config check "$EXAMPLE"
expect_rc 0 "check of the example"
expect_grep ': ok$' "$OUT" "check verdict"
expect_grep '^  line +[0-9]+ +qos_profile +VexarExample::KeepAllLogs$' "$OUT" "listed profile"
expect_grep '^  line +[0-9]+ +vexar' "$OUT" "listed vexar element"

run_vexar "$OUT" config check --json "$EXAMPLE"
expect_rc 0 "check --json"
expect_every_line '^\{"file":".*vexar-example.xml","ok":true,"entries":\[\{"kind":"qos_library".*\]\}$' "$OUT" "JSON verdict"

cat >"$WORK/bad.xml" <<'XML'
<dds>
  <qos_library name="L">
    <qos_profile name="P" base_name="Missing">
      <datawriter_qos><history><kind>KEEP_SOME</kind></history></datawriter_qos>
    </qos_profile>
  </qos_library>
  <vexar><filter_level>loud</filter_level></vexar>
</dds>
XML
run_vexar "$OUT" config check "$EXAMPLE" "$WORK/bad.xml"
expect_rc 1 "check with a bad file"
expect_grep 'bad.xml: refused$' "$OUT" "bad file refused"
expect_grep 'vexar-example.xml: ok$' "$OUT" "good file still checked"
expect_grep '^.*bad.xml:3: unknown base profile "Missing" of "L::P"$' "$OUT.err" "base error with its line"
expect_grep '^.*bad.xml:4: <kind> expects one of KEEP_LAST_HISTORY_QOS KEEP_ALL_HISTORY_QOS, not "KEEP_SOME"$' \
  "$OUT.err" "kind error with its line"
expect_grep '^.*bad.xml:7: integer expected in XML text$' "$OUT.err" "element error with its line"

# What save prints is itself a configuration that checks and saves the same.
run_vexar "$WORK/saved.xml" config save "$EXAMPLE"
expect_rc 0 "save"
expect_grep '<datawriter_qos topic_filter="qtv/vexar">' "$WORK/saved.xml" "saved profile"
expect_grep '<queue_size>1024</queue_size>' "$WORK/saved.xml" "saved element"
expect_grep '<qos_library name="VexarQosLibrary">' "$WORK/saved.xml" "built-in QoS library"
run_vexar "$WORK/again.xml" config save "$WORK/saved.xml"
expect_rc 0 "save of the saved file"
cmp -s "$WORK/saved.xml" "$WORK/again.xml" || fail "saving the saved configuration changed it"

run_vexar "$OUT" config
expect_rc 64 "config without operands"
run_vexar "$OUT" config frob "$EXAMPLE"
expect_rc 64 "unknown action"
run_vexar "$OUT" demo --domain "$DOMAIN" --qos-library VexarExample
expect_rc 64 "--qos-library without --qos-profile"

# The demo from the example's element and profile: its messages arrive.
start_demo xml --config "$EXAMPLE" --qos-library VexarExample --qos-profile KeepAllLogs --rate 50 --duration 60
run_vexar "$OUT" tail --domain "$DOMAIN" --no-color --timeout 30 --count 5 --app "$DEMO_ID"
expect_rc 0 "tail of the demo started from XML"
expect_no_grep 'cannot be found' "$WORK/xml.out" "the profile was found"
echo "cli config: ok"
