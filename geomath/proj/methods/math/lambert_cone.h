#pragma once

#include <cmath>

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {

/// The cone of the Lambert conformal conic projection through two parallels, or one (Snyder 1987,
/// pp. 107-109), on plain numbers. Points on it are polar coordinates about its apex:
///   ρ = aF·k0·exp(−n·ψ(φ)),  θ = n·Δλ,
/// ρ carrying the sign of the cone constant n, so that southern cones need no formula of their own.
/// Two parallels that are both the equator, or symmetric about it, make n = 0: results are then not
/// finite.
class LambertCone {
 public:
  /// A parallel by its latitude and that latitude's sine and cosine. A class whose sines and
  /// cosines wait for a refresh passes those it keeps.
  struct Parallel {
    double phi, sinPhi, cosPhi;
  };
  template <class Real>
  struct PolarOf {
    Real rho;    ///< metres, signed as n
    Real theta;  ///< radians, positive east
  };
  using Polar = PolarOf<double>;

  LambertCone() = default;
  LambertCone(const Ellipsoid& ell, const Parallel& south, const Parallel& north, double k0);
  LambertCone(const Ellipsoid& ell, double southLat, double northLat, double k0);

  /// Radius of a parallel, metres, signed as n; 0 at the apex.
  double Radius(double phi, double sinPhi) const;
  double Radius(double phi) const;

  /// An image, and sine and cosine of its latitude.
  template <class Real>
  struct ImageOf {
    PolarOf<Real> at;
    Real sinPhi, cosPhi;
  };
  using Image = ImageOf<double>;

  /// The image of a point; meaningless for a latitude of ±π/2.
  template <class Math>
  GEOMATH_INLINE ImageOf<typename Math::Real> Project(typename Math::Real phi,
                                                      typename Math::Real deltaLambda) const {
    using Real = typename Math::Real;
    Real s, c;
    Math::SinCos(phi, s, c);
    const Real rho = aF_ * Math::Exp(-n_ * latitude_.Isometric<Math>(s, c));  // 15-7
    return {{rho, n_ * deltaLambda}, s, c};                                   // 14-4
  }

  /// Polar coordinates of a point of the plane that lies `fromApex` metres south and `east` metres
  /// east of the apex; θ is within (−π, π].
  template <class Math>
  GEOMATH_INLINE Polar ToPolar(double fromApex, double east) const {
    const double g = Sign();
    return {g * std::sqrt(fromApex * fromApex + east * east),  // 14-10
            Math::Atan2(g * east, g * fromApex)};              // 14-11
  }

  /// Latitude and longitude difference, radians, of an image.
  template <class Math>
  GEOMATH_INLINE void Unproject(const Polar& at, double& phi, double& deltaLambda) const {
    phi = latitude_.FromIsometric<Math>(-Math::Log(at.rho / aF_) / n_);  // 15-11, 7-9
    deltaLambda = at.theta / n_;                                         // 14-9
  }

  /// Point scale factor, 15-6.
  double Scale(double rho, double sinPhi, double cosPhi) const;

  /// Columns hold for cones on the Earth's ellipsoids that are neither planes nor cylinders.
  GEOMATH_INLINE bool ServesColumns() const { return servesColumns_; }

  /// The sign of the cone constant.
  GEOMATH_INLINE double Sign() const { return std::copysign(1.0, n_); }
  double n() const { return n_; }

 private:
  double a_ = 0, e_ = 0, e2_ = 0;
  double n_ = 0;   // cone constant
  double aF_ = 0;  // a·F·k0, metres
  ConformalLatitude latitude_;
  bool servesColumns_ = false;
};

}  // namespace zel_cs::geomath
