#include "geomath/design/ground_points.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/batch.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

void GroundPoints::Add(double latitude, double longitude, double height, double w) {
  const double sinB = Sin(latitude), W2 = 1 - ellipsoid.e2 * sinB * sinB;
  const double rho = ellipsoid.a * (1 - ellipsoid.e2) / (W2 * std::sqrt(W2));
  const double radius = ellipsoid.GetGaussianRadius(latitude);
  b.push_back(latitude);
  l.push_back(longitude);
  h.push_back(height);
  weight.push_back(w);
  unit.push_back(radius / (radius + height) / rho);
}

GroundPoints GroundPoints::Subset(std::span<const std::size_t> indices) const {
  GroundPoints some(ellipsoid);
  for (const std::size_t i : indices) some.Add(b[i], l[i], h[i], weight[i]);
  return some;
}

GroundPoints GroundPoints::Thinned(std::size_t count) const {
  if (Size() <= count) return *this;
  // Steps of the golden section never fall in with the rows of a raster.
  constexpr double kGolden = 0.618033988749894848;
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < count; ++i) {
    const double turns = static_cast<double>(i) * kGolden;
    indices.push_back(
        static_cast<std::size_t>((turns - std::floor(turns)) * static_cast<double>(Size())));
  }
  std::sort(indices.begin(), indices.end());
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  return Subset(indices);
}

GroundPoints GroundPoints::Extremes(std::size_t cells) const {
  if (Size() <= cells * cells) return *this;
  const auto [south, north] = std::minmax_element(b.begin(), b.end());
  const auto [west, east] = std::minmax_element(l.begin(), l.end());
  const auto cellOf = [cells](double x, double low, double high) {
    const double share = high > low ? (x - low) / (high - low) : 0;
    return std::min(static_cast<std::size_t>(share * static_cast<double>(cells)), cells - 1);
  };
  // In each cell the least and the greatest of each of these.
  const std::vector<double>* const columns[] = {&h, &b, &l};
  constexpr std::size_t kKept = 6;
  std::vector<std::size_t> kept(cells * cells * kKept, Size());
  for (std::size_t i = 0; i < Size(); ++i) {
    std::size_t at = (cellOf(b[i], *south, *north) * cells + cellOf(l[i], *west, *east)) * kKept;
    for (const std::vector<double>* column : columns) {
      const std::vector<double>& x = *column;
      if (kept[at] == Size() || x[i] < x[kept[at]]) kept[at] = i;
      if (kept[at + 1] == Size() || x[i] > x[kept[at + 1]]) kept[at + 1] = i;
      at += 2;
    }
  }
  std::sort(kept.begin(), kept.end());
  kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
  if (kept.back() == Size()) kept.pop_back();
  return Subset(kept);
}

bool GroundPoints::Factors(const TGeoProj& projection, std::vector<double>& m) const {
  m.resize(Size());
  std::size_t found = 0;
  for (std::size_t start = 0; start < Size(); start += kBatchBlock) {
    const std::size_t count = std::min(kBatchBlock, Size() - start);
    double northB[kBatchBlock], eastB[kBatchBlock], northL[kBatchBlock], eastL[kBatchBlock];
    std::copy_n(b.data() + start, count, northB);
    std::copy_n(l.data() + start, count, eastB);
    found += projection.ForwardDerivativesBatch(northB, eastB, northL, eastL, count);
    for (std::size_t i = 0; i < count; ++i)
      m[start + i] = unit[start + i] * std::sqrt(northB[i] * northB[i] + eastB[i] * eastB[i]);
  }
  return found == Size();
}

GroundFrame::GroundFrame(const GroundPoints& points) {
  const auto [south, north] = std::minmax_element(points.b.begin(), points.b.end());
  const auto [west, east] = std::minmax_element(points.l.begin(), points.l.end());
  const auto [low, high] = std::minmax_element(points.h.begin(), points.h.end());
  b0_ = (*south + *north) / 2;
  l0_ = (*west + *east) / 2;
  const double sinB = Sin(b0_), W2 = 1 - points.ellipsoid.e2 * sinB * sinB;
  const double nu = points.ellipsoid.a / std::sqrt(W2);
  perLat_ = nu * (1 - points.ellipsoid.e2) / W2;
  perLon_ = nu * Cos(b0_);
  diagonal_ = Hypot(North(*north) - North(*south), East(*east) - East(*west));
  relief_ = *high - *low;
}

}  // namespace zel_cs::geomath
