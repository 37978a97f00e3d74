"""Loading, errors, copies, threads, and how a model shows itself."""

import copy
import io
import pathlib
import pickle
import re
import threading
import warnings

import pandas as pd
import polars as pl
import pyarrow as pa
import pytest

import velscore
from conftest import ROOT, columns_of_csv, command, paired
from kinds import plain
from test_tables import DOCUMENT, GOOD
from velscore._kinds import Run, kind_of

PATH = "examples/motor-cars/model.pmml"


def test_a_document_is_a_path_bytes_or_an_open_file():
    text = pathlib.Path(PATH).read_bytes()
    with open(PATH, "rb") as file:
        documents = [PATH, pathlib.Path(PATH), text, bytearray(text), memoryview(text), file, io.BytesIO(text)]
        for document in documents:
            assert velscore.load(document).inspect()["target"] == "mpg"


@pytest.mark.parametrize("document", [3, None, io.StringIO("<PMML/>"), "<PMML/>"], ids=str)
def test_what_is_no_document_is_told(document):
    with pytest.raises(TypeError, match="binary|document"):
        velscore.load(document)


def test_a_file_that_isnt_there():
    with pytest.raises(FileNotFoundError):
        velscore.load("nix.pmml")


def test_a_faulty_document_tells_its_place():
    with pytest.raises(velscore.DocumentError, match="not well-formed") as caught:
        velscore.load(b"<PMML>\n <a", name="mine.pmml")
    error = caught.value
    assert (error.code, error.file, error.line) == (269103, "mine.pmml", 2)
    assert error.remedy in str(error) and "[269103]" in str(error)
    assert isinstance(error, (velscore.Error, ValueError))


def test_errors_are_pickled():
    with pytest.raises(velscore.TableError) as caught:
        velscore.load(DOCUMENT).predict({"x": [1.0]})
    again = pickle.loads(pickle.dumps(caught.value))
    assert (again.text, again.code, again.field) == (caught.value.text, 269303, "sex")


@pytest.mark.parametrize(
    ("option", "value"),
    [("nan", "x"), ("policy", "x"), ("level", 2.0), ("level", 0), ("columns", ["nix"])],
)
def test_options_that_cant_be_are_refused(option, value):
    with pytest.raises(velscore.Error, match=option if option != "columns" else "nix"):
        velscore.load(DOCUMENT).score(GOOD, **{option: value})


def test_a_level_is_of_one_call():
    model = velscore.load("examples/swiss-fertility/model.pmml")
    table = "examples/swiss-fertility/cases.csv"
    wide, narrow, again = (velscore.scan_csv(table, model, level=v).read().values(2) for v in (0.99, 0.5, 0.99))
    assert wide == again
    assert all(w < n for w, n in zip(wide, narrow))


def test_notices_are_warned_of():
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        model = velscore.load("tests/data/published/general-linear.pmml")
    assert [w.category for w in told] == [velscore.DocumentWarning] * len(model.inspect()["notices"])
    assert told
    assert told[0].filename == __file__
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        copy.copy(model)  # a copy is no news


def test_reports_of_documents():
    assert velscore.check(DOCUMENT)["ok"] and velscore.load(DOCUMENT).check()["ok"]
    refused = velscore.check(b"<x/>")
    assert not refused["ok"]


def test_verification():
    model = velscore.load("tests/data/cases/glz-verification-birthwt/model.pmml")
    report = model.verify()
    assert (report["records"], report["compared"], report["differences"]) == (8, 8, [])
    with pytest.raises(velscore.DocumentError):
        velscore.load(DOCUMENT).verify()


def test_copies_are_read_from_the_text():
    model = velscore.load(DOCUMENT, name="mine")
    for again in (pickle.loads(pickle.dumps(model)), copy.deepcopy(model), copy.copy(model)):
        assert again.predict(GOOD) == [17.0, 9.0]
        assert again.inspect()["document"] == "mine"


def test_one_model_serves_many_threads():
    model = velscore.load(DOCUMENT)
    table = pl.DataFrame({"x": [float(i) for i in range(20_000)], "sex": ["f"] * 20_000})
    expected = [1 + 2 * x for x in table["x"]]
    wrong = []

    def work():
        for _ in range(10):
            if model.predict(table).to_list() != expected:
                wrong.append(1)

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong


def test_a_model_shows_what_it_is_and_escapes_what_the_document_says():
    evil = DOCUMENT.replace(b'"sex"', b'"&lt;script>"')
    model = velscore.load(evil)
    assert repr(model) == "<velscore.Model: general linear model of y by <script>, x>"
    html = model._repr_html_()
    assert "&lt;script&gt;" in html and "<script" not in html
    assert "prediction" in html


def test_a_row_at_a_time():
    score = velscore.load(DOCUMENT).bind(["sex", "x"])
    assert score("m", 3) == {"prediction": 17.0}
    assert score({"x": 4.0, "sex": "f", "more": 1}) == {"prediction": 9.0}
    assert score({"x": 4.0}) == {"prediction": None}
    with pytest.raises(TypeError, match="2"):
        score(1.0)
    with pytest.raises(TypeError, match='"x"'):
        score("m", [3])
    everything = velscore.load(DOCUMENT).bind(["sex", "x"], results=None)("m", None)
    assert (everything["prediction"], everything["status"], everything["status_field"]) == (None, 90029, "x")


def test_a_stream_is_read_once():
    model = velscore.load(PATH)
    stream = velscore.scan_csv("examples/motor-cars/cases.csv", model, keep="wt")
    assert sum(len(table) for table in stream) == 6
    assert list(stream) == []
    stream = velscore.scan_csv("examples/motor-cars/cases.csv", model)
    assert pa.table(stream).num_rows == 6
    with pytest.raises(ValueError, match="once"):
        pa.table(stream)


def test_scores_outlive_their_model():
    model = velscore.load(PATH)
    stream = velscore.scan_csv("examples/motor-cars/cases.csv", model)
    del model
    assert pl.DataFrame(stream).height == 6


def test_curves():
    model = velscore.load("examples/veteran-lung-cancer/model.pmml")
    frame = pd.read_csv("examples/veteran-lung-cancer/cases.csv").drop(columns="time")
    frame.index = list("abcd")
    curves = model.curve(frame)
    assert list(curves.columns) == ["time", "survival", "cum_hazard"]
    assert list(dict.fromkeys(curves.index)) == list("abcd")
    assert model.curve(pl.from_pandas(frame)).columns == ["row", "time", "survival", "cum_hazard"]
    with pytest.raises(velscore.OptionError):
        velscore.load(PATH).curve(frame)


@pytest.mark.parametrize("name", ["motor-cars", "birth-weight", "veteran-lung-cancer"])
def test_explanations_are_the_commands(name):
    folder = ROOT / "examples" / name
    said = columns_of_csv(command("explain", folder / "model.pmml", folder / "cases.csv", "--long"))
    model = velscore.load(folder / "model.pmml")
    frame = pd.read_csv(folder / "cases.csv")
    for kind in (pd.DataFrame, pl.DataFrame, pa.table, lambda c: pd.DataFrame(c).to_records(index=False)):
        columns = plain(model.explain(kind(frame.to_dict("list"))))
        for column in columns:
            found = ["" if v is None or v != v else v for v in columns[column]]
            texts = [t if isinstance(v, str) else float(t) for v, t in paired(found, said[column])]
            assert found == texts, column
    terms = model.explain(pl.from_pandas(frame).lazy()).collect()
    assert terms["term"].to_list() == said["term"]


@pytest.mark.parametrize(
    ("words", "options"),
    [
        (["--top", "2"], {"top": 2}),
        (["--top", "0"], {"top": 0}),
        (["--baseline", "mean"], {"baseline": "mean"}),
        (["--baseline", "2", "--top", "1"], {"baseline": 2, "top": 1}),
    ],
)
def test_explanations_are_the_commands_with_options(words, options):
    folder = ROOT / "examples" / "birth-weight"
    model = velscore.load(folder / "model.pmml")
    frame = pd.read_csv(folder / "cases.csv")
    said = columns_of_csv(command("explain", folder / "model.pmml", folder / "cases.csv", "--long", *words))
    kinds = (pd.DataFrame, pl.DataFrame, pa.table, lambda c: pl.DataFrame(c).lazy(), dict)
    for kind in kinds:
        terms = model.explain(kind(frame.to_dict("list")), **options)
        terms = terms.collect() if isinstance(terms, pl.LazyFrame) else terms
        columns = plain(terms)
        for column in ("term", "value", "contribution"):
            found = ["" if v is None or v != v else v for v in columns[column]]
            texts = [t if isinstance(v, str) else float(t) for v, t in zip(found, said[column], strict=True)]
            assert found == texts, column


def test_a_baseline_may_be_of_another_table():
    model = velscore.load(DOCUMENT)
    case = {"x": [3.0], "sex": ["m"]}
    others = {"x": [1.0, None, 5.0], "sex": ["f", "f", "m"]}
    # y = 1 + 2 x + 10 [sex = m], beside the mean of 1 and 5, of f and m, and beside row 3
    for table in (others, pd.DataFrame(others), pl.DataFrame(others).lazy(), pa.table(others).to_reader()):
        assert model.explain(case, baseline=("mean", table))["contribution"] == [0.0, 0.0, 5.0]
    assert model.explain(case, baseline=(3, others))["contribution"] == [0.0, -4.0, 0.0]
    reader = pa.table(others).to_reader()
    with pytest.raises(velscore.OptionError, match="reads the cases twice"):
        model.explain(reader, baseline="mean")
    assert model.explain(pa.table(case).to_reader(), baseline=("mean", others)).read_all().num_rows == 3


@pytest.mark.parametrize(
    ("options", "said"),
    [
        ({"top": -1}, "top is -1; expected is a whole number of 0 or more"),
        ({"top": 1.5}, "top is 1.5"),
        ({"top": True}, "top is True"),
        ({"baseline": "median"}, "baseline is 'median'; expected is 'mean' or the number of a row, from 1"),
        ({"baseline": 0}, "baseline is 0"),
        ({"baseline": 9}, "'baseline_row' is '9'; expected is a row of the baseline's table"),
        ({"baseline": 2}, "expected is a row that has a score; this one has the status 90029"),
    ],
)
def test_baselines_that_there_are_not_are_refused(options, said):
    model = velscore.load(DOCUMENT)
    with pytest.raises(velscore.OptionError, match=re.escape(said)):
        model.explain({"x": [1.0, None], "sex": ["m", "f"]}, **options)


def test_a_frames_explanations_have_the_index_of_their_rows():
    model = velscore.load(DOCUMENT)
    frame = pd.DataFrame({"x": [3.0, None, 4.0], "sex": ["m", "f", "f"]}, index=list("abc"))
    terms = model.explain(frame)
    assert list(dict.fromkeys(terms.index)) == list("abc")
    assert list(terms.columns) == ["equation", "term", "value", "contribution"]
    assert terms["contribution"].groupby(level=0).sum().to_dict() == {"a": 17.0, "b": 0.0, "c": 9.0}
    assert terms.loc["b"].isna().all()
    with pytest.raises(velscore.OptionError, match="level"):
        model.explain(frame, level=0.9)


@pytest.mark.parametrize("name", ["motor-cars", "birth-weight", "veteran-lung-cancer"])
def test_coefficients_are_the_commands(name):
    path = f"examples/{name}/model.pmml"
    said = columns_of_csv(command("inspect", path, "--coefficients", "--csv"))
    rows = velscore.load(path).coefficients()
    assert list(rows[0]) == list(said)
    for column, texts in said.items():
        for row, text in paired(rows, texts):
            value = row[column]
            assert (value or "") == text if not isinstance(value, float) else value == float(text)


def test_probabilities_are_of_models_with_categories():
    with pytest.raises(velscore.OptionError, match="no probabilities"):
        velscore.load(PATH).predict_proba({"wt": [1.0]})


def _address(table):
    model = velscore.load(DOCUMENT)
    run = Run(model._core, {}, model.feature_names_in_)
    source = kind_of(table).source(table, run)
    return source.buffers(source.names.index("x"))[0][3]


def test_numbers_of_pandas_and_numpy_are_read_where_they_lie():
    numbers = pd.DataFrame(GOOD)
    assert _address(numbers) == numbers["x"].to_numpy().ctypes.data
    array = numbers["x"].to_numpy()
    assert _address({"x": array, "sex": ["m", "f"]}) == array.ctypes.data


class Given:
    """What the library is handed of a table, for others to read."""

    def __init__(self, table):
        model = velscore.load(DOCUMENT)
        self._capsule = kind_of(table).source(table, Run(model._core, {}, model.feature_names_in_))

    def __arrow_c_stream__(self, requested_schema=None):
        return self._capsule


@pytest.mark.parametrize("kind", [pl.DataFrame, pa.table], ids=["Polars", "pyarrow"])
def test_numbers_of_polars_and_pyarrow_are_handed_on_where_they_lie(kind):
    table = kind(GOOD)
    (batch,) = pa.RecordBatchReader.from_stream(Given(table))
    column = table["x"]
    address = _lies_at(column) if kind is pl.DataFrame else column.chunk(0).buffers()[1].address
    assert batch.column("x").buffers()[1].address == address


def _lies_at(series):
    return series.to_numpy(allow_copy=False).ctypes.data


def test_columns_of_arrow_pass_without_a_copy():
    model = velscore.load(DOCUMENT)
    table = pa.table(GOOD)
    kept = model.score(table, keep="x").column("x").chunk(0)
    assert kept.buffers()[1].address == table.column("x").chunk(0).buffers()[1].address
    frame = pl.DataFrame(GOOD)
    assert _lies_at(model.score(frame, keep="x")["x"]) == _lies_at(frame["x"])


def test_the_lists_and_arrays_of_a_table_may_go_before_the_scores():
    model = velscore.load(DOCUMENT)
    table = pl.DataFrame({"x": [float(i) for i in range(1000)], "sex": ["f"] * 1000})
    scored = model.score(table, keep=True)
    del table
    assert scored["x"].sum() == 499_500
