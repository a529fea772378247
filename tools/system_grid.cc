#include "tools/system_grid.h"

#include <cmath>
#include <utility>

#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

// Counts south and west by itself.
constexpr const char* kSouthWestProjection = "KROVAK";

// Metres as angles, which a chain takes: a power of two, so that nothing is rounded.
class MetresAsAngles : public TGeoProj {
 public:
  static constexpr double kMetres = 0x1p27;
  bool ForwardPoint(double& b, double& l, PointFactors*) const override {
    b *= kMetres;
    l *= kMetres;
    return true;
  }
  bool InversePoint(double& n, double& e, PointFactors*) const override {
    n /= kMetres;
    e /= kMetres;
    return true;
  }
};

const MetresAsAngles& Plane() {
  static const MetresAsAngles plane;
  return plane;
}

}  // namespace

SystemMap::SystemMap(const CoordinateSystem& system)
    : projection_(*system.Projection()),
      plane_(nullptr, nullptr, &Plane()),
      sign_(system.ProjectionName() == kSouthWestProjection ? -1 : 1) {
  ell_ = projection_.GetEllipsoid();
  const CoordinateChain& chain = system.Chain();
  for (const ChainShift& step : chain.GetShifts(ShiftPlace::afterProjection))
    plane_.AddShift(ShiftPlace::afterProjection, step);
  plane_.SetLocalization(chain.GetLocalization());
  plane_.SetGround(chain.GetGround());
}

bool SystemMap::ToPlane(double& n, double& e) const {
  double h = 0;
  n /= MetresAsAngles::kMetres;
  e /= MetresAsAngles::kMetres;
  if (!plane_.ToLocal(n, e, h)) return false;
  n *= sign_;
  e *= sign_;
  return true;
}

bool SystemMap::ProjectPoint(double& b, double& l, PointFactors*) const {
  return projection_.ForwardPoint(b, l) && ToPlane(b, l);
}

bool SystemMap::UnprojectPoint(double& n, double& e, PointFactors*) const {
  double h = 0;
  n *= sign_;
  e *= sign_;
  if (!plane_.ToGlobal(n, e, h)) return false;
  n *= MetresAsAngles::kMetres;
  e *= MetresAsAngles::kMetres;
  return projection_.InversePoint(n, e);
}

// The chain rule. A site and a ground system are similarities, of which differences lose nothing but
// rounding; shifts of the plane change little within the step.
bool SystemMap::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  constexpr double kStep = 50;  // metres
  GridDerivatives d;
  double n = b, e = l;
  if (!projection_.ForwardDerivatives(b, l, d) || !projection_.ForwardPoint(n, e)) return false;
  const auto slope = [&](double dN, double dE, double& north, double& east) {
    double n1 = n + dN, e1 = e + dE, n0 = n - dN, e0 = e - dE;
    if (!ToPlane(n1, e1) || !ToPlane(n0, e0)) return false;
    north = (n1 - n0) / (2 * kStep);
    east = (e1 - e0) / (2 * kStep);
    return true;
  };
  double nn, ne, en, ee;  // images of a metre northward and of one eastward
  if (!slope(kStep, 0, nn, ne) || !slope(0, kStep, en, ee)) return false;
  derivatives = {nn * d.northB + en * d.eastB, ne * d.northB + ee * d.eastB,
                 nn * d.northL + en * d.eastL, ne * d.northL + ee * d.eastL};
  return true;
}

SystemGrid::SystemGrid(const CoordinateSystem& system, double date)
    : system_(system),
      date_(date),
      toEllipsoid_(system.Chain().GetGlobalEllipsoid(), system.Chain().GetDatum(), nullptr),
      map_(system),
      geographic_(system.Geographic()),
      grid_(system.Grid()),
      lines_(map_, this) {
  for (const ShiftPlace place : {ShiftPlace::beforeDatum, ShiftPlace::afterDatum})
    for (const ChainShift& step : system.Chain().GetShifts(place))
      toEllipsoid_.AddShift(place, step);
  if (system.ProjectionName() == kSouthWestProjection) {
    grid_.northSign = -grid_.northSign;
    grid_.eastSign = -grid_.eastSign;
  }
}

bool SystemGrid::Factors(double latitude, double longitude, double height, double date,
                         PointFactorsInGrid& factors) const {
  double b = geographic_.northSign * latitude * kRadPerDeg;
  double l = geographic_.eastSign * longitude * kRadPerDeg, h = height;
  if (!toEllipsoid_.ToLocal(b, l, h, date) || !DistortionAt(map_, b, l, factors.distortion))
    return false;
  const Ellipsoid& ellipsoid = map_.GetEllipsoid();
  const double M = RadiusInAzimuth(ellipsoid, b, 0), N = RadiusInAzimuth(ellipsoid, b, kHalfPi);
  factors.scale = std::sqrt(std::abs(factors.distortion.arealScale));
  factors.elevation = std::sqrt(M / (M + h) * (N / (N + h)));
  factors.combined = factors.scale * factors.elevation;
  return true;
}

bool SystemGrid::ToLocal(double& latitude, double& longitude, double& height) const {
  double& first = geographic_.northFirst ? latitude : longitude;
  double& second = geographic_.northFirst ? longitude : latitude;
  if (!system_.Chain().ToLocal(first, second, height, date_)) return false;
  // The first of the pair stands where the first was.
  if (grid_.northFirst != geographic_.northFirst) std::swap(latitude, longitude);
  return true;
}

bool SystemGrid::ToGrid(double latitude, double longitude, double height, double (&grid)[3]) const {
  grid[0] = latitude * kRadPerDeg;
  grid[1] = longitude * kRadPerDeg;
  grid[2] = height;
  return ToLocal(grid[0], grid[1], grid[2]);
}

bool SystemGrid::ToPosition(double north, double east, double height, double (&position)[3]) const {
  auto& [first, second, h] = position;
  first = grid_.northFirst ? north : east;
  second = grid_.northFirst ? east : north;
  h = height;
  if (!system_.Chain().ToGlobal(first, second, h, date_)) return false;
  if (!geographic_.northFirst) std::swap(first, second);
  first *= kDegPerRad;
  second *= kDegPerRad;
  return true;
}

bool SystemGrid::Height(double b, double l, double& height) const {
  double h = 0;
  if (!toEllipsoid_.ToGlobal(b, l, h, date_)) return false;
  b *= geographic_.northSign;
  l *= geographic_.eastSign;
  if (!ToLocal(b, l, h)) return false;
  height = -h;
  return true;
}

// From a position of the projection to that at which the chain asks the geoid.
bool SystemGrid::ToGeoid(double& b, double& l) const {
  double h = 0;
  return system_.Chain().GetGeoidFrame() != GeoidFrame::global ||
         toEllipsoid_.ToGlobal(b, l, h, date_);
}

// What lies between the ellipsoid and the heights besides the geoid.
class SystemGrid::BesideGeoid : public GeoidHeight {
 public:
  BesideGeoid(const SystemGrid& grid, const GeoidHeight& geoid) : grid_(grid), geoid_(geoid) {}
  bool Height(double b, double l, double& height) const override {
    double undulation;
    if (!grid_.Height(b, l, height)) return false;
    if (!grid_.ToGeoid(b, l) || !geoid_.Height(b, l, undulation)) return false;
    height -= undulation;
    return true;
  }

 private:
  const SystemGrid& grid_;
  const GeoidHeight& geoid_;
};

// The positions of the two datums differ by hundreds of metres at most, and their scales and
// directions by 1e-4, which is nothing to a slope.
void SystemGrid::HeightsAndSlopes(const double* b, const double* l, double* heights,
                                  double* perLatitude, double* perLongitude,
                                  std::size_t count) const {
  const GeoidHeight* const geoid = system_.Chain().GetGeoid();
  if (!geoid) return GeoidHeight::HeightsAndSlopes(b, l, heights, perLatitude, perLongitude, count);
  BesideGeoid(*this, *geoid).HeightsAndSlopes(b, l, heights, perLatitude, perLongitude, count);
  for (std::size_t i = 0; i < count; ++i) {
    double lat = b[i], lon = l[i], undulation = std::nan(""), north = undulation, east = undulation;
    if (ToGeoid(lat, lon)) geoid->HeightsAndSlopes(&lat, &lon, &undulation, &north, &east, 1);
    heights[i] += undulation;
    perLatitude[i] += north;
    perLongitude[i] += east;
  }
}

}  // namespace geomath_files::program
