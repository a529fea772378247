#include "tools/convert_command.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/conversion/layer_conversion.h"
#include "files/conversion/system_conversion.h"
#include "files/exchange/grid_wkt.h"
#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/system/system_file.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "tools/between_run.h"
#include "tools/epoch_option.h"
#include "tools/given_system.h"
#include "tools/layer_run.h"
#include "tools/operation_options.h"
#include "tools/position.h"
#include "tools/result_columns.h"
#include "tools/row_loop.h"
#include "tools/sigma_columns.h"
#include "tools/system_grid.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct ConvertOptions {
  std::string system;
  std::string from, to;  // instead of it
  OperationOptions operation;
  bool one = false;                // operation for all points
  std::vector<std::string> input;  // a file, or a position as typed
  PointOptions points;
  std::vector<std::string> with;  // further columns
  SigmaOptions sigma;
  EpochOption epoch;
  std::string unit;    // instead of the system's
  double densify = 0;  // metres
  bool inverse = false;
  int decimals = 4;
};

// Further columns: what they are called, and how they are written.
struct Extra {
  ResultColumn column;
  double (*value)(const PointFactorsInGrid&);
};
const Extra kExtras[] = {
    {{"scale", 9, ""}, [](const PointFactorsInGrid& f) { return f.scale; }},
    {{"convergence", 8, "deg"},
     [](const PointFactorsInGrid& f) { return f.distortion.convergence * kDegPerRad; }},
    {{"combined", 9, ""}, [](const PointFactorsInGrid& f) { return f.combined; }},
};

const Extra& FindExtra(const std::string& name) {
  std::vector<std::string> known;
  for (const Extra& extra : kExtras) {
    if (extra.column.name == name) return extra;
    known.push_back(extra.column.name);
  }
  throw UserError(fmt::format("--with: there is no column \"{}\"; {}", Printable(name),
                              SuggestName(name, known)));
}

std::string FailureOf(ChainStep step) {
  if (step == ChainStep::missingDate) return "it has no date";
  if (step == ChainStep::modelYears)
    return "its date is outside of the years for which the change of frame or the motion is made";
  return fmt::format("{} cannot convert this point", ChainStepName(step));
}

// Converts the rows of a block together.
class Conversion {
 public:
  Conversion(const CoordinateSystem& system, const GridUnits& units, double date, bool inverse,
             double angleUnit, std::vector<const Extra*> extras, const SigmaColumns* sigma)
      : chain_(system.Chain()),
        metres_{units.plane.metres, units.plane.metres, units.height.metres},
        date_(date),
        inverse_(inverse),
        angleUnit_(angleUnit),
        given_(inverse ? system.Grid() : system.Geographic()),
        results_(inverse ? system.Geographic() : system.Grid()),
        geographic_(system.Geographic()),
        area_(system.Area()),
        extras_(std::move(extras)),
        sigma_(sigma),
        grid_(system, date) {}

  void operator()(RowBlock& block) const {
    const std::size_t count = block.count;
    std::vector<ChainStep> failed(count);
    auto &first = block.result[0], &second = block.result[1], &height = block.result[2];
    Copy(block.given, inverse_ ? 1 : kRadPerDeg, given_, block.result, count);
    const auto turn = [&](auto change) { TurnUnits(block.result, count, change); };
    if (inverse_) turn([](double value, double metres) { return value * metres; });
    const PointDates dates =
        block.dates.empty() ? PointDates(date_) : PointDates(block.dates.data());
    if (sigma_)
      sigma_->Convert(block, 3 + extras_.size(), dates, failed);
    else if (inverse_)
      chain_.ToGlobalDatedBatch(dates, first.data(), second.data(), height.data(), count, 1,
                                failed.data());
    else
      chain_.ToLocalDatedBatch(dates, first.data(), second.data(), height.data(), count, 1,
                               failed.data());
    if (!inverse_) turn([](double value, double metres) { return value / metres; });
    Copy(block.result, inverse_ ? kDegPerRad : 1, results_, block.result, count);
    for (std::size_t i = 0; i < count; ++i) {
      std::string& problem = block.problems[i];
      if (problem.empty() && failed[i] != ChainStep::none) problem = FailureOf(failed[i]);
      if (problem.empty() && inverse_ &&
          !AngleRangeProblem(second[i], AngleKind::longitude).empty())
        problem =
            fmt::format("it lies beyond the map: its longitude would be {:.0f} degrees", second[i]);
    }
    const Column& latitudes = inverse_ ? first : block.given[0];
    const Column& longitudes = inverse_ ? second : block.given[1];
    AddExtras(latitudes, longitudes, inverse_ ? height : block.given[2], dates, block);
    CheckArea(latitudes, longitudes, block);
    if (inverse_ && angleUnit_ != 1) {
      for (std::size_t i = 0; i < count; ++i) {
        first[i] *= angleUnit_;
        second[i] *= angleUnit_;
      }
    }
  }

  // About all points.
  static std::vector<std::string> Warnings(const RowTally& tally) {
    const long long outside = tally[kOutside];
    if (outside == 0) return {};
    return {fmt::format("{} point{} outside the area that the system is made for, the first at {}",
                        outside, outside > 1 ? "s lie" : " lies", tally.first)};
  }

 private:
  using Column = std::vector<double>;
  static constexpr std::size_t kOutside = 0;  // what is counted

  // Between north first and the order of the axes, which is the same exchange both ways.
  template <class From>
  static void Copy(const From& from, double unit, AxisPair axes, std::vector<Column>& to,
                   std::size_t count) {
    const std::size_t north = axes.northFirst ? 0 : 1;
    for (std::size_t i = 0; i < count; ++i) {
      const double first = from[north][i] * unit, second = from[1 - north][i] * unit;
      to[0][i] = first;
      to[1][i] = second;
      to[2][i] = from[2][i];
    }
  }

  // The chain is in metres; the local coordinates of files are not always.
  template <class Turn>
  void TurnUnits(std::vector<Column>& local, std::size_t count, Turn turn) const {
    for (std::size_t axis = 0; axis < metres_.size(); ++axis) {
      if (metres_[axis] == 1) continue;
      for (std::size_t i = 0; i < count; ++i) local[axis][i] = turn(local[axis][i], metres_[axis]);
    }
  }

  void AddExtras(const Column& latitudes, const Column& longitudes, const Column& heights,
                 PointDates dates, RowBlock& block) const {
    if (extras_.empty()) return;
    for (std::size_t i = 0; i < block.count; ++i) {
      PointFactorsInGrid factors;
      const bool found = grid_.Factors(latitudes[i], longitudes[i], heights[i], dates[i], factors);
      for (std::size_t k = 0; k < extras_.size(); ++k)
        block.result[3 + k][i] = found ? extras_[k]->value(factors) : std::nan("");
    }
  }

  void CheckArea(const Column& latitudes, const Column& longitudes, RowBlock& block) const {
    if (!area_) return;
    for (std::size_t i = 0; i < block.count; ++i) {
      const double latitude = geographic_.northSign * latitudes[i];
      const double longitude = geographic_.eastSign * longitudes[i];
      if (!block.problems[i].empty() || area_->Contains(latitude, longitude)) continue;
      if (block.tally[kOutside] == 0)
        block.tally.first = fmt::format("{:.4f} {:.4f}", latitude, longitude);
      block.tally.Count(kOutside);
    }
  }

  const CoordinateChain& chain_;
  std::array<double, 3> metres_;  // of one unit of the local coordinates
  double date_;                   // of positions without one of their own
  bool inverse_;
  double angleUnit_;  // of the results, in a degree
  AxisPair given_, results_, geographic_;
  std::optional<GeoBox> area_;
  std::vector<const Extra*> extras_;
  const SigmaColumns* sigma_;  // null where no uncertainties are asked for
  SystemGrid grid_;
};

std::vector<ResultColumn> ResultsOf(const ConvertOptions& options, const GridUnits& units) {
  const int metres = options.decimals;
  if (!options.inverse)
    return {{"n", metres, units.plane.Sign()},
            {"e", metres, units.plane.Sign()},
            {"h_local", metres, units.height.Sign()}};
  std::vector<ResultColumn> columns = PositionColumns(options.points.angles, metres);
  columns.push_back({"h_global", metres});
  return columns;
}

// What the file says, or what its parameters say.
std::string CrsOfGrid(const CoordinateSystem& system) {
  return system.GridCrs().empty() ? GridWkt(system) : system.GridCrs();
}

// Layers whose geometry is converted, vertex by vertex.
int ConvertShapes(const ConvertOptions& options, const CoordinateSystem& system,
                  const GridUnits& units) {
  RefuseForShapes(options.points);
  for (const auto& [given, option] :
       {std::pair(!options.with.empty(), "--with"), std::pair(options.sigma.Asked(), "--sigma"),
        std::pair(!options.epoch.column.empty(), "--epoch-column")})
    if (given) throw UserError(fmt::format("{}: belongs to points", option));
  const SystemConversion conversion(system, units, options.inverse,
                                    DateOf(options.epoch, system, options.system));
  const std::string grid = CrsOfGrid(system), &positions = system.GeographicCrs();
  LayerJob job = LayerJobOf(options.points);
  job.given = {!options.inverse, options.inverse ? system.GridCrs() : positions, true, units.plane};
  job.crs = options.inverse ? positions : grid;
  job.unit = units.plane;
  job.geographic = options.inverse;
  job.densify = options.densify;
  job.distance = options.inverse ? DistanceInPlane(units.plane.metres) : DistanceOnSphere();
  job.convert = [&conversion, height = job.height](VertexColumns& v) {
    conversion.ConvertVertices(v, height);
  };
  return RunLayers(std::move(job));
}

// Options that belong to one of the two ways.
void CheckWay(const ConvertOptions& options) {
  const bool between = !options.from.empty() || !options.to.empty();
  const auto refuse = [](bool given, const char* option, const char* why) {
    if (given) throw UserError(fmt::format("{}: {}", option, why));
  };
  const OperationOptions& operation = options.operation;
  if (!between) {
    if (options.system.empty()) throw UserError("give --system FILE, or --from and --to");
    constexpr const char* why = "is of a conversion --from one system --to another";
    refuse(!operation.operation.empty(), "--operation", why);
    refuse(!operation.near.empty(), "--near", why);
    refuse(!operation.grids.empty(), "--grids", why);
    refuse(operation.list, "--list-operations", why);
    refuse(options.one, "--one-operation", why);
    if (options.input.empty()) throw UserError("name the points, or type a position");
    return;
  }
  if (options.from.empty() || options.to.empty()) throw UserError("give both --from and --to");
  constexpr const char* why = "is of a conversion by --system";
  refuse(!options.system.empty(), "--system", "stands instead of --from and --to");
  refuse(options.inverse, "--inverse", "exchange --from and --to");
  refuse(!options.with.empty(), "--with", why);
  refuse(options.sigma.Asked(), "--sigma", why);
}

int Convert(ConvertOptions options) {
  CheckWay(options);
  if (!options.from.empty())
    return RunBetween({options.from, options.to, options.input, options.points, options.operation,
                       options.epoch, options.unit, options.densify, options.one,
                       options.decimals});
  RefuseReadingTwice({options.system, options.input.front()});
  const auto system = GivenSystem(options.system);
  const GridUnits units = options.unit.empty() ? system->Units() : ParseGridUnits(options.unit);
  const bool gon = options.points.InGon(), isFile = options.input.size() == 1;
  if (isFile) {
    options.points.input = options.input.front();
    if (options.points.output.empty()) throw UserError("name the output with --output FILE");
    if (gon && options.inverse && !IsCsvName(options.points.output))
      throw UserError("--angles gon: only CSV holds gons; other formats hold degrees");
  }
  if (isFile && !IsCsvName(options.points.input) &&
      GoesByLayers(options.points.input, options.points.layer, options.points.output)) {
    std::vector<std::string> inputs = system->Files();
    inputs.insert(inputs.end(), {options.system, options.points.input});
    RefuseOverwriting(inputs, {options.points.output});
    return ConvertShapes(options, *system, units);
  }
  if (options.densify > 0)
    throw UserError("--densify: belongs to lines and polygons; the input has points");
  RowJob job;
  job.failure = "not converted";
  job.failures = "could not be converted";
  job.given = options.inverse ? CoordinateKind::grid : CoordinateKind::geographic;
  job.results = ResultsOf(options, units);
  std::vector<const Extra*> extras;
  for (const std::string& name : options.with) {
    extras.push_back(&FindExtra(name));
    job.results.push_back(extras.back()->column);
  }
  std::optional<SigmaColumns> sigma;
  if (options.sigma.Asked()) {
    sigma.emplace(options.sigma, *system, options.inverse);
    if (!sigma->Note().empty()) std::fprintf(stderr, "geomath: %s\n", sigma->Note().c_str());
    job.also = sigma->Read();
    for (ResultColumn& column : SigmaColumns::Results(options.decimals))
      job.results.push_back(std::move(column));
  }
  job.placedByResult = options.inverse || !IsGeoJsonName(options.points.output);
  const std::string& positions = system->GeographicCrs();
  job.givenCrs = !options.inverse                             ? positions
                 : isFile && !IsCsvName(options.points.input) ? CrsOfGrid(*system)
                                                              : system->GridCrs();
  job.placeCrs = job.placedByResult && !options.inverse ? CrsOfGrid(*system) : positions;
  job.unit = units.plane;
  job.files = system->Files();
  job.files.push_back(options.system);
  job.dates = options.epoch.column;
  const Conversion conversion(*system, units, DateOf(options.epoch, *system, options.system),
                              options.inverse, gon ? kGonPerDegree : 1, std::move(extras),
                              sigma ? &*sigma : nullptr);
  job.work = std::cref(conversion);
  job.warnings = Conversion::Warnings;
  return isFile ? RunRows(options.points, job) : RunPosition(options.input, options.points, job);
}

}  // namespace

std::function<int()> PrepareConvert(CLI::App& arguments) {
  const auto options = std::make_shared<ConvertOptions>();
  arguments.footer(
      "Forward, latitude, longitude (decimal degrees, or degrees minutes seconds) and height\n"
      "become northing, easting and height (columns n, e, h_local); with --inverse the other\n"
      "way (columns lat, lon, h_global). All columns of the input travel through unchanged.\n"
      "A row that cannot be converted keeps its place with empty results and is reported.\n"
      "Exit status: 0 all rows converted, 1 some rows not, 2 stopped.");
  arguments.add_option("--system", options->system, kSystemHelp);
  arguments.add_option(
      "--from", options->from,
      "instead of --system: the system of the input, an EPSG code (EPSG:31467, "
      "EPSG:25832+7837), a file (system file, WKT, PROJJSON), or input for that of "
      "its layer");
  arguments.add_option("--to", options->to, "with --from: the system of the results");
  AddOperationOptions(arguments, options->operation, "the operation between --from and --to");
  arguments.add_flag("--one-operation", options->one,
                     "all points by one operation, where each would take the best for it");
  arguments
      .add_option(
          "INPUT", options->input,
          "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input. Or layers "
          "of lines and polygons. Or a "
          "position: LAT LON [HEIGHT], with --inverse N E [HEIGHT], with --from in the order of "
          "that system")
      ->expected(1, 3);
  arguments.add_option("-o,--output", options->points.output,
                       "output file, replaced if it exists: .csv, .geojson, .gpkg, .shp; - for CSV "
                       "on standard output");
  arguments.add_option("--unit", options->unit,
                       "unit of northings, eastings and local heights instead of the system's: m, "
                       "ft, us-ft, …; two for the plane and the heights: us-ft,ft");
  arguments
      .add_option("--densify", options->densify,
                  "straight segments of lines and polygons get vertices, so that none is longer "
                  "than so many metres")
      ->check(CLI::PositiveNumber);
  arguments.add_flag("--inverse", options->inverse, "from local to global coordinates");
  AddPointOptions(arguments, options->points, "lat,lon,h (--inverse: n,e,h_local or n,e,h)");
  arguments
      .add_option("--decimals", options->decimals,
                  "decimals of lengths in CSV output, default 4; degrees get 6 more")
      ->check(CLI::Range(0, 9));
  arguments
      .add_option(
          "--with", options->with,
          "further columns, separated by commas: scale, convergence, combined (the combined "
          "factor)")
      ->delimiter(',')
      ->allow_extra_args(false);
  AddEpochAndColumn(arguments, options->epoch);
  AddSigmaOptions(arguments, options->sigma);
  return [options] { return Convert(*options); };
}

}  // namespace geomath_files::program
