#include "geomath/platform/read_number.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <utility>

using namespace zel_cs::geomath;

namespace {

TEST(ReadNumber, TakesDecimalFiguresWholeOrNotAtAll) {
  const std::pair<const char*, double> numbers[] = {{"1.5", 1.5},
                                                    {"-.5", -0.5},
                                                    {"+2.", 2},
                                                    {"1e3", 1000},
                                                    {"-4.841D-04", -4.841e-4},
                                                    {"3.9860d+14", 3.986e14},
                                                    {"1E-2", 0.01},
                                                    {"-0.0", 0}};
  for (const auto& [text, value] : numbers) EXPECT_EQ(ReadNumber(text), value) << text;
  for (const char* text :
       {"",    "+",   "-",   "1,5", "1.5x",      " 1",   "1 ",    "oops",  "1e",    "1e-",
        "--1", "+-1", "nan", "inf", "-infinity", "0x10", "1e999", "1D2D3", "1e2D3", "\xC2\xBD"})
    EXPECT_FALSE(ReadNumber(text)) << text;
  EXPECT_FALSE(ReadNumber("1D0" + std::string(200, '0')));
  EXPECT_EQ(ReadInteger("-12"), -12);
  EXPECT_EQ(ReadInteger("+12"), 12);
  for (const char* text : {"", "1.0", "1e2", "99999999999", "1x"})
    EXPECT_FALSE(ReadInteger(text)) << text;
}

TEST(ReadNumber, IsTheSameUnderALocaleWithDecimalCommas) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  bool found = false;
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR"})
    found = found || std::setlocale(LC_NUMERIC, name);
  if (!found) GTEST_SKIP() << "no such locale is installed";
  EXPECT_EQ(ReadNumber("1.5"), 1.5);
  EXPECT_FALSE(ReadNumber("1,5"));
  std::setlocale(LC_NUMERIC, before.c_str());
}

}  // namespace
