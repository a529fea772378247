#include "tools/convert_command.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
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
#include "tools/epoch_option.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/position.h"
#include "tools/progress.h"
#include "tools/row_loop.h"
#include "tools/sigma_columns.h"
#include "tools/system_grid.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct ConvertOptions {
  std::string system;
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

constexpr double kGonPerDegree = 10.0 / 9;

// Of an angle in degrees: 1e-6 of a degree is 0.1 m or less, so that these figures show at least
// what the chosen decimals of a metre show.
constexpr int kMoreDecimalsForDegrees = 6;
constexpr int kMoreDecimalsForSeconds = 2;  // a second is 31 m or less

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
             double angleUnit, std::vector<const Extra*> extras, SigmaColumns* sigma)
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

  void operator()(RowBlock& block) {
    const std::size_t count = block.count;
    failed_.resize(count);
    auto &first = block.result[0], &second = block.result[1], &height = block.result[2];
    Copy(block.given, inverse_ ? 1 : kRadPerDeg, given_, block.result, count);
    const auto turn = [&](auto change) { TurnUnits(block.result, count, change); };
    if (inverse_) turn([](double value, double metres) { return value * metres; });
    const PointDates dates =
        block.dates.empty() ? PointDates(date_) : PointDates(block.dates.data());
    if (sigma_)
      sigma_->Convert(block, 3 + extras_.size(), dates, failed_);
    else if (inverse_)
      chain_.ToGlobalDatedBatch(dates, first.data(), second.data(), height.data(), count, 1,
                                failed_.data());
    else
      chain_.ToLocalDatedBatch(dates, first.data(), second.data(), height.data(), count, 1,
                               failed_.data());
    if (!inverse_) turn([](double value, double metres) { return value / metres; });
    Copy(block.result, inverse_ ? kDegPerRad : 1, results_, block.result, count);
    for (std::size_t i = 0; i < count; ++i) {
      std::string& problem = block.problems[i];
      if (problem.empty() && failed_[i] != ChainStep::none) problem = FailureOf(failed_[i]);
      if (problem.empty() && inverse_ &&
          !AngleRangeProblem(second[i], AngleKind::longitude).empty())
        problem =
            fmt::format("it lies beyond the map: its longitude would be {:.0f} degrees", second[i]);
    }
    const auto latitudes = inverse_ ? first : block.given[0];
    const auto longitudes = inverse_ ? second : block.given[1];
    AddExtras(latitudes, longitudes, inverse_ ? height : block.given[2], dates, block);
    CheckArea(latitudes, longitudes, block);
    if (inverse_ && angleUnit_ != 1) {
      for (std::size_t i = 0; i < count; ++i) first[i] *= angleUnit_, second[i] *= angleUnit_;
    }
  }

  // About the points of all blocks.
  std::string Warning() const {
    if (outside_ == 0) return {};
    return fmt::format("{} point{} outside the area that the system is made for, the first at {}",
                       outside_, outside_ > 1 ? "s lie" : " lies", firstOutside_);
  }

 private:
  using Column = std::vector<double>;

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
                 PointDates dates, RowBlock& block) {
    if (extras_.empty()) return;
    for (std::size_t i = 0; i < block.count; ++i) {
      PointFactorsInGrid factors;
      const bool found = grid_.Factors(latitudes[i], longitudes[i], heights[i], dates[i], factors);
      for (std::size_t k = 0; k < extras_.size(); ++k)
        block.result[3 + k][i] = found ? extras_[k]->value(factors) : std::nan("");
    }
  }

  void CheckArea(const Column& latitudes, const Column& longitudes, const RowBlock& block) {
    if (!area_) return;
    for (std::size_t i = 0; i < block.count; ++i) {
      const double latitude = geographic_.northSign * latitudes[i];
      const double longitude = geographic_.eastSign * longitudes[i];
      if (!block.problems[i].empty() || area_->Contains(latitude, longitude)) continue;
      if (outside_++ == 0) firstOutside_ = fmt::format("{:.4f} {:.4f}", latitude, longitude);
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
  SigmaColumns* sigma_;  // null where no uncertainties are asked for
  SystemGrid grid_;
  std::vector<ChainStep> failed_;
  long long outside_ = 0;
  std::string firstOutside_;
};

std::vector<ResultColumn> ResultsOf(const ConvertOptions& options, const GridUnits& units) {
  const int metres = options.decimals, degrees = metres + kMoreDecimalsForDegrees;
  if (!options.inverse)
    return {{"n", metres, units.plane.Sign()},
            {"e", metres, units.plane.Sign()},
            {"h_local", metres, units.height.Sign()}};
  std::vector<ResultColumn> columns = {
      {"lat", degrees, "deg"}, {"lon", degrees, "deg"}, {"h_global", metres}};
  if (options.points.angles == "gon") {
    columns[0] = {"lat_gon", degrees, "gon"};
    columns[1] = {"lon_gon", degrees, "gon"};
  } else if (options.points.angles == "dms") {
    columns[0] = {"lat", metres + kMoreDecimalsForSeconds, "", AngleKind::latitude};
    columns[1] = {"lon", metres + kMoreDecimalsForSeconds, "", AngleKind::longitude};
  }
  return columns;
}

// What the file says, or what its parameters say.
std::string CrsOfGrid(const CoordinateSystem& system) {
  return system.GridCrs().empty() ? GridWkt(system) : system.GridCrs();
}

void RefuseForShapes(const ConvertOptions& options) {
  const auto refuse = [](bool given, const char* option) {
    if (given)
      throw UserError(
          fmt::format("{}: belongs to points; lines and polygons are converted "
                      "vertex by vertex and keep their columns",
                      option));
  };
  refuse(!options.points.columns.empty(), "--columns");
  refuse(!options.points.results.empty(), "--results");
  refuse(!options.with.empty(), "--with");
  refuse(options.sigma.Asked(), "--sigma");
}

// Layers whose geometry is converted, vertex by vertex.
int ConvertShapes(const ConvertOptions& options, const CoordinateSystem& system,
                  const GridUnits& units) {
  RefuseForShapes(options);
  const SystemConversion conversion(system, units, options.inverse,
                                    DateOf(options.epoch, system, options.system));
  CatchInterrupts();
  Progress progress("features");
  const std::string grid = CrsOfGrid(system), &positions = system.GeographicCrs();
  LayerJob job;
  job.input = options.points.input;
  job.output = options.points.output;
  job.layer = options.points.layer;
  job.given = {!options.inverse, options.inverse ? system.GridCrs() : positions, true, units.plane};
  job.ignoreCrs = options.points.ignoreCrs;
  job.crs = options.inverse ? positions : grid;
  job.unit = units.plane;
  job.geographic = options.inverse;
  job.height = options.points.fixedHeight.value_or(0);
  job.densify = options.densify;
  job.distance = options.inverse ? DistanceInPlane(units.plane.metres) : DistanceOnSphere();
  job.convert = [&conversion, height = job.height](VertexColumns& v) {
    conversion.ConvertVertices(v, height);
  };
  job.tell = [&](const std::string& text) { progress.Print("geomath: " + text); };
  job.progress = [&](long long features) { progress.Update(features, -1); };
  job.interrupted = [] { return Interrupted(); };
  const LayerResult result = ConvertLayers(job);
  if (result.failures == 0) return kExitDone;
  job.tell(fmt::format("{} of {} features could not be converted; they have no geometry",
                       result.failures, result.features));
  return kExitSomeFailed;
}

int Convert(ConvertOptions options) {
  RefuseReadingTwice({options.system, options.input.front()});
  const auto system = ReadSystemFile(options.system);
  const GridUnits units = options.unit.empty() ? system->Units() : ParseGridUnits(options.unit);
  const bool gon = options.points.InGon(), isFile = options.input.size() == 1;
  if (isFile) {
    options.points.input = options.input.front();
    if (options.points.output.empty()) throw UserError("name the output with --output FILE");
    if (gon && options.inverse && !IsCsvName(options.points.output))
      throw UserError("--angles gon: only CSV holds gons; other formats hold degrees");
  }
  if (isFile && !IsCsvName(options.points.input) &&
      HasShapes(options.points.input, options.points.layer)) {
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
  Conversion conversion(*system, units, DateOf(options.epoch, *system, options.system),
                        options.inverse, gon ? kGonPerDegree : 1, std::move(extras),
                        sigma ? &*sigma : nullptr);
  job.work = std::ref(conversion);
  job.warning = [&conversion] { return conversion.Warning(); };
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
  arguments
      .add_option("--system", options->system,
                  "JSON file that describes the coordinate system; - for standard input")
      ->required();
  arguments
      .add_option(
          "INPUT", options->input,
          "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input. Or layers "
          "of lines and polygons. Or a "
          "position: LAT LON [HEIGHT], with --inverse N E [HEIGHT]")
      ->required()
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
