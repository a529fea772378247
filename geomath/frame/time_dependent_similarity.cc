#include "geomath/frame/time_dependent_similarity.h"

#include <algorithm>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/frame/one_date.h"
#include "geomath/frame/similarity_formulas.h"

namespace zel_cs::geomath {
namespace {

// Points at one date, as those of a job are, share their parameters.
void Run(const RunningSimilarity& similarity, bool inverse, double* const (&point)[3],
         const double* dates, std::size_t count) {
  if (IsOneDate(dates, count)) {
    const double date = dates[0];
    return inverse ? RunKernel(SimilarityInverse{similarity.At(date)}, point, count)
                   : RunKernel(SimilarityForward{similarity.At(date)}, point, count);
  }
  double date[kBatchBlock];
  std::copy_n(dates, count, date);
  double* const columns[] = {point[0], point[1], point[2], date};
  return inverse ? RunKernel(DatedSimilarityInverse{similarity}, columns, count)
                 : RunKernel(DatedSimilarityForward{similarity}, columns, count);
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
  Run(*similarity_, false, point, dates, count);
}

void TimeDependentSimilarity::InverseAt(double* const (&point)[3], const double* dates,
                                        std::size_t count, ShiftStatus*) const {
  Run(*similarity_, true, point, dates, count);
}

void TimeDependentSimilarity::DifferentiateAt(const double* const (&)[3], const double* dates,
                                              std::size_t count, double* const (&jacobian)[9],
                                              ShiftStatus*) const {
  Turn(false, jacobian, dates, count);
}

// Vectors are converted as positions are, without the shift.
void TimeDependentSimilarity::Turn(bool inverse, double* const (&matrix)[9], const double* dates,
                                   std::size_t count) const {
  RunningSimilarity linear = *similarity_;
  linear.shift = {};
  for (int c = 0; c < 3; ++c) {
    double* const column[] = {matrix[c], matrix[3 + c], matrix[6 + c]};
    Run(linear, inverse, column, dates, count);
  }
}

}  // namespace zel_cs::geomath
