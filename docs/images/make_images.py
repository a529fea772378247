#!/usr/bin/env python3
"""Makes the pictures of the guide, in this folder or the one that is given.

    PYTHONPATH=build/python docs/images/make_images.py [FOLDER]
"""

import csv
import pathlib
import sys

import geomath
import geomath.plot
import matplotlib
import matplotlib.pyplot as plt
import numpy as np

matplotlib.use("Agg")
ROOT = pathlib.Path(__file__).resolve().parents[2]


def residuals():
    """Great Britain: published less converted grid coordinates, what seven parameters leave."""
    chain = geomath.CoordinateChain.from_file(ROOT / "examples/great_britain/system.json")
    with open(ROOT / "examples/great_britain/points.csv") as file:
        points = list(csv.DictReader(file))
    lat, lon, h, north, east = (
        np.array([float(point[column]) for point in points])
        for column in ("lat", "lon", "h", "northing_m", "easting_m")
    )
    computed_north, computed_east, _ = chain.to_local(lat, lon, h)
    return geomath.plot.residuals(north, east, north - computed_north, east - computed_east)


def geoid():
    """The geoid south of India from EGM96 to degree 36."""
    rows = np.genfromtxt(ROOT / "tests/data/egm96_degree36.csv", delimiter=",", names=True)
    model = geomath.GlobalGeoid(rows["C"], rows["S"])
    return geomath.plot.geoid(model, np.arange(-15, 25.1, 0.25), np.arange(55, 105.1, 0.25), interval=10)


def scale_factor():
    """A zone of six degrees in Central Europe."""
    zone = geomath.Projection(
        "TMERC", central_meridian=15, scale=0.9996, lat0=0, east0=500000, north0=0
    )
    return geomath.plot.scale_factor(
        zone, np.linspace(45, 55, 101), np.linspace(11, 19, 161), interval=200
    )


def declination():
    """Magnetic declination in the middle of 2012, by the built-in model."""
    field = geomath.MagneticModel().field(2012.5)
    return geomath.plot.declination(
        field, np.linspace(-60, 70, 131), np.linspace(-180, 180, 181), interval=10
    )


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    for draw in (residuals, geoid, scale_factor, declination):
        with plt.rc_context({"figure.figsize": (6.4, 4.8), "figure.dpi": 80}):
            axes = draw()
            axes.figure.savefig(folder / f"{draw.__name__}.png", metadata={"Software": None})
            plt.close(axes.figure)


if __name__ == "__main__":
    main()
