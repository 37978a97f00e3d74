"""Kinds of tables: what a user hands in, and the same kind handed back.

A kind is found by the name of the type and the package that it comes from, so nothing is imported
that isn't there already. Each package has a module here, which tells how its tables are scored.
"""

from __future__ import annotations

import importlib

from . import _velscore
from ._errors import OptionError

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any


class Run:
    """One call's scoring: a model, its options, and what they need of a table."""

    def __init__(
        self,
        core: _velscore.Model,
        options: dict[str, Any],
        reads: Sequence[str],
        names: Sequence[str] | None = None,
    ) -> None:
        self.core = core
        self.options = options
        self.reads = reads  # columns of the table, by the names that it has them under
        self.names = names  # given for tables without names
        # Explanations are differences from a case: of this table, or of the one that is explained.
        self.has_baseline = False
        self.baseline: Any = None

    def table(self, source: Any) -> _velscore.Table:
        """Scores all of a source."""
        return _velscore.score(self.core, source, self.options)

    def binding(self, source: Any) -> _velscore.Binding:
        """Binds the columns of a source, which is only looked at."""
        return _velscore.Binding(self.core, source, self.options)

    def stream(self, source: Any) -> _velscore.Stream:
        """Scores a source as it is asked for."""
        return _velscore.stream(self.core, source, self.options)

    def curves(self, source: Any) -> _velscore.Table:
        """The curves of a source."""
        return _velscore.curve(self.core, source, self.options).read()

    def terms(self, source: Any, baseline: Any) -> _velscore.Table:
        """How the linear predictors of a source add up, beside a baseline's or None."""
        return _velscore.explain(self.core, source, self.options, baseline).read()

    def kept(self, names: Sequence[str]) -> list[int]:
        """Where the kept columns stand among the names of a table."""
        if self.options.get("keep_all"):
            return list(range(len(names)))
        return [names.index(name) for name in self.options.get("keep", ())]


class Kind:
    """How the tables of one kind are scored.

    The first three are what is asked of a model; kinds that are scored at once say the others.
    """

    def score(self, table: Any, run: Run) -> Any:
        """All results, as the kind of the table."""
        return self.frame(run.table(self.source(table, run)), table, run)

    def predict(self, table: Any, run: Run) -> Any:
        """The one result that the run asks for, as a column of that kind."""
        return self.column(run.table(self.source(table, run)), table)

    def one_row(self, table: Any, reads: Sequence[str]) -> Any:
        """A table of one row as a list of one dict or a dict of lists of one value; None of others.

        `reads` names the columns of a table without names.
        """
        return None

    def one_value(self, answer: list[Any]) -> Any:
        """The prediction of such a table as a column, None where the kind's own way has to tell."""
        return answer

    def probabilities(self, table: Any, run: Run, names: Sequence[str]) -> Any:
        """The results that the run asks for, under other names."""
        return self.matrix(run.table(self.source(table, run)), table, names)

    def source(self, table: Any, run: Run) -> Any:
        """What the library scores: a Table or capsules of Arrow's."""
        raise NotImplementedError

    def frame(self, result: _velscore.Table, table: Any, run: Run) -> Any:
        """All columns of results, as the kind of the table."""
        raise NotImplementedError

    def column(self, result: _velscore.Table, table: Any) -> Any:
        """The first column of results alone."""
        raise NotImplementedError

    def matrix(self, result: _velscore.Table, table: Any, names: Sequence[str]) -> Any:
        """The first columns of results, numbers, under other names."""
        raise NotImplementedError

    def curve(self, table: Any, run: Run) -> Any:
        """Survival curves of the rows."""
        return self.long(run.curves(self.source(table, run)), table)

    def explain(self, table: Any, run: Run) -> Any:
        """How the linear predictors of the rows add up."""
        baseline = self._baseline(table, run)
        return self.long(run.terms(self.source(table, run), baseline), table)

    def _baseline(self, table: Any, run: Run) -> Any:
        if not run.has_baseline:
            return None
        if run.baseline is not None:
            return kind_of(run.baseline).source(run.baseline, run)
        if self.is_read_once(table):
            raise OptionError(
                "a baseline reads the cases twice, which this table can't be; name another table, "
                "baseline=('mean', table), or collect this one"
            )
        return self.source(table, run)

    def is_read_once(self, table: Any) -> bool:
        """Whether a table is gone once it was read."""
        return False

    def long(self, result: _velscore.Table, table: Any) -> Any:
        """Several lines a row, whose first column counts the rows of the table from 1."""
        raise NotImplementedError

    def columns(self, table: Any) -> dict[str, list[Any]]:
        """The columns of a table as lists, for what is drawn of it."""
        raise TypeError(
            f"pictures and reports aren't made of {type(table).__qualname__}; expected is a data "
            "frame of pandas or Polars, a table of pyarrow, a relation of DuckDB, records of NumPy, "
            "a dict of columns or a list of dicts"
        )


def made(names: Sequence[Any], columns: list[Any], rows: int) -> _velscore.Table:
    """A Table of columns of Python."""
    from ._values import column, plain

    return _velscore.table(
        [str(name) for name in names], [column(each) for each in columns], rows, plain
    )


# Package and name of a type: the module and the class of its kind.
_KINDS = {
    ("pandas", "DataFrame"): ("_pandas", "Frames"),
    ("polars", "DataFrame"): ("_polars", "Frames"),
    ("polars", "LazyFrame"): ("_polars", "LazyFrames"),
    ("pyarrow", "Table"): ("_pyarrow", "Tables"),
    ("pyarrow", "RecordBatch"): ("_pyarrow", "Batches"),
    ("pyarrow", "RecordBatchReader"): ("_pyarrow", "Readers"),
    ("duckdb", "DuckDBPyRelation"): ("_duckdb", "Relations"),
    ("_duckdb", "DuckDBPyRelation"): ("_duckdb", "Relations"),
    ("numpy", "ndarray"): ("_numpy", "Arrays"),
    ("builtins", "dict"): ("_plain", "Columns"),
    ("builtins", "list"): ("_plain", "Rows"),
}

_found: dict[type, Kind] = {}


def _make(module: str, name: str) -> Kind:
    made_kind = getattr(importlib.import_module(f".{module}", __package__), name)()
    assert isinstance(made_kind, Kind)
    return made_kind


def kind_of(table: Any) -> Kind:
    """The kind of a table. Raises TypeError for what is none."""
    table_type = type(table)
    kind = _found.get(table_type)
    if kind is not None:
        return kind
    for base in table_type.__mro__:
        where = _KINDS.get((base.__module__.partition(".")[0], base.__name__))
        if where is not None:
            break
    else:
        if hasattr(table, "__arrow_c_stream__") or hasattr(table, "__arrow_c_array__"):
            where = ("_plain", "Capsules")
        else:
            raise TypeError(
                f"{table_type.__module__}.{table_type.__qualname__} is no table; expected is a data "
                "frame of pandas or Polars, a table of pyarrow, a relation of DuckDB, an array of "
                "NumPy, a dict of columns, a list of dicts, or what speaks Arrow's C streams"
            )
    return _found.setdefault(table_type, _make(*where))
