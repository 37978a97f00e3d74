"""What can go wrong, and how it is told."""

from __future__ import annotations

from . import _velscore


class Error(Exception):
    """A failure, told as the command tells it.

    ``text`` says what was found and where, ``remedy`` what can be done, ``code`` is what
    ``velscore help CODE`` explains. ``file``, ``element``, ``line`` and ``column`` name the place in
    a document, ``row`` (from 1) and ``field`` that in a table; each is None where it isn't known.
    """

    def __init__(
        self,
        text: str = "",
        code: int = 0,
        remedy: str | None = None,
        *,
        file: str | None = None,
        element: str | None = None,
        line: int | None = None,
        column: int | None = None,
        row: int | None = None,
        field: str | None = None,
    ) -> None:
        super().__init__(text, code, remedy)
        self.text = text
        self.code = code
        self.remedy = remedy
        self.file = file
        self.element = element
        self.line = line
        self.column = column
        self.row = row
        self.field = field

    def __str__(self) -> str:
        told = f"{self.text} [{self.code}]" if self.code else self.text
        return f"{told}\n{self.remedy}" if self.remedy else told


class DocumentError(Error, ValueError):
    """The model's document can't be used."""


class TableError(Error, ValueError):
    """The table of cases can't be scored."""


class OptionError(Error, ValueError):
    """An option has a value that it can't have, or doesn't go with this model."""


class DocumentWarning(UserWarning):
    """What a document leaves to be looked at, though it can be used."""


_CLASSES: dict[int, type[Error]] = {1: OptionError, 2: DocumentError, 3: TableError}
_TABLE = 3

# A stream tells a failure as one text.
_STREAM_TEXT = r"(?s)(?P<text>.*) \[(?P<code>\d+)\](?: (?P<remedy>.*))?"


def _make(
    text: str,
    code: int = 0,
    fault: int = _TABLE,
    remedy: str | None = None,
    file: str | None = None,
    element: str | None = None,
    line: int | None = None,
    column: int | None = None,
    field: str | None = None,
    row: int | None = None,
) -> Error:
    """The exception of what the library told."""
    if code == 0:
        import re

        if told := re.fullmatch(_STREAM_TEXT, text):
            text, code, remedy = told["text"], int(told["code"]), told["remedy"]
    return _CLASSES.get(fault, Error)(
        text,
        code,
        remedy,
        file=file,
        element=element,
        line=line,
        column=column,
        row=row,
        field=field,
    )


_velscore.on_error(_make)
