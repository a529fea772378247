#!/usr/bin/env bash
# Calibrates a site on its control points and converts its check points without and with the result.
#   run.sh GEOMATH_PROGRAM BUILD_DIRECTORY
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
geomath=$1
build=$2

"$geomath" convert --system "$here/netherlands.json" "$here/check.csv" -o "$build/site_before.csv" \
  --decimals 6
"$geomath" calibrate "$here/control.csv" --system "$here/system.json" -o "$build/site.json" \
  --report "$build/site_report.html"
"$geomath" convert --system "$build/site.json" "$here/check.csv" -o "$build/site_after.csv" --decimals 6
"$build/examples/compare_local" "$build/site_before.csv" "$build/site_after.csv"
