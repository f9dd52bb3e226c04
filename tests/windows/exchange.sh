#!/usr/bin/env bash
# exchange.sh LINUX_BUILD WINDOWS_BUILD - one log database, written by turns on Windows and on Linux.
#
# A Windows client records while its collector is away, a Linux client goes on in the same files, and a Windows
# client delivers what all of them have recorded. To be run by scripts/with-wine.sh.
set -euo pipefail
linux=$1 windows=$2
work=$(mktemp -d)
collector=
clean_up() {
  [ -z "$collector" ] || kill "$collector" 2>/dev/null || true
  rm -rf "$work"
}
trap clean_up EXIT

"$linux/collector/drivelog-collector" --data-dir "$work/collector" --port 0 --ready-file "$work/ready.json" \
  >"$work/collector.log" 2>&1 &
collector=$!
timeout 10 bash -c "until [ -s '$work/ready.json' ]; do sleep 0.1; done"
jq '.url = "https://127.0.0.1:1"' "$work/ready.json" >"$work/away.json"

data=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Roaming)
on_windows() { env HOME="$work" wine64 "$windows/bin/sync_folder.exe" "Z:$work/folder" "$@"; }
on_linux() {
  env HOME="$work" XDG_CONFIG_HOME="$data" XDG_DATA_HOME="$work/data" "$linux/examples/sync_folder" "$work/folder" "$@"
}
mkdir "$work/folder"
touch "$work/folder"/{report.docx,naïve.txt,図.png}
record() { # CLIENT READY_FILE
  "$1" --collector-ready "$2" --deadline "${3:-1}" 2>&1 | tr -d '\r' | tee -a "$work/output"
}
record on_windows "$work/away.json" || true
record on_linux "$work/away.json" || true
record on_windows "$work/ready.json" 60

url=$(jq -r .url "$work/ready.json")
accepted=$(curl --silent --fail --noproxy '*' --cacert "$(jq -r .ca "$work/ready.json")" "$url/api/counts" |
  jq -r '"maintenance=\(.maintenance.records) operation=\(.operation.records) uba=\(.uba.records)"')
recorded=$(sed -n 's/^recorded: //p' "$work/output" | tr '=' ' ' |
  awk '{ m += $2; o += $4; u += $6 } END { print "maintenance=" m " operation=" o " uba=" u }')
echo "recorded by all: $recorded; accepted: $accepted"
[ "$(grep -c '^recorded: ' "$work/output")" -eq 3 ] && [ "$accepted" = "$recorded" ]
