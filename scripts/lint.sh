#!/usr/bin/env bash
# Checks the form of the whole tree: clang-format of all C++, shellcheck of all scripts, clang-tidy
# (the checks of .clang-tidy) of the sources that differ from a revision.
#
#   scripts/lint.sh               clang-tidy of what isn't committed yet
#   scripts/lint.sh --since REV   of what differs from REV
#   scripts/lint.sh --all         of every source
#   scripts/lint.sh --fix         formats the tree in place and stops there
#
# Every check runs; the exit code is 1 when one found something.
set -uo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." || exit 2
since=HEAD
all=false
fix=false
while [ $# -gt 0 ]; do
    case $1 in
        --since) since=${2:?--since takes a revision}; shift ;;
        --all) all=true ;;
        --fix) fix=true ;;
        *) echo "scripts/lint.sh: unknown option '$1'" >&2; exit 2 ;;
    esac
    shift
done
scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/packages.txt || exit 2

mapfile -t code < <(git ls-files --cached --others --exclude-standard '*.cpp' '*.h' '*.inc')
if $fix; then
    clang-format -i "${code[@]}"
    exit
fi

failed=0
check() {
    echo "== $1" >&2
    shift
    "$@" || failed=1
}

mapfile -t scripts < <(git grep -lI '^#!.*\(ba\)\?sh$')
sources() {
    if $all; then
        git ls-files '*.cpp'
    else
        git diff --name-only --diff-filter=d "$since" -- '*.cpp'
    fi | grep -v '^tests/\|^examples/\|^bench/' # what users run
}
mapfile -t changed < <(sources)

check clang-format clang-format --dry-run --Werror "${code[@]}"
check shellcheck shellcheck --severity=warning "${scripts[@]}"
if [ ${#changed[@]} -gt 0 ]; then
    # Another folder than that of ./test: its compile commands are all that is wanted.
    cmake --preset clang -B build/lint -DVELSCORE_TESTS=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DVELSCORE_PYTHON=ON -DVELSCORE_DUCKDB=ON \
        -DVELSCORE_DUCKDB_HEADERS="$PWD/build/duckdb-headers" >/dev/null || exit 2
    # One file a process: of several, clang 14's analyzer takes a va_list of a later one for uninitialized.
    check "clang-tidy (${#changed[@]} files)" \
        xargs -a <(printf '%s\n' "${changed[@]}") -P "$(nproc)" -n 1 \
        clang-tidy -p build/lint --quiet --warnings-as-errors='*'
fi
exit $failed
