"""Objects: pickles bit for bit, equality, lifetimes, and the texts of errors."""

import copy
import gc
import os
import pickle
from pathlib import Path
from typing import Any

import geomath
import numpy as np
import pytest
from geomath import (
    CoordinateChain,
    Datum,
    Ellipsoid,
    Error,
    Geodesic,
    GlobalGeoid,
    GridLines,
    LocalToGrid,
    Projection,
    RegionalGeoid,
    interpolation_names,
)

TMERC: Any = dict(central_meridian=9, scale=0.9996, lat0=0, east0=5e5, north0=0)


def geoid() -> RegionalGeoid:
    heights = np.linspace(40, 60, 30 * 40, dtype=np.float32).reshape(30, 40)
    heights[3, 4] = np.nan
    return RegionalGeoid(heights, south=48, west=-8, lat_step=0.5, lon_step=0.25)


OBJECTS: list[Any] = [
    Ellipsoid(6377563.396, b=6356256.909),
    Datum("Bessel 1841", 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7),
    Projection("TMERC", "GRS80", grid_axes="EN", **TMERC),
    geoid(),
    GlobalGeoid(np.arange(10) * 1e-7, np.arange(10) * -1e-8),
    LocalToGrid(shift_n=1.25, rotation=0.3, shift_h=-40.1),
    Geodesic("Airy 1830"),
    GridLines(Projection("TMERC", "GRS80", **TMERC), geoid()),
]


@pytest.mark.parametrize("thing", OBJECTS, ids=lambda thing: type(thing).__name__)
def test_objects_are_equal_to_their_copies_and_to_nothing_else(thing: Any) -> None:
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        again = pickle.loads(pickle.dumps(thing, protocol))
        assert again == thing and hash(again) == hash(thing) and again is not thing
        assert pickle.dumps(again) == pickle.dumps(pickle.loads(pickle.dumps(again)))
    assert copy.deepcopy(thing) == thing
    assert [other == thing for other in OBJECTS].count(True) == 1
    assert thing != 1
    assert type(thing).__name__ in repr(thing)


def test_a_chain_pickles_whole(britain: CoordinateChain, tmp_path: Path) -> None:
    chain = britain.replace(
        geoid=geoid(), geoid_frame="local", localization=LocalToGrid(shift_n=3, rotation=12)
    )
    lat, lon = np.meshgrid(np.linspace(49, 60, 40), np.linspace(-7, 1, 30))
    again = pickle.loads(pickle.dumps(chain))
    assert again == chain and again != britain
    for kept in (again, eval(repr(britain), vars(geomath))):
        whole = chain if kept is again else britain
        for results in zip(kept.to_local(lat, lon, 50), whole.to_local(lat, lon, 50)):
            np.testing.assert_array_equal(*results)
    assert again.geoid == geoid() and again.geoid_frame == "local"
    assert again.replace(geoid=None, geoid_frame="global", localization=None) == britain


def test_a_geoid_keeps_heights_of_its_own() -> None:
    heights = np.zeros((10, 20), dtype=np.float32)
    model = RegionalGeoid(heights, south=49, west=-6, lat_step=0.5, lon_step=0.5)
    heights[:] = 7
    assert model.height(51.3, -2.2) == 0
    with pytest.raises(ValueError, match="WRITEABLE"):
        model.grid.flags.writeable = True
    chain, grid = CoordinateChain(geoid=model), model.grid
    del model
    gc.collect()
    assert chain.to_local(51.3, -2.2, 10)[2] == 10
    del chain
    gc.collect()
    np.full((10, 20), np.float32(9))  # would take the memory, were it free
    assert not grid.any()


@pytest.mark.parametrize("thing", OBJECTS, ids=lambda thing: type(thing).__name__)
def test_objects_that_were_never_made_are_refused(thing: Any) -> None:
    kind: Any = type(thing)
    for method in ("__repr__", "__hash__", "__getstate__"):
        with pytest.raises(TypeError, match="never made"):
            getattr(kind.__new__(kind), method)()
    with pytest.raises(TypeError, match="never made"):
        assert thing == kind.__new__(kind)


def test_an_object_of_a_derived_class_is_made_by_the_base() -> None:
    def early(self: Any) -> None:
        self.a  # what no ellipsoid has yet

    def late(self: Any) -> None:
        Ellipsoid.__init__(self, "WGS84")
        assert self.a == 6378137

    with pytest.raises(TypeError, match="never made"):
        type("Early", (Ellipsoid,), {"__init__": early})()
    assert type("Late", (Ellipsoid,), {"__init__": late})() == Ellipsoid("WGS84")


def test_paths_of_any_bytes_are_read_and_named(tmp_path: Path) -> None:
    path = tmp_path / os.fsdecode(b"S\xfcd.json")  # Latin-1, as old archives have it
    path.write_text('{"name": 1}')
    with pytest.raises(Error) as error:
        CoordinateChain.from_file(path)
    assert str(error.value).startswith(str(path) + ': "name" must be a text')
    with pytest.raises(ValueError, match="null character"):
        CoordinateChain.from_file("site.json\0.txt")


def test_a_grid_around_the_earth_has_no_seam() -> None:
    rows, columns = np.mgrid[0:19, 0:36]
    heights = 20.0 + (7 * rows * rows + 13 * columns) % 29
    place: Any = {"south": -90, "lat_step": 10, "lon_step": 10}
    lat, lon = np.full(80, 13.0), np.linspace(-360, 360, 80)
    for scheme in interpolation_names():
        model = RegionalGeoid(heights, west=0, interpolation=scheme, **place)
        again = np.append(heights, heights[:, :1], axis=1)
        turned = np.roll(heights, 18, axis=1)
        expected = model.height(lat, lon)
        assert np.isfinite(expected).all(), scheme
        for other in (
            RegionalGeoid(again, west=0, interpolation=scheme, **place),
            RegionalGeoid(turned, west=-180, interpolation=scheme, **place),
            pickle.loads(pickle.dumps(model)),
        ):
            np.testing.assert_allclose(other.height(lat, lon), expected, rtol=0, atol=2e-4)
    by_hand = 0.4 * (0.7 * heights[10, 35] + 0.3 * heights[11, 35]) + 0.6 * (
        0.7 * heights[10, 0] + 0.3 * heights[11, 0]
    )
    assert RegionalGeoid(heights, west=0, **place).height(13, -4) == pytest.approx(by_hand, abs=1e-6)


def test_the_corners_of_a_grid_have_heights() -> None:
    model = RegionalGeoid([[46, 48], [47, 49]], south=47, west=8, lat_step=1, lon_step=1)
    found = model.height([47, 47, 48, 48, 47.5], [8, 9, 8, 9, 8])
    np.testing.assert_allclose(found, [46, 48, 47, 49, 46.5], rtol=0, atol=1e-9)


def test_grids_of_any_type_and_row_order_give_one_geoid() -> None:
    # Bilinear interpolation of a plane is exact: 40 + lat/4 + lon/8 in binary fractions.
    lat, lon = np.meshgrid(np.arange(48, 60, 0.5), np.arange(-8, 2, 0.25), indexing="ij")
    plane = 40 + lat / 4 + lon / 8
    place: Any = dict(south=48, west=-8, lat_step=0.5, lon_step=0.25)
    models = [
        RegionalGeoid(plane, **place),
        RegionalGeoid(np.asfortranarray(plane), **place),
        RegionalGeoid(plane[::-1], north_first=True, **place),
        RegionalGeoid(plane.astype(np.float32), interpolation="regGeoid2x2NW", **place),
    ]
    for model in models:
        assert model.height(53.25, -3.125) == pytest.approx(40 + 53.25 / 4 - 3.125 / 8, abs=1e-6)
        assert np.isnan(model.height([40, 53], [0, 20])).all()
    assert models[0] == models[1] == models[2] != models[3]


@pytest.mark.parametrize(
    "make, text",
    [
        (
            lambda: Projection("TMERK", **TMERC),
            'Projection: "name" is the unknown projection "TMERK"; did you mean "TMERC"?',
        ),
        (
            lambda: Projection("DSTER", lat0=52),
            'Projection: "lon0" is missing; DSTER needs "lat0", "lon0", "scale", "east0", "north0"',
        ),
        (
            lambda: Projection("TMERC", centralmeridien=9, **TMERC),
            '"centralmeridien" is unknown; did you mean "central_meridian"?',
        ),
        (
            lambda: Projection("TMERC", **dict(TMERC, lat0=91)),
            '"lat0" is 91: decimal degrees from -90 to 90 belong there',
        ),
        (lambda: Projection("TMERC", grid_axes="XY", **TMERC), '"grid_axes" is "XY"'),
        (lambda: Ellipsoid("WGS48"), 'unknown ellipsoid "WGS48"; did you mean "WGS84"?'),
        (lambda: Ellipsoid(6378137, 0.00335), '"inv_f" is 0.00335: the inverse flattening'),
        (lambda: Ellipsoid(6378.137, 298.3), '"a" is 6378.137: the semi-axis in metres'),
        (lambda: Datum("WGS84", ppm=float("nan")), 'Datum: "ppm" must be a finite number'),
        (lambda: Datum("WGS84", rx=1.3e6), 'Datum: "rx" is beyond a full turn'),
        (
            lambda: LocalToGrid(shift_n=0, shift_e=0, rotation=361),
            '"rotation" is beyond a full turn',
        ),
        (
            lambda: CoordinateChain.from_epsg(27700, near=(95, 0)),
            "near: latitude 95 degrees is outside -90 to 90",
        ),
        (lambda: LocalToGrid(), '"shift_n" is missing'),
        (
            lambda: CoordinateChain(datum=Datum("Airy 1830"), projection=OBJECTS[2]),
            "must share one ellipsoid",
        ),
        (
            lambda: CoordinateChain.from_file("absent.json"),
            "absent.json: cannot be read: No such file",
        ),
        (
            lambda: RegionalGeoid(np.zeros((3, 3)), south=89, west=0, lat_step=1, lon_step=1),
            "RegionalGeoid: the grid does not lie between the poles",
        ),
        (
            lambda: RegionalGeoid(np.zeros((3, 3)), south=8, west=0, lat_step=1, lon_step=1e9),
            "RegionalGeoid: the longitudes of the grid go beyond 360 degrees",
        ),
        (
            lambda: RegionalGeoid(np.zeros((3, 3)), south=8, west=400, lat_step=1, lon_step=1),
            "RegionalGeoid: the longitudes of the grid go beyond 360 degrees",
        ),
        (lambda: GlobalGeoid(np.zeros(5), np.zeros(5)), r"(n + 1)(n + 2)/2 coefficients"),
        (lambda: GlobalGeoid.from_file("absent.gfc"), "absent.gfc: cannot be read"),
    ],
)
def test_errors_say_what_would_be_right(make: Any, text: str) -> None:
    with pytest.raises(Error) as error:
        make()
    assert text in str(error.value)
    assert isinstance(error.value, ValueError)
