from collections.abc import Iterable, Mapping, Sequence
from os import PathLike
from typing import Any, ClassVar, Literal, Protocol, TypeAlias, final, overload

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._design import ZoneDesign
from ._lines import Distortion, GridLine, PlumbLine, TraverseResult
from ._magnetic_elements import MagneticElements

_Array: TypeAlias = NDArray[np.float64]
_One: TypeAlias = _Array | None
_Two: TypeAlias = tuple[_Array, _Array] | None
_Three: TypeAlias = tuple[_Array, _Array, _Array] | None
_Path: TypeAlias = str | PathLike[str]
_Epoch: TypeAlias = "_Date | np.datetime64 | str | float"
_Frame: TypeAlias = Literal["north-east-up", "geocentric", "geographic"]

__version__: str

class Error(ValueError): ...

@final
class Ellipsoid:
    @overload
    def __init__(self, name: str) -> None: ...
    @overload
    def __init__(self, a: float, inv_f: float) -> None: ...
    @overload
    def __init__(self, a: float, *, b: float) -> None: ...
    @property
    def a(self) -> float: ...
    @property
    def b(self) -> float: ...
    @property
    def inv_f(self) -> float: ...
    @property
    def f(self) -> float: ...
    @property
    def n(self) -> float: ...
    @property
    def e(self) -> float: ...
    @property
    def e2(self) -> float: ...
    @property
    def ep2(self) -> float: ...
    @overload
    def to_geocentric(  # type: ignore[misc]
        self, lat: float, lon: float, h: float = ..., *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def to_geocentric(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: _Three = ...,
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def to_geodetic(  # type: ignore[misc]
        self, x: float, y: float, z: float, *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def to_geodetic(
        self, x: ArrayLike, y: ArrayLike, z: ArrayLike, *, degrees: bool = ..., out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...

@final
class Datum:
    def __init__(
        self,
        ellipsoid: Ellipsoid | str,
        dx: float = ...,
        dy: float = ...,
        dz: float = ...,
        rx: float = ...,
        ry: float = ...,
        rz: float = ...,
        ppm: float = ...,
        *,
        rotation: Literal["coordinate-frame", "position-vector"] = ...,
    ) -> None: ...
    @property
    def ellipsoid(self) -> Ellipsoid: ...
    @property
    def shift(self) -> tuple[float, float, float]: ...
    @property
    def rotation(self) -> tuple[float, float, float]: ...
    @property
    def ppm(self) -> float: ...
    @overload
    def to_wgs84(  # type: ignore[misc]
        self, x: float, y: float, z: float, *, out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def to_wgs84(
        self, x: ArrayLike, y: ArrayLike, z: ArrayLike, *, out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def from_wgs84(  # type: ignore[misc]
        self, x: float, y: float, z: float, *, out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def from_wgs84(
        self, x: ArrayLike, y: ArrayLike, z: ArrayLike, *, out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...

@final
class Projection:
    def __init__(
        self,
        name: str,
        ellipsoid: Ellipsoid | str = ...,
        *,
        grid_axes: str | None = ...,
        geographic_axes: str | None = ...,
        **parameters: float,
    ) -> None: ...
    @staticmethod
    def from_epsg(code: int) -> Projection: ...
    @property
    def name(self) -> str: ...
    @property
    def parameters(self) -> dict[str, float]: ...
    @property
    def ellipsoid(self) -> Ellipsoid: ...
    @property
    def grid_axes(self) -> str: ...
    @property
    def geographic_axes(self) -> str: ...
    @overload
    def forward(  # type: ignore[misc]
        self, lat: float, lon: float, *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float]: ...
    @overload
    def forward(
        self, lat: ArrayLike, lon: ArrayLike, *, degrees: bool = ..., out: _Two = ...
    ) -> tuple[_Array, _Array]: ...
    @overload
    def inverse(  # type: ignore[misc]
        self, north: float, east: float, *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float]: ...
    @overload
    def inverse(
        self, north: ArrayLike, east: ArrayLike, *, degrees: bool = ..., out: _Two = ...
    ) -> tuple[_Array, _Array]: ...
    @overload
    def factors(  # type: ignore[misc]
        self, lat: float, lon: float, *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float]: ...
    @overload
    def factors(
        self, lat: ArrayLike, lon: ArrayLike, *, degrees: bool = ..., out: _Two = ...
    ) -> tuple[_Array, _Array]: ...

    def distortion(self, lat: ArrayLike, lon: ArrayLike, *, degrees: bool = ...) -> Distortion: ...
    def grid_distortion(
        self, north: ArrayLike, east: ArrayLike, *, degrees: bool = ...
    ) -> Distortion: ...

@final
class Geodesic:
    def __init__(self, ellipsoid: Ellipsoid | str = ...) -> None: ...
    @property
    def ellipsoid(self) -> Ellipsoid: ...
    @overload
    def inverse(  # type: ignore[misc]
        self,
        lat1: float,
        lon1: float,
        lat2: float,
        lon2: float,
        *,
        degrees: bool = ...,
        out: None = ...,
    ) -> tuple[float, float, float]: ...
    @overload
    def inverse(
        self,
        lat1: ArrayLike,
        lon1: ArrayLike,
        lat2: ArrayLike,
        lon2: ArrayLike,
        *,
        degrees: bool = ...,
        out: _Three = ...,
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def direct(  # type: ignore[misc]
        self,
        lat: float,
        lon: float,
        azimuth: float,
        distance: float,
        *,
        degrees: bool = ...,
        out: None = ...,
    ) -> tuple[float, float, float]: ...
    @overload
    def direct(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        azimuth: ArrayLike,
        distance: ArrayLike,
        *,
        degrees: bool = ...,
        out: _Three = ...,
    ) -> tuple[_Array, _Array, _Array]: ...
    def line(
        self,
        lat1: float,
        lon1: float,
        lat2: float,
        lon2: float,
        *,
        count: int | None = ...,
        spacing: float | None = ...,
        degrees: bool = ...,
    ) -> tuple[_Array, _Array]: ...
    def area(
        self, lat: ArrayLike, lon: ArrayLike, *, degrees: bool = ...
    ) -> tuple[float, float]: ...

@final
class GridLines:
    def __init__(self, projection: Projection, geoid: Geoid | None = ...) -> None: ...
    @property
    def projection(self) -> Projection: ...
    @property
    def geoid(self) -> Geoid | None: ...
    def between(
        self,
        north1: ArrayLike,
        east1: ArrayLike,
        north2: ArrayLike,
        east2: ArrayLike,
        h1: ArrayLike = ...,
        h2: ArrayLike = ...,
        *,
        degrees: bool = ...,
    ) -> GridLine: ...
    def plumb(
        self,
        north1: ArrayLike,
        east1: ArrayLike,
        north2: ArrayLike,
        east2: ArrayLike,
        h1: ArrayLike = ...,
        h2: ArrayLike = ...,
    ) -> PlumbLine: ...
    def traverse(
        self,
        start: Sequence[float],
        angles: ArrayLike,
        distances: ArrayLike,
        *,
        heights: ArrayLike | None = ...,
        backsight: Sequence[float] | None = ...,
        start_azimuth: float | None = ...,
        end: Sequence[float] | None = ...,
        foresight: Sequence[float] | None = ...,
        end_azimuth: float | None = ...,
        end_angle: float | None = ...,
        kind: Literal["slope", "ground", "geodesic", "grid"] = ...,
        adjustment: Literal["none", "bowditch", "least-squares"] = ...,
        sigma_seconds: float = ...,
        sigma_distance: float = ...,
        sigma_per_metre: float = ...,
        deflections: bool = ...,
        degrees: bool = ...,
    ) -> TraverseResult: ...

class Geoid:
    @overload
    def height(  # type: ignore[misc]
        self, lat: float, lon: float, *, degrees: bool = ..., out: None = ...
    ) -> float: ...
    @overload
    def height(
        self, lat: ArrayLike, lon: ArrayLike, *, degrees: bool = ..., out: _One = ...
    ) -> _Array: ...
    @overload
    def deflection(  # type: ignore[misc]
        self,
        lat: float,
        lon: float,
        h: float = ...,
        *,
        ellipsoid: str | Ellipsoid = ...,
        degrees: bool = ...,
        out: None = ...,
    ) -> tuple[float, float]: ...
    @overload
    def deflection(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        ellipsoid: str | Ellipsoid = ...,
        degrees: bool = ...,
        out: _Two = ...,
    ) -> tuple[_Array, _Array]: ...

@final
class ShiftGrid:
    @staticmethod
    def from_file(path: _Path, *, unit: str = ...) -> ShiftGrid: ...
    @property
    def coordinates(self) -> str: ...
    @overload
    def forward(  # type: ignore[misc]
        self, north: float, east: float, h: float = ..., *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def forward(
        self, north: ArrayLike, east: ArrayLike, h: ArrayLike = ..., *, degrees: bool = ..., out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def inverse(  # type: ignore[misc]
        self, north: float, east: float, h: float = ..., *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def inverse(
        self, north: ArrayLike, east: ArrayLike, h: ArrayLike = ..., *, degrees: bool = ..., out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...

@final
class GeocentricShiftGrid:
    @staticmethod
    def from_file(path: _Path, *, position: str) -> GeocentricShiftGrid: ...
    @property
    def position(self) -> str: ...
    @overload
    def forward(  # type: ignore[misc]
        self, x: float, y: float, z: float, *, out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def forward(
        self, x: ArrayLike, y: ArrayLike, z: ArrayLike, *, out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def inverse(  # type: ignore[misc]
        self, x: float, y: float, z: float, *, out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def inverse(
        self, x: ArrayLike, y: ArrayLike, z: ArrayLike, *, out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...

@final
class Triangulation:
    @staticmethod
    def from_file(path: _Path, *, coordinates: str = ...) -> Triangulation: ...
    @property
    def coordinates(self) -> str: ...
    @overload
    def forward(  # type: ignore[misc]
        self, north: float, east: float, h: float = ..., *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def forward(
        self, north: ArrayLike, east: ArrayLike, h: ArrayLike = ..., *, degrees: bool = ..., out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def inverse(  # type: ignore[misc]
        self, north: float, east: float, h: float = ..., *, degrees: bool = ..., out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def inverse(
        self, north: ArrayLike, east: ArrayLike, h: ArrayLike = ..., *, degrees: bool = ..., out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...

@final
class RegionalGeoid(Geoid):
    def __init__(
        self,
        grid: ArrayLike,
        *,
        south: float,
        west: float,
        lat_step: float,
        lon_step: float,
        interpolation: str = ...,
        north_first: bool = ...,
    ) -> None: ...
    @staticmethod
    def from_file(path: _Path, interpolation: str = ...) -> RegionalGeoid: ...
    @property
    def grid(self) -> NDArray[np.float32]: ...
    @property
    def south(self) -> float: ...
    @property
    def west(self) -> float: ...
    @property
    def lat_step(self) -> float: ...
    @property
    def lon_step(self) -> float: ...
    @property
    def interpolation(self) -> str: ...
    @property
    def north_first(self) -> bool: ...

@final
class GlobalGeoid(Geoid):
    def __init__(
        self,
        cosines: ArrayLike,
        sines: ArrayLike,
        *,
        correction_cosines: ArrayLike | None = ...,
        correction_sines: ArrayLike | None = ...,
    ) -> None: ...
    @staticmethod
    def from_file(
        path: _Path, *, correction: _Path | None = ..., subtract_normal_field: bool = ...
    ) -> GlobalGeoid: ...
    @property
    def max_degree(self) -> int: ...

@final
class LocalToGrid:
    def __init__(
        self,
        *,
        shift_n: float | None = ...,
        shift_e: float | None = ...,
        scale: float | None = ...,
        rotation: float | None = ...,
        shift_h: float | None = ...,
        slope_n: float | None = ...,
        slope_e: float | None = ...,
    ) -> None: ...
    @property
    def shift_n(self) -> float: ...
    @property
    def shift_e(self) -> float: ...
    @property
    def scale(self) -> float: ...
    @property
    def rotation(self) -> float: ...
    @property
    def shift_h(self) -> float: ...
    @property
    def slope_n(self) -> float: ...
    @property
    def slope_e(self) -> float: ...
    @property
    def horizontal(self) -> bool: ...
    @property
    def vertical(self) -> bool: ...
    @overload
    def to_local(  # type: ignore[misc]
        self, north: float, east: float, h: float = ..., *, out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def to_local(
        self, north: ArrayLike, east: ArrayLike, h: ArrayLike = ..., *, out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def to_grid(  # type: ignore[misc]
        self, north: float, east: float, h: float = ..., *, out: None = ...
    ) -> tuple[float, float, float]: ...
    @overload
    def to_grid(
        self, north: ArrayLike, east: ArrayLike, h: ArrayLike = ..., *, out: _Three = ...
    ) -> tuple[_Array, _Array, _Array]: ...

@final
class GridToGround:
    def __init__(
        self,
        *,
        scale: float | None = ...,
        height: float | None = ...,
        grid_scale_factor: float | None = ...,
        rotation: float | None = ...,
        origin_n: float | None = ...,
        origin_e: float | None = ...,
        offset_n: float | None = ...,
        offset_e: float | None = ...,
        enabled: bool = ...,
    ) -> None: ...
    @property
    def scale(self) -> float: ...
    @property
    def rotation(self) -> float: ...
    @property
    def origin(self) -> tuple[float, float]: ...
    @property
    def offset(self) -> tuple[float, float]: ...
    @property
    def enabled(self) -> bool: ...
    @overload
    def to_ground(self, north: float, east: float, *, out: None = ...) -> tuple[float, float]: ...  # type: ignore[misc]
    @overload
    def to_ground(
        self, north: ArrayLike, east: ArrayLike, *, out: _Two = ...
    ) -> tuple[_Array, _Array]: ...
    @overload
    def to_grid(self, north: float, east: float, *, out: None = ...) -> tuple[float, float]: ...  # type: ignore[misc]
    @overload
    def to_grid(
        self, north: ArrayLike, east: ArrayLike, *, out: _Two = ...
    ) -> tuple[_Array, _Array]: ...

class _Date(Protocol):
    @property
    def year(self) -> int: ...
    @property
    def month(self) -> int: ...
    @property
    def day(self) -> int: ...

@final
class MagneticModel:
    def __init__(self, path: _Path | None = ...) -> None: ...
    @property
    def name(self) -> str: ...
    @property
    def epoch(self) -> float: ...
    @property
    def end(self) -> float: ...
    @property
    def max_degree(self) -> int: ...
    def field(self, date: _Date | np.datetime64 | str | float) -> MagneticField: ...

@final
class MagneticField:
    CAUTION_ZONE: ClassVar[float]
    BLACKOUT_ZONE: ClassVar[float]
    def __init__(self, date: _Date | np.datetime64 | str | float) -> None: ...
    @property
    def model(self) -> MagneticModel: ...
    @property
    def decimal_year(self) -> float: ...
    @overload
    def declination(  # type: ignore[misc]
        self, lat: float, lon: float, h: float = ..., *, degrees: bool = ..., out: None = ...
    ) -> float: ...
    @overload
    def declination(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: _One = ...,
    ) -> _Array: ...
    def elements(
        self, lat: ArrayLike, lon: ArrayLike, h: ArrayLike = ..., *, degrees: bool = ...
    ) -> MagneticElements: ...
    def yearly_change(
        self, lat: ArrayLike, lon: ArrayLike, h: ArrayLike = ..., *, degrees: bool = ...
    ) -> MagneticElements: ...

@final
class ChainShift:
    @property
    def entry(self) -> str: ...

@final
class CoordinateChain:
    def __init__(
        self,
        *,
        global_ellipsoid: Ellipsoid | str | None = ...,
        datum: Datum | None = ...,
        projection: Projection | None = ...,
        geoid: Geoid | None = ...,
        geoid_frame: Literal["global", "local"] = ...,
        localization: LocalToGrid | None = ...,
        ground: GridToGround | None = ...,
        shifts: Iterable[ChainShift] = ...,
        fixed_height: float | None = ...,
        unit: float = ...,
        height_unit: float = ...,
        epoch: _Epoch | None = ...,
        site_covariance: Mapping[str, Any] | None = ...,
    ) -> None: ...
    @staticmethod
    def from_file(path: _Path) -> CoordinateChain: ...
    @staticmethod
    def from_epsg(
        code: int,
        *,
        near: tuple[float, float] | None = ...,
        operation: int | None = ...,
        grids: Iterable[_Path] = ...,
        datum: bool = ...,
        from_frame: str = ...,
        to_frame: str = ...,
    ) -> CoordinateChain: ...
    def replace(self, **steps: Any) -> CoordinateChain: ...
    @property
    def global_ellipsoid(self) -> Ellipsoid | None: ...
    @property
    def datum(self) -> Datum | None: ...
    @property
    def projection(self) -> Projection | None: ...
    @property
    def geoid(self) -> Geoid | None: ...
    @property
    def geoid_frame(self) -> Literal["global", "local"]: ...
    @property
    def localization(self) -> LocalToGrid | None: ...
    @property
    def ground(self) -> GridToGround | None: ...
    @property
    def shifts(self) -> tuple[ChainShift, ...]: ...
    @property
    def fixed_height(self) -> float | None: ...
    @property
    def unit(self) -> float: ...
    @property
    def height_unit(self) -> float: ...
    @property
    def epoch(self) -> float | None: ...
    @property
    def needs_epoch(self) -> bool: ...
    @property
    def site_covariance(self) -> dict[str, Any] | None: ...
    @overload
    def to_local(  # type: ignore[misc]
        self,
        lat: float,
        lon: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[float, float, float]: ...
    @overload
    def to_local(  # type: ignore[misc]
        self,
        lat: float,
        lon: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[True],
        epoch: _Epoch | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[float, float, float, int]: ...
    @overload
    def to_local(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: _Three = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def to_local(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: _Three = ...,
        return_steps: Literal[True],
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[_Array, _Array, _Array, NDArray[np.uint8]]: ...
    @overload
    def to_local(  # type: ignore[misc]
        self,
        lat: float,
        lon: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[float, float, float, _Array]: ...
    @overload
    def to_local(  # type: ignore[misc]
        self,
        lat: float,
        lon: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[True],
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[float, float, float, _Array, int]: ...
    @overload
    def to_local(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[_Array, _Array, _Array, _Array]: ...
    @overload
    def to_local(
        self,
        lat: ArrayLike,
        lon: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[True],
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[_Array, _Array, _Array, _Array, NDArray[np.uint8]]: ...
    @overload
    def to_global(  # type: ignore[misc]
        self,
        north: float,
        east: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[float, float, float]: ...
    @overload
    def to_global(  # type: ignore[misc]
        self,
        north: float,
        east: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[True],
        epoch: _Epoch | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[float, float, float, int]: ...
    @overload
    def to_global(
        self,
        north: ArrayLike,
        east: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: _Three = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[_Array, _Array, _Array]: ...
    @overload
    def to_global(
        self,
        north: ArrayLike,
        east: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: _Three = ...,
        return_steps: Literal[True],
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: None = ...,
        frame: _Frame = ...,
        errors: None = ...,
    ) -> tuple[_Array, _Array, _Array, NDArray[np.uint8]]: ...
    @overload
    def to_global(  # type: ignore[misc]
        self,
        north: float,
        east: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[float, float, float, _Array]: ...
    @overload
    def to_global(  # type: ignore[misc]
        self,
        north: float,
        east: float,
        h: float = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[True],
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[float, float, float, _Array, int]: ...
    @overload
    def to_global(
        self,
        north: ArrayLike,
        east: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[False] = ...,
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[_Array, _Array, _Array, _Array]: ...
    @overload
    def to_global(
        self,
        north: ArrayLike,
        east: ArrayLike,
        h: ArrayLike = ...,
        *,
        degrees: bool = ...,
        out: None = ...,
        return_steps: Literal[True],
        epoch: _Epoch | ArrayLike | None = ...,
        covariance: ArrayLike,
        frame: _Frame = ...,
        errors: Mapping[str, Any] | None = ...,
    ) -> tuple[_Array, _Array, _Array, _Array, NDArray[np.uint8]]: ...

@final
class Calibration:
    def __init__(
        self,
        control: Any,
        chain: CoordinateChain | None = ...,
        *,
        fixed_scale: bool = ...,
        centre_on_first: bool = ...,
    ) -> None: ...
    def solve(self) -> CalibrationResult: ...

@final
class SiteAdjustment:
    @property
    def residuals(self) -> _Array: ...
    @property
    def redundancy(self) -> _Array: ...
    @property
    def standardised(self) -> _Array: ...
    @property
    def normalised(self) -> _Array: ...
    @property
    def detectable(self) -> _Array: ...
    @property
    def effect(self) -> _Array: ...
    @property
    def predicted(self) -> _Array: ...
    @property
    def weight(self) -> _Array: ...
    @property
    def parameters(self) -> _Array: ...
    @property
    def deviations(self) -> _Array: ...
    @property
    def height_parameters(self) -> _Array: ...
    @property
    def height_deviations(self) -> _Array: ...
    @property
    def pivot(self) -> list[float]: ...
    @property
    def variance(self) -> float: ...
    @property
    def freedom(self) -> int: ...
    def critical(self, alpha: float = ..., *, heights: bool = ...) -> float: ...
    def fit_probability(self, *, heights: bool = ...) -> float: ...
    def compare_models(self) -> list[dict[str, Any]]: ...
    def predict(
        self,
        north: ArrayLike,
        east: ArrayLike,
        h: ArrayLike = ...,
        *,
        probability: float = ...,
        observed: float = ...,
    ) -> tuple[_Array, _Array, _Array, _Array]: ...

@final
class CalibrationResult:
    def adjust(
        self,
        *,
        model: Literal["rigid", "similarity", "affine", "spatial", "none"] = ...,
        heights: Literal["plane", "shift", "none"] = ...,
        sigma_known: bool = ...,
        common: tuple[float, float, float] = ...,
        robust: bool = ...,
    ) -> SiteAdjustment: ...
    @property
    def localization(self) -> LocalToGrid: ...
    @property
    def chain(self) -> CoordinateChain: ...
    @property
    def names(self) -> list[str]: ...
    @property
    def horizontal(self) -> NDArray[np.bool_]: ...
    @property
    def vertical(self) -> NDArray[np.bool_]: ...
    @property
    def residuals(self) -> _Array: ...
    @property
    def standardised(self) -> _Array: ...
    @property
    def predicted(self) -> _Array: ...
    @property
    def rms(self) -> float: ...
    @property
    def horizontal_sigma(self) -> float: ...
    @property
    def vertical_sigma(self) -> float: ...
    @property
    def deviations(self) -> dict[str, float]: ...
    @property
    def worst_horizontal(self) -> int | None: ...
    @property
    def worst_vertical(self) -> int | None: ...
    @property
    def warnings(self) -> list[str]: ...

def design(
    lat: ArrayLike,
    lon: ArrayLike,
    h: ArrayLike,
    *,
    weights: ArrayLike | None = ...,
    ellipsoid: Ellipsoid | str = ...,
    families: Sequence[str] | None = ...,
    criterion: str = ...,
    percentile: float = ...,
    limit: float | None = ...,
    beside: Sequence[Projection] = ...,
    degrees: bool = ...,
) -> ZoneDesign: ...
@overload
def linear_distortion(  # type: ignore[misc]
    projection: Projection,
    lat: float,
    lon: float,
    h: float,
    *,
    degrees: bool = ...,
    out: None = ...,
) -> float: ...
@overload
def linear_distortion(
    projection: Projection,
    lat: ArrayLike,
    lon: ArrayLike,
    h: ArrayLike,
    *,
    degrees: bool = ...,
    out: NDArray[np.float64] | None = ...,
) -> NDArray[np.float64]: ...
def ellipsoid_names() -> list[str]: ...
def interpolation_names() -> list[str]: ...
def projections() -> Mapping[str, Mapping[str, str]]: ...
def _chain_steps() -> dict[int, str]: ...
def _decimal_year(text: str) -> float: ...
