#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "files/system/projection_names.h"
#include "geomath/base/angle.h"
#include "geomath/proj/factory.h"
#include "tests/tools/program.h"

namespace {

ProgramRun List(const std::string& arguments) {
  return RunProgram(std::filesystem::temp_directory_path(), "projections " + arguments);
}

TEST(Projections, TellsOneInText) {
  const ProgramRun run = List("mercator TM83");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            "MERCATOR (kind 14)\n"
            "  Lon0              longitude, degrees\n"
            "  Lat0              latitude, degrees\n"
            "  FEast             false easting, metres\n"
            "  FNorth            false northing, metres\n"
            "TM83 (kind 1)\n"
            "  CentralMeridian   longitude, degrees\n"
            "  Scale             scale factor\n"
            "  Lat0              latitude, degrees\n"
            "  East0             false easting, metres\n"
            "  North0            false northing, metres\n"
            "  Zone number       zone number\n");
}

TEST(Projections, ListsEveryNameAsJson) {
  const ProgramRun run = List("--json");
  ASSERT_EQ(run.status, 0);
  const auto list = nlohmann::json::parse(run.out);
  std::set<std::string> names, wanted = {"TM"};
  for (const auto& row : zel_cs::geomath::ProjFactoryRows()) {
    const std::wstring name = row.name;
    wanted.emplace(name.begin(), name.end());
  }
  for (const auto& entry : list) names.insert(entry.at("name"));
  EXPECT_EQ(names, wanted);
  EXPECT_EQ(list.size(), wanted.size());

  const auto tm83 = nlohmann::json::parse(List("--json TM83").out).at(0);
  EXPECT_EQ(tm83.at("kind"), 1);
  EXPECT_EQ(tm83.at("parameters").at(2).dump(),
            R"({"name":"Lat0","quantity":"latitude","unit":"degrees"})");
  EXPECT_EQ(tm83.at("parameters").at(5).dump(),
            R"({"name":"Zone number","quantity":"zone number"})");
  // Arc-seconds of the published table, not degrees.
  EXPECT_FALSE(
      nlohmann::json::parse(List("--json AK29").out).at(0).at("parameters").at(1).contains("unit"));
}

TEST(Projections, SuggestsANearName) {
  const ProgramRun run = List("MERCATORR");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("\"MERCATORR\" is no projection; did you mean \"MERCATOR\"?"),
            std::string::npos)
      << run.err;
}

// Whatever a class does with unit codes, values in degrees reach it as angles.
TEST(Projections, AreMadeFromDegrees) {
  using namespace geomath_files;
  const auto made = MakeProjection(*FindProjection("OM"), 6378137, 298.257, {30, 1, 10, 46, 0, 0});
  EXPECT_DOUBLE_EQ(made->GetParam(0, 2), 30 * zel_cs::geomath::kRadPerDeg);
  EXPECT_DOUBLE_EQ(made->GetParam(3, 2), 46 * zel_cs::geomath::kRadPerDeg);
}

}  // namespace
