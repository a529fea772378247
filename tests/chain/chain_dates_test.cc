#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/frame/frame_change.h"
#include "geomath/frame/plate_motion.h"
#include "geomath/frame/time_specific_similarity.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/shift/coordinate_offset.h"

namespace zel_cs::geomath {
namespace {

constexpr double kSameMetres = 5e-9;  // a few roundings of 6.4e6 m
const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

struct Point {
  double b, l, h;
};

Point At(double x, double y, double z) {
  Point p{x, y, z};
  kGrs80.XYZ_to_BLH_Batch(&p.b, &p.l, &p.h, 1);
  return p;
}

double Distance(Point a, Point b) {
  double p[] = {a.b, a.l, a.h}, q[] = {b.b, b.l, b.h};
  kGrs80.BLH_to_XYZ_Batch(p, p + 1, p + 2, 1);
  kGrs80.BLH_to_XYZ_Batch(q, q + 1, q + 2, 1);
  return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

const Point kBudd = At(3513638.0964, 778956.5470, 5248216.5248);

// ITRF2014 at the date to ETRF2014, as 40 digits have it at 2015.0.
CoordinateChain ToEtrf(const FrameChange& change) {
  CoordinateChain chain;
  chain.SetGlobalEllipsoid(&kGrs80);
  chain.AddShift(ShiftPlace::beforeDatum, {&change});
  return chain;
}

std::unique_ptr<FrameChange> EtrfChange() {
  return FrameChange::Make(ReferenceFrame::itrf2014, ReferenceFrame::etrf2014);
}

TEST(ChainDates, RunsAtTheDateOfThePoint) {
  const auto change = EtrfChange();
  const CoordinateChain chain = ToEtrf(*change);
  EXPECT_TRUE(chain.NeedsDates());
  Point p = kBudd;
  ASSERT_TRUE(chain.ToLocal(p.b, p.l, p.h, 2015));
  EXPECT_LE(Distance(p, At(3513638.523286, 778956.149736, 5248216.297966)), 1e-6);
  ASSERT_TRUE(chain.ToGlobal(p.b, p.l, p.h, 2015));
  EXPECT_LE(Distance(p, kBudd), kSameMetres);
}

TEST(ChainDates, RefusesWithoutADateAndNeverAssumesOne) {
  const auto change = EtrfChange();
  const CoordinateChain chain = ToEtrf(*change);
  Point p = kBudd;
  EXPECT_EQ(chain.ToLocal(p.b, p.l, p.h).failedAt, ChainStep::missingDate);
  EXPECT_EQ(chain.ToGlobal(p.b, p.l, p.h, kNoDate).failedAt, ChainStep::missingDate);
  EXPECT_EQ(chain.ToLocal(p.b, p.l, p.h, HUGE_VAL).failedAt, ChainStep::modelYears);
  EXPECT_EQ(p.b, kBudd.b);
  ChainStep failed[2];
  double b[] = {kBudd.b, kBudd.b}, l[] = {kBudd.l, kBudd.l}, h[] = {0, 0};
  EXPECT_EQ(chain.ToLocalBatch(b, l, h, 2, 1, failed), 0U);
  EXPECT_EQ(failed[1], ChainStep::missingDate);
  EXPECT_STREQ(ChainStepName(ChainStep::missingDate), "a missing date");
  EXPECT_STREQ(ChainStepName(ChainStep::pointMotion), "the velocity grid or deformation model");
}

// A date each, across the blocks of a batch; the points without one fail alone.
TEST(ChainDates, DatesOfEachPoint) {
  const auto change = EtrfChange();
  const CoordinateChain chain = ToEtrf(*change);
  const std::size_t count = 600;
  std::vector<double> points, dates;
  for (std::size_t i = 0; i < count; ++i) {
    points.insert(points.end(),
                  {0.8 + 1e-4 * static_cast<double>(i), 0.15, static_cast<double>(i)});
    dates.push_back(i % 7 == 3 ? kNoDate : 1990 + 0.1 * static_cast<double>(i));
  }
  std::vector<double> all = points;
  std::vector<ChainStep> failed(count);
  const std::size_t converted = chain.ToLocalDatedBatch(PointDates(dates.data()), &all[0], &all[1],
                                                        &all[2], count, 3, failed.data());
  EXPECT_EQ(converted, count - (count + 3) / 7);
  for (std::size_t i = 0; i < count; ++i) {
    Point p{points[3 * i], points[3 * i + 1], points[3 * i + 2]};
    const ChainResult one = chain.ToLocal(p.b, p.l, p.h, dates[i]);
    ASSERT_EQ(one.failedAt, failed[i]) << i;
    if (i % 7 == 3) {
      ASSERT_EQ(failed[i], ChainStep::missingDate);
      ASSERT_TRUE(std::isnan(all[3 * i]));
      continue;
    }
    ASSERT_EQ(p.b, all[3 * i]);
    ASSERT_EQ(p.l, all[3 * i + 1]);
    ASSERT_EQ(p.h, all[3 * i + 2]);
  }
  chain.ToGlobalDatedBatch(PointDates(dates.data()), &all[0], &all[1], &all[2], count, 3);
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 7 == 3) continue;
    ASSERT_NEAR(all[3 * i], points[3 * i], 1e-14);
    ASSERT_NEAR(all[3 * i + 2], points[3 * i + 2], 1e-8);
  }
}

// From the date to 2020.0 with the plate, and at that date to ETRF2014: behind a motion a step keeps
// the date that it expects.
TEST(ChainDates, StepsKeepTheDateThatTheyExpect) {
  const auto change = EtrfChange();
  const PlateMotion europe(AngularVelocity(-0.085, -0.531, 0.770), 2020);
  CoordinateChain chain;
  chain.SetGlobalEllipsoid(&kGrs80);
  ASSERT_TRUE(chain.AddShift(ShiftPlace::beforeDatum,
                             {.shift = &europe, .direction = ShiftDirection::inverse}));
  ASSERT_TRUE(chain.AddShift(ShiftPlace::afterDatum, {.shift = change.get(), .date = 2020}));
  Point p = kBudd;
  ASSERT_TRUE(chain.ToLocal(p.b, p.l, p.h, 2015));

  double x[] = {kBudd.b, kBudd.l, kBudd.h};
  kGrs80.BLH_to_XYZ_Batch(x, x + 1, x + 2, 1);
  ASSERT_TRUE(europe.Inverse(x[0], x[1], x[2], 2015));
  ASSERT_TRUE(change->Forward(x[0], x[1], x[2], 2020));
  EXPECT_LE(Distance(p, At(x[0], x[1], x[2])), kSameMetres);
  ASSERT_TRUE(chain.ToGlobal(p.b, p.l, p.h, 2015));
  EXPECT_LE(Distance(p, kBudd), kSameMetres);

  CoordinateChain fixed;
  fixed.SetGlobalEllipsoid(&kGrs80);
  fixed.AddShift(ShiftPlace::beforeDatum, {.shift = change.get(), .date = 2020});
  EXPECT_FALSE(fixed.NeedsDates());
  EXPECT_TRUE(fixed.ToLocal(p.b, p.l, p.h));
}

TEST(ChainDates, RefusesOtherYears) {
  const TimeSpecificSimilarity at2014({0.054, 0.051, -0.085}, {0.0021, 0.0126, -0.0204}, 2.5e-9,
                                      RotationSense::positionVector, 2014.81);
  CoordinateChain chain;
  chain.SetGlobalEllipsoid(&kGrs80);
  chain.AddShift(ShiftPlace::afterDatum, {&at2014});
  Point p = kBudd;
  EXPECT_TRUE(chain.ToLocal(p.b, p.l, p.h, 2014.81));
  EXPECT_EQ(chain.ToLocal(p.b, p.l, p.h, 2020).failedAt, ChainStep::modelYears);
  EXPECT_EQ(chain.ToGlobal(p.b, p.l, p.h, 2020).failedAt, ChainStep::modelYears);
}

TEST(ChainDates, StandAroundTheDatumOnly) {
  const auto change = EtrfChange();
  CoordinateChain chain;
  EXPECT_FALSE(chain.AddShift(ShiftPlace::heights, {change.get()}));
  EXPECT_FALSE(chain.AddShift(ShiftPlace::afterProjection, {change.get()}));
}

// Bits of a chain without such steps do not depend on a date.
TEST(ChainDates, AreIgnoredWithoutNeed) {
  const TTMProj projection(6378137, 298.257222101, 0.15, 0.9996, 0, 500000, 0);
  const CoordinateOffset offset(ShiftSpace::geographic, 1e-6, 2e-6, 0.5);
  CoordinateChain chain(&kGrs80, nullptr, &projection);
  chain.AddShift(ShiftPlace::beforeDatum, {&offset});
  EXPECT_FALSE(chain.NeedsDates());
  for (const double date : {2020.0, kNoDate, HUGE_VAL}) {
    Point p{0.8, 0.16, 100}, q = p;
    ASSERT_TRUE(chain.ToLocal(p.b, p.l, p.h));
    ASSERT_TRUE(chain.ToLocal(q.b, q.l, q.h, date));
    EXPECT_EQ(p.b, q.b);
    EXPECT_EQ(p.l, q.l);
    EXPECT_EQ(p.h, q.h);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
