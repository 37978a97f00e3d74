#!/usr/bin/env bash
# Runs the tests of the recipes under examples/python: Spark, Dask, Ray, DuckDB, a service and a notebook, and of
# the pages of reports in Chromium, in a virtual environment of their own under build/recipes that has the
# package's wheel; and those of frames with old releases of pandas, each in one of its own.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
environment=$PWD/build/recipes/venv
wanted=tests/recipes/requirements.txt
scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/packages.txt
scripts/python-package.sh >/dev/null

# Makes an environment, unless it is there, with what pip installs by these arguments and with the wheel; the text
# says whether it is still that.
prepare() {
    local environment=$1 wanted=$2
    shift 2
    [ -x "$environment/bin/python" ] || /usr/bin/python3 -m venv "$environment"
    if [ "$wanted" != "$(cat "$environment/installed" 2>/dev/null)" ]; then
        "$environment/bin/pip" install --quiet --disable-pip-version-check "$@"
        echo "$wanted" >"$environment/installed"
    fi
    "$environment/bin/pip" install --quiet --disable-pip-version-check --no-deps --force-reinstall \
        build/python/wheels/velscore-*.whl
}

prepare "$environment" "$(cat "$wanted")" --requirement "$wanted"
# Spark's workers are to run in the same environment.
PYSPARK_PYTHON=$environment/bin/python "$environment/bin/python" -m pytest -q -p no:cacheprovider \
    -W ignore tests/recipes

if ! "$environment/bin/python" -c 'import sys; sys.exit(sys.version_info >= (3, 12))'; then
    echo "There are no builds of pandas 1.5 and 2.0 for this Python: their tests don't run." >&2
    exit
fi
for old in 1.5.3 2.0.3; do
    environment=$PWD/build/recipes/pandas-$old
    prepare "$environment" "$old" "pandas==$old" 'numpy<2' pytest
    "$environment/bin/python" -m pytest -q -p no:cacheprovider tests/python/test_pandas_alone.py
done
