#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath {

/// The distributions of adjustment computations: the probability below a value, and the value below
/// which a probability lies. Degrees of freedom are positive and need not be whole. From the incomplete
/// gamma and beta functions (NIST Digital Library of Mathematical Functions, 8.7, 8.9 and 8.17);
/// probabilities are right to 1e-13, values to 1e-11 of their size. NaN for a probability outside
/// (0, 1) and for degrees of freedom that are not positive. Const and thread-safe.
GEOMATH_API double NormalProbability(double x);
GEOMATH_API double NormalQuantile(double probability);
GEOMATH_API double StudentProbability(double t, double freedom);
GEOMATH_API double StudentQuantile(double probability, double freedom);
GEOMATH_API double ChiSquareProbability(double x, double freedom);
GEOMATH_API double ChiSquareQuantile(double probability, double freedom);
GEOMATH_API double FisherProbability(double x, double freedom1, double freedom2);
GEOMATH_API double FisherQuantile(double probability, double freedom1, double freedom2);

/// The critical value of the largest of `count` standardised residuals whose variance of unit weight is
/// estimated with `freedom` degrees, at the level `alpha` for all of them together (Pope 1976, NOAA
/// Technical Report NOS 65 NGS 1): τ = t·√f/√(f − 1 + t²), t of f − 1 degrees at 1 − α/(2n). With one
/// degree of freedom every standardised residual is ±1 and the value is 1: nothing is ever found.
GEOMATH_API double TauCritical(double alpha, double count, double freedom);

}  // namespace zel_cs::geomath
