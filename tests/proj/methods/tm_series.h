#pragma once

#include <gtest/gtest.h>

#include <span>

#include "geomath/base/angle.h"
#include "geomath/proj/point_factors.h"
#include "tests/proj/methods/exact_tm_rows.h"

namespace zel_cs::geomath {

/// A point of a transverse Mercator class beside its own series in many digits. Degrees, metres, and
/// the factors, which are 1 and 0 of a class that computes none; the inverse from the rounded grid
/// position, to radians.
template <class Proj>
struct TmSeriesRow {
  const Proj& proj;
  struct {
    double phiDeg, lambdaDeg, north, east, scale = 1, convergence = 0;
  } forward;
  struct {
    double north, east, phi, lambda, scale = 1, convergence = 0;
  } inverse;
};

/// Grids for them.
template <class Proj>
const Proj kTmAiry(6377563.396, 299.3249646, -2 * kRadPerDeg, 0.9996012717, 49 * kRadPerDeg, 400000,
                   -100000);
template <class Proj>
const Proj kTmHayford(6378388, 297, -81 * kRadPerDeg, 0.9999, 24.25 * kRadPerDeg, 200000, 0);
template <class Proj>
const Proj kTmSouth(6378137, 298.257223563, 153 * kRadPerDeg, 0.9996, 0, 500000, 10000000);

template <class Proj>
void ExpectTmSeries(std::span<const TmSeriesRow<Proj>> rows) {
  constexpr double kMetres = 4e-9;    // two units in the last place of 1e7; worst 1.9e-9
  constexpr double kRadians = 1e-15;  // 6 nm on the ground; worst 4.4e-16
  constexpr double kFactor = 1e-15;   // scale and convergence
  for (const auto& [proj, forward, inverse] : rows) {
    SCOPED_TRACE(testing::Message() << forward.phiDeg << ' ' << forward.lambdaDeg);
    PointFactors there, back;
    double n = forward.phiDeg * kRadPerDeg, e = forward.lambdaDeg * kRadPerDeg;
    EXPECT_TRUE(proj.ForwardPoint(n, e, &there));
    EXPECT_NEAR(n, forward.north, kMetres);
    EXPECT_NEAR(e, forward.east, kMetres);
    EXPECT_NEAR(there.scale, forward.scale, kFactor);
    EXPECT_NEAR(there.convergence, forward.convergence, kFactor);

    double b = inverse.north, l = inverse.east;
    EXPECT_TRUE(proj.InversePoint(b, l, &back));
    EXPECT_NEAR(b, inverse.phi, kRadians);
    EXPECT_NEAR(l, inverse.lambda, kRadians);
    EXPECT_NEAR(back.scale, inverse.scale, kFactor);
    EXPECT_NEAR(back.convergence, inverse.convergence, kFactor);
  }
}

/// The truncation is no larger than stated, and no class has a longer series than it describes.
template <class Proj>
void ExpectTruncation(const Proj& proj, std::span<const Truncation> stated) {
  for (const Truncation& limit : stated) {
    const Truncation worst = WorstTruncation(proj, limit.lambdaDeg);
    EXPECT_LT(worst.forward, limit.forward);
    EXPECT_LT(worst.inverse, limit.inverse);
    EXPECT_GT(worst.forward, limit.forward / 10);
  }
}

}  // namespace zel_cs::geomath
