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

struct ProjectionParameter {
  std::string name;
  std::string quantity;  // what it is: "latitude", "easting", "scale factor", …
  ParameterUnit unit;
};

/// A projection that a system file may name, with its parameters in index order.
struct ProjectionKind {
  std::string name;
  int code;  // that its objects report
  std::vector<ProjectionParameter> parameters;
};

/// A projection with its kind and the values of its parameters, in the units of the kind.
struct NamedProjection {
  const ProjectionKind* kind = nullptr;
  std::vector<double> values;
  std::unique_ptr<zel_cs::geomath::TGeoProj> projection;
};

/// All of them: every name of the library's factory, with the parameters that the library describes,
/// and "TM".
const std::vector<ProjectionKind>& ProjectionKinds();

std::vector<std::string> ProjectionNames();

/// The projection of that name in any letter case; null when unknown.
const ProjectionKind* FindProjection(const std::string& name);

/// A new projection of that kind on the ellipsoid; `values` in the units and order of its
/// parameters.
std::unique_ptr<zel_cs::geomath::TGeoProj> MakeProjection(const ProjectionKind& kind, double a,
                                                          double invF,
                                                          const std::vector<double>& values);

}  // namespace geomath_files
