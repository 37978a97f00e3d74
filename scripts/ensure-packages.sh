#!/usr/bin/env bash
# Installs the Debian packages of the lists given (packages.txt by default) that are missing.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
[ $# -gt 0 ] || set -- "$here/packages.txt"

missing=()
while read -r package; do
    state=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$state" = "install ok installed" ] || missing+=("$package")
done < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$@")
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing: ${missing[*]}" >&2
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "These packages are missing and need root to install: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{
    "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
} >"$log" 2>&1 || {
    tail -n 20 "$log" >&2
    echo "The packages can't be installed." >&2
    exit 1
}
