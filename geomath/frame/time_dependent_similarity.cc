#include "geomath/frame/time_dependent_similarity.h"

#include <algorithm>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/frame/similarity_formulas.h"

namespace zel_cs::geomath {
namespace {

template <class Conversion>
void Run(const Conversion& conversion, double* const (&point)[3], const double* dates,
         std::size_t count) {
  double date[kBatchBlock];
  std::copy_n(dates, count, date);
  RunKernel(conversion, {point[0], point[1], point[2], date}, count);
}

}  // namespace

TimeDependentSimilarity::TimeDependentSimilarity(const TimeDependentParameters& parameters,
                                                 ShiftKind kind)
    : DatedShift(ShiftSpace::geocentric, kind) {
  const TimeDependentParameters& p = parameters;
  const double sign = p.sense == RotationSense::positionVector ? 1 : -1;
  for (int i = 0; i < 3; ++i) {
    similarity_->shift.value[i] = p.shift[i];
    similarity_->shift.rate[i] = p.shiftRate[i];
    similarity_->rotation.value[i] = sign * p.rotation[i] * kRadPerArcSecond;
    similarity_->rotation.rate[i] = sign * p.rotationRate[i] * kRadPerArcSecond;
  }
  similarity_->scale = p.scale;
  similarity_->scaleRate = p.scaleRate;
  similarity_->epoch = p.epoch;
}

void TimeDependentSimilarity::ForwardAt(double* const (&point)[3], const double* dates,
                                        std::size_t count, ShiftStatus*) const {
  Run(SimilarityForward{*similarity_}, point, dates, count);
}

void TimeDependentSimilarity::InverseAt(double* const (&point)[3], const double* dates,
                                        std::size_t count, ShiftStatus*) const {
  Run(SimilarityInverse{*similarity_}, point, dates, count);
}

}  // namespace zel_cs::geomath
