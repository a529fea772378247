// What every projection promises, class by class. A class appends its row to Rows(); a law that it
// does not keep is named in the row, with the reason.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/geomath.h"
#include "geomath/simd/instruction_set.h"
#include "tests/support/covariance_draws.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;
using ProjPtr = std::unique_ptr<TGeoProj>;

struct TestEllipsoid {
  double a, invF;
};
constexpr TestEllipsoid kGrs80{6378137.0, 298.257222101};
constexpr TestEllipsoid kInternational{6378388.0, 297.0};
constexpr TestEllipsoid kClarke1866{6378206.4, 294.9786982138982};

// Degrees, both ends included.
struct Domain {
  double south, north, west, east;
};

struct Laws {
  const char* name;
  unsigned int type;
  const char* kinds;  // one letter a parameter: a angle, l length, s scale, n number
  Domain domain;
  double roundTripRad = tolerance::kRoundTripRadians;  // worst difference after forward, inverse
  std::optional<double> scale = {};          // tolerance of the stored scale; none: not computed
  std::optional<double> convergence = {};    // the same for the convergence, radians
  std::optional<double> conformal = {};      // tolerance of Cauchy-Riemann; none: not conformal
  std::optional<TestEllipsoid> metric = {};  // when it is not the one that the object is built on
  int eastIndex = -1, northIndex = -1;       // parameters of the false origin
  const char* keepsFalseOrigin = nullptr;    // why a false origin does not shift the results
  const char* copiesLess = nullptr;          // why CopyGeoProj does not give the same results
  const char* keepsFailure = nullptr;        // why a latitude beyond a pole is no failure
  int waitingIndex = -1;                     // parameter that takes effect with another only
};

struct Row {
  Laws laws;
  std::function<ProjPtr(TestEllipsoid)> make;
  std::function<ProjPtr()> makeDefault;
  std::function<ProjPtr(const TGeoProj&)> copy;
  // Sets a parameter by its typed setter; false without one.
  std::function<bool(TGeoProj&, std::size_t, double)> set;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.laws.name; }

template <class Make>
using ProjOf = decltype(std::declval<Make>()(TestEllipsoid{}));

// The typed setters in the order of the parameters; null for one without, or whose setter is kept
// from taking effect at once.
template <class Proj>
using Setters = std::vector<void (Proj::*)(double)>;

// `make` builds the object on an ellipsoid, by value.
template <class Make>
Row RowOf(const Laws& laws, Make make, const Setters<ProjOf<Make>>& setters = {}) {
  using Proj = ProjOf<Make>;
  return {laws, [make](TestEllipsoid e) { return ProjPtr(new Proj(make(e))); },
          [] { return ProjPtr(new Proj()); },
          [](const TGeoProj& p) { return ProjPtr(new Proj(dynamic_cast<const Proj&>(p))); },
          [setters](TGeoProj& p, std::size_t i, double value) {
            if (i >= setters.size() || !setters[i]) return false;
            (dynamic_cast<Proj&>(p).*setters[i])(value);
            return true;
          }};
}

constexpr double kNumericScale = 1e-9;  // fourth-order differences over 640 m of 1e7 m coordinates
constexpr double kNumericAngle = 1e-9;  // the same, radians

void AppendObliqueRows(std::vector<Row>& rows) {
  const double deg = kDegree;
  const auto hotine = [&](const char* name, unsigned int type, const char* kinds, Domain domain,
                          auto make) {
    using Proj = decltype(make(TestEllipsoid{}));
    const bool described = std::is_same_v<Proj, TOMercatorProj>;
    rows.push_back(RowOf(
        {.name = name,
         .type = type,
         .kinds = kinds,
         .domain = domain,
         .scale = kNumericScale,
         .conformal = kNumericScale,
         .eastIndex = 4,
         .northIndex = 5,
         .keepsFailure = described ? "neither direction fails" : nullptr},
        make,
        {&Proj::AxisAzimuth, &Proj::Scale, &Proj::Lon0, &Proj::Lat0, &Proj::FEast, &Proj::FNorth}));
  };
  hotine("TOMercatorProj", 15, "nsaall", {-30, 85, -40, 60}, [=](TestEllipsoid e) {
    return TOMercatorProj(e.a, e.invF, 30 * deg, 0.9996, 10 * deg, 47 * deg, 500000, -100000);
  });
  hotine("TOMercatorProj_South", 15, "nsaall", {-85, 20, 10, 90}, [=](TestEllipsoid e) {
    return TOMercatorProj(e.a, e.invF, 18.9 * deg, 1, 46.4 * deg, -18.9 * deg, 400000, 800000);
  });
  hotine("TOMercatorProj_EastWest", 15, "nsaall", {-20, 80, -60, 70}, [=](TestEllipsoid e) {
    return TOMercatorProj(e.a, e.invF, kHalfPi, 1, 7 * deg, 47 * deg, 0, 0);
  });
  hotine("TRSOProj", 21, "asaall", {-40, 50, 60, 145}, [=](TestEllipsoid e) {
    return TRSOProj(e.a, e.invF, -37 * deg, 0.99984, 102.25 * deg, 4 * deg, 804671.2996, 0);
  });
  hotine("TSPC_OM83Proj", 2, "asaalln", {30, 80, -170, -100}, [=](TestEllipsoid e) {
    return TSPC_OM83Proj(e.a, e.invF, -36.87 * deg, 0.9999, -133.6 * deg, 57 * deg, 5e6, -5e6,
                         5001);
  });
  rows.push_back(RowOf(
      {.name = "TMinnesota_OMProj",
       .type = 28,
       .kinds = "aaaaslllllal",
       .domain = {20, 70, -130, -60},
       .scale = kNumericScale,
       .conformal = kNumericScale,
       .eastIndex = 6,
       .northIndex = 5},
      [=](TestEllipsoid e) {
        return TMinnesota_OMProj(e.a, e.invF, -94 * deg, 46 * deg, 0, 0, 1, 50000, 120000, 0, 0, 0,
                                 30 * deg, 0);
      },
      {&TMinnesota_OMProj::LonOrigin, &TMinnesota_OMProj::LatOrigin, &TMinnesota_OMProj::NorthStdP,
       &TMinnesota_OMProj::SouthStdP, &TMinnesota_OMProj::Scale, &TMinnesota_OMProj::FNorth,
       &TMinnesota_OMProj::FEast, nullptr, nullptr, nullptr, &TMinnesota_OMProj::ObliqueAngle}));
  rows.push_back(
      RowOf({.name = "TSwissProj",
             .type = 20,
             .kinds = "aall",
             .domain = {-35, 85, -170, 170},
             .scale = kNumericScale,
             .conformal = kNumericScale,
             .eastIndex = 2,
             .northIndex = 3},
            [=](TestEllipsoid e) {
              return TSwissProj(e.a, e.invF, 7.44 * deg, 46.95 * deg, 600000, 200000);
            },
            {&TSwissProj::L0, &TSwissProj::B0, &TSwissProj::FEast, &TSwissProj::FNorth}));
  rows.push_back(RowOf({.name = "TMalaysia_CSProj",
                        .type = 24,
                        .kinds = "aannnnnnnnnnnnnn",
                        .domain = {1.4, 2.6, 102.9, 104.2},
                        .keepsFalseOrigin = "there is none"},
                       [](TestEllipsoid e) {
                         TMalaysia_CSProj proj;
                         proj.SetEllipsoid(e.a, e.invF);
                         return proj;
                       }));
  rows.push_back(RowOf({.name = "TMalaysia_CS2000Proj",
                        .type = 39,
                        .kinds = "asaa",
                        .domain = {1.4, 2.6, 102.5, 104.4},
                        .keepsFalseOrigin = "there is none"},
                       [=](TestEllipsoid e) {
                         return TMalaysia_CS2000Proj(e.a, e.invF, 3 * deg, 0.9999, 103.4 * deg,
                                                     2.1 * deg);
                       },
                       {&TMalaysia_CS2000Proj::AxisAzimuth, &TMalaysia_CS2000Proj::Scale,
                        &TMalaysia_CS2000Proj::Lon0, &TMalaysia_CS2000Proj::Lat0}));
  // The coefficients make it conformal on the International ellipsoid, of another e² than this one.
  rows.push_back(
      RowOf({.name = "TNZMGProj",
             .type = 34,
             .kinds = "aall",
             .domain = {-47.5, -34, 166, 179},
             .roundTripRad = 2e-11,  // the series back from isometric latitude
             .scale = kNumericScale,
             .conformal = 3e-5,
             .eastIndex = 2,
             .northIndex = 3},
            [=](TestEllipsoid e) {
              return TNZMGProj(e.a, e.invF, -41 * deg, 173 * deg, 2510000, 6023150);
            },
            {&TNZMGProj::Lat0, &TNZMGProj::Lon0, &TNZMGProj::FEast, &TNZMGProj::FNorth}));
  rows.push_back(RowOf({.name = "TAK01Proj",
                        .type = 8,
                        .kinds = "nnnnnnnnnnnn",
                        .domain = {54, 60.5, -138, -130},
                        .scale = kNumericScale,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .metric = kClarke1866,
                        .keepsFalseOrigin = "it is built in"},
                       [](TestEllipsoid) { return TAK01Proj(); },
                       {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr, &TAK01Proj::Lon0}));
  rows.push_back(RowOf({.name = "TAK29Proj",
                        .type = 9,
                        .kinds = "nnn",
                        .domain = {54, 72, -144, -140},
                        .roundTripRad = 1.6e-11,  // 0.1 mm
                        .scale = 1e-8,            // one published term
                        .convergence = 1e-10,     // published series
                        .conformal = 1e-8,
                        .metric = kClarke1866,
                        .keepsFalseOrigin = "its easting is in feet, its northing built in"},
                       [](TestEllipsoid) { return TAK29Proj(500000, 511200, 5002); },
                       {nullptr, &TAK29Proj::CM}));
}

void AppendTransverseRows(std::vector<Row>& rows) {
  const double deg = kDegree;
  // What the series of a zone leaves over within 2.5° of its meridian. The round trip is that of
  // TUTMProj's forward arc, which lacks 4.9e-12·sin 8φ at the point and at the origin; without that
  // it is 1.8e-12.
  constexpr double kZoneScale = 3e-9, kZoneAngle = 1e-9;
  const auto zone = [&](const char* name, unsigned int type, const char* kinds, int east, int north,
                        auto make, const Setters<ProjOf<decltype(make)>>& setters) {
    rows.push_back(RowOf({.name = name,
                          .type = type,
                          .kinds = kinds,
                          .domain = {-80, 84, 6.5, 11.5},
                          .scale = kZoneScale,
                          .convergence = kZoneAngle,
                          .conformal = kZoneScale,
                          .eastIndex = east,
                          .northIndex = north},
                         make, setters));
  };
  rows.push_back(
      RowOf({.name = "TTMProj",
             .type = 0,
             .kinds = "asall",
             .domain = {-80, 84, 6.5, 11.5},
             .roundTripRad = 1.6e-10,  // 1 mm, the tolerance of the footpoint
             .conformal = 3e-8,        // of a series that ends with Δλ⁶
             .eastIndex = 3,
             .northIndex = 4},
            [=](TestEllipsoid e) {
              return TTMProj(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000);
            },
            {&TTMProj::CM, &TTMProj::Scale, &TTMProj::Lat0, &TTMProj::FEast, &TTMProj::FNorth}));
  zone("TUTMProj", 0, "asall", 3, 4,
       [=](TestEllipsoid e) {
         return TUTMProj(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000);
       },
       {&TUTMProj::CM, &TUTMProj::Scale, &TUTMProj::Lat0, &TUTMProj::FEast, &TUTMProj::FNorth});
  zone("TTTMNZ", 0, "asalls", 3, 4,
       [=](TestEllipsoid e) {
         return TTTMNZ(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000, 0.999998261);
       },
       {&TTTMNZ::CM, &TTTMNZ::Scale, &TTTMNZ::Lat0, &TTTMNZ::FEast, &TTTMNZ::FNorth,
        &TTTMNZ::GridScale});
  zone("TSPC_TM83Proj", 1, "asalln", 3, 4,
       [=](TestEllipsoid e) {
         return TSPC_TM83Proj(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000, 2900);
       },
       {&TSPC_TM83Proj::CM, &TSPC_TM83Proj::Scale, &TSPC_TM83Proj::Lat0, &TSPC_TM83Proj::FEast,
        &TSPC_TM83Proj::FNorth});
  zone("TMinnesota_TMProj", 27, "aaaaslllllal", 6, 5,
       [=](TestEllipsoid e) {
         return TMinnesota_TMProj(e.a, e.invF, 9 * deg, 46 * deg, 0, 0, 1.00005, 200000, 500000, 0,
                                  0, 0, 0, 0);
       },
       {&TMinnesota_TMProj::LonOrigin, &TMinnesota_TMProj::LatOrigin, &TMinnesota_TMProj::NorthStdP,
        &TMinnesota_TMProj::SouthStdP, &TMinnesota_TMProj::Scale, &TMinnesota_TMProj::FNorth,
        &TMinnesota_TMProj::FEast, nullptr, nullptr, nullptr, &TMinnesota_TMProj::ObliqueAngle});

  const auto danish = [&](const char* name, const char* copiesLess, auto make) {
    using Proj = decltype(make(TestEllipsoid{}));
    rows.push_back(RowOf({.name = name,
                          .type = 36,
                          .kinds = "asall",
                          .domain = {-85, 85, -30, 40},
                          .conformal = kNumericScale,
                          .eastIndex = 3,
                          .northIndex = 4,
                          .copiesLess = copiesLess},
                         make,
                         {&Proj::CM, &Proj::Scale, &Proj::Lat0, &Proj::FEast, &Proj::FNorth}));
  };
  danish("TDenmarkTMProj", nullptr, [=](TestEllipsoid e) {
    return TDenmarkTMProj(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000);
  });
  danish("TKMSProjTM", nullptr, [=](TestEllipsoid e) {
    return TKMSProjTM(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000);
  });
  danish("TKMSTransProj", "its system number is no parameter", [=](TestEllipsoid e) {
    return TKMSTransProj(e.a, e.invF, 9 * deg, 0.9996, 10 * deg, 500000, 200000, 98);
  });

  rows.push_back(
      RowOf({.name = "TTM27Proj",
             .type = 6,
             .kinds = "nnnnnn",
             .domain = {29, 36, -86.8, -84.8},
             .roundTripRad = 1.6e-10,  // 1 mm
             .scale = 4e-7,            // one published term, 3.1e-7 measured
             .convergence = 1e-7,
             .conformal = 2e-6,  // the departure of the method, 23 mm in 1°
             .metric = kClarke1866,
             .keepsFalseOrigin = "its easting is in feet, its northing in L34"},
            [](TestEllipsoid) {
              return TTM27Proj(500000, 309000, 109341.00903, 0.99996, 0.3817065, 101);
            },
            {&TTM27Proj::L1, &TTM27Proj::L2, &TTM27Proj::L34, &TTM27Proj::L5, &TTM27Proj::L6}));
  rows.push_back(
      RowOf({.name = "TMonSpher",
             .type = 38,
             .kinds = "aaanslla",
             .domain = {-85, 85, -10, 120},
             .scale = kNumericScale,
             .conformal = kNumericScale,
             .eastIndex = 5,
             .northIndex = 6},
            [=](TestEllipsoid e) {
              return TMonSpher(e.a, e.invF, -21 * deg, 55.5 * deg, -20 * deg, 1.0001, 0.9998,
                               160000, 50000, 7 * deg);
            },
            {&TMonSpher::Lat0, &TMonSpher::Lon0, &TMonSpher::LatNormal, &TMonSpher::K1,
             &TMonSpher::Scale, &TMonSpher::FEast, &TMonSpher::FNorth, &TMonSpher::AxisAzimuth}));
  rows.push_back(RowOf({.name = "TCassiniProj",
                        .type = 17,
                        .kinds = "aaall",
                        .domain = {-80, 80, 102.4, 104.4},
                        .roundTripRad = 3.2e-11,  // 0.2 mm
                        .eastIndex = 3,
                        .northIndex = 4},
                       [=](TestEllipsoid e) {
                         return TCassiniProj(e.a, e.invF, 2 * deg, 103.4 * deg, 10 * deg,
                                             -14810.562, 8758.32);
                       },
                       {&TCassiniProj::Lat0, &TCassiniProj::Lon0, &TCassiniProj::AxisAzimuth,
                        &TCassiniProj::FEast, &TCassiniProj::FNorth}));
  rows.push_back(RowOf(
      {.name = "TColombiaProj",
       .type = 22,
       .kinds = "aall",
       .domain = {4.2, 5.2, -74.6, -73.6},
       .roundTripRad = 1e-15,
       .eastIndex = 2,
       .northIndex = 3},
      [=](TestEllipsoid e) {
        return TColombiaProj(e.a, e.invF, 4.68 * deg, -74.146 * deg, 92334.879, 109320.965);
      },
      {&TColombiaProj::Lat0, &TColombiaProj::Lon0, &TColombiaProj::FEast, &TColombiaProj::FNorth}));
  rows.push_back(RowOf(
      {.name = "TMercatorProj",
       .type = 14,
       .kinds = "aall",
       .domain = {-88, 88, -120, 220},
       .scale = kNumericScale,
       .convergence = kNumericAngle,
       .conformal = kNumericScale,
       .eastIndex = 2,
       .northIndex = 3},
      [=](TestEllipsoid e) {
        return TMercatorProj(e.a, e.invF, 51 * deg, 42 * deg, 500000, 200000);
      },
      {&TMercatorProj::Lon0, &TMercatorProj::Lat0, &TMercatorProj::FEast, &TMercatorProj::FNorth}));
}

// Lambert, Albers, double stereographic and Krovak classes beside those above.
void AppendConicRows(std::vector<Row>& rows) {
  const double deg = kDegree;
  rows.push_back(RowOf({.name = "TSPC_LC83Proj",
                        .type = 3,
                        .kinds = "aaaalln",
                        .domain = {-60, 89, -215, 35},
                        .scale = kNumericScale,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .eastIndex = 4,
                        .northIndex = 5},
                       [=](TestEllipsoid e) {
                         return TSPC_LC83Proj(e.a, e.invF, 41.2 * deg, 41.9 * deg, -90 * deg,
                                              40 * deg, 3e5, 1e5, 6);
                       },
                       {&TSPC_LC83Proj::SouthLat, &TSPC_LC83Proj::NorthLat, &TSPC_LC83Proj::Lon0,
                        &TSPC_LC83Proj::Lat0, &TSPC_LC83Proj::FEast, &TSPC_LC83Proj::FNorth}));
  rows.push_back(RowOf({.name = "TSPC_LC83Proj_South",
                        .type = 3,
                        .kinds = "aaaalln",
                        .domain = {-89, 60, 60, 290},
                        .scale = kNumericScale,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .eastIndex = 4,
                        .northIndex = 5},
                       [=](TestEllipsoid e) {
                         return TSPC_LC83Proj(e.a, e.invF, -40 * deg, -30 * deg, 175 * deg,
                                              -35 * deg, 3e5, 1e5, 1);
                       }));
  // Design axes of the county; the shifts lift them by 100 m, which changes the flattening a little.
  const double desA = 6378411, desB = desA * (1 - 1 / 298.257222101), lift = 100;
  const double liftedInvF = (desA + lift) / (desA - desB);
  rows.push_back(RowOf(
      {.name = "TMinnesota_LAProj",
       .type = 29,
       .kinds = "aaaaslllllal",
       .domain = {-60, 89, -200, 15},
       .scale = kNumericScale,
       .conformal = kNumericScale,
       .metric = TestEllipsoid{desA + lift, liftedInvF},
       .eastIndex = 6,
       .northIndex = 5},
      [=](TestEllipsoid e) {
        return TMinnesota_LAProj(e.a, e.invF, -93 * deg, 45 * deg, 45.6 * deg, 45.3 * deg, 1, 3e4,
                                 15e4, desA, desB, 130, 0, -30);
      },
      {&TMinnesota_LAProj::LonOrigin, &TMinnesota_LAProj::LatOrigin, &TMinnesota_LAProj::NorthStdP,
       &TMinnesota_LAProj::SouthStdP, &TMinnesota_LAProj::Scale, &TMinnesota_LAProj::FNorth,
       &TMinnesota_LAProj::FEast, nullptr, nullptr, nullptr, &TMinnesota_LAProj::ObliqueAngle}));
  // California I. The tables of 1927 are conformal, and give the scale, to 1.3e-7.
  constexpr double kTable = 2e-7;
  rows.push_back(
      RowOf({.name = "TLC27Proj",
             .type = 7,
             .kinds = "nnnnnnnnnnn",
             .domain = {39.5, 42, -125, -119},
             .roundTripRad = 2e-10,
             .scale = kTable,
             .convergence = kTable,
             .conformal = kTable,
             .metric = TestEllipsoid{6378206.4, 294.9786982138982},
             .keepsFalseOrigin = "L1 is in feet and the northing of the origin is part of L4"},
            [](TestEllipsoid) {
              return TLC27Proj(2000000, 439200, 24245358.05, 24792436.23, 0.9998946358,
                               0.6538843192, 146486.75847, 3.80992, 3.93575, 0, 401);
            },
            {&TLC27Proj::L1, &TLC27Proj::L2, &TLC27Proj::L3, &TLC27Proj::L4, &TLC27Proj::L5,
             &TLC27Proj::L6, &TLC27Proj::L78, &TLC27Proj::L9, &TLC27Proj::L10, &TLC27Proj::L11}));
  rows.push_back(RowOf(
      {.name = "TAlbersEAConicProj",
       .type = 4,
       .kinds = "aaaall",
       .domain = {-60, 85, -270, 80},
       .eastIndex = 4,
       .northIndex = 5},
      [=](TestEllipsoid e) {
        return TAlbersEAConicProj(e.a, e.invF, 29.5 * deg, 45.5 * deg, -96 * deg, 23 * deg, 1e6,
                                  1e5);
      },
      {&TAlbersEAConicProj::SouthLat, &TAlbersEAConicProj::NorthLat, &TAlbersEAConicProj::Lon0,
       &TAlbersEAConicProj::Lat0, &TAlbersEAConicProj::FEast, &TAlbersEAConicProj::FNorth}));
  rows.push_back(RowOf({.name = "TAlbersEAConicProj_South",
                        .type = 4,
                        .kinds = "aaaall",
                        .domain = {-85, 60, 50, 310},
                        .eastIndex = 4,
                        .northIndex = 5},
                       [=](TestEllipsoid e) {
                         return TAlbersEAConicProj(e.a, e.invF, -36 * deg, -18 * deg, 170 * deg, 0,
                                                   1e6, 1e5);
                       }));
  rows.push_back(RowOf({.name = "TRomaniaSter",
                        .type = 26,
                        .kinds = "aasll",
                        .domain = {43, 49, 19, 31},
                        .scale = 2e-4,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .eastIndex = 3,
                        .northIndex = 4,
                        .keepsFailure = "the forward direction never fails"},
                       [=](TestEllipsoid e) {
                         return TRomaniaSter(e.a, e.invF, 46 * deg, 25 * deg, 0.99975, 5e5, 5e5);
                       },
                       {&TRomaniaSter::Lat0, &TRomaniaSter::Lon0, &TRomaniaSter::Scale,
                        &TRomaniaSter::FEast, &TRomaniaSter::FNorth}));
  rows.push_back(RowOf(
      {.name = "TRDProj",
       .type = 30,
       .kinds = "aall",
       .domain = {50, 54, 3, 8},
       .scale = 2e-4,
       .convergence = kNumericAngle,
       .conformal = kNumericScale,
       .eastIndex = 2,
       .northIndex = 3},
      [=](TestEllipsoid e) { return TRDProj(e.a, e.invF, 52.2 * deg, 5.4 * deg, 155000, 463000); },
      {&TRDProj::Lat0, &TRDProj::Lon0, &TRDProj::FEast, &TRDProj::FNorth}));
  rows.push_back(RowOf({.name = "TRDTransProj",
                        .type = 31,
                        .kinds = "aasll",
                        .domain = {50, 54, 3, 8},
                        .scale = 2e-4,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .eastIndex = 3,
                        .northIndex = 4},
                       [=](TestEllipsoid e) {
                         return TRDTransProj(e.a, e.invF, 52.2 * deg, 5.4 * deg, 0.9999079, 155000,
                                             463000);
                       },
                       {&TRDTransProj::Lat0, &TRDTransProj::Lon0, &TRDTransProj::Scale,
                        &TRDTransProj::FEast, &TRDTransProj::FNorth}));
  rows.push_back(RowOf({.name = "TKrovakProj",
                        .type = 37,
                        .kinds = "aaaaasll",
                        .domain = {40, 54, 8, 40},
                        .conformal = kNumericScale,
                        .keepsFalseOrigin = "stored and reported, never added",
                        .keepsFailure = "the forward direction never fails",
                        .waitingIndex = 5},
                       [=](TestEllipsoid e) {
                         return TKrovakProj(e.a, e.invF, 49.5 * deg, 42.5 * deg, 17 * deg,
                                            59.7 * deg, 78.5 * deg, 0.9999, 1, 2);
                       },
                       {&TKrovakProj::Lat0, &TKrovakProj::Lon0, &TKrovakProj::dLon,
                        &TKrovakProj::Uq, &TKrovakProj::S0}));
}

std::vector<Row> Rows() {
  std::vector<Row> rows;
  const double deg = kDegree;

  rows.push_back(RowOf({.name = "TLCProj_North",
                        .type = 4,
                        .kinds = "aaaalls",
                        .domain = {-60, 89, -100, 100},
                        .scale = kNumericScale,
                        .conformal = kNumericScale,
                        .eastIndex = 4,
                        .northIndex = 5,
                        .keepsFailure = "it fails at the poles themselves only"},
                       [=](TestEllipsoid e) {
                         return TLCProj(e.a, e.invF, 33 * deg, 45 * deg, 5 * deg, 23 * deg, 500000,
                                        200000, 0.9998);
                       },
                       {nullptr, nullptr, &TLCProj::Lon0, nullptr, &TLCProj::FEast,
                        &TLCProj::FNorth, &TLCProj::Scale}));
  rows.push_back(RowOf({.name = "TLCProj_SouthDateLine",
                        .type = 4,
                        .kinds = "aaaalls",
                        .domain = {-89, 60, 100, 250},
                        .scale = kNumericScale,
                        .conformal = kNumericScale,
                        .eastIndex = 4,
                        .northIndex = 5,
                        .keepsFailure = "it fails at the poles themselves only"},
                       [=](TestEllipsoid e) {
                         return TLCProj(e.a, e.invF, -36 * deg, -36 * deg, 175 * deg, -37 * deg,
                                        500000, 200000, 1);
                       }));
  rows.push_back(RowOf({.name = "TSterProj_Oblique",
                        .type = 10,
                        .kinds = "aasll",
                        .domain = {-40, 89, -75, 95},
                        .scale = kNumericScale,
                        .conformal = kNumericScale,
                        .eastIndex = 3,
                        .northIndex = 4},
                       [=](TestEllipsoid e) {
                         return TSterProj(e.a, e.invF, 40 * deg, 10 * deg, 0.9999, 500000, 200000);
                       },
                       {&TSterProj::Lat0, &TSterProj::Lon0, &TSterProj::Scale, &TSterProj::FEast,
                        &TSterProj::FNorth}));
  rows.push_back(RowOf({.name = "TSterProj_ObliqueSouthDateLine",
                        .type = 10,
                        .kinds = "aasll",
                        .domain = {-89, 40, 94, 264},
                        .scale = kNumericScale,
                        .conformal = kNumericScale,
                        .eastIndex = 3,
                        .northIndex = 4},
                       [=](TestEllipsoid e) {
                         return TSterProj(e.a, e.invF, -45 * deg, 179 * deg, 1, 500000, 200000);
                       }));
  rows.push_back(
      RowOf({.name = "TSterProj_Equatorial",
             .type = 10,
             .kinds = "aasll",
             .domain = {-89, 89, -80, 80},
             .scale = kNumericScale,
             .conformal = kNumericScale,
             .eastIndex = 3,
             .northIndex = 4},
            [=](TestEllipsoid e) { return TSterProj(e.a, e.invF, 0, 0, 1, 500000, 200000); }));
  rows.push_back(
      RowOf({.name = "TSterProj_NorthPole",
             .type = 10,
             .kinds = "aasll",
             .domain = {-30, 89.5, -179, 179},
             .scale = kNumericScale,
             .conformal = kNumericScale,
             .eastIndex = 3,
             .northIndex = 4},
            [](TestEllipsoid e) { return TSterProj(e.a, e.invF, kHalfPi, 0, 0.994, 2e6, 2e6); }));
  rows.push_back(RowOf(
      {.name = "TSterProj_SouthPole",
       .type = 10,
       .kinds = "aasll",
       .domain = {-89.5, 30, -170, 179},
       .scale = kNumericScale,
       .conformal = kNumericScale,
       .eastIndex = 3,
       .northIndex = 4},
      [=](TestEllipsoid e) { return TSterProj(e.a, e.invF, -kHalfPi, 7 * deg, 0.994, 2e6, 2e6); }));
  // The stored scale is exact on the parallel of origin only (DoubleSterProj.Keeps…).
  rows.push_back(RowOf({.name = "TDoubleSter",
                        .type = 32,
                        .kinds = "aasll",
                        .domain = {-30, 89, -70, 80},
                        .scale = 3.4e-3,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .eastIndex = 3,
                        .northIndex = 4,
                        .keepsFailure = "the forward direction never fails"},
                       [=](TestEllipsoid e) {
                         return TDoubleSter(e.a, e.invF, 52 * deg, 5 * deg, 0.9999, 155000, 463000);
                       },
                       {&TDoubleSter::Lat0, &TDoubleSter::Lon0, &TDoubleSter::Scale,
                        &TDoubleSter::FEast, &TDoubleSter::FNorth}));
  rows.push_back(RowOf({.name = "TDoubleSter_South",
                        .type = 32,
                        .kinds = "aasll",
                        .domain = {-89, 30, 95, 245},
                        .scale = 3.4e-3,
                        .convergence = kNumericAngle,
                        .conformal = kNumericScale,
                        .eastIndex = 3,
                        .northIndex = 4,
                        .keepsFailure = "the forward direction never fails"},
                       [=](TestEllipsoid e) {
                         return TDoubleSter(e.a, e.invF, -45 * deg, 170 * deg, 1, 155000, 463000);
                       }));
  AppendConicRows(rows);
  AppendObliqueRows(rows);
  AppendTransverseRows(rows);
  return rows;
}

class ProjectionLaws : public ::testing::TestWithParam<Row> {
 protected:
  const Laws& laws() const { return GetParam().laws; }
  ProjPtr Make() const { return GetParam().make(kGrs80); }

  // Calls visit(φ, λ), radians, over the domain; the lattice avoids symmetric positions.
  template <class Visit>
  void ForEachPoint(Visit visit) const {
    constexpr int kRows = 13, kColumns = 11;
    const auto [south, north, west, east] = laws().domain;
    for (int i = 0; i < kRows; ++i)
      for (int j = 0; j < kColumns; ++j) {
        const double phi = kDegree * (south + (north - south) * i / (kRows - 1));
        const double lambda = kDegree * (west + (east - west) * j / (kColumns - 1));
        SCOPED_TRACE(::testing::Message()
                     << "latitude " << phi / kDegree << ", longitude " << lambda / kDegree);
        visit(phi, lambda);
        if (HasFailure()) return;
      }
  }

  // Forward and inverse of two objects agree exactly over the domain, factors too.
  void ExpectSameResults(TGeoProj& p, TGeoProj& q) const {
    ForEachPoint([&](double phi, double lambda) {
      double b = phi, l = lambda, bq = phi, lq = lambda;
      ASSERT_TRUE(p.Forward(b, l));
      ASSERT_TRUE(q.Forward(bq, lq));
      EXPECT_EQ(b, bq);
      EXPECT_EQ(l, lq);
      EXPECT_EQ(p.GetScale(), q.GetScale());
      EXPECT_EQ(p.GetConvergence(), q.GetConvergence());
      ASSERT_TRUE(p.Inverse(b, l));
      ASSERT_TRUE(q.Inverse(bq, lq));
      EXPECT_EQ(b, bq);
      EXPECT_EQ(l, lq);
    });
  }
};

TEST_P(ProjectionLaws, InverseUndoesForward) {
  const ProjPtr proj = Make();
  double worst = 0;
  ForEachPoint([&](double phi, double lambda) {
    double b = phi, l = lambda;
    ASSERT_TRUE(proj->Forward(b, l));
    ASSERT_TRUE(proj->Inverse(b, l));
    const double off = std::hypot(b - phi, SetValue(l - lambda, 1) * std::cos(phi));
    worst = std::max(worst, off);
    EXPECT_LE(off, laws().roundTripRad);
  });
  RecordProperty("worst_rad", std::to_string(worst * 1e15) + "e-15");
  std::cout << laws().name << ": worst round trip " << worst << " rad\n";
}

TEST_P(ProjectionLaws, EveryParameterHasARowWithANameOfItsOwn) {
  const ProjPtr proj = GetParam().makeDefault();
  std::set<std::string> names;
  for (const ParamRow& row : proj->Params()) names.insert(row.name);
  EXPECT_EQ(proj->Params().size(), static_cast<std::size_t>(proj->GetQParam()));
  EXPECT_EQ(names.size(), proj->Params().size());
}

TEST_P(ProjectionLaws, ParametersComeBackInBothUnits) {
  const ProjPtr proj = Make();
  const std::string kinds = laws().kinds;
  EXPECT_EQ(static_cast<unsigned int>(proj->GetType()), laws().type);
  ASSERT_EQ(proj->GetQParam(), static_cast<int>(kinds.size()));
  for (int i = 0; i < proj->GetQParam(); ++i) {
    SCOPED_TRACE(::testing::Message() << "parameter " << i);
    const bool angle = kinds[static_cast<std::size_t>(i)] == 'a';
    const double value = proj->GetParam(i, 2) + 1;  // a whole number stays one
    proj->SetParam(value, i, 2);
    EXPECT_EQ(proj->GetParam(i, 2), value);
    EXPECT_EQ(proj->GetParam(i, 3), angle ? proj->RadToDMS(value) : value);
    proj->SetParam(3, i, 3);
    EXPECT_EQ(proj->GetParam(i, 2), angle ? proj->DMSToRad(3) : 3);
  }
}

TEST_P(ProjectionLaws, IndexOutsideReadsZeroAndWritesNothing) {
  const ProjPtr proj = Make(), untouched = Make();
  for (const int index :
       {-1, proj->GetQParam(), std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    EXPECT_EQ(proj->GetParam(index, 2), 0.0);
    proj->SetParam(77, index, 2);
  }
  ExpectSameResults(*proj, *untouched);
}

TEST_P(ProjectionLaws, CopyAgreesExactly) {
  const ProjPtr proj = Make(), copy = GetParam().copy(*proj);
  EXPECT_EQ(copy->GetType(), proj->GetType());
  ExpectSameResults(*proj, *copy);
}

TEST_P(ProjectionLaws, CopyGeoProjGivesTheSameResults) {
  if (laws().copiesLess) GTEST_SKIP() << laws().copiesLess;
  const ProjPtr proj = Make(), other = GetParam().makeDefault();
  ASSERT_TRUE(other->CopyGeoProj(proj.get()));
  ExpectSameResults(*proj, *other);
}

TEST_P(ProjectionLaws, SetEllipsoidEqualsBuildingOnIt) {
  const ProjPtr changed = Make(), built = GetParam().make(kInternational);
  changed->SetEllipsoid(kInternational.a, kInternational.invF);
  ExpectSameResults(*changed, *built);
}

// A parameter changed a little; a length of zero, which may be an axis that counts as not given, to
// one that an axis can have.
double Changed(double value, char kind) {
  constexpr double kStep = 1e-3, kAxis = 6357000;
  return kind == 'l' && value == 0 ? kAxis : value + kStep;
}

// Another object of the same parameters, each of which was followed by another.
ProjPtr Rebuild(const Row& row, const TGeoProj& proj) {
  ProjPtr built = row.makeDefault();
  built->SetEllipsoid(kGrs80.a, kGrs80.invF);
  for (int again = 0; again < 2; ++again)
    for (int i = 0; i < proj.GetQParam(); ++i) built->SetParam(proj.GetParam(i, 2), i, 2);
  return built;
}

TEST_P(ProjectionLaws, AParameterChangedAloneEqualsBuildingWithIt) {
  if (laws().copiesLess) GTEST_SKIP() << laws().copiesLess;
  for (int i = 0; i < Make()->GetQParam(); ++i) {
    if (i == laws().waitingIndex) continue;
    SCOPED_TRACE(::testing::Message() << "parameter " << i);
    const ProjPtr changed = Make();
    changed->SetParam(Changed(changed->GetParam(i, 2), laws().kinds[i]), i, 2);
    ExpectSameResults(*changed, *Rebuild(GetParam(), *changed));
  }
}

TEST_P(ProjectionLaws, ATypedSetterEqualsItsParameter) {
  for (int i = 0; i < Make()->GetQParam(); ++i) {
    SCOPED_TRACE(::testing::Message() << "parameter " << i);
    const ProjPtr changed = Make();
    const double value = Changed(changed->GetParam(i, 2), laws().kinds[i]);
    if (!GetParam().set(*changed, static_cast<std::size_t>(i), value)) continue;
    ASSERT_EQ(changed->GetParam(i, 2), value);
    if (!laws().copiesLess) ExpectSameResults(*changed, *Rebuild(GetParam(), *changed));
  }
}

TEST_P(ProjectionLaws, FailsBeyondThePolesRatherThanGivingNoNumber) {
  if (laws().keepsFailure) GTEST_SKIP() << laws().keepsFailure;
  const ProjPtr proj = Make();
  const double lambda = kDegree * (laws().domain.west + laws().domain.east) / 2;
  for (const double beyond : {1e-12, 1e-7, 0.02, 0.5, kHalfPi, 3.0})
    for (const double sign : {1.0, -1.0}) {
      double b = sign * (kHalfPi + beyond), l = lambda, n = b, e = l;
      const bool done = proj->Forward(b, l);
      EXPECT_TRUE(!done || (std::isfinite(b) && std::isfinite(l))) << beyond * sign;
      EXPECT_EQ(proj->ForwardBatch(&n, &e, 1), done ? 1u : 0u) << beyond * sign;
    }
}

TEST_P(ProjectionLaws, FalseOriginShifts) {
  if (laws().keepsFalseOrigin) GTEST_SKIP() << laws().keepsFalseOrigin;
  const ProjPtr proj = Make(), shifted = Make();
  const double dE = 1250, dN = -3750;
  shifted->SetParam(proj->GetParam(laws().eastIndex, 2) + dE, laws().eastIndex, 2);
  shifted->SetParam(proj->GetParam(laws().northIndex, 2) + dN, laws().northIndex, 2);
  ForEachPoint([&](double phi, double lambda) {
    double n = phi, e = lambda, ns = phi, es = lambda;
    ASSERT_TRUE(proj->Forward(n, e));
    ASSERT_TRUE(shifted->Forward(ns, es));
    const double rounding = tolerance::kSameFormulaMetres * (1 + 1e-7 * std::hypot(n, e));
    EXPECT_NEAR(ns - n, dN, rounding);
    EXPECT_NEAR(es - e, dE, rounding);
    ASSERT_TRUE(shifted->Inverse(ns, es));
    EXPECT_NEAR(ns, phi, laws().roundTripRad);
  });
}

using Batch = std::size_t (TGeoProj::*)(double*, double*, std::size_t, std::ptrdiff_t) const;

// The kernels of every narrower instruction set, and points alone, against the best of this machine.
void ExpectSameBitsOnEverySet(const TGeoProj& proj, Batch batch, const std::vector<double>& first,
                              const std::vector<double>& second) {
  const auto best = simd::ActiveInstructionSet();
  std::vector<double> firstBest = first, secondBest = second;
  (proj.*batch)(firstBest.data(), secondBest.data(), first.size(), 1);
  for (auto set : {simd::InstructionSet::baseline, simd::InstructionSet::avx2}) {
    std::vector<double> firstNarrow = first, secondNarrow = second;
    simd::ForceInstructionSet(set);
    (proj.*batch)(firstNarrow.data(), secondNarrow.data(), first.size(), 1);
    EXPECT_EQ(firstNarrow, firstBest);
    EXPECT_EQ(secondNarrow, secondBest);
  }
  simd::ForceInstructionSet(best);
  for (std::size_t i = 0; i < first.size(); ++i) {
    double x = first[i], y = second[i];
    (proj.*batch)(&x, &y, 1, 1);
    EXPECT_EQ(x, firstBest[i]);
    EXPECT_EQ(y, secondBest[i]);
  }
}

TEST_P(ProjectionLaws, BatchEqualsScalar) {
  const ProjPtr proj = Make();
  std::vector<double> first, second, firstScalar, secondScalar;
  ForEachPoint([&](double phi, double lambda) {
    first.push_back(phi);
    second.push_back(lambda);
    ASSERT_TRUE(proj->Forward(phi, lambda));
    firstScalar.push_back(phi);
    secondScalar.push_back(lambda);
  });
  const double scale = proj->GetScale();
  ExpectSameBitsOnEverySet(*proj, &TGeoProj::ForwardBatch, first, second);
  ASSERT_EQ(proj->ForwardBatch(first.data(), second.data(), first.size()), first.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    const double metres = tolerance::BatchMetres(std::hypot(firstScalar[i], secondScalar[i]));
    ASSERT_NEAR(first[i], firstScalar[i], metres);
    ASSERT_NEAR(second[i], secondScalar[i], metres);
  }
  first = firstScalar;
  second = secondScalar;
  ExpectSameBitsOnEverySet(*proj, &TGeoProj::InverseBatch, first, second);
  ASSERT_EQ(proj->InverseBatch(first.data(), second.data(), first.size()), first.size());
  EXPECT_EQ(proj->GetScale(), scale);  // batches store nothing
  for (std::size_t i = 0; i < first.size(); ++i) {
    ASSERT_TRUE(proj->Inverse(firstScalar[i], secondScalar[i]));
    ASSERT_NEAR(first[i], firstScalar[i], tolerance::kBatchRadians);
    ASSERT_NEAR(second[i], secondScalar[i], tolerance::kBatchRadians * 8);  // longitudes up to 2π
  }
}

// 6 cm before them, where kernels hand over to the single-point form.
TEST_P(ProjectionLaws, BatchEqualsScalarNextToThePoles) {
  const ProjPtr proj = Make();
  const auto [south, north, west, east] = laws().domain;
  for (const double sign : {1.0, -1.0})
    for (const double lambda : {west, (west + 2 * east) / 3}) {
      double b = sign * (kHalfPi - 1e-8), l = lambda * kDegree, n = b, e = l;
      const bool done = proj->Forward(b, l) && std::isfinite(b) && std::isfinite(l);
      ASSERT_EQ(proj->ForwardBatch(&n, &e, 1), done ? 1u : 0u) << sign << ' ' << lambda;
      if (!done) continue;
      const double metres = tolerance::BatchMetres(std::hypot(b, l));
      EXPECT_NEAR(n, b, metres) << sign << ' ' << lambda;
      EXPECT_NEAR(e, l, metres) << sign << ' ' << lambda;
    }
}

// Partial derivatives of the forward conversion by fourth-order central differences.
struct Derivatives {
  double nPhi, ePhi, nLambda, eLambda;
};

Derivatives Differentiate(const TGeoProj& proj, double phi, double lambda) {
  constexpr double kStep = 1e-4;
  const auto at = [&](double dPhi, double dLambda) {
    double b = phi + dPhi, l = lambda + dLambda;
    EXPECT_TRUE(proj.ForwardPoint(b, l));
    return std::pair{b, l};
  };
  const auto difference = [&](double stepPhi, double stepLambda) {
    const auto p1 = at(stepPhi, stepLambda), m1 = at(-stepPhi, -stepLambda);
    const auto p2 = at(2 * stepPhi, 2 * stepLambda), m2 = at(-2 * stepPhi, -2 * stepLambda);
    const auto combine = [](double a1, double b1, double a2, double b2) {
      return (8 * (a1 - b1) - (a2 - b2)) / (12 * kStep);
    };
    return std::pair{combine(p1.first, m1.first, p2.first, m2.first),
                     combine(p1.second, m1.second, p2.second, m2.second)};
  };
  const auto [nPhi, ePhi] = difference(kStep, 0);
  const auto [nLambda, eLambda] = difference(0, kStep);
  return {nPhi, ePhi, nLambda, eLambda};
}

TEST_P(ProjectionLaws, FactorsAgreeWithNumericDifferences) {
  const ProjPtr proj = Make();
  const TestEllipsoid metric = laws().metric.value_or(kGrs80);
  const Ellipsoid ell = MakeEllipsoid(metric.a, metric.invF);
  const double scale0 = proj->GetScale(), convergence0 = proj->GetConvergence();
  ForEachPoint([&](double phi, double lambda) {
    double b = phi, l = lambda;
    ASSERT_TRUE(proj->Forward(b, l));
    const double forwardScale = proj->GetScale(), forwardConvergence = proj->GetConvergence();
    ASSERT_TRUE(proj->Inverse(b, l));
    EXPECT_NEAR(proj->GetScale(), forwardScale, 1e-9 * forwardScale);
    EXPECT_NEAR(proj->GetConvergence(), forwardConvergence, 1e-9);
    if (!laws().scale) {
      EXPECT_EQ(forwardScale, scale0);
    }
    if (!laws().convergence) {
      EXPECT_EQ(forwardConvergence, convergence0);
    }

    const double w2 = 1 - ell.e2 * std::sin(phi) * std::sin(phi);
    const double parallel = ell.a * std::cos(phi) / std::sqrt(w2);
    const double meridian = ell.a * (1 - ell.e2) / (w2 * std::sqrt(w2));
    const Derivatives d = Differentiate(*proj, phi, lambda);
    const double k = std::hypot(d.nLambda, d.eLambda) / parallel;
    if (laws().scale) {
      EXPECT_NEAR(forwardScale / k, 1, *laws().scale);
    }
    if (laws().convergence) {
      EXPECT_NEAR(SetValue(forwardConvergence - std::atan2(-d.ePhi, d.nPhi), 1), 0,
                  *laws().convergence);
    }
    if (laws().conformal) {
      EXPECT_NEAR(d.nPhi / meridian / k, d.eLambda / parallel / k, *laws().conformal);
      EXPECT_NEAR(d.ePhi / meridian / k, -d.nLambda / parallel / k, *laws().conformal);
    }
  });
}

TEST_P(ProjectionLaws, DerivativesAgreeWithNumericDifferences) {
  const ProjPtr proj = Make();
  // A class without derivatives of its own takes them from its factors, which are a conformal map's.
  const double factors = std::max(laws().scale.value_or(0), laws().conformal.value_or(0));
  const double relative = std::max(kNumericScale, factors);
  ForEachPoint([&](double phi, double lambda) {
    GridDerivatives exact;
    ASSERT_TRUE(proj->ForwardDerivatives(phi, lambda, exact));
    const Derivatives d = Differentiate(*proj, phi, lambda);
    const double meridian = std::hypot(d.nPhi, d.ePhi), parallel = std::hypot(d.nLambda, d.eLambda);
    EXPECT_NEAR(exact.northB, d.nPhi, relative * meridian);
    EXPECT_NEAR(exact.eastB, d.ePhi, relative * meridian);
    EXPECT_NEAR(exact.northL, d.nLambda, relative * parallel + 1e-5);  // the differences' rounding
    EXPECT_NEAR(exact.eastL, d.eLambda, relative * parallel + 1e-5);
  });
  GridDerivatives untouched{1, 2, 3, 4};
  EXPECT_FALSE(proj->ForwardDerivatives(std::numeric_limits<double>::quiet_NaN(), 0, untouched));
  EXPECT_FALSE(proj->ForwardDerivatives(kHalfPi, 0, untouched));
  EXPECT_EQ(untouched.northB, 1);
  EXPECT_EQ(untouched.eastL, 4);
}

// Off the middle of the domain, where nothing is zero by symmetry.
TEST_P(ProjectionLaws, CovariancesEqualDraws) {
  const ProjPtr proj = Make();
  const Domain& d = laws().domain;
  const double at[] = {(d.south + 0.61 * (d.north - d.south)) * kDegree,
                       (d.west + 0.63 * (d.east - d.west)) * kDegree, 100};
  ExpectDrawsBothWays(CoordinateChain(nullptr, nullptr, proj.get()), at, laws().name);
}

// A point that is refused has no derivatives, and one that has them a grid about it; a batch has the
// bits of the single calls.
TEST_P(ProjectionLaws, DerivativesAreRefusedWithThePoint) {
  const ProjPtr proj = Make();
  std::vector<double> b, l;
  for (double phi = -1.65; phi < 1.66; phi += 0.075)
    for (double lambda = -6; lambda < 6.1; lambda += 0.3) {
      b.push_back(phi);
      l.push_back(lambda);
      double n = phi, e = lambda;
      GridDerivatives d{};
      const bool converted = proj->ForwardPoint(n, e);
      const bool differentiated = proj->ForwardDerivatives(phi, lambda, d);
      EXPECT_LE(differentiated, converted) << phi << ' ' << lambda;
      EXPECT_EQ(differentiated, d.northB != 0 || d.eastB != 0) << phi << ' ' << lambda;
    }
  ForEachPoint([&](double phi, double lambda) {
    b.push_back(phi);
    l.push_back(lambda);
  });
  const std::vector<double> unread(b.size(), std::numeric_limits<double>::quiet_NaN());
  std::vector<double> northB = b, eastB = l, northL = unread, eastL = unread;
  const std::size_t found = proj->ForwardDerivativesBatch(northB.data(), eastB.data(),
                                                          northL.data(), eastL.data(), b.size());
  std::size_t expected = 0;
  for (std::size_t i = 0; i < b.size(); ++i) {
    GridDerivatives d;
    if (!proj->ForwardDerivatives(b[i], l[i], d)) {
      EXPECT_TRUE(std::isnan(northB[i]) && std::isnan(eastL[i])) << b[i] << ' ' << l[i];
      continue;
    }
    ++expected;
    EXPECT_EQ(northB[i], d.northB) << b[i] << ' ' << l[i];
    EXPECT_EQ(eastB[i], d.eastB) << b[i] << ' ' << l[i];
    EXPECT_EQ(northL[i], d.northL) << b[i] << ' ' << l[i];
    EXPECT_EQ(eastL[i], d.eastL) << b[i] << ' ' << l[i];
  }
  EXPECT_EQ(found, expected);
}

// To the bit what the two batches give apart.
TEST_P(ProjectionLaws, ProjectsWithDerivativesAsWithout) {
  constexpr unsigned int kToUser = 0;
  const ProjPtr proj = Make();
  std::vector<double> b, l;
  ForEachPoint([&](double phi, double lambda) {
    b.push_back(phi);
    l.push_back(lambda);
  });
  const std::vector<double> unread(b.size(), std::numeric_limits<double>::quiet_NaN());
  std::vector<double> n = b, e = l, d[] = {unread, unread, unread, unread};
  proj->ForwardWithDerivativesBatch(n.data(), e.data(),
                                    {d[0].data(), d[1].data(), d[2].data(), d[3].data()}, b.size());
  proj->RotateNEBatch(kToUser, n.data(), e.data(), b.size());
  std::vector<double> alone[] = {b, l, b, l, unread, unread};
  proj->RotateBLBatch(kToUser, alone[0].data(), alone[1].data(), b.size());
  proj->ForwardBatch(alone[0].data(), alone[1].data(), b.size());
  proj->ForwardDerivativesBatch(alone[2].data(), alone[3].data(), alone[4].data(), alone[5].data(),
                                b.size());
  for (std::size_t i = 0; i < b.size(); ++i) {
    if (std::isnan(alone[0][i] + alone[2][i])) {
      EXPECT_TRUE(std::isnan(n[i]) && std::isnan(d[3][i])) << b[i] << ' ' << l[i];
      continue;
    }
    EXPECT_EQ(n[i], alone[0][i]) << b[i] << ' ' << l[i];
    EXPECT_EQ(e[i], alone[1][i]) << b[i] << ' ' << l[i];
    for (std::size_t k = 0; k < 4; ++k)
      EXPECT_EQ(d[k][i], alone[2 + k][i]) << b[i] << ' ' << l[i] << ' ' << k;
  }
}

// Whatever numbers come in, as coordinates, parameters or flattening: no crash, no endless loop, and a point
// that is no number is not converted.
TEST_P(ProjectionLaws, SurvivesAnyNumber) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double wild[] = {nan, inf, -inf, 1e308, -1e308, 5e-324, 0, kHalfPi, -kHalfPi, kPi, 1e9};
  const auto convertAll = [&](TGeoProj& proj) {
    for (double first : wild)
      for (double second : wild) {
        double b = first, l = second, n = first, e = second;
        proj.Forward(b, l);
        proj.Inverse(n, e);
        b = n = first;
        l = e = second;
        const bool number = !std::isnan(first) && !std::isnan(second);
        EXPECT_LE(proj.ForwardBatch(&b, &l, 1), number ? 1u : 0u) << first << ' ' << second;
        EXPECT_LE(proj.InverseBatch(&n, &e, 1), number ? 1u : 0u) << first << ' ' << second;
      }
  };
  convertAll(*Make());
  for (int i = 0; i < Make()->GetQParam(); ++i)
    for (double value : wild) {
      const ProjPtr proj = Make();
      proj->SetParam(value, i, 2);
      convertAll(*proj);
    }
  for (double invF : {1.0, 0.3, 0.0, -298.0, inf, nan}) {
    const ProjPtr proj = Make();
    proj->SetEllipsoid(kGrs80.a, invF);
    convertAll(*proj);
  }
}

std::type_index ClassOf(const TGeoProj& proj) { return typeid(proj); }

TEST(ProjectionLawsTable, HasARowForEveryClassOfTheFactory) {
  std::vector<ProjPtr> tested;
  for (const Row& row : Rows()) tested.push_back(row.make(kGrs80));
  for (const ProjFactoryRow& made : ProjFactoryRows()) {
    const ProjPtr proj(made.make(kGrs80.a, kGrs80.invF));
    const auto isOfItsClass = [&](const ProjPtr& p) { return ClassOf(*p) == ClassOf(*proj); };
    EXPECT_TRUE(std::any_of(tested.begin(), tested.end(), isOfItsClass)) << ClassOf(*proj).name();
  }
}

INSTANTIATE_TEST_SUITE_P(Class, ProjectionLaws, ::testing::ValuesIn(Rows()),
                         [](const auto& row) { return std::string(row.param.laws.name); });

}  // namespace
}  // namespace zel_cs::geomath
