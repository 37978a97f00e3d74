"""Single values of Python, as columns of lists hold them."""

from __future__ import annotations

import datetime
from array import array

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any

_MISSING = {"NAType", "NaTType", "MaskedConstant"}  # of pandas and NumPy


_EPOCH = datetime.datetime(1970, 1, 1)


def times(values: list[Any]) -> Any:
    """A column of Arrow's of moments, in microseconds of UTC; None where a value is none."""
    moments = array("q", bytes(8 * len(values)))
    there = array("B", bytes(len(values) // 8 + 1))
    for row, value in enumerate(values):
        if value is None or type(value).__name__ in _MISSING or value != value:
            continue
        if not isinstance(value, datetime.datetime):
            return None
        if value.tzinfo is not None:
            value = value.astimezone(datetime.timezone.utc).replace(tzinfo=None)
        moments[row] = (value - _EPOCH) // datetime.timedelta(microseconds=1)
        there[row // 8] |= 1 << row % 8
    return ("tsu:", moments.buffer_info()[0], (moments, there), there.buffer_info()[0])


def column(values: Any) -> Any:
    """A column of a list as the library's tables take it: of moments, else as it is."""
    if isinstance(values, list):
        first = next((value for value in values if value is not None), None)
        if isinstance(first, datetime.datetime):
            return times(values) or values
    return values


def plain(value: Any, column: str, row: int) -> None | bool | int | float | str:
    """What a value is as None, a truth, a number or a text."""
    kind = type(value)
    if kind.__name__ in _MISSING:
        return None
    if isinstance(value, datetime.datetime):
        if value.tzinfo is not None:
            value = value.astimezone(datetime.timezone.utc).replace(tzinfo=None)
        return str(value.isoformat())
    if isinstance(value, (datetime.date, datetime.time)):
        return str(value.isoformat())
    if (kind.__module__, kind.__name__) == ("decimal", "Decimal"):
        return str(value)
    if kind.__module__.partition(".")[0] == "numpy" and hasattr(value, "item"):
        item: object = value.item()
        if isinstance(item, (datetime.date, datetime.datetime)):
            return str(item.isoformat())
        if isinstance(item, (bool, int, float, str)):
            return item
    raise TypeError(
        f'column "{column}" holds {value!r} in row {row + 1}, a {kind.__name__}; expected are None, '
        "bool, int, float, str, decimals, dates and times"
    )
