"""Geodesics, distortions, lines in a grid and traverses."""

import pickle
from typing import Any

import geomath
import numpy as np
import pytest
from geomath import Error, Geodesic, GridLines, Projection, RegionalGeoid


def dms(degrees: float, minutes: float, seconds: float) -> float:
    return degrees + minutes / 60 + seconds / 3600


# GDA technical manual: Flinders Peak to Buninyong in MGA zone 55. The figures beside the published
# ones are the exact projection and geodesic in 40 digits from the published positions.
PEAK = -dms(37, 57, 3.7203), dms(144, 25, 29.5244)
BUNINYONG = -dms(37, 39, 10.1561), dms(143, 55, 35.3839)
SECOND = 1e-4 / 3600
MGA: Any = dict(central_meridian=147, scale=0.9996, lat0=0, east0=5e5, north0=1e7)
MGA55 = Projection("TMERC", "GRS80", **MGA)


def test_the_published_line() -> None:
    measured = Geodesic("GRS80").inverse(*PEAK, *BUNINYONG)
    assert measured[0] == pytest.approx(54972.271139, abs=1e-5)
    assert measured[1:] == pytest.approx((dms(306, 52, 5.3731), dms(127, 10, 25.0703)), abs=SECOND)
    assert Geodesic("GRS80").direct(*PEAK, *measured[1::-1])[:2] == pytest.approx(BUNINYONG, abs=1e-12)

    lines = GridLines(MGA55)
    line = lines.between(*MGA55.forward(*PEAK), *MGA55.forward(*BUNINYONG))
    assert line.grid_distance == pytest.approx(54992.27923, abs=1e-5)
    assert line.grid_bearing == pytest.approx(dms(305, 17, 21.18499), abs=SECOND)
    assert line.arc_to_chord1 * 3600 == pytest.approx(19.4591, abs=1e-4)
    assert line.arc_to_chord2 * 3600 == pytest.approx(-20.6668, abs=1e-4)
    assert line.line_scale == pytest.approx(1.0003639669705, abs=2e-10)
    assert line.convergence1 == pytest.approx(dms(1, 35, 3.6473), abs=SECOND)

    # Axes are only another order; arrays are broadcast; radians are the same angles.
    east_first = Projection("TMERC", "GRS80", grid_axes="EN", **MGA)
    again = GridLines(east_first).between(*east_first.forward(*PEAK), *east_first.forward(*BUNINYONG))
    assert again == line
    north, east = MGA55.forward([PEAK[0]] * 300, [PEAK[1]] * 300)
    many = lines.between(north, east, *MGA55.forward(*BUNINYONG), degrees=False)
    assert many.grid_bearing.shape == (300,)
    assert np.degrees(many.azimuth[299]) == pytest.approx(line.azimuth)
    assert np.isnan(lines.between(np.nan, 0, 0, 0)).all()


def test_every_kind_has_factors() -> None:
    # Where a kind computes its own they stay; the others have those of their derivatives.
    for factors in (
        Projection("TM", "GRS80", **MGA).factors(*PEAK),
        MGA55.factors(*PEAK),
        (MGA55.distortion(*PEAK).parallel_scale, MGA55.distortion(*PEAK).convergence),
    ):
        assert factors[0] == pytest.approx(1.000230559, abs=2e-9)
        assert factors[1] == pytest.approx(dms(1, 35, 3.6473), abs=SECOND)
    figures: Any = dict(south_lat=29.5, north_lat=45.5, lon0=-96, lat0=23, east0=0, north0=0)
    albers = Projection("AlbersConic", "Clarke 1866", **figures)
    tissot = albers.distortion([35, 90], -75)
    assert tissot.areal_scale[0] == pytest.approx(1, abs=1e-12)
    assert albers.factors(35, -75)[0] == pytest.approx(1, abs=1e-12)
    assert tissot.semi_major[0] == pytest.approx(1 / tissot.semi_minor[0], abs=1e-12)
    assert np.isnan(tissot.semi_major[1])
    there = albers.forward(35, -75)
    assert albers.grid_distortion(*there) == pytest.approx([field[0] for field in tissot], abs=1e-12)


def test_geodesics_over_arrays_lines_and_areas() -> None:
    earth = Geodesic()
    rng = np.random.default_rng(5)
    lat1, lat2 = rng.uniform(-90, 90, (2, 40, 25))
    lon1, lon2 = rng.uniform(-180, 180, (2, 40, 25))
    distance, azimuth, back = earth.inverse(lat1, lon1, lat2, lon2)
    assert distance[3, 4] == earth.inverse(lat1[3, 4], lon1[3, 4], lat2[3, 4], lon2[3, 4])[0]
    end = earth.direct(lat1, lon1, azimuth, distance)
    np.testing.assert_allclose(end[0], lat2, rtol=0, atol=1e-8)
    assert np.isnan(earth.inverse(91, 0, 0, 0)).all()

    lat, lon = earth.line(10, 20, 50, 120, spacing=1e6)
    whole = earth.inverse(10, 20, 50, 120)[0]
    steps = earth.inverse(lat[:-1], lon[:-1], lat[1:], lon[1:])[0]
    assert (lat[0], lon[-1]) == (10, 120) and len(lat) == np.ceil(whole / 1e6) + 1
    np.testing.assert_allclose(steps, whole / len(steps), rtol=0, atol=1e-6)
    assert len(earth.line(10, 20, 50, 120, count=3)[0]) == 3

    # An octant of the ellipsoid, whose area is that of the sphere of 6371007.1809 m (GRS80).
    octant, perimeter = Geodesic("GRS80").area([0, 0, 90], [0, 90, 0])
    assert octant == pytest.approx(np.pi / 2 * 6371007.18088351710**2, rel=1e-14)
    assert perimeter == pytest.approx(2 * 10001965.729230464 + np.pi / 2 * 6378137, abs=1e-6)


def test_deflections_reach_the_sights_of_lines_and_traverses() -> None:
    # 2 m up a degree to the north, 3 m down a degree to the east: the corrections by their formulas.
    rows, columns = np.arange(4)[:, None], np.arange(4)[None, :]
    geoid = RegionalGeoid(5 + 2.0 * rows - 3 * columns, south=-39, west=143, lat_step=1, lon_step=1)
    lines = GridLines(MGA55, geoid)
    here, there = (*MGA55.forward(*PEAK),), (*MGA55.forward(*BUNINYONG),)
    plumb = lines.plumb(*here, np.array([there[0], here[0] + 1000]), np.array([there[1], here[1]]), 351, 800)
    xi, eta = geoid.deflection(*PEAK, lines.between(*here, *there, 351).height1, ellipsoid="GRS80")
    assert plumb.xi[1] == pytest.approx(xi, abs=1e-9) and plumb.eta[0] == pytest.approx(eta, abs=1e-9)
    assert plumb.azimuth_correction[0] == pytest.approx(-eta * np.tan(np.radians(PEAK[0])), abs=1e-9)
    azimuth = np.radians(lines.between(*here, *there).azimuth)
    assert plumb.zenith_correction[0] == pytest.approx(xi * np.cos(azimuth) + eta * np.sin(azimuth), abs=1e-8)
    assert np.isnan(lines.plumb(*here, np.nan, 0).xi)
    with pytest.raises(Error, match="no geoid"):
        GridLines(MGA55).plumb(*here, *there)

    # A steep sight to the north turns by xi and eta: seen in the station that it leads to.
    legs: Any = dict(heights=[851], start_azimuth=0, kind="geodesic")
    plain = lines.traverse((*here, 351), [0], [1000], **legs)
    bent = lines.traverse((*here, 351), [0], [1000], deflections=True, **legs)
    assert bent.east[1] - plain.east[1] == pytest.approx(1000 * np.radians(eta * 0.5 / 3600), abs=2e-4)
    with pytest.raises(Error, match="no geoid"):
        GridLines(MGA55).traverse((*here, 351), [0], [1000], deflections=True, **legs)


def test_a_traverse_closes_on_known_marks() -> None:
    lines = GridLines(MGA55)
    n, e = np.array([5.8e6, 5800400, 5800300, 5800900]), np.array([3e5, 300500, 301100, 301300])
    h = np.array([100.0, 130, 90, 110])
    legs = lines.between(n[:-1], e[:-1], n[1:], e[1:], h[:-1], h[1:])
    mark = 5799000.0, 300100.0
    first = lines.between(n[0], e[0], *mark, h[0]).azimuth
    angles = legs.azimuth - np.append(first, legs.back_azimuth[:-1])
    closing = lines.between(n[3], e[3], *mark, h[3]).azimuth - legs.back_azimuth[-1]
    given: Any = dict(heights=h[1:], backsight=mark)
    kinds: Any = (("slope", legs.slope_distance), ("ground", legs.ground_distance))
    for kind, distances in kinds:
        found = lines.traverse((n[0], e[0], h[0]), angles, distances, kind=kind, **given)
        np.testing.assert_allclose((found.north, found.east), (n, e), rtol=0, atol=1e-6)
        assert np.isnan(found.misclosure_angle)
    wrong = legs.ground_distance + [0.02, 0, 0.01]
    known: Any = dict(end=(n[3], e[3], h[3]), foresight=mark, end_angle=closing, **given)
    adjustments: Any = ("bowditch", "least-squares")
    for adjustment in adjustments:
        found = lines.traverse((n[0], e[0], h[0]), angles, wrong, adjustment=adjustment, **known)
        assert found.north[-1] == pytest.approx(n[3], abs=1e-6)
        assert np.hypot(found.misclosure_north, found.misclosure_east) > 0.02
        assert abs(found.misclosure_angle) * 3600 < 1e-3
        assert len(found.angle_corrections) == 4
    refused: Any = (
        (dict(), "backsight"),
        (dict(backsight=mark, adjustment="bowditch"), "known end"),
        (dict(backsight=mark, kind="taped"), "kind"),
        (dict(backsight=mark, start_azimuth=3.0), "give one"),
        (dict(backsight=mark, end_angle=1.0), "belong together"),
    )
    for wrong_call, text in refused:
        with pytest.raises(Error, match=text):
            lines.traverse((n[0], e[0]), angles, wrong, **wrong_call)
    with pytest.raises(Error, match="cannot be computed"):
        lines.traverse((n[0], e[0]), angles, -wrong, backsight=mark)


def test_lines_are_equal_to_their_pickles() -> None:
    geoid = RegionalGeoid(np.full((9, 9), 30.0), south=-40, west=140, lat_step=1, lon_step=1)
    for thing in (Geodesic("GRS80"), GridLines(MGA55), GridLines(MGA55, geoid)):
        again = pickle.loads(pickle.dumps(thing))
        assert again == thing and hash(again) == hash(thing) and type(thing).__name__ in repr(thing)
    assert GridLines(MGA55) != GridLines(MGA55, geoid)
    ends = (*MGA55.forward(*PEAK), *MGA55.forward(*BUNINYONG))
    sea, ellipsoid = GridLines(MGA55, geoid).between(*ends), GridLines(MGA55).between(*ends, 30, 30)
    assert sea == pytest.approx(ellipsoid, abs=1e-9)
    assert sea.elevation_factor == pytest.approx(1 - 4.7e-6, abs=1e-7)
