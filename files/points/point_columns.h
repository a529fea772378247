#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "files/points/layer_crs.h"
#include "files/points/point_source.h"
#include "files/points/usual_names.h"
#include "files/words/number_text.h"

namespace geomath_files {

/// How the user wants the coordinates of a point to be found.
struct ColumnChoice {
  std::vector<std::string> names;     ///< two or three column names; empty for the usual ones
  std::optional<double> fixedHeight;  ///< for all points, instead of a column
  bool heightOptional = false;        ///< points need no height
  std::string crs;                    ///< of the coordinates, as CrsOf takes it; may be unknown
  LengthUnit unit = {};               ///< of grid coordinates
  bool ignoreCrs = false;             ///< that of a layer is not looked at
  bool fromGeometry = false;          ///< the geometry of features, whatever columns they have
  bool gon = false;                   ///< angles are gons, in columns lat_gon and lon_gon
  bool decimalComma = false;          ///< numbers have a decimal comma; else that is recognised
};

/// What the rows of one file, read one after another, have shown so far.
struct PointsRead {
  NumberReader numbers;
  long long stale = 0;     ///< features whose columns say something else than their geometry
  std::string firstStale;  ///< its place
};

/// Finds the coordinates of a row: latitude, longitude, height, or northing, easting, height, in
/// degrees and metres, or X, Y, Z, from columns by name or from the point geometry of a feature.
class PointColumns {
 public:
  /// Throws UserError when a column is missing, naming those that are there, and when several could
  /// be meant, naming these.
  PointColumns(const PointSource& source, CoordinateKind kind, const ColumnChoice& choice);

  /// What is known before the first row.
  PointsRead Start() const { return {NumberReader(decimalComma_ ? ',' : '\0'), 0, {}}; }
  /// Reads a row behind those of `read`; a height that may be missing, and is, is NaN. Returns what is
  /// wrong with it, empty when `point` holds its coordinates. Rows of text may be read on many threads.
  std::string Read(const Record& record, PointsRead& read, std::array<double, 3>& point) const;

  /// Whether no row has a height.
  bool LackHeights() const { return withoutHeight_; }
  /// What the user should hear: that columns with a number behind their names were taken, or what
  /// became of the layer's coordinate system. Empty when there is nothing.
  const std::string& Note() const { return note_; }
  /// What the user should hear of features whose columns say something else than their geometry; empty
  /// when there are none.
  std::string StaleNote(const PointsRead& read) const;

 private:
  void TakeChosen(const std::vector<std::string>& columns, const std::vector<std::string>& names);
  bool TakeUsual(const std::vector<std::string>& columns);
  bool TakeUsualWithoutHeight(const std::vector<std::string>& columns);
  void Take(std::size_t axis, std::size_t column);
  [[noreturn]] void RefuseMissing(const std::vector<std::string>& columns) const;
  std::size_t Needed() const { return fixedHeight_ || withoutHeight_ ? 2 : 3; }
  const char* TitleOf(std::size_t axis) const;

  bool LacksHeight(const Record& record) const;
  std::string ReadColumn(const Record& record, std::size_t axis, NumberReader& numbers,
                         double& value) const;
  std::string ReadGeometry(const Record& record, std::array<double, 3>& point) const;
  void CompareGeometry(const Record& record, const std::array<double, 3>& point,
                       PointsRead& read) const;
  bool IsAngle(std::size_t axis) const { return kind_ == CoordinateKind::geographic && axis < 2; }
  std::string CheckRange(std::size_t axis, double value) const;

  CoordinateKind kind_;
  std::optional<double> fixedHeight_;
  std::optional<LayerCrs> layerCrs_;
  bool gon_, decimalComma_, fromGeometry_ = false;
  bool heightOptional_, withoutHeight_ = false;
  const PointSource& source_;
  std::array<std::size_t, 3> columns_{};
  std::array<std::string, 3> names_;
  std::string note_;
};

}  // namespace geomath_files
