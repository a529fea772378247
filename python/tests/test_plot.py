"""geomath.plot: what the pictures show is what the library computes."""

from pathlib import Path
from typing import Any

import numpy as np
import pytest
from conftest import ROOT
from geomath import GlobalGeoid, MagneticModel, Projection, RegionalGeoid

matplotlib = pytest.importorskip("matplotlib")
matplotlib.use("Agg")
plt = pytest.importorskip("matplotlib.pyplot")
plot = pytest.importorskip("geomath.plot")

LAT, LON = np.arange(45.0, 56.0), np.arange(0.0, 19.0)


def values_of(axes: Any) -> Any:
    """The coloured field of the picture."""
    return axes.collections[0].get_array().reshape(len(LAT), len(LON))


def save(axes: Any, directory: Path) -> None:
    """Writes the picture, which must have more to show than frames and labels."""
    axes.figure.savefig(directory / "picture.png")
    pixels = plt.imread(directory / "picture.png")
    assert len(np.unique(pixels.reshape(-1, pixels.shape[-1]), axis=0)) > 50
    plt.close(axes.figure)


def test_residuals_are_vectors_in_one_scale(tmp_path: Path) -> None:
    north, east = [0.0, 0.0, 1000.0, 1000.0], [0.0, 2000.0, 0.0, 2000.0]
    dn, de = [0.03, 0.0, -0.04, np.nan], [0.04, 0.025, 0.03, 0.01]
    used, names = [True, True, False, True], ["A", "B", "C", "D"]
    axes = plot.residuals(north, east, dn, de, used=used, names=names)

    filled, hollow, vectors = axes.collections[:3]
    assert len(filled.get_offsets()) == 3 and hollow.get_offsets().tolist() == [[0.0, 1000.0]]
    assert len(hollow.get_facecolors()) == 0
    assert vectors.N == 3  # the fourth has no residual
    assert (vectors.U.tolist(), vectors.V.tolist()) == (de[:3], dn[:3])
    assert 0.05 / vectors.scale == pytest.approx(0.15 * 2000)  # the longest on the map, metres
    assert [text.get_text() for text in axes.texts] == names
    assert [key.text.get_text() for key in axes.artists] == ["0.05 m"]
    save(axes, tmp_path)

    save(plot.residuals([5.0], [6.0], [0.0], [0.0]), tmp_path)  # nothing to draw is no error
    with pytest.raises(ValueError, match="one value for each point"):
        plot.residuals(north, east, dn, de[:3])


def test_fields_show_the_values_of_the_library(tmp_path: Path) -> None:
    rows: Any = np.genfromtxt(ROOT / "tests/data/egm96_degree36.csv", delimiter=",", names=True)
    geoid = GlobalGeoid(rows["C"], rows["S"])
    axes = plot.geoid(geoid, LAT, LON, interval=2)
    assert np.array_equal(values_of(axes), geoid.height(*np.meshgrid(LAT, LON, indexing="ij")))
    assert all(float(text.get_text()) % 2 == 0 for text in axes.texts) and axes.texts
    save(axes, tmp_path)

    # A secant zone: shorter than the ellipsoid within about 180 km of its meridian, longer beyond.
    zone = Projection("TMERC", central_meridian=9, scale=0.9996, lat0=0, east0=500000, north0=0)
    axes = plot.scale_factor(zone, LAT, LON, interval=400)
    ppm = values_of(axes)
    assert np.allclose(ppm[:, 9], -400) and (ppm[:, [0, -1]] > 0).all()
    assert axes.collections[0].get_clim() == (-ppm.max(), ppm.max())
    save(axes, tmp_path)

    field = MagneticModel().field(2012.5)
    axes = plot.declination(field, LAT, LON, h=1000, interval=1)
    lat, lon = np.meshgrid(LAT, LON, indexing="ij")
    assert np.array_equal(values_of(axes), field.declination(lat, lon, 1000))
    save(axes, tmp_path)


def test_distortions_are_those_of_the_projection(tmp_path: Path) -> None:
    zone = Projection("TMERC", central_meridian=9, scale=0.9996, lat0=0, east0=500000, north0=0)
    terrain = np.full((len(LAT), len(LON)), 1000.0)
    axes = plot.combined_factor(zone, LAT, LON, terrain, interval=400)
    # On the central meridian: the scale and R/(R + h), R between the radii of the axes.
    assert np.allclose(values_of(axes)[:, 9], ((0.9996 * (1 - 1000 / 6379e3)) - 1) * 1e6, atol=0.5)
    save(axes, tmp_path)
    sea = RegionalGeoid(np.full((9, 9), 47.0), south=40, west=-5, lat_step=3, lon_step=4)
    above = values_of(plot.combined_factor(zone, LAT, LON, terrain - 47, geoid=sea))
    assert np.allclose(above, values_of(axes), atol=1e-6)

    axes = plot.convergence(zone, LAT, LON, interval=2)
    assert np.allclose(values_of(axes), zone.factors(*np.meshgrid(LAT, LON, indexing="ij"))[1])
    save(axes, tmp_path)

    conic: Any = dict(south_lat=29.5, north_lat=45.5, lon0=-96, lat0=23, east0=0, north0=0)
    albers = Projection("AlbersConic", **conic)
    axes = plot.tissot(albers, [20.0, 45.5, 70.0], [-110.0, -96.0], exaggeration=1)
    circles, ellipses = axes.lines[5:11], axes.lines[11:17]  # behind the graticule
    for at, (circle, ellipse) in enumerate(zip(circles, ellipses)):
        (a, b), tissot = (
            (np.ptp(circle.get_xdata()) / 2, ellipse.get_xydata() - ellipse.get_xydata()[:-1].mean(0)),
            albers.distortion([20.0, 45.5, 70.0][at // 2], [-110.0, -96.0][at % 2]),
        )
        axis = np.hypot(*b.T)
        assert axis.max() / a == pytest.approx(tissot.semi_major, abs=2e-3)
        assert axis.min() / a == pytest.approx(tissot.semi_minor, abs=2e-3)
    save(axes, tmp_path)
    with pytest.raises(ValueError, match="other axes"):
        plot.tissot(Projection("AlbersConic", grid_axes="EN", **conic), LAT, LON)


def test_fields_are_drawn_where_they_can_be_computed() -> None:
    heights = np.linspace(40, 50, 121).reshape(11, 11)
    inside = RegionalGeoid(heights, south=46.5, west=3.5, lat_step=0.5, lon_step=1)
    figure, given = plt.subplots()
    axes = plot.geoid(inside, LAT, LON, interval=100, axes=given)  # no multiple of 100: no lines
    heights_there = inside.height(*np.meshgrid(LAT, LON, indexing="ij"))
    assert axes is given and np.isfinite(heights_there).sum() > 20
    assert np.array_equal(values_of(axes).mask, np.isnan(heights_there))
    plt.close(figure)
    with pytest.raises(ValueError, match="one-dimensional with two values at least"):
        plot.geoid(inside, 45.0, LON)
    with pytest.raises(ValueError, match="no value of the field"):
        plot.geoid(inside, LAT - 90, LON)
