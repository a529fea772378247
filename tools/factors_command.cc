#include "tools/factors_command.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "files/system/system_file.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "tools/angle_column.h"
#include "tools/epoch_option.h"
#include "tools/given_system.h"
#include "tools/position.h"
#include "tools/row_loop.h"
#include "tools/system_grid.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct FactorsOptions {
  std::string system;
  std::vector<std::string> at;  // a position as typed
  bool grid = false;
  PointOptions points;
  EpochOption epoch;
};

constexpr int kFactorDecimals = 10;

// The columns in their order; angles are radians here.
struct FactorColumn {
  const char* name;
  bool isAngle;
  double (*value)(const PointFactorsInGrid&);
};
constexpr FactorColumn kColumns[] = {
    {"scale", false, [](const PointFactorsInGrid& f) { return f.scale; }},
    {"convergence", true, [](const PointFactorsInGrid& f) { return f.distortion.convergence; }},
    {"elevation_factor", false, [](const PointFactorsInGrid& f) { return f.elevation; }},
    {"combined_factor", false, [](const PointFactorsInGrid& f) { return f.combined; }},
    {"meridian_scale", false,
     [](const PointFactorsInGrid& f) { return f.distortion.meridianScale; }},
    {"parallel_scale", false,
     [](const PointFactorsInGrid& f) { return f.distortion.parallelScale; }},
    {"areal_scale", false, [](const PointFactorsInGrid& f) { return f.distortion.arealScale; }},
    {"angular_distortion", true,
     [](const PointFactorsInGrid& f) { return f.distortion.angularDistortion; }},
    {"largest_scale", false, [](const PointFactorsInGrid& f) { return f.distortion.semiMajor; }},
    {"smallest_scale", false, [](const PointFactorsInGrid& f) { return f.distortion.semiMinor; }},
};

int RunFactors(FactorsOptions options) {
  if (options.at.empty() == options.points.input.empty())
    throw UserError("give a file of points or --at LAT,LON[,H]: one of them");
  if (options.at.size() == 1 || options.at.size() > 3)
    throw UserError("--at: must be LAT,LON or LAT,LON,H, with --grid N,E or N,E,H");
  if (options.at.empty() && options.points.output.empty())
    throw UserError("name the output with --output FILE");
  RefuseReadingTwice({options.system, options.points.input});
  const auto system = GivenSystem(options.system);
  const SystemGrid grid(*system, DateOf(options.epoch, *system, options.system));
  const AngleColumns angles(options.points.angles);

  RowJob job;
  job.failure = "no factors";
  job.failures = "have no factors";
  job.given = options.grid ? CoordinateKind::grid : CoordinateKind::geographic;
  for (const FactorColumn& column : kColumns)
    job.results.push_back(column.isAngle ? angles.Column(column.name)
                                         : ResultColumn{column.name, kFactorDecimals, ""});
  job.givenCrs = options.grid ? system->GridCrs() : system->GeographicCrs();
  job.placeCrs = job.givenCrs;
  job.files = system->Files();
  job.files.push_back(options.system);
  job.work = [&](RowBlock& block) {
    for (std::size_t i = 0; i < block.count; ++i) {
      if (!block.problems[i].empty()) continue;
      double at[3] = {block.given[0][i], block.given[1][i], block.given[2][i]};
      PointFactorsInGrid factors;
      if ((options.grid && !grid.ToPosition(at[0], at[1], at[2], at)) ||
          !grid.Factors(at[0], at[1], at[2], factors)) {
        block.problems[i] = "the system has no grid about this point";
        continue;
      }
      std::size_t column = 0;
      for (const FactorColumn& each : kColumns) {
        const double value = each.value(factors);
        block.result[column++][i] = each.isAngle ? angles.Value(value) : value;
      }
    }
  };
  return options.at.empty() ? RunRows(options.points, job)
                            : RunPosition(options.at, options.points, job);
}

}  // namespace

std::function<int()> PrepareFactors(CLI::App& arguments) {
  const auto options = std::make_shared<FactorsOptions>();
  arguments.footer(
      "Scale is that of the coordinates in the grid, site and ground system included; where it\n"
      "differs with the direction it is the root of the areal scale, and its largest and smallest\n"
      "value are the half axes of Tissot's ellipse. Azimuth = bearing in the grid + convergence.\n"
      "Ground distance = grid distance / combined factor. All columns of the input travel "
      "through.\n"
      "Exit status: 0 all done, 1 some rows not, 2 stopped.");
  arguments.add_option("--system", options->system, kSystemHelp)->required();
  arguments.add_option(
      "POINTS", options->points.input,
      "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input");
  arguments
      .add_option("--at", options->at,
                  "one position, which is printed: LAT,LON[,HEIGHT], with --grid N,E[,HEIGHT]")
      ->delimiter(',')
      ->allow_extra_args(false);
  arguments.add_option("-o,--output", options->points.output,
                       "output file, replaced if it exists: .csv, .geojson, .gpkg, .shp; - for CSV "
                       "on standard output");
  arguments.add_flag("--grid", options->grid, "the points are given in the grid");
  AddPointOptions(arguments, options->points, "lat,lon,h (--grid: n,e,h_local or n,e,h)");
  AddEpoch(arguments, options->epoch);
  return [options] { return RunFactors(*options); };
}

}  // namespace geomath_files::program
