#include "geomath/geoid/reg_geoid_kriging_intrp.h"

#include <algorithm>
#include <array>

#include "geomath/geoid/grid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr double kExponent = 1.5;

/// γ(1) of 4 × 4 nodes: half the mean square difference of neighbours along rows and columns.
double VariogramOfNeighbours(const std::array<double, OrdinaryKriging::kNodes>& z) {
  constexpr std::size_t kPairs = 24;
  double squares = 0;
  for (std::size_t line = 0; line < 4; ++line) {
    for (std::size_t k = 0; k < 3; ++k) {
      const double alongRow = z[4 * line + k + 1] - z[4 * line + k];
      const double alongColumn = z[4 * (k + 1) + line] - z[4 * k + line];
      squares += alongRow * alongRow + alongColumn * alongColumn;
    }
  }
  return squares / (2 * kPairs);
}

}  // namespace

/// The nodes that a point is estimated from, and its position among them in steps.
struct RegGeoidKrigingIntrp::NodesAround {
  std::array<double, OrdinaryKriging::kNodes> z;
  double x, y;
};

RegGeoidKrigingIntrp::RegGeoidKrigingIntrp(const RegionalGeoidData& data)
    : RegionalGeoid(data), kriging_(std::make_unique<OrdinaryKriging>(kExponent)) {}

RegGeoidKrigingIntrp::RegGeoidKrigingIntrp(const TGridRgn& grid, int NX, int NY, const void* data,
                                           double DISMOD, const wchar_t* datumName,
                                           const wchar_t* interpolationType)
    : RegGeoidKrigingIntrp(RegionalGeoidData(grid, NX, NY, data, DISMOD, datumName,
                                             interpolationType, 4, 1.0, L"")) {}

RegGeoidKrigingIntrp::RegGeoidKrigingIntrp(const RegGeoidKrigingIntrp& other)
    : RegionalGeoid(other), kriging_(std::make_unique<OrdinaryKriging>(*other.kriging_)) {}

// The kriging object is the same for every grid.
RegGeoidKrigingIntrp& RegGeoidKrigingIntrp::operator=(const RegGeoidKrigingIntrp& other) {
  RegionalGeoid::operator=(other);
  return *this;
}

RegGeoidKrigingIntrp::~RegGeoidKrigingIntrp() = default;

bool RegGeoidKrigingIntrp::FindNodes(double lat, double lon, const void* data, int rowStride,
                                     int NY, int NX, NodesAround& around) const {
  const TGridRgn& grid = data_.grid;
  const double x = (lat - grid.B0) / grid.latStep, y = (lon - grid.L0) / grid.lonStep;
  const AxisCell row = CellOf(x, NY), column = CellOf(y, NX);
  if (!row.inside || !column.inside || NX < 4 || NY < 4) return false;
  const NodeIndex i = static_cast<NodeIndex>(row.first), j = static_cast<NodeIndex>(column.first);
  const NodeIndex firstRow = std::clamp(i - 1, NodeIndex{0}, NodeIndex{NY} - 4);
  const NodeIndex firstColumn = std::clamp(j - 1, NodeIndex{0}, NodeIndex{NX} - 4);
  const GridNodes nodes(data, rowStride, NX, NY);
  for (std::size_t p = 0; p < OrdinaryKriging::kNodes; ++p) {
    const auto node = nodes.Read<float>(firstRow + static_cast<NodeIndex>(p / 4),
                                        firstColumn + static_cast<NodeIndex>(p % 4));
    if (!node || *node == static_cast<float>(kNoHeight)) return false;
    around.z[p] = *node;
  }
  around.x = x - static_cast<double>(firstRow);
  around.y = y - static_cast<double>(firstColumn);
  return true;
}

int RegGeoidKrigingIntrp::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                 double* point, double& height) const {
  height = kNoHeight;
  NodesAround around;
  if (!FindNodes(point[0], point[1], data, rowStride, NY, NX, around)) return 0;
  const auto estimate = kriging_->At(around.x, around.y);
  height = 0;
  for (std::size_t p = 0; p < OrdinaryKriging::kNodes; ++p)
    height += estimate.weights[p] * around.z[p];
  return 0;
}

bool RegGeoidKrigingIntrp::Variogram(double lat, double lon, KrigingVariogram& variogram) const {
  NodesAround around;
  if (!FindNodes(lat, lon, data_.data, rowStride_, data_.NY, data_.NX, around)) return false;
  variogram = {VariogramOfNeighbours(around.z), kExponent};
  return true;
}

bool RegGeoidKrigingIntrp::EstimationVariance(double lat, double lon, double& variance) const {
  NodesAround around;
  if (!FindNodes(lat, lon, data_.data, rowStride_, data_.NY, data_.NX, around)) return false;
  variance = VariogramOfNeighbours(around.z) * kriging_->At(around.x, around.y).unitVariance;
  return true;
}

}  // namespace zel_cs::geomath
