# vexar record's retention: --keep deletes the messages older than the age,
# --max-size the oldest beyond the size; the newest stay in both cases.
DOMAIN=173
source "$(dirname "$0")/record_support.sh"

# By age: 3 s kept out of 8 s of messages.
start_recorder --keep 3s
start_demo alpha --kind alpha --rate 200 --level TRACE --duration 8
wait_demo alpha
sleep 2 # the last batch committed and one more retention pass
stopped=$(date +%s%N)
stop_recorder
# Retention runs once a second: nothing older than 3 s and that second.
age=$(sql "SELECT ($stopped - min(source_time)) / 1000000 FROM messages")
newest=$(recorded_numbers alpha | tail -1)
[[ $age -le 4500 ]] || fail "--keep 3s: the oldest message kept is $age ms old"
[[ $newest -eq $((LOGGED - 1)) ]] || fail "--keep 3s: newest message $newest, logged $LOGGED"
[[ $(recorded_numbers alpha | sed -n 1p) -gt 0 ]] || fail "--keep 3s: the first message is still there"

# By size: 1 MB out of several.
DB=$WORK/size.db
start_recorder --max-size 1M
start_demo beta --kind beta --rate 4000 --level TRACE --duration 6
wait_demo beta
sleep 2
stop_recorder
bytes=$(stat -c %s "$DB")
[[ $bytes -le $((1536 * 1024)) ]] || fail "--max-size 1M: the file has $bytes bytes"
oldest=$(recorded_numbers beta | sed -n 1p)
newest=$(recorded_numbers beta | tail -1)
[[ $oldest -gt 0 ]] || fail "--max-size 1M: the first message is still there"
[[ $newest -eq $((LOGGED - 1)) ]] || fail "--max-size 1M: newest message $newest, logged $LOGGED"
[[ $(sql "PRAGMA integrity_check") == ok ]] || fail "--max-size 1M: database damaged"
echo "retention: oldest $age ms old with --keep 3s; by size $bytes bytes holding messages $oldest .. $newest"
