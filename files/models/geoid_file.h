#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/chain/geoid_height.h"
#include "geomath/geoid/global_geoid.h"
#include "geomath/geoid/regional_geoid.h"

namespace geomath_tools {

/// Where geoid heights come from: a grid or a coefficient model.
struct GeoidChoice {
  std::string grid;           ///< a raster that OpenGridFile knows, nodes at the pixel centres
  std::string interpolation;  ///< class name of the scheme; empty for the usual one
  std::string model;          ///< lines "n m C S", or ICGEM's .gfc
  std::string correction;     ///< lines "n m C S" in centimetres, or none
  bool subtractNormalField = false;
};

/// Where the nodes of a geoid grid stand, degrees.
struct GridPlace {
  double south = 0, west = 0;  ///< of the southwestern node
  double latStep = 0, lonStep = 0;
  int rows = 0, columns = 0;

  double LonExtent() const { return (columns - 1) * lonStep; }
};

/// What is wrong with a place, or an empty text.
std::string PlaceProblem(const GridPlace& place);

/// A scheme of interpolation over plain floats, by its class name.
struct GridScheme {
  const char* name;
  std::unique_ptr<zel_cs::geomath::RegionalGeoid> (*make)(
      const zel_cs::geomath::RegionalGeoidData&);
  bool northFirst;    ///< its row order
  bool halfTurnOnly;  ///< no height more than half a turn from the western edge
};

/// The scheme of that name, or the usual one for the place when the name is empty. Throws UserError
/// when the name is unknown, or the scheme does not serve the place; the text begins with `subject`.
const GridScheme& ChooseScheme(const std::string& name, const GridPlace& place,
                               const std::string& subject);

/// The model over rows of nodes in the order of the scheme, which must outlive it.
std::unique_ptr<zel_cs::geomath::RegionalGeoid> MakeGridModel(const GridScheme& scheme,
                                                              const GridPlace& place,
                                                              const float* nodes);

/// The names of the schemes.
std::vector<std::string> InterpolationNames();

/// A grid in memory: rows of nodes in the order of its scheme, NaN where there is a hole.
struct GeoidGrid {
  GridPlace place;
  const GridScheme* scheme = nullptr;
  std::vector<float> nodes;
};

/// A spherical-harmonic model in memory: fully normalised coefficients in triangular order. Those of
/// the correction, centimetres, may be absent.
struct GeoidCoefficients {
  std::vector<double> C, S, correctionC, correctionS;
  int degrees = 0;  ///< maximum degree plus 1
};

/// The model of coefficients, which must outlive it.
std::unique_ptr<zel_cs::geomath::GlobalGeoid> MakeHarmonicModel(const GeoidCoefficients& c);

/// A geoid in memory, with what it is made of.
class LoadedGeoid {
 public:
  virtual ~LoadedGeoid() = default;
  virtual const zel_cs::geomath::GeoidHeight& Heights() const = 0;
  /// What it was made of: one of the two, the other is null.
  virtual const GeoidGrid* Grid() const { return nullptr; }
  virtual const GeoidCoefficients* Coefficients() const { return nullptr; }
  /// What the user should know, empty when there is nothing.
  std::string warning;
};

/// Reads a grid or a model. No-data pixels and pixels that are not finite become holes; a grid
/// around the whole Earth is closed at its seam. Coefficients of a .gfc file are scaled from its GM
/// and radius to those of WGS84; others are used as given. Throws UserError.
std::unique_ptr<LoadedGeoid> OpenGeoid(const GeoidChoice& choice);

}  // namespace geomath_tools
