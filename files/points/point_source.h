#pragma once

#include <ogr_feature.h>

#include <memory>
#include <string>
#include <vector>

#include "files/points/csv_reader.h"

namespace geomath_files {

/// A column of a point file. Columns of a CSV file are text.
struct Column {
  std::string name;
  OGRFieldType type = OFTString;
  OGRFieldSubType subtype = OFSTNone;
};

/// One row of a point file: a row of a CSV file as it stands there, or a feature of a layer.
struct Record {
  CsvRow row;
  OGRFeatureUniquePtr feature;  ///< null for CSV

  bool IsBlank() const { return !feature && row.IsBlank(); }
  /// The value of a column as text; empty when it is null, or missing in a short row.
  std::string Text(std::size_t column) const;
  /// The same without a copy where there is a text of it; else it stands in `room`.
  std::string_view Text(std::size_t column, std::string& room) const;
};

/// Rows of a point file that were read together, to be taken one by one.
struct RawRows {
  CsvRows csv;
  std::vector<OGRFeatureUniquePtr> features;
  std::size_t taken = 0;  ///< of the features
};

/// Rows of points, read one after another: a CSV file, or a layer that OpenPointFile knows.
class PointSource {
 public:
  virtual ~PointSource() = default;

  /// Reads the next rows, as many as are at hand up to some thousands; false at the end. Throws UserError
  /// when reading fails; the rows before come first.
  virtual bool Read(RawRows& rows) = 0;
  /// Takes the next of the rows into `record`, reusing its memory; false where none is left. May be
  /// called while others are read.
  virtual bool Take(RawRows& rows, Record& record) const = 0;
  /// The two above, row by row.
  bool Next(Record& record);
  /// Where a record stands, for a report: "line 12", "feature 12".
  virtual std::string Place(const Record& record) const = 0;
  /// What is wrong with the row as such, for example too few fields; empty when nothing is.
  virtual std::string Problem(const Record& record) const;
  /// Whether the next row is still to come, from a pipe or a terminal.
  virtual bool WouldWait() const { return false; }
  /// How much has been read, from 0 to 1; negative when that cannot be known.
  virtual double Done() const = 0;

  const std::string& Name() const { return name_; }
  const std::vector<Column>& Columns() const { return columns_; }
  std::vector<std::string> ColumnNames() const;
  /// Whether the numbers of the features are their own, not those of the rows.
  bool HasIds() const { return hasIds_; }
  /// The coordinate system of a layer's geometry, WKT; empty where there is none.
  const std::string& Crs() const { return crs_; }
  /// The reader of a CSV file, null for other formats.
  virtual const CsvReader* Csv() const { return nullptr; }
  /// The header of a CSV file as it stands there, and what stands before it.
  const std::string& Header() const { return header_; }
  /// Whether a header with names of columns stands in a CSV file.
  bool HasHeader() const { return hasHeader_; }
  /// Whether the rows are features with a geometry.
  bool HasGeometry() const { return hasGeometry_; }

 protected:
  std::string name_, header_, crs_;
  RawRows rows_;  // of those that are asked for one by one
  std::vector<Column> columns_;
  bool hasHeader_ = false, hasGeometry_ = false, hasIds_ = false;
};

/// Opens a file, or standard input for "-" (CSV). Files named .csv, .tsv or .txt are CSV; every
/// other file is opened by GDAL/OGR. `layer` chooses one of several layers; empty for the only one.
/// `names`, when there are any, are the columns of a CSV file without header. Throws UserError when
/// that fails.
std::unique_ptr<PointSource> OpenPoints(const std::string& path, const std::string& layer,
                                        const std::vector<std::string>& names = {});

/// What --columns says for a CSV file without header: all its columns, separated by commas. Throws
/// UserError where there is none or one stands there twice.
std::vector<std::string> NamesOfAllColumns(const std::string& list);

/// Whether the name stands for a CSV file: "-", or one of those suffixes.
bool IsCsvName(const std::string& path);

}  // namespace geomath_files
