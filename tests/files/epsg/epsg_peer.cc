#include "tests/files/epsg/epsg_peer.h"

#include <cmath>
#include <cstring>

#include "geomath/base/angle.h"

using zel_cs::geomath::kDegPerRad;
using zel_cs::geomath::kRadPerDeg;

EpsgPeer::EpsgPeer(const std::string& code)
    : context_(proj_context_create()),
      crs_(proj_create_from_database(context_, "EPSG", code.c_str(), PJ_CATEGORY_CRS, 0, nullptr)),
      base_(proj_crs_get_geodetic_crs(context_, crs_)),
      conversion_(proj_create_crs_to_crs_from_pj(context_, base_, crs_, nullptr, nullptr)),
      from_(AxesOf(base_)),
      to_(AxesOf(crs_)) {
  PJ* meridian = proj_get_prime_meridian(context_, base_);
  double unit = kRadPerDeg;
  proj_prime_meridian_get_parameters(context_, meridian, &greenwich_, &unit, nullptr);
  greenwich_ *= unit * kDegPerRad;
  proj_destroy(meridian);
}

EpsgPeer::~EpsgPeer() {
  for (PJ* each : {conversion_, base_, crs_}) proj_destroy(each);
  proj_context_destroy(context_);
}

std::vector<EpsgPeer::Axis> EpsgPeer::AxesOf(const PJ* crs) const {
  PJ* system = proj_crs_get_coordinate_system(context_, crs);
  std::vector<Axis> axes(2);
  std::string directions[2];
  for (std::size_t i = 0; i < 2; ++i) {
    const char *abbreviation, *direction;
    proj_cs_get_axis_info(context_, system, static_cast<int>(i), nullptr, &abbreviation, &direction,
                          &axes[i].unit, nullptr, nullptr, nullptr);
    directions[i] = direction;
    axes[i].northing = directions[i] == "north" || directions[i] == "south";
    // At a pole both point the same way and their letters tell them apart.
    if (i == 1 && directions[0] == directions[1]) {
      axes[1].northing = std::strchr("NY", abbreviation[0]) != nullptr;
      axes[0].northing = !axes[1].northing;
    }
  }
  proj_destroy(system);
  return axes;
}

EpsgPeer::GridPoint EpsgPeer::Project(const Place& place) const {
  const double longitude = std::remainder(place.longitude - greenwich_, 360);
  PJ_COORD point = proj_coord(0, 0, 0, 0);
  for (std::size_t i = 0; i < 2; ++i)
    point.v[i] = (from_[i].northing ? place.latitude : longitude) * (kRadPerDeg / from_[i].unit);
  point = proj_trans(conversion_, PJ_FWD, point);
  const double first = point.v[0] * to_[0].unit, second = point.v[1] * to_[1].unit;
  return to_[0].northing ? GridPoint{first, second} : GridPoint{second, first};
}

EpsgPeer::Place EpsgPeer::ToOwnDatum(const Place& wgs84, const std::string& operation) const {
  PJ* shift = proj_create_from_database(context_, "EPSG", operation.c_str(),
                                        PJ_CATEGORY_COORDINATE_OPERATION, 0, nullptr);
  PJ* target = proj_get_target_crs(context_, shift);
  const bool toWgs84 = std::string(proj_get_id_code(target, 0)) == "4326";
  // WGS 84 has the latitude first, in degrees.
  const PJ_COORD own = proj_trans(shift, toWgs84 ? PJ_INV : PJ_FWD,
                                  proj_coord(wgs84.latitude, wgs84.longitude, 0, 0));
  proj_destroy(target);
  proj_destroy(shift);
  const double first = own.v[0] * (from_[0].unit / kRadPerDeg);
  const double second = own.v[1] * (from_[1].unit / kRadPerDeg);
  Place place = from_[0].northing ? Place{first, second} : Place{second, first};
  place.longitude += greenwich_;
  return place;
}

std::vector<EpsgPeer::Place> EpsgPeer::Lattice(int rows, int columns) const {
  double west, south, east, north;
  proj_get_area_of_use(context_, crs_, &west, &south, &east, &north, nullptr);
  if (east < west) east += 360;
  std::vector<Place> places;
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j)
      places.push_back({south + (north - south) * i / (rows - 1),
                        std::remainder(west + (east - west) * j / (columns - 1), 360)});
  return places;
}
