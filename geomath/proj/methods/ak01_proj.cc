#include "geomath/proj/methods/ak01_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/hyperbolic.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Symbols are the source's; its ψ is the isometric latitude, its longitudes count west.
namespace zel_cs::geomath {
namespace {

constexpr double kSinAxis = 0.6, kCosAxis = 0.8;  // of the turn, −atan(3/4), sign apart
constexpr double kFalseEasting = 5000000, kFalseNorthing = -5000000;  // metres
constexpr double kCentreLat = 57 * kRadPerDeg;
constexpr double kCentreLon = -(133 + 40.0 / 60) * kRadPerDeg;

// Conformal to geodetic latitude on Clarke 1866, as published.
double GeodeticLatitude(double psi) {
  const SinhCosh pair = HyperbolicPair(psi);
  const double s = pair.sinh / pair.cosh, c = 1 / pair.cosh, c2 = c * c;
  return Atan(pair.sinh) +
         (0.006761032571 + c2 * (0.000053172205 + c2 * (5.73027e-7 + c2 * 7.128e-9))) * s * c;
}

}  // namespace

constexpr ParamRow TAK01Proj::kParams[] = {
    {"A", Quantity::coefficient, &TAK01Proj::A_},
    {"B", Quantity::coefficient, &TAK01Proj::B_},
    {"C", Quantity::coefficient, &TAK01Proj::C_},
    {"D", Quantity::coefficient, &TAK01Proj::D_},
    {"F", Quantity::coefficient, &TAK01Proj::F_},
    {"G", Quantity::coefficient, &TAK01Proj::G_},
    {"H", Quantity::coefficient, &TAK01Proj::H_},
    {"I", Quantity::coefficient, &TAK01Proj::I_},
    {"e", Quantity::coefficient, &TAK01Proj::e_},
    {"epsilon", Quantity::coefficient, &TAK01Proj::epsilon_},
    {"Lon0", Quantity::longitude, &TAK01Proj::lon0_, ParamUnit::arcSeconds},
    {"Zone number", Quantity::zone, &TAK01Proj::zone_},
};

int TAK01Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TAK01Proj::Params() const { return kParams; }

TAK01Proj::TAK01Proj()
    : TAK01Proj(6388906.015, 1.00029977273, 0.00447599131, 6386352.67013, 0.327015517176,
                0.945018968871, 0.3460412203, 1.0015773595, 0.082271854223003, 0.0825517107,
                365450.51319, 5001) {}

TAK01Proj::TAK01Proj(double A, double B, double C, double D, double F, double G, double H, double I,
                     double e, double epsilon, double lon0, int zone)
    : TGeoProj(ProjTypeAK01, kParams, kClarke1866A, kClarke1866InvF),
      A_(A),
      B_(B),
      C_(C),
      D_(D),
      F_(F),
      G_(G),
      H_(H),
      I_(I),
      e_(e),
      epsilon_(epsilon),
      lon0_(lon0),
      zone_(zone) {}

double TAK01Proj::FEast() const { return kFalseEasting; }
double TAK01Proj::FNorth() const { return kFalseNorthing; }

bool TAK01Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(kCentreLat, kCentreLon, b0, l0, db, dl);
}

TAK01Proj::Aposphere TAK01Proj::At(double sinPhi, double cosPhi, double lambda) const {
  const double x = B_ * IsometricLatitude(sinPhi, cosPhi, e_) + C_;
  const double L = -B_ * (lambda + lon0_ / kArcSecondsPerRad);
  const auto [P, Q] = HyperbolicPair(x);
  const auto [sinL, cosL] = SinCos(L);
  return {P, Q, sinL, cosL};
}

PointFactors TAK01Proj::FactorsAt(const Aposphere& at, double sinPhi, double cosPhi,
                                  double cosU) const {
  const auto& [P, Q, sinL, cosL] = at;
  const double w = std::sqrt(1 - e_ * e_ * (sinPhi * sinPhi));
  return {.scale = I_ * w * cosU / (cosPhi * cosL),
          .convergence = Atan((3 * Q * cosL - 4 * P * sinL - 4 * H_) /
                              (4 * Q * cosL + 3 * P * sinL + 3 * H_))};
}

bool TAK01Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto [sinPhi, cosPhi] = SinCos(b);
  const Aposphere at = At(sinPhi, cosPhi, l);
  const auto& [P, Q, sinL, cosL] = at;
  const double angle = Atan((G_ * P + F_ * sinL) / cosL);
  const double side = F_ * P - G_ * sinL;
  const double u = D_ * angle, v = D_ / 2 * Log((Q + side) / (Q - side));

  if (factors) *factors = FactorsAt(at, sinPhi, cosPhi, Cos(angle));
  b = kCosAxis * u + kSinAxis * v + kFalseNorthing;
  l = kCosAxis * v - kSinAxis * u + kFalseEasting;
  return true;
}

bool TAK01Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const double y = n - kFalseNorthing, x = e - kFalseEasting;
  const double u = kCosAxis * y - kSinAxis * x, v = kSinAxis * y + kCosAxis * x;
  const auto [R, S] = HyperbolicPair(v / D_);
  const auto [sinU, cosU] = SinCos(u / D_);

  const double side = F_ * R + G_ * sinU;
  const double phi = GeodeticLatitude((Log((S + side) / (S - side)) / 2 - C_) / B_);
  const double lambda = -(lon0_ / kArcSecondsPerRad + Atan((F_ * sinU - G_ * R) / cosU) / B_);
  if (factors) {
    const auto [sinPhi, cosPhi] = SinCos(phi);
    *factors = FactorsAt(At(sinPhi, cosPhi, lambda), sinPhi, cosPhi, cosU);
  }
  n = phi;
  e = lambda;
  return true;
}

}  // namespace zel_cs::geomath
