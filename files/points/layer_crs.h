#pragma once

#include <array>
#include <memory>
#include <string>

#include "files/system/length_unit.h"

class OGRSpatialReference;
class OGRCoordinateTransformation;

namespace geomath_files {

/// The coordinate system of a text, an EPSG code ("EPSG:27700") or WKT, with x to the east and y to
/// the north as layers have them, and a projected one in `unit`, whatever it is registered with. Null
/// for an empty text. Throws UserError.
std::unique_ptr<OGRSpatialReference> CrsOf(const std::string& text, const LengthUnit& unit = {});

/// What is known of the coordinates that a command expects.
struct ExpectedCrs {
  bool geographic = true;
  std::string text;      ///< as CrsOf takes it; empty where nothing is known
  bool heights = true;   ///< heights above the ellipsoid are read from the points
  LengthUnit unit = {};  ///< of grid coordinates
};

/// Brings the points of a layer from its coordinate system to the one that is expected.
class LayerCrs {
 public:
  /// `given` is the layer's, empty for none. Positions are converted where PROJ knows how the two
  /// hang together. Throws UserError, which begins with `name`, where they do not, and for grid
  /// coordinates of another system.
  LayerCrs(const std::string& name, const std::string& given, const ExpectedCrs& expected);
  ~LayerCrs();

  /// What the user should know, empty when there is nothing.
  const std::string& Note() const { return note_; }
  /// In place, y before x; false where it has no counterpart.
  bool Convert(std::array<double, 3>& point) const;

 private:
  std::unique_ptr<OGRCoordinateTransformation> change_;
  std::string note_;
};

}  // namespace geomath_files
