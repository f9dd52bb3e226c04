#!/usr/bin/env bash
# windows-deps.sh - the third-party libraries for Windows x64, as one prefix that CMake's find_package searches.
#
#   scripts/windows-deps.sh                 builds what is missing; prints the prefix, and only that, on stdout
#   scripts/windows-deps.sh --update        asks the distribution for newer sources first
#   scripts/windows-deps.sh --print-prefix  never builds; fails when the prefix is not complete
#
# Libraries with code of their own are built as static ones from the distribution's source packages, which apt
# checks against the archive's signatures. Header-only libraries and GoogleTest come from the distribution's
# development packages: headers are the same on every platform.
#
# Everything lives in one cache folder:
#
#   windows-sources/             the source packages, and in `versions` what was taken
#   windows-deps-<key>/          a complete prefix; the key covers all versions, the compiler and this script
#   windows-deps-<key>.partial/  a prefix in the making; .built/ names the libraries that are done
#   windows-deps-<key>.build/    unpacked sources, removed when all is done
#   logs/                        what each step printed
#
# An interrupted run goes on where it stopped, a library at a time.
set -euo pipefail

readonly kHost=x86_64-w64-mingw32
readonly kJobs=${DRIVELOG_JOBS:-2}
readonly kCache=${DRIVELOG_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/drivelog}
readonly kSources=$kCache/windows-sources

# Source packages in the order of their building, each with the oldest version that serves.
readonly kSourcePackages=(zlib=1.2.13 openssl=3.0 curl=7.88 sqlite3=3.40 libjsoncpp=1.9.5 nng=1.5 cpp-httplib=0.11)
readonly kDevelopmentPackages=(libutfcpp-dev libsimpleini-dev libcli11-dev libspdlog-dev libfmt-dev googletest)
readonly kCompilerPackage=g++-mingw-w64-x86-64-posix

say() { echo "windows-deps: $*" >&2; }

fail() {
  say "$*"
  exit 1
}

# Runs a command quietly, in a subshell; when it fails the script ends, and report_end shows the end of the log.
step() {
  local name=$1
  shift
  mkdir -p "$kCache/logs"
  current_log=$kCache/logs/windows-$name.log
  ("$@") >"$current_log" 2>&1 </dev/null
  current_log=
}

current_log=
private_apt=
report_end() {
  local status=$?
  if ((status != 0)) && [[ -n $current_log ]]; then
    say "failed; the end of $current_log:"
    tail -n 40 "$current_log" >&2
  fi
  [[ -z $private_apt ]] || rm -rf "$private_apt"
}
trap report_end EXIT

# --- the source packages ----------------------------------------------------------------------------------------

# apt with the system's own sources, read as source entries, and with folders of its own: the system's
# configuration and lists stay as they are.
prepare_private_apt() {
  local LIST PARTS file
  private_apt=$(mktemp -d)
  mkdir -p "$private_apt"/{parts,lists/partial,cache/archives/partial}
  eval "$(apt-config shell LIST Dir::Etc::sourcelist/f PARTS Dir::Etc::sourceparts/d)"
  for file in "$LIST" "$PARTS"/*.list; do
    [[ -f $file ]] || continue
    sed -nE 's/^[[:space:]]*deb([[:space:]])/deb-src\1/p' "$file" >"$private_apt/parts/${file##*/}"
  done
  for file in "$PARTS"/*.sources; do
    [[ -f $file ]] || continue
    sed -E 's/^Types:.*/Types: deb-src/' "$file" >"$private_apt/parts/${file##*/}"
  done
  apt_options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$private_apt/parts"
               -o "Dir::State::lists=$private_apt/lists" -o "Dir::Cache=$private_apt/cache")
  # The user that apt changes to when root runs it cannot read these folders.
  ((EUID != 0)) || apt_options+=(-o APT::Sandbox::User=root)
}

# Takes the newest version that the archive can deliver: a mirror may list a version before it holds the files.
fetch_source() {
  local package=$1 oldest=$2 version
  for version in $(apt-cache "${apt_options[@]}" madison "$package" | awk '{ print $3 }' | sort -ruV); do
    dpkg --compare-versions "${version#*:}" ge "$oldest" || continue
    if apt-get "${apt_options[@]}" -q source --download-only --only-source "$package=$version"; then
      echo "$package $version" >>versions
      return 0
    fi
    echo "$package $version cannot be had, trying the next older one"
  done
  echo "no source package $package of version $oldest or newer; are all of the system's archives reachable?"
  return 1
}

fetch_all_sources() {
  local entry
  rm -rf "$kSources.partial"
  mkdir "$kSources.partial"
  cd "$kSources.partial"
  # An archive of somebody else that carries no sources must not stop us.
  apt-get "${apt_options[@]}" -q update || echo "not every archive answered"
  for entry in "${kSourcePackages[@]}"; do
    fetch_source "${entry%%=*}" "${entry#*=}"
  done
  rm -rf "$kSources"
  mv -T "$kSources.partial" "$kSources"
}

# The version of a source package that was taken; nothing when none was.
taken_version() {
  awk -v name="$1" '$1 == name { print $2 }' "$kSources/versions"
}

have_sources() {
  local entry version
  [[ -f $kSources/versions ]] || return 1
  for entry in "${kSourcePackages[@]}"; do
    version=$(taken_version "${entry%%=*}")
    [[ -n $version ]] && dpkg --compare-versions "${version#*:}" ge "${entry#*=}" || return 1
  done
}

fetch_sources() {
  say "fetching source packages: ${kSourcePackages[*]%%=*}"
  prepare_private_apt
  step sources fetch_all_sources
  say "$(paste -sd, "$kSources/versions" | sed 's/,/, /g')"
}

# --- the libraries ----------------------------------------------------------------------------------------------
# Each function runs in the library's unpacked source and installs into $partial.

readonly kCFlags=(-O2 -DNDEBUG "-ffile-prefix-map=$kCache=.")

cmake_install() {
  cmake -S "$1" -B cross-build -G Ninja \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=AMD64 \
    -DCMAKE_C_COMPILER=$kHost-gcc-posix -DCMAKE_CXX_COMPILER=$kHost-g++-posix -DCMAKE_RC_COMPILER=$kHost-windres \
    -DCMAKE_C_FLAGS="${kCFlags[*]}" -DCMAKE_CXX_FLAGS="${kCFlags[*]}" -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_FIND_ROOT_PATH="$partial" -DCMAKE_PREFIX_PATH="$partial" \
    -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY \
    -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY \
    -DCMAKE_INSTALL_PREFIX="$partial" -DCMAKE_INSTALL_LIBDIR=lib -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "${@:2}"
  cmake --build cross-build -j "$kJobs"
  cmake --install cross-build
}

# The package lacks upstream's makefile for this compiler.
build_zlib() {
  $kHost-gcc-posix "${kCFlags[@]}" -c ./*.c
  mkdir -p "$partial/lib"
  $kHost-ar rcs "$partial/lib/libz.a" ./*.o
  install -D -m 644 -t "$partial/include" zlib.h zconf.h
}

# No configuration file is read at start: what stands in some folder of the machine is not the host's choice.
# Plain flags, since the library repeats them in its version text.
build_openssl() {
  CC=$kHost-gcc-posix AR=$kHost-ar RANLIB=$kHost-ranlib RC=$kHost-windres CFLAGS=-O2 \
    perl ./Configure mingw64 no-shared no-module no-engine no-tests no-autoload-config \
    --prefix=/ --libdir=lib --openssldir='C:/Program Files/Common Files/SSL'
  make -j "$kJobs" build_libs
  make install_dev DESTDIR="$partial"
}

build_curl() {
  cmake_install . -DHTTP_ONLY=ON -DCURL_USE_OPENSSL=ON -DCURL_USE_LIBSSH2=OFF -DUSE_LIBIDN2=OFF -DUSE_NGHTTP2=OFF \
    -DCURL_BROTLI=OFF -DCURL_ZSTD=OFF -DCURL_DISABLE_NTLM=ON -DENABLE_UNICODE=ON -DENABLE_MANUAL=OFF \
    -DBUILD_CURL_EXE=OFF -DCURL_CA_BUNDLE=none -DCURL_CA_PATH=none
}

# The sources are in pieces; one file is made of them by programs that run on the building machine.
build_sqlite3() {
  ./configure --disable-tcl --disable-readline
  make sqlite3.c
  $kHost-gcc-posix "${kCFlags[@]}" -DSQLITE_THREADSAFE=1 -DSQLITE_OMIT_LOAD_EXTENSION -c sqlite3.c -o sqlite3.o
  mkdir -p "$partial/lib"
  $kHost-ar rcs "$partial/lib/libsqlite3.a" sqlite3.o
  install -D -m 644 -t "$partial/include" sqlite3.h
}

build_libjsoncpp() {
  cmake_install . -DBUILD_STATIC_LIBS=ON -DBUILD_OBJECT_LIBS=OFF -DJSONCPP_WITH_TESTS=OFF \
    -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF -DJSONCPP_WITH_PKGCONFIG_SUPPORT=OFF
}

# A peer that leaves before its pipe is accepted must not make the listener turn for ever.
build_nng() {
  patch -p1 <<'END'
--- a/src/platform/windows/win_ipclisten.c
+++ b/src/platform/windows/win_ipclisten.c
@@ -106,7 +106,11 @@
 			ipc_accept_done(l, 0);
 		} else {
 			// Fast-fail (synchronous).
-			nni_aio_finish_error(aio, nni_win_error(rv));
+			DisconnectNamedPipe(l->f);
+			if (rv != ERROR_NO_DATA) {
+				nni_list_remove(&l->aios, aio);
+				nni_aio_finish_error(aio, nni_win_error(rv));
+			}
 		}
 	}
 }
END
  cmake_install . -DNNG_TESTS=OFF -DNNG_TOOLS=OFF -DNNG_ENABLE_HTTP=OFF
}

# The development package declares what a shared library of Linux defines; the source package's header is whole.
build_cpp-httplib() {
  install -D -m 644 -t "$partial/include" httplib.h
}

build_googletest() {
  cmake_install /usr/src/googletest -DBUILD_GMOCK=OFF
}

# header_package NAME TARGET SUBFOLDER [DEFINITION...]: the package file of a library that is only headers.
header_package() {
  local folder=$partial/lib/cmake/$1
  mkdir -p "$folder"
  cat >"$folder/$1Config.cmake" <<END
get_filename_component(prefix "\${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
if(NOT TARGET $2)
  add_library($2 INTERFACE IMPORTED)
  set_target_properties($2 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "\${prefix}/$3"
                        INTERFACE_COMPILE_DEFINITIONS "${*:4}")
endif()
END
}

build_headers() {
  mkdir -p "$partial/include"
  cp -r /usr/include/utf8cpp /usr/include/SimpleIni.h /usr/include/CLI /usr/include/spdlog \
    /usr/include/fmt "$partial/include"
  header_package utf8cpp utf8cpp::utf8cpp include/utf8cpp
  header_package CLI11 CLI11::CLI11 include
  header_package spdlog spdlog::spdlog include "SPDLOG_FMT_EXTERNAL;FMT_HEADER_ONLY"
}

# Builds one library unless an earlier run has done so.
build() {
  local name=$1 source=$build/$1
  [[ ! -e $partial/.built/$name ]] || return 0
  say "building $name"
  mkdir -p "$build"
  rm -rf "$source"
  step "$name" build_in "$name" "$source"
  mkdir -p "$partial/.built"
  touch "$partial/.built/$name"
  rm -rf "$source"
}

build_in() {
  local name=$1 source=$2 version
  version=$(taken_version "$name")
  if [[ -n $version ]]; then
    dpkg-source --no-copy -x "$kSources/${name}_${version#*:}.dsc" "$source"
  else
    mkdir -p "$source"
  fi
  cd "$source"
  "build_$name"
}

# --- main -------------------------------------------------------------------------------------------------------

# What the prefix is made of, a line each; nothing when that cannot be said yet.
describe() {
  [[ -f $kSources/versions ]] || return 0
  cat "$kSources/versions"
  # Packages that are not installed are left out.
  dpkg-query -W -f '${db:Status-Abbrev} ${Package} ${Version}\n' "$kCompilerPackage" "${kDevelopmentPackages[@]}" \
    2>/dev/null | awk '$1 == "ii" { print $2, $3 }' | sort || true
  echo "recipe $(sha256sum <"${BASH_SOURCE[0]}" | cut -c 1-12)"
}

set_prefix() {
  prefix=$kCache/windows-deps-$(describe | sha256sum | cut -c 1-12)
  partial=$prefix.partial
  build=$prefix.build
}

main() {
  local update=no entry
  set_prefix
  case ${1:-} in
    '') ;;
    --update) update=yes ;;
    --print-prefix)
      [[ -d $prefix ]] || fail "not built yet; run scripts/windows-deps.sh"
      echo "$prefix"
      return
      ;;
    *) fail "unknown argument $1 (see the head of this file)" ;;
  esac

  if [[ $update == yes || ! -d $prefix ]]; then
    mkdir -p "$kCache"
    exec 9>"$kCache/windows-deps.lock"
    flock -n 9 || { say "waiting for another run to end"; flock 9; }
    "$(dirname "${BASH_SOURCE[0]}")/setup.sh" cross >&2
    if [[ $update == yes ]] || ! have_sources; then
      fetch_sources
    fi
    set_prefix
  fi
  if [[ ! -d $prefix ]]; then
    say "building into $prefix, which takes some minutes"
    for entry in "${kSourcePackages[@]}"; do
      build "${entry%%=*}"
    done
    build googletest
    build headers
    rm -rf "$build" "${partial:?}"/{bin,share,lib/pkgconfig}
    describe >"$partial/versions"
    mv -T "$partial" "$prefix"
  fi
  echo "$prefix"
}

main "$@"; exit
