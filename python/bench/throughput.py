#!/usr/bin/env python3
"""Time per point of array calls of a million points, beside the batches of C++ doing the same.

    PYTHONPATH=build/release/python python/bench/throughput.py build/release/python/million_points

Rows are measured in turns with the C++ program, so that a busy moment falls on both; processor times
are counted, and the smallest of all turns compared. Forms:

    new       results in new arrays (C++: copied to new memory, converted there), degrees
    kept      results in arrays that are there already (out=; C++: copied there), degrees
    in place  there and back on the same arrays (out=; C++: the bare batch calls), radians
"""

import subprocess
import sys
from time import process_time
from typing import Any, Callable

import geomath
import numpy as np

POINTS = 1_000_000
TURNS = 25

t = np.arange(POINTS) / POINTS
GIVEN: Any = 47 + 8 * t, 6 + 6 * (t * 997 % 1), 1000 * t
KEPT: Any = np.empty(POINTS), np.empty(POINTS), np.empty(POINTS)
IN_PLACE: Any = np.radians(GIVEN[0]), np.radians(GIVEN[1]), GIVEN[2].copy()

bessel = geomath.Ellipsoid("Bessel 1841")


def gauss(ellipsoid: geomath.Ellipsoid, scale: float, east0: float) -> geomath.Projection:
    return geomath.Projection(
        "TMERC", ellipsoid, central_meridian=9, scale=scale, lat0=0, east0=east0, north0=0
    )


utm = gauss(geomath.Ellipsoid("WGS84"), 0.9996, 500000)
wgs84 = geomath.Ellipsoid("WGS84")
chain = geomath.CoordinateChain(
    datum=geomath.Datum(bessel, 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7),
    projection=gauss(bessel, 1, 3500000),
)
ROWS: dict[str, tuple[int, Callable[..., Any], Callable[..., Any]]] = {
    "projection": (2, utm.forward, utm.inverse),
    "geocentric": (3, wgs84.to_geocentric, wgs84.to_geodetic),
    "chain": (3, chain.to_local, chain.to_global),
}


def run(row: str, form: str) -> None:
    width, there, back = ROWS[row]
    if form == "new":
        there(*GIVEN[:width])
    elif form == "kept":
        there(*GIVEN[:width], out=KEPT[:width])
    else:
        arrays = IN_PLACE[:width]
        there(*arrays, degrees=False, out=arrays)
        back(*arrays, degrees=False, out=arrays)


def nanoseconds(row: str, form: str) -> float:
    start = process_time()
    run(row, form)
    return (process_time() - start) / POINTS * 1e9


def main() -> None:
    rival = subprocess.Popen(sys.argv[1:], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    assert rival.stdin and rival.stdout
    best: dict[tuple[str, str], list[float]] = {}
    for _ in range(TURNS):
        for row in ROWS:
            for form in ("new", "kept", "in_place"):
                ours = nanoseconds(row, form)
                print(row, form, file=rival.stdin, flush=True)
                theirs = float(rival.stdout.readline())
                last = best.setdefault((row, form), [ours, theirs])
                best[row, form] = [min(last[0], ours), min(last[1], theirs)]
    rival.stdin.close()
    rival.wait()
    print(f"{'row':<12} {'form':<10} {'Python':>8} {'C++':>8}  ns/point; C++ over Python")
    for (row, form), (ours, theirs) in best.items():
        print(f"{row:<12} {form:<10} {ours:8.2f} {theirs:8.2f}  {theirs / ours:.2f}")


if __name__ == "__main__":
    main()
