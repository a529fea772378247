#include "geomath/geoid/ordinary_kriging.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "geomath/simd/elementary.h"
#include "geomath/simd/instruction_set.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

template <std::size_t N>
using Matrix = std::array<std::array<double, N>, N>;

/// The inverse by Gauss and Jordan's elimination with row pivots.
template <std::size_t N>
Matrix<N> Inverted(Matrix<N> a) {
  Matrix<N> inverse{};
  for (std::size_t k = 0; k < N; ++k) inverse[k][k] = 1;
  for (std::size_t k = 0; k < N; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < N; ++r)
      if (std::abs(a[r][k]) > std::abs(a[pivot][k])) pivot = r;
    std::swap(a[k], a[pivot]);
    std::swap(inverse[k], inverse[pivot]);
    const double scale = 1 / a[k][k];
    for (std::size_t c = 0; c < N; ++c) {
      a[k][c] *= scale;
      inverse[k][c] *= scale;
    }
    for (std::size_t r = 0; r < N; ++r) {
      if (r == k) continue;
      const double factor = a[r][k];
      for (std::size_t c = 0; c < N; ++c) {
        a[r][c] -= factor * a[k][c];
        inverse[r][c] -= factor * inverse[k][c];
      }
    }
  }
  return inverse;
}

double RowOf(std::size_t node) { return static_cast<double>(node / 4); }
double ColumnOf(std::size_t node) { return static_cast<double>(node % 4); }

// h^exponent of a distance's square, in the functions of columns: sixteen at a time beside each other.
double PowerOfDistance(double square, double exponent) {
  using Math = simd::Polynomial<simd::Baseline>;
  constexpr double kLeast = 1e-300;  // a node itself
  const double power = Math::Exp(0.5 * exponent * Math::Log(square));
  return square < kLeast ? 0.0 : power;
}

}  // namespace

double KrigingVariogram::At(double h) const { return slope * Pow(h, exponent); }

// Cressie 1993, eq. 3.2.12: the variogram between the nodes, bordered by ones.
OrdinaryKriging::OrdinaryKriging(double exponent) : unit_{1, exponent} {
  Matrix<kSize> kriging{};
  for (std::size_t p = 0; p < kNodes; ++p) {
    for (std::size_t q = 0; q < kNodes; ++q)
      kriging[p][q] = unit_.At(Hypot(RowOf(p) - RowOf(q), ColumnOf(p) - ColumnOf(q)));
    kriging[p][kNodes] = kriging[kNodes][p] = 1;
  }
  inverse_ = Inverted(kriging);
}

OrdinaryKriging::Estimate OrdinaryKriging::At(double x, double y) const {
  std::array<double, kSize> toNodes;
  for (std::size_t p = 0; p < kNodes; ++p) {
    const double north = x - RowOf(p), east = y - ColumnOf(p);
    toNodes[p] = PowerOfDistance(north * north + east * east, unit_.exponent);
  }
  toNodes[kNodes] = 1;

  Estimate estimate;
  double variance = 0;  // eq. 3.2.16
  for (std::size_t p = 0; p < kSize; ++p) {
    double value = 0;
    for (std::size_t q = 0; q < kSize; ++q) value += inverse_[p][q] * toNodes[q];
    if (p < kNodes) estimate.weights[p] = value;
    variance += value * toNodes[p];
  }
  estimate.unitVariance = std::max(variance, 0.0);  // rounding at a node
  return estimate;
}

}  // namespace zel_cs::geomath
