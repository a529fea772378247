#!/usr/bin/env bash
# What takes longer than the tests, about three quarters of an hour on two cores: scripts/check.sh
#   1. all tests under the address and undefined-behaviour sanitizers;
#   2. the threaded tests under the thread sanitizer;
#   3. a second compiler, and a bounded run of the fuzzers.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" "${tool_packages[@]}" "${python_packages[@]}" \
  "${python_extra_packages[@]}" libgtest-dev zlib1g-dev python3-pytest
ensure_one_of clang-14 clang
ensure_one_of libclang-rt-14-dev libclang-rt-dev
ensure_one_of ccache
source scripts/stages.sh

stage "Address and undefined-behaviour sanitizers"
configure build/asan -DCMAKE_BUILD_TYPE=Debug -DGEOMATH_SANITIZE=address,undefined \
  -DGEOMATH_BUILD_TOOLS=ON -DGEOMATH_BUILD_TESTS=ON -DGEOMATH_BUILD_PYTHON=ON
cmake --build build/asan
run_tests build/asan -LE 'package|docs'

stage "Thread sanitizer"
configure build/tsan -DCMAKE_BUILD_TYPE=Debug -DGEOMATH_SANITIZE=thread -DGEOMATH_BUILD_TESTS=ON
cmake --build build/tsan --target threads_test
run_tests build/tsan -L threads

stage "Clang and fuzzers"
if [ -n "$(first_of clang++-14 clang++)" ]; then
  scripts/fuzz.sh 10  # seconds each
else
  echo "clang++ is not here: skipped"
fi

stage "All stages passed"
