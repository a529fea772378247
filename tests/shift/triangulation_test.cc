#include "geomath/shift/triangulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRounding = 1e-9;         // metres, of coordinates up to 7e6
constexpr double kRoundTripMetres = 1e-7;  // 1e-4 mm

using Triangles = std::vector<std::array<std::uint32_t, 3>>;

// A network of n × n vertices over 100 km, moved off their lattice; targets far away, turned a
// little and moved by metres from vertex to vertex; heights likewise.
TriangulationDefinition Network(std::uint32_t n, ShiftComponents components) {
  TriangulationDefinition definition;
  definition.components = components;
  std::mt19937 random(11);
  const auto metres = [&](double most) {
    return std::uniform_real_distribution<>(-most, most)(random);
  };
  const double step = 100000.0 / (n - 1);
  for (std::uint32_t i = 0; i < n; ++i)
    for (std::uint32_t j = 0; j < n; ++j) {
      TriangulationVertex v;
      const bool rim = i == 0 || j == 0 || i == n - 1 || j == n - 1;
      v.north = 6700000 + i * step + (rim ? 0 : metres(0.3 * step));
      v.east = 3200000 + j * step + (rim ? 0 : metres(0.3 * step));
      v.targetNorth = v.north - 2900 + 1e-4 * v.east + metres(2);
      v.targetEast = v.east - 3000000 - 1e-4 * v.north + metres(2);
      v.heightOffset = 0.3 + metres(0.05);
      definition.vertices.push_back(v);
    }
  for (std::uint32_t i = 0; i + 1 < n; ++i)
    for (std::uint32_t j = 0; j + 1 < n; ++j) {
      const std::uint32_t a = i * n + j;
      if ((i + j) % 3 == 0) {
        definition.triangles.insert(definition.triangles.end(),
                                    {{a, a + 1, a + n}, {a + n, a + n + 1, a + 1}});
      } else {
        definition.triangles.insert(definition.triangles.end(),
                                    {{a + n + 1, a + 1, a}, {a, a + n + 1, a + n}});
      }
    }
  return definition;
}

// The barycentric formula as published, over all triangles.
bool Barycentric(const TriangulationDefinition& d, double n, double e, double (&result)[3]) {
  for (const auto& t : d.triangles) {
    const auto &p = d.vertices[t[0]], &q = d.vertices[t[1]], &r = d.vertices[t[2]];
    const double area =
        (q.north - r.north) * (p.east - r.east) + (r.east - q.east) * (p.north - r.north);
    const double l1 =
        ((q.north - r.north) * (e - r.east) + (r.east - q.east) * (n - r.north)) / area;
    const double l2 =
        ((r.north - p.north) * (e - r.east) + (p.east - r.east) * (n - r.north)) / area;
    const double l3 = 1 - l1 - l2;
    if (l1 < -1e-12 || l2 < -1e-12 || l3 < -1e-12) continue;
    const auto mean = [&](double TriangulationVertex::*value) {
      return l1 * p.*value + l2 * q.*value + l3 * r.*value;
    };
    result[0] = mean(&TriangulationVertex::targetNorth);
    result[1] = mean(&TriangulationVertex::targetEast);
    result[2] = mean(&TriangulationVertex::heightOffset);
    return true;
  }
  return false;
}

TEST(Triangulation, InterpolatesBetweenVertices) {
  using enum ShiftComponents;
  for (const ShiftComponents components : {horizontal, vertical, horizontalAndVertical}) {
    const auto definition = Network(15, components);
    std::string reason;
    const auto tin = Triangulation::Make(definition, &reason);
    ASSERT_TRUE(tin) << reason;
    std::mt19937 random(5);
    std::uniform_real_distribution<> metres(0, 100000);
    for (std::size_t i = 0; i < 3000; ++i) {
      double n = 6700000 + metres(random), e = 3200000 + metres(random), h = 55;
      if (i < 225) {
        n = definition.vertices[i].north;
        e = definition.vertices[i].east;
      }
      const double given[] = {n, e};
      double expected[3];
      ASSERT_TRUE(Barycentric(definition, n, e, expected));
      ASSERT_TRUE(tin->Forward(n, e, h));
      const bool moves = components != vertical, lifts = components != horizontal;
      ASSERT_NEAR(n, moves ? expected[0] : given[0], 2 * kRounding);
      ASSERT_NEAR(e, moves ? expected[1] : given[1], 2 * kRounding);
      ASSERT_NEAR(h, lifts ? 55 + expected[2] : 55, kRounding);
      ASSERT_TRUE(tin->Inverse(n, e, h)) << i;
      ASSERT_NEAR(n, given[0], kRoundTripMetres);
      ASSERT_NEAR(e, given[1], kRoundTripMetres);
      ASSERT_NEAR(h, 55, kRoundTripMetres);
    }
  }
}

// Two triangles that disagree along their common sides show to which one a side belongs.
TEST(Triangulation, GivesASideToOneTriangleWhateverTheOrder) {
  TriangulationDefinition definition;
  definition.components = ShiftComponents::vertical;
  // Four triangles around (10, 10), each with vertices and an offset of its own.
  const double corners[5][2] = {{0, 0}, {0, 20}, {20, 20}, {20, 0}, {10, 10}};
  const int around[4][3] = {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}};
  for (int t = 0; t < 4; ++t) {
    for (const int c : around[t])
      definition.vertices.push_back({corners[c][0], corners[c][1], 0, 0, 1.0 + t});
    const auto first = static_cast<std::uint32_t>(3 * t);
    definition.triangles.push_back({first, first + 1, first + 2});
  }
  const struct {
    const char* where;
    double north, east, offset;
  } rows[] = {
      {"side to the south-west", 5, 5, 4},
      {"side to the south-east", 5, 15, 2},
      {"side to the north-east", 15, 15, 3},
      {"side to the north-west", 15, 5, 3},
      {"vertex in the middle", 10, 10, 3},
      {"southern hull", 0, 7, 1},
      {"eastern hull", 7, 20, 2},
      {"northern hull", 20, 7, 3},
      {"western hull", 7, 0, 4},
      {"corner of the hull", 20, 20, 2},
      {"a hair outside", 20 + 1e-9, 12, 3},
  };
  std::sort(definition.triangles.begin(), definition.triangles.end());
  do {
    for (int turn = 0; turn < 3; ++turn) {
      for (auto& t : definition.triangles) std::rotate(t.begin(), t.begin() + 1, t.end());
      const auto tin = Triangulation::Make(definition);
      ASSERT_TRUE(tin);
      for (const auto& row : rows) {
        double n = row.north, e = row.east, h = 0;
        ASSERT_TRUE(tin->Forward(n, e, h)) << row.where;
        EXPECT_NEAR(h, row.offset, 1e-12) << row.where;
      }
    }
  } while (std::next_permutation(definition.triangles.begin(), definition.triangles.end()));
  const auto tin = Triangulation::Make(definition);
  double n = 20.001, e = 10, h = 0;
  EXPECT_EQ(tin->Forward(n, e, h).status, ShiftStatus::outside);
}

// The rule of one triangle goes on outside; which one, is read off its slope. A point in front of
// two sides that meet takes the one that faces it.
TEST(Triangulation, ExtrapolatesWithAStatus) {
  TriangulationDefinition definition;
  definition.components = ShiftComponents::horizontalAndVertical;
  const double at[][2] = {{0, 0}, {0, 100}, {100, 100}, {100, 0}};
  for (const auto& p : at)
    definition.vertices.push_back(
        {p[0], p[1], p[0] + 1000, p[1] + 0.01 * p[1], p[0] * p[1] * 1e-4});
  definition.triangles = {{0, 1, 2}, {0, 2, 3}};
  const struct {
    double north, east, bySide, byCentroid;
  } rows[] = {
      // Height offsets: 0.01·north in the south-eastern triangle, 0.01·east in the north-western.
      {-10, 30, -0.1, -0.1}, {60, 130, 0.6, 0.6},   {130, 60, 0.6, 0.6},
      {30, -10, -0.1, -0.1}, {-20, 10, -0.2, -0.2}, {-40, -10, -0.4, -0.4},
  };
  using enum TriangulationFallback;
  for (const TriangulationFallback fallback : {none, nearestSide, nearestCentroid}) {
    definition.fallback = fallback;
    const auto tin = Triangulation::Make(definition);
    ASSERT_TRUE(tin);
    for (const auto& row : rows) {
      double n = row.north, e = row.east, h = 5;
      const ShiftResult result = tin->Forward(n, e, h);
      if (fallback == none) {
        EXPECT_EQ(result.status, ShiftStatus::outside);
        EXPECT_TRUE(n == row.north && e == row.east && h == 5);
        continue;
      }
      EXPECT_TRUE(result);
      EXPECT_EQ(result.status, ShiftStatus::extrapolated);
      EXPECT_NEAR(n, row.north + 1000, 1e-9);
      EXPECT_NEAR(e, row.east * 1.01, 1e-9);
      EXPECT_NEAR(h, 5 + (fallback == nearestSide ? row.bySide : row.byCentroid), 1e-9)
          << row.north << ' ' << row.east;
      EXPECT_EQ(tin->Inverse(n, e, h).status, ShiftStatus::extrapolated);
      EXPECT_NEAR(n, row.north, kRoundTripMetres);
      EXPECT_NEAR(e, row.east, kRoundTripMetres);
      EXPECT_NEAR(h, 5, kRoundTripMetres);
    }
    double n = 50, e = 20, h = 0;
    EXPECT_EQ(tin->Forward(n, e, h).status, ShiftStatus::converted);
  }
}

TEST(Triangulation, TakesLongitudesOfAnyTurn) {
  TriangulationDefinition definition;
  definition.space = ShiftSpace::geographic;
  definition.vertices = {
      {0.5, 3.1, 0.5001, 3.1, 0}, {0.6, 3.1, 0.6001, 3.1, 0}, {0.55, 3.3, 0.5501, 3.3, 0}};
  definition.triangles = {{0, 1, 2}};
  const auto tin = Triangulation::Make(definition);
  ASSERT_TRUE(tin);
  for (const double lon : {3.2, 3.2 - kTwoPi, 3.2 + kTwoPi}) {
    double b = 0.55, l = lon, h = 0;
    ASSERT_TRUE(tin->Forward(b, l, h)) << lon;
    EXPECT_NEAR(b, 0.5501, 1e-15);
    EXPECT_NEAR(l, lon, 1e-15);
    ASSERT_TRUE(tin->Inverse(b, l, h)) << lon;
    EXPECT_NEAR(b, 0.55, 1e-15);
  }
}

TEST(Triangulation, BatchGivesTheBitsOfSinglePoints) {
  auto definition = Network(9, ShiftComponents::horizontalAndVertical);
  definition.fallback = TriangulationFallback::nearestSide;
  const auto tin = Triangulation::Make(definition);
  ASSERT_TRUE(tin);
  std::vector<double> all;
  constexpr std::size_t kPoints = 600;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double t = static_cast<double>(i);
    all.insert(all.end(),
               {6695000 + std::fmod(t * 7919, 110000), 3195000 + std::fmod(t * 6007, 110000), t});
  }
  all[30] = std::numeric_limits<double>::quiet_NaN();
  const auto given = all;
  std::vector<ShiftStatus> status(kPoints);
  EXPECT_EQ(tin->ForwardBatch(&all[0], &all[1], &all[2], kPoints, 3, status.data()), kPoints - 1);
  EXPECT_EQ(status[10], ShiftStatus::input);
  EXPECT_GT(std::count(status.begin(), status.end(), ShiftStatus::extrapolated), 20);
  for (std::size_t i = 0; i < kPoints; ++i) {
    double p[] = {given[3 * i], given[3 * i + 1], given[3 * i + 2]};
    EXPECT_EQ(tin->Forward(p[0], p[1], p[2]).status, status[i]);
    if (i == 10) continue;
    EXPECT_TRUE(std::equal(p, p + 3, &all[3 * i])) << i;
  }
}

// Degenerate triangles hold no point and do no harm; a network may be a single long strip.
TEST(Triangulation, KeepsOutDegenerateTriangles) {
  auto definition = Network(6, ShiftComponents::horizontal);
  const auto sound = Triangulation::Make(definition);
  definition.triangles.insert(definition.triangles.begin(), {{0, 0, 7}, {1, 2, 3}, {4, 4, 4}});
  const auto odd = Triangulation::Make(definition);
  ASSERT_TRUE(sound && odd);
  double n = 6750000, e = 3250000, h = 0, m = n, f = e;
  ASSERT_TRUE(sound->Forward(n, e, h) && odd->Forward(m, f, h));
  EXPECT_TRUE(n == m && e == f);

  TriangulationDefinition strip;
  for (std::uint32_t i = 0; i < 2000; ++i) {
    const double x = 0.001 * i, y = 1e6 * (i % 2);
    strip.vertices.push_back({y, x, y + 1, x, 0});
    if (i > 1) strip.triangles.push_back({i - 2, i - 1, i});
  }
  const auto tin = Triangulation::Make(strip);
  ASSERT_TRUE(tin);
  n = 500000;
  e = 1;
  ASSERT_TRUE(tin->Forward(n, e, h));
  EXPECT_NEAR(n, 500001, kRounding);
}

TEST(Triangulation, RefusesDefinitionsThatAreNotSound) {
  void (*const spoils[])(TriangulationDefinition&) = {
      [](auto& d) { d.triangles.clear(); },
      [](auto& d) { d.vertices.clear(); },
      [](auto& d) { d.triangles[3][1] = 36; },
      [](auto& d) { d.vertices[5].targetEast = INFINITY; },
      [](auto& d) { d.vertices[5].north = NAN; },
      [](auto& d) { d.space = ShiftSpace::geocentric; },
      [](auto& d) { d.space = ShiftSpace::geographic; },  // latitudes of millions
      [](auto& d) {
        d.triangles = {{1, 1, 2}};
      },
      [](auto& d) {
        for (auto& v : d.vertices) v.targetNorth = 0;
      },
  };
  for (std::size_t i = 0; i < std::size(spoils); ++i) {
    auto definition = Network(6, ShiftComponents::horizontal);
    spoils[i](definition);
    std::string reason;
    EXPECT_FALSE(Triangulation::Make(definition, &reason)) << i;
    EXPECT_FALSE(reason.empty()) << i;
  }
}

}  // namespace
}  // namespace zel_cs::geomath
