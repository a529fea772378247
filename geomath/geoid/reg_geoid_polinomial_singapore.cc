#include "geomath/geoid/reg_geoid_polinomial_singapore.h"

#include <array>
#include <cstring>
#include <typeinfo>

#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/grid_query.h"

namespace zel_cs::geomath {
namespace {

using Block = std::array<float, 22>;

Block ReadBlock(const void* coefficients) {
  Block c;
  std::memcpy(c.data(), coefficients, sizeof c);
  return c;
}

/// The polynomial at a northing and an easting; kNoHeight outside of its area.
double HeightAt(const Block& c, double x, double y) {
  const double u = (x - c[12]) / c[13], w = (y - c[14]) / c[15];
  const double w2 = w * w, w6 = w2 * w2 * w2;
  const double height =
      c[16] + c[17] * w + c[18] * u + c[19] * w2 + c[20] * (u * u) + c[21] * w6 * u;
  const bool inside = x >= c[8] && x <= c[9] && y >= c[10] && y <= c[11];
  return inside ? height : kNoHeight;
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
  height = HeightAt(ReadBlock(data), x, y);
  return 0;
}

bool RegGeoidPolinomialSingapore::RunColumns(GridQuery& query) const {
  if (typeid(*this) != typeid(RegGeoidPolinomialSingapore) || !projection_) return false;
  const Block c = ReadBlock(data_.data);
  TGridRgn region(data_.grid);
  RunBlocks(query, [&](std::size_t first, std::size_t n, const double* lat, const double* lon) {
    double x[kGridBlock], y[kGridBlock], heights[kGridBlock];
    LocateBlock(query.bounds, lat, lon, n, x, y);
    projection_->ForwardBatch(x, y, n);
    for (std::size_t i = 0; i < n; ++i) heights[i] = HeightAt(c, x[i], y[i]);
    return TakeHeights(query, first, n, heights, [&](double* point, double& height) {
      return INTRP3(data_.data, rowStride_, region, data_.NY, data_.NX, point, height);
    });
  });
  return true;
}

}  // namespace zel_cs::geomath
