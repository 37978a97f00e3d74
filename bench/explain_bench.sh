#!/usr/bin/env bash
# What `velscore explain --long` costs: rows of 19 columns through a general linear model of 20 terms,
# from file to file; rows a second of CPU time and by the clock, by threads. Medians of 3.
#
#   bench/explain_bench.sh [VELSCORE] [ROWS]
set -eu
velscore=${1:-"$(dirname "$0")/../build/release/bin/velscore"}
rows=${2:-1000000}
python=${PYTHON:-python3}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

awk -v terms=20 'BEGIN {
    last = terms - 1
    print "<PMML xmlns=\"http://www.dmg.org/PMML-4_4\" version=\"4.4\"><Header/><DataDictionary>"
    print "<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>"
    for (i = 1; i <= last; ++i) printf "<DataField name=\"x%d\" optype=\"continuous\" dataType=\"double\"/>\n", i
    print "</DataDictionary><GeneralRegressionModel modelType=\"generalLinear\" functionName=\"regression\">"
    print "<MiningSchema><MiningField name=\"y\" usageType=\"target\"/>"
    for (i = 1; i <= last; ++i) printf "<MiningField name=\"x%d\"/>\n", i
    print "</MiningSchema><ParameterList>"
    for (i = 0; i <= last; ++i) printf "<Parameter name=\"p%d\" label=\"%s\"/>\n", i, i == 0 ? "(Intercept)" : "x" i
    print "</ParameterList><CovariateList>"
    for (i = 1; i <= last; ++i) printf "<Predictor name=\"x%d\"/>\n", i
    print "</CovariateList><PPMatrix>"
    for (i = 1; i <= last; ++i) printf "<PPCell value=\"1\" predictorName=\"x%d\" parameterName=\"p%d\"/>\n", i, i
    print "</PPMatrix><ParamMatrix>"
    for (i = 0; i <= last; ++i) printf "<PCell parameterName=\"p%d\" df=\"1\" beta=\"%.15g\"/>\n", i, sin(i + 1)
    print "</ParamMatrix></GeneralRegressionModel></PMML>"
}' > "$folder/model.pmml"
awk -v rows="$rows" 'BEGIN {
    srand(7)
    for (i = 1; i <= 19; ++i) printf "%sx%d", (i > 1 ? "," : ""), i
    print ""
    for (r = 0; r < rows; ++r) {
        for (i = 1; i <= 19; ++i) printf "%s%.2f", (i > 1 ? "," : ""), rand() * 100
        print ""
    }
}' > "$folder/cases.csv"

"$python" - "$velscore" "$folder" "$rows" <<'PY'
import os, resource, statistics, subprocess, sys, time
velscore, folder, rows = sys.argv[1], sys.argv[2], int(sys.argv[3])
for threads in (1, 2):
    cpu, wall = [], []
    for _ in range(3):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        begin = time.perf_counter()
        subprocess.run([velscore, "explain", folder + "/model.pmml", folder + "/cases.csv", "--long",
                        "--quiet", "--threads", str(threads), "-o", folder + "/out.csv"], check=True)
        wall.append(time.perf_counter() - begin)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        cpu.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
    print(f"{threads} thread(s): {rows / statistics.median(cpu):.0f} rows/s of CPU, "
          f"{rows / statistics.median(wall):.0f} rows/s, peak {after.ru_maxrss // 1024} MiB")
PY
