#include "geomath/geoid/reg_geoid_intrp_spline_4x4_sw.h"

#include <algorithm>
#include <array>

#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/interpolants.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHighestNode = 500.0;  // metres: a node above it is a hole

/// What `index` of Init_Coeff says: the stencil's first node, which of its intervals the cell is,
/// and the layout of the data.
enum Index { kFirstRow, kFirstColumn, kRowPiece, kColumnPiece, kStride, kNX, kNY, kIndexCount };

}  // namespace

/// coeff[4·k + l] becomes the coefficient of u^k·v^l in the cell's polynomial. False at a hole.
bool RegGeoidIntrp_Spline4x4SW::Init_Coeff(double* coeff, const int* index, const void* data) {
  const GridNodes nodes(data, index[kStride], index[kNX], index[kNY]);
  std::array<std::array<double, 4>, 4> alongRows;  // of each row, the coefficients of v^l
  for (int r = 0; r < 4; ++r) {
    std::array<double, 4> z;
    for (int c = 0; c < 4; ++c) {
      const auto node = nodes.Read<float>(index[kFirstRow] + r, index[kFirstColumn] + c);
      if (!node || *node > kHighestNode) return false;
      z[static_cast<std::size_t>(c)] = *node;
    }
    alongRows[static_cast<std::size_t>(r)] =
        NaturalSplinePiece(z, static_cast<std::size_t>(index[kColumnPiece]));
  }
  for (std::size_t l = 0; l < 4; ++l) {
    const std::array<double, 4> column = {alongRows[0][l], alongRows[1][l], alongRows[2][l],
                                          alongRows[3][l]};
    const auto powers = NaturalSplinePiece(column, static_cast<std::size_t>(index[kRowPiece]));
    for (std::size_t k = 0; k < 4; ++k) coeff[4 * k + l] = powers[k];
  }
  return true;
}

int RegGeoidIntrp_Spline4x4SW::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                      double* point, double& height) const {
  const TGridRgn& grid = data_.grid;
  height = kNoHeight;
  const AxisCell row = CellOf((point[0] - grid.B0) / grid.latStep, NY);
  const AxisCell column = CellOf((point[1] - grid.L0) / grid.lonStep, NX);
  if (!row.inside || !column.inside || NX < 4 || NY < 4) return 0;

  const int i = static_cast<int>(row.first), j = static_cast<int>(column.first);
  int index[kIndexCount];
  index[kFirstRow] = std::clamp(i - 1, 0, NY - 4);
  index[kFirstColumn] = std::clamp(j - 1, 0, NX - 4);
  index[kRowPiece] = i - index[kFirstRow];
  index[kColumnPiece] = j - index[kFirstColumn];
  index[kStride] = rowStride;
  index[kNX] = NX;
  index[kNY] = NY;
  double a[16];
  if (!Init_Coeff(a, index, data)) return 0;

  const double u = row.fraction, v = column.fraction;
  const auto alongRow = [&a, v](int k) {
    const double* c = a + 4 * k;
    return ((c[3] * v + c[2]) * v + c[1]) * v + c[0];
  };
  height = ((alongRow(3) * u + alongRow(2)) * u + alongRow(1)) * u + alongRow(0);
  return 0;
}

}  // namespace zel_cs::geomath
