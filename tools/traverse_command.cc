#include "tools/traverse_command.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/system/system_file.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/geodesic/traverse.h"
#include "tools/epoch_option.h"
#include "tools/exit_status.h"
#include "tools/given_system.h"
#include "tools/position.h"
#include "tools/system_grid.h"
#include "tools/traverse_file.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

using Texts = std::vector<std::string>;

// A direction at a station: a mark, or an angle from grid or from true north.
struct DirectionOptions {
  Texts mark;
  std::string bearing, azimuth;
  const char* names[3];
};

struct TraverseOptions {
  EpochOption epoch;
  std::string system, input, output, distances = "ground", adjust = "none", angles = "degrees";
  bool deflections = false;
  Texts start, end;
  DirectionOptions from{{}, "", "", {"--backsight", "--bearing", "--azimuth"}};
  DirectionOptions to{{}, "", "", {"--foresight", "--end-bearing", "--end-azimuth"}};
  double sigmaAngle = 5, sigmaDistance = 0.002, sigmaPpm = 2;  // seconds, metres
};

GridPoint StationOf(const char* option, const Texts& texts, const SystemGrid& grid) {
  if (texts.size() != 2 && texts.size() != 3)
    throw UserError(fmt::format("{}: must be N,E or N,E,HEIGHT", option));
  const std::array<double, 3> at = ReadPosition(texts, CoordinateKind::grid);
  return grid.Counted(at[0], at[1], at[2]);
}

double AngleOf(const char* option, const std::string& text, bool gon) {
  constexpr double kDegreesPerGon = 0.9;
  const ParsedNumber number = gon ? ParseNumber(text) : ParseAngle(text, AngleKind::turn);
  if (!number) throw UserError(fmt::format("{}: {}", option, number.problem));
  return number.value * (gon ? kDegreesPerGon : 1) * kRadPerDeg;
}

// The azimuth of the direction; nothing where none is given.
std::optional<double> AzimuthOf(const DirectionOptions& direction, const GridPoint& station,
                                const SystemGrid& grid, bool gon) {
  const auto& [mark, bearing, azimuth, names] = direction;
  if (!mark.empty() + !bearing.empty() + !azimuth.empty() > 1)
    throw UserError(fmt::format("{}, {} and {} exclude each other", names[0], names[1], names[2]));
  if (!azimuth.empty()) return AngleOf(names[2], azimuth, gon);
  double found;
  if (!mark.empty())
    found = grid.Lines().AzimuthTo(station, StationOf(names[0], mark, grid));
  else if (!bearing.empty())
    found = grid.Lines().AzimuthOfBearing(station, AngleOf(names[1], bearing, gon));
  else
    return std::nullopt;
  if (std::isnan(found))
    throw UserError(fmt::format("{}: the system has no grid there", names[mark.empty() ? 1 : 0]));
  return found;
}

template <class Value>
struct Choice {
  const char* name;
  Value value;
};
constexpr Choice<TraverseDistance> kDistances[] = {{"slope", TraverseDistance::slope},
                                                   {"ground", TraverseDistance::ground},
                                                   {"geodesic", TraverseDistance::geodesic},
                                                   {"grid", TraverseDistance::grid}};
constexpr Choice<TraverseAdjustment> kAdjustments[] = {
    {"none", TraverseAdjustment::none},
    {"bowditch", TraverseAdjustment::bowditch},
    {"least-squares", TraverseAdjustment::leastSquares}};

template <class Value, std::size_t N>
Value Chosen(const Choice<Value> (&choices)[N], const std::string& name) {
  for (const auto& [each, value] : choices)
    if (name == each) return value;
  return choices[0].value;  // the parser knows the names
}

template <class Value, std::size_t N>
CLI::IsMember Names(const Choice<Value> (&choices)[N]) {
  Texts names;
  for (const auto& choice : choices) names.push_back(choice.name);
  return CLI::IsMember(names);
}

TraverseField FieldOf(const TraverseOptions& options, const SystemGrid& grid,
                      const FieldBook& book) {
  const bool gon = options.angles == "gon";
  TraverseField field;
  field.start = StationOf("--start", options.start, grid);
  const auto azimuth = AzimuthOf(options.from, field.start, grid, gon);
  if (!azimuth)
    throw UserError("say where the first angle counts from: --backsight, --bearing or --azimuth");
  field.startAzimuth = *azimuth;
  field.legs = book.legs;
  if (!options.end.empty()) field.end = StationOf("--end", options.end, grid);
  if (!field.end && !(options.to.mark.empty() && options.to.bearing.empty()))
    throw UserError("--foresight and --end-bearing are seen from --end, which is not given");
  field.endAzimuth = AzimuthOf(options.to, field.end.value_or(field.start), grid, gon);
  field.endAngle = book.endAngle;
  if (field.endAzimuth && !field.endAngle)
    throw UserError(options.input + ": the last row must have the closing angle and no distance");
  if (options.adjust != "none" && !field.end)
    throw UserError("--adjust: needs the known --end of the traverse");
  field.deflections = options.deflections;
  if (options.deflections && !grid.HasGeoid())
    throw UserError("--deflections: the system has no geoid whose slopes they are");
  field.kind = Chosen(kDistances, options.distances);
  field.sigmaAngle = options.sigmaAngle * kRadPerArcSecond;
  field.sigmaDistance = options.sigmaDistance;
  field.sigmaPerMetre = options.sigmaPpm * 1e-6;
  return field;
}

std::string Report(const TraverseResult& result) {
  std::string text = fmt::format("length in the grid  {:16.4f} m\n", result.length);
  if (!std::isnan(result.misclosureN))
    text += fmt::format(
        "misclosure, north   {:16.4f} m\nmisclosure, east    {:16.4f} m\n"
        "relative misclosure             1 : {:.0f}\n",
        result.misclosureN, result.misclosureE, 1 / result.relativeMisclosure);
  if (!std::isnan(result.misclosureAngle))
    text += fmt::format("misclosure, angle   {:16.2f} sec\n",
                        result.misclosureAngle / kRadPerArcSecond);
  if (!std::isnan(result.sigma0))
    text += fmt::format("sigma 0             {:16.3f}\n", result.sigma0);
  return text;
}

std::vector<ResultColumn> Columns(const PointSource& source) {
  std::vector<ResultColumn> columns = {{"n", 4},
                                       {"e", 4},
                                       {"h_local", 4},
                                       {"angle_correction", 2, "sec"},
                                       {"distance_correction", 4}};
  for (const ResultColumn& column : columns)
    for (const std::string& name : source.ColumnNames())
      if (LowerCase(name) == column.name)
        throw UserError(fmt::format("{} has a column \"{}\" already", source.Name(), name));
  return columns;
}

void Write(const TraverseOptions& options, const CoordinateSystem& system, const SystemGrid& grid,
           const PointSource& source, const FieldBook& book, const TraverseResult& result) {
  const auto sink =
      CreatePoints(options.output, source, {Columns(source), system.GridCrs(), /*inGrid=*/true});
  if (book.decimalComma) sink->UseDecimalComma();
  for (std::size_t row = 0; row < book.records.size(); ++row) {
    std::vector<double> values(5, std::nan(""));
    const bool closes = book.leg[row] < 0 && !book.records[row].IsBlank();
    const std::size_t leg = closes ? book.legs.size() : static_cast<std::size_t>(book.leg[row]);
    if (closes && leg < result.angleCorrections.size())
      values[3] = result.angleCorrections[leg] / kRadPerArcSecond;
    if (book.leg[row] >= 0) {
      const GridPoint& to = result.stations[leg + 1];
      const GridPoint shown = grid.Counted(to.n, to.e, to.h);  // the signs are their own inverse
      values = {shown.n, shown.e, shown.h, result.angleCorrections[leg] / kRadPerArcSecond,
                result.distanceCorrections[leg]};
    }
    sink->Write(book.records[row],
                {book.leg[row] >= 0 || closes, values, values[1], values[0], values[2]});
  }
  sink->Close();
}

int RunTraverse(const TraverseOptions& options) {
  if (options.output.empty()) throw UserError("name the output with --output FILE");
  if (!IsCsvName(options.output))
    throw UserError("--output: stations are written as CSV: .csv, .tsv, .txt or -");
  RefuseReadingTwice({options.system, options.input});
  const auto system = GivenSystem(options.system);
  const SystemGrid grid(*system, DateOf(options.epoch, *system, options.system));
  const GridPoint start = StationOf("--start", options.start, grid);
  const auto source = OpenPoints(options.input, "");
  std::vector<std::string> inputs = system->Files();
  inputs.insert(inputs.end(), {options.system, options.input});
  RefuseOverwriting(inputs, {options.output});
  const FieldBook book = ReadFieldBook(*source, start.h, options.angles == "gon");
  const TraverseField field = FieldOf(options, grid, book);

  TraverseResult result;
  if (!Traverse(grid.Lines()).Compute(field, Chosen(kAdjustments, options.adjust), result))
    throw UserError(
        options.input +
        ": the traverse cannot be computed: a station lies outside the grid, or a distance is not "
        "positive or shorter than the difference of its heights");
  Write(options, *system, grid, *source, book, result);
  std::fputs(Report(result).c_str(), options.output == "-" ? stderr : stdout);
  return kExitDone;
}

void AddDirection(CLI::App& arguments, DirectionOptions& direction, const std::string& what) {
  arguments.add_option(direction.names[0], direction.mark, what + ": a mark, N,E")
      ->delimiter(',')
      ->allow_extra_args(false);
  arguments.add_option(direction.names[1], direction.bearing, what + ": a bearing in the grid");
  arguments.add_option(direction.names[2], direction.azimuth, what + ": a geodetic azimuth");
}

}  // namespace

std::function<int()> PrepareTraverse(CLI::App& arguments) {
  const auto options = std::make_shared<TraverseOptions>();
  arguments.footer(
      "FIELD has a row for each leg: angle, clockwise at its first station from the station "
      "before\n"
      "(the first one from --backsight) to the next; distance; and h, the height of the station\n"
      "that the leg leads to. A last row without distance has the closing angle. Every leg is\n"
      "computed on the ellipsoid: angles and distances are given as measured. Columns n, e,\n"
      "h_local of the station that the leg leads to and the corrections follow; misclosures are\n"
      "printed. Exit status: 0 done, 2 stopped.");
  arguments.add_option("--system", options->system, kSystemHelp)->required();
  arguments.add_option("FIELD", options->input, "field book: CSV; - for standard input")
      ->required();
  arguments.add_option("-o,--output", options->output,
                       "output file, replaced if it exists: .csv; - for standard output");
  arguments.add_option("--start", options->start, "the first station: N,E[,HEIGHT]")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->required();
  AddDirection(arguments, options->from, "where the first angle counts from");
  arguments.add_option("--end", options->end, "known position of the last station: N,E[,HEIGHT]")
      ->delimiter(',')
      ->allow_extra_args(false);
  AddDirection(arguments, options->to, "where the closing angle leads to");
  arguments
      .add_option("--distances", options->distances,
                  "what they are: slope, ground (horizontal, at the mean height of the ends; "
                  "the default), geodesic or grid")
      ->check(Names(kDistances));
  arguments.add_flag("--deflections", options->deflections,
                     "angles were turned about the plumb line: reduce them by the slopes of the "
                     "system's geoid");
  arguments
      .add_option("--adjust", options->adjust, "none (the default), bowditch or least-squares")
      ->check(Names(kAdjustments));
  arguments
      .add_option("--angles", options->angles,
                  "angles of the file and of options: degrees (the default; degrees minutes "
                  "seconds are read too) or gon")
      ->check(CLI::IsMember({"degrees", "gon"}));
  arguments
      .add_option("--sigma-angle", options->sigmaAngle,
                  "standard deviation of an angle, seconds, default 5")
      ->check(CLI::PositiveNumber);
  arguments
      .add_option("--sigma-distance", options->sigmaDistance,
                  "of a distance, metres, default 0.002")
      ->check(CLI::NonNegativeNumber);
  arguments
      .add_option("--sigma-ppm", options->sigmaPpm,
                  "what that grows by with the distance, parts per million, default 2")
      ->check(CLI::NonNegativeNumber);
  AddEpoch(arguments, options->epoch);
  return [options] { return RunTraverse(*options); };
}

}  // namespace geomath_files::program
