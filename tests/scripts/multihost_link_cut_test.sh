# Two hosts: network namespaces joined by a veth pair, each side's Cyclone
# bound to its end. Host A runs a logger that logs numbered messages at a
# steady rate; host B runs `vexar tail`, `vexar apps` and `vexar set-level`
# across the link. Then the link is cut for 3 s and restored: under the
# Lossless profile every numbered message arrives exactly once, or each
# missing one is counted by the logger. The same cut under the default QoS
# is measured and printed. Skipped (exit 77) where namespaces cannot be made.
DOMAIN=160 # and 161 for the default QoS
source "$(dirname "$0")/cli_support.sh"
LOGGER="$BUILD_DIR/tests/paced_logger"
[[ -x $LOGGER ]] || fail "no paced logger at $LOGGER"

RATE=1000
# Deep enough for what is logged while the cut holds the write thread back,
# the same for both QoS so that only the QoS differs.
QUEUE=4096
NS_A=vexar-$$-a
NS_B=vexar-$$-b
DEV_A=vx$$a
DEV_B=vx$$b
SUBNET=10.231.14

skip() {
  echo "SKIP: $*"
  exit 77
}

# Namespaces of earlier runs that were killed before they could clean up.
remove_stale_namespaces() {
  local ns pid
  for ns in $(ip netns list 2>/dev/null | grep -Eo '^vexar-[0-9]+-[ab]\b' || true); do
    pid=${ns#vexar-}
    pid=${pid%-?}
    kill -0 "$pid" 2>/dev/null || ip netns delete "$ns" 2>/dev/null || true
  done
}

# Deleting a namespace deletes its end of the pair, and with it the pair.
remove_namespaces() {
  ip netns delete "$NS_A" 2>/dev/null || true
  ip netns delete "$NS_B" 2>/dev/null || true
}
# Processes on the hosts; one stuck in the middleware would keep the
# namespaces alive, so what does not stop is killed.
HOST_PIDS=()
any_host_process() {
  local pid
  for pid in "${HOST_PIDS[@]}"; do kill -0 "$pid" 2>/dev/null && return 0; done
  return 1
}
stop_host_processes() {
  local tries
  ((${#HOST_PIDS[@]})) || return 0
  kill "${HOST_PIDS[@]}" 2>/dev/null || true
  for tries in $(seq 20); do
    any_host_process || break
    sleep 0.1
  done
  kill -KILL "${HOST_PIDS[@]}" 2>/dev/null || true
  wait "${HOST_PIDS[@]}" 2>/dev/null || true
  HOST_PIDS=()
}
trap 'stop_host_processes; remove_namespaces; rm -rf "$WORK"' EXIT
trap 'exit 1' INT TERM

mac_of() { ip -n "$1" -br link show dev "$2" | awk '{ print $3 }'; }

make_namespaces() {
  [[ $(id -u) -eq 0 ]] || skip "making network namespaces needs root"
  command -v ip >/dev/null || skip "no ip command (iproute2)"
  remove_stale_namespaces
  ip netns add "$NS_A" 2>"$WORK/ns.err" || skip "cannot make a network namespace: $(cat "$WORK/ns.err")"
  ip netns add "$NS_B" 2>"$WORK/ns.err" || skip "cannot make a network namespace: $(cat "$WORK/ns.err")"
  ip link add "$DEV_A" netns "$NS_A" type veth peer name "$DEV_B" netns "$NS_B" 2>"$WORK/ns.err" ||
    skip "cannot make a veth pair: $(cat "$WORK/ns.err")"
  ip -n "$NS_A" addr add "$SUBNET.1/24" dev "$DEV_A"
  ip -n "$NS_B" addr add "$SUBNET.2/24" dev "$DEV_B"
  ip -n "$NS_A" link set "$DEV_A" up
  ip -n "$NS_B" link set "$DEV_B" up
  # Fixed neighbours: without them host B's end going down makes host A
  # resolve B's address again, and its sends wait in the kernel's ARP queue
  # until the socket's buffer is full and blocks the writing thread. The cut
  # is to lose packets, not to stall the sender.
  ip -n "$NS_A" neigh replace "$SUBNET.2" lladdr "$(mac_of "$NS_B" "$DEV_B")" dev "$DEV_A" nud permanent
  ip -n "$NS_B" neigh replace "$SUBNET.1" lladdr "$(mac_of "$NS_A" "$DEV_A")" dev "$DEV_B" nud permanent
  # Cyclone wakes its receive threads with packets to its own address, which
  # go through lo: without it a participant never finishes deleting.
  ip -n "$NS_A" link set lo up
  ip -n "$NS_B" link set lo up
}

# Each host's Cyclone uses its end of the pair and nothing else. Nobody
# else is in these namespaces, so no discovery tag is needed.
write_cyclone_configuration() { # side, interface
  cat >"$WORK/$1.xml" <<XML
<CycloneDDS xmlns="https://cdds.io/config">
  <Domain Id="any">
    <General>
      <Interfaces><NetworkInterface name="$2" multicast="true"/></Interfaces>
      <AllowMulticast>true</AllowMulticast>
    </General>
  </Domain>
</CycloneDDS>
XML
}

# run_on_b OUTFILE ARGS...: vexar on host B, at most 30 s; sets RC.
run_on_b() {
  local out=$1; shift
  RC=0
  timeout -k 2 30 "${HOST_B[@]}" "$VEXAR" "$@" >"$out" 2>"$out.err" || RC=$?
}

await() { # pattern, file, seconds, what
  local tries
  for tries in $(seq $(($3 * 10))); do
    grep -Eq -- "$1" "$2" 2>/dev/null && return 0
    sleep 0.1
  done
  cat "$2" >&2
  fail "$4: nothing matched /$1/ within $3 s"
}

paced_count() { grep -c '"message":"paced ' "$1" || true; }

# start_run NAME DOMAIN [lossless]: tail on B, then the logger on A, which
# starts logging once its writer has matched tail's reader.
start_run() {
  local name=$1 domain=$2
  "${HOST_B[@]}" "$VEXAR" tail --domain "$domain" --json --timeout 120 >"$WORK/$name.tail" 2>"$WORK/$name.tail.err" &
  TAIL_PID=$!
  HOST_PIDS+=("$TAIL_PID")
  "${HOST_A[@]}" "$LOGGER" "$domain" netns "$RATE" "$QUEUE" "${@:3}" >"$WORK/$name.logger" 2>&1 &
  LOGGER_PID=$!
  HOST_PIDS+=("$LOGGER_PID")
  await '^logging$' "$WORK/$name.logger" 20 "$name: the logger on host A found tail on host B"
  await '"message":"paced ' "$WORK/$name.tail" 10 "$name: logs arrive across the link"
}

# Takes host B's end down for 3 s: host A's sends then vanish, as on a cut
# cable. Once what was under way has been taken (0.5 s), nothing may arrive
# until the link is back. The logger goes on logging for 1 s after that.
cut_link() { # name
  ip -n "$NS_B" link set "$DEV_B" down
  sleep 0.5
  local before
  before=$(paced_count "$WORK/$1.tail")
  sleep 2.5
  [[ $(paced_count "$WORK/$1.tail") -eq $before ]] || fail "$1: messages arrived while the link was down"
  ip -n "$NS_B" link set "$DEV_B" up
  sleep 1
}

# finish_run NAME: stops the logger (flush, finalize, statistics), then
# waits for tail to go quiet; sets LOGGER_RC, STATISTICS, LOGGED, ARRIVED,
# MISSING, DUPLICATES, TAIL_LOST and prints them.
finish_run() {
  local name=$1 previous=-1 current tries
  kill -INT "$LOGGER_PID"
  LOGGER_RC=0
  wait "$LOGGER_PID" || LOGGER_RC=$?
  LOGGED=$(grep -m1 '^logged ' "$WORK/$name.logger" | cut -d' ' -f2 || true)
  STATISTICS=$(grep -m1 '^statistics ' "$WORK/$name.logger" || true)
  [[ -n $LOGGED && -n $STATISTICS ]] || { cat "$WORK/$name.logger" >&2; fail "$name: the logger did not finish"; }
  for tries in $(seq 30); do
    current=$(paced_count "$WORK/$name.tail")
    [[ $current -ge $LOGGED || $current -eq $previous ]] && break
    previous=$current
    sleep 0.2
  done
  kill -INT "$TAIL_PID" 2>/dev/null || true
  wait "$TAIL_PID" || true
  HOST_PIDS=()
  grep -o '"message":"paced [0-9]*"' "$WORK/$name.tail" | grep -o '[0-9]*' | sort -n >"$WORK/$name.numbers" || true
  ARRIVED=$(sort -nu "$WORK/$name.numbers" | awk -v logged="$LOGGED" '$1 < logged' | wc -l)
  DUPLICATES=$(uniq -d "$WORK/$name.numbers" | wc -l)
  MISSING=$((LOGGED - ARRIVED))
  TAIL_LOST=$({ grep -o '"lost":[0-9]*' "$WORK/$name.tail" || true; } | awk -F: '{ sum += $2 } END { print sum + 0 }')
  echo "$name: logged $LOGGED at $RATE/s, link cut for 3 s: arrived $ARRIVED, missing $MISSING," \
    "duplicates $DUPLICATES; tail reported lost $TAIL_LOST; logger $(grep -m1 '^flush ' "$WORK/$name.logger")," \
    "exit $LOGGER_RC, ${STATISTICS#statistics }"
}

statistic() { # name: that figure of STATISTICS
  awk -v name="$1" '{ for (i = 1; i < NF; ++i) if ($i == name) print $(i + 1) }' <<<"$STATISTICS"
}

make_namespaces
write_cyclone_configuration a "$DEV_A"
write_cyclone_configuration b "$DEV_B"
# "${HOST_A[@]}" PROGRAM ARGS... runs PROGRAM on host A; ip execs it, so $!
# of a background one is PROGRAM's own process id.
HOST_A=(ip netns exec "$NS_A" env "CYCLONEDDS_URI=file://$WORK/a.xml")
HOST_B=(ip netns exec "$NS_B" env "CYCLONEDDS_URI=file://$WORK/b.xml")

# Lossless: State, set-level and logs across the link, then the cut.
start_run lossless "$DOMAIN" lossless
OUT=$WORK/apps
run_on_b "$OUT" apps --domain "$DOMAIN" --json --timeout 10
expect_rc 0 "apps on host B"
expect_grep '"kind":"netns",.*"state":"OPERATIONAL",.*"filterLevel":600,' "$OUT" "the logger's State seen on host B"
OUT=$WORK/set-level
run_on_b "$OUT" set-level netns DEBUG --domain "$DOMAIN" --timeout 10
expect_rc 0 "set-level from host B"
expect_grep '^[0-9a-f]{8}:[0-9a-f]{8} netns [^ ]+@[^ ]+\[[0-9]+\]: OK$' "$OUT" "set-level answered across the link"
await '"message":"probe ' "$WORK/lossless.tail" 5 "DEBUG let through by the remote set-level"
cut_link lossless
finish_run lossless
[[ $LOGGER_RC -eq 0 ]] || { cat "$WORK/lossless.logger" >&2; fail "lossless: the logger failed (exit $LOGGER_RC)"; }
[[ $DUPLICATES -eq 0 ]] || fail "lossless: $DUPLICATES messages arrived more than once"
COUNTED=$(($(statistic dropped) + $(statistic failed) + $(statistic discarded)))
[[ $MISSING -le $COUNTED ]] || fail "lossless: $MISSING messages missing but only $COUNTED counted as lost"
if [[ $MISSING -eq 0 ]]; then
  echo "lossless: every message arrived exactly once"
else
  echo "lossless: $MISSING messages missing, all counted by the logger"
fi

# The default QoS through the same cut: measured, not judged.
start_run default $((DOMAIN + 1))
sleep 1
cut_link default
finish_run default
[[ $DUPLICATES -eq 0 ]] || fail "default: $DUPLICATES messages arrived more than once"
echo "multihost link cut: ok"
