#include "geomath/shift/coordinate_offset.h"

namespace zel_cs::geomath {

void CoordinateOffset::ForwardBlock(double* const (&point)[3], std::size_t count,
                                    ShiftStatus*) const {
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t i = 0; i < count; ++i) point[c][i] += offset_[c];
}

void CoordinateOffset::InverseBlock(double* const (&point)[3], std::size_t count,
                                    ShiftStatus*) const {
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t i = 0; i < count; ++i) point[c][i] -= offset_[c];
}

void CoordinateOffset::DifferentiateBlock(const double* const (&)[3], const double*, std::size_t,
                                          double* const (&)[9], ShiftStatus*) const {}

}  // namespace zel_cs::geomath
