#!/usr/bin/env python3
"""Compares what generate.R made with what tests/data/cases keeps, folder by folder.

    compare.py MADE [FOLDER...]

A file agrees when it is the same, or when it has the same structure and texts and no number of it is
further off than the folder's tolerance: relative to the number, in a covariance matrix relative to the
standard errors of the two parameters. Says of each folder how it agrees; ends with 1 when one doesn't.
"""

import csv
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

KEPT = pathlib.Path(__file__).resolve().parent.parent / "cases"
FILES = ("model.pmml", "input.csv", "expected.csv")

# Rounding in another linear algebra library moves numbers by 1e-14 or so. Where a fit ends by an optimiser's own
# tolerance it moves them further: nnet and polr climb by differences, coxph and glm leave when a step gains little.
TOLERANCE = 1e-12
OPTIMISED = 1e-9
OPTIMISED_FOLDERS = ("mlr-", "ordinal-", "cox-", "glz-", "missing-mlr-", "missing-cox-", "legacy-mlr-")

NUMBER = re.compile(r"-?\d+(\.\d*)?([eE][-+]?\d+)?")


class Differs(Exception):
    """Where two files are not of the same structure or text."""


class Largest:
    """The largest relative difference of the numbers of a file, and where it is."""

    def __init__(self):
        self.difference, self.where = 0.0, ""

    def take(self, made, kept, where, scale=None):
        if made == kept:
            return
        if not (NUMBER.fullmatch(made) and NUMBER.fullmatch(kept)):
            raise Differs(f"{where}: '{made}' instead of '{kept}'")
        apart = abs(float(made) - float(kept))
        relative = apart / (abs(float(kept)) if scale is None else scale) if apart else 0.0
        if relative > self.difference:
            self.difference, self.where = relative, where


def variances(root):
    """The variance of each parameter of a document, by parameter and target category."""
    return {cell_ends(cell)[0]: float(cell.get("value", "0"))
            for cell in root.iter() if is_covariance(cell) and len(set(cell_ends(cell))) == 1}


def is_covariance(element):
    return element.tag.lower().replace("-", "").endswith("pcovcell")


def cell_ends(cell):
    row = (cell.get("pRow") or cell.get("p-row"), cell.get("tRow"))
    return row, (cell.get("pCol") or cell.get("p-col"), cell.get("tCol"))


def compare_elements(made, kept, largest, spread, path=""):
    path += "/" + kept.tag.split("}")[-1]
    if made.tag != kept.tag or list(made.attrib) != list(kept.attrib) or len(made) != len(kept):
        raise Differs(f"{path}: another element, other attributes or another number of children")
    scale = None
    if is_covariance(kept):
        row, column = cell_ends(kept)
        scale = (spread[row] * spread[column]) ** 0.5
    for name in kept.attrib:
        largest.take(made.get(name), kept.get(name), f"{path} {name}", scale)
    largest.take((made.text or "").strip(), (kept.text or "").strip(), path)
    for pair in zip(made, kept):
        compare_elements(*pair, largest, spread, path)


def compare_documents(made, kept, largest):
    kept_root = ElementTree.fromstring(kept)
    compare_elements(ElementTree.fromstring(made), kept_root, largest, variances(kept_root))


def compare_tables(made, kept, largest):
    made_rows, kept_rows = (list(csv.reader(text.decode().splitlines())) for text in (made, kept))
    if [len(row) for row in made_rows] != [len(row) for row in kept_rows]:
        raise Differs("other rows or columns")
    for line, row in enumerate(kept_rows, 1):
        for column, text in enumerate(row):
            largest.take(made_rows[line - 1][column], text, f"line {line}, {kept_rows[0][column]}")


def compare_file(made, kept, tolerance):
    """What there is to say of a file: nothing when it is the same. The flag says whether it agrees."""
    if not made.exists():
        return False, f"{kept.name}: not made"
    made_bytes, kept_bytes = made.read_bytes(), kept.read_bytes()
    if made_bytes == kept_bytes:
        return True, ""
    largest = Largest()
    try:
        (compare_documents if kept.suffix == ".pmml" else compare_tables)(made_bytes, kept_bytes, largest)
    except Differs as difference:
        return False, f"{kept.name}: {difference}"
    return largest.difference <= tolerance, f"{kept.name}: {largest.difference:.1e} at {largest.where}"


def main(arguments):
    if not arguments:
        sys.exit(__doc__)
    made, folders = pathlib.Path(arguments[0]), arguments[1:]
    differing = 0
    for folder in folders or sorted(path.name for path in KEPT.iterdir() if path.is_dir()):
        tolerance = OPTIMISED if folder.startswith(OPTIMISED_FOLDERS) else TOLERANCE
        found = [compare_file(made / folder / name, KEPT / folder / name, tolerance) for name in FILES]
        agrees = all(agreed for agreed, _ in found)
        differing += not agrees
        notes = "; ".join(note for _, note in found if note)
        print(f"{folder}: " + ("same" if not notes else f"{'within' if agrees else 'NOT within'} {tolerance:g}: {notes}"))
    sys.exit(1 if differing else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
