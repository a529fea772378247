"""Conversion: between any two coordinate systems."""

from __future__ import annotations

import os
from typing import Any

import numpy as np

from ._dates import decimal_year
from ._geomath import Error

# Points that are converted at a stroke, between which an interrupt is heard.
_BLOCK = 1 << 18


def _backend() -> Any:
    try:
        from . import _files
    except ImportError as reason:
        raise Error(
            "Conversion: needs the part of the package that stands on GDAL and PROJ, which is not "
            f"here: {reason}"
        ) from None
    return _files


def _system(system: Any) -> str:
    if isinstance(system, int):
        return f"EPSG:{system}"
    return str(os.fspath(system))


class Conversion:
    """From any coordinate system to any other.

    Conversion(source, target, *, operation=None, near=None, grids=None)

    A system is an EPSG code, as a number or as text ("EPSG:31467"), with the code of a system of
    heights behind it ("EPSG:25832+7837"), the path of a system file or of a file of WKT or PROJJSON,
    or WKT. Between the datums each point takes the most accurate operation in whose area it lies;
    operation is the code of one for all points, near (latitude, longitude) a place for which the best
    one is taken. grids are folders with files of grids, before those of GEOMATH_GRIDS and of PROJ.

    Coordinates come in the order latitude, longitude, height (degrees, metres); northing, easting,
    height, in the units of their system; or X, Y, Z. A height stays as it is where one of the systems
    has none, or both have the same. Raises Error for systems that are not known, and where no
    operation can be taken. Objects are immutable, picklable and may be used from many threads.
    """

    __slots__ = ("_arguments", "_made")

    def __init__(
        self,
        source: Any,
        target: Any,
        *,
        operation: int | None = None,
        near: tuple[float, float] | None = None,
        grids: Any = None,
    ) -> None:
        if isinstance(grids, (str, bytes, os.PathLike)):
            grids = (grids,)
        folders = tuple(os.fspath(folder) for folder in grids or ())
        self._arguments = (_system(source), _system(target), operation, near, folders)
        self._made = _backend().Conversion(
            self._arguments[0],
            self._arguments[1],
            operation="" if operation is None else str(int(operation)),
            near=None if near is None else (float(near[0]), float(near[1])),
            grids=list(folders),
        )

    @property
    def source(self) -> str:
        """The source system in words."""
        return str(self._made.source_title)

    @property
    def target(self) -> str:
        """The target system in words."""
        return str(self._made.target_title)

    @property
    def operations(self) -> tuple[str, ...]:
        """The operations that points may take, with their accuracy, best first."""
        return tuple(self._made.operations)

    @property
    def notes(self) -> tuple[str, ...]:
        """What is worth knowing: heights that stay as they are, better operations without files."""
        return tuple(self._made.notes)

    def to_target(self, a: Any, b: Any, c: Any = 0.0, epoch: Any = None) -> Any:
        """to_target(a, b, c=0, epoch=None) -> (a, b, c)

        Coordinates of the source system in the target system; numbers, or arrays that are broadcast
        together. epoch is the date of the points, as decimal_year takes it, for operations that need
        one. A point that cannot be converted becomes NaN.
        """
        return self._run(a, b, c, epoch, inverse=False)

    def to_source(self, a: Any, b: Any, c: Any = 0.0, epoch: Any = None) -> Any:
        """to_source(a, b, c=0, epoch=None) -> (a, b, c)

        The way back.
        """
        return self._run(a, b, c, epoch, inverse=True)

    def _run(self, a: Any, b: Any, c: Any, epoch: Any, *, inverse: bool) -> Any:
        made = self._made
        if epoch is None and made.needs_dates:
            raise Error("Conversion: the operation moves with time; give the epoch of the points")
        given = [a, b, c] if epoch is None else [a, b, c, decimal_year(epoch)]
        try:
            arrays = np.broadcast_arrays(*(np.asarray(part, dtype=float) for part in given))
        except ValueError as reason:
            raise Error(f"Conversion: {reason}") from None
        columns = [np.array(part, order="C").reshape(-1) for part in arrays]
        years = columns.pop() if epoch is not None else None
        ends = made.source_geographic, made.target_geographic
        from_angles, to_angles = ends[::-1] if inverse else ends
        for first in range(0, columns[0].size, _BLOCK):
            part = slice(first, first + _BLOCK)
            block = [column[part] for column in columns]
            if from_angles:
                for angle in block[:2]:
                    np.radians(angle, out=angle)
            made.run(*block, None if years is None else years[part], inverse)
            if to_angles:
                for angle in block[:2]:
                    np.degrees(angle, out=angle)
        if arrays[0].ndim == 0:
            return tuple(float(column[0]) for column in columns)
        return tuple(column.reshape(arrays[0].shape) for column in columns)

    def __repr__(self) -> str:
        source, target, operation, near, grids = self._arguments
        text = f"Conversion({source!r}, {target!r}"
        for name, value in (("operation", operation), ("near", near), ("grids", grids or None)):
            if value is not None:
                text += f", {name}={value!r}"
        return text + ")"

    def __reduce__(self) -> Any:
        return _remade, self._arguments


def _remade(
    source: str,
    target: str,
    operation: int | None,
    near: tuple[float, float] | None,
    grids: tuple[str, ...],
) -> Conversion:
    return Conversion(source, target, operation=operation, near=near, grids=grids)
