#include "geomath/proj/methods/tm27_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Symbols of Claire 1968: S1, Sm distances from the central meridian on the ellipsoid and on its
// map of scale 1, metres; Sg the same on the grid, feet; φ1, φ2 footpoint latitudes; ω rectifying
// latitude; Δ arc-seconds east of the central meridian; ε kClarke1866E2.
namespace zel_cs::geomath {
namespace {

constexpr double kMetresPerArcSecond = 30.92241724;  // of the equator
constexpr double kFootpoint = 2.552381e-9;           // ρ″/(2·a²·(1 − ε)), per square metre
constexpr double kScaleRadius2 = 881.749162;         // 2·a²/(1 − ε), (10⁶ feet)²
constexpr double kConvergenceCubic = 1.9587e-12;     // sin²1″/12

// The small corrections of the method: x + c·(x/unit)³.
struct Cubic {
  double c, unit;

  double Add(double x) const {
    const double u = x / unit;
    return x + c * (u * u * u);
  }
  // The x whose Add is y, by two substitutions. Publications often stop after the first, which
  // moves the result by 0.15 mm at 1° from the meridian and 5 mm at 2°.
  double Remove(double y) const {
    const double u = y / unit, v = (y - c * (u * u * u)) / unit;
    return y - c * (v * v * v);
  }
};

constexpr Cubic kArc{-3.9174, 1e4};      // arc to sine, of Δ
constexpr Cubic kDistance{4.0831, 1e5};  // of S1
constexpr double kGridUnit = 1e5;        // feet, of L6

double W2(double sinPhi) { return 1 - kClarke1866E2 * (sinPhi * sinPhi); }

// What the foot of the perpendicular on the central meridian lies beyond a latitude, arc-seconds.
double FootpointSeconds(double phi, double Sm) {
  const double w2 = W2(Sin(phi));
  return kFootpoint * (Sm * Sm) * (w2 * w2) * Tan(phi);
}

}  // namespace

constexpr ParamRow TTM27Proj::kParams[] = {
    {"L1", Quantity::coefficient, &TTM27Proj::L1_, ParamUnit::surveyFeet},
    {"L2", Quantity::coefficient, &TTM27Proj::L2_, ParamUnit::arcSeconds},
    {"L34", Quantity::coefficient, &TTM27Proj::L34_, ParamUnit::arcSeconds},
    {"L5", Quantity::coefficient, &TTM27Proj::L5_},
    {"L6", Quantity::coefficient, &TTM27Proj::L6_},
    {"Zone number", Quantity::zone, &TTM27Proj::zone_},
};

int TTM27Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TTM27Proj::Params() const { return kParams; }

TTM27Proj::TTM27Proj() : TTM27Proj(0, 0, 0, 1.0, 0, 0) {}

TTM27Proj::TTM27Proj(double L1, double L2, double L34, double L5, double L6, int zone)
    : TGeoProj(ProjTypeTM27, kParams, kClarke1866A, kClarke1866InvF),
      L1_(L1),
      L2_(L2),
      L34_(L34),
      L5_(L5),
      L6_(L6),
      zone_(zone) {}

double TTM27Proj::FEast() const { return L1_ * kUsSurveyFoot; }

bool TTM27Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(-L2_ / kArcSecondsPerRad, b0, l0, db, dl);
}

PointFactors TTM27Proj::FactorsAt(double gridFeet, double delta, double phi, double foot) const {
  const double c = Cos(phi), curvature = 1 + kClarke1866Ep2 * (c * c);
  const double x = curvature * gridFeet / (1e6 * L5_);
  const double mid = (phi + foot) / 2, sinMid = Sin(mid), cosMid = Cos(mid);
  const double seconds =
      delta * (sinMid + kConvergenceCubic * (delta * delta) * sinMid * (cosMid * cosMid));
  return {.scale = L5_ * (1 + x * x / kScaleRadius2), .convergence = seconds / kArcSecondsPerRad};
}

bool TTM27Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, delta = l * kArcSecondsPerRad + L2_;
  const double S1 = kMetresPerArcSecond * Cos(phi) / std::sqrt(W2(Sin(phi))) * kArc.Add(delta);
  const double Sm = kDistance.Add(S1);
  const double Sg = Sm * L5_ / kUsSurveyFoot;
  const double gridFeet = Cubic{L6_, kGridUnit}.Add(Sg);

  const double phi1 = phi + FootpointSeconds(phi, Sm) / kArcSecondsPerRad;
  const double phi2 = phi + FootpointSeconds(phi1, Sm) / kArcSecondsPerRad;
  const double y = kFeetPerRectifyingSecond * L5_ * (RectifyingLatitude1927(phi2) - L34_);

  if (factors) *factors = FactorsAt(gridFeet, delta, phi, phi2);
  b = y * kUsSurveyFoot;
  l = (L1_ + gridFeet) * kUsSurveyFoot;
  return true;
}

bool TTM27Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const double gridFeet = e / kUsSurveyFoot - L1_, y = n / kUsSurveyFoot;
  const double Sm = kUsSurveyFoot * Cubic{L6_, kGridUnit}.Remove(gridFeet) / L5_;
  const double foot = LatitudeFromRectifying1927(L34_ + kRectifyingSecondsPerFoot * y / L5_);
  const double phi = foot - FootpointSeconds(foot, Sm) / kArcSecondsPerRad;
  const double S1 = kDistance.Remove(Sm);
  const double delta = kArc.Remove(S1 * std::sqrt(W2(Sin(phi))) / (kMetresPerArcSecond * Cos(phi)));

  if (factors) *factors = FactorsAt(gridFeet, delta, phi, foot);
  n = phi;
  e = (delta - L2_) / kArcSecondsPerRad;
  return true;
}

}  // namespace zel_cs::geomath
