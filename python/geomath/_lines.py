from typing import Any, NamedTuple

__all__ = ["Distortion", "GridLine", "PlumbLine", "TraverseResult"]


class Distortion(NamedTuple):
    """What a projection does to lengths, angles and areas: Tissot's indicatrix, numbers or arrays.

    Angles are degrees (radians where they were asked for), the rest has no unit.
    """

    meridian_scale: Any
    """Along the meridian."""
    parallel_scale: Any
    """Along the parallel."""
    areal_scale: Any
    """Of areas; negative where the grid is a mirror image."""
    convergence: Any
    """Azimuth of grid north: azimuth = bearing of an arc + convergence."""
    angular_distortion: Any
    """The largest change of an angle; 0 of a conformal map."""
    semi_major: Any
    """The largest scale in any direction: half axis of Tissot's ellipse."""
    semi_minor: Any
    """The smallest one."""


class GridLine(NamedTuple):
    """A line in a grid with everything that leads from the ground to it: numbers or arrays.

    Metres, and degrees (radians where they were asked for), bearings and azimuths clockwise from
    north. Both ends look along the line from that end to the other.
    """

    grid_distance: Any
    """Straight, in the grid."""
    grid_bearing: Any
    """Of that chord, at the first end."""
    geodesic_distance: Any
    """On the ellipsoid."""
    azimuth: Any
    """Of the geodesic at the first end."""
    back_azimuth: Any
    """At the second end."""
    scale1: Any
    """At the first end, in the direction of the line."""
    scale2: Any
    """At the second end."""
    convergence1: Any
    """Azimuth of grid north at the first end."""
    convergence2: Any
    """At the second end."""
    arc_to_chord1: Any
    """Bearing of the chord less that of the arc at the first end, t - T."""
    arc_to_chord2: Any
    """At the second end."""
    line_scale: Any
    """Grid over geodesic distance."""
    elevation_factor: Any
    """Geodesic over ground distance."""
    combined_factor: Any
    """Grid over ground distance."""
    ground_distance: Any
    """Horizontal, at the mean height of the ends."""
    slope_distance: Any
    """Straight between the ends in space."""
    height1: Any
    """Above the ellipsoid, of the first end."""
    height2: Any
    """Of the second end."""


class PlumbLine(NamedTuple):
    """What the plumb line at one end of a line does to observations there: arc-seconds, numbers or arrays.

    The corrections are added to what was observed about the plumb line.
    """

    xi: Any
    """Deflection of the vertical, northward."""
    eta: Any
    """Eastward."""
    azimuth_correction: Any
    """Laplace's: geodetic less astronomic azimuth of a level sight."""
    direction_correction: Any
    """Of a horizontal direction along the line, which is not level."""
    zenith_correction: Any
    """Of a zenith angle along the line."""


class TraverseResult(NamedTuple):
    """A computed traverse: metres, and degrees (radians where they were asked for)."""

    north: Any
    """Of the start and of the end of every leg, adjusted; the first coordinate of the grid."""
    east: Any
    """The second one."""
    h: Any
    """Heights as they were given."""
    length: Any
    """Of the legs in the grid, as measured."""
    misclosure_north: Any
    """Computed less known at the end, before any adjustment; NaN without a known end."""
    misclosure_east: Any
    """Likewise."""
    misclosure_angle: Any
    """Of the closing azimuth, before any adjustment; NaN without one."""
    relative_misclosure: Any
    """Misclosure of position over length."""
    angle_corrections: Any
    """Added to the angles, the closing one last."""
    distance_corrections: Any
    """Added to the distances; 0 after Bowditch, which corrects positions."""
    sigma0: Any
    """Standard deviation of unit weight after least squares; NaN otherwise."""
