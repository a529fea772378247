#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "geomath/local/calibration_check.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/local/localization_param.h"
#include "tools/control_file.h"
#include "tools/system_file.h"

namespace geomath_tools {

struct CalibrationOptions {
  bool fixedScale = false;
  bool centreOnFirst = false;  ///< the solver's own projection stands on the first control point
};

/// A site calibration of control points in a system: carries the points to the grid of the system
/// (or, without a projection, to its ellipsoid), solves, and examines the result. It stays where it
/// was made.
class Calibration {
 public:
  /// Throws UserError when a point cannot be converted, or the points do not suffice.
  Calibration(const CoordinateSystem& system, const std::vector<ControlPoint>& control,
              const CalibrationOptions& options);
  Calibration(const Calibration&) = delete;
  Calibration& operator=(const Calibration&) = delete;

  const CoordinateSystem& System() const { return system_; }
  const zel_cs::geomath::LocalToGrid& Site() const { return site_; }
  const zel_cs::geomath::TLocalizationParam& Solver() const { return *solver_; }
  const zel_cs::geomath::CalibrationCheck& Check() const { return *check_; }
  /// The projection in use, and its name in a system file.
  const zel_cs::geomath::TGeoProj& Projection() const { return *solver_->GetBaseProjection(); }
  std::string ProjectionName() const;

  /// In grid coordinates, with residuals.
  const std::vector<zel_cs::geomath::IdenticalPoint>& Points() const { return points_; }
  const std::string& NameOf(std::size_t i) const { return names_[i]; }
  std::vector<std::string> Warnings() const;

  /// The system file with this calibration: `text` is that of the system, read from `from`; files
  /// that it names are named as they are seen from `to`.
  std::string SystemText(const std::string& text, const std::string& from,
                         const std::string& to) const;

 private:
  const CoordinateSystem& system_;
  std::vector<std::string> names_;
  std::vector<zel_cs::geomath::IdenticalPoint> points_;
  std::vector<zel_cs::geomath::IdenticalPoint*> pointers_;
  std::optional<zel_cs::geomath::TLocalizationParam> solver_;
  std::optional<zel_cs::geomath::CalibrationCheck> check_;
  zel_cs::geomath::LocalToGrid site_;
};

}  // namespace geomath_tools
