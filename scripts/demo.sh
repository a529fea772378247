#!/usr/bin/env bash
# The main job on real data, from a bare Debian or Ubuntu machine: installs what is missing, builds
# the library and the program, converts the published points of Great Britain, and compares.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" "${tool_packages[@]}"

build=build/demo
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_TOOLS=ON >/dev/null
cmake --build $build
geomath=$build/tools/geomath

echo
echo "== Great Britain: 40 published points, by seven parameters and by the grid of shifts =="
examples/great_britain/run.sh $geomath $build

echo
echo "== Netherlands: a site calibrated on 12 control points, 20 check points =="
examples/site/run.sh $geomath $build
