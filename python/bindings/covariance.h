#pragma once

#include <span>

#include "python/bindings/columns.h"
#include "python/bindings/objects.h"

namespace geomath_python {

/// What a caller says of uncertainties: the keywords covariance, frame and errors.
struct CovarianceArguments {
  py::object covariance;  // None without
  std::string frame;      // of the global side
  py::object errors;      // a mapping, or None
};

/// Converts positions with their covariances: (first, second, h, covariance), and the steps where they
/// are asked for. `before` and `after` turn the units of coordinates; covariances are metres. A fourth
/// argument has the dates of the points, which else have that of the chain.
py::object ConvertWithCovariance(const ChainObject& chain, bool toLocal,
                                 std::span<const Argument> arguments, const Factors& before,
                                 const Factors& after, const CovarianceArguments& uncertain,
                                 bool returnSteps);

}  // namespace geomath_python
