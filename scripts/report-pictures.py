#!/usr/bin/env python3
"""Writes docs/pictures: what the reports of the examples look like, as docs/reports.md shows them.

    $(scripts/python-package.sh)/bin/python scripts/report-pictures.py

Needs the package with its extra `report`, and Debian's chromium.
"""

import csv
import pathlib
import subprocess
import tempfile

from PIL import Image, ImageChops

import velscore

ROOT = pathlib.Path(__file__).resolve().parents[1]
PICTURES = ROOT / "docs/pictures"
OBSERVED = {"housing-satisfaction": "Sat"}  # the columns of what was observed, of examples with enough cases
WIDTH, TALLEST, SCALE = 1200, 4000, 0.6
COLOURS = 64  # which a page of text and lines hardly differs by
MARGIN = 10

BROWSER = [
    "chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--hide-scrollbars", f"--window-size={WIDTH},{TALLEST}", f"--force-device-scale-factor={SCALE}",
]  # fmt: skip


def photograph(example: pathlib.Path, folder: pathlib.Path) -> None:
    """Writes the picture of the report of an example."""
    with open(example / "cases.csv", newline="") as file:
        cases = list(csv.DictReader(file))
    page, shot = folder / f"{example.name}.html", folder / f"{example.name}.png"
    velscore.report(example.relative_to(ROOT) / "model.pmml", cases, OBSERVED.get(example.name), page)
    profile = folder / f"profile-{example.name}"
    subprocess.run(
        [*BROWSER, f"--user-data-dir={profile}", f"--screenshot={shot}", page.as_uri()],
        check=True, capture_output=True, timeout=120,
    )  # fmt: skip
    image = Image.open(shot).convert("RGB")
    *_, bottom = ImageChops.invert(image).getbbox()
    image = image.crop((0, 0, image.width, min(bottom + MARGIN, image.height)))
    image.quantize(COLOURS).save(PICTURES / shot.name, optimize=True)


def main() -> None:
    PICTURES.mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        for model in sorted((ROOT / "examples").glob("*/model.pmml")):
            photograph(model.parent, pathlib.Path(folder))


if __name__ == "__main__":
    main()
