#pragma once

#include <type_traits>

#include "geomath/export.h"
#include "geomath/platform/zel_math.h"

/// A latitude and longitude rectangle, radians. The latitude range is [B0, B0 + dB] when dB > 0
/// and [B0 + dB, B0] otherwise; the same holds for longitude.
class GEOMATH_API TRectRgn {
 public:
  double B0 = 0;  ///< south edge (start of the latitude range)
  double dB = 0;  ///< latitude extent
  double L0 = 0;  ///< west edge (start of the longitude range)
  double dL = 0;  ///< longitude extent

  TRectRgn() = default;
  /// Start and extent in latitude, start and extent in longitude, radians.
  constexpr TRectRgn(double south, double latExtent, double west, double lonExtent)
      : B0(south), dB(latExtent), L0(west), dL(lonExtent) {}

  /// B0, dB, L0, dL for 0 to 3. Unchecked.
  constexpr double& operator[](int i) { return this->*Value(i); }
  constexpr double operator[](int i) const { return this->*Value(i); }
  operator double*() { return reinterpret_cast<double*>(this); }
  operator const double*() const { return reinterpret_cast<const double*>(this); }

  /// Whether the point (radians) lies inside, edges included; a longitude also counts when it does
  /// after a full turn. False for NaN.
  bool Inside(double B, double L) const;

  /// The same for pt = (latitude, longitude), which stays as it is. `shift` becomes (0, 0), or
  /// (0, ±2π) when the longitude lies inside only after that much is added; +2π is tried first.
  bool Inside(double* pt, zel_math::TAbstractPoint2<double>& shift) const;

  /// Grows the rectangle by 1/k of its extent on each side. With k = 0 the edges become infinite
  /// or NaN.
  void Extention(int k);

 private:
  static constexpr double TRectRgn::*Value(int i) {
    constexpr double TRectRgn::*values[] = {&TRectRgn::B0, &TRectRgn::dB, &TRectRgn::L0,
                                            &TRectRgn::dL};
    return values[i];
  }
};

// The conversions to a pointer rest on it.
static_assert(std::is_standard_layout_v<TRectRgn> && sizeof(TRectRgn) == 4 * sizeof(double),
              "the values stand as those of an array");
