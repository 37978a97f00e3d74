#!/bin/sh
# Questions, each answered in one run:
#   rows      1,000,000 rows x 10 columns through `velscore score`, with standard errors and limits:
#             rows a second on one thread, and peak memory
#   predict   the same with --prediction-only
#   latency   a table of two rows, from the shell to the end of the command (the best of 20)
#
#   bench/command_bench.sh [VELSCORE] [ROWS]
#
# Needs awk and GNU date; peak memory is read from the running command's own page in /proc.
set -eu
velscore=${1:-"$(dirname "$0")/../build/release/bin/velscore"}
rows=${2:-1000000}
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

now() { date +%s.%N; }

# Scores the long table; prints rows a second and the highest peak memory seen while it ran.
long_table() {
    name=$1
    shift
    begin=$(now)
    "$velscore" score --quiet "$@" "$folder/model.pmml" "$folder/cases.csv" -o "$folder/out.csv" &
    child=$!
    peak=0
    while seen=$(awk '/VmHWM/ {print $2}' "/proc/$child/status" 2>/dev/null) && [ -n "$seen" ]; do
        peak=$seen
        sleep 0.05
    done
    wait "$child"
    end=$(now)
    awk -v n="$rows" -v b="$begin" -v e="$end" -v p="$peak" -v name="$name" 'BEGIN {
        printf "%-8s %9.0f rows/s  %.2f s  peak %.1f MiB\n", name, n / (e - b), e - b, p / 1024 }'
}

uname -srm
awk -F': ' '/model name/ {print $2; exit}' /proc/cpuinfo
wc -c "$folder/cases.csv" | awk '{printf "table    %.1f MiB\n", $1 / 1048576}'
long_table rows
long_table predict --prediction-only

best=
for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
    begin=$(now)
    "$velscore" score --quiet "$folder/model.pmml" "$folder/two.csv" > /dev/null
    end=$(now)
    best=$(awk -v b="$begin" -v e="$end" -v best="$best" 'BEGIN { t = (e - b) * 1000; print (best == "" || t < best ? t : best) }')
done
printf 'latency  %.1f ms\n' "$best"
