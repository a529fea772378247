#!/usr/bin/env bash
# package_test.sh shared|static SOURCE_DIR TREE WORK_DIR LIBDIR COMPILER
# Installs the libraries of a build tree into a folder of its own, moves it, then builds and runs small
# programs outside the tree against the installed package, once by find_package and once by pkg-config.
# An empty TREE stands for one that is built here.
set -euo pipefail
kind=$1 source=$2 tree=$3 work=$4 libdir=$5 compiler=$6
outside=$source/tests/package/outside

rm -rf "$work/prefix" "$work/moved" "$work/by-cmake"
mkdir -p "$work"
if [ -z "$tree" ]; then
  tree=$work/library
  # What is tested is the package, not its speed.
  cmake -S "$source" -B "$tree" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
    -DBUILD_SHARED_LIBS="$([ "$kind" = shared ] && echo ON || echo OFF)" -DGEOMATH_BUILD_FILES=ON \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_INSTALL_LIBDIR="$libdir"
  cmake --build "$tree"
fi
for component in library development; do
  cmake --install "$tree" --component "$component" --prefix "$work/prefix"
done
mv "$work/prefix" "$work/moved"  # nothing may hang on the place of the installation
prefix=$work/moved

# The installed headers: those that the umbrella header includes and itself. Each compiles alone, which
# it would not if it included one that is not installed.
check_headers() { # FOLDER UMBRELLA: folder of includes, umbrella header in it
  local tree=${2%%/*}
  cd "$prefix/$1"
  diff <({ echo "$2"; sed -n "s|^#include \"\($tree/.*\)\"|\1|p" "$2"; } | sort) \
    <(find "$tree" -type f | sort)
  find "$tree" -name '*.h' -print0 |
    xargs -0 -P 2 -I {} sh -c 'echo "#include \"$1\"" | "$2" -std=c++20 -I. -I"$3" -fsyntax-only -x c++ -' \
      compile {} "$compiler" "$prefix/include"
  cd - > /dev/null
}
if [ "$kind" = shared ]; then
  check_headers include geomath/geomath.h
  check_headers include/geomath-files files/files.h
fi

cd "$work"  # the programs write here
cmake -S "$outside" -B "$work/by-cmake" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$work/by-cmake"
"$work/by-cmake/outside"
"$work/by-cmake/outside_files" "$source/examples"

export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
build_by_pkg_config() { # PACKAGE PROGRAM
  # shellcheck disable=SC2046
  "$compiler" -std=c++20 $(pkg-config --cflags "$1") "$outside/$2.cc" -o "$work/$2-by-pkg-config" \
    $(pkg-config --libs "$1") -Wl,-rpath,"$prefix/$libdir"
}
build_by_pkg_config geomath outside
"$work/outside-by-pkg-config"
if [ "$kind" = shared ]; then  # what the archives stand on comes as archives nowhere
  build_by_pkg_config geomath-files outside_files
  "$work/outside_files-by-pkg-config" "$source/examples"
fi

# Headers for users bring in none of other libraries.
foreign=$("$compiler" -std=c++20 -M -I"$prefix/include/geomath-files" -I"$prefix/include" \
  "$prefix/include/geomath-files/files/files.h" | grep -oE '[^ ]*/(gdal|ogr|cpl|proj|nlohmann|fmt)[^ /]*(\.h|/)[^ ]*' |
  grep -v "^$prefix/" || true)
[ -z "$foreign" ] || { echo "files/files.h includes $foreign" >&2; exit 1; }

suffix=$([ "$kind" = shared ] && echo so || echo a)
for library in geomath geomath_files_core geomath_files; do
  test -e "$prefix/$libdir/lib$library.$suffix"
done
