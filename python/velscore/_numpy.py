"""Arrays of NumPy: records, two dimensions, and columns for other kinds."""

from __future__ import annotations

import sys

from ._kinds import Kind, Run, made

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any

    from ._velscore import Table

_FORMATS = {
    "i1": "c", "u1": "C", "i2": "s", "u2": "S", "i4": "i", "u4": "I", "i8": "l", "u8": "L",
    "f4": "f", "f8": "g",
}  # fmt: skip
_UNITS = {"s": "tss:", "ms": "tsm:", "us": "tsu:", "ns": "tsn:"}


def _numpy() -> Any:
    return sys.modules["numpy"]


class _Buffer:
    """Memory that a Table owns, as NumPy reads it."""

    def __init__(self, table: Table, address: int, kind: str, first: int, rows: int) -> None:
        self.table = table
        size = int(kind[2:])
        self.__array_interface__ = {
            "version": 3,
            "data": (address + first * size, False),
            "typestr": kind,
            "shape": (rows,),
        }


def bits(np: Any, present: Any) -> Any:
    """Validity bits of truths."""
    return np.packbits(present, bitorder="little")


def buffer(np: Any, array: Any, name: str, present: Any = None) -> Any:
    """A column of numbers, truths or times, where `present`, of truths, says which are there."""
    if array.dtype.byteorder == ">" or array.dtype == np.float16:
        array = array.astype(np.float32 if array.dtype == np.float16 else array.dtype.newbyteorder())
    kind = array.dtype.kind
    if kind == "M":
        unit = np.datetime_data(array.dtype)[0]
        if unit not in _UNITS:
            array = array.astype("M8[s]")
            unit = "s"
        form = _UNITS[unit]
        there = ~np.isnat(array)
        if not there.all():
            present = there if present is None else present & there
        array = np.ascontiguousarray(array).view("i8")
    elif kind == "b":
        array, form = bits(np, array), "b"
    elif kind + str(array.dtype.itemsize) in _FORMATS:
        form = _FORMATS[kind + str(array.dtype.itemsize)]
    else:
        raise TypeError(
            f'column "{name}" is of {array.dtype}; expected are numbers, truths, texts and times'
        )
    array = np.ascontiguousarray(array)
    if not array.flags.aligned:
        array = array.copy()
    if present is None:
        return (form, array.ctypes.data, array, 0)
    mask = bits(np, present)
    return (form, array.ctypes.data, (array, mask), mask.ctypes.data)


def column(np: Any, array: Any, name: str) -> Any:
    """A column of one dimension, as `made` takes it."""
    if isinstance(array, np.ma.MaskedArray):
        mask = np.ma.getmaskarray(array)
        if array.dtype.kind not in "OUST":
            return buffer(np, np.ma.getdata(array), name, ~mask)
        array = array.astype(object).filled(None)
    if array.dtype.kind in "OUT":
        return array.tolist()
    if array.dtype.kind == "S":
        return [text.decode() for text in array.tolist()]
    return buffer(np, array, name)


def numbers(np: Any, table: Table, index: int) -> Any:
    """A column of results of numbers; what has no value is NaN."""
    parts = []
    for form, rows, first, address, validity, _ in table.buffers(index):
        kind = {"g": "<f8", "i": "<i4", "l": "<i8"}[form]
        part = np.asarray(_Buffer(table, address, kind, first, rows))
        if form == "g" and validity:
            part = np.where(_present(np, table, validity, first, rows), part, np.nan)
        parts.append(part if form == "g" else part.copy())  # the others may be shared
    if len(parts) == 1:
        return parts[0]
    return np.concatenate(parts) if parts else np.empty(0)


def codes(np: Any, table: Table, index: int) -> tuple[Any, list[str]]:
    """A column of results of texts: indexes, -1 for none, into the texts."""
    parts: list[Any] = []
    texts: list[str] = []
    places: dict[str, int] = {}
    for _, rows, first, address, validity, found in table.buffers(index):
        assert found is not None
        for text in found:
            if text not in places:
                places[text] = len(texts)
                texts.append(text)
        part = np.asarray(_Buffer(table, address, "<i4", first, rows))
        if validity:
            part = np.where(_present(np, table, validity, first, rows), part, -1)
        order = np.array([places[text] for text in found] + [-1], dtype="i4")
        parts.append(order[part])
    return (np.concatenate(parts) if parts else np.empty(0, "i4")), texts


def _present(np: Any, table: Table, address: int, first: int, rows: int) -> Any:
    whole = np.asarray(_Buffer(table, address, "|u1", 0, (first + rows + 7) // 8))
    return np.unpackbits(whole, count=first + rows, bitorder="little")[first:].view(bool)


def result(np: Any, table: Table, index: int) -> Any:
    """A column of results; texts as objects."""
    parts = table.buffers(index)
    if parts and parts[0][5] is None:
        return numbers(np, table, index)
    places, texts = codes(np, table, index)
    return np.array([*texts, None], dtype=object)[places]


class Arrays(Kind):
    """Records, and two dimensions whose columns are the model's in its order or named."""

    def _columns(self, table: Any, run: Run) -> tuple[list[str], list[Any]]:
        np = _numpy()
        if table.dtype.names is not None:
            flat = table.reshape(-1)
            return list(table.dtype.names), [flat[name] for name in table.dtype.names]
        if table.ndim != 2:
            raise TypeError(
                f"an array of {table.ndim} dimensions is no table; expected are records, or two "
                "dimensions: reshape(1, -1) makes a table of one row"
            )
        names = list(run.reads if run.names is None else run.names)
        if len(names) != table.shape[1]:
            raise ValueError(
                f"the array has {table.shape[1]} columns, and {len(names)} names stand for them: "
                f"{', '.join(names)}; name its columns with names="
            )
        return names, [table[:, i] for i in range(len(names))]

    def one_row(self, table: Any, reads: Sequence[str]) -> Any:
        if table.shape != (1, len(reads)) or table.dtype.char != "d" or type(table) is not _numpy().ndarray:
            return None
        return [dict(zip(reads, table[0].tolist()))]

    def one_value(self, answer: list[Any]) -> Any:
        return _numpy().array(answer) if type(answer[0]) is float else None

    def source(self, table: Any, run: Run) -> Any:
        np = _numpy()
        names, columns = self._columns(table, run)
        reads = set(run.reads)
        specs = [column(np, c, n) if n in reads else None for n, c in zip(names, columns)]
        rows = table.size if table.dtype.names is not None else table.shape[0]
        return made(names, specs, rows)

    def frame(self, result_table: Table, table: Any, run: Run) -> Any:
        np = _numpy()
        names, given = self._columns(table, run)
        kept = run.kept(names)
        columns = [given[i] for i in kept]
        for i in range(len(kept), len(result_table.names)):
            columns.append(result(np, result_table, i))
        return self._records(np, result_table.names, columns, len(result_table), table)

    def _records(
        self, np: Any, names: Sequence[str], columns: list[Any], rows: int, table: Any
    ) -> Any:
        records = np.empty(rows, dtype=[(n, c.dtype) for n, c in zip(names, columns)])
        for name, values in zip(names, columns):
            records[name] = values
        return records.view(type(table)) if table.dtype.names is not None else records

    def column(self, result_table: Table, table: Any) -> Any:
        return result(_numpy(), result_table, 0)

    def matrix(self, result_table: Table, table: Any, names: Sequence[str]) -> Any:
        np = _numpy()
        columns = [numbers(np, result_table, i) for i in range(len(names))]
        return np.column_stack(columns)

    def long(self, result_table: Table, table: Any) -> Any:
        np = _numpy()
        columns = [result(np, result_table, i) for i in range(len(result_table.names))]
        rows = len(columns[0])
        return self._records(np, result_table.names, columns, rows, table)

    def columns(self, table: Any) -> dict[str, list[Any]]:
        if table.dtype.names is None:
            return super().columns(table)
        flat = table.reshape(-1)
        return {name: flat[name].tolist() for name in table.dtype.names}
