"""Scores a table with Dask: each partition by the library, on the workers' threads.

    python dask_score.py MODEL 'IN/*.parquet' OUT [KEPT COLUMN...]

In a program of your own it is `scored(frame, velscore.load("model.pmml"), keep=["id"])`. Scoring
leaves Python's lock, so Dask's threads suffice; processes work too, a model travels by its text.
"""

from __future__ import annotations

import sys
from collections.abc import Iterable
from typing import Any

import dask.dataframe as dd
import pandas as pd

import velscore


def scored(
    frame: dd.DataFrame, model: velscore.Model, *, keep: Iterable[str] = (), **options: Any
) -> dd.DataFrame:
    """The kept columns and the results of each row; index, partitions and divisions stay.

    A row that can't be scored has no values; its status says why, status_field which column was at
    fault. `options` are those of `Model.score`.
    """
    keep = list(keep)

    def score(part: pd.DataFrame) -> pd.DataFrame:
        results = model.score(part, keep=keep, **options)
        # Each partition has categories of its own; plain texts are alike in all.
        texts = [name for name in results if isinstance(results[name].dtype, pd.CategoricalDtype)]
        return results.astype({name: "str" for name in texts})

    return frame.map_partitions(score, meta=score(frame._meta))


def main(model: str, tables: str, output: str, *keep: str) -> None:
    scored(dd.read_parquet(tables), velscore.load(model), keep=keep).to_parquet(output)


if __name__ == "__main__":
    main(*sys.argv[1:])
