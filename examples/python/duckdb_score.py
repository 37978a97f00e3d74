"""Scores what a query of DuckDB gives, from Parquet to Parquet, in constant memory.

    python duckdb_score.py MODEL IN.parquet OUT.parquet [KEPT COLUMN...]

The table's columns that the model doesn't read, and that aren't kept, are never read from the file.
"""

from __future__ import annotations

import sys

import duckdb
import pyarrow as pa

import velscore


def scored(relation: duckdb.DuckDBPyRelation, model: velscore.Model, *keep: str) -> pa.RecordBatchReader:
    """The kept columns and the results of each row, as they are asked for."""
    needed = dict.fromkeys([*keep, *model.feature_names_in_])
    columns = ", ".join('"' + name.replace('"', '""') + '"' for name in needed)
    return model.score(relation.project(columns).to_arrow_reader(), keep=keep)


def main(document: str, table: str, output: str, *keep: str) -> None:
    connection = duckdb.connect()
    results = scored(connection.read_parquet(table), velscore.load(document), *keep)
    # A connection reads or writes: results are written by another one while this one reads.
    connection.cursor().from_arrow(results).write_parquet(output)


if __name__ == "__main__":
    main(*sys.argv[1:])
