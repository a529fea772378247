#pragma once

#include "geomath/base/angle.h"

/// A transverse Mercator grid: ellipsoid and parameters.
struct TmGrid {
  double a, invF, lat0Deg, lon0Deg, k0, fEast, fNorth;
};
inline constexpr TmGrid kTmNationalGrid{6377563.396,  299.3249646, 49,     -2,
                                        0.9996012717, 400000,      -100000};
inline constexpr TmGrid kTmLisboa{6378388.0, 297.0, 39.666666666666664, -8.131906111111112, 1,
                                  0,         0};
inline constexpr TmGrid kTmItm{6378137.0, 298.257222101, 53.5, -8, 0.99982, 600000, 750000};
inline constexpr TmGrid kTmGk3{6377397.155, 299.1528128, 0, 9, 1, 3500000, 0};
inline constexpr TmGrid kTmGk4{6377397.155, 299.1528128, 0, 12, 1, 4500000, 0};
inline constexpr TmGrid kTmGk5{6377397.155, 299.1528128, 0, 15, 1, 5500000, 0};
inline constexpr TmGrid kTmUtm32{6378137.0, 298.257222101, 0, 9, 0.9996, 500000, 0};
inline constexpr TmGrid kTmUtm33{6378137.0, 298.257222101, 0, 15, 0.9996, 500000, 0};
inline constexpr TmGrid kTmMga50{6378137.0, 298.257222101, 0, 117, 0.9996, 500000, 10000000};
inline constexpr TmGrid kTmMga52{6378137.0, 298.257222101, 0, 129, 0.9996, 500000, 10000000};
inline constexpr TmGrid kTmMga55{6378137.0, 298.257222101, 0, 147, 0.9996, 500000, 10000000};
inline constexpr TmGrid kTmMga57{6378137.0, 298.257222101, 0, 159, 0.9996, 500000, 10000000};

/// A published point of a grid: latitude and longitude on the grid's own datum (degrees), grid
/// position, and the metres to which position and latitude/longitude are printed together.
struct TmControlPoint {
  const char* name;
  const TmGrid& grid;
  double phiDeg, lambdaDeg, east, north, printed;

  template <class Proj>
  Proj Make() const {
    using zel_cs::geomath::kRadPerDeg;
    return {grid.a,     grid.invF,  grid.lon0Deg * kRadPerDeg, grid.k0, grid.lat0Deg * kRadPerDeg,
            grid.fEast, grid.fNorth};
  }
};

// DE, ETRS89: BKG, BETA2007 test data (2007). GB: Ordnance Survey, A guide to coordinate systems in
// Great Britain. IE: Ordnance Survey Ireland and of Northern Ireland, ITM test points. PT: list
// "Portugal 2000" of trigonometric points. AU: AUSLIG, national fiducial stations.
inline constexpr TmControlPoint kTmControlPoints[] = {
    {"GB-NationalGrid OS guide example", kTmNationalGrid, 52.6575703055556, 1.7179215833333,
     651409.903, 313177.270, 1e-3},
    {"PT-Lisboa-GHauss Lagoaca", kTmLisboa, 41.2090530555556, -6.7573741388889, 115287.061,
     172187.391, 2e-3},
    {"PT-Lisboa-GHauss Santa Luzia", kTmLisboa, 41.7613697777778, -8.8065565000000, -56106.355,
     232840.188, 2e-3},
    {"IE-ITM OSi-2", kTmItm, 55.1685019694444, -8.0039153416667, 599750.537, 935689.525, 1e-3},
    {"IE-ITM OSi-6", kTmItm, 54.7034763833333, -8.7223372722222, 553443.173, 884170.627, 1e-3},
    {"DE-GK3 BETA-01", kTmGk3, 53.5000000000000, 7.4833333333333, 3399371.190396, 5930724.531323,
     1e-5},
    {"DE-GK3 BETA-23", kTmGk3, 47.7500000000000, 10.5500000000000, 3616211.566778, 5291255.078896,
     1e-5},
    {"DE-GK4 BETA-17", kTmGk4, 53.7666666666667, 13.4666666666667, 4596699.814954, 5960328.296681,
     1e-5},
    {"DE-GK5 BETA-30", kTmGk5, 47.6500000000000, 12.9500000000000, 5346007.854521, 5281010.564511,
     1e-5},
    {"ETRS89-UTM32 BETA-02", kTmUtm32, 52.4985736333650, 10.4653802983370, 599474.934168,
     5817502.626999, 1e-5},
    {"ETRS89-UTM33 BETA-28", kTmUtm33, 52.4819302974290, 13.4649132549780, 395754.092849,
     5815749.835902, 1e-5},
    {"AU-MGA50 Dongara", kTmMga50, -29.0465602420000, 115.3469723580000, 339055.537, 6785728.465,
     2e-3},
    {"AU-MGA52 Darwin", kTmMga52, -12.8437106600000, 131.1327356400000, 731469.122, 8579189.658,
     2e-3},
    {"AU-MGA55 Hobart", kTmMga55, -42.8047180700000, 147.4387320800000, 535873.396, 5260777.230,
     2e-3},
    {"AU-MGA57 Macquarie Is.", kTmMga57, -54.4995333400000, 158.9358340700000, 495844.469,
     3960895.803, 2e-3},
};
