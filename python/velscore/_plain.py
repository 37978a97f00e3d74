"""Tables without any package: dicts of columns, lists of dicts, and whatever speaks Arrow."""

from __future__ import annotations

import sys

from . import _velscore
from ._kinds import Kind, Run, made

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any

    from ._velscore import Table


def _is_array(values: Any) -> bool:
    kind = type(values)
    return kind.__name__ == "ndarray" and kind.__module__ == "numpy"


class Columns(Kind):
    """Dicts of columns: of arrays of NumPy where one of them is, else of lists."""

    def _rows(self, table: dict[str, Any]) -> int:
        rows = -1
        for name, values in table.items():
            if isinstance(values, (str, bytes)) or not hasattr(values, "__len__"):
                raise TypeError(
                    f'column "{name}" is {values!r}; expected is a list or an array: [{values!r}] '
                    "makes a table of one row"
                )
            if rows >= 0 and len(values) != rows:
                raise ValueError(
                    f'column "{name}" has {len(values)} values, and the one before it {rows}; '
                    "columns of a table are of one length"
                )
            rows = len(values)
        return max(rows, 0)

    def one_row(self, table: dict[str, Any], reads: Sequence[str]) -> Any:
        first = next(iter(table.values()), None)
        return table if type(first) is list and len(first) == 1 else None

    def source(self, table: dict[str, Any], run: Run) -> Any:
        rows = self._rows(table)
        reads = set(run.reads)
        return made(
            list(table),
            [_column(values, name) if name in reads else None for name, values in table.items()],
            rows,
        )

    def frame(self, result: Table, table: dict[str, Any], run: Run) -> Any:
        given = list(table.values())
        kept = run.kept(list(table))
        names = result.names
        frame = {name: given[i] for name, i in zip(names, kept)}
        for i in range(len(kept), len(names)):
            frame[names[i]] = self._result(result, i, table)
        return frame

    def _result(self, result: Table, index: int, table: dict[str, Any]) -> Any:
        if any(_is_array(values) for values in table.values()):
            from . import _numpy

            return _numpy.result(sys.modules["numpy"], result, index)
        return result.values(index)

    def column(self, result: Table, table: dict[str, Any]) -> Any:
        return self._result(result, 0, table)

    def matrix(self, result: Table, table: dict[str, Any], names: Sequence[str]) -> Any:
        return {name: self._result(result, i, table) for i, name in enumerate(names)}

    def long(self, result: Table, table: dict[str, Any]) -> Any:
        return {name: self._result(result, i, table) for i, name in enumerate(result.names)}

    def columns(self, table: dict[str, Any]) -> dict[str, list[Any]]:
        self._rows(table)
        return {
            str(name): values.tolist() if hasattr(values, "tolist") else list(values)
            for name, values in table.items()
        }


def _column(values: Any, name: str) -> Any:
    if isinstance(values, list):
        return values
    if _is_array(values):
        from . import _numpy

        if values.ndim != 1:
            raise ValueError(f'column "{name}" has {values.ndim} dimensions; expected is one')
        return _numpy.column(sys.modules["numpy"], values, name)
    if hasattr(values, "__arrow_c_array__"):
        return values.__arrow_c_array__()
    return values.to_list() if hasattr(values, "to_list") else list(values)


class Rows(Kind):
    """Lists of dicts, one a row. What a row lacks is missing."""

    def _names(self, table: list[dict[str, Any]]) -> list[str]:
        names: dict[str, None] = {}
        for number, row in enumerate(table):
            if not isinstance(row, dict):
                raise TypeError(
                    f"row {number + 1} is {row!r}; expected is a list of dicts, one a row"
                )
            names.update(dict.fromkeys(row))
        return list(names)

    def one_row(self, table: list[dict[str, Any]], reads: Sequence[str]) -> Any:
        return table if len(table) == 1 else None

    def source(self, table: list[dict[str, Any]], run: Run) -> Any:
        names = self._names(table) or list(run.reads)
        reads = set(run.reads)
        columns = [[row.get(n) for row in table] if n in reads else None for n in names]
        return made(names, columns, len(table))

    def _dicts(self, result: Table, names: Sequence[str], first: int = 0) -> list[dict[str, Any]]:
        columns = [result.values(i) for i in range(first, first + len(names))]
        return [dict(zip(names, values)) for values in zip(*columns)]

    def frame(self, result: Table, table: list[dict[str, Any]], run: Run) -> Any:
        given = self._names(table)
        kept = [given[i] for i in run.kept(given)] if table else []
        names = result.names
        scored = self._dicts(result, names[len(kept) :], len(kept))
        return [
            {**{n: row.get(k) for n, k in zip(names, kept)}, **scores}
            for row, scores in zip(table, scored)
        ]

    def column(self, result: Table, table: list[dict[str, Any]]) -> Any:
        return result.values(0)

    def matrix(
        self, result: Table, table: list[dict[str, Any]], names: Sequence[str]
    ) -> Any:
        return self._dicts(result, names)

    def long(self, result: Table, table: list[dict[str, Any]]) -> Any:
        return self._dicts(result, result.names)

    def columns(self, table: list[dict[str, Any]]) -> dict[str, list[Any]]:
        return {name: [row.get(name) for row in table] for name in self._names(table)}


class Capsules(Kind):
    """Whatever else speaks Arrow: what comes back is a Table."""

    def source(self, table: Any, run: Run) -> Any:
        if isinstance(table, _velscore.Table):
            return table
        if hasattr(table, "__arrow_c_stream__"):
            return table.__arrow_c_stream__()
        return table.__arrow_c_array__()

    def is_read_once(self, table: Any) -> bool:
        # Of others nothing is known.
        return not isinstance(table, _velscore.Table) and hasattr(table, "__arrow_c_stream__")

    def frame(self, result: Table, table: Any, run: Run) -> Table:
        return result

    def column(self, result: Table, table: Any) -> Table:
        return result

    def matrix(self, result: Table, table: Any, names: Sequence[str]) -> Table:
        return result

    def long(self, result: Table, table: Any) -> Table:
        return result
