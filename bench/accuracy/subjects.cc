#include "bench/accuracy/subjects.h"

#include <cmath>
#include <complex>
#include <cstdio>
#include <iterator>
#include <numbers>
#include <utility>

#include "geomath/geomath.h"
#include "geomath/proj/methods/formulas/nzmg_formulas.h"

namespace {

using namespace zel_cs::geomath;
using exact::Real;

constexpr double kDeg = kRadPerDeg;
constexpr int kBandPoints = 600;

struct TestEllipsoid {
  double a, invF;
  exact::Ellipsoid Exact() const { return {a, 1 / static_cast<Real>(invF)}; }
};
constexpr TestEllipsoid kWgs84{kWgs84A, kWgs84InvF};
constexpr TestEllipsoid kGrs80{6378137, 298.257222101};
constexpr TestEllipsoid kBessel{6377397.155, 299.1528128};
constexpr TestEllipsoid kInternational{6378388, 297};
constexpr TestEllipsoid kKrassovsky{6378245, 298.3};
constexpr TestEllipsoid kEverest{6377304.063, 300.8017};
constexpr double kClarkeA = 6378206.4, kClarkeB = 6356583.8;  // 1866, metres
constexpr double kFoot = 1200.0 / 3937;                       // US survey foot, metres

exact::Ellipsoid Clarke1866() { return exact::Ellipsoid::FromAxes(kClarkeA, kClarkeB); }

template <class Proj, class... Args>
std::shared_ptr<TGeoProj> Make(Args... args) {
  return std::make_shared<Proj>(args...);
}

std::string Text(const char* format, double from, double to) {
  char text[120];
  std::snprintf(text, sizeof text, format, from, to);
  return text;
}

// The points of a band: `at` places one by its distance between 0 and 1 from the inner edge to the
// outer one, and by a second number between 0 and 1 along the band (multiples of the golden ratio).
template <class Place>
std::vector<exact::Geographic> Spread(Place at) {
  std::vector<exact::Geographic> points;
  double along = 0;
  for (int i = 0; i < kBandPoints; ++i) {
    along += std::numbers::phi - 1;
    along -= std::floor(along);
    const double across = std::min(1.0, 2 * (i + 0.5) / kBandPoints);
    const exact::Geographic p = at(static_cast<Real>(across), static_cast<Real>(along));
    points.push_back({static_cast<double>(p.phi), static_cast<double>(p.lambda)});
  }
  return points;
}

// Degrees of longitude to both sides of a meridian, between two latitudes.
Band BesideMeridian(double lambda0, double from, double to, double south, double north,
                    const char* format = "%g° to %g° beside the meridian") {
  return {Text(format, from, to), Spread([=](Real across, Real along) {
            const bool west = along < 0.5L;
            const Real side = from + (to - from) * across, part = 2 * along - (west ? 0 : 1);
            return exact::Geographic{(south + (north - south) * part) * kDeg,
                                     (lambda0 + (west ? -side : side)) * kDeg};
          })};
}

// Degrees of latitude to both sides of a parallel, between two meridians.
Band BesideParallel(double phi0, double from, double to, double west, double east,
                    const char* format = "%g° to %g° beside the parallel") {
  return {Text(format, from, to), Spread([=](Real across, Real along) {
            const bool below = along < 0.5L;
            const Real side = from + (to - from) * across, part = 2 * along - (below ? 0 : 1);
            return exact::Geographic{(phi0 + (below ? -side : side)) * kDeg,
                                     (west + (east - west) * part) * kDeg};
          })};
}

// Kilometres around a point, on the sphere.
Band AroundPoint(double phi0, double lambda0, double from, double to,
                 const char* format = "%g km to %g km from the origin") {
  return {Text(format, from, to), Spread([=](Real across, Real along) {
            const Real arc = (from + (to - from) * across) / 6371,
                       azimuth = 2 * std::numbers::pi_v<Real> * along;
            const Real s0 = std::sin(phi0 * kDeg), c0 = std::cos(phi0 * kDeg);
            const Real sinPhi = s0 * std::cos(arc) + c0 * std::sin(arc) * std::cos(azimuth);
            const Real east = std::sin(azimuth) * std::sin(arc);
            const Real north = c0 * std::cos(arc) - s0 * std::sin(arc) * std::cos(azimuth);
            return exact::Geographic{std::atan2(sinPhi, std::hypot(east, north)),
                                     lambda0 * kDeg + std::atan2(east, north)};
          })};
}

template <class MakeBand>
std::vector<Band> Bands(std::initializer_list<double> edges, MakeBand make) {
  std::vector<Band> bands;
  for (auto edge = edges.begin(); edge + 1 != edges.end(); ++edge)
    bands.push_back(make(edge[0], edge[1]));
  return bands;
}

std::vector<Band> Rings(double phi0, double lambda0, std::initializer_list<double> edges) {
  return Bands(edges, [=](double from, double to) { return AroundPoint(phi0, lambda0, from, to); });
}

// ---- transverse Mercator ----

constexpr double kMeridian = 9, kZoneScale = 0.9996;

std::vector<Band> ZoneBands(std::initializer_list<double> edges) {
  std::vector<Band> bands = Bands(
      edges, [](double from, double to) { return BesideMeridian(kMeridian, from, to, -84, 84); });
  bands.push_back(
      {"latitudes 84° to 89.99°, within 3°", BesideMeridian(kMeridian, 0, 3, 84, 89.99).points});
  return bands;
}

exact::Projection Zone(double lat0 = 0) {
  return exact::TransverseMercator(kWgs84.Exact(), {lat0 * kDeg, kMeridian * kDeg, kZoneScale});
}

template <class Proj>
Subject ZoneSubject(const char* name, double lat0 = 0) {
  return {
      name,       Make<Proj>(kWgs84A, kWgs84InvF, kMeridian * kDeg, kZoneScale, lat0 * kDeg, 0, 0),
      Zone(lat0), ZoneBands({0, 1, 2, 3, 6, 10, 20}),
      3,          ""};
}

Subject DanishSubject() {
  Subject subject = ZoneSubject<TDenmarkTMProj>("TDenmarkTMProj");
  subject.bands = ZoneBands({0, 3, 10, 20, 30, 35, 43, 52});
  subject.inUse = 3;
  subject.projPipeline = "+proj=tmerc +lon_0=9 +k_0=0.9996 +ellps=WGS84";
  return subject;
}

Subject StatePlane1983() {
  return {
      "TSPC_TM83Proj",
      Make<TSPC_TM83Proj>(kWgs84A, kWgs84InvF, kMeridian * kDeg, kZoneScale, 45 * kDeg, 0, 0, 0),
      Zone(45),
      ZoneBands({0, 1, 2, 3, 6, 10, 20}),
      3,
      ""};
}

Subject NewZealandTransverse() {
  constexpr double kGridScale = 0.999998261;
  return {"TTTMNZ",
          Make<TTTMNZ>(kWgs84A, kWgs84InvF, kMeridian * kDeg, kZoneScale, 0, 0, 0, kGridScale),
          exact::Scaled(Zone(), 1 / static_cast<Real>(kGridScale)),
          ZoneBands({0, 1, 2, 3, 6, 10}),
          3,
          ""};
}

// Axes enlarged to the terrain of a county.
constexpr double kCountyA = 6378411.321, kCountyB = kCountyA * (1 - 1 / 298.257222100883);

Subject CountyTransverse() {
  return {"TMinnesota_TMProj",
          Make<TMinnesota_TMProj>(kGrs80.a, kGrs80.invF, kMeridian * kDeg, 45 * kDeg, 0, 0, 1, 0, 0,
                                  kCountyA, kCountyB, 0, 0, 0),
          exact::TransverseMercator(exact::Ellipsoid::FromAxes(kCountyA, kCountyB),
                                    {45 * kDeg, kMeridian * kDeg}),
          ZoneBands({0, 1, 2, 3, 6}),
          3,
          ""};
}

Subject Alabama1927() {
  constexpr double kLambda0 = -309000 / 3600.0;  // degrees
  return {"TTM27Proj, Alabama East",
          Make<TTM27Proj>(500000, 309000, 109341.00903, 0.99996, 0.3817065, 101),
          exact::Shifted(
              exact::TransverseMercator(Clarke1866(), {30.5 * kDeg, kLambda0 * kDeg, 0.99996}), 0,
              500000 * kFoot),
          Bands({0, 0.5, 1, 2},
                [](double from, double to) { return BesideMeridian(kLambda0, from, to, 30, 36); }),
          2,
          ""};
}

Subject Alaska2Of1927() {
  constexpr double kLambda0 = -142;
  return {
      "TAK29Proj, zone 2",
      Make<TAK29Proj>(500000, 511200, 5002),
      exact::Shifted(exact::TransverseMercator(Clarke1866(), {54 * kDeg, kLambda0 * kDeg, 0.9999}),
                     0, 500000 * kFoot),
      Bands({0, 1, 2, 3, 6},
            [](double from, double to) { return BesideMeridian(kLambda0, from, to, 54, 72); }),
      3,
      ""};
}

Subject Reunion() {
  constexpr double kPhi0 = -(21 + 7 / 60.0), kLambda0 = 55 + 32 / 60.0;
  return {"TMonSpher, Réunion",
          Make<TMonSpher>(kInternational.a, kInternational.invF, kPhi0 * kDeg, kLambda0 * kDeg,
                          kPhi0 * kDeg, 1, 1, 0, 0, 0),
          exact::GaussSchreiber(kInternational.Exact(), {kPhi0 * kDeg, kLambda0 * kDeg}),
          Rings(kPhi0, kLambda0, {0, 100, 1000, 3000}),
          2,
          "+proj=gstmerc +lat_0=-21.116666666666667 +lon_0=55.53333333333333 +a=6378388 +rf=297"};
}

Family TransverseMercator() {
  return {"Transverse Mercator",
          R"(
Against the exact transverse Mercator projection (Lee 1976): unless a row says otherwise a zone of
scale 0.9996 on WGS84, between latitudes 84° S and 84° N; that of the counties on enlarged axes.
TKMSProjTM and TKMSTransProj have the figures of TDenmarkTMProj, which they run. The series of the
other classes are cut off for zones: far from the meridian take TDenmarkTMProj, which refuses points
beyond its limit. The grids of 1927 are defined by their tables; shown is how far those are from the
projection that they stand for. TMonSpher is another projection, that of Gauss and Schreiber,
against its closed formulas.)",
          {ZoneSubject<TTMProj>("TTMProj"), ZoneSubject<TUTMProj>("TUTMProj"),
           ZoneSubject<TUTMProj>("TUTMProj, origin 10° N", 10), NewZealandTransverse(),
           StatePlane1983(), CountyTransverse(), DanishSubject(), Alabama1927(), Alaska2Of1927(),
           Reunion()}};
}

// ---- cylinders and Cassini-Soldner ----

constexpr double kCassiniPhi0 = 2.12, kCassiniLambda0 = 103.43;

Subject CassiniSubject(const char* name, std::shared_ptr<TGeoProj> projection,
                       exact::Projection reference) {
  return {name,
          std::move(projection),
          std::move(reference),
          Bands({0, 1, 2, 3, 6},
                [](double from, double to) {
                  return BesideMeridian(kCassiniLambda0, from, to, -84, 84);
                }),
          1,
          ""};
}

std::vector<Subject> CassiniSubjects() {
  const exact::Origin origin{kCassiniPhi0 * kDeg, kCassiniLambda0 * kDeg};
  const auto projection = Make<TCassiniProj>(kGrs80.a, kGrs80.invF, kCassiniPhi0 * kDeg,
                                             kCassiniLambda0 * kDeg, 0, 0, 0);
  const auto malaysian = Make<TMalaysia_CS2000Proj>(kGrs80.a, kGrs80.invF, 0, 1,
                                                    kCassiniLambda0 * kDeg, kCassiniPhi0 * kDeg);
  const exact::Projection series = exact::CassiniBySeries(kGrs80.Exact(), origin);
  return {CassiniSubject("TCassiniProj, its series", projection, series),
          CassiniSubject("TCassiniProj, geodesics", projection,
                         exact::CassiniByGeodesic(kGrs80.Exact(), origin)),
          CassiniSubject("TMalaysia_CS2000Proj, its series", malaysian, series)};
}

Subject MercatorSubject() {
  return {"TMercatorProj",
          Make<TMercatorProj>(kWgs84A, kWgs84InvF, 51 * kDeg, 42 * kDeg, 0, 0),
          exact::Mercator(kWgs84.Exact(), 42 * kDeg, 51 * kDeg),
          Bands({0, 45, 80, 89, 89.99},
                [](double from, double to) {
                  return BesideParallel(0, from, to, -120, 220, "latitudes %g° to %g°");
                }),
          2,
          "+proj=merc +lat_ts=42 +lon_0=51 +ellps=WGS84"};
}

Subject ColombiaSubject() {
  return {"TColombiaProj, Bogota",
          Make<TColombiaProj>(kGrs80.a, kGrs80.invF, 4.68 * kDeg, -74.15 * kDeg, 0, 0),
          exact::ColombiaUrban(kGrs80.Exact(), {4.68 * kDeg, -74.15 * kDeg}),
          Rings(4.68, -74.15, {0, 30, 100, 1000}),
          1,
          "+proj=col_urban +lat_0=4.68 +lon_0=-74.15 +h_0=0 +ellps=GRS80"};
}

Family Cylinders() {
  Family family{"Cassini-Soldner, Mercator, city plane",
                R"(
Cassini-Soldner grids are defined by truncated series, and the inverse series undoes the forward one
only so far; the second block shows both against the projection by geodesics that they approximate.
All between latitudes 84° S and 84° N. The other classes against their closed formulas.)",
                CassiniSubjects()};
  family.subjects.push_back(MercatorSubject());
  family.subjects.push_back(ColombiaSubject());
  return family;
}

// ---- cones ----

std::vector<Band> WithPole(double lambda0, std::vector<Band> bands) {
  bands.push_back(AroundPoint(90, lambda0, 0, 1, "%g km to %g km from the pole"));
  return bands;
}

Subject LambertSubject() {
  return {
      "TLCProj",
      Make<TLCProj>(kWgs84A, kWgs84InvF, 33 * kDeg, 45 * kDeg, -96 * kDeg, 39 * kDeg, 0, 0, 1.0),
      exact::Lambert(kWgs84.Exact(), 33 * kDeg, 45 * kDeg, {39 * kDeg, -96 * kDeg}),
      WithPole(-96, Rings(39, -96, {0, 100, 1000, 3000, 5000})),
      3,
      "+proj=lcc +lat_1=33 +lat_2=45 +lat_0=39 +lon_0=-96 +ellps=WGS84"};
}

Subject StatePlaneLambert1983() {
  constexpr double kSouth = 30 + 7 / 60.0, kNorth = 31 + 53 / 60.0;
  constexpr double kPhi0 = 29 + 40 / 60.0, kLambda0 = -(100 + 20 / 60.0);
  return {"TSPC_LC83Proj, Texas Central",
          Make<TSPC_LC83Proj>(kGrs80.a, kGrs80.invF, kSouth * kDeg, kNorth * kDeg, kLambda0 * kDeg,
                              kPhi0 * kDeg, 700000, 3000000, 4203),
          exact::Shifted(exact::Lambert(kGrs80.Exact(), kSouth * kDeg, kNorth * kDeg,
                                        {kPhi0 * kDeg, kLambda0 * kDeg}),
                         3000000, 700000),
          WithPole(kLambda0, Rings(kPhi0, kLambda0, {0, 100, 1000, 3000})),
          2,
          ""};
}

Subject CountyLambert() {
  constexpr double kNorth = 45.6666666666667, kSouth = 45.3333333333333;
  constexpr double kPhi0 = 45.2963888888889, kLambda0 = -93.0833333333333;
  return {
      "TMinnesota_LAProj, Anoka",
      Make<TMinnesota_LAProj>(kGrs80.a, kGrs80.invF, kLambda0 * kDeg, kPhi0 * kDeg, kNorth * kDeg,
                              kSouth * kDeg, 1, 30480.0609601219, 152400.30480061, kCountyA,
                              kCountyB, 0, 0, 0),
      exact::Shifted(exact::Lambert(exact::Ellipsoid::FromAxes(kCountyA, kCountyB), kSouth * kDeg,
                                    kNorth * kDeg, {kPhi0 * kDeg, kLambda0 * kDeg}),
                     30480.0609601219, 152400.30480061),
      Rings(kPhi0, kLambda0, {0, 100, 1000}),
      1,
      ""};
}

Subject California1927() {
  constexpr double kParallel = 40.8351061;  // the arc sine of L6
  return {"TLC27Proj, California I",
          Make<TLC27Proj>(2000000, 439200, 24245358.05, 24792436.23, 0.9998946358, 0.6538843192,
                          146486.75847, 3.80992, 3.93575, 0, 401),
          exact::Shifted(exact::Lambert(Clarke1866(), 40 * kDeg, (41 + 40 / 60.0) * kDeg,
                                        {(39 + 20 / 60.0) * kDeg, -122 * kDeg}),
                         0, 2000000 * kFoot),
          Bands({0, 0.5, 1, 1.5, 3},
                [](double from, double to) {
                  return BesideParallel(kParallel, from, to, -124.5, -119.5);
                }),
          3,
          ""};
}

Subject AlbersSubject() {
  return {"TAlbersEAConicProj",
          Make<TAlbersEAConicProj>(kWgs84A, kWgs84InvF, 29.5 * kDeg, 45.5 * kDeg, -96 * kDeg,
                                   37.5 * kDeg, 0, 0),
          exact::Albers(kWgs84.Exact(), 29.5 * kDeg, 45.5 * kDeg, {37.5 * kDeg, -96 * kDeg}),
          WithPole(-96, Rings(37.5, -96, {0, 100, 1000, 3000, 5000})),
          3,
          "+proj=aea +lat_1=29.5 +lat_2=45.5 +lat_0=37.5 +lon_0=-96 +ellps=WGS84"};
}

Subject KrovakSubject() {
  constexpr double kPhi0 = 49.5 * kDeg, kFromFerro = 42.5 * kDeg, kFerro = (17 + 40 / 60.0) * kDeg;
  constexpr double kPole = (59 + 42 / 60.0 + 42.69689 / 3600) * kDeg, kPseudo = 78.5 * kDeg;
  return {"TKrovakProj",
          Make<TKrovakProj>(kBessel.a, kBessel.invF, kPhi0, kFromFerro, kFerro, kPole, kPseudo,
                            0.9999, 0, 0),
          exact::Krovak(kBessel.Exact(), {kPhi0, kFromFerro - kFerro, 0.9999}, kPole, kPseudo),
          Rings(49.5, 17.5, {0, 100, 500, 1000}),
          2,
          "+proj=krovak +axis=wsu +lat_0=49.5 +lon_0=24.83333333333333 +k=0.9999 +ellps=bessel"};
}

Family Cones() {
  return {"Cones",
          R"(
Against the closed formulas. TLC27Proj is a tabular method: shown is how far its tables are from the
rigorous projection of the zone, beside its central parallel. What happens at the pole: TLCProj's
inverse puts points more than a quarter turn of the cone west of the origin 2π/n too far east, as
its comment says, and Albers' projection, being equal-area, squeezes the last kilometre so that
latitudes have only half of their digits. Krovak's cone counts from the middle of its country.)",
          {LambertSubject(), StatePlaneLambert1983(), CountyLambert(), California1927(),
           AlbersSubject(), KrovakSubject()}};
}

// ---- stereographic ----

Subject DoubleStereographicSubject(const char* name, std::shared_ptr<TGeoProj> projection,
                                   const TestEllipsoid& ellipsoid, double phi0, double lambda0,
                                   double scale) {
  return {name,
          std::move(projection),
          exact::DoubleStereographic(ellipsoid.Exact(), {phi0 * kDeg, lambda0 * kDeg, scale}),
          Rings(phi0, lambda0, {0, 100, 300, 1000, 3000}),
          2,
          ""};
}

std::vector<Subject> DoubleStereographicSubjects() {
  constexpr double kPhi0 = 52.156160555556, kLambda0 = 5.387638888889;
  std::vector<Subject> subjects = {
      DoubleStereographicSubject(
          "TDoubleSter", Make<TDoubleSter>(kWgs84A, kWgs84InvF, 52 * kDeg, 5 * kDeg, 0.9999, 0, 0),
          kWgs84, 52, 5, 0.9999),
      DoubleStereographicSubject(
          "TRDProj", Make<TRDProj>(kBessel.a, kBessel.invF, kPhi0 * kDeg, kLambda0 * kDeg, 0, 0),
          kBessel, kPhi0, kLambda0, 0.9999079),
      DoubleStereographicSubject(
          "TRomaniaSter",
          Make<TRomaniaSter>(kKrassovsky.a, kKrassovsky.invF, 46 * kDeg, 25 * kDeg, 0.99975, 0, 0),
          kKrassovsky, 46, 25, 0.99975)};
  subjects[0].projPipeline = "+proj=sterea +lat_0=52 +lon_0=5 +k=0.9999 +ellps=WGS84";
  return subjects;
}

Subject StereographicSubject(const char* name, double phi0, double lambda0,
                             std::initializer_list<double> edges, const char* pipeline) {
  return {name,
          Make<TSterProj>(kWgs84A, kWgs84InvF, phi0 == 90 ? kHalfPi : phi0 * kDeg, lambda0 * kDeg,
                          0.994, 0, 0),
          exact::Stereographic(kWgs84.Exact(), {phi0 * kDeg, lambda0 * kDeg, 0.994}),
          Rings(phi0, lambda0, edges),
          3,
          pipeline};
}

Family Stereographic() {
  Family family{"Stereographic",
                R"(
Against the closed formulas. TRDTransProj has the figures of TDoubleSter, which it runs before a
host's correction. The polar aspect takes the latitude back from a series to e⁸.)",
                {StereographicSubject("TSterProj, oblique", 40, -100, {0, 100, 1000, 3000, 5000},
                                      "+proj=stere +lat_0=40 +lon_0=-100 +k_0=0.994 +ellps=WGS84"),
                 StereographicSubject("TSterProj, equatorial", 0, 20, {0, 100, 1000, 3000, 5000},
                                      "+proj=stere +lat_0=0 +lon_0=20 +k_0=0.994 +ellps=WGS84"),
                 StereographicSubject("TSterProj, polar", 90, 0, {0, 1, 1000, 3000, 10000},
                                      "+proj=stere +lat_0=90 +k_0=0.994 +ellps=WGS84")}};
  for (Subject& subject : DoubleStereographicSubjects()) family.subjects.push_back(subject);
  return family;
}

// ---- oblique cylinders and grids of their own ----

template <class Proj, class... Rest>
Subject HotineSubject(const char* name, const TestEllipsoid& ellipsoid, double azimuth,
                      double scale, double lambda0, double phi0, exact::Turn turn,
                      const char* pipeline, Rest... rest) {
  return {name,
          Make<Proj>(ellipsoid.a, ellipsoid.invF, azimuth, scale, lambda0 * kDeg, phi0 * kDeg, 0, 0,
                     rest...),
          exact::Hotine(ellipsoid.Exact(), azimuth, {phi0 * kDeg, lambda0 * kDeg, scale}, turn),
          Rings(phi0, lambda0, {0, 100, 1000, 3000}),
          2,
          pipeline};
}

Subject CountyOblique() {
  return {"TMinnesota_OMProj",
          Make<TMinnesota_OMProj>(kGrs80.a, kGrs80.invF, -94 * kDeg, 46 * kDeg, 0, 0, 1, 0, 0,
                                  kCountyA, kCountyB, 0, 30 * kDeg, 0),
          exact::Hotine(exact::Ellipsoid::FromAxes(kCountyA, kCountyB), 30 * kDeg,
                        {46 * kDeg, -94 * kDeg}, exact::Turn::byAzimuth),
          Rings(46, -94, {0, 100, 1000}),
          1,
          ""};
}

Subject Alaska1Of1927() {
  constexpr double kPhi0 = 57, kLambda0 = -(133 + 40 / 60.0);
  return {
      "TAK01Proj",
      Make<TAK01Proj>(),
      exact::Shifted(exact::Hotine(Clarke1866(), -std::atan(0.75L),
                                   {kPhi0 * kDeg, kLambda0 * kDeg, 0.9999}, exact::Turn::byAzimuth),
                     -5000000, 5000000),
      Rings(kPhi0, kLambda0, {0, 100, 500, 1000}),
      2,
      ""};
}

Subject SwissSubject() {
  constexpr double kPhi0 = 46 + 57 / 60.0 + 8.66 / 3600, kLambda0 = 7 + 26 / 60.0 + 22.5 / 3600;
  return {"TSwissProj",
          Make<TSwissProj>(kBessel.a, kBessel.invF, kLambda0 * kDeg, kPhi0 * kDeg, 0, 0),
          exact::Swiss(kBessel.Exact(), {kPhi0 * kDeg, kLambda0 * kDeg}),
          Rings(kPhi0, kLambda0, {0, 100, 300, 1000, 3000}),
          2,
          "+proj=somerc +lat_0=46.952405555555555 +lon_0=7.439583333333333 +ellps=bessel"};
}

// The published polynomials are the definition of the grid: their evaluation in extended precision.
exact::Projection NewZealandMapGrid() {
  return [](exact::Geographic p) -> exact::Plane {
    const auto powers = [](const auto& coefficients, std::complex<Real> x) {
      std::complex<Real> sum = 0, power = 1;
      for (const std::complex<Real>& c : coefficients) sum += c * (power *= x);
      return sum;
    };
    std::vector<std::complex<Real>> A(std::begin(nzmg::kA), std::end(nzmg::kA)), B;
    for (const nzmg::Complex& b : nzmg::kB) B.emplace_back(b.re, b.im);
    const Real unit = std::numbers::pi_v<Real> / 180 / 3600 * 1e5L;
    const Real psi = powers(A, (p.phi - Real{-41 * kDeg}) / unit).real();
    const std::complex<Real> z = powers(B, {psi, p.lambda - Real{173 * kDeg}});
    return {6023150 + kInternational.a * z.real(), 2510000 + kInternational.a * z.imag()};
  };
}

Subject NewZealandSubject() {
  std::vector<Band> bands = Rings(-41, 173, {0, 100, 400});
  bands.push_back({"the country, 34° to 47.5° S, 166° to 179° E",
                   BesideParallel(-40.75, 0, 6.75, 166, 179).points});
  bands.push_back(AroundPoint(-41, 173, 800, 1500));
  return {"TNZMGProj", Make<TNZMGProj>(), NewZealandMapGrid(), std::move(bands), 3, "+proj=nzmg"};
}

// The state's polynomial over the Malayan grid, undone by fixed-point steps of chains.
exact::Projection Johor() {
  constexpr Real kChain = 20.116782494376L, kUnit = 1e4L;
  const exact::Projection malayan =
      exact::Shifted(exact::Hotine(kEverest.Exact(), -36.9742095 * kDeg,
                                   {4 * kDeg, 102.25 * kDeg, 0.99984}, exact::Turn::byAposphere),
                     0, 804671.2996);
  return [=](exact::Geographic p) -> exact::Plane {
    const exact::Plane grid = malayan(p);
    const Real dE = grid.east / kChain - 30745.124L, dN = grid.north / kChain - 11227.927L;
    Real X = dE, Y = dN;
    for (int round = 0; round < 40; ++round) {
      const Real x = X / kUnit, y = Y / kUnit;
      X = dE - (-0.0098L - 2.0871L * x + 5.29886L * y - 0.47547L * x * x - 0.74017L * x * y -
                0.64384L * y * y);
      Y = dN - (0.021L - 5.27113L * x - 1.83579L * y + 0.17978L * x * x + 0.58805L * x * y -
                0.66614L * y * y);
    }
    return {kChain * Y, kChain * X};
  };
}

Subject JohorSubject() {
  const auto projection = Make<TMalaysia_CSProj>();
  projection->SetEllipsoid(kEverest.a, kEverest.invF);
  return {"TMalaysia_CSProj", projection, Johor(), Rings(2.04, 103.56, {0, 50, 150, 500}), 2, ""};
}

Family Oblique() {
  using enum exact::Turn;
  const double alaskan = -std::atan(0.75);
  return {
      "Oblique cylinders, New Zealand Map Grid",
      R"(
Against the closed formulas. TAK01Proj evaluates constants as they were printed in 1968: shown is
how far they are from the projection that they stand for. TNZMGProj and TMalaysia_CSProj are defined
by published coefficients and compared with their evaluation in extended precision; outside its
country the New Zealand polynomial means nothing.)",
      {HotineSubject<TOMercatorProj>("TOMercatorProj", kWgs84, 30 * kDeg, 0.9996, 10, 47, byAzimuth,
                                     "+proj=omerc +no_uoff +alpha=30 +lonc=10 +lat_0=47 "
                                     "+k_0=0.9996 +ellps=WGS84"),
       HotineSubject<TRSOProj>("TRSOProj", kEverest, -36.9742095 * kDeg, 0.99984, 102.25, 4,
                               byAposphere,
                               "+proj=omerc +no_uoff +alpha=-36.9742095 "
                               "+gamma=-36.869897708488084 +lonc=102.25 +lat_0=4 +k_0=0.99984 "
                               "+a=6377304.063 +rf=300.8017"),
       HotineSubject<TSPC_OM83Proj>("TSPC_OM83Proj", kGrs80, alaskan, 0.9999, -133.6666, 57,
                                    byAzimuth, "", 5001),
       CountyOblique(), Alaska1Of1927(), SwissSubject(), NewZealandSubject(), JohorSubject()}};
}

}  // namespace

std::vector<Family> Families() {
  return {TransverseMercator(), Cylinders(), Cones(), Stereographic(), Oblique()};
}
