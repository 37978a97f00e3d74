#!/usr/bin/env python3
"""Questions, all of one run of a database in memory on two threads:

    linear      rows a second of velscore() over ten columns of doubles, the prediction summed
    expression  the same with the linear predictor written out in SQL; the ratio is the figure
    pass        the ten columns summed, for what reading them costs
    logit       a binary model: category and probabilities are written too

    bench/duckdb_bench.py build/release/lib/velscore.duckdb_extension [ROWS]

Runs with any Python that has duckdb; scripts/test-duckdb.sh makes one, build/duckdb-tests/2.0.0/bin/python.
Rounds of all queries alternate, and medians are told by the clock and by CPU time: what both threads would
reach if they had a processor each, which is the figure to keep of a machine that others use.
"""
import os
import pathlib
import statistics
import sys
import tempfile
import time

import duckdb

COLUMNS = [f"x{i}" for i in range(1, 11)]
BETAS = [-0.5 + 0.1 * i + 0.01 for i in range(10)]
CONSTANT = 0.25
ROUNDS = 7
THREADS = 2


def document(head, last):
    """A model of the ten columns."""
    fields = "".join(
        f'<DataField name="{x}" optype="continuous" dataType="double"/>' for x in COLUMNS
    )
    mining = "".join(f'<MiningField name="{x}"/>' for x in COLUMNS)
    parameters = "".join(f'<Parameter name="p{i}"/>' for i in range(11))
    covariates = "".join(f'<Predictor name="{x}"/>' for x in COLUMNS)
    pairs = "".join(
        f'<PPCell value="1" predictorName="{x}" parameterName="p{i + 1}"/>'
        for i, x in enumerate(COLUMNS)
    )
    betas = [CONSTANT] + BETAS
    cells = "".join(
        f'<PCell parameterName="p{i}" {last} beta="{b!r}"/>' for i, b in enumerate(betas)
    )
    return f"""<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/>
<DataDictionary>{head[0]}{fields}</DataDictionary>
<GeneralRegressionModel {head[1]}>
<MiningSchema><MiningField name="y" usageType="target"/>{mining}</MiningSchema>
<ParameterList>{parameters}</ParameterList><FactorList/><CovariateList>{covariates}</CovariateList>
<PPMatrix>{pairs}</PPMatrix><ParamMatrix>{cells}</ParamMatrix>
</GeneralRegressionModel></PMML>
"""


LINEAR = document(
    (
        '<DataField name="y" optype="continuous" dataType="double"/>',
        'modelType="generalLinear" functionName="regression"',
    ),
    "",
)
LOGIT = document(
    (
        '<DataField name="y" optype="categorical" dataType="string">'
        '<Value value="no"/><Value value="yes"/></DataField>',
        'modelType="multinomialLogistic" functionName="classification"',
    ),
    'targetCategory="yes"',
)


def main():
    """Prints millions of rows a second."""
    extension = pathlib.Path(sys.argv[1]).resolve()
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 20_000_000
    folder = tempfile.mkdtemp()
    for name, text in (("linear", LINEAR), ("logit", LOGIT)):
        pathlib.Path(folder, f"{name}.pmml").write_text(text, encoding="utf-8")
    base = duckdb.connect(config={"allow_unsigned_extensions": "true", "threads": THREADS})
    base.execute(f"LOAD '{extension}'")
    made = ", ".join(f"random() + {i} AS {x}" for i, x in enumerate(COLUMNS))
    base.execute(f"CREATE TABLE cases AS SELECT {made} FROM range({rows})")
    terms = " + ".join(f"{b!r} * {x}" for b, x in zip(BETAS, COLUMNS))
    queries = {
        "pass": "SELECT " + " + ".join(f"sum({x})" for x in COLUMNS) + " FROM cases",
        "expression": f"SELECT sum({CONSTANT} + {terms}) FROM cases",
        "linear": f"SELECT sum(velscore('{folder}/linear.pmml', c).prediction) FROM cases c",
        "logit": f"SELECT count(velscore('{folder}/logit.pmml', c).category) FROM cases c",
    }
    times = {name: [] for name in queries}
    cpu = {name: [] for name in queries}
    sums = {}
    for _ in range(ROUNDS):
        for name, query in queries.items():
            start, used = time.perf_counter(), time.process_time()
            sums[name] = base.execute(query).fetchone()[0]
            times[name].append(time.perf_counter() - start)
            cpu[name].append((time.process_time() - used) / THREADS)
    if abs(sums["linear"] - sums["expression"]) > 1e-9 * abs(sums["expression"]):
        sys.exit(f"the sums differ: {sums['linear']!r} and {sums['expression']!r}")
    print(f"DuckDB {duckdb.__version__}, {rows} rows, {THREADS} threads, load {os.getloadavg()[0]:.1f}")
    for name, each in times.items():
        wall, own = statistics.median(each), statistics.median(cpu[name])
        print(
            f"  {name:<11} {rows / wall / 1e6:6.1f} M rows/s, of both threads' CPU time "
            f"{rows / own / 1e6:6.1f} (best {rows / min(cpu[name]) / 1e6:.1f})"
        )
    for what, of in (("wall", times), ("CPU", cpu)):
        ratios = [e / v for e, v in zip(of["expression"], of["linear"])]
        print(f"  linear / expression by {what} time: {statistics.median(ratios):.2f} (median of rounds)")


if __name__ == "__main__":
    main()
