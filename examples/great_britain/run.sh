#!/usr/bin/env bash
# Converts the published points of Great Britain to the national grid, by seven parameters and by the
# grid of shifts that defines it, and back, and compares the results.
#   run.sh GEOMATH_PROGRAM BUILD_DIRECTORY
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
geomath=$1
build=$2
points=$here/points.csv

echo "By seven parameters:"
"$geomath" convert --system "$here/system.json" "$points" -o "$build/great_britain.csv"
"$build/examples/compare_grid" table "$build/great_britain.csv"

echo
echo "By OSTN15, the grid of shifts of Ordnance Survey:"
"$geomath" convert --system "$here/grid.json" "$points" -o "$build/great_britain_grid.csv"
"$build/examples/compare_grid" grid "$build/great_britain_grid.csv"
"$geomath" convert --system "$here/grid.json" --inverse --columns northing_m,easting_m,h \
  --results lat_back,lon_back,h_back "$points" -o "$build/great_britain_back.csv"
"$build/examples/compare_grid" back "$build/great_britain_back.csv"
