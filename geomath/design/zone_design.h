#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/design/design_criterion.h"
#include "geomath/design/zone_definition.h"
#include "geomath/export.h"

namespace zel_cs::geomath {

/// The ground that a zone is designed for, one entry a point: positions in radians, ellipsoidal heights
/// in metres, weights above 0 (population, importance, area). NaN heights are holes and a weight of 0
/// leaves a point out; without weights all are 1.
struct HeightPoints {
  std::span<const double> b;       ///< latitudes
  std::span<const double> l;       ///< longitudes
  std::span<const double> h;       ///< heights
  std::span<const double> weight;  ///< as many as points, or none
};

/// Why there is no design.
enum class DesignStatus : unsigned char {
  done,            ///< there is one
  noPoints,        ///< no point with a height and a weight
  onePlace,        ///< all points at one place: every axis is as good
  badValue,        ///< a position, weight or option that is none, or columns of unequal length
  atPole,          ///< a point within a degree of a pole
  tooLarge,        ///< more than 2000 km across: not the ground of one zone
  acrossDateLine,  ///< the families asked for do not fold longitudes there (oblique ones)
  impossible,      ///< no axis serves all points
  stopped,         ///< by the caller
};

/// What is asked of a design.
struct DesignOptions {
  Ellipsoid ellipsoid = MakeEllipsoid(kWgs84A, kWgs84InvF);  ///< of the positions
  DesignCriterion criterion;                                 ///< what is made small
  /// The families to compare, each once.
  std::vector<ZoneFamily> families = {ZoneFamily::transverseMercator, ZoneFamily::lambert,
                                      ZoneFamily::obliqueMercator, ZoneFamily::stereographic};
  double angleStep = kWholeMinute;  ///< published angles are multiples of it, radians
  int scaleDecimals = 6;            ///< of the published scale, 4 to 9
  /// Projections that are in use there (internal axes): published false origins keep coordinates apart
  /// from theirs.
  std::vector<const TGeoProj*> neighbours;
  /// Called with the share that is done, rising from 0 to 1; false stops the design.
  std::function<bool(double)> progress;

  /// 1′, in radians.
  static constexpr double kWholeMinute = 0.000290888208665721596;
};

/// The design of one family.
struct FamilyDesign {
  ZoneDefinition exact;  ///< where the criterion is smallest; no false origin
  double value;          ///< its criterion
  double centredValue;   ///< of an axis through the middle of the extent with its best scale
  ZoneDefinition
      rounded;          ///< to publish: axis to the angle step, scale to its decimals, false origin
  double roundedValue;  ///< its criterion
};

/// The families by their rounded values, the best first.
struct ZoneDesign {
  DesignStatus status = DesignStatus::noPoints;  ///< whether there is one
  std::vector<FamilyDesign> families;            ///< none unless `status` is `done`
  std::size_t used = 0;                          ///< points that took part
};

/// Designs a zone whose grid distances are those on the ground as nearly as the criterion says, over the
/// linear distortion δ = k·R/(R + h) − 1 of LinearDistortion: for each family its axis and scale
/// (Dennis 2016, Ground truth: low distortion map projections; Vonderohe and Dennis 2021, Journal of
/// Surveying Engineering 148(1)), rounded to what people publish. The answer is the same every time. A
/// plane that rises by q moves a meridian or a parallel by R·q towards the low side, so that an axis may
/// lie outside of the points; at most 800 km from their middle. A million points take about a second
/// for each family.
///
/// False coordinates are whole 10 km: positive over all points, northings unlike eastings, and both
/// unlike those of the neighbours where that is possible.
GEOMATH_API ZoneDesign DesignZone(const HeightPoints& points, const DesignOptions& options);

}  // namespace zel_cs::geomath
