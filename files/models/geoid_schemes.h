#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/chain/geoid_height.h"
#include "geomath/chain/geoid_models.h"
#include "geomath/geoid/regional_geoid.h"

namespace geomath_files {

/// Where the nodes of a geoid grid stand, degrees.
struct GridPlace {
  double south = 0;    ///< latitude of the southwestern node
  double west = 0;     ///< its longitude
  double latStep = 0;  ///< between rows, above 0
  double lonStep = 0;  ///< between columns, above 0
  int rows = 0;        ///< of one latitude each
  int columns = 0;     ///< of one longitude each

  /// From the first column to the last one.
  double LonExtent() const { return (columns - 1) * lonStep; }
};

/// What is wrong with a place, or an empty text.
std::string PlaceProblem(const GridPlace& place);

/// A scheme of interpolation over plain floats, by its class name.
struct GridScheme {
  const char* name;  ///< that of its class
  /// A new object of the class on nodes that must outlive it.
  std::unique_ptr<zel_cs::geomath::RegionalGeoid> (*make)(
      const zel_cs::geomath::RegionalGeoidData&);
  bool northFirst;    ///< its row order
  bool halfTurnOnly;  ///< its class gives no height more than half a turn from the western edge
};

/// The scheme of that name, the bilinear one when the name is empty. Throws UserError when it is
/// unknown.
const GridScheme& ChooseScheme(const std::string& name);

/// The names of the schemes.
std::vector<std::string> InterpolationNames();

/// Closes a grid around the whole Earth at its seam: the nodes with columns repeated past both ends,
/// the place widened to match. Nothing, and the place as it is, for other grids.
std::vector<float> CloseSeam(GridPlace& place, const float* nodes);

/// A grid with a scheme. A grid wider than a class serves is divided among several objects of it.
class GridModel : public zel_cs::geomath::GeoidHeight {
 public:
  /// Rows of nodes in the order of the scheme, which must outlive the model.
  GridModel(const GridScheme& scheme, const GridPlace& place, const float* nodes);

  bool Height(double b, double l, double& height) const override;
  void Heights(const double* b, const double* l, double* heights, std::size_t count) const override;
  void HeightsAndSlopes(const double* b, const double* l, double* heights, double* perLatitude,
                        double* perLongitude, std::size_t count) const override;

 private:
  struct Part {
    std::unique_ptr<zel_cs::geomath::RegionalGeoid> model;
    zel_cs::geomath::RegionalGeoidHeight heights;
  };

  const Part* PartOf(double l) const;

  double west_, centre_;  // radians
  double partWidth_;
  std::vector<Part> parts_;
};

}  // namespace geomath_files
