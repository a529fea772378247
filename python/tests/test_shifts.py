"""Shifts from files: on numbers and arrays, both ways, in pickles."""

import json
import pickle
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from geomath import CoordinateChain, Error, ShiftGrid, Triangulation

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


def test_a_chain_refuses_what_it_cannot_hold(tmp_path: Path) -> None:
    system = tmp_path / "system.json"
    system.write_text(json.dumps({
        "global": {"ellipsoid": "GRS80"},
        "projection": {"name": "TMERC", "Central Meridian": 9, "Scale": 1, "Lat0": 0, "East0": 0, "North0": 0},
        "shifts": [{"place": "after projection", "offset": {"north": 1}}],
    }))
    with pytest.raises(Error, match="shifts"):
        CoordinateChain.from_file(system)
