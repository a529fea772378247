#pragma once

#include <cmath>

namespace zel_cs::geomath {

struct SinhCosh {
  double sinh, cosh;
};

/// Hyperbolic sine and cosine of one argument from one exponential: absolute accuracy a few units in
/// the last place of the cosine, so that the sine of a small argument loses relative digits.
inline SinhCosh HyperbolicPair(double x) {
  const double grow = std::exp(x), decay = 1 / grow;
  return {(grow - decay) / 2, (grow + decay) / 2};
}

}  // namespace zel_cs::geomath
