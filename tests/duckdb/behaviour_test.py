"""What statements are answered and refused: types, NULLs, files, settings, threads."""

import json
import os
import pathlib
import re
import subprocess
import threading

import duckdb

from support import EXTENSION, ODD, ROOT, ROWS, DatabaseTest, binary, line, quoted, scores

# Values for x of y = 1 + 2 x, and y.
TAKEN = [
    ("2.5::DOUBLE", 6.0),
    ("2.5::FLOAT", 6.0),
    ("'-0'::DOUBLE", 1.0),
    ("-3::TINYINT", -5.0),
    ("-300::SMALLINT", -599.0),
    ("-70000::INTEGER", -139999.0),
    ("5000000000::BIGINT", 10000000001.0),
    ("200::UTINYINT", 401.0),
    ("60000::USMALLINT", 120001.0),
    ("4000000000::UINTEGER", 8000000001.0),
    ("9000000000::UBIGINT", 18000000001.0),
    # Beyond 2^53 a number is its text's nearest double: 2^100 and 2^128 are exact.
    ("1267650600228229401496703205376::HUGEINT", 2.0**101),
    ("(-1267650600228229401496703205376)::HUGEINT", -(2.0**101)),
    ("340282366920938463463374607431768211455::UHUGEINT", 2.0**129),
    ("12.5::DECIMAL(4, 1)", 26.0),
    ("-12.5::DECIMAL(9, 2)", -24.0),
    ("-12.5::DECIMAL(18, 3)", -24.0),
    ("-12.5::DECIMAL(38, 4)", -24.0),
    ("true", 3.0),
    ("false", 1.0),
    ("'2.5'", 6.0),
    ("' 2.5 '", 6.0),
    ("'2.5'::ENUM('1', '2.5')", 6.0),
    ("'2.5'::JSON", 6.0),
    ("(CASE WHEN i > 0 THEN 1.5 END)::DOUBLE", 4.0),
]

# Values that are missing, with the status that the command gives.
MISSING = ["NULL", "NULL::INTEGER", "''", "'NA'", "'nan'::DOUBLE", "'nan'::FLOAT"]

INVALID = [
    "'two'", "DATE '2001-02-03'", "TIME '01:02:03'", "'infinity'::DATE", "'-infinity'::TIMESTAMP",
    "TIMESTAMP '2001-02-03 04:05:06'", "TIMESTAMP_S '2001-02-03 04:05:06'",
    "TIMESTAMP_MS '2001-02-03 04:05:06'", "TIMESTAMP_NS '2001-02-03 04:05:06'",
    "TIMESTAMPTZ '2001-02-03 04:05:06+02'", quoted(ODD[0]), "repeat('x', 100000)",
]

NOT_TAKEN = [
    ("[1]", "a list"), ("[1, 2]::INTEGER[2]", "an array"), ("{'a': 1}", "STRUCT"),
    ("MAP {'a': 1}", "MAP"), ("'ab'::BLOB", "BLOB"), ("INTERVAL 1 DAY", "INTERVAL"),
    ("uuid()", "UUID"), ("'101'::BIT", "BIT"), ("'01:02:03+01'::TIMETZ", "TIME WITH TIME ZONE"),
    ("union_value(a := 1)", "UNION"),
]


# Whatever scores a row, by the path of its document.
CALLS = (
    "SELECT velscore({}, {{'x': 1}})",
    "SELECT velscore_curve({}, {{'x': 1}})",
    "FROM velscore_curve({}, {{'x': 1}})",
    "SELECT velscore_explain({}, {{'x': 1}})",
    "FROM velscore_explain({}, {{'x': 1}})",
)


class Types(DatabaseTest):
    """What a column may be of."""

    def setUp(self):
        super().setUp()
        self.model = quoted(self.write("line.pmml", line()))

    def score(self, value):
        """The struct for x, not folded to a constant."""
        return self.one(f"SELECT velscore({self.model}, {{'x': {value}}}) FROM (SELECT 1 AS i) t")

    def test_taken_types_are_read(self):
        """By the arithmetic of the line."""
        for value, y in TAKEN:
            with self.subTest(value):
                self.assertEqual(self.score(value)["prediction"], y)

    def test_taken_types_are_read_in_columns(self):
        """The same over rows of more than a chunk, with NULL between."""
        for value, y in TAKEN:
            with self.subTest(value):
                counts = self.query(
                    f"SELECT s.prediction, count(*) FROM (SELECT velscore({self.model}, {{'x': "
                    f"CASE WHEN i % 3 > 0 THEN {value} END}}) AS s FROM range(1, 5001) r(i)) GROUP BY 1 ORDER BY 1"
                )
                self.assertEqual(counts, [(y, 3334), (None, 1666)])

    def test_missing_and_invalid_values_have_a_status(self):
        """And no prediction."""
        for values, status in ((MISSING, 90029), (INVALID, 269050)):
            for value in values:
                with self.subTest(value):
                    score = self.score(value)
                    self.assertIsNone(score["prediction"])
                    self.assertEqual((score["status"], score["status_field"]), (status, "x"))

    def test_other_types_are_refused_by_name(self):
        """When the statement is bound."""
        for value, name in NOT_TAKEN:
            with self.subTest(value):
                told = self.refusal(f"SELECT velscore({self.model}, {{'x': {value}}})")
                self.assertIn(f"column 'x' is of the type {name}, which isn't taken", told)

    def test_a_column_that_isn_t_read_may_be_of_any_type(self):
        """It isn't looked at."""
        for value, _ in NOT_TAKEN:
            with self.subTest(value):
                score = self.one(f"SELECT velscore({self.model}, {{'a': {value}, 'x': 1}})")
                self.assertEqual(score["prediction"], 3.0)

    def test_dates_are_read_as_their_field_counts(self):
        """Days since 1960 by a field of them; the date's own zone is none, that of TIMESTAMPTZ UTC."""
        text = line().replace('name="x" optype="continuous" dataType="double"',
                              'name="x" optype="continuous" dataType="dateDaysSince[1960]"')
        model = quoted(self.write("dates.pmml", text))
        for value in ("DATE '1960-01-11'", "'1960-01-11'", "TIMESTAMP '1960-01-11 00:00:00'",
                      "TIMESTAMPTZ '1960-01-11 02:00:00+02'"):
            with self.subTest(value):
                score = self.one(f"SELECT velscore({model}, {{'x': {value}}})")
                self.assertEqual(score["prediction"], 21.0)


class Rows(DatabaseTest):
    """Structs, NULLs and texts."""

    def test_a_null_row_has_a_null_answer(self):
        """Between rows that have one."""
        model = quoted(self.write("line.pmml", line()))
        answers = self.query(
            f"SELECT velscore({model}, CASE WHEN i % 2 = 0 THEN {{'x': i}} END) FROM range(3000) r(i)"
        )
        for at, (value,) in enumerate(answers):
            if at % 2:
                self.assertIsNone(value)
            else:
                self.assertEqual(value["prediction"], 1.0 + 2.0 * at)

    def test_wrong_rows_are_refused(self):
        """With what to write instead."""
        model = quoted(self.write("line.pmml", line()))
        calls = [call.format(model, "{}").replace("{'x': 1}", "{}") for call in CALLS]
        for call in calls:
            for row in ("1", "NULL", "'x'", "[1]", "MAP {'x': 1}"):
                with self.subTest(call=call, row=row):
                    told = self.refusal(call.format(row))
                    self.assertIn("takes a row as a struct, and found another type", told)
            with self.subTest(call):
                self.assertIn("without", self.refusal(call.format("row(1, 2)")))
        told = self.refusal(f"SELECT velscore({model}, {{'z': 1, 'X ': 2}})")
        self.assertIn("no column 'x', which the model needs; it has z, X ", told)

    def test_an_alias_is_a_row(self):
        """Of a table, of a query, of a join."""
        model = quoted(self.write("line.pmml", line()))
        self.query("CREATE TABLE t AS SELECT i::DOUBLE AS x, i % 3 AS k FROM range(10) r(i)")
        for source in ("t", "(SELECT * FROM t) AS t", "t JOIN (SELECT DISTINCT k FROM t) USING (k)"):
            total = self.one(f"SELECT sum(velscore({model}, t).prediction) FROM {source}")
            self.assertEqual(total, 10.0 + 2.0 * 45.0)

    def test_odd_texts_come_through(self):
        """As a factor, as the category and as keys, over many chunks and kept in a table."""
        model = quoted(self.write("binary.pmml", binary()))
        self.query(
            f"CREATE TABLE s AS SELECT i, velscore({model}, {{'x': CASE WHEN i % 2 = 0 THEN -9 ELSE 2 END, "
            f"'f': CASE WHEN i % 5 = 0 THEN {quoted(ODD[0])} ELSE 'a' END}}) AS v FROM range(20000) r(i)"
        )
        # x = -9: the first whatever f adds; x = 2: the second.
        counts = self.query("SELECT i % 2, v.category, count(*) FROM s GROUP BY ALL ORDER BY 1")
        self.assertEqual(counts, [(0, ODD[0], 10000), (1, ODD[1], 10000)])
        keys = self.query("SELECT DISTINCT map_keys(v.probabilities) FROM s")
        self.assertEqual(keys, [(ODD,)])
        odd = self.one("SELECT count(*) FROM s WHERE abs(list_sum(map_values(v.probabilities)) - 1) > 1e-15")
        self.assertEqual(odd, 0)
        # exp(-9 + 4) to 1 for the odd f, exp(-9) else: the second's probability, e / (1 + e).
        odds = self.query(
            f"SELECT DISTINCT i % 5 = 0, round(v.probabilities[{quoted(ODD[1])}], 12) FROM s WHERE i % 2 = 0 ORDER BY 1"
        )
        self.assertEqual(odds, [(False, 0.000123394576), (True, 0.006692850924)])

    def test_a_path_with_quotes_and_markup_is_told_as_it_is(self):
        """In the message, and as a file."""
        name = "it's <a> & \"b\" ä.pmml"
        self.assertIn(name, self.refusal(f"SELECT velscore({quoted(name)}, {{'x': 1}})"))
        path = self.write(name, line())
        self.assertEqual(self.one(f"SELECT velscore({quoted(path)}, {{'x': 1}}).prediction"), 3.0)


class Options(DatabaseTest):
    """The third argument: a constant struct."""

    # Options of each function that are refused, and what is said of them.
    REFUSED = [
        ("{'levl': 0.9}", "velscore() has no option 'levl'; its options are level, policy, missing, nan, map, "
                          "prediction_only"),
        ("{'top': 1}", "velscore() has no option 'top'"),
        ("1", "the options of velscore() are 1; expected is a struct"),
        ("'level'", "expected is a struct"),
        ("{'level': 'high'}", "the option 'level' is 'high'; expected is a number above 0 and below 1"),
        ("{'level': 0.0}", "the option 'level' is 0.0; expected is a number above 0 and below 1"),
        ("{'level': 1.5}", "the option 'level' is '1.5'; expected is a number above 0 and below 1 [269403]"),
        ("{'policy': 3}", "the option 'policy' is 3; expected is substitute, sysmis or status"),
        ("{'policy': ''}", "expected is substitute, sysmis or status"),
        ("{'policy': 'never'}", "the option 'policy' is 'never'; expected is substitute, sysmis or status [269403]"),
        ("{'nan': 'zero'}", "the option 'nan' is 'zero'; expected is missing or invalid"),
        ("{'missing': 3}", "the option 'missing' is 3; expected is a text, or a list of texts"),
        ("{'missing': [1]}", "the option 'missing' is 1; expected is a text, or a list of texts"),
        ("{'missing': ['a', NULL]}", "expected is a text, or a list of texts"),
        ("{'map': 'x'}", "the option 'map' is 'x'; expected is a struct of names of columns"),
        ("{'map': {'x': 1}}", "the option 'map' is 1; expected is a struct of names of columns"),
        ("{'map': {'w': 'x'}}", "[269327]"),
        ("{'map': {'x': 'z'}}", "[269303]"),
        ("{'prediction_only': 1}", "the option 'prediction_only' is 1; expected is true or false"),
    ]

    def test_limits_have_their_level(self):
        """As the command writes them."""
        folder = ROOT / "examples" / "motor-cars"
        model, table = folder / "model.pmml", folder / "cases.csv"
        wanted = [
            (float(row["ci_lower"]), float(row["ci_upper"])) for row in scores(model, table, "--level", "0.9")
        ]
        found = self.query(
            f"SELECT s.ci_lower, s.ci_upper FROM (SELECT velscore({quoted(model)}, t, {{'level': 0.9}}) AS s "
            f"FROM read_csv({quoted(table)}, all_varchar = true) AS t)"
        )
        self.assertEqual(found, wanted)

    def test_each_option_is_heeded(self):
        """Beside what stands without it."""
        text = line().replace('<MiningField name="x"/>', '<MiningField name="x" missingValueReplacement="3"/>')
        model = quoted(self.write("line.pmml", text))
        rows = [  # row, options, prediction, status
            ("{'x': NULL}", "NULL", 7.0, 0),
            ("{'x': NULL}", "{'policy': NULL}", 7.0, 0),
            ("{'x': NULL}", "{'policy': 'sysmis'}", None, 90029),
            ("{'x': '-9'}", "{'missing': '-9'}", 7.0, 0),
            ("{'x': 'none'}", "{'missing': ['-9', 'none']}", 7.0, 0),
            ("{'x': 'nan'::DOUBLE}", "NULL", 7.0, 0),
            ("{'x': 'nan'::DOUBLE}", "{'nan': 'missing'}", 7.0, 0),
            ("{'w': 2}", "{'map': {'x': 'w'}}", 5.0, 0),
            ("{'w': 2, 'x': 9}", "{'map': MAP {'x': 'w'}}", 5.0, 0),
            ("{'x': 2}", "{'prediction_only': true}", 5.0, 0),
        ]
        for row, options, prediction, status in rows:
            with self.subTest(row=row, options=options):
                score = self.one(f"SELECT velscore({model}, {row}, {options}) FROM (SELECT 1 AS i) t")
                self.assertEqual((score["prediction"], score["status"]), (prediction, status))

    def test_a_nan_may_be_invalid(self):
        """Which has a status of its own."""
        treated = '<MiningField name="x" missingValueReplacement="3" invalidValueTreatment="returnInvalid"/>'
        model = quoted(self.write("line.pmml", line().replace('<MiningField name="x"/>', treated)))
        for nan, status in (("missing", 0), ("invalid", 269052)):
            found = self.one(f"SELECT velscore({model}, {{'x': 'nan'::DOUBLE}}, {{'nan': '{nan}'}}).status")
            self.assertEqual(found, status)

    def test_prediction_only_leaves_the_rest_out(self):
        """Which is there without it."""
        model = quoted(ROOT / "examples" / "motor-cars" / "model.pmml")
        row = "{'wt': 2.62, 'hp': 110, 'cyl': '6', 'am': 'manual'}"
        whole = self.one(f"SELECT velscore({model}, {row}, {{'prediction_only': false}})")
        alone = self.one(f"SELECT velscore({model}, {row}, {{'prediction_only': true}})")
        self.assertIsNotNone(whole["std_dev"])
        self.assertEqual(alone["prediction"], whole["prediction"])
        self.assertIsNone(alone["std_dev"])

    def test_what_can_t_be_is_refused_by_name(self):
        """When the statement is bound: there is no row."""
        model = quoted(self.write("line.pmml", line()))
        for options, text in self.REFUSED:
            with self.subTest(options):
                told = self.refusal(f"SELECT velscore({model}, {{'x': i}}, {options}) FROM range(0) r(i)")
                self.assertIn(text, told)

    def test_options_are_constant(self):
        """A column is none, a folded expression is."""
        model = quoted(self.write("line.pmml", line()))
        for function in ("velscore", "velscore_explain"):
            told = self.refusal(f"SELECT {function}({model}, {{'x': 1}}, {{'policy': p}}) FROM (VALUES ('sysmis')) t(p)")
            self.assertIn(f"the options of {function}() are the same for all rows", told)
        score = self.one(f"SELECT velscore({model}, {{'x': 1}}, {{'missing': '1' || '0'}})")
        self.assertEqual(score["prediction"], 3.0)

    def test_a_level_needs_limits(self):
        """A document without covariances has none to tell."""
        model = quoted(ROOT / "examples" / "birth-weight" / "model.pmml")
        told = self.refusal(f"SELECT velscore({model}, {{'race': 'a', 'ht': 'b', 'age': 1}}, {{'level': 0.9}})")
        self.assertIn("the option 'level' has no meaning", told)

    def test_curves_and_terms_have_options_of_their_own(self):
        """And refuse the others' by name."""
        cox = quoted(ROOT / "examples" / "veteran-lung-cancer" / "model.pmml")
        row = "{'trt': '1', 'type': 'adeno', 'karno': 60}"
        options = "{'map': {'celltype': 'type'}}"
        self.assertEqual(self.one(f"SELECT len(velscore_curve({cox}, {row}, {options}))"), 25)
        told = self.refusal(f"SELECT velscore_curve({cox}, {row}, {{'level': 0.9}})")
        self.assertIn("velscore_curve() has no option 'level'; its options are policy, missing, nan, map", told)
        model = quoted(self.write("line.pmml", line()))
        told = self.refusal(f"SELECT velscore_explain({model}, {{'x': 1}}, {{'level': 0.9}})")
        self.assertIn("velscore_explain() has no option 'level'; its options are top, policy", told)
        for top in ("-1", "1.5", "'1'"):
            told = self.refusal(f"SELECT velscore_explain({model}, {{'x': 1}}, {{'top': {top}}})")
            self.assertIn("expected is a whole number of 0 or more", told)


class Documents(DatabaseTest):
    """Files: missing, wrong, changed, forbidden."""

    def test_documents_that_can_t_be_used_are_refused(self):
        """By every function, with the reason."""
        wrong = self.write("wrong.pmml", "<PMML>\n  <Header>\n")
        empty = self.write("empty.pmml", "")
        calls = (*CALLS, "FROM velscore_inspect({})")
        for call in calls:
            with self.subTest(call):
                self.assertIn("can't be read", self.refusal(call.format("'no such file'")))
                self.assertIn("can't be read", self.refusal(call.format(quoted(self.folder))))
                self.assertRegex(self.refusal(call.format(quoted(wrong))), r"wrong\.pmml.*\[\d{6}\]")
                self.assertRegex(self.refusal(call.format(quoted(empty))), r"empty\.pmml.*\[\d{6}\]")
                self.assertIn("is NULL", self.refusal(call.format("NULL::VARCHAR")))

    def test_check_tells_faults_instead(self):
        """A line each; a sound document has none."""
        wrong = self.write("wrong.pmml", line().replace("modelType=", "modeltype="))
        rows = self.query(f"SELECT severity, line, message, remedy FROM velscore_check({quoted(wrong)})")
        self.assertGreater(len(rows), 0)
        self.assertEqual(rows[0][0], "fault")
        self.assertIn("modeltype", rows[0][2])
        sound = self.write("sound.pmml", line())
        self.assertEqual(self.query(f"FROM velscore_check({quoted(sound)})"), [])
        self.assertIn("can't be read", self.refusal("FROM velscore_check('no such file')"))

    def test_inspect_tells_what_the_command_tells(self):
        """What is read, what is answered, and all of it as JSON."""
        model = ROOT / "examples" / "birth-weight" / "model.pmml"
        rows = self.query(f"FROM velscore_inspect({quoted(model)})")
        self.assertIn(("model", "family", "binary logistic regression"), rows)
        self.assertEqual([n for p, n, _ in rows if p == "reads"], ["race", "ht", "age"])
        self.assertIn(("result", "probability(low)", "probability of the category"), rows)
        about = json.loads([v for p, _, v in rows if p == "json"][0])
        told = subprocess.run([os.environ["VELSCORE_COMMAND"], "inspect", "--json", str(model)],
                              capture_output=True, check=True).stdout
        self.assertEqual(about, json.loads(told))

    def test_a_document_that_changes_is_read_anew(self):
        """Also one of the same size and time, while the one before is in use."""
        path = self.write("line.pmml", line(slope=2.0))
        times = (1_000_000_000, 1_000_000_000)
        for slope in (2.0, 3.0, 4.0, 2.0):
            self.write("line.pmml", line(slope=slope))
            os.utime(path, times)
            found = self.one(f"SELECT velscore({quoted(path)}, {{'x': 1}}).prediction")
            self.assertEqual(found, 1.0 + slope)
        self.write("line.pmml", "gone")
        self.assertIn("not well-formed", self.refusal(f"SELECT velscore({quoted(path)}, {{'x': 1}})"))
        path.unlink()
        self.assertIn("can't be read", self.refusal(f"SELECT velscore({quoted(path)}, {{'x': 1}})"))

    def test_a_statement_keeps_its_model(self):
        """Whatever happens to the file between its first row and its last."""
        path = self.write("line.pmml", line(slope=2.0))
        answer = self.base.execute(
            f"SELECT velscore({quoted(path)}, {{'x': i}}).prediction FROM range(100000) r(i)"
        )
        self.assertEqual(answer.fetchone(), (1.0,))
        self.write("line.pmml", "gone")
        self.assertEqual(answer.fetchall()[-1], (199999.0,))

    def test_a_path_may_be_a_parameter(self):
        """Of a statement, and of a prepared one; else it is one for all rows."""
        path = str(self.write("line.pmml", line()))
        other = str(self.write("other.pmml", line(slope=5.0)))
        self.query("CREATE TABLE t AS SELECT i AS x FROM range(3000) r(i)")
        self.assertEqual(self.one("SELECT max(velscore(?, t).prediction) FROM t", [path]), 5999.0)
        self.query("PREPARE p AS SELECT max(velscore($1, t).prediction) FROM t")
        self.assertEqual(self.one(f"EXECUTE p({quoted(path)})"), 5999.0)
        self.assertEqual(self.one(f"EXECUTE p({quoted(other)})"), 14996.0)
        self.assertIn("is NULL", self.refusal("EXECUTE p(NULL)"))
        self.assertIn("can't be read", self.refusal("EXECUTE p('no such file')"))
        both = f"(VALUES ({quoted(path)}), ({quoted(other)})) m(path)"
        self.assertIn("one model for all rows", self.refusal(f"SELECT velscore(path, t) FROM t, {both}"))

    def test_external_access_is_the_database_s_own_setting(self):
        """Off, it forbids all but what is allowed."""
        allowed = self.folder / "allowed"
        allowed.mkdir()
        path = self.write("line.pmml", line())
        single = self.write("single.pmml", line())
        inside = self.write("allowed/line.pmml", line())
        self.query(f"SET allowed_directories = [{quoted(allowed)}]")
        self.query(f"SET allowed_paths = [{quoted(single)}]")
        self.query("SET enable_external_access = false")
        calls = (*CALLS, "FROM velscore_inspect({})", "FROM velscore_check({})")
        for call in calls:
            for forbidden in (path, allowed / ".." / "line.pmml"):
                with self.subTest(call):
                    told = self.refusal(call.format(quoted(forbidden)))
                    self.assertIn("disabled by configuration", told)
        for each in (inside, single):
            self.assertEqual(self.one(f"SELECT velscore({quoted(each)}, {{'x': 1}}).prediction"), 3.0)


class Running(DatabaseTest):
    """Long statements and several of them."""

    def test_a_query_can_be_interrupted(self):
        """And the connection goes on."""
        model = quoted(self.write("line.pmml", line()))
        for value in ("velscore({}, {{'x': i}}).prediction", "len(velscore_explain({}, {{'x': i}}))"):
            with self.subTest(value):
                timer = threading.Timer(0.5, self.base.interrupt)
                timer.start()
                with self.assertRaises(duckdb.InterruptException):
                    self.query(f"SELECT sum({value.format(model)}) FROM range(1000000000000) r(i)")
                timer.join()
                self.assertEqual(self.one(f"SELECT velscore({model}, {{'x': 1}}).prediction"), 3.0)

    def test_eight_queries_at_once_are_right(self):
        """Each row of each, of two models, one of which is replaced meanwhile. Quarters are exact."""
        steady = quoted(self.write("steady.pmml", line()))
        moving = self.folder / "moving.pmml"
        moving.write_text(line(slope=4.0), encoding="utf-8")
        self.query(f"CREATE TABLE t AS SELECT i * 0.25 AS x FROM range({ROWS}) r(i)")
        wrong = []

        def run(number):
            own = self.base.cursor()
            model, slope = (steady, 2.0) if number % 2 else (quoted(moving), 4.0)
            counts = own.execute(
                "SELECT count(*), count(*) FILTER (WHERE s.prediction = 1 + y AND s.status = 0) FROM "
                f"(SELECT velscore({model}, t) AS s, {slope}::DOUBLE * x AS y FROM t)"
            ).fetchone()
            if counts != (ROWS, ROWS):
                wrong.append((number, counts))

        threads = [threading.Thread(target=run, args=(number,)) for number in range(8)]
        for thread in threads:
            thread.start()
        for constant in range(50):  # the same line, another document
            other = self.folder / "other.pmml"
            other.write_text(line(slope=4.0) + f"<!-- {constant} -->", encoding="utf-8")
            os.replace(other, moving)
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])


class File(DatabaseTest):
    """The extension as a file."""

    def test_it_shows_its_entry_alone(self):
        """So that nothing of ours meets another's in the process."""
        shown = subprocess.run(["nm", "-D", "--defined-only", EXTENSION.replace(
            "velscore.duckdb_extension", "velduckdb.so")], capture_output=True, text=True, check=True)
        names = [row.split()[-1] for row in shown.stdout.splitlines()]
        self.assertEqual(names, ["velscore_init_c_api"])


class Pages(DatabaseTest):
    """The documentation's statements."""

    def test_the_examples_of_sql_md_run(self):
        """In their order, and those that show an answer give it."""
        text = (ROOT / "docs" / "sql.md").read_text(encoding="utf-8")
        blocks = re.findall(r"```sql\n(.*?)```(?:\n\n```text\n(.*?)```)?", text, re.S)
        self.assertGreater(len(blocks), 4)
        here = os.getcwd()
        self.addCleanup(os.chdir, here)
        (self.folder / "examples").symlink_to(ROOT / "examples")
        (self.folder / "velscore_score.sql").symlink_to(
            pathlib.Path(EXTENSION).parent / "velscore_score.sql"
        )
        (self.folder / "velscore.duckdb_extension").symlink_to(EXTENSION)
        os.chdir(self.folder)
        shown = 0
        for block, answer in blocks:
            block = re.sub(r"^\.read (\S+)$", lambda m: (self.folder / m[1]).read_text(), block, flags=re.M)
            with self.subTest(block):
                rows = self.query(block)
                if answer:
                    shown += 1
                    told = "\n".join(" | ".join(map(str, row)) for row in rows)
                    self.assertEqual(told, answer.strip())
        self.assertGreater(shown, 1)
