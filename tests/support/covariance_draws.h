#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "geomath/chain/chain_uncertainty.h"

namespace zel_cs::geomath {

/// Draws of a random error; GEOMATH_DRAWS raises their number (scripts/monte_carlo.sh: a million).
inline std::size_t Draws() {
  const char* const text = std::getenv("GEOMATH_DRAWS");
  return text ? std::strtoul(text, nullptr, 10) : 20000;
}

/// Five standard errors of a drawn variance, of itself: 0.7 % with a million draws.
inline double DrawsTolerance() { return 5 * std::sqrt(2 / static_cast<double>(Draws())); }

/// C = F·Fᵀ, for errors of centimetres that are correlated.
inline constexpr double kErrorFactor[3][3] = {{0.02, 0, 0}, {0.005, 0.03, 0}, {-0.01, 0.01, 0.05}};

/// One way of a chain: points with errors around `at` through the batch, and the covariance of what
/// comes out beside the propagated one. Angles have the errors of `scale` times those metres. Returns
/// the largest difference, of the standard deviations.
inline double DrawnDifference(const CoordinateChain& chain, bool toLocal, const double (&at)[3],
                              double scale, CovarianceFrame from, CovarianceFrame to, double date) {
  const ChainUncertainty uncertainty(chain);
  const double unit[] = {scale, scale, 1};
  double wanted[3][3] = {}, centre[] = {at[0], at[1], at[2]};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      for (int k = 0; k < 3; ++k)
        wanted[r][c] += kErrorFactor[r][k] * kErrorFactor[c][k] * unit[r] * unit[c];
  const auto propagate = toLocal ? &ChainUncertainty::ToLocal : &ChainUncertainty::ToGlobal;
  if (!(uncertainty.*propagate)(centre[0], centre[1], centre[2], wanted, from, to, date))
    return NAN;

  constexpr std::size_t kTogether = 1000;
  std::mt19937_64 random(20261123);
  std::normal_distribution<double> normal;
  const auto convert =
      toLocal ? &CoordinateChain::ToLocalDatedBatch : &CoordinateChain::ToGlobalDatedBatch;
  std::vector<double> x(kTogether), y(kTogether), h(kTogether);
  double sum[3][3] = {}, mean[3] = {}, n = 0;
  while (n < static_cast<double>(Draws())) {
    for (std::size_t i = 0; i < kTogether; ++i) {
      const double z[] = {normal(random), normal(random), normal(random)};
      double* const point[] = {&x[i], &y[i], &h[i]};
      for (int r = 0; r < 3; ++r) {
        *point[r] = at[r];
        for (int k = 0; k < 3; ++k) *point[r] += kErrorFactor[r][k] * z[k] * unit[r];
      }
    }
    if ((chain.*convert)(PointDates(date), x.data(), y.data(), h.data(), kTogether, 1, nullptr) !=
        kTogether)
      return NAN;
    for (std::size_t i = 0; i < kTogether; ++i) {
      const double off[] = {x[i] - centre[0], y[i] - centre[1], h[i] - centre[2]};
      for (int r = 0; r < 3; ++r) {
        mean[r] += off[r];
        for (int c = 0; c < 3; ++c) sum[r][c] += off[r] * off[c];
      }
    }
    n += kTogether;
  }
  double worst = 0;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      const double drawn = (sum[r][c] - mean[r] * mean[c] / n) / (n - 1);
      const double size = std::sqrt(wanted[r][r] * wanted[c][c]);
      worst = std::max(worst, std::abs(drawn - wanted[r][c]) / size);
    }
  return worst;
}

/// Covariances of a chain equal draws around a global position, both ways.
inline void ExpectDrawsBothWays(const CoordinateChain& chain, const double (&global)[3],
                                const char* name, double date = kNoDate) {
  using enum CovarianceFrame;
  constexpr double kPerMetre = 1 / 6.4e6;  // radians
  const CovarianceFrame local = chain.GetProjection() ? northEastUp : geographic;
  double at[] = {global[0], global[1], global[2]};
  const double out = DrawnDifference(chain, true, at, kPerMetre, geographic, local, date);
  ASSERT_TRUE(chain.ToLocal(at[0], at[1], at[2], date)) << name;
  const double back = DrawnDifference(chain, false, at, chain.GetProjection() ? 1 : kPerMetre,
                                      local, geographic, date);
  EXPECT_LE(out, DrawsTolerance()) << name;
  EXPECT_LE(back, DrawsTolerance()) << name << ", back";
  if (std::getenv("GEOMATH_DRAWS"))
    std::printf("%-28s %6.2f %% %6.2f %%\n", name, 100 * out, 100 * back);
}

}  // namespace zel_cs::geomath
