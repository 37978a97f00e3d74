"""Tables of one row: what is answered by the columns that were found before is what a table is answered."""

import datetime
import decimal
import pathlib
import pickle
import threading

import numpy as np
import pandas as pd
import pytest

import velscore
from test_cases import NAMES, cases, loaded
from test_tables import DOCUMENT
from velscore._kinds import kind_of

DATES = DOCUMENT.replace(
    b'name="x" optype="continuous" dataType="double"',
    b'name="x" optype="continuous" dataType="dateDaysSince[1970]"',
)
REPLACED = DOCUMENT.replace(
    b'<MiningField name="x"/>', b'<MiningField name="x" missingValueReplacement="3" invalidValueTreatment="asIs"/>'
)
DOCUMENTS = {"numbers": DOCUMENT, "dates": DATES, "replaced": REPLACED}

# What has one meaning in every column: Model.predict answers it without making a table.
PLAIN = [
    3, 3.0, 0.1, -0.0, 0, 1e15, 1e300, -1e-300, float("nan"), float("inf"), float("-inf"), None,
    2**53, 2**53 + 1, -(2**53) - 1, 2**63, 10**20, "3", " 4 ", "4e0", "1e400", "nix", "", " ", "NA", "NaN",
    "m", "f", "z", "\u00e9", "1970-01-04", "1970-01-04T00:00:00", "x" * 5000,
]  # fmt: skip

# What the road of tables has to read, or to refuse.
OTHERS = [
    True, False, np.float64(3), np.float32(0.1), np.int16(4), np.bool_(True), np.str_("m"), pd.NA, pd.NaT,
    decimal.Decimal("3.5"), datetime.date(1970, 1, 4), datetime.datetime(1970, 1, 4, 12), datetime.time(1),
    np.datetime64("1970-01-04"), "a\0b", "\ud800", b"3", 1j, [3], {}, object(), np.array([3.0]),
]  # fmt: skip


def one_row(row):
    return {"list of dicts": [row], "dict of lists": {name: [value] for name, value in row.items()}}


def told(predict):
    """What comes of a call, so that two can be compared: values by their bits, errors by all that they tell."""
    try:
        answer = predict()
    except Exception as error:
        return type(error), str(error), vars(error)
    return type(answer), getattr(answer, "dtype", None), [(type(value), repr(value)) for value in answer]


def by_table(model, table):
    """The road of tables: an option has it taken."""
    return told(lambda: model.predict(table, policy=None))


def by_row(model, table):
    """The short road alone: what it answers, None where it leaves the table."""
    return model._predict_row(kind_of(table), table)


@pytest.mark.parametrize("document", DOCUMENTS)
@pytest.mark.parametrize("column", ["x", "sex"])
@pytest.mark.parametrize("value", PLAIN + OTHERS, ids=lambda v: repr(v)[:20])
def test_both_roads_tell_the_same_of_every_value(document, column, value):
    model = velscore.load(DOCUMENTS[document])
    for kind, table in one_row({"x": 1.0, "sex": "m", column: value}).items():
        assert told(lambda: model.predict(table)) == by_table(model, table), kind
        assert told(lambda: model.predict(table)) == by_table(model, table), (kind, "again")


@pytest.mark.parametrize("value", PLAIN, ids=lambda v: repr(v)[:20])
def test_plain_values_take_the_short_road(value):
    model = velscore.load(DOCUMENT)
    for table in one_row({"x": 1.0, "sex": value, "more": value}).values():
        assert by_row(model, table) is not None


@pytest.mark.parametrize("value", OTHERS, ids=lambda v: repr(v)[:20])
def test_others_dont(value):
    model = velscore.load(DOCUMENT)
    for table in one_row({"x": value, "sex": "m"}).values():
        assert by_row(model, table) is None


class Text(str):
    pass


@pytest.mark.parametrize(
    "table",
    [
        [{"x": 1.0}],
        [{"x": 1.0, "SEX": "m"}],
        {"x": [1.0]},
        [{}],
        [None],
        [[1.0, "m"]],
        [("x", 1.0)],
        {"x": [1.0], "sex": ["m", "f"]},
        {"x": [1.0], "sex": "m"},
        {"x": [1.0], "sex": ("m",)},
        {"x": [1.0], "sex": np.array(["m"])},
        {"x": [1.0], "sex": []},
        {"x": 1.0, "sex": "m"},
        {"x": [1.0], "sex": ["m"], "id": [1, 2]},
        [{"x": 1.0, "sex": "m", 1: 2}],
        [{"x": 1.0, "sex": "m", Text("x"): 2.0}],
        [{1: 1.0, "1": 2.0, "x": 1.0, "sex": "m"}],
        [{"x": 1.0, "sex": "m", "a\0b": 1}],
        [{"x": 1.0, "sex": "m", "\ud800": 1}],
        [{"x": 1.0, "sex": "m", "more": object()}],
        [{"x": 1.0, "sex": "m"}, {"x": 2.0, "sex": "f"}],
        [],
        {},
    ],
    ids=repr,
)
def test_both_roads_tell_the_same_of_every_form(table):
    model = velscore.load(DOCUMENT)
    expected = by_table(model, table)
    assert told(lambda: model.predict(table)) == expected
    assert told(lambda: model.predict(table)) == expected


@pytest.mark.parametrize("name", NAMES)
def test_every_case_is_answered_as_a_table_of_one_row(name):
    table = cases(name)
    model = loaded(name)
    short = 0
    for values in zip(*table.values()):
        for one in one_row(dict(zip(table, values))).values():
            assert told(lambda: model.predict(one)) == by_table(model, one)
            short += by_row(model, one) is not None
    assert short == 2 * len(next(iter(table.values())))


ARRAYS = [
    np.array([[1.5, -2.0]]), np.array([[np.nan, 1.0]]), np.array([[np.inf, 1.0]]), np.array([[1.5, -2.0]], ">f8"),
    np.array([[1.5, 0.1]], "f4"), np.array([[1, 2]]), np.array([[True, False]]), np.array([[1.0], [2.0]]),
    np.zeros((1, 3)), np.zeros((0, 2)), np.array([[3.0, 4.0], [5.0, 6.0]])[1:], np.array([[1.5, None]], dtype=object),
    np.ma.masked_array([[1.0, 2.0]], [[0, 1]]), np.array(["1.5"]),
]  # fmt: skip


@pytest.mark.parametrize("array", ARRAYS, ids=repr)
def test_both_roads_tell_the_same_of_arrays(array):
    numeric = DOCUMENT.replace(b'"categorical" dataType="string"', b'"categorical" dataType="double"')
    for document in (DOCUMENT, numeric.replace(b'value="m"', b'value="-2"').replace(b'value="f"', b'value="1.5"')):
        model = velscore.load(document)
        assert told(lambda: model.predict(array)) == by_table(model, array)


def test_a_plain_array_of_one_row_takes_the_short_road_and_may_be_written_to():
    model = velscore.load("examples/swiss-fertility/model.pmml")
    array = np.array([[17.0, 15.0, 12.0, 9.96, 22.2]])
    answer = by_row(model, array)
    assert answer.dtype == np.float64 and answer.tolist() == [74.61529723771785]
    answer[0] = 0.0
    assert model.predict(array).tolist() == [74.61529723771785]


def test_no_call_settles_anything_for_the_next():
    # As it stands, this model scores the first case of a table by another row of betas than the rest.
    text = pathlib.Path("examples/birth-weight/model.pmml").read_text().replace(' targetCategory="low"', ' targetCategory="normal"')
    text = text.replace('targetReferenceCategory="low"', 'targetReferenceCategory="normal" algorithmName="contrastLogistic"')
    model = velscore.load(text.encode(), as_is=True)
    row = {"race": "white", "ht": "yes", "age": 40.0}
    assert model.predict([row, row]) == ["low", "normal"]
    expected = model.predict([row], policy=None)
    assert [model.predict([row]) for _ in range(3)] == [expected] * 3
    assert by_row(model, [row]) == expected


def test_options_and_names_hold_for_their_call():
    model = velscore.load(REPLACED)
    row = [{"x": None, "sex": "f"}]
    assert model.predict(row) == by_row(model, row)
    assert model.predict(row, policy="substitute") == [7.0]
    assert model.predict([{"x": "?", "sex": "f"}], missing="?", policy="substitute") == [7.0]
    assert model.predict([{"w": 3.0, "sex": "f"}], map={"x": "w"}) == [7.0]
    with pytest.raises(velscore.TableError, match="row 1"):
        model.predict([{"x": "nix", "sex": "z"}], strict=True)
    assert model.predict([{"x": 3.0, "sex": "f"}]) == [7.0]


def test_few_forms_are_kept_and_none_is_pickled():
    model = velscore.load(DOCUMENT)
    for i in range(100):
        assert model.predict([{"x": float(i), "sex": "f", f"more{i}": None}]) == [1.0 + 2 * i]
        assert len(model._rows) <= 8
    assert model._rows
    again = pickle.loads(pickle.dumps(model))
    assert again._rows == {}
    assert again.predict([{"x": 3.0, "sex": "f"}]) == [7.0]


def test_threads_share_what_was_found():
    model = velscore.load(DOCUMENT)
    wrong = []

    def work(seed):
        for i in range(2000):
            x = float(seed * 10_000 + i)
            if model.predict([{"x": x, "sex": "f"}]) != [1 + 2 * x]:
                wrong.append(x)

    threads = [threading.Thread(target=work, args=(seed,)) for seed in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong


def test_a_key_that_calls_back_gets_its_own_answer():
    """Looking a key up may run code of others, which may score by the same model."""
    model = velscore.load(DOCUMENT)
    within = []

    class Name(str):
        calls = True
        __hash__ = str.__hash__

        def __eq__(self, other):
            if Name.calls:
                Name.calls = False
                within.append(model.predict([{"x": 100.0, "sex": "m"}]))
                Name.calls = True
            return str.__eq__(self, other)

    assert model.predict([{"x": 3.0, "sex": "f"}]) == [7.0]
    assert model.predict([{Name("sex"): "f", Name("x"): 3.0}]) == [7.0]
    assert within == [[211.0]] * len(within) != []
