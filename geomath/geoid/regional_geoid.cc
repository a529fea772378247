#include "geomath/geoid/regional_geoid.h"

#include <cmath>
#include <cstdint>
#include <optional>

#include "geomath/base/angle.h"
#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

// Fewer points than this are answered faster one by one than in columns.
constexpr std::size_t kWorthColumns = 8;

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

/// The grid's region and half a step more on every side.
TRectRgn WithCellEdges(const TGridRgn& g) {
  return {g.B0 - g.latStep / 2, g.dB + g.latStep, g.L0 - g.lonStep / 2, g.dL + g.lonStep};
}

constexpr int kFirstRow = 2;
constexpr int kFirstColumn = 1;

struct ColumnSpan {
  NodeIndex first, last;
};

/// The columns that a request asks for, a full turn away when it reaches the grid only there, tried in
/// the order of CountHeight. None when a position is not finite.
std::optional<ColumnSpan> ColumnsOf(const TGridRgn& request, const TGridRgn& own, int NX) {
  std::optional<ColumnSpan> asGiven;
  for (const double turn : {0.0, kTwoPi, -kTwoPi}) {
    const double west = request.L0 + turn;
    const auto first = NearestNode(west, own.L0, own.lonStep, kFirstColumn);
    const auto last = NearestNode(west + request.dL, own.L0, own.lonStep, kFirstColumn);
    if (!first || !last) continue;
    if (*first < NX && *last >= 0) return ColumnSpan{*first, *last};
    if (turn == 0) asGiven = {*first, *last};
  }
  return asGiven;
}

/// The column itself when it is among the nodes, else that a full turn away when it is, tried in the
/// order of CountHeight.
NodeIndex TurnedColumn(NodeIndex column, NodeIndex columns, double lonStep) {
  constexpr double kFar = 1e9;
  const double around = kTwoPi / lonStep;
  if ((column >= 0 && column < columns) || !(std::abs(around) < kFar)) return column;
  for (const double turn : {around, -around}) {
    const auto turned = static_cast<NodeIndex>(std::round(static_cast<double>(column) + turn));
    if (turned >= 0 && turned < columns) return turned;
  }
  return column;
}

using Ruled = RuledGeoid<Biquadratic>;

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
  if (!cellEdges) return data_.grid;
  return WithCellEdges(data_.grid);
}

int RegionalGeoid::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX, double* point,
                          double& height) const {
  height = Ruled(data_.grid, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegionalGeoid::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

long RegionalGeoid::CountHeight(const TAbstractPoint3<double>* points, double* heights,
                                int count) const {
  try {
    return REG_MOD(points, count, heights);
  } catch (...) {  // only a host's own INTRP3 throws
    return kGeoidFailed;
  }
}

bool RegionalGeoid::CountSlopes(const TAbstractPoint3<double>* points, double* heights,
                                double* perLatitude, double* perLongitude, int count) const {
  if (!data_.data || count <= 0) return false;
  const RectBounds bounds(WithCellEdges(data_.grid));
  GridQuery query{points, heights, static_cast<std::size_t>(count), bounds};
  query.slopes = {perLatitude, perLongitude};
  return RunColumns(query) && query.sloped && query.tally.invalid == 0;
}

long RegionalGeoid::REG_MOD(const TAbstractPoint3<double>* points, int count,
                            double* heights) const {
  if (!data_.data) return kGeoidFailed;
  const std::size_t total = count > 0 ? static_cast<std::size_t>(count) : 0;
  TGridRgn region(WithCellEdges(data_.grid), data_.grid.latStep, data_.grid.lonStep);
  GridQuery query{points, heights, total, RectBounds(region)};
  if (total < kWorthColumns || !RunColumns(query))
    RunPoints(query, 0, total, [&](double* point, double& height) {
      return INTRP3(data_.data, rowStride_, region, data_.NY, data_.NX, point, height);
    });
  if (query.tally.outside >= total) return kAllOutside;
  if (query.tally.invalid > 0) return kSomeWithoutHeight;
  return query.failure != 0 ? kGeoidFailed : 0;
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
  const auto columns = ColumnsOf(grid, own, data_.NX);
  if (!firstRow || !lastRow || !columns) return 0;

  const GridNodes nodes(data_.data, rowStride_, data_.NX, data_.NY);
  for (NodeIndex row = *lastRow; row >= *firstRow; --row)
    for (NodeIndex column = columns->first; column <= columns->last; ++column)
      *heights++ = nodes.Read<float>(row, TurnedColumn(column, data_.NX, own.lonStep))
                       .value_or(static_cast<float>(kNoHeight));
  return 0;
}

}  // namespace zel_cs::geomath
