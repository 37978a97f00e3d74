"""Dask: map_partitions over threads."""

import dask.dataframe as dd
import dask_score
import pandas as pd
import pytest
from conftest import same

import velscore


@pytest.fixture(scope="module")
def frame(table):
    return dd.from_pandas(table.to_pandas(), npartitions=7)


def test_scores_are_the_commands_and_a_bad_row_is_a_status(frame, model, expected):
    found = dask_score.scored(frame, model, keep=["id"]).compute()
    same(found.astype(object).where(found.notna(), None).to_dict("records"), expected)


def test_index_and_divisions_stay(table, model):
    indexed = table.to_pandas().set_index(pd.date_range("2026-01-01", periods=len(table), freq="s"))
    frame = dd.from_pandas(indexed, npartitions=5)
    scored = dask_score.scored(frame, model)
    assert scored.divisions == frame.divisions
    assert scored.compute().index.equals(indexed.index)


def test_what_is_announced_is_what_comes(frame, model):
    scored = dask_score.scored(frame, model, keep=["race"])
    assert list(scored.dtypes) == list(scored.compute().dtypes)


def test_an_unfit_table_is_refused_before_it_is_scored(frame, model):
    with pytest.raises(velscore.TableError, match="ht"):
        dask_score.scored(frame.drop(columns="ht"), model)


def test_the_recipe_as_a_command(frame, document, expected, tmp_path):
    frame.to_parquet(tmp_path / "in")
    dask_score.main(str(document), str(tmp_path / "in/*.parquet"), str(tmp_path / "out"), "id")
    found = dd.read_parquet(tmp_path / "out").compute()
    same(found.astype(object).where(found.notna(), None).to_dict("records"), expected)
