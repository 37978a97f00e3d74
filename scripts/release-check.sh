#!/usr/bin/env bash
# What a release has to pass beside .ci/run and takes too long, or needs too much, for every change:
#
#   clang      the release build and all its tests with clang++, warnings being errors
#   equality   block scorers against single cases over 10,000,000 rows a family and link, and the
#              kernels' exp against the C library's over 1,000,000,000 values, with both compilers
#   threads    the tests that score one model in several threads, those of whole runs (CSV, JSON Lines,
#              packed, with rejects, gone on with), and those of the library, under ThreadSanitizer
#   leaks      100,000 models that eight threads open, score and close, under AddressSanitizer
#   wheel      the portable wheel, and one from the source distribution, installed in environments of their
#              own: tests/python, which compare with the command, and the time to the first score
#   duckdb     the extension for DuckDB, eight queries at once over 10,000,000 rows each
#   recipes    scripts/test-recipes.sh, its largest Spark table of 10,000,000 rows
#   faults     every call of files of every command failed in turn, and every allocation of a load, a score, an
#              explanation and a curve, by operator new and by malloc()
#   soak       1,000,000,000 rows (VELSCORE_SOAK_ROWS) for a slow reader, and 1,000 openings of each case
#              document, in bounded memory
#   kills      200 runs ended by signals, full disks and closed pipes, at random moments, and gone on with
#   coverage   the lines and branches that the tests reach (scripts/coverage.sh)
#   mutants    1,500 small faults put into the sources, and whether a test notices (scripts/mutate.sh)
#   reference  doxygen over the headers that are installed
#   tidy       clang-tidy over every source
#   cases      the R models of tests/data/cases fitted and written anew, and compared with what is kept
#   packages   the Debian packages, installed in a new Debian root that debootstrap makes: README.md's
#              examples by the command, examples/embed by the library (needs root)
#   root       README.md's commands, ./test among them, on the committed tree in such a root
#
# scripts/release-check.sh runs them all, scripts/release-check.sh STAGE... those. Every stage runs,
# the end says which failed.
set -uo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." || exit 1

stage_clang() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt &&
        cmake --preset clang -DVELSCORE_WERROR=ON >/dev/null &&
        cmake --build --preset clang &&
        ctest --preset clang -j "$(nproc)"
}

# Builds a test program with a preset and runs those of its tests that a filter names.
run_tests() {
    cmake --preset "$1" -DVELSCORE_WERROR=ON >/dev/null &&
        cmake --build --preset "$1" --target "$2" &&
        [ -n "$("build/$1/bin/$2" --gtest_filter="$3" --gtest_list_tests | grep '^  ')" ] &&
        "build/$1/bin/$2" --gtest_filter="$3" --gtest_brief=1
}

stage_equality() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt || return 1
    local preset ended=0
    for preset in release clang; do
        VELSCORE_TEST_ROWS=10000000 run_tests "$preset" models_tests '*BlockScorerOf*' || ended=1
        VELSCORE_TEST_ROWS=100000 run_tests "$preset" models_tests '*ExplanationsOf*' || ended=1
        VELSCORE_TEST_VALUES=1000000000 run_tests "$preset" kernels_tests '*ExpHas*' || ended=1
    done
    return $ended
}

stage_threads() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt || return 1
    local -x TSAN_OPTIONS=halt_on_error=1:ignore_noninstrumented_modules=1:suppressions=$PWD/scripts/thread-suppressions.txt
    local ended=0
    run_tests thread models_tests '*ServesThreadsAtOnce*' || ended=1
    run_tests thread capi_tests 'Threads.*:Scan.*' || ended=1
    run_tests thread duckdb_tests 'ModelCache.*' || ended=1
    run_tests thread engine_tests 'SessionTest.*:*EachKindOfTable*:*EightThreadsOnOneModel*' || ended=1
    return $ended
}

stage_leaks() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt &&
        VELSCORE_TEST_OPENS=100000 ASAN_OPTIONS=detect_leaks=1 \
            run_tests sanitize capi_tests 'Threads.EightOpenScoreAndClose*'
}

# The reference of the headers that are installed, warnings being errors.
stage_reference() {
    scripts/ensure-packages.sh packages.txt .ci/release-packages.txt &&
        cmake --preset release >/dev/null && doxygen build/release/packaging/Doxyfile
}

# The Pythons at hand that the package serves: the system's, and pyenv's if there is one.
pythons() {
    local python
    for python in /usr/bin/python3 "${PYENV_ROOT:-$HOME/.pyenv}"/versions/*/bin/python3; do
        [ ! -x "$python" ] || ! "$python" -c 'import sys; sys.exit(sys.version_info < (3, 9))' ||
            echo "$python"
    done
}

# From nothing to the first score of a wheel, by a Python, in an environment that is made for it. The score is
# that of the command.
first_score() {
    local wheel=$1 python=$2 environment=$3 begin=$EPOCHREALTIME model=examples/motor-cars/model.pmml
    local cases='{"wt": [2.62], "hp": [110], "cyl": [6], "am": ["manual"]}' score
    "$python" -m venv "$environment" &&
        "$environment/bin/pip" install --quiet --disable-pip-version-check --no-index "$wheel" &&
        score=$("$environment/bin/python" -c \
            "import velscore; print(velscore.load('$model').predict($cases)[0])") &&
        awk -v python="$("$python" --version)" -v begin="$begin" -v end="$EPOCHREALTIME" \
            'BEGIN { printf "%s: first score after %.1f s\n", python, end - begin }' &&
        [ "$score" = "$(build/release/bin/velscore score $model examples/motor-cars/cases.csv \
            --columns prediction --quiet | sed -n 2p)" ]
}

# tests/python with a wheel, in the environment that has it.
test_installed() {
    "$1/bin/pip" install --quiet --disable-pip-version-check --requirement tests/python/requirements.txt &&
        "$1/bin/python" -m pytest --quiet tests/python
}

stage_wheel() (
    scripts/ensure-packages.sh packages.txt tests/packages.txt .ci/release-packages.txt &&
        cmake --preset release >/dev/null && cmake --build --preset release --target velscore &&
        portable=$(scripts/portable-wheel.sh) && made=$(mktemp -d) || exit 1
    trap 'rm -rf "$made"' EXIT
    ended=0
    while read -r python; do
        environment=$made/$("$python" -c 'import sys; print("%d.%d.%d" % sys.version_info[:3])')
        { first_score "$portable" "$python" "$environment" && test_installed "$environment"; } || ended=1
    done < <(pythons)
    /usr/bin/python3 -m venv "$made/sdist" &&
        "$made/sdist/bin/pip" install --quiet --disable-pip-version-check build &&
        "$made/sdist/bin/python" -m build --sdist --outdir "$made" . &&
        "$made/sdist/bin/pip" wheel --quiet --disable-pip-version-check --no-deps --wheel-dir "$made" \
            "$made"/velscore-*.tar.gz &&
        first_score "$(echo "$made"/velscore-*.whl)" /usr/bin/python3 "$made/own" &&
        test_installed "$made/own" || ended=1
    exit $ended
)

stage_duckdb() { VELSCORE_TEST_ROWS=10000000 scripts/test-duckdb.sh; }

stage_recipes() { VELSCORE_TEST_ROWS=10000000 scripts/test-recipes.sh; }

stage_kills() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt &&
        VELSCORE_TEST_TRIALS=200 run_tests release system_tests 'Resume.After*:Resume.APipe*'
}

stage_faults() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt || return 1
    local -x VELSCORE_TEST_FAULTS=all
    local ended=0
    run_tests release system_tests '*FileFaults.*' || ended=1
    run_tests release engine_tests '*OutOfMemory.*' || ended=1
    run_tests release malloc_tests '*OutOfMemory.*' || ended=1
    return $ended
}

stage_soak() {
    scripts/ensure-packages.sh packages.txt tests/packages.txt || return 1
    local ended=0
    VELSCORE_TEST_ROWS=${VELSCORE_SOAK_ROWS:-1000000000} run_tests release system_tests 'Soak.*' || ended=1
    VELSCORE_TEST_ROUNDS=1000 run_tests release capi_tests 'Soak.*' || ended=1
    return $ended
}

stage_coverage() { scripts/coverage.sh; }

stage_mutants() { scripts/mutate.sh --jobs "$(nproc)"; }

stage_tidy() { scripts/lint.sh --all; }

stage_cases() (
    scripts/ensure-packages.sh .ci/release-packages.txt || exit 1
    made=$(mktemp -d)
    trap 'rm -rf "$made"' EXIT
    Rscript tests/data/generator/generate.R "$made" && tests/data/generator/compare.py "$made"
)

# Makes a Debian root in $root, with a function to run commands inside, in its folder /velscore. It takes this
# machine's package sources, so it gets packages from where they come here. For subshells: it is removed at
# their end.
new_root() {
    scripts/ensure-packages.sh .ci/release-packages.txt || return 1
    root=$(mktemp -d)
    trap 'rm -rf "$root" "$root.log"' EXIT
    suite=$(sed -n 's|^VERSION_CODENAME=||p' /etc/os-release)
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $suite" \
        'Origin: Debian' | head -n 1)
    # With a /proc of its own, as a machine has it; it goes with the last process inside.
    inside() { unshare --mount --pid --fork --root="$root" --mount-proc bash -ec "cd /velscore; $1"; }
    debootstrap --variant=minbase --include=ca-certificates "$suite" "$root" "$mirror" >"$root.log" || {
        tail -n 20 "$root.log" >&2
        return 1
    }
    cp -a /etc/apt/. "$root/etc/apt/" && cp -a /usr/share/keyrings/. "$root/usr/share/keyrings/" &&
        cp /etc/resolv.conf "$root/etc/"
}

# The commands that README.md shows, a line each.
readme_commands() { sed -n 's/^\$ \(\.\/velscore .*\)/\1/p' README.md; }

# What README.md shows is compared by the tests; here it has to run.
run_readme_commands='while read -r line; do
    echo "\$ $line"; bash -c "$line" </dev/null; done <readme-commands'

stage_packages() (
    scripts/ensure-packages.sh packages.txt tests/packages.txt && cmake --preset release >/dev/null &&
        cmake --build --preset release --target velscore velregression libvelscore velstatistics \
            velscore_manual && new_root && mkdir "$root/velscore" &&
        cpack --config build/release/CPackConfig.cmake -B "$root/velscore" >/dev/null &&
        readme_commands | sed 's|^\./||' >"$root/velscore/readme-commands" || exit 1
    inside 'export DEBIAN_FRONTEND=noninteractive
        { apt-get update && apt-get install -y --no-install-recommends ./velscore_*.deb; } >/dev/null
        mv readme-commands /usr/share/doc/velscore; cd /usr/share/doc/velscore' &&
        inside "cd /usr/share/doc/velscore; $run_readme_commands" &&
        inside 'apt-get install -y --no-install-recommends ./velscore-dev_*.deb g++ cmake make pkg-config \
            >/dev/null
        cp -r /usr/share/doc/velscore/examples .; cd examples/embed
        cmake -S . -B build; cmake --build build
        cc -std=c99 cars.c -o cars $(pkg-config --cflags --libs velscore)
        c++ -std=c++20 births.cpp -o births $(pkg-config --cflags --libs velscore)
        for folder in build .; do
            $folder/cars ../motor-cars/model.pmml
            $folder/births ../birth-weight/model.pmml
        done'
)

stage_root() (
    new_root && git clone --quiet . "$root/velscore" &&
        readme_commands >"$root/velscore/readme-commands" &&
        inside "$run_readme_commands" &&
        inside ./test &&
        inside 'cmake --install build/release --prefix /opt/velscore
            examples=$PWD/examples/motor-cars; cd /
            /opt/velscore/bin/velscore score "$examples/model.pmml" "$examples/cases.csv"'
)

stages=(clang equality threads leaks wheel duckdb recipes faults soak kills coverage mutants reference tidy cases packages root)
[ $# -gt 0 ] || set -- "${stages[@]}"
failed=()
for stage in "$@"; do
    case " ${stages[*]} " in
        *" $stage "*) ;;
        *)
            echo "scripts/release-check.sh: no stage '$stage'; the stages are: ${stages[*]}" >&2
            exit 1
            ;;
    esac
    echo "== $stage" >&2
    "stage_$stage" || failed+=("$stage")
done
[ ${#failed[@]} -eq 0 ] || {
    echo "failed: ${failed[*]}" >&2
    exit 1
}
