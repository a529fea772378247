#include "geomath/frame/frame_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>
#include <string>

#include "geomath/frame/frame_change.h"
#include "geomath/frame/plate_motion.h"

namespace zel_cs::geomath {
namespace {

using enum ReferenceFrame;

struct Xyz {
  double x, y, z;
};

struct Worked {
  const char* name;
  ReferenceFrame from, to;
  double date;
  Xyz given, expected;
  double digit;  // half a unit of the last place printed, and the rounding of it
};

void PrintTo(const Worked& w, std::ostream* out) { *out << w.name; }

constexpr double kTenth = 0.55e-4;      // printed to 0.1 mm
constexpr double kHundredth = 0.55e-5;  // 0.01 mm
constexpr double kMicrometre = 0.55e-6;

// Published results (GDA2020 Technical Manual, ICSM 2020, Alice Springs), and beside them 40-digit
// evaluations of the published sets, which agree with the results to their last digit.
constexpr Worked kWorked[] = {
    {"AliceSpringsPublished",
     gda94,
     gda2020,
     kNoDate,
     {-4052051.7643, 4212836.2017, -2545106.0245},
     {-4052052.7379, 4212835.9897, -2545104.5898},
     kTenth},
    {"AliceSprings40Digits",
     gda94,
     gda2020,
     kNoDate,
     {-4052051.7643, 4212836.2017, -2545106.0245},
     {-4052052.73793, 4212835.98975, -2545104.58982},
     kHundredth},
    {"Itrf2014At2018Published",
     itrf2014,
     gda2020,
     2018,
     {-4052052.6588, 4212835.9938, -2545104.6946},
     {-4052052.7373, 4212835.9835, -2545104.5867},
     kTenth},
    {"Itrf2014At2018",
     itrf2014,
     gda2020,
     2018,
     {-4052052.6588, 4212835.9938, -2545104.6946},
     {-4052052.73732, 4212835.98348, -2545104.58667},
     kHundredth},
    // IOGP Guidance Note 7-2, method 1056.
    {"GuidanceNote",
     itrf2008,
     gda94,
     2013.90,
     {-3789470.710, 4841770.404, -1690893.952},
     {-3789470.00416, 4841770.68645, -1690895.10802},
     kHundredth},
    {"BuddToEtrf2014",
     itrf2014,
     etrf2014,
     2015,
     {3513638.0964, 778956.5470, 5248216.5248},
     {3513638.523286, 778956.149736, 5248216.297966},
     kMicrometre},
    {"BuddToEtrf2000",
     itrf2014,
     etrf2000,
     2015,
     {3513638.0964, 778956.5470, 5248216.5248},
     {3513638.562904, 778956.197418, 5248216.246145},
     kMicrometre},
    {"BuddToItrf2020",
     itrf2014,
     itrf2020,
     2015,
     {3513638.0964, 778956.5470, 5248216.5248},
     {3513638.099276, 778956.548227, 5248216.525604},
     kMicrometre},
    {"WestCoast",
     itrf2014,
     nad83_2011,
     2024.5,
     {-2409600, -4700000, 3560000},
     {-2409599.016951, -4700001.316788, 3560000.200657},
     kMicrometre},
    {"Natrf2022",
     itrf2020,
     natrf2022,
     2026.9,
     {-2409600, -4700000, 3560000},
     {-2409599.908771, -4699999.998310, 3560000.063979},
     kMicrometre},
};

class WorkedNumbers : public testing::TestWithParam<Worked> {};

TEST_P(WorkedNumbers, ToTheLastDigitBothWays) {
  const Worked& w = GetParam();
  const auto change = FrameChange::Make(w.from, w.to);
  ASSERT_TRUE(change);
  Xyz p = w.given;
  ASSERT_TRUE(change->Forward(p.x, p.y, p.z, w.date));
  EXPECT_NEAR(p.x, w.expected.x, w.digit);
  EXPECT_NEAR(p.y, w.expected.y, w.digit);
  EXPECT_NEAR(p.z, w.expected.z, w.digit);
  p = w.expected;
  ASSERT_TRUE(change->Inverse(p.x, p.y, p.z, w.date));
  EXPECT_NEAR(p.x, w.given.x, w.digit);
  EXPECT_NEAR(p.y, w.given.y, w.digit);
  EXPECT_NEAR(p.z, w.given.z, w.digit);
}

INSTANTIATE_TEST_SUITE_P(Published, WorkedNumbers, testing::ValuesIn(kWorked),
                         [](const auto& row) { return std::string(row.param.name); });

// GDA2020 Technical Manual: the same point from 2018 to 2025 with the Australian plate, whose motion
// in ITRF2014 is the transformation above.
TEST(PlateMotion, MovesAliceSprings) {
  const PlateMotion plate(AngularVelocity(1.50379, 1.18346, 1.20716), 2018);
  Xyz p{-4052052.6588, 4212835.9938, -2545104.6946};
  ASSERT_TRUE(plate.Forward(p.x, p.y, p.z, 2025));
  EXPECT_NEAR(p.x, -4052052.9336, kTenth);
  EXPECT_NEAR(p.y, 4212835.9577, kTenth);
  EXPECT_NEAR(p.z, -2545104.3168, 1e-4);  // 40 digits say .31686
  EXPECT_NEAR(p.x, -4052052.93361, kHundredth);
  EXPECT_NEAR(p.y, 4212835.95769, kHundredth);
  EXPECT_NEAR(p.z, -2545104.31686, kHundredth);
}

// A point on the equator at 0°: v = ω × X, and the rate of the origin.
TEST(PlateMotion, TurnsCounterClockwiseAboutItsPole) {
  constexpr double kMasPerYear = 4.84813681109536e-09;  // rad
  const double radius = 6378137;
  const PlateMotion plate(AngularVelocityAbout(1.5707963267948966, 0, 1), 2000, {0.001, 0, 0});
  Xyz p{radius, 0, 0};
  ASSERT_TRUE(plate.Forward(p.x, p.y, p.z, 2010));
  EXPECT_NEAR(p.x, radius + 0.01, 1e-9);
  EXPECT_NEAR(p.y, 10 * 3.6 * kMasPerYear * radius, 1e-9);  // 1°/Myr is 3.6 mas/yr
  EXPECT_NEAR(p.z, 0, 1e-9);
}

TEST(FrameTable, HasEachPairOnceAndNames) {
  std::set<std::pair<ReferenceFrame, ReferenceFrame>> pairs;
  for (const FrameTransformation& row : FrameTransformations()) {
    EXPECT_TRUE(pairs.emplace(row.source, row.target).second) << row.code;
    EXPECT_FALSE(pairs.contains({row.target, row.source})) << row.code;
  }
  for (int i = 0; i <= static_cast<int>(natrf2022); ++i) {
    const auto frame = static_cast<ReferenceFrame>(i);
    EXPECT_EQ(FrameNamed(FrameName(frame)), frame);
  }
  EXPECT_STREQ(FrameName(nad83CsrsV7), "NAD83(CSRS)v7");
  EXPECT_STREQ(FrameName(static_cast<ReferenceFrame>(200)), "an unknown frame");
  EXPECT_FALSE(FrameNamed("ITRF95"));
}

std::string Way(ReferenceFrame from, ReferenceFrame to) {
  std::string way = FrameName(from);
  for (const FrameStep& step : FrameSteps(from, to))
    way += std::string(" ") +
           FrameName(step.inverse ? step.transformation->source : step.transformation->target);
  return way;
}

// Published sets before detours, and detours over the newest frame.
TEST(FrameTable, FindsTheShortestWay) {
  EXPECT_EQ(Way(itrf2020, itrf2014), "ITRF2020 ITRF2014");
  EXPECT_EQ(Way(itrf97, itrf2000), "ITRF97 ITRF2020 ITRF2000");
  EXPECT_EQ(Way(itrf2020, etrf2000), "ITRF2020 ITRF2014 ETRF2000");
  EXPECT_EQ(Way(itrf2008, etrf2000), "ITRF2008 ETRF2000");
  EXPECT_EQ(Way(etrf2000, etrf2014), "ETRF2000 ITRF2014 ETRF2014");
  EXPECT_EQ(Way(itrf2020, gda2020), "ITRF2020 ITRF2014 GDA2020");
  EXPECT_EQ(Way(itrf2020, nad83_2011), "ITRF2020 ITRF2014 NAD83(2011)");
  EXPECT_EQ(Way(natrf2022, nad83CsrsV8), "NATRF2022 ITRF2020 NAD83(CSRS)v8");
  EXPECT_EQ(Way(gda94, gda94), "GDA94");
}

TEST(FrameTable, ConnectsAllFrames) {
  for (int i = 0; i <= static_cast<int>(natrf2022); ++i)
    EXPECT_TRUE(FrameChange::Make(itrf2020, static_cast<ReferenceFrame>(i))) << i;
}

// NAD83(CSRS) of version 8 has the positions of version 7 by its definition (Natural Resources
// Canada), so that both published sets lead to one place; with rounded digits they are 0.6 mm apart.
TEST(FrameTable, CanadianVersionsAreOnePlace) {
  constexpr double kSecondOrder = 1e-6;  // scales of 1e-9 and rotations of 1e-7 times metres
  for (const double date : {1997.0, 2010.0, 2026.9}) {
    Xyz p{1106700, -4347000, 4517600}, q = p;
    ASSERT_TRUE(FrameChange::Make(itrf2014, nad83CsrsV7)->Forward(p.x, p.y, p.z, date));
    ASSERT_TRUE(FrameChange::Make(itrf2014, nad83CsrsV8)->Forward(q.x, q.y, q.z, date));
    EXPECT_NEAR(std::hypot(p.x - q.x, p.y - q.y, p.z - q.z), 0, kSecondOrder) << date;
  }
}

// ETRFyy turns with Europe since 1989.0, by its definition (Boucher and Altamimi 2011, section 3).
TEST(FrameTable, EtrfRotationsVanishIn1989) {
  for (const FrameTransformation& row : FrameTransformations()) {
    if (std::strncmp(FrameName(row.target), "ETRF", 4) != 0) continue;
    if (std::strcmp(FrameName(row.source) + 1, FrameName(row.target) + 1) != 0) continue;
    for (int i = 0; i < 3; ++i)
      EXPECT_NEAR(row.rotation[i], row.rotationRate[i] * (row.epoch - 1989), 0.00051) << row.code;
  }
}

// Ways that lead around agree within the rounding of the published sets, some millimetres.
TEST(FrameTable, DetoursAgree) {
  constexpr double kRounded = 0.004;
  constexpr double kOtherPoles = 0.02;  // two estimates of Europe's rotation, 31 years from 1989
  Xyz p{4075580, 931853, 4801568}, q = p;
  FrameChange::Make(itrf2008, etrf2014)->Forward(p.x, p.y, p.z, 2020);
  FrameChange::Make(itrf2008, itrf2020)->Forward(q.x, q.y, q.z, 2020);
  FrameChange::Make(itrf2020, etrf2014)->Forward(q.x, q.y, q.z, 2020);
  EXPECT_NEAR(std::hypot(p.x - q.x, p.y - q.y, p.z - q.z), 0, kRounded);
  Xyz r{4075580, 931853, 4801568}, s = r;
  FrameChange::Make(itrf2020, etrf2014)->Forward(r.x, r.y, r.z, 2020);
  FrameChange::Make(itrf2020, etrf2020)->Forward(s.x, s.y, s.z, 2020);
  EXPECT_NEAR(std::hypot(r.x - s.x, r.y - s.y, r.z - s.z), 0, kOtherPoles);
}

TEST(FrameChange, NeedsADateUnlessNoSetRuns) {
  Xyz p{4075580, 931853, 4801568};
  const auto change = FrameChange::Make(itrf2020, etrf2000);
  EXPECT_EQ(change->Kind(), ShiftKind::frameChange);
  EXPECT_EQ(change->Forward(p.x, p.y, p.z).status, ShiftStatus::noDate);
  EXPECT_EQ(change->Inverse(p.x, p.y, p.z, kNoDate).status, ShiftStatus::noDate);
  EXPECT_EQ(change->Forward(p.x, p.y, p.z, HUGE_VAL).status, ShiftStatus::otherDate);
  EXPECT_EQ(p.x, 4075580);
  EXPECT_EQ(FrameChange::Make(gda94, gda2020)->Kind(), ShiftKind::timeless);
}

// Plates move alike in both models; the new one is within a twentieth of a degree in a million years.
TEST(Plates, BothModelsAgree) {
  constexpr double kSameMotion = 0.08;  // mas/yr, 2.5 mm/yr on the ground
  EXPECT_EQ(Plates(PlateModel::itrf2014).size(), 11U);
  EXPECT_EQ(Plates(PlateModel::itrf2020).size(), 13U);
  int shared = 0;
  for (const TectonicPlate& a : Plates(PlateModel::itrf2014))
    for (const TectonicPlate& b : Plates(PlateModel::itrf2020)) {
      if (std::strcmp(a.name, b.name) != 0) continue;
      ++shared;
      for (int i = 0; i < 3; ++i) EXPECT_NEAR(a.velocity[i], b.velocity[i], kSameMotion) << a.name;
    }
  EXPECT_EQ(shared, 11);
}

}  // namespace
}  // namespace zel_cs::geomath
