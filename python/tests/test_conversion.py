"""Conversion: between any two coordinate systems."""

import pickle

import numpy as np
import pytest

import geomath

# Schreutelkamp and Strang van Hees 2001: the centre of the Dutch projection, by definition.
RD = (463000.0, 155000.0)
AMERSFOORT = (52 + 9 / 60 + 22.178 / 3600, 5 + 23 / 60 + 15.5 / 3600)
DEGREES = 1e-10  # 0.01 mm
METRES = 1e-4


def test_numbers_arrays_and_the_way_back() -> None:
    conversion = geomath.Conversion("EPSG:28992", 4289)
    lat, lon, h = conversion.to_target(*RD, 7.0)
    assert (lat, lon) == pytest.approx(AMERSFOORT, abs=DEGREES)
    assert h == 7.0  # heights that nobody knows stay as they are
    north = np.array([[463000.0, 470000.0], [480000.0, np.nan]])[::-1]
    results = conversion.to_target(north, 155000)
    assert all(column.shape == (2, 2) for column in results)
    assert np.isnan(results[0]).tolist() == np.isnan(north).tolist()
    assert results[0][1, 0] == lat
    back = conversion.to_source(*results)
    np.testing.assert_allclose(back[0], north, atol=METRES)
    assert np.array_equal(north[1], [463000.0, 470000.0])  # arguments stay


def test_each_order_of_coordinates() -> None:
    # The equator at Greenwich, and the pole, of WGS 84.
    geocentric = geomath.Conversion("EPSG:4979", "EPSG:4978")
    assert geocentric.to_target(0, 0, 100) == pytest.approx((6378237, 0, 0), abs=METRES)
    assert geocentric.to_source(0, 0, 6356752.314245)[0] == pytest.approx(90, abs=DEGREES)


def test_operations_are_said_and_chosen() -> None:
    best = geomath.Conversion(31467, 4326)
    assert len(best.operations) > 1
    one = geomath.Conversion(31467, 4326, operation=1777)
    assert one.operations == ("EPSG:1777 DHDN to WGS 84 (2), accuracy 3 m",)
    assert one.to_target(5.5e6, 3.5e6, 0) != best.to_target(5.5e6, 3.5e6, 0)
    near = geomath.Conversion(31467, 4326, near=(47.9, 9.0))
    assert len(near.operations) == 1
    copy = pickle.loads(pickle.dumps(one))
    assert repr(copy) == repr(one) == "Conversion('EPSG:31467', 'EPSG:4326', operation=1777)"
    assert copy.to_target(5.5e6, 3.5e6) == one.to_target(5.5e6, 3.5e6)


@pytest.mark.parametrize(
    ("arguments", "text"),
    [
        ((314670, 25832), "did you mean EPSG:31467"),
        (("nowhere", 25832), "is no EPSG code"),
        ((31467, 5783), "heights alone"),
    ],
)
def test_what_cannot_be_raises(arguments: tuple[object, object], text: str) -> None:
    with pytest.raises(geomath.Error, match=text):
        geomath.Conversion(*arguments)


def test_shapes_that_do_not_go_together() -> None:
    with pytest.raises(geomath.Error):
        geomath.Conversion(28992, 4289).to_target([1.0, 2.0], [1.0, 2.0, 3.0])
