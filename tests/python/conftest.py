"""What the tests share: documents, the command beside them, tables of every kind."""

from __future__ import annotations

import csv
import io
import pathlib
import subprocess
from collections.abc import Iterable, Iterator
from typing import Any

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMAND = ROOT / "build/release/bin/velscore"
CASES = ROOT / "tests/data/cases"


def command(*arguments: object) -> str:
    """What the command writes."""
    run = subprocess.run([COMMAND, *map(str, arguments)], capture_output=True, check=True, text=True)
    return run.stdout


def columns_of_csv(text: str) -> dict[str, list[str]]:
    header, *rows = csv.reader(io.StringIO(text))
    return {name: [row[i] for row in rows] for i, name in enumerate(header)}


def paired(*columns: Iterable[Any]) -> Iterator[tuple[Any, ...]]:
    """The rows of columns, which have to be of one length."""
    lists = [list(column) for column in columns]
    assert len({len(values) for values in lists}) == 1
    return zip(*lists)


def number(text: str) -> float | None:
    if not text or any(letter in text for letter in "nNiIxX_"):
        return None
    try:
        return float(text)
    except ValueError:
        return None


@pytest.fixture(autouse=True)
def in_the_root(monkeypatch: pytest.MonkeyPatch) -> None:
    """Examples name files from the root of the repository."""
    monkeypatch.chdir(ROOT)
