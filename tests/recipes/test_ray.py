"""Ray Data: map_batches over one local worker."""

import pyarrow as pa
import pytest
import ray
import ray_score
from conftest import same


@pytest.fixture(scope="module", autouse=True)
def cluster():
    ray.init(num_cpus=2, include_dashboard=False, log_to_driver=False, configure_logging=False)
    yield
    ray.shutdown()


def test_scores_are_the_commands_and_a_bad_row_is_a_status(table, model, expected):
    scored = ray_score.scored(ray.data.from_arrow(table).repartition(3), model, keep=["id"])
    same(scored.sort("id").take_all(), expected)


def test_the_recipe_as_a_command(table, document, expected, tmp_path):
    pa.parquet.write_table(table, tmp_path / "in.parquet")
    ray_score.main(str(document), str(tmp_path / "in.parquet"), str(tmp_path / "out"), "id")
    same(pa.parquet.read_table(tmp_path / "out").sort_by("id").to_pylist(), expected)
