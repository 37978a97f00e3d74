#!/usr/bin/env bash
# Changes one expression of the sources at a time and sees whether a test notices: scripts/mutate.py, which tells
# the options, over the objects of preset coverage.
#
#   scripts/mutate.sh                        a sample of models/, kernels/, readers/ and engine/
#   scripts/mutate.sh --rooms models --count 300
#   scripts/mutate.sh --again                the same mutants after a change of the tests
#   scripts/mutate.sh --survivors            of them those that weren't killed and aren't listed
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/release-packages.txt
cmake --preset coverage >/dev/null
LLVM_PROFILE_FILE=/dev/null nice cmake --build --preset coverage -j "${VELSCORE_JOBS:-1}" \
    --target kernels_tests models_tests readers_tests engine_tests
exec scripts/mutate.py "$@"
