#include "geomath/datum/procedural.h"

#include <algorithm>

#include "geomath/base/ellipsoid.h"
#include "geomath/base/geocentric.h"
#include "geomath/datum/similarity.h"

using namespace zel_cs::geomath;

namespace {

constexpr TangentStop kProceduralStop{.tolerance = 1e-20, .maxSteps = 21, .mustSettle = false};

// What the conversions read of an ellipsoid; the rest stays 0.
Ellipsoid FromFlattening(const double* ellipsoid) {
  Ellipsoid ell;
  ell.a = ellipsoid[0];
  ell.f = ellipsoid[1];
  DeriveEccentricities(ell);
  return ell;
}

Similarity FromParameters(const double* datum) {
  return {{datum[0], datum[1], datum[2]}, {datum[3], datum[4], datum[5]}, datum[6]};
}

void Store(const TAbstractPoint3<double>& point, double* out) {
  for (int i = 0; i < 3; ++i) out[i] = point[i];
}

}  // namespace

bool TBLH_To_XYZ(const double* blh, double* xyz, const double* ellipsoid) {
  std::copy_n(blh, 3, xyz);
  return FromFlattening(ellipsoid).BLH_to_XYZ(xyz[0], xyz[1], xyz[2]);
}

bool TXYZ_To_BLH(const double* xyz, double* blh, const double* ellipsoid) {
  std::copy_n(xyz, 3, blh);
  return GeocentricToGeodetic(FromFlattening(ellipsoid), kProceduralStop, blh[0], blh[1], blh[2]);
}

void ToWGS84(const double* in, double* out, const double* datum) {
  Store(FromParameters(datum).ToWgs84({in[0], in[1], in[2]}), out);
}

void ToLocDatum(const double* in, double* out, const double* datum) {
  Store(FromParameters(datum).ToLocal({in[0], in[1], in[2]}), out);
}
