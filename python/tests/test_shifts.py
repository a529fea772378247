"""Shifts from files: on numbers and arrays, both ways, in pickles."""

import json
import pickle
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from conftest import ROOT
from geomath import CoordinateChain, Ellipsoid, Error, GeocentricShiftGrid, ShiftGrid, Triangulation

NETWORK: dict[str, Any] = {
    "file_type": "triangulation_file",
    "format_version": "1.1",
    "input_crs": "EPSG:4326",
    "transformed_components": ["horizontal"],
    "vertices_columns": ["source_x", "source_y", "target_x", "target_y"],
    "triangles_columns": ["idx_vertex1", "idx_vertex2", "idx_vertex3"],
    "vertices": [[10, 50, 20, 60], [11, 50, 21, 60], [10, 51, 20, 62]],
    "triangles": [[0, 1, 2]],
}


@pytest.fixture
def network(tmp_path: Path) -> Path:
    path = tmp_path / "network.json"
    path.write_text(json.dumps(NETWORK))
    return path


def test_a_triangulation_converts_numbers_and_arrays(network: Path) -> None:
    shift = Triangulation.from_file(network)
    assert shift.coordinates == "geographic"
    np.testing.assert_allclose(shift.forward(50.25, 10.5, 7), (60.5, 20.5, 7), rtol=1e-14)
    lat, lon, h = shift.forward(np.array([50.25, 52.0]), 10.5)
    np.testing.assert_allclose(lat, [60.5, np.nan], rtol=1e-14)
    back = shift.inverse(lat, lon, h)
    np.testing.assert_allclose(back[0], [50.25, np.nan], rtol=1e-14)
    np.testing.assert_allclose(shift.inverse(np.radians(60.5), np.radians(20.5), degrees=False)[0],
                               np.radians(50.25), rtol=1e-14)


def test_pickles_carry_the_file(network: Path) -> None:
    shift = Triangulation.from_file(network)
    kept = pickle.dumps(shift)
    network.unlink()
    again = pickle.loads(kept)
    assert again == shift and hash(again) == hash(shift)
    assert again.forward(50.25, 10.5) == shift.forward(50.25, 10.5)


# The grid is made of one translation, of 0.9 m to the north at its southern edge.
def test_geocentric_translations_are_looked_up_where_they_are_told() -> None:
    path = ROOT / "tests/fuzz/corpus/shift_file_fuzz/translations_tif"
    by_source = GeocentricShiftGrid.from_file(path, position="source")
    by_target = GeocentricShiftGrid.from_file(path, position="target")
    just_outside = 50 - 0.4 / 111_000
    x, y, z = Ellipsoid("WGS 84").to_geocentric([51.3, just_outside], 10.5, 0)
    np.testing.assert_allclose(np.subtract(by_target.forward(x, y, z), [x, y, z]),
                               [[1, 1], [2, 2], [3, 3]], atol=2e-9)
    there = by_source.forward(x, y, z)
    assert np.isfinite(there[0]).tolist() == [True, False]
    np.testing.assert_allclose(by_source.inverse(*there)[2][0], z[0], rtol=0, atol=2e-9)
    again = pickle.loads(pickle.dumps(by_target))
    assert again == by_target != by_source and again.position == "target"
    with pytest.raises(Error, match="position must be"):
        GeocentricShiftGrid.from_file(path, position="here")


def test_faults_are_told(network: Path, tmp_path: Path) -> None:
    with pytest.raises(Error, match="network.json: holds no grid of shifts"):
        ShiftGrid.from_file(network)
    with pytest.raises(Error, match="cannot be read"):
        ShiftGrid.from_file(tmp_path / "none.gsb")
    with pytest.raises(Error, match="\"geographic\" or \"plane\""):
        Triangulation.from_file(network, coordinates="round")
    with pytest.raises(TypeError):
        Triangulation.__new__(Triangulation).forward(1, 2)


# The worked point of BETA2007, PROJ's.
def test_the_german_grid() -> None:
    path = Path("/usr/share/proj/BETA2007.gsb")
    if not path.exists():
        pytest.skip("proj-data is absent")
    grid = ShiftGrid.from_file(path)
    assert grid.forward(52.5, 13.4)[:2] == pytest.approx((52.4985944130, 13.3982568056), abs=1e-10)
    assert grid.inverse(52.5, 13.4)[:2] == pytest.approx((52.5014057399, 13.4017435097), abs=1e-10)


SYSTEM: dict[str, Any] = {
    "global": {"ellipsoid": "GRS80"},
    "local": {"ellipsoid": "Bessel 1841"},
    "datum": {"dX": 565.7381, "dY": 50.4018, "dZ": 465.2904, "rX": 0.395026, "rY": -0.330772,
              "rZ": 1.876074, "ppm": 4.07244, "fixedHeight": 43},
    "projection": {"name": "DSTER", "Lat0": 52.1561605555556, "Lon0": 5.3876388888889, "Scale": 0.9999079,
                   "East0": 155000, "North0": 463000},
    "shifts": [
        {"file": "plane.json", "coordinates": "plane", "place": "after projection"},
        {"offset": {"north": 10, "height": 3}, "place": "after projection", "inverse": "yes"},
    ],
}


# Two points of RDNAPTRANS2018 beyond the grid (NSGI), where the definition is the datum alone; the
# shifts of the system move them by 5 m and by -10 m.
def test_chains_have_their_shifts_also_in_pickles(tmp_path: Path) -> None:
    plane = {**NETWORK, "vertices": [[-1e6, -1e6, -1e6 + 5, -1e6], [2e6, -1e6, 2e6 + 5, -1e6], [0, 3e6, 5, 3e6]]}
    (tmp_path / "plane.json").write_text(json.dumps(plane))
    (tmp_path / "system.json").write_text(json.dumps(SYSTEM))
    chain = CoordinateChain.from_file(tmp_path / "system.json")
    n, e, h = chain.to_local(53.999759140, 5.144478208, 252.6995)
    assert (n, e, h) == pytest.approx((668306.0460 - 10, 139079.8850 + 5, 249.6995), abs=1e-3)
    assert chain.fixed_height == 43 and len(chain.shifts) == 2
    assert json.loads(chain.shifts[0].entry) == SYSTEM["shifts"][0]
    back = chain.to_global(n, e, h)
    assert back == pytest.approx((53.999759140, 5.144478208, 252.6995), abs=1e-11)
    (tmp_path / "plane.json").unlink()
    again = pickle.loads(pickle.dumps(chain))
    assert again == chain and hash(again) == hash(chain) and "shifts=" in repr(again)
    assert again.to_local(53.999759140, 5.144478208, 252.6995) == (n, e, h)
    bare = chain.replace(shifts=chain.shifts[1:], fixed_height=None)
    assert bare != chain and bare.to_local(54, 5)[1] != chain.to_local(54, 5)[1]
    with pytest.raises(Error, match="needs a datum"):
        CoordinateChain(projection=chain.projection, fixed_height=43)
    with pytest.raises((Error, TypeError)):
        CoordinateChain(shifts=[None])  # type: ignore[list-item]


# BETA2007 comes with PROJ: PROJ's value for the worked point, through the projection backward.
def test_chains_from_the_registry_take_grids() -> None:
    if not Path("/usr/share/proj/BETA2007.gsb").exists():
        pytest.skip("proj-data is absent")
    chain = CoordinateChain.from_epsg(31467)
    assert len(chain.shifts) == 1 and chain.datum is None
    own = CoordinateChain.from_epsg(31467, datum=False)
    lat, lon, _ = own.to_global(*chain.to_local(52.4985944130, 13.3982568056))
    assert (lat, lon) == pytest.approx((52.5, 13.4), abs=2e-10)
    with pytest.raises(Error, match="nowhere"):
        CoordinateChain.from_epsg(31467, grids=["nowhere"])
