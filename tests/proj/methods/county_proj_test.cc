#include "geomath/proj/methods/county_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/proj/methods/minnesota_la_proj.h"
#include "geomath/proj/methods/minnesota_om_proj.h"
#include "geomath/proj/methods/minnesota_tm_proj.h"
#include "tests/proj/methods/tm_control_points.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kFoot = 1200.0 / 3937;  // US survey foot, metres
constexpr double kClarke1866A = 6378206.4, kClarke1866InvF = 294.9786982138982;
constexpr double kGeoidHeight = -30;

// No county prints an example. Published points of other grids prove the classes instead: the lift
// adds one length to both semi-axes, so that axes smaller by it work on the published ellipsoid. By
// design axes, and by the axes of the object where no design axis is given.
template <class Proj>
void ExpectPublishedUnderEveryLift(double a, double invF, const CountyParams& grid,
                                   const PublishedPoint& point) {
  const double b = a * (1 - 1 / invF);
  for (const double lift : {0.0, 381.0, -50.0}) {
    SCOPED_TRACE(lift);
    const double lowA = a - lift, lowB = b - lift;
    Proj byDesign(kWgs84A, kWgs84InvF, grid.lonOrigin, grid.latOrigin, grid.northStdP,
                  grid.southStdP, grid.scale, grid.fNorth, grid.fEast, lowA, lowB,
                  lift - kGeoidHeight, grid.obliqueAngle, kGeoidHeight);
    ExpectPublished(byDesign, point);
    Proj byEllipsoid(lowA, lowA / (lowA - lowB), grid.lonOrigin, grid.latOrigin, grid.northStdP,
                     grid.southStdP, grid.scale, grid.fNorth, grid.fEast, 0, 0, lift - kGeoidHeight,
                     grid.obliqueAngle, kGeoidHeight);
    ExpectPublished(byEllipsoid, point);
  }
}

CountyParams Grid(double lonOrigin, double latOrigin, double scale, double fNorth, double fEast) {
  CountyParams grid = CountyParams::NotSetUp();
  grid.lonOrigin = lonOrigin * kDegree;
  grid.latOrigin = latOrigin * kDegree;
  grid.scale = scale;
  grid.fNorth = fNorth;
  grid.fEast = fEast;
  return grid;
}

TEST(CountyProj, TransverseMercatorGivesPublishedPoints) {
  constexpr double kSeries = 4e-5;  // metres, of the sin 6φ arc
  for (const TmControlPoint& p : kTmControlPoints)
    ExpectPublishedUnderEveryLift<TMinnesota_TMProj>(
        p.grid.a, p.grid.invF,
        Grid(p.grid.lon0Deg, p.grid.lat0Deg, p.grid.k0, p.grid.fNorth, p.grid.fEast),
        {p.name, p.phiDeg, p.lambdaDeg, p.north, p.east, p.printed + kSeries});
}

// IOGP 373-07-02 (2019), Lambert conic of two parallels: Texas South Central 1927, in feet.
TEST(CountyProj, LambertGivesAPublishedPoint) {
  CountyParams texas = Grid(-99, 27 + 50 / 60.0, 1, 0, 2000000 * kFoot);
  texas.southStdP = (28 + 23 / 60.0) * kDegree;
  texas.northStdP = (30 + 17 / 60.0) * kDegree;
  ExpectPublishedUnderEveryLift<TMinnesota_LAProj>(
      kClarke1866A, kClarke1866InvF, texas,
      {"Texas", 28.5, -96, 254759.80 * kFoot, 2963503.91 * kFoot, 0.0016});
}

// Snyder 1987, appendix A, Hotine oblique Mercator through 47°30' N 122°18' W and 25°42' N
// 80°12' W; the centre and azimuth of that line follow from his eq. 9-14 to 9-24.
TEST(CountyProj, ObliqueMercatorGivesAPublishedPoint) {
  CountyParams snyder = Grid(-100.99718772051424, 40, 0.9996, 500000, 4000000);
  snyder.obliqueAngle = -56.94660709700098 * kDegree;
  ExpectPublishedUnderEveryLift<TMinnesota_OMProj>(
      kClarke1866A, kClarke1866InvF, snyder,
      {"Snyder", 40 + 48 / 60.0, -74, 4369142.8, 963436.1, 0.051});
}

}  // namespace
}  // namespace zel_cs::geomath
