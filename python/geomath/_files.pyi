from typing import Any

def raster_reader() -> object: ...
def epsg_system(
    code: str,
    *,
    datum: bool,
    operation: str,
    near: tuple[float, float] | None,
    grids: list[str],
    from_frame: str,
    to_frame: str,
) -> str: ...

class Conversion:
    def __init__(
        self,
        source: str,
        target: str,
        *,
        operation: str,
        near: tuple[float, float] | None,
        grids: list[str],
    ) -> None: ...
    def run(self, a: Any, b: Any, c: Any, years: Any, inverse: bool) -> None: ...
    @property
    def needs_dates(self) -> bool: ...
    @property
    def operations(self) -> list[str]: ...
    @property
    def notes(self) -> list[str]: ...
    @property
    def source_geographic(self) -> bool: ...
    @property
    def target_geographic(self) -> bool: ...
    @property
    def source_title(self) -> str: ...
    @property
    def target_title(self) -> str: ...
