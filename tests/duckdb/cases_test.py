"""Every folder of cases through SQL, from CSV and from Parquet: the command's scores to the last bit."""

import csv
import unittest

from support import ROOT, DatabaseTest, bits, command, described, quoted, scores

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


