"""Arrays: shapes, strides, types, results in place, failures, threads."""

import signal
import time
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from typing import Any

import numpy as np
import pytest
from geomath import (
    Calibration,
    ChainStep,
    CoordinateChain,
    Ellipsoid,
    Error,
    GlobalGeoid,
    MagneticModel,
    Projection,
)
from numpy.typing import NDArray

Array = NDArray[np.float64]


def points(count: int, seed: int = 1) -> tuple[Array, Array, Array]:
    generator = np.random.default_rng(seed)
    return (
        generator.uniform(50, 60, count),
        generator.uniform(-7, 2, count),
        generator.uniform(-50, 3000, count),
    )


def expected(chain: CoordinateChain, *columns: Any) -> list[Array]:
    """One call for each point, on arrays that NumPy has broadcast."""
    together = np.broadcast_arrays(*columns)
    results = [chain.to_local(*map(float, p)) for p in zip(*(a.ravel() for a in together))]
    return [np.array(r).reshape(together[0].shape) for r in zip(*results)]


KEPT: Any = dict(rtol=0, atol=1e-9)  # the promise of batches against single points, metres


@pytest.mark.parametrize(
    "shape",
    [
        lambda b, l, h: (b, l, h),
        lambda b, l, h: (b[:, None], l[None, :50], 100),
        lambda b, l, h: (b.reshape(9, 7, 17).T, l.reshape(17, 7, 9), h[:9]),
        lambda b, l, h: (b[::-3], l[5:362], 0),
        lambda b, l, h: (b.astype(np.float32), l.astype(">f8"), h.astype(np.int16)),
        lambda b, l, h: (np.stack([b, l, h], axis=1)[:, 0], list(l), h),
        lambda b, l, h: (np.frombuffer(b"x" + b.tobytes(), offset=1), l, h),  # not aligned
        lambda b, l, h: (b[:0], l[:0], 1.0),
        lambda b, l, h: (b[:1, None], l[:1], np.array(3.0)),
    ],
)
def test_any_arrays_give_what_their_points_give(britain: CoordinateChain, shape: Any) -> None:
    arguments = shape(*points(1071))
    for result, wanted in zip(britain.to_local(*arguments), expected(britain, *arguments)):
        assert result.shape == wanted.shape and result.dtype == np.float64
        np.testing.assert_allclose(result, wanted, **KEPT)


def test_numbers_alone_give_numbers(britain: CoordinateChain) -> None:
    plain = britain.to_local(52, -1.5, 100)
    assert [type(x) for x in plain] == [float] * 3
    numbers: Any
    for numbers in ((np.float64(52), -1.5, np.int32(100)), (np.array(52.0), -1.5, 100)):
        assert britain.to_local(*numbers) == plain


def test_a_failed_point_is_nan_and_names_its_step(britain: CoordinateChain) -> None:
    lat, lon, h = points(1000)
    good = britain.to_local(lat, lon, h)
    lat[[3, 700]] = 91, np.nan
    *results, steps = britain.to_local(lat, lon, h, return_steps=True)
    assert steps.dtype == np.uint8
    assert np.flatnonzero(steps).tolist() == [3, 700]
    assert ChainStep(steps[3]) is ChainStep.INPUT and ChainStep(steps[3]).text == "the input"
    for result, undisturbed in zip(results, good):
        assert np.isnan(result[[3, 700]]).all()
        assert (np.delete(result, [3, 700]) == np.delete(undisturbed, [3, 700])).all()
    assert britain.to_local(91, 0, 0, return_steps=True)[3] == ChainStep.INPUT
    assert len(britain.to_local(lat[0], 0, 0, return_steps=True)) == 4


@pytest.mark.parametrize("degrees", [True, False])
def test_positions_beyond_the_ranges_are_nan(britain: CoordinateChain, degrees: bool) -> None:
    unit = 1 if degrees else np.pi / 180
    lat = np.array([90, -90, 52, 52, 90.1, -91, 52, 52, 0]) * unit
    lon = np.array([0, 0, 360, -360, 0, 0, 360.1, -361, 1e300]) * unit
    beyond = [False] * 4 + [True] * 5
    field = MagneticModel().field("2026-01-01")
    zone: Any = dict(central_meridian=0, scale=1, lat0=0, east0=0, north0=0)
    swapped = Projection("TMERC", geographic_axes="EN", **zone)
    heights = GlobalGeoid(np.zeros(6), np.zeros(6))
    for results in (
        Ellipsoid("WGS84").to_geocentric(lat, lon, 0, degrees=degrees)[0],
        heights.height(lat, lon, degrees=degrees),
        field.declination(lat, lon, degrees=degrees),
        field.elements(lat, lon, degrees=degrees).f,
        CoordinateChain().to_local(lat, lon, 0, degrees=degrees)[1],
        CoordinateChain().to_global(lat, lon, 0, degrees=degrees)[1],
    ):
        assert np.isnan(results).tolist() == beyond
    steps = britain.to_local(lat, lon, 0, return_steps=True, degrees=degrees)[3]
    assert (steps == ChainStep.INPUT).tolist() == beyond
    north = swapped.forward(lon[2:], lat[2:], degrees=degrees)
    assert np.isnan(north[0]).tolist() == beyond[2:]
    assert np.isnan(swapped.factors(lon[2:], lat[2:], degrees=degrees)[0]).tolist() == beyond[2:]
    assert np.isnan(heights.height(0, 361 * unit, degrees=degrees))


def test_positions_beyond_the_map_are_nan() -> None:
    # Beyond the pole of a cone that half a turn wraps 139 degrees from its axis at 170 degrees east.
    parameters: Any = dict(south_lat=49, north_lat=52, lon0=170, lat0=50, east0=0, north0=0, scale=1)
    cone = Projection("LC", **parameters)
    north, east = np.array([0.0, 9e6, 2e6]), np.array([0.0, 1e6, 1e6])
    lat, lon = cone.inverse(north, east)
    assert np.isnan(lat).tolist() == np.isnan(lon).tolist() == [False, True, False]
    assert np.abs(lon[[0, 2]]).max() <= 360
    chain = CoordinateChain(projection=cone)
    *position, steps = chain.to_global(north, east, return_steps=True)
    assert np.isnan(position).tolist() == [[False, True, False]] * 3
    assert steps.tolist() == [0, ChainStep.PROJECTION, 0]


def test_masked_elements_become_nan(britain: CoordinateChain) -> None:
    lat: Any = np.ma.masked_equal([52, 53], 53)  # type: ignore[no-untyped-call]
    assert np.isnan(britain.to_local(lat, 0)).tolist() == [[False, True]] * 3


def test_missing_values_of_columns_become_nan(britain: CoordinateChain) -> None:
    pandas = pytest.importorskip("pandas")
    column: Any
    for column in (
        pandas.array([52, None], dtype="Int64"),
        pandas.Series([52, None], dtype="Float64"),
        pandas.Series([52, None], dtype=object),
    ):
        north = britain.to_local(column, 0)[0]
        assert north[0] == britain.to_local(52, 0)[0] and np.isnan(north[1])
    with pytest.raises(TypeError, match="lat: must be"):
        britain.to_local(pandas.array(["52", None], dtype="string"), 0)


def scattered_heights() -> None:
    degree, scattered = 1000, np.linspace(50, 60, 20_000)
    coefficients = np.full((degree + 1) * (degree + 2) // 2, 1e-10)
    CoordinateChain(geoid=GlobalGeoid(coefficients, coefficients)).to_local(scattered, scattered)


def wide_site() -> None:
    at = np.random.default_rng(1).random((2, 40_000))
    control = {"lat": 52 + at[0], "lon": 5 + at[1], "local_n": at[0] * 111e3, "local_e": at[1] * 68e3}
    Calibration(control).solve()


@pytest.mark.parametrize("minute_of_work", [scattered_heights, wide_site])
def test_an_interrupt_is_heard_within_a_second(minute_of_work: Callable[[], None]) -> None:
    rung: list[float] = []

    def ring(*_: Any) -> None:
        rung.append(time.monotonic())
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, ring)
    signal.setitimer(signal.ITIMER_REAL, 0.2)
    started = time.monotonic()
    try:
        with pytest.raises(KeyboardInterrupt):
            minute_of_work()
    finally:
        signal.signal(signal.SIGALRM, before)
    assert rung[0] - started < 0.2 + 1


def test_out_is_filled_and_may_be_the_arguments(britain: CoordinateChain) -> None:
    lat, lon, h = points(3000)
    wanted = britain.to_local(lat, lon, h)
    out = (np.empty(3000), np.empty(3000), np.empty(3000))
    results = britain.to_local(lat, lon, h, out=out)
    assert all(r is o for r, o in zip(results, out))
    np.testing.assert_array_equal(out, wanted)
    # In place; the results exchanged; shifted against the arguments, where blocks would mix.
    for order in ((0, 1, 2), (1, 2, 0)):
        given = [lat.copy(), lon.copy(), h.copy()]
        places = tuple(given[i] for i in order)
        britain.to_local(*given, out=(places[0], places[1], places[2]))
        np.testing.assert_array_equal(places, wanted)
    memory = np.concatenate([lat, lon, h])
    arguments = memory[:3000], memory[3000:6000], memory[6000:]
    out = memory[100:3100], memory[3100:6100], np.empty(3000)
    britain.to_local(*arguments, out=out)
    np.testing.assert_array_equal(out, wanted)


@pytest.mark.parametrize(
    "out",
    [
        (np.empty(2), np.empty(2)),
        (np.empty(2), np.empty(2), np.empty(3)),
        (np.empty(2), np.empty(2), np.empty(2, dtype=np.float32)),
        (np.empty(2), np.empty(2), np.empty(4)[::2]),
        (np.empty(2), np.empty(2), np.broadcast_to(1.0, 2)),
        7,
    ],
)
def test_out_that_cannot_take_the_results_is_refused(britain: CoordinateChain, out: Any) -> None:
    with pytest.raises(TypeError, match=r"tuple of 3 arrays of float64.* of shape \(2,\)"):
        britain.to_local([50, 51], 0, out=out)


def test_arguments_that_make_no_sense_are_refused(britain: CoordinateChain) -> None:
    both = np.empty(2)
    with pytest.raises(Error, match="share memory"):
        britain.to_local([50, 51], 0, out=(both, both, np.empty(2)))
    with pytest.raises(Error, match=r"lat \(2,\), lon \(3,\), h \(\)"):
        britain.to_local([50, 51], [1, 2, 3])
    anything: Any
    for anything in ("north", 1j, [[1, 2], [3]], object()):
        with pytest.raises((TypeError, ValueError)):
            britain.to_local(anything, 0)


def test_threads_share_one_chain(britain: CoordinateChain) -> None:
    inputs = [points(200_000, seed) for seed in range(4)]
    alone = [britain.to_local(*columns) for columns in inputs]
    with ThreadPoolExecutor(4) as pool:
        together = list(pool.map(lambda columns: britain.to_local(*columns), inputs))
    np.testing.assert_array_equal(together, alone)


def test_the_interpreter_runs_while_a_chain_works(britain: CoordinateChain) -> None:
    columns = points(1_000_000)
    seen = 0
    with ThreadPoolExecutor(1) as pool:
        work = pool.submit(lambda: britain.to_local(*columns))
        while not work.done():
            seen += 1  # with the lock held there would be a turn or two before and after
    assert seen > 100
