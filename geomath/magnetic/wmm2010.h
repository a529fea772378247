#pragma once

#include <span>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// One Gauss coefficient pair as coefficient tables print it: degree, order, g and h in nT, their
/// yearly change in nT per year.
struct GaussTerm {
  /// Degree and order.
  int n, m;
  /// Main field, nT, and its yearly change, nT per year.
  double g, h, gDot, hDot;
};

/// Name, decimal year and maximum degree of the built-in model.
inline constexpr const char* kWmm2010Name = "WMM-2010";
inline constexpr double kWmm2010Epoch = 2010.0;
inline constexpr int kWmm2010Degree = 12;

/// The 90 terms of the World Magnetic Model 2010, by degree, then order.
GEOMATH_API std::span<const GaussTerm> Wmm2010Terms();

}  // namespace zel_cs::geomath
