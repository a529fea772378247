#include "geomath/proj/methods/tm_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/central_point.h"

// Terms I to XIIA are those of the Ordnance Survey guide, annexe C; equation numbers are its own.
//   λ0 lambda0_  central meridian    k0 k0_    scale on it     ν nu, ρ rho  scaled radii
//   φ0 phi0_     origin              η² eta2                   M            scaled arc from φ0
namespace zel_cs::geomath {
namespace {

constexpr double kFootpointTolerance = 0.001;  // metres of arc
constexpr int kMaxFootpointCorrections = 10;

}  // namespace

std::span<const ParamRow<TTMProj>> TTMProj::Params() {
  static constexpr ParamRow<TTMProj> rows[] = {
      {&TTMProj::lambda0_, ParamKind::angle},
      {&TTMProj::k0_, ParamKind::scale, &TTMProj::Prepare},
      {&TTMProj::phi0_, ParamKind::angle, &TTMProj::Prepare},
      {&TTMProj::fEast_, ParamKind::length},
      {&TTMProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TTMProj::TTMProj() : TTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TTMProj::TTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
                 double fNorth)
    : TGeoProj(ProjTypeTM, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TTMProj::Prepare();
}

void TTMProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

void TTMProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

double TTMProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TTMProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TTMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TTMProj::Prepare() {
  const double n = ell_.n, n2 = n * n, n3 = n2 * n;
  aK0_ = ell_.a * k0_;
  bK0_ = ell_.b * k0_;
  sin0_ = std::sin(phi0_);
  cos0_ = std::cos(phi0_);
  m1_ = 1 + n + 5.0 / 4 * n2 + 5.0 / 4 * n3;
  m2_ = 3 * n + 3 * n2 + 21.0 / 8 * n3;
  m3_ = 15.0 / 8 * (n2 + n3);
  m4_ = 35.0 / 24 * n3;
}

TTMProj::Curvature TTMProj::CurvatureAt(double sinPhi) const {
  const double w2 = 1 - ell_.e2 * (sinPhi * sinPhi);
  const double nu = aK0_ / std::sqrt(w2);      // C1
  const double rho = nu * (1 - ell_.e2) / w2;  // C2, first part
  return {nu, rho, nu / rho - 1};              // C2, second part
}

// C3. Sines and cosines of multiples of φ − φ0 and φ + φ0 come from those of φ and φ0.
double TTMProj::ArcFromOrigin(double phi, double sinPhi, double cosPhi) const {
  const double sinD = sinPhi * cos0_ - cosPhi * sin0_, cosD = cosPhi * cos0_ + sinPhi * sin0_;
  const double sinS = sinPhi * cos0_ + cosPhi * sin0_, cosS = cosPhi * cos0_ - sinPhi * sin0_;
  const double sin2D = 2 * sinD * cosD, cos2S = cosS * cosS - sinS * sinS;
  const double sin3D = sinD * (3 - 4 * sinD * sinD), cos3S = cosS * (4 * cosS * cosS - 3);
  return bK0_ *
         (m1_ * (phi - phi0_) - m2_ * sinD * cosS + m3_ * sin2D * cos2S - m4_ * sin3D * cos3S);
}

bool TTMProj::ForwardPoint(double& b, double& l, PointFactors*) const {
  const double phi = b;
  const double s = std::sin(phi), c = std::cos(phi), t = s / c;
  const double t2 = t * t, t4 = t2 * t2, c2 = c * c, c3 = c2 * c, c5 = c3 * c2;
  const auto [nu, rho, eta2] = CurvatureAt(s);

  const double I = ArcFromOrigin(phi, s, c) + fNorth_;
  const double II = nu / 2 * s * c;
  const double III = nu / 24 * s * c3 * (5 - t2 + 9 * eta2);
  const double IIIA = nu / 720 * s * c5 * (61 - 58 * t2 + t4);
  const double IV = nu * c;
  const double V = nu / 6 * c3 * (nu / rho - t2);
  const double VI = nu / 120 * c5 * (5 - 18 * t2 + t4 + 14 * eta2 - 58 * t2 * eta2);

  const double d = SetValue(l - lambda0_, 1), d2 = d * d;
  b = I + d2 * (II + d2 * (III + d2 * IIIA));  // C4
  l = fEast_ + d * (IV + d2 * (V + d2 * VI));  // C5
  return true;
}

bool TTMProj::InversePoint(double& n, double& e, PointFactors*) const {
  const double northing = n - fNorth_;
  double phi = northing / aK0_ + phi0_;  // C6
  double s = std::sin(phi), c = std::cos(phi);
  double rest = northing - ArcFromOrigin(phi, s, c);
  for (int i = 0; i < kMaxFootpointCorrections && std::abs(rest) >= kFootpointTolerance; ++i) {
    phi += rest / aK0_;  // C7
    s = std::sin(phi);
    c = std::cos(phi);
    rest = northing - ArcFromOrigin(phi, s, c);
  }

  const double t = s / c, t2 = t * t, t4 = t2 * t2, t6 = t4 * t2;
  const auto [nu, rho, eta2] = CurvatureAt(s);
  const double nu2 = nu * nu, nu3 = nu2 * nu, nu5 = nu3 * nu2, nu7 = nu5 * nu2;
  const double VII = t / (2 * rho * nu);
  const double VIII = t / (24 * rho * nu3) * (5 + 3 * t2 + eta2 - 9 * t2 * eta2);
  const double IX = t / (720 * rho * nu5) * (61 + 90 * t2 + 45 * t4);
  const double X = 1 / (c * nu);
  const double XI = 1 / (6 * c * nu3) * (nu / rho + 2 * t2);
  const double XII = 1 / (120 * c * nu5) * (5 + 28 * t2 + 24 * t4);
  const double XIIA = 1 / (5040 * c * nu7) * (61 + 662 * t2 + 1320 * t4 + 720 * t6);

  const double d = e - fEast_, d2 = d * d;
  n = phi - d2 * (VII - d2 * (VIII - d2 * IX));                 // C8
  e = lambda0_ + d * (X - d2 * (XI - d2 * (XII - d2 * XIIA)));  // C9
  return true;
}

}  // namespace zel_cs::geomath
