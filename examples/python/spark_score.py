"""Scores a table with Spark: each partition by the library, over Arrow, without a Java class.

    spark-submit spark_score.py MODEL IN.parquet OUT.parquet [KEPT COLUMN...]

In a program of your own it is `scored(frame, velscore.load("model.pmml"), keep=["id"])`. The package
has to be installed where the executors run.
"""

from __future__ import annotations

import itertools
import sys
from collections.abc import Iterable, Iterator
from typing import Any

import pyarrow as pa
from pyspark.sql import Column, DataFrame, SparkSession
from pyspark.sql.functions import col
from pyspark.sql.pandas.types import from_arrow_schema, to_arrow_schema

import velscore


def quoted(name: str) -> Column:
    """The column of exactly this name."""
    return col("`" + name.replace("`", "``") + "`")


def plain_schema(schema: pa.Schema) -> pa.Schema:
    """The schema with texts where it has dictionaries, which Spark doesn't take."""

    def plain(field: pa.Field) -> pa.Field:
        if pa.types.is_dictionary(field.type):
            return field.with_type(field.type.value_type)
        return field

    return pa.schema([plain(field) for field in schema])


def scored(
    frame: DataFrame, model: velscore.Model, *, keep: Iterable[str] = (), **options: Any
) -> DataFrame:
    """The kept columns and the results of each row, a row for a row, in their order.

    A row that can't be scored has no values; its status says why, status_field which column was at
    fault. So no row makes a task fail. The model travels once to each executor, as the text of its
    document; `options` are those of `Model.score`.
    """
    keep = list(keep)
    # Columns of the model by any type, and the kept ones: the rest needn't leave the JVM.
    called = {**{name: name for name in model.feature_names_in_}, **(options.get("map") or {})}
    needed = list(dict.fromkeys([*keep, *called.values()]))
    missing = [name for name in needed if name not in frame.columns]
    if missing:
        raise velscore.TableError(f"the table has no column {', '.join(missing)}")
    none = to_arrow_schema(frame.select(*map(quoted, needed)).schema).empty_table()
    schema = plain_schema(model.score(none, keep=keep, **options).schema)
    # Under plain names: mapInArrow takes a name with a dot for a field of a struct.
    sent_columns = [quoted(name).alias(f"c{i}") for i, name in enumerate(needed)]
    sent_model = frame.sparkSession.sparkContext.broadcast(model)

    def score(batches: Iterator[pa.RecordBatch]) -> Iterator[pa.RecordBatch]:
        named = (batch.rename_columns(needed) for batch in batches)
        first = next(named, None)
        if first is None:
            return
        table = pa.RecordBatchReader.from_batches(first.schema, itertools.chain([first], named))
        for batch in sent_model.value.score(table, keep=keep, **options):
            yield batch.cast(schema)

    return frame.select(*sent_columns).mapInArrow(score, from_arrow_schema(schema))


def main(model: str, table: str, output: str, *keep: str) -> None:
    spark = SparkSession.builder.getOrCreate()
    frame = spark.read.parquet(table)
    scored(frame, velscore.load(model), keep=keep).write.parquet(output)


if __name__ == "__main__":
    main(*sys.argv[1:])
