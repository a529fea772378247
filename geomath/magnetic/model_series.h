#pragma once

#include <string_view>

#include "geomath/export.h"
#include "geomath/magnetic/coefficient_file.h"
#include "geomath/magnetic/magnetic_model.h"

namespace zel_cs::geomath {

/// Reads what ReadCoefficientFile does, as a series of one, and besides it the layout .shc
/// (spherical harmonic coefficients) of the International Geomagnetic Reference Field (Alken et al.
/// 2021): comments after '#', of which the first names the model; a line "n_min n_max epochs
/// spline-order steps" of which the lowest degree must be 1 and the order 2, that is linear; a line
/// of the epochs; then lines "n m" with g (m from 0) or h (m below 0) of each epoch, nT, every term
/// once.
///
/// The path is as that of ReadCoefficientFile. Empty when there is nothing to use; `fault`, unless null, then says why.
GEOMATH_API MagneticModelSeries ReadModelSeries(const char* path,
                                                CoefficientFault* fault = nullptr) noexcept;

/// The same from the text of a file.
GEOMATH_API MagneticModelSeries ParseModelSeries(std::string_view text,
                                                 CoefficientFault* fault = nullptr) noexcept;

}  // namespace zel_cs::geomath
