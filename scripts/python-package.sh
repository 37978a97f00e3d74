#!/usr/bin/env bash
# Builds the wheel of the Python package and installs it, with what its tests need, into a virtual
# environment under build/python. The module comes from build/release, where it is a target.
#
#   scripts/python-package.sh         prints the environment's folder
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
module=$PWD/build/release/python/velscore/_velscore.abi3.so
environment=$PWD/build/python/venv
wheels=$PWD/build/python/wheels
wanted=tests/python/requirements.txt

{
    cmake --preset release -DVELSCORE_WERROR="${VELSCORE_WERROR:-OFF}" >/dev/null
    ninja -C build/release velpython velscore
    [ -x "$environment/bin/python" ] || /usr/bin/python3 -m venv "$environment"
    if ! cmp -s "$wanted" "$environment/installed"; then
        "$environment/bin/pip" install --quiet --disable-pip-version-check --requirement "$wanted"
        cp "$wanted" "$environment/installed"
    fi
    rm -rf "$wheels"
    "$environment/bin/pip" wheel . --quiet --disable-pip-version-check --no-build-isolation --no-deps \
        --no-cache-dir --wheel-dir "$wheels" \
        --config-settings=build-dir=build/python/pack \
        --config-settings=cmake.define.VELSCORE_PYTHON_MODULE="$module"
    "$environment/bin/pip" install --quiet --disable-pip-version-check --no-deps --force-reinstall \
        "$wheels"/velscore-*.whl
} >&2
echo "$environment"
