#!/usr/bin/env bash
# demo.sh [FOLDER] [--limit N] [--windows] - logs a folder (default: this tree) to a real collector and shows what
# arrived. With --windows the client is the one for Windows, run by Wine.
#
# Sets the machine up, builds, starts the development collector on loopback, runs the example client with a
# home folder of its own, and asks the collector what it accepted. Its last line:
#   delivered: maintenance=N operation=N uba=N; left in database: N
# Fails when the collector did not accept exactly what the client recorded. Nothing stays behind.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$root
limit=500
windows=no

usage() {
  echo "usage: demo.sh [FOLDER] [--limit N] [--windows]" >&2
  exit 2
}
while [ $# -gt 0 ]; do
  case $1 in
    --limit)
      [ $# -ge 2 ] || usage
      limit=$2
      shift
      ;;
    --windows) windows=yes ;;
    -*) usage ;;
    *) folder=$1 ;;
  esac
  shift
done
if [ ! -d "$folder" ]; then
  echo "demo: $folder is not a folder" >&2
  exit 2
fi
folder=$(realpath "$folder")
cd "$root"

scripts/setup.sh demo
launcher=()
! command -v ccache >/dev/null || launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake --preset release "${launcher[@]}" >/dev/null
cmake --build --preset release --target drivelog-collector sync_folder
client=(build/release/examples/sync_folder)
client_folder=$folder
if [ "$windows" = yes ]; then
  scripts/setup.sh windows
  cmake --preset windows "${launcher[@]}" >/dev/null
  cmake --build --preset windows --target sync_folder
  client=(scripts/with-wine.sh wine64 build/windows/bin/sync_folder.exe)
  client_folder=Z:$folder
fi
began=$SECONDS

work=$(mktemp -d)
collector=
clean_up() {
  if [ -n "$collector" ]; then
    kill "$collector" 2>/dev/null || true
    wait "$collector" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

build/release/collector/drivelog-collector --data-dir "$work/collector" --port 0 \
  --ready-file "$work/ready.json" >"$work/collector.log" 2>&1 &
collector=$!
for _ in $(seq 100); do
  [ ! -s "$work/ready.json" ] || break
  sleep 0.1
done
if [ ! -s "$work/ready.json" ]; then
  echo "demo: the collector did not start" >&2
  cat "$work/collector.log" >&2
  exit 1
fi
url=$(jq -r .url "$work/ready.json")
ask() { # PATH
  curl --silent --show-error --fail --noproxy '*' --cacert "$(jq -r .ca "$work/ready.json")" "$url$1"
}

echo "== the client walks $folder"
mkdir -p "$work/home"
# Its own home, so that neither this account's settings nor its records are touched.
env HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" XDG_DATA_HOME="$work/home/data" \
  XDG_RUNTIME_DIR="$work/home" no_proxy='*' NO_PROXY='*' \
  "${client[@]}" "$client_folder" --collector-ready "$work/ready.json" --limit "$limit" | tr -d '\r' |
  tee "$work/client.log" || echo "demo: the client ended with an error" >&2

echo "== one record of each channel, as the collector read it"
for channel in maintenance operation uba; do
  echo "$channel:"
  ask "/api/records?channel=$channel&limit=1" | jq -c '.[0].record'
done
ask /api/counts >"$work/counts.json"
rejected=$(jq '[.[] | .rejected? // 0] | add' "$work/counts.json")

accepted=$(jq -r '"maintenance=\(.maintenance.records) operation=\(.operation.records) uba=\(.uba.records)"' \
  "$work/counts.json")
recorded=$(sed -n 's/^recorded: //p' "$work/client.log")
left=$(sed -n 's/^delivered: .*left in database: //p' "$work/client.log")
echo "== recorded: $recorded; requests that the collector refused: $rejected; $((SECONDS - began)) s"
result=0
if [ "$accepted" != "$recorded" ] || [ "$left" != 0 ] || [ "$rejected" != 0 ]; then
  echo "demo: not everything that was recorded was delivered" >&2
  result=1
fi
echo "delivered: $accepted; left in database: ${left:-unknown}"
exit $result
