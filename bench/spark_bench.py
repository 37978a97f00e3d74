"""Spark: rows per second of scoring, beside a mapInArrow that hands its batches on as they are.

    scripts/test-recipes.sh  # whose environment has Spark
    PYSPARK_PYTHON=build/recipes/venv/bin/python build/recipes/venv/bin/python bench/spark_bench.py [ROWS [TIMES]]

Questions: what share of the identity's rate a linear model of ten numbers has over ROWS rows of an id and these
numbers (10,000,000), with two workers, by wall clock; the identity and the scores take turns TIMES times (3),
each beginning once, and their medians are compared. The table is made from the id as it is read, by both alike; the results go nowhere.
"""

import os
import pathlib
import statistics
import sys
import time

from pyspark.sql import DataFrame, SparkSession
from pyspark.sql.functions import col

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "examples/python")]

import spark_score  # noqa: E402
from linear_model import NAMES, document  # noqa: E402

import velscore  # noqa: E402


def session() -> SparkSession:
    return (
        SparkSession.builder.master("local[2]")
        .config("spark.ui.enabled", "false")
        .config("spark.ui.showConsoleProgress", "false")
        .config("spark.driver.bindAddress", "127.0.0.1")
        .config("spark.driver.host", "127.0.0.1")
        .getOrCreate()
    )


def seconds(frame: DataFrame) -> float:
    begin = time.perf_counter()
    frame.write.format("noop").mode("overwrite").save()
    return time.perf_counter() - begin


def main(rows: int = 10_000_000, times: int = 3) -> None:
    spark = session()
    spark.sparkContext.setLogLevel("ERROR")
    model = velscore.load(document())
    numbers = [((col("id") * (i + 1)) % 1000 / 1000).alias(name) for i, name in enumerate(NAMES)]

    def roads(count: int) -> dict[str, DataFrame]:
        frame = spark.range(0, count, 1, 8).select("id", *numbers)
        return {
            "identity": frame.mapInArrow(lambda batches: batches, frame.schema),
            "id and prediction": spark_score.scored(frame, model, keep=["id"], columns="prediction"),
            "id and all results": spark_score.scored(frame, model, keep=["id"]),
        }

    for frame in roads(rows // 100).values():  # workers started, classes loaded
        seconds(frame)
    taken: dict[str, list[float]] = {}
    for turn in range(times):
        print(f"turn {turn + 1}, load of the machine {os.getloadavg()[0]:.1f}", flush=True)
        frames = list(roads(rows).items())
        for road, frame in frames[turn % 3 :] + frames[: turn % 3]:
            taken.setdefault(road, []).append(seconds(frame))
            print(f"  {road:20} {taken[road][-1]:6.1f} s", flush=True)
    identity = statistics.median(taken["identity"])
    for road, each in taken.items():
        median = statistics.median(each)
        print(f"{road:20} {rows / median / 1e6:6.2f} M rows a second, {identity / median:5.2f} of the identity")
    spark.stop()


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
