# vexar's command line: help for every subcommand, and a one-line error with
# exit status 64 for each kind of mistake, before any DDS traffic.
DOMAIN=120
source "$(dirname "$0")/cli_support.sh"
OUT=$WORK/out

for command in tail apps set-level set-verbosity set-format demo; do
  run_vexar "$OUT" "$command" --help
  expect_rc 0 "$command --help"
  expect_grep "^usage: vexar $command " "$OUT" "$command --help"
  expect_grep "--domain N" "$OUT" "$command --help"
done
run_vexar "$OUT" --help
expect_rc 0 "--help"

# mistake | words...   (each must exit 64 with one line naming the mistake)
while IFS='|' read -r expected words; do
  read -ra argv <<<"$words"
  run_vexar "$OUT" "${argv[@]}"
  expect_rc 64 "vexar $words"
  [[ $(wc -l <"$OUT.err") -eq 1 ]] || { cat "$OUT.err"; fail "vexar $words: not one line of error"; }
  expect_grep "$expected" "$OUT.err" "vexar $words"
done <<'CASES'
unknown command 'frobnicate'|frobnicate
unknown option '--bogus'|tail --bogus
bad level 'loud'|tail --level loud
bad HOST:APP 'x:y'|tail --app x:y
bad --count '0'|tail --count 0
bad --timeout 'soon'|tail --timeout soon
bad --timeout '1e10'|tail --timeout 1e10
bad --timeout 'nan'|set-level demo INFO --timeout nan
bad regular expression '\('|tail --grep (
bad --domain '231'|apps --domain 231
option --timeout needs a value|apps --timeout
missing operand|set-level demo
bad level 'LOUDEST'|set-level demo LOUDEST
bad HOST:APP '12:zz'|set-level 12:zz INFO
unexpected operand 'extra'|set-level demo INFO extra
bad CATEGORY=VERBOSITY 'api'|set-verbosity demo api
bad category 'network'|set-verbosity demo network=ERROR
bad verbosity 'chatty'|set-verbosity demo api=chatty
bad print format 'fancy'|set-format demo fancy
bad --rate '-1'|demo --rate -1
--default-qos and --qos-profile exclude each other|demo --default-qos --qos-library L --qos-profile P
CASES

# With no command at all the overview goes to stderr.
run_vexar "$OUT"
expect_rc 64 "vexar without a command"
expect_grep "^usage: vexar COMMAND" "$OUT.err" "vexar without a command"
echo "cli usage: ok"
