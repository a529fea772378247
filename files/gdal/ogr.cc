#include "files/gdal/ogr.h"

#include <cpl_error.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

// By their names in GDAL. Left out are drivers that follow references to other places (VRT, WMS,
// GML, …) and those whose libraries do not survive damaged files (netCDF, HDF, …).
constexpr const char* kPointDrivers[] = {"GeoJSON",    "GeoJSONSeq",   "GPKG", "ESRI Shapefile",
                                         "FlatGeobuf", "MapInfo File", "DXF",  "GPX",
                                         "KML",        "XLSX",         "ODS",  nullptr};
constexpr const char* kGridDrivers[] = {"GTiff", "GTX",  "BYN",   "ISG",  "NGSGEOID", "AAIGrid",
                                        "GSAG",  "GSBG", "GS7BG", "EHdr", "XYZ",      nullptr};
constexpr const char* kHeightDrivers[] = {"GTiff",   "AAIGrid", "SRTMHGT", "DTED",
                                          "USGSDEM", "EHdr",    "ENVI",    "GSAG",
                                          "GSBG",    "GS7BG",   "XYZ",     nullptr};

GDALDatasetUniquePtr Open(const std::string& path, unsigned int kind, const char* const* drivers,
                          const char* const* options = nullptr) {
  PrepareOgr();
  RequireLocalPath(path);
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status))
    throw UserError(fmt::format("{}: cannot be read: {}", path,
                                error ? error.message() : std::strerror(ENOENT)));
  if (std::filesystem::is_directory(status)) throw UserError(path + ": is a directory");
  return GDALDatasetUniquePtr(
      GDALDataset::Open(path.c_str(), kind | GDAL_OF_READONLY, drivers, options, nullptr));
}

}  // namespace

void PrepareOgr() {
  static const bool ready = [] {
    CPLSetErrorHandler(CPLQuietErrorHandler);
    GDALAllRegister();
    return true;
  }();
  static_cast<void>(ready);
  CPLErrorReset();
}

std::string OgrComplaint() {
  const std::string text = CPLGetLastErrorMsg();
  return text.empty() ? text : ": " + text;
}

bool IsUndefined(const OGRSpatialReference& crs) {
  const char* name = crs.GetName();
  return name && std::string_view(name).starts_with("Undefined ");
}

std::string WktOf(const OGRSpatialReference& crs) {
  const char* options[] = {"FORMAT=WKT2_2019", nullptr};
  char* text = nullptr;
  const bool made = crs.exportToWkt(&text, options) == OGRERR_NONE;
  std::string wkt = made && text ? text : "";
  CPLFree(text);
  return wkt;
}

GdalErrors::GdalErrors() {
  CPLPushErrorHandlerEx(
      [](CPLErr kind, CPLErrorNum, const char* text) {
        auto& first = *static_cast<std::string*>(CPLGetErrorHandlerUserData());
        if (kind >= CE_Failure && first.empty()) first = text;
      },
      &first_);
}

GdalErrors::~GdalErrors() { CPLPopErrorHandler(); }

GDALDatasetUniquePtr OpenPointFile(const std::string& path) {
  constexpr const char* kOptions[] = {"NATIVE_DATA=YES",  // with what GeoJSON has beside columns
                                      nullptr};
  return Open(path, GDAL_OF_VECTOR, kPointDrivers, kOptions);
}

GDALDatasetUniquePtr OpenGridFile(const std::string& path) {
  return Open(path, GDAL_OF_RASTER, kGridDrivers);
}

GDALDatasetUniquePtr OpenHeightFile(const std::string& path) {
  return Open(path, GDAL_OF_RASTER, kHeightDrivers);
}

}  // namespace geomath_files
