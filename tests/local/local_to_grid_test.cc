#include "geomath/local/local_to_grid.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "tests/support/tolerance.h"

using namespace zel_cs::geomath;
using tolerance::kBatchMetres;

namespace {

constexpr double kPlane[] = {1000.5, -200.25, 1.0002, 0.35};
constexpr double kHeight[] = {-42.5, 1e-5, -2e-5};

LocalToGrid Site(unsigned char mode = LocalToGrid::kBoth) {
  LocalToGrid site;
  for (int i = 0; i < 4; ++i) site.SetPlaneParam(kPlane[i], i, 2);
  for (int i = 0; i < 3; ++i) site.SetHeightParam(kHeight[i], i, 2);
  site.SetLat0(52, 1);
  site.SetLon0(5.5, 1);
  site.mode = mode;
  return site;
}

struct Triple {
  double n = 5000, e = -3000, h = 100;
  bool operator==(const Triple&) const = default;
};

}  // namespace

// 40-digit evaluation of the similarity and the plane.
TEST(LocalToGrid, AppliesSimilarityAndPlaneBothWays) {
  const LocalToGrid site = Site();
  Triple p;
  ASSERT_TRUE(site.ToLocal(p.n, p.e, p.h, 3));
  EXPECT_NEAR(p.n, 6727.202098000569, kBatchMetres);
  EXPECT_NEAR(p.e, -1304.099827085133, kBatchMetres);
  EXPECT_NEAR(p.h, 100 - 42.5 + 0.05 + 0.06, kBatchMetres);
  ASSERT_TRUE(site.ToGrid(p.n, p.e, p.h, 3));
  EXPECT_NEAR(p.n, 5000, kBatchMetres);
  EXPECT_NEAR(p.e, -3000, kBatchMetres);
  EXPECT_NEAR(p.h, 100, kBatchMetres);
}

TEST(LocalToGrid, ModeAndWhatChooseTheParts) {
  Triple all;
  ASSERT_TRUE(Site().ToLocal(all.n, all.e, all.h, 3));
  for (unsigned char mode = 0; mode <= 3; ++mode)
    for (unsigned char what = 0; what <= 3; ++what) {
      SCOPED_TRACE(testing::Message() << "mode " << int{mode} << " what " << int{what});
      LocalToGrid site = Site(mode);
      Triple p;
      const bool works = mode != 0 && what != 0;
      ASSERT_EQ(site.ToLocal(p.n, p.e, p.h, what), works);
      if (!works) {
        EXPECT_EQ(p, Triple());
      } else {
        const bool plane = (mode & 1) && what != 2, height = (mode & 2) && what != 1;
        EXPECT_EQ(p.n, plane ? all.n : DBL_MAX);
        EXPECT_EQ(p.e, plane ? all.e : DBL_MAX);
        EXPECT_EQ(p.h, height ? all.h : DBL_MAX);
      }
      Triple back = all;
      const bool invertible = works && mode != 2;
      ASSERT_EQ(site.ToGrid(back.n, back.e, back.h, what), invertible);
      if (!invertible) {
        EXPECT_EQ(back, all);
      } else {
        EXPECT_EQ(back.n == DBL_MAX, what == 2);
        EXPECT_EQ(back.h == DBL_MAX, mode == 1 || what == 1);
      }
    }
}

TEST(LocalToGrid, KeepsHeightsAloneFromBeingInverted) {
  LocalToGrid site = Site(LocalToGrid::kVertical);
  Triple p;
  EXPECT_TRUE(site.ToLocal(p.n, p.e, p.h, 3));
  p = {};
  EXPECT_FALSE(site.ToGrid(p.n, p.e, p.h, 3));
  EXPECT_FALSE(site.Inverse(p.n, p.e, p.h, 3));
  EXPECT_EQ(p, Triple());
  site.mode = LocalToGrid::kBoth;
  EXPECT_FALSE(site.Inverse(p.n, p.e, p.h, 2)) << "without N and E there is no position";
}

TEST(LocalToGrid, KeepsThePairOfTheProjectionsAxes) {
  TSterProj ster(kWgs84A, kWgs84InvF, 52 * tolerance::kDegree, 5.5 * tolerance::kDegree, 1, 0, 0);
  ster.SetNEAxes(L"WN");
  LocalToGrid site = Site();
  site.SetProj(&ster);
  const double lat = 52.05 * tolerance::kDegree, lon = 5.4 * tolerance::kDegree;
  Triple pair{lat, lon, 10}, p = pair;
  ASSERT_TRUE(ster.Forward(pair.n, pair.e));
  EXPECT_GT(pair.n, 0) << "metres to the west";
  ASSERT_TRUE(site.ToLocal(pair.n, pair.e, pair.h, 3));
  ASSERT_TRUE(site.Forward(p.n, p.e, p.h, 3));
  EXPECT_EQ(p, pair);
  ASSERT_TRUE(site.Inverse(p.n, p.e, p.h, 3));
  EXPECT_NEAR(p.n, lat, tolerance::kRoundTripRadians);
}

TEST(LocalToGrid, GoesThroughItsProjectionBothWays) {
  LocalToGrid site = Site();
  const double lat = 52.05 * tolerance::kDegree, lon = 5.4 * tolerance::kDegree;
  TSterProj ster(kWgs84A, kWgs84InvF, 52 * tolerance::kDegree, 5.5 * tolerance::kDegree, 1, 0, 0);
  Triple grid{lat, lon, 10}, p = grid;
  ASSERT_TRUE(ster.Forward(grid.n, grid.e));
  ASSERT_TRUE(site.ToLocal(grid.n, grid.e, grid.h, 3));
  ASSERT_TRUE(site.Forward(p.n, p.e, p.h, 3));
  EXPECT_NEAR(p.n, grid.n, kBatchMetres);
  EXPECT_NEAR(p.e, grid.e, kBatchMetres);
  EXPECT_EQ(p.h, grid.h);
  ASSERT_TRUE(site.Inverse(p.n, p.e, p.h, 3));
  EXPECT_NEAR(p.n, lat, tolerance::kRoundTripRadians);
  EXPECT_NEAR(p.e, lon, tolerance::kRoundTripRadians);
  EXPECT_NEAR(p.h, 10, kBatchMetres);
  LocalToGrid fresh;
  p = {};
  EXPECT_FALSE(fresh.Forward(p.n, p.e, p.h, 3));
  EXPECT_EQ(p, Triple());
}

TEST(LocalToGrid, StoresParametersByIndex) {
  LocalToGrid site = Site();
  for (int i = 0; i < 4; ++i) EXPECT_EQ(site.GetPlaneParam(i, 0), kPlane[i]);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(site.GetHeightParam(i, 0), kHeight[i]);
  for (int i : {-1, 4, 1 << 30}) {
    site.SetPlaneParam(9, i, 0);
    site.SetHeightParam(9, i, 0);
    EXPECT_EQ(site.GetPlaneParam(i, 0), 0.0);
    EXPECT_EQ(site.GetHeightParam(i, 0), 0.0);
  }
  site.SetLat0(45, 1);
  EXPECT_EQ(site.GetParam(0, 2), 0.7853981633974483);
  site.SetLat0(0.5, 2);
  EXPECT_EQ(site.GetParam(0, 2), 0.5);
  site.SetParam(7, 3, 2);
  EXPECT_EQ(site.GetParam(3, 2), 7);

  site.SetGeoidName(L"EGM96");
  EXPECT_STREQ(site.GetGeoidName(), L"EGM96");
  site.SetGeoidName(site.GetGeoidName() + 3);
  EXPECT_STREQ(site.GetGeoidName(), L"96");
  site.SetGeoidName(L"");
  EXPECT_EQ(site.GetGeoidName(), nullptr);
}

TEST(LocalToGrid, OriginFollowsProjectionAndEllipsoid) {
  LocalToGrid site = Site();
  EXPECT_NEAR(site.OriginN(), 0, kBatchMetres);
  site.SetParam(1000, 4, 2);  // a false northing shows from the next change on
  site.SetEllipsoid(6377397.155, 299.1528128);
  EXPECT_NEAR(site.OriginN(), 1000, kBatchMetres);
  EXPECT_EQ(site.GetProjection()->GetEllipsoid().a, 6377397.155);

  TSterProj none(kWgs84A, kWgs84InvF, 0.1, 0, 1, 5, 7);
  site.SetProj(nullptr);
  site.SetProj(&none);
  EXPECT_EQ(site.GetParam(4, 2), 7);
  site.SetSterProj(kWgs84A, kWgs84InvF);
  EXPECT_EQ(site.GetParam(4, 2), 0);
  EXPECT_EQ(site.GetParam(0, 2), 52 * 0.017453292519943295);
}

TEST(LocalToGrid, KeepsTheKindOfAProjectionNotItsClass) {
  TLCProj cone(kWgs84A, kWgs84InvF, 0.7, 0.8, 0.1, 0.75, 1e5, 2e5, 1);
  LocalToGrid site;
  site.SetProj(&cone);
  ASSERT_NE(site.GetProjection(), nullptr);
  EXPECT_NE(site.GetProjection(), &cone);
  EXPECT_EQ(site.GetProjection()->GetType(), cone.GetType());
  site.mode = LocalToGrid::kHorizontal;
  double n = 0.76, e = 0.12, h = 0, coneN = n, coneE = e;
  ASSERT_TRUE(site.Forward(n, e, h, 1));
  ASSERT_TRUE(cone.Forward(coneN, coneE));
  EXPECT_EQ(n, coneN);
  EXPECT_EQ(e, coneE);

  TGeoProj unknown;
  site.SetProj(&unknown);
  n = 0.76;
  e = 0.12;
  EXPECT_FALSE(site.Forward(n, e, h, 1));
}

TEST(LocalToGrid, CopiesAreDeep) {
  LocalToGrid site = Site();
  site.SetGeoidName(L"EGM96");
  LocalToGrid copy = site, assigned;
  assigned = site;
  site.SetLat0(10, 1);
  site.SetGeoidName(nullptr);
  site.SetPlaneParam(2, 2, 0);
  const Triple start{52.05 * tolerance::kDegree, 5.4 * tolerance::kDegree, 0};
  for (LocalToGrid* p : {&copy, &assigned}) {
    EXPECT_NE(p->GetProjection(), site.GetProjection());
    EXPECT_STREQ(p->GetGeoidName(), L"EGM96");
    Triple a = start, b = start;
    ASSERT_TRUE(p->Forward(a.n, a.e, a.h, 3));
    ASSERT_TRUE(Site().Forward(b.n, b.e, b.h, 3));
    EXPECT_EQ(a, b);
  }
  const LocalToGrid& itself = copy;
  copy = itself;
  EXPECT_NE(copy.GetProjection(), nullptr);
}

TEST(LocalToGrid, BatchesAgreeWithPoints) {
  LocalToGrid site = Site();
  constexpr std::size_t kCount = 600;
  std::vector<Triple> given(kCount);
  for (std::size_t i = 0; i < kCount; ++i)
    given[i] = {(51.9 + 3e-4 * static_cast<double>(i)) * tolerance::kDegree,
                (5.6 - 2e-4 * static_cast<double>(i)) * tolerance::kDegree,
                1.0 * static_cast<double>(i)};
  given[3].n = std::nan("");

  std::vector<Triple> batch = given;
  EXPECT_EQ(site.ForwardBatch(&batch[0].n, &batch[0].e, &batch[0].h, kCount, 3, 3), kCount - 1);
  EXPECT_TRUE(std::isnan(batch[3].n) && std::isnan(batch[3].e) && std::isnan(batch[3].h));
  for (std::size_t i = 4; i < kCount; ++i) {
    Triple p = given[i];
    ASSERT_TRUE(site.Forward(p.n, p.e, p.h, 3));
    ASSERT_NEAR(batch[i].n, p.n, kBatchMetres);
    ASSERT_NEAR(batch[i].e, p.e, kBatchMetres);
    ASSERT_NEAR(batch[i].h, p.h, kBatchMetres);
  }
  std::vector<Triple> grid = batch;
  EXPECT_EQ(site.InverseBatch(&batch[0].n, &batch[0].e, &batch[0].h, kCount, 3, 3), kCount - 1);
  EXPECT_NEAR(batch[500].n, given[500].n, tolerance::kRoundTripRadians);
  const std::vector<Triple> local = grid;
  EXPECT_EQ(site.ToGridBatch(&grid[0].n, &grid[0].e, &grid[0].h, kCount, 3, 3), kCount - 1);
  EXPECT_EQ(site.ToLocalBatch(&grid[0].n, &grid[0].e, &grid[0].h, kCount, 3, 3), kCount - 1);
  EXPECT_NEAR(grid[500].e, local[500].e, kBatchMetres);
  EXPECT_EQ(site.ToLocalBatch(&grid[4].n, &grid[4].e, &grid[4].h, 2, 0, 3), 0u);
  EXPECT_TRUE(std::isnan(grid[5].h));
  EXPECT_EQ(site.ForwardBatch(&batch[4].n, &batch[4].e, &batch[4].h, 2, 0, 3), 0u);
  EXPECT_EQ(site.InverseBatch(&batch[6].n, &batch[6].e, &batch[6].h, 2, 2, 3), 0u) << "no position";
  EXPECT_TRUE(std::isnan(batch[4].n) && std::isnan(batch[6].h));
}
