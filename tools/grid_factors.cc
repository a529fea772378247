#include "tools/grid_factors.h"

#include <algorithm>
#include <cmath>

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

// Radians. The truncation of a central difference, a sixth of its square, and the rounding of
// metres over it are alike here: 2e-11.
constexpr double kStep = 1e-5;

// Counts south and west by itself.
constexpr const char* kSouthWestProjection = "KROVAK";

}  // namespace

GridFactors::GridFactors(const CoordinateSystem& system)
    : toEllipsoid_(system.Chain().GetGlobalEllipsoid(), system.Chain().GetDatum(), nullptr),
      toPlane_(nullptr, nullptr, system.Projection()),
      ellipsoid_(system.LocalEllipsoid()),
      geographic_(system.Geographic()),
      grid_(system.Grid()) {
  const CoordinateChain& chain = system.Chain();
  const auto addShifts = [&](CoordinateChain& to, ShiftPlace place) {
    for (const ChainShift& step : chain.GetShifts(place)) to.AddShift(place, step);
  };
  addShifts(toEllipsoid_, ShiftPlace::beforeDatum);
  addShifts(toEllipsoid_, ShiftPlace::afterDatum);
  // From the ellipsoid of the projection on: positions only.
  addShifts(toPlane_, ShiftPlace::afterProjection);
  toPlane_.SetLocalization(chain.GetLocalization());
  toPlane_.SetGround(chain.GetGround());
  if (system.ProjectionName() == kSouthWestProjection)
    grid_.northSign = -grid_.northSign, grid_.eastSign = -grid_.eastSign;
}

void GridFactors::Beside(double dLatitude, double dLongitude, Plane& to) {
  const std::size_t count = b_.size();
  to.north.resize(count);
  to.east.resize(count);
  double* first = (geographic_.northFirst ? to.north : to.east).data();
  double* second = (geographic_.northFirst ? to.east : to.north).data();
  for (std::size_t i = 0; i < count; ++i) {
    to.north[i] = geographic_.northSign * (b_[i] + dLatitude);
    to.east[i] = geographic_.eastSign * (l_[i] + dLongitude);
  }
  scratch_ = h_;
  toPlane_.ToLocalBatch(first, second, scratch_.data(), count);
  if (grid_.northFirst != geographic_.northFirst) std::swap(to.north, to.east);
}

void GridFactors::Compute(const double* latitude, const double* longitude, const double* height,
                          std::size_t count) {
  b_.resize(count);
  l_.resize(count);
  h_.assign(height, height + count);
  for (std::size_t i = 0; i < count; ++i) {
    b_[i] = geographic_.northSign * latitude[i];
    l_[i] = geographic_.eastSign * longitude[i];
  }
  toEllipsoid_.ToLocalBatch(b_.data(), l_.data(), h_.data(), count);
  Plane north, south, east, west;
  Beside(kStep, 0, north);
  Beside(-kStep, 0, south);
  Beside(0, kStep, east);
  Beside(0, -kStep, west);

  for (std::vector<double>* factor : {&scale_, &convergence_, &combined_}) factor->resize(count);
  const double a = ellipsoid_.a, e2 = ellipsoid_.e2;
  for (std::size_t i = 0; i < count; ++i) {
    // Derivatives of the pair, counted north and east, by latitude and longitude.
    const double northPhi = grid_.northSign * (north.north[i] - south.north[i]) / (2 * kStep);
    const double eastPhi = grid_.eastSign * (north.east[i] - south.east[i]) / (2 * kStep);
    const double northLambda = grid_.northSign * (east.north[i] - west.north[i]) / (2 * kStep);
    const double eastLambda = grid_.eastSign * (east.east[i] - west.east[i]) / (2 * kStep);

    const double sinPhi = std::sin(b_[i]);
    const double w2 = 1 - e2 * sinPhi * sinPhi;
    const double N = a / std::sqrt(w2);  // radius in the prime vertical
    const double M = N * (1 - e2) / w2;  // and in the meridian
    const double areal = std::abs(northPhi * eastLambda - eastPhi * northLambda) / std::cos(b_[i]);
    scale_[i] = std::sqrt(areal / (M * N));
    combined_[i] = std::sqrt(areal / ((M + h_[i]) * (N + h_[i])));
    convergence_[i] = std::atan2(-eastPhi, northPhi);
  }
}

}  // namespace geomath_files::program
