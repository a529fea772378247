#pragma once

#include <cstddef>
#include <cstring>

namespace zel_cs::geomath {

/// Whether the points of a block have one date, bit for bit, as those of a job do.
inline bool IsOneDate(const double* dates, std::size_t count) {
  return count < 2 || std::memcmp(dates, dates + 1, (count - 1) * sizeof(double)) == 0;
}

}  // namespace zel_cs::geomath
