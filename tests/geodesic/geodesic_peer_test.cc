// Geodesics beside GeographicLib as an independent implementation. GEOMATH_GEODESIC_PAIRS says how
// many pairs of each of the six kinds are solved: scripts/geodesics.sh takes a million in all.
#include <gtest/gtest.h>

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/PolygonArea.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/geodesic/geodesic.h"

namespace {

using namespace zel_cs::geomath;

constexpr double kA = 6378137;
constexpr double kMetres = 15e-9;  // the promise of both
constexpr double kArea = 0.1;      // square metres, on polygons of a thousand kilometres

struct Pair {
  double b1, l1, b2, l2;
};

// Random points, and close to everything that is special.
std::vector<Pair> Pairs(std::size_t each) {
  std::mt19937_64 random(4448);
  std::uniform_real_distribution<double> unit(-1, 1);
  const auto latitude = [&] { return std::asin(unit(random)); };
  const auto small = [&] { return unit(random) * std::pow(10.0, -9 + 8 * std::abs(unit(random))); };
  std::vector<Pair> pairs;
  for (std::size_t i = 0; i < each; ++i) {
    const double b = latitude(), l = kPi * unit(random);
    const double opposite = l > 0 ? l - kPi : l + kPi;
    pairs.push_back({b, l, latitude(), kPi * unit(random)});
    pairs.push_back({b, l, std::clamp(-b + small(), -kHalfPi, kHalfPi), opposite + small()});
    pairs.push_back({b, l, std::clamp(b + small(), -kHalfPi, kHalfPi), l + small()});
    pairs.push_back({0, l, i % 2 ? 0 : 1e-10 * small(), kPi * unit(random)});
    pairs.push_back({b, l, latitude(), i % 2 ? l : opposite});
    pairs.push_back({i % 2 ? kHalfPi : -kHalfPi, l, latitude(), kPi * unit(random)});
  }
  return pairs;
}

double Degrees(double radians) {
  return static_cast<double>(radians * (180 / 3.141592653589793238L));
}

TEST(GeodesicPeer, DistancesAndEndsAgree) {
  const char* each = std::getenv("GEOMATH_GEODESIC_PAIRS");
  const std::vector<Pair> pairs = Pairs(each ? std::strtoul(each, nullptr, 10) : 2000);
  for (const double invF : {298.257223563, -298.257223563, 1e300, 151.0, -151.0}) {
    const Geodesic ours(MakeEllipsoid(kA, invF));
    const GeographicLib::Geodesic peer(kA, 1 / invF);
    double worstDistance = 0, worstEnd = 0;
    for (const Pair& p : pairs) {
      const GeodesicMeasure line = ours.Inverse(p.b1, p.l1, p.b2, p.l2);
      double distance, azimuth, onward, lat, lon;
      peer.Inverse(Degrees(p.b1), Degrees(p.l1), Degrees(p.b2), Degrees(p.l2), distance, azimuth,
                   onward);
      worstDistance = std::max(worstDistance, std::abs(line.distance - distance));
      // An azimuth is right when the peer arrives by it: between antipodes there are several.
      peer.Direct(Degrees(p.b1), Degrees(p.l1), Degrees(line.azimuth), line.distance, lat, lon);
      const double away =
          kA * std::hypot(lat * kRadPerDeg - p.b2,
                          std::remainder(lon * kRadPerDeg - p.l2, kTwoPi) * std::cos(p.b2));
      worstEnd = std::max(worstEnd, away);
    }
    EXPECT_LE(worstDistance, kMetres) << invF;
    EXPECT_LE(worstEnd, 2 * kMetres) << invF;  // both problems, ours and the peer's
  }
}

TEST(GeodesicPeer, AreasAgree) {
  const Geodesic ours(MakeEllipsoid(kA, 298.257223563));
  std::mt19937_64 random(6);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int polygon = 0; polygon < 500; ++polygon) {
    const double b0 = std::asin(unit(random)), l0 = kPi * unit(random);
    GeographicLib::PolygonArea peer(GeographicLib::Geodesic::WGS84());
    std::vector<double> b, l;
    for (int i = 0; i < 12; ++i) {
      const GeodesicEnd corner =
          ours.Direct(b0, l0, kTwoPi * (polygon % 2 ? -i : i) / 12, 3e5 * (1.5 + unit(random)));
      b.push_back(corner.b);
      l.push_back(corner.l);
      peer.AddPoint(Degrees(corner.b), Degrees(corner.l));
    }
    double perimeter, area;
    peer.Compute(false, true, perimeter, area);
    const GeodesicPolygon found = ours.Area(b.data(), l.data(), b.size());
    EXPECT_NEAR(found.area, area, kArea) << polygon;
    EXPECT_NEAR(found.perimeter, perimeter, 12 * kMetres) << polygon;
  }
}

}  // namespace
