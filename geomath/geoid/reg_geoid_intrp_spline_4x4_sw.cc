#include "geomath/geoid/reg_geoid_intrp_spline_4x4_sw.h"

#include <algorithm>

#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/ruled_geoid.h"
#include "geomath/geoid/grid/spline.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<Spline4x4>;

/// What `index` of Init_Coeff says: the stencil's first node, which of its intervals the cell is,
/// and the layout of the data.
enum Index { kFirstRow, kFirstColumn, kRowPiece, kColumnPiece, kStride, kNX, kNY, kIndexCount };

}  // namespace

/// coeff[4·k + l] becomes the coefficient of u^k·v^l in the cell's polynomial. False at a hole.
bool RegGeoidIntrp_Spline4x4SW::Init_Coeff(double* coeff, const int* index, const void* data) {
  const GridNodes nodes(data, index[kStride], index[kNX], index[kNY]);
  float z[4][4];
  for (int r = 0; r < 4; ++r) {
    float(&row)[4] = z[r];
    if (!nodes.Read(index[kFirstRow] + r, index[kFirstColumn], row)) return false;
    if (std::any_of(row, row + 4, [](float node) { return node > Spline4x4::kHighestNode; }))
      return false;
  }
  const Bicubic bicubic = SplineOnCell(z, index[kRowPiece], index[kColumnPiece]);
  std::copy(bicubic.begin(), bicubic.end(), coeff);
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
  Bicubic a;
  if (Init_Coeff(a.data(), index, data)) height = Evaluate(a, row.fraction, column.fraction);
  return 0;
}

bool RegGeoidIntrp_Spline4x4SW::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
