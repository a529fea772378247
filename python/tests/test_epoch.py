"""Dates of positions, for chains with a frame that moves."""

import json
import pickle
from datetime import date, datetime, timezone
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from geomath import Calibration, ChainStep, CoordinateChain, Error, decimal_year

# Budd in Denmark in 2015.0: ITRF2014 to ETRF2014, published by the Nordic Geodetic Commission.
BUDD = (3513638.0964, 778956.5470, 5248216.5248)
BUDD_ETRF2014 = (3513638.5233, 778956.1497, 5248216.2980)
PRINTED = 0.51e-4 * 1.01  # metres, and the way over angles

SYSTEM: dict[str, Any] = {
    "global": {"ellipsoid": "GRS80"},
    "projection": {
        "name": "TMERC_KMS",
        "Central Meridian": 9,
        "Scale": 0.9996,
        "Lat0": 0,
        "East0": 500000,
        "North0": 0,
    },
    "frame": {"from": "ITRF2014", "to": "ETRF2014"},
}


def _chain(folder: Path, **frame: Any) -> CoordinateChain:
    path = folder / "system.json"
    path.write_text(json.dumps({**SYSTEM, "frame": {**SYSTEM["frame"], **frame}}))
    return CoordinateChain.from_file(path)


@pytest.fixture
def moving(tmp_path: Path) -> CoordinateChain:
    return _chain(tmp_path)


def test_every_kind_of_date_is_one_decimal_year() -> None:
    year = 2026 + 326 / 365
    for one in (year, "2026-11-23", date(2026, 11, 23), datetime(2026, 11, 23),
                np.datetime64("2026-11-23"), np.datetime64("2026-11-23T00:00:00")):
        assert decimal_year(one) == year
    noon = year + 0.5 / 365
    for one in ("2026-11-23T12:00Z", datetime(2026, 11, 23, 12, tzinfo=timezone.utc),
                np.datetime64("2026-11-23T12")):
        assert decimal_year(one) == pytest.approx(noon, abs=1e-12)
    days = np.array(["2024-12-31", "NaT"], "datetime64[D]")
    np.testing.assert_array_equal(decimal_year(days), [2024 + 365 / 366, np.nan])
    np.testing.assert_array_equal(decimal_year([date(2024, 12, 31), date(2025, 1, 1)]),
                                  [2024 + 365 / 366, 2025])
    with pytest.raises(Error, match="\"tomorrow\" is no date"):
        decimal_year("tomorrow")


def test_published_numbers_come_out(moving: CoordinateChain) -> None:
    ellipsoid, grid = moving.global_ellipsoid, moving.projection
    assert ellipsoid is not None and grid is not None
    lat, lon, h = ellipsoid.to_geodetic(*BUDD)
    north, east, height = moving.to_local(lat, lon, h, epoch=2015.0)
    there = ellipsoid.to_geocentric(*grid.inverse(north, east), height)
    np.testing.assert_allclose(there, BUDD_ETRF2014, rtol=0, atol=PRINTED)
    back = moving.to_global(north, east, height, epoch=date(2015, 1, 1))
    np.testing.assert_allclose(back[:2], (lat, lon), rtol=0, atol=5e-11)  # 5 µm, of the projection


def test_arrays_have_a_date_for_each_point(moving: CoordinateChain) -> None:
    days = np.array(["2000-01-01", "2015-01-01", "2026-11-23"], "datetime64[D]")
    lat = np.array([55.7, 55.8, 55.9])
    together = moving.to_local(lat, 12.5, 40, epoch=days)
    for i, day in enumerate(days):
        assert moving.to_local(lat[i], 12.5, 40, epoch=day) == tuple(c[i] for c in together)
    grown = moving.to_local(55.7, 12.5, 40, epoch=np.array([[2000.0], [2026.0]]))
    assert grown[0].shape == (2, 1)
    assert 0.3 < np.hypot(*(c[1, 0] - c[0, 0] for c in grown[:2])) < 1  # 2.5 cm a year
    *_, steps = moving.to_local(lat, 12.5, epoch=np.array([2000, np.nan, 2020]), return_steps=True)
    np.testing.assert_array_equal(steps, [0, ChainStep.MISSING_DATE, 0])


def test_a_date_is_never_assumed(moving: CoordinateChain) -> None:
    assert moving.needs_epoch and moving.epoch is None
    with pytest.raises(Error, match="needs the date of the positions"):
        moving.to_local(55.7, 12.5)
    with pytest.raises(Error, match="broadcast.*epoch"):
        moving.to_local(np.zeros(2), 12.5, epoch=np.zeros(3))


def test_the_chain_may_have_a_date_of_its_own(tmp_path: Path, moving: CoordinateChain) -> None:
    dated = _chain(tmp_path, date="2026-11-23")
    assert dated.epoch == 2026 + 326 / 365
    assert dated == moving.replace(epoch=date(2026, 11, 23))
    assert dated.to_local(55.7, 12.5) == moving.to_local(55.7, 12.5, epoch="2026-11-23")
    assert dated.to_local(55.7, 12.5, epoch=2000) == moving.to_local(55.7, 12.5, epoch=2000)
    assert pickle.loads(pickle.dumps(dated)) == dated != moving
    with pytest.raises(Error, match="must be one date"):
        moving.replace(epoch=[2000.0, 2001.0])


def test_dask_takes_dates(moving: CoordinateChain) -> None:
    array = pytest.importorskip("dask.array")
    from geomath.dask import convert

    points = np.column_stack([np.linspace(55, 57, 100), np.full(100, 12.5), np.zeros(100)])
    years = np.linspace(2000, 2026, 100)
    lazy = array.from_array(points, chunks=(30, 2))
    expected = np.column_stack(moving.to_local(*points.T, epoch=years))
    each = convert(lazy, moving, epoch=array.from_array(years, chunks=17))
    np.testing.assert_array_equal(each.compute(), expected)
    one = convert(lazy, moving, epoch=date(2020, 1, 1)).compute()
    np.testing.assert_array_equal(one, np.column_stack(moving.to_local(*points.T, epoch=2020)))
    with pytest.raises(Error, match="date"):
        convert(lazy, moving)
    with pytest.raises(ValueError, match="a date for each point"):
        convert(lazy, moving, epoch=array.zeros(5))

    frames = pytest.importorskip("dask.dataframe")
    pandas = pytest.importorskip("pandas")
    table = pandas.DataFrame(points, columns=["lat", "lon", "h"])
    table["day"] = pandas.Timestamp("2020-01-01") + pandas.to_timedelta(np.arange(100), "D")
    converted = convert(frames.from_pandas(table, npartitions=3), moving, epoch="day").compute()
    by_hand = moving.to_local(*points.T, epoch=table["day"].to_numpy())
    np.testing.assert_array_equal(converted["north"], by_hand[0])


def test_systems_of_the_registry_come_from_a_frame(moving: CoordinateChain) -> None:
    zone32 = CoordinateChain.from_epsg(25832, from_frame="ITRF2014", to_frame="ETRF2014")
    there = zone32.to_local(55.739, 12.5, 94, epoch=2015)
    np.testing.assert_allclose(there, moving.to_local(55.739, 12.5, 94, epoch=2015), atol=1e-5)
    with pytest.raises(Error, match="is no frame that is known"):
        CoordinateChain.from_epsg(25832, from_frame="ITRF2021")


def test_a_site_is_calibrated_at_the_date_of_the_chain(moving: CoordinateChain) -> None:
    lat, lon, h = np.array([55.70, 55.71, 55.70]), np.array([12.50, 12.50, 12.52]), np.full(3, 40.0)
    north, east, height = moving.to_local(lat, lon, h, epoch=2015)
    control = {"lat": lat, "lon": lon, "h": h, "local_n": north, "local_e": east, "local_h": height}
    with pytest.raises(Error, match="needs the date"):
        Calibration(control, moving).solve()
    result = Calibration(control, moving.replace(epoch=2015)).solve()
    assert np.abs(result.residuals).max() < 1e-6
