#pragma once

#include "geomath/proj/methods/formulas/utm_formulas.h"

namespace zel_cs::geomath {

/// A plane divided by a grid scale about its false origin.
struct GridScaling {
  double scale, fEast, fNorth;

  template <class Real>
  GEOMATH_INLINE void Apply(Real& n, Real& e) const {
    n = fNorth + (n - fNorth) / scale;
    e = fEast + (e - fEast) / scale;
  }
  GEOMATH_INLINE void Undo(double& n, double& e) const {
    n = fNorth + (n - fNorth) * scale;
    e = fEast + (e - fEast) * scale;
  }
};

/// TTTMNZ: UtmFormulas on a scaled plane.
struct TmNzFormulas {
  UtmFormulas utm;
  GridScaling grid;

  template <class Math>
  GEOMATH_INLINE void Forward(typename Math::Real& b, typename Math::Real& l) const {
    utm.Forward<Math>(b, l);
    grid.Apply(b, l);
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    grid.Undo(n, e);
    utm.Inverse<Math>(n, e);
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const { return utm.ServesForward(b, l); }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    grid.Undo(n, e);
    return utm.ServesInverse(n, e);
  }
};

}  // namespace zel_cs::geomath
