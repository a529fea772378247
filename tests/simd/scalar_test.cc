// The functions of one number against the C library's extended precision (64-bit mantissa), which tells
// errors down to a thousandth of a unit in the last place of a double, and its limits.
#include "geomath/simd/scalar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zel_cs::geomath {
namespace {

// The bounds that the header promises.
constexpr double kBest = 0.9, kFarAngles = 1.6, kOthers = 1.3;
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double Ulps(double got, long double want) {
  const double rounded = static_cast<double>(want);
  const double unit = std::nextafter(std::abs(rounded), INFINITY) - std::abs(rounded);
  return static_cast<double>(std::abs(static_cast<long double>(got) - want) / unit);
}

struct Interval {
  double low, high;
};

// The worst error over numbers spread evenly, and over their 1e-1, 1e-2 … 1e-10, 1e-11-fold.
template <class Function, class Reference>
double WorstUlps(Interval interval, Function function, Reference reference) {
  constexpr int kCount = 3001;
  double worst = 0;
  for (double part = 1; part > 1e-11; part /= 10)
    for (int i = 0; i < kCount; ++i) {
      const double x = part * (interval.low + (interval.high - interval.low) * (i + 0.37) / kCount);
      worst = std::max(worst, Ulps(function(x), reference(static_cast<long double>(x))));
    }
  return worst;
}

TEST(Scalar, FunctionsHoldTheirUlps) {
  if (LDBL_MANT_DIG < 64) GTEST_SKIP() << "long double is no wider than double here";
  using Function = double (*)(double);
  using Reference = long double (*)(long double);
  struct Row {
    const char* name;
    Function function;
    Reference reference;
    Interval interval;
    double promised;
  };
  const Row rows[] = {
      {"sin", Sin, std::sin, {-7, 7}, kBest},
      {"sin, far", Sin, std::sin, {-1000, 1000}, kBest},
      {"sin, farther", Sin, std::sin, {-1e6, 1e6}, kFarAngles},
      {"cos", Cos, std::cos, {-7, 7}, kBest},
      {"cos, far", Cos, std::cos, {-1000, 1000}, kBest},
      {"cos, farther", Cos, std::cos, {-1e6, 1e6}, kFarAngles},
      {"atan", Atan, std::atan, {-5, 5}, kBest},
      {"atan, far", Atan, std::atan, {-1e11, 1e11}, kBest},
      {"exp", Exp, std::exp, {-707, 709}, kBest},
      {"log", Log, std::log, {0.3, 3}, kBest},
      {"log, far", Log, std::log, {1e-3, 1e300}, kBest},
      {"log1p", Log1p, std::log1p, {-0.99, 20}, kBest},
      {"tan", Tan, std::tan, {-7, 7}, kOthers},
      {"asin", Asin, std::asin, {-1, 1}, kOthers},
      {"expm1", Expm1, std::expm1, {-40, 40}, kOthers},
      {"expm1, near", Expm1, std::expm1, {-1, 1}, kOthers},
      {"sinh", Sinh, std::sinh, {-3, 3}, kOthers},
      {"sinh, far", Sinh, std::sinh, {-700, 700}, kOthers},
      {"cosh", Cosh, std::cosh, {-3, 3}, kOthers},
      {"cosh, far", Cosh, std::cosh, {-700, 700}, kOthers},
      {"tanh", Tanh, std::tanh, {-25, 25}, kOthers},
      {"tanh, near", Tanh, std::tanh, {-1, 1}, kOthers},
      {"asinh", Asinh, std::asinh, {-3, 3}, kOthers},
      {"asinh, far", Asinh, std::asinh, {-1e12, 1e12}, kOthers},
      {"atanh", Atanh, std::atanh, {-1, 1}, kOthers},
  };
  for (const Row& row : rows) {
    const double worst = WorstUlps(row.interval, row.function, row.reference);
    std::printf("%-12s %.3f ulp\n", row.name, worst);
    EXPECT_LE(worst, row.promised) << row.name;
  }
}

TEST(Scalar, FunctionsOfTwoNumbersHoldTheirUlps) {
  if (LDBL_MANT_DIG < 64) GTEST_SKIP() << "long double is no wider than double here";
  for (const double y : {0.7, -1.3, 1e-9, -4e7}) {
    const auto atan2 = [y](auto x) { return std::atan2(static_cast<long double>(y), x); };
    const auto hypot = [y](auto x) { return std::hypot(static_cast<long double>(y), x); };
    for (const Interval interval : {Interval{-3, 3}, Interval{-1e9, 1e8}}) {
      EXPECT_LE(WorstUlps(
                    interval, [y](double x) { return Atan2(y, x); }, atan2),
                kBest)
          << y;
      EXPECT_LE(WorstUlps(
                    interval, [y](double x) { return Hypot(y, x); }, hypot),
                kOthers)
          << y;
    }
  }
  for (const double y : {0.3, 1.7, -2.2, 40.0}) {
    const auto pow = [y](auto x) { return std::pow(x, static_cast<long double>(y)); };
    const double largest = std::abs(y) * std::log(3e11);  // of |y·log x|
    EXPECT_LE(WorstUlps(
                  {0.3, 3}, [y](double x) { return Pow(x, y); }, pow),
              kBest + largest / 16)
        << y;
  }
}

// NaN for NaN, and otherwise the same number with the same sign.
::testing::AssertionResult Same(double got, double want) {
  if (std::isnan(want) ? std::isnan(got)
                       : std::bit_cast<std::uint64_t>(got) == std::bit_cast<std::uint64_t>(want))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << got << ", the standard library: " << want;
}

// Where the result is exact, infinite or no number, the standard library fixes it (C, annex F).
TEST(Scalar, LimitsAreThoseOfTheStandardLibrary) {
  struct Row {
    const char* name;
    double (*own)(double);
    double (*standard)(double);
  };
  const Row rows[] = {
      {"sin", Sin, std::sin},       {"tan", Tan, std::tan},       {"asin", Asin, std::asin},
      {"atan", Atan, std::atan},    {"exp", Exp, std::exp},       {"expm1", Expm1, std::expm1},
      {"log", Log, std::log},       {"log1p", Log1p, std::log1p}, {"sinh", Sinh, std::sinh},
      {"cosh", Cosh, std::cosh},    {"tanh", Tanh, std::tanh},    {"asinh", Asinh, std::asinh},
      {"atanh", Atanh, std::atanh}, {"cos", Cos, std::cos}};
  for (const Row& row : rows)
    for (const double x : {0.0, -0.0, kInf, -kInf, kNan})
      EXPECT_TRUE(Same(row.own(x), row.standard(x))) << row.name << " of " << x;
  for (const double x : {1.0, -1.0, 2.0, -2.0}) {
    EXPECT_TRUE(Same(Atanh(2 * x), kNan) && Same(Atanh(x), std::atanh(x))) << x;
    EXPECT_TRUE(Same(Asin(2 * x), kNan)) << x;
  }
  EXPECT_TRUE(Same(Log(-1), kNan) && Same(Log1p(-1), -kInf) && Same(Log1p(-2), kNan));
  EXPECT_TRUE(Same(Exp(710), kInf) && Same(Exp(-750), 0.0) && Same(Sinh(-711), -kInf));
  EXPECT_EQ(Exp(-745), std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(Log(std::numeric_limits<double>::denorm_min()), std::log(0x1p-1074));

  const double edges[] = {0.0, -0.0, 1.0, -1.0, kInf, -kInf, kNan};
  for (const double y : edges)
    for (const double x : edges) {
      EXPECT_TRUE(Same(Atan2(y, x), std::atan2(y, x))) << y << " " << x;
      if (y != 1 && y != -1) {
        EXPECT_TRUE(Same(Hypot(y, x), std::hypot(y, x))) << y << " " << x;
      }
      if (!std::signbit(x)) {
        EXPECT_TRUE(Same(Pow(x, y), std::pow(x, y))) << x << " " << y;
      }
    }
  EXPECT_EQ(Atan2(1e308, 1e308), Atan2(1, 1));
  EXPECT_EQ(Atan2(5e-324, -5e-324), Atan2(1, -1));
  EXPECT_EQ(Hypot(3e300, 4e300), 5e300);
  EXPECT_DOUBLE_EQ(Hypot(3e-300, -4e-300), 5e-300);
}

// Sines of whole turns and beyond, which the exact remainder decides.
TEST(Scalar, FarAnglesAreWithinHalfAUnitInTheirLastPlace) {
  for (const double x : {1e7, -3e8, 123456789.123, 4e12}) {
    const double unit = std::nextafter(std::abs(x), kInf) - std::abs(x);
    const auto [sine, cosine] = SinCos(x);
    EXPECT_NEAR(sine, static_cast<double>(std::sin(static_cast<long double>(x))), unit / 2 + 2e-16);
    EXPECT_NEAR(cosine, static_cast<double>(std::cos(static_cast<long double>(x))),
                unit / 2 + 2e-16);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
