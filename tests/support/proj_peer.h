#pragma once

#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "geomath/geodesic/distortion.h"
#include "geomath/proj/geo_proj.h"

/// Comparison with PROJ as an independent implementation. Sources that include this are named
/// *_peer_test.cc and are added with geomath_add_peer_test.

/// One PROJ operation from a text such as "+proj=lcc +lat_1=30 … +a=6378137 +rf=298.3", in a
/// context of its own.
class ProjPeer {
 public:
  explicit ProjPeer(const std::string& definition)
      : context_(proj_context_create()), pj_(proj_create(context_, definition.c_str())) {}
  ~ProjPeer() {
    proj_destroy(pj_);
    proj_context_destroy(context_);
  }
  ProjPeer(const ProjPeer&) = delete;
  ProjPeer& operator=(const ProjPeer&) = delete;

  bool Good() const { return pj_ != nullptr; }

  /// Latitude and longitude, radians, to northing and easting, metres.
  bool Forward(double phi, double lambda, double& north, double& east) const {
    const PJ_COORD out = proj_trans(pj_, PJ_FWD, proj_coord(lambda, phi, 0, 0));
    north = out.xy.y;
    east = out.xy.x;
    return std::isfinite(north) && std::isfinite(east);
  }

  /// What it does to lengths at a position, radians, by its own differences.
  PJ_FACTORS Factors(double phi, double lambda) const {
    return proj_factors(pj_, proj_coord(lambda, phi, 0, 0));
  }

 private:
  PJ_CONTEXT* context_;
  PJ* pj_;
};

/// A lattice of latitudes and longitudes, degrees, both ends included.
struct PeerLattice {
  double south, north, west, east;
  int rows = 21, columns = 21;
};

/// The largest distance, metres, between our forward conversion and PROJ's over the lattice, and
/// the number of points compared; points that PROJ refuses are passed over. NaN when the
/// definition is refused or a conversion of ours fails. `factors` is the largest difference of
/// scales and convergence times cos²φ, by which the truncation of PROJ's differences grows.
struct PeerDifference {
  double worst = 0;
  int points = 0;
  double factors = 0;
};

/// The largest difference between ours and PROJ's scales and convergence; half a turn of the latter
/// is an axis that counts southward.
inline double CompareFactors(const zel_cs::geomath::TGeoProj& proj, const ProjPeer& peer, double b,
                             double l) {
  zel_cs::geomath::Distortion ours;
  if (!DistortionAt(proj, b, l, ours)) return std::nan("");
  const PJ_FACTORS theirs = peer.Factors(b, l);
  const double turn = ours.convergence - theirs.meridian_convergence;
  return std::max({std::abs(theirs.meridional_scale / ours.meridianScale - 1),
                   std::abs(theirs.parallel_scale / ours.parallelScale - 1),
                   std::abs(theirs.areal_scale / std::abs(ours.arealScale) - 1),
                   std::abs(std::remainder(turn, 3.14159265358979323846))});
}

inline PeerDifference CompareWithPeer(zel_cs::geomath::TGeoProj& proj,
                                      const std::string& definition, const PeerLattice& lattice) {
  constexpr double kDegree = 3.14159265358979323846 / 180;
  PeerDifference difference;
  const ProjPeer peer(definition);
  if (!peer.Good()) return {std::nan(""), 0};
  for (int i = 0; i < lattice.rows; ++i)
    for (int j = 0; j < lattice.columns; ++j) {
      double b =
          kDegree * (lattice.south + (lattice.north - lattice.south) * i / (lattice.rows - 1));
      double l =
          kDegree * (lattice.west + (lattice.east - lattice.west) * j / (lattice.columns - 1));
      double north, east;
      if (!peer.Forward(b, l, north, east)) continue;
      const double narrow = std::cos(b) * std::cos(b);
      const double factors = CompareFactors(proj, peer, b, l) * narrow;
      if (!(factors <= difference.factors)) difference.factors = factors;
      if (!proj.Forward(b, l)) return {std::nan(""), difference.points};
      difference.worst = std::max(difference.worst, std::hypot(b - north, l - east));
      ++difference.points;
    }
  return difference;
}

/// One projection of ours beside its PROJ definition.
struct PeerCase {
  const char* name;
  std::shared_ptr<zel_cs::geomath::TGeoProj> proj;
  const char* definition;
  PeerLattice lattice;
  double tolerance;  // metres
  // Of scales and convergence: PROJ's differences over 1e-5 radians. Nothing for what has none.
  std::optional<double> factors = 1e-9;
};

inline void PrintTo(const PeerCase& c, std::ostream* out) { *out << c.name; }

/// Says the worst difference and expects it within the tolerance at nearly all points.
inline void ExpectAgreesWithPeer(const PeerCase& c) {
  const PeerDifference difference = CompareWithPeer(*c.proj, c.definition, c.lattice);
  std::cout << c.name << ": worst difference from PROJ " << difference.worst << " m at "
            << difference.points << " points, of its factors " << difference.factors << '\n';
  EXPECT_GE(difference.points, c.lattice.rows * c.lattice.columns * 9 / 10);
  EXPECT_LE(difference.worst, c.tolerance);
  if (c.factors) {
    EXPECT_LE(difference.factors, *c.factors);
  }
}
