"""Spark: mapInArrow over two local workers."""

import itertools
import os

import pyarrow as pa
import pytest
import spark_score
from conftest import BAD_ROW, same
from pyspark.sql import SparkSession

import velscore


@pytest.fixture(scope="module")
def spark(tmp_path_factory):
    session = (
        SparkSession.builder.master("local[2]")
        .config("spark.ui.enabled", "false")
        .config("spark.driver.bindAddress", "127.0.0.1")
        .config("spark.driver.host", "127.0.0.1")
        .config("spark.sql.warehouse.dir", str(tmp_path_factory.mktemp("spark")))
        .config("spark.sql.execution.arrow.maxRecordsPerBatch", 700)
        .getOrCreate()
    )
    yield session
    session.stop()


@pytest.fixture(scope="module")
def frame(spark, table, tmp_path_factory):
    import pyarrow.parquet as pq

    path = tmp_path_factory.mktemp("tables") / "births.parquet"
    pq.write_table(table, path, row_group_size=1_500)
    return spark.read.parquet(str(path))


def test_scores_are_the_commands_and_a_bad_row_is_a_status(frame, model, expected):
    found = spark_score.scored(frame, model, keep=["id"]).orderBy("id").collect()
    same([row.asDict() for row in found], expected)


def test_order_stays_within_partitions(spark, model, frame):
    numbered = frame.coalesce(1).sortWithinPartitions("id")
    found = spark_score.scored(numbered, model, keep=["id"], columns="prediction").collect()
    assert [row.id for row in found] == list(range(len(found)))


#: Rows of the test of large tables; a release is checked with 10,000,000.
MANY = int(os.environ.get("VELSCORE_TEST_ROWS", "50000"))


def test_large_tables_keep_their_ids_their_order_and_every_score(spark, model):
    cases = [
        {"race": race, "ht": ht, "age": float(age)}
        for race, ht, age in itertools.product(["white", "black", "other"], ["no", "yes"], range(14, 46))
    ]
    expected = [row["probability(low)"] for row in model.score(cases, columns="probability(low)")]
    races, hts, ages = ([case[name] for case in cases] for name in ("race", "ht", "age"))

    def made(batches):
        for batch in batches:
            places = [i % len(races) for i in batch.column(0).to_pylist()]
            columns = [batch.column(0)] + [pa.array([c[i] for i in places]) for c in (races, hts, ages)]
            yield pa.RecordBatch.from_arrays(columns, ["id", "race", "ht", "age"])

    def checked(batches):
        """Of a partition: its first id, how many follow it one by one, and how many scores are wrong."""
        first, count, wrong = None, 0, 0
        for batch in batches:
            ids, scores = batch.column(0).to_pylist(), batch.column(1).to_pylist()
            first = ids[0] if first is None and ids else first
            wrong += sum(i != first + count + n for n, i in enumerate(ids))
            wrong += sum(expected[i % len(expected)] != score for i, score in zip(ids, scores))
            count += len(ids)
        yield pa.RecordBatch.from_pydict({"first": [first], "count": [count], "wrong": [wrong]})

    frame = spark.range(0, MANY, 1, 8).mapInArrow(made, "id long, race string, ht string, age double")
    found = spark_score.scored(frame, model, keep=["id"], columns="probability(low)")
    parts = sorted(map(tuple, found.mapInArrow(checked, "first long, count long, wrong long").collect()))
    assert [wrong for _, _, wrong in parts] == [0] * 8
    counts = [count for _, count, _ in parts]
    assert [first for first, _, _ in parts] == [0, *itertools.accumulate(counts)][:-1]
    assert sum(counts) == MANY


def test_no_rows(frame, model):
    assert spark_score.scored(frame.limit(0), model).count() == 0


def test_an_unfit_table_is_refused_before_a_job_starts(frame, model):
    with pytest.raises(velscore.TableError, match="no column ht"):
        spark_score.scored(frame.drop("ht"), model)
    with pytest.raises(velscore.OptionError, match="nosuch"):
        spark_score.scored(frame, model, columns="nosuch")


def test_columns_by_another_name(frame, model, expected):
    renamed = frame.withColumnRenamed("age", "the age").withColumnRenamed("race", "the.race")
    found = spark_score.scored(
        renamed, model, keep=["id"], map={"age": "the age", "race": "the.race"}
    ).orderBy("id").collect()
    assert [row.prediction for row in found] == [row["prediction"] or None for row in expected]
    assert found[BAD_ROW].status_field in ("age", "the age")


def test_the_recipe_as_a_command(frame, document, expected, tmp_path):
    table = tmp_path / "in.parquet"
    frame.write.parquet(str(table))
    spark_score.main(str(document), str(table), str(tmp_path / "out.parquet"), "id")
    found = pa.parquet.read_table(tmp_path / "out.parquet").sort_by("id").to_pylist()
    same(found, expected)
