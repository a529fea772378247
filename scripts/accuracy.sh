#!/usr/bin/env bash
# Writes docs/accuracy.md: how far the results of the library are from exact ones. Installs what is
# missing on Debian or Ubuntu and builds Release.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" libbenchmark-dev
ensure_one_of libproj-dev
ensure_one_of libgeographiclib-dev libgeographic-dev

build=build/bench
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_BENCH=ON >/dev/null
cmake --build $build --target accuracy
git diff --stat -- docs/accuracy.md
