#include "geomath/geoid/regional_geoid.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/geomath.h"
#include "tests/geoid/stored_grid.h"
#include "tests/support/harmonic_model.h"
#include "tests/support/reference_data.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

// As callers may spell it: a record where a model is wanted.
static_assert(std::is_convertible_v<RegionalGeoidData, RegionalGeoid>);

using tolerance::kDegree;

double Plane(int row, int column) { return row + 10.0 * column; }

TEST(ThreePoint, IsTheParabolaThroughItsNodes) {
  EXPECT_EQ(PIP(0.5, 0.25, {1.0F, 3.0F, 9.0F}), 3 + 0.5 * 4 + 0.25 * 2);
  EXPECT_EQ(PIP(0.5, -0.5, {1.0F, 3.0F, 9.0F}), 1);
  EXPECT_EQ(PIPWord(0.5, 0.25, {1, 3, 9}), 5.5);
  EXPECT_EQ(PIPWord(1, 1, {-32768, 32767, -32768}), -32768);
  EXPECT_EQ(PIP(1, 0, {1.0F, 2.0F}), kNoHeight);
}

// 16777217 is no float: in single precision the second difference of these nodes is 0, not 1.
TEST(ThreePoint, KeepsTheSecondDifferenceInSinglePrecision) {
  EXPECT_EQ(PIP(1, 0.5, {1.0F, 8388608.0F, 16777216.0F}), 8388608 + 0.5 * 16777215 / 2);
}

TEST(ConvertBytes, ReversesInPlaceOrInto) {
  unsigned char bytes[] = {1, 2, 3, 4, 5}, other[] = {9, 9, 9, 9, 9};
  EXPECT_EQ(ConvertBytes(other, bytes, 4), other);
  EXPECT_EQ(std::memcmp(other, "\4\3\2\1\11", 5), 0);
  ConvertBytes(bytes, bytes, 5);
  EXPECT_EQ(std::memcmp(bytes, "\5\4\3\2\1", 5), 0);
  EXPECT_EQ(ConvertBytes(other, bytes, 0), other);
  ConvertBytes(other, bytes, -3);
  EXPECT_EQ(other[0], 4);
}

TEST(RegionalGeoidData, KeepsValueSizeAndScaleWhateverIsPassed) {
  const RegionalGeoidData empty;
  EXPECT_EQ(empty.valueSize, 4);
  EXPECT_EQ(empty.scale, 1);
  EXPECT_EQ(empty.GetDatumName(), nullptr);

  std::wstring name = L"ETRS89";
  RegionalGeoidData record({{1, 2, 3, 4}, 5, 6}, 7, 8, &empty, 9, name.c_str(), L"Bilinear", 2, 100,
                           L"Reader");
  name = L"changed";
  EXPECT_EQ(record.valueSize, 4);
  EXPECT_EQ(record.scale, 1);
  EXPECT_EQ(record.rowPadding, 0);
  record.valueSize = 2;
  RegionalGeoidData copy(record), assigned;
  assigned = copy;
  copy.SetDatumName(L"other");
  EXPECT_EQ(assigned.GetDatumName(), std::wstring(L"ETRS89"));
  EXPECT_NE(assigned.GetDatumName(), record.GetDatumName());
  EXPECT_EQ(assigned.interpolationType.Get(), std::wstring(L"Bilinear"));
  EXPECT_EQ(assigned.parserOriginal.Get(), std::wstring(L"Reader"));
  EXPECT_EQ(assigned.valueSize, 2);
  EXPECT_EQ(assigned.data, &empty);
  const wchar_t* before = assigned.GetDatumName();
  assigned = *&assigned;
  EXPECT_EQ(assigned.GetDatumName(), before);
}

TEST(RegionalGeoid, ReportsItsGrid) {
  const TGridRgn grid({0.5, 0.2, 3.3, 0.4}, 0.01, 0.02);
  float node = 0;
  RegionalGeoid model(grid, 21, 11, &node, 3.5, L"D", L"I");
  EXPECT_EQ(model.GetNX(), 21);
  EXPECT_EQ(model.GetNY(), 11);
  EXPECT_EQ(model.GetData(), &node);
  EXPECT_EQ(model.GetDISMOD(), 3.5);
  EXPECT_EQ(std::memcmp(model.GetPasport(), &grid, sizeof grid), 0);
  double latStep = 0, lonStep = 0;
  EXPECT_TRUE(model.GetSteps(latStep, lonStep));
  EXPECT_EQ(latStep, 0.01);
  EXPECT_EQ(lonStep, 0.02);
  EXPECT_EQ(model.GetRegion(false).L0, 3.3);
  EXPECT_EQ(model.GetRegion(true).B0, 0.5 - 0.005);
  EXPECT_EQ(model.GetRegion(true).dL, 0.4 + 0.02);
  const TAbstractRect<double> bounds = model.GetBounds();
  EXPECT_NEAR(bounds.west, (3.3 - kTwoPi) / kDegree, 1e-12);
  EXPECT_NEAR(bounds.south, 0.5 / kDegree, 1e-12);
  EXPECT_NEAR(bounds.east, (3.7 - kTwoPi) / kDegree, 1e-12);
  EXPECT_NEAR(bounds.north, 0.7 / kDegree, 1e-12);
}

TEST(RegionalGeoid, SaysWhichPointsHaveNoHeight) {
  StoredGrid grid(6, 5, Plane);
  const RegionalGeoid model(grid.Record());
  const auto at = [](double x, double y) {
    return TAbstractPoint3<double>(StoredGrid::kSouth + x * StoredGrid::kLatStep,
                                   StoredGrid::kWest + y * StoredGrid::kLonStep, 0);
  };
  // Half a step outside still counts as inside and takes the edge's stencil.
  const TAbstractPoint3<double> points[] = {at(-0.5, 2), at(2.25, 1), at(7, 2), at(4.4, 5.4)};
  double heights[4];
  constexpr double kRow = 1e-5;  // single-precision rows of up to 60 m
  EXPECT_EQ(model.CountHeight(points, heights, 2), 0);
  EXPECT_NEAR(heights[0], 19.5, kRow);
  EXPECT_EQ(model.CountHeight(points, heights, 4), kSomeWithoutHeight);
  EXPECT_NEAR(heights[1], 12.25, kRow);
  EXPECT_EQ(heights[2], kNoHeight);
  EXPECT_NEAR(heights[3], 58.4, kRow);
  EXPECT_EQ(model.CountHeight(points + 2, heights, 1), kAllOutside);
  EXPECT_EQ(model.CountHeight(points, heights, 0), kAllOutside);
  EXPECT_EQ(model.CountHeight(points, heights, -1), kAllOutside);

  // A full turn away is the same place.
  const TAbstractPoint3<double> turned(points[1][0], points[1][1] - kTwoPi, 0);
  EXPECT_EQ(model.CountHeight(&turned, heights, 1), 0);
  EXPECT_NEAR(heights[0], 12.25, kRow);

  // 20000 is a hole, exactly; any other node of 999 m or more gives no height either.
  for (const double node : {20000.0, 999.5}) {
    for (int r = 0; r < 5; ++r)
      for (int c = 0; c < 6; ++c) grid.Set(r, c, node);
    EXPECT_EQ(model.CountHeight(points, heights, 2), kSomeWithoutHeight);
    EXPECT_EQ(heights[0], kNoHeight);
  }
  const RegionalGeoid bare(grid.Geometry(), 6, 5, nullptr, 0, L"", L"");
  EXPECT_EQ(bare.CountHeight(points, heights, 2), kGeoidFailed);
  EXPECT_FALSE(bare.CountHeightOnGrid(grid.Geometry(), heights, nullptr));
}

// A host's scheme that fails at its second point, or throws.
class Failing : public RegionalGeoid {
 public:
  using RegionalGeoid::RegionalGeoid;
  int INTRP3(const void*, int, TGridRgn&, int, int, double* point, double& height) const override {
    if (point[1] > StoredGrid::kWest + 3 * StoredGrid::kLonStep) throw 1;
    if (point[1] > StoredGrid::kWest + StoredGrid::kLonStep) return 7;
    height = 1;
    return 0;
  }
};

TEST(RegionalGeoid, EndsTheQueryWhenTheInterpolationFails) {
  const StoredGrid grid(6, 5, Plane);
  const Failing model(grid.Record());
  const auto at = [](double y) {
    return TAbstractPoint3<double>(StoredGrid::kSouth, StoredGrid::kWest + y * StoredGrid::kLonStep,
                                   0);
  };
  const TAbstractPoint3<double> points[] = {at(0.5), at(1.5), at(0.5), at(3.5), at(90)};
  double heights[] = {0, 0, 0};
  EXPECT_EQ(model.CountHeight(points, heights, 3), kGeoidFailed);
  EXPECT_EQ(heights[0], 1);
  EXPECT_EQ(heights[2], 0);
  EXPECT_EQ(model.CountHeight(points + 3, heights, 1), kGeoidFailed);
  const TAbstractPoint3<double> outsideFirst[] = {points[4], points[1]};
  EXPECT_EQ(model.CountHeight(outsideFirst, heights, 2), kSomeWithoutHeight);
}

TEST(RegionalGeoid, KeepsCopyingNodesNorthToSouthWithoutLookingAtThem) {
  const StoredGrid grid(4, 3, [](int r, int c) { return r == 1 && c == 2 ? 20000 : Plane(r, c); },
                        {.padding = 7});
  const RegionalGeoid model(grid.Record());
  std::array<double, 12> own;
  EXPECT_TRUE(model.CountHeightOnGrid(grid.Geometry(), own.data(), nullptr));
  EXPECT_EQ(own, (std::array<double, 12>{2, 12, 22, 32, 1, 11, 20000, 31, 0, 10, 20, 30}));

  // Part of it and a column beyond: nearest nodes, kNoHeight outside; the request's steps are not used.
  TGridRgn part = grid.Geometry();
  part.B0 += 0.75 * StoredGrid::kLatStep;
  part.dB = 1.5 * StoredGrid::kLatStep;
  part.L0 += 3.25 * StoredGrid::kLonStep;
  part.dL = StoredGrid::kLonStep;
  part.latStep = part.lonStep = 1;
  std::array<double, 5> heights = {-1, -1, -1, -1, -1};
  EXPECT_TRUE(model.CountHeightOnGrid(part, heights.data(), nullptr));
  EXPECT_EQ(heights, (std::array<double, 5>{32, kNoHeight, 31, kNoHeight, -1}));

  for (const double step : {0.0, std::numeric_limits<double>::quiet_NaN()}) {
    RegionalGeoidData record = grid.Record();
    record.grid.lonStep = step;
    heights.fill(-1);
    EXPECT_TRUE(RegionalGeoid(record).CountHeightOnGrid(part, heights.data(), nullptr));
    EXPECT_EQ(heights[0], -1);
  }
}

// A request counted from −180 to 180 degrees and a grid counted from 0 to 360, also across its edge.
TEST(RegionalGeoid, CopiesNodesAFullTurnAway) {
  constexpr double kStep = kRadPerDeg;
  std::vector<float> z;
  for (int c = 0; c < 20; ++c) z.push_back(static_cast<float>(c));
  for (const int west : {350, -10}) {
    const RegionalGeoid model({{0, 0, west * kStep, 19 * kStep}, kStep, kStep}, 20, 1, z.data(), 0,
                              L"", L"");
    std::vector<double> heights(6, -1);
    for (const int first : {-6, 354}) {
      EXPECT_TRUE(model.CountHeightOnGrid({{0, 0, first * kStep, 5 * kStep}, kStep, kStep},
                                          heights.data(), nullptr));
      EXPECT_EQ(heights, (std::vector<double>{4, 5, 6, 7, 8, 9})) << west << " " << first;
    }
    model.CountHeightOnGrid({{0, 0, 367 * kStep, 5 * kStep}, kStep, kStep}, heights.data(),
                            nullptr);
    EXPECT_EQ(heights, (std::vector<double>{17, 18, 19, kNoHeight, kNoHeight, kNoHeight})) << west;
  }
}

TEST(RegionalGeoid, ReadsNothingWithoutAUsableStride) {
  const StoredGrid grid(4, 3, Plane);
  for (const double padding : {-1.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
    RegionalGeoidData record = grid.Record();
    record.rowPadding = padding;
    EXPECT_EQ(HeightAt(RegionalGeoid(record), 1.25, 1.25).height, kNoHeight);
  }
}

// Exact rational interpolation of published grids (EGM96 15', GEOID18), figures to 1e-9 m.
TEST(RegionalGeoid, InterpolatesPublishedGrids) {
  constexpr double kPrinted = 2e-8;  // doubles; the cut to 1e-12 rad moves a point by 6 µm
  constexpr double kSingle = 1e-5;   // rows in single precision of up to 64 m
  const struct {
    const char* name;
    double south, west, step;
    int NY, NX;
  } grids[] = {{"egm96_15min_n25_n35_e080_e090", 25, 80, 0.25, 41, 41},
               {"egm96_15min_n40_n50_e000_e010", 40, 0, 0.25, 41, 41},
               {"egm96_15min_s05_n05_e175_e185", -5, 175, 0.25, 41, 41},
               {"geoid18_prvi_1min", 15, 291, 1.0 / 60, 361, 301}};
  for (const auto& g : grids) {
    const std::string name = std::string("geoid/") + g.name;
    REQUIRE_REFERENCE_FILE(file, name + ".f32");
    std::vector<float> z(static_cast<std::size_t>(g.NX) * static_cast<std::size_t>(g.NY));
    std::ifstream in(file, std::ios::binary);
    in.read(reinterpret_cast<char*>(z.data()),
            static_cast<std::streamsize>(z.size() * sizeof(float)));
    ASSERT_TRUE(in);
    const double step = g.step * kDegree;
    const RegionalGeoidData record(
        {{g.south * kDegree, (g.NY - 1) * step, g.west * kDegree, (g.NX - 1) * step}, step, step},
        g.NX, g.NY, z.data(), 0, L"", L"", 4, 1.0, L"");
    const RegGeoid2x2SW bilinear(record);
    const RegionalGeoid biquadratic(record);
    const RegGeoidInterpalation4 convolution(record);
    const RegGeoidIntrp_Lagrange4x4SW lagrange(record);
    const struct {
      const RegionalGeoid* model;
      std::size_t column;
      double metres;
    } columns[] = {{&bilinear, 2, kPrinted},
                   {&biquadratic, 3, kSingle},
                   {&convolution, 4, kPrinted},
                   {&lagrange, 5, kPrinted}};
    for (const auto& row : ReadRows(ReferenceFile(name + "_points.csv"))) {
      const TAbstractPoint3<double> point(row[0] * kDegree, row[1] * kDegree, 0);
      for (const auto& c : columns) {
        double height = 0;
        EXPECT_EQ(c.model->CountHeight(&point, &height, 1), 0);
        EXPECT_NEAR(height, row[c.column], c.metres) << g.name << ' ' << row[0] << ' ' << row[1];
      }
    }
    if (g.NX != 41) continue;

    std::vector<std::int16_t> words(z.size());
    std::ifstream wordFile(ReferenceFile(name + "_northfirst_cm.i16"), std::ios::binary);
    wordFile.read(reinterpret_cast<char*>(words.data()),
                  static_cast<std::streamsize>(words.size() * 2));
    ASSERT_TRUE(wordFile);
    RegionalGeoidData scaled(record);
    scaled.data = words.data();
    scaled.valueSize = 2;
    scaled.scale = 100;
    const RegGeoid3x3NWInterpalation northFirst(scaled);
    for (const auto& row : ReadRows(ReferenceFile(name + "_points.csv"))) {
      const TAbstractPoint3<double> point(row[0] * kDegree, row[1] * kDegree, 0);
      double height = 0;
      EXPECT_EQ(northFirst.CountHeight(&point, &height, 1), 0);
      EXPECT_NEAR(height, row[3], kSingle);
    }
  }
}

}  // namespace
}  // namespace zel_cs::geomath
