"""The magnetic field against the technical report of WMM-2010 (Maus et al. 2010), as printed."""

import datetime
import pickle
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from geomath import Error, MagneticField, MagneticModel

# Latitude, longitude, height (m); X, Y, Z, H, F (nT), I, D (degrees) at 2010.0.
PRINTED: Any = np.array(
    [
        [80, 0, 0, 6649.5, -714.6, 54346.2, 6687.8, 54756.2, 82.98, -6.13],
        [0, 120, 0, 39428.8, 664.9, -11683.8, 39434.5, 41128.9, -16.50, 0.97],
        [-80, 240, 0, 5657.7, 15727.3, -53407.5, 16714.0, 55961.8, -72.62, 70.21],
        [80, 0, 100e3, 6332.2, -729.1, 52194.9, 6374.0, 52582.6, 83.04, -6.57],
    ]
)


def test_elements_are_those_of_the_report() -> None:
    field = MagneticModel().field(2010)
    at = PRINTED[:, :3].T
    e = field.elements(*at)
    np.testing.assert_allclose([e.x, e.y, e.z, e.h, e.f], PRINTED[:, 3:8].T, rtol=0, atol=0.051)
    np.testing.assert_allclose([e.inclination, e.declination], PRINTED[:, 8:].T, rtol=0, atol=0.0051)
    assert (field.declination(*at) == e.declination).all()
    # Their yearly change at the first point: D in arc-minutes.
    assert field.yearly_change(80, 0).declination * 60 == pytest.approx(22.25, abs=0.005)
    in_radians = field.declination(np.radians(at[0]), np.radians(at[1]), at[2], degrees=False)
    np.testing.assert_allclose(np.degrees(in_radians), e.declination, rtol=1e-12)
    assert type(field.elements(80, 0).f) is float
    again = pickle.loads(pickle.dumps(field))
    assert again == field and again.elements(1, 2, 3) == field.elements(1, 2, 3)


def test_dates_in_any_form_are_one_date() -> None:
    dates: list[Any] = [
        "2012-07-01",
        datetime.date(2012, 7, 1),
        datetime.datetime(2012, 7, 1, 12),
        np.datetime64("2012-07-01"),
        2012 + 182 / 366,
    ]
    assert {MagneticModel().field(date).decimal_year for date in dates} == {dates[-1]}


def test_what_is_wrong_with_dates_and_files_is_said(tmp_path: Path) -> None:
    model = MagneticModel()
    with pytest.warns(UserWarning, match="2031-01-01 is outside the years of WMM-2025, 2025 to 2030"):
        model.field("2031-01-01")
    with pytest.warns(UserWarning, match="2026-01-01 is outside the years of WMM-2010, 2010 to 2015"):
        MagneticModel("WMM-2010").field("2026-01-01")
    date: Any
    for date in ("2012-02-30", "July", float("nan")):
        with pytest.raises(Error, match="^date: "):
            model.field(date)
    cut = tmp_path / "cut.cof"
    cut.write_text("2025.0 WMM-2025 11/13/2024\n 1 0 -29351.8 0.0 12.0 0.0\n 2 1 1 1 1 1\n")
    with pytest.raises(Error, match="cut.cof, line 3: .*the file was cut off"):
        MagneticModel(cut)
    cut.write_text("2025.0 WMM-2025\n1 0 -29351,8 0 12 0\n")
    with pytest.raises(Error, match="cut.cof, line 2: .*four numbers with a decimal point"):
        MagneticModel(cut)


def test_a_date_takes_its_own_model() -> None:
    # The tables of WMM-2020 and WMM-2025 at 80 N 0 E on the ellipsoid.
    for date, name, declination in (("2020-01-01", "WMM-2020", -1.28), ("2025-01-01", "WMM-2025", 1.28)):
        for field in (MagneticModel().field(date), MagneticField(date)):
            assert field.model.name == name
            assert field.declination(80, 0) == pytest.approx(declination, abs=0.005)
            assert pickle.loads(pickle.dumps(field)) == field
    every = MagneticModel()
    assert (every.name, every.epoch, every.end) == ("WMM-2010 to WMM-2025", 2010, 2030)
    assert pickle.loads(pickle.dumps(every)) == every != MagneticModel("WMM-2025")


def test_a_reference_field_is_linear_between_its_epochs(tmp_path: Path) -> None:
    file = tmp_path / "two.shc"
    file.write_text("# IGRF 0\n1 1 3 2 1\n1900 1905 1910\n1 0 -100 -110 -90\n1 1 0 0 0\n1 -1 0 0 0\n")
    model = MagneticModel(file)
    assert (model.name, model.epoch, model.end) == ("IGRF 0", 1900, 1910)
    axial = [model.field(year).elements(0, 0).x for year in (1900, 1902.5, 1905, 1907.5)]
    assert np.divide(axial, axial[0]) == pytest.approx([1, 1.05, 1.1, 1], abs=1e-12)
    assert MagneticField.CAUTION_ZONE == 6000 and MagneticField.BLACKOUT_ZONE == 2000
