#include "geomath/proj/methods/tm_proj.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/tm_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr int kMaxFootpointCorrections = 10;

// Where four corrections suffice.
constexpr double kMaxE2 = 0.0075;       // of an Earth ellipsoid
constexpr double kMaxNorthing = 2.1e7;  // metres
constexpr double kMaxRadius = 1e10;     // metres; digits of a latitude still tell 0.01 mm of it

}  // namespace

constexpr ParamRow TTMProj::kParams[] = {
    {"Central Meridian", Quantity::longitude, &TTMProj::lambda0_},
    {"Scale", Quantity::scale, &TTMProj::k0_},
    {"Lat0", Quantity::latitude, &TTMProj::phi0_},
    {"East0", Quantity::easting, &TTMProj::fEast_},
    {"North0", Quantity::northing, &TTMProj::fNorth_},
};

std::span<const ParamRow> TTMProj::Params() const { return kParams; }

TTMProj::TTMProj() : TTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TTMProj::TTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
                 double fNorth)
    : TGeoProj(ProjTypeTM, kParams, a, invF),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TTMProj::Prepare();
}

bool TTMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TTMProj::Prepare() {
  const double n = ell_.n, n2 = n * n, n3 = n2 * n;
  const double m2 = 3 * n + 3 * n2 + 21.0 / 8 * n3;
  const double m3 = 15.0 / 8 * (n2 + n3);
  const double m4 = 35.0 / 24 * n3;
  const CosinePowerSeries arc(-m2 / 2, m3 / 2, -m4 / 2, 0);
  *formulas_ = {.lambda0 = lambda0_,
                .phi0 = phi0_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .e2 = ell_.e2,
                .invAxes2 = 1 / (1 - ell_.e2),
                .aK0 = ell_.a * k0_,
                .bK0 = ell_.b * k0_,
                .invAK0 = 1 / (ell_.a * k0_),
                .m1 = 1 + n + 5.0 / 4 * n2 + 5.0 / 4 * n3,
                .arc = arc,
                .arcTerms0 = arc(0.0, Sin(phi0_), Cos(phi0_)),
                .maxNorthing = MaxNorthing()};
}

// A correction shrinks the arc that is lacking to at most e² of it, and the first guess lacks at most
// e² of the northing: (e²)⁵·N is below 0.5 mm, and within half a turn a correction below 0.03.
double TTMProj::MaxNorthing() const {
  const double radius = std::abs(ell_.a * k0_);
  const bool nearSphere = ell_.e2 >= 0 && ell_.e2 < kMaxE2, origin = std::abs(phi0_) < kPi;
  return nearSphere && origin && radius < kMaxRadius ? std::min(kPi * radius, kMaxNorthing) : 0;
}

bool TTMProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  ForwardOne(*formulas_, b, l);
  return true;
}

// Corrects the footpoint until the rest of its arc is below the tolerance, or the limit is reached.
// Points of the batch's domain are corrected in its functions: the result jumps where the rule stops,
// and both stop at the same step.
bool TTMProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  const TmFormulas& f = *formulas_;
  const double northing = n - fNorth_;
  TmFormulas::Footpoint at;
  if (f.ServesInverse(n, e)) {
    at = f.FirstFootpoint<simd::BatchMath>(northing);
    for (int i = 0; i < kMaxFootpointCorrections && !at.Settled(); ++i)
      at = f.Corrected(at, at.rest, northing);
  } else {
    at = f.FirstFootpoint<simd::Scalar>(northing);
    for (int i = 0; i < kMaxFootpointCorrections && !at.Settled(); ++i)
      at = f.At<simd::Scalar>(at.phi + at.rest / f.aK0, northing);
  }
  f.FromFootpoint(at, n, e);
  return true;
}

FormulaView TTMProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
