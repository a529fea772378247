#pragma once

#include <optional>
#include <string>
#include <vector>

#include "files/site/site_solution.h"
#include "files/system/system_file.h"

namespace geomath_files {

/// The calibration of a coordinate system that was read from a file, which must outlive it.
class Calibration : public SiteSolution {
 public:
  /// `units` are those of the local coordinates instead of the system's: the report and the new
  /// system file are to have them. The control is in metres.
  Calibration(const CoordinateSystem& system, const std::vector<ControlPoint>& control,
              const CalibrationOptions& options, std::optional<GridUnits> units = {});

  /// The system that was calibrated.
  const CoordinateSystem& System() const { return system_; }
  /// Of the local coordinates in the report and in the new system file.
  const GridUnits& Units() const { return units_; }
  /// The name of the projection in use in a system file.
  std::string ProjectionName() const;

  /// The system file with this calibration: `text` is that of the system, read from `from`; files
  /// that it names are named as they are seen from `to`.
  std::string SystemText(const std::string& text, const std::string& from,
                         const std::string& to) const;

 private:
  const CoordinateSystem& system_;
  GridUnits units_;
};

}  // namespace geomath_files
