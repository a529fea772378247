#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/column_range.h"
#include "geomath/proj/methods/math/conformal_sphere.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TKrovakProj with its constants prepared. Symbols of EPSG Guidance Note 7-2, method 9819:
///   U V  latitude on the conformal sphere and longitude from the centre on it
///   S D  the same about the pole of the cone's axis, whose co-latitude is π/2 − Uq
///   θ ρ  polar coordinates on the cone, θ = n·D
struct KrovakFormulas {
  static constexpr double kLatitudeTolerance = 1e-15;
  // The counter of the method starts at 0 and may reach 101.
  static constexpr int kMaxLatitudeSteps = 102;

  ConformalSphere sphere;
  double lambdaC;  // centre from Greenwich
  double sinUq, cosUq;
  double n;           // cone constant sin S0
  double coneFactor;  // ρ0·tan(S0/2 + π/4)^n, metres

  template <class Math>
  GEOMATH_INLINE bool Forward(typename Math::Real& b, typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, sinV, cosV, sinTheta, cosTheta;
    Math::SinCos(b, sinPhi, cosPhi);
    Math::SinCos(sphere.alpha * (lambdaC - l), sinV, cosV);
    const SineCosineOf<Real> U = sphere.Latitude<Math>(sinPhi, cosPhi);
    const Real sinS = sinUq * U.sin + cosUq * U.cos * cosV, cosS = CosFromSin(sinS);
    const Real D = Asin<Math>(U.cos * sinV / cosS);
    Math::SinCos(n * D, sinTheta, cosTheta);
    const Real rho = coneFactor * Math::Exp(n * Math::Log(cosS / (1 + sinS)));
    b = rho * cosTheta;
    l = rho * sinTheta;
    return true;
  }

  /// False when the latitude has not settled.
  template <class Math>
  GEOMATH_INLINE bool Inverse(double& x, double& y) const {
    double sinD, cosD;
    Math::SinCos(Math::Atan(y / x) / n, sinD, cosD);
    const double rho = std::sqrt(x * x + y * y);
    const double tanS = Math::Exp(Math::Log(coneFactor / rho) / n);  // tan(S/2 + π/4)
    const double cotS = 1 / tanS, sum = tanS + cotS;
    const double cosS = 2 / sum, sinS = (tanS - cotS) / sum;

    const double sinU = sinUq * sinS - cosUq * cosS * cosD;
    const SineCosine U{sinU, CosFromSin(sinU)};
    const double V = Asin<Math>(cosS * sinD / U.cos);
    // Kept: the sphere's equator itself is taken for the ellipsoid's.
    const bool equator = std::abs(sinU) <= kLatitudeTolerance;
    double phi;
    if constexpr (Math::kColumns) {
      const double geodetic = sphere.Geodetic<Math>(U);
      phi = U.cos >= 0 ? geodetic : U.cos;  // no number beyond the pole of the sphere
    } else if (!sphere.Geodetic(U, kLatitudeTolerance, kMaxLatitudeSteps, phi) && !equator) {
      return false;
    }
    x = equator ? sinU : phi;
    y = lambdaC - V / sphere.alpha;
    return true;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < kHalfPi;
    const bool longitude = std::abs(l - lambdaC) < simd::kMaxAngle / 2;  // before α ≤ 1.004
    return latitude & longitude & ServesCone();
  }
  GEOMATH_INLINE bool ServesInverse(double x, double y) const {
    constexpr double kLeast = 1e-6;  // square metres
    const double rho2 = x * x + y * y;
    const bool offApex = rho2 > kLeast, moderate = rho2 < kLargestSquaredRadius;
    return offApex & moderate & ServesCone();
  }

 private:
  // Within it all logarithms over n keep to the domain of the columns' exponential function.
  GEOMATH_INLINE bool ServesCone() const {
    const bool blunt = n > 0.1, least = coneFactor > 1, most = coneFactor < 1e20;
    const bool sphereIsFinite = std::abs(sphere.K) < 100;
    return blunt & least & most & sphereIsFinite & sphere.ServesColumns();
  }

  template <class Real>
  static GEOMATH_INLINE Real CosFromSin(Real s) {
    using std::sqrt;
    return sqrt((1 - s) * (1 + s));
  }

  template <class Math>
  static GEOMATH_INLINE typename Math::Real Asin(typename Math::Real s) {
    return Math::Atan2(s, CosFromSin(s));
  }
};

}  // namespace zel_cs::geomath
