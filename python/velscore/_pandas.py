"""Data frames of pandas. Numbers are read where they lie, and no other package is needed."""

from __future__ import annotations

import sys

from . import _numpy
from ._kinds import Kind, Run, made

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any

    from ._velscore import Table


def _column(np: Any, pd: Any, series: Any, name: str) -> Any:
    """A column, as `made` takes it."""
    dtype = series.dtype
    if isinstance(dtype, np.dtype):
        return _numpy.column(np, series.to_numpy(), name)
    if isinstance(dtype, pd.CategoricalDtype):
        return _categorical(np, series.array, name)
    if isinstance(dtype, pd.DatetimeTZDtype):
        return _numpy.buffer(np, series.to_numpy("M8[ns]"), name)
    if isinstance(dtype, pd.SparseDtype):
        return _numpy.column(np, series.to_numpy(), name)
    if hasattr(series.array, "__arrow_array__") and _holds_arrow(series.array):
        return _arrow(series.array)
    if getattr(dtype, "numpy_dtype", None) is not None:  # numbers and truths with a mask
        there = ~series.isna().to_numpy()
        plain = series.to_numpy(dtype=dtype.numpy_dtype, na_value=dtype.numpy_dtype.type(0))
        return _numpy.buffer(np, plain, name, None if there.all() else there)
    return series.to_numpy(dtype=object).tolist()


def _categorical(np: Any, array: Any, name: str) -> Any:
    codes = np.ascontiguousarray(array.codes)
    values = array.categories.to_numpy(dtype=object).tolist()
    there = codes >= 0
    return (*_numpy.buffer(np, codes, name, None if there.all() else there), values)


def _holds_arrow(array: Any) -> bool:
    return hasattr(array, "_pa_array")


def _arrow(array: Any) -> Any:
    """A column of pyarrow's, in one part."""
    chunks = array.__arrow_array__()
    if hasattr(chunks, "combine_chunks"):
        chunks = chunks.combine_chunks()
    if hasattr(chunks, "chunks"):  # several, since one would be too long
        return chunks.to_pylist()
    return chunks.__arrow_c_array__()


class Frames(Kind):
    def source(self, table: Any, run: Run) -> Any:
        np, pd = sys.modules["numpy"], sys.modules["pandas"]
        labels = table.columns
        names = [str(label) for label in labels]
        reads = set(run.reads)
        # By its label a column is found several times faster than by its place.
        is_by_label = labels.nlevels == 1 and labels.is_unique
        columns = [
            _column(np, pd, table[label] if is_by_label else table.iloc[:, i], name)
            if name in reads
            else None
            for i, (name, label) in enumerate(zip(names, labels))
        ]
        return made(names, columns, len(table))

    def frame(self, result: Table, table: Any, run: Run) -> Any:
        np, pd = sys.modules["numpy"], sys.modules["pandas"]
        kept = run.kept([str(name) for name in table.columns])
        names = result.names
        columns = {i: _result(np, pd, result, i) for i in range(len(kept), len(names))}
        scored = pd.DataFrame(columns, index=table.index, copy=False)
        if kept:
            scored = pd.concat([table.iloc[:, kept], scored], axis=1)
        scored.columns = names
        return scored

    def column(self, result: Table, table: Any) -> Any:
        np, pd = sys.modules["numpy"], sys.modules["pandas"]
        values = _result(np, pd, result, 0)
        return pd.Series(values, index=table.index, name=result.names[0], copy=False)

    def matrix(self, result: Table, table: Any, names: Sequence[str]) -> Any:
        np, pd = sys.modules["numpy"], sys.modules["pandas"]
        columns = {i: _numpy.numbers(np, result, i) for i in range(len(names))}
        frame = pd.DataFrame(columns, index=table.index, copy=False)
        frame.columns = list(names)
        return frame

    def long(self, result: Table, table: Any) -> Any:
        np, pd = sys.modules["numpy"], sys.modules["pandas"]
        row = _numpy.numbers(np, result, 0).astype("i8")
        index = table.index[row - 1]
        columns = {n: _result(np, pd, result, i) for i, n in enumerate(result.names) if i > 0}
        return pd.DataFrame(columns, index=index)

    def columns(self, table: Any) -> dict[str, list[Any]]:
        return {str(name): table.iloc[:, i].tolist() for i, name in enumerate(table.columns)}


def _result(np: Any, pd: Any, result: Table, index: int) -> Any:
    parts = result.buffers(index)
    if parts and parts[0][5] is None:
        return _numpy.numbers(np, result, index)
    codes, texts = _numpy.codes(np, result, index)
    return pd.Categorical.from_codes(codes, categories=texts)
