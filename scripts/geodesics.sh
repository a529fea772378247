#!/usr/bin/env bash
# Solves a million geodesics, random and awkward ones, on five figures beside GeographicLib.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}"
ensure_one_of libgeographiclib-dev libgeographic-dev

build=build/release
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_TESTS=ON >/dev/null
cmake --build $build --target geodesic_peer_test
GEOMATH_GEODESIC_PAIRS=170000 $build/tests/geodesic/geodesic_peer_test
