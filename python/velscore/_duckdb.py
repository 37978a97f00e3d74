"""Relations of DuckDB."""

from __future__ import annotations

from ._kinds import Kind, Run

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any

    from ._velscore import Table


def _quoted(name: str) -> str:
    return '"' + name.replace('"', '""') + '"'


def _relation(table: Any, scored: Table) -> Any:
    """Results as a relation of the table's own connection, which finds `scored` by its name here."""
    return table.query("table_of_cases", "SELECT * FROM scored")


class Relations(Kind):
    """What a relation selects is read once, when it is scored."""

    def source(self, table: Any, run: Run) -> Any:
        # Of wide tables only what is needed is read.
        if not run.options.get("keep_all"):
            needed = {*run.reads, *run.options.get("keep", ())}
            names = [name for name in table.columns if name in needed]
            if 0 < len(names) < len(table.columns):
                table = table.project(", ".join(map(_quoted, names)))
        if hasattr(table, "__arrow_c_stream__"):
            return table.__arrow_c_stream__()
        return table.fetch_arrow_reader().__arrow_c_stream__()

    def frame(self, result: Table, table: Any, run: Run) -> Any:
        return _relation(table, result)

    def column(self, result: Table, table: Any) -> Any:
        return _relation(table, result)

    def matrix(self, result: Table, table: Any, names: Sequence[str]) -> Any:
        aliases = (f"{_quoted(f)} AS {_quoted(n)}" for f, n in zip(result.names, names))
        return _relation(table, result).project(", ".join(aliases))

    def long(self, result: Table, table: Any) -> Any:
        return _relation(table, result)

    def columns(self, table: Any) -> dict[str, list[Any]]:
        rows = table.fetchall()
        return {name: [row[i] for row in rows] for i, name in enumerate(table.columns)}
