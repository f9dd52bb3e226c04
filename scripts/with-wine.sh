#!/usr/bin/env bash
# with-wine.sh COMMAND... - runs a command whose Windows programs have a new, empty Windows by Wine.
#
# The command finds the program `wine64`, and where that Windows has its drive C: in $WINEPREFIX/drive_c. It
# is gone when the command has ended.
set -euo pipefail

# Debian puts Wine's programs outside of the PATH.
export PATH=$PATH:/usr/lib/wine
wine_server=$(command -v wineserver64 || command -v wineserver)
folder=$(mktemp -d)
export WINEPREFIX=$folder/prefix WINEDEBUG=${WINEDEBUG:--all}
clean_up() {
  "$wine_server" --kill 2>/dev/null || true
  "$wine_server" --wait 2>/dev/null || true
  rm -rf "$folder"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Programs that start side by side must not each begin to make it.
wine64 wineboot --init >/dev/null 2>&1
"$@"
