"""What the dictionary of a document says of the columns that a model reads."""

from __future__ import annotations

from typing import NamedTuple
from xml.etree import ElementTree

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any

    from ._model import Model


class Field(NamedTuple):
    """A column that a model reads."""

    name: str
    is_number: bool
    categories: list[str]  # as far as they are known without a table; none of a number
    reference: float | None  # where a number lies in the model, if the document says it
    is_whole: bool  # a number that has to be an integer


def fields_of(model: Model) -> dict[str, Field]:
    """The columns that the model reads, in its order."""
    if model._fields is None:
        model._fields = _fields(model._about(), _dictionary(model._text))
    return model._fields


def _fields(
    about: dict[str, Any], said: dict[str, tuple[bool, bool, list[str], float | None]]
) -> dict[str, Field]:
    categories = _categories(about)
    references = _references(about)
    of_texts = {*about["factors"], about["strata"]}
    fields = {}
    for name in about["reads"]:
        is_number, is_whole, listed, middle = said.get(name, _UNKNOWN)
        is_number = is_number and name not in of_texts
        fields[name] = Field(
            name,
            is_number,
            [] if is_number else listed or categories.get(name, []),
            references.get(name, middle) if is_number else None,
            is_number and is_whole,
        )
    return fields


_UNKNOWN: tuple[bool, bool, list[str], float | None] = (True, False, [], None)
_NUMBERS = ("integer", "float", "double")


def _dictionary(text: bytes) -> dict[str, tuple[bool, bool, list[str], float | None]]:
    """Of each DataField: whether it is a number, a whole one, its valid values, its interval's middle.

    The document was read by the library before, which refuses entities of its own.
    """
    found = {}
    for element in ElementTree.fromstring(text).iter():
        if _tag(element) != "DataField":
            continue
        listed = [
            child.get("value", "")
            for child in element
            if _tag(child) == "Value" and child.get("property", "valid") == "valid"
        ]
        kind = element.get("dataType", "double")
        is_number = element.get("optype") == "continuous" and kind in _NUMBERS
        name = element.get("name", "")
        found[name] = (is_number, kind == "integer", listed, _middle(element))
    return found


def _tag(element: ElementTree.Element) -> str:
    return str(element.tag).rpartition("}")[2]


def _middle(element: ElementTree.Element) -> float | None:
    for child in element:
        if _tag(child) == "Interval":
            try:
                return (float(child.get("leftMargin", "")) + float(child.get("rightMargin", ""))) / 2
            except ValueError:
                return None
    return None


def _categories(about: dict[str, Any]) -> dict[str, list[str]]:
    """Categories that the model tells of: those with terms, rows of contrasts, strata."""
    of_terms: dict[str, dict[str, None]] = {}
    for equation in about["equations"]:
        for term in equation["terms"]:
            for factor in term["factors"]:
                if "category" in factor:
                    of_terms.setdefault(factor["predictor"], {})[factor["category"]] = None
    found = {name: list(categories) for name, categories in of_terms.items()}
    found.update({c["predictor"]: list(c["categories"]) for c in about["contrasts"]})
    if about["strata"]:
        found[about["strata"]] = [stratum["value"] for stratum in about["baseline"]]
    return found


def _references(about: dict[str, Any]) -> dict[str, float]:
    """Where numbers lie: the point that a centred model counts from, the last time of a baseline."""
    found = {}
    for equation in about["equations"]:
        for term in equation["terms"]:
            factors = term["factors"]
            if len(factors) == 1 and factors[0].get("exponent") == 1.0 and "referencePoint" in term:
                found[factors[0]["predictor"]] = float(term["referencePoint"])
    if about["endTime"] and about["baseline"]:
        found[about["endTime"]] = max(float(stratum["maxTime"]) for stratum in about["baseline"])
    if about["trials"]:
        found[about["trials"]] = 1.0
    return found
