#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <vector>

#include "files/models/geoid_file.h"
#include "geomath/chain/geoid_models.h"
#include "python/bindings/made.h"

namespace geomath_python {

namespace py = pybind11;

/// The base of what a chain takes as its geoid.
struct GeoidObject {
  virtual ~GeoidObject() = default;
  virtual const zel_cs::geomath::GeoidHeight& Heights() const = 0;
};

struct RegionalGeoidObject : GeoidObject {
  /// `values` in the row order of the scheme.
  RegionalGeoidObject(const geomath_files::GridPlace& where, const geomath_files::GridScheme& how,
                      std::vector<float> values);
  const zel_cs::geomath::GeoidHeight& Heights() const override { return heights; }

  geomath_files::GridPlace place;
  const geomath_files::GridScheme& scheme;
  std::vector<float> nodes;
  geomath_files::GridModel heights;
};

struct GlobalGeoidObject : GeoidObject {
  explicit GlobalGeoidObject(geomath_files::GeoidCoefficients values);
  const zel_cs::geomath::GeoidHeight& Heights() const override { return heights; }

  geomath_files::GeoidCoefficients coefficients;
  std::unique_ptr<zel_cs::geomath::GlobalGeoid> model;
  zel_cs::geomath::GlobalGeoidHeight heights;
};

template <>
inline constexpr bool kBound<GeoidObject> = true;
template <>
inline constexpr bool kBound<RegionalGeoidObject> = true;
template <>
inline constexpr bool kBound<GlobalGeoidObject> = true;

/// The object for a geoid that was read from files; its warning becomes one of Python.
std::shared_ptr<GeoidObject> GeoidObjectOf(const geomath_files::LoadedGeoid& loaded);

void BindGeoid(py::module_& module);

}  // namespace geomath_python
