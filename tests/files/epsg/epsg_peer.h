#pragma once

#include <proj.h>

#include <string>
#include <vector>

/// PROJ's own reading of an EPSG code: its conversion from the geographic system to the projected
/// one, in latitude and longitude from Greenwich, degrees, and in northing and easting (or southing
/// and westing, as the registry's axes point), metres.
class EpsgPeer {
 public:
  struct Place {
    double latitude, longitude;
  };
  struct GridPoint {
    double n, e;
  };

  explicit EpsgPeer(const std::string& code);
  ~EpsgPeer();
  EpsgPeer(const EpsgPeer&) = delete;
  EpsgPeer& operator=(const EpsgPeer&) = delete;

  /// Not finite where PROJ refuses.
  GridPoint Project(const Place& place) const;
  /// From WGS 84 by the transformation of an EPSG code, heights 0, onto the system's datum.
  Place ToOwnDatum(const Place& wgs84, const std::string& operation) const;
  /// A lattice over the area of use, its edges included.
  std::vector<Place> Lattice(int rows, int columns) const;

 private:
  struct Axis {
    bool northing = false;
    double unit = 1;  // radians or metres
  };
  std::vector<Axis> AxesOf(const PJ* crs) const;

  PJ_CONTEXT* context_;
  PJ *crs_, *base_, *conversion_;
  std::vector<Axis> from_, to_;
  double greenwich_ = 0;  // of the prime meridian, degrees
};
