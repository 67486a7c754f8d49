#!/usr/bin/env bash
# consumers_test.sh C_PROGRAM LIBRARY RISK_SERVER: hosts in C and in Python get their verdict, and what they report
# reaches the server. Without a library there is no host in Python.
set -euo pipefail

program="$1" library="$2" server="$3"
folder="$(mktemp -d)"
serverProcess=
trap 'test -z "$serverProcess" || kill "$serverProcess"; rm -rf "$folder"' EXIT
mkfifo "$folder/ready"
echo '[{"risk": "HIGH"}]' >"$folder/rules.json"
"$server" --rules "$folder/rules.json" --log "$folder/log" >"$folder/ready" &
serverProcess=$!
read -r ready <"$folder/ready"
url="${ready#risk server ready at }"

expect() {
  [[ "$1" == "$2" ]] || {
    echo "consumers_test: \"$1\" instead of \"$2\"" >&2
    exit 1
  }
}

expect "$("$program" "$url" "$folder/c")" 'HIGH, answered'
[[ -z "$library" ]] || expect "$(python3 -B "$(dirname "$0")/consumer.py" "$library" "$url" "$folder/python")" 'HIGH, answered'
for sent in /GetCheckpointRisk/ /UpdateTransactionResult/ '"eventList":[[15.0,25.0,4.0,1.0,1.0],'; do
  grep -qF "$sent" "$folder/log" || {
    echo "consumers_test: nobody sent $sent; the server saw:" >&2
    cat "$folder/log" >&2
    exit 1
  }
done
