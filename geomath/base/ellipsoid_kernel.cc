#include "geomath/base/ellipsoid_kernel.h"

#include "geomath/base/ellipsoid_formulas.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

template <class Target>
void EllipsoidKernel<Target>::ToGeocentric(const Ellipsoid& ell, double* GEOMATH_RESTRICT B,
                                           double* GEOMATH_RESTRICT L, double* GEOMATH_RESTRICT H,
                                           std::size_t count) {
  const Ellipsoid local = ell;  // plain doubles that no column can alias
  for (std::size_t i = 0; i < count; ++i)
    GeodeticToGeocentric<simd::Polynomial<Target>>(local, B[i], L[i], H[i]);
}

template <class Target>
void EllipsoidKernel<Target>::ToGeodetic(const Ellipsoid& ell, double* GEOMATH_RESTRICT X,
                                         double* GEOMATH_RESTRICT Y, double* GEOMATH_RESTRICT Z,
                                         std::size_t count) {
  const Ellipsoid local = ell;
  for (std::size_t i = 0; i < count; ++i) {
    const double p = AxisDistance(X[i], Y[i]);
    const ReducedLatitudeEquation equation = LatitudeEquation(local, p, Z[i]);
    ReducedLatitude beta = equation.Start();
    beta = UnitPair(equation.Numerator(beta), equation.Denominator(beta));
    beta = UnitPair(equation.Numerator(beta), equation.Denominator(beta));
    GeodeticFromReduced<simd::Polynomial<Target>>(local, p, beta, X[i], Y[i], Z[i]);
  }
}

template struct EllipsoidKernel<simd::GEOMATH_KERNEL_TARGET>;

}  // namespace zel_cs::geomath
