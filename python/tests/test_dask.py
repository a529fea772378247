"""geomath.dask beside the plain call: the same bits, lazily, also when a worker dies."""

import importlib
import json
import os
import signal
import subprocess
import sys
import time
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from conftest import ROOT
from geomath import CoordinateChain
from test_shifts import NETWORK, SYSTEM

da = pytest.importorskip("dask.array")
dd = pytest.importorskip("dask.dataframe")
pd = pytest.importorskip("pandas")
distributed = pytest.importorskip("distributed")
convert = pytest.importorskip("geomath.dask").convert

Array = np.ndarray[Any, np.dtype[np.float64]]


def positions(count: int) -> Array:
    lat = np.linspace(50, 60, count)
    lon = np.linspace(-7, 1.5, count)
    points: Array = np.stack([lat, lon, 100 * np.sin(lat)], axis=-1)
    points[count // 3] = np.nan  # a point that fails, away from its neighbours
    return points


def plain(chain: CoordinateChain, points: Array) -> Array:
    local: Array = np.stack(chain.to_local(points[:, 0], points[:, 1], points[:, 2]), axis=-1)
    return local


@pytest.fixture(scope="module")
def client() -> Iterator[Any]:
    with distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, dashboard_address=None
    ) as cluster, distributed.Client(cluster) as connected:
        yield connected


def test_arrays_have_the_bits_of_the_plain_call(britain: CoordinateChain) -> None:
    points = positions(10_000)
    # Chunks also across the coordinates of a point, as a file format may have cut them.
    lazy = convert(da.from_array(points, chunks=(777, 2)), britain)
    assert lazy.shape == points.shape and lazy.dtype == np.float64
    local = lazy.compute(scheduler="synchronous")
    assert np.array_equal(local, plain(britain, points), equal_nan=True)

    back = convert(da.from_array(local, chunks=(1234, 3)), britain, inverse=True)
    expected = np.stack(britain.to_global(*local.T), axis=-1)
    assert np.array_equal(back.compute(scheduler="synchronous"), expected, equal_nan=True)

    flat = convert(da.from_array(points[:, :2].reshape(100, 100, 2)), britain)
    north, east, _ = britain.to_local(points[:, 0], points[:, 1])
    assert np.array_equal(
        flat.compute(scheduler="synchronous").reshape(-1, 2), np.stack([north, east], -1), True
    )


def test_data_frames_keep_what_is_theirs(britain: CoordinateChain) -> None:
    points = positions(1000)
    frame = pd.DataFrame(points, columns=["lat", "lon", "h"]).assign(name="point")
    partitions = dd.from_pandas(frame, npartitions=7)
    lazy = convert(partitions, britain, into=("N", "E", "H"))
    assert list(lazy.columns) == ["lat", "lon", "h", "name", "N", "E", "H"]
    computed = lazy.compute(scheduler="synchronous")
    assert np.array_equal(computed[["N", "E", "H"]].to_numpy(), plain(britain, points), equal_nan=True)
    assert computed[["lat", "lon", "h", "name"]].equals(frame)


def test_wrong_input_is_refused_at_once(britain: CoordinateChain) -> None:
    with pytest.raises(TypeError, match="Dask array or data frame, not numpy.ndarray"):
        convert(positions(10), britain)
    with pytest.raises(ValueError, match=r"two or three coordinates: the shape is \(10, 4\)"):
        convert(da.zeros((10, 4)), britain)
    frame = dd.from_pandas(pd.DataFrame({"lat": [1.0], "lng": [2.0]}), npartitions=1)
    with pytest.raises(KeyError, match="no column 'lon': it has"):
        convert(frame, britain)


class CountedChain:
    """A chain that counts in every process how often it was unpickled there."""

    unpickled = 0

    def __init__(self, chain: CoordinateChain) -> None:
        self.chain = chain

    def __getattr__(self, name: str) -> Any:
        return getattr(self.chain, name)

    def __getstate__(self) -> CoordinateChain:
        return self.chain

    def __setstate__(self, chain: CoordinateChain) -> None:
        CountedChain.unpickled += 1
        self.chain = chain


def test_the_chain_travels_once_to_each_worker(client: Any, britain: CoordinateChain) -> None:
    # The workers must know the class by the name of a module that they can import.
    here = str(ROOT / "python/tests")
    client.run(lambda: sys.path.insert(0, here))
    counted: Any = importlib.import_module("test_dask").CountedChain(britain)
    points = positions(20_000)
    lazy = convert(da.from_array(points, chunks=(500, 3)), counted)
    assert np.array_equal(lazy.compute(), plain(britain, points), equal_nan=True)
    counts = client.run(lambda: importlib.import_module("test_dask").CountedChain.unpickled)
    assert len(counts) == 2
    assert max(counts.values()) == 1, counts


def test_grids_travel_with_their_chain(client: Any, tmp_path: Path) -> None:
    network = tmp_path / "plane.json"
    corners = [[-1e6, -1e6, -1e6 + 5, -1e6], [2e6, -1e6, 2e6 + 5, -1e6], [0, 3e6, 5, 3e6]]
    network.write_text(json.dumps({**NETWORK, "vertices": corners}))
    system = tmp_path / "system.json"
    system.write_text(json.dumps(SYSTEM))
    chain = CoordinateChain.from_file(system)
    network.unlink()
    points = positions(2000) + [0, 5, 0]
    expected = plain(chain, points)
    assert np.isfinite(expected).all(axis=1).sum() > 1900
    lazy = convert(da.from_array(points, chunks=(500, 3)), chain)
    assert np.array_equal(lazy.compute(), expected, equal_nan=True)


def test_a_worker_that_dies_loses_nothing(client: Any, britain: CoordinateChain) -> None:
    points = positions(40_000)

    def slowly(block: Array) -> Array:
        time.sleep(0.05)
        return block

    lazy = convert(da.from_array(points, chunks=(500, 3)).map_blocks(slowly), britain)
    running = client.compute(lazy)
    victim = next(iter(client.run(os.getpid).values()))
    time.sleep(0.5)
    assert not running.done()
    os.kill(victim, signal.SIGKILL)
    assert np.array_equal(running.result(timeout=120), plain(britain, points), equal_nan=True)
    assert victim not in client.run(os.getpid).values()


def test_the_example_compares_its_sample() -> None:
    example = ROOT / "examples/fifty_million_points/convert_many.py"
    done = subprocess.run(
        [sys.executable, example, "--points", "200000"], capture_output=True, text=True
    )
    assert done.returncode == 0, done.stderr
    assert "3 sampled points: the same bits as the plain call" in done.stdout
