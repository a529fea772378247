#pragma once

#include "geomath/proj/methods/math/hotine.h"

namespace zel_cs::geomath {

struct PointFactors;

/// Hotine's projection with its skew coordinates turned into northing and easting:
///   N = u·cos θ − v·sin θ + N0,  E = u·sin θ + v·cos θ + E0.
/// What the oblique Mercator classes have in common: they differ in θ and in where their
/// parameters come from.
class HotineGrid {
 public:
  /// Turn by an angle, and false coordinates of the natural origin, metres.
  struct Placement {
    double sinTurn, cosTurn, fNorth, fEast;
  };

  HotineGrid() = default;
  HotineGrid(const Hotine& hotine, const Placement& placement);

  /// The point conversions of a projection class, in place, and their formulas.
  bool ForwardPoint(double& b, double& l, PointFactors* factors) const;
  bool InversePoint(double& n, double& e, PointFactors* factors) const;

  template <class Math>
  GEOMATH_INLINE Hotine::ProjectedOf<typename Math::Real> Forward(typename Math::Real& b,
                                                                  typename Math::Real& l) const {
    using Real = typename Math::Real;
    const Hotine::ProjectedOf<Real> projected = hotine_.Project<Math>(b, l);
    ToGrid(projected.skew, b, l);
    return projected;
  }
  template <class Math>
  GEOMATH_INLINE Hotine::Unprojected Inverse(double& n, double& e) const {
    const Hotine::Unprojected unprojected = hotine_.Unproject<Math>(ToSkew(n, e));
    n = unprojected.geographic.phi;
    e = unprojected.geographic.lambda;
    return unprojected;
  }

  /// Not on the origin meridian, for which a class may have a rule of its own.
  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool offMeridian = l != hotine_.lambda0;
    return offMeridian & hotine_.ServesForward(b, l);
  }
  GEOMATH_INLINE bool ServesDerivatives(double b, double l) const {
    return hotine_.ServesForward(b, l);
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    return hotine_.ServesInverse(ToSkew(n, e));
  }

  /// Turns and shifts a skew point.
  template <class Real>
  GEOMATH_INLINE void ToGrid(Hotine::SkewOf<Real> point, Real& n, Real& e) const {
    const auto& [sinTurn, cosTurn, fNorth, fEast] = placement_;
    n = point.u * cosTurn - point.v * sinTurn + fNorth;
    e = point.u * sinTurn + point.v * cosTurn + fEast;
  }

  const Hotine& Projection() const { return hotine_; }

 private:
  GEOMATH_INLINE Hotine::Skew ToSkew(double n, double e) const {
    const auto& [sinTurn, cosTurn, fNorth, fEast] = placement_;
    const double y = n - fNorth, x = e - fEast;
    return {y * cosTurn + x * sinTurn, x * cosTurn - y * sinTurn};
  }

  Hotine hotine_;
  Placement placement_{0, 1, 0, 0};
};

}  // namespace zel_cs::geomath
