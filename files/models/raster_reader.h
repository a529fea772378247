#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/models/geoid_schemes.h"
#include "files/models/shift_file.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/shift/shift_grid.h"

namespace geomath_files {

/// Geoid heights of a raster: metres, holes NaN.
struct GeoidRaster {
  GridPlace place;           ///< where the nodes stand
  bool northFirst = false;   ///< the order of its rows
  std::vector<float> nodes;  ///< row by row
};

/// What the samples of a grid of displacements are.
struct DisplacementSamples {
  zel_cs::geomath::ShiftComponents components;  ///< which there are
  bool angles = false;  ///< those to the north and east, degrees unless they say otherwise
};

/// What reads rasters for geoids and shifts. The part of this library that stands on GDAL has one
/// (`UseGdal`); a host that does without may bring its own. Any number of threads may call it.
class RasterReader {
 public:
  virtual ~RasterReader() = default;
  /// The first band of a raster in latitude and longitude. Throws UserError.
  virtual GeoidRaster ReadGeoid(const std::string& path) const = 0;
  /// A shift from the bytes of a TIFF file, which `choice.file` stands for. Throws UserError.
  virtual std::unique_ptr<zel_cs::geomath::CoordinateShift> ParseShift(
      const std::string& bytes, const ShiftChoice& choice) const = 0;
  /// The grids of a TIFF file of a deformation model: radians, metres. Throws UserError.
  virtual std::vector<zel_cs::geomath::ShiftGridPart> ParseDisplacements(
      const std::string& bytes, const std::string& file,
      const DisplacementSamples& samples) const = 0;
  /// The space of the coordinates of a system, an EPSG code ("EPSG:3067") or WKT; nothing where it
  /// is not known.
  virtual std::optional<zel_cs::geomath::ShiftSpace> SpaceOf(const std::string& crs) const = 0;
  /// The ellipsoid of a system, likewise.
  virtual std::optional<zel_cs::geomath::Ellipsoid> EllipsoidOf(const std::string& crs) const = 0;
};

/// From here on, rasters are read by `reader`, which must live until the end; by none with null.
void SetRasterReader(const RasterReader* reader);

/// The reader in use, or null.
const RasterReader* FindRasterReader();

/// The reader in use. Throws UserError, which names the file that is to be read, where there is none.
const RasterReader& RequireRasterReader(const std::string& path);

}  // namespace geomath_files
