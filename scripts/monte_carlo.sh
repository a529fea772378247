#!/usr/bin/env bash
# The long runs behind the uncertainties: a million draws against the covariance of a chain, and the
# intervals of 100,000 simulated sites. Some minutes. Installs what is missing on Debian or Ubuntu.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" libgtest-dev

build=build/release
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_TESTS=ON >/dev/null
cmake --build $build --target chain_test adjust_test
GEOMATH_DRAWS=1000000 $build/tests/chain/chain_test --gtest_filter='ChainUncertainty.EqualsDraws*'
GEOMATH_SITES=100000 $build/tests/adjust/adjust_test --gtest_filter='SiteAdjustment.IntervalsCover*'
