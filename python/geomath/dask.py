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

from . import Error, decimal_year

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
    epoch: Any = None,
) -> _Collection:
    """Converts points by a chain, lazily, chunk by chunk.

    data: a Dask array whose last axis holds the coordinates of a point, latitude, longitude and
    height in the order and units of `CoordinateChain.to_local`, or the first two of them; the result
    has the same shape. Or a Dask data frame: `columns` names the three columns to read, by default
    "lat", "lon", "h", and `into` those to write, by default "north", "east", "h"; the others, the
    index and the divisions stay. With inverse=True points go from local to global by
    `CoordinateChain.to_global`, and the default names change places.

    epoch: the date of the positions, for a chain with a frame that moves, as `CoordinateChain.to_local`
    takes one. Beside a Dask array also one with a date for each point, its shape without the last axis;
    beside a data frame also the name of a column of dates.

    A point that cannot be converted becomes NaN and disturbs no other point. Raises TypeError for
    anything else than those collections, ValueError for another number of coordinates, KeyError for a
    column that is not there, and Error for a date that is missing or none, all of them at once and not
    when chunks are computed.
    """
    if epoch is None and chain.epoch is None and chain.needs_epoch:
        raise Error("a frame that moves needs the date of the positions: give epoch")
    # pure: the same chain has the same key, so that two conversions of one graph share it.
    node = delayed(chain, pure=True, traverse=False)
    converted: _Collection
    if isinstance(data, Array):
        if not isinstance(epoch, Array):
            epoch = _one_date(epoch)
        converted = _convert_array(data, node, inverse, degrees, epoch)
    elif hasattr(data, "map_partitions"):
        names = (_LOCAL, _GLOBAL) if inverse else (_GLOBAL, _LOCAL)
        frame: Any = data
        if not isinstance(epoch, str) or epoch not in frame.columns:
            epoch = _one_date(epoch)
        converted = _convert_frame(
            frame, node, inverse, degrees, list(columns or names[0]), list(into or names[1]), epoch
        )
    else:
        raise TypeError(
            "geomath.dask.convert takes a Dask array or data frame, not "
            f"{type(data).__module__}.{type(data).__qualname__}: for arrays in memory call the chain"
        )
    return converted


def _one_date(epoch: Any) -> float | None:
    if epoch is None:
        return None
    year = decimal_year(epoch)
    if np.ndim(year) > 0:
        raise ValueError("epoch must be one date, a Dask array, or the name of a column")
    return float(year)


def _convert_array(points: Any, chain: Any, inverse: bool, degrees: bool, epoch: Any) -> Any:
    if points.ndim < 1 or points.shape[-1] not in (2, 3):
        raise ValueError(
            f"the last axis must hold two or three coordinates: the shape is {points.shape}"
        )
    whole_points = points.rechunk({points.ndim - 1: -1})
    meta = np.empty((0,) * points.ndim)
    if not isinstance(epoch, Array):
        return whole_points.map_blocks(
            _convert_block, chain, inverse, degrees, epoch, dtype=np.float64, meta=meta
        )
    if epoch.shape != points.shape[:-1]:
        raise ValueError(
            f"epoch must have a date for each point: the shapes are {epoch.shape} and {points.shape}"
        )
    each: Any = epoch
    dates = each.rechunk(whole_points.chunks[:-1])[..., np.newaxis]
    return whole_points.map_blocks(
        _convert_dated_block,
        dates,
        chain,
        inverse,
        degrees,
        dtype=np.float64,
        chunks=whole_points.chunks,
        meta=meta,
    )


def _convert_frame(
    frame: Any,
    chain: Any,
    inverse: bool,
    degrees: bool,
    columns: list[str],
    into: list[str],
    epoch: Any,
) -> Any:
    for names in (columns, into):
        if len(names) != 3:
            raise ValueError(f"three columns are needed, not {names}")
    for name in columns:
        if name not in frame.columns:
            raise KeyError(f"the data frame has no column {name!r}: it has {list(frame.columns)}")
    meta = frame._meta.assign(**{name: np.float64() for name in into})
    return frame.map_partitions(
        _convert_partition, chain, inverse, degrees, columns, into, epoch, meta=meta
    )


def _call(chain: CoordinateChain, inverse: bool) -> Callable[..., tuple[_Block, ...]]:
    if inverse:
        return chain.to_global
    return chain.to_local


def _convert_block(
    points: _Block, chain: CoordinateChain, inverse: bool, degrees: bool, epoch: Any
) -> _Block:
    coordinates = np.moveaxis(points, -1, 0)
    # Three whole columns for the library to write, seen as points again afterwards.
    results = np.empty((3, *points.shape[:-1]))
    _call(chain, inverse)(*coordinates, degrees=degrees, out=tuple(results), epoch=epoch)
    return np.moveaxis(results[: len(coordinates)], 0, -1)


def _convert_dated_block(
    points: _Block, dates: Any, chain: CoordinateChain, inverse: bool, degrees: bool
) -> _Block:
    return _convert_block(points, chain, inverse, degrees, dates[..., 0])


def _convert_partition(
    frame: Any,
    chain: CoordinateChain,
    inverse: bool,
    degrees: bool,
    columns: list[str],
    into: list[str],
    epoch: Any,
) -> Any:
    coordinates = (frame[name].to_numpy() for name in columns)
    dates = frame[epoch].to_numpy() if isinstance(epoch, str) else epoch
    results = _call(chain, inverse)(*coordinates, degrees=degrees, epoch=dates)
    return frame.assign(**dict(zip(into, results)))
