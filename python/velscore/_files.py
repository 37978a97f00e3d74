"""Files of tables, read and written by what is installed."""

from __future__ import annotations

import importlib
import importlib.util
import os

from . import _velscore
from ._model import Model, scan_csv

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any


class CannotRead(Exception):
    """Nothing that is installed reads or writes such a file."""


_PARQUET = (".parquet", ".pq")
_ARROW = (".arrow", ".feather", ".ipc")
_TEXT = (".csv", ".tsv")


def _ending(path: str) -> str:
    return os.path.splitext(path.lower())[1]


def _package(*wanted: str) -> str:
    for name in wanted:
        if importlib.util.find_spec(name) is not None:
            return name
    raise CannotRead(
        f"a file of this kind is read and written by {' or '.join(wanted)}, and none of them is "
        f"installed; to install one: pip install {wanted[0]}"
    )


def score_file(model: Model, cases: str, output: str, **options: Any) -> int:
    """Scores a file into another, batch after batch. Answers the number of rows.

    Raises `CannotRead` where a package is wanting, and whatever the library and that package raise.
    A file appears under its name when it is whole.
    """
    if _ending(output) not in (*_PARQUET, *_ARROW, *_TEXT):
        raise CannotRead(
            f"{output} tells no kind of file; expected is one that ends in "
            f"{', '.join((*_PARQUET, *_ARROW, *_TEXT))}"
        )
    if not os.path.exists(cases):
        raise FileNotFoundError(f"{cases}: no such file")
    if os.path.exists(output) and os.path.samefile(cases, output):
        raise CannotRead(f"{output} is the table itself; name another file for the scores")
    partial = f"{output}.part"
    try:
        if _is_for_polars(cases):
            rows = _by_polars(model, cases, options, _ending(output), partial)
        else:
            rows = _write(_scored(model, cases, options), _ending(output), partial)
    except BaseException:
        if os.path.exists(partial):
            os.remove(partial)
        raise
    os.replace(partial, output)
    return rows


def _scored(model: Model, cases: str, options: dict[str, Any]) -> _velscore.Stream:
    """The scores of a file as a stream."""
    ending = _ending(cases)
    if ending not in (*_PARQUET, *_ARROW):
        return scan_csv(cases, model, **options)
    keep = options.get("keep")
    wanted = None if keep is True else {*model.feature_names_in_, *(keep or ())}
    if ending in _ARROW:
        return model._stream(_arrow_source(cases), options)
    readers = {"pyarrow": _parquet_by_pyarrow, "duckdb": _parquet_by_duckdb}
    return model._stream(readers[_package(*readers)](cases, wanted), options)


def _parquet_by_pyarrow(path: str, wanted: set[str] | None) -> Any:
    pa = importlib.import_module("pyarrow")
    file = importlib.import_module("pyarrow.parquet").ParquetFile(path)
    schema = file.schema_arrow
    if wanted is not None:
        schema = pa.schema([field for field in schema if field.name in wanted])
    batches = file.iter_batches(batch_size=1 << 16, columns=schema.names)
    return pa.RecordBatchReader.from_batches(schema, batches)


def _parquet_by_duckdb(path: str, wanted: set[str] | None) -> Any:
    table = importlib.import_module("duckdb").read_parquet(path)
    if wanted is not None:
        names = [name for name in table.columns if name in wanted]
        table = table.project(", ".join('"' + n.replace('"', '""') + '"' for n in names))
    return table


def _arrow_source(path: str) -> Any:
    pa = importlib.import_module("pyarrow")
    ipc = importlib.import_module("pyarrow.ipc")
    file = ipc.open_file(pa.memory_map(path))
    batches = (file.get_batch(i) for i in range(file.num_record_batches))
    return pa.RecordBatchReader.from_batches(file.schema, batches)


def _is_for_polars(cases: str) -> bool:
    ending = _ending(cases)
    if ending in _PARQUET:
        return _package("pyarrow", "polars", "duckdb") == "polars"
    return ending in _ARROW and _package("pyarrow", "polars") == "polars"


def _by_polars(
    model: Model, cases: str, options: dict[str, Any], ending: str, partial: str
) -> int:
    pl = importlib.import_module("polars")
    scan = pl.scan_parquet if _ending(cases) in _PARQUET else pl.scan_ipc
    scores = model.score(scan(cases), **options)
    if ending in _PARQUET:
        scores.sink_parquet(partial)
        written = pl.scan_parquet(partial)
    elif ending in _TEXT:
        mark = "\t" if ending == ".tsv" else ","
        scores.sink_csv(partial, separator=mark)
        written = pl.scan_csv(partial, separator=mark)
    else:
        scores.sink_ipc(partial)
        written = pl.scan_ipc(partial)
    return int(written.select(pl.len()).collect().item())


def _write(scores: _velscore.Stream, ending: str, partial: str) -> int:
    """Writes a stream, by the ending that its file will have."""
    if ending in _PARQUET and _package("pyarrow", "polars", "duckdb") == "duckdb":
        return _parquet_with_duckdb(scores, partial)
    if _package("pyarrow", "polars") == "pyarrow":
        return _with_pyarrow(scores, ending, partial)
    return _with_polars(scores, ending, partial)


def _with_pyarrow(scores: _velscore.Stream, ending: str, partial: str) -> int:
    reader = importlib.import_module("pyarrow").RecordBatchReader.from_stream(scores)
    schema = _plain_schema(reader.schema)
    if ending in _PARQUET:
        writer = importlib.import_module("pyarrow.parquet").ParquetWriter(partial, schema)
    elif ending in _TEXT:
        csv = importlib.import_module("pyarrow.csv")
        marks = csv.WriteOptions(delimiter="\t" if ending == ".tsv" else ",")
        writer = csv.CSVWriter(partial, schema, write_options=marks)
    else:
        writer = importlib.import_module("pyarrow.ipc").new_file(partial, schema)
    rows = 0
    with writer:
        for batch in reader:
            rows += batch.num_rows
            writer.write_batch(batch.cast(schema))
    return rows


def _plain_schema(schema: Any) -> Any:
    """Texts instead of dictionaries, which differ from batch to batch."""
    pa = importlib.import_module("pyarrow")
    return pa.schema(
        [f.with_type(f.type.value_type) if pa.types.is_dictionary(f.type) else f for f in schema]
    )


def _with_polars(scores: _velscore.Stream, ending: str, partial: str) -> int:
    frame = importlib.import_module("polars").DataFrame(scores)
    if ending in _PARQUET:
        frame.write_parquet(partial)
    elif ending in _TEXT:
        frame.write_csv(partial, separator="\t" if ending == ".tsv" else ",")
    else:
        frame.write_ipc(partial)
    return int(frame.height)


def _parquet_with_duckdb(scores: _velscore.Stream, partial: str) -> int:
    connection = importlib.import_module("duckdb").connect()
    name = partial.replace("'", "''")
    copied = connection.execute(f"COPY (SELECT * FROM scores) TO '{name}' (FORMAT parquet)")
    return int(copied.fetchall()[0][0])


# ---- Whole tables ----


def columns_of_file(path: str) -> dict[str, list[Any]]:
    """The columns of a file; those of CSV are texts, as the library reads them.

    Raises `CannotRead` where a package is wanting or a row doesn't fit.
    """
    ending = _ending(path)
    if ending in _PARQUET or ending in _ARROW:
        return _columns_by_package(path, ending)
    with _opened(path) as file:
        if _ending(path.removesuffix(".gz")) in (".jsonl", ".ndjson"):
            import json

            rows = [json.loads(line) for line in file if line.strip()]
            names = dict.fromkeys(name for row in rows for name in row)
            return {name: [row.get(name) for row in rows] for name in names}
        return _columns_of_csv(file, path, "\t" if ending == ".tsv" else ",")


def _opened(path: str) -> Any:
    if not path.lower().endswith(".gz"):
        return open(path, encoding="utf-8-sig", newline="")
    import gzip

    return gzip.open(path, "rt", encoding="utf-8-sig", newline="")


def _columns_of_csv(file: Any, path: str, delimiter: str) -> dict[str, list[Any]]:
    import csv

    reader = csv.reader(file, delimiter=delimiter)
    names = next(reader, [])
    columns: dict[str, list[Any]] = {name: [] for name in names}
    if len(columns) < len(names):
        raise CannotRead(f"{path} has two columns of one name; expected is one of each")
    for row in reader:
        if not row:
            continue
        if len(row) != len(names):
            raise CannotRead(
                f"{path}, line {reader.line_num}: {len(row)} fields; expected are {len(names)}, as "
                "in the header"
            )
        for name, text in zip(names, row):
            columns[name].append(text)
    return columns


def _columns_by_package(path: str, ending: str) -> dict[str, list[Any]]:
    from ._kinds import kind_of

    package = _package("pyarrow", "polars")
    if package == "polars":
        pl = importlib.import_module("polars")
        table = pl.read_parquet(path) if ending in _PARQUET else pl.read_ipc(path)
    elif ending in _PARQUET:
        table = importlib.import_module("pyarrow.parquet").read_table(path)
    else:
        table = _arrow_source(path).read_all()
    return kind_of(table).columns(table)
