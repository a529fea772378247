#include "geomath/local/grid_to_ground.h"

#include <cmath>

#include "geomath/base/batch.h"
#include "geomath/base/height_scale.h"
#include "geomath/local/identical_point.h"
#include "geomath/local/site_formulas.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNegligibleRotation = 1e-14;  // radians
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
  if (flags & kDeriveScale) return HeightScale(height) / gridScaleFactor;
  return scale;
}

GroundParameters GridToGround::Parameters(unsigned long present) const {
  return {.rotation = PlaneRotation(rotation),
          .originN = FNgrid(),
          .originE = FEgrid(),
          .offsetN = offsetN,
          .offsetE = offsetE,
          .k = EffectiveScale(),
          .hasN = (present & kHasNorth) != 0,
          .hasE = (present & kHasEast) != 0};
}

bool GridToGround::ToGround(double& N, double& E, double&, unsigned long* present) const {
  if (!Convertible(present, rotation)) return false;
  GridToGroundPlane{Parameters(*present)}.Convert<simd::Scalar>(N, E);
  return true;
}

bool GridToGround::ToGrid(double& N, double& E, double&, unsigned long* present) const {
  if (!Convertible(present, rotation)) return false;
  GroundToGridPlane{Parameters(*present)}.Convert<simd::Scalar>(N, E);
  return true;
}

std::size_t GridToGround::ToGroundBatch(double* N, double* E, std::size_t count,
                                        std::ptrdiff_t stride) const {
  return ConvertColumns(GridToGroundPlane{Parameters(kBoth)}, count, stride, N, E);
}

std::size_t GridToGround::ToGridBatch(double* N, double* E, std::size_t count,
                                      std::ptrdiff_t stride) const {
  return ConvertColumns(GroundToGridPlane{Parameters(kBoth)}, count, stride, N, E);
}

}  // namespace zel_cs::geomath
