#!/bin/sh
# The shared library exports the public interface and nothing else: its list of symbols is the committed one.
# usage: exports_test.sh NM LIBRARY COMMITTED_LIST
# A wanted change of the interface is a change of the list, made by: NM -D --defined-only -C LIBRARY | cut -d' ' -f3- | sort -u
set -eu
export LC_ALL=C
found=$(mktemp)
trap 'rm -f "$found"' EXIT
"$1" -D --defined-only -C "$2" | cut -d' ' -f3- | sort -u >"$found"
diff -u --label committed --label exported "$3" "$found"
