#include "geomath/geodesic/geodesic.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/batch.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/geodesic/geodesic_formulas.h"
#include "geomath/geodesic/geodesic_search.h"
#include "geomath/simd/scalar.h"

// Equation numbers are Karney 2013.
namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kNearSphere = 1.0 / 150;

// The functions of the columns: a single call gives the bits of a batch.
using Math = simd::Polynomial<simd::Baseline>;

bool Valid(double b, double l) { return std::abs(b) <= kHalfPi && std::abs(l) <= kTwoPi; }

// The pairs that the columns do not serve.
void SearchPair(const GeodesicFormulas& g, double (&pair)[4]) {
  auto& [b1, l1, b2, l2] = pair;
  if (!Valid(b1, l1) || !Valid(b2, l2)) return void(std::fill_n(pair, 4, kNaN));
  const GeodesicArc arc = SearchGeodesic(g, b1, b2, FoldTurn(l2 - l1));
  b1 = arc.distance;
  l1 = GeodesicFormulas::Azimuth<Math>(arc.alpha1.sin, arc.alpha1.cos);
  b2 = GeodesicFormulas::Azimuth<Math>(-arc.alpha2.sin, -arc.alpha2.cos);
  l2 = arc.omega12;
}

// One pair, in place, by the formulas that serve it.
void SolvePair(const GeodesicFormulas& g, double (&pair)[4]) {
  auto& [b1, l1, b2, l2] = pair;
  const GeodesicCloseFormulas close{{g}};
  const GeodesicInverseFormulas columns{{g}};
  if (close.Serves(b1, l1, b2, l2))
    close.Convert<Math>(b1, l1, b2, l2);
  else if (columns.Serves(b1, l1, b2, l2))
    columns.Convert<Math>(b1, l1, b2, l2);
  else
    SearchPair(g, pair);
}

// Four columns to three, block by block. Failed elements leave no number.
template <class Convert>
std::size_t ConvertFour(const double* const (&from)[4], double* const (&to)[3], std::size_t count,
                        Convert convert) {
  double columns[4][kBatchBlock];
  std::size_t converted = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t n = std::min(kBatchBlock, count - start);
    for (int c = 0; c < 4; ++c) std::copy_n(from[c] + start, n, columns[c]);
    convert({columns[0], columns[1], columns[2], columns[3]}, n);
    double* const results[3] = {columns[0], columns[1], columns[2]};
    converted += MarkFailures(results, n);
    for (int c = 0; c < 3; ++c) std::copy_n(results[c], n, to[c] + start);
  }
  return converted;
}

}  // namespace

GeodesicLine::GeodesicLine(const GeodesicFormulas& formulas, double b, double l, double azimuth)
    : limit_(GeodesicDirectFormulas{formulas}.Serves(b, l, azimuth, 0)
                 ? GeodesicStart::kMaxArc * formulas.b
                 : 0) {
  *start_ = GeodesicStart::At<Math>(formulas, b, l, azimuth);
}

GeodesicEnd GeodesicLine::At(double distance) const {
  if (!(std::abs(distance) < limit_)) return {kNaN, kNaN, kNaN};
  GeodesicEnd end;
  start_->End<Math>(distance, end.b, end.l, end.backAzimuth);
  return end;
}

Geodesic::Geodesic(const Ellipsoid& ellipsoid)
    : areaScale_(ellipsoid.a * ellipsoid.a * ellipsoid.e2) {
  *formulas_ = {.a = ellipsoid.a,
                .b = ellipsoid.b,
                .f = ellipsoid.f,
                .ep2 = ellipsoid.ep2,
                .nearSphere = std::abs(ellipsoid.f) < kNearSphere,
                .longitude = GeodesicLongitudeSeries::Of(ellipsoid.n)};
  *area_ = GeodesicAreaSeries::Of(ellipsoid.n);
  const double a2 = ellipsoid.a * ellipsoid.a, b2 = ellipsoid.b * ellipsoid.b;
  const double e = std::sqrt(std::abs(ellipsoid.e2));
  const double arc = e == 0 ? 1 : (ellipsoid.e2 > 0 ? Atanh(e) : Atan(e)) / e;
  authalicRadius2_ = (a2 + b2 * arc) / 2;  // 60
}

GeodesicMeasure Geodesic::Inverse(double b1, double l1, double b2, double l2) const {
  double pair[4] = {b1, l1, b2, l2};
  SolvePair(*formulas_, pair);
  return {pair[0], pair[1], pair[2]};
}

GeodesicEnd Geodesic::Direct(double b, double l, double azimuth, double distance) const {
  const GeodesicDirectFormulas columns{*formulas_};
  if (!columns.Serves(b, l, azimuth, distance)) return {kNaN, kNaN, kNaN};
  columns.Convert<Math>(b, l, azimuth, distance);
  return {b, l, azimuth};
}

GeodesicLine Geodesic::Line(double b, double l, double azimuth) const {
  return GeodesicLine(*formulas_, b, l, azimuth);
}

std::size_t Geodesic::InverseBatch(const double* b1, const double* l1, const double* b2,
                                   const double* l2, double* distance, double* azimuth,
                                   double* backAzimuth, std::size_t count) const {
  const GeodesicCloseFormulas close{{*formulas_}};
  const auto solve = [&](double(&pair)[4]) { SolvePair(*formulas_, pair); };
  const auto convert = [&](double* const(&columns)[4], std::size_t n) {
    std::size_t manyClose = 0;  // the kernel is that of most, and the other pairs go one by one
    for (std::size_t i = 0; i < n; ++i)
      manyClose += close.Serves(columns[0][i], columns[1][i], columns[2][i], columns[3][i]);
    if (manyClose > n / 2)
      RunKernel(close, columns, n, solve);
    else
      RunKernel(GeodesicInverseFormulas{{*formulas_}}, columns, n, solve);
  };
  return ConvertFour({b1, l1, b2, l2}, {distance, azimuth, backAzimuth}, count, convert);
}

std::size_t Geodesic::DirectBatch(const double* b, const double* l, const double* azimuth,
                                  const double* distance, double* endB, double* endL,
                                  double* backAzimuth, std::size_t count) const {
  const auto convert = [&](double* const(&columns)[4], std::size_t n) {
    RunKernel(GeodesicDirectFormulas{*formulas_}, columns, n,
              [](double(&point)[4]) { std::fill_n(point, 4, kNaN); });
  };
  return ConvertFour({b, l, azimuth, distance}, {endB, endL, backAzimuth}, count, convert);
}

double Geodesic::EllipsoidArea() const { return 4 * kPi * authalicRadius2_; }

// S12, eqs. 59 and 63: between the geodesic and the equator, positive where it runs east in the
// north.
double Geodesic::EdgeArea(double b1, double l1, double b2, double l2, double& distance) const {
  using Unit = GeodesicFormulas::Unit;
  const GeodesicFormulas& g = *formulas_;
  const GeodesicArc arc = SearchGeodesic(g, b1, b2, FoldTurn(l2 - l1));
  distance = arc.distance;
  if (distance == 0) return 0;
  const Unit beta1 = g.Reduced(GeodesicFormulas::SinCos<simd::Scalar>(b1));
  const Unit beta2 = g.Reduced(GeodesicFormulas::SinCos<simd::Scalar>(b2));

  constexpr double kHalfTurnCos = -0.7;  // beyond, the half angle formula loses digits
  const Unit omega = GeodesicFormulas::SinCos<simd::Scalar>(arc.omega12);
  const Unit turn = GeodesicFormulas::Difference(arc.alpha2, arc.alpha1);
  const double alpha12 =
      omega.cos > kHalfTurnCos
          ? 2 * Atan2(omega.sin * (beta1.sin * (1 + beta2.cos) + beta2.sin * (1 + beta1.cos)),
                      (1 + omega.cos) *
                          (beta1.sin * beta2.sin + (1 + beta1.cos) * (1 + beta2.cos)))  // 64
          : Atan2(turn.sin, turn.cos);

  const double across = arc.alpha1.sin * beta1.sin;
  const double sinAlpha0 = arc.alpha1.sin * beta1.cos;
  const double cosAlpha0 = Hypot(arc.alpha1.cos, across);
  const Unit sigma1 = GeodesicFormulas::Normalised(beta1.sin, arc.alpha1.cos * beta1.cos);
  const Unit sigma2 = GeodesicFormulas::Normalised(beta2.sin, arc.alpha2.cos * beta2.cos);
  const GeodesicTerms<6> c4 = area_->C4(g.Expansion(cosAlpha0));
  const double i4 = c4.OddCosine(sigma2.sin, sigma2.cos) - c4.OddCosine(sigma1.sin, sigma1.cos);
  return authalicRadius2_ * alpha12 + areaScale_ * cosAlpha0 * sinAlpha0 * i4;
}

GeodesicPolygon Geodesic::Area(const double* b, const double* l, std::size_t count) const {
  double area = 0, perimeter = 0, longitude = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t next = i + 1 < count ? i + 1 : 0;
    if (!Valid(b[i], l[i])) return {kNaN, kNaN};
    double distance;
    area += EdgeArea(b[i], l[i], b[next], l[next], distance);
    perimeter += distance;
    longitude += FoldTurn(l[next] - l[i]);
  }
  // About a pole the sum is what remains of a hemisphere (section 6).
  const bool aboutPole = std::lround(longitude / kTwoPi) % 2 != 0;
  const double enclosed = (aboutPole ? EllipsoidArea() / 2 : 0) - area;
  return {std::remainder(enclosed, EllipsoidArea()), perimeter};
}

}  // namespace zel_cs::geomath
