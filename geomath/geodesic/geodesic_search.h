#pragma once

#include "geomath/geodesic/geodesic_formulas.h"

namespace zel_cs::geomath {

/// A solved inverse problem.
struct GeodesicArc {
  double distance;
  GeodesicFormulas::Unit alpha1, alpha2;  // onward azimuths at both ends
  double omega12;                         // longitude difference on the auxiliary sphere
};

/// The inverse problem for any two points, by the search for the azimuth at the first one that
/// section 4 of Karney 2013 describes: Newton's method within a bracket, from a start on the sphere
/// or, for nearly antipodal points, from the astroid. Latitudes within ±π/2, `lambda12` within ±π.
GeodesicArc SearchGeodesic(const GeodesicFormulas& g, double phi1, double phi2, double lambda12);

}  // namespace zel_cs::geomath
