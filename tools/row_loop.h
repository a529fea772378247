#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "files/points/point_columns.h"
#include "files/points/point_sink.h"

namespace geomath_files::program {

/// What the user says of a file of points and its output, in every command that takes one.
struct PointOptions {
  std::string input, output, layer;
  std::string columns, results;  // as given: names separated by commas
  std::optional<double> fixedHeight;
  bool noHeader = false, fromGeometry = false, decimalComma = false;
  std::string angles = "degrees";  ///< "degrees", "dms" or "gon"

  bool InGon() const { return angles == "gon"; }
  bool ignoreCrs = false;
  std::size_t jobs = 0;  ///< threads that work on rows; 0 for all processors
};

/// Adds --columns, --no-header, --results, --fixed-height, --decimal-comma, --angles,
/// --from-geometry, --ignore-crs, --layer and --jobs. `defaults` names the usual columns.
void AddPointOptions(CLI::App& arguments, PointOptions& options, const std::string& defaults);

/// What a job counts over its rows.
struct RowTally {
  std::vector<long long> counts;  ///< of whatever the job numbers
  std::string first;              ///< of what it counts, in words

  void Count(std::size_t number);
  long long operator[](std::size_t number) const;
  /// Takes that of later rows to its own.
  void Add(const RowTally& later);
};

/// Rows in hand: what was read, and what the command makes of it.
struct RowBlock {
  std::size_t count = 0;
  /// Latitude, longitude (degrees) or northing, easting; height. 0 where a row is unreadable.
  std::array<std::vector<double>, 3> given;
  std::vector<std::vector<double>> also;    ///< by column that the job reads beside
  std::vector<double> dates;                ///< decimal years, where the job reads them
  std::vector<std::vector<double>> result;  ///< by column
  std::vector<char> blank;                  ///< whether a row is none: empty, or a remark
  /// Why a row has no result; empty where it has one. What was unreadable has its reason already.
  std::vector<std::string> problems;
  RowTally tally;  ///< of these rows and those before them
};

/// What a command does with the rows of a point file.
struct RowJob {
  CoordinateKind given = CoordinateKind::geographic;
  std::string givenCrs, placeCrs;      ///< of what is read and of the output's points, where known
  LengthUnit unit = {};                ///< of the grid coordinates among them
  std::vector<std::string> also = {};  ///< names of columns of numbers that are read beside
  std::string dates = {};              ///< name of a column of dates; empty for none
  std::vector<ResultColumn> results;   ///< with their usual names
  /// Of the results; the other kind of the two that a system has where it is not said.
  std::optional<CoordinateKind> made = {};
  bool heightOptional = false;               ///< points need no height; NaN where they have none
  std::optional<LengthUnit> placeUnit = {};  ///< of the output's points, where it is another
  /// The points of the output stand where the results say, which are y, x, z; else where they stood.
  bool placedByResult = false;
  bool inOrder = false;            ///< what becomes of a row depends on those before it
  std::vector<std::string> files;  ///< that the work reads beside the input
  const char* failure;             ///< of a row, before the reason: "not converted"
  const char* failures;            ///< of many: "could not be converted"
  /// Fills `result` for the rows without a problem, or gives them one. Called on many threads at once,
  /// unless the job is in order.
  std::function<void(RowBlock&)> work;
  /// Lines for the user when all is done, and warnings. May be left out.
  std::function<std::vector<std::string>(const RowTally&)> summary = {}, warnings = {};
};

/// Throws UserError for --fixed-height where X, Y and Z are given, of which none is a height.
void RefuseHeightOfSpace(const PointOptions& options, const RowJob& job);

/// Reads the input in blocks, lets the job work on each and writes every row with all its columns
/// and the results, side by side on several threads and with the same output whatever their number. The
/// results are renamed together (n_2, e_2, h_local_2) where the input has one of their names. Reports
/// bad rows and progress on standard error. An interrupt, or input that breaks off, ends the work after
/// the rows in hand, which are written. Returns the exit status; throws UserError for what stops the
/// work.
int RunRows(const PointOptions& options, const RowJob& job);

}  // namespace geomath_files::program
