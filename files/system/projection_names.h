#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/proj/geo_proj.h"

namespace geomath_files {

/// How a parameter of a projection is written in a system file.
enum class ParameterUnit { latitude, degrees, metres, factor, number };

/// "degrees" or "metres"; empty for a plain number.
const char* UnitName(ParameterUnit unit);

/// A parameter of a projection.
struct ProjectionParameter {
  std::string name;      ///< the key of a system file
  std::string quantity;  ///< what it is: "latitude", "easting", "scale factor", …
  ParameterUnit unit;    ///< of its values in a system file
};

/// A projection that a system file may name, with its parameters in index order.
struct ProjectionKind {
  std::string name;                             ///< as a system file has it
  int code;                                     ///< that its objects report
  std::vector<ProjectionParameter> parameters;  ///< in index order
};

/// A projection with its kind and the values of its parameters, in the units of the kind.
struct NamedProjection {
  const ProjectionKind* kind = nullptr;  ///< one of ProjectionKinds(); null for none
  std::vector<double> values;            ///< in the order of the kind
  std::unique_ptr<zel_cs::geomath::TGeoProj> projection;  ///< null for none
};

/// All of them: every name of the library's factory, with the parameters that the library describes,
/// and "TM".
const std::vector<ProjectionKind>& ProjectionKinds();

/// Their names.
std::vector<std::string> ProjectionNames();

/// The projection of that name in any letter case; null when unknown.
const ProjectionKind* FindProjection(const std::string& name);

/// A new projection of that kind on the ellipsoid; `values` in the units and order of its
/// parameters.
std::unique_ptr<zel_cs::geomath::TGeoProj> MakeProjection(const ProjectionKind& kind, double a,
                                                          double invF,
                                                          const std::vector<double>& values);

}  // namespace geomath_files
