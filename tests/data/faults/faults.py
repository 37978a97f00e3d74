#!/usr/bin/env python3
"""Makes faults.jsonl: documents with one fault each, as edits of the sound ones under tests/data.

Each line is one document: `base`, the `edits` (offset in bytes, what stands there, what stands there
instead), and what has to be said of it: `answer` ("fault", "notice", "adapted" or "sound"), the `rule`
(or the reader's `code`) and the `place` of the element that it is about, line and column in the edited
document. What is expected follows from how the fault was made, never from what velscore says.

    python3 tests/data/faults/faults.py
"""

import json
import pathlib
import re

# Codes of the reader's own refusals: a text that is no number, one that is no whole number, a target
# beside the first.
NO_NUMBER = 269001
NOT_WHOLE = 269002
SECOND_TARGET = 260204

DATA = pathlib.Path(__file__).resolve().parent.parent
TAG = re.compile(r"<(/?)([A-Za-z_][\w.:-]*)((?:\s+[\w.:-]+\s*=\s*(?:\"[^\"]*\"|'[^']*'))*)\s*(/?)>")
ATTRIBUTE = re.compile(r"\s+([\w.:-]+)\s*=\s*(?:\"([^\"]*)\"|'([^']*)')")


class Tag:
    """A start tag, with its attributes and where the element ends."""

    def __init__(self, match, parent):
        self.begin, self.tag_end = match.span()
        self.name = match.group(2)
        self.parent = parent
        self.closed = bool(match.group(4))
        self.end = self.tag_end
        self.close = None  # where the end tag's name stands
        self.attributes = {}
        self.spans = {}  # of names and values
        for found in ATTRIBUTE.finditer(match.group(3)):
            shift = match.start(3)
            quoted = 2 if found.group(2) is not None else 3
            self.attributes[found.group(1)] = found.group(quoted)
            self.spans[found.group(1)] = (
                (shift + found.start(1), shift + found.end(1)),
                (shift + found.start(quoted), shift + found.end(quoted)),
                (shift + found.start(), shift + found.end()),
            )

    def __getitem__(self, name):
        return self.attributes.get(name, "")


class Document:
    def __init__(self, path):
        self.path = path
        self.name = path.parent.name if path.name == "model.pmml" else path.stem
        self.text = path.read_text(encoding="utf-8")
        self.tags = []
        stack = []
        for match in TAG.finditer(re.sub(r"<!--.*?-->", lambda m: " " * len(m.group()), self.text, flags=re.S)):
            if match.group(1):
                tag = stack.pop()
                tag.end = match.end()
                tag.close = match.span(2)
                continue
            tag = Tag(match, stack[-1] if stack else None)
            self.tags.append(tag)
            if not tag.closed:
                stack.append(tag)
        self.root = self.tags[0]
        self.older = self.root.name == "zelt-ml"
        self.model = next((t for t in self.tags if t.name in ("GeneralRegressionModel", "regression-model")), None)

    def all(self, *names):
        return [t for t in self.tags if t.name in names]

    def one(self, name):
        return next(iter(self.all(name)), None)

    def within(self, tag, name):
        return [t for t in self.tags if t.name == name and t.parent is tag]

    def indent(self, tag):
        line = self.text.rfind("\n", 0, tag.begin) + 1
        return self.text[line : tag.begin]

    # Facts that faults are made from.

    def is_model(self, *types):
        return not self.older and self.model is not None and self.model["modelType"] in types

    def is_generalized(self):
        return self.is_model("generalizedLinear") and "distribution" in self.model.attributes

    def parameters(self):
        return [t["name"] for t in self.all("Parameter", "parameter")]

    def factors(self):
        lists = self.all("FactorList", "factor-list")
        return [t["name"] for t in self.all("Predictor", "predictor") if t.parent in lists]

    def covariates(self):
        lists = self.all("CovariateList", "covariate-list")
        return [t["name"] for t in self.all("Predictor", "predictor") if t.parent in lists]

    def field(self, name):
        return next((t for t in self.all("DataField") if t["name"] == name), None)

    def mining_field(self, name):
        return next((t for t in self.all("MiningField") if t["name"] == name), None)

    def target(self):
        for tag in self.all("MiningField"):
            if tag["usageType"] in ("target", "predicted"):
                return tag["name"]
        return self.model["targetVariableName"] if self.model else None

    def has_extension(self):
        return bool(self.all("Extension"))


# Edits of the text: (begin, end, what stands there instead).


def rename_attribute(tag, name, new):
    begin, end = tag.spans[name][0]
    return [(begin, end, new)]


def set_attribute(tag, name, value):
    if name in tag.spans:
        begin, end = tag.spans[name][1]
        return [(begin, end, value)]
    at = tag.begin + 1 + len(tag.name)
    return [(at, at, f' {name}="{value}"')]


def drop_attribute(tag, name):
    begin, end = tag.spans[name][2]
    return [(begin, end, "")]


def rename_element(tag, new):
    edits = [(tag.begin + 1, tag.begin + 1 + len(tag.name), new)]
    if tag.close:
        edits.append((*tag.close, new))
    return edits


def drop_element(document, tag):
    line = document.text.rfind("\n", 0, tag.begin)
    return [(line, tag.end, "")]


def insert_before(document, tag, text):
    return [(tag.begin, tag.begin, text + "\n" + document.indent(tag))]


def insert_after(document, tag, text):
    return [(tag.end, tag.end, "\n" + document.indent(tag) + text)]


def source(document, tag):
    return document.text[tag.begin : tag.end]


class Fault:
    """One faulty document: edits, and what is expected of it. `at` is the offset, in the edited text,
    of the element that is told, given as an offset of the original one behind `shift` edits."""

    def __init__(self, edits, answer, rule, at):
        self.edits = sorted(edits)
        self.answer = answer
        self.rule = rule
        self.at = at


def fault(edits, rule, tag):
    return Fault(edits, "fault", rule, tag)


def refused(edits, code, tag):
    """One that the reader refuses with a code of its own."""
    return Fault(edits, "fault", code, tag)


def notice(edits, rule, tag):
    return Fault(edits, "notice", rule, tag)


def adapted(edits, rule, tag):
    return Fault(edits, "adapted", rule, tag)


def sound(edits):
    return Fault(edits, "sound", None, None)


class At:
    """A place in inserted text: so many characters behind the begin of an edit's new text."""

    def __init__(self, edit, text):
        self.edit = edit
        self.skip = edit[2].index(text)


def middle(items):
    return items[len(items) // 2] if items else None


KINDS = []


def kind(most=6):
    """Registers a way to make a fault: a function of a document that answers a Fault, or nothing where
    the document can't have it; made of so many documents at most, spread over all of them."""

    def register(function):
        KINDS.append((function.__name__.replace("_", "-"), most, function))
        return function

    return register


# --- the vocabulary: names ---

# element, attribute, its misspelling. All of them change a score.
MISSPELT_ATTRIBUTES = [
    ("PCell", "parameterName", "parametername"), ("PCell", "beta", "Beta"), ("PCell", "targetCategory", "targetcategory"),
    ("PPCell", "parameterName", "paramterName"), ("PPCell", "predictorName", "predictorname"), ("PPCell", "value", "Value"),
    ("PCovCell", "pRow", "prow"), ("PCovCell", "pCol", "pcol"), ("PCovCell", "value", "vale"),
    ("Parameter", "name", "Name"), ("Parameter", "referencePoint", "referencepoint"), ("Predictor", "name", "nme"),
    ("GeneralRegressionModel", "offsetVariable", "offsetvariable"),
    ("GeneralRegressionModel", "trialsVariable", "trialVariable"),
    ("GeneralRegressionModel", "trialsValue", "trialsvalue"),
    ("GeneralRegressionModel", "linkFunction", "linkfunction"),
    ("GeneralRegressionModel", "linkParameter", "linkParamter"),
    ("GeneralRegressionModel", "distribution", "Distribution"),
    ("GeneralRegressionModel", "distParameter", "distparameter"),
    ("GeneralRegressionModel", "cumulativeLink", "cumulativelink"),
    ("GeneralRegressionModel", "modelDF", "modelDf"), ("GeneralRegressionModel", "modelType", "modeltype"),
    ("GeneralRegressionModel", "targetReferenceCategory", "targetReferencecategory"),
    ("GeneralRegressionModel", "baselineStrataVariable", "baselineStratavariable"),
    ("GeneralRegressionModel", "endTimeVariable", "endTimevariable"),
    ("GeneralRegressionModel", "algorithmName", "algorithmname"),
    ("GeneralRegressionModel", "functionName", "functionname"),
    ("DataField", "name", "nam"), ("DataField", "optype", "opType"), ("DataField", "dataType", "datatype"),
    ("Value", "value", "vlue"), ("MiningField", "name", "naem"), ("MiningField", "usageType", "usagetype"),
    ("MiningField", "missingValueReplacement", "missingValueReplacment"),
    ("MiningField", "invalidValueTreatment", "invalidvalueTreatment"),
    ("MiningField", "lowValue", "lowvalue"), ("MiningField", "highValue", "highvalue"), ("MiningField", "outliers", "outlier"),
    ("BaselineStratum", "maxTime", "maxtime"), ("BaselineStratum", "value", "valu"),
    ("BaselineCell", "time", "Time"), ("BaselineCell", "cumHazard", "cumhazard"),
    ("Interval", "leftMargin", "leftmargin"), ("Interval", "closure", "Closure"), ("DiscretizeBin", "binValue", "binvalue"),
    ("LinearNorm", "orig", "orgi"), ("LinearNorm", "norm", "Norm"), ("NormDiscrete", "field", "Field"),
    ("Apply", "function", "fuction"), ("FieldRef", "field", "feild"), ("DerivedField", "name", "Name"),
    ("OutputField", "feature", "Feature"), ("OutputField", "value", "Value"),
    ("Predictor", "contrastMatrixType", "contrastmatrixType"),
]


def counts(document, tag):
    """False for an interval of a field that takes invalid values as they are: it is passed over."""
    if tag.name != "Interval" or tag.parent.name != "DataField":
        return True
    field = document.mining_field(tag.parent["name"])
    return not field or field["invalidValueTreatment"] != "asIs"


def misspelt_attributes():
    for element, attribute, spelling in MISSPELT_ATTRIBUTES:

        def make(document, element=element, attribute=attribute, spelling=spelling):
            if document.older:
                return None
            tag = middle([t for t in document.all(element) if attribute in t.attributes and counts(document, t)])
            return tag and fault(rename_attribute(tag, attribute, spelling), "misspelt-attribute", tag)

        yield f"attribute-{element}-{attribute}", 3, make


MISSPELT_ELEMENTS = [
    ("DataDictionary", "DataDictonary"), ("DataField", "Datafield"), ("Value", "value"), ("Interval", "Intervall"),
    ("MiningSchema", "Miningschema"), ("MiningField", "MinigField"),
    ("ParameterList", "Parameterlist"), ("Parameter", "Paramter"), ("FactorList", "factorList"),
    ("CovariateList", "CovariatesList"), ("Predictor", "Predicter"), ("PPMatrix", "PPmatrix"), ("PPCell", "PPcell"),
    ("PCovMatrix", "PCovmatrix"), ("PCovCell", "PCovcell"), ("ParamMatrix", "ParaMatrix"), ("PCell", "Pcell"),
    ("BaseCumHazardTables", "BaseCumHazardTable"), ("BaselineStratum", "BaselineStrata"), ("BaselineCell", "BaseLineCell"),
    ("LocalTransformations", "LocalTransformation"), ("TransformationDictionary", "TransformationDictonary"),
    ("DerivedField", "Derivedfield"), ("Categories", "categories"), ("Category", "Categroy"), ("Matrix", "matrix"),
    ("Output", "output"), ("OutputField", "Outputfield"), ]


def misspelt_elements():
    for element, spelling in MISSPELT_ELEMENTS:

        def make(document, element=element, spelling=spelling):
            if document.older:
                return None
            tag = middle(document.all(element))
            return tag and fault(rename_element(tag, spelling), "misspelt-element", tag)

        yield f"element-{element}", 3, make


# --- the vocabulary: words and numbers ---

UNKNOWN_WORDS = [
    ("GeneralRegressionModel", "linkFunction", None), ("GeneralRegressionModel", "distribution", None),
    ("GeneralRegressionModel", "cumulativeLink", None), ("GeneralRegressionModel", "functionName", None),
    ("GeneralRegressionModel", "modelType", None),
    ("DataField", "optype", None), ("DataField", "dataType", None), ("MiningField", "usageType", None),
    ("MiningField", "invalidValueTreatment", None), ("MiningField", "outliers", None),
    ("MiningField", "usageType", "nosuch"), ("Interval", "closure", None), ("OutputField", "feature", None),
]


def unknown_words():
    for element, attribute, word in UNKNOWN_WORDS:

        def make(document, element=element, attribute=attribute, word=word):
            if document.older:
                return None
            tag = middle([t for t in document.all(element) if t[attribute] and counts(document, t)])
            if not tag:
                return None
            wrong = word or tag[attribute][0].upper() + tag[attribute][1:]
            return fault(set_attribute(tag, attribute, wrong), "unknown-word", tag)

        yield f"word-{element}-{attribute}-{word or 'case'}", 4, make


@kind(4)
def is_scorable_maybe(document):
    if document.older:
        return None
    return fault(set_attribute(document.model, "isScorable", "maybe"), "unknown-word", document.model)


@kind(3)
def trials_not_whole(document):
    if not document.is_generalized() or not document.model["trialsValue"]:
        return None
    return refused(set_attribute(document.model, "trialsValue", "20.5"), NOT_WHOLE, document.model)


@kind(3)
def trials_below_one(document):
    if not document.is_generalized() or not document.model["trialsValue"]:
        return None
    return fault(set_attribute(document.model, "trialsValue", "0"), "trials-below-one", document.model)


@kind(8)
def beta_with_a_comma(document):
    tag = middle(document.all("PCell"))
    if not tag or "." not in tag["beta"]:
        return None
    return refused(set_attribute(tag, "beta", tag["beta"].replace(".", ",")), NO_NUMBER, tag)


@kind(6)
def covariance_that_is_no_number(document):
    tag = middle(document.all("PCovCell"))
    return tag and refused(set_attribute(tag, "value", "n/a"), NO_NUMBER, tag)


@kind(3)
def hazard_that_is_no_number(document):
    tag = middle(document.all("BaselineCell"))
    return tag and refused(set_attribute(tag, "cumHazard", "high"), NO_NUMBER, tag)


# --- the vocabulary: what is unused or sound ---


@kind(8)
def unknown_attribute(document):
    tag = middle(document.all("PPCell", "Predictor"))
    return tag and notice(set_attribute(tag, "weighting", "3"), "unknown-attribute", tag)


@kind(8)
def unknown_element(document):
    tag = document.one("ParameterList")
    if not tag or document.older:
        return None
    edits = insert_after(document, tag, '<Nonsense of="mine"/>')
    return notice(edits, "unknown-element", At(edits[0], "<Nonsense"))


@kind(6)
def attribute_of_another_maker(document):
    tag = middle(document.all("PPCell"))
    return tag and sound(set_attribute(tag, "x-weight", "3"))


@kind(6)
def header_with_anything(document):
    tag = document.one("Header")
    if not tag or document.older or not tag.closed:
        return None
    return sound([(tag.tag_end - 2, tag.tag_end, '><Extension name="a" value="b"/><Annotation>anything</Annotation></Header>')])


EXTENDED = ["DataDictionary", "DataField", "MiningSchema", "MiningField", "ParameterList", "Parameter", "FactorList",
            "CovariateList", "Predictor", "PPMatrix", "PPCell", "PCovMatrix", "PCovCell", "ParamMatrix", "PCell",
            "BaseCumHazardTables", "BaselineStratum", "BaselineCell", "Value", "EventValues", "Output", "OutputField",
            "LocalTransformations", "DerivedField", "NormContinuous", "LinearNorm", "Apply", "Categories", "Category"]


def foreign_extensions():
    for element in EXTENDED:

        def make(document, element=element):
            if document.older:
                return None
            tag = middle(document.all(element))
            if not tag:
                return None
            text = '<Extension extender="another" name="note" value="3"><note><p>of its own</p></note></Extension>'
            if tag.closed:
                return sound([(tag.tag_end - 2, tag.tag_end, f">{text}</{tag.name}>")])
            return sound([(tag.tag_end, tag.tag_end, text)])

        yield f"foreign-extension-{element}", 4, make


# --- the document ---


@kind(6)
def namespace_of_another(document):
    if document.older or "xmlns" not in document.root.attributes:
        return None
    return fault(set_attribute(document.root, "xmlns", "http://www.example.org/other"), "foreign-namespace", document.root)


@kind(4)
def version_to_come(document):
    if document.older:
        return None
    return fault(set_attribute(document.root, "version", "7.0"), "unknown-version", document.root)


@kind(4)
def version_that_is_none(document):
    if document.older:
        return None
    return fault(set_attribute(document.root, "version", "4.7"), "unknown-version", document.root)


@kind(8)
def second_model(document):
    if document.older:
        return None
    edits = insert_after(document, document.model, source(document, document.model))
    return fault(edits, "second-model", At(edits[0], "<General"))


@kind(3)
def model_of_another_kind_beside(document):
    if document.older:
        return None
    edits = insert_after(document, document.model, '<TreeModel functionName="regression"><MiningSchema/></TreeModel>')
    return fault(edits, "second-model", At(edits[0], "<TreeModel"))


def repeated_elements():
    for element in ["ParamMatrix", "PPMatrix", "MiningSchema", "ParameterList", "FactorList", "CovariateList", "PCovMatrix"]:

        def make(document, element=element):
            tag = document.one(element)
            if not tag or document.older or tag.parent is not document.model:
                return None
            edits = insert_after(document, tag, source(document, tag))
            return fault(edits, "repeated-element", At(edits[0], "<" + element))

        yield f"repeated-{element}", 4, make


# --- parameters and cells ---

CELL_NAMES = [("PPCell", "parameterName", "unknown-parameter"), ("PPCell", "predictorName", "unknown-predictor"),
              ("PCell", "parameterName", "unknown-parameter"), ("PCovCell", "pRow", "unknown-parameter"),
              ("PCovCell", "pCol", "unknown-parameter")]


def unknown_names():
    for element, attribute, rule in CELL_NAMES:

        def make(document, element=element, attribute=attribute, rule=rule):
            if document.older:
                return None
            tag = middle([t for t in document.all(element) if t[attribute]])
            return tag and fault(set_attribute(tag, attribute, tag[attribute] + "_else"), rule, tag)

        yield f"{rule}-{element}-{attribute}", 8, make


@kind(12)
def category_in_another_case(document):
    if document.older:
        return None
    listed = {t["name"] for t in document.all("DataField") if document.within(t, "Value") and t["dataType"] == "string"}
    for tag in document.all("PPCell"):
        other = tag["value"].swapcase()
        if tag["predictorName"] in listed and tag["predictorName"] in document.factors() and other != tag["value"] and "&" not in other:
            return fault(set_attribute(tag, "value", other), "unknown-category", tag)
    return None


@kind(8)
def beta_of_no_category(document):
    if document.older:
        return None
    tag = middle([t for t in document.all("PCell") if t["targetCategory"]])
    return tag and fault(set_attribute(tag, "targetCategory", tag["targetCategory"] + "?"), "unknown-category", tag)


@kind(8)
def two_betas(document):
    if document.older or document.is_model("ordinalMultinomial"):
        return None
    tag = middle(document.all("PCell"))
    if not tag:
        return None
    copy = source(document, tag).replace(f'beta="{tag["beta"]}"', 'beta="0.125"')
    edits = insert_after(document, tag, copy)
    return fault(edits, "contradicting-cells", At(edits[0], "<PCell"))


@kind(8)
def a_beta_twice(document):
    if document.older or document.is_model("ordinalMultinomial"):
        return None
    tag = middle(document.all("PCell"))
    if not tag:
        return None
    edits = insert_after(document, tag, source(document, tag))
    return notice(edits, "repeated-cell", At(edits[0], "<PCell"))


@kind(6)
def two_exponents(document):
    covariates = document.covariates()
    tag = middle([t for t in document.all("PPCell") if t["predictorName"] in covariates])
    if not tag or document.older:
        return None
    copy = source(document, tag).replace(f'value="{tag["value"]}"', 'value="4"')
    edits = insert_after(document, tag, copy)
    return fault(edits, "contradicting-cells", At(edits[0], "<PPCell"))


@kind(6)
def a_design_cell_twice(document):
    tag = middle(document.all("PPCell"))
    if not tag or document.older:
        return None
    edits = insert_after(document, tag, source(document, tag))
    return notice(edits, "repeated-cell", At(edits[0], "<PPCell"))


@kind(6)
def two_covariances(document):
    tag = middle(document.all("PCovCell"))
    if not tag or document.older:
        return None
    copy = source(document, tag).replace(f'value="{tag["value"]}"', 'value="0.375"')
    edits = insert_after(document, tag, copy)
    return fault(edits, "contradicting-cells", At(edits[0], "<PCovCell"))


@kind(6)
def a_covariance_twice(document):
    tag = middle(document.all("PCovCell"))
    if not tag or document.older:
        return None
    edits = insert_after(document, tag, source(document, tag))
    return notice(edits, "repeated-cell", At(edits[0], "<PCovCell"))


def off_diagonal(document):
    pairs = {(t["pRow"], t["pCol"]) for t in document.all("PCovCell")}
    return middle([t for t in document.all("PCovCell") if t["pRow"] != t["pCol"] and (t["pCol"], t["pRow"]) not in pairs
                   and not t["tRow"]])


@kind(6)
def triangles_that_differ(document):
    tag = off_diagonal(document)
    if not tag:
        return None
    text = f'<PCovCell pRow="{tag["pCol"]}" pCol="{tag["pRow"]}" value="0.125"/>'
    edits = insert_after(document, tag, text)
    return fault(edits, "asymmetric-covariances", At(edits[0], "<PCovCell"))


@kind(6)
def triangles_that_agree(document):
    tag = off_diagonal(document)
    if not tag:
        return None
    return sound(insert_after(document, tag, f'<PCovCell pRow="{tag["pCol"]}" pCol="{tag["pRow"]}" value="{tag["value"]}"/>'))


@kind(8)
def negative_variance(document):
    tag = middle([t for t in document.all("PCovCell") if t["pRow"] == t["pCol"]])
    if not tag or tag["tRow"] != tag["tCol"]:
        return None
    return fault(set_attribute(tag, "value", "-0.25"), "negative-variance", tag)


@kind(8)
def missing_variance(document):
    tag = off_diagonal(document)
    # Those of an ordinal model, which no score depends on, may be some alone.
    if not tag or document.is_model("ordinalMultinomial"):
        return None
    own = next((t for t in document.all("PCovCell") if t["pRow"] == t["pCol"] == tag["pRow"]), None)
    first = next(t for t in document.all("PCovCell") if t["pRow"] != t["pCol"] and tag["pRow"] in (t["pRow"], t["pCol"]))
    return own and fault(drop_element(document, own), "covariance-without-variance", first)


def constants(document):
    used = {t["parameterName"] for t in document.all("PPCell")}
    return [p for p in document.parameters() if p not in used]


@kind(12)
def parameter_without_cell(document):
    if document.older or document.is_model("regression"):
        return None
    cells = document.all("PPCell")
    for tag in cells:
        betas = [float(t["beta"]) for t in document.all("PCell") if t["parameterName"] == tag["parameterName"]]
        only = sum(t["parameterName"] == tag["parameterName"] for t in cells) == 1
        others = sum(t["predictorName"] == tag["predictorName"] for t in cells) > 1
        if only and others and constants(document) and any(betas):
            parameter = next(t for t in document.all("Parameter") if t["name"] == tag["parameterName"])
            return fault(drop_element(document, tag), "parameter-without-cell", parameter)
    return None


def add_covariate(document, name, label=""):
    """A continuous field that is listed as a covariate and used by no cell."""
    covariates = document.one("CovariateList")
    if document.older or not covariates or covariates.closed:
        return None, None
    field = document.all("DataField")[-1]
    mining = document.all("MiningField")[-1]
    display = f' displayName="{label}"' if label else ""
    predictor = document.within(covariates, "Predictor")[-1]
    edits = insert_after(document, field, f'<DataField name="{name}" optype="continuous" dataType="double"{display}/>')
    edits += insert_after(document, mining, f'<MiningField name="{name}"/>')
    last = insert_after(document, predictor, f'<Predictor name="{name}"/>')
    return edits + last, At(last[0], "<Predictor")


@kind(6)
def offset_as_a_covariate(document):
    if document.is_model("regression", "CoxRegression") or document.older:
        return None
    if document.model["offsetVariable"] or document.model["offsetValue"] or document.has_extension():
        return None
    edits, place = add_covariate(document, "offset(log(time_at_risk))")
    return edits and fault(edits, "offset-as-covariate", place)


# --- family ---


@kind(8)
def link_left_out(document):
    if not document.is_generalized() or "linkFunction" not in document.model.attributes:
        return None
    return fault(drop_attribute(document.model, "linkFunction"), "missing-link", document.model)


@kind(6)
def link_of_a_linear_model(document):
    if not document.is_model("generalLinear", "regression") or document.model["linkFunction"] or document.has_extension():
        return None
    if document.model["modelName"] in ("Cox", "GZLM"):
        return None
    return fault(set_attribute(document.model, "linkFunction", "log"), "link-of-another-family", document.model)


@kind(4)
def link_of_a_cox_model(document):
    if not document.is_model("CoxRegression"):
        return None
    return fault(set_attribute(document.model, "linkFunction", "logit"), "link-of-another-family", document.model)


@kind(4)
def distribution_of_a_linear_model(document):
    if not document.is_model("generalLinear", "regression") or document.model["modelName"] in ("Cox", "GZLM"):
        return None
    return fault(set_attribute(document.model, "distribution", "poisson"), "distribution-of-another-family", document.model)


@kind(8)
def counts_with_a_logit(document):
    if not document.is_generalized() or document.model["linkFunction"] not in ("log", "identity"):
        return None
    if document.model["distribution"] not in ("poisson", "gamma", "igauss", "negbin"):
        return None
    return fault(set_attribute(document.model, "linkFunction", "logit"), "link-against-distribution", document.model)


@kind(4)
def negbin_link_of_another(document):
    if not document.is_generalized() or document.model["distribution"] != "poisson":
        return None
    return fault(set_attribute(document.model, "linkFunction", "negbin"), "link-against-distribution", document.model)


@kind(8)
def thresholds_that_fall(document):
    if not document.is_model("ordinalMultinomial"):
        return None
    cells = [t for t in document.all("PCell") if t["targetCategory"]]
    one, other = cells[0], cells[1]
    if len({t["parameterName"] for t in cells}) > 1:
        return None
    return fault(set_attribute(one, "beta", other["beta"]) + set_attribute(other, "beta", one["beta"]),
                 "falling-thresholds", other)


@kind(8)
def links_that_contradict(document):
    if not document.is_model("ordinalMultinomial") or not document.model["linkFunction"]:
        return None
    other = "probit" if document.model["cumulativeLink"] != "probit" else "logit"
    return fault(set_attribute(document.model, "cumulativeLink", other), "contradicting-links", document.model)


@kind(8)
def reference_category_of_none(document):
    if document.older or not document.model["targetReferenceCategory"]:
        return None
    wrong = document.model["targetReferenceCategory"] + "_else"
    return fault(set_attribute(document.model, "targetReferenceCategory", wrong), "unknown-reference-category", document.model)


@kind(6)
def beta_of_the_reference(document):
    if not document.is_model("multinomialLogistic") or document.model["modelName"] or document.model["algorithmName"]:
        return None
    reference = document.model["targetReferenceCategory"]
    tag = middle(document.all("PCell"))
    if not reference or not tag:
        return None
    edits = insert_after(document, tag, f'<PCell targetCategory="{reference}" parameterName="{tag["parameterName"]}" beta="1.5"/>')
    return fault(edits, "beta-of-reference", At(edits[0], "<PCell"))


@kind(4)
def offset_given_twice(document):
    if document.older or not document.model["offsetVariable"]:
        return None
    return fault(set_attribute(document.model, "offsetValue", "2"), "contradicting-options", document.model)


@kind(4)
def trials_given_twice(document):
    if document.older or not document.model["trialsVariable"]:
        return None
    return fault(set_attribute(document.model, "trialsValue", "20"), "contradicting-options", document.model)


@kind(4)
def offset_of_a_text(document):
    texts = [t["name"] for t in document.all("DataField") if t["dataType"] == "string" and t["name"] in document.factors()]
    if not document.is_generalized() or document.model["offsetVariable"] or not texts:
        return None
    return fault(set_attribute(document.model, "offsetVariable", texts[0]), "text-variable", document.model)


@kind(6)
def negative_degrees(document):
    if document.older or not document.model["modelDF"]:
        return None
    return fault(set_attribute(document.model, "modelDF", "-3"), "negative-degrees-of-freedom", document.model)


# --- Cox ---


def baseline_cells(document):
    strata = document.all("BaselineStratum") or document.all("BaseCumHazardTables")
    cells = [t for t in document.all("BaselineCell") if t.parent is strata[0]] if strata else []
    return cells if len(cells) > 4 else []


@kind(6)
def baseline_that_falls(document):
    cells = baseline_cells(document)
    if not cells:
        return None
    return fault(set_attribute(cells[3], "cumHazard", "99"), "falling-baseline", cells[4])


@kind(6)
def negative_hazard(document):
    cells = baseline_cells(document)
    return cells and fault(set_attribute(cells[0], "cumHazard", "-0.01"), "negative-hazard", cells[0])


@kind(6)
def two_hazards_for_a_time(document):
    cells = baseline_cells(document)
    if not cells:
        return None
    at = next(i for i in range(len(cells) - 1) if cells[i]["cumHazard"] != cells[i + 1]["cumHazard"])
    text = f'<BaselineCell time="{cells[at]["time"]}" cumHazard="{cells[at + 1]["cumHazard"]}"/>'
    edits = insert_after(document, cells[at], text)
    return fault(edits, "two-hazards", At(edits[0], "<Base"))


@kind(6)
def early_max_time(document):
    cells = baseline_cells(document)
    owner = next((t for t in document.all("BaselineStratum", "BaseCumHazardTables") if t["maxTime"]), None)
    if not cells or not owner or cells[0].parent is not owner:
        return None
    return fault(set_attribute(owner, "maxTime", cells[1]["time"]), "early-max-time", owner)


@kind(4)
def strata_without_variable(document):
    if document.older or not document.model["baselineStrataVariable"]:
        return None
    return fault(drop_attribute(document.model, "baselineStrataVariable"), "strata-without-variable",
                 document.one("BaseCumHazardTables"))


# --- fields ---


@kind(6)
def a_value_twice(document):
    field = middle([t for t in document.all("DataField") if len(document.within(t, "Value")) > 1])
    if not field:
        return None
    value = document.within(field, "Value")[0]
    edits = insert_after(document, value, f'<Value value="{value["value"]}" property="invalid"/>')
    return fault(edits, "value-of-two-properties", At(edits[0], "<Value"))


@kind(8)
def predictor_that_is_supplementary(document):
    used = {t["predictorName"] for t in document.all("PPCell")}
    tag = next((t for t in document.all("MiningField") if t["name"] in used), None)
    if not tag or document.older:
        return None
    return fault(set_attribute(tag, "usageType", "supplementary"), "inactive-predictor", tag)


@kind(6)
def a_second_target(document):
    if document.older:
        return None
    used = {t["predictorName"] for t in document.all("PPCell")}
    mining = document.all("MiningField")
    if not any(t["usageType"] in ("target", "predicted") for t in mining):
        return None
    last = mining[-1]
    name = "another_target"
    field = document.all("DataField")[-1]
    edits = insert_after(document, field, f'<DataField name="{name}" optype="continuous" dataType="double"/>')
    more = insert_after(document, last, f'<MiningField name="{name}" usageType="target"/>')
    assert name not in used
    return refused(edits + more, SECOND_TARGET, At(more[0], "<MiningField"))


@kind(3)
def limits_turned_round(document):
    tag = next((t for t in document.all("MiningField") if t["lowValue"] and t["highValue"]), None)
    if not tag:
        return None
    return fault(set_attribute(tag, "lowValue", tag["highValue"]) + set_attribute(tag, "highValue", tag["lowValue"]),
                 "turned-limits", tag)


@kind(6)
def as_value_without_value(document):
    tag = next((t for t in document.all("MiningField") if t["name"] in document.covariates()), None)
    if not tag or document.older or tag["invalidValueTreatment"]:
        return None
    return fault(set_attribute(tag, "invalidValueTreatment", "asValue"), "no-invalid-replacement", tag)


@kind(6)
def interval_turned_round(document):
    tag = next((t for t in document.all("DataField") if t["name"] in document.covariates() and t.closed
                and t["optype"] == "continuous"), None)
    if not tag:
        return None
    text = '><Interval closure="closedClosed" leftMargin="1e6" rightMargin="-1e6"/></DataField>'
    edits = [(tag.tag_end - 2, tag.tag_end, text)]
    return fault(edits, "empty-interval", At(edits[0], "<Interval"))


# --- extensions and expressions ---


@kind(8)
def extension_misspelt(document):
    tag = next((t for t in document.all("Extension") if t["extender"] == "velscore" and t.parent is document.model), None)
    if not tag or document.older:
        return None
    return fault(set_attribute(tag, "name", tag["name"][:-1]), "unknown-extension", tag)


@kind(4)
def extender_misspelt(document):
    tag = next((t for t in document.all("Extension") if t["extender"] == "velscore" and t.parent is document.model), None)
    if not tag or document.older:
        return None
    return fault(set_attribute(tag, "extender", "Velscore"), "unknown-extender", tag)


@kind(6)
def extension_of_another_by_our_name(document):
    if not document.is_model("generalLinear", "regression") or document.has_extension():
        return None
    tag = document.one("MiningSchema")
    edits = insert_before(document, tag, '<Extension extender="another" name="modelDF" value="1"/>')
    return adapted(edits, "foreign-extension", At(edits[0], "<Ext"))


@kind(4)
def late_extension(document):
    if not document.is_generalized():
        return None
    tag = document.one("ParameterList")
    edits = insert_before(document, tag, '<Extension extender="velscore" name="offsetValue" value="1"/>')
    return fault(edits, "late-extension", At(edits[0], "<Ext"))


@kind(3)
def indicator_of_an_unlisted_value(document):
    tag = document.one("NormDiscrete")
    return tag and fault(set_attribute(tag, "value", tag["value"] + "_else"), "unlisted-value", tag)


@kind(3)
def bins_that_overlap(document):
    bins = document.all("DiscretizeBin")
    intervals = [t for t in document.all("Interval") if t.parent in bins]
    pair = next(((a, b) for a, b in zip(intervals, intervals[1:])
                 if a["rightMargin"] and a["rightMargin"] == b["leftMargin"]), None)
    if not pair:
        return None
    wider = str(float(pair[0]["rightMargin"]) + 1)
    return fault(set_attribute(pair[0], "rightMargin", wider), "overlapping-bins", pair[1])


# --- the older form ---

OLDER_ATTRIBUTES = [("p-cell", "beta", "Beta"), ("p-cell", "parameter-name", "parametername"),
                    ("pp-cell", "value", "Value"), ("pp-cell", "predictor-name", "predictorname"),
                    ("variable", "storage-type", "storagetype"), ("regression-model", "model-df", "modeldf"),
                    ("regression-model", "target-variable-name", "target-variable-nam")]


def older_attributes():
    for element, attribute, spelling in OLDER_ATTRIBUTES:

        def make(document, element=element, attribute=attribute, spelling=spelling):
            if not document.older:
                return None
            tag = middle([t for t in document.all(element) if attribute in t.attributes])
            return tag and fault(rename_attribute(tag, attribute, spelling), "misspelt-attribute", tag)

        yield f"older-attribute-{element}-{attribute}", 2, make


OLDER_ELEMENTS = [("p-table", "ptable"), ("p-cell", "pcell"), ("pp-matrix", "pp-matix"), ("pp-cell", "ppcell"),
                  ("pcov-matrix", "pcovmatrix"), ("variable", "varable"), ("category", "Category"),
                  ("factor-list", "factors-list"), ("covariate-list", "covariatelist")]


def older_elements():
    for element, spelling in OLDER_ELEMENTS:

        def make(document, element=element, spelling=spelling):
            if not document.older:
                return None
            tag = middle(document.all(element))
            return tag and fault(rename_element(tag, spelling), "misspelt-element", tag)

        yield f"older-element-{element}", 2, make


@kind(2)
def older_two_betas(document):
    tag = middle(document.all("p-cell"))
    if not document.older or not tag:
        return None
    edits = insert_after(document, tag, source(document, tag).replace(f'beta="{tag["beta"]}"', 'beta="0.125"'))
    return fault(edits, "contradicting-cells", At(edits[0], "<p-cell"))


@kind(2)
def older_version(document):
    if not document.older:
        return None
    return fault(set_attribute(document.root, "version", "2.0"), "unknown-version", document.root)


@kind(3)
def version_of_another_namespace(document):
    if document.older or document.root["version"] != "4.4" or not document.root["xmlns"].endswith("4_4"):
        return None
    return notice(set_attribute(document.root, "version", "4.3"), "version-against-namespace", document.root)


@kind(3)
def function_of_another_model(document):
    if document.older or not document.model["functionName"]:
        return None
    return fault(set_attribute(document.model, "functionName", "clustering"), "unknown-word", document.model)


@kind(3)
def rows_of_a_contrast_matrix(document):
    tag = middle([t for t in document.all("Matrix") if t["kind"]])
    return tag and fault(set_attribute(tag, "kind", "symmetric"), "contrast-matrix-shape", tag)


@kind(3)
def category_of_a_contrast_matrix(document):
    tag = middle([t for t in document.all("Category") if document.within(document.field(t.parent.parent["name"]), "Value")])
    return tag and fault(set_attribute(tag, "value", tag["value"] + "s"), "unknown-contrast-category", tag)


@kind(2)
def older_cell_of_no_parameter(document):
    tag = middle(document.all("p-cell"))
    if not document.older or not tag:
        return None
    edits = insert_after(document, tag, '<p-cell parameter-name="of another model" beta="1"/>')
    return notice(edits, "unknown-parameter", At(edits[0], "<p-cell"))


# --- RegressionModel documents ---

MISSPELT_REGRESSION_ATTRIBUTES = [
    ("RegressionModel", "normalizationMethod", "normalizationmethod"),
    ("RegressionModel", "functionName", "functionname"), ("RegressionModel", "targetFieldName", "targetField_Name"),
    ("RegressionTable", "intercept", "Intercept"), ("RegressionTable", "targetCategory", "targetcategory"),
    ("NumericPredictor", "name", "Name"), ("NumericPredictor", "exponent", "exponnet"),
    ("NumericPredictor", "coefficient", "coeficient"), ("CategoricalPredictor", "name", "nmae"),
    ("CategoricalPredictor", "value", "Value"), ("CategoricalPredictor", "coefficient", "Coefficient"),
    ("PredictorTerm", "coefficient", "coefficent"), ("FieldRef", "field", "feild"), ("MiningField", "usageType", "usagetype"),
    ("DataField", "dataType", "datatype"), ("Value", "value", "valeu"),
]
MISSPELT_REGRESSION_ELEMENTS = [
    ("RegressionTable", "Regressiontable"), ("NumericPredictor", "NumericPredicter"),
    ("CategoricalPredictor", "CategoricPredictor"), ("PredictorTerm", "PredictorTerms"),
    ("MiningSchema", "Miningschema"), ("MiningField", "MinigField"), ("LocalTransformations", "LocalTransformation"),
]
TERMS = ("NumericPredictor", "CategoricalPredictor", "PredictorTerm")
# Codes of the translation: no finite number, a field that nothing declares, a table of no category, two
# tables of one, an attribute that isn't there.
NOT_FINITE, UNKNOWN_FIELD, UNKNOWN_CATEGORY, TABLE_TWICE, ABSENT = 269178, 269179, 269174, 269175, 260115


def regression_faults():
    for element, attribute, spelling in MISSPELT_REGRESSION_ATTRIBUTES:

        def misspell(document, element=element, attribute=attribute, spelling=spelling):
            tag = middle([t for t in document.all(element) if attribute in t.attributes])
            return tag and fault(rename_attribute(tag, attribute, spelling), "misspelt-attribute", tag)

        yield f"regression-attribute-{element}-{attribute}", 2, misspell
    for element, spelling in MISSPELT_REGRESSION_ELEMENTS:

        def rename(document, element=element, spelling=spelling):
            tag = middle(document.all(element))
            return tag and fault(rename_element(tag, spelling), "misspelt-element", tag)

        yield f"regression-element-{element}", 2, rename
    for attribute, word in (("normalizationMethod", "Softmax"), ("functionName", "clustering"), ("functionName", "Regression")):

        def other_word(document, attribute=attribute, word=word):
            tag = document.one("RegressionModel")
            return fault(set_attribute(tag, attribute, word), "unknown-word", tag)

        yield f"regression-word-{attribute}-{word}", 2, other_word

    def of_term(make, *elements):
        return lambda document: (tag := middle(document.all(*(elements or TERMS)))) and make(document, tag)

    def second_term(document, tag):
        terms = [(t.parent.begin, t["name"], t["value"], t["exponent"]) for t in document.all(*TERMS) if t["name"]]
        if len(terms) != len(set(terms)):
            return None  # the first one is told
        edits = insert_after(document, tag, f'<NumericPredictor name="{tag["name"]}" '
                             f'exponent="{tag["exponent"] or "1"}" coefficient="0"/>')
        return notice(edits, "repeated-term", At(edits[0], "<NumericPredictor"))

    def second_table(document, tag):
        if not tag["targetCategory"]:
            return None
        edits = insert_after(document, tag, f'<RegressionTable intercept="1" targetCategory="{tag["targetCategory"]}"/>')
        return refused(edits, TABLE_TWICE, At(edits[0], "<RegressionTable"))

    def unlisted_table(document, tag):
        if not tag["targetCategory"] or not document.all("Value"):
            return None
        target = document.field(document.target() or "")
        if not target or not document.within(target, "Value"):
            return None
        return refused(set_attribute(tag, "targetCategory", "of another model"), UNKNOWN_CATEGORY, tag)

    yield "regression-coefficient-no-number", 3, of_term(
        lambda document, tag: refused(set_attribute(tag, "coefficient", "1,5"), NOT_FINITE, tag))
    yield "regression-coefficient-infinite", 2, of_term(
        lambda document, tag: refused(set_attribute(tag, "coefficient", "INF"), NOT_FINITE, tag))
    yield "regression-coefficient-absent", 2, of_term(
        lambda document, tag: refused(drop_attribute(tag, "coefficient"), ABSENT, tag))
    yield "regression-exponent-no-number", 2, of_term(
        lambda document, tag: refused(set_attribute(tag, "exponent", "two"), NOT_FINITE, tag), "NumericPredictor")
    yield "regression-intercept-no-number", 2, of_term(
        lambda document, tag: refused(set_attribute(tag, "intercept", "none"), NOT_FINITE, tag), "RegressionTable")
    yield "regression-unknown-field", 3, of_term(
        lambda document, tag: refused(set_attribute(tag, "name", "of another model"), UNKNOWN_FIELD, tag),
        "NumericPredictor", "CategoricalPredictor")
    yield "regression-table-twice", 2, of_term(second_table, "RegressionTable")
    yield "regression-table-of-no-category", 2, of_term(unlisted_table, "RegressionTable")
    yield "regression-repeated-term", 3, of_term(second_term, "NumericPredictor")
    yield "regression-unknown-attribute", 3, of_term(
        lambda document, tag: notice(set_attribute(tag, "weighting", "3"), "unknown-attribute", tag))
    yield "regression-attribute-of-another-maker", 3, of_term(
        lambda document, tag: sound(set_attribute(tag, "x-weight", "3")))
    yield "regression-second-model", 2, of_term(
        lambda document, tag: (edits := insert_after(document, tag, "<TreeModel/>")) and
        fault(edits, "second-model", At(edits[0], "<TreeModel")), "RegressionModel")


def place_of(text, offset):
    line = text.rfind("\n", 0, offset) + 1
    return [text.count("\n", 0, offset) + 1, offset - line + 1]


def edited(text, edits):
    """The new text, and a function from places of the old text, or in new text, to places in the new."""
    out, at, starts = [], 0, {}
    size = 0
    for edit in edits:
        begin, end, new = edit
        out.append(text[at:begin])
        size += begin - at
        starts[edit] = size
        out.append(new)
        size += len(new)
        at = end
    out.append(text[at:])

    def moved(where):
        if isinstance(where, At):
            return starts[where.edit] + where.skip
        shift = sum(len(new) - (end - begin) for begin, end, new in edits if end <= where.begin)
        return where.begin + shift

    return "".join(out), moved


def spread(items, most):
    if len(items) <= most:
        return items
    return [items[i * len(items) // most] for i in range(most)]


def main():
    paths = sorted(DATA.glob("cases/*/model.pmml")) + sorted(DATA.glob("published/*.pmml"))
    documents = [document for path in paths if (document := Document(path)).model]  # prefixed ones apart
    regressions = [Document(path) for path in sorted(DATA.glob("regression/*/model.pmml"))]
    kinds = [*KINDS]
    for more in (misspelt_attributes, misspelt_elements, unknown_words, foreign_extensions, repeated_elements,
                 unknown_names, older_attributes, older_elements):
        kinds.extend(more())
    lines = []
    kinds = [(documents, *each) for each in kinds] + [(regressions, *each) for each in regression_faults()]
    for bases, name, most, make in kinds:
        made = [(document, fault) for document in bases if (fault := make(document))]
        for document, each in spread(made, most):
            text, moved = edited(document.text, each.edits)
            row = {
                "name": f"{name} in {document.name}",
                "base": document.path.relative_to(DATA).as_posix(),
                "edits": [[len(document.text[:begin].encode()), document.text[begin:end], new]
                          for begin, end, new in each.edits],
                "answer": each.answer,
            }
            if each.rule:
                row["rule" if isinstance(each.rule, str) else "code"] = each.rule
                row["line"], row["column"] = place_of(text, moved(each.at))
            lines.append(json.dumps(row, ensure_ascii=False))
    (DATA / "faults" / "faults.jsonl").write_text("\n".join(lines) + "\n", encoding="utf-8")
    print(len(lines), "documents")


if __name__ == "__main__":
    main()
