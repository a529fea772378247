#include "geomath/simd/elementary.h"

#ifdef GEOMATH_COMPACT

namespace zel_cs::geomath::simd {
namespace {

using Inlined = Polynomial<struct Baseline>;

}  // namespace

void BatchMath::SinCos(double x, double& sine, double& cosine) { Inlined::SinCos(x, sine, cosine); }
double BatchMath::Atan2(double y, double x) { return Inlined::Atan2(y, x); }
double BatchMath::Log(double x) { return Inlined::Log(x); }
double BatchMath::Log1p(double x) { return Inlined::Log1p(x); }
double BatchMath::Exp(double x) { return Inlined::Exp(x); }

}  // namespace zel_cs::geomath::simd

#endif
