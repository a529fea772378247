#include "geomath/proj/methods/malaysia_cs_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
namespace {

constexpr double kChain = 20.116782494376;  // metres: 40000 make the Malayan false easting
constexpr double kPolynomialUnit = 1e4;     // chains
constexpr double kSettled = 1e-9;           // chains
constexpr int kMaxRounds = 20;

}  // namespace

constexpr ParamRow TMalaysia_CSProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TMalaysia_CSProj::lat0_},
    {"Lon0", Quantity::longitude, &TMalaysia_CSProj::lon0_},
    {"OriginE", Quantity::length, &TMalaysia_CSProj::originE_, ParamUnit::surveyChains},
    {"OriginN", Quantity::length, &TMalaysia_CSProj::originN_, ParamUnit::surveyChains},
    {"e0", Quantity::coefficient, &TMalaysia_CSProj::e0_},
    {"n0", Quantity::coefficient, &TMalaysia_CSProj::n0_},
    {"ex", Quantity::coefficient, &TMalaysia_CSProj::ex_},
    {"ey", Quantity::coefficient, &TMalaysia_CSProj::ey_},
    {"nx", Quantity::coefficient, &TMalaysia_CSProj::nx_},
    {"ny", Quantity::coefficient, &TMalaysia_CSProj::ny_},
    {"exx", Quantity::coefficient, &TMalaysia_CSProj::exx_},
    {"exy", Quantity::coefficient, &TMalaysia_CSProj::exy_},
    {"eyy", Quantity::coefficient, &TMalaysia_CSProj::eyy_},
    {"nxx", Quantity::coefficient, &TMalaysia_CSProj::nxx_},
    {"nxy", Quantity::coefficient, &TMalaysia_CSProj::nxy_},
    {"nyy", Quantity::coefficient, &TMalaysia_CSProj::nyy_},
};

std::span<const ParamRow> TMalaysia_CSProj::Params() const { return kParams; }

TMalaysia_CSProj::TMalaysia_CSProj()
    : TMalaysia_CSProj(kWgs84A, kWgs84InvF, 0, 0, 30745.124, 11227.927, -0.0098, 0.021, -2.0871,
                       5.29886, -5.27113, -1.83579, -0.47547, -0.74017, -0.64384, 0.17978, 0.58805,
                       -0.66614) {}

TMalaysia_CSProj::TMalaysia_CSProj(double a, double invF, double lat0, double lon0, double originE,
                                   double originN, double e0, double n0, double ex, double ey,
                                   double nx, double ny, double exx, double exy, double eyy,
                                   double nxx, double nxy, double nyy)
    : TGeoProj(ProjTypeMalaysia_CS, kParams, a, invF),
      lat0_(lat0),
      lon0_(lon0),
      originE_(originE),
      originN_(originN),
      e0_(e0),
      n0_(n0),
      ex_(ex),
      ey_(ey),
      nx_(nx),
      ny_(ny),
      exx_(exx),
      exy_(exy),
      eyy_(eyy),
      nxx_(nxx),
      nxy_(nxy),
      nyy_(nyy) {
  TMalaysia_CSProj::Prepare();
}

bool TMalaysia_CSProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(lat0_, lon0_, b0, l0, db, dl);
}

void TMalaysia_CSProj::Prepare() { malayan_.SetEllipsoid(ell_.a, ell_.invF); }

// The offset in the Malayan grid from the state's origin.
TMalaysia_CSProj::Chains TMalaysia_CSProj::FromCassini(Chains cassini) const {
  const double x = cassini.east / kPolynomialUnit, y = cassini.north / kPolynomialUnit;
  return {cassini.east + e0_ + x * (ex_ + exx_ * x + exy_ * y) + y * (ey_ + eyy_ * y),
          cassini.north + n0_ + x * (nx_ + nxx_ * x + nxy_ * y) + y * (ny_ + nyy_ * y)};
}

bool TMalaysia_CSProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  double n = b, e = l;
  if (!malayan_.ForwardPoint(n, e)) return false;
  const Chains offset{e / kChain - originE_, n / kChain - originN_};

  Chains cassini = offset;
  for (int round = 0; round < kMaxRounds; ++round) {
    const Chains reached = FromCassini(cassini);
    const double stepE = offset.east - reached.east, stepN = offset.north - reached.north;
    cassini.east += stepE;
    cassini.north += stepN;
    if (std::abs(stepE) < kSettled && std::abs(stepN) < kSettled) {
      b = kChain * cassini.north;
      l = kChain * cassini.east;
      return true;
    }
  }
  return false;
}

// Those of the Malayan grid through the inverse of the polynomials' own matrix at the point.
bool TMalaysia_CSProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  GridDerivatives grid;
  double n = b, e = l;
  if (!malayan_.ForwardDerivatives(b, l, grid) || !ProjectPoint(n, e, nullptr)) return false;
  const double x = e / kChain / kPolynomialUnit, y = n / kChain / kPolynomialUnit;
  const double ee = 1 + (ex_ + 2 * exx_ * x + exy_ * y) / kPolynomialUnit;
  const double en = (ey_ + exy_ * x + 2 * eyy_ * y) / kPolynomialUnit;
  const double ne = (nx_ + 2 * nxx_ * x + nxy_ * y) / kPolynomialUnit;
  const double nn = 1 + (ny_ + nxy_ * x + 2 * nyy_ * y) / kPolynomialUnit;
  const double determinant = ee * nn - en * ne;
  const auto north = [&](double dn, double de) { return (ee * dn - ne * de) / determinant; };
  const auto east = [&](double dn, double de) { return (nn * de - en * dn) / determinant; };
  derivatives = {north(grid.northB, grid.eastB), east(grid.northB, grid.eastB),
                 north(grid.northL, grid.eastL), east(grid.northL, grid.eastL)};
  return true;
}

bool TMalaysia_CSProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  const Chains offset = FromCassini({e / kChain, n / kChain});
  n = kChain * (originN_ + offset.north);
  e = kChain * (originE_ + offset.east);
  return malayan_.InversePoint(n, e);
}

}  // namespace zel_cs::geomath
