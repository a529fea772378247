#pragma once

#include "geomath/export.h"
#include "geomath/frame/time_dependent_similarity.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

/// How a tectonic plate turns about the centre of the Earth: milliarc-seconds a year about the axes
/// X, Y, Z, as plate models are published.
using AngularVelocity = TAbstractPoint3<double>;

/// The angular velocity about a pole at a latitude and longitude, radians, of a rate in degrees in a
/// million years, positive counter-clockwise.
GEOMATH_API AngularVelocity AngularVelocityAbout(double latitude, double longitude,
                                                 double degreesPerMillionYears);

/// The motion of points on a rigid plate, in one geocentric frame: Forward leads from the position
/// at an epoch to that at the date,
///     X(t) = X(t₀) + (t − t₀)·(ω × X(t₀) + T′),
/// where T′ is the rate of the origin of the plate model, which some models have for users whose
/// velocities have to fit without a rest (Altamimi et al. 2023, ITRF2020 plate motion model). Inverse
/// solves it and leads from the date to the epoch.
class GEOMATH_API PlateMotion : public TimeDependentSimilarity {
 public:
  /// The epoch as a decimal year, the rate of the origin in metres a year.
  PlateMotion(const AngularVelocity& velocity, double epoch,
              const TAbstractPoint3<double>& originRate = {0, 0, 0});
};

}  // namespace zel_cs::geomath
