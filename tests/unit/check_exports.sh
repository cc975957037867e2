#!/bin/sh
# check_exports.sh NM LIBRARY MAP: fails unless the library exports exactly the names that the
# version script lists; prints what is missing (<) or too much (>).
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed -e 's:/\*.*\*/::' "$3" | sed -n '/global:/,/local:/s/^ *\([A-Za-z_][A-Za-z0-9_]*\);.*/\1/p' |
  LC_ALL=C sort > "$work/listed"
"$1" -D --defined-only "$2" | awk '{ print $3 }' | LC_ALL=C sort > "$work/exported"
test -s "$work/listed"
diff "$work/listed" "$work/exported"
