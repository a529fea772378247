#pragma once

#include <cstddef>

#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// The series of Karney 2013 (Algorithms for geodesics, J. Geodesy 87, 43-55) in the expansion
/// parameter ε of a geodesic, eq. 16, to its sixth order. Equation numbers are his. The coefficients
/// follow from the integrals by rational arithmetic; truncation is below 15 nm for |f| < 1/150.
inline constexpr std::size_t kGeodesicOrder = 6;

/// Coefficients of sin 2σ, sin 4σ, … or of cos σ, cos 3σ, … of one geodesic.
template <std::size_t N>
struct GeodesicTerms {
  double c[N];

  /// Σ c[l]·sin 2(l + 1)σ.
  GEOMATH_INLINE double Sine(double sinSigma, double cosSigma) const {
    return ClenshawSin(c, 2 * sinSigma * cosSigma, (cosSigma - sinSigma) * (cosSigma + sinSigma));
  }
  /// Σ c[l]·cos (2l + 1)σ, by the same recurrence.
  GEOMATH_INLINE double OddCosine(double sinSigma, double cosSigma) const {
    const double twoCos = 2 * (cosSigma - sinSigma) * (cosSigma + sinSigma);
    double b1 = 0, b2 = 0;
    for (std::size_t j = N; j-- > 0;) {
      const double b = c[j] + twoCos * b1 - b2;
      b2 = b1;
      b1 = b;
    }
    return (b1 - b2) * cosSigma;
  }
};

/// A1 (eq. 17): the mean of dI1/dσ, what a unit of arc is of b.
GEOMATH_INLINE double GeodesicA1(double eps) {
  const double e2 = eps * eps;
  return (1 + e2 * (1.0 / 4 + e2 * (1.0 / 64 + e2 * (1.0 / 256)))) / (1 - eps);
}

/// C1 (eq. 18).
GEOMATH_INLINE GeodesicTerms<6> GeodesicC1(double eps) {
  const double e2 = eps * eps, e3 = e2 * eps, e4 = e2 * e2, e5 = e4 * eps, e6 = e4 * e2;
  return {{eps * (-1.0 / 2 + e2 * (3.0 / 16 + e2 * (-1.0 / 32))),
           e2 * (-1.0 / 16 + e2 * (1.0 / 32 + e2 * (-9.0 / 2048))),
           e3 * (-1.0 / 48 + e2 * (3.0 / 256)), e4 * (-5.0 / 512 + e2 * (3.0 / 512)),
           e5 * (-7.0 / 1280), e6 * (-7.0 / 2048)}};
}

/// C1' (eq. 21), of the reverted series.
GEOMATH_INLINE GeodesicTerms<6> GeodesicC1Reverted(double eps) {
  const double e2 = eps * eps, e3 = e2 * eps, e4 = e2 * e2, e5 = e4 * eps, e6 = e4 * e2;
  return {{eps * (1.0 / 2 + e2 * (-9.0 / 32 + e2 * (205.0 / 1536))),
           e2 * (5.0 / 16 + e2 * (-37.0 / 96 + e2 * (1335.0 / 4096))),
           e3 * (29.0 / 96 + e2 * (-75.0 / 128)), e4 * (539.0 / 1536 + e2 * (-2391.0 / 2560)),
           e5 * (3467.0 / 7680), e6 * (38081.0 / 61440)}};
}

/// A2 (eq. 42): the mean of dI2/dσ.
GEOMATH_INLINE double GeodesicA2(double eps) {
  const double e2 = eps * eps;
  return (1 + e2 * (1.0 / 4 + e2 * (9.0 / 64 + e2 * (25.0 / 256)))) * (1 - eps);
}

/// C2 (eq. 43).
GEOMATH_INLINE GeodesicTerms<6> GeodesicC2(double eps) {
  const double e2 = eps * eps, e3 = e2 * eps, e4 = e2 * e2, e5 = e4 * eps, e6 = e4 * e2;
  return {{eps * (1.0 / 2 + e2 * (1.0 / 16 + e2 * (1.0 / 32))),
           e2 * (3.0 / 16 + e2 * (1.0 / 32 + e2 * (35.0 / 2048))),
           e3 * (5.0 / 48 + e2 * (5.0 / 256)), e4 * (35.0 / 512 + e2 * (7.0 / 512)),
           e5 * (63.0 / 1280), e6 * (77.0 / 2048)}};
}

/// A3 and C3 (eqs. 24 and 25) of an ellipsoid, its third flattening already in the coefficients.
struct GeodesicLongitudeSeries {
  double a3[6];   // by powers of ε
  double c31[5];  // of sin 2σ, by powers from ε on
  double c32[4];  // of sin 4σ, from ε² on
  double c33[3];
  double c34[2];
  double c35;

  static GeodesicLongitudeSeries Of(double n);

  GEOMATH_INLINE double A3(double eps) const {
    return a3[0] + eps * (a3[1] + eps * (a3[2] + eps * (a3[3] + eps * (a3[4] + eps * a3[5]))));
  }
  GEOMATH_INLINE GeodesicTerms<5> C3(double eps) const {
    const double e2 = eps * eps, e3 = e2 * eps, e4 = e2 * e2, e5 = e4 * eps;
    return {{eps * (c31[0] + eps * (c31[1] + eps * (c31[2] + eps * (c31[3] + eps * c31[4])))),
             e2 * (c32[0] + eps * (c32[1] + eps * (c32[2] + eps * c32[3]))),
             e3 * (c33[0] + eps * (c33[1] + eps * c33[2])), e4 * (c34[0] + eps * c34[1]),
             e5 * c35}};
  }
};

/// C4 (eq. 63) of an ellipsoid: row l holds the powers of ε from the l-th on.
struct GeodesicAreaSeries {
  double c4[kGeodesicOrder][kGeodesicOrder];

  static GeodesicAreaSeries Of(double n);
  GeodesicTerms<6> C4(double eps) const;
};

}  // namespace zel_cs::geomath
