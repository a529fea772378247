#!/usr/bin/env bash
# The JavaScript package, from a bare Debian machine: installs the compiler for WebAssembly, builds both
# modules, makes build/wasm/js/geomath-VERSION.tgz, and runs its tests and those of the page (Node 18 or later).
# Arguments: --bench measures it beside npm's proj4 as well, which it fetches; --folder-only ends with the
# package's folder, build/wasm/js/package.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${js_packages[@]}"
command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
cmake -S . -B build/wasm -G Ninja --toolchain js/cmake/wasm.cmake -DCMAKE_BUILD_TYPE=Release \
  -DBUILD_SHARED_LIBS=OFF -DGEOMATH_BUILD_JS=ON
cmake --build build/wasm --target geomath_js_package
[ "${1:-}" = --folder-only ] && exit

command -v node >/dev/null || ensure_packages nodejs
command -v npm >/dev/null || ensure_packages npm
ensure_one_of chromium  # looks at the page
(cd build/wasm/js/package && npm pack --silent --pack-destination ..)
node --test js/tests/

if [ "${1:-}" = --bench ]; then
  node js/bench/beside_proj4.mjs
fi
