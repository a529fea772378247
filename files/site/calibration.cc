#include "files/site/calibration.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "files/system/projection_names.h"
#include "files/system/system_sections.h"
#include "files/system/units_section.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// File names of a system count from its directory.
void MoveFileNames(nlohmann::ordered_json& part, const std::string& from, const std::string& to) {
  namespace fs = std::filesystem;
  for (const char* key : {"grid", "model", "correction", "file"}) {
    if (!part.contains(key)) continue;
    const fs::path file = fs::absolute(from).parent_path() / part[key].get<std::string>();
    part[key] = file.lexically_proximate(fs::absolute(to).parent_path()).string();
  }
}

SiteFrame FrameOf(const CoordinateSystem& system) {
  const NamedProjection& named = system.Named();
  const Ellipsoid& local = system.LocalEllipsoid();
  auto projection =
      named.kind ? MakeProjection(*named.kind, local.a, local.invF, named.values) : nullptr;
  return {system.Chain(),      std::move(projection), local,
          system.Geographic(), system.Grid(),         system.Date()};
}

}  // namespace

Calibration::Calibration(const CoordinateSystem& system, const std::vector<ControlPoint>& control,
                         const CalibrationOptions& options, std::optional<GridUnits> units)
    : SiteSolution(FrameOf(system), control, options),
      system_(system),
      units_(units.value_or(system.Units())) {}

std::string Calibration::ProjectionName() const {
  return system_.Projection() ? system_.ProjectionName() : kOwnProjection;
}

std::string Calibration::SystemText(const std::string& text, const std::string& from,
                                    const std::string& to) const {
  nlohmann::ordered_json system = nlohmann::ordered_json::parse(text);
  if (system.contains("geoid")) MoveFileNames(system["geoid"], from, to);
  if (system.contains("frame") && system["frame"].contains("motion"))
    MoveFileNames(system["frame"]["motion"], from, to);
  if (system.contains("shifts"))
    for (nlohmann::ordered_json& shift : system["shifts"]) MoveFileNames(shift, from, to);
  if (!system_.Projection()) {
    nlohmann::ordered_json& projection = system["projection"] = {{"name", kOwnProjection}};
    const std::vector<double> values = OwnProjectionValues(*this);
    for (std::size_t i = 0; i < values.size(); ++i)
      projection[FindProjection(kOwnProjection)->parameters[i].name] = values[i];
  }
  nlohmann::ordered_json units = UnitsSection(units_);
  if (units.empty())
    system.erase("units");
  else
    system["units"] = std::move(units);
  system["localization"] = LocalizationSection(Site());
  SiteErrors errors;
  errors.parts = Check().Covariance(errors.covariance);
  const auto common = [&](int k) { return Adjustment().common[k] * Adjustment().common[k]; };
  for (int k = 0; k < 2; ++k) errors.covariance.ofPlane[k][k] += common(k);
  errors.covariance.ofHeight[0][0] += common(2);
  if (errors.parts != LocalToGrid::kNotSetUp)
    system["localization"][kSiteErrorsKey] = SiteErrorsSection(errors);
  return system.dump(2) + "\n";
}

}  // namespace geomath_files
