# Sourced by test.sh, check.sh and fuzz.sh: stages of a run, with ccache where it is there.

if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi

stage() { printf '\n== %s ==\n' "$*"; }

# Warnings are errors where the sources are kept free of them; other compilers have others.
werror_of() {  # werror_of COMPILER
  case $("$1" --version | head -n 1) in
    *++\ \(*\)\ 12.* | *clang\ version\ 14.*) echo ON ;;
    *) echo OFF ;;
  esac
}

configure() {  # configure BUILD_DIR OPTION...
  local build=$1
  shift
  mkdir -p "$(dirname "$build")"
  cmake -S . -B "$build" -G Ninja -DGEOMATH_WERROR="$(werror_of "${CXX:-c++}")" "$@" >"$build.configure.log" 2>&1 ||
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
