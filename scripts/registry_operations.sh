#!/usr/bin/env bash
# All operations of the EPSG registry by their codes, each through a conversion and by PROJ at nine points
# of its area, both ways: a line each in build/registry_operations.txt, and how many came out how. Grids
# are taken from the folder grids of GEOMATH_REFERENCE_DATA and from PROJ's own. A minute. Installs what is
# missing on Debian or Ubuntu.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" libgtest-dev
ensure_one_of libproj-dev

build=build/release
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_TESTS=ON >/dev/null
cmake --build $build --target epsg_peer_test
result=0
GEOMATH_OPERATIONS=all $build/tests/files/epsg_peer_test --gtest_filter='OperationsOfTheRegistry.*' \
  --gtest_brief=1 >build/registry_operations.txt || result=$?
awk -F'\t' '/^EPSG:/ {
    why = $6
    if (why ~ /PROJ: /) why = "not done by PROJ: " substr(why, 7)
    else if (why ~ /needs the file/) why = "not read here: a file is not found"
    else if (why ~ /counts depths/) why = "not read here: depths"
    else if (why ~ /not known here|no operation/) why = "not read here: its method"
    else if (why != "") why = "not read here: " why
    if (why != "" && $6 ~ /PROJ runs it/) why = why " (PROJ runs it)"
    count[why == "" ? $2 : why]++
  }
  END { for (each in count) printf "%5d %s\n", count[each], each }' build/registry_operations.txt | sort -rn
exit $result
