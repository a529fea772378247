from typing import Any, NamedTuple

__all__ = ["MagneticElements"]


class MagneticElements(NamedTuple):
    """The elements of the magnetic field, or how much they change in a year: numbers or arrays.

    Intensities are nT, angles degrees (radians where they were asked for).
    """

    x: Any
    """Towards geodetic north."""
    y: Any
    """Towards east."""
    z: Any
    """Down."""
    h: Any
    """Horizontal intensity."""
    f: Any
    """Total intensity."""
    declination: Any
    """From true north to magnetic north, east positive."""
    inclination: Any
    """Below the horizon positive."""
    grid_variation: Any
    """From grid north (UTM, beyond 55 degrees UPS) to magnetic north, east positive."""
