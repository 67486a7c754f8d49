#!/usr/bin/env bash
# examples_test.sh FOLDER RISK_SERVER PROJECT: what the examples do about verdicts of the local risk
# server and without one; and the documents show the programs as they stand.
set -euo pipefail

programs="$1" server="$2" project="$3"
folder="$(mktemp -d)"
serverProcess=
trap 'test -z "$serverProcess" || kill "$serverProcess"; rm -rf "$folder"' EXIT
export XDG_DATA_HOME="$folder/data"
mkfifo "$folder/ready"

# answer_to RISK PROGRAM: what the program prints of that verdict.
answer_to() {
  rm -f "$folder/calls"
  echo "[{\"risk\": \"$1\"}]" >"$folder/rules.json"
  "$server" --rules "$folder/rules.json" --log "$folder/calls" >"$folder/ready" &
  serverProcess=$!
  local ready
  read -r ready <"$folder/ready"
  "$programs/$2" "${ready#risk server ready at }"
  kill "$serverProcess"
  wait "$serverProcess" || true
  serverProcess=
}

# is_known PROGRAM: where it waits for the device's identifier, the verdict was asked for with it.
is_known() {
  [[ "$1" != first_verdict ]] || ! grep '"path":"/qrsk-med/3.0/GetCheckpointRisk/"' \
    "$folder/calls" | grep no_device_id >/dev/null
}

# expect OUTPUT PATTERN: a whole line of it matches.
expect() {
  grep -qx "$2" <<<"$1" || {
    echo "examples_test: no line \"$2\" in:" "$1" >&2
    exit 1
  }
}

# expect_answer RISK PROGRAM PATTERN: a whole line of what it prints of that verdict matches. The
# programs wait for a moment only, so a busy machine may spoil some of the attempts.
expect_answer() {
  for _ in 1 2 3 4 5; do
    answer="$(answer_to "$1" "$2")"
    ! grep -qx "$3" <<<"$answer" || ! is_known "$2" || return 0
  done
  is_known "$2" || echo "examples_test: asked without the device's identifier" >&2
  expect "$answer" "$3"
  exit 1
}

# shown_in DOCUMENT NUMBER PROGRAM: the document's C++ block of that number is the program.
shown_in() {
  diff <(awk -v wanted="$2" '/^```$/ {shown = 0} shown {print}
    /^```cpp$/ {if (++count == wanted) shown = 1}' "$project/$1") "$project/examples/$3"
}

expect_answer VERY_HIGH first_verdict 'Ask for a second factor.'
expect "$answer" '.* is VERY_HIGH, signed .*'
expect_answer LOW first_verdict 'Let the user in.'

readonly nobody=http://127.0.0.1:1/
expect_answer VERY_HIGH fail_open 'Ask for a second factor.'
expect_answer LOW fail_open 'Let the user in.'
expect "$("$programs/fail_open" "$nobody")" 'No verdict: let the user in, and count it.'
expect_answer VERY_HIGH fail_closed 'Hold the transfer.'
expect_answer MEDIUM fail_closed 'Send the transfer with [^ ]*\.[^ ]*\.[^ ]*'
expect "$("$programs/fail_closed" "$nobody")" 'Hold the transfer.'

shown_in README.md 1 first_verdict.cpp
shown_in docs/integration.md 2 fail_open.cpp
shown_in docs/integration.md 3 fail_closed.cpp
