#include "geomath/datum/datum.h"

#include <algorithm>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/datum/similarity.h"

namespace zel_cs::geomath {

Datum::Datum(Ellipsoid* e) : Datum(e, 0, 0, 0, 0, 0, 0, 0, userTypeUser, nullptr) {}

Datum::Datum(Ellipsoid* e, const TAbstractPoint3<double>& shift,
             const TAbstractPoint3<double>& rotation, double scale, userType user,
             bool transformDisabled, const wchar_t* axes)
    : AxisRotation(axes),
      shift_(shift),
      rotation_(rotation),
      scaleChange_(scale),
      transformDisabled_(transformDisabled),
      isNull_(shift == 0.0 && rotation == 0.0 && scale == 0),
      ellipsoid_(e),
      user_(user) {
  *similarity_ = Similarity(shift, rotation * kRadPerArcSecond, scale);
}

Datum::Datum(Ellipsoid* e, double dX, double dY, double dZ, double rX, double rY, double rZ,
             double scale, userType user, const wchar_t* axes)
    : Datum(e, {dX, dY, dZ}, {rX, rY, rZ}, scale, user, false, axes) {}

Datum::Datum(const Datum&) = default;
Datum& Datum::operator=(const Datum&) = default;
Datum::~Datum() = default;

void Datum::SetAxes(const wchar_t* axes) { AxisRotation::SetAxes(axes); }
const wchar_t* Datum::GetAxes() const { return AxisRotation::GetAxes(); }
unsigned char Datum::GetNEDir() const { return direction_; }

bool Datum::ToWGS84Datum(TAbstractPoint3<double>& p) const {
  return ToWGS84Datum(p[0], p[1], p[2]);
}

bool Datum::ToWGS84Datum(double& X, double& Y, double& Z) const {
  if (transformDisabled_) return false;
  if (!IsNull()) similarity_->ColumnsToWgs84().Convert<simd::Scalar>(X, Y, Z);
  return true;
}

bool Datum::ToLocalDatum(TAbstractPoint3<double>& p) const {
  return ToLocalDatum(p[0], p[1], p[2]);
}

bool Datum::ToLocalDatum(double& X, double& Y, double& Z) const {
  if (transformDisabled_) return false;
  if (!IsNull()) similarity_->ColumnsToLocal().Convert<simd::Scalar>(X, Y, Z);
  return true;
}

bool Datum::BLH_to_XYZ(double& B, double& L, double& H) const {
  Rotate(1, B, L);
  return ellipsoid_ && ellipsoid_->BLH_to_XYZ(B, L, H);
}

bool Datum::BLH_to_XYZ(TAbstractPoint3<double>& p) const {
  return ellipsoid_ && BLH_to_XYZ(p[0], p[1], p[2]);
}

bool Datum::XYZ_to_BLH(double& X, double& Y, double& Z) const {
  if (!ellipsoid_ || !ellipsoid_->XYZ_to_BLH(X, Y, Z)) return false;
  Rotate(0, X, Y);
  return true;
}

bool Datum::XYZ_to_BLH(TAbstractPoint3<double>& p) const { return XYZ_to_BLH(p[0], p[1], p[2]); }

template <class Conversion>
std::size_t Datum::TransformBatch(const Conversion& conversion, double* X, double* Y, double* Z,
                                  std::size_t count, std::ptrdiff_t stride) const {
  const auto convert = [&](double* const(&columns)[3], std::size_t points) {
    if (transformDisabled_)
      std::fill_n(columns[0], points, std::numeric_limits<double>::quiet_NaN());
    else if (!IsNull())
      RunKernel(conversion, columns, points);
  };
  return ConvertBlocks(convert, count, stride, X, Y, Z);
}

std::size_t Datum::ToWGS84DatumBatch(double* X, double* Y, double* Z, std::size_t count,
                                     std::ptrdiff_t stride) const {
  return TransformBatch(similarity_->ColumnsToWgs84(), X, Y, Z, count, stride);
}

std::size_t Datum::ToLocalDatumBatch(double* X, double* Y, double* Z, std::size_t count,
                                     std::ptrdiff_t stride) const {
  return TransformBatch(similarity_->ColumnsToLocal(), X, Y, Z, count, stride);
}

void Datum::ToLocalDerivatives(double (&derivatives)[3][3]) const {
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      derivatives[r][c] = similarity_->ColumnsToLocal().m[r][c] + (r == c ? 1 : 0);
}

}  // namespace zel_cs::geomath
