from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np

from ._geomath import Projection

__all__ = ["FamilyDesign", "Zone", "ZoneDesign"]


class Zone(NamedTuple):
    """A low-distortion zone: degrees and metres."""

    family: str
    """"tm", "lambert", "oblique" or "stereographic"."""
    lat0: float
    """Latitude of the origin: the parallel of a Lambert zone."""
    lon0: float
    """Longitude of the origin: the meridian of a transverse Mercator zone."""
    azimuth: float
    """Of the line of an oblique zone at its origin; 0 in the others."""
    scale: float
    """On the axis."""
    false_north: float
    """False northing; of an oblique zone at its natural origin."""
    false_east: float
    """False easting, likewise."""
    projection: Projection
    """The same as a projection."""


class FamilyDesign(NamedTuple):
    """What one family of projections reaches; values of the criterion are ppm."""

    zone: Zone
    """Rounded, to be published."""
    exact: Zone
    """Before rounding, without false origin."""
    value: float
    """Of the rounded zone."""
    exact_value: float
    """Of the exact one."""
    centred_value: float
    """Of an axis through the middle with its best scale."""


class ZoneDesign(NamedTuple):
    """A zone and what it is worth, from geomath.design."""

    families: tuple[FamilyDesign, ...]
    """The families, the best first."""
    distortion: Any
    """Of the best zone at every point, ppm."""
    weights: Any
    """Of the points."""
    limit: float | None
    """Of the distortion, ppm."""
    zones: tuple[Zone, ...] | None
    """The fewest that meet the limit where one does not; empty where no number up to 40 does."""
    zone_of_point: Any
    """Which of them each point is in; -1 for none."""

    @property
    def zone(self) -> Zone:
        """The best zone."""
        return self.families[0].zone

    def share_within(self, ppm: float) -> float:
        """The share of the weight whose distortion is at most so large."""
        size, weight = self._sizes()
        return float(np.sum(weight[size <= ppm]) / np.sum(weight))

    def percentile(self, percent: float) -> float:
        """The smallest distortion, ppm, that so much of the weight does not exceed."""
        size, weight = self._sizes()
        order = np.argsort(size, kind="stable")
        upto = np.cumsum(weight[order])
        wanted = (percent / 100 - 1e-12) * upto[-1]
        return float(size[order][min(int(np.searchsorted(upto, wanted)), len(size) - 1)])

    def _sizes(self) -> tuple[Any, Any]:
        used = np.isfinite(self.distortion) & (self.weights > 0)
        return np.abs(self.distortion[used]), self.weights[used]
