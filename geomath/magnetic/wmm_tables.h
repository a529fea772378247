#pragma once

#include <span>

#include "geomath/export.h"
#include "geomath/magnetic/wmm2010.h"

namespace zel_cs::geomath {

/// The 90 terms each of the World Magnetic Models after that of 2010, by degree, then order.
GEOMATH_API std::span<const GaussTerm> Wmm2015v2Terms();
GEOMATH_API std::span<const GaussTerm> Wmm2020Terms();
GEOMATH_API std::span<const GaussTerm> Wmm2025Terms();

}  // namespace zel_cs::geomath
