"""Every folder of cases through SQL, from CSV and from Parquet: the command's scores to the last bit."""

import csv
import pathlib
import unittest

from support import EXTENSION, ROOT, DatabaseTest, bits, command, described, line, quoted, scores

# Of types: what a file of a kind holds. Texts are as the command reads them; in Parquet numbers are
# doubles, texts and dates what they are.
SOURCES = {
    "csv": "read_csv({}, all_varchar = true)",
    "parquet": "read_csv({}, auto_type_candidates = ['DOUBLE', 'VARCHAR'])",
}
NUMBERS = ["linear_predictor", "std_dev", "ci_lower", "ci_upper", "cum_hazard"]


def number(text):
    """A number of the command's output by its bits; None where there is none."""
    return None if text == "" else bits(float(text))


def maybe_bits(value):
    """The same of a value of the database."""
    return None if value is None else bits(value)


def expected(model, table):
    """The structs that the command's output means."""
    on_request = [each["column"] for each in described(model)["columnsOnRequest"]]
    rows = scores(model, table)
    lp = [{}] * len(rows)
    if "linear_predictor" in on_request:
        # Beside the prediction: alone, that of a Cox model needs no end time.
        lp = scores(model, table, "--columns", "prediction,linear_predictor")
    structs = []
    for row, more in zip(rows, lp):
        row = dict(row)
        row.update((key, value) for key, value in more.items() if key == "linear_predictor")
        made = {name: number(row.pop(name, "")) for name in NUMBERS}
        made["prediction"] = row.pop("prediction")
        made["status"] = int(row.pop("status"))
        made["status_field"] = row.pop("status_field") or None
        start = "probability("
        named = {key[len(start) : -1]: value for key, value in row.items() if key.startswith(start)}
        has = any(value != "" for value in named.values())
        made["probabilities"] = {key: number(text) for key, text in named.items()} if has else None
        left = [key for key in row if not key.startswith(start)]
        if left:
            raise AssertionError(f"columns {left} have no place in the struct")
        structs.append(made)
    return structs


def found(value):
    """A struct of the database in the same form."""
    made = {name: None if value[name] is None else bits(value[name]) for name in NUMBERS}
    made["status"] = value["status"]
    made["status_field"] = value["status_field"]
    probabilities = value["probabilities"]
    if probabilities is not None:
        probabilities = {key: bits(each) for key, each in probabilities.items()}
    made["probabilities"] = probabilities
    return made


class Cases(DatabaseTest):
    """One test for all folders: a case each."""

    def compare(self, folder, source):
        """The scores of one folder, and that of its rows the database's answer is the command's."""
        model, table = folder / "model.pmml", folder / "input.csv"
        wanted = expected(model, table)
        read = SOURCES[source].format(quoted(table))
        if source == "parquet":
            path = self.folder / "cases.parquet"
            self.query(f"COPY (FROM {read}) TO {quoted(path)} (FORMAT parquet)")
            read = quoted(path)
        answers = self.query(f"SELECT velscore({quoted(model)}, t) FROM {read} AS t")
        self.assertEqual(len(answers), len(wanted))
        for at, ((value,), row) in enumerate(zip(answers, wanted)):
            prediction = row.pop("prediction")
            with self.subTest(folder=folder.name, source=source, row=at + 1):
                self.assertEqual(found(value), row)
                if value["prediction"] is None:
                    self.assertEqual(value["category"] or "", prediction)
                else:
                    self.assertIsNone(value["category"])
                    self.assertEqual(bits(value["prediction"]), number(prediction))

    def test_scores_are_the_command_s(self):
        """From both kinds of files."""
        data = ROOT / "tests" / "data"
        folders = sorted(p.parent for kind in ("cases", "regression") for p in data.glob(f"{kind}/*/model.pmml"))
        self.assertGreater(len(folders), 70)
        for folder in folders:
            for source in SOURCES:
                self.compare(folder, source)


class Curves(DatabaseTest):
    """Survival curves, of many rows and of one."""

    def test_curves_are_the_command_s(self):
        """Row for row, and of a single row as a table."""
        folder = ROOT / "examples" / "veteran-lung-cancer"
        model, table = folder / "model.pmml", folder / "cases.csv"
        lines = list(csv.reader(command("curve", model, table).splitlines()))[1:]
        read = f"read_csv({quoted(table)}, all_varchar = true)"
        answers = self.query(f"SELECT velscore_curve({quoted(model)}, t) FROM {read} AS t")
        points = [
            [str(row), *(bits(point[key]) for key in ("time", "survival", "cum_hazard"))]
            for row, (curve,) in enumerate(answers, 1)
            for point in curve
        ]
        wanted = [[row, *(bits(float(text)) for text in rest)] for row, *rest in lines]
        self.assertEqual(points, wanted)

        with open(table, encoding="utf-8", newline="") as file:
            first = next(csv.DictReader(file))
        row = ", ".join(f"{quoted(key)}: {quoted(value)}" for key, value in first.items())
        found_lines = self.query(f"FROM velscore_curve({quoted(model)}, {{{row}}})")
        self.assertEqual(
            [["1", *map(bits, each)] for each in found_lines], [w for w in wanted if w[0] == "1"]
        )

    def test_a_row_without_a_curve_has_none(self):
        """A missing value, and a row that is NULL, among rows that have one."""
        model = ROOT / "examples" / "veteran-lung-cancer" / "model.pmml"
        rows = self.query(
            f"SELECT len(velscore_curve({quoted(model)}, t.r)) FROM (VALUES"
            " (1, {'trt': '1', 'celltype': 'adeno', 'karno': 60}),"
            " (2, {'trt': '1', 'celltype': 'adeno', 'karno': NULL}), (3, NULL),"
            " (4, {'trt': '2', 'celltype': 'large', 'karno': 70})) t(i, r) ORDER BY i"
        )
        self.assertEqual(rows, [(25,), (None,), (None,), (26,)])


class Explanations(DatabaseTest):
    """How linear predictors add up: the command's lines to the last bit."""

    def lines(self, model, table, options=""):
        """Of all rows, as the command writes them; one without a score has no line here."""
        read = f"read_csv({quoted(table)}, all_varchar = true)"
        answers = self.query(f"SELECT velscore_explain({quoted(model)}, t{options}) FROM {read} AS t")
        return [
            [str(row), line["equation"] or "", line["term"], *map(maybe_bits, (line["value"], line["contribution"]))]
            for row, (lines,) in enumerate(answers, 1)
            for line in lines or []
        ]

    def wanted(self, model, table, *options):
        """The command's, but for rows without a score."""
        text = command("explain", model, table, "--long", *options)
        rows = list(csv.reader(text.splitlines()))[1:]
        return [
            [row, equation, term, number(value), number(contribution)]
            for row, equation, term, value, contribution in rows
            if term
        ]

    def test_lines_are_the_command_s(self):
        """Of every folder, all of them and the largest alone."""
        folders = sorted(p.parent for p in (ROOT / "tests" / "data" / "cases").glob("*/model.pmml"))
        self.assertGreater(len(folders), 50)
        for folder in folders:
            model, table = folder / "model.pmml", folder / "input.csv"
            for sql, options in (("", ()), (", {'top': 1}", ("--top", "1")), (", {top: 0}", ("--top", "0"))):
                with self.subTest(folder=folder.name, options=options):
                    self.assertEqual(self.lines(model, table, sql), self.wanted(model, table, *options))

    def test_lines_of_one_row_are_a_table(self):
        """Behind FROM; of a row without a score none."""
        folder = ROOT / "examples" / "birth-weight"
        model, table = folder / "model.pmml", folder / "cases.csv"
        with open(table, encoding="utf-8", newline="") as file:
            first = next(csv.DictReader(file))
        row = ", ".join(f"{quoted(key)}: {quoted(value)}" for key, value in first.items())
        found_lines = self.query(f"FROM velscore_explain({quoted(model)}, {{{row}}})")
        self.assertEqual(
            [["1", *each[:2], *map(maybe_bits, each[2:])] for each in found_lines],
            [line for line in self.wanted(model, table) if line[0] == "1"],
        )
        empty = ", ".join(f"{quoted(key)}: NULL" for key in first)
        self.assertEqual(self.query(f"FROM velscore_explain({quoted(model)}, {{{empty}}})"), [])

    def test_rows_of_many_chunks_add_up(self):
        """y = 1 + 2 x; rows without a score and rows that are NULL have no lines."""
        model = quoted(self.write("line.pmml", line()))
        rows = self.query(
            f"SELECT i, velscore_explain({model}, CASE WHEN i % 7 <> 0 THEN {{'x': CASE WHEN i % 5 <> 0 THEN i END}} END)"
            " FROM range(20000) r(i) ORDER BY i"
        )
        self.assertEqual(len(rows), 20000)
        for i, lines in rows:
            if i % 7 == 0 or i % 5 == 0:
                self.assertIsNone(lines)
                continue
            self.assertEqual([each["equation"] for each in lines], [None, None])
            self.assertEqual([each["value"] for each in lines], [1.0, i])
            self.assertEqual([each["contribution"] for each in lines], [1.0, 2.0 * i])

    def test_a_table_s_lines_stand_beside_its_rows(self):
        """By the macro that reads a source."""
        self.query((pathlib.Path(EXTENSION).parent / "velscore_score.sql").read_text(encoding="utf-8"))
        model = quoted(self.write("line.pmml", line()))
        self.query("CREATE TABLE cases AS FROM (VALUES (7, 3.0), (8, NULL), (9, 5.0)) t(id, x)")
        rows = self.query(f"SELECT id, term, value, contribution FROM velscore_terms({model}, 'cases') WHERE value > 1")
        self.assertEqual(rows, [(7, "p1", 3.0, 6.0), (9, "p1", 5.0, 10.0)])
