#include "geomath/proj/methods/lc27_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Symbols of Claire 1968: S true distance along the meridian from a point to the central parallel,
// feet, positive south of it; s the same on the map; R map radius, feet; θ angle at the apex;
// x y grid coordinates, feet; ω rectifying latitude; ε kClarke1866E2.
namespace zel_cs::geomath {
namespace {

constexpr double kSeriesUnit = 1e8;  // feet
constexpr int kDistanceSteps = 3;
constexpr double kClarke1866Feet = 20925832.16;  // semi-major axis

// 1 − cos θ, without loss at small angles.
double Versine(double theta) {
  const double half = Sin(theta / 2);
  return 2 * half * half;
}

}  // namespace

constexpr ParamRow TLC27Proj::kParams[] = {
    {"L1", Quantity::coefficient, &TLC27Proj::L1_, ParamUnit::surveyFeet},
    {"L2", Quantity::coefficient, &TLC27Proj::L2_, ParamUnit::arcSeconds},
    {"L3", Quantity::coefficient, &TLC27Proj::L3_, ParamUnit::surveyFeet},
    {"L4", Quantity::coefficient, &TLC27Proj::L4_, ParamUnit::surveyFeet},
    {"L5", Quantity::coefficient, &TLC27Proj::L5_},
    {"L6", Quantity::coefficient, &TLC27Proj::L6_},
    {"L78", Quantity::coefficient, &TLC27Proj::L78_, ParamUnit::arcSeconds},
    {"L9", Quantity::coefficient, &TLC27Proj::L9_},
    {"L10", Quantity::coefficient, &TLC27Proj::L10_},
    {"L11", Quantity::coefficient, &TLC27Proj::L11_},
    {"Zone number", Quantity::zone, &TLC27Proj::zone_},
};

int TLC27Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TLC27Proj::Params() const { return kParams; }

TLC27Proj::TLC27Proj() : TLC27Proj(0, 0, 0, 0, 1.0, 0, 0, 0, 0, 0, 0) {}

TLC27Proj::TLC27Proj(double L1, double L2, double L3, double L4, double L5, double L6, double L78,
                     double L9, double L10, double L11, int zone)
    : TGeoProj(ProjTypeLC27, kParams, kClarke1866A, kClarke1866InvF),
      L1_(L1),
      L2_(L2),
      L3_(L3),
      L4_(L4),
      L5_(L5),
      L6_(L6),
      L78_(L78),
      L9_(L9),
      L10_(L10),
      L11_(L11),
      zone_(zone) {}

double TLC27Proj::FEast() const { return L1_ * kUsSurveyFoot; }

bool TLC27Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(LatitudeFromRectifying1927(L78_), -L2_ / kArcSecondsPerRad, b0, l0, db,
                           dl);
}

// Map distance over true distance of the radius series, before the scale L5.
double TLC27Proj::Stretch(double S) const {
  const double z = S / kSeriesUnit;
  return 1 + z * z * (L9_ - L10_ * z + L11_ * (z * z));
}

PointFactors TLC27Proj::FactorsAt(double R, double theta, double phi) const {
  const double s = Sin(phi);
  return {.scale = L6_ * R * std::sqrt(1 - kClarke1866E2 * (s * s)) / (kClarke1866Feet * Cos(phi)),
          .convergence = theta};
}

bool TLC27Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, delta = l * kArcSecondsPerRad + L2_;
  const double S = kFeetPerRectifyingSecond * (L78_ - RectifyingLatitude1927(phi));
  const double R = L3_ + L5_ * S * Stretch(S);
  const double theta = L6_ * delta / kArcSecondsPerRad;

  if (factors) *factors = FactorsAt(R, theta, phi);
  b = (L4_ - R + R * Versine(theta)) * kUsSurveyFoot;
  l = (L1_ + R * Sin(theta)) * kUsSurveyFoot;
  return true;
}

bool TLC27Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const double x = e / kUsSurveyFoot, y = n / kUsSurveyFoot;
  const double theta = Atan((x - L1_) / (L4_ - y));
  const double R = (L4_ - y) / Cos(theta);
  const double s = (L4_ - L3_ - y + R * Versine(theta)) / L5_;
  double S = s;
  for (int i = 0; i < kDistanceSteps; ++i) S = s / Stretch(S);
  const double phi = LatitudeFromRectifying1927(L78_ - kRectifyingSecondsPerFoot * S);

  if (factors) *factors = FactorsAt(R, theta, phi);
  n = phi;
  e = (theta * kArcSecondsPerRad / L6_ - L2_) / kArcSecondsPerRad;
  return true;
}

}  // namespace zel_cs::geomath
