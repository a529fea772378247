#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/geomath.h"
#include "geomath/simd/instruction_set.h"
#include "tests/geoid/stored_grid.h"

namespace zel_cs::geomath {
namespace {

// Rules, each written anew from its definition: the height at (x, y), in steps from the
// south-western node, of a surface given at whole numbers.
using Rule = double (*)(const Surface& z, double x, double y);

// The interpolant along a line as a function of its node values, in the second argument's unit.
template <std::size_t N, class Line>
double Tensor(const Surface& z, int row, int column, double x, double y, Line line) {
  std::array<double, N> across, along;
  for (std::size_t r = 0; r < N; ++r) {
    for (std::size_t c = 0; c < N; ++c)
      along[c] = z(row + static_cast<int>(r), column + static_cast<int>(c));
    across[r] = line(along, y - column);
  }
  return line(across, x - row);
}

// The polynomial through the nodes 0, 1, 2, …, by Neville's scheme.
template <std::size_t N>
double Neville(std::array<double, N> y, double t) {
  for (std::size_t width = 1; width < N; ++width)
    for (std::size_t k = 0; k + width < N; ++k) {
      const double left = static_cast<double>(k), right = static_cast<double>(k + width);
      y[k] = ((t - left) * y[k + 1] + (right - t) * y[k]) / (right - left);
    }
  return y[0];
}

// Keys 1981, eq. 4, with a = −1/2: the kernel over the distance.
double Keys(std::array<double, 4> y, double t) {
  double sum = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    const double s = std::abs(t - static_cast<double>(k));
    const double w = s < 1   ? 1.5 * s * s * s - 2.5 * s * s + 1
                     : s < 2 ? -0.5 * s * s * s + 2.5 * s * s - 4 * s + 2
                             : 0;
    sum += w * y[k];
  }
  return sum;
}

// Solves a x = b by elimination with row pivots.
template <std::size_t N>
std::array<double, N> Solve(std::array<std::array<double, N>, N> a, std::array<double, N> b) {
  for (std::size_t k = 0; k < N; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k; r < N; ++r)
      if (std::abs(a[r][k]) > std::abs(a[pivot][k])) pivot = r;
    std::swap(a[k], a[pivot]);
    std::swap(b[k], b[pivot]);
    for (std::size_t r = k + 1; r < N; ++r) {
      const double factor = a[r][k] / a[k][k];
      for (std::size_t c = k; c < N; ++c) a[r][c] -= factor * a[k][c];
      b[r] -= factor * b[k];
    }
  }
  for (std::size_t k = N; k-- > 0;) {
    for (std::size_t c = k + 1; c < N; ++c) b[k] -= a[k][c] * b[c];
    b[k] /= a[k][k];
  }
  return b;
}

// The natural cubic spline in the truncated power basis: 1, t, and (t − k)³ for t > k, whose
// coefficients interpolate and sum to no cubic or quadratic growth past the last node.
template <std::size_t N>
double NaturalSpline(const std::array<double, N>& y, double t) {
  const auto cube = [](double s) { return s > 0 ? s * s * s : 0; };
  std::array<std::array<double, N + 2>, N + 2> a{};
  std::array<double, N + 2> b{};
  for (std::size_t r = 0; r < N; ++r) {
    a[r][0] = 1;
    a[r][1] = static_cast<double>(r);
    for (std::size_t k = 0; k < N; ++k)
      a[r][k + 2] = cube(static_cast<double>(r) - static_cast<double>(k));
    b[r] = y[r];
  }
  for (std::size_t k = 0; k < N; ++k) {
    a[N][k + 2] = 1;
    a[N + 1][k + 2] = static_cast<double>(k);
  }
  const auto c = Solve(a, b);
  double sum = c[0] + c[1] * t;
  for (std::size_t k = 0; k < N; ++k) sum += c[k + 2] * cube(t - static_cast<double>(k));
  return sum;
}

int Floor(double x) { return static_cast<int>(std::floor(x)); }

double BilinearRule(const Surface& z, double x, double y) {
  return Tensor<2>(z, Floor(x), Floor(y), x, y, Neville<2>);
}
double BiquadraticRule(const Surface& z, double x, double y) {
  return Tensor<3>(z, Floor(x + 0.5) - 1, Floor(y + 0.5) - 1, x, y, Neville<3>);
}
double ConvolutionRule(const Surface& z, double x, double y) {
  return Tensor<4>(z, Floor(x) - 1, Floor(y) - 1, x, y, Keys);
}
double LagrangeRule(const Surface& z, double x, double y) {
  return Tensor<4>(z, Floor(x) - 1, Floor(y) - 1, x, y, Neville<4>);
}
double Spline4Rule(const Surface& z, double x, double y) {
  return Tensor<4>(z, Floor(x) - 1, Floor(y) - 1, x, y, NaturalSpline<4>);
}
double Spline6Rule(const Surface& z, double x, double y) {
  return Tensor<6>(z, Floor(x) - 2, Floor(y) - 2, x, y, NaturalSpline<6>);
}

// Ordinary kriging solved for the weights of one point (Cressie 1993, eq. 3.2.12).
struct Kriging {
  double height, variance;
};
Kriging KrigingAt(const Surface& z, double x, double y) {
  constexpr std::size_t n = 16;
  const int row = Floor(x) - 1, column = Floor(y) - 1;
  const auto gamma = [](double dx, double dy) { return std::pow(std::hypot(dx, dy), 1.5); };
  std::array<std::array<double, n + 1>, n + 1> a{};
  std::array<double, n + 1> b{};
  const auto at = [](std::size_t p) { return std::pair(p / 4, p % 4); };
  double squares = 0;
  for (std::size_t p = 0; p < n; ++p) {
    const auto [r, c] = at(p);
    const int i = row + static_cast<int>(r), j = column + static_cast<int>(c);
    if (r < 3) squares += std::pow(z(i + 1, j) - z(i, j), 2);
    if (c < 3) squares += std::pow(z(i, j + 1) - z(i, j), 2);
    for (std::size_t q = 0; q < n; ++q) {
      const auto [r2, c2] = at(q);
      a[p][q] = gamma(static_cast<double>(r) - static_cast<double>(r2),
                      static_cast<double>(c) - static_cast<double>(c2));
    }
    a[p][n] = a[n][p] = 1;
    b[p] = gamma(x - i, y - j);
  }
  b[n] = 1;
  const auto w = Solve(a, b);
  Kriging result{0, w[n]};
  for (std::size_t p = 0; p < n; ++p) {
    const auto [r, c] = at(p);
    result.height += w[p] * z(row + static_cast<int>(r), column + static_cast<int>(c));
    result.variance += w[p] * b[p];
  }
  result.variance *= squares / 48;  // half the mean square difference of 24 pairs
  return result;
}
double KrigingRule(const Surface& z, double x, double y) { return KrigingAt(z, x, y).height; }

// What a class does with a node that marks a hole, and with the half cells around its outer nodes.
enum class Hole { none, marked, above };
enum class Edge { extrapolates, noHeight };

struct Method {
  Rule rule;
  int degree;       // of the polynomials, in each axis, that the rule reproduces
  bool continuous;  // across cells
  double metres;    // agreement with the rule
};
struct Edges {
  Edge south, north, west, east;
};

struct Scheme {
  const char* name;
  std::unique_ptr<RegionalGeoid> (*make)(const RegionalGeoidData&);
  Method method;
  struct {
    Hole kind;
    double metres;  // a node that is one
  } hole;
  Edges edges;
  int margin;  // cells along the edges that follow another rule or have none
  Storage storage = {};
  double scale = 1;  // of the record
};

template <class Model>
std::unique_ptr<RegionalGeoid> Make(const RegionalGeoidData& data) {
  return std::make_unique<Model>(data);
}

// Coordinates are cut to 1e-12 rad, 1e-10 steps: 1e-9 m on the slopes below. Where rows are kept in
// single precision, heights up to 64 m carry 4e-6 m.
constexpr double kDouble = 1e-8, kSingle = 2e-5;
using enum Edge;

constexpr Method kBiquadratic{BiquadraticRule, 2, false, kSingle};
constexpr Method kBilinear{BilinearRule, 1, true, kDouble};
constexpr Method kConvolution{ConvolutionRule, 2, true, kDouble};
constexpr Method kLagrange{LagrangeRule, 3, true, kDouble};
constexpr Method kSpline4{Spline4Rule, 1, true, kDouble};
constexpr Method kSpline6{Spline6Rule, 1, true, kSingle};
constexpr Method kKriging{KrigingRule, 0, false, kDouble};
constexpr Edges kOpen{extrapolates, extrapolates, extrapolates, extrapolates},
    kOpenNorthEast{noHeight, extrapolates, noHeight, extrapolates},
    kOpenSouthEast{extrapolates, noHeight, noHeight, extrapolates},
    kClosed{noHeight, noHeight, noHeight, noHeight},
    kOpenSouth{extrapolates, noHeight, noHeight, noHeight};

const Scheme kSchemes[] = {
    {"Base", Make<RegionalGeoid>, kBiquadratic, {Hole::marked, 20000}, kOpen, 0, {.padding = 12}},
    {"2x2SW", Make<RegGeoid2x2SW>, kBilinear, {Hole::none, 0}, kOpenNorthEast, 0, {.padding = 3}},
    {"2x2NW",
     Make<RegGeoid2x2NW>,
     kBilinear,
     {Hole::none, 0},
     kOpenSouthEast,
     0,
     {.northFirst = true}},
    {"2x2Denmark",
     Make<RegGeoid2x2Denmark>,
     kBilinear,
     {Hole::none, 0},
     kOpenSouthEast,
     0,
     {.northFirst = true, .padding = 4}},
    {"3MACStyle",
     Make<RegGeoidInterpalation3MACStyle>,
     kBiquadratic,
     {Hole::marked, 20000},
     kOpen,
     0,
     {.value = Storage::Value::swappedReal}},
    {"95",
     Make<RegGeoid95Interpalation3>,
     kBiquadratic,
     {Hole::marked, 20000},
     kOpen,
     0,
     {.header = 4}},
    {"Swedish",
     Make<RegGeoidSwedishInterpalation3>,
     kBiquadratic,
     {Hole::marked, 20000},
     kOpen,
     0,
     {.northFirst = true, .padding = 8}},
    {"3x3NWWord",
     Make<RegGeoid3x3NWInterpalation>,
     kBiquadratic,
     {Hole::marked, 32766 / 64.0},
     kOpen,
     0,
     {.value = Storage::Value::word, .northFirst = true, .padding = 2, .perMetre = 64},
     64},
    {"3x3NWInteger",
     Make<RegGeoid3x3NWInterpalation>,
     kBiquadratic,
     {Hole::marked, 9991},
     kOpen,
     0,
     {.value = Storage::Value::integer, .northFirst = true, .perMetre = 64},
     64},
    {"4", Make<RegGeoidInterpalation4>, kConvolution, {Hole::above, 151}, kClosed, 2},
    {"4x4SW", Make<RegGeoidInterpalation4x4SW>, kConvolution, {Hole::above, 151}, kClosed, 1},
    {"4x4NW",
     Make<RegGeoidInterpalation4x4NW>,
     kConvolution,
     {Hole::above, 151},
     kClosed,
     2,
     {.northFirst = true}},
    {"4x4NWInteger",
     Make<RegGeoidInterpalation4x4NW>,
     kConvolution,
     {Hole::above, 151},
     kClosed,
     2,
     {.value = Storage::Value::integer, .northFirst = true, .perMetre = 64},
     1.0 / 64},
    {"Lagrange", Make<RegGeoidIntrp_Lagrange4x4SW>, kLagrange, {Hole::above, 151}, kOpenSouth, 1},
    {"Spline",
     Make<RegGeoidIntrp_Spline4x4SW>,
     kSpline4,
     {Hole::above, 501},
     kOpenNorthEast,
     1,
     {.padding = 5}},
    {"GG2008", Make<RegGeoidInterpalation_GG2008SW>, kSpline6, {Hole::none, 0}, kOpen, 4},
    {"Kriging",
     Make<RegGeoidKrigingIntrp>,
     kKriging,
     {Hole::marked, 20000},
     kOpenNorthEast,
     1,
     {.padding = 1}},
};

// Heights between −40 and 60 m in 64ths of a metre, which every storage holds exactly.
double Hills(int row, int column) {
  const double z = 10 + 30 * std::sin(0.7 * row + 0.2 * column) + 20 * std::cos(0.9 * column);
  return std::round(64 * z) / 64;
}

constexpr int kColumns = 13, kRows = 11;
constexpr double kFractions[] = {0.0625, 0.3125, 0.46875, 0.5625, 0.9375};

template <class Check>
void ForInteriorPoints(int margin, Check check) {
  for (int i = margin; i < kRows - 1 - margin; ++i)
    for (int j = margin; j < kColumns - 1 - margin; ++j)
      for (const double u : kFractions)
        for (const double v : kFractions) check(i + u, j + v);
}

class Interpolator : public testing::TestWithParam<Scheme> {};

TEST_P(Interpolator, FollowsItsRule) {
  const Scheme& s = GetParam();
  const StoredGrid grid(kColumns, kRows, Hills, s.storage);
  const auto model = s.make(grid.Record(s.scale));
  ForInteriorPoints(std::max(s.margin, 1), [&](double x, double y) {
    const Answer answer = HeightAt(*model, x, y);
    ASSERT_EQ(answer.code, 0) << x << ' ' << y;
    ASSERT_NEAR(answer.height, s.method.rule(Hills, x, y), s.method.metres) << x << ' ' << y;
  });
}

TEST_P(Interpolator, ReproducesPolynomialsOfItsDegree) {
  const Scheme& s = GetParam();
  // Stored integers are 64ths of a metre, which the mixed terms of higher degree are not.
  const int mixed = s.storage.perMetre != 1 ? 1 : s.method.degree;
  const auto polynomial = [&s, mixed](double x, double y) {
    double z = -7.25, xk = 1, yk = 1;
    for (int k = 1; k <= s.method.degree; ++k) {
      xk *= x / 8 - 0.5;
      yk *= y / 8 - 0.5;
      z += 3 * xk - 2 * yk + (k <= mixed ? xk * yk : 0);
    }
    return z;
  };
  const StoredGrid grid(
      kColumns, kRows, [&](int row, int column) { return polynomial(row, column); }, s.storage);
  const auto model = s.make(grid.Record(s.scale));
  ForInteriorPoints(s.margin, [&](double x, double y) {
    ASSERT_NEAR(HeightAt(*model, x, y).height, polynomial(x, y), kSingle) << x << ' ' << y;
  });
}

TEST_P(Interpolator, PassesThroughItsNodesContinuously) {
  const Scheme& s = GetParam();
  const StoredGrid grid(kColumns, kRows, Hills, s.storage);
  const auto model = s.make(grid.Record(s.scale));
  const int margin = std::max(s.margin, 1);
  constexpr double kAside = 1e-8;  // steps
  constexpr double kSlope = 1e-6;  // metres over it, at most 60 m a step
  for (int i = margin + 1; i < kRows - 2 - margin; ++i) {
    for (int j = margin + 1; j < kColumns - 2 - margin; ++j) {
      for (const double sign : {-1.0, 1.0})
        EXPECT_NEAR(HeightAt(*model, i + sign * kAside, j + sign * kAside).height, Hills(i, j),
                    s.method.metres + kSlope);
      if (!s.method.continuous) continue;
      for (const double t : kFractions) {
        EXPECT_NEAR(HeightAt(*model, i - kAside, j + t).height,
                    HeightAt(*model, i + kAside, j + t).height, s.method.metres + kSlope);
        EXPECT_NEAR(HeightAt(*model, i + t, j - kAside).height,
                    HeightAt(*model, i + t, j + kAside).height, s.method.metres + kSlope);
      }
    }
  }
}

TEST_P(Interpolator, TreatsEdgesAndOutsideAsItSays) {
  const Scheme& s = GetParam();
  const StoredGrid grid(kColumns, kRows, Hills, s.storage);
  const auto model = s.make(grid.Record(s.scale));
  const double middleX = kRows / 2 + 0.25, middleY = kColumns / 2 + 0.25;
  const struct {
    double x, y;
    Edge edge;
  } halfCells[] = {{-0.25, middleY, s.edges.south},
                   {kRows - 0.75, middleY, s.edges.north},
                   {middleX, -0.25, s.edges.west},
                   {middleX, kColumns - 0.75, s.edges.east}};
  for (const auto& at : halfCells) {
    const Answer answer = HeightAt(*model, at.x, at.y);
    const bool found = at.edge == extrapolates;
    EXPECT_EQ(answer.code, found ? 0 : kSomeWithoutHeight) << at.x << ' ' << at.y;
    EXPECT_EQ(answer.height != kNoHeight, found) << at.x << ' ' << at.y;
  }
  for (const auto& [x, y] : {std::pair(-0.75, middleY), std::pair(kRows - 0.25, middleY),
                             std::pair(middleX, -0.75), std::pair(middleX, kColumns - 0.25)}) {
    const Answer answer = HeightAt(*model, x, y);
    EXPECT_EQ(answer.code, kAllOutside);
    EXPECT_EQ(answer.height, kNoHeight);
  }
}

// A point in cell (5, 6), nearest to the node (5, 6) in it; a hole anywhere in its stencil counts,
// one beside the stencil does not.
TEST_P(Interpolator, GivesNoHeightOnAHole) {
  const Scheme& s = GetParam();
  StoredGrid grid(kColumns, kRows, Hills, s.storage);
  const auto model = s.make(grid.Record(s.scale));
  const double expected = HeightAt(*model, 5.25, 6.25).height;
  const bool three = s.method.rule == BiquadraticRule;
  for (int i = 3; i <= 8; ++i) {
    for (int j = 4; j <= 9; ++j) {
      if (s.hole.kind == Hole::none) continue;
      grid.Set(i, j, s.hole.metres);
      const bool touched = i >= 4 && j >= 5 && i <= (three ? 6 : 7) && j <= (three ? 7 : 8);
      const Answer answer = HeightAt(*model, 5.25, 6.25);
      EXPECT_EQ(answer.code, touched ? kSomeWithoutHeight : 0) << i << ' ' << j;
      EXPECT_EQ(answer.height, touched ? kNoHeight : expected) << i << ' ' << j;
      grid.Set(i, j, Hills(i, j));
    }
  }
}

// Buffers of exactly the record's size: the sanitizers see any read outside.
TEST_P(Interpolator, StaysInTheBufferOnHostileGeometry) {
  const Scheme& s = GetParam();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kHuge = 1e300;
  const double hostile[] = {kNan, 0, -0.01, 1e-300, kHuge, -kHuge, 1, HUGE_VAL};
  for (const auto& [columns, rows] : {std::pair(1, 1), std::pair(2, 5), std::pair(4, 3)}) {
    const StoredGrid grid(columns, rows, Hills, s.storage);
    for (int field = 0; field < 6; ++field) {
      for (const double value : hostile) {
        RegionalGeoidData record = grid.Record(s.scale);
        (&record.grid.B0)[field] = value;
        const auto model = s.make(record);
        for (const double x : {-0.4, 0.0, 0.3, 2.0, 1e9}) HeightAt(*model, x, x);
        TGridRgn region = record.grid;
        double point[] = {value, value, 0}, height = 0;
        model->INTRP3(grid.bytes.get(), static_cast<int>(grid.rowBytes), region, rows, columns,
                      point, height);
      }
    }
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
      RegionalGeoidData record = grid.Record(s.scale);
      record.NX = count;
      EXPECT_EQ(HeightAt(*s.make(record), 0.25, 0.25).height, kNoHeight);
      record = grid.Record(s.scale);
      record.NY = count;
      EXPECT_EQ(HeightAt(*s.make(record), 0.25, 0.25).height, kNoHeight);
    }
    RegionalGeoidData wide = grid.Record(s.scale);
    wide.NX = std::numeric_limits<int>::max();
    EXPECT_EQ(HeightAt(*s.make(wide), 0.25, 0.25).height, kNoHeight);
    TGridRgn own = grid.Geometry();
    std::vector<double> copied(static_cast<std::size_t>(columns * rows));
    EXPECT_TRUE(s.make(grid.Record(s.scale))->CountHeightOnGrid(own, copied.data(), nullptr));
  }
}

// Points in and around a grid of NX × NY nodes: on nodes and edges and a rounding beside them, a
// full turn away, and without meaning.
std::vector<TAbstractPoint3<double>> PointsAround(const TGridRgn& grid, int NX, int NY) {
  std::vector<TAbstractPoint3<double>> points;
  for (int k = 0; k < 300; ++k) {
    double x = std::fmod(k * 0.8191725133961645, 1) * (NY + 1) - 1;
    double y = std::fmod(k * 0.6710436067037893, 1) * (NX + 1) - 1;
    const double aside = k % 5 == 1 ? 0 : k % 5 == 2 ? 2e-12 : -2e-12;
    if (k % 5 < 3) x = std::round(2 * x) / 2 + aside;
    if (k % 5 < 3) y = std::round(2 * y) / 2 + aside;
    points.emplace_back(grid.B0 + x * grid.latStep,
                        grid.L0 + y * grid.lonStep + kTwoPi * (k % 7 / 5 - k % 7 / 6 * 2), 0.0);
  }
  for (const double strange : {HUGE_VAL, -HUGE_VAL, std::nan(""), 1e300, -3e3, 2251.9, 4600.5}) {
    points.emplace_back(strange, points[0][1], 0.0);
    points.emplace_back(points[0][0], strange, 0.0);
  }
  return points;
}

// Arrays run through kernels, one for each instruction set, single points do not: every height must
// have the same bits, and every slot the same beginning to be added to.
void ExpectArraysEqualSinglePoints(const RegionalGeoid& model,
                                   const std::vector<TAbstractPoint3<double>>& points) {
  std::vector<double> alone(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    alone[i] = i % 9 == 0 ? 5 : 0;
    model.CountHeight(&points[i], &alone[i], 1);
  }
  const auto best = simd::ActiveInstructionSet();
  for (auto set :
       {simd::InstructionSet::baseline, simd::InstructionSet::avx2, simd::InstructionSet::avx512}) {
    simd::ForceInstructionSet(set);
    std::vector<double> together(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) together[i] = i % 9 == 0 ? 5 : 0;
    model.CountHeight(points.data(), together.data(), static_cast<int>(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
      if (std::isnan(alone[i]) && std::isnan(together[i])) continue;
      ASSERT_EQ(together[i], alone[i])
          << "set " << static_cast<int>(set) << " at " << points[i][0] << ' ' << points[i][1];
    }
  }
  simd::ForceInstructionSet(best);
}

TEST_P(Interpolator, GivesArraysTheBitsOfSinglePoints) {
  const Scheme& s = GetParam();
  if (s.method.rule == Spline6Rule) return;  // its failure at one point ends a query
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kHuge = 1e300;
  for (const auto& [columns, rows] :
       {std::pair(kColumns, kRows), std::pair(4, 3), std::pair(1, 2)}) {
    StoredGrid grid(columns, rows, Hills, s.storage);
    if (s.hole.kind != Hole::none && columns == kColumns) grid.Set(6, 7, s.hole.metres);
    RegionalGeoidData record = grid.Record(s.scale);
    ExpectArraysEqualSinglePoints(*s.make(record), PointsAround(record.grid, columns, rows));
    // Steps that are no powers of two, across the half turn; then a field without meaning.
    record.grid = {{-0.7, 0.011 * (rows - 1), 3.1, 0.013 * (columns - 1)}, 0.011, 0.013};
    const auto points = PointsAround(record.grid, columns, rows);
    ExpectArraysEqualSinglePoints(*s.make(record), points);
    for (int field = 0; field < 6; ++field) {
      for (const double value : {kNan, 0.0, -0.01, 1e-300, kHuge, -kHuge, 5.0}) {
        RegionalGeoidData hostile = record;
        (&hostile.grid.B0)[field] = value;
        ExpectArraysEqualSinglePoints(*s.make(hostile), points);
      }
    }
  }
}

// A host's scheme on top of one of ours, in an array as large as kernels take.
class Constant : public RegGeoid2x2SW {
 public:
  using RegGeoid2x2SW::RegGeoid2x2SW;
  int INTRP3(const void*, int, TGridRgn&, int, int, double*, double& height) const override {
    height = 7;
    return 0;
  }
};

TEST(RegionalGeoid, CallsTheInterpolationOfAHostForArraysToo) {
  const StoredGrid grid(kColumns, kRows, Hills);
  const Constant model(grid.Record());
  const std::vector<TAbstractPoint3<double>> points(
      50, {StoredGrid::kSouth + StoredGrid::kLatStep, StoredGrid::kWest, 0});
  std::vector<double> heights(points.size());
  EXPECT_EQ(model.CountHeight(points.data(), heights.data(), 50), 0);
  EXPECT_EQ(heights, std::vector<double>(points.size(), 7));
}

INSTANTIATE_TEST_SUITE_P(Schemes, Interpolator, testing::ValuesIn(kSchemes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RegGeoid2x2SW, TakesTheLastCellOnTheNorthernEdge) {
  const StoredGrid grid(kColumns, kRows, Hills);
  const RegGeoid2x2SW model(grid.Record());
  EXPECT_NEAR(HeightAt(model, kRows - 1, 3).height, Hills(kRows - 1, 3), kDouble);
}

// Kept: angles are cut down first, so that a point on the southern edge, if the edge is no multiple
// of 1e-12 rad, falls before the first row.
TEST(RegGeoid2x2SW, KeepsTheEdgeAsymmetryOfCuttingDown) {
  const StoredGrid grid(kColumns, kRows, Hills);
  RegionalGeoidData record = grid.Record();
  record.grid.B0 = 0.7853981633974483;
  const RegGeoid2x2SW model(record);
  const TAbstractPoint3<double> point(record.grid.B0, StoredGrid::kWest + 0.01, 0);
  double height = 0;
  EXPECT_EQ(model.CountHeight(&point, &height, 1), kSomeWithoutHeight);
  EXPECT_EQ(height, kNoHeight);
}

// Kept: the longitude is reduced to half a turn from the western edge.
TEST(RegGeoid2x2SW, KeepsNoHeightMoreThanHalfATurnFromTheWesternEdge) {
  std::vector<float> z(37 * 3, 5.0F);
  const RegGeoid2x2SW model({{0, 0.2, 0, kTwoPi}, 0.1, kTwoPi / 36}, 37, 3, z.data(), 0, L"", L"");
  const TAbstractPoint3<double> points[] = {{0.05, 3.1, 0}, {0.05, 3.2, 0}};
  double heights[2];
  EXPECT_EQ(model.CountHeight(points, heights, 2), kSomeWithoutHeight);
  EXPECT_NEAR(heights[0], 5, kDouble);
  EXPECT_EQ(heights[1], kNoHeight);
}

TEST(RegGeoid2x2NW, CrossesTheHalfTurn) {
  std::vector<float> z;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 9; ++c) z.push_back(static_cast<float>(c));
  const double step = 0.01, west = kPi - 0.035;
  const RegGeoid2x2NW model({{0, 0.02, west, 0.08}, 0.01, step}, 9, 3, z.data(), 0, L"", L"");
  for (const double turn : {0.0, -kTwoPi}) {
    for (const double y : {2.5, 3.25, 3.75, 4.5, 7.5}) {
      const TAbstractPoint3<double> point(0.005, west + y * step + turn, 0);
      double height;
      EXPECT_EQ(model.CountHeight(&point, &height, 1), 0);
      EXPECT_NEAR(height, y, kDouble) << turn;
    }
  }
}

TEST(RegGeoidInterpalation4, KeepsNoHeightAtTheSecondRow) {
  const StoredGrid grid(kColumns, kRows, Hills);
  const RegGeoidInterpalation4 model(grid.Record());
  EXPECT_EQ(HeightAt(model, 1.25, 6.5).height, kNoHeight);
  EXPECT_NEAR(HeightAt(model, 1.75, 6.5).height, ConvolutionRule(Hills, 1.75, 6.5), kDouble);
}

TEST(RegGeoidInterpalation4x4SW, KeepsAddingToTheHeightSlot) {
  const StoredGrid grid(kColumns, kRows, Hills);
  const RegGeoidInterpalation4x4SW model(grid.Record());
  EXPECT_NEAR(HeightAt(model, 4.3, 5.6, 5.0).height, ConvolutionRule(Hills, 4.3, 5.6) + 5, kDouble);
}

TEST(RegGeoid3x3NWInterpalation, ScalesAndRefuses) {
  const Storage words{.value = Storage::Value::word, .northFirst = true};
  const StoredGrid grid(
      5, 5, [](int, int) { return 1234; }, words);
  EXPECT_NEAR(HeightAt(RegGeoid3x3NWInterpalation(grid.Record(100)), 2.2, 2.3).height, 12.34, 1e-6);
  EXPECT_EQ(HeightAt(RegGeoid3x3NWInterpalation(grid.Record(0)), 2.2, 2.3).height, kNoHeight);
  RegionalGeoidData record = grid.Record(100);
  record.valueSize = 1;
  EXPECT_EQ(HeightAt(RegGeoid3x3NWInterpalation(record), 2.2, 2.3).height, kNoHeight);
}

TEST(RegGeoidKrigingIntrp, StatesVariogramAndVariance) {
  const StoredGrid grid(kColumns, kRows, Hills);
  const RegGeoidKrigingIntrp original(grid.Record());
  RegGeoidKrigingIntrp model(original);
  model = original;
  const auto lat = [](double x) { return StoredGrid::kSouth + x * StoredGrid::kLatStep; };
  const auto lon = [](double y) { return StoredGrid::kWest + y * StoredGrid::kLonStep; };
  double variance = -1;
  ASSERT_TRUE(model.EstimationVariance(lat(4.25), lon(6.75), variance));
  EXPECT_NEAR(variance, KrigingAt(Hills, 4.25, 6.75).variance, kDouble);
  KrigingVariogram variogram{};
  ASSERT_TRUE(model.Variogram(lat(4.25), lon(6.75), variogram));
  EXPECT_EQ(variogram.exponent, 1.5);
  EXPECT_EQ(variogram.At(1), variogram.slope);
  EXPECT_GT(variogram.slope, 0);
  ASSERT_TRUE(model.EstimationVariance(lat(4), lon(6), variance));
  EXPECT_NEAR(variance, 0, kDouble);
  EXPECT_FALSE(model.EstimationVariance(lat(-2), lon(6), variance));
  EXPECT_FALSE(model.Variogram(lat(3), lon(60), variogram));
}

// Positions from PROJ 9.1: cct -I +proj=tmerc +ellps=GRS80 with the parameters of each grid. The
// projection's series agrees with it within 0.1 mm there.
struct KilometrePoint {
  double east, north;  // kilometres
  double latDeg, lonDeg;
};
constexpr double kSeriesMetres = 1e-6;  // 0.1 mm on slopes of 3 mm a kilometre

template <class Model>
void ExpectKilometreGrid(int rowLength, double firstEast, double firstNorth,
                         std::initializer_list<KilometrePoint> points) {
  const int rows = 40;
  std::vector<float> z;
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < rowLength; ++c)
      z.push_back(static_cast<float>(50 + c / 1024.0 - r / 512.0));
  const TGridRgn anywhere({-1.5, 3, -3, 6}, 0.1, 0.1);
  const Model model(anywhere, rowLength, rows, z.data(), 0, L"", L"");
  for (const KilometrePoint& p : points) {
    const double c = p.east - firstEast, r = p.north - firstNorth;
    const TAbstractPoint3<double> point(p.latDeg * kRadPerDeg, p.lonDeg * kRadPerDeg, 0);
    double height = 0;
    const long code = model.CountHeight(&point, &height, 1);
    const bool inside = c > -1 && r > -1 && c < rowLength - 1 && r < rows - 1;
    EXPECT_EQ(code, inside ? 0 : kSomeWithoutHeight) << p.east << ' ' << p.north;
    EXPECT_NEAR(height, inside ? 50 + c / 1024 - r / 512 : kNoHeight, kSeriesMetres)
        << p.east << ' ' << p.north;
  }
  // From beyond the south-western node to the last row, of which not every value is there.
  const Model torn(anywhere, rowLength * rows - 40, 1, z.data(), 0, L"", L"");
  const KilometrePoint &from = *points.begin(), &to = *(points.end() - 1);
  std::vector<TAbstractPoint3<double>> line;
  for (double t = -2; t < 3; t += 1.0 / 64)
    line.emplace_back((from.latDeg + t * (to.latDeg - from.latDeg)) * kRadPerDeg,
                      (from.lonDeg + t * (to.lonDeg - from.lonDeg)) * kRadPerDeg, 0.0);
  line.emplace_back(2.0, 0.0, 0.0);
  for (const Model& each : {model, torn}) ExpectArraysEqualSinglePoints(each, line);
}

TEST(RegGeoidInterpalation2, InterpolatesOnItsKilometreGrid) {
  ExpectKilometreGrid<RegGeoidInterpalation2>(701, 0, 0,
                                              {{400.25, 10.5, 49.9939283983729, -1.9965120914785},
                                               {651.4, 31.75, 50.1317426057353, 1.5178965978060},
                                               {90.125, 0.25, 49.8216032466549, -6.3085665992329},
                                               {0.5, 20.5, 49.9499789246892, -7.5701158012933},
                                               {400, -0.5, 49.8949930350748, -2.0000000000000},
                                               {700.5, 5.5, 49.8734648368081, 2.1826558415435},
                                               {300.5, 39.5, 50.2463709128624, -3.3955318377029}});
}

TEST(RegGeoidIntrpNIreland2, InterpolatesOnItsKilometreGrid) {
  ExpectKilometreGrid<RegGeoidIntrpNIreland2>(251, 550, 800,
                                              {{600.5, 820.25, 54.1312815355276, -7.9923497694807},
                                               {740.1, 838.75, 54.2783239787602, -5.8486197777410},
                                               {551.5, 801.5, 53.9605238638012, -8.7390428163009},
                                               {549.5, 810.5, 54.0411986878693, -8.7710088035259},
                                               {800.5, 810.5, 54.0047437269422, -4.9411215019877},
                                               {620, 839.5, 54.3038634468199, -7.6927117371745}});
}

// Parameters of the projection and figures that single precision holds exactly.
TEST(RegGeoidPolinomialSingapore, EvaluatesItsPolynomialWithinItsBounds) {
  float c[22] = {6378137, 298.25F, 1.8125F, 1, 0.0234375F, 28000, 38000};
  const TUTMProj projection(c[0], c[1], c[2], c[3], c[4], c[5], c[6]);
  const double lat = 0.0236, lon = 1.8131;
  double x = lat, y = lon;
  ASSERT_TRUE(projection.ForwardPoint(x, y));
  const auto set = [&c](std::initializer_list<double> values) {
    std::size_t k = 8;
    for (const double value : values) c[k++] = static_cast<float>(value);
  };
  set({20000, 60000, 10000, 50000, 38000, 4096, 28000, 2048, 7, 0.5, -0.25, 0.125, 0.0625, 2});
  const TGridRgn anywhere({-1.5, 3, -3, 6}, 0.1, 0.1);
  const TAbstractPoint3<double> point(lat, lon, 0);
  const auto height = [&] {
    double h = 0;
    RegGeoidPolinomialSingapore(anywhere, 0, 0, c, 0, L"", L"").CountHeight(&point, &h, 1);
    return h;
  };
  std::vector<TAbstractPoint3<double>> line;
  for (int i = 0; i < 300; ++i) line.emplace_back(lat + 1e-4 * (i - 150), lon + 5e-5 * i, 0.0);
  ExpectArraysEqualSinglePoints(RegGeoidPolinomialSingapore(anywhere, 0, 0, c, 0, L"", L""), line);
  const double u = (x - 38000) / 4096, w = (y - 28000) / 2048;
  EXPECT_NEAR(height(), 7 + w / 2 - u / 4 + w * w / 8 + u * u / 16 + 2 * std::pow(w, 6) * u, 1e-7);

  // Bounds belong to the domain: a point whose northing is exactly false northing lies on one.
  const double origin = c[4], meridian = c[2];
  const TAbstractPoint3<double> atOrigin(origin, meridian, 0);
  c[8] = 38000;
  c[11] = 28000;
  double h = 0;
  const RegGeoidPolinomialSingapore onBound(anywhere, 0, 0, c, 0, L"", L"");
  TGridRgn region = anywhere;
  double exact[] = {origin, meridian, 0};
  EXPECT_EQ(onBound.INTRP3(c, 0, region, 0, 0, exact, h), 0);
  EXPECT_NEAR(h, 7, 1e-9);
  c[8] = 38001;
  const RegGeoidPolinomialSingapore outside(anywhere, 0, 0, c, 0, L"", L"");
  EXPECT_EQ(outside.CountHeight(&atOrigin, &h, 1), kSomeWithoutHeight);
  EXPECT_EQ(h, kNoHeight);

  double copied[4] = {};
  EXPECT_TRUE(outside.CountHeightOnGrid({{-1.5, 0.1, -3, 0.1}, 0, 0}, copied, nullptr));
  for (const double node : copied) EXPECT_EQ(node, kNoHeight);
}

// A 10° grid of the whole Earth: columns wrap, and a row beyond a pole is row −r or 2·NY − r − 1
// read backwards about the western edge.
TEST(RegGeoidInterpalation_GG2008SW, KeepsMirroredRowsAndWrapsColumns) {
  constexpr int kNX = 36, kNY = 19;
  const double step = kPi / 18;
  const auto stored = [](int r, int c) { return 20 * std::sin(0.3 * r) + 15 * std::cos(0.4 * c); };
  std::vector<float> z;
  for (int r = 0; r < kNY; ++r)
    for (int c = 0; c < kNX; ++c) z.push_back(static_cast<float>(stored(r, c)));
  const TGridRgn world({-kHalfPi, kPi, 0, kTwoPi - step / 2}, step, step);
  const RegGeoidInterpalation_GG2008SW model(world, kNX, kNY, z.data(), 0, L"", L"");
  const Surface around = [&](int r, int c) {
    const bool mirrored = r < 0 || r >= kNY;
    if (mirrored) r = r < 0 ? -r : 2 * kNY - r - 1;
    c = (c + kNX) % kNX;
    return stored(r, mirrored && c != 0 ? kNX - c : c);
  };
  for (const double x : {0.3, 1.7, 9.5, 16.6, 17.75}) {
    for (const double y : {0.4, 1.5, 20.25, 34.5}) {
      const TAbstractPoint3<double> point(-kHalfPi + x * step, y * step, 0);
      double height = 0;
      EXPECT_EQ(model.CountHeight(&point, &height, 1), 0);
      EXPECT_NEAR(height, Spline6Rule(around, x, y), kSingle) << x << ' ' << y;
    }
  }
  std::vector<TAbstractPoint3<double>> points;
  for (int i = 0; i < 400; ++i)
    points.emplace_back(-1.57 + 3.14 * i / 400, std::fmod(0.37 * i, 6.2), 0.0);
  ExpectArraysEqualSinglePoints(model, points);
  // A point west of the first column ends the query there.
  constexpr std::size_t kFailing = 200;
  points[kFailing] = {0, -step / 4, 0};
  std::vector<double> heights(points.size(), 5);
  EXPECT_EQ(model.CountHeight(points.data(), heights.data(), 400), kGeoidFailed);
  EXPECT_LT(std::abs(heights[kFailing - 1]), 40);
  EXPECT_EQ(heights[kFailing], kNoHeight);
  EXPECT_EQ(heights[kFailing + 1], 5);

  double point[] = {-2.0, 0, 0}, height = 0;
  TGridRgn region = world;
  EXPECT_EQ(model.INTRP3(z.data(), 0, region, kNY, kNX, point, height), 1);
  EXPECT_EQ(height, kNoHeight);
}

TEST(RegGeoidInterpalation_GG2008SW, FallsBackToParabolasNearItsEdges) {
  const StoredGrid grid(kColumns, kRows, Hills);
  const RegGeoidInterpalation_GG2008SW model(grid.Record());
  const RegionalGeoid base(grid.Record());
  for (const double x : {-0.3, 2.9, 8.1})
    EXPECT_EQ(HeightAt(model, x, 6.4).height, HeightAt(base, x, 6.4).height);
  EXPECT_NE(HeightAt(model, 3.1, 6.4).height, HeightAt(base, 3.1, 6.4).height);

  ExpectArraysEqualSinglePoints(model, PointsAround(grid.Record().grid, kColumns, kRows));

  const auto west = [](double longitude) {
    return RegGeoidInterpalation_GG2008SW({{0, 1, longitude, 6}, 1, 1}, 7, 2, nullptr, 0, L"", L"")
        .GetBounds();
  };
  EXPECT_NEAR(west(3.3).west, 3.3 * kDegPerRad, 1e-12);
  EXPECT_NEAR(west(6.5).west, (6.5 - kTwoPi) * kDegPerRad, 1e-12);
  EXPECT_NEAR(west(6.5).east, 12.5 * kDegPerRad, 1e-12);
  EXPECT_NEAR(west(7).east, (13 - kTwoPi) * kDegPerRad, 1e-12);
}

}  // namespace
}  // namespace zel_cs::geomath
