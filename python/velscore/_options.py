"""What is asked of scores, as the library takes it."""

from __future__ import annotations

from ._errors import OptionError

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable, Mapping
    from typing import Any


def _names(value: str | Iterable[str]) -> list[str]:
    return [value] if isinstance(value, str) else list(value)


def score_options(
    keep: str | Iterable[str] | bool | None = None,
    columns: str | Iterable[str] | None = None,
    nan: str | None = None,
    policy: str | None = None,
    level: float | None = None,
    strict: bool = False,
    missing: str | Iterable[str] | None = None,
    map: Mapping[str, str] | None = None,
) -> dict[str, Any]:
    """The options of the library; of what is None the defaults."""
    if level is not None and level == 0:
        raise OptionError("level is 0; expected is a number above 0 and below 1")
    options: dict[str, Any] = {
        "nan": nan,
        "policy": policy,
        "level": level,
        "strict": strict,
        "map": None if map is None else dict(map),
    }
    if keep is True:
        options["keep_all"] = True
    elif keep:
        options["keep"] = _names(keep)
    if columns is not None:
        options["columns"] = _names(columns)
    if missing is not None:
        options["missing"] = _names(missing)
    return options
