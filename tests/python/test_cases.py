"""Every folder of tests/data/cases, from tables of every kind: the bits that the command writes."""

import functools
import warnings

import pytest

import velscore
from conftest import CASES, columns_of_csv, command, number, paired
from kinds import KINDS, plain

NAMES = sorted(folder.name for folder in CASES.iterdir() if folder.is_dir())


@functools.lru_cache(maxsize=None)
def scored(name):
    folder = CASES / name
    return columns_of_csv(command("score", folder / "model.pmml", folder / "input.csv"))


@functools.lru_cache(maxsize=None)
def cases(name):
    """The table as a data frame would have it: columns of numbers where all of their texts are."""
    typed = {}
    for column, texts in columns_of_csv((CASES / name / "input.csv").read_text()).items():
        values = [None if text in ("", "NA") else text for text in texts]
        numbers = [None if value is None else number(value) for value in values]
        isNumeric = all(n is not None for n, value in zip(numbers, values) if value is not None)
        typed[column] = numbers if isNumeric else values
    return typed


@functools.lru_cache(maxsize=None)
def loaded(name):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", velscore.DocumentWarning)
        return velscore.load(CASES / name / "model.pmml")


@pytest.mark.parametrize("kind", KINDS)
@pytest.mark.parametrize("name", NAMES)
def test_scores_are_the_commands(name, kind):
    found = plain(loaded(name).score(KINDS[kind](cases(name))))
    expected = scored(name)
    assert list(found) == list(expected)
    for column, texts in expected.items():
        for row, (value, text) in enumerate(paired(found[column], texts), 1):
            if isinstance(value, (int, float)):
                assert value == float(text), (column, row)  # shortest digits: one double alone
            else:
                assert (value or "") == text, (column, row)


@pytest.mark.parametrize("name", NAMES)
def test_a_row_at_a_time_too(name):
    table = cases(name)
    model = loaded(name)
    names = [column for column in table if column in model.feature_names_in_]
    score = model.bind(names, results=None)
    expected = scored(name)
    for row, values in enumerate(zip(*(table[column] for column in names))):
        for column, value in score(*values).items():
            text = expected[column][row]
            same = value == float(text) if isinstance(value, (int, float)) else (value or "") == text
            assert same, (column, row)


@pytest.mark.parametrize("name", NAMES)
def test_files_too(name):
    stream = velscore.scan_csv(CASES / name / "input.csv", loaded(name))
    table = stream.read()
    for index, (column, texts) in enumerate(scored(name).items()):
        assert table.names[index] == column
        for value, text in paired(table.values(index), texts):
            same = value == float(text) if isinstance(value, (int, float)) else (value or "") == text
            assert same, column
