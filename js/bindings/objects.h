#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/system/projection_names.h"
#include "files/system/system_shift.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/chain/fixed_height_datum.h"
#include "geomath/chain/geoid_height.h"
#include "geomath/datum/datum.h"
#include "geomath/local/grid_to_ground.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/proj/geo_proj.h"
#include "js/bindings/object.h"

/// The objects that others are made of.
namespace geomath_js {

class EllipsoidObject : public Object {
 public:
  explicit EllipsoidObject(const zel_cs::geomath::Ellipsoid& of) : ellipsoid(of) {}
  void Convert(int operation, const Block& block) const override;
  json Describe() const override;

  zel_cs::geomath::Ellipsoid ellipsoid;
};

/// The ellipsoid at the key "ellipsoid"; WGS84 when there is none.
std::shared_ptr<EllipsoidObject> EllipsoidAt(const json& given);

class DatumObject : public Object {
 public:
  /// On an ellipsoid that it shares.
  DatumObject(std::shared_ptr<EllipsoidObject> on, const zel_cs::geomath::Datum& of);
  void Convert(int operation, const Block& block) const override;
  json Describe() const override;

  std::shared_ptr<EllipsoidObject> ellipsoid;
  zel_cs::geomath::Datum datum;
};

/// A projection with the values that it was made of, in the units of its kind.
class ProjectionObject : public Object {
 public:
  /// `a`, `invF` as for MakeProjection; the axes as AxisRotation knows them.
  ProjectionObject(const geomath_files::ProjectionKind& its, std::vector<double> parameters,
                   double axis, double inverseFlattening, std::string grid, std::string geographic);
  void Convert(int operation, const Block& block) const override;
  json Describe() const override;

  const geomath_files::ProjectionKind& kind;
  std::vector<double> values;
  double a, invF;  // as given: some kinds have an ellipsoid of their own
  std::string gridAxes, geographicAxes;
  bool latitudeFirst, plainAxes;
  std::unique_ptr<zel_cs::geomath::TGeoProj> projection;

 private:
  void ForwardColumns(double* first, double* second, std::size_t count) const;
  void InverseColumns(double* first, double* second, std::size_t count) const;
};

/// Latitude and longitude of the caller, in the order of their axes.
void TakePosition(const Block& block, const ProjectionObject* projection);

class SiteObject : public Object {
 public:
  explicit SiteObject(const zel_cs::geomath::LocalToGrid& of) : site(of) {}
  void Convert(int operation, const Block& block) const override;
  json Describe() const override;

  zel_cs::geomath::LocalToGrid site;
};

class GroundObject : public Object {
 public:
  explicit GroundObject(const zel_cs::geomath::GridToGround& of) : ground(of) {}
  void Convert(int operation, const Block& block) const override;
  json Describe() const override;

  zel_cs::geomath::GridToGround ground;
};

/// What a chain takes as its geoid.
class GeoidObject : public Object {
 public:
  void Convert(int operation, const Block& block) const override;
  virtual const zel_cs::geomath::GeoidHeight& Heights() const = 0;
};

/// A conversion with all that it is made of.
class ChainObject : public Object {
 public:
  ChainObject() = default;
  ChainObject(const ChainObject&) = delete;
  ChainObject& operator=(const ChainObject&) = delete;
  void Convert(int operation, const Block& block) const override;
  json Describe() const override;
  /// The same parts as another, which is not joined yet.
  void TakeParts(const ChainObject& other);
  /// Joins the parts. Throws UserError when they do not go together.
  void Join();

  std::shared_ptr<EllipsoidObject> global;
  std::shared_ptr<DatumObject> datum;
  std::optional<double> fixedHeight;  // at which positions go through the datum
  std::vector<std::shared_ptr<geomath_files::SystemShift>> shifts;
  std::shared_ptr<ProjectionObject> projection;
  std::shared_ptr<GeoidObject> geoid;
  zel_cs::geomath::GeoidFrame geoidFrame = zel_cs::geomath::GeoidFrame::global;
  std::shared_ptr<SiteObject> localization;
  std::shared_ptr<GroundObject> ground;
  double date = zel_cs::geomath::kNoDate;  // of positions that come without one
  double unit = 1, heightUnit = 1;         // metres of the local plane's and of local heights
  zel_cs::geomath::CoordinateChain chain;

 private:
  void RequireOneEllipsoid() const;

  std::optional<zel_cs::geomath::FixedHeightDatum> fixedHeightDatum_;
};

}  // namespace geomath_js
