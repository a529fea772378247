#include "tools/declination_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/models/magnetic_file.h"
#include "files/models/raster_grid.h"
#include "files/words/number_text.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/magnetic/magnetic_field.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/progress.h"
#include "tools/row_loop.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

struct DeclinationOptions {
  std::string model, date;
  std::vector<std::string> point;  // latitude, longitude, height as typed
  PointOptions points;
  std::vector<double> grid;  // south, west, north, east, step
};

constexpr double kKilometre = 1e-3;  // of a metre

// Where the horizontal field is weaker, a compass is of no use: the "blackout zone" around the
// magnetic poles (Chulliat et al. 2020, section 1.8).
constexpr double kUselessCompass = 2000;  // nT

void Warn(const std::string& text) { std::fprintf(stderr, "geomath: warning: %s\n", text.c_str()); }

MagneticField FieldOf(const DeclinationOptions& options) {
  const auto model = OpenMagneticModel(options.model);
  MagneticField field(*model, YearOfDate(options.date, "--date"));
  const std::string warning = YearsWarning(field, *model, options.date);
  if (!warning.empty())
    Warn(warning + (options.model.empty() ? "; --model FILE.COF takes a newer model" : ""));
  return field;
}

double HeightOf(const std::string& text) {
  const ParsedNumber height = ParseNumber(text);
  if (!height) throw UserError("HEIGHT: " + height.problem);
  return height.value * kKilometre;
}

double AngleOf(const char* name, const std::string& text, AngleKind kind) {
  const ParsedNumber angle = ParseAngle(text, kind);
  if (!angle) throw UserError(fmt::format("{}: {}", name, angle.problem));
  return angle.value;
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
  const double latitude = AngleOf("LAT", options.point[0], AngleKind::latitude);
  const double longitude = AngleOf("LON", options.point[1], AngleKind::longitude);
  const double height = options.point.size() > 2 ? HeightOf(options.point[2]) : 0;
  const MagneticField field = FieldOf(options);
  const auto [at, change] = field.At(latitude, longitude, height);
  if (at.h < kUselessCompass)
    Warn(fmt::format("the horizontal field of {:.0f} nT is too weak for a compass here", at.h));

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

int RunFile(const DeclinationOptions& options) {
  const MagneticField field = FieldOf(options);
  RowJob job;
  job.names = {"declination", "inclination", "total_nt"};
  job.decimals = {6, 6, 2};
  job.failure = "no field";
  job.failures = "have no field";
  job.work = [&field, points = std::vector<MagneticPoint>()](RowBlock& rows) mutable {
    points.resize(rows.count);
    auto& [declination, inclination, total] = rows.result;
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
    }
  };
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
  for (int row = grid.rows - 1, done = 1; row >= 0; --row, ++done) {
    field.AtRow(grid.Latitude(row), height, longitudes.data(), width, results.data());
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
  return kExitDone;
}

int RunDeclination(const DeclinationOptions& options) {
  const int tasks = !options.point.empty() + !options.points.input.empty() + !options.grid.empty();
  if (tasks != 1 || options.point.size() == 1)
    throw UserError("give a point as LAT LON [HEIGHT], or --points FILE, or --grid: one of them");
  RefuseOverwriting({options.model}, {options.points.output});
  if (!options.grid.empty()) return RunGrid(options);
  if (options.points.input.empty()) return RunPoint(options);
  if (options.points.output.empty())
    throw UserError("--points: name the output with --output FILE");
  return RunFile(options);
}

}  // namespace

std::function<int()> PrepareDeclination(CLI::App& arguments) {
  const auto options = std::make_shared<DeclinationOptions>();
  arguments.footer(
      "Declinations are positive east of north, in degrees; heights are metres above the WGS84\n"
      "ellipsoid. Without --model the built-in WMM-2010 is used, made for 2010 to 2015. A date\n"
      "outside the years of the model gives a warning. With --points all columns of the input\n"
      "travel through and declination, inclination and total_nt (degrees, nT) follow. With --grid\n"
      "a GeoTIFF is written whose bands are declination, inclination, total intensity and the\n"
      "yearly change of the declination.\n"
      "Exit status: 0 all done, 1 some rows not, 2 stopped.");
  arguments.add_option("--model", options->model, "coefficient file of a magnetic model (.COF)");
  arguments.add_option("--date", options->date, "date as YYYY-MM-DD")->required();
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
                       "output) or --grid (.tif), replaced if it exists");
  AddPointOptions(arguments, options->points, "lat,lon,h");
  CLI::Option* grid = arguments
                          .add_option("--grid", options->grid,
                                      "SOUTH,WEST,NORTH,EAST,STEP in degrees, nodes included")
                          ->delimiter(',')
                          ->expected(5);
  for (const char* ofFiles : {"--output", "--columns", "--results", "--fixed-height", "--layer"})
    point->excludes(ofFiles);
  for (const char* ofPoints : {"--columns", "--results", "--layer"}) grid->excludes(ofPoints);
  return [options] { return RunDeclination(*options); };
}

}  // namespace geomath_tools
