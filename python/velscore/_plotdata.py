"""What pictures show: numbers out of a model and a table, without any drawing."""

from __future__ import annotations

import difflib
from collections import Counter
from statistics import NormalDist
from typing import Any, NamedTuple

import numpy as np

from ._errors import OptionError
from ._fields import Field, fields_of
from ._kinds import kind_of
from ._values import _MISSING

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable, Mapping, Sequence

    from numpy.typing import NDArray
    from typing_extensions import TypeAlias

    from ._model import Model

    Numbers: TypeAlias = NDArray[np.float64]

Columns = dict[str, list[Any]]

_MISSING_TEXTS = ("", "NA")
_GRID = 101  # points of a line
_QUARTILES = (0.25, 0.5, 0.75)


# ---- Tables ----


def columns_of(table: Any) -> Columns:
    """The columns of a table of any kind."""
    return kind_of(table).columns(table)


_MOST_NAMES = 20


def _listed(names: Iterable[str]) -> str:
    known = list(names)
    more = len(known) - _MOST_NAMES
    return ", ".join(known[:_MOST_NAMES]) + (f" and {more} more" if more > 0 else "")


def _meant(name: str, names: Iterable[str]) -> str | None:
    """The names that come near one that is none of them, as a remedy."""
    folded = {each.casefold(): each for each in names}
    near = difflib.get_close_matches(name.casefold(), folded)
    return f"Did you mean {' or '.join(repr(folded[each]) for each in near)}?" if near else None


def column_of(columns: Columns, name: str) -> list[Any]:
    """The values of a column of the table."""
    if name not in columns:
        raise OptionError(
            f"the table has no column {name}; it has {_listed(columns)}", remedy=_meant(name, columns)
        )
    return columns[name]


def is_missing(value: Any, categories: Sequence[str] = ()) -> bool:
    """Whether a value counts as missing; the text NA doesn't where it is a category."""
    if value is None or type(value).__name__ in _MISSING:
        return True
    if isinstance(value, str):
        return value in _MISSING_TEXTS and value not in categories
    return bool(value != value)


def text_of(value: Any) -> str:
    """A value as the text of a category: 1.0 is 1, True is true."""
    if isinstance(value, (bool, np.bool_)):
        return "true" if value else "false"
    if isinstance(value, float) and value.is_integer():
        return str(int(value))
    return str(value)


def numbers_of(values: Sequence[Any]) -> Numbers:
    """Values as numbers; NaN for what is missing or none."""
    found = np.full(len(values), np.nan)
    for row, value in enumerate(values):
        if not is_missing(value):
            try:
                found[row] = float(value)
            except (TypeError, ValueError):
                pass
    return found


def there(numbers: Numbers) -> Numbers:
    """The finite ones of some numbers."""
    return numbers[np.isfinite(numbers)]


def texts_of(values: Sequence[Any], categories: Sequence[str] = ()) -> list[str]:
    """The distinct texts of values, those of the categories first and in their order."""
    found = dict.fromkeys(text_of(v) for v in values if not is_missing(v, categories))
    return [c for c in categories if c in found] + [t for t in found if t not in categories]


def rows_of(columns: Columns, rows: Sequence[int]) -> Columns:
    """Some rows of columns."""
    return {name: [values[row] for row in rows] for name, values in columns.items()}


# ---- What a model answers ----


class Result(NamedTuple):
    """A result that is drawn, and the columns of its limits where it has any."""

    column: str
    label: str
    lower: str | None = None
    upper: str | None = None
    error: str | None = None


class Drawn(NamedTuple):
    """Which results of a model are drawn, and the meaning of their axis."""

    results: list[Result]
    axis: str


def drawn_of(model: Model) -> Drawn:
    """The relative hazard of Cox models, the probabilities of categories, or the mean.

    Of two categories that of the reference isn't drawn, since it is what the other leaves.
    """
    about = model._about()
    if about["baseline"] or about["endTime"]:
        return Drawn([Result("risk", "relative hazard")], "relative hazard")
    has = {c["column"] for c in about["columns"] if not c["empty"]}
    if "probability(" in "".join(has):
        classes = shown_classes(model)
        axis = f"probability of {classes[0]}" if len(classes) == 1 else "probability"
        return Drawn([_probability(about, category) for category in classes], axis)
    target = about["target"] or "target"
    if {"ci_lower", "ci_upper"} <= has:
        return Drawn([Result("prediction", target, "ci_lower", "ci_upper")], f"mean of {target}")
    return Drawn([Result("prediction", target)], f"mean of {target}")


def _probability(about: dict[str, Any], category: str) -> Result:
    offered = any(c["column"].startswith("std_err(probability") for c in about["columnsOnRequest"])
    error = f"std_err(probability({category}))" if offered else None
    return Result(f"probability({category})", category, error=error)


def shown_classes(model: Model) -> list[str]:
    """The categories whose probabilities are drawn."""
    classes = model.classes_
    reference = model._about()["referenceCategory"] or classes[0]
    if len(classes) == 2:
        return [category for category in classes if category != reference]
    return classes


class Band(NamedTuple):
    """A result over rows, and its limits; NaN where there are none."""

    values: Numbers
    lower: Numbers
    upper: Numbers


def scores_of(
    model: Model, columns: Columns, results: Sequence[Result], level: float | None = None
) -> list[Band]:
    """Results of the rows of some columns, with the limits that the model gives."""
    wanted = {name for r in results for name in (r.column, r.lower, r.upper, r.error) if name}
    options: dict[str, Any] = {} if level is None else {"level": level}
    scored = model.score(read_of(model, columns), columns=sorted(wanted), **options)
    bands = []
    for result in results:
        values = numbers_of(scored[result.column])
        none = np.full(len(values), np.nan)
        if result.lower and result.upper:
            limits = numbers_of(scored[result.lower]), numbers_of(scored[result.upper])
        elif result.error:
            reach = NormalDist().inv_cdf(0.5 + (level or 0.95) / 2) * numbers_of(scored[result.error])
            limits = np.maximum(values - reach, 0.0), np.minimum(values + reach, 1.0)
        else:
            limits = none, none
        bands.append(Band(values, *limits))
    return bands


def read_of(model: Model, columns: Columns) -> Columns:
    """Those columns that the model reads."""
    reads = set(model.feature_names_in_)
    return {name: values for name, values in columns.items() if name in reads}


# ---- Effects ----


class Effect(NamedTuple):
    """Results over the values of one column, others held still."""

    name: str
    is_number: bool
    values: list[Any]
    groups: list[tuple[str, list[Band]]]  # by the label of the second predictor, else one
    held: dict[str, Any]


def held_values(
    model: Model, columns: Columns | None = None, at: Mapping[str, Any] | None = None
) -> dict[str, Any]:
    """A value for each column: what is told, the table's mean or mode, or the model's reference.

    Where the document says no reference of a number, that is 0; of a text its first category.
    Means of whole numbers are rounded, since their fields take no others.
    """
    fields = fields_of(model)
    for name in at or {}:
        _field(fields, name)
    return {name: _held(field, columns, at or {}) for name, field in fields.items()}


def _held(field: Field, columns: Columns | None, at: Mapping[str, Any]) -> Any:
    if field.name in at:
        return at[field.name]
    values = (columns or {}).get(field.name, [])
    if field.is_number:
        numbers = there(numbers_of(values))
        point = float(numbers.mean()) if numbers.size else field.reference or 0.0
        return float(round(point)) if field.is_whole else point
    texts = [text_of(v) for v in values if not is_missing(v, field.categories)]
    listed = [t for t in texts if t in field.categories] or texts
    if listed:
        return Counter(listed).most_common(1)[0][0]
    return field.categories[0] if field.categories else None


def effect_of(
    model: Model,
    name: str,
    columns: Columns | None = None,
    by: str | None = None,
    values: Sequence[Any] | None = None,
    at: Mapping[str, Any] | None = None,
    level: float | None = None,
) -> Effect:
    """How the results of a model go with one of its columns, and with a second one."""
    fields = fields_of(model)
    field = _field(fields, name)
    if by == name:
        raise OptionError(f"by is {by}, which the picture is of; expected is another column")
    along = _points(field, columns, values)
    held = held_values(model, columns, at)
    results = drawn_of(model).results
    levels = [held[name]] if by is None else _levels(_field(fields, by), columns)
    groups = []
    for value in levels:
        case = held if by is None else {**held, by: value}
        table = {n: along if n == name else [v] * len(along) for n, v in case.items()}
        label = "" if by is None else f"{by} = {short(value)}"
        groups.append((label, scores_of(model, table, results, level)))
    still = {n: v for n, v in held.items() if n not in (name, by)}
    return Effect(name, field.is_number, along, groups, still)


def _field(fields: Mapping[str, Field], name: str) -> Field:
    if name not in fields:
        raise OptionError(
            f"the model reads no {name}; it reads {_listed(fields)}", remedy=_meant(name, fields)
        )
    return fields[name]


def _points(field: Field, columns: Columns | None, values: Sequence[Any] | None) -> list[Any]:
    if values is not None:
        if not len(values):
            raise OptionError("values is empty; expected are those that the picture is over")
        return [float(v) for v in values] if field.is_number else [text_of(v) for v in values]
    found = (columns or {}).get(field.name, [])
    if not field.is_number:
        return field.categories or texts_of(found)
    numbers = there(numbers_of(found))
    if not numbers.size:
        raise OptionError(
            f"where {field.name} lies isn't known; give a table, or values= that the picture is over"
        )
    grid = np.linspace(numbers.min(), numbers.max(), _GRID)
    return [float(v) for v in (np.unique(np.round(grid)) if field.is_whole else grid)]


def _levels(field: Field, columns: Columns | None) -> list[Any]:
    """The values of a second predictor: its categories, or the quartiles of a number."""
    if not field.is_number:
        return _points(field, columns, None)
    numbers = there(numbers_of((columns or {}).get(field.name, [])))
    if not numbers.size:
        raise OptionError(f"where {field.name} lies isn't known; give a table")
    quartiles = np.quantile(numbers, _QUARTILES)
    return [float(v) for v in np.unique(np.round(quartiles) if field.is_whole else quartiles)]


def short(value: Any) -> str:
    """A value in few digits."""
    return f"{value:.4g}" if isinstance(value, float) else str(value)


# ---- Observed values ----


class Compared(NamedTuple):
    """Scores of a result beside what was observed: a number, or 1 for the category and 0 for none."""

    label: str
    scores: Numbers
    observed: Numbers


def compared(
    model: Model, columns: Columns, observed: str | Sequence[Any], what: str
) -> list[Compared]:
    """Each drawn result beside its observed values; rows that lack one of them are left out."""
    if model._about()["endTime"]:
        raise OptionError(f"{what} isn't drawn of Cox models, whose cases may be censored")
    drawn = drawn_of(model)
    values = observed_of(columns, observed)
    bands = scores_of(model, columns, drawn.results)
    found = []
    for result, band in zip(drawn.results, bands):
        truth = (
            np.array([_share(v, result.label, model.classes_) for v in values])
            if result.column != "prediction"
            else numbers_of(values)
        )
        both = np.isfinite(truth) & np.isfinite(band.values)
        if not both.any():
            raise OptionError("no row has both a score and an observed value; " + what + " needs them")
        found.append(Compared(result.label, band.values[both], truth[both]))
    return found


def observed_of(columns: Columns, observed: str | Sequence[Any]) -> list[Any]:
    """The observed values of a table's rows: a column of it, or a sequence as long."""
    if isinstance(observed, str):
        return column_of(columns, observed)
    values = list(observed)
    rows = len(next(iter(columns.values()), []))
    if len(values) != rows:
        raise OptionError(f"observed has {len(values)} values, and the table {rows} rows")
    return values


def _share(value: Any, category: str, classes: Sequence[str]) -> float:
    if is_missing(value, classes) or text_of(value) not in classes:
        return float("nan")
    return float(text_of(value) == category)


class Bin(NamedTuple):
    """A bin of cases with scores alike."""

    score: float
    observed: float
    lower: float
    upper: float
    cases: int


def calibration_of(pair: Compared, is_share: bool, bins: int = 10) -> list[Bin]:
    """Mean scores and mean observed values by quantiles of the scores, with 95% limits of the latter.

    Of shares the limits are Wilson's, of means those of a normal mean.
    """
    if bins < 1:
        raise OptionError(f"bins is {bins}; expected is 1 or more")
    edges = np.unique(np.quantile(pair.scores, np.linspace(0, 1, bins + 1)[1:-1]))
    places = np.searchsorted(edges, pair.scores, side="left")
    z = NormalDist().inv_cdf(0.975)
    found = []
    for place in np.unique(places):
        observed = pair.observed[places == place]
        n, mean = len(observed), float(observed.mean())
        if is_share:
            middle = (mean + z * z / (2 * n)) / (1 + z * z / n)
            reach = z * (mean * (1 - mean) / n + z * z / (4 * n * n)) ** 0.5 / (1 + z * z / n)
        else:
            middle = mean
            reach = z * float(observed.std(ddof=1)) / n**0.5 if n > 1 else float("nan")
        score = float(pair.scores[places == place].mean())
        found.append(Bin(score, mean, middle - reach, middle + reach, n))
    return found


class Roc(NamedTuple):
    """Rates at each threshold, and the area under their line: ties count half."""

    false_positive: Numbers
    true_positive: Numbers
    area: float


def roc_of(pair: Compared) -> Roc:
    """The receiver operating characteristic of the scores of a category."""
    positives = pair.observed.sum()
    negatives = len(pair.observed) - positives
    if positives == 0 or negatives == 0:
        raise OptionError(
            f"all observed cases are {'' if negatives == 0 else 'not '}{pair.label}; "
            "a ROC curve needs both"
        )
    order = np.argsort(-pair.scores, kind="stable")
    scores, truth = pair.scores[order], pair.observed[order]
    ends = np.append(np.flatnonzero(np.diff(scores)), len(scores) - 1)
    hits = np.concatenate([[0.0], np.cumsum(truth)[ends]]) / positives
    alarms = np.concatenate([[0.0], np.cumsum(1 - truth)[ends]]) / negatives
    area = float(np.sum(np.diff(alarms) * (hits[1:] + hits[:-1]) / 2))
    return Roc(alarms, hits, area)


# ---- Survival ----


class Steps(NamedTuple):
    """A survival curve: it has its value from a time on."""

    label: str
    times: Numbers
    survival: Numbers


_MOST_ROWS = 12


def survival_of(model: Model, columns: Columns, by: str | None = None) -> list[Steps]:
    """Survival curves: of each row of a short table, of a longer one their mean; or means by a column."""
    if not model._about()["baseline"]:
        raise OptionError(f"{model._about()['family']} has no survival curves; Cox models do")
    curves = _curves(model, columns)
    if not curves:
        raise OptionError("no row has a survival curve")
    if by is None:
        if len(curves) <= _MOST_ROWS:
            return [Steps(f"row {row + 1}", *curves[row]) for row in curves]
        return [_mean(f"mean of {len(curves)} rows", list(curves.values()))]
    values = column_of(columns, by)
    groups: dict[str, list[tuple[Numbers, Numbers]]] = {}
    field = fields_of(model).get(by)
    for text in texts_of(values, field.categories if field else ()):
        groups[text] = []
    for row, curve in curves.items():
        if not is_missing(values[row]):
            groups[text_of(values[row])].append(curve)
    return [_mean(f"{by} = {text}", of) for text, of in groups.items() if of]


def _curves(model: Model, columns: Columns) -> dict[int, tuple[Numbers, Numbers]]:
    """Times and survival of each row that has a curve."""
    found = model.curve(read_of(model, columns))
    rows = np.array(found["row"], dtype=int) - 1
    times, survival = numbers_of(found["time"]), numbers_of(found["survival"])
    curves = {}
    for row in np.unique(rows):
        of = (rows == row) & np.isfinite(times)
        if of.any():
            curves[int(row)] = times[of], survival[of]
    return curves


def _mean(label: str, curves: list[tuple[Numbers, Numbers]]) -> Steps:
    """The mean of curves as far as all of them go."""
    last = min(times[-1] for times, _ in curves)
    union = np.unique(np.concatenate([times for times, _ in curves]))
    union = union[union <= last]
    total = np.zeros(len(union))
    for times, survival in curves:
        steps = np.concatenate([[1.0], survival])
        total += steps[np.searchsorted(times, union, side="right")]
    return Steps(label, union, total / len(curves))
