#!/usr/bin/env python3
"""Makes the pictures of the guide, in this folder or the one that is given.

    PYTHONPATH=build/python docs/images/make_images.py [FOLDER]
"""

import csv
import json
import pathlib
import sys
import tempfile

import geomath
import geomath.plot
import matplotlib
import matplotlib.cbook
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


def combined_factor():
    """A zone over a mountain of 2500 m."""
    lat, lon = np.linspace(46, 49, 91), np.linspace(10, 14, 121)
    zone = geomath.Projection(
        "TMERC", central_meridian=12, scale=1, lat0=0, east0=500000, north0=0
    )
    terrain = 2500 * np.exp(-((lat[:, None] - 47.2) ** 2) / 0.2 - (lon - 12) ** 2 / 2)
    return geomath.plot.combined_factor(zone, lat, lon, terrain, interval=100)


def convergence():
    """A conic grid of France."""
    conic = geomath.Projection(
        "LC", "GRS80", south_lat=44, north_lat=49, lon0=3, lat0=46.5, east0=700000, north0=6600000, scale=1
    )
    return geomath.plot.convergence(
        conic, np.linspace(41, 51.5, 106), np.linspace(-5, 10, 151), interval=1
    )


def tissot():
    """Albers' projection of North America, whose circles keep their areas."""
    albers = geomath.Projection(
        "AlbersConic", south_lat=29.5, north_lat=45.5, lon0=-96, lat0=23, east0=0, north0=0
    )
    return geomath.plot.tissot(albers, np.arange(10, 65, 10), np.arange(-130, -60, 10))


def declination():
    """Magnetic declination in the middle of 2012, by the built-in model."""
    field = geomath.MagneticModel().field(2012.5)
    return geomath.plot.declination(
        field, np.linspace(-60, 70, 131), np.linspace(-180, 180, 181), interval=10
    )


PLACES = {
    "Berlin, ETRF2000": ("ETRF2000", 52.52, 13.40),
    "Helsinki, ETRF2000": ("ETRF2000", 60.17, 24.94),
    "Denver, NAD83(2011)": ("NAD83(2011)", 39.74, -104.99),
    "Ottawa, NAD83(CSRS)v7": ("NAD83(CSRS)v7", 45.42, -75.70),
    "Sydney, GDA2020": ("GDA2020", -33.87, 151.21),
    "Alice Springs, GDA2020": ("GDA2020", -23.67, 133.89),
}


def frames():
    """What positions in ITRF2020 are off when they are taken for national ones."""
    years = np.arange(2000, 2035.5, 0.5)
    axes = plt.gca()
    for name, (frame, lat, lon) in PLACES.items():
        system = {
            "global": {"ellipsoid": "GRS80"},
            "frame": {"from": "ITRF2020", "to": frame},
            "projection": {
                "name": "TMERC_KMS", "Central Meridian": lon, "Scale": 1, "Lat0": 0, "East0": 0, "North0": 0
            },
        }
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "system.json"
            path.write_text(json.dumps(system))
            chain = geomath.CoordinateChain.from_file(path)
        right = chain.to_local(lat, lon, epoch=years)
        wrong = chain.replace(shifts=()).to_local(lat, lon)
        off = np.sqrt(sum((r - w) ** 2 for r, w in zip(right, wrong)))
        axes.plot(years, off, label=name)
    axes.set(xlabel="date of the positions", ylabel="mistake, metres", ylim=(0, 2.4), xlim=(2000, 2035))
    axes.grid(alpha=0.3)
    axes.legend(fontsize=8, ncols=2)
    return axes


def distortion():
    """A zone for the terrain of the Jacksboro fault."""
    file = matplotlib.cbook.get_sample_data("jacksboro_fault_dem.npz", asfileobj=False)
    with np.load(file) as dem:
        height = dem["elevation"] - 30.0
        lat = np.linspace(float(dem["ymin"]), float(dem["ymax"]), height.shape[0])
        lon = np.linspace(float(dem["xmin"]), float(dem["xmax"]), height.shape[1])
    design = geomath.design(
        lat[::8, None], lon[::8], height[::8, ::8], ellipsoid="GRS80", families=["tm", "lambert"],
        criterion="percentile", percentile=90, limit=50,
    )
    axes = geomath.plot.distortion(design, lat[::8], lon[::8])
    axes.set_title("A zone for the Jacksboro fault")
    return axes


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    pictures = (
        residuals, geoid, scale_factor, combined_factor, convergence, tissot, declination, frames, distortion
    )
    for draw in pictures:
        with plt.rc_context({"figure.figsize": (6.4, 4.8), "figure.dpi": 80}):
            axes = draw()
            axes.figure.savefig(folder / f"{draw.__name__}.png", metadata={"Software": None})
            plt.close(axes.figure)


if __name__ == "__main__":
    main()
