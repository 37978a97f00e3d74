"""Spark: mapInArrow over two local workers."""

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
