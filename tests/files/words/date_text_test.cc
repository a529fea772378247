#include "files/words/date_text.h"

#include <gtest/gtest.h>

using namespace geomath_files;

namespace {

TEST(ParseDate, TakesYearsAndDays) {
  EXPECT_EQ(ParseDate(" 2026.9 ").value, 2026.9);
  EXPECT_EQ(ParseDate("2026").value, 2026);
  EXPECT_EQ(ParseDate("2026-01-01").value, 2026);
  EXPECT_EQ(ParseDate("2026-11-23").value, 2026 + 326 / 365.0);
  EXPECT_EQ(ParseDate("2026-5-3").value, ParseDate("2026-05-03").value);
  EXPECT_EQ(ParseDate("2026/5/13 12:00").value, ParseDate("2026-05-13T12:00").value);
  EXPECT_EQ(ParseDate("2024/12/31").value, 2024 + 365 / 366.0);
}

TEST(ParseDate, TimesArePartsOfTheDay) {
  const double day = 2026 + 326 / 365.0, rounding = 5e-13;
  for (const char* noon : {"2026-11-23T12:00:00Z", "2026-11-23 12:00", "2026/11/23 12:00:00.5+00",
                           "2026-11-23T14:30:00+02:30", "2026-11-23T07:00-05"})
    EXPECT_NEAR(ParseDate(noon).value, day + 0.5 / 365, rounding) << noon;
  EXPECT_NEAR(ParseDate("2024-02-29T18:00:30Z").value, 2024 + (59 + 0.75 + 30 / 86400.0) / 366,
              rounding);
}

TEST(ParseDate, RefusesWhatIsNone) {
  for (const char* none : {"", "26.9", "20261123", "2026-13-01", "2026-02-29", "2026-2-",
                           "2026-2-1-", "2026-002-01", "23.11.2026", "2026-11/23", "2026-11-23T",
                           "2026-11-23T25:00", "2026-11-23T12:00X", "today", "nan", "2026-11"})
    EXPECT_FALSE(ParseDate(none)) << none;
  EXPECT_EQ(ParseDate("1492").problem,
            "\"1492\" is no date from 1800 to 2200: a decimal year (2026.9) or a day (2026-11-23) "
            "belongs there");
}

}  // namespace
