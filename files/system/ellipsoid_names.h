#pragma once

#include <span>
#include <string>
#include <vector>

namespace geomath_files {

/// A reference ellipsoid that the system file may name.
struct NamedEllipsoid {
  const char* name;  ///< as a system file has it
  double a;          ///< semi-major axis, metres
  double invF;       ///< inverse flattening
};

/// All of them, and their names.
std::span<const NamedEllipsoid> NamedEllipsoids();
std::vector<std::string> EllipsoidNames();

/// The ellipsoid of that name in any letter case, blanks and hyphens ignored; null when unknown.
const NamedEllipsoid* FindEllipsoid(const std::string& name);

}  // namespace geomath_files
