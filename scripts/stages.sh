# Sourced by test.sh and check.sh: stages of a run, with ccache where it is there.

if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi

stage() { printf '\n== %s ==\n' "$*"; }

configure() {  # configure BUILD_DIR OPTION...
  local build=$1
  shift
  mkdir -p "$(dirname "$build")"
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
