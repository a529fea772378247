#include "tools/declination_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/models/magnetic_file.h"
#include "files/models/raster_grid.h"
#include "files/words/name_match.h"
#include "files/words/output_file.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "geomath/magnetic/magnetic_field.h"
#include "geomath/platform/read_number.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/position.h"
#include "tools/progress.h"
#include "tools/row_loop.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct DeclinationOptions {
  std::string model, date, years;
  std::vector<std::string> point;  // latitude, longitude, height as typed
  PointOptions points;
  std::vector<double> grid;  // south, west, north, east, step
};

constexpr double kKilometre = 1e-3;  // of a metre

void Warn(const std::string& text) { std::fprintf(stderr, "geomath: warning: %s\n", text.c_str()); }

void WarnOfYears(const DeclinationOptions& options, const MagneticModelSeries& models,
                 double decimalYear, const std::string& date) {
  const std::string warning = YearsWarning(models, decimalYear, date);
  if (!warning.empty()) Warn(warning + (options.model.empty() ? "; --model takes another" : ""));
}

MagneticField FieldOf(const DeclinationOptions& options) {
  const auto models = OpenMagneticModels(options.model);
  const double year = YearOfDate(options.date, "--date");
  WarnOfYears(options, models, year, options.date);
  return MagneticField(ModelOfYear(models, year), year);
}

std::string NameOf(CompassZone zone) {
  if (zone == CompassZone::blackout)
    return fmt::format("the blackout zone (below {} nT), where a compass is of no use",
                       kBlackoutZone);
  return fmt::format("the caution zone (below {} nT), where a compass is not to be relied upon",
                     kCautionZone);
}

// Counts in which zone a compass is, by the number of the zone.
void CountZone(double h, RowTally& zones) {
  zones.Count(static_cast<std::size_t>(CompassZoneOf(h)));
}

// How many points lie where a compass is of little use.
std::vector<std::string> ZoneWarnings(const RowTally& zones, const char* points) {
  std::vector<std::string> warnings;
  for (const CompassZone zone : {CompassZone::caution, CompassZone::blackout})
    if (const long long count = zones[static_cast<std::size_t>(zone)])
      warnings.push_back(fmt::format("{} of the {} lie in {}", count, points, NameOf(zone)));
  return warnings;
}

// One line of the report: value, yearly change and, where the publisher states one, uncertainty.
void PrintElement(const char* name, double value, double change, const char* unit,
                  const std::optional<double>& uncertainty) {
  const int decimals = std::string_view(unit) == "nT" ? 1 : 4;
  fmt::print("{:<15}{:>11.{}f} {:<4}{:>+10.{}f} {}/year", name, value, decimals, unit, change,
             decimals, unit);
  if (uncertainty) fmt::print("   +-{:.{}f} {}", *uncertainty, decimals == 1 ? 0 : 2, unit);
  fmt::print("\n");
}

int RunPoint(const DeclinationOptions& options) {
  const auto [latitude, longitude, metres] =
      ReadPosition(options.point, CoordinateKind::geographic, options.points.InGon());
  const double height = metres * kKilometre;
  const MagneticField field = FieldOf(options);
  const auto [at, change] = field.At(latitude, longitude, height);
  if (const CompassZone zone = CompassZoneOf(at.h); zone != CompassZone::sound)
    Warn(fmt::format("the horizontal field is {:.0f} nT here: {}", at.h, NameOf(zone)));

  const auto stated = field.Uncertainty(at.h);
  struct Row {
    const char* name;
    double MagneticElements::*element;
    const char* unit;
    double MagneticUncertainty::*uncertainty;
  };
  constexpr Row rows[] = {
      {"declination", &MagneticElements::declination, "deg", &MagneticUncertainty::declination},
      {"inclination", &MagneticElements::inclination, "deg", &MagneticUncertainty::inclination},
      {"grid variation", &MagneticElements::gridVariation, "deg",
       &MagneticUncertainty::declination},
      {"total", &MagneticElements::f, "nT", &MagneticUncertainty::f},
      {"horizontal", &MagneticElements::h, "nT", &MagneticUncertainty::h},
      {"north", &MagneticElements::x, "nT", &MagneticUncertainty::x},
      {"east", &MagneticElements::y, "nT", &MagneticUncertainty::y},
      {"down", &MagneticElements::z, "nT", &MagneticUncertainty::z},
  };
  for (const Row& row : rows)
    PrintElement(row.name, at.*row.element, change.*row.element, row.unit,
                 stated ? std::optional((*stated).*row.uncertainty) : std::nullopt);
  return kExitDone;
}

// First, last and step of "1900:2026" or "1900:2026:5".
std::array<int, 3> YearsOf(const std::string& text) {
  constexpr int kMostYears = 10000;
  std::array<int, 3> years = {0, 0, 1};
  std::string_view rest = text;
  bool whole = true;
  for (std::size_t i = 0; i < years.size() && (i < 2 || !rest.empty()); ++i) {
    const std::size_t length = std::min(rest.find(':'), rest.size());
    const auto year = ReadInteger(rest.substr(0, length));
    whole = whole && year;
    years[i] = year.value_or(0);
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  const auto [first, last, step] = years;
  if (!whole || !rest.empty() || first < 1 || last < first || last > kMostYears || step < 1)
    throw UserError(
        fmt::format("--years: \"{}\" must be FIRST:LAST or FIRST:LAST:STEP, such as 1900:2026",
                    Printable(text)));
  return years;
}

// The field at one place at the beginning of each year.
int RunYears(const DeclinationOptions& options) {
  const auto [latitude, longitude, metres] =
      ReadPosition(options.point, CoordinateKind::geographic, options.points.InGon());
  const double height = metres * kKilometre;
  const auto [first, last, step] = YearsOf(options.years);
  const auto models = OpenMagneticModels(options.model);
  WarnOfYears(options, models, first, std::to_string(first));
  if (last != first) WarnOfYears(options, models, last, std::to_string(last));
  std::string table = "year,declination,inclination,grid_variation,total_nt,model\n";
  RowTally zones;
  for (int year = first; year <= last; year += step) {
    const WMMtype_MagneticModel& model = ModelOfYear(models, year);
    const MagneticElements at = MagneticField(model, year).At(latitude, longitude, height).field;
    table += fmt::format("{},{:.4f},{:.4f},{:.4f},{:.1f},{}\n", year, at.declination,
                         at.inclination, at.gridVariation, at.f, model.modelName);
    CountZone(at.h, zones);
  }
  for (const std::string& warning : ZoneWarnings(zones, "years")) Warn(warning);
  const std::string& output = options.points.output;
  WriteTextFiles({{output.empty() ? "-" : output, table}});
  return kExitDone;
}

int RunFile(const DeclinationOptions& options) {
  const MagneticField field = FieldOf(options);
  RowJob job;
  job.givenCrs = job.placeCrs = "EPSG:4326";
  job.results = {{"declination", 6, "deg"}, {"inclination", 6, "deg"}, {"total_nt", 2, "nT"}};
  job.failure = "no field";
  job.failures = "have no field";
  job.work = [&field](RowBlock& rows) {
    std::vector<MagneticPoint> points(rows.count);
    auto &declination = rows.result[0], &inclination = rows.result[1], &total = rows.result[2];
    std::transform(rows.given[2].begin(), rows.given[2].end(), total.begin(),
                   [](double metres) { return metres * kKilometre; });
    field.AtBatch(rows.given[0].data(), rows.given[1].data(), total.data(), rows.count,
                  points.data());
    for (std::size_t i = 0; i < rows.count; ++i) {
      const MagneticElements& at = points[i].field;
      declination[i] = at.declination;
      inclination[i] = at.inclination;
      total[i] = at.f;
      if (rows.problems[i].empty() && !std::isfinite(at.f))
        rows.problems[i] = "the model has no number at this point";
      if (rows.problems[i].empty()) CountZone(at.h, rows.tally);
    }
  };
  job.warnings = [](const RowTally& zones) { return ZoneWarnings(zones, "points"); };
  return RunRows(options.points, job);
}

NodeGrid GridOf(const std::vector<double>& g) {
  constexpr int kMostNodes = 20000;  // on a side
  const auto grid = NodesOf(g[0], g[1], g[2], g[3], g[4], kMostNodes);
  if (!grid)
    throw UserError(fmt::format(
        "--grid: must be SOUTH,WEST,NORTH,EAST,STEP in degrees, from south to north and west to "
        "east, with at most {} nodes on a side",
        kMostNodes));
  return *grid;
}

struct Band {
  const char* description;
  MagneticElements MagneticPoint::*part;
  double MagneticElements::*element;
};
constexpr Band kBands[] = {
    {"declination, degrees", &MagneticPoint::field, &MagneticElements::declination},
    {"inclination, degrees", &MagneticPoint::field, &MagneticElements::inclination},
    {"total intensity, nT", &MagneticPoint::field, &MagneticElements::f},
    {"yearly change of the declination, degrees", &MagneticPoint::yearlyChange,
     &MagneticElements::declination},
};

int RunGrid(const DeclinationOptions& options) {
  const NodeGrid grid = GridOf(options.grid);
  if (options.points.output.empty() || options.points.output == "-")
    throw UserError("--grid: name the GeoTIFF to write with --output FILE.tif");
  const double height = options.points.fixedHeight.value_or(0) * kKilometre;
  const MagneticField field = FieldOf(options);
  std::vector<const char*> descriptions;
  for (const Band& band : kBands) descriptions.push_back(band.description);
  RasterGrid raster(options.points.output, grid, descriptions);

  const auto width = static_cast<std::size_t>(grid.columns);
  std::vector<double> longitudes(width), line(width);
  std::vector<MagneticPoint> results(width);
  for (int c = 0; c < grid.columns; ++c)
    longitudes[static_cast<std::size_t>(c)] = grid.Longitude(c);
  CatchInterrupts();
  Progress progress("rows");
  RowTally zones;
  for (int row = grid.rows - 1, done = 1; row >= 0; --row, ++done) {
    field.AtRow(grid.Latitude(row), height, longitudes.data(), width, results.data());
    for (const MagneticPoint& node : results) CountZone(node.field.h, zones);
    int index = 0;
    for (const Band& band : kBands) {
      std::transform(results.begin(), results.end(), line.begin(),
                     [&](const MagneticPoint& p) { return p.*band.part.*band.element; });
      raster.Write(index++, row, line);
    }
    progress.Update(done, 1.0 * done / grid.rows);
    StopIfInterrupted(options.points.output);
  }
  raster.Close();
  for (const std::string& warning : ZoneWarnings(zones, "nodes")) Warn(warning);
  return kExitDone;
}

int RunDeclination(const DeclinationOptions& options) {
  const int tasks = !options.point.empty() + !options.points.input.empty() + !options.grid.empty();
  if (tasks != 1 || options.point.size() == 1)
    throw UserError("give a point as LAT LON [HEIGHT], or --points FILE, or --grid: one of them");
  if (options.date.empty() == options.years.empty())
    throw UserError("give --date YYYY-MM-DD, or for a point --years FIRST:LAST: one of them");
  if (!options.years.empty() && options.point.empty())
    throw UserError("--years: give the point as LAT LON [HEIGHT]");
  if (!options.point.empty() && options.years.empty() && !options.points.output.empty())
    throw UserError("--output: goes with --points, --grid or --years");
  RefuseOverwriting({options.model}, {options.points.output});
  if (!options.years.empty()) return RunYears(options);
  if (!options.grid.empty()) return RunGrid(options);
  if (options.points.input.empty()) return RunPoint(options);
  if (options.points.output.empty())
    throw UserError("--points: name the output with --output FILE");
  return RunFile(options);
}

constexpr const char* kFooter =
    "Declinations are positive east of north, in degrees; heights are metres above the WGS84\n"
    "ellipsoid. Without --model the built-in World Magnetic Model of the date is used: "
    "WMM-2010,\n"
    "WMM-2015v2, WMM-2020 or WMM-2025, for 2010 to 2030. A date outside the years of the model\n"
    "gives a warning. With --years a table is written: the field at the point on the first of\n"
    "January of each year; IGRF14.shc has those from 1900 on. With --points all columns of the\n"
    "input travel through and declination, inclination and total_nt (degrees, nT) follow. With\n"
    "--grid a GeoTIFF is written whose bands are declination, inclination, total intensity and\n"
    "the yearly change of the declination.\n"
    "Exit status: 0 all done, 1 some rows not, 2 stopped.";

}  // namespace

std::function<int()> PrepareDeclination(CLI::App& arguments) {
  const auto options = std::make_shared<DeclinationOptions>();
  arguments.footer(kFooter);
  arguments.add_option("--model", options->model,
                       "coefficient file of a magnetic model (.COF, .shc), or the name of a "
                       "built-in one");
  arguments.add_option("--date", options->date, "YYYY-MM-DD, or a decimal year");
  arguments.add_option("--years", options->years,
                       "FIRST:LAST or FIRST:LAST:STEP: a table of the years at a point, as CSV");
  CLI::Option* point =
      arguments
          .add_option("POINT", options->point,
                      "LAT LON [HEIGHT]: decimal degrees or degrees minutes seconds (in quotes), "
                      "metres")
          ->expected(0, 3);
  arguments.add_option(
      "--points", options->points.input,
      "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input");
  arguments.add_option("-o,--output", options->points.output,
                       "output for --points (.csv, .geojson, .gpkg, .shp, - for CSV on standard "
                       "output), --grid (.tif) or --years (.csv), replaced if it exists");
  AddPointOptions(arguments, options->points, "lat,lon,h");
  CLI::Option* grid = arguments
                          .add_option("--grid", options->grid,
                                      "SOUTH,WEST,NORTH,EAST,STEP in degrees, nodes included")
                          ->delimiter(',')
                          ->expected(5);
  for (const char* ofFiles :
       {"--columns", "--results", "--fixed-height", "--ignore-crs", "--layer"})
    point->excludes(ofFiles);
  for (const char* ofPoints : {"--columns", "--results", "--angles", "--ignore-crs", "--layer"})
    grid->excludes(ofPoints);
  return [options] { return RunDeclination(*options); };
}

}  // namespace geomath_files::program
