#!/usr/bin/env bash
# Builds the extension for DuckDB and runs its tests in the releases of DuckDB that it is for: the current
# one, and the oldest that it loads into. pip puts each into a folder of its own under build/.
#
# VELSCORE_TEST_ROWS is the number of rows of the test of queries side by side.
set -uo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." || exit 1
releases=(2.0.0 1.5.6)
scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/packages.txt || exit 1

cmake --preset release -DVELSCORE_DUCKDB=ON -DVELSCORE_DUCKDB_HEADERS="$PWD/build/duckdb-headers" \
    -DVELSCORE_WERROR="${VELSCORE_WERROR:-OFF}" >/dev/null &&
    cmake --build --preset release --target velscore duckdb_extension || exit 1
export VELSCORE_EXTENSION=$PWD/build/release/lib/velscore.duckdb_extension
export VELSCORE_COMMAND=$PWD/build/release/bin/velscore

# A Python that has one release.
python_of() {
    local folder=build/duckdb-tests/$1
    [ -x "$folder/bin/python" ] && [ -f "$folder/ready" ] || {
        python3 -m venv "$folder" &&
            "$folder/bin/pip" install --quiet --disable-pip-version-check "duckdb==$1" &&
            touch "$folder/ready"
    } || return 1
    echo "$folder/bin/python"
}

failed=0
for release in "${releases[@]}"; do
    echo "== DuckDB $release" >&2
    python=$(python_of "$release") || exit 1
    PYTHONDONTWRITEBYTECODE=1 "$python" -m unittest discover -s tests/duckdb -p '*_test.py' || failed=1
done
exit $failed
