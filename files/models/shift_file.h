#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "geomath/shift/coordinate_shift.h"
#include "geomath/shift/geocentric_shift_grid.h"

namespace geomath_files {

/// A shift in a file, with what the caller knows where the file leaves it open.
struct ShiftChoice {
  std::string file;  ///< its path
  /// The unit of a grid that is no geodetic TIFF, behind its scale and offset; empty for the one that
  /// its samples state.
  std::string unit = {};
  /// In which system a grid of geocentric translations is looked up.
  std::optional<zel_cs::geomath::GridPosition> position = {};
  /// Geographic or plane: of a triangulation whose systems have no EPSG code.
  std::optional<zel_cs::geomath::ShiftSpace> space = {};
  /// Decimal year from whose positions velocities lead, which their file does not tell.
  std::optional<double> epoch = {};

  /// Whether both say the same.
  bool operator==(const ShiftChoice&) const = default;
};

/// The bytes of the files that a shift is made of: its own under an empty name, those that it names
/// under theirs.
using ShiftBytes = std::map<std::string, std::string>;

/// Opens a shift by what is in its file: a ShiftGrid from NTv2 (.gsb) or a geodetic TIFF, a
/// GeocentricShiftGrid or a VelocityGrid from the latter, a Triangulation from JSON, or a
/// DeformationModel from JSON and the grids that it names, which are looked for beside it. Throws
/// UserError with the file and the place in it. One that was opened before may be the same object, as
/// long as its file has not changed.
std::shared_ptr<const zel_cs::geomath::CoordinateShift> OpenShift(const ShiftChoice& choice);

/// The bytes of the files that OpenShift reads for a path. Throws UserError.
ShiftBytes ReadShiftBytes(const std::string& path);

/// OpenShift from bytes; `choice.file` stands for the file in messages.
std::unique_ptr<zel_cs::geomath::CoordinateShift> ParseShift(const ShiftBytes& bytes,
                                                             const ShiftChoice& choice);

}  // namespace geomath_files
