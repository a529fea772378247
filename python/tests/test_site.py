"""Sites: calibration, local plane and ground, against figures evaluated independently."""

import pickle
from typing import Any

import numpy as np
import pytest
from conftest import ROOT
from geomath import Calibration, CoordinateChain, Error, GridToGround, LocalToGrid, Projection


@pytest.fixture
def control() -> Any:
    path = ROOT / "examples/site/control.csv"
    return np.genfromtxt(path, delimiter=",", names=True, dtype=None, encoding="utf8")


def columns(control: Any, **changes: Any) -> dict[str, Any]:
    table = {name: control[name].tolist() for name in control.dtype.names}
    return {**table, **changes}


# tests/support/site_points.h, configuration A: 40-digit arithmetic from the closed form.
FIRST_RESIDUALS = [[0.005178, 0.006281, 0.004311], [0.028069, 0.002194, -0.011505]]
PRINTED = 5e-7  # the residuals there carry six decimals, metres


def test_calibration_finds_the_expected_site(control: Any) -> None:
    result = Calibration(control).solve()
    site = result.localization
    assert (site.shift_n, site.shift_e) == pytest.approx((509102.747673363, 173052.631943779), abs=1e-6)
    assert site.scale == pytest.approx(0.999924707189328, abs=1e-13)
    assert np.radians(site.rotation) == pytest.approx(6.27950052116864, abs=1e-12)
    assert result.residuals.shape == (12, 3)
    np.testing.assert_allclose(result.residuals[:2], FIRST_RESIDUALS, rtol=0, atol=PRINTED)
    assert result.rms == pytest.approx(0.0327919686286096, abs=1e-9)
    # The chain of the result gives the residuals again; its projection is the site's own.
    local = result.chain.to_local(control["lat"], control["lon"], control["h"])
    given = [control[name] for name in ("local_n", "local_e", "local_h")]
    np.testing.assert_allclose(np.subtract(given, local).T, result.residuals, rtol=0, atol=1e-8)
    assert result.worst_horizontal == 11 and result.warnings == []
    again = pickle.loads(pickle.dumps(result))
    np.testing.assert_array_equal(again.residuals, result.residuals)
    assert again.chain == result.chain


def test_the_form_of_the_control_does_not_matter(control: Any) -> None:
    wanted = Calibration(control).solve()
    codes = [3] * len(control)
    assert Calibration(columns(control, use=codes)).solve().localization == wanted.localization
    table = columns(control)
    del table["use"], table["name"]
    unnamed = Calibration(table).solve()
    assert unnamed.localization == wanted.localization and unnamed.names[11] == "12"
    assert wanted.names[0] == "30010209"


def test_missing_names_and_uses_are_as_if_left_out(control: Any) -> None:
    pandas = pytest.importorskip("pandas")
    table = pandas.DataFrame(columns(control))
    wanted = Calibration(table).solve()
    codes: Any
    for codes in ([3.0] * 11 + [np.nan], pandas.array([3] * 11 + [None], dtype="Int64")):
        table["use"] = codes
        table["name"] = pandas.array(["a"] * 11 + [None], dtype="string")
        result = Calibration(table).solve()
        assert result.localization == wanted.localization
        assert result.names == ["a"] * 11 + ["12"]


def test_points_left_out_have_the_residuals_that_the_check_predicts(control: Any) -> None:
    whole = Calibration(control).solve()
    left_out = columns(control, use=["both"] * 4 + ["none"] + ["both"] * 7)
    result = Calibration(left_out).solve()
    assert not result.horizontal[4] and not result.vertical[4]
    # Near enough: the extent, on whose centre the site's own projection stands, stays as it is.
    np.testing.assert_allclose(result.residuals[4], whole.predicted[4], rtol=0, atol=1e-7)
    assert np.isnan(result.standardised[4]).all()
    few = Calibration(columns(control[:2], h=[np.nan, np.nan])).solve()
    assert few.localization.horizontal and not few.localization.vertical
    assert np.isnan(few.residuals[:, 2]).all() and len(few.warnings) >= 1


def test_looking_at_a_result_does_not_change_it(control: Any) -> None:
    result = Calibration(columns(control, use=["horizontal"] * 12)).solve()
    before = result.residuals
    assert "rms 0.03" in repr(result) and result.rms < 0.04 and len(result.warnings) == 1
    np.testing.assert_array_equal(result.residuals, before)
    assert np.isnan(before[:, 2]).all() and not np.isnan(before[:, :2]).any()


def test_one_point_with_a_fixed_scale_is_met() -> None:
    one = dict(lat=[52.0], lon=[5.0], h=[400.0], local_n=[1000.0], local_e=[2000.0], local_h=[357.0])
    chain = CoordinateChain(projection=Projection("STER", lat0=50, lon0=4, scale=1, east0=0, north0=0))
    result = Calibration(one, chain, fixed_scale=True).solve()
    assert result.chain.to_local(52, 5, 400) == pytest.approx((1000, 2000, 357), abs=1e-8)


def test_a_site_across_the_antimeridian_is_that_of_any_longitude(control: Any) -> None:
    wanted = Calibration(control).solve()
    moved = (control["lon"] + 174.4 + 180) % 360 - 180
    assert moved.min() < -179 and moved.max() > 179
    result = Calibration(columns(control, lon=moved)).solve()
    np.testing.assert_allclose(result.residuals, wanted.residuals, rtol=0, atol=2e-8)


def test_heights_in_one_line_are_shifted() -> None:
    line = dict(lat=[52, 52.01, 52.02], lon=[5.0] * 3, h=[1.0, 2, 3])
    local = dict(local_n=[0, 1112.7, 2225.5], local_e=[0.0] * 3, local_h=[2.0, 3, 4.3])
    result = Calibration(line | local).solve()
    assert result.localization.shift_h == pytest.approx(1.1) and result.localization.slope_n == 0
    assert result.residuals[:, 2] == pytest.approx([-0.1, -0.1, 0.2])
    assert any("lie in one line" in warning for warning in result.warnings)


DIRECTIONS = {"N": (0, 1), "E": (1, 1), "S": (0, -1), "W": (1, -1)}  # of (north, east), and the sign


def turned(axes: str, pair: Any) -> tuple[float, ...]:
    return tuple(sign * pair[index] for index, sign in (DIRECTIONS[letter] for letter in axes))


@pytest.mark.parametrize("grid", ["NE", "NW", "SE", "SW", "EN", "WN", "ES", "WS"])
@pytest.mark.parametrize("geographic", ["NE", "WN", "ES", "SW"])
def test_axes_turn_the_answer_of_north_and_east(control: Any, grid: str, geographic: str) -> None:
    parameters: Any = dict(lat0=52.6, lon0=5.6, scale=1, east0=0, north0=0)
    ground = GridToGround(scale=1.25, rotation=30, origin_n=5e5, origin_e=1.7e5, offset_n=-7, offset_e=4e3)
    plain, other = (
        CoordinateChain(
            projection=Projection("STER", grid_axes=axes, geographic_axes=of_global, **parameters),
            ground=ground,
        )
        for axes, of_global in (("NE", "NE"), (grid, geographic))
    )
    signs = {
        "lat": -1 if "S" in geographic else 1,
        "lon": -1 if "W" in geographic else 1,
        "local_n": -1 if "S" in grid else 1,
        "local_e": -1 if "W" in grid else 1,
    }
    wanted = Calibration(control, plain).solve()
    result = Calibration(columns(control, **{k: s * control[k] for k, s in signs.items()}), other).solve()
    assert result.localization == wanted.localization
    np.testing.assert_array_equal(result.residuals, wanted.residuals)
    n, e, h = wanted.chain.to_local(52.5, 5.6, 40)
    first, second = turned(geographic, (52.5, 5.6))
    local = result.chain.to_local(first, second, 40)
    assert local == pytest.approx((*turned(grid, (n, e)), h), abs=1e-8)
    back = result.chain.to_global(*local)
    assert back == pytest.approx((*turned(geographic, (52.5, 5.6)), 40), abs=1e-8)


def test_ground_scales_about_its_origin() -> None:
    # (1 + 1000/6371000)/0.9996 = 1.00055722…: 1000 m of grid are 1000.557 m on the ground.
    ground = GridToGround(
        height=1000, grid_scale_factor=0.9996, origin_n=5.3e6, origin_e=5e5, offset_n=-5e6, offset_e=0
    )
    north, east = ground.to_ground([5.3e6, 5.301e6], 5e5)
    assert north[0] == 3e5 and east[0] == 5e5
    assert north[1] - north[0] == pytest.approx(1000 * (1 + 1000 / 6371000) / 0.9996, abs=1e-8)
    np.testing.assert_allclose(ground.to_grid(north, east)[0], [5.3e6, 5.301e6], rtol=0, atol=1e-8)
    turned = CoordinateChain(ground=GridToGround(scale=2, rotation=90))
    assert turned.to_local(0.25, 0.5, 7, degrees=False) == pytest.approx((-1, 0.5, 7))
    assert eval(repr(ground), {"GridToGround": GridToGround}) == ground
    assert pickle.loads(pickle.dumps(ground)) == ground


def test_a_part_that_is_not_calibrated_passes_unchanged() -> None:
    heights = LocalToGrid(shift_h=2, slope_n=0.5)
    assert heights.to_local(10, 20, 30) == (10, 20, 37)
    assert np.isnan(heights.to_grid(10, 20, 30)).all()
    plane = LocalToGrid(shift_e=1, scale=2)
    assert plane.to_local(10, 20, 30) == (20, 41, 30)
    assert plane.to_grid(20, 41, 30) == (10, 20, 30)


@pytest.mark.parametrize(
    "spoil, text",
    [
        (dict(use=["both"] * 11 + ["horizontally"]), 'point 30017495: use is "horizontally"'),
        (dict(h=[1.0]), '"h" has 1 values, "lat" has 12'),
        (dict(lat=[91.0] * 12), "point 30010209: lat 91 degrees is outside -90 to 90"),
        (dict(lon=[4.0] * 11 + [-360.1]), "point 30017495: lon -360.1 degrees is outside"),
        (dict(use=[0] * 12), "the control points do not give a calibration"),
    ],
)
def test_what_is_wrong_with_control_is_said(control: Any, spoil: Any, text: str) -> None:
    with pytest.raises(Error) as error:
        Calibration(columns(control, **spoil)).solve()
    assert text in str(error.value)


def test_a_missing_column_is_named(control: Any) -> None:
    table = columns(control)
    table["localn"] = table.pop("local_n")
    with pytest.raises(Error, match='there is no column "local_n"; did you mean'):
        Calibration(table)
    with pytest.raises(TypeError, match="columns by name"):
        Calibration([1, 2, 3])
    with pytest.raises(Error, match='"grid_scale_factor" is missing'):
        GridToGround(height=100)
