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

from typing import TYPE_CHECKING, Any, TypeVar, overload

import dask.array
import numpy as np
from dask.array.core import Array
from dask.delayed import delayed

from . import Error, decimal_year

if TYPE_CHECKING:
    from collections.abc import Callable, Mapping, Sequence

    from . import CoordinateChain

__all__ = ["convert"]

_Collection = TypeVar("_Collection")
_Block = np.ndarray[Any, np.dtype[np.float64]]

_array: Any = dask.array  # its functions have no types

_GLOBAL = ("lat", "lon", "h")
_LOCAL = ("north", "east", "h")


@overload
def convert(  # type: ignore[misc]
    data: _Collection,
    chain: CoordinateChain,
    *,
    inverse: bool = ...,
    columns: Sequence[str] | None = ...,
    into: Sequence[str] | None = ...,
    degrees: bool = ...,
    epoch: Any = ...,
    covariance: None = ...,
    frame: str = ...,
    errors: None = ...,
) -> _Collection: ...
@overload
def convert(
    data: _Collection,
    chain: CoordinateChain,
    *,
    inverse: bool = ...,
    degrees: bool = ...,
    epoch: Any = ...,
    covariance: Any,
    frame: str = ...,
    errors: Mapping[str, Any] | None = ...,
) -> tuple[_Collection, _Collection]: ...
def convert(
    data: Any,
    chain: CoordinateChain,
    *,
    inverse: bool = False,
    columns: Sequence[str] | None = None,
    into: Sequence[str] | None = None,
    degrees: bool = True,
    epoch: Any = None,
    covariance: Any = None,
    frame: str = "north-east-up",
    errors: Mapping[str, Any] | None = None,
) -> Any:
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

    covariance, frame and errors are those of `to_local`, for arrays of three coordinates: a Dask array
    whose last two axes are (3, 3), or one (3, 3) for all points. The result is then a pair, the points
    and their covariances.

    A point that cannot be converted becomes NaN and disturbs no other point. Raises TypeError for
    anything else than those collections, ValueError for another number of coordinates, KeyError for a
    column that is not there, and Error for a date that is missing or none, all of them at once and not
    when chunks are computed.
    """
    if epoch is None and chain.epoch is None and chain.needs_epoch:
        raise Error("a frame that moves needs the date of the positions: give epoch")
    # pure: the same chain has the same key, so that two conversions of one graph share it.
    node = delayed(chain, pure=True, traverse=False)
    converted: Any
    if isinstance(data, Array):
        if not isinstance(epoch, Array):
            epoch = _one_date(epoch)
        if covariance is None:
            converted = _convert_array(data, node, inverse, degrees, epoch)
        else:
            keywords = {"degrees": degrees, "frame": frame, "errors": errors}
            converted = _convert_covariances(data, covariance, node, inverse, epoch, keywords)
    elif covariance is not None:
        raise TypeError("covariances go with Dask arrays")
    elif hasattr(data, "map_partitions"):
        names = (_LOCAL, _GLOBAL) if inverse else (_GLOBAL, _LOCAL)
        table: Any = data
        if not isinstance(epoch, str) or epoch not in table.columns:
            epoch = _one_date(epoch)
        converted = _convert_frame(
            table, node, inverse, degrees, list(columns or names[0]), list(into or names[1]), epoch
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


def _convert_covariances(
    points: Any, covariance: Any, chain: Any, inverse: bool, epoch: Any, keywords: dict[str, Any]
) -> tuple[Any, Any]:
    if points.ndim < 1 or points.shape[-1] != 3:
        raise ValueError(f"the last axis must hold three coordinates: the shape is {points.shape}")
    shape = points.shape[:-1]
    axes: tuple[int, ...] = ()
    if not isinstance(covariance, Array):
        covariance = _array.from_array(np.asarray(covariance, dtype=float), chunks=-1)
    if covariance.shape == (3, 3):
        matrices = covariance
    elif covariance.shape == (*shape, 3, 3):
        matrices = covariance.rechunk((*points.chunks[:-1], (3,), (3,)))
        axes = tuple(range(len(shape)))
    else:
        raise ValueError(f"covariance: its shape {covariance.shape} must be (3, 3) or {shape} and that")
    across = tuple(range(len(shape)))
    dates: tuple[Any, ...] = ()
    if isinstance(epoch, Array):
        dates = (_array.rechunk(epoch, points.chunks[:-1]), across)
    else:
        keywords = {**keywords, "epoch": epoch}
    coordinate, row, column, result = range(len(shape), len(shape) + 4)
    # Twelve numbers a point, so that every chunk is converted once.
    both = _array.blockwise(
        _convert_uncertain,
        (*across, result),
        points.rechunk({points.ndim - 1: -1}),
        (*across, coordinate),
        matrices,
        (*axes, row, column),
        *dates,
        chain=chain,
        inverse=inverse,
        keywords=keywords,
        new_axes={result: 12},
        concatenate=True,
        dtype=np.float64,
        meta=np.empty((0,) * points.ndim),
    )
    return both[..., :3], both[..., 3:].reshape((*shape, 3, 3))


def _convert_uncertain(
    points: _Block,
    matrices: _Block,
    *dates: Any,
    chain: CoordinateChain,
    inverse: bool,
    keywords: dict[str, Any],
) -> _Block:
    call: Any = _call(chain, inverse)
    if dates:
        keywords = {**keywords, "epoch": dates[0]}
    *coordinates, covariances = call(*np.moveaxis(points, -1, 0), covariance=matrices, **keywords)
    return np.concatenate(
        [np.stack(coordinates, axis=-1), covariances.reshape((*points.shape[:-1], 9))], axis=-1
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
