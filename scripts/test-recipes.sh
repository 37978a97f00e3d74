#!/usr/bin/env bash
# Runs the tests of the recipes under examples/python: Spark, Dask, Ray, DuckDB and a service, and of the
# pages of reports in Chromium, in a virtual environment of their own under build/recipes that has the
# package's wheel.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
environment=$PWD/build/recipes/venv
wanted=tests/recipes/requirements.txt
scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/packages.txt
scripts/python-package.sh >/dev/null

[ -x "$environment/bin/python" ] || /usr/bin/python3 -m venv "$environment"
if ! cmp -s "$wanted" "$environment/installed"; then
    "$environment/bin/pip" install --quiet --disable-pip-version-check --requirement "$wanted"
    cp "$wanted" "$environment/installed"
fi
"$environment/bin/pip" install --quiet --disable-pip-version-check --no-deps --force-reinstall \
    build/python/wheels/velscore-*.whl
# Spark's workers are to run in the same environment.
PYSPARK_PYTHON=$environment/bin/python "$environment/bin/python" -m pytest -q -p no:cacheprovider \
    -W ignore tests/recipes
