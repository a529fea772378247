#!/usr/bin/env bash
# Converts the published points of Great Britain to the national grid and compares the result.
#   run.sh GEOMATH_PROGRAM BUILD_DIRECTORY
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
geomath=$1
build=$2

"$geomath" convert --system "$here/system.json" "$here/points.csv" -o "$build/great_britain.csv"
"$build/examples/compare_grid" "$build/great_britain.csv"
