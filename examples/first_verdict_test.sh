#!/usr/bin/env bash
# first_verdict_test.sh FIRST_VERDICT RISK_SERVER README: what the example does about two verdicts of
# the local risk server; and the README shows the program as it stands.
set -euo pipefail

example="$1" server="$2" readme="$3"
folder="$(mktemp -d)"
serverProcess=
trap 'test -z "$serverProcess" || kill "$serverProcess"; rm -rf "$folder"' EXIT
export XDG_DATA_HOME="$folder/data"
mkfifo "$folder/ready"

answer_to() {
  echo "[{\"risk\": \"$1\"}]" >"$folder/rules.json"
  "$server" --rules "$folder/rules.json" >"$folder/ready" &
  serverProcess=$!
  local ready
  read -r ready <"$folder/ready"
  "$example" "${ready#risk server ready at }"
  kill "$serverProcess"
  wait "$serverProcess" || true
  serverProcess=
}

expect() {
  grep -qx "$2" <<<"$1" || {
    echo "first_verdict_test: no line \"$2\" in:" "$1" >&2
    exit 1
  }
}

answer="$(answer_to VERY_HIGH)"
expect "$answer" '.* is VERY_HIGH, signed .*'
expect "$answer" 'Ask for a second factor.'
expect "$(answer_to LOW)" 'Let the user in.'
diff <(sed -n '/^```cpp$/,/^```$/p' "$readme" | sed '1d;$d') "$(dirname "$0")/first_verdict.cpp"
