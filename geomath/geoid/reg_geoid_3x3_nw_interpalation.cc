#include "geomath/geoid/reg_geoid_3x3_nw_interpalation.h"

#include <cstdint>
#include <cstring>

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

/// The parabola along the three stored values around `column`. False at a hole.
template <class Value>
bool AlongRowAround(const unsigned char* row, int column, double step, double offset, double scale,
                    double& value) {
  Value stored[3];
  std::memcpy(stored, row + std::ptrdiff_t{column - 1} * std::ptrdiff_t{sizeof(Value)},
              sizeof stored);
  bool hole = false;
  value = AlongRow(stored, step, offset, scale, hole);
  return !hole;
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
  return AlongRowAround<std::int32_t>(row, column, step, offset, data_.scale, value);
}

bool RegGeoid3x3NWInterpalation::GetFromWORDArray(double step, double offset,
                                                  const unsigned char* row, int column,
                                                  double& value) const {
  return AlongRowAround<std::int16_t>(row, column, step, offset, data_.scale, value);
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

bool RegGeoid3x3NWInterpalation::RunColumns(GridQuery& query) const {
  const auto run = [&]<class Value>(Value) {
    using Rule = BiquadraticOfIntegers<Value>;
    const Rule rule{{data_.grid, data_.NY, data_.NX}, data_.scale};
    return RuledGeoid<Rule, RowLayout{.northFirst = true}>(rule, data_.data, rowStride_, data_.NY,
                                                           data_.NX)
        .Run(*this, query);
  };
  if (data_.scale == 0) return false;
  if (data_.valueSize == 2) return run(std::int16_t{});
  return data_.valueSize == 4 && run(std::int32_t{});
}

}  // namespace zel_cs::geomath
