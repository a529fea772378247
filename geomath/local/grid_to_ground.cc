#include "geomath/local/grid_to_ground.h"

#include <cmath>

#include "geomath/base/batch.h"
#include "geomath/local/identical_point.h"
#include "geomath/local/plane_rotation.h"

namespace zel_cs::geomath {
namespace {

constexpr double kMeanEarthRadius = 6371000.0;  // metres, sphere of the height scale
constexpr double kNegligibleRotation = 1e-14;   // radians
constexpr std::uint32_t kTrivialFlags = 1;
constexpr unsigned long kBoth = kHasNorth | kHasEast;

bool Convertible(const unsigned long* present, double rotation) {
  if (!present) return false;
  return (*present & kBoth) == kBoth || std::abs(rotation) <= kNegligibleRotation;
}

}  // namespace

void GridToGround::SetTrivial() {
  *this = GridToGround();
  flags = kTrivialFlags;
}

double GridToGround::FNgrid() const { return (flags & kHasOrigin) ? originN : 0.0; }
double GridToGround::FEgrid() const { return (flags & kHasOrigin) ? originE : 0.0; }

void GridToGround::SetEnabled(bool on) { flags = on ? flags & ~kDisabled : flags | kDisabled; }

double GridToGround::EffectiveScale() const {
  if (flags & kDeriveScale) return (height / kMeanEarthRadius + 1.0) / gridScaleFactor;
  return scale;
}

bool GridToGround::ToGround(double& N, double& E, double&, unsigned long* present) const {
  if (!Convertible(present, rotation)) return false;
  const bool hasN = *present & kHasNorth, hasE = *present & kHasEast;
  const double k = EffectiveScale();
  const auto [n, e] =
      PlaneRotation(rotation).Turn(hasN ? N - FNgrid() : N, hasE ? E - FEgrid() : E);
  if (hasN) N = FNgrid() + n * k + offsetN;
  if (hasE) E = FEgrid() + e * k + offsetE;
  return true;
}

bool GridToGround::ToGrid(double& N, double& E, double&, unsigned long* present) const {
  if (!Convertible(present, rotation)) return false;
  const bool hasN = *present & kHasNorth, hasE = *present & kHasEast;
  const double k = EffectiveScale();
  const auto [n, e] = PlaneRotation(rotation).TurnBack(hasN ? N - offsetN - FNgrid() : N,
                                                       hasE ? E - offsetE - FEgrid() : E);
  if (hasN) N = FNgrid() + n / k;
  if (hasE) E = FEgrid() + e / k;
  return true;
}

std::size_t GridToGround::ToGroundBatch(double* N, double* E, std::size_t count,
                                        std::ptrdiff_t stride) const {
  unsigned long present = kBoth;
  double ignored = 0;
  const auto convert = [&](double& n, double& e) { return ToGround(n, e, ignored, &present); };
  return ConvertEach(convert, count, stride, N, E);
}

std::size_t GridToGround::ToGridBatch(double* N, double* E, std::size_t count,
                                      std::ptrdiff_t stride) const {
  unsigned long present = kBoth;
  double ignored = 0;
  const auto convert = [&](double& n, double& e) { return ToGrid(n, e, ignored, &present); };
  return ConvertEach(convert, count, stride, N, E);
}

}  // namespace zel_cs::geomath
