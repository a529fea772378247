#include "geomath/proj/methods/county_proj.h"

#include "geomath/proj/methods/math/county_ellipsoid.h"
#include "geomath/proj/param_table.h"

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

constexpr ParamRow CountyProj::kParams[] = {
    {"LonOrigin", Quantity::longitude, &CountyProj::lonOrigin_},
    {"LatOrigin", Quantity::latitude, &CountyProj::latOrigin_},
    {"NorthStdP", Quantity::latitude, &CountyProj::northStdP_},
    {"SouthStdP", Quantity::latitude, &CountyProj::southStdP_},
    {"Scale", Quantity::scale, &CountyProj::scale_},
    {"FN", Quantity::northing, &CountyProj::fNorth_},
    {"FE", Quantity::easting, &CountyProj::fEast_},
    {"DesElA", Quantity::length, &CountyProj::desElA_},
    {"DesElB", Quantity::length, &CountyProj::desElB_},
    {"ElevationShift", Quantity::length, &CountyProj::elevationShift_},
    {"ObliqueAngle", Quantity::azimuth, &CountyProj::obliqueAngle_},
    {"GeoidHeight", Quantity::length, &CountyProj::geoidHeight_},
};

std::span<const ParamRow> CountyProj::Params() const { return kParams; }

CountyProj::CountyProj(ProjType type, double a, double invF, const CountyParams& params)
    : TGeoProj(type, kParams, a, invF),
      lonOrigin_(params.lonOrigin),
      latOrigin_(params.latOrigin),
      northStdP_(params.northStdP),
      southStdP_(params.southStdP),
      scale_(params.scale),
      fNorth_(params.fNorth),
      fEast_(params.fEast),
      desElA_(params.desElA),
      desElB_(params.desElB),
      elevationShift_(params.elevationShift),
      obliqueAngle_(params.obliqueAngle),
      geoidHeight_(params.geoidHeight) {}

Ellipsoid CountyProj::WorkingEllipsoid() const {
  return CountyEllipsoid(ell_, desElA_, desElB_, elevationShift_, geoidHeight_);
}

double CountyProj::WorkingScale() const { return CountyScale(scale_); }

}  // namespace zel_cs::geomath
