#include "geomath/chain/fixed_height_datum.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/tangent_formulas.h"

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
ShiftStatus FixedHeightDatum::Differentiate(const double (&source)[3],
                                            double (&jacobian)[3][3]) const {
  const Ellipsoid& local = *datum_.GetEllipsoid();
  double p[] = {source[0], source[1], height_};
  const auto from = TangentFrame::At<simd::Scalar>(global_.a, global_.e2, p[0], p[1], p[2]);
  global_.BLH_to_XYZ_Batch(&p[0], &p[1], &p[2], 1);
  datum_.ToLocalDatumBatch(&p[0], &p[1], &p[2], 1);
  local.XYZ_to_BLH_Batch(&p[0], &p[1], &p[2], 1);
  const auto to = TangentFrame::At<simd::Scalar>(local.a, local.e2, p[0], p[1], p[2]);
  Matrix3 turn;
  datum_.ToLocalDerivatives(turn.m);
  turn = to.axes.Transposed() * (turn * from.axes);
  jacobian[0][0] = turn.m[0][0] * from.perLatitude / to.perLatitude;
  jacobian[0][1] = turn.m[0][1] * from.perLongitude / to.perLatitude;
  jacobian[1][0] = turn.m[1][0] * from.perLatitude / to.perLongitude;
  jacobian[1][1] = turn.m[1][1] * from.perLongitude / to.perLongitude;
  return ShiftStatus::converted;
}

}  // namespace zel_cs::geomath
