"""Zones designed for a terrain."""

import geomath
import numpy as np
import pytest

# Level ground: the meridian is the middle one, and δ = (k0 - 1) - h/R + x²/2R² has the mean 0.
LAT = np.linspace(44.0, 44.8, 21)[:, None]
LON = np.linspace(-121.3, -120.7, 25)
HEIGHT = 1000.0


def test_level_ground_has_the_middle_meridian() -> None:
    found = geomath.design(LAT, LON, HEIGHT, families=["tm"], ellipsoid="GRS80", limit=20)
    zone = found.zone
    assert zone.family == "tm" and zone.lon0 == pytest.approx(-121, abs=1e-12)
    radius = 6378e3  # metres, within 0.05 % of the mean radius there
    x = np.radians(LON + 121) * radius * np.cos(np.radians(LAT))
    expected = 1 + HEIGHT / radius - np.mean(x**2) / (2 * radius**2)
    assert zone.scale == pytest.approx(expected, abs=1e-6)
    assert zone.projection.parameters["scale"] == zone.scale
    assert found.distortion.shape == (21, 25)
    assert found.zones is None and np.all(found.zone_of_point == -1)
    assert found.share_within(20) == 1
    assert found.percentile(100) == np.max(np.abs(found.distortion))
    again = geomath.linear_distortion(zone.projection, LAT, LON, HEIGHT)
    assert np.array_equal(again, found.distortion)


def test_families_are_compared_best_first() -> None:
    heights = 500 + 8000 * (LAT - 44.4) + 0 * LON
    found = geomath.design(LAT, LON, heights, criterion="largest")
    values = [family.value for family in found.families]
    assert len(values) == 4 and values == sorted(values)
    for family in found.families:
        assert family.exact_value <= family.value + 1e-9
        assert family.exact_value <= family.centred_value + 1e-9


def test_weights_choose_the_ground() -> None:
    heights = np.where(LAT > 44.4, 1500.0, 400.0) + 0 * LON
    weights = np.where(LAT > 44.4, 0.0, 1.0)
    found = geomath.design(LAT, LON, heights, weights=weights, families=["lambert"])
    assert found.zone.scale == pytest.approx(1 + 400 / 6378e3, abs=1e-5)


def test_limit_that_one_zone_misses_asks_for_several() -> None:
    heights = np.where(LAT > 44.41, 900.0, 200.0) + 0 * LON
    found = geomath.design(LAT, LON, heights, families=["lambert"], criterion="largest", limit=15)
    assert found.zones is not None and len(found.zones) == 2
    for i, zone in enumerate(found.zones):
        inside = found.zone_of_point == i
        lat, lon = (values[inside] for values in np.broadcast_arrays(LAT, LON))
        of_zone = geomath.linear_distortion(zone.projection, lat, lon, heights[inside])
        assert np.max(np.abs(of_zone)) <= 15


def test_what_makes_no_sense_is_refused() -> None:
    with pytest.raises(geomath.Error, match="no point"):
        geomath.design(47, 8, np.nan)
    with pytest.raises(geomath.Error, match="one place"):
        geomath.design(47, 8, 400)
    with pytest.raises(geomath.Error, match="pole"):
        geomath.design([89.5, 89.6], [0, 1], 0)
    with pytest.raises(geomath.Error, match='did you mean "oblique"'):
        geomath.design(LAT, LON, 0, families=["obliqe"])
    with pytest.raises(geomath.Error, match="limit"):
        geomath.design(LAT, LON, 0, limit=-1)


def test_picture_has_the_contour_of_the_limit() -> None:
    plot = pytest.importorskip("geomath.plot")
    import matplotlib  # type: ignore[import]

    matplotlib.use("Agg")
    heights = 500 + 300 * np.sin(LAT * 20) * np.cos(LON * 15)
    found = geomath.design(LAT, LON, heights, families=["tm"], limit=20)
    axes = plot.distortion(found, LAT[:, 0], LON)
    assert axes.get_xlabel() == "longitude [°]"
    assert len(axes.collections) >= 2
    with pytest.raises(ValueError, match="one row"):
        plot.distortion(found, LAT[:5, 0], LON)
