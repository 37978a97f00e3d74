"""What stands on the page of a report: sections of facts, tables and pictures, put into a template."""

from __future__ import annotations

import datetime
import functools
import io
import os
import re
import warnings
from typing import Any, NamedTuple

import jinja2
import matplotlib
import numpy as np
from markupsafe import Markup
from matplotlib.figure import Figure

from . import _plotdata, _plots
from ._errors import Error, OptionError
from ._fields import fields_of
from ._plotdata import Columns
from ._velscore import version

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable, Iterator, Sequence

    from matplotlib.axes import Axes

    from ._model import Model

_MOST_ROWS = 50  # of a table on the page
_MOST_EFFECTS = 12
_MOST_CONTRASTS = 20
_EXTREMES = 10
_MOST_TERMS = 6  # of an explained case
_WIDTH, _HEIGHT = 5.2, 3.2  # inches of a picture


class Table(NamedTuple):
    """Rows of texts; `numbers` are the columns that are set to the right."""

    head: list[str]
    rows: list[list[str]]
    numbers: tuple[int, ...] = ()
    note: str = ""


class Picture(NamedTuple):
    """A drawing, and what it is for those who don't see it."""

    svg: str
    title: str


class Section(NamedTuple):
    """A part of the page. What couldn't be shown is among the notes."""

    title: str
    notes: list[str] = []
    tables: list[Table] = []
    pictures: list[Picture] = []
    lines: list[str] = []


def page_of(model: Model, table: Any, observed: str | Sequence[Any] | None) -> str:
    """The page of a model and a table, as HTML."""
    if observed is not None and table is None:
        raise OptionError("observed values are of a table, and there is none")
    columns = None if table is None else _plotdata.columns_of(table)
    if columns is not None and observed is not None:
        observed = _plotdata.observed_of(columns, observed)
    drawer = _Drawer()
    sections = [
        section
        for make in (_equation, _coefficients, _effects, _contrasts, _survival)
        if (section := make(model, columns, drawer)) is not None
    ]
    if columns is not None:
        sections += list(_of_table(model, columns, observed, drawer))
    sections.append(_notices(model))
    environment = jinja2.Environment(
        loader=jinja2.FileSystemLoader(os.path.dirname(os.path.abspath(__file__))),
        autoescape=True,
        undefined=jinja2.StrictUndefined,
        trim_blocks=True,
        lstrip_blocks=True,
    )
    return environment.get_template("report.html.jinja").render(
        title=f"{_capital(model._about()['family'])} of {model._about()['target'] or 'an unnamed target'}",
        facts=_facts(model, columns),
        sections=sections,
        version=version,
        date=datetime.date.today().isoformat(),
    )


def _capital(text: str) -> str:
    return text[:1].upper() + text[1:]


def _facts(model: Model, columns: Columns | None) -> list[tuple[str, str]]:
    about = model._about()
    reads = about["reads"]
    more = f" and {len(reads) - _MOST_ROWS} more" if len(reads) > _MOST_ROWS else ""
    facts = [
        ("document", f"{about['document']}, version {about['version']}"),
        ("family", about["family"]),
        ("target", about["target"]),
        ("categories", ", ".join(about["targetCategories"])),
        ("distribution", about["distribution"]),
        ("link", about["link"]),
        ("mean", about["mean"]),
        ("end time", about["endTime"]),
        ("strata", about["strata"]),
        ("reads", ", ".join(reads[:_MOST_ROWS]) + more),
        ("covariances", "yes" if about["hasCovariances"] else "none"),
    ]
    if columns is not None:
        facts.append(("cases", f"{_rows(columns):,}"))
    return [(name, value) for name, value in facts if value]


def _rows(columns: Columns) -> int:
    return len(next(iter(columns.values()), []))


# ---- Pictures ----


class _Drawer:
    """Draws pictures, whose identifiers don't meet on one page."""

    def __init__(self) -> None:
        self._count = 0

    def draw(self, title: str, on: Callable[[Axes], object], height: float = _HEIGHT) -> Picture:
        """A picture of what is drawn on its axes."""
        self._count += 1
        figure = Figure(figsize=(_WIDTH, height), layout="constrained")
        buffer = io.StringIO()
        with warnings.catch_warnings(), matplotlib.rc_context(_STYLE):
            warnings.filterwarnings("ignore", message="Glyph .* missing")  # the reader's fonts have it
            on(figure.subplots())
            figure.savefig(buffer, format="svg", transparent=True)
        return Picture(Markup(_inline(buffer.getvalue(), f"p{self._count}-")), title)


# Texts stay texts, which can be read aloud and searched for.
_STYLE: dict[Any, Any] = {"svg.fonttype": "none", "svg.hashsalt": "velscore", "font.size": 10}


def _inline(svg: str, prefix: str) -> str:
    """A drawing as an element of a page: without prologue and metadata, with identifiers of its own."""
    svg = re.sub(r"<metadata>.*?</metadata>", "", svg[svg.index("<svg") :], flags=re.DOTALL)
    svg = re.sub(r"<svg [^>]*?(viewBox=\"[^\"]*\")[^>]*>", r"<svg \1 aria-hidden=\"true\">", svg, count=1)
    svg = svg.replace(r"\"", '"')
    tags = re.compile(r"<[^>]*>")
    return tags.sub(lambda tag: _own_names(tag.group(), prefix), svg)


def _own_names(tag: str, prefix: str) -> str:
    tag = re.sub(r' id="', f' id="{prefix}', tag)
    tag = re.sub(r'href="#', f'href="#{prefix}', tag)
    return tag.replace("url(#", f"url(#{prefix}")


def _attempt(section: Section, draw: Callable[[], Picture]) -> None:
    """Adds a picture to a section, or why there is none."""
    try:
        section.pictures.append(draw())
    except Error as why:
        section.notes.append(f"{why.text}.")


# ---- The model ----


def _new(title: str) -> Section:
    return Section(title, [], [], [], [])


def _number(value: float | None) -> str:
    return "" if value is None or value != value else f"{value:.6g}"


def _equation(model: Model, columns: Columns | None, drawer: _Drawer) -> Section:
    section = _new("Equation")
    equations = model._about()["equations"]
    terms = sum(len(equation["terms"]) for equation in equations)
    left = _MOST_ROWS
    for equation in equations:
        name = _predictor(equation)
        section.lines.append(f"{name} =" if equation["terms"] else f"{name} = 0")
        shown = sorted(
            sorted(range(len(equation["terms"])), key=lambda i: -abs(equation["terms"][i]["beta"]))[:left]
        )
        for i in shown:
            term = equation["terms"][i]
            sign = "-" if term["beta"] < 0 else "+"
            section.lines.append(f"  {sign} {_number(abs(term['beta']))}{_times(term)}")
        left -= len(shown)
    if terms > _MOST_ROWS:
        section.notes.append(f"The largest {_MOST_ROWS} of {terms:,} terms are shown.")
    return section


def _predictor(equation: dict[str, Any]) -> str:
    """What the sum of an equation is called."""
    category = equation.get("category")
    of = f" of {category}" if category else ""
    return f"linear predictor{of}{' and below' if equation.get('cumulative') else ''}"


def _times(term: dict[str, Any]) -> str:
    """What a beta is multiplied by; nothing of a constant."""
    if not term["factors"]:
        return ""
    name = term["label"] or term["parameter"]
    point = term.get("referencePoint")
    return f" × {name}" if point is None else f" × ({name} - {_number(point)})"


_COEFFICIENTS = [
    ("estimate", "estimate"),
    ("std_err", "standard error"),
    ("t_value", "t"),
    ("z_value", "z"),
    ("p_value", "p"),
    ("ci_lower", "lower 95%"),
    ("ci_upper", "upper 95%"),
    *(
        (f"{ratio}_ratio{end}", f"{ratio} ratio{limit}")
        for ratio in ("odds", "hazard")
        for end, limit in (("", ""), ("_lower", ", lower"), ("_upper", ", upper"))
    ),
]


def _coefficients(model: Model, columns: Columns | None, drawer: _Drawer) -> Section:
    section = _new("Coefficients")
    rows = [row for row in model.coefficients() if row["estimate"] is not None]
    if not rows:
        section.notes.append("The model has none.")
        return section
    shown = _plots.largest(rows, _MOST_ROWS)
    keys = [(k, n) for k, n in _COEFFICIENTS if any(row.get(k) is not None for row in shown)]
    if all(row["std_err"] is None for row in rows):
        section.notes.append(
            "The document has no covariances: there are no standard errors, p values and limits."
        )
    note = f"The largest {len(shown)} of {len(rows):,} are shown." if len(shown) < len(rows) else ""
    cells = [
        [_plots.coefficient_label(row), *(_number(row.get(key)) for key, _ in keys)] for row in shown
    ]
    head = ["term", *(name for _, name in keys)]
    section.tables.append(Table(head, cells, tuple(range(1, len(head))), note))
    height = 1.0 + 0.26 * len(shown)
    _attempt(
        section,
        lambda: drawer.draw(
            "Coefficients, constants left out",
            lambda ax: _plots.plot_coefficients(model, _MOST_ROWS, False, ax),
            height,
        ),
    )
    return section


def _effects(model: Model, columns: Columns | None, drawer: _Drawer) -> Section:
    section = _new("Effects")
    about = model._about()
    fields = fields_of(model)
    skipped = {about["endTime"], about["strata"], about["trials"]} if about["endTime"] else {about["trials"]}
    names = [name for name in fields if name not in skipped]
    weights = _weights(model, columns)
    chosen = sorted(names, key=lambda name: -weights.get(name, 0.0))[:_MOST_EFFECTS]
    if len(chosen) < len(names):
        section.notes.append(
            f"Those of the largest {len(chosen)} of {len(names):,} columns are shown."
        )
    where = "the table's means and most frequent values" if columns else "the model's reference, or 0"
    section.notes.append(f"How the score goes with one column, while the others are at {where}.")
    unknown = []
    for name in (name for name in names if name in chosen):
        try:
            effect = _plotdata.effect_of(model, name, columns)
        except OptionError:
            unknown.append(name)
            continue
        finite = any(np.isfinite(band.values).any() for _, bands in effect.groups for band in bands)
        if not finite:
            section.notes.append(f"{name}: no score where the other columns are held.")
            continue
        on = functools.partial(_plots.draw_effect, model, effect)
        section.pictures.append(drawer.draw(f"Effect of {name}", on))
    if unknown:
        section.notes.append(
            f"Where {', '.join(unknown)} lie{'s' if len(unknown) == 1 else ''} isn't known without a "
            "table of cases."
        )
    return section


def _weights(model: Model, columns: Columns | None) -> dict[str, float]:
    """How much a column moves a linear predictor: its largest beta, times its spread in the table."""
    fields = fields_of(model)
    largest: dict[str, float] = {}
    for equation in model._about()["equations"]:
        for term in equation["terms"]:
            for factor in term["factors"]:
                name = factor["predictor"]
                largest[name] = max(largest.get(name, 0.0), abs(term["beta"]))
    for name in largest:
        if columns is not None and name in fields and fields[name].is_number:
            numbers = _plotdata.there(_plotdata.numbers_of(columns.get(name, [])))
            largest[name] *= float(numbers.std()) if numbers.size else 0.0
    return largest


def _contrasts(model: Model, columns: Columns | None, drawer: _Drawer) -> Section | None:
    contrasts = model._about()["contrasts"]
    if not contrasts:
        return None
    section = _new("Contrasts")
    for contrast in contrasts[:_MOST_CONTRASTS]:
        width = len(contrast["rows"][0]) if contrast["rows"] else 0
        head = [contrast["predictor"], *(str(i + 1) for i in range(min(width, _MOST_ROWS)))]
        rows = [
            [category, *(_number(value) for value in row[:_MOST_ROWS])]
            for category, row in zip(contrast["categories"], contrast["rows"])
        ]
        note = (
            f"The first {_MOST_ROWS} of {len(rows):,} categories are shown."
            if len(rows) > _MOST_ROWS
            else ""
        )
        section.tables.append(Table(head, rows[:_MOST_ROWS], tuple(range(1, len(head))), note))
    if len(contrasts) > _MOST_CONTRASTS:
        section.notes.append(f"The first {_MOST_CONTRASTS} of {len(contrasts):,} are shown.")
    return section


def _survival(model: Model, columns: Columns | None, drawer: _Drawer) -> Section | None:
    about = model._about()
    if not about["baseline"]:
        return None
    section = _new("Survival")
    held = _plotdata.held_values(model, columns)
    strata = [stratum["value"] for stratum in about["baseline"]] if about["strata"] else [None]
    cases = {name: [value] * len(strata) for name, value in held.items()}
    by = about["strata"] or None
    if by:
        cases[by] = strata
    title = f"Survival of the reference case by {by}" if by else "Survival of the reference case"
    _attempt(
        section,
        lambda: drawer.draw(
            title, lambda ax: _plots.draw_survival(_plotdata.survival_of(model, cases, by), ax)
        ),
    )
    told = [f"{n} = {_plotdata.short(v)}" for n, v in held.items() if n not in (by, about["endTime"])]
    section.notes.append("The reference case: " + ", ".join(told[:_MOST_ROWS]) + ".")
    return section


def _notices(model: Model) -> Section:
    section = _new("Notices of the document")
    about = model._about()
    section.notes.extend(str(notice) for notice in about["notices"][:_MOST_ROWS])
    section.notes.extend(str(change) for change in about["adapted"][:_MOST_ROWS])
    if not section.notes:
        section.notes.append("There are none.")
    return section


# ---- The table ----


def _of_table(
    model: Model, columns: Columns, observed: str | Sequence[Any] | None, drawer: _Drawer
) -> Iterator[Section]:
    scores = _new("Scores")
    _attempt(
        scores,
        lambda: drawer.draw(
            "How the scores spread", lambda ax: _plots.draw_scores(model, columns, ax)
        ),
    )
    yield scores
    yield _against_observed(model, columns, observed, drawer)
    yield _values(model, columns)
    yield _extremes(model, columns)


def _against_observed(
    model: Model, columns: Columns, observed: str | Sequence[Any] | None, drawer: _Drawer
) -> Section:
    section = _new("Scores beside observed values")
    if observed is None:
        section.notes.append("There is no observed column: no calibration, no ROC curve.")
        return section
    is_share = bool(model.classes_)
    try:
        pairs = _plotdata.compared(model, columns, observed, "calibration")
    except OptionError as why:
        section.notes.append(f"{why.text}.")
        return section
    section.notes.append(f"{len(pairs[0].scores):,} rows have a score and an observed value.")
    _attempt(
        section,
        lambda: drawer.draw(
            "Calibration: observed over scored, with 95% limits",
            lambda ax: _plots.draw_calibration(pairs, is_share, 10, ax),
        ),
    )
    if is_share:
        _attempt(section, lambda: drawer.draw("ROC", lambda ax: _plots.draw_roc(pairs, ax)))
    return section


def _values(model: Model, columns: Columns) -> Section:
    section = _new("Missing and unlisted values")
    scored = model.score(_plotdata.read_of(model, columns), columns=["status", "status_field"])
    without = [field for field, status in zip(scored["status_field"], scored["status"]) if status != 0]
    section.notes.append(f"{len(without):,} of {len(scored['status']):,} rows have no score.")
    rows = []
    for field in fields_of(model).values():
        values = columns.get(field.name, [])
        missing = [_plotdata.is_missing(value, field.categories) for value in values]
        listed = set(field.categories)
        unlisted = sum(
            1
            for value, is_missing in zip(values, missing)
            if listed and not is_missing and _plotdata.text_of(value) not in listed
        )
        counts = [sum(missing), unlisted, without.count(field.name)]
        if any(counts):
            rows.append((field.name, counts))
    if not rows:
        section.notes.append("No value that the model reads is missing or unlisted.")
        return section
    worst = sorted(rows, key=lambda row: -sum(row[1]))[:_MOST_ROWS]
    note = f"The worst {len(worst)} of {len(rows):,} columns are shown." if len(worst) < len(rows) else ""
    section.tables.append(
        Table(
            ["column", "missing", "unlisted", "rows without a score"],
            [[name, *(f"{count:,}" for count in counts)] for name, counts in worst],
            (1, 2, 3),
            note,
        )
    )
    return section


def _extremes(model: Model, columns: Columns) -> Section:
    section = _new("The most extreme cases")
    drawn = _plotdata.drawn_of(model)
    equations = {each.get("category"): each for each in model._about()["equations"] if each["terms"]}
    # Of categories one that has an equation, so that there are terms to tell.
    result = next((each for each in drawn.results if each.label in equations), drawn.results[0])
    category = result.label if result.label in equations else next(iter(equations), None)
    read = _plotdata.read_of(model, columns)
    scores = _plotdata.scores_of(model, read, [result])[0].values
    order = [int(row) for row in np.argsort(scores, kind="stable") if np.isfinite(scores[row])]
    if not order:
        section.notes.append("No row has a score.")
        return section
    half = _EXTREMES // 2
    chosen = order if len(order) <= _EXTREMES else order[:half] + order[-half:]
    terms = model.explain(_plotdata.rows_of(read, chosen))
    what = drawn.axis if len(drawn.results) == 1 else f"probability of {result.label}"
    rows = [
        [f"{row + 1:,}", _number(float(scores[row])), _contributions(terms, place + 1, category)]
        for place, row in enumerate(chosen)
    ]
    sum_of = _predictor(equations.get(category, {}))
    note = f"The terms that contribute most to the {sum_of}, {_MOST_TERMS} at most."
    section.tables.append(Table(["row", what, "how it comes about"], rows, (0, 1), note))
    return section


def _contributions(terms: Columns, row: int, category: str | None) -> str:
    """The largest contributions of a row, in the equation of a category or else the first."""
    equations: dict[str | None, list[tuple[str, float, float]]] = {}
    for i, each in enumerate(terms["row"]):
        if each == row and terms["term"][i] is not None:
            addend = terms["term"][i], terms["value"][i], terms["contribution"][i]
            equations.setdefault(terms["equation"][i], []).append(addend)
    own = equations.get(category, next(iter(equations.values()), []))
    if category in equations and None in equations and category is not None:
        # Of an ordinal model: what all categories share, and a threshold.
        own = [*_shared(equations[None], own[0]), *own[1:]]
    found = sorted((each for each in own if each[2]), key=lambda each: -abs(each[2]))
    return "; ".join(
        f"{term} ({_number(value)}) {contribution:+.4g}"
        for term, value, contribution in found[:_MOST_TERMS]
    )


def _shared(
    terms: list[tuple[str, float, float]], taken: tuple[str, float, float]
) -> list[tuple[str, float, float]]:
    """The terms of the predictor that all categories share, with the sign with which it is taken."""
    _, value, contribution = taken
    sign = 1.0 if contribution == value else -1.0
    return [(term, value, sign * contribution) for term, value, contribution in terms]
