#include "geomath/frame/plate_motion.h"

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kArcSecondsPerMas = 1e-3;
constexpr double kMasPerDegree = 3.6e6, kYears = 1e6;

TimeDependentParameters MotionFrom(double epoch, const AngularVelocity& velocity,
                                   const TAbstractPoint3<double>& originRate) {
  TimeDependentParameters p;
  p.shiftRate = originRate;
  for (int i = 0; i < 3; ++i) p.rotationRate[i] = velocity[i] * kArcSecondsPerMas;
  p.epoch = epoch;
  return p;
}

}  // namespace

AngularVelocity AngularVelocityAbout(double latitude, double longitude,
                                     double degreesPerMillionYears) {
  const double rate = degreesPerMillionYears * kMasPerDegree / kYears;
  return {rate * Cos(latitude) * Cos(longitude), rate * Cos(latitude) * Sin(longitude),
          rate * Sin(latitude)};
}

PlateMotion::PlateMotion(const AngularVelocity& velocity, double epoch,
                         const TAbstractPoint3<double>& originRate)
    : TimeDependentSimilarity(MotionFrom(epoch, velocity, originRate), ShiftKind::pointMotion) {}

}  // namespace zel_cs::geomath
