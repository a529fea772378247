#include "geomath/chain/fixed_height_datum.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/batch.h"
#include "geomath/base/tangent_formulas.h"
#include "geomath/chain/covariance_formulas.h"

namespace zel_cs::geomath {
namespace {

constexpr double kTurn = 6.283185307179586;

// Latitudes and longitudes as results; a longitude keeps the turn that it came with.
void Put(const double* b, const double* l, double* const (&point)[3], std::size_t count) {
  std::copy_n(b, count, point[0]);
  for (std::size_t i = 0; i < count; ++i)
    point[1][i] = l[i] + kTurn * std::round((point[1][i] - l[i]) / kTurn);
}

}  // namespace

void FixedHeightDatum::ForwardBlock(double* const (&point)[3], std::size_t count,
                                    ShiftStatus*) const {
  double b[kMaxPoints], l[kMaxPoints], h[kMaxPoints];
  std::copy_n(point[0], count, b);
  std::copy_n(point[1], count, l);
  std::fill_n(h, count, height_);
  global_.BLH_to_XYZ_Batch(b, l, h, count);
  datum_.ToLocalDatumBatch(b, l, h, count);
  datum_.GetEllipsoid()->XYZ_to_BLH_Batch(b, l, h, count);
  Put(b, l, point, count);
}

void FixedHeightDatum::InverseBlock(double* const (&point)[3], std::size_t count,
                                    ShiftStatus*) const {
  // The height on the datum's ellipsoid that becomes the fixed one: each round leaves the square of
  // the angle between the verticals, 1e-7, of the error.
  constexpr int kRounds = 4;
  double local[kMaxPoints];
  std::fill_n(local, count, height_);
  double b[kMaxPoints], l[kMaxPoints], h[kMaxPoints];
  for (int round = 0; round < kRounds; ++round) {
    std::copy_n(point[0], count, b);
    std::copy_n(point[1], count, l);
    std::copy_n(local, count, h);
    datum_.GetEllipsoid()->BLH_to_XYZ_Batch(b, l, h, count);
    datum_.ToWGS84DatumBatch(b, l, h, count);
    global_.XYZ_to_BLH_Batch(b, l, h, count);
    for (std::size_t i = 0; i < count; ++i) local[i] -= h[i] - height_;
  }
  Put(b, l, point, count);
}

// The horizontal part of the way through the datum at the fixed height.
void FixedHeightDatum::DifferentiateBlock(const double* const (&source)[3], const double*,
                                          std::size_t count, double* const (&jacobian)[9],
                                          ShiftStatus*) const {
  const Ellipsoid& local = *datum_.GetEllipsoid();
  double p[3][kMaxPoints];
  std::copy_n(source[0], count, p[0]);
  std::copy_n(source[1], count, p[1]);
  std::fill_n(p[2], count, height_);
  TimesTangent turn;
  datum_.ToLocalDerivatives(turn.matrix.m);
  const auto& j = jacobian;
  const auto run = [&](const auto& conversion) {
    RunKernel(conversion, {p[0], p[1], p[2], j[0], j[1], j[2], j[3], j[4], j[5], j[6], j[7], j[8]},
              count, [&](double(&c)[12]) {
                conversion.template Convert<simd::Scalar>(c[0], c[1], c[2], c[3], c[4], c[5], c[6],
                                                          c[7], c[8], c[9], c[10], c[11]);
              });
  };
  run(TangentToGeocentric(global_));
  global_.BLH_to_XYZ_Batch(p[0], p[1], p[2], count);
  datum_.ToLocalDatumBatch(p[0], p[1], p[2], count);
  local.XYZ_to_BLH_Batch(p[0], p[1], p[2], count);
  RunKernel(turn, {j[0], j[1], j[2], j[3], j[4], j[5], j[6], j[7], j[8]}, count);
  run(TangentToGeographic(local));
  for (const int heights : {2, 5, 6, 7}) std::fill_n(j[heights], count, 0.0);
  std::fill_n(j[8], count, 1.0);
}

}  // namespace zel_cs::geomath
