#pragma once

#include <optional>
#include <string_view>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// The finite decimal number that the whole text is, the same under every locale: digits with a
/// decimal point or without, a sign before them and an exponent after e, E, d or D (as Fortran
/// programs write it) where wanted. Nothing for any other text: blanks around the figure, a decimal
/// comma, letters after it, "nan" or "inf", what a double does not hold.
GEOMATH_API std::optional<double> ReadNumber(std::string_view text) noexcept;

/// The same for a whole number of decimal digits.
GEOMATH_API std::optional<int> ReadInteger(std::string_view text) noexcept;

}  // namespace zel_cs::geomath
