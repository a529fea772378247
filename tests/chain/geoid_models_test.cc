#include "geomath/chain/geoid_models.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "geomath/chain/coordinate_chain.h"
#include "geomath/geoid/reg_geoid_interpalation_4x4_sw.h"
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

  const GlobalGeoid empty{GlobalGeoidData()};
  double height = 7;
  EXPECT_FALSE(GlobalGeoidHeight(empty).Height(0.1, 0.2, height));
  EXPECT_EQ(height, 7);
}

}  // namespace
}  // namespace zel_cs::geomath
