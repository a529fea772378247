#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/system/shift_section.h"
#include "files/system/system_sections.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/chain/fixed_height_datum.h"
#include "python/bindings/geoid.h"
#include "python/bindings/made.h"

/// What stands behind the classes of the package: the library's objects with what they point to.
/// All are unchanged once they are made, so that any number of threads may use them.
namespace geomath_python {

namespace py = pybind11;

struct DatumObject {
  std::shared_ptr<zel_cs::geomath::Ellipsoid> ellipsoid;
  zel_cs::geomath::Datum datum;  // on that ellipsoid
};

/// A projection with the values that it was made of, in the units of its kind.
struct ProjectionObject {
  /// `a`, `invF` as for MakeProjection; the axes as AxisRotation knows them.
  ProjectionObject(const geomath_files::ProjectionKind& its, std::vector<double> parameters,
                   double axis, double inverseFlattening, std::string grid, std::string geographic);

  const geomath_files::ProjectionKind& kind;
  std::vector<double> values;
  double a, invF;  // as given: some kinds have an ellipsoid of their own
  std::string gridAxes, geographicAxes;
  std::unique_ptr<zel_cs::geomath::TGeoProj> projection;
};

inline constexpr const char* kNorthEast = "NE";  // axes that need no text

/// A shift of a chain, as an entry of a system file describes it, with the bytes of its files.
struct ChainShiftObject {
  std::string entry;                // JSON
  geomath_files::ShiftBytes bytes;  // none for parameters
  zel_cs::geomath::Ellipsoid global;
  geomath_files::SystemShift shift;
};

struct ChainObject {
  std::shared_ptr<zel_cs::geomath::Ellipsoid> global;
  std::shared_ptr<DatumObject> datum;
  std::optional<double> fixedHeight;  // at which positions go through the datum
  std::vector<std::shared_ptr<ChainShiftObject>> shifts;
  std::shared_ptr<ProjectionObject> projection;
  std::shared_ptr<GeoidObject> geoid;
  double date = zel_cs::geomath::kNoDate;  // of positions that come without one
  zel_cs::geomath::GeoidFrame geoidFrame = zel_cs::geomath::GeoidFrame::global;
  std::shared_ptr<zel_cs::geomath::LocalToGrid> localization;
  geomath_files::SiteErrors siteErrors;  // of the localization
  std::shared_ptr<zel_cs::geomath::GridToGround> ground;
  std::optional<zel_cs::geomath::FixedHeightDatum> fixedHeightDatum;  // of datum and height
  /// Metres of one unit of the local plane and of local heights; the chain's are metres.
  double unit = 1, heightUnit = 1;
  zel_cs::geomath::CoordinateChain chain;  // of those
};

template <>
inline constexpr bool kBound<zel_cs::geomath::Ellipsoid> = true;
template <>
inline constexpr bool kBound<DatumObject> = true;
template <>
inline constexpr bool kBound<ProjectionObject> = true;
template <>
inline constexpr bool kBound<zel_cs::geomath::LocalToGrid> = true;
template <>
inline constexpr bool kBound<zel_cs::geomath::GridToGround> = true;
template <>
inline constexpr bool kBound<ChainShiftObject> = true;
template <>
inline constexpr bool kBound<ChainObject> = true;

/// Joins the chain's steps, which stay the object's.
void Join(ChainObject& object);

void BindEllipsoid(py::module_& module);
void BindDatum(py::module_& module);
void BindProjection(py::module_& module);
void BindGeodesic(py::module_& module);
void BindShift(py::module_& module);
void BindLocal(py::module_& module);
void BindMagnetic(py::module_& module);
void BindChain(py::module_& module);
void BindCalibration(py::module_& module);
void BindDesign(py::module_& module);

}  // namespace geomath_python
