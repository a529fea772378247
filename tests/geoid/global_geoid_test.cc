#include "geomath/geoid/global_geoid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#ifdef GEOMATH_TEST_HAS_ZLIB
#include <zlib.h>
#endif

#include "geomath/base/angle.h"
#include "geomath/simd/instruction_set.h"
#include "tests/support/harmonic_model.h"
#include "tests/support/reference_data.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

// As callers may spell it: a record where a model is wanted.
static_assert(std::is_convertible_v<GlobalGeoidData, GlobalGeoid>);

using tolerance::kDegree;

// The promise against the term by term evaluation; measured 2.8e-13 m to degree 36
// and 1.5e-12 m to degree 360.
constexpr double kPlainMetres = 1e-9;
// The reference figures carry nine decimals: half a unit; measured 5e-10 m.
constexpr double kComputedMetres = 1e-9;

double Undulation(const GlobalGeoid& model, double lat, double lon) {
  const TAbstractPoint3<double> point(lat, lon, 0);
  double height = -1;
  EXPECT_EQ(model.CountHeight(&point, &height, 1, nullptr), 0);
  return height;
}

// The synthesis term by term, order after order as Lemoine et al. 1998 print it: the independent
// evaluation that the tables, the order of summation and the recurrences must not be told from.
double PlainUndulation(const GlobalGeoidData& d, double lat, double lon) {
  constexpr double a = 6378137, e2 = 0.00669437999013, GM = 3.986004418e14;
  const double t = std::sin(lat) * std::sin(lat), N = a / std::sqrt(1 - e2 * t);
  const double X = N * std::cos(lat) * std::cos(lon), Y = N * std::cos(lat) * std::sin(lon);
  const double Z = N * 0.99330562000987 * std::sin(lat);
  const double re = std::sqrt(X * X + Y * Y + Z * Z);
  const double theta = 1.5707963267948966 - std::atan(Z / std::sqrt(X * X + Y * Y));
  const double gr = 9.7803253359 * (1 + 0.00193185265246 * t) / std::sqrt(1 - e2 * t);

  const auto root = [](int k) { return std::sqrt(static_cast<double>(k)); };
  const auto at = [](int n, int m) { return static_cast<std::size_t>(n * (n + 1) / 2 + m); };
  std::vector<double> P(at(d.count, 0));
  double sectorial = 1;
  for (int m = 0; m < d.count; ++m) {
    if (m == 1) sectorial = root(3) * std::sin(theta);
    if (m > 1) sectorial *= root(2 * m + 1) / root(2 * m) * std::sin(theta);
    P[at(m, m)] = sectorial;
    for (int n = m + 1; n < d.count; ++n) {
      const double before = n - 2 >= m ? P[at(n - 2, m)] : 0;
      P[at(n, m)] =
          root(2 * n + 1) / (root(n + m) * root(n - m)) *
          (root(2 * n - 1) * std::cos(theta) * P[at(n - 1, m)] -
           (n - 2 >= m ? root(n + m - 1) * root(n - m - 1) / root(2 * n - 3) : 0) * before);
    }
  }
  const auto term = [&](const double* c, const double* s, int n, int m) {
    return P[at(n, m)] *
           (c[at(n, m)] * std::cos(m * lon) + (m ? s[at(n, m)] * std::sin(m * lon) : 0));
  };
  double A = 0, AC = 0;
  for (int n = 0; n < d.count; ++n) {
    for (int m = 0; m <= n; ++m) {
      if (n >= 2) A += std::pow(a / re, n) * term(d.C, d.S, n, m);
      if (d.correctionC && d.correctionS) AC += term(d.correctionC, d.correctionS, n, m);
    }
  }
  return A * GM / (gr * re) + AC / 100 - 0.53;
}

TEST(GlobalGeoid, PointsAndRowsEqualTheTermByTermSum) {
  const HarmonicModel egm96 = Egm96Degree36();
  for (const bool corrected : {false, true}) {
    for (const int count : {1, 2, 3, 4, 37}) {
      const GlobalGeoidData record = egm96.Record(count, corrected);
      const GlobalGeoid model(record);
      // 25 by 73 nodes: more columns than are summed at once, both poles, ±180° and beyond.
      const TGridRgn grid({-kHalfPi, kPi, -kPi, kTwoPi}, 7.5 * kDegree, 5 * kDegree);
      std::vector<double> heights(25 * 73);
      ASSERT_TRUE(model.CountHeightOnGrid(grid, heights.data(), nullptr));
      for (std::size_t a = 0, at = 0; a < 25; ++a) {
        for (std::size_t b = 0; b < 73; ++b, ++at) {
          const double lat = static_cast<double>(a) * grid.latStep + grid.B0;
          const double lon = static_cast<double>(b) * grid.lonStep + grid.L0;
          ASSERT_NEAR(heights[at], PlainUndulation(record, lat, lon), kPlainMetres)
              << "degrees " << count << " at " << lat / kDegree << ' ' << lon / kDegree;
          if (b % 9 == 0) {
            ASSERT_EQ(heights[at], Undulation(model, lat, lon));
          }
        }
      }
    }
  }
}

// Single points, groups of latitudes and rows run different loops, in lanes whose number depends on
// the machine; the tests of the values reach only some of them.
TEST(GlobalGeoid, AHeightDependsOnNoNeighbourAndNoInstructionSet) {
  const HarmonicModel egm96 = Egm96Degree36();
  // 45 points, poles among them, on 39 latitudes.
  std::vector<TAbstractPoint3<double>> points;
  for (int i = 0; i < 45; ++i) {
    const int latitude = i % 15 == 8 || i % 15 == 9 ? i - i % 15 + 7 : i;
    points.emplace_back(kHalfPi * std::cos(0.5 * kPi * latitude / 7.5), 0.37 * i - 7, 0.0);
  }
  const std::size_t columns = 67;  // more than are summed together
  const auto best = simd::ActiveInstructionSet();
  for (const GlobalGeoidData& record :
       {egm96.Record(1), egm96.Record(2), egm96.Record(36, false), egm96.Record(37)}) {
    const GlobalGeoid model(record);
    simd::ForceInstructionSet(simd::InstructionSet::baseline);
    std::vector<double> alone;
    for (const auto& point : points) alone.push_back(Undulation(model, point[0], point[1]));
    for (auto set : {simd::InstructionSet::baseline, simd::InstructionSet::avx2,
                     simd::InstructionSet::avx512}) {
      simd::ForceInstructionSet(set);
      for (const std::size_t n : {1U, 3U, 4U, 6U, 9U, 16U, 20U, 45U}) {
        std::vector<double> heights(n);
        ASSERT_EQ(model.CountHeight(points.data(), heights.data(), static_cast<int>(n), nullptr),
                  0);
        for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(heights[i], alone[i]) << i << " of " << n;
      }
      for (const std::size_t rows : {1U, 4U, 5U, 8U, 19U}) {
        const TGridRgn grid({-1.3, 0.1 * static_cast<double>(rows - 1), -2, 6.6}, 0.1, 0.1);
        std::vector<double> heights(rows * columns);
        ASSERT_TRUE(model.CountHeightOnGrid(grid, heights.data(), nullptr));
        for (std::size_t at = 0; at < heights.size(); at += 9)
          EXPECT_EQ(heights[at],
                    Undulation(model, static_cast<double>(at / columns) * grid.latStep + grid.B0,
                               static_cast<double>(at % columns) * grid.lonStep + grid.L0));
      }
    }
  }
  simd::ForceInstructionSet(best);
}

// High-precision figures from the same coefficients, poles, ±180° and next to 360° among them.
TEST(GlobalGeoid, ReproducesReferenceUndulationsToDegree36) {
  const HarmonicModel egm96 = Egm96Degree36();
  const GlobalGeoid corrected(egm96.Record(37)), potential(egm96.Record(37, false));
  const auto rows =
      ReadRows(std::filesystem::path(GEOMATH_SOURCE_DIR) / "tests/data/egm96_degree36_points.csv");
  ASSERT_EQ(rows.size(), 44u);
  for (const auto& row : rows) {
    const double lat = row[0] * kDegree, lon = row[1] * kDegree;
    EXPECT_NEAR(Undulation(corrected, lat, lon), row[2], kComputedMetres)
        << row[0] << ' ' << row[1];
    EXPECT_NEAR(Undulation(potential, lat, lon), row[3], kComputedMetres)
        << row[0] << ' ' << row[1];
  }
}

TEST(GlobalGeoid, ReproducesEgm96ToDegree360) {
#ifndef GEOMATH_TEST_HAS_ZLIB
  GTEST_SKIP() << "built without zlib";
#else
  constexpr double kPublishedMetres = 0.01;  // measured 0.5 mm, the rounding of the publication
  REQUIRE_REFERENCE_FILE(potentialFile, "egm96/egm96_to360.txt.gz");
  REQUIRE_REFERENCE_FILE(correctionFile, "egm96/egm96_correction_to360.txt.gz");
  HarmonicModel egm96;
  const auto read = [](const std::filesystem::path& name, auto& c, auto& s) {
    gzFile file = gzopen(name.string().c_str(), "rb");
    for (char line[200]; gzgets(file, line, sizeof line);) {
      int n, m;
      double x, y;
      if (std::sscanf(line, "%d %d %lf %lf", &n, &m, &x, &y) == 4)
        HarmonicModel::Put(n, m, c, x, s, y);
    }
    gzclose(file);
  };
  read(potentialFile, egm96.C, egm96.S);
  read(correctionFile, egm96.correctionC, egm96.correctionS);
  for (const auto& row : ReadRows(ReferenceFile("egm96/wgs84_normal_zonals.csv"))) {
    const auto n = static_cast<std::size_t>(row[0]);
    egm96.C[n * (n + 1) / 2] -= row[3];
  }
  ASSERT_EQ(egm96.C.size(), 361u * 362 / 2);
  const GlobalGeoidData record = egm96.Record(361);
  const GlobalGeoid model(record);
  for (const auto& row : ReadRows(ReferenceFile("egm96/egm96_published_points.csv")))
    EXPECT_NEAR(Undulation(model, row[0] * kDegree, row[1] * kDegree), row[2], kPublishedMetres);
  for (const auto& row : ReadRows(ReferenceFile("egm96/egm96_computed_points.csv"))) {
    const double lat = row[0] * kDegree, lon = row[1] * kDegree;
    const double height = Undulation(model, lat, lon);
    EXPECT_NEAR(height, row[2], kComputedMetres) << row[0] << ' ' << row[1];
    EXPECT_NEAR(height, PlainUndulation(record, lat, lon), kPlainMetres) << row[0] << ' ' << row[1];
  }
#endif
}

// A model of degree 2190 that make_degree_2190.py makes, too, and sums in 40 digits. Its functions of
// high order leave the range of a double towards the poles before their degrees have grown.
TEST(GlobalGeoid, IsStableToDegree2190AtAllLatitudes) {
  struct Row {
    double lat, lon, metres;
  };
  constexpr Row kRows[] = {
#include "tests/geoid/degree_2190.inc"
  };
  constexpr double kHighDegreeMetres = 1e-9;  // roundings of 2190 steps; worst 6e-13
  constexpr int kHighest = 2190;
  std::vector<double> C, S;
  for (int n = 0; n <= kHighest; ++n)
    for (int m = 0; m <= n; ++m) {
      const double size = n < 2 ? 0 : 1e-8 / (static_cast<double>(n) * n);
      C.push_back(((7919 * n + 104729 * m) % 2003 - 1001) * size);
      S.push_back(((7919 * n + 104729 * m + 31) % 2003 - 1001) * size);
    }
  const GlobalGeoid model(kHighest + 1, C.data(), S.data(), false, 0, nullptr, nullptr);
  std::vector<TAbstractPoint3<double>> points;
  for (const auto& [lat, lon, metres] : kRows) {
    points.emplace_back(lat, lon, 0.0);
    EXPECT_NEAR(Undulation(model, lat, lon), metres, kHighDegreeMetres) << lat;
  }
  std::vector<double> together(points.size());
  EXPECT_EQ(
      model.CountHeight(points.data(), together.data(), static_cast<int>(points.size()), nullptr),
      0);
  for (std::size_t i = 0; i < points.size(); ++i)
    EXPECT_NEAR(together[i], kRows[i].metres, kHighDegreeMetres) << points[i][0];
}

TEST(GlobalGeoid, AnswersFromManyThreadsWithScratchOfTheirOwn) {
  const HarmonicModel egm96 = Egm96Degree36();
  const GlobalGeoid model(egm96.Record(37));
  std::vector<TAbstractPoint3<double>> points;
  for (int i = 0; i < 200; ++i) points.emplace_back(0.01 * (i / 7), 0.03 * i, 0.0);
  const int n = static_cast<int>(points.size());
  std::vector<double> expected(points.size());
  ASSERT_EQ(model.CountHeight(points.data(), expected.data(), n, nullptr), 0);
  std::vector<std::vector<double>> heights(4, std::vector<double>(points.size()));
  std::vector<std::thread> threads;
  for (auto& mine : heights) {
    threads.emplace_back([&model, &points, &mine, n] {
      GlobalGeoidScratch scratch;
      for (int round = 0; round < 20; ++round)
        model.CountHeight(points.data(), mine.data(), n, scratch);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& mine : heights) EXPECT_EQ(mine, expected);
}

TEST(GlobalGeoid, CopiesWorkWithoutTheOriginal) {
  const HarmonicModel egm96 = Egm96Degree36();
  auto original = std::make_unique<GlobalGeoid>(egm96.Record(37));
  const double expected = Undulation(*original, 0.5, 0.7);
  GlobalGeoid copy(*original), assigned(egm96.Record(3));
  assigned = *original;
  original.reset();
  EXPECT_EQ(Undulation(copy, 0.5, 0.7), expected);
  EXPECT_EQ(Undulation(assigned, 0.5, 0.7), expected);
}

TEST(GlobalGeoid, SaysWhenItCannotAnswer) {
  const TAbstractPoint3<double> point(0.1, 0.2, 0);
  const TGridRgn grid({0, 0.1, 0, 0.1}, 0.1, 0.1);
  double heights[] = {-1, -1, -1, -1};

  const GlobalGeoid empty{GlobalGeoidData()};
  EXPECT_EQ(empty.CountHeight(&point, heights, 1, nullptr), 1);
  EXPECT_EQ(heights[0], -1);
  EXPECT_TRUE(empty.CountHeightOnGrid(grid, heights, nullptr));
  for (const double height : heights) EXPECT_EQ(height, kNoHeight);

  const GlobalGeoid bare(5, nullptr, nullptr, false, 0, nullptr, nullptr);
  EXPECT_EQ(bare.CountHeight(&point, heights, 1, nullptr), 0);
  EXPECT_EQ(heights[0], kNoHeight);

  const HarmonicModel egm96 = Egm96Degree36();
  const GlobalGeoid model(egm96.Record(37));
  heights[0] = -1;
  EXPECT_EQ(model.CountHeight(&point, heights, 0, nullptr), 0);
  EXPECT_TRUE(model.CountHeightOnGrid(TGridRgn({0, 1, 0, 1}, 0, 0.5), heights, nullptr));
  // A thousand million rows without a column cost nothing.
  EXPECT_TRUE(model.CountHeightOnGrid(TGridRgn({0, 1, 0, 1}, 1e-9, 0), heights, nullptr));
  EXPECT_EQ(heights[0], -1);
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(Undulation(model, kNan, 0)));
  EXPECT_TRUE(std::isnan(Undulation(model, 0, std::numeric_limits<double>::infinity())));

  double latStep = 1, lonStep = 2;
  EXPECT_FALSE(model.GetSteps(latStep, lonStep));
  EXPECT_EQ(latStep + lonStep, 3);
  const TAbstractRect<double> bounds = model.GetBounds();
  EXPECT_EQ(bounds.west, -180);
  EXPECT_EQ(bounds.north, 90);
  EXPECT_EQ(model.GetRegion(true).dL, kTwoPi);
  EXPECT_EQ(model.GetRegion(false).B0, -kHalfPi);
}

}  // namespace
}  // namespace zel_cs::geomath
