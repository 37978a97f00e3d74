"""A page that shows a model, and how it does on a table."""

from __future__ import annotations

import os

from ._model import Model, load, needing

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Any

    from ._model import Document


def report(
    model: Model | Document,
    df: Any = None,
    observed: str | Sequence[Any] | None = None,
    path: str | os.PathLike[str] | None = None,
) -> str:
    """A page about a model, HTML: equation, coefficients, effects, contrasts, survival, notices.

    With a table also how its scores spread, missing and unlisted values by column, and the most
    extreme cases explained; with an observed column (its name, or a sequence) calibration and ROC.
    The page is one file: pictures inside it, no script, nothing that is fetched. What can't be shown
    is said on the page. Written to `path` if there is one; its text is the answer either way.
    An observed column that the table doesn't have, or a sequence of another length, is an OptionError.

    Needs matplotlib and Jinja2: pip install 'velscore[report]'.

    >>> page = report("examples/swiss-fertility/model.pmml")
    >>> page.startswith("<!DOCTYPE html>")
    True
    """
    pages = needing("matplotlib", "reports", "._page")
    needing("jinja2", "reports", "._page")
    page: str = pages.page_of(model if isinstance(model, Model) else load(model), df, observed)
    if path is not None:
        with open(path, "w", encoding="utf-8") as file:
            file.write(page)
    return page
