#!/usr/bin/env bash
# scripts/test_platforms.sh [POINTS [PLATFORM...]]: builds the library for other machines and compares
# the digests of its batches (tests/digests) with the committed ones, POINTS for each conversion:
# 1000000, this machine ten million as well, or 65536 for a quick look. Platforms: s390x aarch64 native
# windows wasm; all by default.
# Installs cross compilers and what runs their programs. Not part of scripts/test.sh; stops after
# GEOMATH_MINUTES (40).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

points=${1:-1000000}
shift || true
platforms=("$@")
[ ${#platforms[@]} -gt 0 ] || platforms=(s390x aarch64 native windows wasm)
deadline=$((SECONDS + ${GEOMATH_MINUTES:-40} * 60))
command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
ensure_packages "${build_packages[@]}"

# build PLATFORM COMPILER_FLAGS CMAKE_ARGUMENT...: the static library and the program of digests
build() {
  local folder=build/platforms/$1 flags=$2 compiler
  shift 2
  cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF "$@" >"$folder.log"
  cmake --build "$folder" --target geomath >>"$folder.log"
  compiler=$(sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")/\1/p' "$folder"/CMakeFiles/*/CMakeCXXCompiler.cmake)
  # shellcheck disable=SC2086
  "$compiler" -std=c++20 -O2 -ffp-contract=off -DGEOMATH_STATIC -I. $flags tests/digests/*.cc \
    "$folder/geomath/libgeomath.a" -o "$folder/digests"
}

# compare PLATFORM POINTS COMMAND...: by the committed digests, in the time that is left
compare() {
  local platform=$1 points=$2
  shift 2
  local left=$((deadline - SECONDS)) status=0
  timeout "$((left > 0 ? left : 1))" \
    tests/digests/compare.sh "tests/digests/digests_$points.txt" "$points" "$@" || status=$?
  case $status in
    0) echo "$platform: the same bits in $points points" ;;
    77) echo "$platform: skipped, this machine has it not" ;;
    124) echo "$platform: no time left" >&2; return 1 ;;
    *) echo "$platform: NOT the same bits" >&2; return 1 ;;
  esac
}

# On every instruction set of this machine.
compare_native() {
  local set count status=0
  for set in baseline avx2 avx512; do
    for count in "${native_points[@]}"; do
      compare "native $set" "$count" env GEOMATH_INSTRUCTION_SET="$set" "$program" || status=1
    done
  done
  return "$status"
}

# The objects of both modules of the JavaScript package.
compare_wasm() {
  local module status=0
  for module in geomath_digests geomath_digests_scalar; do
    compare "wasm $module" "$points" node --no-warnings --experimental-wasi-unstable-preview1 \
      tests/digests/run_wasm.mjs "build/wasm/js/$module.wasm" || status=1
  done
  return "$status"
}

native_points=("$points")
[ "$points" != 1000000 ] || native_points+=(10000000)
# Comparisons run while the next platform is built, the slow emulators first.
trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
comparisons=()
mkdir -p build/platforms
for platform in "${platforms[@]}"; do
  program=build/platforms/$platform/digests
  case $platform in
    native)
      build native ""
      compare_native & ;;
    aarch64 | s390x)
      ensure_packages "g++-$platform-linux-gnu" qemu-user
      build "$platform" -static -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="$platform" \
        -DCMAKE_CXX_COMPILER="$platform-linux-gnu-g++"
      compare "$platform" "$points" "qemu-$platform" "$program" & ;;
    windows)
      ensure_packages g++-mingw-w64-x86-64-posix wine64
      build windows -static -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=AMD64 \
        -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix
      wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
      compare windows "$points" env WINEDEBUG=-all "$wine" "$program.exe" & ;;
    wasm)
      ensure_packages "${js_packages[@]}"
      command -v node >/dev/null || ensure_packages nodejs
      cmake -S . -B build/wasm -G Ninja --toolchain js/cmake/wasm.cmake -DCMAKE_BUILD_TYPE=Release \
        -DBUILD_SHARED_LIBS=OFF -DGEOMATH_BUILD_JS=ON >build/platforms/wasm.log
      cmake --build build/wasm --target geomath_digests geomath_digests_scalar >>build/platforms/wasm.log
      compare_wasm & ;;
    *) echo "Unknown platform: $platform" >&2; exit 2 ;;
  esac
  comparisons+=($!)
done

failed=0
for comparison in "${comparisons[@]}"; do
  wait "$comparison" || failed=1
done
exit "$failed"
