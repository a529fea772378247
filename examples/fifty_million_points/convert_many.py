#!/usr/bin/env python3
"""Converts more points than the workers could hold at once, on a local cluster.

    PYTHONPATH=build/python examples/fifty_million_points/convert_many.py [--points N] [--workers N ...]

The positions are made chunk by chunk on the workers and only a summary and a sample come back: at no
time does a process hold more than a few chunks. The sample is compared with the plain call bit for
bit. Several values of --workers run one after the other and show how the work divides.
"""

import argparse
import pathlib
import time

import dask
import dask.array as da
import distributed
import numpy as np

import geomath
import geomath.dask

SYSTEM = pathlib.Path(__file__).resolve().parent.parent / "great_britain" / "system.json"
CHUNK = 1_000_000
WORKER_MEMORY = "600MB"  # 50 million positions and their results take 2.4 GB
SAMPLE_STEP = 99_991  # a prime: the sample falls on every part of a chunk


def positions(index):
    """Positions scattered over Great Britain, from the number of a point alone."""
    spread = (index[:, np.newaxis] * np.array([0.7548776662466927, 0.5698402909980532, 0.3])) % 1
    return np.array([50.0, -6.0, 0.0]) + spread * np.array([8.0, 7.0, 500.0])


def lazy_positions(count):
    index = da.arange(count, chunks=CHUNK)
    return index.map_blocks(positions, new_axis=1, chunks=(index.chunks[0], 3), dtype=np.float64)


def convert(count, workers, chain):
    """Seconds, the extent of the local coordinates, and the sample of one run."""
    local = geomath.dask.convert(lazy_positions(count), chain)
    with distributed.LocalCluster(
        n_workers=workers,
        threads_per_worker=1,
        memory_limit=WORKER_MEMORY,
        dashboard_address=None,
    ) as cluster, distributed.Client(cluster):
        start = time.perf_counter()
        low, high, sample = dask.compute(local.min(axis=0), local.max(axis=0), local[::SAMPLE_STEP])
        return time.perf_counter() - start, low, high, sample


def main():
    parser = argparse.ArgumentParser(description="Converts many points on a local cluster.")
    parser.add_argument("--points", type=int, default=50_000_000)
    parser.add_argument("--workers", type=int, nargs="+", default=[2])
    arguments = parser.parse_args()

    chain = geomath.CoordinateChain.from_file(SYSTEM)
    expected = np.stack(
        chain.to_local(*positions(np.arange(0, arguments.points, SAMPLE_STEP)).T), axis=-1
    )
    seconds = {}
    for workers in arguments.workers:
        seconds[workers], low, high, sample = convert(arguments.points, workers, chain)
        print(
            f"{arguments.points:,} points, {workers} worker(s): {seconds[workers]:.1f} s; north "
            f"{low[0]:.0f} to {high[0]:.0f} m, east {low[1]:.0f} to {high[1]:.0f} m"
        )
        if not np.array_equal(sample, expected):
            raise SystemExit("the sample differs from the plain call")
        print(f"{len(sample)} sampled points: the same bits as the plain call")
    if len(seconds) > 1:
        first, last = arguments.workers[0], arguments.workers[-1]
        print(f"{last} workers are {seconds[first] / seconds[last]:.2f} times as fast as {first}")


if __name__ == "__main__":
    main()
