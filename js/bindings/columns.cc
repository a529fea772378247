// Compiled with SIMD and without, as the kernels are.

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "js/bindings/object.h"

using namespace zel_cs::geomath;

namespace geomath_js {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void Take(double* column, std::size_t count, double factor, double limit) {
  for (std::size_t i = 0; i < count; ++i) {
    const double angle = column[i] * factor;
    column[i] = std::abs(angle) <= limit ? angle : kNaN;
  }
}

}  // namespace

void Multiply(const Block& block, std::size_t column, double factor) {
  double* values = block.columns[column];
  for (std::size_t i = 0; i < block.count; ++i) values[i] *= factor;
}

void TakeAngles(const Block& block, std::size_t column, geomath_files::AngleKind kind) {
  Take(block.columns[column], block.count, block.degrees ? kRadPerDeg : 1,
       geomath_files::LargestAngle(kind) * kRadPerDeg);
}

void TakeDegrees(const Block& block, std::size_t column, geomath_files::AngleKind kind) {
  Take(block.columns[column], block.count, block.degrees ? 1 : kDegPerRad,
       geomath_files::LargestAngle(kind));
}

void GiveAngles(const Block& block, std::size_t column) {
  if (block.degrees) Multiply(block, column, kDegPerRad);
}

void DropBeyondTheMap(const Block& block, std::size_t width) {
  const double limit =
      geomath_files::LargestAngle(geomath_files::AngleKind::longitude) * kRadPerDeg;
  auto& columns = block.columns;
  for (std::size_t i = 0; i < block.count; ++i) {
    if (!(std::abs(columns[0][i]) > limit || std::abs(columns[1][i]) > limit)) continue;
    for (std::size_t c = 0; c < width; ++c) columns[c][i] = kNaN;
    if (block.steps) block.steps[i] = 5;
  }
}

}  // namespace geomath_js
