#include "geomath/chain/geoid_models.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <typeinfo>
#include <utility>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/geoid/close_seam.h"
#include "geomath/geoid/reg_geoid_2x2_denmark.h"
#include "geomath/geoid/reg_geoid_2x2_nw.h"
#include "geomath/geoid/reg_geoid_2x2_sw.h"
#include "geomath/geoid/reg_geoid_interpalation4.h"
#include "geomath/geoid/reg_geoid_interpalation_4x4_nw.h"
#include "geomath/geoid/reg_geoid_interpalation_4x4_sw.h"
#include "geomath/geoid/reg_geoid_interpalation_gg2008_sw.h"
#include "geomath/geoid/reg_geoid_intrp_lagrange_4x4_sw.h"
#include "geomath/geoid/reg_geoid_intrp_spline_4x4_sw.h"
#include "geomath/geoid/reg_geoid_kriging_intrp.h"
#include "tests/support/harmonic_model.h"

namespace zel_cs::geomath {
namespace {

constexpr double kMetres = 1e-9, kRadians = 1e-15;  // what a chain without other steps keeps

const TGridRgn kGrid({0.5, 0.09, 0.2, 0.09}, 0.01, 0.01);

TEST(GeoidModels, ARegionalGridServesAChainBothWays) {
  std::vector<float> z;
  for (int r = 0; r < 10; ++r)
    for (int c = 0; c < 10; ++c) z.push_back(static_cast<float>(40 + r - 2 * c));
  z[99] = 20000;
  const RegGeoidInterpalation4x4SW grid(kGrid, 10, 10, z.data(), 0, L"", L"");
  const RegionalGeoidHeight geoid(grid);
  CoordinateChain chain;
  chain.SetGeoid(&geoid);

  double b = 0.545, l = 0.232, h = 100;
  ASSERT_TRUE(chain.ToLocal(b, l, h));
  EXPECT_NEAR(h, 100 - (40 + 4.5 - 2 * 3.2), 1e-7);  // the cut to 1e-12 rad on 200 m/rad
  ASSERT_TRUE(chain.ToGlobal(b, l, h));
  EXPECT_NEAR(b, 0.545, kRadians);
  EXPECT_NEAR(h, 100, kMetres);

  // Outside, on a hole, and where a corner has no stencil.
  double columns[3][3] = {{0.7, 0.576, 0.501}, {0.232, 0.276, 0.201}, {1, 1, 1}};
  ChainStep failed[3];
  EXPECT_EQ(chain.ToLocalBatch(columns[0], columns[1], columns[2], 3, 1, failed), 0u);
  for (const ChainStep step : failed) EXPECT_EQ(step, ChainStep::geoid);
  double height = 7;
  EXPECT_FALSE(geoid.Height(0.7, 0.232, height));
  EXPECT_EQ(height, 7);
}

// A scheme that fails east of a meridian, which ends a query of the class.
class Failing : public RegGeoid2x2SW {
 public:
  using RegGeoid2x2SW::RegGeoid2x2SW;
  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override {
    if (point[1] > 0.25) return 1;
    return RegGeoid2x2SW::INTRP3(data, rowStride, region, NY, NX, point, height);
  }
};

TEST(GeoidModels, ManyHeightsAreThoseOfEach) {
  std::vector<float> z(100);
  for (std::size_t i = 0; i < z.size(); ++i) z[i] = 40 + 0.37F * static_cast<float>(i * i % 11);
  z[57] = 20000;
  const RegionalGeoid biquadratic(kGrid, 10, 10, z.data(), 0, L"", L"");
  const RegGeoid2x2SW bilinear(kGrid, 10, 10, z.data(), 0, L"", L"");
  const Failing failing(kGrid, 10, 10, z.data(), 0, L"", L"");
  // Inside, on nodes and edges, on the hole, beyond, full turns away, and nowhere.
  std::vector<double> b, l;
  for (int i = -3; i < 25; ++i)
    for (int k = -3; k < 25; ++k) {
      b.push_back(0.5 + 0.005 * i);
      l.push_back(0.2 + 0.005 * k + kTwoPi * (k % 3));
    }
  b[300] = NAN;
  for (const RegionalGeoid* model :
       std::initializer_list<const RegionalGeoid*>{&biquadratic, &bilinear, &failing}) {
    const RegionalGeoidHeight geoid(*model);
    std::vector<double> heights(b.size());
    geoid.Heights(b.data(), l.data(), heights.data(), b.size());
    int found = 0;
    for (std::size_t i = 0; i < b.size(); ++i) {
      double height = NAN;
      found += geoid.Height(b[i], l[i], height);
      EXPECT_EQ(std::isnan(height), std::isnan(heights[i])) << i;
      if (!std::isnan(height)) {
        EXPECT_EQ(height, heights[i]) << i;
      }
    }
    EXPECT_GT(found, 100);
  }
}

// Heights of 10 × 10 nodes by rows from the south, and from the north.
struct Surface {
  explicit Surface(double (*at)(int row, int column)) {
    for (int r = 0; r < 10; ++r)
      for (int c = 0; c < 10; ++c) {
        fromSouth.push_back(static_cast<float>(at(r, c)));
        fromNorth.push_back(static_cast<float>(at(9 - r, c)));
      }
  }
  std::vector<float> fromSouth, fromNorth;
};

// The rules that state slopes of a surface curved to the third degree.
struct Models {
  explicit Models(Surface nodes) : surface(std::move(nodes)) {}

  const Surface surface;
  const float* const south = surface.fromSouth.data();
  const float* const north = surface.fromNorth.data();
  const RegGeoidInterpalation4 nearest{kGrid, 10, 10, south, 0, L"", L""};
  const RegGeoidInterpalation4x4SW cell{kGrid, 10, 10, south, 0, L"", L""};
  const RegGeoidInterpalation4x4NW cubicNorth{kGrid, 10, 10, north, 0, L"", L""};
  const RegGeoidIntrp_Lagrange4x4SW lagrange{kGrid, 10, 10, south, 0, L"", L""};
  const RegGeoidIntrp_Spline4x4SW spline{kGrid, 10, 10, south, 0, L"", L""};
  const RegGeoidKrigingIntrp kriging{kGrid, 10, 10, south, 0, L"", L""};
};

// In the stencil of a point, also on an edge, of a surface that every rule reproduces. A scheme of a
// host's has differences.
TEST(GeoidModels, SlopesAreThoseOfTheHeights) {
  const Surface surface([](int r, int c) { return 30 + 2 * r - 3 * c + 0.5 * r * c; });
  const auto& south = surface.fromSouth;
  const auto& north = surface.fromNorth;
  const Models models(surface);
  const RegionalGeoid biquadratic(kGrid, 10, 10, south.data(), 0, L"", L"");
  const RegGeoid2x2SW bilinear(kGrid, 10, 10, south.data(), 0, L"", L"");
  const RegGeoid2x2NW fromNorth(kGrid, 10, 10, north.data(), 0, L"", L"");
  const RegGeoid2x2Denmark differences(kGrid, 10, 10, north.data(), 0, L"", L"");
  const Failing hosts(kGrid, 10, 10, south.data(), 0, L"", L"");
  const double b[] = {0.5437, 0.5218, 0.5437}, l[] = {0.2411, 0.2333, 0.2411 + kTwoPi};
  for (const RegionalGeoid* model : std::initializer_list<const RegionalGeoid*>{
           &biquadratic, &bilinear, &fromNorth, &differences, &models.nearest, &models.cell,
           &models.cubicNorth, &models.lagrange, &models.spline, &hosts}) {
    double heights[3], toNorth[3], toEast[3];
    const RegionalGeoidHeight geoid(*model);
    geoid.HeightsAndSlopes(b, l, heights, toNorth, toEast, 3);
    for (int i = 0; i < 3; ++i) {
      constexpr double kPerMetre = 6.4e6 * 1e-6;  // the rows of one rule are single precision
      double height = 0;
      ASSERT_TRUE(geoid.Height(b[i], l[i], height));
      EXPECT_EQ(heights[i], height);
      const double r = (b[i] - 0.5) * 100, c = std::remainder(l[i] - 0.2, kTwoPi) * 100;
      EXPECT_NEAR(toNorth[i], 100 * (2 + 0.5 * c), kPerMetre) << typeid(*model).name();
      EXPECT_NEAR(toEast[i], 100 * (-3 + 0.5 * r), kPerMetre) << typeid(*model).name();
    }
  }
  // Kriging has another surface: that of its heights around the point.
  const RegionalGeoidHeight kriged(models.kriging);
  double columns[5][3];
  kriged.HeightsAndSlopes(b, l, columns[0], columns[1], columns[2], 3);
  kriged.GeoidHeight::HeightsAndSlopes(b, l, columns[0], columns[3], columns[4], 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(columns[1][i], columns[3][i], 1e-3);
    EXPECT_NEAR(columns[2][i], columns[4][i], 1e-3);
  }
  const double edgeB = kGrid.B0, edgeL = kGrid.L0, offB = 0.4;
  double height, toNorth, toEast;
  RegionalGeoidHeight(bilinear).HeightsAndSlopes(&edgeB, &edgeL, &height, &toNorth, &toEast, 1);
  EXPECT_NEAR(toNorth, 200, 1e-6);
  EXPECT_NEAR(toEast, -300, 1e-6);
  RegionalGeoidHeight(bilinear).HeightsAndSlopes(&offB, &edgeL, &height, &toNorth, &toEast, 1);
  EXPECT_TRUE(std::isnan(height) && std::isnan(toNorth) && std::isnan(toEast));
}

// Those that a rule states, where its surface is curved to the third degree: beside differences of its
// heights over 1e-4 of a step, which the rounding of heights limits.
TEST(GeoidModels, StatedSlopesAreThoseOfACurvedSurface) {
  constexpr double kPart = 1e-6, kDoubles = 1e-3;  // radians; metres per radian, of slopes to 300
  constexpr double kSingles = 30;                  // heights of 4e-6 m, over kPart on both sides
  const Models models(Surface([](int r, int c) {
    return 40 + 2 * std::sin(2.0 * r) + std::cos(1.7 * c) + std::sin(1.0 * r * c);
  }));
  const RegGeoidInterpalation_GG2008SW six(kGrid, 10, 10, models.surface.fromSouth.data(), 0, L"",
                                           L"");
  for (const RegionalGeoid* model : std::initializer_list<const RegionalGeoid*>{
           &models.nearest, &models.cell, &models.cubicNorth, &models.lagrange, &models.spline,
           &models.kriging, &six}) {
    const RegionalGeoidHeight geoid(*model);
    for (const auto& [b, l] : {std::pair{0.5437, 0.2411}, {0.5412, 0.2498}, {0.5571, 0.2463}}) {
      double height, toNorth, toEast, n, s, e, w;
      geoid.HeightsAndSlopes(&b, &l, &height, &toNorth, &toEast, 1);
      ASSERT_TRUE(geoid.Height(b + kPart, l, n) && geoid.Height(b - kPart, l, s));
      ASSERT_TRUE(geoid.Height(b, l + kPart, e) && geoid.Height(b, l - kPart, w));
      const double tolerance = model == &six ? kSingles : kDoubles;
      EXPECT_NEAR(toNorth, (n - s) / (2 * kPart), tolerance) << typeid(*model).name();
      EXPECT_NEAR(toEast, (e - w) / (2 * kPart), tolerance) << typeid(*model).name();
    }
  }
}

// The corner of a grid in degrees, as files state it: its class cuts it off.
TEST(GeoidModels, TheSouthernAndWesternEdgeBelongToTheGrid) {
  const float z[] = {40, 41, 42, 45, 47, 49, 50, 53, 57};
  constexpr double kNodes = 1e-9;  // metres: 3e-12 rad on 300 m/rad
  int cutOff = 0;
  for (int degrees = -89; degrees < 89; degrees += 3) {
    const double south = degrees * kRadPerDeg, west = 2 * degrees * kRadPerDeg, step = kRadPerDeg;
    const RegGeoid2x2SW grid({{south, 2 * step, west, 2 * step}, step, step}, 3, 3, z, 0, L"", L"");
    const RegionalGeoidHeight geoid(grid);
    const struct {
      double b, l, height;
    } edges[] = {{south, west, 40},
                 {south - 1.9e-12, west - 1.9e-12, 40},
                 {south, west + 1.5 * step, 41.5},
                 {south + 0.5 * step, west, 42.5},
                 {south + 0.5 * step, west + 3 * kTwoPi, 42.5},
                 {south + 2 * step, west + 2 * step, 57}};
    for (const auto& edge : edges) {
      double height = 0;
      EXPECT_TRUE(geoid.Height(edge.b, edge.l, height)) << degrees;
      EXPECT_NEAR(height, edge.height, kNodes) << degrees;
    }
    double height = 0;
    EXPECT_FALSE(geoid.Height(south - 3e-12, west + step, height)) << degrees;
    const TAbstractPoint3<double> corner(south, west, 0);
    cutOff += grid.CountHeight(&corner, &height, 1) != 0;
  }
  EXPECT_GT(cutOff, 30);  // Kept by the class: 60 corners, few of them multiples of 1e-12 rad
}

// A grid around the Earth, from its own west and turned by half, with and without its first column
// once more: closed, all of them are one geoid to the splines.
TEST(GeoidModels, AClosedGridHasNoSeam) {
  constexpr int kColumns = 36, kRows = 19;
  constexpr double kStep = 10 * kRadPerDeg;
  const auto gridFrom = [&](int first, int columns) {
    std::vector<float> z;
    for (int r = 0; r < kRows; ++r)
      for (int c = 0; c < columns; ++c)
        z.push_back(static_cast<float>(20 + (7 * r * r + 13 * ((first + c) % kColumns)) % 29));
    const TGridRgn region({-kHalfPi, kPi, first * kStep, (columns - 1) * kStep}, kStep, kStep);
    return CloseSeam(region, columns, kRows, z.data());
  };
  const auto own = gridFrom(0, kColumns), repeated = gridFrom(0, kColumns + 1),
             turned = gridFrom(kColumns / 2, kColumns);
  ASSERT_TRUE(own && repeated && turned);
  EXPECT_EQ(own->nodes, repeated->nodes);
  const auto modelOf = [](const ClosedGrid& g) {
    return RegGeoidInterpalation_GG2008SW(g.grid, g.NX, g.NY, g.nodes.data(), 0, L"", L"");
  };
  const auto a = modelOf(*own), b = modelOf(*turned);
  constexpr double kSingle = 2e-4;  // metres: splines in single precision, positions 1e-7 of a step
  for (int i = -40; i < 80; ++i) {
    const double lat = 0.3, lon = 0.1 * i;
    double one = 0, other = 1;
    EXPECT_TRUE(RegionalGeoidHeight(a).Height(lat, lon, one)) << lon;
    EXPECT_TRUE(RegionalGeoidHeight(b).Height(lat, lon, other)) << lon;
    EXPECT_NEAR(one, other, kSingle) << lon;
  }
  EXPECT_FALSE(gridFrom(0, kColumns - 1));
  EXPECT_FALSE(gridFrom(0, kColumns + 2));
  EXPECT_FALSE(CloseSeam({{0, 1, 0, 6}, 0.5, 0}, 7, 3, nullptr));
}

TEST(GeoidModels, AHarmonicModelServesAChainBothWays) {
  const HarmonicModel egm96 = Egm96Degree36();
  const GlobalGeoid model(egm96.Record(37));
  const GlobalGeoidHeight geoid(model);
  CoordinateChain chain;
  chain.SetGeoid(&geoid);
  std::vector<double> b, l, h;
  for (int i = 0; i < 600; ++i) {
    b.push_back(-1.5 + 0.01 * (i / 4));
    l.push_back(-3 + 0.01 * i);
    h.push_back(i);
  }
  const std::vector<double> b0 = b, l0 = l;
  ASSERT_EQ(chain.ToLocalBatch(b.data(), l.data(), h.data(), b.size()), b.size());
  for (std::size_t i = 0; i < b.size(); ++i) {
    const TAbstractPoint3<double> point(b0[i], l0[i], 0);
    double undulation;
    model.CountHeight(&point, &undulation, 1, nullptr);
    ASSERT_NEAR(h[i], static_cast<double>(i) - undulation, kMetres);
  }
  ASSERT_EQ(chain.ToGlobalBatch(b.data(), l.data(), h.data(), b.size()), b.size());
  for (std::size_t i = 0; i < b.size(); ++i) ASSERT_NEAR(h[i], static_cast<double>(i), kMetres);

  // Slopes are those of symmetric differences in both directions.
  std::vector<double> heights(600), toNorth(600), toEast(600), perB(600), perL(600);
  geoid.HeightsAndSlopes(&b0[0], &l0[0], &heights[0], &toNorth[0], &toEast[0], 600);
  geoid.GeoidHeight::HeightsAndSlopes(&b0[0], &l0[0], &h[0], &perB[0], &perL[0], 600);
  for (std::size_t i = 0; i < 600; ++i) {
    ASSERT_NEAR(heights[i], h[i], 1e-10);
    ASSERT_NEAR(toNorth[i], perB[i], 2e-3);  // metres per radian: 3e-10 of a metre in one
    ASSERT_NEAR(toEast[i], perL[i], 2e-3);
  }

  const GlobalGeoid empty{GlobalGeoidData()};
  double height = 7;
  EXPECT_FALSE(GlobalGeoidHeight(empty).Height(0.1, 0.2, height));
  EXPECT_EQ(height, 7);
}

}  // namespace
}  // namespace zel_cs::geomath
