#include "geomath/proj/methods/county_proj.h"

#include "geomath/proj/methods/math/county_ellipsoid.h"

namespace zel_cs::geomath {

CountyParams CountyParams::NotSetUp() {
  return {.lonOrigin = 0,
          .latOrigin = 0,
          .northStdP = 0,
          .southStdP = 1.0,
          .scale = 0,
          .fNorth = 0,
          .fEast = 0,
          .desElA = kWgs84A,
          .desElB = kWgs84A,
          .elevationShift = 0,
          .obliqueAngle = 0,
          .geoidHeight = 0};
}

std::span<const ParamRow<CountyParams>> CountyProj::Params() {
  using P = CountyParams;
  static constexpr ParamRow<P> rows[] = {
      {&P::lonOrigin, ParamKind::angle},    {&P::latOrigin, ParamKind::angle},
      {&P::northStdP, ParamKind::angle},    {&P::southStdP, ParamKind::angle},
      {&P::scale, ParamKind::scale},        {&P::fNorth, ParamKind::length},
      {&P::fEast, ParamKind::length},       {&P::desElA, ParamKind::length},
      {&P::desElB, ParamKind::length},      {&P::elevationShift, ParamKind::length},
      {&P::obliqueAngle, ParamKind::angle}, {&P::geoidHeight, ParamKind::length},
  };
  return rows;
}

CountyProj::CountyProj(ProjType type, double a, double invF, const CountyParams& params)
    : TGeoProj(static_cast<unsigned int>(type), static_cast<int>(Params().size()), a, invF, true),
      params_(params) {}

double CountyProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(params_, Params(), index, unit);
}

void CountyProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(params_, Params(), value, index, unit);
  Prepare();
}

void CountyProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

Ellipsoid CountyProj::WorkingEllipsoid() const {
  return CountyEllipsoid(ell_, params_.desElA, params_.desElB, params_.elevationShift,
                         params_.geoidHeight);
}

double CountyProj::WorkingScale() const { return CountyScale(params_.scale); }

}  // namespace zel_cs::geomath
