# Sourced by the other scripts: installs Debian or Ubuntu packages that are missing.

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

package_present() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'ok installed'; }

missing_of() {
  local package
  for package in "$@"; do
    package_present "$package" || printf '%s\n' "$package"
  done
}

update_lists_once() {
  [ -n "${geomath_lists_updated:-}" ] && return
  as_root apt-get update -q
  geomath_lists_updated=1
}

# ensure_packages PACKAGE...: installs those that are missing; fails when one cannot be had.
ensure_packages() {
  local missing
  mapfile -t missing < <(missing_of "$@")
  [ ${#missing[@]} -eq 0 ] && return
  if ! command -v apt-get >/dev/null; then
    echo "These packages are needed and apt-get is not there to install them: ${missing[*]}" >&2
    return 1
  fi
  echo "Installing: ${missing[*]}"
  update_lists_once
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
    "${missing[@]}"
}

# ensure_one_of PACKAGE...: installs the first that is available, when none is present; says so when
# none can be had. For peers and tools that checks use where they exist.
ensure_one_of() {
  local package
  for package in "$@"; do
    package_present "$package" && return
  done
  command -v apt-get >/dev/null && update_lists_once
  for package in "$@"; do
    if apt-cache show "$package" >/dev/null 2>&1 && ensure_packages "$package"; then return; fi
  done
  echo "Not available here, its checks will be skipped: $*"
}

build_packages=(g++ cmake make ninja-build pkg-config)
tool_packages=(libcli11-dev nlohmann-json3-dev rapidjson-dev libfmt-dev libgdal-dev libproj-dev
  libsqlite3-dev)
docs_packages=(doxygen)
python_packages=(pybind11-dev python3-dev python3-numpy)
# What geomath.dask and geomath.plot stand on; the package itself does without.
python_extra_packages=(python3-dask python3-distributed python3-pandas python3-matplotlib)
# The compiler and the libraries of the JavaScript package, and what makes its modules smaller.
js_packages=(cmake ninja-build clang-16 lld-16 wasi-libc libc++-16-dev-wasm32 libc++abi-16-dev-wasm32
  libclang-rt-16-dev-wasm32 libfmt-dev nlohmann-json3-dev binaryen)
