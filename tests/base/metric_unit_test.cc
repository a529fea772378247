#include "geomath/base/metric_unit.h"

#include <gtest/gtest.h>

namespace zel_cs::geomath {
namespace {

TEST(MetricUnit, ConvertsByItsFactor) {
  const MetricUnit foot(0.3048);
  EXPECT_DOUBLE_EQ(foot.ToMetr(10.0), 3.048);
  EXPECT_DOUBLE_EQ(foot.FromMetr(3.048), 10.0);

  MetricUnit unit;
  EXPECT_EQ(unit.ToMetr(7.0), 7.0);
  unit = foot;
  EXPECT_EQ(unit.ToMetr(1.0), 0.3048);
}

}  // namespace
}  // namespace zel_cs::geomath
