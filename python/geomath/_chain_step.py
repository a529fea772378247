from enum import IntEnum

from ._geomath import _chain_steps

_TEXTS = _chain_steps()


class ChainStep(IntEnum):
    """The step of a CoordinateChain at which a point failed; NONE when it was converted."""

    NONE = 0
    INPUT = 1
    GLOBAL_ELLIPSOID = 2
    DATUM = 3
    LOCAL_ELLIPSOID = 4
    PROJECTION = 5
    GEOID = 6
    LOCALIZATION = 7
    GROUND = 8
    GEOGRAPHIC_SHIFT = 9
    GEOCENTRIC_SHIFT = 10
    VERTICAL_SHIFT = 11
    PLANE_SHIFT = 12
    MISSING_DATE = 13
    MODEL_YEARS = 14
    FRAME_CHANGE = 15
    POINT_MOTION = 16

    @property
    def text(self) -> str:
        """The step in words, as the geomath program reports it: "the projection"."""
        return _TEXTS[self.value]
