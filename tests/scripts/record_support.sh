# Shared by the record_*_test.sh scripts, beside cli_support.sh: a recorder
# in the background, the demos' message counts, and SQL on its database.
source "$(dirname "${BASH_SOURCE[0]}")/cli_support.sh"
DB=$WORK/log.db

# start_recorder [record options...]: `vexar record` into $DB in the
# background, its standard error in $WORK/record.err; sets RECORDER.
start_recorder() {
  "$VEXAR" record --domain "$DOMAIN" --db "$DB" "$@" 2>>"$WORK/record.err" &
  RECORDER=$!
  DEMO_PIDS+=("$RECORDER")
  sleep 1 # its reader matches the demos' writers from the start
}

# stop_recorder: SIGTERM, then its exit status must be 0.
stop_recorder() {
  kill "$RECORDER"
  local rc=0
  wait "$RECORDER" || rc=$?
  [[ $rc -eq 0 ]] || { cat "$WORK/record.err" >&2; fail "recorder exited with $rc"; }
}

# wait_demo NAME: waits until demo NAME has said how many it logged, and
# sets LOGGED to that number.
wait_demo() {
  local tries
  for tries in $(seq 600); do
    LOGGED=$(sed -n 's/^demo .*: logged \([0-9]*\) messages.*/\1/p' "$WORK/$1.out")
    [[ -n $LOGGED ]] && return 0
    sleep 0.1
  done
  fail "demo $1 did not finish"
}

sql() { sqlite3 "$DB" "$@"; }

# The demo's message numbers that reached the database, one per line, sorted.
# (Take the first with `sed -n 1p`, not `head -1`: under pipefail the sort
# killed by SIGPIPE would end the script without a word.)
recorded_numbers() { # kind
  sql "SELECT m.text FROM messages m JOIN apps a ON a.id = m.app WHERE a.kind = '$1'" |
    sed -n 's/^message \([0-9]*\):.*/\1/p' | sort -n
}

# Fails unless the numbers 0 .. count-1 are each there exactly once.
expect_all_numbers() { # file count what
  local expected
  expected=$(seq 0 $(($2 - 1)) | sha1sum)
  if [[ $(sha1sum <"$1") != "$expected" ]]; then
    echo "$(wc -l <"$1") numbers, $(sort -n "$1" | uniq -d | wc -l) repeated, expected 0 .. $(($2 - 1))" >&2
    comm -3 <(seq 0 $(($2 - 1))) "$1" | head -5 >&2
    fail "$3"
  fi
}
