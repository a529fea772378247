#include "geomath/geoid/reg_geoid_polinomial_singapore.h"

#include <array>
#include <cstring>

#include "geomath/geoid/grid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

using Block = std::array<float, 22>;

Block ReadBlock(const void* coefficients) {
  Block c;
  std::memcpy(c.data(), coefficients, sizeof c);
  return c;
}

}  // namespace

RegGeoidPolinomialSingapore::RegGeoidPolinomialSingapore(const RegionalGeoidData& data)
    : RegionalGeoid(data) {
  InitData(data_.data);
}

RegGeoidPolinomialSingapore::RegGeoidPolinomialSingapore(const TGridRgn& grid, int NX, int NY,
                                                         const void* data, double DISMOD,
                                                         const wchar_t* datumName,
                                                         const wchar_t* interpolationType)
    : RegionalGeoid(grid, NX, NY, data, DISMOD, datumName, interpolationType) {
  InitData(data_.data);
}

void RegGeoidPolinomialSingapore::InitData(const void* coefficients) {
  rowStride_ = kNoStride;
  if (!coefficients) return;
  const Block c = ReadBlock(coefficients);
  projection_.emplace(c[0], c[1], c[2], c[3], c[4], c[5], c[6]);
}

int RegGeoidPolinomialSingapore::INTRP3(const void* data, int, TGridRgn&, int, int, double* point,
                                        double& height) const {
  height = kNoHeight;
  if (!projection_ || !data) return 0;
  double x = point[0], y = point[1];
  if (!projection_->ForwardPoint(x, y)) return 0;
  const Block c = ReadBlock(data);
  if (!(x >= c[8] && x <= c[9] && y >= c[10] && y <= c[11])) return 0;
  const double u = (x - c[12]) / c[13], w = (y - c[14]) / c[15];
  const double w2 = w * w, w6 = w2 * w2 * w2;
  height = c[16] + c[17] * w + c[18] * u + c[19] * w2 + c[20] * (u * u) + c[21] * w6 * u;
  return 0;
}

}  // namespace zel_cs::geomath
