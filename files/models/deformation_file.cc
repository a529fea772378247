#include "files/models/deformation_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>

#include "files/models/raster_reader.h"
#include "files/system/json_section.h"
#include "files/words/date_text.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/frame/deformation_model.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

constexpr const char* kFileType = "deformation_model_master_file";

// A value of the file with its place in it. Keys that are not asked for may stand beside it.
class Node {
 public:
  Node(const std::string& file, std::string path, const json& value)
      : file_(file), path_(std::move(path)), value_(value) {}

  [[noreturn]] void Fail(const std::string& complaint) const {
    throw UserError(
        fmt::format("{}: {} {}", file_, path_.empty() ? "the file" : '"' + path_ + '"', complaint));
  }
  bool Has(const char* key) const { return value_.is_object() && value_.contains(key); }
  Node operator[](const char* key) const {
    const std::string path = path_.empty() ? key : path_ + "." + key;
    if (!Has(key)) throw UserError(fmt::format("{}: \"{}\" is missing", file_, path));
    return {file_, path, value_.at(key)};
  }
  std::vector<Node> List() const {
    if (!value_.is_array()) Fail("must be a list");
    std::vector<Node> nodes;
    for (std::size_t i = 0; i < value_.size(); ++i)
      nodes.emplace_back(file_, fmt::format("{}[{}]", path_, i), value_[i]);
    return nodes;
  }
  std::string Text() const {
    if (!value_.is_string()) Fail("must be a text");
    return value_.get<std::string>();
  }
  double Number() const {
    if (!value_.is_number() || !std::isfinite(value_.get<double>())) Fail("must be a number");
    return value_.get<double>();
  }
  // A decimal year.
  double Date() const {
    const ParsedNumber date = ParseDate(Text());
    if (!date) Fail("must be a date: " + date.problem);
    return date.value;
  }
  // The value that belongs to the word.
  template <class Value>
  Value Word(const std::vector<std::pair<std::string, Value>>& known) const {
    const std::string text = Text();
    std::vector<std::string> words;
    for (const auto& [word, value] : known) {
      if (word == text) return value;
      words.push_back(word);
    }
    Fail(fmt::format("is \"{}\"; known: {}", Printable(text), ListNames(words)));
  }

 private:
  const std::string& file_;
  std::string path_;
  const json& value_;
};

GeographicExtent ExtentOf(const Node& extent) {
  extent["type"].Word<bool>({{"bbox", true}});
  const Node box = extent["parameters"]["bbox"];
  const std::vector<Node> sides = box.List();
  if (sides.size() != 4) box.Fail("must have west, south, east and north");
  const auto side = [&](std::size_t i) { return sides[i].Number() * kRadPerDeg; };
  return {side(1), side(0), side(3), side(2)};
}

void ReadPiecewise(const Node& parameters, TimeFunction& f) {
  const std::vector<std::pair<std::string, BeyondPoints>> ways = {
      {"zero", BeyondPoints::zero},
      {"constant", BeyondPoints::constant},
      {"linear", BeyondPoints::linear}};
  f.before = parameters["before_first"].Word(ways);
  f.after = parameters["after_last"].Word(ways);
  for (const Node& point : parameters["model"].List())
    f.points.push_back({point["epoch"].Date(), point["scale_factor"].Number()});
}

void ReadExponential(const Node& parameters, TimeFunction& f) {
  f.epoch = parameters["reference_epoch"].Date();
  if (parameters.Has("end_epoch")) f.end = parameters["end_epoch"].Date();
  f.relaxation = parameters["relaxation_constant"].Number();
  f.beforeFactor = parameters["before_scale_factor"].Number();
  f.initialFactor = parameters["initial_scale_factor"].Number();
  f.finalFactor = parameters["final_scale_factor"].Number();
}

TimeFunction TimeFunctionOf(const Node& function) {
  using enum TimeFunctionKind;
  TimeFunction f;
  f.kind = function["type"].Word<TimeFunctionKind>({{"constant", constant},
                                                    {"step", step},
                                                    {"reverse_step", reverseStep},
                                                    {"velocity", velocity},
                                                    {"piecewise", piecewise},
                                                    {"exponential", exponential}});
  if (f.kind == constant) return f;
  const Node parameters = function["parameters"];
  if (f.kind == velocity)
    f.epoch = parameters["reference_epoch"].Date();
  else if (f.kind == piecewise)
    ReadPiecewise(parameters, f);
  else if (f.kind == exponential)
    ReadExponential(parameters, f);
  else
    f.epoch = parameters["step_epoch"].Date();
  return f;
}

// A component without displacement stands there for its uncertainty.
bool Moves(const Node& component) { return component["displacement_type"].Text() != "none"; }

class ModelReader {
 public:
  ModelReader(const ShiftBytes& bytes, const std::string& file)
      : bytes_(bytes), file_(file), json_(ParseJson(bytes.at(""), file)), root_(file, "", json_) {}

  std::vector<std::string> GridNames() const {
    std::vector<std::string> names;
    for (const Node& component : root_["components"].List()) {
      if (!Moves(component)) continue;
      std::string name = GridName(component);
      if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(std::move(name));
    }
    return names;
  }

  std::unique_ptr<CoordinateShift> Read() const {
    root_["file_type"].Word<bool>({{kFileType, true}});
    root_["format_version"].Word<bool>({{"1.0", true}});
    DeformationModelDefinition model;
    model.ellipsoid = EllipsoidOfPositions();
    model.extent = ExtentOf(root_["extent"]);
    const Node years = root_["time_extent"];
    model.years = {years["first"].Date(), years["last"].Date()};
    if (root_.Has("horizontal_offset_method"))
      model.method = root_["horizontal_offset_method"].Word<HorizontalMethod>(
          {{"addition", HorizontalMethod::addition}, {"geocentric", HorizontalMethod::geocentric}});
    if (root_.Has("horizontal_offset_unit"))
      model.angles =
          root_["horizontal_offset_unit"].Word<bool>({{"metre", false}, {"degree", true}});
    if (root_.Has("vertical_offset_unit"))
      root_["vertical_offset_unit"].Word<bool>({{"metre", true}});
    for (const Node& component : root_["components"].List())
      if (Moves(component)) model.components.push_back(ComponentOf(component, model.angles));
    std::string reason;
    auto made = DeformationModel::Make(std::move(model), &reason);
    if (!made) throw UserError(fmt::format("{}: {}", file_, reason));
    return made;
  }

 private:
  // Grids stand beside the master file.
  static std::string GridName(const Node& component) {
    const Node name = component["spatial_model"]["filename"];
    const std::string text = name.Text();
    if (text.empty() || std::filesystem::path(text).filename() != text)
      name.Fail(fmt::format("is \"{}\", which is no name of a file", Printable(text)));
    return text;
  }

  Ellipsoid EllipsoidOfPositions() const {
    const Node system = root_["source_crs"];
    const RasterReader& reader = RequireRasterReader(file_);
    const std::optional<Ellipsoid> ellipsoid = reader.EllipsoidOf(system.Text());
    if (!ellipsoid || reader.SpaceOf(system.Text()) != ShiftSpace::geographic)
      system.Fail(fmt::format("is \"{}\", which is no geographic system that is known",
                              Printable(system.Text())));
    return *ellipsoid;
  }

  DeformationComponent ComponentOf(const Node& given, bool angles) const {
    DeformationComponent component;
    component.displacement = given["displacement_type"].Word<ShiftComponents>(
        {{"horizontal", ShiftComponents::horizontal},
         {"vertical", ShiftComponents::vertical},
         {"3d", ShiftComponents::horizontalAndVertical}});
    component.extent = ExtentOf(given["extent"]);
    component.time = TimeFunctionOf(given["time_function"]);
    const Node spatial = given["spatial_model"];
    spatial["type"].Word<bool>({{"GeoTIFF", true}});
    component.interpolation = spatial["interpolation_method"].Word<DisplacementInterpolation>(
        {{"bilinear", DisplacementInterpolation::bilinear},
         {"geocentric_bilinear", DisplacementInterpolation::geocentricBilinear}});
    const std::string name = GridName(given);
    const auto bytes = bytes_.find(name);
    if (bytes == bytes_.end()) spatial["filename"].Fail("names a file that is not here");
    const std::string path = (std::filesystem::path(file_).parent_path() / name).string();
    component.parts = RequireRasterReader(path).ParseDisplacements(
        bytes->second, path, {component.displacement, angles});
    return component;
  }

  const ShiftBytes& bytes_;
  const std::string& file_;
  const json json_;
  const Node root_;
};

}  // namespace

// A word that no other file of shifts has.
bool IsDeformationModel(const std::string& bytes) {
  return bytes.find(fmt::format("\"{}\"", kFileType)) != std::string::npos;
}

std::vector<std::string> GridsOfDeformationModel(const std::string& bytes,
                                                 const std::string& file) {
  const ShiftBytes own{{"", bytes}};
  return ModelReader(own, file).GridNames();
}

std::unique_ptr<CoordinateShift> ParseDeformationModel(const ShiftBytes& bytes,
                                                       const std::string& file) {
  return ModelReader(bytes, file).Read();
}

}  // namespace geomath_files
