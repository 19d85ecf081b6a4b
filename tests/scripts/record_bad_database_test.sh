# A database that vexar cannot use: not ours, a newer schema, a corrupt or
# empty file, a missing one. Each is one line on standard error naming the
# file and exit status 1, for query, tail --db and record alike; nothing is
# created or changed.
DOMAIN=174
source "$(dirname "$0")/record_support.sh"
OUT=$WORK/bad

# A good database to spoil: recorded from nothing for a moment.
run_vexar "$OUT" record --domain "$DOMAIN" --db "$DB" --timeout 0.5
expect_rc 0 "record into a new file"
[[ $(sql "PRAGMA user_version") -ge 1 ]] || fail "no schema version stored"

sqlite3 "$WORK/foreign.db" "CREATE TABLE accounts(id INTEGER PRIMARY KEY, owner TEXT)"
cp "$DB" "$WORK/newer.db"
sqlite3 "$WORK/newer.db" "PRAGMA user_version = 99"
head -c 16384 /dev/urandom >"$WORK/corrupt.db"
cp "$DB" "$WORK/torn.db"
# The header's page size and counts overwritten: a file torn by something else.
printf 'XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX' | dd of="$WORK/torn.db" bs=1 seek=16 conv=notrunc status=none
: >"$WORK/empty.db"

# file | reason in the line | commands that must refuse it
cases=(
  "foreign.db|is not a vexar log database|query tail record"
  "newer.db|has schema version 99, newer than this vexar reads|query tail record"
  "corrupt.db|cannot be read: .*file is not a database|query tail record"
  "torn.db|(cannot be read|is not a database|malformed)|query tail record"
  "empty.db|holds no recorded logs|query tail"
  "missing.db|cannot open|query tail"
)
for case in "${cases[@]}"; do
  # The reason may hold '|': it is what lies between the first and the last.
  file=${case%%|*} commands=${case##*|} reason=${case#*|} reason=${reason%|*}
  path=$WORK/$file
  before=$(sha1sum "$path" 2>/dev/null || echo none)
  for command in $commands; do
    case $command in
      query) run_vexar "$OUT" query --db "$path" ;;
      tail) run_vexar "$OUT" tail --domain "$DOMAIN" --db "$path" --timeout 1 ;;
      record) run_vexar "$OUT" record --domain "$DOMAIN" --db "$path" --timeout 1 ;;
    esac
    expect_rc 1 "$command on $file"
    [[ $(wc -l <"$OUT.err") -eq 1 ]] || { cat "$OUT.err" >&2; fail "$command on $file: not one line"; }
    expect_grep "^vexar $command: .*($reason)" "$OUT.err" "$command on $file"
    expect_grep "$file" "$OUT.err" "$command on $file names it"
    [[ $(sha1sum "$path" 2>/dev/null || echo none) == "$before" ]] || fail "$command changed $file"
  done
done

# The recorder makes the missing file and continues an existing one.
run_vexar "$OUT" record --domain "$DOMAIN" --db "$WORK/missing.db" --timeout 0.5
expect_rc 0 "record into a missing file"
run_vexar "$OUT" record --domain "$DOMAIN" --db "$WORK/missing.db" --timeout 0.5
expect_rc 0 "record into its own file again"
echo "bad databases: all cases passed"
