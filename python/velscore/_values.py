"""Single values of Python, as columns of lists hold them."""

from __future__ import annotations

import datetime
import decimal

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any

_MISSING = {"NAType", "NaTType", "MaskedConstant"}  # of pandas and NumPy


def plain(value: Any, column: str, row: int) -> None | bool | int | float | str:
    """What a value is as None, a truth, a number or a text."""
    kind = type(value)
    if kind.__name__ in _MISSING:
        return None
    if isinstance(value, datetime.datetime):
        if value.tzinfo is not None:
            value = value.astimezone(datetime.timezone.utc).replace(tzinfo=None)
        return value.isoformat()
    if isinstance(value, (datetime.date, datetime.time)):
        return value.isoformat()
    if isinstance(value, decimal.Decimal):
        return str(value)
    if kind.__module__.partition(".")[0] == "numpy" and hasattr(value, "item"):
        item: object = value.item()
        if isinstance(item, (datetime.date, datetime.datetime)):
            return item.isoformat()
        if isinstance(item, (bool, int, float, str)):
            return item
    raise TypeError(
        f'column "{column}" holds {value!r} in row {row + 1}, a {kind.__name__}; expected are None, '
        "bool, int, float, str, decimals, dates and times"
    )
