"""The command of the package: scores files that the library alone doesn't read, and reports.

    python -m velscore score model.pmml cases.parquet -o scores.parquet
    python -m velscore report model.pmml cases.parquet --observed outcome -o report.html

Files of Parquet, Arrow and Feather are read with pyarrow, Polars or DuckDB, whichever is there;
others are CSV or JSON Lines. Batch after batch: a file may be larger than the memory.
"""

from __future__ import annotations

import argparse
import sys

from . import __version__
from ._errors import Error
from ._files import CannotRead, columns_of_file, score_file
from ._model import load
from ._report import report


def _arguments(given: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="python -m velscore", description="Scores tables, and reports about models."
    )
    parser.add_argument("--version", action="version", version=__version__)
    commands = parser.add_subparsers(dest="command", required=True)
    score = commands.add_parser(
        "score",
        help="score a table",
        description="Scores a file of Parquet, Arrow, Feather, CSV or JSON Lines.",
    )
    score.add_argument("model", help="the model's document")
    score.add_argument("cases", help="the table; its name tells what it is")
    score.add_argument("-o", "--output", required=True, help="where the scores go, by name likewise")
    score.add_argument("--keep", help="columns to repeat: all, or names with commas between")
    score.add_argument("--columns", help="the results that are wanted, with commas between")
    score.add_argument("--policy", choices=("substitute", "sysmis", "status"))
    score.add_argument("--level", type=float, help="of confidence limits, 0.95 by default")
    score.add_argument("--strict", action="store_true", help="a row without a score is a failure")
    page = commands.add_parser(
        "report",
        help="write a page about a model",
        description="Writes a page about a model and its scores, one HTML file with pictures.",
    )
    page.add_argument("model", help="the model's document")
    page.add_argument("cases", nargs="?", help="a table of Parquet, Arrow, CSV or JSON Lines")
    page.add_argument("--observed", metavar="COL", help="the column of what was observed")
    page.add_argument("-o", "--output", required=True, help="the file of the page")
    return parser.parse_args(given)


def main(given: list[str] | None = None) -> int:
    """Runs the command. Answers its exit code: 0, 2 of a document, 3 of a table, 1 of other faults."""
    arguments = _arguments(given)
    try:
        done = _COMMANDS[arguments.command](arguments)
    except (Error, CannotRead, ImportError, OSError) as failure:
        print(f"velscore: {failure}", file=sys.stderr)
        return _EXIT_CODES.get(type(failure).__name__, 1)
    print(f"velscore: {done} written to {arguments.output}", file=sys.stderr)
    return 0


def _score(arguments: argparse.Namespace) -> str:
    keep = arguments.keep
    rows = score_file(
        load(arguments.model),
        arguments.cases,
        arguments.output,
        keep=True if keep == "all" else keep.split(",") if keep else None,
        columns=arguments.columns.split(",") if arguments.columns else None,
        policy=arguments.policy,
        level=arguments.level,
        strict=arguments.strict,
    )
    return f"{rows} rows"


def _report(arguments: argparse.Namespace) -> str:
    cases = None if arguments.cases is None else columns_of_file(arguments.cases)
    report(load(arguments.model), cases, arguments.observed, arguments.output)
    return "report"


_COMMANDS = {"score": _score, "report": _report}


_EXIT_CODES = {"DocumentError": 2, "TableError": 3}

if __name__ == "__main__":
    sys.exit(main())
