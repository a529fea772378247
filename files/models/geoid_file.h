#pragma once

#include <memory>
#include <string>
#include <vector>

#include "files/models/coefficient_file.h"
#include "files/models/geoid_schemes.h"
#include "geomath/chain/geoid_height.h"

namespace geomath_files {

/// Where geoid heights come from: a grid or a coefficient model.
struct GeoidChoice {
  std::string grid;                  ///< a raster, read by the RasterReader in use
  std::string interpolation;         ///< class name of the scheme; empty for the bilinear one
  std::string model;                 ///< lines "n m C S", or ICGEM's .gfc
  std::string correction;            ///< lines "n m C S" in centimetres, or none
  bool subtractNormalField = false;  ///< of a model, as of CoefficientFiles
};

/// A grid in memory: rows of nodes in the order of its scheme, NaN where there is a hole.
struct GeoidGrid {
  GridPlace place;                     ///< where the nodes stand
  const GridScheme* scheme = nullptr;  ///< the interpolation between them
  std::vector<float> nodes;            ///< metres
};

/// A geoid in memory, with what it is made of.
class LoadedGeoid {
 public:
  virtual ~LoadedGeoid() = default;
  /// Gives the heights; lives as long as this object.
  virtual const zel_cs::geomath::GeoidHeight& Heights() const = 0;
  /// What it was made of: one of the two, the other is null.
  virtual const GeoidGrid* Grid() const { return nullptr; }
  virtual const GeoidCoefficients* Coefficients() const { return nullptr; }
  /// What the user should know, empty when there is nothing.
  std::string warning;
};

/// Reads a grid, by the RasterReader in use, or a model (see ReadCoefficients). A grid around the
/// whole Earth is closed at its seam. Throws UserError.
std::unique_ptr<LoadedGeoid> OpenGeoid(const GeoidChoice& choice);

}  // namespace geomath_files
