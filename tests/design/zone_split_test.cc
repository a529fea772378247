#include "geomath/design/zone_split.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/design/terrain.h"

namespace zel_cs::geomath {
namespace {

const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

DesignOptions OptionsFor(std::vector<ZoneFamily> families) {
  DesignOptions options;
  options.ellipsoid = kGrs80;
  options.families = std::move(families);
  return options;
}

// Level ground of width w has |δ| up to w²/16R² in a zone with its axis along the middle (half the sagitta
// of the scale), so that a limit L lets a strip be 4·R·√L wide.
TEST(ZoneSplitTest, NeedsTheFewestStripsThatMeetTheLimit) {
  constexpr double kLimit = 10e-6, kHalfEast = 150e3, kHalfNorth = 40e3;
  const Terrain terrain =
      LatticeAbout(50, 10, kHalfNorth, kHalfEast, 30, kGrs80, [](double, double) { return 300.0; });
  const DesignOptions options = OptionsFor({ZoneFamily::transverseMercator});
  const ZoneSplit split = SplitZones(terrain.Points(), options, kLimit);
  ASSERT_EQ(split.status, DesignStatus::done);
  const double widest = 4 * kGrs80.GetGaussianRadius(terrain.b0) * std::sqrt(kLimit);
  EXPECT_EQ(split.zones.size(), static_cast<std::size_t>(std::ceil(2 * kHalfEast / widest)));
  EXPECT_FALSE(split.across);
  EXPECT_NEAR(std::abs(std::sin(split.azimuth)), 1, 1e-3);
  std::vector<int> held(terrain.b.size(), 0);
  for (const SplitZone& zone : split.zones) {
    const std::vector<double> delta = terrain.Distortions(zone.zone, kGrs80);
    for (const std::size_t i : zone.points) {
      ++held[i];
      EXPECT_LE(std::abs(delta[i]), kLimit);
    }
    EXPECT_LE(zone.value, kLimit);
  }
  EXPECT_TRUE(std::all_of(held.begin(), held.end(), [](int times) { return times == 1; }));
}

// Lambert zones serve an area that is long from west to east as a whole, whatever its length; a plateau
// above the northern half makes two of it, one beside the other.
TEST(ZoneSplitTest, StripsLieAcrossWhereThatTakesFewer) {
  const Terrain terrain = LatticeAbout(45, 10, 60e3, 150e3, 24, kGrs80, [](double north, double) {
    return north > 0 ? 1000.0 : 200.0;
  });
  const ZoneSplit split = SplitZones(terrain.Points(), OptionsFor({ZoneFamily::lambert}), 10e-6);
  ASSERT_EQ(split.status, DesignStatus::done);
  EXPECT_EQ(split.zones.size(), 2u);
  EXPECT_TRUE(split.across);
}

TEST(ZoneSplitTest, OneZoneAndNoneAreAnswersToo) {
  const Terrain level =
      LatticeAbout(45, 10, 10e3, 10e3, 5, kGrs80, [](double, double) { return 100.0; });
  EXPECT_EQ(SplitZones(level.Points(), OptionsFor({ZoneFamily::lambert}), 10e-6).zones.size(), 1u);
  // Two heights at every place: no zone is right for both.
  Terrain cliffs = level;
  const std::size_t count = level.b.size();
  for (std::size_t i = 0; i < count; ++i) {
    cliffs.b.push_back(level.b[i]);
    cliffs.l.push_back(level.l[i]);
    cliffs.h.push_back(900);
  }
  const ZoneSplit none = SplitZones(cliffs.Points(), OptionsFor({ZoneFamily::lambert}), 10e-6);
  EXPECT_EQ(none.status, DesignStatus::done);
  EXPECT_TRUE(none.zones.empty());
  EXPECT_EQ(SplitZones(level.Points(), OptionsFor({ZoneFamily::lambert}), 0).status,
            DesignStatus::badValue);
  DesignOptions stopped = OptionsFor({ZoneFamily::lambert});
  stopped.progress = [](double) { return false; };
  EXPECT_EQ(SplitZones(level.Points(), stopped, 10e-6).status, DesignStatus::stopped);
}

}  // namespace
}  // namespace zel_cs::geomath
