#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "geomath/frame/plate_motion.h"
#include "geomath/frame/time_dependent_similarity.h"
#include "geomath/frame/time_specific_similarity.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNanometre = 1.5e-9;  // and the rounding of 6.4e6 m, 0.9 nm

// The size of NAD83, with rates a hundred times as large: 0.3″ and 1 ppm over the years below.
TimeDependentParameters Large(RotationSense sense = RotationSense::positionVector) {
  TimeDependentParameters p;
  p.shift = {1.0053, -1.9092, -0.5416};
  p.rotation = {0.0267814, -0.0004203, 0.0109321};
  p.scale = 3.7e-9;
  p.shiftRate = {0.08, -0.06, -0.14};
  p.rotationRate = {0.00667, -0.0757, -0.00513};
  p.scaleRate = -7e-9;
  p.epoch = 2010;
  p.sense = sense;
  return p;
}

std::vector<double> Points(std::size_t count) {
  std::vector<double> points;
  for (std::size_t i = 0; i < count; ++i) {
    const double b = std::fmod(static_cast<double>(i) * 0.618, 3.1) - 1.55;
    const double l = std::fmod(static_cast<double>(i) * 0.755, 6.2) - 3.1;
    const double r = 6.37e6 + 100 * static_cast<double>(i);
    points.insert(points.end(),
                  {r * std::cos(b) * std::cos(l), r * std::cos(b) * std::sin(l), r * std::sin(b)});
  }
  return points;
}

std::vector<double> Dates(std::size_t count) {
  std::vector<double> dates;
  for (std::size_t i = 0; i < count; ++i)
    dates.push_back(1985 + std::fmod(0.37 * static_cast<double>(i), 60));
  return dates;
}

TEST(TimeDependentSimilarity, InverseIsTheInverse) {
  const TimeDependentSimilarity similarity(Large());
  const std::size_t count = 1000;
  const std::vector<double> given = Points(count), dates = Dates(count);
  std::vector<double> p = given;
  ASSERT_EQ(similarity.ForwardDatedBatch(PointDates(dates.data()), &p[0], &p[1], &p[2], count, 3),
            count);
  ASSERT_EQ(similarity.InverseDatedBatch(PointDates(dates.data()), &p[0], &p[1], &p[2], count, 3),
            count);
  double worst = 0;
  for (std::size_t i = 0; i < p.size(); ++i) worst = std::max(worst, std::abs(p[i] - given[i]));
  EXPECT_LE(worst, kNanometre);
}

TEST(TimeDependentSimilarity, SensesDifferInTheSignOfRotations) {
  TimeDependentParameters turned = Large(RotationSense::coordinateFrame);
  turned.rotation = -turned.rotation;
  turned.rotationRate = -turned.rotationRate;
  double p[] = {4e6, 1e6, 4.8e6}, q[] = {4e6, 1e6, 4.8e6};
  ASSERT_TRUE(TimeDependentSimilarity(Large()).Forward(p[0], p[1], p[2], 2031.25));
  ASSERT_TRUE(TimeDependentSimilarity(turned).Forward(q[0], q[1], q[2], 2031.25));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(p[i], q[i]);
}

// One point, many, one date for all, on every instruction set.
TEST(TimeDependentSimilarity, SameBitsEverywhere) {
  const TimeDependentSimilarity similarity(Large());
  const std::size_t count = 700;
  const std::vector<double> given = Points(count), dates = Dates(count);
  const auto best = simd::ActiveInstructionSet();
  using enum simd::InstructionSet;
  for (const bool forward : {true, false}) {
    std::vector<double> expected;
    for (const auto set : {baseline, avx2, avx512}) {
      simd::ForceInstructionSet(set);
      std::vector<double> all = given;
      const PointDates each(dates.data());
      const auto run =
          forward ? &CoordinateShift::ForwardDatedBatch : &CoordinateShift::InverseDatedBatch;
      (similarity.*run)(each, &all[0], &all[1], &all[2], count, 3, nullptr);
      for (std::size_t i = 0; i < count; ++i) {
        double one[] = {given[3 * i], given[3 * i + 1], given[3 * i + 2]};
        if (forward)
          similarity.Forward(one[0], one[1], one[2], dates[i]);
        else
          similarity.Inverse(one[0], one[1], one[2], dates[i]);
        for (std::size_t k = 0; k < 3; ++k) ASSERT_EQ(one[k], all[3 * i + k]) << i;
      }
      if (expected.empty()) expected = all;
      ASSERT_EQ(all, expected);
    }
  }
  simd::ForceInstructionSet(best);
}

// A date that is refused refuses its point alone.
TEST(TimeDependentSimilarity, RefusesPointsWithoutADate) {
  const TimeDependentSimilarity similarity(Large());
  double x[] = {4e6, 4e6, 4e6, HUGE_VAL}, y[] = {1e6, 1e6, 1e6, 1e6};
  double z[] = {4.8e6, 4.8e6, 4.8e6, 4.8e6};
  const double dates[] = {2020, kNoDate, -HUGE_VAL, 2020};
  ShiftStatus status[4];
  EXPECT_EQ(similarity.ForwardDatedBatch(PointDates(dates), x, y, z, 4, 1, status), 1U);
  EXPECT_EQ(status[0], ShiftStatus::converted);
  EXPECT_EQ(status[1], ShiftStatus::noDate);
  EXPECT_EQ(status[2], ShiftStatus::otherDate);
  EXPECT_EQ(status[3], ShiftStatus::input);
  EXPECT_TRUE(std::isnan(x[1]) && std::isnan(y[2]) && std::isnan(z[3]));
  double p[] = {4e6, 1e6, 4.8e6};
  ASSERT_TRUE(similarity.Forward(p[0], p[1], p[2], 2020));
  EXPECT_EQ(x[0], p[0]);
  EXPECT_EQ(similarity.ForwardBatch(p, p + 1, p + 2, 1), 0U);
  EXPECT_STREQ(ShiftStatusName(ShiftStatus::noDate), "without a date");
  EXPECT_STREQ(ShiftStatusName(ShiftStatus::otherDate), "at a date outside the years of the model");
}

// EPSG operations 9225 (method 1065, WGS 84 to ETRS89 at 2014.81) and 7703 (1066, PZ-90.02 to
// PZ-90.11 at 2010) in 40-digit arithmetic.
TEST(TimeSpecificSimilarity, FortyDigits) {
  constexpr double kDigits = 2e-9;  // the rounding of doubles
  const TimeSpecificSimilarity etrs89({0.054, 0.051, -0.085}, {0.0021, 0.0126, -0.0204}, 0.0025e-6,
                                      RotationSense::positionVector, 2014.81);
  double p[] = {3513638.1938, 778956.4525, 5248216.469};
  ASSERT_TRUE(etrs89.Forward(p[0], p[1], p[2], 2014.81));
  EXPECT_NEAR(p[0], 3513638.6542197408, kDigits);
  EXPECT_NEAR(p[1], 778956.10450902724, kDigits);
  EXPECT_NEAR(p[2], 5248216.1904152211, kDigits);
  ASSERT_TRUE(etrs89.Inverse(p[0], p[1], p[2], 2014.81));
  EXPECT_NEAR(p[0], 3513638.1938, kDigits);
  EXPECT_NEAR(p[2], 5248216.469, kDigits);

  const TimeSpecificSimilarity pz90({-0.373, 0.186, 0.202}, {-0.0023, 0.00354, -0.00421}, -0.008e-6,
                                    RotationSense::coordinateFrame, 2010);
  double q[] = {2845456.0813, 2160957.4270, 5265991.2326};
  ASSERT_TRUE(pz90.Forward(q[0], q[1], q[2], 2010));
  EXPECT_NEAR(q[0], 2845455.5510527232, kDigits);
  EXPECT_NEAR(q[1], 2160957.5950704001, kDigits);
  EXPECT_NEAR(q[2], 5265991.4654031569, kDigits);
}

TEST(TimeSpecificSimilarity, HoldsAtItsEpochOnly) {
  const TimeSpecificSimilarity s({0, 0, 0}, {0, 0, 0}, 0, RotationSense::positionVector, 2014.81);
  double p[] = {4e6, 1e6, 4.8e6};
  EXPECT_TRUE(s.Forward(p[0], p[1], p[2], 2014.81));
  EXPECT_TRUE(s.Forward(p[0], p[1], p[2], 2014.8137));  // the same day of the calendar
  EXPECT_EQ(s.Forward(p[0], p[1], p[2], 2014.82).status, ShiftStatus::otherDate);
  EXPECT_EQ(s.Inverse(p[0], p[1], p[2], 2015).status, ShiftStatus::otherDate);
  EXPECT_EQ(s.Forward(p[0], p[1], p[2]).status, ShiftStatus::noDate);
}

}  // namespace
}  // namespace zel_cs::geomath
