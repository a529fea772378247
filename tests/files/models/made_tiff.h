#pragma once

#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogr_spatialref.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "files/gdal/ogr.h"
#include "tests/support/scratch_folder.h"

/// Geodetic TIFF grids made for a test.
namespace geomath_files {

/// A sample of a made-up grid: raw values from north to south, from west to east.
struct Sample {
  std::string description, unit;
  std::vector<double> raw;
  std::string positive = "", constant = "";
  double scale = 1, offset = 0;
};

/// A directory of 3 × 3 nodes.
struct Directory {
  double west, north, step;
  std::vector<Sample> samples;
  std::vector<std::pair<std::string, std::string>> metadata;
  const char* system = "EPSG:4314";
};

/// Where made-up files stand until the program ends.
inline const std::filesystem::path& MadeFiles() {
  static const ScratchFolder folder;
  return folder.Path();
}

/// Writes a file of such directories, and returns its path.
inline std::string Write(const std::vector<Directory>& directories,
                         const std::string& path = (MadeFiles() / "shift.tif").string()) {
  PrepareOgr();
  std::filesystem::remove(path);
  for (const Directory& d : directories) {
    const char* append[] = {"APPEND_SUBDATASET=YES", nullptr};
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    const GDALDatasetUniquePtr raster(
        driver->Create(path.c_str(), 3, 3, static_cast<int>(d.samples.size()), GDT_Float32,
                       const_cast<char**>(&d == &directories[0] ? nullptr : append)));
    double t[] = {d.west - d.step / 2, d.step, 0, d.north + d.step / 2, 0, -d.step};
    raster->SetGeoTransform(t);
    OGRSpatialReference system;
    system.SetFromUserInput(d.system);
    raster->SetSpatialRef(&system);
    for (const auto& [key, value] : d.metadata) raster->SetMetadataItem(key.c_str(), value.c_str());
    int number = 0;
    for (const Sample& s : d.samples) {
      GDALRasterBand& band = *raster->GetRasterBand(++number);
      band.SetDescription(s.description.c_str());
      band.SetUnitType(s.unit.c_str());
      if (!s.positive.empty()) band.SetMetadataItem("positive_value", s.positive.c_str());
      if (!s.constant.empty()) band.SetMetadataItem("constant_offset", s.constant.c_str());
      if (s.scale != 1) band.SetScale(s.scale);
      if (s.offset != 0) band.SetOffset(s.offset);
      band.SetNoDataValue(-9999);
      std::vector<double> raw = s.raw.size() == 1 ? std::vector<double>(9, s.raw[0]) : s.raw;
      EXPECT_EQ(band.RasterIO(GF_Write, 0, 0, 3, 3, raw.data(), 3, 3, GDT_Float64, 0, 0), CE_None);
    }
  }
  return path;
}

}  // namespace geomath_files
