"""Data frames of Polars, eager and lazy."""

from __future__ import annotations

import sys

from ._kinds import Kind, Run

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator, Sequence
    from typing import Any

    from ._velscore import Table


class Frames(Kind):
    def source(self, table: Any, run: Run) -> Any:
        pl = sys.modules["polars"]
        if pl.Object in table.dtypes:  # which only Polars knows
            reads = {*run.reads, *run.options.get("keep", ())}
            table = table.select([name for name in table.columns if name in reads])
        return table.__arrow_c_stream__()

    def frame(self, result: Table, table: Any, run: Run) -> Any:
        return sys.modules["polars"].DataFrame(result)

    def column(self, result: Table, table: Any) -> Any:
        return sys.modules["polars"].DataFrame(result).to_series(0)

    def matrix(self, result: Table, table: Any, names: Sequence[str]) -> Any:
        frame = sys.modules["polars"].DataFrame(result)[:, : len(names)]
        frame.columns = list(names)
        return frame

    def long(self, result: Table, table: Any) -> Any:
        return sys.modules["polars"].DataFrame(result)

    def columns(self, table: Any) -> dict[str, list[Any]]:
        return dict(table.to_dict(as_series=False))


class LazyFrames(Kind):
    """Scored when they are collected, batch after batch, as one table."""

    def source(self, table: Any, run: Run) -> Any:
        return Frames().source(table.collect(), run)

    def score(self, table: Any, run: Run) -> Any:
        pl = sys.modules["polars"]
        eager = Frames()
        empty = pl.DataFrame(schema=table.collect_schema())
        # What can't be scored is told now, and the types of the results are known.
        schema = pl.DataFrame(run.table(eager.source(empty, run))).schema

        def read(
            columns: list[str] | None, predicate: Any, rows: int | None, size: int | None
        ) -> Iterator[Any]:
            binding = run.binding(eager.source(empty, run))
            for batch in _batches(table if rows is None else table.head(rows), size):
                scored = pl.DataFrame(binding.score(eager.source(batch, run)))
                scored = scored if columns is None else scored.select(columns)
                yield scored if predicate is None else scored.filter(predicate)

        from polars.io.plugins import register_io_source

        return register_io_source(read, schema=schema)

    def predict(self, table: Any, run: Run) -> Any:
        return self.score(table, run)

    def probabilities(self, table: Any, run: Run, names: Sequence[str]) -> Any:
        scored = self.score(table, run)
        found = scored.collect_schema().names()[: len(names)]
        return scored.select(found).rename(dict(zip(found, names)))

    def curve(self, table: Any, run: Run) -> Any:
        return Frames().curve(table.collect(), run).lazy()

    def explain(self, table: Any, run: Run) -> Any:
        return Frames().explain(table.collect(), run).lazy()

    def columns(self, table: Any) -> dict[str, list[Any]]:
        return Frames().columns(table.collect())


def _batches(table: Any, size: int | None) -> Iterator[Any]:
    if hasattr(table, "collect_batches"):
        yield from table.collect_batches(chunk_size=size, maintain_order=True)
    else:
        yield table.collect()
