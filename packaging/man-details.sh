#!/bin/sh
# The prose of the manual pages: sections of docs/command.md as roff, a file a command.
#
#   man-details.sh COMMAND.MD FOLDER
set -eu
page=$1
folder=$2
mkdir -p "$folder"

# The section under a heading, up to the next one of its level or above, without the heading.
section() {
    awk -v heading="$1" '
        $0 == heading { level = index($0, " "); inside = 1; next }
        inside && !code && /^#+ / && index($0, " ") <= level { inside = 0 }
        /^```/ { code = !code }
        inside { print }
    ' "$page"
}

# Links to other pages are their texts, for there is no following them on paper.
write() {
    command=$1
    shift
    for heading in "$@"; do
        section "$heading" | grep -q . || {
            echo "man-details.sh: $page has no section '$heading'" >&2
            exit 1
        }
        section "$heading"
        echo
    done | sed -E 's/\[([^]]*)\]\([^)]*\)/\1/g' | lowdown -Tman >"$folder/$command.roff"
}

write score '## The table of cases' '## The output'
write curve '## curve'
write check '## check'
write inspect '## inspect'
write verify '## verify'
write convert '## convert'
write diff '## diff'
write help '## Exit codes'
