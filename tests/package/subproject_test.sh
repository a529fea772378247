#!/usr/bin/env bash
# subproject_test.sh SOURCE_DIR WORK_DIR COMPILER
# A project that has this one as a folder installs its own files and nothing of geomath.
set -euo pipefail
source=$1 work=$2 compiler=$3

rm -rf "$work"
mkdir -p "$work"
cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(parent LANGUAGES CXX)
add_subdirectory($source geomath)
add_executable(program $source/examples/project_point.cc)
target_link_libraries(program PRIVATE geomath::geomath)
install(FILES CMakeLists.txt DESTINATION share/parent)
END
cmake -S "$work" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler"
cmake --install "$work/build" --prefix "$work/prefix"
diff <(cd "$work/prefix" && find . -type f) <(echo ./share/parent/CMakeLists.txt)
