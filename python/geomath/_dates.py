from __future__ import annotations

from typing import Any

import numpy as np

from ._geomath import _decimal_year

__all__ = ["decimal_year"]


def decimal_year(date: Any) -> Any:
    """Dates as decimal years: the year and the part of it that has gone by.

    date: a date or datetime (without a time zone in universal time), a numpy.datetime64, a text such
    as "2026-11-23" or "2026-11-23T14:30:00Z", or an array of them; decimal years stay as they are. NaT
    becomes NaN. Raises Error for a text or a year that is no date.
    """
    if isinstance(date, str):
        return _decimal_year(date)
    if hasattr(date, "isoformat"):
        text = date.isoformat()
        return np.nan if text == "NaT" else _decimal_year(text)  # a missing one of a data frame
    values = np.asarray(date)
    if values.dtype.kind == "O" and values.size and hasattr(values.flat[0], "isoformat"):
        return np.array([decimal_year(value) for value in values.flat]).reshape(values.shape)
    if values.dtype.kind in "US":
        return np.array([_decimal_year(str(text)) for text in values.flat]).reshape(values.shape)
    if values.dtype.kind != "M":
        return date
    year = values.astype("datetime64[Y]")
    begin, end = year.astype("datetime64[us]"), (year + 1).astype("datetime64[us]")
    part = (values.astype("datetime64[us]") - begin) / (end - begin)
    years = np.where(np.isnat(values), np.nan, year.astype(np.int64) + 1970.0) + part
    return years if years.ndim else float(years)
