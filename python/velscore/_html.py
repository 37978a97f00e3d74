"""How a model looks in a notebook."""

from __future__ import annotations

from html import escape

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable
    from typing import Any

_MOST_TERMS = 30


def _table(head: Iterable[str], rows: Iterable[Iterable[Any]]) -> str:
    def line(tag: str, cells: Iterable[Any]) -> str:
        return "<tr>" + "".join(f"<{tag}>{escape(str(c))}</{tag}>" for c in cells) + "</tr>"

    return "<table>" + line("th", head) + "".join(line("td", row) for row in rows) + "</table>"


def _equation(equation: dict[str, Any]) -> str:
    terms = equation["terms"]
    rows = [(term["label"], repr(term["beta"])) for term in terms[:_MOST_TERMS]]
    if len(terms) > _MOST_TERMS:
        rows.append((f"and {len(terms) - _MOST_TERMS} more", ""))
    category = equation.get("category")
    head = "term" if category is None else f"term of {category}"
    return _table((head, "coefficient"), rows) if rows else ""


def model_html(about: dict[str, Any]) -> str:
    """The description of a model as HTML, all texts of the document escaped."""
    facts = [
        ("family", f"{about['family']} ({about['class']})"),
        ("target", about["target"]),
        ("reads", ", ".join(about["reads"])),
    ]
    for label, key in (("distribution", "distribution"), ("link", "link"), ("strata", "strata")):
        if about[key]:
            facts.append((label, about[key]))
    parts = [_table(("velscore.Model", ""), facts)]
    parts += [_equation(equation) for equation in about["equations"]]
    columns = [(c["column"], c["meaning"]) for c in about["columns"]]
    parts.append(_table(("result", "what it is"), columns))
    return "<div>" + "".join(parts) + "</div>"
