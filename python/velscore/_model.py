"""Models: loading them, and what is asked of them."""

from __future__ import annotations

import os
import warnings
from numbers import Integral

from . import _velscore
from ._errors import DocumentWarning, Error, OptionError
from ._kinds import Run, kind_of
from ._options import score_options

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable, Mapping, Sequence
    from typing import IO, Any, Union

    from matplotlib.axes import Axes
    from typing_extensions import TypeAlias, Unpack

    from ._fields import Field
    from ._kinds import Kind
    from ._typing import Options

    # "mean" or a row, and the table where it isn't the one that is explained.
    Baseline: TypeAlias = Union[str, int, tuple[Union[str, int], Any]]
    Document: TypeAlias = Union[str, os.PathLike[str], bytes, bytearray, memoryview, IO[bytes]]


def _text_of(document: Document) -> tuple[bytes, str]:
    """The bytes of a document, and how messages call it."""
    if isinstance(document, (bytes, bytearray, memoryview)):
        return bytes(document), "document"
    if isinstance(document, (str, os.PathLike)):
        path = os.fspath(document)
        if isinstance(path, str) and path.lstrip().startswith("<"):
            raise TypeError("a document is bytes, a path or an open file; its text isn't a path")
        with open(path, "rb") as file:
            return file.read(), os.fsdecode(path)
    if not hasattr(document, "read"):
        raise TypeError(
            f"{type(document).__name__} is no document; expected is a path, bytes or an open file"
        )
    text = document.read()
    name = getattr(document, "name", "document")
    if not isinstance(text, bytes):
        raise TypeError("the file gives text; open it in binary mode: a document says its encoding")
    return text, name if isinstance(name, str) else "document"


def _count(number: Any, least: int, option: str) -> int:
    """A whole number that an option is."""
    if isinstance(number, bool) or not isinstance(number, Integral) or number < least:
        words = "'mean' or the number of a row, from 1" if least else "a whole number of 0 or more"
        raise OptionError(f"{option} is {number!r}; expected is {words}")
    return int(number)


def load(
    document: Document, *, as_is: bool = False, allow: Iterable[str] = (), name: str | None = None
) -> Model:
    """Reads the model of a document: a path, bytes, or a file that is open in binary mode.

    A document with a fault raises `DocumentError`; `allow` names rules whose faults are taken for
    notices instead, as `check` tells them, and `as_is` reads a document without looking for faults
    and without adapting what other programs write. Notices are warned of, as `DocumentWarning`.
    `name` is what messages call the document.

    >>> load("examples/motor-cars/model.pmml")
    <velscore.Model: general linear model of mpg by cyl, am, wt, hp>
    """
    text, own_name = _text_of(document)
    model = _made(text, own_name if name is None else name, as_is, tuple(allow))
    for notice in model.inspect()["notices"]:
        warnings.warn(notice, DocumentWarning, stacklevel=2)
    return model


def _made(text: bytes, name: str, as_is: bool, allow: tuple[str, ...]) -> Model:
    """A model without warnings, as a pickled one is read again."""
    return Model(_velscore.Model(text, name, as_is, allow), text, name, as_is, allow)


def check(
    document: Document, *, as_is: bool = False, allow: Iterable[str] = ()
) -> dict[str, Any]:
    """Whether a document can be read, and what was found and adapted in it.

    The report is the one of ``velscore check --json``. A document that can't be used is no error.

    >>> check("examples/motor-cars/model.pmml")["ok"]
    True
    """
    text, name = _text_of(document)
    return _check(text, name, as_is, tuple(allow))


def _check(text: bytes, name: str, as_is: bool, allow: tuple[str, ...]) -> dict[str, Any]:
    return _report(_velscore.check(text, name, as_is, allow))


def _report(text: str) -> dict[str, Any]:
    import json  # which takes longer to import than all else here

    report: dict[str, Any] = json.loads(text)
    return report


# Tables of one row, by their columns, whose places a model keeps, each in some 200 KiB: programs have few.
_MOST_ROWS_BOUND = 8


class Model:
    """A regression model that was read from a document. Made by `load`.

    It takes tables of many kinds, and answers in the same kind: data frames of pandas (the index is
    kept) and Polars (lazy ones are scored when they are collected), tables, batches and readers of
    pyarrow, relations of DuckDB, arrays of NumPy (records, or two dimensions), dicts of columns,
    lists of dicts. Whatever else speaks Arrow's C streams gets a `Table`, which does too.

    Any number of threads may use one model at once; Python's lock is released while it scores. It is
    pickled and copied by the text of its document.
    """

    __slots__ = ("_allow", "_as_is", "_core", "_described", "_fields", "_name", "_rows", "_text")

    def __init__(
        self, core: _velscore.Model, text: bytes, name: str, as_is: bool, allow: tuple[str, ...]
    ) -> None:
        self._core = core
        self._text = text
        self._name = name
        self._as_is = as_is
        self._allow = allow
        self._described: dict[str, Any] | None = None
        self._fields: dict[str, Field] | None = None
        self._rows: dict[frozenset[str], _velscore.Scorer] = {}

    def __reduce__(self) -> Any:
        return _made, (self._text, self._name, self._as_is, self._allow)

    # ---- What it is ----

    def _about(self) -> dict[str, Any]:
        if self._described is None:
            self._described = _report(self._core.describe())
        return self._described

    def inspect(self) -> dict[str, Any]:
        """What the model is, as ``velscore inspect --json`` tells it.

        >>> load("examples/motor-cars/model.pmml").inspect()["target"]
        'mpg'
        """
        return _report(self._core.describe())

    @property
    def feature_names_in_(self) -> list[str]:
        """The columns that a table needs.

        >>> load("examples/motor-cars/model.pmml").feature_names_in_
        ['cyl', 'am', 'wt', 'hp']
        """
        return list(self._about()["reads"])

    @property
    def classes_(self) -> list[str]:
        """The categories of the target, in the order of their probabilities; none of a number.

        >>> load("examples/birth-weight/model.pmml").classes_
        ['normal', 'low']
        """
        return list(self._about()["targetCategories"])

    def coefficients(self) -> list[dict[str, Any]]:
        """The estimates of the document, a dict a parameter, as `velscore inspect --coefficients`.

        What the document has no covariances for is None: standard errors, t or z values, p values
        and the 95% limits. Odds ratios (logit links) and hazard ratios (Cox models) follow, with
        limits. `pandas.DataFrame(model.coefficients())` makes a frame of them.

        >>> rows = load("examples/swiss-fertility/model.pmml").coefficients()
        >>> rows[0]["label"], rows[0]["estimate"], round(rows[0]["std_err"], 7)
        ('Agriculture', -0.1721139709414554, 0.0703039)
        """
        rows: list[dict[str, Any]] = _report(self._core.describe())["coefficients"]["rows"]
        return rows

    def check(self) -> dict[str, Any]:
        """The report of the document, as `velscore.check` gives it."""
        return _check(self._text, self._name, self._as_is, self._allow)

    def verify(self) -> dict[str, Any]:
        """Scores the records that the document carries, and compares.

        The report is the one of ``velscore verify --json``; a document without records raises
        `DocumentError`.
        """
        return _report(self._core.verify())

    def __repr__(self) -> str:
        about = self._about()
        reads = ", ".join(about["reads"][:8]) + (", ..." if len(about["reads"]) > 8 else "")
        target = f" of {about['target']}" if about["target"] else ""
        return f"<velscore.Model: {about['family']}{target} by {reads}>"

    def _repr_html_(self) -> str:
        from ._html import model_html

        return model_html(self._about())

    # ---- Scoring ----

    def _run(
        self, options: dict[str, Any], names: Sequence[str] | None, reads: Sequence[str] | None = None
    ) -> Run:
        called = options["map"] or {}
        fields = self.feature_names_in_ if reads is None else reads
        return Run(self._core, options, [called.get(name, name) for name in fields], names)

    def score(
        self,
        table: Any,
        *,
        keep: str | Iterable[str] | bool | None = None,
        columns: str | Iterable[str] | None = None,
        names: Sequence[str] | None = None,
        **options: Unpack[Options],
    ) -> Any:
        """All results of the rows of a table: prediction, errors, limits, probabilities, status.

        A row that can't be scored has no values; its status, 0 elsewhere, says why, and status_field
        which column was at fault.

        keep      columns of the table to repeat in front of the results; True for all of them
        columns   the results that are wanted, by name; "probabilities" stands for all of these
        names     the names of the columns of an array of two dimensions
        nan       "missing", the default, or "invalid": what a NaN is
        policy    "substitute", "sysmis" or "status": what becomes of missing values
        level     of confidence limits, 0.95 by default
        strict    whether a row that can't be scored raises `TableError`
        missing   texts that mean missing, beside the empty one and NA
        map       the model's fields whose columns are called otherwise: {field: column}

        >>> model = load("examples/swiss-fertility/model.pmml")
        >>> model.score({"Agriculture": [17.0], "Examination": [15], "Education": [12],
        ...              "Catholic": [9.96], "Infant.Mortality": [22.2]}, columns="prediction")
        {'prediction': [74.61529723771785]}
        """
        run = self._run(score_options(keep, columns, **options), names)
        return kind_of(table).score(table, run)

    def _stream(self, table: Any, options: dict[str, Any]) -> _velscore.Stream:
        """The scores of what speaks Arrow, as they are asked for."""
        run = self._run(score_options(**options), None)
        return run.stream(table.__arrow_c_stream__())

    def predict(
        self, table: Any, *, names: Sequence[str] | None = None, **options: Unpack[Options]
    ) -> Any:
        """The prediction of each row: a mean, a category, a probability to survive.

        A column of the table's kind: a Series, a ChunkedArray, an array, a list; of what is scored
        later a table of one column. What `score` takes, but for keep and columns.
        """
        kind = kind_of(table)
        if names is None and not options:
            answer = self._predict_row(kind, table)
            if answer is not None:
                return answer
        run = self._run(score_options(None, "prediction", **options), names)
        return kind.predict(table, run)

    def _predict_row(self, kind: Kind, table: Any) -> Any:
        """The prediction of one row of plain values, whose columns were found before.

        None where the road of all tables has to answer, or to refuse: it tells what is wrong.
        """
        plain = kind.one_row(table, self._about()["reads"])
        if plain is None:
            return None
        row = plain[0] if type(plain) is list else plain
        if type(row) is not dict:
            return None
        columns = frozenset(row)
        scorer = self._rows.get(columns) or self._bind_row(columns)
        answer = None if scorer is None else scorer.predict(plain)
        return None if answer is None else kind.one_value(answer)

    def _bind_row(self, columns: frozenset[str]) -> _velscore.Scorer | None:
        if not all(type(name) is str for name in columns):
            return None
        try:
            scorer = _velscore.Scorer(self._core, columns, score_options(None, "prediction"))
        except (Error, ValueError):
            return None
        if len(self._rows) >= _MOST_ROWS_BOUND:
            self._rows.clear()
        self._rows[columns] = scorer
        return scorer

    def predict_proba(
        self, table: Any, *, names: Sequence[str] | None = None, **options: Unpack[Options]
    ) -> Any:
        """The probabilities of the categories, in columns that are called like `classes_`.

        Of an array of NumPy two dimensions. A model without categories raises `OptionError`.
        """
        if not any(c["column"].startswith("probability(") for c in self._about()["columns"]):
            raise OptionError(f"{self._about()['family']} has no probabilities of categories")
        run = self._run(score_options(None, "probabilities", **options), names)
        return kind_of(table).probabilities(table, run, self.classes_)

    def curve(
        self, table: Any, *, names: Sequence[str] | None = None, **options: Unpack[Options]
    ) -> Any:
        """Survival curves of the rows, of Cox models alone: time, survival and cum_hazard.

        A line for each time of each row, which the column row counts from 1; frames of pandas have
        the index of their row instead. The table needs no end time.
        """
        if options.get("level") is not None:
            raise OptionError("level isn't an option of curves")
        about = self._about()
        reads = [name for name in about["reads"] if name != about["endTime"]]
        run = self._run(score_options(**options), names, reads)
        return kind_of(table).curve(table, run)

    def explain(
        self,
        table: Any,
        *,
        top: int | None = None,
        baseline: Baseline | None = None,
        names: Sequence[str] | None = None,
        **options: Unpack[Options],
    ) -> Any:
        """How the scores of the rows come about: equation, term, value and contribution.

        A line for each term of each equation of each row, which the column row counts from 1;
        frames of pandas have the index of their row instead. The contributions of an equation,
        added up in their order, are its linear predictor. The equation has no value where the
        model has one alone; a row without a score has one line without values. What `score` takes,
        but for keep, columns and level, and

        top       so many terms of each equation, those of the largest contributions first, and the
                  others as one line, "other terms"
        baseline  what contributions are differences from: "mean", the mean of all rows that have a
                  score, or the number of a row, from 1; of another table as ("mean", table)

        >>> model = load("examples/motor-cars/model.pmml")
        >>> case = {"wt": [2.62], "hp": [110], "cyl": [6], "am": ["automatic"]}
        >>> terms = model.explain(case)
        >>> terms["term"][:3], terms["value"][:3]
        (['Intercept', 'cyl6', 'cyl8'], [1.0, 1.0, 0.0])
        >>> total = 0.0
        >>> for contribution in terms["contribution"]:  # sum() of newer Pythons corrects as it adds
        ...     total += contribution
        >>> model.predict(case) == [total]
        True
        """
        if options.get("level") is not None:
            raise OptionError("level isn't an option of explanations")
        run = self._run(score_options(**options), names)
        if top is not None:
            run.options["top"] = _count(top, 0, "top")
        if baseline is not None:
            which, run.baseline = baseline if isinstance(baseline, tuple) else (baseline, None)
            run.has_baseline = True
            run.options["baseline_row"] = 0 if which == "mean" else _count(which, 1, "baseline")
        return kind_of(table).explain(table, run)

    def bind(
        self,
        columns: Sequence[str],
        *,
        results: str | Iterable[str] | None = "prediction",
        **options: Unpack[Options],
    ) -> _velscore.Scorer:
        """Finds the columns once, for programs that score a row at a time.

        >>> model = load("examples/motor-cars/model.pmml")
        >>> score = model.bind(["wt", "hp", "cyl", "am"])
        >>> score(2.62, 110, 6, "manual")
        {'prediction': 22.189600083829404}
        """
        return _velscore.Scorer(self._core, columns, score_options(None, results, **options))

    # ---- Pictures ----

    def plot_effect(
        self,
        name: str,
        table: Any = None,
        *,
        by: str | None = None,
        values: Sequence[Any] | None = None,
        at: Mapping[str, Any] | None = None,
        level: float | None = None,
        ax: Axes | None = None,
    ) -> Axes:
        """Draws how the score goes with one column, the others held still; with limits.

        The mean, the probabilities of categories, of Cox models the relative hazard. Others are held
        at the table's mean or most frequent value; without a table at the model's own reference, or
        0. A number is drawn over its range in the table.

        by      a second column: a line for each of its categories, or for each quartile
        values  what the picture is over, instead of the table's
        at      values to hold others at: {column: value}
        ax      where to draw; else a new figure

        >>> model = load("examples/motor-cars/model.pmml")
        >>> model.plot_effect("am", at={"wt": 3, "hp": 120}).get_xlabel()
        'am'
        """
        drawn: Axes = _plots().plot_effect(self, name, table, by, values, at, level, ax)
        return drawn

    def plot_coefficients(
        self, *, most: int = 50, intercept: bool = False, ax: Axes | None = None
    ) -> Axes:
        """Draws estimates with their 95% limits: those of the `most` largest t or z values.

        Of a document without covariances the largest estimates, without limits.
        """
        drawn: Axes = _plots().plot_coefficients(self, most, intercept, ax)
        return drawn

    def plot_survival(
        self, table: Any, *, by: str | None = None, ax: Axes | None = None
    ) -> Axes:
        """Draws survival curves of the rows of a table, of more than twelve their mean.

        With `by` the mean curve of each value of a column, as far as all of its rows go.
        """
        drawn: Axes = _plots().plot_survival(self, table, by, ax)
        return drawn

    def plot_calibration(
        self, table: Any, observed: str | Sequence[Any], *, bins: int = 10, ax: Axes | None = None
    ) -> Axes:
        """Draws what was observed over what was scored, by quantiles of the scores.

        `observed` is a column of the table or a sequence. The bars are 95% limits of the observed
        share or mean; on the dotted line both are alike.
        """
        drawn: Axes = _plots().plot_calibration(self, table, observed, bins, ax)
        return drawn

    def plot_roc(
        self, table: Any, observed: str | Sequence[Any], *, ax: Axes | None = None
    ) -> Axes:
        """Draws the receiver operating characteristic of each category, with its area."""
        drawn: Axes = _plots().plot_roc(self, table, observed, ax)
        return drawn

    def plot_scores(self, table: Any, *, ax: Axes | None = None) -> Axes:
        """Draws the distribution of the scores of a table."""
        drawn: Axes = _plots().plot_scores(self, table, ax)
        return drawn


def _plots() -> Any:
    """The module that draws. Raises ImportError where matplotlib isn't installed."""
    return needing("matplotlib", "pictures", "._plots")


def needing(package: str, what: str, module: str) -> Any:
    """A module of this package that needs another one. Raises ImportError that tells what to install."""
    import importlib
    import importlib.util

    if importlib.util.find_spec(package) is None:
        raise ImportError(
            f"{what} are drawn by {package}, which isn't installed; pip install 'velscore[report]'"
        )
    return importlib.import_module(module, __package__)


def scan_csv(
    path: str | os.PathLike[str],
    model: Model,
    *,
    keep: str | Iterable[str] | bool | None = None,
    columns: str | Iterable[str] | None = None,
    delimiter: str | None = None,
    decimal: str | None = None,
    header: bool = True,
    threads: int = 0,
    **options: Unpack[Options],
) -> _velscore.Stream:
    """Scores a file, CSV or JSON Lines, compressed or not, as its results are asked for.

    On `threads` threads, by default as many as the process may use. The stream is read once: by
    whatever reads Arrow's C streams, or as an iterator over `Table`s.

    >>> model = load("examples/motor-cars/model.pmml")
    >>> scan_csv("examples/motor-cars/cases.csv", model).read().values(0)[0]
    22.189600083829404
    """
    options_of_scores = score_options(keep, columns, **options)
    return _velscore.scan(
        model._core, os.fsencode(path), options_of_scores, delimiter, decimal, header, threads
    )
