#include "tools/geoid_command.h"

#include <fmt/format.h>
#include <gdal_priv.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/geoid/geoid_status.h"
#include "tools/command.h"
#include "tools/geoid_file.h"
#include "tools/name_match.h"
#include "tools/ogr.h"
#include "tools/point_columns.h"
#include "tools/point_sink.h"
#include "tools/point_source.h"
#include "tools/progress.h"
#include "tools/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

struct GeoidOptions {
  GeoidChoice choice;
  std::string points, output, layer;
  std::vector<std::string> columns;
  std::optional<double> fixedHeight;
  std::vector<double> extent;  // south, west, north, east, degrees
  double step = 0;             // degrees
};

const ResultStyle kResults = {{"geoid", "h_ellipsoid", "h_geoid"}, {4, 4, 4}};

void RefuseTakenNames(const PointSource& source) {
  const std::vector<std::string> taken = source.ColumnNames();
  for (const std::string& name : kResults.names)
    if (std::find(taken.begin(), taken.end(), name) != taken.end())
      throw UserError(fmt::format("{} has a column \"{}\" already", source.Name(), name));
}

// Adds the heights to every row; returns how many rows have none.
long long AddHeights(const GeoidHeight& geoid, PointSource& source, const PointColumns& columns,
                     PointSink& sink) {
  Progress progress("rows");
  long long rows = 0, failures = 0;
  for (Record record; source.Next(record);) {
    if (record.IsBlank()) {
      sink.Write(record, {});
      continue;
    }
    std::array<double, 3> point{};
    std::string problem = source.Problem(record);
    if (problem.empty()) problem = columns.Read(record, point);
    double N = 0;
    if (problem.empty() && !geoid.Height(point[0] * kRadPerDeg, point[1] * kRadPerDeg, N))
      problem = "the geoid has no height at this point";
    Converted converted;
    if (problem.empty()) {
      converted = {true, {N, point[2], point[2] - N}, point[1], point[0], point[2]};
    } else {
      ++failures;
      progress.Print(
          fmt::format("{}, {}: no geoid height: {}", source.Name(), source.Place(record), problem));
    }
    sink.Write(record, converted);
    progress.Update(++rows, source.Done());
  }
  return failures;
}

int RunPoints(const GeoidOptions& options, const GeoidHeight& geoid) {
  const auto source = OpenPoints(options.points, options.layer);
  RefuseSameFile(options.points, options.output);
  RefuseTakenNames(*source);
  const PointColumns columns(*source, CoordinateKind::geographic,
                             {options.columns, options.fixedHeight});
  const auto sink = CreatePoints(options.output, *source, kResults);
  long long failures = 0;
  try {
    failures = AddHeights(geoid, *source, columns, *sink);
  } catch (const UserError&) {
    sink->Close();  // the rows before the trouble are kept
    throw;
  }
  sink->Close();
  return failures == 0 ? kExitDone : kExitSomeFailed;
}

// Nodes from the south-west, the corners of the extent included.
struct OutputGrid {
  double south, west, step;
  int rows, columns;
  double Latitude(int row) const { return south + row * step; }
  double Longitude(int column) const { return west + column * step; }
};

OutputGrid GridOf(const GeoidOptions& options) {
  constexpr double kMostNodes = 50000;  // on a side
  constexpr double kRounding = 1e-9;    // steps
  const double south = options.extent[0], west = options.extent[1];
  const double north = options.extent[2], east = options.extent[3];
  const double rows = std::floor((north - south) / options.step + kRounding) + 1;
  const double columns = std::floor((east - west) / options.step + kRounding) + 1;
  const bool inRange = south >= -90 && south <= north && north <= 90 && west >= -360 &&
                       west <= east && east <= 360 && options.step > 0;
  if (!inRange || !(rows <= kMostNodes && columns <= kMostNodes))
    throw UserError(
        fmt::format("--extent: must be SOUTH,WEST,NORTH,EAST in degrees, from south to north and "
                    "west to east, with at most {:.0f} nodes of --step on a side",
                    kMostNodes));
  return {south, west, options.step, static_cast<int>(rows), static_cast<int>(columns)};
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
  CsvGrid(const std::string& path, const OutputGrid& grid)
      : path_(path), grid_(grid), file_(path == "-" ? stdout : std::fopen(path.c_str(), "wb")) {
    if (!file_) throw UserError(path + ": cannot be written");
    fmt::print(file_.get(), "lat,lon,geoid\n");
  }

  void Write(int row, const std::vector<double>& heights) override {
    for (int c = 0; c < grid_.columns; ++c) {
      const double height = heights[static_cast<std::size_t>(c)];
      fmt::print(file_.get(), "{:.10g},{:.10g},", grid_.Latitude(row), grid_.Longitude(c));
      if (std::isnan(height))
        fmt::print(file_.get(), "\n");
      else
        fmt::print(file_.get(), "{:.4f}\n", height);
    }
  }

  void Close() override {
    const bool sound = std::fflush(file_.get()) == 0 && !std::ferror(file_.get());
    file_.reset();
    if (!sound) throw UserError(path_ + ": cannot be written");
  }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const {
      if (file != stdout) std::fclose(file);
    }
  };
  std::string path_;
  OutputGrid grid_;
  std::unique_ptr<std::FILE, CloseFile> file_;
};

// A GeoTIFF whose pixels have the nodes as centres, north up.
class TiffGrid : public GridSink {
 public:
  TiffGrid(const std::string& path, const OutputGrid& grid) : path_(path), grid_(grid) {
    PrepareOgr();
    const char* creation[] = {"COMPRESS=DEFLATE", "PREDICTOR=3", nullptr};
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    raster_.reset(driver ? driver->Create(path.c_str(), grid.columns, grid.rows, 1, GDT_Float32,
                                          const_cast<char**>(creation))
                         : nullptr);
    if (!raster_) throw UserError(path + ": cannot be written" + OgrComplaint());
    double transform[] = {grid.west - grid.step / 2,
                          grid.step,
                          0,
                          grid.Latitude(grid.rows - 1) + grid.step / 2,
                          0,
                          -grid.step};
    raster_->SetGeoTransform(transform);
    raster_->SetProjection(SRS_WKT_WGS84_LAT_LONG);
    raster_->GetRasterBand(1)->SetDescription("geoid height, metres");
    raster_->GetRasterBand(1)->SetNoDataValue(kNoHeight);
  }

  void Write(int row, const std::vector<double>& heights) override {
    line_ = heights;
    for (double& height : line_)
      if (std::isnan(height)) height = kNoHeight;
    if (raster_->GetRasterBand(1)->RasterIO(GF_Write, 0, grid_.rows - 1 - row, grid_.columns, 1,
                                            line_.data(), grid_.columns, 1, GDT_Float64, 0,
                                            0) != CE_None)
      throw UserError(path_ + ": cannot be written" + OgrComplaint());
  }

  void Close() override { raster_.reset(); }

 private:
  struct CloseDataset {
    void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
  };
  std::string path_;
  OutputGrid grid_;
  std::unique_ptr<GDALDataset, CloseDataset> raster_;
  std::vector<double> line_;
};

int RunGrid(const GeoidOptions& options, const GeoidHeight& geoid) {
  const OutputGrid grid = GridOf(options);
  std::unique_ptr<GridSink> sink;
  if (IsCsvName(options.output))
    sink = std::make_unique<CsvGrid>(options.output, grid);
  else
    sink = std::make_unique<TiffGrid>(options.output, grid);

  const auto width = static_cast<std::size_t>(grid.columns);
  std::vector<double> b(width), l(width), heights(width);
  for (int c = 0; c < grid.columns; ++c)
    l[static_cast<std::size_t>(c)] = grid.Longitude(c) * kRadPerDeg;
  Progress progress("rows");
  bool whole = true;
  for (int row = grid.rows - 1, done = 1; row >= 0; --row, ++done) {
    std::fill(b.begin(), b.end(), grid.Latitude(row) * kRadPerDeg);
    geoid.Heights(b.data(), l.data(), heights.data(), width);
    whole = whole && std::none_of(heights.begin(), heights.end(),
                                  [](double height) { return std::isnan(height); });
    sink->Write(row, heights);
    progress.Update(done, 1.0 * done / grid.rows);
  }
  sink->Close();
  return whole ? kExitDone : kExitSomeFailed;
}

int RunGeoid(const GeoidOptions& options) {
  const bool asGrid = !options.extent.empty();
  if (asGrid == !options.points.empty())
    throw UserError("give a file of points, or --extent with --step: one of them");
  if (options.output.empty()) throw UserError("name the output with --output FILE");
  RefuseSameFile(options.choice.grid, options.output);
  const auto geoid = OpenGeoid(options.choice);
  if (!geoid->warning.empty())
    std::fprintf(stderr, "geomath: warning: %s\n", geoid->warning.c_str());
  return asGrid ? RunGrid(options, geoid->Heights()) : RunPoints(options, geoid->Heights());
}

}  // namespace

std::function<int()> PrepareGeoid(CLI::App& arguments) {
  const auto options = std::make_shared<GeoidOptions>();
  arguments.footer(
      "Geoid heights are metres above the ellipsoid of the grid or model. Points get the columns\n"
      "geoid, h_ellipsoid (their height) and h_geoid (their height above the geoid); all others\n"
      "travel through. With --extent a grid is written: a GeoTIFF, or CSV with lat,lon,geoid.\n"
      "A model from a .gfc file, and most lists of coefficients, hold the normal field and need\n"
      "--subtract-normal-field. Points outside a grid or on a hole get no height.\n"
      "Exit status: 0 all done, 1 some without height, 2 stopped.");
  GeoidChoice& choice = options->choice;
  arguments.add_option("--grid", choice.grid,
                       "grid of geoid heights in metres, in any raster format of GDAL "
                       "(GTX, GeoTIFF, BYN, ISG, ASCII grid, ...)");
  arguments.add_option(
      "--interpolation", choice.interpolation,
      "scheme for --grid, default RegGeoid2x2SW (bilinear): " + ListNames(InterpolationNames()));
  arguments.add_option("--model", choice.model,
                       "coefficients, fully normalised: lines \"n m C S\", or ICGEM's .gfc");
  arguments.add_option("--correction", choice.correction,
                       "coefficients of the height-anomaly correction in centimetres, for --model");
  arguments.add_flag("--subtract-normal-field", choice.subtractNormalField,
                     "take the even zonal terms of WGS84 from the coefficients");
  arguments.add_option(
      "POINTS", options->points,
      "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input");
  arguments.add_option("-o,--output", options->output,
                       "output for POINTS (.csv, .geojson, .gpkg, .shp) or --extent (.tif, .csv), "
                       "replaced if it exists; - for CSV on standard output");
  CLI::Option* step =
      arguments.add_option("--step", options->step, "distance of the nodes, degrees");
  arguments
      .add_option("--extent", options->extent,
                  "SOUTH,WEST,NORTH,EAST of a grid to write, degrees, nodes included")
      ->delimiter(',')
      ->expected(4)
      ->needs(step);
  arguments
      .add_option("--columns", options->columns, "names of the input columns, default lat,lon,h")
      ->delimiter(',')
      ->expected(2, 3);
  arguments.add_option("--fixed-height", options->fixedHeight,
                       "height of all points, metres, instead of a height column");
  arguments.add_option("--layer", options->layer, "layer of the input, when it has several");
  return [options] { return RunGeoid(*options); };
}

}  // namespace geomath_tools
