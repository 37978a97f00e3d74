"""RegressionModel documents by hand in the shapes of the standard, with their scores by mpmath.

    python byhand.py

writes a folder hand-NAME for each beside this script: model.pmml, input.csv, expected.csv, case.json.
The scores are the standard's formulas at 50 digits, rounded to doubles. A row without a score has an
empty prediction. Ran with mpmath 1.4.1.
"""

import json
import pathlib
from xml.sax.saxutils import quoteattr

import mpmath as mp

mp.mp.dps = 50
HERE = pathlib.Path(__file__).resolve().parent


def attributes(**values):
    return "".join(f" {name}={quoteattr(str(value))}" for name, value in values.items() if value is not None)


# Terms of a table: each is written as an element and computed from a row, where None is missing.


class Number:
    def __init__(self, name, coefficient, exponent=None):
        self.name, self.coefficient, self.exponent = name, coefficient, exponent

    def xml(self):
        return f"<NumericPredictor{attributes(name=self.name, exponent=self.exponent, coefficient=self.coefficient)}/>"

    def value(self, row):
        x = row[self.name]
        if x is None:
            return None
        x, exponent = mp.mpf(x), mp.mpf("1" if self.exponent is None else self.exponent)
        if x == 0 and exponent < 0 or x < 0 and exponent != int(exponent):
            return None
        return x**exponent


class Category:
    def __init__(self, name, value, coefficient):
        self.name, self.category, self.coefficient = name, value, coefficient

    def xml(self):
        return f"<CategoricalPredictor{attributes(name=self.name, value=self.category, coefficient=self.coefficient)}/>"

    def value(self, row):
        return mp.mpf(1 if row[self.name] == self.category else 0)


class Product:
    def __init__(self, coefficient, *names, label=None):
        self.coefficient, self.names, self.label = coefficient, names, label

    def xml(self):
        references = "".join(f"<FieldRef{attributes(field=name)}/>" for name in self.names)
        return f"<PredictorTerm{attributes(name=self.label, coefficient=self.coefficient)}>{references}</PredictorTerm>"

    def value(self, row):
        product = mp.mpf(1)
        for name in self.names:
            if row[name] is None:
                return None
            product *= mp.mpf(row[name])
        return product


class Table:
    def __init__(self, intercept, *terms, category=None):
        self.intercept, self.terms, self.category = intercept, terms, category

    def xml(self):
        terms = "".join("\n    " + term.xml() for term in self.terms)
        return f"  <RegressionTable{attributes(intercept=self.intercept, targetCategory=self.category)}>{terms}\n  </RegressionTable>"

    def value(self, row):
        y = mp.mpf(self.intercept or "0")
        for term in self.terms:
            value = term.value(row)
            if value is None:
                return None
            y += mp.mpf(term.coefficient) * value
        return y


def loglog(y):
    return mp.exp(-mp.exp(-y))


LINKS = {
    "none": lambda y: y,
    "exp": mp.exp,
    "softmax": lambda y: 1 / (1 + mp.exp(-y)),
    "logit": lambda y: 1 / (1 + mp.exp(-y)),
    "probit": mp.ncdf,
    "cloglog": lambda y: 1 - mp.exp(-mp.exp(y)),
    "loglog": loglog,
    "cauchit": lambda y: mp.mpf("0.5") + mp.atan(y) / mp.pi,
}


def probabilities(method, ys, ordered):
    """Of the tables' values in their order, or for ordered categories in the categories' order."""
    if method == "softmax":
        return [mp.exp(y) / sum(mp.exp(z) for z in ys) for y in ys]
    if method == "simplemax":
        return [y / sum(ys) for y in ys]
    shares = [LINKS[method](y) for y in ys[:-1]]
    if ordered:
        shares = [share - before for share, before in zip(shares, [mp.mpf(0)] + shares)]
    return shares + [1 - sum(shares)]


def text(number):
    return repr(float(number))


def field(name, dataType="double", optype="continuous", values=(), missing=()):
    inner = "".join(f"<Value{attributes(value=value)}/>" for value in values)
    inner += "".join(f'<Value{attributes(value=value)} property="missing"/>' for value in missing)
    return f"  <DataField{attributes(name=name, optype=optype, dataType=dataType)}>{inner}</DataField>\n"


def mining(name, **more):
    return f"   <MiningField{attributes(name=name, **more)}/>\n"


def document(model, fields, schema, tables, normalization, function, version, head, transformations):
    return f"""<?xml version="1.0" encoding="UTF-8"?>
<PMML version="{version}" xmlns="http://www.dmg.org/PMML-{version[:3].replace('.', '_')}"{head}>
 <Header copyright="none"/>
 <DataDictionary>
{"".join(fields)} </DataDictionary>
{transformations[0]} <RegressionModel{attributes(functionName=function, normalizationMethod=normalization)}{model}>
  <MiningSchema>
{"".join(schema)}  </MiningSchema>
{transformations[1]}{chr(10).join(table.xml() for table in tables)}
 </RegressionModel>
</PMML>
"""


def save(name, *, fields, schema, tables, inputs, rows, normalization=None, function="regression",
         categories=None, ordered=False, version="4.4", model="", head="", transformations=("", ""),
         computed=None, spelled=None, notes=""):
    """`rows` hold the texts of a table, None for a missing one. `computed(row)` gives what the tables
    read where that isn't the row itself, and None for a row that isn't scored. `categories` are the
    target's in the dictionary's order, `spelled` how the tables' categories are spelled there."""
    folder = HERE / f"hand-{name}"
    folder.mkdir(exist_ok=True)
    (folder / "model.pmml").write_text(
        document(model, fields, schema, tables, normalization, function, version, head, transformations))
    lines = [",".join(inputs)]
    lines += [",".join("" if row[i] is None else str(row[i]) for i in range(len(inputs))) for row in rows]
    (folder / "input.csv").write_text("\n".join(lines) + "\n")

    header = ["prediction"] + [f"probability({category})" for category in categories or []]
    out = [",".join(header)]
    for row in rows:
        read = dict(zip(inputs, row))
        if computed is not None:
            read = computed(read)
        values = None if read is None else [table.value(read) for table in tables]
        if values is None or None in values:
            out.append("," * (len(header) - 1) or '""')
            continue
        if categories is None:
            out.append(text(LINKS[normalization or "none"](values[0])))
            continue
        names = [(spelled or {}).get(table.category, table.category) for table in tables]
        if ordered:  # in the categories' order
            values = [values[names.index(category)] for category in categories if category in names]
            names = categories
        if len(values) < len(categories):
            values.append(mp.mpf(0))
            names = names + [category for category in categories if category not in names]
        shares = dict(zip(names, probabilities(normalization or "none", values, ordered)))
        best = max(categories, key=lambda category: shares[category])
        out.append(",".join([best] + [text(shares[category]) for category in categories]))
    (folder / "expected.csv").write_text("\n".join(out) + "\n")
    about = {"name": f"hand-{name}", "produced_by": "byhand.py", "rows": len(rows), "tolerance": 1e-12,
             "notes": notes}
    (folder / "case.json").write_text(json.dumps(about, indent=2) + "\n")


X = [field("y"), field("x"), field("z")]
XZ = [mining("y", usageType="target"), mining("x"), mining("z")]
POINTS = [("0.5", "-1"), ("-2", "0.25"), ("0", "0"), ("3", "1.5"), (None, "1"), ("1", None), ("-0.75", "4")]
LINE = Table("0.25", Number("x", "0.5"), Number("z", "-1.25"))

# A number by each normalization.
for method in ["none", "exp", "softmax", "logit", "probit", "cloglog", "loglog"]:
    save(f"number-{method}", fields=X, schema=XZ, tables=[LINE], inputs=["x", "z"], rows=POINTS,
         normalization=method)

# Two categories by each normalization; the dictionary has them in the other order.
TWO = [field("y", "string", "categorical", ["no", "yes"]), field("x"), field("z")]
for method in ["none", "softmax", "logit", "probit", "cloglog", "loglog"]:
    first = LINE if method != "none" else Table("0.4375", Number("x", "0.05"), Number("z", "-0.0625"))
    first = Table(first.intercept, *first.terms, category="yes")
    save(f"two-{method}", fields=TWO, schema=XZ, tables=[first, Table("0", category="no")], inputs=["x", "z"],
         rows=POINTS, normalization=method, function="classification", categories=["no", "yes"])
save("two-one-table", fields=TWO, schema=XZ, tables=[Table("0.25", Number("x", "0.5"), category="no")],
     inputs=["x", "z"], rows=POINTS, normalization="logit", function="classification",
     categories=["no", "yes"], computed=lambda row: row, notes="the other category without a table")
save("two-softmax-both", fields=TWO, schema=XZ,
     tables=[Table("0.25", Number("x", "0.5"), category="no"), Table("-1", Number("z", "0.75"), category="yes")],
     inputs=["x", "z"], rows=POINTS, normalization="softmax", function="classification", categories=["no", "yes"])

# More categories.
THREE = [field("y", "string", "categorical", ["a", "b", "c"]), field("x"), field("z")]
PLANES = [Table("0.5", Number("x", "1.5"), category="b"), Table("-0.25", Number("z", "-0.5"), category="c"),
          Table(None, category="a")]
save("three-softmax", fields=THREE, schema=XZ, tables=PLANES, inputs=["x", "z"], rows=POINTS,
     normalization="softmax", function="classification", categories=["a", "b", "c"],
     notes="tables in another order than the dictionary, one without intercept")
save("three-softmax-old", fields=[field("y", "string", "categorical"), field("x"), field("z")],
     schema=[mining("x"), mining("z"), mining("y", usageType="predicted")], tables=PLANES, inputs=["x", "z"],
     rows=POINTS, normalization="softmax", categories=["b", "c", "a"], version="3.2",
     model=' modelName="old" targetFieldName="y"',
     notes="functionName regression, targetFieldName, a target that lists nothing")

# Ordered categories, with the highest one's table and without it.
ORDERED = [field("y", "string", "ordinal", ["low", "mid", "high"]), field("x"), field("z")]
for method in ["logit", "probit", "cloglog", "loglog", "cauchit"]:
    steps = [Table("1", Number("x", "0.5"), Number("z", "-1.25"), category="mid"),
             Table("-0.5", Number("x", "0.5"), Number("z", "-1.25"), category="low")]
    if method != "probit":
        steps.append(Table("0", category="high"))
    save(f"ordered-{method}", fields=ORDERED, schema=XZ, tables=steps, inputs=["x", "z"], rows=POINTS,
         normalization=method, function="classification", categories=["low", "mid", "high"], ordered=True)
save("ordered-by-schema", fields=[field("y", "integer", "categorical", [1, 2, 3]), field("x"), field("z")],
     schema=[mining("y", usageType="target", optype="ordinal"), mining("x"), mining("z")],
     tables=[Table("-1", Number("x", "0.5"), category="1"), Table("0.5", Number("x", "0.5"), category="2"),
             Table("0", category="3")],
     inputs=["x", "z"], rows=POINTS, normalization="logit", function="classification",
     categories=["1", "2", "3"], ordered=True, notes="the mining field's optype says that they are ordered")

TEXTS = [field("y"), field("x"), field("f", "string", "categorical", ["a", "b", "c"]),
         field("g", "integer", "categorical", [1, 2, 3]), field("h", "boolean", "categorical", ["true", "false"])]
TEXT_SCHEMA = [mining("y", usageType="target"), mining("x"), mining("f"), mining("g"), mining("h")]
FACTORS = Table("1", Number("x", "0.5"), Category("f", "b", "2"), Category("f", "c", "-3"), Category("g", "2", "0.125"),
                Category("g", "3", "0.75"), Category("h", "true", "10"))
FACTOR_ROWS = [("1", "a", "1", "false"), ("1", "b", "2", "true"), ("-2", "c", "3", "true"), ("1", None, "2", "true"),
               ("1", "b", None, "false"), ("0", "c", "1", None), (None, "a", "1", "true"), ("4", None, None, None)]

# Categories whose probabilities are quotients, shares of their own, or steps between own equations.
for method in ["simplemax", "cauchit"]:
    first = Table("2", Number("x", "0.25"), Number("z", "0.125"), category="yes")
    save(f"two-{method}", fields=TWO, schema=XZ, tables=[first, Table("1.5", Number("z", "0.25"), category="no")],
         inputs=["x", "z"], rows=POINTS, normalization=method, function="classification",
         categories=["no", "yes"])
OWN = [Table("0.25", Number("x", "0.0625"), category="b"), Table("0.3", Number("z", "-0.03125"), category="c"),
       Table("0.125", Number("x", "0.03125", 2), category="a")]
LOW = [Table("-1.5", Number("x", "0.5"), category="b"), Table("-2", Number("z", "-0.25"), category="a"),
       Table("0", category="c")]
for method in ["simplemax", "none", "logit", "probit", "cloglog", "loglog", "cauchit"]:
    save(f"three-{method}", fields=THREE, schema=XZ, tables=OWN if method in ("simplemax", "none") else LOW,
         inputs=["x", "z"], rows=POINTS, normalization=method, function="classification",
         categories=["a", "b", "c"], notes="probabilities as the formulas give them, below 0 too")
save("three-two-tables", fields=THREE, schema=XZ, tables=LOW[:2], inputs=["x", "z"], rows=POINTS,
     normalization="logit", function="classification", categories=["a", "b", "c"],
     notes="the category without a table has what the others leave")
STEPS = [Table("-0.5", Number("x", "0.25"), category="low"),
         Table("1.5", Number("x", "0.25"), Number("z", "0.125"), category="mid"), Table("0", category="high")]
for method in ["logit", "probit", "cloglog", "loglog", "cauchit"]:
    save(f"ordered-own-{method}", fields=ORDERED, schema=XZ, tables=STEPS, inputs=["x", "z"], rows=POINTS,
         normalization=method, function="classification", categories=["low", "mid", "high"], ordered=True)
save("ordered-none", fields=ORDERED, schema=XZ,
     tables=[Table("0.25", Number("x", "0.0625"), category="low"), Table("0.5", Number("z", "0.0625"), category="mid"),
             Table("0", category="high")],
     inputs=["x", "z"], rows=POINTS, normalization="none", function="classification",
     categories=["low", "mid", "high"], ordered=True)
save("three-factors",
     fields=[field("y", "integer", "categorical", [1, 2, 3])] + TEXTS[1:], schema=TEXT_SCHEMA,
     tables=[Table("0.5", Category("f", "b", "0.25"), Category("g", "2", "0.125"), category="2"),
             Table("0.25", Number("x", "0.0625"), Category("h", "true", "0.125"), category="1"),
             Table("0.75", category="3")],
     inputs=["x", "f", "g", "h"], rows=FACTOR_ROWS, normalization="simplemax", function="classification",
     categories=["1", "2", "3"], notes="factors with missing values")

# How targets spell their categories.
SHAPES = {"integers": ("integer", ["0", "1"], {}), "doubles": ("double", ["0.0", "1.0"], {}),
          "booleans": ("boolean", ["false", "true"], {"1": "true", "0": "false"})}
for name, (kind, listed, spelled) in SHAPES.items():
    shown = listed if kind == "boolean" else ["0", "1"]
    save(f"target-{name}", fields=[field("y", kind, "categorical", listed), field("x"), field("z")], schema=XZ,
         tables=[Table("0.25", Number("x", "0.5"), category="1"), Table("0", category="0")],
         inputs=["x", "z"], rows=[row for row in POINTS if None not in row], normalization="logit",
         function="classification", categories=shown, spelled=spelled)
save("target-continuous", fields=[field("y", "integer"), field("x"), field("z")], schema=XZ,
     tables=[Table("0.25", Number("x", "0.5"), category="1"), Table("0", category="0")], inputs=["x", "z"],
     rows=POINTS[:4], normalization="softmax", function="regression", categories=["1", "0"],
     notes="two tables of a continuous target")

# Missing values: of a category its indicators are 0, of a number there is no score.
INVALID = [("1", "d", "1", "true"), ("1", "a", "9", "true")]


def refuses_invalid(row):
    valid = row["f"] in ("a", "b", "c", None) and row["g"] in ("1", "2", "3", None)
    return row if valid else None


save("missing-categories", fields=TEXTS, schema=TEXT_SCHEMA, tables=[FACTORS], inputs=["x", "f", "g", "h"],
     rows=FACTOR_ROWS + INVALID, computed=refuses_invalid,
     notes="a value that its field doesn't list gives no score, as the standard has it by default")
save("missing-categories-exp", fields=TEXTS, schema=TEXT_SCHEMA, tables=[FACTORS], inputs=["x", "f", "g", "h"],
     rows=FACTOR_ROWS + INVALID, computed=refuses_invalid, normalization="exp")
save("missing-categories-two",
     fields=[field("y", "string", "categorical", ["no", "yes"])] + TEXTS[1:], schema=TEXT_SCHEMA,
     tables=[Table(FACTORS.intercept, *FACTORS.terms, category="yes"), Table("0", category="no")],
     inputs=["x", "f", "g", "h"], rows=FACTOR_ROWS + INVALID, computed=refuses_invalid, normalization="logit",
     function="classification", categories=["no", "yes"])
save("invalid-as-is", fields=TEXTS,
     schema=[mining("y", usageType="target"), mining("x")] +
            [mining(name, invalidValueTreatment="asIs") for name in "fgh"],
     tables=[Table(FACTORS.intercept, *FACTORS.terms, Category("f", "e", "0.5"))], inputs=["x", "f", "g", "h"],
     rows=FACTOR_ROWS + INVALID + [("1", "e", "1", "true")],
     notes="values taken as they are; a term for one that the field doesn't list")
save("invalid-as-missing", fields=TEXTS,
     schema=[mining("y", usageType="target"), mining("x")] +
            [mining(name, invalidValueTreatment="asMissing") for name in "fgh"],
     tables=[FACTORS], inputs=["x", "f", "g", "h"], rows=FACTOR_ROWS + INVALID)


def replaced(row):
    row = dict(row)
    if row["f"] not in ("a", "b", "c", None):
        row["f"] = "b"
    if row["f"] is None:
        row["f"] = "N/A"
    if row["g"] is None:
        row["g"] = "3"
    if row["x"] is None:
        row["x"] = "2.5"
    return None if row["h"] is None or row["g"] == "9" else row


save("replacements", fields=TEXTS,
     schema=[mining("y", usageType="target"), mining("x", missingValueReplacement="2.5", missingValueTreatment="asMean"),
             mining("f", missingValueReplacement="N/A", invalidValueTreatment="asValue", invalidValueReplacement="b"),
             mining("g", missingValueReplacement="3", invalidValueTreatment="returnInvalid"),
             mining("h", missingValueTreatment="returnInvalid")],
     tables=[FACTORS], inputs=["x", "f", "g", "h"], rows=FACTOR_ROWS + INVALID, computed=replaced)


def clipped(row):
    x, z = row["x"], row["z"]
    if x is not None:
        x = str(min(max(float(x), -1.0), 2.0))
    if z is not None and not -1.0 <= float(z) <= 1.0:
        z = None
    return {"x": x, "z": "0.5" if z is None else z}


save("outliers", fields=X,
     schema=[mining("y", usageType="target"),
             mining("x", outliers="asExtremeValues", lowValue="-1", highValue="2"),
             mining("z", outliers="asMissingValues", lowValue="-1", highValue="1", missingValueReplacement="0.5")],
     tables=[LINE], inputs=["x", "z"], rows=POINTS, computed=clipped)

# Categories of fields that list nothing, of numbers, and unlisted ones.
OPEN = [field("y"), field("f", "string", "categorical"), field("n", "integer"), field("b", "boolean", "categorical"),
        field("d", "double", "categorical"), field("l", "string", "categorical", ["p", "q"])]
OPEN_SCHEMA = [mining("y", usageType="target")] + [mining(name) for name in "fnbdl"]
save("open-categories", fields=OPEN, schema=OPEN_SCHEMA,
     tables=[Table("1", Category("f", "a", "2"), Category("f", "b", "4"), Category("n", "3", "8"), Number("n", "0.5"),
                   Category("b", "true", "16"), Category("d", "2.5", "32"), Category("l", "q", "64"),
                   Category("l", "none such", "128"))],
     inputs=["f", "n", "b", "d", "l"],
     rows=[("a", "3", "true", "2.5", "p"), ("b", "4", "false", "2", "q"), ("other", "3", "true", "0", "p"),
           (None, "0", None, None, None), ("b", None, "true", "2.5", "q")],
     notes="texts without a list, a number that is also a category, a boolean without a list, unlisted terms")

# Powers.
save("powers", fields=X, schema=XZ,
     tables=[Table("1", Number("x", "0.5", 2), Number("x", "0.25", 3), Number("z", "2", -1), Number("z", "0.125", "0.5"),
                   Number("x", "3", 0), Number("z", "0.0625", "-1.5"))],
     inputs=["x", "z"], rows=[("2", "4"), ("-1.5", "0.25"), ("0", "1"), ("1", "0"), ("1", "-2"), (None, "1")],
     notes="negative, fractional and zero exponents; without a real power there is no score")
save("powers-logit", fields=TWO, schema=XZ,
     tables=[Table("1", Number("x", "0.5", 2), Number("z", "2", -2), category="yes"), Table("0", category="no")],
     inputs=["x", "z"], rows=[("2", "4"), ("-1.5", "0.25"), ("0", "1"), ("1", "0")], normalization="logit",
     function="classification", categories=["no", "yes"])

# Terms that repeat, products.
save("doubled", fields=TEXTS[:3], schema=TEXT_SCHEMA[:3],
     tables=[Table("1", Number("x", "0.5"), Number("x", "0.25"), Category("f", "b", "2"), Category("f", "b", "0.5"),
                   Number("x", "3", 2), Number("x", "0.5", 2))],
     inputs=["x", "f"], rows=[("2", "a"), ("-1", "b"), ("0", "c")], notes="what stands twice adds")

LOCAL = """  <LocalTransformations>
   <DerivedField name="f=b" optype="continuous" dataType="double"><NormDiscrete field="f" value="b"/></DerivedField>
   <DerivedField name="x scaled" optype="continuous" dataType="double"><NormContinuous field="x"><LinearNorm orig="0" norm="-1"/><LinearNorm orig="4" norm="1"/></NormContinuous></DerivedField>
   <DerivedField name="f=b" optype="continuous" dataType="double"><NormDiscrete field="f" value="b"/></DerivedField>
   <DerivedField name="size" optype="categorical" dataType="string"><Discretize field="x"><DiscretizeBin binValue="small"><Interval closure="openOpen" rightMargin="1"/></DiscretizeBin><DiscretizeBin binValue="large"><Interval closure="closedOpen" leftMargin="1"/></DiscretizeBin></Discretize></DerivedField>
   <DerivedField name="mapped" optype="continuous" dataType="double"><MapValues outputColumn="data:out" dataType="double"><FieldColumnPair field="f" column="data:in"/><InlineTable><row><data:in>a</data:in><data:out>1.5</data:out></row><row><data:in>b</data:in><data:out>-2</data:out></row><row><data:in>c</data:in><data:out>0</data:out></row></InlineTable></MapValues></DerivedField>
  </LocalTransformations>
"""
GLOBAL = """ <TransformationDictionary>
  <DefineFunction name="twice" optype="continuous" dataType="double"><ParameterField name="v" optype="continuous" dataType="double"/><Apply function="*"><Extension name="note" value="2"/><Constant dataType="double">2</Constant><FieldRef field="v"/></Apply></DefineFunction>
  <DerivedField name="doubled x" optype="continuous" dataType="double"><Apply function="twice"><FieldRef field="x"/></Apply></DerivedField>
 </TransformationDictionary>
"""


def transformed(row):
    x, f = row["x"], row["f"]
    derived = dict(row)
    derived["f=b"] = None if f is None else 1 if f == "b" else 0
    derived["x scaled"] = None if x is None else mp.mpf(x) / 2 - 1
    derived["size"] = None if x is None else "small" if mp.mpf(x) < 1 else "large"
    derived["mapped"] = {"a": "1.5", "b": "-2", "c": "0", None: None}[f]
    derived["doubled x"] = None if x is None else 2 * mp.mpf(x)
    return derived


save("transformations", fields=TEXTS[:3], schema=TEXT_SCHEMA[:3],
     tables=[Table("1", Number("x scaled", "0.5", 2), Category("size", "small", "8"), Number("mapped", "3"),
                   Number("doubled x", "0.125"), Product("2", "x", "x", "f=b", label="square of b"),
                   Product("0.25", "doubled x", "mapped"))],
     inputs=["x", "f"], rows=[("2", "a"), ("0.5", "b"), ("-3", "b"), ("4", "c"), ("1", None), (None, "a")],
     computed=transformed, transformations=(GLOBAL, LOCAL),
     head=' xmlns:data="http://example.com/table" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" '
          'xsi:schemaLocation="http://www.dmg.org/PMML-4_4 pmml-4-4.xsd"', version="4.4.1",
     notes="both sections, a function, a derived field twice alike, prefixed columns, products with itself")

save("empty-equation", fields=X, schema=XZ, tables=[Table("2.5")], inputs=["x", "z"], rows=POINTS[:3],
     notes="an intercept alone")
save("version-3.0", fields=['  <DataField name="y" optype="continuous"/>\n', '  <DataField name="x" optype="continuous"/>\n',
                            '  <DataField name="z" optype="continuous"/>\n'],
     schema=XZ, tables=[LINE], inputs=["x", "z"], rows=POINTS, normalization="cloglog", version="3.0",
     model=' targetFieldName="y"', notes="before the families had selectors, without data types")
