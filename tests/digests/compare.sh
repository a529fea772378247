#!/usr/bin/env bash
# compare.sh EXPECTED POINTS COMMAND...: fails with the lines that differ when the digests that COMMAND
# prints are not those of the file. Digests that no rule gives beforehand: where results change on
# purpose, they are printed anew (digests POINTS >EXPECTED), and the commit says why.
set -euo pipefail
expected=$1 points=$2
shift 2
printed=$("$@" "$points" | tr -d '\r')
diff "$expected" <(printf '%s\n' "$printed")
