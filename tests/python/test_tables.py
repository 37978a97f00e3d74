"""What becomes of odd values and odd tables, by the kind of the table."""

import datetime
import decimal
import mmap

import duckdb
import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest

import velscore
from kinds import KINDS, plain

# prediction = 1 + 2 x + 10 (sex is m) + 0.5 t, t in days from 1960: a number, a factor, a date.
DOCUMENT = b"""<PMML version="4.4"><Header/>
<DataDictionary>
  <DataField name="x" optype="continuous" dataType="double"/>
  <DataField name="sex" optype="categorical" dataType="string"><Value value="f"/><Value value="m"/></DataField>
  <DataField name="y" optype="continuous" dataType="double"/>
</DataDictionary>
<GeneralRegressionModel modelType="generalLinear" functionName="regression">
  <MiningSchema><MiningField name="x"/><MiningField name="sex"/><MiningField name="y" usageType="target"/></MiningSchema>
  <ParameterList><Parameter name="p0"/><Parameter name="p1"/><Parameter name="p2"/></ParameterList>
  <FactorList><Predictor name="sex"/></FactorList><CovariateList><Predictor name="x"/></CovariateList>
  <PPMatrix><PPCell value="1" predictorName="x" parameterName="p1"/>
    <PPCell value="m" predictorName="sex" parameterName="p2"/></PPMatrix>
  <ParamMatrix><PCell parameterName="p0" beta="1"/><PCell parameterName="p1" beta="2"/>
    <PCell parameterName="p2" beta="10"/></ParamMatrix>
</GeneralRegressionModel></PMML>"""

BAD = 90029  # a case with a value that the model doesn't take


@pytest.fixture(scope="module")
def model():
    return velscore.load(DOCUMENT)


def outcome(model, table, **options):
    """The prediction, or of a row without one the column at fault."""
    found = plain(model.score(table, columns=["prediction", "status", "status_field"], **options))
    rows = zip(found["prediction"], found["status"], found["status_field"])
    return [p if status == 0 else field for p, status, field in rows]


GOOD = {"x": [3.0, 4.0], "sex": ["m", "f"]}


@pytest.mark.parametrize("kind", KINDS)
def test_a_missing_number_and_a_missing_text_name_their_column(model, kind):
    table = KINDS[kind]({"x": [3.0, None, 3.0], "sex": ["m", "f", None]})
    assert outcome(model, table) == [17.0, "x", "sex"]


@pytest.mark.parametrize("kind", KINDS)
def test_a_category_that_isnt_listed_names_its_column(model, kind):
    assert outcome(model, KINDS[kind]({"x": [3.0, 4.0], "sex": ["m", "z"]})) == [17.0, "sex"]


@pytest.mark.parametrize("kind", KINDS)
def test_a_column_that_is_wanting_is_named(model, kind):
    with pytest.raises(velscore.TableError, match="'sex'|\"sex\"") as caught:
        plain(model.score(KINDS[kind]({"x": [3.0]})))
    assert caught.value.code == 269303
    assert caught.value.remedy


@pytest.mark.parametrize("kind", KINDS)
def test_surplus_columns_change_nothing(model, kind):
    table = KINDS[kind]({"a": ["p", "q"], **GOOD, "z": [None, 1.5]})
    assert outcome(model, table) == [17.0, 9.0]


@pytest.mark.parametrize("kind", KINDS)
def test_kept_columns_stand_in_front(model, kind):
    table = KINDS[kind]({"id": ["a", "b"], **GOOD, "prediction": [5.0, 6.0]})
    found = plain(model.score(table, keep=["prediction", "id"], columns="prediction"))
    assert found == {"input.prediction": [5.0, 6.0], "id": ["a", "b"], "prediction": [17.0, 9.0]}
    assert list(found) == ["input.prediction", "id", "prediction"]


@pytest.mark.parametrize("kind", KINDS)
def test_all_columns_can_be_kept(model, kind):
    found = plain(model.score(KINDS[kind](GOOD), keep=True, columns="prediction"))
    assert found == {**GOOD, "prediction": [17.0, 9.0]}


@pytest.mark.parametrize("kind", KINDS)
def test_a_kept_column_that_isnt_there_is_refused(model, kind):
    with pytest.raises(velscore.Error) as caught:
        plain(model.score(KINDS[kind](GOOD), keep="nix"))
    assert caught.value.code == 269311


@pytest.mark.parametrize("kind", KINDS)
def test_a_field_may_stand_under_another_name(model, kind):
    table = KINDS[kind]({"weight": [3.0, 4.0], "sex": ["m", "f"]})
    assert outcome(model, table, map={"x": "weight"}) == [17.0, 9.0]


@pytest.mark.parametrize("kind", KINDS)
def test_texts_may_mean_missing(model, kind):
    table = KINDS[kind]({"x": [3.0, 4.0], "sex": ["?", "f"]})
    assert outcome(model, table, missing="?", policy="status") == ["sex", 9.0]


@pytest.mark.parametrize("kind", KINDS)
def test_strict_raises_with_the_row(model, kind):
    with pytest.raises(Exception, match="row 2") as caught:
        plain(model.score(KINDS[kind]({"x": [3.0, None], "sex": ["m", "f"]}), strict=True))
    if kind not in ("pyarrow reader", "Polars lazy"):  # those who read raise their own
        assert isinstance(caught.value, velscore.TableError)
        assert (caught.value.row, caught.value.field) == (2, "x")


EMPTY = {
    "pandas": pd.DataFrame({"x": pd.Series([], dtype=float), "sex": pd.Series([], dtype=str)}),
    "Polars": pl.DataFrame(schema={"x": pl.Float64, "sex": pl.String}),
    "Polars lazy": pl.LazyFrame(schema={"x": pl.Float64, "sex": pl.String}),
    "pyarrow table of no chunk": pa.schema([("x", pa.float64()), ("sex", pa.string())]).empty_table(),
    "DuckDB": "SELECT 1.0 AS x, 'm' AS sex WHERE false",
    "NumPy records": np.empty(0, dtype=[("x", float), ("sex", object)]),
    "dict of lists": {"x": [], "sex": []},
    "dict of arrays": {"x": np.empty(0), "sex": np.empty(0, dtype=object)},
}


@pytest.mark.parametrize("kind", EMPTY)
def test_a_table_without_rows_has_results_without_rows(model, kind):
    table = duckdb.sql(EMPTY[kind]) if kind == "DuckDB" else EMPTY[kind]
    scored = model.score(table)
    if kind != "DuckDB":  # whose rows tell no names where there are none
        found = plain(scored)
        assert list(found) == ["prediction", "std_dev", "ci_lower", "ci_upper", "status", "status_field"]
        assert not any(found.values())
    else:
        assert scored.fetchall() == []


def test_a_list_without_rows(model):
    assert model.score([]) == []
    assert model.predict([]) == []


def test_duplicated_names_are_refused_where_the_model_reads_them(model):
    frame = pd.DataFrame([[3.0, 4.0, "m"]], columns=["x", "x", "sex"])
    with pytest.raises(velscore.TableError) as caught:
        model.predict(frame)
    assert caught.value.code == 269307
    table = pa.table([pa.array([3.0]), pa.array([4.0]), pa.array(["m"])], names=["x", "x", "sex"])
    with pytest.raises(velscore.TableError):
        model.predict(table)


def test_a_duplicated_name_that_isnt_read_is_surplus(model):
    frame = pd.DataFrame([[3.0, 1, 2, "m"]], columns=["x", "more", "more", "sex"])
    assert list(model.predict(frame)) == [17.0]
    assert model.predict(pa.Table.from_arrays([pa.array([v]) for v in (3.0, 1, 2, "m")], list(frame.columns))).to_pylist() == [17.0]


# A column for x, from what a row's own number is expected: 3 gives 7 (sex f), 4 gives 9.
NUMBERS = {
    "int8": pa.array([3, 4], pa.int8()),
    "uint64": pa.array([3, 4], pa.uint64()),
    "float32": pa.array([3.0, 4.0], pa.float32()),
    "decimal": pa.array([decimal.Decimal("3.00"), decimal.Decimal(4)], pa.decimal128(9, 2)),
    "text": pa.array(["3", " 4 "]),
    "large text": pa.array(["3", "4e0"], pa.large_utf8()),
    "dictionary of texts": pa.array(["3", "4"]).dictionary_encode(),
    "dictionary of numbers": pa.array([3.0, 4.0]).dictionary_encode(),
    "sliced": pa.array([9.0, 9.0, 3.0, 4.0, 9.0]).slice(2, 2),
    "chunked": pa.chunked_array([[3.0], [], [4.0]]),
}


@pytest.mark.parametrize("what", NUMBERS)
@pytest.mark.parametrize("kind", ["pyarrow", "Polars", "pandas"])
def test_numbers_of_any_type(model, kind, what):
    table = pa.table({"x": NUMBERS[what], "sex": ["f", "f"]})
    if kind == "Polars":
        table = pl.from_arrow(table)
    elif kind == "pandas":
        table = table.to_pandas(types_mapper=pd.ArrowDtype)
    assert outcome(model, table) == [7.0, 9.0]


TEXTS = {
    "utf8": pa.array(["m", None, "f"]),
    "large": pa.array(["m", None, "f"], pa.large_utf8()),
    "view": pa.array(["m", None, "f"], pa.string_view()),
    "dictionary with a null index": pa.array(["m", None, "f"]).dictionary_encode(),
    "dictionary with a null value": pa.DictionaryArray.from_arrays(
        pa.array([0, 1, 2], pa.int8()), pa.array(["m", None, "f"])
    ),
    "sliced": pa.array(["f", "m", None, "f"]).slice(1),
    "an empty text": pa.array(["m", "", "f"]),
    "NA": pa.array(["m", "NA", "f"]),
}


@pytest.mark.parametrize("what", TEXTS)
@pytest.mark.parametrize("kind", ["pyarrow", "Polars", "pandas"])
def test_texts_of_any_type(model, kind, what):
    if (kind, what) == ("pandas", "dictionary with a null value"):
        return  # which pandas can't hold
    table = pa.table({"x": [1.0, 1.0, 1.0], "sex": TEXTS[what]})
    if kind == "Polars":
        table = pl.from_arrow(table)
    elif kind == "pandas":
        table = table.to_pandas()
    assert outcome(model, table) == [13.0, "sex", 3.0]


def test_texts_behind_two_gigabytes(model):
    begin = 2**31 + 4096
    memory = mmap.mmap(-1, begin + 4096)  # of which the system gives the pages that are touched
    memory[begin : begin + 2] = b"mf"
    offsets = np.array([begin, begin + 1, begin + 1, begin + 2], dtype="i8")
    texts = pa.LargeStringArray.from_buffers(3, pa.py_buffer(offsets), pa.py_buffer(memory))
    assert texts.to_pylist() == ["m", "", "f"]
    table = pa.table({"x": [1.0, 1.0, 1.0], "sex": texts})
    assert outcome(model, table) == [13.0, "sex", 3.0]
    assert outcome(model, table.slice(2)) == [3.0]


# Values of lists, and what becomes of them: a prediction, or the column at fault.
VALUES = [
    ([3, 4.0], [7.0, 9.0]),
    ([True, False], [3.0, 1.0]),
    ([None, float("nan")], ["x", "x"]),
    (["3", "4e0"], [7.0, 9.0]),
    (["3", 4], [7.0, 9.0]),
    (["3", float("nan")], [7.0, "x"]),
    ([3, "nix"], [7.0, "x"]),
    ([pd.NA, 3], ["x", 7.0]),
    ([pd.NaT, 3], ["x", 7.0]),
    ([np.float32(3), np.int16(4)], [7.0, 9.0]),
    ([np.bool_(True), np.float64(3)], [3.0, 7.0]),
    ([decimal.Decimal("3"), 4], [7.0, 9.0]),
    ([2**53 + 1, 3], [2.0 * 9007199254740992 + 1, 7.0]),
    ([10**20, 3], [2e20, 7.0]),
    ([-0.0, 0], [1.0, 1.0]),
]


@pytest.mark.parametrize(("values", "expected"), VALUES, ids=[str(v) for v, _ in VALUES])
@pytest.mark.parametrize("kind", ["dict of lists", "list of dicts", "pandas objects"])
def test_values_of_python(model, kind, values, expected):
    assert outcome(model, KINDS[kind]({"x": values, "sex": ["f", "f"]})) == expected


@pytest.mark.parametrize("values", [[1j, 1.0], [b"3", b"4"], [[3], [4]], [object(), None]], ids=str)
def test_values_that_are_none_of_these_are_refused_with_column_and_row(model, values):
    with pytest.raises(TypeError, match='column "x" .* in row 1'):
        model.predict({"x": values, "sex": ["f", "f"]})


def test_nan_may_be_a_value_that_isnt_valid():
    document = DOCUMENT.replace(
        b'<MiningField name="x"/>', b'<MiningField name="x" missingValueReplacement="3" invalidValueTreatment="returnInvalid"/>'
    )
    replaced = velscore.load(document)
    for kind in ("pandas", "Polars", "NumPy records", "dict of lists", "dict of arrays"):
        nan = float("nan")
        table = KINDS[kind]({"x": [nan, 4.0], "sex": ["f", "f"]})
        assert outcome(replaced, table, policy="substitute") == [7.0, 9.0], kind
        assert outcome(replaced, table, policy="substitute", nan="invalid") == ["x", 9.0], kind


@pytest.mark.parametrize(
    "column",
    [
        pa.array([[1.0], [2.0]]),
        pa.array([{"a": 1}, {"a": 2}]),
        pa.array([b"1", b"2"]),
        pa.array([1, 2], pa.duration("s")),
    ],
    ids=lambda c: str(c.type),
)
def test_types_that_no_field_can_have_are_refused_by_name_but_may_be_kept(model, column):
    table = pa.table({"x": column, "sex": ["f", "f"]})
    with pytest.raises(velscore.TableError, match="'x'"):
        model.predict(table)
    table = pa.table({"x": [3.0, 4.0], "sex": ["f", "f"], "more": column})
    assert model.score(table, keep="more").column("more").to_pylist() == column.to_pylist()


def test_polars_null_columns_are_missing(model):
    table = pl.DataFrame({"x": [None, None], "sex": ["f", "m"]})
    assert table.dtypes[0] == pl.Null
    assert outcome(model, table) == ["x", "x"]


def test_polars_objects_may_stand_beside(model):
    table = pl.DataFrame({"x": [3.0], "sex": ["m"]}).with_columns(
        pl.Series("o", [object()], dtype=pl.Object)
    )
    assert outcome(model, table) == [17.0]


def test_a_slice_of_a_slice(model):
    table = pl.DataFrame({"x": [9.0, 3.0, 4.0, None], "sex": ["f", "m", "f", "f"]})
    assert outcome(model, table[1:][:2]) == [17.0, 9.0]
    assert outcome(model, table.to_pandas()[1:][:2]) == [17.0, 9.0]


def test_strided_and_swapped_arrays(model):
    numbers = np.array([3.0, 9.0, 4.0, 9.0])[::2]
    swapped = numbers.astype(">f8")
    for array in (numbers, swapped, np.asfortranarray(numbers), numbers.astype("f2")):
        assert list(model.predict({"x": array, "sex": ["f", "f"]})) == [7.0, 9.0]


def test_masked_arrays(model):
    masked = np.ma.masked_array([3.0, 4.0], mask=[False, True])
    assert outcome(model, {"x": masked, "sex": ["f", "f"]}) == [7.0, "x"]


def test_two_dimensions_take_the_models_order_or_names(model):
    table = np.array([["f", 3.0], ["m", 4.0]], dtype=object)
    assert model.feature_names_in_ == ["sex", "x"]
    assert list(model.predict(table)) == [7.0, 19.0]
    assert list(model.predict(table[:, ::-1], names=["x", "sex"])) == [7.0, 19.0]
    with pytest.raises(ValueError, match="3 columns"):
        model.predict(np.zeros((2, 3)))
    with pytest.raises(TypeError, match="1 dimensions"):
        model.predict(np.zeros(2))


def test_the_index_of_a_frame_is_kept(model):
    frame = pd.DataFrame(GOOD, index=["b", "a"])
    assert list(model.score(frame).index) == ["b", "a"]
    assert model.predict(frame)["a"] == 9.0
    assert model.predict(frame).name == "prediction"


def test_a_kept_column_of_pandas_stays_as_it_is(model):
    frame = pd.DataFrame({**GOOD, "when": pd.to_datetime(["2020-01-01", None]), "what": [{1}, {2}]})
    scored = model.score(frame, keep=["when", "what"])
    assert scored["when"].equals(frame["when"])
    assert scored["what"].tolist() == [{1}, {2}]


def test_a_lazy_frame_is_scored_batch_by_batch_and_when_it_is_collected(model):
    rows = 300_000
    frame = pl.DataFrame({"x": np.arange(rows, dtype=float), "sex": ["m"] * rows})
    lazy = model.score(frame.lazy(), keep="x")
    assert isinstance(lazy, pl.LazyFrame)
    found = lazy.filter(pl.col("x") >= rows - 2).select("prediction").collect()
    assert found["prediction"].to_list() == [11 + 2 * (rows - 2), 11 + 2 * (rows - 1)]
    assert lazy.head(2).collect()["prediction"].to_list() == [11.0, 13.0]


def test_a_reader_is_scored_as_it_is_read(model):
    asked = []

    def batches():
        for i in range(3):
            asked.append(i)
            yield pa.record_batch({"x": [float(i)], "sex": ["f"]})

    schema = pa.schema([("x", pa.float64()), ("sex", pa.string())])
    reader = model.score(pa.RecordBatchReader.from_batches(schema, batches()))
    assert asked == []
    assert reader.read_next_batch()["prediction"].to_pylist() == [1.0]
    assert asked == [0]
    assert reader.read_all()["prediction"].to_pylist() == [3.0, 5.0]


def test_whatever_speaks_arrow_is_a_table(model):
    class Stream:
        def __arrow_c_stream__(self, requested_schema=None):
            return pa.table(GOOD).__arrow_c_stream__()

    class Array:
        def __arrow_c_array__(self, requested_schema=None):
            return pa.RecordBatch.from_pydict(GOOD).__arrow_c_array__()

    for table in (Stream(), Array(), model.score(Stream(), keep=True)):
        scored = model.score(table, columns="prediction")
        assert isinstance(scored, velscore.Table)
        assert (len(scored), scored.names, scored.values(0)) == (2, ["prediction"], [17.0, 9.0])
        assert pl.DataFrame(scored).equals(pl.DataFrame(scored))  # as often as wanted


def test_what_is_no_table_is_told(model):
    for thing in (3, "x", None, {1, 2}, object()):
        with pytest.raises(TypeError, match="is no table"):
            model.predict(thing)
    with pytest.raises(TypeError, match="list of dicts"):
        model.predict([[1.0]])
    with pytest.raises(TypeError, match="a list or an array"):
        model.predict({"x": 3.0, "sex": "f"})
    with pytest.raises(ValueError, match="of one length"):
        model.predict({"x": [3.0], "sex": ["f", "m"]})


def test_times_and_dates():
    document = DOCUMENT.replace(
        b'name="x" optype="continuous" dataType="double"',
        b'name="x" optype="continuous" dataType="dateDaysSince[1970]"',
    )
    model = velscore.load(document)
    days = [datetime.date(1970, 1, 4), datetime.date(1970, 1, 5)]  # 3 and 4
    sex = ["f", "f"]
    frame = pd.DataFrame({"x": pd.to_datetime(days), "sex": sex})
    tables = {
        "dict": {"x": days, "sex": sex},
        "datetime": {"x": [datetime.datetime(1970, 1, 4), datetime.datetime(1970, 1, 5)], "sex": sex},
        "text": {"x": ["1970-01-04", "1970-01-05"], "sex": sex},
        "NumPy": {"x": np.array(days, dtype="M8[D]"), "sex": sex},
        "pandas": frame,
        "a zone": frame.assign(x=frame["x"].dt.tz_localize("UTC")),
        "Polars": pl.DataFrame({"x": days, "sex": sex}),
        "pyarrow": pa.table({"x": days, "sex": sex}),
    }
    for kind, table in tables.items():
        assert outcome(model, table) == [7.0, 9.0], kind
    assert outcome(model, {"x": np.array(["NaT", "1970-01-04"], dtype="M8[s]"), "sex": sex}) == ["x", 7.0]
