#include "tools/calibration.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "geomath/base/angle.h"
#include "geomath/proj/param_table.h"
#include "tools/projection_names.h"
#include "tools/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

constexpr const char* kOwnProjection = "STER";
constexpr int kCentreOfExtent = TLocalizationParam::kCentreOfExtent, kFirstPoint = 0;

bool HasPosition(const IdenticalPoint& p) {
  constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
  return (p.globalFlags & kPlane) == kPlane;
}

// The chain takes pairs in the order of the axes.
void PutEastFirst(IdenticalPoint& p) {
  const std::uint32_t north = p.localFlags & kHasNorth, east = p.localFlags & kHasEast;
  p.localFlags = (p.localFlags & kHasHeight) | (north ? kHasEast : 0) | (east ? kHasNorth : 0);
  std::swap(p.localN, p.localE);
}

// Local coordinates are those after the ground system; the calibration stands before it.
void LeaveGround(const GridToGround* ground, const std::string& name, IdenticalPoint& p) {
  unsigned long present = p.localFlags;
  if (!ground || ground->IsDisabled() || !(present & (kHasNorth | kHasEast))) return;
  if (!ground->ToGrid(p.localN, p.localE, p.localH, &present))
    throw UserError(fmt::format(
        "point {}: one local coordinate alone cannot be turned back from the ground system", name));
}

// The point in the system's grid; one without a position stays, and will not be used.
IdenticalPoint ToGrid(const CoordinateChain& chain, const CoordinateSystem& system,
                      const ControlPoint& point) {
  IdenticalPoint p = point.given;
  if (!system.Grid().northFirst) PutEastFirst(p);
  LeaveGround(system.Chain().GetGround(), point.name, p);
  if (!HasPosition(p)) return p;
  double first = p.globalN * kRadPerDeg, second = p.globalE * kRadPerDeg;
  if (!system.Geographic().northFirst) std::swap(first, second);
  if (const ChainResult result = chain.ToLocal(first, second, p.globalH); !result)
    throw UserError(
        fmt::format("point {}: {} cannot convert it", point.name, ChainStepName(result.failedAt)));
  p.globalN = first;
  p.globalE = second;
  return p;
}

// File names of a system count from its directory.
void MoveFileNames(nlohmann::ordered_json& geoid, const std::string& from, const std::string& to) {
  namespace fs = std::filesystem;
  for (const char* key : {"grid", "model", "correction"}) {
    if (!geoid.contains(key)) continue;
    const fs::path file = fs::absolute(from).parent_path() / geoid[key].get<std::string>();
    geoid[key] = file.lexically_proximate(fs::absolute(to).parent_path()).string();
  }
}

}  // namespace

Calibration::Calibration(const CoordinateSystem& system, const std::vector<ControlPoint>& control,
                         const CalibrationOptions& options)
    : system_(system) {
  CoordinateChain chain = system.Chain();
  chain.SetLocalization(nullptr);
  chain.SetGround(nullptr);
  for (const ControlPoint& point : control) {
    names_.push_back(point.name);
    points_.push_back(ToGrid(chain, system, point));
  }
  for (IdenticalPoint& p : points_) pointers_.push_back(&p);

  const Ellipsoid& ellipsoid = system.LocalEllipsoid();
  solver_.emplace(pointers_.data(), static_cast<int>(points_.size()), options.fixedScale,
                  system.Projection(), ellipsoid.a, ellipsoid.invF,
                  options.centreOnFirst ? kFirstPoint : kCentreOfExtent);
  if (!solver_->UpdateParameters())
    throw UserError(
        "the control points do not give a calibration: at least one point with global "
        "and local coordinates and a use is needed, and not all in one place");

  site_.mode = solver_->GetInitialization();
  site_.SetProj(solver_->GetBaseProjection());
  double v[kPlaneKeys];
  if (solver_->GetPlaneParameters(v[0], v[1], v[2], v[3]))
    for (int i = 0; i < kPlaneKeys; ++i) site_.SetPlaneParam(v[i], i, 0);
  if (solver_->GetHeightParameters(v[0], v[1], v[2]))
    for (int i = 0; i < kHeightKeys; ++i) site_.SetHeightParam(v[i], i, 0);
  check_.emplace(pointers_.data(), static_cast<int>(points_.size()), *solver_);
}

std::string Calibration::ProjectionName() const {
  return system_.Projection() ? system_.ProjectionName() : kOwnProjection;
}

std::vector<std::string> Calibration::Warnings() const {
  std::vector<std::string> texts;
  for (const CalibrationWarning& warning : check_->Warnings()) {
    const bool named = warning.point >= 0;
    texts.push_back(CalibrationWarningText(
        warning, named ? names_[static_cast<std::size_t>(warning.point)] : ""));
  }
  return texts;
}

std::string Calibration::SystemText(const std::string& text, const std::string& from,
                                    const std::string& to) const {
  nlohmann::ordered_json system = nlohmann::ordered_json::parse(text);
  if (system.contains("geoid")) MoveFileNames(system["geoid"], from, to);
  if (!system_.Projection()) {
    nlohmann::ordered_json& projection = system["projection"] = {{"name", kOwnProjection}};
    int index = 0;
    for (const ProjectionParameter& parameter : FindProjection(kOwnProjection)->parameters)
      projection[parameter.name] = Projection().GetParam(index++, kUnitDegrees);
  }
  nlohmann::ordered_json localization;
  if (site_.mode & LocalToGrid::kHorizontal)
    for (int i = 0; i < kPlaneKeys; ++i)
      localization[kLocalizationKeys[i]] = site_.GetPlaneParam(i, 0);
  if (site_.mode & LocalToGrid::kVertical)
    for (int i = 0; i < kHeightKeys; ++i)
      localization[kLocalizationKeys[kPlaneKeys + i]] = site_.GetHeightParam(i, 0);
  system["localization"] = localization;
  return system.dump(2) + "\n";
}

}  // namespace geomath_tools
