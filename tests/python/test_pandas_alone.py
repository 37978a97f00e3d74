"""Frames of pandas with nothing else at hand but NumPy: `scripts/test-recipes.sh` runs this with old releases too."""

from __future__ import annotations

import datetime
import math
import warnings

import numpy as np
import pandas as pd
import pytest

import velscore
from conftest import CASES, columns_of_csv, number

NAMES = sorted(folder.name for folder in CASES.iterdir() if folder.is_dir())


def typed(texts):
    """Numbers where all texts are, None for what is missing."""
    values = [None if text in ("", "NA") else text for text in texts]
    numbers = [None if value is None else number(value) for value in values]
    return numbers if all(n is not None for n, v in zip(numbers, values) if v is not None) else values


def categories(columns):
    frame = pd.DataFrame(columns)
    texts = [name for name, values in columns.items() if any(isinstance(v, str) for v in values)]
    return frame.astype({name: "category" for name in texts})


FORMS = {
    "plain": pd.DataFrame,
    "objects": lambda c: pd.DataFrame({n: pd.Series(v, dtype=object) for n, v in c.items()}),
    "nullable": lambda c: pd.DataFrame(c).convert_dtypes(),
    "categories": categories,
    "sparse": lambda c: pd.DataFrame(
        {n: v if any(isinstance(x, str) for x in v) else pd.arrays.SparseArray(np.array(v, float)) for n, v in c.items()}
    ),
}


def plain(frame):
    return {
        name: [None if isinstance(v, float) and math.isnan(v) else v for v in frame[name]]
        for name in frame.columns
    }


@pytest.mark.parametrize("form", FORMS)
@pytest.mark.parametrize("name", NAMES)
def test_frames_are_scored_as_lists_are(name, form):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", velscore.DocumentWarning)
        model = velscore.load(CASES / name / "model.pmml")
    columns = {n: typed(t) for n, t in columns_of_csv((CASES / name / "input.csv").read_text()).items()}
    scored = model.score(FORMS[form](columns))
    assert isinstance(scored, pd.DataFrame)
    assert plain(scored) == model.score(columns)


CASES_OF_CARS = {"wt": [2.62, None, 3.0], "hp": [110, 93, 90], "cyl": ["6", "4", "5"], "am": ["manual", "auto", None]}


@pytest.fixture(scope="module")
def cars():
    return velscore.load("examples/motor-cars/model.pmml")


def test_index_kept_columns_and_names(cars):
    frame = pd.DataFrame(CASES_OF_CARS, index=pd.Index(["c", "a", "b"], name="car"))
    scored = cars.score(frame, keep=["am", "wt"], columns=["prediction", "status"])
    assert list(scored.columns) == ["am", "wt", "prediction", "status"]
    assert scored.index.equals(frame.index) and scored.index.name == "car"
    assert scored["am"].equals(frame["am"]) and scored["wt"].equals(frame["wt"])
    predicted = cars.predict(frame)
    assert predicted.name == "prediction" and predicted.index.equals(frame.index)
    assert list(cars.explain(frame).index.unique()) == ["c", "a", "b"]


def test_a_number_is_read_where_it_lies():
    from velscore._kinds import Run, kind_of

    frame = pd.DataFrame({"wt": np.array([2.62, 3.0])})
    model = velscore.load("examples/motor-cars/model.pmml")
    source = kind_of(frame).source(frame, Run(model._core, {}, ["wt"]))
    assert source.buffers(0)[0][3] == frame["wt"].to_numpy().ctypes.data


def test_odd_labels_of_columns(cars):
    frame = pd.DataFrame(CASES_OF_CARS)
    expected = list(cars.predict(frame))[0]
    for more in (["wt", "x", "x"], [1, True, None], [("a", "b"), 2.5, pd.Timestamp(0)]):
        odd = pd.concat([frame, pd.DataFrame([[1.0, 2.0, 3.0]] * 3)], axis=1)
        odd.columns = pd.Index([*frame.columns, *more], dtype=object)
        if "wt" in more:
            with pytest.raises(velscore.TableError, match="wt"):
                cars.predict(odd)
        else:
            assert list(cars.predict(odd))[0] == expected
    levels = frame.copy()
    levels.columns = pd.MultiIndex.from_tuples([(name, "") for name in frame.columns])
    called = {name: str((name, "")) for name in frame.columns}
    assert list(cars.predict(levels, map=called))[0] == expected


def test_moments_with_and_without_a_zone():
    document = b"""<PMML version="4.4"><Header/><DataDictionary>
      <DataField name="t" optype="continuous" dataType="dateDaysSince[1970]"/>
      <DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
    <GeneralRegressionModel modelType="generalLinear" functionName="regression"><MiningSchema>
      <MiningField name="t"/><MiningField name="y" usageType="target"/></MiningSchema>
      <ParameterList><Parameter name="p0"/><Parameter name="p1"/></ParameterList>
      <FactorList/><CovariateList><Predictor name="t"/></CovariateList>
      <PPMatrix><PPCell value="1" predictorName="t" parameterName="p1"/></PPMatrix>
      <ParamMatrix><PCell parameterName="p0" beta="1"/><PCell parameterName="p1" beta="2"/></ParamMatrix>
    </GeneralRegressionModel></PMML>"""
    model = velscore.load(document)
    moments = pd.to_datetime(pd.Series(["1970-01-04", None, "1970-01-05"]))
    for column in (moments, moments.dt.tz_localize("UTC"), pd.Series([datetime.date(1970, 1, 4), None, datetime.date(1970, 1, 5)])):
        predicted = model.predict(pd.DataFrame({"t": column}))
        assert predicted[0] == 7.0 and math.isnan(predicted[1]) and predicted[2] == 9.0


@pytest.mark.parametrize(
    ("values", "expected"),
    [
        (pd.array([2, None, 3], dtype="Int64"), [True, False, True]),
        (pd.array([True, None, False], dtype="boolean"), [True, False, True]),
        (pd.array(["2", None, "3"], dtype="string"), [True, False, True]),
        (pd.array([2.0, None, float("inf")], dtype="Float64"), [True, False, None]),
        (np.array([2, 3, 4], dtype=">i2"), [True, True, True]),
        (np.array([2, 3, 4], dtype="f2"), [True, True, True]),
    ],
    ids=lambda v: str(getattr(v, "dtype", "")),
)
def test_columns_of_any_number(cars, values, expected):
    case = pd.DataFrame({"wt": values, "hp": 110, "cyl": "6", "am": "manual"})
    scored = cars.score(case)
    for row, is_scored in enumerate(expected):
        if is_scored is not None:
            assert (scored["status"][row] == 0) == is_scored
            by_list = cars.score({n: [None if case[n].isna()[row] else case[n].tolist()[row]] for n in case})
            assert (scored["prediction"][row] == by_list["prediction"][0]) == is_scored
