#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/chain/geoid_height.h"

namespace geomath_tools {

/// Where geoid heights come from: a grid or a coefficient model.
struct GeoidChoice {
  std::string grid;           ///< a raster in any format of GDAL, nodes at the pixel centres
  std::string interpolation;  ///< class name of the scheme; empty for the usual one
  std::string model;          ///< lines "n m C S", or ICGEM's .gfc
  std::string correction;     ///< lines "n m C S" in centimetres, or none
  bool subtractNormalField = false;
};

/// A geoid in memory, with what it is made of.
class LoadedGeoid {
 public:
  virtual ~LoadedGeoid() = default;
  virtual const zel_cs::geomath::GeoidHeight& Heights() const = 0;
  /// What the user should know, empty when there is nothing.
  std::string warning;
};

/// Reads a grid or a model. No-data pixels and pixels that are not finite become holes; a grid
/// around the whole Earth is closed at its seam. Coefficients of a .gfc file are scaled from its GM
/// and radius to those of WGS84; others are used as given. Throws UserError.
std::unique_ptr<LoadedGeoid> OpenGeoid(const GeoidChoice& choice);

/// The schemes that OpenGeoid knows by name.
std::vector<std::string> InterpolationNames();

}  // namespace geomath_tools
