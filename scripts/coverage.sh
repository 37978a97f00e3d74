#!/usr/bin/env bash
# Runs the test programs with clang's source coverage and prints the lines and branches of each room that they
# reach:
#
#   scripts/coverage.sh              every test program: what a release has to pass
#   scripts/coverage.sh --in-process without those that start the built command
#   scripts/coverage.sh --report     reads the profiles of the last run again
#   scripts/coverage.sh ... FILE...  lists what isn't reached of these files or folders too
#
# Of stats/, kernels/, models/ and readers/ every line has to be reached that scripts/coverage-exceptions.txt
# doesn't name with its reason, and 95 branches of a hundred; an exception that nothing needs fails as well.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
in_process=(stats_tests kernels_tests host_tests models_tests readers_tests engine_tests cli_tests capi_tests)
programs=("${in_process[@]}" system_tests)
run=true
while [ $# -gt 0 ]; do
    case $1 in
        --in-process) programs=("${in_process[@]}") ;;
        --report) run=false ;;
        --*) echo "scripts/coverage.sh: unknown option '$1'" >&2; exit 2 ;;
        *) break ;;
    esac
    shift
done
scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/release-packages.txt
build=build/coverage
profiles=$build/profiles

if $run; then
    cmake --preset coverage >/dev/null
    # What the build itself runs leaves no profile.
    LLVM_PROFILE_FILE=/dev/null nice cmake --build --preset coverage -j "${VELSCORE_JOBS:-1}" --target "${programs[@]}"
    rm -rf "$profiles" && mkdir -p "$profiles"
    failed=()
    for program in "${programs[@]}"; do
        # A profile for each program and library; the processes that a test starts add to theirs.
        LLVM_PROFILE_FILE=$PWD/$profiles/$program-%m.profraw nice "$build/bin/$program" --gtest_brief=1 \
            >"$profiles/$program.log" 2>&1 || { failed+=("$program"); tail -n 40 "$profiles/$program.log" >&2; }
    done
    [ ${#failed[@]} -eq 0 ] || { echo "failed: ${failed[*]}" >&2; exit 1; }
fi
llvm-profdata merge --sparse "$profiles"/*.profraw -o "$profiles/all.profdata"
# The first object stands alone.
objects=()
for object in "$build"/bin/*_tests "$build/bin/velscore" "$build"/lib/*.so; do
    [ ! -e "$object" ] || objects+=(${objects:+--object} "$object")
done
# All sources: names given here would leave out headers, which are compiled under the names of links to them.
llvm-cov export --instr-profile "$profiles/all.profdata" "${objects[@]}" >"$profiles/all.json"
scripts/coverage-report.py --check "$profiles/all.json" "$@"
