"""The page of a report: parsed, and what it says of a model and a table."""

import datetime
import gzip
import html.parser

import pandas as pd
import polars as pl
import pytest

import velscore
from conftest import CASES, ROOT
from test_tables import DOCUMENT, GOOD
from velscore.__main__ import main

EXAMPLES = sorted(path.parent.name for path in (ROOT / "examples").glob("*/model.pmml"))
BIRTHS = "examples/birth-weight/model.pmml"
EXAMPLE_OF_COX = "examples/veteran-lung-cancer/model.pmml"

_EMPTY = {"meta", "br", "hr", "img", "link"}


class Page(html.parser.HTMLParser):
    """A page's elements; nests are checked as they are read."""

    def __init__(self, text):
        super().__init__()
        self.elements = []
        self.sections = {}
        self._open = []
        self._texts = []
        self._section = None
        self.feed(text)
        assert self._open == []

    def handle_starttag(self, tag, attributes):
        self.elements.append((tag, dict(attributes)))
        if tag not in _EMPTY:
            self._open.append(tag)
        if tag in ("h1", "h2"):
            self._texts = []

    def handle_startendtag(self, tag, attributes):
        self.elements.append((tag, dict(attributes)))

    def handle_endtag(self, tag):
        assert self._open.pop() == tag
        if tag == "h2":
            self._section = "".join(self._texts)
            self.sections[self._section] = ""

    def handle_data(self, data):
        self._texts.append(data)
        if self._section is not None and "h2" not in self._open:
            self.sections[self._section] += data

    def count(self, tag):
        return sum(1 for name, _ in self.elements if name == tag)


def check_alone(page):
    """Nothing of a page is run or fetched, and its names are each there once."""
    tags = {tag for tag, _ in page.elements}
    assert not tags & {"script", "link", "img", "iframe", "object", "embed", "image", "base"}
    names = [attributes["id"] for _, attributes in page.elements if "id" in attributes]
    assert len(names) == len(set(names))
    for _, attributes in page.elements:
        for name, value in attributes.items():
            assert not name.startswith("on")
            if name in ("href", "xlink:href", "src", "clip-path", "style") and value:
                assert "http" not in value
                if "#" in value and "url" in value:
                    assert value[value.index("#") + 1 : value.index(")")] in names
                if name.endswith("href"):
                    assert value[1:] in names


@pytest.mark.parametrize("name", EXAMPLES)
def test_the_pages_of_the_examples_stand_alone(name):
    folder = ROOT / "examples" / name
    page = Page(velscore.report(folder / "model.pmml", pd.read_csv(folder / "cases.csv")))
    check_alone(page)
    assert list(page.sections)[:3] == ["Equation", "Coefficients", "Effects"]
    assert list(page.sections)[-1] == "Notices of the document"
    assert page.count("figure") == page.count("svg") >= 4
    assert page.count("figcaption") == page.count("figure")
    assert ("Survival" in page.sections) == (name == "veteran-lung-cancer")
    assert ("Contrasts" in page.sections) == (name == "birth-weight")


def test_who_made_it_and_when():
    text = velscore.report(DOCUMENT)
    assert f"Made by velscore {velscore.__version__} on {datetime.date.today()}" in text
    assert "<h1>General linear model of y</h1>" in text


def test_what_a_document_lacks_is_said():
    page = Page(velscore.report(DOCUMENT))
    assert "no covariances" in page.sections["Coefficients"]
    assert velscore.report(DOCUMENT).count("no standard errors") == 1
    assert "Where x lies isn't known without a table" in page.sections["Effects"]
    assert "There are none." in page.sections["Notices of the document"]
    assert "no observed column" in Page(velscore.report(DOCUMENT, GOOD)).sections["Scores beside observed values"]


def test_observed_values():
    frame = pd.read_csv("examples/birth-weight/cases.csv")
    frame["seen"] = ["low", "normal", "low", "normal"]
    section = Page(velscore.report(BIRTHS, frame, "seen")).sections["Scores beside observed values"]
    assert "4 rows have a score and an observed value" in section
    assert "low: area" in section and "Calibration" in section
    frame["seen"] = "low"
    section = Page(velscore.report(BIRTHS, frame, "seen")).sections["Scores beside observed values"]
    assert "all observed cases are low" in section and "Calibration" in section
    frame["seen"] = "other"
    section = Page(velscore.report(BIRTHS, frame, "seen")).sections["Scores beside observed values"]
    assert "no row has both" in section
    with pytest.raises(velscore.OptionError, match="there is none"):
        velscore.report(BIRTHS, observed="seen")


@pytest.mark.parametrize(
    "name, meant",
    [("sene", "Did you mean 'seen'?"), ("SEEN", "Did you mean 'seen'?"), ("outcome", None), ("", None)],
)
def test_an_observed_column_that_is_not_there_is_refused(name, meant):
    frame = pd.read_csv("examples/birth-weight/cases.csv").assign(seen="low")
    with pytest.raises(velscore.OptionError) as refused:
        velscore.report(BIRTHS, frame, name)
    assert refused.value.text == f"the table has no column {name}; it has {', '.join(frame.columns)}"
    assert refused.value.remedy == meant
    # of a Cox model too, which would have no use for it
    with pytest.raises(velscore.OptionError, match="no column seen"):
        velscore.report(EXAMPLE_OF_COX, pd.read_csv("examples/veteran-lung-cancer/cases.csv"), "seen")


def test_observed_values_of_another_number_are_refused():
    frame = pd.read_csv("examples/birth-weight/cases.csv")
    with pytest.raises(velscore.OptionError, match="observed has 1 values, and the table 4 rows"):
        velscore.report(BIRTHS, frame, ["low"])


def test_the_columns_of_a_wide_table_are_listed_in_part():
    wide = {f"c{i}": ["1"] for i in range(23)}
    with pytest.raises(velscore.OptionError, match="it has c0, .*, c19 and 3 more$"):
        velscore.report(BIRTHS, wide, "quite other")


def test_missing_and_unlisted_values_are_counted_by_column():
    table = {"x": [1.0, None, 3.0, 4.0, 5.0], "sex": ["m", "f", "z", "", "f"]}
    said = Page(velscore.report(DOCUMENT, table)).sections["Missing and unlisted values"].split()
    assert " ".join(said).startswith("3 of 5 rows have no score.")
    rows = " ".join(" ".join(said).split("without a score")[1].split())
    assert rows == "sex112 x101"  # column, then missing, unlisted, rows without a score


def test_the_most_extreme_cases_are_explained():
    table = {"x": [float(i) for i in range(30)], "sex": ["m"] * 30}  # prediction 11 + 2 x
    said = Page(velscore.report(DOCUMENT, table)).sections["The most extreme cases"]
    for row in (1, 2, 3, 4, 5, 26, 27, 28, 29, 30):
        x = row - 1
        terms = {"p1 (%g) %+g" % (x, 2 * x): 2 * x, "p2 (1) +10": 10, "p0 (1) +1": 1}
        expected = "; ".join(sorted((t for t in terms if terms[t]), key=lambda t: -terms[t]))
        assert expected in said
    assert "p1 (10)" not in said


# The betas of the documents times the values; a reference category has none of its own.
@pytest.mark.parametrize(
    ("name", "case", "score", "equation", "told"),
    [
        (
            "mlr-birthwt-race",
            {"age": 45, "lwt": 123, "smoke": "no", "ht": "no"},
            "probability of black",
            "linear predictor of black,",
            {"age (45)": -0.1336110519581403 * 45, "lwt (123)": 0.014088021396611665 * 123,
             "Intercept (1)": 0.09323751113302886},
        ),
        (
            "ordinal-logit-housing",
            {"Infl": "High", "Type": "Tower", "Cont": "High"},
            "probability of Low",
            "linear predictor of Low and below,",
            {"InflHigh (1)": -1.2888190638123214, "threshold (-0.496135)": -0.49613534383750058,
             "ContHigh (1)": -0.36028414994738484},
        ),
        (
            "ordinal-gzlm-logit-airquality",  # where the linear predictor is taken off the threshold
            {"Temp": 67.0, "Wind": 7.0, "Solar.R": 190.0},
            "probability of low",
            "linear predictor of low and below,",
            {"Temp (67)": -0.22047376541817007 * 67, "threshold (14.432)": 14.432013210792169,
             "Wind (7)": 1.8294750577934982, "Solar.R (190)": -1.4866902399129096},
        ),
    ],
)  # fmt: skip
def test_how_the_probability_of_a_category_comes_about(name, case, score, equation, told):
    page = Page(velscore.report(CASES / name / "model.pmml", {column: [value] for column, value in case.items()}))
    said = page.sections["The most extreme cases"]
    assert score in said
    assert f"contribute most to the {equation}" in said
    assert "; ".join(f"{term} {contribution:+.4g}" for term, contribution in told.items()) in said


def test_ratios_have_their_limits():
    section = Page(velscore.report(CASES / "ordinal-logit-housing/model.pmml")).sections["Coefficients"]
    assert " ".join(section.split()).count("odds ratioodds ratio, lowerodds ratio, upper") == 1
    # exp of -0.566394 and of its limits, by R
    assert "0.5675690.4623150.696785" in section
    assert "hazard ratio, lower" in velscore.report(CASES / "cox-veteran-uncentred/model.pmml")


EVIL = '<script>alert(1)</script><b onclick="x">&"\''


def test_markup_in_names_is_shown_and_does_nothing():
    escaped = EVIL.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
    document = DOCUMENT.decode()
    for text in ('"x"', '"sex"', '"y"', '"f"', '"m"', '"p2"'):
        document = document.replace(text, f'"{escaped}{text[1:]}')
    table = {EVIL + "x": [1.0, 2.0, None], EVIL + "sex": [EVIL + "m", EVIL + "f", "<i>z</i>"]}
    table["<u>seen</u>"] = [1.0, 2.0, 3.0]
    model = velscore.load(document.encode(), name=EVIL)
    text = velscore.report(model, table, "<u>seen</u>")
    page = Page(text)
    check_alone(page)
    assert not {"script", "b", "i", "u"} & {tag for tag, _ in page.elements}
    assert EVIL + "x" in page.sections["Missing and unlisted values"]
    assert EVIL + "p2" in page.sections["Coefficients"]
    assert any(EVIL in value for _, attributes in page.elements for value in attributes.values() if value)


def wide(count):
    """A model of many predictors, the later the more they count."""
    names = [f"v{i}" for i in range(count)]
    fields = "".join(f'<DataField name="{n}" optype="continuous" dataType="double"/>' for n in names)
    mining = "".join(f'<MiningField name="{n}"/>' for n in names)
    covariates = "".join(f'<Predictor name="{n}"/>' for n in names)
    parameters = "".join(f'<Parameter name="p{n}" label="{n}"/>' for n in names)
    cells = "".join(f'<PPCell value="1" predictorName="{n}" parameterName="p{n}"/>' for n in names)
    betas = "".join(f'<PCell parameterName="p{n}" beta="{i + 1}"/>' for i, n in enumerate(names))
    return f"""<PMML version="4.4"><Header/><DataDictionary>{fields}
      <DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
      <GeneralRegressionModel modelType="generalLinear" functionName="regression">
      <MiningSchema>{mining}<MiningField name="y" usageType="target"/></MiningSchema>
      <ParameterList>{parameters}</ParameterList><CovariateList>{covariates}</CovariateList>
      <PPMatrix>{cells}</PPMatrix><ParamMatrix>{betas}</ParamMatrix>
      </GeneralRegressionModel></PMML>""".encode()


def test_of_ten_thousand_predictors_the_largest_are_shown():
    count = 10_000
    table = {f"v{i}": [1.0, 2.0, 3.0] for i in range(count)}
    text = velscore.report(wide(count), table)
    page = Page(text)
    assert "largest 50 of 10,000" in page.sections["Equation"]
    coefficients = page.sections["Coefficients"]
    assert "The largest 50 of 10,000 are shown." in coefficients
    assert "v9999" in coefficients and "v9950" in coefficients and "v9949" not in coefficients
    assert "largest 12 of 10,000" in page.sections["Effects"]
    assert "Effect of v9988" in page.sections["Effects"]
    assert len(text) < 1_000_000


def test_the_command_writes_the_page(tmp_path, capsys):
    frame = pl.read_csv("examples/birth-weight/cases.csv").with_columns(
        seen=pl.Series(["low", "normal", "low", "normal"])
    )
    frame.write_csv(tmp_path / "a.csv")
    frame.write_parquet(tmp_path / "a.parquet")
    frame.write_ndjson(tmp_path / "a.jsonl")
    (tmp_path / "a.csv.gz").write_bytes(gzip.compress((tmp_path / "a.csv").read_bytes()))
    pages = set()
    for name in ("a.csv", "a.parquet", "a.jsonl", "a.csv.gz"):
        out = tmp_path / "page.html"
        assert main(["report", BIRTHS, str(tmp_path / name), "--observed", "seen", "-o", str(out)]) == 0
        pages.add(out.read_text())
    assert len(pages) == 1
    assert "low: area" in pages.pop()
    assert main(["report", BIRTHS, "-o", str(tmp_path / "bare.html")]) == 0
    capsys.readouterr()
    misspelt = ["report", BIRTHS, str(tmp_path / "a.csv"), "--observed", "sene", "-o", str(tmp_path / "b.html")]
    assert main(misspelt) == 1
    assert capsys.readouterr().err == (
        "velscore: the table has no column sene; it has race, ht, age, seen\nDid you mean 'seen'?\n"
    )
    assert not (tmp_path / "b.html").exists()


def test_faults_of_the_command(tmp_path, capsys):
    torn = tmp_path / "torn.csv"
    torn.write_text("age,race,ht\n19,black\n")
    out = tmp_path / "page.html"
    assert main(["report", BIRTHS, str(torn), "-o", str(out)]) == 1
    assert "torn.csv, line 2: 2 fields; expected are 3" in capsys.readouterr().err
    assert main(["report", BIRTHS, "examples/motor-cars/cases.csv", "-o", str(out)]) == 3
    assert not out.exists()
