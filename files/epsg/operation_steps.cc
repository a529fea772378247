#include "files/epsg/operation_steps.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>

#include "files/epsg/projjson.h"
#include "files/words/name_match.h"

using namespace zel_cs::geomath;
using nlohmann::json;
namespace fs = std::filesystem;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

// Methods by the codes of the registry.

// Between geographic and geocentric coordinates, with and without height, orders of axes, and units of
// heights, which are metres here.
constexpr int kNoMoves[] = {9602, 9659, 9843, 9844, 1069, 1104};
constexpr int kLongitudeRotation = 9601;
// NTv1, NTv2, NADCON, and NADCON5 with and without height.
constexpr int kGeographicGrids[] = {9614, 9615, 9613, 1074, 1075};
constexpr int kNadcon5[] = {1074, 1075};
// Offsets between heights: NZLVD, BEV, gtx, asc, PL, byn, VERTCON.
constexpr int kVerticalGrids[] = {1071, 1080, 1084, 1085, 1101, 1112, 9658};
// Geoids: from heights above the ellipsoid to those of EGM2008, NZgeoid, OSGM02-Ire, Gravsoft, AUSGeoid
// v2, CI, PNG, byn, OSGM15-Ire, IGN2009, BEV, txt, PL, ITAL2005, EGM, AUSGeoid98, OSGM-GB, IGN1997 and gtx.
constexpr int kGeoids[] = {1025, 1030, 1045, 1047, 1048, 1050, 1059, 1060, 1072, 1073, 1081, 1082,
                           1083, 1088, 1089, 1090, 1091, 1092, 1093, 1094, 1095, 1096, 1097, 1098,
                           1099, 1100, 1103, 1105, 1106, 9661, 9662, 9663, 9664, 9665};
constexpr int kGeocentricGrid = 1087;
constexpr int kOffsets[] = {9616, 9618, 9619, 9660};
constexpr int kVerticalSlope = 1046;

// Parameters.
constexpr int kLatitudeOffset = 8601, kLongitudeOffset = 8602, kVerticalOffset = 8603;
constexpr int kGeoidHeight = 8604, kPointLatitude = 8617, kPointLongitude = 8618;
constexpr int kLatitudeInclination = 8730, kLongitudeInclination = 8731;

template <class Codes>
bool Contains(const Codes& codes, int code) {
  return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

// NADCON5 in the collection of PROJ: "nadcon5.nad27.nad83_1986.conus.lat.trn.20160901.b" is
// "us_noaa_nadcon5_nad27_nad83_1986_conus.tif".
std::string NadconName(const std::string& registered) {
  std::string name = registered.substr(0, registered.find(".lat."));
  std::replace(name.begin(), name.end(), '.', '_');
  return "us_noaa_" + name + ".tif";
}

class StepReader {
 public:
  StepReader(const EpsgRegistry& registry, const json& part)
      : registry_(registry), part_(part), method_(MemberOf(part, "method")) {
    const int inverse = CodeIn(method_, "INVERSE(EPSG)");
    methodCode_ = inverse ? inverse : CodeIn(method_);
    step_.inverse = inverse != 0;
    const json& name = MemberOf(method_, "name");
    step_.method = name.is_string() ? name.get<std::string>() : "?";
    const int code = CodeIn(part) ? CodeIn(part) : CodeIn(part, "INVERSE(EPSG)");
    if (code) step_.code = std::to_string(code);
  }

  // Nothing for a step that moves no point.
  std::optional<OperationStep> Read() {
    if (Contains(kNoMoves, methodCode_)) return std::nullopt;
    ReadEllipsoid("source_crs", step_.source);
    ReadEllipsoid("target_crs", step_.target);
    step_.known = true;
    if (step_.similarity = ReadSimilarity(part_); step_.similarity) return OfSimilarity();
    if (const auto dated = ReadDatedSimilarity(part_)) {
      step_.space = ShiftSpace::geocentric;
      step_.dated = true;
      step_.entry["similarity"] = *dated;
    } else if (Contains(kGeographicGrids, methodCode_) || Contains(kVerticalGrids, methodCode_) ||
               Contains(kGeoids, methodCode_)) {
      ReadGrids();
    } else if (methodCode_ == kGeocentricGrid) {
      step_.space = ShiftSpace::geocentric;
      ReadGrids();
      step_.entry["position"] = PositionOfGrid();
    } else if (Contains(kOffsets, methodCode_)) {
      ReadOffset();
    } else if (methodCode_ == kVerticalSlope) {
      const ParameterList given(part_.at("parameters"));
      step_.entry["slope"] = {{"latitude", given.In(kPointLatitude, Degrees)},
                              {"longitude", given.In(kPointLongitude, Degrees)},
                              {"offset", given.In(kVerticalOffset, Metres)},
                              {"slopeLatitude", given.In(kLatitudeInclination, ArcSeconds)},
                              {"slopeLongitude", given.In(kLongitudeInclination, ArcSeconds)}};
    } else {
      step_.known = false;
    }
    return step_;
  }

 private:
  void ReadEllipsoid(const char* key, Ellipsoid& ellipsoid) const {
    const json& system = MemberOf(part_, key);
    if (system.contains("datum") || system.contains("datum_ensemble"))
      if (system.value("type", "") != "VerticalCRS") ellipsoid = EllipsoidOf(system);
  }

  std::optional<OperationStep> OfSimilarity() {
    // A null one still changes the ellipsoid.
    if (step_.similarity->seven.IsNull() && AreAlike(step_.source, step_.target))
      return std::nullopt;
    if (methodCode_ == kLongitudeRotation) {
      if (step_.similarity->seven.IsNull()) return std::nullopt;
      const double degrees = step_.similarity->seven.rotation[2] / 3600;
      step_.entry["offset"] = {{"longitude", degrees}};
    } else {
      step_.space = ShiftSpace::geocentric;
      step_.entry["similarity"] = step_.similarity->Section();
    }
    return step_;
  }

  void ReadGrids() {
    for (const json& parameter : part_.at("parameters")) {
      const json& value = MemberOf(parameter, "value");
      if (!value.is_string()) continue;
      const std::string name = value.get<std::string>();
      if (!step_.grids.empty()) break;
      if (IsReadableGrid(name)) step_.grids.push_back({name});
      if (Contains(kNadcon5, methodCode_)) step_.grids.push_back({NadconName(name)});
    }
    if (const auto& proj = registry_.GridOfProj(step_.code); proj && IsReadableGrid(proj->name))
      if (step_.grids.empty() || step_.grids[0].name != proj->name)
        step_.grids.push_back({proj->name, proj->inverse});
    if (step_.grids.empty()) AddNamesOfProj();
    if (step_.grids.empty()) AddAsTiff();
    step_.known = !step_.grids.empty();
  }

  // A grid of an operation that PROJ has beside those of the registry.
  void AddNamesOfProj() {
    for (const json& parameter : part_.at("parameters")) {
      const json& value = MemberOf(parameter, "value");
      if (!value.is_string()) continue;
      const std::string name = registry_.NameInProj(value.get<std::string>());
      if (IsReadableGrid(name)) step_.grids.push_back({name});
    }
  }

  // A grid that its publisher has in a format of his own, and PROJ not at all, may lie there as TIFF
  // under its name.
  void AddAsTiff() {
    for (const json& parameter : part_.at("parameters")) {
      const json& value = MemberOf(parameter, "value");
      if (!value.is_string() || !step_.grids.empty()) continue;
      step_.grids.push_back({fs::path(value.get<std::string>()).stem().string() + ".tif"});
    }
  }

  // The positions of a grid are those of its interpolation system.
  const char* PositionOfGrid() const {
    const int system = CodeIn(MemberOf(part_, "interpolation_crs"));
    const char* ahead = step_.inverse ? "source_crs" : "target_crs";
    return system == CodeIn(MemberOf(part_, ahead)) ? "target" : "source";
  }

  void ReadOffset() {
    ordered_json& offset = step_.entry["offset"];
    offset = ordered_json::object();
    const ParameterList given(part_.at("parameters"));
    const auto add = [&](const char* key, int code, double (*unit)(const json&)) {
      if (const double value = given.In(code, unit); value != 0) offset[key] = value;
    };
    add("latitude", kLatitudeOffset, Degrees);
    add("longitude", kLongitudeOffset, Degrees);
    add("height", kVerticalOffset, Metres);
    add("height", kGeoidHeight, Metres);
    if (offset.empty()) offset["height"] = 0;
  }

  const EpsgRegistry& registry_;
  const json& part_;
  const json& method_;
  int methodCode_ = 0;
  OperationStep step_;
};

}  // namespace

bool IsReadableGrid(const std::string& name) {
  const std::string suffix = LowerCase(fs::path(name).extension().string());
  return suffix == ".gsb" || suffix == ".tif" || suffix == ".json";
}

bool AreAlike(const Ellipsoid& a, const Ellipsoid& b) {
  constexpr double kAlike = 1e-3;  // metres
  return std::abs(a.a - b.a) < kAlike && std::abs(a.b - b.b) < kAlike;
}

std::vector<OperationStep> ReadSteps(const EpsgRegistry& registry, const json& document) {
  std::vector<OperationStep> steps;
  const auto add = [&](const json& part) {
    if (std::optional<OperationStep> step = StepReader(registry, part).Read())
      steps.push_back(std::move(*step));
  };
  const json& parts = MemberOf(document, "steps");
  if (parts.is_null()) add(document);
  for (const json& part : parts) add(part);
  return steps;
}

}  // namespace geomath_files
