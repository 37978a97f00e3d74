"""What one core scores, by family and road: rows per second of processor time.

    $(scripts/python-package.sh)/bin/python bench/family_bench.py [ROWS]

Questions: of a document of each family, its cases repeated to ROWS rows (1,000,000), what the prediction alone and
all results take from a frame of Polars in memory, and from CSV to CSV by the command on one thread, with reading
and writing; the least of three.
"""

import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import time
import warnings

import polars as pl

import velscore

ROOT = pathlib.Path(__file__).resolve().parents[1]
COMMAND = ROOT / "build/release/bin/velscore"
CASES = ROOT / "tests/data/cases"
EXAMPLES = ROOT / "examples"
FAMILIES = {
    "linear": (EXAMPLES / "swiss-fertility", "cases.csv"),
    "general linear": (EXAMPLES / "motor-cars", "cases.csv"),
    "binary logistic": (EXAMPLES / "birth-weight", "cases.csv"),
    "multinomial": (CASES / "mlr-housing-factors", "input.csv"),
    "ordinal": (CASES / "ordinal-logit-housing", "input.csv"),
    "generalized, probit": (CASES / "glz-probit-pima", "input.csv"),
    "Cox": (EXAMPLES / "veteran-lung-cancer", "cases.csv"),
}  # fmt: skip
TIMES = 3


def of_frame(call) -> float:
    begin = time.process_time()
    call()
    return time.process_time() - begin


def of_command(model: pathlib.Path, table: pathlib.Path, *options: str) -> float:
    def used() -> float:
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    begin = used()
    subprocess.run(
        [COMMAND, "score", model, table, "-o", os.devnull, "--threads", "1", "--quiet", *options], check=True
    )
    return used() - begin


def main(rows: int = 1_000_000) -> None:
    roads = ["frame, prediction", "frame, all", "CSV, prediction", "CSV, all"]
    print(f"{'millions of rows a second':26}" + "".join(f"{road:>19}" for road in roads))
    warnings.simplefilter("ignore", velscore.DocumentWarning)
    for family, (folder, name) in FAMILIES.items():
        document = folder / "model.pmml"
        model = velscore.load(document)
        cases = pl.read_csv(folder / name, null_values=["NA"]).select(model.feature_names_in_)
        frame = pl.concat([cases] * (rows // len(cases) + 1)).head(rows).rechunk()
        with tempfile.TemporaryDirectory() as made:
            table = pathlib.Path(made) / "cases.csv"
            frame.write_csv(table)
            measures = [
                lambda: of_frame(lambda: model.predict(frame)),
                lambda: of_frame(lambda: model.score(frame)),
                lambda: of_command(document, table, "--prediction-only"),
                lambda: of_command(document, table),
            ]
            rates = [rows / min(measure() for _ in range(TIMES)) / 1e6 for measure in measures]
        print(f"{family:26}" + "".join(f"{rate:19.2f}" for rate in rates), flush=True)


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
