#pragma once

#include "files/system/system_file.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/chain/geoid_height.h"
#include "geomath/geodesic/distortion.h"
#include "geomath/geodesic/grid_line.h"
#include "geomath/proj/geo_proj.h"

namespace geomath_files::program {

/// The map of a system as one projection, counted to north and east whatever its axes: from the
/// latitude and longitude of its own datum through projection, site and ground system. Distortions,
/// lines and traverses of the library then are those of the coordinates that the user sees.
class SystemMap : public zel_cs::geomath::TGeoProj {
 public:
  explicit SystemMap(const CoordinateSystem& system);
  SystemMap(const SystemMap&) = delete;
  SystemMap& operator=(const SystemMap&) = delete;

 protected:
  bool ProjectPoint(double& b, double& l, zel_cs::geomath::PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, zel_cs::geomath::PointFactors* factors) const override;
  bool Differentiate(double b, double l,
                     zel_cs::geomath::GridDerivatives& derivatives) const override;

 private:
  bool ToPlane(double& n, double& e) const;

  const TGeoProj& projection_;
  zel_cs::geomath::CoordinateChain plane_;  // behind the projection
  double sign_;                             // −1 where the projection counts south and west
};

/// What is known of a point in the grid of a system.
struct PointFactorsInGrid {
  zel_cs::geomath::Distortion distortion;
  double scale;      ///< the root of the areal scale, which in a conformal grid is every scale
  double elevation;  ///< from the ground to the ellipsoid at the point's height
  double combined;   ///< their product
};

/// Grid coordinates of a system with what lies between them and the ground. Coordinates of points are
/// those of files: latitude and longitude in degrees, northing and easting with the signs of the axes.
class SystemGrid : private zel_cs::geomath::GeoidHeight {
 public:
  /// Of a system with a projection, which is kept by the caller, and positions at a date.
  SystemGrid(const CoordinateSystem& system, double date);

  /// At a position. False where the chain or the projection refuses it.
  bool Factors(double latitude, double longitude, double height,
               PointFactorsInGrid& factors) const {
    return Factors(latitude, longitude, height, date_, factors);
  }
  /// The same at a date of its own.
  bool Factors(double latitude, double longitude, double height, double date,
               PointFactorsInGrid& factors) const;

  /// The same point in the grid, and a position of the grid; false where the chain refuses it.
  bool ToGrid(double latitude, double longitude, double height, double (&grid)[3]) const;
  bool ToPosition(double north, double east, double height, double (&position)[3]) const;

  /// Between north and east with the signs of the axes, and those of Lines().
  zel_cs::geomath::GridPoint Counted(double north, double east, double height) const {
    return {grid_.northSign * north, grid_.eastSign * east, height};
  }

  /// Whether the system has a geoid, without which no deflections are known.
  bool HasGeoid() const { return system_.Chain().GetGeoid() != nullptr; }

  /// Lines between grid positions; heights are those of the system.
  const zel_cs::geomath::GridLines& Lines() const { return lines_; }

 private:
  // What lies between the ellipsoid of the projection and the heights of the system.
  bool Height(double b, double l, double& height) const override;
  // Those of the geoid itself, and differences of the rest, which is smooth.
  void HeightsAndSlopes(const double* b, const double* l, double* heights, double* perLatitude,
                        double* perLongitude, std::size_t count) const override;
  class BesideGeoid;
  bool ToGeoid(double& b, double& l) const;
  bool ToLocal(double& latitude, double& longitude, double& height) const;

  const CoordinateSystem& system_;
  double date_;
  zel_cs::geomath::CoordinateChain toEllipsoid_;  // of the projection; positions north and east
  SystemMap map_;
  AxisPair geographic_, grid_;
  zel_cs::geomath::GridLines lines_;
};

}  // namespace geomath_files::program
