"""The package without its part that stands on GDAL and PROJ, in an interpreter of its own."""

import subprocess
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
HIDDEN = "import sys; sys.modules['geomath._files'] = None; import geomath; "


def run(code: str) -> str:
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True).stderr


def test_the_core_converts_without_loading_gdal() -> None:
    system = ROOT / "examples/great_britain/system.json"
    code = (
        f"import geomath; geomath.CoordinateChain.from_file({str(system)!r}).to_local(52, -1, 0); "
        "assert 'libgdal' not in open('/proc/self/maps').read()"
    )
    assert run(code) == ""


@pytest.mark.parametrize(
    ("call", "subject"),
    [
        ("RegionalGeoid.from_file('heights.tif')", "heights.tif"),
        ("CoordinateChain.from_epsg(27700)", "EPSG:27700"),
        ("Projection.from_epsg(27700)", "EPSG:27700"),
    ],
)
def test_what_needs_the_extra_part_says_so(call: str, subject: str) -> None:
    last = run(f"{HIDDEN}geomath.{call}").splitlines()[-1]
    assert last.startswith(f"geomath.Error: {subject}: needs the part of the package that stands on")


def test_a_triangulation_of_unknown_systems_asks_for_their_kind(tmp_path: Path) -> None:
    path = tmp_path / "network.json"
    path.write_text(
        '{"file_type": "triangulation_file", "format_version": "1.0", "input_crs": "EPSG:2393",'
        ' "transformed_components": ["vertical"]}'
    )
    last = run(f"{HIDDEN}geomath.Triangulation.from_file({str(path)!r})").splitlines()[-1]
    assert 'say by "coordinates"' in last
