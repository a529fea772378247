#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "files/points/point_source.h"
#include "files/system/length_unit.h"
#include "files/words/number_text.h"

namespace geomath_files {

/// What became of one row: its position before and after, or nothing.
struct Converted {
  bool done = false;
  std::span<const double> result{};  ///< in the units of the result columns
  /// The point geometry for formats that have one; z NaN for none.
  double x = 0, y = 0, z = 0;
};

/// A column of results: its name, and how it is written.
struct ResultColumn {
  std::string name;
  int decimals = 4;  ///< in text
  std::string unit = "m";
  std::optional<AngleKind> sexagesimal = {};  ///< degrees, as text in degrees, minutes, seconds
};
/// A result as text; empty for NaN, which a column may have where others have a value.
std::string ResultText(double value, const ResultColumn& column);
/// Appends that text.
void AppendResult(std::string& text, double value, const ResultColumn& column);

/// How results are written.
struct ResultStyle {
  std::vector<ResultColumn> columns;
  std::string crs;      ///< of the point geometry, as CrsOf takes it; empty for none
  bool inGrid = false;  ///< the point geometry is in a plane, in `unit`
  LengthUnit unit = {};
  bool heights = true;  ///< the point geometry has some
};

/// Where converted rows go: every row of the source with all its columns, and those of the results.
class PointSink {
 public:
  virtual ~PointSink() = default;
  /// Writes a row of the source; without result their columns stay empty. Throws UserError
  /// when writing fails.
  virtual void Write(const Record& record, const Converted& converted) = 0;
  /// Whether rows are text, which can be printed on many threads and written later.
  virtual bool IsText() const { return false; }
  /// Appends to `text` what Write would write; with a decimal comma in the results, where that is said.
  virtual void Print(const Record&, const Converted&, bool /*decimalComma*/, std::string&) const {}
  /// Writes rows that were printed.
  virtual void WriteText(std::string_view /*printed*/) {}
  /// Hands on what is still held back, to whom waits for it at the other end of a pipe.
  virtual void Flush() {}
  /// From here on, results are text with a decimal comma, as the columns of the source are.
  virtual void UseDecimalComma() {}
  /// Writes out what is still held back and closes the file. Throws UserError when that fails.
  virtual void Close() = 0;
  /// What the format could not take as it is, for the user; complete after the last row.
  virtual std::vector<std::string> Notes() const { return {}; }
};

/// Creates a file, replacing one that exists, or writes CSV to standard output for "-". The suffix
/// chooses the format: .csv .tsv .txt, .geojson .json, .gpkg, .shp. Throws UserError.
std::unique_ptr<PointSink> CreatePoints(const std::string& path, const PointSource& source,
                                        const ResultStyle& style);

/// Whether CreatePoints has a format of that suffix.
bool IsPointsName(const std::string& path);

/// Whether that suffix means GeoJSON, whose geometries are geographic by definition (RFC 7946).
bool IsGeoJsonName(const std::string& path);

}  // namespace geomath_files
