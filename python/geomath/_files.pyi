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
