#include "tools/measure_command.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/system/system_file.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "tools/angle_column.h"
#include "tools/epoch_option.h"
#include "tools/given_system.h"
#include "tools/position.h"
#include "tools/row_loop.h"
#include "tools/system_grid.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct MeasureOptions {
  std::string system;
  std::vector<std::string> from;  // a position as typed
  bool grid = false, pairs = false, fromFirst = false, deflections = false;
  int decimals = 4;
  PointOptions points;
  EpochOption epoch;
};

constexpr int kFactorDecimals = 10;

enum class Unit { metres, angle, seconds, factor };

// The columns in their order: those of a field sheet.
struct LineColumn {
  const char* name;
  Unit unit;
  double GridLine::*value;
};
constexpr LineColumn kColumns[] = {
    {"grid_distance", Unit::metres, &GridLine::gridDistance},
    {"grid_bearing", Unit::angle, &GridLine::gridBearing},
    {"geodesic_distance", Unit::metres, &GridLine::geodesicDistance},
    {"azimuth", Unit::angle, &GridLine::azimuth},
    {"back_azimuth", Unit::angle, &GridLine::backAzimuth},
    {"convergence_1", Unit::angle, &GridLine::convergence1},
    {"convergence_2", Unit::angle, &GridLine::convergence2},
    {"arc_to_chord_1", Unit::seconds, &GridLine::arcToChord1},
    {"arc_to_chord_2", Unit::seconds, &GridLine::arcToChord2},
    {"scale_1", Unit::factor, &GridLine::scale1},
    {"scale_2", Unit::factor, &GridLine::scale2},
    {"line_scale", Unit::factor, &GridLine::lineScale},
    {"elevation_factor", Unit::factor, &GridLine::elevationFactor},
    {"combined_factor", Unit::factor, &GridLine::combinedFactor},
    {"ground_distance", Unit::metres, &GridLine::groundDistance},
    {"slope_distance", Unit::metres, &GridLine::slopeDistance},
};

// The plumb line of a row's line at its first end and at its second one, looking back: seconds.
struct PlumbColumn {
  const char* name;
  double (*value)(const PlumbLine&);
};
constexpr PlumbColumn kPlumbColumns[] = {
    {"xi", [](const PlumbLine& p) { return p.deflection.xi; }},
    {"eta", [](const PlumbLine& p) { return p.deflection.eta; }},
    {"azimuth_correction", [](const PlumbLine& p) { return p.azimuthCorrection; }},
    {"direction_correction", [](const PlumbLine& p) { return p.directionCorrection; }},
    {"zenith_correction", [](const PlumbLine& p) { return p.zenithCorrection; }},
};
constexpr const char* kEnds[] = {"_1", "_2"};

// Which line belongs to a row: from the row before, from the row before in pairs, or from one point.
class Measurement {
 public:
  Measurement(const MeasureOptions& options, const SystemGrid& grid)
      : options_(options), grid_(grid), angles_(options.points.angles) {
    if (options.from.empty()) return;
    const CoordinateKind kind = options.grid ? CoordinateKind::grid : CoordinateKind::geographic;
    const std::array<double, 3> at = ReadPosition(options.from, kind, options.points.InGon());
    if (!Locate(at[0], at[1], at[2], start_))
      throw UserError("--from: the system has no grid at this position");
    hasStart_ = true;
  }

  std::vector<ResultColumn> Columns() const {
    std::vector<ResultColumn> columns;
    for (const auto& [name, unit, value] : kColumns) switch (unit) {
        case Unit::metres:
          columns.push_back({name, options_.decimals});
          break;
        case Unit::angle:
          columns.push_back(angles_.Column(name));
          break;
        case Unit::seconds:
          columns.push_back({name, 4, "sec"});
          break;
        case Unit::factor:
          columns.push_back({name, kFactorDecimals, ""});
          break;
      }
    if (options_.deflections)
      for (const char* end : kEnds)
        for (const auto& [name, value] : kPlumbColumns)
          columns.push_back({std::string(name) + end, 3, "sec"});
    return columns;
  }

  void operator()(RowBlock& block) {
    for (std::size_t i = 0; i < block.count; ++i)
      if (!block.blank[i]) Row(block, i);
  }

 private:
  bool Locate(double first, double second, double height, GridPoint& point) const {
    double at[3] = {first, second, height};
    if (!options_.grid && !grid_.ToGrid(first, second, height, at)) return false;
    point = grid_.Counted(at[0], at[1], at[2]);
    return true;
  }

  // A row that starts something has no line, which is no problem.
  void Row(RowBlock& block, std::size_t i) {
    std::string& problem = block.problems[i];
    GridPoint to{0, 0};
    bool located = problem.empty();
    if (located && !Locate(block.given[0][i], block.given[1][i], block.given[2][i], to)) {
      problem = "the system has no grid at this point";
      located = false;
    }
    const bool starts = !options_.pairs ? !hasStart_ && rows_ == 0 : rows_ % 2 == 0;
    ++rows_;
    GridLine line = Nothing();
    bool measured = false;
    if (located && !starts) {
      if (!hasStart_)
        problem = "the point that the line comes from is not known";
      else if (!grid_.Lines().Between(start_, to, line))
        problem = "the line leads out of the grid";
      else
        measured = true;
    }
    const std::size_t plumbFirst = Write(line, block, i);
    if (options_.deflections && !WritePlumb(measured, to, block, plumbFirst, i) && measured)
      problem = "the geoid has no slopes here";
    if (starts || Consecutive()) {
      hasStart_ = located;
      start_ = to;
    }
  }

  // Both ends, from the column on; false, all NaN, where one of them has none.
  bool WritePlumb(bool measured, const GridPoint& to, RowBlock& block, std::size_t column,
                  std::size_t i) const {
    PlumbLine ends[2];
    const bool known = measured && grid_.Lines().PlumbAt(start_, to, ends[0]) &&
                       grid_.Lines().PlumbAt(to, start_, ends[1]);
    for (const PlumbLine& end : ends)
      for (const PlumbColumn& each : kPlumbColumns)
        block.result[column++][i] = known ? each.value(end) / kRadPerArcSecond : std::nan("");
    return known;
  }

  bool Consecutive() const {
    return !options_.pairs && !options_.fromFirst && options_.from.empty();
  }

  static GridLine Nothing() {
    GridLine line;
    for (const LineColumn& column : kColumns) line.*column.value = std::nan("");
    return line;
  }

  // The column behind the last one that it writes.
  std::size_t Write(const GridLine& line, RowBlock& block, std::size_t i) const {
    std::size_t column = 0;
    for (const auto& [name, unit, member] : kColumns) {
      const double value = line.*member;
      block.result[column++][i] = unit == Unit::angle     ? angles_.Value(value)
                                  : unit == Unit::seconds ? value / kRadPerArcSecond
                                                          : value;
    }
    return column;
  }

  const MeasureOptions& options_;
  const SystemGrid& grid_;
  AngleColumns angles_;
  GridPoint start_{0, 0};
  bool hasStart_ = false;
  long long rows_ = 0;
};

int RunMeasure(const MeasureOptions& options) {
  if (options.points.output.empty()) throw UserError("name the output with --output FILE");
  if (options.pairs + options.fromFirst + !options.from.empty() > 1)
    throw UserError("--pairs, --from-first and --from exclude each other");
  if (options.from.size() == 1 || options.from.size() > 3)
    throw UserError("--from: must be LAT,LON or LAT,LON,H, with --grid N,E or N,E,H");
  RefuseReadingTwice({options.system, options.points.input});
  const auto system = GivenSystem(options.system);
  const SystemGrid grid(*system, DateOf(options.epoch, *system, options.system));
  if (options.deflections && !grid.HasGeoid())
    throw UserError("--deflections: the system has no geoid whose slopes they are");
  Measurement measurement(options, grid);

  RowJob job;
  job.failure = "not measured";
  job.failures = "could not be measured";
  job.given = options.grid ? CoordinateKind::grid : CoordinateKind::geographic;
  job.results = measurement.Columns();
  job.givenCrs = options.grid ? system->GridCrs() : system->GeographicCrs();
  job.placeCrs = job.givenCrs;
  job.files = system->Files();
  job.files.push_back(options.system);
  job.inOrder = true;
  job.work = std::ref(measurement);
  return RunRows(options.points, job);
}

}  // namespace

std::function<int()> PrepareMeasure(CLI::App& arguments) {
  const auto options = std::make_shared<MeasureOptions>();
  arguments.footer(
      "Every row gets the line that leads to its point: from the point of the row before, with\n"
      "--pairs in the second row of each two, with --from-first from the first point, with --from\n"
      "from a position. Distances in the grid, on the ellipsoid, on the ground and in space,\n"
      "bearing, azimuths, convergence, the arc-to-chord correction t - T in seconds, scale at "
      "both\n"
      "ends and of the line, elevation and combined factor. Azimuths are those of the system's "
      "own\n"
      "datum. All columns of the input travel through.\n"
      "Exit status: 0 all done, 1 some rows not, 2 stopped.");
  arguments.add_option("--system", options->system, kSystemHelp)->required();
  arguments
      .add_option("POINTS", options->points.input,
                  "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input")
      ->required();
  arguments.add_option("-o,--output", options->points.output,
                       "output file, replaced if it exists: .csv, .geojson, .gpkg, .shp; - for CSV "
                       "on standard output");
  arguments.add_flag("--grid", options->grid, "the points are given in the grid");
  arguments.add_flag("--deflections", options->deflections,
                     "also the deflection of the vertical at both ends and its corrections, from "
                     "the slopes of the geoid");
  arguments.add_flag("--pairs", options->pairs, "a line for each two rows");
  arguments.add_flag("--from-first", options->fromFirst, "all lines from the first point");
  arguments
      .add_option("--from", options->from,
                  "all lines from a position: LAT,LON[,HEIGHT], with --grid N,E[,HEIGHT]")
      ->delimiter(',')
      ->allow_extra_args(false);
  arguments
      .add_option("--decimals", options->decimals, "decimals of metres in CSV output, default 4")
      ->check(CLI::Range(0, 9));
  AddPointOptions(arguments, options->points, "lat,lon,h (--grid: n,e,h_local or n,e,h)");
  AddEpoch(arguments, options->epoch);
  return [options] { return RunMeasure(*options); };
}

}  // namespace geomath_files::program
