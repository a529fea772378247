#!/usr/bin/env bash
# The page that works offline, from a bare Debian machine: builds the JavaScript package and the program where
# they are missing, puts the page together in build/app, and serves it on this machine.
# Arguments: --build-only serves nothing; --port N takes another port than 8000.
# GEOMATH_PROGRAM names another program to read the registry with.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

port=8000
while [ $# -gt 0 ]; do
  case $1 in
    --build-only) port= ;;
    --port) port=${2:?--port takes a number}; shift ;;
    *) echo "unknown argument: $1" >&2; exit 2 ;;
  esac
  shift
done
command -v node >/dev/null || ensure_packages nodejs
command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache

package=build/wasm/js/package
[ -e $package/geomath.wasm ] || scripts/js.sh --folder-only

program=${GEOMATH_PROGRAM:-build/release/tools/geomath}
if [ ! -x "$program" ]; then
  ensure_packages "${build_packages[@]}" "${tool_packages[@]}"
  cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DGEOMATH_BUILD_TOOLS=ON
  cmake --build build/release --target geomath_program
fi

exec node js/app/build.mjs build/app $package "$program" $port
