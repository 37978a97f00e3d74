"""Pictures: what is drawn, beside the command's scores and plain arithmetic."""

import csv
import importlib.util
import io

import matplotlib

matplotlib.use("agg")

import numpy as np
import pandas as pd
import pytest
from matplotlib import pyplot
from matplotlib.axes import Axes

import velscore
from conftest import columns_of_csv, command, paired
from kinds import KINDS
from test_tables import DOCUMENT, GOOD

CARS = "examples/motor-cars/model.pmml"
BIRTHS = "examples/birth-weight/model.pmml"
VETERANS = "examples/veteran-lung-cancer/model.pmml"


@pytest.fixture(autouse=True)
def no_figure_is_left():
    yield
    pyplot.close("all")


@pytest.fixture
def cars():
    return velscore.load(CARS), pd.read_csv("examples/motor-cars/cases.csv")


def by_command(model, rows, tmp_path, verb="score", *more):
    """The command's scores of dicts."""
    text = io.StringIO()
    writer = csv.DictWriter(text, list(rows[0]))
    writer.writeheader()
    writer.writerows(rows)
    (tmp_path / "rows.csv").write_text(text.getvalue())
    found = columns_of_csv(command(verb, model, tmp_path / "rows.csv", *more))
    return {name: values if "" in values else [_number(v) for v in values] for name, values in found.items()}


def _number(text):
    try:
        return float(text)
    except ValueError:
        return text


def test_an_effect_is_the_commands_scores_with_others_at_mean_and_mode(cars, tmp_path):
    model, frame = cars
    ax = model.plot_effect("wt", frame)
    (line,) = ax.get_lines()
    x, y = line.get_data()
    assert (x[0], x[-1], len(x)) == (frame["wt"].min(), frame["wt"].max(), 101)
    held = {"hp": round(frame["hp"].mean()), "cyl": 6, "am": "manual"}  # hp is of whole numbers
    scores = by_command(CARS, [{"wt": repr(float(wt)), **held} for wt in x], tmp_path)
    assert list(y) == scores["prediction"]
    band = ax.collections[0].get_paths()[0].vertices
    assert min(band[:, 1]) == min(scores["ci_lower"])
    assert max(band[:, 1]) == max(scores["ci_upper"])


def test_an_effect_of_categories_by_a_second_column(cars, tmp_path):
    model, frame = cars
    ax = model.plot_effect("cyl", frame, by="am", at={"wt": 3.0, "hp": 120}, level=0.5)
    assert [tick.get_text() for tick in ax.get_xticklabels()] == ["4", "6", "8"]
    assert [text.get_text() for text in ax.get_legend().get_texts()] == ["am = automatic", "am = manual"]
    for kind, drawn in paired(["automatic", "manual"], ax.containers):
        rows = [{"wt": 3.0, "hp": 120, "cyl": cyl, "am": kind} for cyl in (4, 6, 8)]
        scores = by_command(CARS, rows, tmp_path, "score", "--level", "0.5")
        assert list(drawn[0].get_ydata()) == scores["prediction"]
        lower = [segment[0][1] for segment in drawn[2][0].get_segments()]
        assert lower == pytest.approx(scores["ci_lower"], rel=1e-14)


def test_an_effect_by_a_number_has_its_quartiles(cars):
    model, frame = cars
    ax = model.plot_effect("wt", frame, by="hp")
    quartiles = [round(v) for v in np.quantile(frame["hp"], [0.25, 0.5, 0.75])]
    shown = [text.get_text() for text in ax.get_legend().get_texts()]
    assert shown == [f"hp = {v}" for v in dict.fromkeys(quartiles)]


def test_without_a_table_a_cox_model_is_at_its_reference(tmp_path):
    ax = velscore.load(VETERANS).plot_effect("trt")
    (drawn,) = ax.containers
    rows = [{"trt": t, "karno": 58.56934306569343, "celltype": "squamous", "time": 999} for t in (1, 2)]
    assert list(drawn[0].get_ydata()) == by_command(VETERANS, rows, tmp_path, "score", "--columns", "risk")["risk"]


def test_the_probability_of_the_category_that_isnt_the_reference(tmp_path):
    ax = velscore.load(BIRTHS).plot_effect("age", values=[20, 30], at={"race": "black", "ht": "yes"})
    rows = [{"age": age, "race": "black", "ht": "yes"} for age in (20, 30)]
    assert list(ax.get_lines()[0].get_ydata()) == by_command(BIRTHS, rows, tmp_path)["probability(low)"]
    assert ax.get_ylabel() == "probability of low"


@pytest.mark.parametrize("kind", [k for k in KINDS])
def test_tables_of_every_kind(kind):
    model = velscore.load(DOCUMENT)
    (line,) = model.plot_effect("x", KINDS[kind](GOOD), at={"sex": "m"}).get_lines()
    x, y = line.get_data()
    assert (x[0], x[-1]) == (3.0, 4.0)
    assert list(y) == [1 + 2 * each + 10 for each in x]


def test_coefficients_are_the_commands_with_their_limits(cars):
    said = columns_of_csv(command("inspect", CARS, "--coefficients", "--csv"))
    ax = cars[0].plot_coefficients()
    assert [t.get_text() for t in ax.get_yticklabels()] == said["label"][1:]  # without the intercept
    (drawn,) = ax.containers
    assert list(drawn[0].get_xdata()) == [float(v) for v in said["estimate"][1:]]
    lower, upper = np.array([s[:, 0] for s in drawn[2][0].get_segments()]).T
    assert lower == pytest.approx([float(v) for v in said["ci_lower"][1:]], rel=1e-12)
    assert upper == pytest.approx([float(v) for v in said["ci_upper"][1:]], rel=1e-12)
    assert len(cars[0].plot_coefficients(intercept=True).get_yticklabels()) == 8
    few = cars[0].plot_coefficients(most=2)
    assert [t.get_text() for t in few.get_yticklabels()] == ["ammanual", "ammanual:wt"]  # t 2.78, -2.53
    assert few.get_title() == "the largest 2 of 7"


def test_survival_is_the_commands_curve_and_by_a_column_its_mean(tmp_path):
    model = velscore.load(VETERANS)
    frame = pd.read_csv("examples/veteran-lung-cancer/cases.csv").drop(columns="time")
    said = columns_of_csv(command("curve", VETERANS, "examples/veteran-lung-cancer/cases.csv"))
    ax = model.plot_survival(frame)
    assert len(ax.get_lines()) == 4
    rows = [i for i, row in enumerate(said["row"]) if row == "2"]
    x, y = ax.get_lines()[1].get_data()
    assert list(x) == [0.0, *(float(said["time"][i]) for i in rows)]
    assert list(y) == [1.0, *(float(said["survival"][i]) for i in rows)]
    two = pd.DataFrame({"trt": [1, 1], "karno": [60, 20], "celltype": ["large", "large"]})
    one, other = (line.get_ydata() for line in model.plot_survival(two).get_lines())
    (mean,) = (line.get_ydata() for line in model.plot_survival(two, by="celltype").get_lines())
    assert list(mean) == pytest.approx(list((one + other) / 2), rel=1e-15)


# Predictions of DOCUMENT are 1 + 2 x + 10 (sex is m).
def test_calibration_of_a_mean():
    model = velscore.load(DOCUMENT)
    table = {"x": [0.0, 1.0, 2.0, 3.0], "sex": ["f"] * 4, "y": [2.0, 4.0, 4.0, 8.0]}
    (drawn,) = model.plot_calibration(table, "y", bins=2).containers
    assert drawn[0].get_xydata().tolist() == [[2.0, 3.0], [6.0, 6.0]]
    lower = [segment[0][1] for segment in drawn[2][0].get_segments()]
    assert lower == pytest.approx([3 - 1.959963984540054, 6 - 2 * 1.959963984540054])  # sd/sqrt(2): 1, 2


def births(observed):
    ages = list(range(20, 20 + len(observed)))  # older, less likely low
    return {"age": ages, "race": ["white"] * len(ages), "ht": ["no"] * len(ages), "seen": observed}


def test_calibration_of_a_share_has_wilsons_limits():
    model = velscore.load(BIRTHS)
    table = births(["low", "low", "low", "normal"])
    (drawn,) = model.plot_calibration(table, "seen", bins=1).containers
    assert list(drawn[0].get_ydata()) == [0.75]
    assert drawn[0].get_xdata()[0] == pytest.approx(sum(model.predict_proba(table)["low"]) / 4)
    # 3 of 4, z = 1.96: (0.75 + z²/8 ± z sqrt(0.1875/4 + z²/64)) / (1 + z²/4)
    assert drawn[2][0].get_segments()[0][:, 1] == pytest.approx([0.300642, 0.954413], abs=1e-6)


def test_roc_counts_pairs():
    model = velscore.load(BIRTHS)
    ax = model.plot_roc(births(["low", "normal", "low", None, "normal"]), "seen")
    line = ax.get_lines()[0]
    # From the youngest on: low, normal, low, (unknown), normal. 3 of the 4 pairs stand right.
    assert line.get_xydata().tolist() == [[0, 0], [0, 0.5], [0.5, 0.5], [0.5, 1], [1, 1]]
    assert line.get_label() == "low: area 0.750"


def test_ties_of_roc_count_half():
    table = births(["low", "normal"])
    table["age"] = [30, 30]
    ax = velscore.load(BIRTHS).plot_roc(table, table["seen"])
    assert ax.get_lines()[0].get_xydata().tolist() == [[0, 0], [1, 1]]
    assert ax.get_lines()[0].get_label() == "low: area 0.500"


def test_scores_are_counted(cars):
    model, frame = cars
    frame.loc[2, "wt"] = np.nan
    ax = model.plot_scores(frame)
    corners = ax.patches[0].get_xy()
    scores = model.predict(frame).dropna()
    assert (corners[:, 0].min(), corners[:, 0].max()) == (scores.min(), scores.max())
    widths, heights = np.diff(corners[:, 0]), corners[:-1, 1]
    bin_width = widths[widths > 0][0]
    assert np.sum((widths * heights)[widths > 0]) == pytest.approx(bin_width * 5)  # a row has none


def test_the_given_axes_are_drawn_on(cars):
    _, ax = pyplot.subplots()
    assert cars[0].plot_coefficients(ax=ax) is ax
    assert isinstance(cars[0].plot_scores(cars[1]), Axes)


def test_a_dollar_or_an_underscore_in_a_name_is_drawn_as_it_is():
    model = velscore.load(DOCUMENT.replace(b'"f"', b'"_$a$"').replace(b'"sex"', b'"_$s$"'))
    ax = model.plot_effect("x", {"x": [1.0, 2.0], "_$s$": ["m", "_$a$"]}, by="_$s$")
    assert [t.get_text() for t in ax.get_legend().get_texts()] == [r" _\$s\$ = _\$a\$", r" _\$s\$ = m"]
    ax.figure.canvas.draw()  # a formula would fail here


@pytest.mark.parametrize(
    ("draw", "told"),
    [
        (lambda m: m.plot_effect("nix"), "reads no nix"),
        (lambda m: m.plot_effect("x"), "give a table"),
        (lambda m: m.plot_effect("x", GOOD, by="x"), "another column"),
        (lambda m: m.plot_effect("x", GOOD, at={"nix": 1}), "reads no nix"),
        (lambda m: m.plot_effect("x", values=[]), "values is empty"),
        (lambda m: m.plot_survival(GOOD), "no survival curves"),
        (lambda m: m.plot_roc(GOOD, "x"), "models with categories"),
        (lambda m: m.plot_calibration(GOOD, "nix"), "no column nix"),
        (lambda m: m.plot_calibration(GOOD, [1.0]), "1 values, and the table 2 rows"),
        (lambda m: m.plot_calibration(GOOD, [None, None]), "no row has both"),
        (lambda m: m.plot_calibration(GOOD, "x", bins=0), "bins is 0"),
        (lambda m: m.plot_scores({"x": [None], "sex": ["m"]}), "no row has a score"),
    ],
)
def test_what_cant_be_drawn_is_told(draw, told):
    with pytest.raises(velscore.OptionError, match=told):
        draw(velscore.load(DOCUMENT))


def test_one_observed_category_alone_has_no_roc():
    model = velscore.load(BIRTHS)
    with pytest.raises(velscore.OptionError, match="all observed cases are low"):
        model.plot_roc(births(["low", "low"]), "seen")
    with pytest.raises(velscore.OptionError, match="all observed cases are not low"):
        model.plot_roc(births(["normal"]), "seen")


def test_without_matplotlib_what_to_install_is_told(monkeypatch):
    monkeypatch.setattr(importlib.util, "find_spec", lambda name, *more: None)
    with pytest.raises(ImportError, match=r"pip install 'velscore\[report\]'"):
        velscore.load(DOCUMENT).plot_coefficients()
    with pytest.raises(ImportError, match=r"pip install 'velscore\[report\]'"):
        velscore.report(DOCUMENT)
