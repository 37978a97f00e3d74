#!/usr/bin/env bash
# Fuzzes one target for so many seconds, or lists the targets:
#
#   scripts/fuzz.sh [TARGET SECONDS [volume]]
#
# Builds preset fuzz, with both sanitizers; the corpus grows under build/fuzz/corpus/TARGET, and an input
# that fails lies in build/fuzz/found: build/fuzz/bin/fuzz_TARGET FILE runs it again. With volume it is
# preset fuzz-volume and its folders: small inputs, and of the sanitizers undefined behaviour alone, which
# ends the program. That corpus is minimised in the end, and a later run without volume begins with it.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
declare -A seeds=([document]=documents [structure]=documents [convert]=convertible [pair]=pairs
    [table]=tables [expression]=bytes [derived]=bytes [stats]=bytes [arrow]=arrow)
declare -A small=([document]=4096 [structure]=4096 [convert]=4096 [pair]=4096
    [table]=192 [expression]=64 [derived]=64 [stats]=48 [arrow]=1024)
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
case $1 in document | structure | convert | pair) options+=(-mutate_depth=1) ;; esac
# What entropic schedules and names of functions cost is more than an input costs.
"$program" "${options[@]}" -timeout=300 -max_len="${small[$1]}" -entropic=0 -print_funcs=0 -reload=0 \
    "$corpus" "$few"
"$program" -merge=1 -max_len="${small[$1]}" "$corpus.minimised" "$corpus"
rm -rf "$corpus"
mv "$corpus.minimised" "$corpus"
