"""Tables of every kind out of plain columns, and plain columns out of whatever was answered."""

import math
from typing import Any

import duckdb
import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa

Columns = dict[str, list[Any]]


def _arrays(columns: Columns) -> dict[str, np.ndarray]:
    """Numbers with NaN for none; texts as objects with None."""
    arrays = {}
    for name, values in columns.items():
        is_text = any(isinstance(v, str) for v in values)
        arrays[name] = np.array(values, dtype=object if is_text else float)
    return arrays


def records(columns: Columns) -> np.ndarray:
    arrays = _arrays(columns)
    rows = len(next(iter(arrays.values())))
    made = np.empty(rows, dtype=[(name, array.dtype) for name, array in arrays.items()])
    for name, array in arrays.items():
        made[name] = array
    return made


def arrow(columns: Columns) -> pa.Table:
    """In two chunks, texts as dictionaries."""
    arrays = {}
    for name, values in columns.items():
        array = pa.array(values)
        arrays[name] = array.dictionary_encode() if pa.types.is_string(array.type) else array
    table = pa.table(arrays)
    cut = table.num_rows // 2
    return pa.concat_tables([table.slice(0, cut), table.slice(cut)])


def relation(columns: Columns) -> Any:
    return duckdb.from_arrow(pa.table(columns))  # of the connection that stays open


def pandas_categories(columns: Columns) -> pd.DataFrame:
    frame = pd.DataFrame(columns)
    for name, values in columns.items():
        if any(isinstance(v, str) for v in values):
            frame[name] = frame[name].astype("category")
    return frame


KINDS = {
    "pandas": pd.DataFrame,
    "pandas objects": lambda c: pd.DataFrame({n: pd.Series(v, dtype=object) for n, v in c.items()}),
    "pandas nullable": lambda c: pd.DataFrame(c).convert_dtypes(),
    "pandas of pyarrow": lambda c: pd.DataFrame(c).convert_dtypes(dtype_backend="pyarrow"),
    "pandas categories": pandas_categories,
    "Polars": lambda c: pl.DataFrame(c, strict=False),
    "Polars lazy": lambda c: pl.LazyFrame(c, strict=False),
    "pyarrow table": arrow,
    "pyarrow batch": lambda c: pa.RecordBatch.from_pydict(c),
    "pyarrow reader": lambda c: arrow(c).to_reader(),
    "DuckDB": relation,
    "NumPy records": records,
    "dict of lists": dict,
    "dict of arrays": _arrays,
    "list of dicts": lambda c: [dict(zip(c, row)) for row in zip(*c.values())],
}


def plain(answer: Any) -> Columns:
    """The columns of an answer of any kind, None for what has no value."""
    if isinstance(answer, pl.LazyFrame):
        answer = answer.collect()
    if isinstance(answer, pl.DataFrame):
        columns = answer.to_dict(as_series=False)
    elif isinstance(answer, pa.RecordBatchReader):
        columns = answer.read_all().to_pydict()
    elif isinstance(answer, (pa.Table, pa.RecordBatch)):
        columns = answer.to_pydict()
    elif isinstance(answer, pd.DataFrame):
        columns = {name: list(answer[name]) for name in answer.columns}
    elif isinstance(answer, duckdb.DuckDBPyRelation):
        columns = {n: list(v) for n, v in zip(answer.columns, zip(*answer.fetchall()))}
    elif isinstance(answer, np.ndarray):
        columns = {name: answer[name].tolist() for name in answer.dtype.names}
    elif isinstance(answer, list):
        columns = {name: [row[name] for row in answer] for name in answer[0]}
    else:
        columns = {n: v.tolist() if isinstance(v, np.ndarray) else v for n, v in answer.items()}
    return {
        name: [None if isinstance(v, float) and math.isnan(v) else v for v in values]
        for name, values in columns.items()
    }
