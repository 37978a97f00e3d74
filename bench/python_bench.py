"""The Python package: rows per second of processor time, one row, the import.

    $(scripts/python-package.sh)/bin/python bench/python_bench.py

Questions: what a linear model of ten numbers takes from each kind of table (columns `prediction` alone,
a million rows, thread CPU time, the median of five), what one row takes, and the processor time of the import.
"""

import statistics
import subprocess
import sys
import time

import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa

import velscore

NAMES = [f"x{i}" for i in range(10)]
ROWS = 1_000_000


def document() -> bytes:
    def each(form: str) -> str:
        return "".join(form.format(i=i) for i in range(10))

    return f"""<PMML version="4.4"><Header/><DataDictionary>
      {each('<DataField name="x{i}" optype="continuous" dataType="double"/>')}
      <DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
    <GeneralRegressionModel modelType="regression" functionName="regression" modelDF="100"><MiningSchema>
      {each('<MiningField name="x{i}"/>')}<MiningField name="y" usageType="target"/></MiningSchema>
      <ParameterList>{each('<Parameter name="p{i}"/>')}<Parameter name="p10"/></ParameterList>
      <FactorList/><CovariateList>{each('<Predictor name="x{i}"/>')}</CovariateList>
      <PPMatrix>{each('<PPCell value="1" predictorName="x{i}" parameterName="p{i}"/>')}</PPMatrix>
      <ParamMatrix>{each('<PCell parameterName="p{i}" beta="{i}.5" df="1"/>')}
        <PCell parameterName="p10" beta="1" df="1"/></ParamMatrix>
    </GeneralRegressionModel></PMML>""".encode()


def seconds(function, clock, times: int) -> float:
    function()
    taken = []
    for _ in range(times):
        begin = clock()
        function()
        taken.append(clock() - begin)
    return statistics.median(taken)


def main() -> None:
    model = velscore.load(document())
    random = np.random.default_rng(1)
    arrays = {name: random.random(ROWS) for name in NAMES}
    tables = {
        "Polars": pl.DataFrame(arrays),
        "pyarrow": pa.table(arrays),
        "pandas": pd.DataFrame(arrays),
        "dict of arrays": arrays,
    }
    expected = 1 + sum((i + 0.5) * arrays[name][0] for i, name in enumerate(NAMES))
    for kind, table in tables.items():
        first = next(iter(model.predict(table)))
        assert abs((first.as_py() if hasattr(first, "as_py") else first) - expected) < 1e-12
        taken = seconds(lambda: model.predict(table), time.thread_time, 5)
        print(f"{kind:16} {ROWS / taken / 1e6:6.1f} M rows per CPU second")

    score = model.bind(NAMES)
    row = [float(a[0]) for a in arrays.values()]
    one = tables["Polars"].head(1)
    print(f"bound, one row   {seconds(lambda: score(*row), time.perf_counter, 5000) * 1e6:6.1f} us")
    print(f"Polars, one row  {seconds(lambda: model.predict(one), time.perf_counter, 2000) * 1e6:6.1f} us")

    program = "import time; t = time.process_time(); import velscore; print(time.process_time() - t)"
    imports = [
        float(subprocess.run([sys.executable, "-c", program], capture_output=True, check=True).stdout)
        for _ in range(7)
    ]
    print(f"import           {statistics.median(imports) * 1e3:6.1f} ms")


if __name__ == "__main__":
    main()
