"""The command of the package: files in, files out."""

import importlib.util

import polars as pl
import pyarrow.feather
import pyarrow.parquet
import pytest

from velscore.__main__ import main

MODEL = "examples/motor-cars/model.pmml"
CASES = "examples/motor-cars/cases.csv"
FIRST = 22.189600083829404  # the README's


@pytest.fixture
def parquet(tmp_path):
    path = tmp_path / "cases.parquet"
    pl.read_csv(CASES).write_parquet(path)
    return path


def only(monkeypatch, *packages):
    """As if of these packages alone some were installed."""
    found = importlib.util.find_spec
    hidden = {"pyarrow", "polars", "duckdb"} - set(packages)
    monkeypatch.setattr(
        importlib.util, "find_spec", lambda name, *more: None if name in hidden else found(name, *more)
    )


@pytest.mark.parametrize("package", ["pyarrow", "polars", "duckdb"])
def test_parquet_by_whatever_is_installed(package, parquet, tmp_path, monkeypatch):
    only(monkeypatch, package)
    output = tmp_path / "scores.parquet"
    assert main(["score", MODEL, str(parquet), "-o", str(output), "--keep", "wt"]) == 0
    scores = pl.read_parquet(output)
    assert scores.columns[:2] == ["wt", "prediction"]
    assert scores["prediction"][0] == FIRST
    assert scores.height == 6
    assert sorted(p.name for p in tmp_path.iterdir()) == ["cases.parquet", "scores.parquet"]


@pytest.mark.parametrize("package", ["pyarrow", "polars"])
@pytest.mark.parametrize("ending", ["csv", "arrow"])
def test_other_files_out(ending, package, tmp_path, monkeypatch):
    only(monkeypatch, package)
    output = tmp_path / f"scores.{ending}"
    assert main(["score", MODEL, CASES, "-o", str(output), "--columns", "prediction"]) == 0
    scores = pl.read_csv(output) if ending == "csv" else pl.read_ipc(output)
    assert scores.columns == ["prediction"]
    assert scores["prediction"][0] == FIRST


def test_feather_in(tmp_path):
    path = tmp_path / "cases.feather"
    pyarrow.feather.write_feather(pl.read_csv(CASES).to_arrow(), path)
    output = tmp_path / "scores.parquet"
    assert main(["score", MODEL, str(path), "-o", str(output)]) == 0
    assert pyarrow.parquet.read_table(output).column("prediction")[0].as_py() == FIRST


def test_what_to_install_is_told(parquet, tmp_path, monkeypatch, capsys):
    only(monkeypatch)
    assert main(["score", MODEL, str(parquet), "-o", str(tmp_path / "out.parquet")]) == 1
    assert "pip install pyarrow" in capsys.readouterr().err


@pytest.mark.parametrize(
    ("arguments", "code", "told"),
    [
        (["nix.pmml", CASES, "-o", "{}/a.csv"], 1, "nix.pmml"),
        ([CASES, CASES, "-o", "{}/a.csv"], 2, "not well-formed"),
        ([MODEL, "examples/birth-weight/cases.csv", "-o", "{}/a.csv"], 3, "has no column"),
        ([MODEL, "nix.parquet", "-o", "{}/a.csv"], 1, "nix.parquet"),
        ([MODEL, CASES, "-o", "{}/a.xlsx"], 1, "tells no kind of file"),
        ([MODEL, CASES, "-o", CASES], 1, "the table itself"),
    ],
)
def test_faults_are_told_and_leave_nothing(arguments, code, told, tmp_path, capsys):
    assert main(["score", *(a.format(tmp_path) for a in arguments)]) == code
    assert told in capsys.readouterr().err
    assert list(tmp_path.iterdir()) == []
