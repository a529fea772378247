#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/base/ellipsoid.h"
#include "geomath/base/matrix3.h"
#include "geomath/simd/elementary.h"

/// Small vectors at a position, as geographic and as geocentric coordinates see them (Rapp 1991,
/// Geometric Geodesy I, section 3.3): d(X, Y, Z) = [n e u]·diag(M + h, (N + h)·cos B, 1)·d(B, L, h).
namespace zel_cs::geomath {

/// The metres that a radian of latitude and one of longitude are at a position.
struct MetresPerRadian {
  double latitude, longitude;

  static GEOMATH_INLINE MetresPerRadian Of(double a, double e2, double sB, double cB, double h) {
    const double w2 = 1 - e2 * (sB * sB), N = a / std::sqrt(w2), M = N * (1 - e2) / w2;
    return {M + h, (N + h) * cB};
  }
  template <class Math>
  static GEOMATH_INLINE MetresPerRadian At(double a, double e2, double B, double h) {
    double s, c;
    Math::SinCos(B, s, c);
    return Of(a, e2, s, c, h);
  }
};

/// Metres per radian of latitude and longitude at a position, and the directions of north, east and up
/// in geocentric axes, which are the columns of `axes`.
struct TangentFrame {
  double perLatitude, perLongitude;
  Matrix3 axes;

  template <class Math>
  static GEOMATH_INLINE TangentFrame At(double a, double e2, double B, double L, double h) {
    double sB, cB, sL, cL;
    Math::SinCos(B, sB, cB);
    Math::SinCos(L, sL, cL);
    const MetresPerRadian metres = MetresPerRadian::Of(a, e2, sB, cB, h);
    return {metres.latitude,
            metres.longitude,
            {{{-sB * cL, -sL, cB * cL}, {-sB * sL, cL, cB * sL}, {cB, 0, sB}}}};
  }

  static GEOMATH_INLINE bool ServesColumns(double B, double L) {
    const bool latitude = std::abs(B) < simd::kMaxAngle;
    const bool longitude = std::abs(L) < simd::kMaxAngle;
    return latitude & longitude;
  }
};

/// The radians of latitude and of longitude that a metre at a position is, in one division.
struct RadiansPerMetre {
  double latitude, longitude;

  template <class Math>
  static GEOMATH_INLINE RadiansPerMetre At(double a, double e2, double B, double h) {
    double s, c;
    Math::SinCos(B, s, c);
    const double w2 = 1 - e2 * (s * s), w = std::sqrt(w2), w3 = w2 * w;
    const double meridian = a * (1 - e2) + h * w3, parallel = (a + h * w) * c;
    const double q = 1 / (meridian * parallel);
    return {w3 * (parallel * q), w * (meridian * q)};
  }
};

/// Derivatives of or by latitudes and longitudes times what `Factors` gives for them at their place:
/// RadiansPerMetre or MetresPerRadian. Columns: latitude and height, which stay, kEach derivatives of
/// latitude and as many of longitude.
template <class Factors, std::size_t kEach>
struct ScaleTangent {
  static constexpr std::size_t kColumns = 2 + 2 * kEach;
  double a, e2;

  explicit ScaleTangent(const Ellipsoid& ell) : a(ell.a), e2(ell.e2) {}

  template <class Math, class... Derivatives>
  GEOMATH_INLINE void Convert(double& B, double& h, Derivatives&... derivatives) const {
    const Factors factors = Factors::template At<Math>(a, e2, B, h);
    std::size_t k = 0;
    ((derivatives *= k++ < kEach ? factors.latitude : factors.longitude), ...);
  }
  template <class... Derivatives>
  GEOMATH_INLINE bool Serves(double B, double, Derivatives...) const {
    return TangentFrame::ServesColumns(B, 0);
  }
};

/// The derivatives of geocentric coordinates by metres at their place, in the columns of
/// TangentToGeocentric.
struct MetresToGeocentric {
  static constexpr std::size_t kColumns = 12;

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(double& B, double& L, double&, Nine&... nine) const {
    TangentFrame::At<Math>(1, 0, B, L, 0).axes.To(nine...);
  }
  template <class... Nine>
  GEOMATH_INLINE bool Serves(double B, double L, double, Nine...) const {
    return TangentFrame::ServesColumns(B, L);
  }
};

/// The derivatives of a position between metres at its place and geocentric coordinates, a row for
/// each coordinate. Columns: B, L, h of the position, which stay, and the nine derivatives.
template <bool kToGeocentric>
struct TurnTangent {
  static constexpr std::size_t kColumns = 12;

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(double& B, double& L, double&, Nine&... nine) const {
    const Matrix3 axes = TangentFrame::At<Math>(1, 0, B, L, 0).axes;
    ((kToGeocentric ? axes : axes.Transposed()) * Matrix3::Of(nine...)).To(nine...);
  }
  template <class... Nine>
  GEOMATH_INLINE bool Serves(double B, double L, double, Nine...) const {
    return TangentFrame::ServesColumns(B, L);
  }
};

/// The derivatives of a position, a row for each of its coordinates, from geographic to geocentric
/// coordinates. Columns: B, L, h of the position, which stay, and the nine derivatives.
struct TangentToGeocentric {
  static constexpr std::size_t kColumns = 12;
  double a, e2;

  explicit TangentToGeocentric(const Ellipsoid& ell) : a(ell.a), e2(ell.e2) {}

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(double& B, double& L, double& h, Nine&... nine) const {
    const TangentFrame frame = TangentFrame::At<Math>(a, e2, B, L, h);
    Matrix3 tangent = Matrix3::Of(nine...);
    for (int c = 0; c < 3; ++c) {
      tangent.m[0][c] *= frame.perLatitude;
      tangent.m[1][c] *= frame.perLongitude;
    }
    (frame.axes * tangent).To(nine...);
  }

  template <class... Nine>
  GEOMATH_INLINE bool Serves(double B, double L, double, Nine...) const {
    return TangentFrame::ServesColumns(B, L);
  }
};

/// The way back, likewise.
struct TangentToGeographic {
  static constexpr std::size_t kColumns = 12;
  double a, e2;

  explicit TangentToGeographic(const Ellipsoid& ell) : a(ell.a), e2(ell.e2) {}

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(double& B, double& L, double& h, Nine&... nine) const {
    const TangentFrame frame = TangentFrame::At<Math>(a, e2, B, L, h);
    Matrix3 tangent = frame.axes.Transposed() * Matrix3::Of(nine...);
    const double north = 1 / frame.perLatitude, east = 1 / frame.perLongitude;
    for (int c = 0; c < 3; ++c) {
      tangent.m[0][c] *= north;
      tangent.m[1][c] *= east;
    }
    tangent.To(nine...);
  }

  template <class... Nine>
  GEOMATH_INLINE bool Serves(double B, double L, double, Nine...) const {
    return TangentFrame::ServesColumns(B, L);
  }
};

}  // namespace zel_cs::geomath
