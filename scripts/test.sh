#!/usr/bin/env bash
# Every test, from a bare Debian or Ubuntu machine: installs what is missing, builds, and runs
#   1. Release: all tests, the examples, the installed package (shared and static);
#   2. Debug with the address and undefined-behaviour sanitizers: all tests;
#   3. the threaded tests under the thread sanitizer;
#   4. a second compiler, and a bounded run of the fuzzers;
#   5. the guide and the API reference, without a warning.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" "${tool_packages[@]}" "${python_packages[@]}" \
  "${python_extra_packages[@]}" libgtest-dev zlib1g-dev python3-pytest python3-pip python3-venv mypy
ensure_one_of libgeographiclib-dev libgeographic-dev
ensure_one_of libbenchmark-dev
ensure_one_of clang-14 clang
ensure_one_of libclang-rt-14-dev libclang-rt-dev
ensure_one_of clang-format-14 clang-format
ensure_one_of doxygen
ensure_one_of chromium  # looks at the calibration report
ensure_one_of ccache    # the package tests build the library once more

if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi

stage() { printf '\n== %s ==\n' "$*"; }
configure() {  # configure BUILD_DIR OPTION...
  local build=$1
  shift
  cmake -S . -B "$build" -G Ninja -DGEOMATH_WERROR=ON "$@" >"$build.configure.log" 2>&1 ||
    { cat "$build.configure.log"; return 1; }
}
run_tests() {  # run_tests BUILD_DIR CTEST_OPTION...
  local build=$1
  shift
  ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
}
first_of() {  # first_of COMMAND...: the first that exists
  local name
  for name in "$@"; do
    if command -v "$name" >/dev/null; then echo "$name"; return; fi
  done
}

mkdir -p build

stage "Source format"
clang_format=$(first_of clang-format-14 clang-format)
if [ -n "$clang_format" ] && "$clang_format" --version | grep -q 'version 14'; then
  git ls-files '*.h' '*.cc' | xargs "$clang_format" --dry-run --Werror
else
  echo "clang-format 14 is not here: skipped"
fi

stage "Documentation"
if command -v doxygen >/dev/null; then
  scripts/docs.sh
else
  echo "doxygen is not here: skipped"
fi

stage "Release"
configure build/release -DCMAKE_BUILD_TYPE=Release \
  -DGEOMATH_BUILD_TOOLS=ON -DGEOMATH_BUILD_TESTS=ON -DGEOMATH_BUILD_BENCH=ON \
  -DGEOMATH_BUILD_PYTHON=ON
cmake --build build/release
run_tests build/release

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
