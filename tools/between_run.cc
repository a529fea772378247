#include "tools/between_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "files/conversion/conversion.h"
#include "files/conversion/layer_conversion.h"
#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "tools/exit_status.h"
#include "tools/layer_run.h"
#include "tools/position.h"
#include "tools/result_columns.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

CoordinateKind KindOf(const ConversionEnd& end) {
  if (end.Kind() == EndKind::geographic) return CoordinateKind::geographic;
  return end.Kind() == EndKind::projected ? CoordinateKind::grid : CoordinateKind::geocentric;
}

std::vector<ResultColumn> ColumnsOf(const ConversionEnd& end, const std::string& angles,
                                    int decimals) {
  const std::string plane = end.Units().plane.Sign(), height = end.Units().height.Sign();
  switch (end.Kind()) {
    case EndKind::geographic: {
      std::vector<ResultColumn> columns = PositionColumns(angles, decimals);
      columns.push_back({"h", decimals, height});
      return columns;
    }
    case EndKind::projected:
      return {{"n", decimals, plane}, {"e", decimals, plane}, {"h", decimals, height}};
    case EndKind::geocentric:
      break;
  }
  return {{"x", decimals}, {"y", decimals}, {"z", decimals}};
}

// Counted of points: which operation each took, by its number, and behind them those that lie outside.
std::size_t OutsideNumber(const Conversion& conversion) { return conversion.Operations().size(); }

void Count(const Conversion& conversion, const ConversionOutcome& outcome, RowTally& tally) {
  if (!outcome) return;
  tally.Count(outcome.operation);
  if (outcome.outside) tally.Count(OutsideNumber(conversion));
}

std::vector<std::string> SummaryOf(const Conversion& conversion, const RowTally& tally) {
  const std::vector<std::string>& operations = conversion.Operations();
  std::vector<std::string> lines;
  for (std::size_t i = 0; operations.size() > 1 && i < operations.size(); ++i)
    if (tally[i] > 0)
      lines.push_back(
          fmt::format("{} point{} by {}", tally[i], tally[i] > 1 ? "s" : "", operations[i]));
  return lines;
}

std::vector<std::string> WarningsOf(const Conversion& conversion, const RowTally& tally) {
  const long long outside = tally[OutsideNumber(conversion)];
  if (outside == 0) return {};
  return {fmt::format("{} point{} outside the area of every operation", outside,
                      outside > 1 ? "s lie" : " lies")};
}

// Between files, in degrees, and the conversion, in radians.
class Between {
 public:
  Between(const Conversion& conversion, double angleUnit, double date)
      : conversion_(conversion), angleUnit_(angleUnit), date_(date) {}

  // NaN in the first two for what fails.
  std::vector<ConversionOutcome> Convert(double* a, double* b, double* c, std::size_t count,
                                         PointDates dates) const {
    const auto scale = [&](double factor) {
      for (double* column : {a, b})
        for (std::size_t i = 0; i < count; ++i) column[i] *= factor;
    };
    std::vector<ConversionOutcome> outcomes(count);
    if (IsGeographic(conversion_.Source())) scale(kRadPerDeg);
    conversion_.ToTarget(a, b, c, count, outcomes.data(), dates);
    if (IsGeographic(conversion_.Target())) scale(kDegPerRad * angleUnit_);
    return outcomes;
  }

  void Convert(VertexColumns& v, RowTally& tally) const {
    for (const ConversionOutcome& outcome :
         Convert(v.y.data(), v.x.data(), v.z.data(), v.Count(), PointDates(date_)))
      Count(conversion_, outcome, tally);
  }

  // A height that is not given stays so.
  void operator()(RowBlock& block) const {
    const std::size_t count = block.count;
    for (std::size_t axis = 0; axis < 3; ++axis)
      std::copy_n(block.given[axis].begin(), count, block.result[axis].begin());
    std::vector<double>& heights = block.result[2];
    for (std::size_t i = 0; i < count; ++i)
      if (std::isnan(heights[i])) heights[i] = 0;
    const std::vector<ConversionOutcome> outcomes =
        Convert(block.result[0].data(), block.result[1].data(), heights.data(), count,
                block.dates.empty() ? PointDates(date_) : PointDates(block.dates.data()));
    for (std::size_t i = 0; i < count; ++i) {
      if (std::isnan(block.given[2][i])) heights[i] = block.given[2][i];
      if (!block.problems[i].empty()) continue;
      Count(conversion_, outcomes[i], block.tally);
      if (!outcomes[i])
        block.problems[i] =
            fmt::format("{} cannot convert this point", ChainStepName(outcomes[i].failed));
    }
  }

 private:
  static bool IsGeographic(const ConversionEnd& end) { return end.Kind() == EndKind::geographic; }

  const Conversion& conversion_;
  double angleUnit_;  // of the results, in a degree
  double date_;       // of points without one of their own
};

// The date of points without one of their own.
double DateOf(const EpochOption& option, const Conversion& conversion) {
  if (option.epoch.empty() && option.column.empty() && conversion.NeedsDates())
    throw UserError(
        "a frame moves between the two systems, and needs the date of the points: give --epoch "
        "2026.9 or --epoch 2026-11-23, or --epoch-column NAME");
  return GivenDate(option.epoch).value_or(kNoDate);
}

void Tell(const std::string& text) { std::fprintf(stderr, "geomath: %s\n", text.c_str()); }

void TellOf(const Conversion& conversion) {
  Tell(fmt::format("from {} to {}", conversion.Source().Title(), conversion.Target().Title()));
  const std::vector<std::string>& operations = conversion.Operations();
  if (operations.size() == 1)
    Tell(operations.front());
  else
    Tell(fmt::format("each point by the best of {} operations", operations.size()));
  for (const std::string& note : conversion.Notes()) Tell(note);
}

int RunShapes(const BetweenOptions& options, const Conversion& conversion) {
  RefuseForShapes(options.points);
  const ConversionEnd &source = conversion.Source(), &target = conversion.Target();
  for (const ConversionEnd* end : {&source, &target})
    if (end->Kind() == EndKind::geocentric)
      throw UserError(end->Title() + ": lines and polygons have no geocentric coordinates");
  if (!options.epoch.column.empty()) throw UserError("--epoch-column: belongs to points");
  const Between between(conversion, 1, DateOf(options.epoch, conversion));
  RowTally tally;
  const bool fromDegrees = source.Kind() == EndKind::geographic;
  LayerJob job = LayerJobOf(options.points);
  job.given = {fromDegrees, source.Crs(), true, source.Units().plane};
  job.crs = target.Crs();
  job.unit = target.Units().plane;
  job.geographic = target.Kind() == EndKind::geographic;
  job.densify = options.densify;
  job.distance = fromDegrees ? DistanceOnSphere() : DistanceInPlane(source.Units().plane.metres);
  job.convert = [&](VertexColumns& v) { between.Convert(v, tally); };
  const int status = RunLayers(std::move(job));
  for (const std::string& line : SummaryOf(conversion, tally)) Tell(line);
  for (const std::string& line : WarningsOf(conversion, tally)) Tell("warning: " + line);
  return status;
}

// The geometry of rows: the results where the format and they are fit for it.
bool PlacedByResult(const BetweenOptions& options, const Conversion& conversion) {
  const std::string& output = options.points.output;
  const ConversionEnd &source = conversion.Source(), &target = conversion.Target();
  if (output.empty() || IsCsvName(output)) return true;
  if (target.Kind() == EndKind::geocentric)
    throw UserError(output + ": geocentric coordinates are no points of a layer; write CSV");
  if (!IsGeoJsonName(output) || target.Kind() == EndKind::geographic) return true;
  if (source.Kind() == EndKind::geographic) return false;
  throw UserError(output +
                  ": GeoJSON has latitudes and longitudes, not grid coordinates; a GeoPackage "
                  "(.gpkg) has them");
}

// What becomes of the rows; `between` outlives the job.
RowJob RowJobOf(const BetweenOptions& options, const Conversion& conversion,
                const Between& between) {
  const ConversionEnd &source = conversion.Source(), &target = conversion.Target();
  RowJob job;
  job.failure = "not converted";
  job.failures = "could not be converted";
  job.given = KindOf(source);
  job.made = KindOf(target);
  job.heightOptional = conversion.KeepsHeights();
  job.results = ColumnsOf(target, options.points.angles, options.decimals);
  job.placedByResult = PlacedByResult(options, conversion);
  const ConversionEnd& place = job.placedByResult ? target : source;
  job.givenCrs = source.Crs();
  job.placeCrs = place.Crs();
  job.unit = source.Units().plane;
  job.placeUnit = place.Units().plane;
  job.files = conversion.Files();
  job.dates = options.epoch.column;
  job.work = std::cref(between);
  job.summary = [&conversion](const RowTally& tally) { return SummaryOf(conversion, tally); };
  job.warnings = [&conversion](const RowTally& tally) { return WarningsOf(conversion, tally); };
  return job;
}

ConversionWish WishOf(const BetweenOptions& options) {
  ConversionWish wish;
  if (!options.operation.operation.empty())
    wish.operation = CodeOf("--operation", options.operation.operation);
  wish.near = NearOf(options.operation.near);
  wish.grids = options.operation.grids;
  if (options.points.output != "-") wish.beside = options.points.output;
  wish.one = options.one;
  return wish;
}

// "input" is the system of the layer.
std::string SourceOf(const BetweenOptions& options) {
  if (options.from != "input") return options.from;
  if (options.input.size() != 1 || IsCsvName(options.input.front()))
    throw UserError("--from input: only layers say which system they are in");
  return LayerCrsText(options.input.front(), options.points.layer);
}

// Layers or points of a file.
int RunFile(const BetweenOptions& options, const Conversion& conversion) {
  const PointOptions& points = options.points;
  if (!IsCsvName(points.input) && GoesByLayers(points.input, points.layer, points.output)) {
    std::vector<std::string> inputs = conversion.Files();
    inputs.push_back(points.input);
    RefuseOverwriting(inputs, {points.output});
    TellOf(conversion);
    return RunShapes(options, conversion);
  }
  const bool toGon = points.InGon() && conversion.Target().Kind() == EndKind::geographic;
  if (toGon && !IsCsvName(points.output))
    throw UserError("--angles gon: only CSV holds gons; other formats hold degrees");
  if (options.densify > 0)
    throw UserError("--densify: belongs to lines and polygons; the input has points");
  const Between between(conversion, toGon ? kGonPerDegree : 1, DateOf(options.epoch, conversion));
  const RowJob job = RowJobOf(options, conversion, between);
  TellOf(conversion);
  return RunRows(points, job);
}

int RunTyped(const BetweenOptions& options, const Conversion& conversion) {
  if (options.densify > 0) throw UserError("--densify: belongs to lines and polygons");
  const bool toGon = options.points.InGon() && conversion.Target().Kind() == EndKind::geographic;
  const Between between(conversion, toGon ? kGonPerDegree : 1, DateOf(options.epoch, conversion));
  const RowJob job = RowJobOf(options, conversion, between);
  TellOf(conversion);
  return RunPosition(options.input, options.points, job);
}

}  // namespace

int RunBetween(BetweenOptions options) {
  const ConversionWish wish = WishOf(options);
  options.from = SourceOf(options);
  if (options.operation.list) {
    std::fputs(ListConversionOperations(options.from, options.to, wish).c_str(), stdout);
    return kExitDone;
  }
  const bool isFile = options.input.size() == 1;
  if (options.input.empty()) throw UserError("name the points, or type a position");
  if (isFile) options.points.input = options.input.front();
  if (isFile && options.points.output.empty())
    throw UserError("name the output with --output FILE");
  Conversion conversion(options.from, options.to, wish);
  if (!options.unit.empty()) conversion.SetUnits(ParseGridUnits(options.unit));
  return isFile ? RunFile(options, conversion) : RunTyped(options, conversion);
}

}  // namespace geomath_files::program
