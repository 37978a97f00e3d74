"""What the tests of the recipes share: the recipes as modules, examples, and rows that go wrong."""

import csv
import pathlib
import sys

import pyarrow as pa
import pytest

import velscore

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "examples/python"))

#: Rows of the birth weights' model, and the one of them that has no score: its age is no number.
ROWS = 10_000
BAD_ROW = 6_789


def births() -> pa.Table:
    """Cases with an id; texts where numbers belong, so that one of them can be none."""
    with open(ROOT / "examples/birth-weight/cases.csv", newline="") as file:
        cases = list(csv.DictReader(file))
    rows = [dict(cases[i % len(cases)], id=i) for i in range(ROWS)]
    rows[BAD_ROW]["age"] = "old"
    return pa.Table.from_pylist(rows)


@pytest.fixture(scope="session")
def table() -> pa.Table:
    return births()


@pytest.fixture(scope="session")
def document() -> pathlib.Path:
    return ROOT / "examples/birth-weight/model.pmml"


@pytest.fixture(scope="session")
def model(document: pathlib.Path) -> velscore.Model:
    return velscore.load(document)


@pytest.fixture(scope="session")
def expected(table: pa.Table, document: pathlib.Path, tmp_path_factory: pytest.TempPathFactory) -> list[dict]:
    """What the command scores, by row."""
    import subprocess

    folder = tmp_path_factory.mktemp("expected")
    with open(folder / "cases.csv", "w", newline="") as file:
        writer = csv.DictWriter(file, table.column_names)
        writer.writeheader()
        writer.writerows(table.to_pylist())
    command = ROOT / "build/release/bin/velscore"
    run = subprocess.run(
        [command, "score", document, folder / "cases.csv", "--keep", "id"],
        capture_output=True, check=True, text=True,
    )
    return list(csv.DictReader(run.stdout.splitlines()))


def same(found: list[dict], expected: list[dict]) -> None:
    """Row for row, in order: the command's numbers by bits, its texts, its missing values."""
    assert [int(row["id"]) for row in found] == [int(row["id"]) for row in expected]
    for f, e in zip(found, expected):
        for name, text in e.items():
            value = f[name]
            if text == "":
                assert value is None or value != value, (e, f)
            elif isinstance(value, float):
                assert value == float(text), (name, e, f)
            else:
                assert str(value) == text, (name, e, f)
    bad = found[BAD_ROW]
    assert bad["status"] != 0
    assert bad["status_field"] == "age"
    assert sum(row["status"] != 0 for row in found) == 1
