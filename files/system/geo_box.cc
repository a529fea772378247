#include "files/system/geo_box.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"

using zel_cs::geomath::kRadPerDeg;

namespace geomath_files {
namespace {

double Width(const GeoBox& box) {
  return box.east >= box.west ? box.east - box.west : box.east - box.west + 360;
}

// Degrees of longitude that two boxes share.
double SharedWidth(const GeoBox& a, const GeoBox& b) {
  double shared = 0;
  for (const double turn : {-360.0, 0.0, 360.0}) {
    const double west = std::max(a.west, b.west + turn);
    const double east = std::min(a.west + Width(a), b.west + Width(b) + turn);
    shared += std::max(0.0, east - west);
  }
  return std::min(shared, 360.0);
}

// Of the area between two parallels, for a width of 1.
double Zone(double from, double to) {
  return std::max(0.0, std::sin(to * kRadPerDeg) - std::sin(from * kRadPerDeg));
}

}  // namespace

bool GeoBox::Contains(double latitude, double longitude) const {
  const double beyondWest = std::remainder(longitude - west - 180, 360) + 180;  // 0 to 360
  return latitude >= south && latitude <= north && beyondWest <= Width(*this);
}

double GeoBox::Surface() const { return Zone(south, north) * Width(*this); }

double GeoBox::CoveredBy(const GeoBox& other) const {
  const double whole = Surface();
  const double shared =
      Zone(std::max(south, other.south), std::min(north, other.north)) * SharedWidth(*this, other);
  return whole > 0 ? shared / whole : 0;
}

}  // namespace geomath_files
