#!/usr/bin/env bash
# format.sh [--check] - lays out all sources by .clang-format, or says which of them are laid out otherwise.
#
# Another version of clang-format has other opinions: the layout is that of version 14.
set -euo pipefail
cd "$(dirname "$0")/.."

arguments=(-i)
case ${1:-} in
  "") ;;
  --check) arguments=(--dry-run -Werror) ;;
  *)
    echo "usage: format.sh [--check]" >&2
    exit 2
    ;;
esac

git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' | while read -r file; do
  [ ! -e "$file" ] || printf '%s\0' "$file"
done | xargs -0 -r clang-format "${arguments[@]}"
