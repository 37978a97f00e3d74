"""Tables of pyarrow."""

from __future__ import annotations

import sys

from ._kinds import Kind, Run

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any

    from ._velscore import Table


class Tables(Kind):
    def source(self, table: Any, run: Run) -> Any:
        return table.__arrow_c_stream__()

    def frame(self, result: Table, table: Any, run: Run) -> Any:
        return sys.modules["pyarrow"].table(result)

    def column(self, result: Table, table: Any) -> Any:
        return sys.modules["pyarrow"].table(result).column(0)

    def matrix(self, result: Table, table: Any, names: Sequence[str]) -> Any:
        found = sys.modules["pyarrow"].table(result)
        return found.select(list(range(len(names)))).rename_columns(list(names))

    def long(self, result: Table, table: Any) -> Any:
        return sys.modules["pyarrow"].table(result)

    def columns(self, table: Any) -> dict[str, list[Any]]:
        return dict(table.to_pydict())


class Batches(Tables):
    def source(self, table: Any, run: Run) -> Any:
        return table.__arrow_c_array__()

    def frame(self, result: Table, table: Any, run: Run) -> Any:
        return _one(super().frame(result, table, run))

    def column(self, result: Table, table: Any) -> Any:
        return _one(sys.modules["pyarrow"].table(result)).column(0)

    def matrix(self, result: Table, table: Any, names: Sequence[str]) -> Any:
        return _one(super().matrix(result, table, names))


def _one(table: Any) -> Any:
    (batch,) = table.to_batches()
    return batch


class Readers(Kind):
    """Scored as they are read, on the thread that reads."""

    def source(self, table: Any, run: Run) -> Any:
        return table.__arrow_c_stream__()

    def is_read_once(self, table: Any) -> bool:
        return True

    def score(self, table: Any, run: Run) -> Any:
        pa = sys.modules["pyarrow"]
        return pa.RecordBatchReader.from_stream(run.stream(self.source(table, run)))

    def predict(self, table: Any, run: Run) -> Any:
        return self.score(table, run)

    def probabilities(self, table: Any, run: Run, names: Sequence[str]) -> Any:
        pa = sys.modules["pyarrow"]
        scored = self.score(table, run)
        places = list(range(len(names)))
        schema = pa.schema([scored.schema.field(i).with_name(n) for i, n in zip(places, names)])
        batches = (b.select(places).rename_columns(list(names)) for b in scored)
        return pa.RecordBatchReader.from_batches(schema, batches)

    def long(self, result: Table, table: Any) -> Any:
        return sys.modules["pyarrow"].table(result).to_reader()

    def columns(self, table: Any) -> dict[str, list[Any]]:
        return dict(table.read_all().to_pydict())
