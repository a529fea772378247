#include "geomath/geoid/reg_geoid_interpalation_gg2008_sw.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "geomath/base/angle.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/interpolants.h"
#include "geomath/geoid/grid/ruled_geoid.h"
#include "geomath/geoid/grid/spline.h"

namespace zel_cs::geomath {
namespace {

using SplineRow = std::array<float, kSplineNodes>;

constexpr NodeIndex kBefore = 2;  // stencil nodes before the one south or west of the point

/// Whether the grid reaches around the Earth and from pole to pole, to within a step.
bool IsGlobal(const TGridRgn& grid) {
  return grid.lonStep > std::abs(grid.dL - kTwoPi) && grid.latStep > std::abs(grid.dB - kPi);
}

/// The spline through `values` at `position`, counted in steps from the first of them.
float SplineAt(const SplineRow& values, double position) {
  const double node = std::clamp(std::floor(position), 0.0, double{kSplineNodes - 2});
  return NaturalSpline6(values, static_cast<std::size_t>(node),
                        static_cast<float>(position - node));
}

double DegreesBelow(double longitude, double limit) {
  return (longitude >= limit ? longitude - kTwoPi : longitude) * kDegPerRad;
}

/// The stored column of column c. Columns wrap; a row beyond a pole is read backwards (Kept: about
/// the western edge, not shifted by half a turn).
NodeIndex StoredColumn(NodeIndex c, NodeIndex NX, bool mirrored) {
  if (c < 0)
    c += NX;
  else if (c >= NX)
    c -= NX;
  return mirrored && c != 0 ? NX - c : c;
}

}  // namespace

/// What INTRP3 was given to read from.
struct RegGeoidInterpalation_GG2008SW::Source {
  const void* data;
  int rowStride, NY, NX;
  TGridRgn& region;
};

RegGeoidInterpalation_GG2008SW::RegGeoidInterpalation_GG2008SW(const RegionalGeoidData& data)
    : RegionalGeoid(data), global_(IsGlobal(data_.grid)) {}

RegGeoidInterpalation_GG2008SW::RegGeoidInterpalation_GG2008SW(const TGridRgn& grid, int NX, int NY,
                                                               const void* data, double DISMOD,
                                                               const wchar_t* datumName,
                                                               const wchar_t* interpolationType)
    : RegionalGeoid(grid, NX, NY, data, DISMOD, datumName, interpolationType),
      global_(IsGlobal(data_.grid)) {}

TAbstractRect<double> RegGeoidInterpalation_GG2008SW::GetBounds() const {
  TAbstractRect<double> bounds = RegionalGeoid::GetBounds();
  bounds.west = DegreesBelow(data_.grid.L0, kTwoPi);
  bounds.east = DegreesBelow(data_.grid.L0 + data_.grid.dL, 2 * kTwoPi);
  return bounds;
}

int RegGeoidInterpalation_GG2008SW::INTRP3(const void* data, int rowStride, TGridRgn& region,
                                           int NY, int NX, double* point, double& height) const {
  height = kNoHeight;
  const Source source{data, rowStride, NY, NX, region};
  return BILIN_INTRP(kSplineNodes, point[0], point[1], source, height) ? 0 : 1;
}

bool RegGeoidInterpalation_GG2008SW::RunColumns(GridQuery& query) const {
  const Spline6x6 rule{{data_.grid, data_.NY, data_.NX}, global_ ? 2.0 : 3.0};
  const RuledGeoid<Spline6x6, RowLayout{.packed = true}> ruled(rule, data_.data, rowStride_,
                                                               data_.NY, data_.NX);
  TGridRgn region(data_.grid);
  return ruled.Run(*this, query, [&](double* point, double& height) {
    return INTRP3(data_.data, rowStride_, region, data_.NY, data_.NX, point, height);
  });
}

// Kept: the name, although the scheme is a spline.
bool RegGeoidInterpalation_GG2008SW::BILIN_INTRP(int window, double lat, double lon,
                                                 const Source& source, double& height) const {
  const TGridRgn& grid = data_.grid;
  const NodeIndex NX = source.NX, NY = source.NY, half = window / 2;
  const double x = (lat - grid.B0) / grid.latStep, y = (lon - grid.L0) / grid.lonStep;
  NodeIndex i = FloorIndex(x), j = FloorIndex(y);
  if (i == NY - 1) --i;
  if (j == NX - 1) --j;
  if (!global_ && (i < half || i > NY - half - 1 || j < half || j > NX - half - 1)) {
    double point[] = {lat, lon, 0};
    return RegionalGeoid::INTRP3(source.data, source.rowStride, source.region, source.NY, source.NX,
                                 point, height) == 0;
  }
  if (i < 0 || i >= NY + window || j < 0 || j >= NX + window) return false;

  const GridNodes nodes(source.data, source.rowStride, source.NX, source.NY, {.packed = true});
  SplineRow acrossRows;
  for (std::size_t r = 0; r < kSplineNodes; ++r) {
    NodeIndex row = i - kBefore + static_cast<NodeIndex>(r);
    const bool mirrored = row < 0 || row >= NY;
    if (mirrored) row = row < 0 ? -row : 2 * NY - row - 1;
    SplineRow values;
    for (std::size_t c = 0; c < kSplineNodes; ++c) {
      const NodeIndex column = j - kBefore + static_cast<NodeIndex>(c);
      const auto node = nodes.Read<float>(row, StoredColumn(column, NX, mirrored));
      if (!node) return true;  // a hole: the height stays kNoHeight
      values[c] = *node;
    }
    acrossRows[r] = SplineAt(values, y - static_cast<double>(j - kBefore));
  }
  height = SplineAt(acrossRows, x - static_cast<double>(i - kBefore));
  return true;
}

}  // namespace zel_cs::geomath
