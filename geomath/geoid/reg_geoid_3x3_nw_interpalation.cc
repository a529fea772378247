#include "geomath/geoid/reg_geoid_3x3_nw_interpalation.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr int kWordHole = 32766;     // a 16-bit node of this magnitude or more is a hole
constexpr double kIntHole = 9990.0;  // metres, a 32-bit node above it is a hole

/// The three stored values around `column`.
template <class Value>
std::array<Value, 3> Around(const unsigned char* row, int column) {
  std::array<Value, 3> values;
  std::memcpy(values.data(), row + std::ptrdiff_t{column - 1} * std::ptrdiff_t{sizeof(Value)},
              sizeof values);
  return values;
}

}  // namespace

RegGeoid3x3NWInterpalation::RegGeoid3x3NWInterpalation(const RegionalGeoidData& data)
    : RegionalGeoid(data) {
  RegGeoid3x3NWInterpalation::InitData();
}

RegGeoid3x3NWInterpalation::RegGeoid3x3NWInterpalation(const TGridRgn& grid, int NX, int NY,
                                                       const void* data, double DISMOD,
                                                       const wchar_t* datumName,
                                                       const wchar_t* interpolationType)
    : RegionalGeoid(grid, NX, NY, data, DISMOD, datumName, interpolationType) {
  RegGeoid3x3NWInterpalation::InitData();
}

void RegGeoid3x3NWInterpalation::InitData() {
  rowStride_ = RowStride(data_.rowPadding, data_.NX, data_.valueSize);
}

// Kept: the nodes are integers, whatever the name says.
bool RegGeoid3x3NWInterpalation::GetFromFloatArray(double step, double offset,
                                                   const unsigned char* row, int column,
                                                   double& value) const {
  const auto stored = Around<std::int32_t>(row, column);
  std::array<float, 3> z;
  for (std::size_t k = 0; k < 3; ++k) {
    const double metres = stored[k] / data_.scale;
    if (metres > kIntHole) return false;
    z[k] = static_cast<float>(metres);
  }
  value = ThreePoint(step, offset, z[0], z[1], z[2]);
  return true;
}

bool RegGeoid3x3NWInterpalation::GetFromWORDArray(double step, double offset,
                                                  const unsigned char* row, int column,
                                                  double& value) const {
  const auto stored = Around<std::int16_t>(row, column);
  for (const int node : stored)
    if (std::abs(node) >= kWordHole) return false;
  value = ThreePoint(step, offset, stored[0], stored[1], stored[2]) / data_.scale;
  return true;
}

int RegGeoid3x3NWInterpalation::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  height = kNoHeight;
  const int size = data_.valueSize;
  if (data_.scale == 0 || (size != 2 && size != 4)) return 0;

  const Biquadratic rule{{data_.grid, NY, NX}};
  const Stencil at = rule.Place(point[0], point[1]);
  const GridNodes nodes(data, rowStride, NX, NY, {.northFirst = true});
  const auto first = static_cast<NodeIndex>(at.row), column = static_cast<NodeIndex>(at.column);
  const int middle = static_cast<int>(column) + 1;
  float rows[3];
  for (int k = 0; k < 3; ++k) {
    const unsigned char* row = nodes.At(first + k, 0, size);
    if (!row || !nodes.At(first + k, column, size, 3)) return 0;
    double value;
    const bool found = size == 2 ? GetFromWORDArray(data_.grid.lonStep, at.v, row, middle, value)
                                 : GetFromFloatArray(data_.grid.lonStep, at.v, row, middle, value);
    if (!found || value == kNoHeight) return 0;
    rows[k] = static_cast<float>(value);
  }
  height = rule.AcrossRows(at, rows);
  return 0;
}

}  // namespace zel_cs::geomath
