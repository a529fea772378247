from pathlib import Path

import pytest

import geomath

ROOT = Path(__file__).parents[2]


@pytest.fixture
def britain() -> geomath.CoordinateChain:
    """The national grid of Great Britain by seven parameters."""
    return geomath.CoordinateChain.from_file(ROOT / "examples/great_britain/system.json")
