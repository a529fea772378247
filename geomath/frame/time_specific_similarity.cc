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

}  // namespace zel_cs::geomath
