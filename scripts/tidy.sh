#!/usr/bin/env bash
# tidy.sh [--all | --changed BASE [MOST]] - runs clang-tidy on all sources, or on those that differ from the
# commit BASE.
#
# Default: --changed HEAD~1. A changed header has the sources checked that include it by name. With MOST given,
# more sources than that are too many for the moment, and none is checked.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

usage() {
  echo "usage: tidy.sh [--all | --changed BASE [MOST]]" >&2
  exit 2
}

checked_folders=(bilog client collector commlog examples logdb model operatelog platform transport)

all_sources() {
  git ls-files --cached --others --exclude-standard -- "${checked_folders[@]/%/\/*.cpp}"
}

changed_sources() { # BASE
  local base=$1 file
  { git diff --name-only --diff-filter=d "$base" --
    git ls-files --others --exclude-standard; } | sort -u | while read -r file; do
    case $file in
      tests/* | proofs/* | bench/*) ;;
      *.cpp) echo "$file" ;;
      *.h) all_sources | xargs -r grep -lF "$(basename "$file")\"" || true ;;
    esac
  done | sort -u
}

case ${1:---changed} in
  --all) sources=$(all_sources) ;;
  --changed) sources=$(changed_sources "${2:-HEAD~1}") ;;
  *) usage ;;
esac

# Sources of the other platform have no command in the compile database.
sources=$(grep -v '_win32\.cpp$' <<<"$sources" || true)
if [ -z "$sources" ]; then
  echo "tidy: no source to check"
  exit 0
fi
count=$(wc -l <<<"$sources")
if [ "$count" -gt "${3:-$count}" ]; then
  echo "tidy: $count sources are more than $3 to check in passing; run scripts/tidy.sh for them"
  exit 0
fi
scripts/setup.sh tidy
cmake --preset release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
echo "tidy: checking $count sources"
xargs -P 2 -n 1 clang-tidy -p build/release --quiet <<<"$sources"
echo "tidy: clean"
