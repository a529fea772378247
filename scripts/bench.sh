#!/usr/bin/env bash
# All benchmarks once, beside the peers that are here: installs what is missing on Debian or Ubuntu,
# builds Release, prints one table, and writes it as JSON.
#
#   scripts/bench.sh [-o bench.json] [OPTION...]
#
# Further options go to every benchmark program, such as --instruction_set=baseline or
# --benchmark_filter=lambert. bench/bench_table.py puts the JSON into docs/performance.md.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

output=build/bench.json
if [ "${1:-}" = -o ]; then
  output=$2
  shift 2
fi

ensure_packages "${build_packages[@]}" libbenchmark-dev python3
ensure_one_of libproj-dev
ensure_one_of libgeographiclib-dev libgeographic-dev

build=build/bench
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_BENCH=ON >/dev/null
cmake --build $build

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
for program in $build/bench/*_bench; do
  name=$(basename "$program")
  "$program" "$@" --benchmark_list_tests=true >"$results/$name.list" 2>"$results/$name.log" ||
    { cat "$results/$name.log"; exit 1; }
  [ -s "$results/$name.list" ] || continue  # nothing of it matches a filter
  echo "Running $name"
  # Repetitions of all rows in random order, so that a busy moment does not fall on one contender.
  "$program" --benchmark_repetitions=9 --benchmark_min_time=0.05 \
    --benchmark_enable_random_interleaving=true --benchmark_out="$results/$name.json" \
    --benchmark_out_format=json "$@" >"$results/$name.log" 2>&1 ||
    { cat "$results/$name.log"; exit 1; }
done
echo
python3 bench/bench_table.py collect "$results" -o "$output"
echo "Written to $output"
