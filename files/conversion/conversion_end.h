#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "files/system/geo_box.h"
#include "files/system/system_file.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/chain/coordinate_chain.h"

namespace geomath_files {

class EpsgRegistry;

/// What the coordinates of a system are, in the order in which they are given.
enum class EndKind {
  geographic,  ///< latitude, longitude (radians, degrees in files) and height
  projected,   ///< northing, easting and height, in the units of the system
  geocentric,  ///< X, Y and Z, metres
};

/// One of the two systems of a conversion: its coordinates, and the positions that they stand for.
///
/// Northings and eastings count in the directions of the system's axes, north first. Angles of a
/// geographic system are radians whatever its registered unit, its longitudes count from its own prime
/// meridian.
class ConversionEnd {
 public:
  /// `text` is a code ("EPSG:31467", or "31467"), a horizontal and a vertical one ("EPSG:25832+7837"),
  /// a file (a system file, or one of WKT or PROJJSON), or WKT. Throws UserError.
  ConversionEnd(const EpsgRegistry& registry, const std::string& text);

  /// What its coordinates are.
  EndKind Kind() const { return kind_; }
  /// "EPSG:31467 DHDN / 3-degree Gauss-Kruger zone 3".
  const std::string& Title() const { return title_; }
  /// Of its plane and its heights.
  const GridUnits& Units() const { return units_; }
  /// Instead of its own.
  void SetUnits(const GridUnits& units) { units_ = units; }
  /// The code of the geographic system of its positions.
  const std::string& Geographic() const { return geographic_; }
  /// The code of the projected system of its plane; empty where it has none.
  std::string Projected() const;
  /// Whether its heights are above the ellipsoid of that; else they are nobody's, or of `Vertical`.
  bool HasEllipsoidalHeights() const { return ellipsoidalHeights_; }
  /// The code of the system of its heights; empty for none.
  const std::string& Vertical() const { return vertical_; }
  /// Where it is used.
  const GeoBox& Area() const { return area_; }
  /// As a layer has it: x to the east, y to the north. Empty where none is known.
  const std::string& Crs() const { return crs_; }
  /// "EPSG:31467", "EPSG:25832+7837", or WKT or PROJJSON; empty for a system file.
  const std::string& Definition() const { return definition_; }
  /// Of a projected one; null for others.
  const CoordinateSystem* System() const { return system_.get(); }
  /// The files that it was read from.
  const std::vector<std::string>& Files() const { return files_; }
  /// What the user should know of it.
  const std::vector<std::string>& Notes() const { return notes_; }
  /// Whether points need dates.
  bool NeedsDates() const { return system_ && system_->Chain().NeedsDates(); }

  /// In place, coordinates to positions: latitude, longitude from Greenwich (radians), height (metres);
  /// NaN where a step fails, which `failed` receives.
  void ToPositions(double* a, double* b, double* c, std::size_t count,
                   zel_cs::geomath::PointDates dates, zel_cs::geomath::ChainStep* failed) const;
  /// The way back.
  void FromPositions(double* a, double* b, double* c, std::size_t count,
                     zel_cs::geomath::PointDates dates, zel_cs::geomath::ChainStep* failed) const;

 private:
  friend class EndReader;

  void CountEastAndNorth(double* a, double* b, std::size_t count) const;

  EndKind kind_ = EndKind::geographic;
  std::string title_, geographic_, vertical_, crs_, definition_;
  GridUnits units_;
  double meridian_ = 0;                   // of a geographic system, radians
  zel_cs::geomath::Ellipsoid ellipsoid_;  // of a geocentric one
  bool ellipsoidalHeights_ = false;
  GeoBox area_;
  std::vector<std::string> files_, notes_;
  std::unique_ptr<CoordinateSystem> system_;  // of a projected one
};

}  // namespace geomath_files
