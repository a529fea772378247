// Velocities and deformation models from files that are made here: numbers by hand.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "files/models/shift_file.h"
#include "files/words/user_error.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/frame/deformation_model.h"
#include "geomath/frame/velocity_grid.h"
#include "tests/files/models/made_tiff.h"
#include "tests/support/tolerance.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
using nlohmann::json;
using tolerance::kDegree;

namespace {

constexpr double kSingle = 1e-8;  // metres: single precision of 0.1 m
constexpr double kEarth = 6.4e6;  // metres for a radian, at most
const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

std::string Complaint(const std::function<void()>& action) {
  try {
    action();
  } catch (const UserError& error) {
    return error.what();
  }
  return "no complaint";
}

// 10 to 12 degrees east, 48 to 50 north.
Directory Velocities() {
  return {10,
          50,
          1,
          {{"up_velocity", "metres per year", {0.003}},
           {"east_velocity", "millimetres per year", {20}},
           {"north_velocity", "", {10, 11, 12, 13, 14, 15, 16, 17, 18}}},
          {{"TYPE", "VELOCITY"}},
          "EPSG:4258"};
}

TEST(DeformationFile, ReadsVelocitiesInTheirUnits) {
  const auto grid = OpenShift({.file = Write({Velocities()}), .epoch = 2000});
  ASSERT_TRUE(dynamic_cast<const VelocityGrid*>(grid.get()));
  // On the meridian of Greenwich of the node: north, east and up are axes of the ellipsoid there.
  const double b = 49 * kDegree, l = 11 * kDegree, years = 10;
  double p[] = {b, l, 0};
  kGrs80.BLH_to_XYZ_Batch(p, p + 1, p + 2, 1);
  const double from[] = {p[0], p[1], p[2]};
  ASSERT_TRUE(grid->Forward(p[0], p[1], p[2], 2000 + years));
  const double n = 0.014 * years, e = 0.020 * years, u = 0.003 * years;
  const double outward = u * std::cos(b) - n * std::sin(b);
  EXPECT_NEAR(p[0] - from[0], outward * std::cos(l) - e * std::sin(l), kSingle);
  EXPECT_NEAR(p[1] - from[1], outward * std::sin(l) + e * std::cos(l), kSingle);
  EXPECT_NEAR(p[2] - from[2], n * std::cos(b) + u * std::sin(b), kSingle);
}

TEST(DeformationFile, SaysWhatIsWrongWithVelocities) {
  const auto complaint = [](const std::function<void(Directory&)>& change) {
    Directory grid = Velocities();
    change(grid);
    return Complaint([&] { OpenShift({.file = Write({grid}), .epoch = 2000}); });
  };
  EXPECT_NE(complaint([](Directory& d) {
              d.samples[1].unit = "metre";
            }).find("directory 1: has the unit \"metre\", which is no velocity"),
            std::string::npos);
  EXPECT_NE(complaint([](Directory& d) {
              d.samples.erase(d.samples.begin());
            }).find("has no sample \"up_velocity\""),
            std::string::npos);
  EXPECT_NE(complaint([](Directory& d) { d.samples[2].constant = "3"; }).find("constant_offset"),
            std::string::npos);
  EXPECT_NE(Complaint([] { OpenShift({.file = Write({Velocities()})}); }).find("\"epoch\""),
            std::string::npos);
}

// ---- deformation models ----

constexpr const char* kHorizontal = "horizontal.tif";
constexpr const char* kVertical = "vertical.tif";

json Extent() { return {{"type", "bbox"}, {"parameters", {{"bbox", {10.0, 48.0, 12.0, 50.0}}}}}; }

json Component(const char* type, const char* file, json time) {
  return {{"displacement_type", type},
          {"uncertainty_type", "none"},
          {"extent", Extent()},
          {"spatial_model",
           {{"type", "GeoTIFF"}, {"interpolation_method", "bilinear"}, {"filename", file}}},
          {"time_function", std::move(time)}};
}

json Time(const char* type, json parameters) {
  return {{"type", type}, {"parameters", std::move(parameters)}};
}

json Model() {
  return {
      {"file_type", "deformation_model_master_file"},
      {"format_version", "1.0"},
      {"source_crs", "EPSG:4937"},
      {"target_crs", "EPSG:7912"},
      {"definition_crs", "EPSG:4937"},
      {"horizontal_offset_unit", "metre"},
      {"vertical_offset_unit", "metre"},
      {"horizontal_offset_method", "addition"},
      {"extent", Extent()},
      {"time_extent", {{"first", "1990-01-01T00:00:00Z"}, {"last", "2050-01-01"}}},
      {"components",
       {Component("horizontal", kHorizontal,
                  Time("velocity", {{"reference_epoch", "2000-01-01T00:00:00Z"}})),
        Component("vertical", kVertical, Time("step", {{"step_epoch", "2010-07-02T12:00:00Z"}}))}}};
}

std::string WriteModel(const json& model, const char* horizontalUnit = "metre", double north = 0.02,
                       double east = 0.01) {
  const auto in = [](const char* name) { return (MadeFiles() / name).string(); };
  Write({{10,
          50,
          1,
          {{"north_offset", horizontalUnit, {north}}, {"east_offset", horizontalUnit, {east}}},
          {{"TYPE", "DEFORMATION_MODEL"}},
          "EPSG:4258"}},
        in(kHorizontal));
  Write({{10, 50, 1, {{"", "", {-0.25}}}, {}, "EPSG:4258"}}, in(kVertical));
  const std::string path = in("model.json");
  std::ofstream(path) << model;
  return path;
}

struct Moved {
  double north, east, up;  // radians, metres
};
Moved At(const CoordinateShift& model, double date) {
  double b = 49 * kDegree, l = 11 * kDegree, h = 0;
  EXPECT_TRUE(model.Forward(b, l, h, date));
  return {b - 49 * kDegree, l - 11 * kDegree, h};
}

TEST(DeformationFile, ReadsModelsWithTheirGrids) {
  const auto model = OpenShift({.file = WriteModel(Model())});
  ASSERT_TRUE(dynamic_cast<const DeformationModel*>(model.get()));
  const double W2 = 1 - kGrs80.e2 * std::pow(std::sin(49 * kDegree), 2);
  const double M = kGrs80.a * (1 - kGrs80.e2) / std::pow(W2, 1.5), N = kGrs80.a / std::sqrt(W2);
  const Moved moved = At(*model, 2020);
  EXPECT_NEAR(moved.north * M, 20 * 0.02, kSingle);
  EXPECT_NEAR(moved.east * N * std::cos(49 * kDegree), 20 * 0.01, kSingle);
  EXPECT_EQ(moved.up, -0.25);
  EXPECT_EQ(At(*model, 2010.5).up, -0.25);  // 2010-07-02 at noon
  EXPECT_EQ(At(*model, 2010.4999).up, 0);
  double b = 49 * kDegree, l = 11 * kDegree, h = 0;
  EXPECT_EQ(model->Forward(b, l, h, 1989.9).status, ShiftStatus::otherDate);
}

TEST(DeformationFile, ReadsDegreesAndAllTimeFunctions) {
  json model = Model();
  model["horizontal_offset_unit"] = "degree";
  const auto with = [&](json time) {
    model["components"][0]["time_function"] = std::move(time);
    return OpenShift({.file = WriteModel(model, "", 1e-6, 2e-6)});
  };
  const auto factor = [](const CoordinateShift& shift, double date) {
    const Moved moved = At(shift, date);
    EXPECT_NEAR(moved.east, 2 * moved.north, kSingle / kEarth);
    return moved.north / (1e-6 * kDegree);
  };
  constexpr double kFigures = 1e-6;
  EXPECT_NEAR(factor(*with({{"type", "constant"}}), 2011), 1, kFigures);
  EXPECT_NEAR(factor(*with(Time("reverse_step", {{"step_epoch", "2012-01-01"}})), 2011), -1,
              kFigures);
  const json points = {{{"epoch", "2010-01-01"}, {"scale_factor", 1}},
                       {{"epoch", "2012-01-01"}, {"scale_factor", 3}}};
  const auto piecewise = with(
      Time("piecewise", {{"before_first", "zero"}, {"after_last", "constant"}, {"model", points}}));
  EXPECT_NEAR(factor(*piecewise, 2011), 2, kFigures);
  EXPECT_EQ(factor(*piecewise, 2009), 0);
  EXPECT_NEAR(factor(*piecewise, 2020), 3, kFigures);
  const auto exponential = with(Time("exponential", {{"reference_epoch", "2010-01-01"},
                                                     {"end_epoch", "2020-01-01"},
                                                     {"relaxation_constant", 2},
                                                     {"before_scale_factor", 0.5},
                                                     {"initial_scale_factor", 1},
                                                     {"final_scale_factor", 3}}));
  EXPECT_NEAR(factor(*exponential, 2009), 0.5, kFigures);
  EXPECT_NEAR(factor(*exponential, 2012), 3 - 2 * std::exp(-1), kFigures);
  EXPECT_NEAR(factor(*exponential, 2040), 3 - 2 * std::exp(-5), kFigures);
}

TEST(DeformationFile, SaysWhatIsWrongAndWhere) {
  using Change = std::function<void(json&)>;
  const std::pair<Change, std::string> cases[] = {
      {[](json& j) { j["format_version"] = "3.0"; },
       "\"format_version\" is \"3.0\"; known: \"1.0\""},
      {[](json& j) { j.erase("components"); }, "\"components\" is missing"},
      {[](json& j) { j["components"] = 3; }, "\"components\" must be a list"},
      {[](json& j) { j["components"][1] = 3; }, "\"components[1].displacement_type\" is missing"},
      {[](json& j) { j["components"].clear(); }, "a model has 1 to 4096 components"},
      {[](json& j) { j["source_crs"] = "EPSG:25832"; }, "\"source_crs\" is \"EPSG:25832\""},
      {[](json& j) { j["extent"]["parameters"]["bbox"].erase(3); },
       "\"extent.parameters.bbox\" must have west"},
      {[](json& j) { j["extent"]["parameters"]["bbox"][1] = "x"; },
       "\"extent.parameters.bbox[1]\" must be a number"},
      {[](json& j) { j["time_extent"]["first"] = "1990-13-01"; },
       "\"time_extent.first\" must be a date: \"1990-13-01\" is no date"},
      {[](json& j) { j["vertical_offset_unit"] = "degree"; }, "\"vertical_offset_unit\" is"},
      {[](json& j) { j["components"][0]["time_function"]["type"] = "sinus"; },
       "\"components[0].time_function.type\" is \"sinus\"; known: \"constant\", \"step\""},
      {[](json& j) { j["components"][1]["time_function"]["parameters"].clear(); },
       "\"components[1].time_function.parameters.step_epoch\" is missing"},
      {[](json& j) { j["components"][1]["displacement_type"] = "3d"; },
       "vertical.tif: directory 1: has no sample"},
      {[](json& j) { j["components"][1]["spatial_model"]["filename"] = "../vertical.tif"; },
       "\"components[1].spatial_model.filename\" is \"../vertical.tif\", which is no name"},
      {[](json& j) { j["components"][1]["spatial_model"]["filename"] = "none.tif"; },
       "none.tif: cannot be read"},
      {[](json& j) { j["components"][0]["spatial_model"]["filename"] = kVertical; },
       "vertical.tif: directory 1: has no sample"},
      {[](json& j) { j["horizontal_offset_unit"] = "degree"; },
       "horizontal.tif: directory 1: has the unit \"metre\", which is no angle"}};
  for (const auto& [change, expected] : cases) {
    json model = Model();
    change(model);
    const std::string said = Complaint([&] { OpenShift({.file = WriteModel(model)}); });
    EXPECT_NE(said.find(expected), std::string::npos) << said << "\n" << expected;
  }
}

// From bytes alone, without the grids; and whatever the cut, a complaint.
TEST(DeformationFile, BytesNeedTheirGrids) {
  const ShiftBytes bytes = ReadShiftBytes(WriteModel(Model()));
  ASSERT_EQ(bytes.size(), 3U);
  EXPECT_TRUE(ParseShift(bytes, {"made.json"}));
  const std::string own = bytes.at("");
  EXPECT_NE(Complaint([&] {
              ParseShift({{"", own}}, {"made.json"});
            }).find("is not here"),
            std::string::npos);
  for (std::size_t size = 0; size < own.size(); ++size)
    EXPECT_NE(Complaint([&] {
                ParseShift({{"", own.substr(0, size)}}, {"cut.json"});
              }),
              "no complaint");
}

}  // namespace
