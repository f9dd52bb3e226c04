#!/usr/bin/env bash
# setup.sh [linux|demo|bench|prove|tidy|cross|windows] - installs what is missing to build, and nothing else.
#
#   linux    compiler, CMake and the libraries; enough to build and to run the tests (default)
#   demo     linux, and the two tools with which the demo asks the collector
#   bench    linux, the benchmark library, and the tool that makes the table
#   prove    linux, the compiler with the fuzzer, and the memory checker
#   tidy     linux, and the tools of static checks and of layout
#   cross    linux, the cross compiler, and what the libraries for Windows are built with
#   windows  cross and Wine, and the libraries built for Windows
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:-linux}

packages=(g++ cmake ninja-build git
  libsqlite3-dev libcurl4-openssl-dev libjsoncpp-dev zlib1g-dev libssl-dev libutfcpp-dev libsimpleini-dev
  libspdlog-dev libnng-dev libcpp-httplib-dev libcli11-dev libgtest-dev)
cross_packages=(g++-mingw-w64-x86-64-posix dpkg-dev gcc make perl tcl libfmt-dev googletest)
case $kind in
  linux) ;;
  demo) packages+=(curl jq) ;;
  bench) packages+=(libbenchmark-dev jq) ;;
  prove) packages+=(clang libclang-rt-14-dev valgrind) ;;
  tidy) packages+=(clang-format clang-tidy) ;;
  cross) packages+=("${cross_packages[@]}") ;;
  windows) packages+=("${cross_packages[@]}" wine64) ;;
  *)
    echo "usage: setup.sh [linux|demo|bench|prove|tidy|cross|windows]" >&2
    exit 2
    ;;
esac

is_installed() {
  [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

install_missing() {
  if ! command -v apt-get >/dev/null; then
    echo "setup: no apt-get here; these packages, or what your system calls them, have to be there:" \
      "${packages[*]}"
    return
  fi
  local missing=() package
  for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all packages for $kind are there"
    return
  fi
  echo "setup: installing ${missing[*]}"
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

install_missing
if [ "$kind" = windows ]; then
  "$root/scripts/windows-deps.sh"
fi
