#!/bin/sh
# crash_journey_test.sh DEMO_HOST RISK_SERVER JOURNEYS: the demo crashes, and its next run over the
# same data uploads the report.
set -eu

demo="$1" server="$2" journeys="$3"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

fail() {
  echo "crash_journey_test: $1" >&2
  exit 1
}

count_reports() {
  find "$folder/data" -name 'crash*.json' | wc -l
}

count_sent() {
  grep -c '"/qrsk-med/3.0/CrashLogging/"' "$folder/$1.log" || true
}

play() {
  "$demo" "$journeys/$1.json" --fast --risk-server "$server" --data-folder "$folder/data" \
    --log "$folder/$1.log"
}

# A sanitizer must leave the fault to the library in the run that dies.
ASAN_OPTIONS="${ASAN_OPTIONS:-}:handle_segv=1:handle_abort=0:allow_user_segv_handler=1"
export ASAN_OPTIONS
status=0
play crash || status=$?
test "$status" -eq 137 || fail "the crash ended with status $status, not with SIGKILL"
# A run of uploads that had just begun may send the report before the process has died.
test $(($(count_reports) + $(count_sent crash))) -ge 1 || fail "the crash left no report"
play banking_day || fail "the run after the crash failed"
test "$(count_reports)" -eq 0 || fail "the report is still there"
test $(($(count_sent crash) + $(count_sent banking_day))) -ge 1 ||
  fail "the report did not reach the server"
