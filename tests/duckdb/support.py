"""What the tests of the extension share: the command, databases, small documents."""

import csv
import io
import json
import os
import pathlib
import struct
import subprocess
import tempfile
import unittest

import duckdb

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXTENSION = os.environ["VELSCORE_EXTENSION"]
COMMAND = os.environ["VELSCORE_COMMAND"]
ROWS = int(os.environ.get("VELSCORE_TEST_ROWS", "1000000"))


def command(*arguments):
    """What the command writes; a failure ends the test."""
    done = subprocess.run(
        [COMMAND, *map(str, arguments)], capture_output=True, text=True, check=True
    )
    return done.stdout


def scores(model, table, *options):
    """The command's output, a dictionary a row."""
    text = command("score", model, table, *options)
    header, *rows = csv.reader(io.StringIO(text, newline=""))
    # A row whose one column is empty is read as a line of no fields.
    return [dict(zip(header, row or [""])) for row in rows]


def described(model):
    """What the command tells of a document."""
    return json.loads(command("inspect", "--json", model))


def bits(number):
    """The bits of a double, so that -0 and 0 differ."""
    return struct.pack("<d", number)


def quoted(text):
    """A text as SQL writes it."""
    return "'" + str(text).replace("'", "''") + "'"


class DatabaseTest(unittest.TestCase):
    """A database in memory that has loaded the extension, and a scratch folder."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.base = duckdb.connect(config={"allow_unsigned_extensions": "true"})
        self.addCleanup(self.base.close)
        self.base.execute(f"LOAD {quoted(EXTENSION)}")

    def query(self, text, parameters=None):
        """The rows of an answer."""
        return self.base.execute(text, parameters).fetchall()

    def one(self, text, parameters=None):
        """The one value of an answer."""
        rows = self.query(text, parameters)
        self.assertEqual(len(rows), 1, text)
        return rows[0][0]

    def refusal(self, text, parameters=None):
        """The message of a statement that fails."""
        with self.assertRaises(duckdb.Error, msg=text) as caught:
            self.query(text, parameters)
        return str(caught.exception)

    def write(self, name, text):
        """A file of the scratch folder."""
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return path


def line(slope=2.0, constant=1.0, field="x"):
    """A document of y = constant + slope * x."""
    return f"""<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/>
<DataDictionary><DataField name="y" optype="continuous" dataType="double"/>
<DataField name="{field}" optype="continuous" dataType="double"/></DataDictionary>
<GeneralRegressionModel modelType="generalLinear" functionName="regression">
<MiningSchema><MiningField name="y" usageType="target"/><MiningField name="{field}"/></MiningSchema>
<ParameterList><Parameter name="p0"/><Parameter name="p1"/></ParameterList>
<FactorList/><CovariateList><Predictor name="{field}"/></CovariateList>
<PPMatrix><PPCell value="1" predictorName="{field}" parameterName="p1"/></PPMatrix>
<ParamMatrix><PCell parameterName="p0" beta="{constant!r}"/>
<PCell parameterName="p1" beta="{slope!r}"/></ParamMatrix>
</GeneralRegressionModel></PMML>
"""


# Categories with all that markup, SQL and long texts need, one of them too long to lie in a value.
ODD = ["it's <b>&\"bold\"</b> \\ and a long one, äöü", "n"]


def binary():
    """A document of a category of ODD: the odds of the second are exp(x), of a factor f 'a' or ODD[0]."""
    escaped = ODD[0].replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
    return f"""<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/>
<DataDictionary><DataField name="y" optype="categorical" dataType="string">
<Value value="{escaped}"/><Value value="{ODD[1]}"/></DataField>
<DataField name="f" optype="categorical" dataType="string">
<Value value="a"/><Value value="{escaped}"/></DataField>
<DataField name="x" optype="continuous" dataType="double"/></DataDictionary>
<GeneralRegressionModel modelType="multinomialLogistic" functionName="classification">
<MiningSchema><MiningField name="y" usageType="target"/><MiningField name="f"/>
<MiningField name="x"/></MiningSchema>
<ParameterList><Parameter name="p0"/><Parameter name="p1"/><Parameter name="p2"/></ParameterList>
<FactorList><Predictor name="f"/></FactorList>
<CovariateList><Predictor name="x"/></CovariateList>
<PPMatrix><PPCell value="1" predictorName="x" parameterName="p1"/>
<PPCell value="{escaped}" predictorName="f" parameterName="p2"/></PPMatrix>
<ParamMatrix><PCell parameterName="p0" targetCategory="{ODD[1]}" beta="0"/>
<PCell parameterName="p1" targetCategory="{ODD[1]}" beta="1"/>
<PCell parameterName="p2" targetCategory="{ODD[1]}" beta="4"/></ParamMatrix>
</GeneralRegressionModel></PMML>
"""
