#!/usr/bin/env bash
# Every test, from a bare Debian or Ubuntu machine: installs what is missing, checks the format of the
# sources, builds the guide and the API reference without a warning, builds, and runs all tests with the
# examples and the installed package (shared and static).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${build_packages[@]}" "${tool_packages[@]}" "${python_packages[@]}" \
  "${python_extra_packages[@]}" libgtest-dev zlib1g-dev python3-pytest python3-pip python3-venv mypy
ensure_one_of libgeographiclib-dev libgeographic-dev
ensure_one_of libbenchmark-dev
ensure_one_of clang-format-14 clang-format
ensure_one_of doxygen
ensure_one_of chromium  # looks at the calibration report
ensure_one_of ccache    # the package tests build the library once more
source scripts/stages.sh

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

stage "All stages passed"
