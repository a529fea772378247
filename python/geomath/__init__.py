"""Geodetic mathematics for surveying and mapping.

Coordinates are plain numbers or NumPy arrays of any shape, which are broadcast together; results
have the common shape, and numbers alone give numbers. Angles are degrees unless degrees=False,
lengths metres; pairs are (latitude, longitude) or (north, east) unless a projection has other axes.

A description that makes no sense raises Error. A point that cannot be converted is no error: it
becomes NaN in every result and disturbs no other point. Work on arrays releases the interpreter
lock; objects are immutable and may be used from many threads.
"""

from ._chain_step import ChainStep
from ._conversion import Conversion
from ._dates import decimal_year
from ._design import FamilyDesign, Zone, ZoneDesign
from ._geomath import (
    Calibration,
    CalibrationResult,
    ChainShift,
    CoordinateChain,
    Datum,
    Ellipsoid,
    Error,
    GeocentricShiftGrid,
    Geodesic,
    Geoid,
    GlobalGeoid,
    GridLines,
    GridToGround,
    LocalToGrid,
    MagneticField,
    MagneticModel,
    Projection,
    RegionalGeoid,
    ShiftGrid,
    SiteAdjustment,
    Triangulation,
    __version__,
    design,
    ellipsoid_names,
    interpolation_names,
    linear_distortion,
    projections,
)
from ._lines import Distortion, GridLine, PlumbLine, TraverseResult
from ._magnetic_elements import MagneticElements

__all__ = [
    "Calibration",
    "CalibrationResult",
    "ChainShift",
    "ChainStep",
    "Conversion",
    "CoordinateChain",
    "Datum",
    "Distortion",
    "Ellipsoid",
    "Error",
    "FamilyDesign",
    "GeocentricShiftGrid",
    "Geodesic",
    "Geoid",
    "GlobalGeoid",
    "GridLine",
    "GridLines",
    "GridToGround",
    "LocalToGrid",
    "MagneticElements",
    "MagneticField",
    "MagneticModel",
    "PlumbLine",
    "Projection",
    "RegionalGeoid",
    "ShiftGrid",
    "SiteAdjustment",
    "TraverseResult",
    "Triangulation",
    "Zone",
    "ZoneDesign",
    "__version__",
    "decimal_year",
    "design",
    "ellipsoid_names",
    "interpolation_names",
    "linear_distortion",
    "projections",
]
