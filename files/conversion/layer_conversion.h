#pragma once

#include <functional>
#include <string>
#include <vector>

#include "files/conversion/vertices.h"
#include "files/points/layer_crs.h"

namespace geomath_files {

/// What becomes of the layers of a file.
struct LayerJob {
  std::string input, output;
  std::string layer;  ///< empty for all
  ExpectedCrs given;  ///< of the coordinates that `convert` takes
  bool ignoreCrs = false;
  bool needsCrs = false;    ///< a layer without a system is refused
  std::string crs;          ///< of the results, as CrsOf takes it; empty for none
  LengthUnit unit = {};     ///< of the results in a plane
  bool geographic = false;  ///< the results are degrees
  double height = 0;        ///< given to `convert` for flat vertices, which stay so
  double densify = 0;       ///< longest straight segment, metres; 0 leaves them
  VertexDistance distance;  ///< for that
  /// Converts in place; NaN in x for a vertex that cannot be converted.
  std::function<void(VertexColumns&)> convert;
  /// Hears what the user should know, and how many features are done.
  std::function<void(const std::string&)> tell;
  std::function<void(long long)> progress;
  std::function<bool()> interrupted;
};

/// Features that were written, and of them those without a geometry because it could not be
/// converted.
struct LayerResult {
  long long features = 0, failures = 0;
};

/// Whether a file goes by ConvertLayers, and not row by row: several layers, one with lines, polygons,
/// collections, or points whose output has a format that rows have not. False for a file that nobody
/// knows.
bool GoesByLayers(const std::string& input, const std::string& layer, const std::string& output);

/// The coordinate system of the layer, or of the first one, as WKT. Throws UserError where it has none.
std::string LayerCrsText(const std::string& input, const std::string& layer);

/// Whether a path is that of a file with layers, and not of a system.
bool HasLayers(const std::string& path);
/// Its layers in words: features, geometry, columns and coordinate system. Throws UserError.
std::string DescribeLayers(const std::string& path);

/// Converts layers vertex by vertex, with all attributes: points, lines, polygons, collections of them,
/// with or without z and m; a curve keeps its kind, by the vertices that define it, where the format of
/// the output has curves, and is refused else. The suffix chooses the format: .gpkg, .shp, .geojson,
/// .fgb, .dxf, .kml, .csv, .parquet, .arrow. A feature with a vertex that cannot be converted keeps
/// its attributes and gets no geometry; DXF, which cannot hold it then, goes without it. The output appears when it is whole. Throws UserError.
LayerResult ConvertLayers(const LayerJob& job);

}  // namespace geomath_files
