"""CoordinateChain over Dask arrays and data frames: more points than one machine holds.

    import dask.array, geomath, geomath.dask
    chain = geomath.CoordinateChain.from_file("site.json")
    local = geomath.dask.convert(positions, chain)    # lazy: nothing is converted yet
    local.to_zarr("local.zarr")                       # chunk by chunk, on all workers

Every chunk is converted by one batch call, so that results are those of the plain call bit for bit,
however the points are divided. The chain is one node of the task graph: it is pickled once and sent
once to each worker that needs it. Nothing is kept between chunks: when a worker dies, the scheduler
converts its chunks again elsewhere.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, TypeVar

import numpy as np
from dask.array.core import Array
from dask.delayed import delayed

if TYPE_CHECKING:
    from collections.abc import Callable, Sequence

    from . import CoordinateChain

__all__ = ["convert"]

_Collection = TypeVar("_Collection")
_Block = np.ndarray[Any, np.dtype[np.float64]]

_GLOBAL = ("lat", "lon", "h")
_LOCAL = ("north", "east", "h")


def convert(
    data: _Collection,
    chain: CoordinateChain,
    *,
    inverse: bool = False,
    columns: Sequence[str] | None = None,
    into: Sequence[str] | None = None,
    degrees: bool = True,
) -> _Collection:
    """Converts points by a chain, lazily, chunk by chunk.

    data: a Dask array whose last axis holds the coordinates of a point, latitude, longitude and
    height in the order and units of `CoordinateChain.to_local`, or the first two of them; the result
    has the same shape. Or a Dask data frame: `columns` names the three columns to read, by default
    "lat", "lon", "h", and `into` those to write, by default "north", "east", "h"; the others, the
    index and the divisions stay. With inverse=True points go from local to global by
    `CoordinateChain.to_global`, and the default names change places.

    A point that cannot be converted becomes NaN and disturbs no other point. Raises TypeError for
    anything else than those collections, ValueError for another number of coordinates, and KeyError
    for a column that is not there, all of them at once and not when chunks are computed.
    """
    # pure: the same chain has the same key, so that two conversions of one graph share it.
    node = delayed(chain, pure=True, traverse=False)
    converted: _Collection
    if isinstance(data, Array):
        converted = _convert_array(data, node, inverse, degrees)
    elif hasattr(data, "map_partitions"):
        names = (_LOCAL, _GLOBAL) if inverse else (_GLOBAL, _LOCAL)
        converted = _convert_frame(
            data, node, inverse, degrees, list(columns or names[0]), list(into or names[1])
        )
    else:
        raise TypeError(
            "geomath.dask.convert takes a Dask array or data frame, not "
            f"{type(data).__module__}.{type(data).__qualname__}: for arrays in memory call the chain"
        )
    return converted


def _convert_array(points: Any, chain: Any, inverse: bool, degrees: bool) -> Any:
    if points.ndim < 1 or points.shape[-1] not in (2, 3):
        raise ValueError(
            f"the last axis must hold two or three coordinates: the shape is {points.shape}"
        )
    whole_points = points.rechunk({points.ndim - 1: -1})
    return whole_points.map_blocks(
        _convert_block, chain, inverse, degrees, dtype=np.float64, meta=np.empty((0,) * points.ndim)
    )


def _convert_frame(
    frame: Any,
    chain: Any,
    inverse: bool,
    degrees: bool,
    columns: list[str],
    into: list[str],
) -> Any:
    for names in (columns, into):
        if len(names) != 3:
            raise ValueError(f"three columns are needed, not {names}")
    for name in columns:
        if name not in frame.columns:
            raise KeyError(f"the data frame has no column {name!r}: it has {list(frame.columns)}")
    meta = frame._meta.assign(**{name: np.float64() for name in into})
    return frame.map_partitions(
        _convert_partition, chain, inverse, degrees, columns, into, meta=meta
    )


def _call(chain: CoordinateChain, inverse: bool) -> Callable[..., tuple[_Block, ...]]:
    if inverse:
        return chain.to_global
    return chain.to_local


def _convert_block(points: _Block, chain: CoordinateChain, inverse: bool, degrees: bool) -> _Block:
    coordinates = np.moveaxis(points, -1, 0)
    # Three whole columns for the library to write, seen as points again afterwards.
    results = np.empty((3, *points.shape[:-1]))
    _call(chain, inverse)(*coordinates, degrees=degrees, out=tuple(results))
    return np.moveaxis(results[: len(coordinates)], 0, -1)


def _convert_partition(
    frame: Any,
    chain: CoordinateChain,
    inverse: bool,
    degrees: bool,
    columns: list[str],
    into: list[str],
) -> Any:
    coordinates = (frame[name].to_numpy() for name in columns)
    results = _call(chain, inverse)(*coordinates, degrees=degrees)
    return frame.assign(**dict(zip(into, results)))
