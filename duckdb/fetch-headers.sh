#!/usr/bin/env bash
# Puts the two headers of DuckDB's C interface for extensions into a folder, out of DuckDB's own source
# distribution, which pip downloads. They aren't part of this repository.
#
#   duckdb/fetch-headers.sh VERSION FOLDER
set -euo pipefail
version=${1:?the version of DuckDB}
folder=${2:?the folder to put them into}
[ "$(cat "$folder/fetched-version" 2>/dev/null)" != "$version" ] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
python3 -m venv "$work/venv"
"$work/venv/bin/pip" download --quiet --disable-pip-version-check --no-deps --no-binary duckdb \
    --dest "$work" "duckdb==$version"
mkdir -p "$folder"
tar -xzf "$work/duckdb-$version.tar.gz" -C "$folder" --strip-components=5 \
    "duckdb-$version/external/duckdb/src/include/duckdb.h" \
    "duckdb-$version/external/duckdb/src/include/duckdb_extension.h"
echo "$version" >"$folder/fetched-version"
