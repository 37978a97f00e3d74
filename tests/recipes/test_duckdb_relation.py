"""DuckDB from Python: Parquet to Parquet."""

import duckdb
import duckdb_score
import pyarrow as pa
import pytest
from conftest import same

import velscore


def test_the_recipe_as_a_command(table, document, expected, tmp_path):
    pa.parquet.write_table(table, tmp_path / "in.parquet", row_group_size=900)
    duckdb_score.main(str(document), str(tmp_path / "in.parquet"), str(tmp_path / "out.parquet"), "id")
    same(pa.parquet.read_table(tmp_path / "out.parquet").to_pylist(), expected)


def test_a_missing_column_is_told(table, model):
    with pytest.raises((velscore.TableError, duckdb.Error), match="ht"):
        duckdb_score.scored(duckdb.from_arrow(table.drop_columns("ht")), model)
