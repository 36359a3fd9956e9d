#!/usr/bin/env bash
# Uses QorMath the three ways the README offers an application, in a temporary
# directory, building and running tests/consumer each time:
#   1. find_package(QorMath CONFIG) against a fresh `cmake --install` of <build-dir>;
#   2. add_subdirectory(<this checkout>), which must bring the library alone;
#   3. a plain compile with the installed qormath.pc's flags and an rpath.
# Any failure stops the script with a message and the failing step's output.
#   scripts/consumer-check.sh <build-dir>     (a configured QorMath build of this checkout)
# Environment: JOBS (parallel jobs, default 2), WERROR=ON (warnings are errors),
# CXX (the compiler, default c++).
set -euo pipefail

if [ $# -ne 1 ]; then
  echo "usage: $0 <QorMath build dir>" >&2
  exit 2
fi
fail() {
  echo "consumer-check: FAILED: $*" >&2
  exit 1
}
[ -f "$1/CMakeCache.txt" ] || fail "$1 is not a configured QorMath build directory"

root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)
jobs=${JOBS:-2}
werror=${WERROR:-OFF}
cxx=${CXX:-c++}
cache() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
[ "$(cache CMAKE_HOME_DIRECTORY)" = "$root" ] || fail "$build was configured from $(cache CMAKE_HOME_DIRECTORY), not $root"
libdir=$(cache CMAKE_INSTALL_LIBDIR)
includedir=$(cache CMAKE_INSTALL_INCLUDEDIR)

tmp=$(mktemp -d "${TMPDIR:-/tmp}/qormath-consumer.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
prefix=$tmp/prefix

# Runs a command with its output kept back unless it fails.
quiet() {
  "$@" >"$tmp/log" 2>&1 || { cat "$tmp/log" >&2; return 1; }
}
# The consumer runs, and it loaded libqormath from $2 (not some other copy).
run_consumer() {
  local exe=$1 want=$2 got
  quiet "$exe" || fail "$exe reported wrong results"
  got=$(ldd "$exe" | sed -n 's/^[[:space:]]*libqormath\.so\.[0-9]* => \([^ ]*\) .*/\1/p')
  [ "$(dirname "$(readlink -f "$got")")" = "$(readlink -f "$want")" ] ||
    fail "$exe loads libqormath from '${got:-nowhere}', expected $want"
}
configure_consumer() {
  quiet cmake -S "$root/tests/consumer" -B "$1" -DCMAKE_BUILD_TYPE=Release -DCONSUMER_WERROR="$werror" "${@:2}"
}

echo "consumer-check: installing $build into a fresh prefix"
quiet cmake --build "$build" --target QorMath -j "$jobs" || fail "building the library in $build"
quiet cmake --install "$build" --prefix "$prefix" || fail "cmake --install $build --prefix $prefix"
for f in "$includedir/QorMath/QorMath.h" "$libdir/libqormath.so" "$libdir/cmake/QorMath/QorMathConfig.cmake" \
         "$libdir/cmake/QorMath/QorMathTargets.cmake" "$libdir/pkgconfig/qormath.pc"; do
  [ -e "$prefix/$f" ] || fail "the install lacks $f"
done

echo "consumer-check: find_package(QorMath CONFIG REQUIRED)"
configure_consumer "$tmp/find" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF -DCMAKE_FIND_USE_SYSTEM_PACKAGE_REGISTRY=OFF ||
  fail "configuring the consumer with find_package"
found=$(sed -n 's/^QorMath_DIR:PATH=//p' "$tmp/find/CMakeCache.txt")
[ "$found" = "$prefix/$libdir/cmake/QorMath" ] || fail "find_package found QorMath in '$found', not in the fresh prefix"
quiet cmake --build "$tmp/find" -j "$jobs" || fail "building the consumer with find_package"
run_consumer "$tmp/find/consumer" "$prefix/$libdir"

echo "consumer-check: add_subdirectory($root)"
configure_consumer "$tmp/sub" -DQORMATH_CHECKOUT="$root" -DQORMATH_WERROR="$werror" ||
  fail "configuring the consumer with add_subdirectory"
quiet cmake --build "$tmp/sub" -j "$jobs" || fail "building the consumer with add_subdirectory"
run_consumer "$tmp/sub/consumer" "$tmp/sub/qormath"

echo "consumer-check: pkg-config qormath"
pcflags=$(PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" pkg-config --cflags --libs qormath) ||
  fail "pkg-config cannot read $prefix/$libdir/pkgconfig/qormath.pc"
# Its -I and -L must lead into the prefix it was installed into (either
# spelled out or relative to the .pc file's own directory).
inc_ok=0 lib_ok=0
# shellcheck disable=SC2086
for w in $pcflags; do
  case $w in
    -I*) [ "$(realpath -m "${w#-I}")" = "$(realpath -m "$prefix/$includedir")" ] && inc_ok=1 ;;
    -L*) [ "$(realpath -m "${w#-L}")" = "$(realpath -m "$prefix/$libdir")" ] && lib_ok=1 ;;
  esac
done
if [ $inc_ok = 0 ] || [ $lib_ok = 0 ]; then
  fail "qormath.pc installed into $prefix gives '$pcflags': it does not point into its own prefix"
fi
werror_flag=()
[ "$werror" = ON ] && werror_flag=(-Werror)
mkdir "$tmp/pc"
# shellcheck disable=SC2086  # pkg-config's flags are meant to split into words
quiet "$cxx" -std=c++17 -O2 -Wall -Wextra -Wpedantic "${werror_flag[@]}" "$root/tests/consumer/main.cpp" \
  $pcflags -Wl,-rpath,"$prefix/$libdir" -o "$tmp/pc/consumer" || fail "compiling with pkg-config's flags"
run_consumer "$tmp/pc/consumer" "$prefix/$libdir"

echo "consumer-check: all three ways build and run"
