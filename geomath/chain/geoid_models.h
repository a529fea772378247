#pragma once

#include "geomath/chain/geoid_height.h"
#include "geomath/geoid/global_geoid.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// A regional grid, with the scheme of its class, as the geoid of a CoordinateChain. The model is
/// not owned. No height outside the grid, on a hole, or where the scheme fails. Any number of turns of
/// longitude is taken. A position within 2e-12 rad of the southern or western edge is taken onto it,
/// which the query of the class itself would cut off. A grid around the whole Earth is closed by
/// CloseSeam first.
class GEOMATH_API RegionalGeoidHeight : public GeoidHeight {
 public:
  /// `model` stays the caller's and must outlive this object.
  explicit RegionalGeoidHeight(const RegionalGeoid& model) : model_(&model) {}

  bool Height(double b, double l, double& height) const override;
  void Heights(const double* b, const double* l, double* heights, std::size_t count) const override;
  void HeightsAndSlopes(const double* b, const double* l, double* heights, double* perLatitude,
                        double* perLongitude, std::size_t count) const override;

 private:
  const RegionalGeoid* model_;
};

/// A spherical-harmonic model as the geoid of a CoordinateChain. The model is not owned. Each
/// thread has work arrays of its own, allocated by its first call. Heights of consecutive
/// positions on one latitude cost a fraction of the others.
class GEOMATH_API GlobalGeoidHeight : public GeoidHeight {
 public:
  /// `model` stays the caller's and must outlive this object.
  explicit GlobalGeoidHeight(const GlobalGeoid& model) : model_(&model) {}

  bool Height(double b, double l, double& height) const override;
  void Heights(const double* b, const double* l, double* heights, std::size_t count) const override;
  void HeightsAndSlopes(const double* b, const double* l, double* heights, double* perLatitude,
                        double* perLongitude, std::size_t count) const override;

 private:
  const GlobalGeoid* model_;
};

}  // namespace zel_cs::geomath
