#include "geomath/geoid/reg_geoid_kriging_intrp.h"

#include <array>

#include "geomath/geoid/grid/kriging.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<Kriging>;

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
    : RegionalGeoid(data),
      kriging_(std::make_unique<OrdinaryKriging>(Kriging::kExponent)),
      mirrored_(std::make_unique<MirroredKriging>(*kriging_)) {}

RegGeoidKrigingIntrp::RegGeoidKrigingIntrp(const TGridRgn& grid, int NX, int NY, const void* data,
                                           double DISMOD, const wchar_t* datumName,
                                           const wchar_t* interpolationType)
    : RegGeoidKrigingIntrp(RegionalGeoidData(grid, NX, NY, data, DISMOD, datumName,
                                             interpolationType, 4, 1.0, L"")) {}

RegGeoidKrigingIntrp::RegGeoidKrigingIntrp(const RegGeoidKrigingIntrp& other)
    : RegionalGeoid(other),
      kriging_(std::make_unique<OrdinaryKriging>(*other.kriging_)),
      mirrored_(std::make_unique<MirroredKriging>(*other.mirrored_)) {}

// The kriging objects are the same for every grid.
RegGeoidKrigingIntrp& RegGeoidKrigingIntrp::operator=(const RegGeoidKrigingIntrp& other) {
  RegionalGeoid::operator=(other);
  return *this;
}

RegGeoidKrigingIntrp::~RegGeoidKrigingIntrp() = default;

bool RegGeoidKrigingIntrp::FindNodes(double lat, double lon, NodesAround& around) const {
  const Stencil at = PlaceInwards({data_.grid, data_.NY, data_.NX}, lat, lon);
  const GridNodes nodes(data_.data, rowStride_, data_.NX, data_.NY);
  if (!at.inside || !nodes.HoldStencils<float, 4>()) return false;
  float z[4][4];
  nodes.ReadStencil(at.row, at.column, z);
  for (std::size_t p = 0; p < OrdinaryKriging::kNodes; ++p) {
    if (z[p / 4][p % 4] == static_cast<float>(kNoHeight)) return false;
    around.z[p] = z[p / 4][p % 4];
  }
  around.x = at.u;
  around.y = at.v;
  return true;
}

int RegGeoidKrigingIntrp::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                 double* point, double& height) const {
  const Kriging rule{{data_.grid, NY, NX}, *mirrored_};
  height = Ruled(rule, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegGeoidKrigingIntrp::RunColumns(GridQuery& query) const {
  const Kriging rule{{data_.grid, data_.NY, data_.NX}, *mirrored_};
  return Ruled(rule, data_.data, rowStride_, data_.NY, data_.NX).Run(*this, query);
}

bool RegGeoidKrigingIntrp::Variogram(double lat, double lon, KrigingVariogram& variogram) const {
  NodesAround around;
  if (!FindNodes(lat, lon, around)) return false;
  variogram = {VariogramOfNeighbours(around.z), Kriging::kExponent};
  return true;
}

bool RegGeoidKrigingIntrp::EstimationVariance(double lat, double lon, double& variance) const {
  NodesAround around;
  if (!FindNodes(lat, lon, around)) return false;
  variance = VariogramOfNeighbours(around.z) * kriging_->At(around.x, around.y).unitVariance;
  return true;
}

}  // namespace zel_cs::geomath
