"""The examples of docstrings and of the page run as they stand."""

import doctest
import importlib
import re

import pytest

from conftest import ROOT


@pytest.mark.parametrize("module", ["velscore", "velscore._model", "velscore._report", "velscore.sklearn"])
def test_docstrings(module):
    found = doctest.testmod(importlib.import_module(module))
    assert found.attempted > 0
    assert found.failed == 0


def test_the_page():
    page = (ROOT / "docs/python.md").read_text()
    examples = re.findall(r"```pycon\n(.*?)```", page, re.DOTALL)
    assert len(examples) > 3
    test = doctest.DocTestParser().get_doctest("".join(examples), {}, "docs/python.md", None, 0)
    runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE)
    runner.run(test)
    assert runner.failures == 0
