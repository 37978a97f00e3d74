#!/usr/bin/env bash
# Fuzzes one target for so many seconds, or lists the targets:
#
#   scripts/fuzz.sh [TARGET SECONDS [volume]]
#   scripts/fuzz.sh keep
#
# Builds preset fuzz, with both sanitizers; the corpus grows under build/fuzz/corpus/TARGET, and an input
# that fails lies in build/fuzz/found: build/fuzz/bin/fuzz_TARGET FILE runs it again. With volume it is
# preset fuzz-volume and its folders: small inputs, and of the sanitizers undefined behaviour alone, which
# ends the program. That corpus is minimised in the end, and a later run without volume begins with it.
# keep takes of the volume's documents, of those for convert and of pairs one for each edge into
# tests/fuzz/found.tar.zst, so that the next runs, on any machine, begin where these ended.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
declare -A seeds=([document]=documents [structure]=documents [convert]=convertible [output]=outputs
    [pair]=pairs [table]=tables [expression]=bytes [derived]=bytes [drawn]=bytes [stats]=bytes [arrow]=arrow)
declare -A small=([document]=4096 [structure]=4096 [convert]=4096 [output]=4096
    [pair]=4096 [table]=192 [expression]=64 [derived]=64 [drawn]=64 [stats]=48 [arrow]=1024)

# Into OUT, of seeds and folders, what reaches an edge that neither the test data, corners/ nor a smaller
# input does. Files that libFuzzer writes are named by their digest.
keep_edges() { # OUT TARGET SEEDS FOLDER...
    local out=$1 target=$2 digest='.*/[0-9a-f]{40}'
    shift 2
    rm -rf "$out"
    mkdir -p "$out"
    find "$1" -type f -regextype posix-extended ! -regex "$digest" -exec cp -t "$out" {} +
    "build/fuzz-volume/bin/fuzz_$target" -merge=1 -use_counters=0 -max_len="${small[$target]}" "$out" "$@"
    find "$out" -type f -regextype posix-extended ! -regex "$digest" -delete
}

keep() {
    local build=build/fuzz-volume kept=build/fuzz-volume/kept target documents=()
    local made=$build/tests/fuzz/seeds
    cmake --preset fuzz-volume >/dev/null
    cmake --build --preset fuzz-volume --target fuzz_structure fuzz_convert fuzz_pair velfuzzseeds
    for target in document structure convert; do
        if [ -d "$build/corpus/$target" ]; then documents+=("$build/corpus/$target"); fi
    done
    keep_edges "$kept/documents" structure "$made/documents" "${documents[@]}"
    keep_edges "$kept/convertible" convert "$made/convertible" "${documents[@]}"
    local pairs=("$made/pairs")
    if [ -d "$build/corpus/pair" ]; then pairs+=("$build/corpus/pair"); fi
    keep_edges "$kept/pairs" pair "${pairs[@]}"
    tar -C "$kept" --sort=name --mtime=@0 --owner=0 --group=0 --numeric-owner -cf - \
        documents convertible pairs |
        zstd -qf -19 --ultra -22 -o tests/fuzz/found.tar.zst
}

if [ "${1:-}" = keep ]; then
    keep
    exit
fi
if [ $# -lt 2 ] || [ -z "${seeds[$1]:-}" ] || [ "${3:-volume}" != volume ]; then
    echo "usage: scripts/fuzz.sh TARGET SECONDS [volume]; the targets are: ${!seeds[*]}" >&2
    exit 1
fi
scripts/ensure-packages.sh packages.txt tests/packages.txt
preset=fuzz${3:+-volume}
build=build/$preset
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target "fuzz_$1" fuzz_words velfuzzseeds
program=$build/bin/fuzz_$1
corpus=$build/corpus/$1
mkdir -p "$corpus" "$build/found"
options=(-max_total_time="$2" -print_final_stats=1 -artifact_prefix="$build/found/$1-")
if [ $# -eq 2 ]; then
    "$build/bin/fuzz_words" >"$build/words.dict"
    inputs=("$build/tests/fuzz/seeds/${seeds[$1]}")
    if [ -d "build/fuzz-volume/corpus/$1" ]; then inputs+=("build/fuzz-volume/corpus/$1"); fi
    # The limits hold what an input may cost; the slowest inputs are some 60 KB.
    exec "$program" "${options[@]}" -timeout=20 -rss_limit_mb=2048 -max_len=65536 \
        -dict="$build/words.dict" "$corpus" "${inputs[@]}"
fi
# Longer seeds are cut, which bytes may be; a document is none then.
few=$build/tests/fuzz/seeds/${seeds[$1]}
if [ "${seeds[$1]}" != bytes ]; then
    few=$build/small-seeds/$1
    rm -rf "$few"
    mkdir -p "$few"
    find "$build/tests/fuzz/seeds/${seeds[$1]}" -type f -size "-$((small[$1] + 1))c" -exec cp -t "$few" {} +
fi
rm -rf "$corpus.minimised"
mkdir -p "$corpus.minimised"
# Most documents of several changes are refused for one of them.
case $1 in document | structure | convert | output | pair) options+=(-mutate_depth=1) ;; esac
# What entropic schedules and names of functions cost is more than an input costs.
"$program" "${options[@]}" -timeout=300 -max_len="${small[$1]}" -entropic=0 -print_funcs=0 -reload=0 \
    "$corpus" "$few"
"$program" -merge=1 -max_len="${small[$1]}" "$corpus.minimised" "$corpus"
rm -rf "$corpus"
mv "$corpus.minimised" "$corpus"
