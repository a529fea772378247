#include "files/points/point_sink.h"

#include <fmt/format.h>

#include <cmath>
#include <string_view>

#include "files/points/csv_sink.h"
#include "files/points/ogr_sink.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

struct Format {
  const char* suffix;
  const char* driver;  // of GDAL/OGR
};
constexpr Format kFormats[] = {
    {".geojson", "GeoJSON"},
    {".json", "GeoJSON"},
    {".gpkg", "GPKG"},
    {".shp", "ESRI Shapefile"},
};

const Format* FindFormat(const std::string& path) {
  const std::string suffix = SuffixOf(path);
  for (const Format& format : kFormats) {
    if (suffix == format.suffix) return &format;
  }
  return nullptr;
}

}  // namespace

void AppendResult(std::string& text, double value, const ResultColumn& column) {
  if (std::isnan(value)) return;
  if (column.sexagesimal)
    text += SexagesimalText(value, *column.sexagesimal, column.decimals);
  else
    AppendDecimals(text, value, column.decimals);
}

std::string ResultText(double value, const ResultColumn& column) {
  std::string text;
  AppendResult(text, value, column);
  return text;
}

bool IsGeoJsonName(const std::string& path) {
  const Format* format = FindFormat(path);
  return format && std::string_view(format->driver) == "GeoJSON";
}

bool IsPointsName(const std::string& path) { return IsCsvName(path) || FindFormat(path); }

std::unique_ptr<PointSink> CreatePoints(const std::string& path, const PointSource& source,
                                        const ResultStyle& style) {
  if (IsCsvName(path)) return CreateCsv(path, source, style);
  const Format* format = FindFormat(path);
  if (!format)
    throw UserError(
        fmt::format("{}: the suffix chooses the format: .csv, .geojson, .gpkg or .shp; the points "
                    "of a layer go into .dxf, .fgb and .kml too",
                    path));
  return CreateFeatures(path, format->driver, source, style);
}

}  // namespace geomath_files
