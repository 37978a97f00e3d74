"""Scores a table with Ray Data: each batch by the library, over Arrow.

    python ray_score.py MODEL IN.parquet OUT [KEPT COLUMN...]

In a program of your own it is `scored(dataset, velscore.load("model.pmml"), keep=["id"])`.
"""

from __future__ import annotations

import sys
from collections.abc import Iterable
from typing import Any

import pyarrow as pa
import ray

import velscore


def scored(
    dataset: ray.data.Dataset, model: velscore.Model, *, keep: Iterable[str] = (), **options: Any
) -> ray.data.Dataset:
    """The kept columns and the results of each row.

    A row that can't be scored has no values; its status says why, status_field which column was at
    fault. The model is put into the object store once. `options` are those of `Model.score`.
    """
    keep = list(keep)
    sent = ray.put(model)

    def score(batch: pa.Table) -> pa.Table:
        results = ray.get(sent).score(batch, keep=keep, **options)
        # Each batch has categories of its own; plain texts are alike in all.
        texts = {f.name: pa.string() for f in results.schema if pa.types.is_dictionary(f.type)}
        return results.cast(
            pa.schema([f.with_type(texts.get(f.name, f.type)) for f in results.schema])
        )

    return dataset.map_batches(score, batch_format="pyarrow", batch_size=None, zero_copy_batch=True)


def main(model: str, table: str, output: str, *keep: str) -> None:
    scored(ray.data.read_parquet(table), velscore.load(model), keep=keep).write_parquet(output)


if __name__ == "__main__":
    main(*sys.argv[1:])
