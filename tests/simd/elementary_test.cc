// The polynomial functions against the C library's extended precision (64-bit mantissa), which
// tells errors down to a thousandth of a unit in the last place of a double.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "tests/simd/elementary_columns.h"

namespace {

namespace simd = zel_cs::geomath::simd;
using Column = std::vector<double>;

// The bounds that the functions' comment promises.
constexpr double kSinCosUlps = 1.5, kFarSinCosUlps = 2.1, kAtanUlps = 1.75, kLogUlps = 1.1,
                 kExpUlps = 1.0;
constexpr bool kHasReference = LDBL_MANT_DIG >= 64;

double Ulps(double got, long double want) {
  const double rounded = static_cast<double>(want);
  const double unit = std::nextafter(std::abs(rounded), INFINITY) - std::abs(rounded);
  return static_cast<double>(std::abs(static_cast<long double>(got) - want) / unit);
}

// Numbers spread evenly from low to high, never on round values.
Column Even(double low, double high) {
  constexpr std::size_t kCount = 40001;
  Column x(kCount);
  for (std::size_t i = 0; i < kCount; ++i)
    x[i] = low + (high - low) * (static_cast<double>(i) + 0.37) / static_cast<double>(kCount);
  return x;
}

// Numbers with evenly spread exponents from 10^low to 10^high, of both signs when `both`.
Column Logarithmic(double low, double high, bool both) {
  Column x = Even(low, high);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = std::pow(10, x[i]);
    if (both && i % 2) x[i] = -x[i];
  }
  return x;
}

template <class Reference>
double WorstUlps(const Column& x, void (*function)(const double*, double*, std::size_t),
                 Reference reference) {
  Column y(x.size());
  function(x.data(), y.data(), x.size());
  double worst = 0;
  for (std::size_t i = 0; i < x.size(); ++i)
    worst = std::max(worst, Ulps(y[i], reference(static_cast<long double>(x[i]))));
  return worst;
}

template <class Target>
struct Variant;
template <>
struct Variant<simd::Baseline> {
  static constexpr const char* kName = "Baseline";
  static constexpr auto kSet = simd::InstructionSet::baseline;
};
template <>
struct Variant<simd::Avx2> {
  static constexpr const char* kName = "Avx2";
  static constexpr auto kSet = simd::InstructionSet::avx2;
};
template <>
struct Variant<simd::Avx512> {
  static constexpr const char* kName = "Avx512";
  static constexpr auto kSet = simd::InstructionSet::avx512;
};

template <class Target>
class Elementary : public testing::Test {
 protected:
  void SetUp() override {
    if (!kHasReference) GTEST_SKIP() << "long double is no wider than double here";
    if (simd::ActiveInstructionSet() < Variant<Target>::kSet)
      GTEST_SKIP() << "this machine has no " << Variant<Target>::kName;
  }
};

#if defined(GEOMATH_HAS_AVX512)
using Targets = testing::Types<simd::Baseline, simd::Avx2, simd::Avx512>;
#elif defined(GEOMATH_HAS_AVX2)
using Targets = testing::Types<simd::Baseline, simd::Avx2>;
#else
using Targets = testing::Types<simd::Baseline>;
#endif

class TargetName {
 public:
  template <class Target>
  static std::string GetName(int) {
    return Variant<Target>::kName;
  }
};
TYPED_TEST_SUITE(Elementary, Targets, TargetName);

TYPED_TEST(Elementary, OneArgumentFunctionsHoldTheirUlps) {
  using Columns = ElementaryColumns<TypeParam>;
  const auto sine = [](long double v) { return std::sin(v); };
  const auto cosine = [](long double v) { return std::cos(v); };
  const auto arc = [](long double v) { return std::atan(v); };
  const auto log = [](long double v) { return std::log(v); };
  const auto log1p = [](long double v) { return std::log1p(v); };
  const auto exp = [](long double v) { return std::exp(v); };

  struct Row {
    const char* name;
    double worst, promised;
  };
  const Row rows[] = {
      {"sin, one turn", WorstUlps(Even(-7, 7), &Columns::Sin, sine), kSinCosUlps},
      {"sin, small", WorstUlps(Logarithmic(-12, 0, true), &Columns::Sin, sine), kSinCosUlps},
      {"sin, far", WorstUlps(Even(-99999, 99999), &Columns::Sin, sine), kFarSinCosUlps},
      {"cos, one turn", WorstUlps(Even(-7, 7), &Columns::Cos, cosine), kSinCosUlps},
      {"cos, far", WorstUlps(Even(-99999, 99999), &Columns::Cos, cosine), kFarSinCosUlps},
      {"atan", WorstUlps(Logarithmic(-12, 12, true), &Columns::Atan, arc), kAtanUlps},
      {"log", WorstUlps(Logarithmic(-300, 300, false), &Columns::Log, log), kLogUlps},
      {"log near 1", WorstUlps(Even(0.5, 2), &Columns::Log, log), kLogUlps},
      {"log1p, small", WorstUlps(Logarithmic(-12, 0, false), &Columns::Log1p, log1p), kLogUlps},
      {"log1p", WorstUlps(Even(-0.99, 20), &Columns::Log1p, log1p), kLogUlps},
      {"exp", WorstUlps(Even(-700, 700), &Columns::Exp, exp), kExpUlps},
      {"exp, small", WorstUlps(Logarithmic(-12, 0, true), &Columns::Exp, exp), kExpUlps},
  };
  for (const Row& row : rows) {
    std::printf("%-16s %.3f ulp\n", row.name, row.worst);
    EXPECT_LE(row.worst, row.promised) << row.name;
  }
}

TYPED_TEST(Elementary, Atan2HoldsItsUlpsInAllQuadrants) {
  using Columns = ElementaryColumns<TypeParam>;
  const Column angle = Even(-std::numbers::pi, std::numbers::pi);
  const Column size = Logarithmic(-5, 8, false);
  Column y(angle.size()), x(angle.size()), result(angle.size());
  for (std::size_t i = 0; i < angle.size(); ++i) {
    y[i] = size[i] * std::sin(angle[i]);
    x[i] = size[i] * std::cos(angle[i]);
  }
  Columns::Atan2(y.data(), x.data(), result.data(), result.size());
  double worst = 0;
  for (std::size_t i = 0; i < angle.size(); ++i)
    worst = std::max(worst, Ulps(result[i], std::atan2(static_cast<long double>(y[i]),
                                                       static_cast<long double>(x[i]))));
  EXPECT_LE(worst, kAtanUlps);
}

TYPED_TEST(Elementary, AxesAndNotANumber) {
  using Columns = ElementaryColumns<TypeParam>;
  const double y[] = {0.0, 1.0, -1.0, 0.0, 0.0}, x[] = {1.0, 0.0, 0.0, -1.0, 0.0};
  double angle[5];
  Columns::Atan2(y, x, angle, 5);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(angle[i], std::atan2(y[i], x[i])) << i;

  const double nan[] = {std::numeric_limits<double>::quiet_NaN()};
  for (auto* function : {&Columns::Sin, &Columns::Cos, &Columns::Exp}) {
    double result[] = {0};
    function(nan, result, 1);
    EXPECT_TRUE(std::isnan(result[0]));
  }
}

TYPED_TEST(Elementary, GivesTheBitsOfTheBaseline) {
  using One = ElementaryColumns<simd::Baseline>;
  using Two = ElementaryColumns<TypeParam>;
  const Column x = Logarithmic(-8, 2, false);
  Column first(x.size()), second(x.size());
  const auto compare = [&](auto* one, auto* two, const char* name) {
    one(x.data(), first.data(), x.size());
    two(x.data(), second.data(), x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
      ASSERT_EQ(std::bit_cast<std::uint64_t>(first[i]), std::bit_cast<std::uint64_t>(second[i]))
          << name << " of " << x[i];
  };
  compare(&One::Sin, &Two::Sin, "sin");
  compare(&One::Cos, &Two::Cos, "cos");
  compare(&One::Atan, &Two::Atan, "atan");
  compare(&One::Log, &Two::Log, "log");
  compare(&One::Log1p, &Two::Log1p, "log1p");
  compare(&One::Exp, &Two::Exp, "exp");
}

}  // namespace
