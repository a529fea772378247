#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

namespace zel_cs::geomath {

/// Runs `convert`, a callable bool(double&, …) on one point, over `count` points in place; the
/// coordinates of point i stand at coordinates[i * stride]. A point that fails, or whose result
/// is not finite, gets quiet NaN in every slot. Returns the number of points converted.
template <class Convert, class... Columns>
std::size_t ConvertEach(Convert&& convert, std::size_t count, std::ptrdiff_t stride,
                        Columns*... columns) {
  std::size_t converted = 0;
  std::ptrdiff_t at = 0;
  for (std::size_t i = 0; i < count; ++i, at += stride) {
    if (convert(columns[at]...) && (std::isfinite(columns[at]) && ...))
      ++converted;
    else
      ((columns[at] = std::numeric_limits<double>::quiet_NaN()), ...);
  }
  return converted;
}

}  // namespace zel_cs::geomath
