#include "files/models/raster_grid.h"

#include <cpl_error.h>
#include <gdal_priv.h>

#include <cmath>

#include "files/gdal/ogr.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constexpr double kRounding = 1e-9;  // steps by which a corner may miss its node

}  // namespace

std::optional<NodeGrid> NodesOf(double south, double west, double north, double east, double step,
                                int mostNodes) {
  const bool inRange = south >= -90 && south <= north && north <= 90 && west >= -360 &&
                       west <= east && east <= 360 && step > 0;
  const double rows = std::floor((north - south) / step + kRounding) + 1;
  const double columns = std::floor((east - west) / step + kRounding) + 1;
  if (!inRange || !(rows <= mostNodes && columns <= mostNodes)) return std::nullopt;
  return NodeGrid{south, west, step, static_cast<int>(rows), static_cast<int>(columns)};
}

void RasterGrid::CloseDataset::operator()(GDALDataset* dataset) const { GDALClose(dataset); }

RasterGrid::RasterGrid(const std::string& path, const NodeGrid& grid,
                       std::span<const char* const> descriptions)
    : file_(path), grid_(grid) {
  PrepareOgr();
  RequireLocalPath(path);
  const char* creation[] = {"COMPRESS=DEFLATE", "PREDICTOR=3", nullptr};
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  if (driver)
    dataset_.reset(driver->Create(written_.NameFor(file_.Path()).c_str(), grid.columns, grid.rows,
                                  static_cast<int>(descriptions.size()), GDT_Float32,
                                  const_cast<char**>(creation)));
  if (!dataset_) Complain(CPLGetLastErrorMsg());
  double transform[] = {grid.west - grid.step / 2,
                        grid.step,
                        0,
                        grid.Latitude(grid.rows - 1) + grid.step / 2,
                        0,
                        -grid.step};
  dataset_->SetGeoTransform(transform);
  dataset_->SetProjection(SRS_WKT_WGS84_LAT_LONG);
  int band = 0;
  for (const char* description : descriptions)
    dataset_->GetRasterBand(++band)->SetDescription(description);
}

RasterGrid::~RasterGrid() = default;

void RasterGrid::SetNoData(double value) {
  for (GDALRasterBand* band : dataset_->GetBands()) band->SetNoDataValue(value);
}

void RasterGrid::Write(int band, int row, const std::vector<double>& values) {
  auto* line = const_cast<double*>(values.data());  // only read
  if (dataset_->GetRasterBand(band + 1)->RasterIO(GF_Write, 0, grid_.rows - 1 - row, grid_.columns,
                                                  1, line, grid_.columns, 1, GDT_Float64, 0,
                                                  0) != CE_None)
    Complain(CPLGetLastErrorMsg());
}

void RasterGrid::Close() {
  const GdalErrors errors;
  dataset_.reset();
  if (!written_.Failure().empty()) Complain({});
  if (!errors.First().empty()) Complain(errors.First());
  file_.Place();
}

void RasterGrid::Complain(const std::string& gdal) const {
  const std::string system = written_.Failure();
  throw UserError(file_.Name() + ": cannot be written: " + (system.empty() ? gdal : system));
}

}  // namespace geomath_files
