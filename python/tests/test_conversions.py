"""Values: every class against published figures, in degrees and metres."""

import pickle
from math import radians
from typing import Any

import geomath
import numpy as np
import pytest
from conftest import ROOT
from geomath import CoordinateChain, Datum, Ellipsoid, Error, GlobalGeoid, Projection


def test_a_system_file_and_its_parts_give_the_published_chain(britain: CoordinateChain) -> None:
    # TP03 of the points of Great Britain through the seven-parameter chain, evaluated
    # independently to 0.1 mm; the series of TM leave 0.3 mm.
    at = 50.43885825610, -4.10864563561, 215.251
    built = CoordinateChain(
        datum=Datum("Airy 1830", 446.448, -125.157, 542.060, -0.1502, -0.2470, -0.8421, -20.4894),
        projection=Projection(
            "TM",
            "airy 1830",
            central_meridian=-2,
            scale=0.9996012717,
            lat0=49,
            east0=400000,
            north0=-100000,
        ),
    )
    assert built == britain
    for chain in (britain, built):
        local = chain.to_local(*at)
        assert local == pytest.approx((62015.2109, 250357.8185, 165.6607), abs=3e-4)
        assert chain.to_global(*local) == pytest.approx(at, abs=1e-8)
        in_radians = chain.to_local(radians(at[0]), radians(at[1]), at[2], degrees=False)
        assert in_radians == pytest.approx(local, abs=1e-8)


def test_projections_take_degrees_and_either_axes() -> None:
    # Snyder 1987, appendix A: Lambert conformal conic on Clarke 1866, printed to 0.1 m.
    clarke = Ellipsoid(6378206.4, 294.9786982138982)
    figures: Any = dict(south_lat=33, north_lat=45, lon0=-96, lat0=23, east0=0, north0=0, scale=1)
    cone = Projection("lc", clarke, **figures)
    assert cone.forward(35, -75) == pytest.approx((1564649.5, 1894410.9), abs=0.05)
    assert cone.inverse(1564649.5, 1894410.9) == pytest.approx((35, -75), abs=1e-6)
    assert cone.factors(35, -75)[0] == pytest.approx(0.9970171, abs=5e-8)
    turned = Projection("LC", clarke, grid_axes="es", geographic_axes="WN", **figures)
    east, south = turned.forward(75, 35)  # west-positive longitude first
    assert (-south, east) == cone.forward(35, -75)


def test_a_scale_takes_effect_in_every_projection() -> None:
    # EPSG guidance note 7-2, Krovak, printed to 0.01 m of a position rounded to 3 cm; the
    # coordinates are radii of the cone, proportional to the scale.
    cone: Any = dict(lat0=49.5, lon0=42.5, dlon=53 / 3, uq=59.711860247222224, s0=78.5)
    point = 50 + 12 / 60 + 32.442 / 3600, 16 + 50 / 60 + 59.179 / 3600
    for scale in (0.9999, 1.0, 1.0001):
        krovak = Projection("KROVAK", "Bessel 1841", **cone, scale=scale, east0=0, north0=0)
        published = np.array([1050538.643, 568990.997]) / 0.9999 * scale
        assert krovak.forward(*point) == pytest.approx(tuple(published), abs=0.03)


def test_datum_carries_the_published_example() -> None:
    # EPSG guidance note 7-2, position vector: WGS 72 to WGS 84.
    datum = Datum("WGS72", 0, 0, 4.5, 0, 0, 0.554, 0.219, rotation="position-vector")
    x, y, z = datum.to_wgs84(3657660.66, 255768.55, 5201382.11)
    assert (x, y, z) == pytest.approx((3657660.78, 255778.43, 5201387.75), abs=0.01)
    assert datum.from_wgs84(x, y, z) == pytest.approx((3657660.66, 255768.55, 5201382.11), abs=1e-8)


def test_every_projection_can_be_made_by_its_listed_names() -> None:
    for name, parameters in geomath.projections().items():
        unit = {"scale factor": 1.0, "count": 1.0, "zone number": 1.0}
        values: dict[str, Any] = {key: unit.get(what.split(",")[0], 0.5) for key, what in parameters.items()}
        projection = Projection(name, **values)
        assert projection.parameters == values
        assert eval(repr(projection), vars(geomath)) == projection
    for name in geomath.ellipsoid_names():
        assert eval(repr(Ellipsoid(name)), vars(geomath)) == Ellipsoid(name)


def test_global_geoid_gives_the_reference_heights() -> None:
    # tests/data: EGM96 to degree 36, heights evaluated in 50 digits.
    def table(name: str) -> Any:
        return np.genfromtxt(ROOT / "tests/data" / name, delimiter=",", names=True)

    rows, points = table("egm96_degree36.csv"), table("egm96_degree36_points.csv")
    plain = GlobalGeoid(rows["C"], rows["S"])
    corrected = GlobalGeoid(
        rows["C"], rows["S"], correction_cosines=rows["Ccorr"], correction_sines=rows["Scorr"]
    )
    assert plain.max_degree == 36
    for model, column in ((plain, "potential_only_m"), (corrected, "corrected_m")):
        heights = model.height(points["lat_deg"], points["lon_deg"])
        np.testing.assert_allclose(heights, points[column], rtol=0, atol=1e-9)


# Ordnance Survey, A guide to coordinate systems in Great Britain, annexe C.
def test_systems_of_the_registry_give_the_published_example() -> None:
    lat, lon = 52 + 39 / 60 + 27.2531 / 3600, 1 + 43 / 60 + 4.5177 / 3600
    printed = pytest.approx((313177.270, 651409.903), abs=0.001)
    assert Projection.from_epsg(27700).forward(lat, lon) == printed
    chain = CoordinateChain.from_epsg(27700, datum=False)
    assert chain.to_local(lat, lon)[:2] == printed
    assert CoordinateChain.from_epsg(27700, operation=1314).datum is not None
    with pytest.raises(Error, match="EPSG:1"):
        Projection.from_epsg(1)


def test_chain_has_the_units_of_its_system() -> None:
    # EPSG Guidance Note 7-2, NAD27 / Texas South Central: hundredths of US survey feet.
    chain = CoordinateChain.from_epsg(32040, datum=False)
    assert chain.unit == 1200 / 3937 and chain.height_unit == 1
    assert chain.to_local(28.5, -96.0, 10.0) == pytest.approx((254759.80, 2963503.91, 10), abs=0.006)
    assert chain.to_global(254759.80, 2963503.91, 10.0) == pytest.approx((28.5, -96, 10), abs=2e-8)
    metres = chain.replace(unit=1.0, height_unit=0.3048)
    assert metres.to_local(28.5, -96.0, 0.3048) == pytest.approx((77650.942, 903277.798, 1), abs=2e-3)
    assert pickle.loads(pickle.dumps(chain)) == chain != metres
    with pytest.raises(Error, match="unit"):
        chain.replace(unit=0.0)


def test_deflections_are_the_slopes_of_the_geoid() -> None:
    # 2 m up a degree to the north, 3 m down a degree to the east; Heiskanen and Moritz 1967, 2-22.
    rows, columns = np.arange(4)[:, None], np.arange(5)[None, :]
    geoid = geomath.RegionalGeoid(40 + 2.0 * rows - 3 * columns, south=51, west=8, lat_step=1, lon_step=1)
    a, e2 = 6378137.0, 0.00669437999014
    lat = np.array([51.3, 53.6])
    w2 = 1 - e2 * np.sin(np.radians(lat)) ** 2
    m, n = a * (1 - e2) / w2**1.5, a / np.sqrt(w2)
    xi, eta = geoid.deflection(lat, 9.4, 1000)
    seconds = np.degrees(1) * 3600
    # Nodes of single precision: 4e-6 m over 250 m.
    np.testing.assert_allclose(xi, -np.degrees(2) / (m + 1000) * seconds, atol=0.005)
    np.testing.assert_allclose(
        eta, np.degrees(3) / ((n + 1000) * np.cos(np.radians(lat))) * seconds, atol=0.005
    )
    assert np.isnan(geoid.deflection(60, 9.4)).all()
