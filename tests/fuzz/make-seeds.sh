#!/usr/bin/env bash
# The seed corpora of the fuzz targets, made of the test data, of the documents of corners/, each of which
# reaches a branch that no document of the test data does, and of what runs have found (fuzz.sh keep):
#
#   make-seeds.sh OUT    OUT/documents, OUT/convertible, OUT/outputs, OUT/tables, OUT/pairs, OUT/bytes, OUT/arrow
set -euo pipefail
out=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
data=$(cd "$here/../data" && pwd)
rm -rf "$out"
mkdir -p "$out"/{documents,convertible,outputs,tables,pairs,bytes,arrow}

# The name of a file as that of a seed: its path with dashes.
seed_name() { printf '%s' "${1#"$data"/}" | tr '/' '-'; }

cp "$here"/corners/* "$out/documents/"
zstd -dcq "$here/found.tar.zst" | tar -x -C "$out"

# Small ones: mutations of large ones go to waste.
find "$data" -name '*.pmml' -size -48k | sort | while read -r document; do
    cp "$document" "$out/documents/$(seed_name "$document")"
    table=$(dirname "$document")/input.csv
    [ -f "$table" ] || continue
    { cat "$document" && printf -- '\n--\n' && head -n 12 "$table"; } \
        >"$out/pairs/$(seed_name "$document")"
done
LC_ALL=C grep -lrZaE '<(zelt-ml|RegressionModel)\b' "$out/documents" | xargs -0 cp -t "$out/convertible"
LC_ALL=C grep -lrZaE '<Output\b' "$out/documents" | xargs -0 cp -t "$out/outputs"

# Tables of the model x, sex behind two bytes: options, and the delimiter's number.
cases=$'x,sex\n1,m\n2.5,f\n,m\n1e3,"f"\n-4,q\n"7\n8",m\n1,m,3\nNA,f\n'
table_seed() { printf '%b' "$1" >"$out/tables/$2" && cat >>"$out/tables/$2"; }
for bits in 0 2 4 8 16 31; do
    options=$(printf '\\0%03o' "$bits")
    printf '%s' "$cases" | table_seed "$options\\0000" "csv-$bits"
    printf '%s' "$cases" | tr ',' ';' | table_seed "$options\\0001" "semicolons-$bits"
    printf '%s' "$cases" | sed 's/$/\r/' | table_seed "$options\\0000" "crlf-$bits"
    printf '%s' "$cases" | gzip -n | table_seed "$options\\0000" "gzip-$bits"
    printf '%s' "$cases" | zstd -q | table_seed "$options\\0000" "zstd-$bits"
    printf '{"x":1,"sex":"m"}\n{"sex":"f","x":null}\n{"x":"\\u0041","sex":2}\n[1]\n' |
        table_seed "$options\\0000" "jsonlines-$bits"
    { printf '%s' "$cases" | gzip -n && printf 'x' | gzip -n | head -c 20; } |
        table_seed "$options\\0000" "cut-$bits"
done

# What targets draw from bytes: of each value of the first byte one, the rest from the test data.
for first in $(seq 0 255); do
    { printf '%b' "$(printf '\\0%03o' "$first")" &&
        head -c "$((first * 7 + 96))" "$data/links/links.csv" | tail -c 90; } >"$out/bytes/$first"
done

# What Arrow tables are drawn from takes more, and all bytes alike: compressed data.
for part in $(seq 1 64); do
    tail -c "+$((part * 64))" "$data/links/links.csv" | gzip -n | tail -c "+$((10 + part))" \
        >"$out/arrow/$part"
done
