// Every batch of the library takes its points wherever they stand: the same bits as from columns, and
// nothing written beside them.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/geomath.h"

namespace zel_cs::geomath {
namespace {

constexpr std::size_t kCount = 300;  // more than a block
constexpr double kGuard = -77;

using Columns = std::array<double*, 3>;

// One batch method, on two or three coordinates, and a point that it converts.
struct Batch {
  const char* name;
  std::size_t coordinates;
  std::array<double, 3> point;
  std::function<std::size_t(const Columns&, std::size_t count, std::ptrdiff_t stride)> run;
};

void PrintTo(const Batch& batch, std::ostream* out) { *out << batch.name; }

// The objects that the batches belong to.
struct Objects {
  Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF),
            airy = MakeEllipsoid(6377563.396, 299.3249646);
  Datum datum{&airy,   446.448, -125.157,    542.060,      -0.1502,
              -0.2470, -0.8421, -20.4894e-6, userTypeUser, nullptr};
  TUTMProj utm{kWgs84A, kWgs84InvF, 0.05, 0.9996, 0, 500000, 0};
  LocalToGrid site;
  GridToGround ground;
  CoordinateChain chain{&wgs84, &datum, &utm};

  Objects() {
    site.SetProj(&utm);
    site.mode = LocalToGrid::kBoth;
    for (int i = 0; i < 4; ++i) site.SetPlaneParam(i == 2 ? 1.0001 : 0.1 * (i + 1), i, 0);
    site.SetHeightParam(42, 0, 0);
    ground.scale = 1.0003;
    ground.rotation = 0.2;
  }
};

std::vector<Batch> Batches() {
  static const Objects o;
  constexpr std::array<double, 3> kGeodetic = {0.9, 0.06, 50}, kGrid = {5.7e6, 5.3e5, 20};
  constexpr std::array<double, 3> kGeocentric = {3.9e6, 2.4e5, 5e6};
  constexpr unsigned int kAll = LocalToGrid::kBoth;
  return {
      {"Ellipsoid_BLH_to_XYZ", 3, kGeodetic,
       [](auto& c, auto n, auto s) { return o.wgs84.BLH_to_XYZ_Batch(c[0], c[1], c[2], n, s); }},
      {"Ellipsoid_XYZ_to_BLH", 3, kGeocentric,
       [](auto& c, auto n, auto s) { return o.wgs84.XYZ_to_BLH_Batch(c[0], c[1], c[2], n, s); }},
      {"Datum_ToWGS84Datum", 3, kGeocentric,
       [](auto& c, auto n, auto s) { return o.datum.ToWGS84DatumBatch(c[0], c[1], c[2], n, s); }},
      {"Datum_ToLocalDatum", 3, kGeocentric,
       [](auto& c, auto n, auto s) { return o.datum.ToLocalDatumBatch(c[0], c[1], c[2], n, s); }},
      {"TGeoProj_Forward", 2, kGeodetic,
       [](auto& c, auto n, auto s) { return o.utm.ForwardBatch(c[0], c[1], n, s); }},
      {"TGeoProj_Inverse", 2, kGrid,
       [](auto& c, auto n, auto s) { return o.utm.InverseBatch(c[0], c[1], n, s); }},
      {"LocalToGrid_ToLocal", 3, kGrid,
       [](auto& c, auto n, auto s) { return o.site.ToLocalBatch(c[0], c[1], c[2], n, kAll, s); }},
      {"LocalToGrid_ToGrid", 3, kGrid,
       [](auto& c, auto n, auto s) { return o.site.ToGridBatch(c[0], c[1], c[2], n, kAll, s); }},
      {"LocalToGrid_Forward", 3, kGeodetic,
       [](auto& c, auto n, auto s) { return o.site.ForwardBatch(c[0], c[1], c[2], n, kAll, s); }},
      {"LocalToGrid_Inverse", 3, kGrid,
       [](auto& c, auto n, auto s) { return o.site.InverseBatch(c[0], c[1], c[2], n, kAll, s); }},
      {"GridToGround_ToGround", 2, kGrid,
       [](auto& c, auto n, auto s) { return o.ground.ToGroundBatch(c[0], c[1], n, s); }},
      {"GridToGround_ToGrid", 2, kGrid,
       [](auto& c, auto n, auto s) { return o.ground.ToGridBatch(c[0], c[1], n, s); }},
      {"CoordinateChain_ToLocal", 3, kGeodetic,
       [](auto& c, auto n, auto s) { return o.chain.ToLocalBatch(c[0], c[1], c[2], n, s); }},
      {"CoordinateChain_ToGlobal", 3, kGrid,
       [](auto& c, auto n, auto s) { return o.chain.ToGlobalBatch(c[0], c[1], c[2], n, s); }},
  };
}

// Where the coordinates of point 0 stand, and the stride.
struct Layout {
  const char* name;
  std::array<std::size_t, 3> first;
  std::ptrdiff_t stride;
};

std::vector<Layout> Layouts(std::size_t coordinates) {
  constexpr std::size_t n = kCount;
  if (coordinates == 2)
    return {{"pairs", {0, 1}, 2},
            {"pairs, the second first", {1, 0}, 2},
            {"pairs with a gap", {0, 2}, 4},
            {"every second of two arrays", {0, 2 * n + 1}, 2},
            {"from the last pair to the first", {2 * n - 2, 2 * n - 1}, -2},
            {"columns from their ends", {n - 1, 2 * n - 1}, -1}};
  return {{"triples", {0, 1, 2}, 3},
          {"triples, the last first", {2, 1, 0}, 3},
          {"triples, the first two turned", {1, 0, 2}, 3},
          {"triples, the last two turned", {0, 2, 1}, 3},
          {"triples, the last moved first", {2, 0, 1}, 3},
          {"triples in quadruples", {0, 1, 2}, 4},
          {"spaced triples", {0, 2, 4}, 6},
          {"every third of three arrays", {0, 3 * n + 1, 6 * n + 2}, 3},
          {"pairs and an array beside", {0, 1, 3 * n + 5}, 3},
          {"from the last triple to the first", {3 * n - 3, 3 * n - 2, 3 * n - 1}, -3},
          {"columns from their ends", {n - 1, 2 * n - 1, 3 * n - 1}, -1}};
}

class BatchLayouts : public ::testing::TestWithParam<Batch> {
 protected:
  // Coordinate c of point i.
  double At(std::size_t c, std::size_t i) const {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double start = GetParam().point[c];
    return i == 7 && c == 0 ? nan : start * (1 + 1e-6 * static_cast<double>((c + 1) * i));
  }
};

TEST_P(BatchLayouts, GiveTheSameBits) {
  const Batch& batch = GetParam();
  std::array<std::vector<double>, 3> expected;
  for (std::size_t c = 0; c < batch.coordinates; ++c)
    for (std::size_t i = 0; i < kCount; ++i) expected[c].push_back(At(c, i));
  const Columns columns = {expected[0].data(), expected[1].data(), expected[2].data()};
  ASSERT_EQ(batch.run(columns, kCount, 1), kCount - 1);

  for (const Layout& layout : Layouts(batch.coordinates)) {
    SCOPED_TRACE(layout.name);
    std::vector<double> memory(10 * kCount, kGuard);
    const auto place = [&](std::size_t c, std::size_t i) -> double& {
      const auto offset = static_cast<std::ptrdiff_t>(i) * layout.stride;
      return memory[static_cast<std::size_t>(static_cast<std::ptrdiff_t>(layout.first[c]) +
                                             offset)];
    };
    for (std::size_t c = 0; c < batch.coordinates; ++c)
      for (std::size_t i = 0; i < kCount; ++i) place(c, i) = At(c, i);
    Columns first{};
    for (std::size_t c = 0; c < batch.coordinates; ++c) first[c] = &place(c, 0);
    EXPECT_EQ(batch.run(first, kCount, layout.stride), kCount - 1);

    for (std::size_t c = 0; c < batch.coordinates; ++c)
      for (std::size_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(std::isnan(place(c, i)), i == 7) << c << ' ' << i;
        if (i != 7) {
          ASSERT_EQ(place(c, i), expected[c][i]) << c << ' ' << i;
        }
        place(c, i) = kGuard;
      }
    EXPECT_EQ(memory, std::vector<double>(memory.size(), kGuard)) << "written beside the points";
  }
}

// A point alone takes shorter ways through the classes.
TEST_P(BatchLayouts, GiveTheSameBitsOneByOne) {
  const Batch& batch = GetParam();
  std::array<std::vector<double>, 3> together, alone;
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t i = 0; i < kCount; ++i) together[c].push_back(At(c, i));
  alone = together;
  batch.run({together[0].data(), together[1].data(), together[2].data()}, kCount, 1);
  for (std::size_t i = 0; i < kCount; ++i) {
    const Columns point = {&alone[0][i], &alone[1][i], &alone[2][i]};
    ASSERT_EQ(batch.run(point, 1, 1), i == 7 ? 0u : 1u) << i;
    for (std::size_t c = 0; c < batch.coordinates && i != 7; ++c)
      ASSERT_EQ(alone[c][i], together[c][i]) << c << ' ' << i;
  }
}

TEST_P(BatchLayouts, TakeNoPointsFromNowhere) {
  for (const std::ptrdiff_t stride : {1, 2, 3, -1})
    EXPECT_EQ(GetParam().run({nullptr, nullptr, nullptr}, 0, stride), 0u);
}

INSTANTIATE_TEST_SUITE_P(Method, BatchLayouts, ::testing::ValuesIn(Batches()),
                         [](const auto& batch) { return std::string(batch.param.name); });

}  // namespace
}  // namespace zel_cs::geomath
