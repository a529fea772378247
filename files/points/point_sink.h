#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "files/points/point_source.h"

namespace geomath_tools {

/// What became of one row: its position before and after, or nothing.
struct Converted {
  bool done = false;
  std::array<double, 3> result{};  ///< in the units of the result columns
  double x = 0, y = 0, z = 0;      ///< the point geometry for formats that have one
};

/// How result columns are written.
struct ResultStyle {
  std::array<std::string, 3> names;
  std::array<int, 3> decimals;  ///< in text
  std::string crs;              ///< of the point geometry, as CrsOf takes it; empty for none
};

/// Where converted rows go: every row of the source with all its columns, and three more.
class PointSink {
 public:
  virtual ~PointSink() = default;
  /// Writes a row of the source; without result its three columns stay empty. Throws UserError
  /// when writing fails.
  virtual void Write(const Record& record, const Converted& converted) = 0;
  /// Writes out what is still held back and closes the file. Throws UserError when that fails.
  virtual void Close() = 0;
  /// What the format could not take as it is, for the user; complete after the last row.
  virtual std::vector<std::string> Notes() const { return {}; }
};

/// Creates a file, replacing one that exists, or writes CSV to standard output for "-". The suffix
/// chooses the format: .csv .tsv .txt, .geojson .json, .gpkg, .shp. Throws UserError.
std::unique_ptr<PointSink> CreatePoints(const std::string& path, const PointSource& source,
                                        const ResultStyle& style);

/// Whether that suffix means GeoJSON, whose geometries are geographic by definition (RFC 7946).
bool IsGeoJsonName(const std::string& path);

}  // namespace geomath_tools
