#include "geomath/proj/methods/ak29_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Constants are the source's, of Clarke 1866; its cosine powers stand for sines too, which only
// holds in the north: here sines are sines. Symbols:
//   s c t  of the latitude   h = 1 + e′²·c²   T east of the meridian, 1e4 arc-seconds (forward) or
//   1e6 feet (inverse)       ω omega  rectifying latitude
namespace zel_cs::geomath {
namespace {

constexpr double kScale = 0.9999;                    // on the central meridian
constexpr double kOriginArc = 193900.05442;          // rectifying latitude of 54° N, arc-seconds
constexpr double kFeetPerArcSecond = 101.269278503;  // of rectifying latitude, scaled
constexpr double kArcSecondPerFoot = 0.00987466302498;

// Scale and convergence at a point `east` 1e6 feet and T 1e4 arc-seconds from the meridian.
PointFactors FactorsAt(SineCosine phi, double T, double east) {
  const auto [s, c] = phi;
  const double c2 = c * c, c4 = c2 * c2, T2 = T * T, h = 1 + kClarke1866Ep2 * c2;
  const double gamma = s * T *
                       (1e4 + T2 * (7.83481 * (c2 + 0.02044 * c4 + 9e-5 * (c2 * c4)) +
                                    T2 * 0.003683 * (3 * c4 - c2)));
  return {.scale = kScale * (1 + h * h * (east * east) / 881.57282),
          .convergence = gamma * kRadPerArcSecond};
}

}  // namespace

constexpr ParamRow TAK29Proj::kParams[] = {
    {"C", Quantity::coefficient, &TAK29Proj::C_, ParamUnit::surveyFeet},
    {"CM", Quantity::longitude, &TAK29Proj::cm_, ParamUnit::arcSeconds},
    {"Zone number", Quantity::zone, &TAK29Proj::zone_},
};

int TAK29Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TAK29Proj::Params() const { return kParams; }

TAK29Proj::TAK29Proj() : TAK29Proj(500000, 511200, 5002) {}

TAK29Proj::TAK29Proj(double C, double cm, int zone)
    : TGeoProj(ProjTypeAK29, kParams, kClarke1866A, kClarke1866InvF), C_(C), cm_(cm), zone_(zone) {}

double TAK29Proj::FEast() const { return C_ * kUsSurveyFoot; }

bool TAK29Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(-cm_ / kArcSecondsPerRad, b0, l0, db, dl);
}

bool TAK29Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto [s, c] = SinCos(b);
  const double c2 = c * c, c4 = c2 * c2, c6 = c4 * c2;
  const double root = std::sqrt(1 + kClarke1866Ep2 * c2);
  const double T = (l * kArcSecondsPerRad + cm_) / 1e4, T2 = T * T;

  const double east = 1017862.150 * c / root * T *
                      (1 - 3.91740509e-4 * T2 * (1 - 2 * c2 - 0.00681478 * c4) +
                       4.60382e-8 * (T2 * T2) * (1 - 20 * c2 + 23.6047 * c4 + 0.4907 * c6));
  const double arc =
      b * kArcSecondsPerRad - kOriginArc - (1052.893943 - c2 * (4.483386 - c2 * 0.023559)) * s * c;
  const double north = kFeetPerArcSecond * arc +
                       24673.67480 * s * c / root * T2 *
                           (1 + 1.95870e-4 * T2 * (-1 + 6 * c2 + 0.06133306 * c4 + 1.8577e-4 * c6) +
                            1.5346e-8 * (T2 * T2) * (1 - 60 * c2 + 117.75 * c4 + 4.089 * c6));

  if (factors) *factors = FactorsAt({s, c}, T, east / 1e6);
  b = north * kUsSurveyFoot;
  l = (C_ + east) * kUsSurveyFoot;
  return true;
}

bool TAK29Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const double y = n / kUsSurveyFoot, T = (e / kUsSurveyFoot - C_) / 1e6, T2 = T * T;
  const double omega = (kOriginArc + kArcSecondPerFoot * y) / kArcSecondsPerRad;
  const auto [sinW, cosW] = SinCos(omega);
  const double cosW2 = cosW * cosW;
  const double phiF = omega + (1047.546691 + cosW2 * (6.193011 + cosW2 * 0.050699)) * sinW * cosW /
                                  kArcSecondsPerRad;  // footpoint

  const auto [s, c] = SinCos(phiF);
  const double t = s / c;
  const double c2 = c * c, c4 = c2 * c2, h = 1 + kClarke1866Ep2 * c2;
  const double dPhi =
      233.9736450 * T2 * (h * h) * t *
      (1 - 1.89056040e-4 * T2 * (1.9591113 + 3 / c2 + 0.081359 * c2 + 2.79e-4 * c4) +
       1.42969e-8 * (T2 * T2) * h * (15.5 + 45 / c4 - 0.307 / c2 + 1.53 * c2));
  const double dLambda =
      9824.513072 * std::sqrt(h) / c * T *
      (1 - 3.78112080e-4 * h * T2 * (-1 + 2 / c2 + kClarke1866Ep2 * c2) +
       4.2890624e-8 * (h * h) * (T2 * T2) * (1.054 + 24 / c4 - 20 / c2 - 0.0136 * c2));

  const double phi = phiF - dPhi / kArcSecondsPerRad;
  if (factors) *factors = FactorsAt(SinCos(phi), dLambda / 1e4, T);
  n = phi;
  e = (dLambda - cm_) / kArcSecondsPerRad;
  return true;
}

}  // namespace zel_cs::geomath
