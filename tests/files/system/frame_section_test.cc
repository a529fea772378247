// Changes of frame and motions of system files, by published examples: geocentric, metres.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "files/exchange/grid_wkt.h"
#include "files/system/system_file.h"
#include "files/words/user_error.h"
#include "tests/support/reference_data.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
using nlohmann::json;

namespace {

constexpr double kPrinted = 0.51e-4;  // metres: half a unit of the last published figure
constexpr double kRounding = 1e-8;    // metres: of longitudes up to 3 rad, there and back
const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

struct Point {
  double x, y, z;
};

json Geographic(json more) {
  json system = {{"global", {{"ellipsoid", "GRS80"}}}};
  system.update(more);
  return system;
}

std::unique_ptr<CoordinateSystem> Parse(const json& more) {
  return ParseSystem(Geographic(more).dump(), "made.json", ProjectionNeed::optional);
}

// To the datum and back.
void ExpectBothWays(const json& more, double date, Point p, const Point& expected,
                    double tolerance = kPrinted) {
  const auto system = Parse(more);
  const CoordinateChain& chain = system->Chain();
  EXPECT_TRUE(chain.NeedsDates());
  const Point given = p;
  kGrs80.XYZ_to_BLH_Batch(&p.x, &p.y, &p.z, 1);
  Point q = p;
  EXPECT_EQ(chain.ToLocal(q.x, q.y, q.z).failedAt, ChainStep::missingDate);
  ASSERT_TRUE(chain.ToLocal(p.x, p.y, p.z, date)) << more;
  q = p;
  kGrs80.BLH_to_XYZ_Batch(&q.x, &q.y, &q.z, 1);
  EXPECT_NEAR(q.x, expected.x, tolerance) << more;
  EXPECT_NEAR(q.y, expected.y, tolerance) << more;
  EXPECT_NEAR(q.z, expected.z, tolerance) << more;
  ASSERT_TRUE(chain.ToGlobal(p.x, p.y, p.z, date));
  kGrs80.BLH_to_XYZ_Batch(&p.x, &p.y, &p.z, 1);
  EXPECT_NEAR(p.x, given.x, kRounding);
  EXPECT_NEAR(p.y, given.y, kRounding);
  EXPECT_NEAR(p.z, given.z, kRounding);
}

json Shift(const json& entry) {
  json shift = {{"place", "before datum"}};
  shift.update(entry);
  return {{"shifts", {shift}}};
}

// Budd in 2015.0, of the Nordic Geodetic Commission.
constexpr Point kBudd{3513638.0964, 778956.5470, 5248216.5248};

TEST(FrameSection, FramesByTheirNames) {
  for (const auto& [to, expected] :
       {std::pair("ETRF2014", Point{3513638.5233, 778956.1497, 5248216.2980}),
        std::pair("ETRF2000", Point{3513638.5629, 778956.1974, 5248216.2461})}) {
    const json names = {{"from", "ITRF2014"}, {"to", to}};
    ExpectBothWays({{"frame", names}}, 2015, kBudd, expected);
    ExpectBothWays(Shift({{"frame", names}}), 2015, kBudd, expected);
  }
  const auto same = Parse({{"frame", {{"from", "ITRF2020"}, {"to", "ITRF2020"}}}});
  EXPECT_FALSE(same->Chain().NeedsDates());
}

// EPSG Guidance Note 7-2, method 1056: ITRF2008 at 2013.90 to GDA94, in the coordinate-frame sense.
constexpr Point kGuidance{-3789470.710, 4841770.404, -1690893.952};
constexpr Point kGuidanceGda94{-3789470.004, 4841770.686, -1690895.108};

json Guidance() {
  return json::parse(R"({"similarity": {"dX": -0.08468, "dY": -0.01942, "dZ": 0.03201,
    "rX": -0.0004254, "rY": 0.0022578, "rZ": 0.0024015, "ppm": 0.00971,
    "rates": {"dX": 0.00142, "dY": 0.00134, "dZ": 0.0009,
              "rX": 0.0015461, "rY": 0.001182, "rZ": 0.0011551, "ppm": 0.000109},
    "epoch": 1994}})");
}

TEST(FrameSection, FourteenParameters) {
  constexpr double kMillimetre = 0.51e-3;
  json entry = Guidance();
  ExpectBothWays(Shift(entry), 2013.9, kGuidance, kGuidanceGda94, kMillimetre);
  json& set = entry["similarity"];  // the same in the other sense
  for (const char* key : {"rX", "rY", "rZ"}) {
    set[key] = -set[key].get<double>();
    set["rates"][key] = -set["rates"][key].get<double>();
  }
  set["rotation"] = "position-vector";
  ExpectBothWays(Shift(entry), 2013.9, kGuidance, kGuidanceGda94, kMillimetre);
}

// The same with the parameters of the date, which hold at it alone.
TEST(FrameSection, SevenParametersOfOneDate) {
  json set = Guidance().at("similarity");
  for (const auto& [key, rate] : set["rates"].items())
    set[key] = set[key].get<double>() + 19.9 * rate.get<double>();
  set.erase("rates");
  set.erase("epoch");
  set["validAt"] = 2013.9;
  const json system = Shift({{"similarity", set}});
  ExpectBothWays(system, 2013.9, kGuidance, kGuidanceGda94, 0.51e-3);
  double b = -0.3, l = 2.2, h = 0;
  EXPECT_EQ(Parse(system)->Chain().ToLocal(b, l, h, 2014).failedAt, ChainStep::modelYears);
}

// GDA2020 Technical Manual: ITRF2014 at 2018.0 moved to 2020.0 with the Australian plate.
TEST(FrameSection, Plates) {
  const Point at2018{-4052052.6588, 4212835.9938, -2545104.6946};
  const Point at2020{-4052052.7373, 4212835.9835, -2545104.5867};
  const json plate = {{"wX", 1.50379}, {"wY", 1.18346}, {"wZ", 1.20716}, {"epoch", "2020-01-01"}};
  ExpectBothWays(Shift({{"plate", plate}, {"inverse", "yes"}}), 2018, at2018, at2020);
  const json motion = {{"plate", {{"wX", 1.50379}, {"wY", 1.18346}, {"wZ", 1.20716}}}};
  ExpectBothWays({{"frame", {{"epoch", 2020}, {"motion", motion}}}}, 2018, at2018, at2020);
  // A following step stands at the epoch, where the change to GDA2020 is none.
  json chain = {{"frame", {{"epoch", 2020}, {"motion", motion}}}};
  chain.update(Shift({{"frame", {{"from", "ITRF2014"}, {"to", "GDA2020"}}}, {"date", 2020}}));
  ExpectBothWays(chain, 2018, at2018, at2020);
  // 34.6 mm in four years, the plate of the table.
  const json named = {{"plate", {{"model", "ITRF2020"}, {"name", "AUST"}}}};
  const auto table = Parse({{"frame", {{"epoch", 2020}, {"motion", named}}}});
  Point p = at2018;
  kGrs80.XYZ_to_BLH_Batch(&p.x, &p.y, &p.z, 1);
  ASSERT_TRUE(table->Chain().ToLocal(p.x, p.y, p.z, 2018));
  kGrs80.BLH_to_XYZ_Batch(&p.x, &p.y, &p.z, 1);
  constexpr double kModels = 0.003;  // by which the two models differ in two years
  EXPECT_NEAR(p.x, at2020.x, kModels);
  EXPECT_NEAR(p.y, at2020.y, kModels);
  EXPECT_NEAR(p.z, at2020.z, kModels);
}

// 40-digit evaluations of the published grids.
TEST(FrameSection, DeformationModels) {
  REQUIRE_REFERENCE_FILE(path, "grids/nz_linz_nzgd2000-20180701.json");
  const auto system = Parse({{"frame", {{"motion", {{"file", path.string()}}}}}});
  constexpr double kDegree = 1.7453292519943295e-2, kFigure = 0.6e-10;
  double b = -43.5499968084 * kDegree, l = 172.5999949843 * kDegree, h = 10.0366760;
  ASSERT_TRUE(system->Chain().ToLocal(b, l, h, 2011.2));
  EXPECT_NEAR(b / kDegree, -43.55, kFigure);
  EXPECT_NEAR(l / kDegree, 172.6, kFigure);
  EXPECT_NEAR(h, 10, 1e-7);
  EXPECT_EQ(system->Chain().ToLocal(b, l, h, 2051).failedAt, ChainStep::modelYears);
  EXPECT_EQ(system->Files().size(), 1U);
}

TEST(FrameSection, VelocityGrids) {
  REQUIRE_REFERENCE_FILE(path, "grids/eur_nkg_nkgrf03vel_realigned.tif");
  const auto system = Parse({{"frame", {{"epoch", 2000}, {"motion", {{"file", path.string()}}}}}});
  constexpr double kDegree = 1.7453292519943295e-2, kFigure = 0.6e-10;
  double b = 62.9999999937 * kDegree, l = 21.5000000049 * kDegree, h = 0.0083;
  ASSERT_TRUE(system->Chain().ToLocal(b, l, h, 2001));
  EXPECT_NEAR(b / kDegree, 63, kFigure);
  EXPECT_NEAR(l / kDegree, 21.5, kFigure);
  EXPECT_NEAR(h, 0, 0.6e-4);
}

TEST(FrameSection, DatesOfPositions) {
  EXPECT_TRUE(std::isnan(Parse({{"frame", json::object()}})->Date()));
  EXPECT_EQ(Parse({{"frame", {{"date", 2026.9}}}})->Date(), 2026.9);
  EXPECT_EQ(Parse({{"frame", {{"date", "2026-01-01"}}}})->Date(), 2026);
}

// Positions go through a datum at a fixed height on the global ellipsoid: frames stand before it.
TEST(FrameSection, StandsBeforeADatumAtAFixedHeight) {
  const json datum = {{"dX", 0}, {"dY", 0}, {"dZ", 0},  {"rX", 0},
                      {"rY", 0}, {"rZ", 0}, {"ppm", 0}, {"fixedHeight", 43}};
  const json frame = {{"from", "ITRF2014"}, {"to", "ETRF2014"}};
  ExpectBothWays({{"local", {{"ellipsoid", "GRS80"}}}, {"datum", datum}, {"frame", frame}}, 2015,
                 kBudd, {3513638.5233, 778956.1497, 5248216.2980});
}

// The grid is in the frame of the datum, whatever the positions come in.
TEST(FrameSection, GridsAreNotInTheFrameOfThePositions) {
  json system = json::parse(R"({"crs": {"geographic": "EPSG:9990"}, "projection": {"name": "TMERC",
    "Central Meridian": 9, "Scale": 0.9996, "Lat0": 0, "East0": 500000, "North0": 0}})");
  EXPECT_NE(GridWkt(*Parse(system)).find("ITRF2020"), std::string::npos);
  system["frame"] = {{"from", "ITRF2020"}, {"to", "ETRF2000"}};
  EXPECT_EQ(GridWkt(*Parse(system)).find("ITRF2020"), std::string::npos);
  EXPECT_NE(GridWkt(*Parse(system)).find("GRS"), std::string::npos);
}

TEST(FrameSection, SaysWhatIsWrong) {
  const auto said = [](const json& more) {
    try {
      Parse(more);
    } catch (const UserError& error) {
      return std::string(error.what());
    }
    return std::string("no complaint");
  };
  const json plate = {{"model", "ITRF2020"}, {"name", "EURA"}, {"epoch", 2020}};
  json both = Guidance(), bare = Guidance(), named = plate;
  both["similarity"]["validAt"] = 2000;
  bare["similarity"].erase("epoch");
  named["name"] = "EURO";
  const std::pair<json, const char*> cases[] = {
      {{{"frame", {{"from", "ITRF2021"}, {"to", "ETRF2000"}}}},
       "\"frame.from\" is \"ITRF2021\", which is no frame that is known; did you mean"},
      {{{"frame", {{"from", "PATRF2022"}, {"to", "NATRF2022"}}}},
       "\"frame.from\" is \"PATRF2022\", whose parameters are not in the table of frames, and no "
       "other"},
      {{{"frame", {{"from", "ITRF2020"}}}}, "\"frame.to\" is missing"},
      {{{"frame", {{"date", "soon"}}}}, "\"frame.date\" must be a date: \"soon\" is no date"},
      {{{"frame", {{"date", 26.9}}}}, "\"frame.date\" must be a date: \"26.9\" is no date"},
      {{{"frame", {{"epoch", 2020}}}}, "\"frame.epoch\" needs a \"motion\""},
      {{{"frame", {{"motion", {{"plate", {{"model", "ITRF2020"}, {"name", "EURA"}}}}}}}},
       "\"frame.motion.plate.epoch\" is missing"},
      {{{"frame", {{"motion", {{"place", "heights"}}}}}}, "\"frame.motion.place\" is unknown"},
      {Shift({{"plate", named}}), "\"shifts[0].plate.name\" is \"EURO\"; did you mean \"EURA\"?"},
      {Shift({{"plate", {{"wX", 1}, {"name", "EURA"}}}}),
       "\"shifts[0].plate.name\" cannot stand beside an angular velocity"},
      {Shift(both), "\"shifts[0].similarity.validAt\" cannot stand beside \"rates\""},
      {Shift(bare), "\"shifts[0].similarity.epoch\" is missing"},
      {Shift({{"offset", {{"height", 1}}}, {"date", 2000}}),
       "\"shifts[0].date\" is said of a change of frame or a motion only"},
      {Shift({{"plate", plate}, {"epoch", 2020}}),
       "\"shifts[0].epoch\" is said of a \"file\" only"},
  };
  for (const auto& [more, expected] : cases)
    EXPECT_NE(said(more).find(expected), std::string::npos) << said(more) << "\n" << expected;
  json place = Shift({{"plate", plate}});
  place["shifts"][0]["place"] = "heights";
  EXPECT_NE(said(place).find("\"shifts[0].place\""), std::string::npos);
}

}  // namespace
