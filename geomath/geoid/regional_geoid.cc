#include "geomath/geoid/regional_geoid.h"

#include <cmath>
#include <cstdint>
#include <optional>

#include "geomath/base/angle.h"
#include "geomath/geoid/biquadratic.h"
#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInvalidHeight = 999.0;  // metres: no undulation on Earth comes near it
constexpr double kAngleUnits = 1e12;      // to a radian: the resolution of a query

/// Rounds down to a multiple of the resolution. Angles of ordinary size are cut and corrected, which
/// gives what floor gives without a call of it.
double CutAngle(double angle) {
  constexpr double kWholeFrom = 4503599627370496.0;  // 2^52: larger doubles are whole numbers
  const double units = angle * kAngleUnits;
  if (!(std::abs(units) < kWholeFrom)) return units / kAngleUnits;
  const double cut = static_cast<double>(static_cast<std::int64_t>(units));
  return (cut > units ? cut - 1 : cut) / kAngleUnits;
}

double DegreesWest(double longitude) {
  return (longitude >= kPi ? longitude - kTwoPi : longitude) * kDegPerRad;
}

/// The node nearest to `angle`, counted from 0 at `start`; none when the quotient is not finite or
/// far outside any grid. It is cut to an integer when counted from `first`, which tells where a
/// position before the grid is cut towards.
std::optional<NodeIndex> NearestNode(double angle, double start, double step, int first) {
  constexpr double kFar = 1e9;
  const double position = (angle - start) / step + (first + 0.5);
  if (!(std::abs(position) < kFar)) return std::nullopt;
  return static_cast<NodeIndex>(position) - first;
}

constexpr int kFirstRow = 2;
constexpr int kFirstColumn = 1;

}  // namespace

RegionalGeoid::RegionalGeoid(const RegionalGeoidData& data) : data_(data) {
  RegionalGeoid::InitData();
}

RegionalGeoid::RegionalGeoid(const TGridRgn& grid, int NX, int NY, const void* data, double DISMOD,
                             const wchar_t* datumName, const wchar_t* interpolationType)
    : RegionalGeoid(RegionalGeoidData(grid, NX, NY, data, DISMOD, datumName, interpolationType, 4,
                                      1.0, L"")) {}

void RegionalGeoid::InitData() {
  rowStride_ = RowStride(data_.rowPadding, data_.NX, sizeof(float));
}

TAbstractRect<double> RegionalGeoid::GetBounds() const {
  const TGridRgn& g = data_.grid;
  return {DegreesWest(g.L0), g.B0 * kDegPerRad, DegreesWest(g.L0 + g.dL),
          (g.B0 + g.dB) * kDegPerRad};
}

bool RegionalGeoid::GetSteps(double& latStep, double& lonStep) const {
  latStep = data_.grid.latStep;
  lonStep = data_.grid.lonStep;
  return true;
}

TRectRgn RegionalGeoid::GetRegion(bool cellEdges) const {
  const TGridRgn& g = data_.grid;
  if (!cellEdges) return g;
  return {g.B0 - g.latStep / 2, g.dB + g.latStep, g.L0 - g.lonStep / 2, g.dL + g.lonStep};
}

int RegionalGeoid::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX, double* point,
                          double& height) const {
  const GridNodes nodes(data, rowStride, NX, NY);
  const TGridRgn& grid = data_.grid;
  height = Biquadratic(grid, NY, NX, point, [&](NodeIndex row, NodeIndex j, double offset) {
    return ParabolaOfRow(grid.lonStep, offset, nodes, row, j);
  });
  return 0;
}

long RegionalGeoid::CountHeight(const TAbstractPoint3<double>* points, double* heights,
                                int count) const {
  try {
    return REG_MOD(points, count, heights);
  } catch (...) {  // only a host's own INTRP3 throws
    return kGeoidFailed;
  }
}

long RegionalGeoid::REG_MOD(const TAbstractPoint3<double>* points, int count,
                            double* heights) const {
  if (!data_.data) return kGeoidFailed;
  TGridRgn region(GetRegion(true), data_.grid.latStep, data_.grid.lonStep);
  int outside = 0, failure = 0;
  bool invalid = false;
  for (int k = 0; k < count; ++k) {
    double point[] = {CutAngle(points[k][0]), CutAngle(points[k][1]), points[k][2]};
    TAbstractPoint2<double> shift;
    if (region.Inside(point, shift)) {
      point[1] += shift[1];
      failure = INTRP3(data_.data, rowStride_, region, data_.NY, data_.NX, point, heights[k]);
      if (failure != 0) break;
    } else {
      ++outside;
      heights[k] = kNoHeight;
    }
    if (std::abs(heights[k]) >= kInvalidHeight) {
      heights[k] = kNoHeight;
      invalid = true;
    }
  }
  if (outside >= count) return kAllOutside;
  if (outside > 0 || invalid) return kSomeWithoutHeight;
  return failure != 0 ? kGeoidFailed : 0;
}

bool RegionalGeoid::CountHeightOnGrid(const TGridRgn& grid, double* heights, TSMatrix*) const {
  return REG_MODGrid(grid, heights) == 0;
}

// A NaN step would ask for interpolation node by node instead, of which there are then none.
int RegionalGeoid::REG_MODGrid(const TGridRgn& grid, double* heights) const {
  if (!data_.data) return static_cast<int>(kGeoidFailed);
  const TGridRgn& own = data_.grid;
  const auto firstRow = NearestNode(grid.B0, own.B0, own.latStep, kFirstRow);
  const auto lastRow = NearestNode(grid.B0 + grid.dB, own.B0, own.latStep, kFirstRow);
  const auto firstColumn = NearestNode(grid.L0, own.L0, own.lonStep, kFirstColumn);
  const auto lastColumn = NearestNode(grid.L0 + grid.dL, own.L0, own.lonStep, kFirstColumn);
  if (!firstRow || !lastRow || !firstColumn || !lastColumn) return 0;

  const GridNodes nodes(data_.data, rowStride_, data_.NX, data_.NY);
  for (NodeIndex row = *lastRow; row >= *firstRow; --row)
    for (NodeIndex column = *firstColumn; column <= *lastColumn; ++column)
      *heights++ = nodes.Read<float>(row, column).value_or(static_cast<float>(kNoHeight));
  return 0;
}

}  // namespace zel_cs::geomath
