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

# expect OUTPUT PATTERN: a whole line of it matches.
expect() {
  grep -qx "$2" <<<"$1" || {
    echo "examples_test: no line \"$2\" in:" "$1" >&2
    exit 1
  }
}

# shown_in DOCUMENT NUMBER PROGRAM: the document's C++ block of that number is the program.
shown_in() {
  diff <(awk -v wanted="$2" '/^```$/ {shown = 0} shown {print}
    /^```cpp$/ {if (++count == wanted) shown = 1}' "$project/$1") "$project/examples/$3"
}

answer="$(answer_to VERY_HIGH first_verdict)"
expect "$answer" '.* is VERY_HIGH, signed .*'
expect "$answer" 'Ask for a second factor.'
if grep '"path":"/qrsk-med/3.0/GetCheckpointRisk/"' "$folder/calls" | grep -q no_device_id; then
  echo "examples_test: the verdict was asked for without the device's identifier" >&2
  exit 1
fi
expect "$(answer_to LOW first_verdict)" 'Let the user in.'

readonly nobody=http://127.0.0.1:1/
expect "$(answer_to VERY_HIGH fail_open)" 'Ask for a second factor.'
expect "$(answer_to LOW fail_open)" 'Let the user in.'
expect "$("$programs/fail_open" "$nobody")" 'No verdict: let the user in, and count it.'
expect "$(answer_to VERY_HIGH fail_closed)" 'Hold the transfer.'
expect "$(answer_to MEDIUM fail_closed)" 'Send the transfer with [^ ]*\.[^ ]*\.[^ ]*'
expect "$("$programs/fail_closed" "$nobody")" 'Hold the transfer.'

shown_in README.md 1 first_verdict.cpp
shown_in docs/integration.md 2 fail_open.cpp
shown_in docs/integration.md 3 fail_closed.cpp
