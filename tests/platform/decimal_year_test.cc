#include "geomath/platform/decimal_year.h"

#include <gtest/gtest.h>

namespace zel_cs::geomath {
namespace {

TEST(DecimalYear, CalendarDays) {
  EXPECT_EQ(DecimalYear(2010, 1, 1), 2010.0);
  EXPECT_EQ(DecimalYear(2012, 7, 2), 2012.5);
  EXPECT_EQ(DecimalYear(2012, 12, 31), 2012 + 365.0 / 366);
  EXPECT_EQ(DecimalYear(2000, 2, 29), 2000 + 59.0 / 366);
  EXPECT_EQ(DecimalYear(2011, 12, 31), 2011 + 364.0 / 365);
  constexpr int kNoDates[][3] = {{1900, 2, 29}, {2011, 2, 29}, {2011, 4, 31}, {2011, 0, 1},
                                 {2011, 13, 1}, {2011, 1, 0},  {2011, 1, 32}, {2011, -1, 1}};
  for (const auto& d : kNoDates) EXPECT_FALSE(DecimalYear(d[0], d[1], d[2])) << d[1] << "/" << d[2];
}

}  // namespace
}  // namespace zel_cs::geomath
