"""States of pickles, damaged at random: they give an error, or an object that works."""

import contextlib
import json
import pickle
import random
import struct
import tempfile
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from geomath import (
    Calibration,
    CoordinateChain,
    Datum,
    Ellipsoid,
    Error,
    GlobalGeoid,
    GridToGround,
    LocalToGrid,
    MagneticModel,
    Projection,
    RegionalGeoid,
    Triangulation,
)

BRITAIN: Any = dict(central_meridian=-2, scale=0.9996012717, lat0=49, east0=4e5, north0=-1e5)
GRID = Projection("TM", "Airy 1830", **BRITAIN)
DATUM = Datum("Airy 1830", 446.448, -125.157, 542.060, -0.1502, -0.2470, -0.8421, -20.4894)
SITE = LocalToGrid(shift_n=3, rotation=12, shift_h=1)
HEIGHTS = np.arange(12, dtype=np.float32).reshape(3, 4)
GEOID = RegionalGeoid(HEIGHTS, south=50, west=-3, lat_step=1, lon_step=1)
GROUND = GridToGround(height=100, grid_scale_factor=0.9996)
CHAIN = CoordinateChain(
    datum=DATUM, projection=GRID, geoid=GEOID, localization=SITE, ground=GROUND
)
NETWORK = {
    "file_type": "triangulation_file",
    "format_version": "1.1",
    "input_crs": "EPSG:25832",
    "transformed_components": ["horizontal"],
    "vertices_columns": ["source_x", "source_y", "target_x", "target_y"],
    "triangles_columns": ["idx_vertex1", "idx_vertex2", "idx_vertex3"],
    "vertices": [[0, 0, 1, 2], [1e6, 0, 1000001, 2], [0, 1e6, 1, 1000002]],
    "triangles": [[0, 1, 2]],
}


def shifted(folder: Path) -> tuple[Triangulation, CoordinateChain]:
    """A triangulation, and a chain with it and with parameters."""
    (folder / "network.json").write_text(json.dumps(NETWORK))
    (folder / "system.json").write_text(json.dumps({
        "global": {"ellipsoid": "GRS80"},
        "projection": {"name": "TM", "Central Meridian": -2, "Scale": 1, "Lat0": 49, "East0": 4e5,
                       "North0": -1e5},
        "shifts": [{"file": "network.json", "place": "after projection"},
                   {"offset": {"height": 1}, "place": "heights"}],
    }))
    chain = CoordinateChain.from_file(folder / "system.json")
    return Triangulation.from_file(folder / "network.json"), chain


with tempfile.TemporaryDirectory() as scratch:
    TRIANGLES, SHIFTED = shifted(Path(scratch))
CONTROL = {
    "lat": [52.0, 52.1, 52.0, 52.1],
    "lon": [-2.0, -2.0, -1.9, -1.9],
    "h": [100.0, 101.0, 102.0, 103.0],
    "local_n": [0.0, 11126.0, 0.5, 11127.0],
    "local_e": [0.0, 0.5, 6866.0, 6851.0],
    "local_h": [50.0, 51.0, 52.0, 53.0],
}
OBJECTS: list[Any] = [
    Ellipsoid("Airy 1830"),
    DATUM,
    GRID,
    SITE,
    GROUND,
    GEOID,
    GlobalGeoid(np.arange(10) * 1e-7, np.arange(10) * -1e-8),
    MagneticModel(),
    MagneticModel().field(2012),
    CHAIN,
    TRIANGLES,
    *SHIFTED.shifts,
    SHIFTED,
    Calibration(CONTROL, CHAIN.replace(localization=None, ground=None)),
    Calibration(CONTROL).solve(),
]

STRANGE: list[Any] = [None, True, 0, -1, 2**31, 2**70, 0.0, -1.0, 1e-300, 1e300, np.nan, np.inf]
STRANGE += ["", "TMERK", "EN", "local", "S\udcfcd", b"x", (), [], {}, object(), np.array("text")]
STRANGE += [np.zeros(0), np.zeros((2, 2)), np.zeros((3, 3, 3)), np.array([1.0, None]), np.eye(3) * np.nan]
STRANGE += [Ellipsoid.__new__(Ellipsoid), GlobalGeoid.__new__(GlobalGeoid), *OBJECTS]


def damaged(state: Any, chance: random.Random) -> Any:
    """The state with one part changed, taken away, doubled or put into the place of another."""
    kind = chance.random()
    if isinstance(state, dict) and state:
        key = chance.choice(list(state))
        if kind < 0.1:
            return {k: v for k, v in state.items() if k != key}
        if kind < 0.2:
            return {**state, chance.choice(list(state)): state[key]}
        return {**state, key: damaged(state[key], chance)}
    if isinstance(state, (tuple, list)) and state:
        at = chance.randrange(len(state))
        parts = list(state)
        if kind < 0.1:
            del parts[at]
        elif kind < 0.2:
            parts.insert(at, chance.choice(parts))
        else:
            parts[at] = damaged(parts[at], chance)
        return type(state)(parts)
    if isinstance(state, np.ndarray) and state.size and kind < 0.6:
        changed = state.copy()
        changed.reshape(-1)[chance.randrange(state.size)] = chance.choice([np.nan, np.inf, 1e30, 0])
        return changed if kind < 0.5 else changed.reshape(-1)[chance.randrange(2) :]
    if isinstance(state, float) and kind < 0.5:
        (bits,) = struct.unpack("<q", struct.pack("<d", state))
        return struct.unpack("<d", struct.pack("<q", bits ^ (1 << chance.randrange(63))))[0]
    return chance.choice(STRANGE)


def use(thing: Any) -> None:
    assert type(thing).__name__ in repr(thing)
    if not type(thing).__name__.startswith("Calibration"):
        assert thing == thing and hash(thing) == hash(thing)
    points = [[52.0, -90.0, 1e10], [-2.0, 180.0, 1e-10], [100.0, -1e5, 1e10]]
    for name, count in (("forward", 2), ("inverse", 2), ("factors", 2), ("height", 2), ("elements", 3)):
        if hasattr(thing, name):
            getattr(thing, name)(*points[:count])
    for name in ("to_geocentric", "to_geodetic", "to_wgs84", "from_wgs84", "to_local", "to_global"):
        if hasattr(thing, name):
            getattr(thing, name)(*points)
    for name, count in (("to_ground", 2), ("to_grid", 2)):
        if hasattr(thing, name):
            getattr(thing, name)(*points[:count])
    if isinstance(thing, Calibration):
        with contextlib.suppress(Error):  # points that do not suffice
            use(thing.solve())
    pickle.dumps(thing)


@pytest.mark.filterwarnings("ignore")  # of overflow, in NumPy
@pytest.mark.parametrize("thing", OBJECTS, ids=lambda thing: type(thing).__name__)
def test_damaged_states_give_an_error_or_an_object_that_works(thing: Any, rounds: int = 300) -> None:
    kind: Any = type(thing)
    chance = random.Random(20)
    refused = 0
    for _ in range(rounds):
        state = damaged(thing.__getstate__(), chance)
        again = kind.__new__(kind)
        try:
            again.__setstate__(state)
        except (Error, TypeError):
            refused += 1
            continue
        use(again)
    assert 0 < refused < rounds
