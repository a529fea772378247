#!/usr/bin/env bash
# wheel_test.sh SOURCE_DIR WORK_DIR PYTHON WERROR
# Installs the Python package by pip into a virtual environment, without network, and uses it there:
# once whole, once with the part that stands on GDAL and PROJ taken away.
set -euo pipefail
source=$1 work=$2 python=$3 werror=$4
if ! "$python" -c "import venv, ensurepip, pip, numpy" 2>/dev/null; then
  echo "skipped: the interpreter has no pip, venv or NumPy"
  exit
fi

rm -rf "$work/venv"
mkdir -p "$work"
"$python" -m venv --system-site-packages "$work/venv"  # for NumPy
# With the options of the tree's own build, whose objects a compiler cache has.
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_WERROR="$werror" \
  -DPython3_EXECUTABLE="$work/venv/bin/python"
export PIP_NO_INDEX=1 PIP_DISABLE_PIP_VERSION_CHECK=1
"$work/venv/bin/pip" install --no-build-isolation --force-reinstall --no-deps \
  --config-settings "build-dir=$work/build" "$source"

cd "$work"  # not in the source, whose python/geomath has no compiled part
unset PYTHONPATH
cat >use.py <<'END'
import sys
import numpy as np
import geomath

assert geomath.__file__.startswith(sys.prefix), geomath.__file__
assert "libgdal" not in open("/proc/self/maps").read(), "the core has loaded GDAL"
examples = sys.argv[1]
chain = geomath.CoordinateChain.from_file(f"{examples}/great_britain/system.json")
# OSTN15 developer pack, TP01; 4.94 m is the largest difference of these seven parameters.
north, east, _ = chain.to_local(np.array([49.92226393730]), [-6.29977752014], [100.0])
assert np.hypot(north - 11318.804, east - 91492.146)[0] < 4.95
# The registry has the same seven parameters for EPSG:27700.
try:
    code = geomath.CoordinateChain.from_epsg(27700)
except geomath.Error as error:
    print(error)
else:
    north, east, _ = code.to_local(49.92226393730, -6.29977752014, 100.0)
    assert np.hypot(north - 11318.804, east - 91492.146) < 4.95
    print("whole")
END
use() { "$work/venv/bin/python" use.py "$source/examples" | tee used.txt; }
use && grep -qx "whole" used.txt
rm "$work"/venv/lib/python*/site-packages/geomath/_files.*
use && grep -q "^EPSG:27700: needs the part of the package that stands on GDAL and PROJ" used.txt
