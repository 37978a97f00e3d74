#!/usr/bin/env bash
# What `velscore score` costs, each answered in one run:
#   full       1,000,000 rows x 10 columns, with standard errors and limits: rows a second of CPU time
#              (user and system, all threads), rows a second by the clock, peak memory
#   predict    the same with --prediction-only
#   ... N      with N threads; gzip, zstd: from and to compressed tables
#   duckdb     the same arithmetic, from CSV to CSV, by DuckDB on one thread, where Python has it
#   latency    a table of two rows, from the shell to the end of the command: CPU time
#
#   bench/command_bench.sh [VELSCORE] [ROWS] [OTHER]
#
# OTHER is another build of the command, measured in turn with the first as a baseline. Figures are the
# medians of 5. Needs awk; DuckDB is looked for by $PYTHON, python3 without it.
set -eu
velscore=${1:-"$(dirname "$0")/../build/release/bin/velscore"}
rows=${2:-1000000}
other=${3:-}
python=${PYTHON:-python3}
repeats=5
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

awk 'BEGIN {
    print "<?xml version=\"1.0\"?>\n<PMML xmlns=\"http://www.dmg.org/PMML-4_4\" version=\"4.4\"><Header/>"
    print "<DataDictionary><DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>"
    for (i = 1; i <= 10; ++i) printf "<DataField name=\"x%d\" optype=\"continuous\" dataType=\"double\"/>\n", i
    print "</DataDictionary>"
    print "<GeneralRegressionModel modelType=\"generalLinear\" functionName=\"regression\" modelDF=\"89\">"
    print "<MiningSchema><MiningField name=\"y\" usageType=\"target\"/>"
    for (i = 1; i <= 10; ++i) printf "<MiningField name=\"x%d\"/>\n", i
    print "</MiningSchema><ParameterList>"
    for (i = 0; i <= 10; ++i) printf "<Parameter name=\"p%d\"/>", i
    print "</ParameterList><FactorList/><CovariateList>"
    for (i = 1; i <= 10; ++i) printf "<Predictor name=\"x%d\"/>", i
    print "</CovariateList><PPMatrix>"
    for (i = 1; i <= 10; ++i) printf "<PPCell value=\"1\" predictorName=\"x%d\" parameterName=\"p%d\"/>", i, i
    print "</PPMatrix><PCovMatrix type=\"model\">"
    for (i = 0; i <= 10; ++i)
        for (j = 0; j <= i; ++j)
            printf "<PCovCell pRow=\"p%d\" pCol=\"p%d\" value=\"%g\"/>\n", i, j, (i == j ? 0.02 + i / 1000 : 0.0001 * (i - j))
    print "</PCovMatrix><ParamMatrix>"
    for (i = 0; i <= 10; ++i) printf "<PCell parameterName=\"p%d\" beta=\"%g\" df=\"1\"/>", i, 0.37 * i - 1.1
    print "</ParamMatrix></GeneralRegressionModel></PMML>"
}' > "$folder/model.pmml"
awk -v rows="$rows" 'BEGIN {
    srand(7)
    for (i = 1; i <= 10; ++i) printf "%sx%d", (i > 1 ? "," : ""), i
    print ""
    for (r = 0; r < rows; ++r) {
        for (i = 1; i <= 10; ++i) printf "%s%.4f", (i > 1 ? "," : ""), rand() * 20 - 5
        print ""
    }
}' > "$folder/cases.csv"
head -n 3 "$folder/cases.csv" > "$folder/two.csv"

median() { sort -n | awk '{a[NR] = $1} END {print a[int((NR + 1) / 2)]}'; }

# Runs a command; a line of its CPU seconds, wall seconds and peak kilobytes goes to the file.
measure() {
    local to=$1
    shift
    "$python" - "$@" >> "$to" <<'PY'
import os, resource, subprocess, sys, time
begin = time.perf_counter()
subprocess.run(sys.argv[1:], check=True, stdout=subprocess.DEVNULL)
wall = time.perf_counter() - begin
used = resource.getrusage(resource.RUSAGE_CHILDREN)
print(used.ru_utime + used.ru_stime, wall, used.ru_maxrss)
PY
}

# The medians of what was measured under a name.
report() {
    local cpu wall peak
    cpu=$(awk '{print $1}' "$folder/$1" | median)
    wall=$(awk '{print $2}' "$folder/$1" | median)
    peak=$(awk '{print $3}' "$folder/$1" | sort -n | tail -n 1)
    awk -v n="$rows" -v c="$cpu" -v w="$wall" -v p="$peak" -v name="$2" 'BEGIN {
        printf "%-22s %6.2f M rows/s of CPU  %6.2f M rows/s  peak %5.1f MiB\n",
            name, n / c / 1e6, n / w / 1e6, p / 1024 }'
}

score() {
    local name=$1 command=$2
    shift 2
    measure "$folder/$name" "$command" score --quiet "$@"
}

uname -srm
awk -F': ' '/model name/ {print $2; exit}' /proc/cpuinfo
wc -c "$folder/cases.csv" | awk '{printf "table    %.1f MiB\n", $1 / 1048576}'
gzip -k "$folder/cases.csv"
zstd -q -k "$folder/cases.csv" 2> /dev/null || true
model=$folder/model.pmml
has_duckdb=$("$python" -c 'import duckdb; print(duckdb.__version__)' 2> /dev/null || true)
[ -n "$has_duckdb" ] && cat > "$folder/duck.py" <<'PY'
# The command's own arithmetic in SQL: mean, sqrt(x V x), mean -+ t times that.
import sys
import duckdb

kind, folder = sys.argv[1:]
beta = [float("%g" % (0.37 * i - 1.1)) for i in range(11)]
cov = lambda i, j: float("%g" % (0.02 + i / 1000 if i == j else 0.0001 * (max(i, j) - min(i, j))))
x = ["1.0"] + [f"x{i}" for i in range(1, 11)]
mean = " + ".join(f"{b!r} * {v}" for b, v in zip(beta, x))
square = " + ".join(f"{cov(i, j)!r} * {x[i]} * {x[j]}" for i in range(11) for j in range(11))
t = 1.9869786995
inner = f"SELECT {mean} AS prediction, sqrt({square}) AS s"
rows = f"FROM read_csv('{folder}/cases.csv', columns={{{', '.join(repr(n) + ': ' + repr('DOUBLE') for n in x[1:])}}}, header=true)"
what = ("prediction, s AS std_dev, prediction - %r * s AS ci_lower, prediction + %r * s AS ci_upper" % (t, t)
        if kind == "full" else "prediction")
if kind != "full":
    inner = f"SELECT {mean} AS prediction"
db = duckdb.connect()
db.execute("SET threads = 1")
db.execute(f"COPY (SELECT {what}, 0 AS status, NULL AS status_field FROM ({inner} {rows})) "
           f"TO '{folder}/duck.csv' (HEADER)")
PY

for _ in $(seq $repeats); do
    score full "$velscore" --threads 1 "$model" "$folder/cases.csv" -o "$folder/out.csv"
    [ -n "$other" ] && score full-other "$other" "$model" "$folder/cases.csv" -o "$folder/out.csv"
    [ -n "$has_duckdb" ] && measure "$folder/full-duckdb" "$python" "$folder/duck.py" full "$folder"
    score predict "$velscore" --threads 1 --prediction-only "$model" "$folder/cases.csv" -o "$folder/out.csv"
    [ -n "$other" ] && score predict-other "$other" --prediction-only "$model" "$folder/cases.csv" -o "$folder/out.csv"
    [ -n "$has_duckdb" ] && measure "$folder/predict-duckdb" "$python" "$folder/duck.py" predict "$folder"
    score full2 "$velscore" --threads 2 "$model" "$folder/cases.csv" -o "$folder/out.csv"
    score full4 "$velscore" --threads 4 "$model" "$folder/cases.csv" -o "$folder/out.csv"
    score gzip "$velscore" --threads 2 "$model" "$folder/cases.csv.gz" -o "$folder/out.csv.gz"
    [ -f "$folder/cases.csv.zst" ] &&
        score zstd "$velscore" --threads 2 "$model" "$folder/cases.csv.zst" -o "$folder/out.csv.zst"
done
report full 'full, 1 thread'
[ -n "$other" ] && report full-other 'full, other build'
[ -n "$has_duckdb" ] && report full-duckdb "full, DuckDB $has_duckdb"
report predict 'predict, 1 thread'
[ -n "$other" ] && report predict-other 'predict, other build'
[ -n "$has_duckdb" ] && report predict-duckdb "predict, DuckDB $has_duckdb"
report full2 'full, 2 threads'
report full4 'full, 4 threads'
report gzip 'full, gzip, 2 threads'
[ -f "$folder/zstd" ] && report zstd 'full, zstd, 2 threads'

for _ in $(seq 20); do score latency "$velscore" "$model" "$folder/two.csv"; done
awk '{print $1}' "$folder/latency" | median | awk '{printf "latency  %.1f ms of CPU\n", $1 * 1000}'
