#!/usr/bin/env bash
# package_test.sh shared|static SOURCE_DIR WORK_DIR COMPILER
# Builds and installs the library into a folder of its own, then builds and runs a small program
# outside the tree against the installed package, once by find_package and once by pkg-config.
set -euo pipefail
kind=$1 source=$2 work=$3 compiler=$4
outside=$source/tests/package/outside
shared=$([ "$kind" = shared ] && echo ON || echo OFF)

rm -rf "$work/prefix" "$work/by-cmake"
mkdir -p "$work"
cmake -S "$source" -B "$work/library" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DBUILD_SHARED_LIBS="$shared" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_INSTALL_PREFIX="$work/prefix" -DCMAKE_INSTALL_LIBDIR=lib
cmake --build "$work/library"
cmake --install "$work/library"

# The installed headers: those that geomath.h includes and itself. Each compiles alone, which it would
# not if it included one that is not installed.
if [ "$kind" = shared ]; then
  cd "$work/prefix/include"
  diff <({ echo geomath/geomath.h; sed -n 's/^#include "\(geomath\/.*\)"/\1/p' geomath/geomath.h; } | sort) \
    <(find geomath -type f | sort)
  find geomath -name '*.h' -print0 |
    xargs -0 -P 2 -I {} sh -c 'echo "#include \"$1\"" | "$2" -std=c++20 -I. -fsyntax-only -x c++ -' \
      compile {} "$compiler"
  cd - > /dev/null
fi

cmake -S "$outside" -B "$work/by-cmake" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$work/by-cmake"
"$work/by-cmake/outside"

export PKG_CONFIG_PATH=$work/prefix/lib/pkgconfig
# shellcheck disable=SC2046
"$compiler" -std=c++20 $(pkg-config --cflags geomath) "$outside/outside.cc" -o "$work/by-pkg-config" \
  $(pkg-config --libs geomath) -Wl,-rpath,"$work/prefix/lib"
"$work/by-pkg-config"

if [ "$kind" = shared ]; then
  test -e "$work/prefix/lib/libgeomath.so"
else
  test -e "$work/prefix/lib/libgeomath.a"
fi
