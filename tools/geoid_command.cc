#include "tools/geoid_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "files/models/geoid_file.h"
#include "files/models/raster_grid.h"
#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/words/name_match.h"
#include "files/words/output_file.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/geoid/geoid_status.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/position.h"
#include "tools/progress.h"
#include "tools/row_loop.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct GeoidOptions {
  GeoidChoice choice;
  std::vector<std::string> input;  // a file, or a position as typed
  PointOptions points;
  std::vector<double> extent;  // south, west, north, east, degrees
  double step = 0;             // degrees
};

int RunPoints(const GeoidOptions& options, const GeoidHeight& geoid) {
  RowJob job;
  job.givenCrs = job.placeCrs = "EPSG:4326";
  job.results = {{"geoid"}, {"h_ellipsoid"}, {"h_geoid"}};
  job.failure = "no geoid height";
  job.failures = "have no geoid height";
  job.work = [&geoid](RowBlock& rows) {
    std::vector<double> b(rows.count), l(rows.count);
    for (std::size_t i = 0; i < rows.count; ++i) {
      b[i] = rows.given[0][i] * kRadPerDeg;
      l[i] = rows.given[1][i] * kRadPerDeg;
    }
    auto &N = rows.result[0], &ellipsoidal = rows.result[1], &orthometric = rows.result[2];
    geoid.Heights(b.data(), l.data(), N.data(), rows.count);
    for (std::size_t i = 0; i < rows.count; ++i) {
      ellipsoidal[i] = rows.given[2][i];
      orthometric[i] = ellipsoidal[i] - N[i];
      if (rows.problems[i].empty() && std::isnan(N[i]))
        rows.problems[i] = "the geoid has no height at this point";
    }
  };
  return options.input.size() > 1 ? RunPosition(options.input, options.points, job)
                                  : RunRows(options.points, job);
}

NodeGrid GridOf(const GeoidOptions& options) {
  constexpr int kMostNodes = 50000;  // on a side
  const std::vector<double>& e = options.extent;
  const auto grid = NodesOf(e[0], e[1], e[2], e[3], options.step, kMostNodes);
  if (!grid)
    throw UserError(
        fmt::format("--extent: must be SOUTH,WEST,NORTH,EAST in degrees, from south to north and "
                    "west to east, with at most {} nodes of --step on a side",
                    kMostNodes));
  return *grid;
}

/// Where a grid goes, row after row from the north.
class GridSink {
 public:
  virtual ~GridSink() = default;
  virtual void Write(int rowFromSouth, const std::vector<double>& heights) = 0;
  virtual void Close() = 0;
};

// Lines "lat,lon,geoid"; the height is empty where there is none.
class CsvGrid : public GridSink {
 public:
  CsvGrid(const std::string& path, const NodeGrid& grid) : file_(path), grid_(grid) {
    file_.Write("lat,lon,geoid\n");
  }

  void Write(int row, const std::vector<double>& heights) override {
    text_.clear();
    for (int c = 0; c < grid_.columns; ++c) {
      const double height = heights[static_cast<std::size_t>(c)];
      const auto end = std::back_inserter(text_);
      fmt::format_to(end, "{:.10g},{:.10g},", grid_.Latitude(row), grid_.Longitude(c));
      if (!std::isnan(height)) fmt::format_to(end, "{:.4f}", height);
      text_ += '\n';
    }
    file_.Write(text_);
  }

  void Close() override { file_.Close(); }

 private:
  TextOutput file_;
  NodeGrid grid_;
  std::string text_;
};

class TiffGrid : public GridSink {
 public:
  TiffGrid(const std::string& path, const NodeGrid& grid) : raster_(path, grid, kBands) {
    raster_.SetNoData(kNoHeight);
  }

  void Write(int row, const std::vector<double>& heights) override {
    line_ = heights;
    for (double& height : line_)
      if (std::isnan(height)) height = kNoHeight;
    raster_.Write(0, row, line_);
  }

  void Close() override { raster_.Close(); }

 private:
  static constexpr const char* kBands[] = {"geoid height, metres"};
  RasterGrid raster_;
  std::vector<double> line_;
};

int RunGrid(const GeoidOptions& options, const GeoidHeight& geoid) {
  const NodeGrid grid = GridOf(options);
  std::unique_ptr<GridSink> sink;
  if (IsCsvName(options.points.output))
    sink = std::make_unique<CsvGrid>(options.points.output, grid);
  else
    sink = std::make_unique<TiffGrid>(options.points.output, grid);

  const auto width = static_cast<std::size_t>(grid.columns);
  std::vector<double> b(width), l(width), heights(width);
  for (int c = 0; c < grid.columns; ++c)
    l[static_cast<std::size_t>(c)] = grid.Longitude(c) * kRadPerDeg;
  CatchInterrupts();
  Progress progress("rows");
  bool whole = true;
  for (int row = grid.rows - 1, done = 1; row >= 0; --row, ++done) {
    std::fill(b.begin(), b.end(), grid.Latitude(row) * kRadPerDeg);
    geoid.Heights(b.data(), l.data(), heights.data(), width);
    whole = whole && std::none_of(heights.begin(), heights.end(),
                                  [](double height) { return std::isnan(height); });
    sink->Write(row, heights);
    progress.Update(done, 1.0 * done / grid.rows);
    StopIfInterrupted(options.points.output);
  }
  sink->Close();
  return whole ? kExitDone : kExitSomeFailed;
}

int RunGeoid(GeoidOptions options) {
  const bool asGrid = !options.extent.empty(), isPosition = options.input.size() > 1;
  if (asGrid == !options.input.empty())
    throw UserError("give a file of points, or a position, or --extent with --step: one of them");
  if (options.points.output.empty() && !isPosition)
    throw UserError("name the output with --output FILE");
  if (options.input.size() == 1) options.points.input = options.input.front();
  const GeoidChoice& choice = options.choice;
  RefuseOverwriting({choice.grid, choice.model, choice.correction}, {options.points.output});
  const auto geoid = OpenGeoid(choice);
  if (!geoid->warning.empty())
    std::fprintf(stderr, "geomath: warning: %s\n", geoid->warning.c_str());
  return asGrid ? RunGrid(options, geoid->Heights()) : RunPoints(options, geoid->Heights());
}

constexpr const char* kFooter =
    "Geoid heights are metres above the ellipsoid of the grid or model. Points get the columns\n"
    "geoid, h_ellipsoid (their height) and h_geoid (their height above the geoid); all others\n"
    "travel through. With --extent a grid is written: a GeoTIFF, or CSV with lat,lon,geoid.\n"
    "A model from a .gfc file, and most lists of coefficients, hold the normal field and need\n"
    "--subtract-normal-field. Points outside a grid or on a hole get no height.\n"
    "Exit status: 0 all done, 1 some without height, 2 stopped.";

}  // namespace

std::function<int()> PrepareGeoid(CLI::App& arguments) {
  const auto options = std::make_shared<GeoidOptions>();
  arguments.footer(kFooter);
  GeoidChoice& choice = options->choice;
  arguments.add_option("--grid", choice.grid,
                       "grid of geoid heights, metres unless it states a unit, in a raster format "
                       "(GeoTIFF, GTX, BYN, ISG, NGS, ASCII grid, Surfer, EHdr, XYZ)");
  arguments.add_option(
      "--interpolation", choice.interpolation,
      "scheme for --grid, default RegGeoid2x2SW (bilinear): " + ListNames(InterpolationNames()));
  arguments.add_option("--model", choice.model,
                       "coefficients, fully normalised: lines \"n m C S\", or ICGEM's .gfc");
  arguments.add_option("--correction", choice.correction,
                       "coefficients of the height-anomaly correction in centimetres, for --model");
  arguments.add_flag("--subtract-normal-field", choice.subtractNormalField,
                     "take the even zonal terms of WGS84 from the coefficients");
  arguments
      .add_option(
          "POINTS", options->input,
          "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input. Or a "
          "position: LAT LON [HEIGHT]")
      ->expected(0, 3);
  arguments.add_option("-o,--output", options->points.output,
                       "output for POINTS (.csv, .geojson, .gpkg, .shp) or --extent (.tif, .csv), "
                       "replaced if it exists; - for CSV on standard output");
  CLI::Option* step =
      arguments.add_option("--step", options->step, "distance of the nodes, degrees");
  CLI::Option* extent =
      arguments
          .add_option("--extent", options->extent,
                      "SOUTH,WEST,NORTH,EAST of a grid to write, degrees, nodes included")
          ->delimiter(',')
          ->expected(4)
          ->needs(step);
  AddPointOptions(arguments, options->points, "lat,lon,h");
  for (const char* ofPoints :
       {"--columns", "--results", "--fixed-height", "--angles", "--ignore-crs", "--layer"})
    extent->excludes(ofPoints);
  return [options] { return RunGeoid(*options); };
}

}  // namespace geomath_files::program
