"""Pictures of models and of their scores, drawn by matplotlib.

Lines, dashes and markers differ as colours do, so that a picture is read in grey too. Texts of documents
and tables are drawn as they are: no dollar sign makes a formula of them.
"""

from __future__ import annotations

import importlib
from itertools import cycle
from typing import Any

import numpy as np
from matplotlib.ticker import MaxNLocator

from . import _plotdata
from ._errors import OptionError
from ._plotdata import Columns, Compared, Effect

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator, Mapping, Sequence

    from matplotlib.axes import Axes

    from ._model import Model

# Dark enough on white, and told apart by those who see fewer colours.
_STYLES = [
    ("#0b5394", "-", "o"),
    ("#b45309", "--", "s"),
    ("#166534", "-.", "^"),
    ("#7c3aed", ":", "D"),
    ("#9d174d", (0, (5, 1, 1, 1, 1, 1)), "v"),
    ("#374151", (0, (8, 2)), "P"),
]
_MOST_LEGEND = 12
_LONGEST = 32  # letters of a label


def axes(ax: Axes | None) -> Axes:
    """The axes to draw on: the given ones, or those of a new figure."""
    if ax is not None:
        return ax
    pyplot = importlib.import_module("matplotlib.pyplot")
    new: Axes = pyplot.subplots(layout="constrained")[1]
    return new


def label(text: str) -> str:
    """A text as it is to be shown: shortened, no formula, and no sign of a hidden label."""
    shown = text if len(text) <= _LONGEST else text[: _LONGEST - 1] + "…"
    shown = shown.replace("\n", " ").replace("$", r"\$")
    return f" {shown}" if shown.startswith("_") else shown


def _styles() -> Iterator[tuple[str, Any, str]]:
    return cycle(_STYLES)


def _legend(ax: Axes, lines: int) -> None:
    if lines > 1:
        ax.legend(frameon=False, fontsize="small")


def _tidy(ax: Axes, x: str, y: str) -> Axes:
    ax.set_xlabel(label(x))
    ax.set_ylabel(label(y))
    ax.spines[["top", "right"]].set_visible(False)
    return ax


# ---- Effects ----


def draw_effect(model: Model, effect: Effect, ax: Axes) -> Axes:
    """Draws an effect: lines with bands over a number, points with bars over categories."""
    drawn = _plotdata.drawn_of(model)
    styles = _styles()
    curves = [
        (group, result.label, band)
        for group, bands in effect.groups
        for result, band in zip(drawn.results, bands)
    ]
    shown = curves[:_MOST_LEGEND]
    for at, (group, result, band) in enumerate(shown):
        parts = [group] if len(drawn.results) == 1 else [group, result]
        name = label(", ".join(part for part in parts if part) or drawn.axis)
        colour, dashes, marker = next(styles)
        if effect.is_number:
            ax.plot(effect.values, band.values, color=colour, linestyle=dashes, label=name)
            ax.fill_between(effect.values, band.lower, band.upper, color=colour, alpha=0.15, linewidth=0)
        else:
            shift = (at - (len(shown) - 1) / 2) * 0.5 / len(shown)
            places = np.arange(len(effect.values)) + shift
            reach = np.nan_to_num(np.vstack([band.values - band.lower, band.upper - band.values]))
            ax.errorbar(
                places, band.values, yerr=np.maximum(reach, 0), color=colour, marker=marker,
                linestyle="none", capsize=3, label=name,
            )  # fmt: skip
    if len(curves) > len(shown):
        ax.set_title(f"the first {len(shown)} of {len(curves)} lines", fontsize="small")
    if not effect.is_number:
        _categories(ax, effect.values)
    _legend(ax, len(shown))
    return _tidy(ax, effect.name, drawn.axis)


_MOST_TICKS = 40


def _categories(ax: Axes, values: Sequence[str]) -> None:
    every = -(-len(values) // _MOST_TICKS)
    texts = [label(text) for text in values[::every]]
    turned = sum(map(len, texts)) > 36
    ax.set_xticks(range(0, len(values), every), texts, rotation=30 if turned else 0, ha="right" if turned else "center")
    ax.set_xlim(-0.5, len(values) - 0.5)


def plot_effect(
    model: Model,
    name: str,
    table: Any,
    by: str | None,
    values: Sequence[Any] | None,
    at: Mapping[str, Any] | None,
    level: float | None,
    ax: Axes | None,
) -> Axes:
    columns = None if table is None else _plotdata.columns_of(table)
    effect = _plotdata.effect_of(model, name, columns, by, values, at, level)
    return draw_effect(model, effect, axes(ax))


# ---- Coefficients ----


def coefficient_label(row: Mapping[str, Any]) -> str:
    """How a coefficient is called: its label, with its category where there are several."""
    name = row["label"] or row["parameter"]
    return f"{row['equation']}: {name}" if row["equation"] else name


def largest(rows: Sequence[dict[str, Any]], most: int) -> list[dict[str, Any]]:
    """The coefficients of the largest size, in the order of the document.

    By t or z value where all have one, else by estimate.
    """

    def statistic(row: dict[str, Any]) -> float | None:
        found: float | None = row.get("t_value", row.get("z_value"))
        return found

    known = all(statistic(row) is not None for row in rows)
    sizes = [abs((statistic(row) if known else row["estimate"]) or 0.0) for row in rows]
    chosen = sorted(range(len(rows)), key=lambda i: -sizes[i])[:most]
    return [rows[i] for i in sorted(chosen)]


def constants_of(model: Model) -> set[tuple[str, str]]:
    """Category and parameter of intercepts and thresholds."""
    return {
        (equation.get("category", ""), term["parameter"])
        for equation in model._about()["equations"]
        for term in equation["terms"]
        if not term["factors"]
    }


def plot_coefficients(model: Model, most: int, intercept: bool, ax: Axes | None) -> Axes:
    without = set() if intercept else constants_of(model)
    rows = [
        row
        for row in model.coefficients()
        if (row["equation"], row["parameter"]) not in without and row["estimate"] is not None
    ]
    if not rows:
        raise OptionError("the model has no coefficients but constants; intercept=True draws these")
    shown = largest(rows, most)
    target = axes(ax)
    places = range(len(shown) - 1, -1, -1)  # the first on top
    estimates = [row["estimate"] for row in shown]
    has_limits = any(row["ci_lower"] is not None for row in shown)
    reach = [
        [0.0 if row[limit] is None else abs(row["estimate"] - row[limit]) for row in shown]
        for limit in ("ci_lower", "ci_upper")
    ]
    colour, _, marker = _STYLES[0]
    target.errorbar(
        estimates, places, xerr=reach, color=colour, marker=marker, linestyle="none", capsize=3
    )
    target.axvline(0, color="#6b7280", linewidth=1, linestyle=":")
    target.set_yticks(places, [label(coefficient_label(row)) for row in shown])
    target.set_ylim(-0.7, len(shown) - 0.3)
    if len(shown) < len(rows):
        target.set_title(f"the largest {len(shown)} of {len(rows)}", fontsize="small")
    return _tidy(target, "estimate, 95% limits" if has_limits else "estimate, without limits", "")


# ---- Scores ----


def plot_survival(model: Model, table: Any, by: str | None, ax: Axes | None) -> Axes:
    return draw_survival(_plotdata.survival_of(model, _plotdata.columns_of(table), by), axes(ax))


def draw_survival(curves: Sequence[_plotdata.Steps], ax: Axes) -> Axes:
    """Draws survival curves as steps from 1 at time 0 on."""
    styles = _styles()
    for curve in curves[:_MOST_LEGEND]:
        colour, dashes, _ = next(styles)
        times = np.concatenate([[min(0.0, float(curve.times[0]))], curve.times])
        survival = np.concatenate([[1.0], curve.survival])
        ax.step(
            times, survival, where="post", color=colour, linestyle=dashes, label=label(curve.label)
        )
    if len(curves) > _MOST_LEGEND:
        ax.set_title(f"the first {_MOST_LEGEND} of {len(curves)} curves", fontsize="small")
    ax.set_ylim(0, 1.02)
    _legend(ax, min(len(curves), _MOST_LEGEND))
    return _tidy(ax, "time", "survival")


def plot_calibration(
    model: Model, table: Any, observed: str | Sequence[Any], bins: int, ax: Axes | None
) -> Axes:
    pairs = _plotdata.compared(model, _plotdata.columns_of(table), observed, "calibration")
    return draw_calibration(pairs, bool(model.classes_), bins, axes(ax))


def draw_calibration(pairs: Sequence[Compared], is_share: bool, bins: int, ax: Axes) -> Axes:
    """Draws means of observed values over those of scores, beside the line where both are alike."""
    styles = _styles()
    ends = []
    for pair in pairs:
        colour, _, marker = next(styles)
        found = _plotdata.calibration_of(pair, is_share, bins)
        scores = [each.score for each in found]
        observed = [each.observed for each in found]
        reach = np.nan_to_num(
            np.abs([[e.observed - e.lower for e in found], [e.upper - e.observed for e in found]])
        )
        ax.errorbar(
            scores, observed, yerr=reach, color=colour, marker=marker, linestyle="none",
            capsize=3, label=label(pair.label),
        )  # fmt: skip
        ends += [min(scores + observed), max(scores + observed)]
    low, high = (0.0, 1.0) if is_share else (min(ends), max(ends))
    ax.axline((low, low), (high, high) if high > low else None, slope=None if high > low else 1.0,
              color="#6b7280", linewidth=1, linestyle=":")  # fmt: skip
    _legend(ax, len(pairs))
    return _tidy(ax, "mean score", "share observed" if is_share else "mean observed")


def plot_roc(
    model: Model, table: Any, observed: str | Sequence[Any], ax: Axes | None
) -> Axes:
    if not model.classes_:
        raise OptionError("a ROC curve is of models with categories")
    pairs = _plotdata.compared(model, _plotdata.columns_of(table), observed, "a ROC curve")
    return draw_roc(pairs, axes(ax))


def draw_roc(pairs: Sequence[Compared], ax: Axes) -> Axes:
    """Draws ROC curves; the legend has their areas."""
    styles = _styles()
    for pair in pairs:
        colour, dashes, _ = next(styles)
        roc = _plotdata.roc_of(pair)
        name = f"{label(pair.label)}: area {roc.area:.3f}"
        ax.plot(roc.false_positive, roc.true_positive, color=colour, linestyle=dashes, label=name)
    ax.axline((0, 0), (1, 1), color="#6b7280", linewidth=1, linestyle=":")
    ax.legend(frameon=False, fontsize="small", loc="lower right")
    return _tidy(ax, "false positive rate", "true positive rate")


def plot_scores(model: Model, table: Any, ax: Axes | None) -> Axes:
    return draw_scores(model, _plotdata.columns_of(table), axes(ax))


def draw_scores(model: Model, columns: Columns, ax: Axes) -> Axes:
    """Draws how many cases have scores where."""
    drawn = _plotdata.drawn_of(model)
    bands = _plotdata.scores_of(model, columns, drawn.results)
    scores = [_plotdata.there(band.values) for band in bands]
    if not any(each.size for each in scores):
        raise OptionError("no row has a score")
    edges = np.histogram_bin_edges(np.concatenate(scores), bins="auto" if len(scores) == 1 else 20)
    if len(edges) > 61:
        edges = np.linspace(edges[0], edges[-1], 61)
    styles = _styles()
    for result, values in zip(drawn.results, scores):
        colour, dashes, _ = next(styles)
        ax.hist(
            values, bins=edges.tolist(), histtype="stepfilled" if len(scores) == 1 else "step",
            edgecolor=colour, facecolor=colour + "33", linestyle=dashes, label=label(result.label),
        )  # fmt: skip
    ax.yaxis.set_major_locator(MaxNLocator(integer=True))
    _legend(ax, len(scores))
    return _tidy(ax, drawn.axis, "cases")
