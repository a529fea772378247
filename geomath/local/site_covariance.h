#pragma once

namespace zel_cs::geomath {

/// The covariance of the parameters of a LocalToGrid about a pivot in the grid: the shifts of the
/// pivot's local northing and easting, the scale, the rotation; the height shift at the pivot and the
/// two slopes. The plane part and the heights are independent.
struct SiteCovariance {
  double pivotN = 0;           ///< grid northing of the pivot, metres
  double pivotE = 0;           ///< grid easting
  double ofPlane[4][4] = {};   ///< metres, metres, dimensionless, radians
  double ofHeight[3][3] = {};  ///< metres, metres per metre
};

}  // namespace zel_cs::geomath
