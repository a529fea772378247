#!/usr/bin/env bash
# Runs the fuzzers one after the other: scripts/fuzz.sh [SECONDS [FUZZER...]], 180 seconds each and
# all of them unless given. What a run finds interesting is kept in build/clang/fuzz/FUZZER for the
# next; an input that crashes, hangs or needs too much memory is left there and ends the run.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/stages.sh

seconds=${1:-180}
shift || true
build=build/clang
clang=$(command -v clang++-14 || command -v clang++) || { echo "clang++ is not here" >&2; exit 1; }
mkdir -p "$build"
cmake -S . -B "$build" -G Ninja -DGEOMATH_WERROR="$(werror_of "$clang")" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER="$clang" -DGEOMATH_BUILD_FUZZERS=ON >"$build.configure.log" 2>&1 ||
  { cat "$build.configure.log"; exit 1; }
cmake --build "$build" --target geomath fuzzers

[ $# -gt 0 ] || set -- "$build"/tests/fuzz/*_fuzz
for fuzzer; do
  name=$(basename "$fuzzer")
  scratch=$build/fuzz/$name
  mkdir -p "$scratch"
  echo "$name"
  "$build/tests/fuzz/$name" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 \
    -artifact_prefix="$scratch/" "$scratch" "tests/fuzz/corpus/$name" 2>"$scratch.log" ||
    { tail -60 "$scratch.log"; exit 1; }
  tail -1 "$scratch.log"
done
