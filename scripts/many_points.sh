#!/usr/bin/env bash
# Many points from one system to another, beside cs2cs, cct and ogr2ogr: processor time (user and
# system) and elapsed time, as ratios to those of geomath.
#
#   scripts/many_points.sh [ROWS] [JOBS]
#
# 10 million rows by default, 1.5 GB below build/many_points. The program is that of build/release.
# Measure when nothing else runs; the load is printed.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
rows=${1:-10000000} jobs=${2:-$(nproc)}
ensure_packages proj-bin gdal-bin python3
geomath=$PWD/build/release/tools/geomath
[ -x "$geomath" ] || { echo "Build first: cmake --preset release && cmake --build --preset release" >&2; exit 1; }

folder=build/many_points
mkdir -p $folder
cd $folder
python3 - "$rows" <<'END'
# Points in western Germany, in Gauss-Krüger zone 3.
import random, sys
random.seed(1)
with open("points.csv", "w") as csv, open("points.txt", "w") as text, \
        open("north_first.txt", "w") as north:
    csv.write("name,n,e,h\n")
    for i in range(int(sys.argv[1])):
        n, e, h = (random.uniform(*r) for r in ((5.3e6, 6.05e6), (3.42e6, 3.58e6), (0, 900)))
        csv.write(f"P{i},{n:.4f},{e:.4f},{h:.3f}\n")
        text.write(f"{e:.4f} {n:.4f} {h:.3f}\n")
        north.write(f"{n:.4f} {e:.4f} {h:.3f}\n")
END
cat >points.vrt <<END
<OGRVRTDataSource><OGRVRTLayer name="points"><SrcDataSource>points.csv</SrcDataSource>
<LayerSRS>EPSG:31467</LayerSRS><GeometryType>wkbPoint</GeometryType>
<GeometryField encoding="PointFromColumns" x="e" y="n"/></OGRVRTLayer></OGRVRTDataSource>
END
# What cs2cs takes, so that cct does the same.
pipeline=$(projinfo -s EPSG:31467 -t EPSG:25832 --grid-check known_available -o PROJ -q --single-line | head -1)

echo "$rows rows, $jobs jobs, load $(cut -d ' ' -f 1-3 /proc/loadavg)"
printf '%-28s %12s %10s %9s %9s\n' program 'processor s' 'elapsed s' ratio ratio
measure() {  # NAME COMMAND...
  local name=$1 figures
  shift
  TIMEFORMAT='%U %S %R'
  figures=$({ time "$@" >/dev/null 2>errors.txt; } 2>&1) || { cat errors.txt >&2; exit 1; }
  : "${own:=$figures}"
  awk -v name="$name" -v own="$own" '{
    split(own, o, " ")
    printf "%-28s %12.2f %10.2f %9.2f %9.2f\n", name, $1 + $2, $3, ($1 + $2) / (o[1] + o[2]), $3 / o[3]
  }' <<<"$figures"
}
measure "geomath convert" "$geomath" convert --from EPSG:31467 --to EPSG:25832 points.csv \
  -o result.csv --jobs "$jobs"
measure "geomath convert --jobs 1" "$geomath" convert --from EPSG:31467 --to EPSG:25832 points.csv \
  -o result.csv --jobs 1
measure cs2cs sh -c 'cs2cs -f %.4f EPSG:31467 EPSG:25832 points.txt >result.txt'
measure cct sh -c "cct -d 4 $pipeline north_first.txt >result.txt"
rm -rf result.gpkg result_ogr.csv
measure "ogr2ogr -t_srs (CSV)" ogr2ogr -t_srs EPSG:25832 -f CSV -lco GEOMETRY=AS_XY result_ogr.csv points.vrt
