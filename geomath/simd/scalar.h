#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath {

/// Sine and cosine of one angle.
template <class Real>
struct SineCosineOf {
  Real sin, cos;
};
using SineCosine = SineCosineOf<double>;

/// Elementary functions of one number, the same bits on every machine: sums, products, quotients and
/// roots only, which IEEE 754 rounds alike everywhere, where those of the standard library differ
/// from one system to the next. The sources are compiled without contraction.
///
/// All take any number: ±∞, NaN and arguments outside of a function's domain give what the standard
/// library gives. Worst errors, in units in the last place:
///   0.9   SinCos, Sin, Cos (1.6 from 1000 to 10⁶ radians), Atan, Atan2, Exp, Log, Log1p
///   1.3   Tan, Asin, Expm1, Sinh, Cosh, Tanh, Asinh, Atanh, Hypot
///   Pow   0.9 + |y·log x|/16
/// Beyond 10⁶ radians the sine is that of an angle within half a unit in the last place of x.
GEOMATH_API SineCosine SinCos(double x);
double Sin(double x);
double Cos(double x);
double Tan(double x);
double Asin(double x);
double Atan(double x);
double Atan2(double y, double x);
double Exp(double x);
double Expm1(double x);
double Log(double x);
double Log1p(double x);
double Sinh(double x);
double Cosh(double x);
double Tanh(double x);
double Asinh(double x);
double Atanh(double x);
/// x to the power y, NaN for negative x.
double Pow(double x, double y);
double Hypot(double x, double y);

}  // namespace zel_cs::geomath
