#!/usr/bin/env bash
# The long runs behind the uncertainties: a million draws against the covariance of every projection and
# every step, both ways, of which the differences are printed, and of a chain with errors of all its
# parameters; the intervals of 100,000 simulated sites. Some minutes. Installs what is missing on Debian
# or Ubuntu.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" libgtest-dev

build=build/release
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_TESTS=ON >/dev/null
cmake --build $build --target projection_laws_test chain_test adjust_test
export GEOMATH_DRAWS=1000000
$build/tests/proj/methods/projection_laws_test --gtest_filter='*CovariancesEqualDraws*' --gtest_brief=1
$build/tests/chain/chain_test --gtest_filter='ChainUncertainty.EqualsDraws*'
GEOMATH_SITES=100000 $build/tests/adjust/adjust_test --gtest_filter='SiteAdjustment.IntervalsCover*'
