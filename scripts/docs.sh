#!/usr/bin/env bash
# The guide and the API reference as one site, build/docs/html, from a bare Debian or Ubuntu machine.
# Doxygen's warnings are errors: a public declaration without documentation, a link that leads
# nowhere.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

ensure_packages "${docs_packages[@]}"

# The umbrella headers say which headers are public.
GEOMATH_PUBLIC_HEADERS=$(sed -n 's/^#include "\(.*\)"$/\1/p' geomath/geomath.h files/files.h | tr '\n' ' ')
export GEOMATH_PUBLIC_HEADERS
mkdir -p build/docs
doxygen docs/Doxyfile
echo "build/docs/html/index.html"
