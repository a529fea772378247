#include "geomath/shift/ntv2_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "geomath/base/angle.h"
#include "tests/shift/ntv2_bytes.h"
#include "tests/support/scratch_folder.h"

namespace zel_cs::geomath {
namespace {

constexpr double kSecond = kRadPerArcSecond;

constexpr double kHeld = 2e-6;  // arc-seconds: single precision of shifts up to 16 of them

// Two levels of nesting, in arc-seconds: a country, a county in it, a town in that, and a second
// county that shares an edge with the first. Every surface is bilinear, so that interpolation gives
// it exactly, and each is told from the others by its constant.
std::vector<Ntv2SubGrid> Nested() {
  const auto surface = [](double constant) {
    return [constant](double lat, double lonWest) {
      return constant + (lat - 180000) / 4096 + (lonWest - 36000) / 8192;
    };
  };
  const auto flat = [](double constant) { return [constant](double, double) { return constant; }; };
  return {
      {"COUNTRY", "NONE", 180000, 187200, 36000, 46800, 900, 1800, surface(1), flat(-2)},
      {"COUNTY", "COUNTRY", 181800, 183600, 37800, 41400, 300, 600, surface(2), flat(-4)},
      {"TOWN", "COUNTY", 182400, 183000, 39000, 39600, 60, 60, surface(3), flat(-8)},
      {"COUNTY2", "COUNTRY", 181800, 183600, 41400, 43200, 300, 600, surface(4), flat(-16)},
  };
}

struct Shifted {
  double lat, lonWest;  // arc-seconds added
};

// The shift of a point in arc-seconds of latitude and positive-west longitude.
Shifted ShiftAt(const ShiftGrid& grid, double lat, double lonWest) {
  double b = lat * kSecond, l = -lonWest * kSecond, h = 12.5;
  EXPECT_TRUE(grid.Forward(b, l, h)) << lat << ' ' << lonWest;
  EXPECT_EQ(h, 12.5);
  return {(b - lat * kSecond) / kSecond, (-l - lonWest * kSecond) / kSecond};
}

TEST(Ntv2File, ReadsBothByteOrdersAndAllUnits) {
  const auto grids = Nested();
  const struct {
    const char* type;
    double perUnit;
  } units[] = {{"SECONDS", 1}, {"MINUTES", 60}, {"DEGREES", 3600}};
  for (const auto& [type, perUnit] : units)
    for (const bool bigEndian : {false, true}) {
      auto scaled = grids;
      for (Ntv2SubGrid& g : scaled) {
        for (double* limit : {&g.south, &g.north, &g.east, &g.west, &g.latStep, &g.lonStep})
          *limit /= perUnit;
        const auto inUnit = [perUnit = perUnit](auto shift) {
          return
              [=](double lat, double lon) { return shift(lat * perUnit, lon * perUnit) / perUnit; };
        };
        g.latShift = inUnit(g.latShift);
        g.lonShift = inUnit(g.lonShift);
      }
      Ntv2Error error;
      Ntv2Overview overview;
      const auto grid = ParseNtv2(Ntv2Bytes(scaled, {type, bigEndian}), &error, &overview);
      ASSERT_TRUE(grid) << type << ": " << error.reason;
      EXPECT_EQ(overview.systemFrom, "OLD");
      EXPECT_EQ(overview.minorTo, 6356752.314);
      const Shifted country = ShiftAt(*grid, 184100, 44500);
      EXPECT_NEAR(country.lat, 1 + 4100.0 / 4096 + 8500.0 / 8192, kHeld) << type;
      EXPECT_NEAR(country.lonWest, -2, kHeld) << type;
      EXPECT_NEAR(ShiftAt(*grid, 182700, 38000).lonWest, -4, kHeld) << type;
      EXPECT_NEAR(ShiftAt(*grid, 182700, 39333).lonWest, -8, kHeld) << type;
      double accuracies[2];
      ASSERT_TRUE(grid->Accuracy(180450 * kSecond, -36900 * kSecond, accuracies));
      EXPECT_NEAR(accuracies[0], 0.25, 1e-12);
      EXPECT_NEAR(accuracies[1], 0.5, 1e-9);  // half-way between rows 0 and 1
    }
}

// The northern and western edge of a sub-grid belong to its neighbour or parent, the southern and
// eastern one to itself, and outer edges to the grid: whatever the order in the file.
TEST(Ntv2File, ResolvesEdgesWhateverTheOrder) {
  const struct {
    const char* where;
    double lat, lonWest, lonShift;
  } rows[] = {
      {"edge between two counties", 182700, 41400, -16},
      {"northern edge of a county", 183600, 40000, -2},
      {"western edge of a county", 182700, 43200, -2},
      {"southern edge of a county", 181800, 40000, -4},
      {"eastern edge of a county", 182700, 37800, -4},
      {"northern edge of the town", 183000, 39300, -4},
      {"south-eastern corner of the town", 182400, 39000, -8},
      {"north-western corner of the country", 187200, 46800, -2},
      {"south-eastern corner of the country", 180000, 36000, -2},
  };
  auto grids = Nested();
  std::vector<int> order = {0, 1, 2, 3};
  do {
    std::vector<Ntv2SubGrid> permuted;
    for (const int i : order) permuted.push_back(grids[static_cast<std::size_t>(i)]);
    const auto grid = ParseNtv2(Ntv2Bytes(permuted));
    ASSERT_TRUE(grid);
    for (const auto& row : rows)
      EXPECT_NEAR(ShiftAt(*grid, row.lat, row.lonWest).lonWest, row.lonShift, kHeld) << row.where;
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST(Ntv2File, RefusesPointsOutside) {
  const auto grid = ParseNtv2(Ntv2Bytes(Nested()));
  ASSERT_TRUE(grid);
  const double outside[][2] = {{179999.9, 40000}, {187200.1, 40000}, {184000, 35999.9},
                               {184000, 46800.1}, {-184000, 40000},  {184000, 1e9}};
  for (const auto& [lat, lonWest] : outside) {
    double b = lat * kSecond, l = -lonWest * kSecond, h = 1;
    const double b0 = b, l0 = l;
    EXPECT_EQ(grid->Forward(b, l, h).status, ShiftStatus::outside) << lat << ' ' << lonWest;
    EXPECT_TRUE(b == b0 && l == l0 && h == 1);
  }
}

TEST(Ntv2File, ToleratesWhatFilesInUseHave) {
  auto grids = Nested();
  const auto sound = Ntv2Bytes(grids);
  for (Ntv2SubGrid& grid : grids) grid.countError = -3;
  auto odd = Ntv2Bytes(grids, {.end = false});
  const auto grid = ParseNtv2(odd), expected = ParseNtv2(sound);
  ASSERT_TRUE(grid && expected);
  EXPECT_EQ(ShiftAt(*grid, 182700, 38000).lat, ShiftAt(*expected, 182700, 38000).lat);
  odd.resize(odd.size() + 5, std::byte{7});
  EXPECT_TRUE(ParseNtv2(odd));
}

// Whatever is cut off, the reason is given; the last byte that counts is that of the last node.
TEST(Ntv2File, RefusesEveryTruncation) {
  auto grids = Nested();
  grids.resize(2);
  const auto file = Ntv2Bytes(grids, {.end = false});
  for (std::size_t size = 0; size < file.size(); ++size) {
    const std::vector<std::byte> cut(file.begin(),
                                     file.begin() + static_cast<std::ptrdiff_t>(size));
    Ntv2Error error;
    ASSERT_FALSE(ParseNtv2(cut, &error)) << size;
    ASSERT_EQ(error.fault, Ntv2Fault::truncated) << size << ": " << error.reason;
    ASSERT_EQ(error.offset, size);
    ASSERT_FALSE(error.reason.empty());
  }
  EXPECT_TRUE(ParseNtv2(file));
}

// Overwrites eight bytes, the value of a record, in a sound file.
std::vector<std::byte> WithNumber(std::size_t record, double number) {
  auto file = Ntv2Bytes(Nested());
  std::memcpy(file.data() + record * 16 + 8, &number, sizeof number);
  return file;
}

TEST(Ntv2File, RefusesHostileHeaders) {
  // Records of the first sub-grid's header: 15 S_LAT, 16 N_LAT, 17 E_LONG, 18 W_LONG, 19 and 20 the
  // increments; 22 and 23 hold its first nodes.
  const struct {
    std::size_t record;
    double number;
  } numbers[] = {{15, 188100},  {15, NAN}, {16, INFINITY}, {16, 187500}, {17, -1e300}, {18, 36000},
                 {18, 36000.1}, {19, 0},   {19, -900},     {20, 1e-300}, {20, NAN},    {19, 1e-3}};
  for (const auto& row : numbers) {
    Ntv2Error error;
    EXPECT_FALSE(ParseNtv2(WithNumber(row.record, row.number), &error));
    EXPECT_TRUE(error.fault == Ntv2Fault::extent || error.fault == Ntv2Fault::truncated)
        << row.record << ' ' << row.number << ": " << error.reason;
  }

  const struct {
    const char* what;
    Ntv2Fault fault;
    void (*spoil)(std::vector<Ntv2SubGrid>&);
  } rows[] = {
      {"beyond the pole", Ntv2Fault::extent,
       [](auto& g) { g = {g[0]}, g[0].south = 321300, g[0].north = 324900; }},
      {"more than a turn", Ntv2Fault::extent,
       [](auto& g) { g = {g[0]}, g[0].west = 36000 + 1296000 + 1800; }},
      {"unknown parent", Ntv2Fault::parent, [](auto& g) { g[2].parent = "county"; }},
      {"its own parent", Ntv2Fault::parent, [](auto& g) { g[1].parent = "COUNTY"; }},
      {"a circle of parents", Ntv2Fault::parent, [](auto& g) { g[1].parent = "TOWN"; }},
      {"infinite shift", Ntv2Fault::extent,
       [](auto& g) { g[0].latShift = [](double, double) { return INFINITY; }; }},
  };
  for (const auto& row : rows) {
    auto grids = Nested();
    row.spoil(grids);
    Ntv2Error error;
    EXPECT_FALSE(ParseNtv2(Ntv2Bytes(grids), &error)) << row.what;
    EXPECT_EQ(error.fault, row.fault) << row.what << ": " << error.reason;
  }

  const struct {
    std::size_t at;
    const char* bytes;
    Ntv2Fault fault;
  } texts[] = {
      {0, "NUM_XREC", Ntv2Fault::notNtv2},  {8, "\x0c", Ntv2Fault::notNtv2},
      {24, "\x0c", Ntv2Fault::header},      {40, "\xff\xff", Ntv2Fault::header},
      {56, "GRADS   ", Ntv2Fault::header},  {176, "SUB_NAMX", Ntv2Fault::header},
      {336, "GS_XOUNT", Ntv2Fault::header},
  };
  for (const auto& row : texts) {
    auto file = Ntv2Bytes(Nested());
    std::memcpy(file.data() + row.at, row.bytes, std::string(row.bytes).size());
    Ntv2Error error;
    EXPECT_FALSE(ParseNtv2(file, &error)) << row.bytes;
    EXPECT_EQ(error.fault, row.fault) << row.at << ": " << error.reason;
  }
}

TEST(Ntv2File, ReadsFiles) {
  const ScratchFolder scratch;
  const auto path = scratch.Path() / "file.gsb";
  const auto bytes = Ntv2Bytes(Nested());
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  EXPECT_TRUE(ReadNtv2File(path.c_str()));
  std::filesystem::remove(path);
  Ntv2Error error;
  for (const char* bad : {path.c_str(), "/", static_cast<const char*>(nullptr)}) {
    error = {};
    EXPECT_FALSE(ReadNtv2File(bad, &error));
    EXPECT_EQ(error.fault, Ntv2Fault::unreadable);
    EXPECT_FALSE(error.reason.empty());
  }
}

}  // namespace
}  // namespace zel_cs::geomath
