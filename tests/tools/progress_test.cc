#include "tools/progress.h"

#include <gtest/gtest.h>

using geomath_files::program::ProgressLine;

TEST(Progress, ShowsShareRateAndTimeLeft) {
  EXPECT_EQ(ProgressLine(1500000, 0.25, 10, "rows"),
            "[#######.......................]  25 %  150.0 k rows/s  0:00:30 left");
  EXPECT_EQ(ProgressLine(10, 1, 4000, "rows"),
            "[##############################] 100 %  0 rows/s  0:00:00 left");
  EXPECT_EQ(ProgressLine(5000000, 0.5, 2, "rows").substr(32),
            "  50 %  2.50 M rows/s  0:00:02 left");
}

TEST(Progress, DoesWithoutAKnownEnd) {
  EXPECT_EQ(ProgressLine(3000, -1, 2, "rows"), "3.0 k rows  1.5 k rows/s");
  EXPECT_EQ(ProgressLine(0, 0, 0, "rows"), "0 rows  0 rows/s");
}
