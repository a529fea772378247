"""Covariances through chains, and judged calibrations."""

import pickle
from typing import Any

import numpy as np
import pytest
from conftest import ROOT
from geomath import Calibration, ChainStep, CoordinateChain, Datum, Error, Projection

CHAIN = CoordinateChain(
    datum=Datum("Bessel 1841", 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7),
    projection=Projection("TMERC", "Bessel 1841", central_meridian=9, scale=1, lat0=0, east0=3500000, north0=0),
)
GIVEN = np.array([[4e-4, 1e-4, -2e-4], [1e-4, 9e-4, 3e-4], [-2e-4, 3e-4, 25e-4]])


def differences(lat: float, lon: float, h: float) -> Any:
    """Derivatives of the chain by latitude, longitude (radians) and height."""
    steps = np.array([1e-4, 1e-4, 100.0])
    position = np.array([np.radians(lat), np.radians(lon), h])
    columns = []
    for axis in range(3):
        offset = np.zeros(3)
        offset[axis] = steps[axis]
        ends = [CHAIN.to_local(*(position + sign * offset), degrees=False) for sign in (-1, 1)]
        columns.append((np.array(ends[1]) - np.array(ends[0])) / (2 * steps[axis]))
    return np.array(columns).T


def test_covariances_are_carried_by_the_derivatives() -> None:
    scaled = GIVEN * np.outer([1e-7, 1e-7, 1], [1e-7, 1e-7, 1])
    north, east, h, covariance = CHAIN.to_local(48.2, 9.5, 300, covariance=scaled, frame="geographic")
    assert (north, east, h) == CHAIN.to_local(48.2, 9.5, 300)
    jacobian = differences(48.2, 9.5, 300)
    # Differences of second order over 600 m.
    np.testing.assert_allclose(covariance, jacobian @ scaled @ jacobian.T, rtol=1e-7, atol=1e-9)
    *_, back = CHAIN.to_global(north, east, h, covariance=covariance, frame="geographic")
    np.testing.assert_allclose(back, scaled, rtol=1e-9, atol=1e-24)


def test_shapes_are_those_of_the_points() -> None:
    lat = np.linspace(47, 49, 6).reshape(2, 3)
    north, _, _, covariance, steps = CHAIN.to_local(lat, 9.0, covariance=GIVEN, return_steps=True)
    assert covariance.shape == (2, 3, 3, 3) and north.shape == steps.shape == (2, 3)
    np.testing.assert_allclose(covariance, np.swapaxes(covariance, -1, -2), atol=0)
    # One matrix for all points is that of each.
    for i, j in np.ndindex(2, 3):
        np.testing.assert_array_equal(covariance[i, j], CHAIN.to_local(float(lat[i, j]), 9.0, covariance=GIVEN)[3])
    each = np.broadcast_to(GIVEN, (2, 3, 3, 3)).copy()
    each[1, 1] = -GIVEN
    _, _, _, covariance, steps = CHAIN.to_local(lat, 9.0, covariance=each, return_steps=True)
    assert steps[1, 1] == ChainStep.INPUT and np.isnan(covariance[1, 1]).all()
    assert np.isfinite(covariance[0]).all()
    # What the steps do not know is added in every direction.
    more = CHAIN.to_local(48, 9, covariance=GIVEN, errors={"datum": 0.5})[3]
    np.testing.assert_allclose(np.diag(more - GIVEN), 0.25, atol=1e-4)


def test_control_has_accuracies() -> None:
    path = ROOT / "examples/site/control.csv"
    control: Any = np.genfromtxt(path, delimiter=",", names=True, dtype=None, encoding="utf8")
    columns = {name: control[name] for name in control.dtype.names}
    every = np.full(len(control), 0.03)
    known = {f"global_sigma_{axis}": every for axis in "neh"}
    calibration = pickle.loads(pickle.dumps(Calibration({**columns, **known})))
    adjusted = calibration.solve().adjust(sigma_known=True)
    assert adjusted.deviations[0] == pytest.approx(0.03 / np.sqrt(12), rel=1e-3)
    assert 0 <= adjusted.fit_probability() <= 1
    with pytest.raises(Error, match="sigma_n and sigma_e go together"):
        Calibration({**columns, "sigma_n": every})


def test_dask_carries_covariances_chunk_by_chunk() -> None:
    da = pytest.importorskip("dask.array")
    import geomath.dask

    points = np.stack([np.linspace(47, 49, 20), np.full(20, 9.2), np.zeros(20)], axis=-1)
    each = GIVEN * np.linspace(1, 2, 20)[:, None, None]
    for covariance in (GIVEN, each, da.from_array(each, chunks=(6, 3, 3))):
        lazy = geomath.dask.convert(
            da.from_array(points, chunks=(7, 2)), CHAIN, covariance=covariance, errors={"datum": 0.1}
        )
        found = [part.compute() for part in lazy]
        plain = CHAIN.to_local(*points.T, covariance=np.asarray(covariance), errors={"datum": 0.1})
        np.testing.assert_array_equal(found[0], np.stack(plain[:3], axis=-1))
        np.testing.assert_array_equal(found[1], plain[3])
    with pytest.raises(ValueError, match="its shape"):
        geomath.dask.convert(da.from_array(points), CHAIN, covariance=each[:5])


def test_what_makes_no_sense_is_refused() -> None:
    with pytest.raises(Error, match="frame is"):
        CHAIN.to_local(48, 9, covariance=GIVEN, frame="enu")  # type: ignore[call-overload]
    with pytest.raises(Error, match="its shape"):
        CHAIN.to_local([48, 49], 9, covariance=np.zeros((3, 3, 3)))
    with pytest.raises(Error, match="no step"):
        CHAIN.to_local(48, 9, covariance=GIVEN, errors={"magic": 1})
    with pytest.raises(Error, match="not negative"):
        CHAIN.to_local(48, 9, covariance=GIVEN, errors={"geoid": -1})
    with pytest.raises(Error, match="go with a covariance"):
        CHAIN.to_local(48, 9, errors={"geoid": 1})  # type: ignore[call-overload]


@pytest.fixture
def result() -> Any:
    path = ROOT / "examples/site/control.csv"
    control = np.genfromtxt(path, delimiter=",", names=True, dtype=None, encoding="utf8")
    return Calibration(control).solve()


def test_a_calibration_is_judged(result: Any) -> None:
    adjusted = result.adjust()
    assert adjusted.residuals.shape == (12, 3) and adjusted.freedom == 20
    assert np.nansum(adjusted.redundancy) == pytest.approx(20 + 9, abs=1e-9)
    # Least squares and the calibration's own estimators agree within their deviations.
    assert adjusted.parameters[2] == pytest.approx(result.localization.scale, abs=3 * adjusted.deviations[2])
    n, e = adjusted.pivot[:2]
    local, covariance, half_width, radius = adjusted.predict([n, n + 5000], e)
    assert local.shape == half_width.shape == (2, 3) and covariance.shape == (2, 3, 3)
    assert radius[1] > radius[0] > 0  # less certain away from the control's middle
    np.testing.assert_allclose(local[0, :2], adjusted.parameters[:2], rtol=0, atol=1e-9)
    models = adjusted.compare_models()
    assert [row["larger"] for row in models] == ["similarity", "affine"]
    assert result.adjust(model="rigid").freedom == 21
    with pytest.raises(Error, match="did you mean"):
        result.adjust(model="similar")
    # The site's uncertainty goes on through the chain.
    given = np.eye(3) * 1e-6
    chain = result.chain
    exact, own, least_squares = (
        chain.to_local(52.6, 5.55, 100, covariance=given, errors=errors)[3]
        for errors in ({"site": None}, None, {"site": adjusted})
    )
    np.testing.assert_allclose(np.diag(exact), 1e-6, rtol=1e-3)
    assert np.all(np.diag(own) > np.diag(exact))
    # The calibration's own estimators are less precise than least squares: points near the middle
    # weigh as much as others. Deviations are up to a third larger at this site.
    ratio = np.sqrt(np.diag(own) / np.diag(least_squares))
    assert np.all(ratio > 1 - 1e-9) and np.all(ratio < 1.34)
    assert pickle.loads(pickle.dumps(chain)).site_covariance == chain.site_covariance
    assert chain.replace(localization=None).site_covariance is None
    with pytest.raises(Error, match="height\" must be a list of 6"):
        chain.replace(site_covariance={"pivotN": 0, "pivotE": 0, "height": [1]})


def test_the_picture_is_drawn(result: Any) -> None:
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")
    import geomath.plot

    adjusted = result.adjust()
    n, e = adjusted.pivot[:2]
    rows, columns = n + np.linspace(-5000, 5000, 11), e + np.linspace(-4000, 4000, 9)
    axes = geomath.plot.prediction(adjusted, rows, columns, ellipses=[[n, e], [n + 3000, e]])
    field = axes.collections[0].get_array()
    assert field.size == 99 and np.argmin(np.asarray(field)) == pytest.approx(49, abs=12)
    assert len(axes.lines) == 4
