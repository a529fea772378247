#include "files/system/system_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "files/system/ellipsoid_names.h"
#include "files/system/projection_names.h"
#include "files/system/units_section.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "tests/support/tolerance.h"

using namespace geomath_files;
using nlohmann::json;
using tolerance::kDegree;

namespace {

json Britain() {
  return json::parse(R"({
    "global": {"ellipsoid": "WGS84"},
    "local": {"a": 6377563.396, "invF": 299.3249646},
    "datum": {"dX": 446.448, "dY": -125.157, "dZ": 542.060,
              "rX": -0.1502, "rY": -0.2470, "rZ": -0.8421, "ppm": -20.4894},
    "projection": {"name": "TM", "Central Meridian": -2, "Scale": 0.9996012717,
                   "Lat0": 49, "East0": 400000, "North0": -100000}
  })");
}

std::string ComplaintAbout(const std::string& text) {
  try {
    ParseSystem(text, "site.json");
  } catch (const UserError& error) {
    return error.what();
  }
  return "no complaint";
}

std::function<void(json&)> Ground(json ground) {
  return [ground = std::move(ground)](json& system) {
    system["ground"] = ground.is_null() ? json::object() : ground;
  };
}

struct LocalPosition {
  double x, y, h;
};

// TP03 of the published points of Great Britain.
LocalPosition ToLocal(const std::string& text) {
  const auto system = ParseSystem(text, "site.json");
  LocalPosition p{50.43885825610 * kDegree, -4.10864563561 * kDegree, 215.251};
  EXPECT_TRUE(system->Chain().ToLocal(p.x, p.y, p.h));
  return p;
}

}  // namespace

// Grid coordinates of the seven-parameter chain by an independent evaluation, to 0.1 mm.
TEST(SystemFile, UnitsHaveNamesOrMetres) {
  json system = Britain();
  system["units"] = {{"grid", "US survey foot"},
                     {"height", {{"name", "fathom"}, {"metres", 1.8288}}}};
  const GridUnits units = ParseSystem(system.dump(), "s")->Units();
  EXPECT_EQ(units.plane.metres, 1200.0 / 3937);
  EXPECT_EQ(units.height.metres, 1.8288);
  EXPECT_EQ(json(UnitsSection(units)), system["units"]);
  system["units"] = {{"grid", "sft"}};
  EXPECT_NE(ComplaintAbout(system.dump()).find("\"units.grid\": \"sft\" is no unit"),
            std::string::npos);
  system["units"] = {{"grid", {{"name", "nothing"}, {"metres", 0}}}};
  EXPECT_NE(ComplaintAbout(system.dump()).find("\"units.grid.metres\" must be more than 0"),
            std::string::npos);
}

TEST(SystemFile, BuildsTheChainItDescribes) {
  constexpr double kSeriesMetres = 3e-4;  // TTMProj against an exact TM
  for (const char* name : {"TM", "tm", "TMERC"}) {
    json system = Britain();
    system["projection"]["name"] = name;
    const LocalPosition p = ToLocal(system.dump());
    EXPECT_NEAR(p.x, 62015.2109, kSeriesMetres) << name;
    EXPECT_NEAR(p.y, 250357.8185, kSeriesMetres) << name;
    EXPECT_NEAR(p.h, 165.6607, kSeriesMetres) << name;
  }
}

TEST(SystemFile, EquivalentNotationsGiveEqualResults) {
  const LocalPosition expected = ToLocal(Britain().dump());
  const std::function<void(json&)> changes[] = {
      [](json& s) {
        s["local"] = {{"ellipsoid", "airy 1830"}};
      },
      [](json& s) {
        json& p = s["projection"];
        p["central_meridian"] = p["Central Meridian"];
        p["SCALE"] = p["Scale"];
        p.erase("Central Meridian");
        p.erase("Scale");
      },
      [](json& s) {
        s["datum"]["rotation"] = "position-vector";
        for (const char* key : {"rX", "rY", "rZ"}) s["datum"][key] = -s["datum"][key].get<double>();
      },
      [](json& s) { s["name"] = "with a name"; },
      [](json& s) {
        s["axes"] = {{"grid", "NE"}, {"geographic", "NE"}};
      },
  };
  for (const auto& change : changes) {
    json system = Britain();
    change(system);
    const LocalPosition p = ToLocal(system.dump());
    EXPECT_EQ(p.x, expected.x) << system;
    EXPECT_EQ(p.y, expected.y) << system;
    EXPECT_EQ(p.h, expected.h) << system;
  }
}

TEST(SystemFile, OneEllipsoidIsEnoughWithoutADatum) {
  json plain = Britain();
  plain.erase("datum");
  plain.erase("global");
  const LocalPosition local = ToLocal(plain.dump());
  plain["global"] = plain["local"];
  EXPECT_EQ(ToLocal(plain.dump()).x, local.x);
  plain.erase("local");
  EXPECT_EQ(ToLocal(plain.dump()).x, local.x);
  plain["global"] = {{"a", 6377563.396}, {"b", 6356256.909}};  // the published semi-minor axis
  EXPECT_NEAR(ToLocal(plain.dump()).x, local.x, 1e-3);         // is rounded to 1 mm
}

TEST(SystemFile, AxesTurnTheCoordinates) {
  const LocalPosition expected = ToLocal(Britain().dump());
  json system = Britain();
  system["axes"] = {{"grid", "WS"}};
  EXPECT_FALSE(ParseSystem(system.dump(), "s")->Grid().northFirst);
  const LocalPosition p = ToLocal(system.dump());
  EXPECT_EQ(p.x, -expected.y);
  EXPECT_EQ(p.y, -expected.x);
}

TEST(SystemFile, SaysWhyAFileCannotBeRead) {
  for (const auto& [path, reason] :
       {std::pair("absent.json", "absent.json: cannot be read: No such"),
        std::pair(".", ".: is a directory")}) {
    try {
      ReadSystemFile(path);
      ADD_FAILURE() << path;
    } catch (const UserError& error) {
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  }
}

// Scales and turns whose products are plain: k = 1.001/0.5 from 6371 m of height, a quarter turn,
// and 30 degrees with the sine 1/2.
TEST(SystemFile, GroundScalesTurnsAndShiftsBothWays) {
  const LocalPosition grid = ToLocal(Britain().dump());
  const double n = grid.x, e = grid.y, cos30 = std::sqrt(3) / 2;
  const double dn = n - 62000, de = e - 250000;
  struct Row {
    json ground, axes;
    double first, second;
  };
  const json origin = {{"originN", 62000}, {"originE", 250000}, {"offsetN", -7}, {"offsetE", 11}};
  const auto with = [&](json more) {
    more.update(origin);
    return more;
  };
  const Row rows[] = {
      {{{"scale", 1.25}}, {}, 1.25 * n, 1.25 * e},
      {{{"height", 6371}, {"gridScaleFactor", 0.5}, {"rotation", 90}}, {}, -2.002 * e, 2.002 * n},
      {with({{"scale", 2}, {"rotation", 30}}),
       {},
       62000 - 7 + 2 * dn * cos30 - de,
       250000 + 11 + dn + 2 * de * cos30},
      {with({{"scale", 2}, {"rotation", 30}}),
       {{"grid", "EN"}},
       250000 + 11 + dn + 2 * de * cos30,
       62000 - 7 + 2 * dn * cos30 - de},
      {with({{"scale", 2}, {"enabled", "no"}}), {}, n, e},
  };
  for (const Row& row : rows) {
    json system = Britain();
    system["ground"] = row.ground;
    if (!row.axes.empty()) system["axes"] = row.axes;
    LocalPosition p = ToLocal(system.dump());
    EXPECT_NEAR(p.x, row.first, 1e-8) << row.ground;
    EXPECT_NEAR(p.y, row.second, 1e-8) << row.ground;
    EXPECT_EQ(p.h, grid.h) << row.ground;
    LocalPosition q = grid;
    ASSERT_TRUE(ParseSystem(system.dump(), "s")->Chain().ToGlobal(p.x, p.y, p.h));
    ASSERT_TRUE(ParseSystem(Britain().dump(), "s")->Chain().ToGlobal(q.x, q.y, q.h));
    EXPECT_NEAR(p.x, q.x, 1e-13) << row.ground;
    EXPECT_NEAR(p.y, q.y, 1e-13) << row.ground;
  }
}

TEST(SystemFile, ComplaintsNameFileKeyAndRemedy) {
  struct Case {
    std::function<void(json&)> spoil;
    std::vector<const char*> parts;
  };
  const Case cases[] = {
      {[](json& s) { s["projektion"] = 1; }, {"\"projektion\"", "unknown", "\"projection\""}},
      {[](json& s) { s.erase("projection"); }, {"\"projection\"", "missing"}},
      {[](json& s) { s.erase("local"); }, {"\"local\"", "missing"}},
      {[](json& s) { s.erase("datum"); }, {"\"datum\"", "missing", "different ellipsoids"}},
      {[](json& s) { s["datum"].erase("rY"); }, {"\"datum.rY\"", "missing", "arc-seconds"}},
      {[](json& s) { s["datum"]["dX"] = "446"; }, {"\"datum.dX\"", "metres", "\"446\""}},
      {[](json& s) { s["datum"]["dx"] = 1; }, {"\"datum.dx\"", "unknown", "did you mean \"dX\""}},
      {[](json& s) { s["datum"]["ppm"] = 1e6; }, {"\"datum.ppm\"", "parts per million"}},
      {[](json& s) { s["datum"]["rotation"] = "position_vector"; },
       {"\"datum.rotation\"", "did you mean \"position-vector\""}},
      {[](json& s) { s["datum"] = 7; }, {"\"datum\"", "object"}},
      {[](json& s) { s["global"]["ellipsoid"] = "WGS 48"; },
       {"\"global.ellipsoid\"", "WGS 48", "did you mean \"WGS84\""}},
      {[](json& s) { s["global"]["a"] = 6378137; }, {"\"global.a\"", "\"ellipsoid\""}},
      {[](json& s) { s["local"]["a"] = 6377.563; }, {"\"local.a\"", "6377.563", "metres"}},
      {[](json& s) { s["local"]["invF"] = 0.00335; }, {"\"local.invF\"", "298.257223563"}},
      {[](json& s) { s["local"]["b"] = 6356256.909; }, {"\"local.b\"", "\"invF\""}},
      {[](json& s) { s["projection"]["name"] = "TMERK"; },
       {"\"projection.name\"", "TMERK", "did you mean \"TMERC\""}},
      {[](json& s) { s["projection"].erase("name"); }, {"\"projection.name\"", "missing"}},
      {[](json& s) { s["projection"].erase("Scale"); },
       {"\"projection.Scale\"", "missing", "TM needs", "\"North0\""}},
      {[](json& s) { s["projection"]["Lat"] = 49; },
       {"\"projection.Lat\"", "unknown", "did you mean \"Lat0\""}},
      {[](json& s) { s["projection"]["lat 0"] = 49; }, {"second time"}},
      {[](json& s) { s["projection"]["Lat0"] = 490000; }, {"\"projection.Lat0\"", "-90 to 90"}},
      {[](json& s) { s["projection"]["Scale"] = 0; }, {"\"projection.Scale\"", "above 0"}},
      {[](json& s) { s["projection"]["East0"] = nullptr; }, {"\"projection.East0\"", "metres"}},
      {[](json& s) {
         s["axes"] = {{"grid", "NN"}};
       },
       {"\"axes.grid\"", "NN", "\"NE\""}},
      {Ground({}), {"\"ground.scale\"", "missing", "\"gridScaleFactor\""}},
      {Ground({{"scale", -1}}), {"\"ground.scale\"", "above 0"}},
      {Ground({{"height", 10}}), {"\"ground.gridScaleFactor\"", "missing"}},
      {Ground({{"scale", 1}, {"height", 10}}), {"\"ground.scale\"", "beside"}},
      {Ground({{"height", 1e6}, {"gridScaleFactor", 1}}), {"\"ground.height\"", "metres"}},
      {Ground({{"scale", 1}, {"originN", 5}}), {"\"ground.originE\"", "missing"}},
      {Ground({{"scale", 1}, {"rotation", 361}}), {"\"ground.rotation\"", "degrees"}},
      {Ground({{"scale", 1}, {"enabled", true}}), {"\"ground.enabled\"", "\"yes\""}},
      {Ground({{"scale", 1}, {"offset", 1}}), {"\"ground.offset\"", "offsetN"}},
  };
  for (const Case& c : cases) {
    json system = Britain();
    c.spoil(system);
    const std::string complaint = ComplaintAbout(system.dump());
    EXPECT_EQ(complaint.rfind("site.json: ", 0), 0u) << complaint;
    for (const char* part : c.parts)
      EXPECT_NE(complaint.find(part), std::string::npos) << part << " in: " << complaint;
  }
}

TEST(SystemFile, BrokenJsonIsLocated) {
  EXPECT_NE(ComplaintAbout("{\n  \"global\": {,}\n}").find("line 2, column 14"), std::string::npos);
  EXPECT_NE(ComplaintAbout("").find("breaks off"), std::string::npos);
  EXPECT_NE(ComplaintAbout("[]").find("object"), std::string::npos);
  EXPECT_NE(ComplaintAbout(R"({"global": {"a": 1e999}})").find("out of range"), std::string::npos);
  EXPECT_NE(ComplaintAbout(R"({"name": "x", "name": "y"})").find("\"name\" stands twice"),
            std::string::npos);
  std::string open, close;  // as deep as a file may be large
  for (int i = 0; i < 65000; ++i) {
    open += "[{\"a\":";
    close += "}]";
  }
  EXPECT_NE(ComplaintAbout("{\"name\":" + open + "1" + close + "}").find("32 deep"),
            std::string::npos);
  EXPECT_THROW(ReadSystemFile("/nonexistent/site.json"), UserError);
  EXPECT_THROW(ReadSystemFile("/"), UserError);
}

TEST(SystemFile, EveryProjectionHasDescribedParameters) {
  ASSERT_NE(FindProjection("TMERC"), nullptr);
  for (const ProjectionKind& kind : ProjectionKinds()) {
    EXPECT_EQ(kind.parameters.empty(), kind.name == "C_S") << kind.name;
    const std::vector<double> values(kind.parameters.size(), 0.5);
    const auto projection = MakeProjection(kind, 6378137, 298.257223563, values);
    ASSERT_NE(projection, nullptr) << kind.name;
    EXPECT_NE(projection->GetType(), zel_cs::geomath::ProjTypeNone) << kind.name;
    EXPECT_LE(static_cast<int>(values.size()), projection->GetQParam()) << kind.name;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const ParameterUnit unit = kind.parameters[i].unit;
      const bool angle = unit == ParameterUnit::degrees || unit == ParameterUnit::latitude;
      EXPECT_DOUBLE_EQ(projection->GetParam(static_cast<int>(i), 2),
                       angle ? 0.5 * zel_cs::geomath::kRadPerDeg : 0.5)
          << kind.name << " " << kind.parameters[i].name;
    }
  }
}

TEST(SystemFile, EllipsoidNamesAreDistinct) {
  for (const NamedEllipsoid& row : NamedEllipsoids()) EXPECT_EQ(FindEllipsoid(row.name), &row);
}
