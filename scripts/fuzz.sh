#!/usr/bin/env bash
# Fuzzes one target for so many seconds, or lists the targets:
#
#   scripts/fuzz.sh [TARGET SECONDS]
#
# Builds preset fuzz; the corpus grows under build/fuzz/corpus/TARGET, and an input that fails lies in
# build/fuzz/found: build/fuzz/bin/fuzz_TARGET FILE runs it again.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
declare -A seeds=([document]=documents [structure]=documents [pair]=pairs [table]=tables
    [expression]=bytes [stats]=bytes [arrow]=arrow)
if [ $# -ne 2 ] || [ -z "${seeds[$1]:-}" ]; then
    echo "usage: scripts/fuzz.sh TARGET SECONDS; the targets are: ${!seeds[*]}" >&2
    exit 1
fi
scripts/ensure-packages.sh packages.txt tests/packages.txt
build=build/fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "fuzz_$1" fuzz_words velfuzzseeds
mkdir -p "$build/corpus/$1" "$build/found"
"$build/bin/fuzz_words" >"$build/words.dict"
# The limits hold what an input may cost; the slowest inputs are some 60 KB.
exec "$build/bin/fuzz_$1" -max_total_time="$2" -timeout=20 -rss_limit_mb=2048 -max_len=65536 \
    -dict="$build/words.dict" -artifact_prefix="$build/found/$1-" -print_final_stats=1 \
    "$build/corpus/$1" "$build/tests/fuzz/seeds/${seeds[$1]}"
