"""The notebook runs from a fresh kernel, draws its pictures, and shows the command's scores."""

import base64
import csv
import re
import subprocess

import nbclient
import nbformat
import pytest
from conftest import ROOT

FOLDER = ROOT / "examples/python"
PNG = b"\x89PNG\r\n"


@pytest.fixture(scope="module")
def cells() -> list:
    notebook = nbformat.read(FOLDER / "pictures.ipynb", as_version=4)
    assert not any(cell.get("outputs") for cell in notebook.cells), "it is kept without what it shows"
    nbclient.NotebookClient(
        notebook, timeout=300, kernel_name="python3", resources={"metadata": {"path": str(FOLDER)}}
    ).execute()
    return [cell for cell in notebook.cells if cell.cell_type == "code"]


def shown(cells: list, kind: str) -> list[str]:
    return [o["data"][kind] for cell in cells for o in cell.outputs if kind in o.get("data", {})]


def test_nothing_is_complained_of(cells):
    assert [o for cell in cells for o in cell.outputs if o.output_type in ("error", "stream")] == []


def test_every_cell_that_draws_shows_a_picture(cells):
    drawing = [cell for cell in cells if "pyplot.show()" in cell.source]
    assert len(drawing) == 4
    for cell in drawing:
        (picture,) = shown([cell], "image/png")
        assert base64.b64decode(picture).startswith(PNG)


def test_the_model_and_its_scores_are_tables(cells):
    about, scores, probabilities = shown(cells, "text/html")
    assert "general linear model" in about
    expected = subprocess.run(
        [ROOT / "build/release/bin/velscore", "score", "motor-cars/model.pmml", "motor-cars/cases.csv"],
        capture_output=True, check=True, text=True, cwd=ROOT / "examples",
    ).stdout  # fmt: skip
    numbers = re.findall(r"<td>(-?[\d.]+)</td>", scores)
    for row in csv.DictReader(expected.splitlines()):
        assert f"{float(row['prediction']):.6f}" in numbers
    assert "<th>normal</th>" in probabilities
