# A logger started from an XML file whose profile keeps all of the log
# writer's history loses nothing of a burst that `vexar tail` follows; the
# same burst from the same element with the default QoS is run beside it and
# its figures printed.
DOMAIN=150
source "$(dirname "$0")/cli_support.sh"
BURST="$BUILD_DIR/tests/xml_log_burst"
COUNT=10000
[[ -x $BURST ]] || fail "no burst program at $BURST"

cat >"$WORK/burst.xml" <<XML
<dds>
  <qos_library name="Burst">
    <qos_profile name="KeepAll">
      <datawriter_qos topic_filter="qtv/vexar">
        <history><kind>KEEP_ALL_HISTORY_QOS</kind></history>
      </datawriter_qos>
    </qos_profile>
  </qos_library>
  <vexar>
    <enabled>true</enabled>
    <queue_size>$COUNT</queue_size>
  </vexar>
</dds>
XML

# run_burst NAME [FILE LIBRARY PROFILE]: tail follows the domain while the
# burst program logs COUNT messages; sets RECEIVED.
run_burst() {
  local name=$1; shift
  "$VEXAR" tail --domain "$DOMAIN" --json --count "$COUNT" --timeout 120 >"$WORK/$name.tail" 2>"$WORK/$name.err" &
  local tail_pid=$!
  "$BURST" "$DOMAIN" "$COUNT" "$@" >"$WORK/$name.out" 2>&1 || { cat "$WORK/$name.out" >&2; fail "$name: the burst failed"; }
  # Whatever is still on its way arrives within seconds; then tail is stopped.
  local tries
  for tries in $(seq 50); do kill -0 "$tail_pid" 2>/dev/null || break; sleep 0.1; done
  kill -INT "$tail_pid" 2>/dev/null || true
  wait "$tail_pid" || true
  RECEIVED=$(grep -c '"message":"burst ' "$WORK/$name.tail" || true)
  echo "$name: logger $(grep -m1 '^queued ' "$WORK/$name.out"); tail received $RECEIVED of $COUNT"
}

run_burst keep-all-profile "$WORK/burst.xml" Burst KeepAll
[[ $RECEIVED -eq $COUNT ]] || fail "under the keep-all profile tail received $RECEIVED of $COUNT"
run_burst default-qos "$WORK/burst.xml"
