"""Types that only a type checker reads."""

from __future__ import annotations

from collections.abc import Iterable, Mapping
from typing import Literal, TypedDict


Policy = Literal["substitute", "sysmis", "status"]


class Options(TypedDict, total=False):
    """What predict, predict_proba, score, curve and scan_csv take alike."""

    nan: Literal["missing", "invalid"] | None
    policy: Policy | None
    level: float | None
    strict: bool
    missing: str | Iterable[str] | None
    map: Mapping[str, str] | None
