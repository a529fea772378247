#include "geomath/frame/time_specific_similarity.h"

namespace zel_cs::geomath {

void TimeSpecificSimilarity::ForwardAt(double* const (&point)[3], const double*, std::size_t count,
                                       ShiftStatus* status) const {
  similarity_.ForwardBatch(point[0], point[1], point[2], count, 1, status);
}

void TimeSpecificSimilarity::InverseAt(double* const (&point)[3], const double*, std::size_t count,
                                       ShiftStatus* status) const {
  similarity_.InverseBatch(point[0], point[1], point[2], count, 1, status);
}

void TimeSpecificSimilarity::DifferentiateAt(const double* const (&source)[3], const double*,
                                             std::size_t count, double* const (&jacobian)[9],
                                             ShiftStatus* status) const {
  similarity_.ForwardDerivativesBatch(PointDates(), source[0], source[1], source[2], jacobian,
                                      count, status);
}

}  // namespace zel_cs::geomath
