# vexar record survives kill -9 (every committed message is there, and a
# restart continues the same file without repeating what it has) and a
# full disk (one line, the batch held and retried, writing again once
# there is room).
DOMAIN=172
source "$(dirname "$0")/record_support.sh"

# kill -9 mid-stream, then a restart: what was committed stays, nothing is
# stored twice, and recording goes on to the logger's last message. (A
# reliable keep-all writer waits for the killed reader until its lease ends,
# 10 s by default: the logger's queue overflows meanwhile, and says so.)
start_recorder
start_demo alpha --kind alpha --rate 300 --level TRACE --duration 15
sleep 2.5
kill -9 "$RECORDER"
wait "$RECORDER" 2>/dev/null || true
[[ $(sql "PRAGMA integrity_check") == ok ]] || fail "database damaged by kill -9"
committed=$(sql "SELECT count(*) FROM messages")
[[ $committed -ge 300 ]] || fail "only $committed messages committed before kill -9"
recorded_numbers alpha >"$WORK/before.numbers"
start_recorder
wait_demo alpha
sleep 1.5
stop_recorder
recorded_numbers alpha >"$WORK/after.numbers"
[[ -z $(uniq -d "$WORK/after.numbers") ]] || fail "messages stored twice after the restart"
[[ -z $(grep -vxFf "$WORK/after.numbers" "$WORK/before.numbers") ]] || fail "committed messages lost"
# The writer waits for the dead reader until its lease ends, and a reader
# that joins meanwhile may be behind at the end: what is checked is that
# recording went on, most of the way to the logger's last message.
last=$(tail -1 "$WORK/after.numbers")
[[ $last -ge $((LOGGED * 9 / 10)) ]] || fail "the restarted recorder stored up to message $last of $LOGGED"
# The restart took the logger's recent messages again: stored once only.
[[ $(sql "SELECT count(*) FROM (SELECT 1 FROM messages GROUP BY app, level, source_time, text HAVING count(*) > 1)") -eq 0 ]] ||
  fail "duplicates after the restart"

# A full disk: a 2 MB tmpfs (we are root in the test machine; elsewhere skipped).
SMALL=$WORK/small
mkdir -p "$SMALL"
if ! mount -t tmpfs -o size=2M tmpfs "$SMALL" 2>/dev/null; then
  echo "full disk: skipped (cannot mount a tmpfs)"
  exit 0
fi
trap 'stop_demos; umount "$SMALL" 2>/dev/null; rm -rf "$WORK"' EXIT
DB=$SMALL/log.db
: >"$WORK/record.err"
start_recorder
start_demo beta --kind beta --rate 3000 --duration 12
for tries in $(seq 100); do
  grep -q 'full' "$WORK/record.err" && break
  sleep 0.1
done
expect_grep '^vexar record: .*database or disk is full \(holding the batch, retrying every second\)$' \
  "$WORK/record.err" "a full disk is reported"
sleep 1
kill -0 "$RECORDER" 2>/dev/null || fail "the recorder died of a full disk"
[[ $(grep -c full "$WORK/record.err") -eq 1 ]] || fail "a full disk is reported more than once"
mount -o remount,size=64M "$SMALL"
for tries in $(seq 50); do
  grep -q 'writing again' "$WORK/record.err" && break
  sleep 0.1
done
expect_grep '^vexar record: writing again after [0-9]+ s$' "$WORK/record.err" "writing again once there is room"
wait_demo beta
sleep 1.5
stop_recorder
# Recording went on after the disk took writes again (the logger, held up
# by the recorder's full reader meanwhile, may not have sent its very last).
last=$(recorded_numbers beta | tail -1)
[[ $last -ge $((LOGGED * 9 / 10)) ]] || fail "after the full disk: last message $last stored, logged $LOGGED"
echo "record durability: all cases passed"
