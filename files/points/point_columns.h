#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "files/points/layer_crs.h"
#include "files/points/point_source.h"

namespace geomath_tools {

/// Which coordinates the points of a file have.
enum class CoordinateKind { geographic, grid };

/// How the user wants the coordinates of a point to be found.
struct ColumnChoice {
  std::vector<std::string> names;     ///< two or three column names; empty for the defaults
  std::optional<double> fixedHeight;  ///< for all points, instead of a column
  std::string crs;                    ///< of the coordinates, as CrsOf takes it; may be unknown
  bool ignoreCrs = false;             ///< that of a layer is not looked at
};

/// Finds the coordinates of a row: latitude, longitude, height, or northing, easting, height, in
/// degrees and metres, from columns by name or from the point geometry of a feature.
class PointColumns {
 public:
  /// Throws UserError when a column is missing, naming those that are there.
  PointColumns(const PointSource& source, CoordinateKind kind, const ColumnChoice& choice);

  /// Reads a row. Returns what is wrong with it, empty when `point` holds its coordinates.
  std::string Read(const Record& record, std::array<double, 3>& point) const;

  /// What the user should know of the layer's coordinate system, empty when there is nothing.
  std::string Note() const { return layerCrs_ ? layerCrs_->Note() : std::string(); }

 private:
  std::string ReadColumn(const Record& record, std::size_t axis, double& value) const;
  std::string ReadGeometry(const Record& record, std::array<double, 3>& point) const;
  std::string CheckRange(std::size_t axis, double value) const;

  CoordinateKind kind_;
  std::optional<double> fixedHeight_;
  bool fromGeometry_ = false;
  std::optional<LayerCrs> layerCrs_;
  std::array<std::size_t, 3> columns_{};
  std::array<std::string, 3> names_;
};

}  // namespace geomath_tools
