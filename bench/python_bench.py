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
from linear_model import NAMES, document

import velscore

ROWS = 1_000_000


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
    named = [dict(zip(NAMES, row))]
    print(f"dict, one row    {seconds(lambda: model.predict(named), time.perf_counter, 5000) * 1e6:6.1f} us")
    print(f"Polars, one row  {seconds(lambda: model.predict(one), time.perf_counter, 2000) * 1e6:6.1f} us")

    program = "import time; t = time.process_time(); import velscore; print(time.process_time() - t)"
    imports = [
        float(subprocess.run([sys.executable, "-c", program], capture_output=True, check=True).stdout)
        for _ in range(7)
    ]
    print(f"import           {statistics.median(imports) * 1e3:6.1f} ms")


if __name__ == "__main__":
    main()
