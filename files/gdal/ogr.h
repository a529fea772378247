#pragma once

#include <ogrsf_frmts.h>

#include <string>

namespace geomath_files {

/// Readies GDAL/OGR, once: registers its formats and keeps its messages off standard error.
void PrepareOgr();

/// The last complaint of GDAL/OGR as the end of a message: ": text", or nothing.
std::string OgrComplaint();

/// Whether it says of itself that nothing is known, as those of a GeoPackage numbered -1 and 0.
bool IsUndefined(const OGRSpatialReference& crs);

/// As WKT 2 (ISO 19162); empty when it cannot be written so.
std::string WktOf(const OGRSpatialReference& crs);

/// While it lives, hears the failures that GDAL tells in this thread.
class GdalErrors {
 public:
  GdalErrors();
  ~GdalErrors();
  GdalErrors(const GdalErrors&) = delete;
  GdalErrors& operator=(const GdalErrors&) = delete;

  /// The first one, or nothing.
  const std::string& First() const { return first_; }

 private:
  std::string first_;
};

/// Open a local file for reading, with the drivers of point files and of geoid grids only: no
/// driver reaches for other files or for the network because of what a file contains. Null when no
/// driver knows the file; throw UserError when it is not there or is none of the local files.
GDALDatasetUniquePtr OpenPointFile(const std::string& path);
GDALDatasetUniquePtr OpenGridFile(const std::string& path);
/// The same for rasters of terrain.
GDALDatasetUniquePtr OpenHeightFile(const std::string& path);

}  // namespace geomath_files
