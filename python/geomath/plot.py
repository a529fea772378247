"""Pictures of what the library computes, on matplotlib axes.

    import geomath.plot
    axes = geomath.plot.geoid(model, range(35, 56), range(-12, 31))
    axes.figure.savefig("geoid.png")

Every function draws on the axes that it is given, or on new ones, and returns them, so that titles,
sizes and further layers are the caller's. Fields are drawn over positions: lat and lon are the
one-dimensional arrays of the rows and columns to compute, degrees. Where a value cannot be computed,
the field stays empty.
"""

from __future__ import annotations

import math
from typing import TYPE_CHECKING, Any

import matplotlib.pyplot as plt  # type: ignore[import]
import numpy as np

from . import Geodesic

if TYPE_CHECKING:
    from collections.abc import Sequence

    from numpy.typing import ArrayLike

    from . import Geoid, MagneticField, Projection, SiteAdjustment, ZoneDesign

__all__ = [
    "combined_factor",
    "convergence",
    "declination",
    "distortion",
    "geoid",
    "prediction",
    "residuals",
    "scale_factor",
    "tissot",
]

_Array = np.ndarray[Any, np.dtype[np.float64]]

_LONGEST_VECTOR = 0.15  # beside the extent of the points
_SMALL_CIRCLE = 10.0  # metres, of which an ellipse is the image
_POLAR_COSINE = 0.1  # the narrowest degree of longitude that is drawn to scale


def residuals(
    north: ArrayLike,
    east: ArrayLike,
    residual_north: ArrayLike,
    residual_east: ArrayLike,
    *,
    used: ArrayLike | None = None,
    names: Sequence[str] | None = None,
    axes: Any = None,
) -> Any:
    """Residuals of a site calibration as vectors on a map of its control points.

    north, east: positions, metres; residual_north, residual_east: metres. All vectors are drawn in
    one scale, which the key states. used: which points took part, drawn filled; the others are
    hollow. names: a text for each point. A point without a residual has no vector. Raises ValueError
    when the lengths differ.
    """
    n, e, dn, de = (
        np.atleast_1d(np.asarray(values, dtype=float))
        for values in (north, east, residual_north, residual_east)
    )
    filled = np.ones(len(n), bool) if used is None else np.asarray(used, dtype=bool)
    lengths = {len(values) for values in (n, e, dn, de, filled, names if names is not None else n)}
    if len(lengths) != 1 or 0 in lengths:
        raise ValueError("positions, residuals, used and names must have one value for each point")

    axes = _axes(axes)
    for mask, face in ((filled, "tab:blue"), (~filled, "none")):
        axes.scatter(e[mask], n[mask], s=25, facecolors=face, edgecolors="tab:blue", zorder=3)
    for x, y, name in zip(e, n, names or []):
        axes.annotate(name, (x, y), xytext=(4, 4), textcoords="offset points", fontsize="small")

    drawn = np.isfinite(dn) & np.isfinite(de)
    longest = float(np.max(np.hypot(dn, de)[drawn], initial=0))
    if longest > 0:
        extent = max(np.ptp(n), np.ptp(e)) or 1.0
        # In data coordinates one metre of residual is 1/scale metres on the map.
        scale = longest / (_LONGEST_VECTOR * extent)
        vectors = axes.quiver(
            e[drawn],
            n[drawn],
            de[drawn],
            dn[drawn],
            angles="xy",
            scale_units="xy",
            scale=scale,
            width=0.006,
            color="tab:red",
        )
        key = _round_length(longest)
        axes.quiverkey(vectors, 0.85, 0.95, key, f"{key:g} m", labelpos="W", coordinates="axes")
    axes.margins(0.2)
    axes.set_aspect("equal")
    axes.ticklabel_format(useOffset=False, style="plain")
    axes.set_xlabel("east [m]")
    axes.set_ylabel("north [m]")
    return axes


def prediction(
    adjustment: SiteAdjustment,
    north: ArrayLike,
    east: ArrayLike,
    *,
    probability: float = 0.95,
    ellipses: ArrayLike | None = None,
    axes: Any = None,
) -> Any:
    """How certain positions of a calibrated site are: the radius that holds them, as a field.

    north, east: one-dimensional arrays of the rows and columns to compute, grid coordinates, metres.
    ellipses: grid positions, one (north, east) a row, at which ellipses of one standard deviation are
    drawn, enlarged together.
    """
    rows, columns = np.asarray(north, dtype=float), np.asarray(east, dtype=float)
    radius = adjustment.predict(rows[:, None], columns[None, :], probability=probability)[3]
    axes = _axes(axes)
    field = axes.pcolormesh(columns, rows, radius * 1000, cmap="Blues", shading="nearest")
    axes.figure.colorbar(field, ax=axes, label=f"radius of {100 * probability:g} % [mm]")
    if ellipses is not None:
        places = np.atleast_2d(np.asarray(ellipses, dtype=float))
        covariances = adjustment.predict(places[:, 0], places[:, 1])[1][:, :2, :2]
        variances, directions = np.linalg.eigh(covariances)
        largest = float(np.sqrt(np.max(variances, initial=0)))
        extent = max(np.ptp(rows), np.ptp(columns)) or 1.0
        enlarged = 0.08 * extent / largest if largest > 0 else 0.0
        angle = np.linspace(0, 2 * np.pi, 60)
        circle = np.stack([np.cos(angle), np.sin(angle)])
        turn = _local_turn(adjustment)
        for (n, e), v, d in zip(places, variances, directions):
            drawn = turn @ d @ (np.sqrt(np.maximum(v, 0))[:, None] * circle) * enlarged
            axes.plot(e + drawn[1], n + drawn[0], color="tab:purple", linewidth=1)
            axes.plot([e], [n], ".", color="black")
    axes.set_aspect("equal")
    axes.ticklabel_format(useOffset=False, style="plain")
    axes.set_xlabel("east [m]")
    axes.set_ylabel("north [m]")
    return axes


def _local_turn(adjustment: SiteAdjustment) -> _Array:
    """The rotation that takes local directions back to the grid, from two predictions."""
    n, e = adjustment.pivot[:2]
    local = adjustment.predict(np.array([n, n + 1000]), np.array([e, e]))[0][:, :2]
    toward = local[1] - local[0]
    c, s = toward / np.hypot(*toward)
    return np.array([[c, s], [-s, c]])


def geoid(
    model: Geoid,
    lat: ArrayLike,
    lon: ArrayLike,
    *,
    interval: float | None = None,
    axes: Any = None,
) -> Any:
    """Geoid heights of a model, metres, as a coloured field with labelled contours.

    interval: metres between contours, chosen by matplotlib when it is not given.
    """
    rows, columns = _rows_and_columns(lat, lon)
    heights = np.asarray(model.height(rows, columns))
    return _field(axes, rows, columns, heights, "geoid height [m]", interval)


def scale_factor(
    projection: Projection,
    lat: ArrayLike,
    lon: ArrayLike,
    *,
    interval: float | None = None,
    axes: Any = None,
) -> Any:
    """Where a projection lengthens and where it shortens: point scale less 1, parts per million.

    The colours are centred on 0, where a length in the grid is that on the ellipsoid. interval: parts
    per million between contours. Raises ValueError for a projection with geographic axes other than
    north and east.
    """
    _require_north_east(projection)
    rows, columns = _rows_and_columns(lat, lon)
    scale, _ = projection.factors(rows, columns)
    distortion = (np.asarray(scale) - 1) * 1e6
    return _field(axes, rows, columns, distortion, "scale factor − 1 [ppm]", interval, centred=True)


def combined_factor(
    projection: Projection,
    lat: ArrayLike,
    lon: ArrayLike,
    h: ArrayLike,
    *,
    geoid: Geoid | None = None,
    interval: float | None = None,
    axes: Any = None,
) -> Any:
    """What a length on the ground becomes in the grid: combined factor less 1, parts per million.

    h: heights of the terrain, metres, one for each row and column; above the geoid that is given, else
    above the ellipsoid. The colours are centred on 0, where grid and ground agree.
    """
    _require_north_east(projection)
    rows, columns = _rows_and_columns(lat, lon)
    heights = np.broadcast_to(np.asarray(h, dtype=float), (rows.size, columns.size))
    if geoid is not None:
        heights = heights + np.asarray(geoid.height(rows, columns))
    ellipsoid = projection.ellipsoid
    w2 = 1 - ellipsoid.e2 * np.sin(np.radians(rows)) ** 2
    across = ellipsoid.a / np.sqrt(w2)
    along = across * (1 - ellipsoid.e2) / w2
    areal = np.abs(np.asarray(projection.distortion(rows, columns).areal_scale))
    combined = np.sqrt(areal / ((1 + heights / along) * (1 + heights / across)))
    ppm = (combined - 1) * 1e6
    return _field(axes, rows, columns, ppm, "combined factor − 1 [ppm]", interval, centred=True)


def convergence(
    projection: Projection,
    lat: ArrayLike,
    lon: ArrayLike,
    *,
    interval: float | None = None,
    axes: Any = None,
) -> Any:
    """Where grid north points: its azimuth, degrees, with lines of equal convergence.

    interval: degrees between lines.
    """
    _require_north_east(projection)
    rows, columns = _rows_and_columns(lat, lon)
    values = np.asarray(projection.distortion(rows, columns).convergence)
    return _field(axes, rows, columns, values, "convergence [°]", interval, centred=True)


def tissot(
    projection: Projection,
    lat: ArrayLike,
    lon: ArrayLike,
    *,
    exaggeration: float = 1.0,
    axes: Any = None,
) -> Any:
    """Tissot's ellipses on the map itself: the images of equal small circles, with the graticule.

    exaggeration: times that what an ellipse differs from its circle by is drawn. The circles that the
    ellipses would be at scale 1 are dashed. Where there is no image, nothing is drawn.
    """
    _require_north_east(projection)
    if projection.grid_axes != "NE":
        raise ValueError("the projection must give northings and eastings, not other axes")
    rows, columns = _rows_and_columns(lat, lon)
    axes = _axes(axes)
    _draw_graticule(axes, projection, rows[:, 0], columns[0, :])

    b, l = (values.ravel() for values in np.broadcast_arrays(rows, columns))
    turn = np.asarray(projection.distortion(b, l).convergence)
    north, east = projection.forward(b, l)
    extents = [float(np.nanmax(values) - np.nanmin(values)) for values in (north, east)]
    size = 0.3 * min(extents[0] / (len(rows) - 1), extents[1] / (columns.size - 1))
    azimuth = np.linspace(0, 360, 73)[:, np.newaxis]
    around = Geodesic(projection.ellipsoid).direct(b, l, azimuth, _SMALL_CIRCLE)
    image = projection.forward(around[0], around[1])
    bearing = np.radians(azimuth - turn)
    for style, colour, drawn in (("--", "grey", 0.0), ("-", "tab:red", exaggeration)):
        outline = [
            centre + size * (unit + drawn * ((edge - centre) / _SMALL_CIRCLE - unit))
            for edge, centre, unit in zip(image, (north, east), (np.cos(bearing), np.sin(bearing)))
        ]
        axes.plot(outline[1], outline[0], style, color=colour, linewidth=0.8)
    axes.set_aspect("equal")
    axes.ticklabel_format(useOffset=False, style="plain")
    axes.locator_params(axis="x", nbins=5)
    axes.set_xlabel("east [m]")
    axes.set_ylabel("north [m]")
    return axes


def distortion(
    design: ZoneDesign,
    lat: ArrayLike,
    lon: ArrayLike,
    *,
    axes: Any = None,
) -> Any:
    """The distortion of a designed zone over a terrain of rows and columns, parts per million.

    design: of geomath.design, for heights of one row for each of lat and one column for each of lon.
    The contours are multiples of the limit, where it has one.
    """
    rows, columns = _rows_and_columns(lat, lon)
    values = np.asarray(design.distortion)
    if values.shape != (len(rows), columns.size):
        raise ValueError("the design must be for one row of each of lat, one column of each of lon")
    return _field(axes, rows, columns, values, "distortion [ppm]", design.limit, centred=True)


def declination(
    field: MagneticField,
    lat: ArrayLike,
    lon: ArrayLike,
    *,
    h: float = 0.0,
    interval: float | None = None,
    axes: Any = None,
) -> Any:
    """Magnetic declination, degrees east of true north, with lines of equal declination.

    field: a model at a date, `MagneticModel(path).field(date)`. h: metres above the ellipsoid. interval:
    degrees between lines.
    """
    rows, columns = _rows_and_columns(lat, lon)
    values = np.asarray(field.declination(rows, columns, h))
    return _field(axes, rows, columns, values, "declination [°]", interval, centred=True)


def _require_north_east(projection: Projection) -> None:
    if projection.geographic_axes != "NE":
        raise ValueError("the projection must take latitude and longitude, not other axes")


def _draw_graticule(axes: Any, projection: Projection, lat: _Array, lon: _Array) -> None:
    dense = np.linspace(0, 1, 91)
    for value in lat:
        north, east = projection.forward(value, lon[0] + dense * (lon[-1] - lon[0]))
        axes.plot(east, north, color="lightgrey", linewidth=0.6, zorder=1)
    for value in lon:
        north, east = projection.forward(lat[0] + dense * (lat[-1] - lat[0]), value)
        axes.plot(east, north, color="lightgrey", linewidth=0.6, zorder=1)


def _axes(axes: Any) -> Any:
    return axes if axes is not None else plt.subplots(layout="compressed")[1]


def _rows_and_columns(lat: ArrayLike, lon: ArrayLike) -> tuple[_Array, _Array]:
    rows, columns = np.asarray(lat, dtype=float), np.asarray(lon, dtype=float)
    if rows.ndim != 1 or columns.ndim != 1 or min(len(rows), len(columns)) < 2:
        raise ValueError(
            "lat and lon must be one-dimensional with two values at least: their shapes are "
            f"{rows.shape} and {columns.shape}"
        )
    return rows[:, np.newaxis], columns[np.newaxis, :]


def _field(
    axes: Any,
    rows: _Array,
    columns: _Array,
    values: _Array,
    label: str,
    interval: float | None,
    centred: bool = False,
) -> Any:
    shown: Any = np.ma.array(values, mask=~np.isfinite(values))  # type: ignore[no-untyped-call]
    if shown.count() == 0:
        raise ValueError("no value of the field can be computed at these positions")
    low, high = float(shown.min()), float(shown.max())
    lat, lon = rows[:, 0], columns[0, :]
    axes = _axes(axes)
    if centred:
        reach = max(abs(low), abs(high))
        colours: dict[str, Any] = {"cmap": "RdBu_r", "vmin": -reach, "vmax": reach}
    else:
        colours = {"cmap": "viridis"}
    mesh = axes.pcolormesh(lon, lat, shown, shading="nearest", **colours)
    axes.figure.colorbar(mesh, ax=axes, label=label)
    levels = None if interval is None else _multiples(interval, low, high)
    if low < high and (levels is None or len(levels) > 0):
        lines = axes.contour(lon, lat, shown, levels=levels, colors="black", linewidths=0.6)
        axes.clabel(lines, fmt="%g", fontsize="small")
    axes.set_aspect(1 / max(math.cos(math.radians(float(np.mean(lat)))), _POLAR_COSINE))
    axes.set_xlabel("longitude [°]")
    axes.set_ylabel("latitude [°]")
    return axes


def _multiples(interval: float, low: float, high: float) -> _Array:
    first, last = math.ceil(low / interval), math.floor(high / interval)
    return np.arange(first, last + 1, dtype=np.float64) * interval


def _round_length(longest: float) -> float:
    """The largest of 1, 2, 5 times a power of ten that is not longer."""
    power = 10.0 ** math.floor(math.log10(longest))
    return next(step * power for step in (5, 2, 1) if step * power <= longest * (1 + 1e-9))
