#include "geomath/chain/coordinate_chain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/local/identical_point.h"
#include "geomath/proj/methods/tm_proj.h"
#include "tests/support/tolerance.h"

using namespace zel_cs::geomath;
using tolerance::kDegree;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// A geoid with slopes of up to 20 m per radian, so that the position at which it is asked shows;
// a hole east of 10 degrees.
class TiltedGeoid : public GeoidHeight {
 public:
  bool Height(double b, double l, double& height) const override {
    if (!(l < 10 * kDegree)) return false;
    height = 48 + 20 * std::sin(b) * std::cos(l);
    return true;
  }
};

// The national chain of Great Britain: the seven parameters in the local → WGS84 sense and
// Transverse Mercator on Airy 1830.
struct Britain {
  Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
  Ellipsoid airy = MakeEllipsoid(6377563.396, 299.3249646);
  Datum datum{&airy,   446.448, -125.157,    542.060,      -0.1502,
              -0.2470, -0.8421, -20.4894e-6, userTypeUser, nullptr};
  TTMProj grid{airy.a, airy.invF, -2 * kDegree, 0.9996012717, 49 * kDegree, 400000, -100000};
  CoordinateChain chain{&wgs84, &datum, &grid};
};

struct Lattice {
  std::vector<double> b, l, h;

  // Not a multiple of any block length.
  explicit Lattice(std::size_t count = 1013) {
    for (std::size_t i = 0; i < count; ++i) {
      const double t = static_cast<double>(i) / static_cast<double>(count);
      b.push_back((50 + 10 * t) * kDegree);
      l.push_back((-7 + 9 * std::fmod(37 * t, 1.0)) * kDegree);
      h.push_back(-50 + 3000 * std::fmod(11 * t, 1.0));
    }
  }
};

}  // namespace

// Ordnance Survey test points; grid coordinates of the plain seven-parameter chain by an
// independent evaluation (exact Transverse Mercator, printed to 0.1 mm).
TEST(CoordinateChain, CarriesWgs84ToTheNationalGridAndBack) {
  struct Row {
    const char* name;
    double lat, lon, h, east, north, height;
  };
  constexpr Row rows[] = {
      {"TP02", 49.96006137820, -5.20304609998, 124.269, 170366.8226, 11571.0674, 74.2194},
      {"TP03", 50.43885825610, -4.10864563561, 215.251, 250357.8185, 62015.2109, 165.6607},
      {"TP04", 50.57563665000, -1.29782277240, 94.688, 449817.0487, 75334.5949, 48.1631},
  };
  constexpr double kSeriesMetres = 3e-4;  // TTMProj against an exact TM within 3.3° of the CM
  constexpr double kBackMetres = 2e-3;    // its inverse there: the footpoint stops at 1 mm of arc
  const Britain gb;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    double x = row.lat * kDegree, y = row.lon * kDegree, h = row.h;
    ASSERT_TRUE(gb.chain.ToLocal(x, y, h));
    EXPECT_NEAR(x, row.north, kSeriesMetres);
    EXPECT_NEAR(y, row.east, kSeriesMetres);
    EXPECT_NEAR(h, row.height, kSeriesMetres);

    ASSERT_TRUE(gb.chain.ToGlobal(x, y, h));
    EXPECT_NEAR(x, row.lat * kDegree, kBackMetres / kWgs84A);
    EXPECT_NEAR(y, row.lon * kDegree, kBackMetres / kWgs84A);
    EXPECT_NEAR(h, row.h, kBackMetres);
  }
}

// A host's classes derived from one of the library: none is passed by in favour of its base.
TEST(CoordinateChain, RunsAHostsProjectionByItsOwnFormsOrNotAtAll) {
  struct Unconst : TTMProj {
    bool _Forward(double& b, double& l) override { return TTMProj::_Forward(l, b); }
    bool _Inverse(double& n, double& e) override { return TTMProj::_Inverse(e, n); }
  };
  struct WestPositive : TTMProj {
    void RotateBL(unsigned int, double&, double& l) const override { l = -l; }
  };
  const Unconst unconst;
  double x = 0.9, y = 0.02, h = 12;
  EXPECT_EQ(CoordinateChain(nullptr, nullptr, &unconst).ToLocal(x, y, h).failedAt,
            ChainStep::projection);
  EXPECT_EQ(CoordinateChain(nullptr, nullptr, &unconst).ToGlobal(x, y, h).failedAt,
            ChainStep::projection);

  const WestPositive west;
  const CoordinateChain chain(nullptr, nullptr, &west);
  double n = 0.9, e = -0.02;
  TTMProj().Forward(n, e);
  ASSERT_TRUE(chain.ToLocal(x, y, h));
  EXPECT_NEAR(x, n, tolerance::BatchMetres(n));
  EXPECT_NEAR(y, e, tolerance::BatchMetres(e));
  ASSERT_TRUE(chain.ToGlobal(x, y, h));
  EXPECT_NEAR(y, 0.02, 2e-10);  // 1 mm, TTMProj's footpoint
}

TEST(CoordinateChain, EveryAbsentStepIsLeftOut) {
  Britain gb;
  double x = 0.9, y = -0.03, h = 12;

  EXPECT_TRUE(CoordinateChain().ToLocal(x, y, h));
  EXPECT_EQ(x, 0.9);
  EXPECT_EQ(y, -0.03);
  EXPECT_EQ(h, 12);

  // Projection alone: its own forward call, the height untouched, no ellipsoid needed.
  double n = x, e = y;
  gb.grid.Forward(n, e);
  const CoordinateChain plane(nullptr, nullptr, &gb.grid);
  ASSERT_TRUE(plane.ToLocal(x, y, h));
  EXPECT_EQ(x, n);
  EXPECT_EQ(y, e);
  EXPECT_EQ(h, 12);

  // Datum alone: geodetic on the local ellipsoid.
  const CoordinateChain shift(&gb.wgs84, &gb.datum, nullptr);
  double b = 0.9, l = -0.03, up = 12;
  gb.wgs84.BLH_to_XYZ(b, l, up);
  gb.datum.ToLocalDatum(b, l, up);
  gb.airy.XYZ_to_BLH(b, l, up);
  x = 0.9;
  y = -0.03;
  h = 12;
  ASSERT_TRUE(shift.ToLocal(x, y, h));
  EXPECT_NEAR(x, b, 1e-14);  // two methods for the latitude, both good to a few ulp
  EXPECT_NEAR(y, l, 1e-14);
  EXPECT_NEAR(h, up, tolerance::kSameFormulaMetres);
  ASSERT_TRUE(shift.ToGlobal(x, y, h));
  EXPECT_NEAR(x, 0.9, 1e-15);
  EXPECT_NEAR(y, -0.03, 1e-15);
  EXPECT_NEAR(h, 12, tolerance::kSameFormulaMetres);
}

TEST(CoordinateChain, NamesTheStepThatFails) {
  Britain gb;
  const auto failure = [](const CoordinateChain& chain, double x, double y, double h, bool back) {
    const double x0 = x, y0 = y, h0 = h;
    const ChainResult result = back ? chain.ToGlobal(x, y, h) : chain.ToLocal(x, y, h);
    if (!result && std::isfinite(x0 + y0 + h0)) {
      EXPECT_EQ(x, x0);  // unchanged
      EXPECT_EQ(y, y0);
      EXPECT_EQ(h, h0);
    }
    return result.failedAt;
  };
  constexpr bool kOut = false, kBack = true;

  for (const double bad : {kNaN, kInf, -kInf}) {
    for (const bool back : {kOut, kBack}) {
      EXPECT_EQ(failure(gb.chain, bad, 0, 0, back), ChainStep::input);
      EXPECT_EQ(failure(gb.chain, 0, bad, 0, back), ChainStep::input);
      EXPECT_EQ(failure(gb.chain, 0, 0, bad, back), ChainStep::input);
    }
  }
  EXPECT_EQ(failure(gb.chain, 90.001 * kDegree, 0, 0, kOut), ChainStep::input);
  EXPECT_EQ(failure(gb.chain, 90 * kDegree, 0, 0, kOut), ChainStep::none);
  EXPECT_EQ(failure(gb.chain, 0.9, 0, std::numeric_limits<double>::max(), kOut),
            ChainStep::localEllipsoid);  // the geocentric distance overflows
  EXPECT_EQ(failure(gb.chain, 3e7, 4e5, 0, kBack), ChainStep::projection);  // past the pole
  EXPECT_EQ(failure(gb.chain, 1e300, 1e300, 0, kBack), ChainStep::projection);

  gb.chain.SetGlobalEllipsoid(nullptr);
  EXPECT_EQ(failure(gb.chain, 0.9, 0, 0, kOut), ChainStep::globalEllipsoid);
  EXPECT_EQ(failure(gb.chain, 3e5, 4e5, 0, kBack), ChainStep::globalEllipsoid);
  gb.chain.SetGlobalEllipsoid(&gb.wgs84);

  const Datum noEllipsoid(nullptr);
  gb.chain.SetDatum(&noEllipsoid);
  EXPECT_EQ(failure(gb.chain, 0.9, 0, 0, kOut), ChainStep::localEllipsoid);
  EXPECT_EQ(failure(gb.chain, 3e5, 4e5, 0, kBack), ChainStep::localEllipsoid);

  const Datum disabled(&gb.airy, {1, 2, 3}, {0, 0, 0}, 0, userTypeUser, true, nullptr);
  gb.chain.SetDatum(&disabled);
  EXPECT_EQ(failure(gb.chain, 0.9, 0, 0, kOut), ChainStep::datum);
  EXPECT_EQ(failure(gb.chain, 3e5, 4e5, 0, kBack), ChainStep::datum);
  gb.chain.SetDatum(&gb.datum);

  const TGeoProj invalid;
  gb.chain.SetProjection(&invalid);
  EXPECT_EQ(failure(gb.chain, 0.9, 0, 0, kOut), ChainStep::projection);
  EXPECT_EQ(failure(gb.chain, 3e5, 4e5, 0, kBack), ChainStep::projection);
  gb.chain.SetProjection(&gb.grid);

  const TiltedGeoid geoid;
  for (const GeoidFrame frame : {GeoidFrame::global, GeoidFrame::local}) {
    gb.chain.SetGeoid(&geoid, frame);
    EXPECT_EQ(failure(gb.chain, 0.9, 11 * kDegree, 0, kOut), ChainStep::geoid);
    EXPECT_EQ(failure(gb.chain, 3e5, 1.5e6, 0, kBack), ChainStep::geoid);  // 14 degrees east
  }
}

TEST(CoordinateChain, GeoidIsAskedOnItsOwnEllipsoid) {
  Britain gb;
  const TiltedGeoid geoid;
  const double lat = 0.95, lon = -0.1, up = 300;

  double plainN = lat, plainE = lon, localH = up;
  ASSERT_TRUE(gb.chain.ToLocal(plainN, plainE, localH));
  CoordinateChain shift(&gb.wgs84, &gb.datum, nullptr);
  double localB = lat, localL = lon, sameH = up;
  ASSERT_TRUE(shift.ToLocal(localB, localL, sameH));

  double onGlobal = 0, onLocal = 0;
  ASSERT_TRUE(geoid.Height(lat, lon, onGlobal));
  ASSERT_TRUE(geoid.Height(localB, localL, onLocal));

  for (const GeoidFrame frame : {GeoidFrame::global, GeoidFrame::local}) {
    gb.chain.SetGeoid(&geoid, frame);
    double x = lat, y = lon, h = up;
    ASSERT_TRUE(gb.chain.ToLocal(x, y, h));
    EXPECT_EQ(x, plainN);  // the geoid leaves the position alone
    EXPECT_EQ(y, plainE);
    EXPECT_EQ(h, frame == GeoidFrame::global ? up - onGlobal : localH - onLocal);
  }
}

TEST(CoordinateChain, GeoidRoundTripCloses) {
  Britain gb;
  const TiltedGeoid geoid;
  // The closed form, not the national series, so that the round trip shows the height search alone.
  const CoordinateChain shiftOnly(&gb.wgs84, &gb.datum, nullptr);
  for (const GeoidFrame frame : {GeoidFrame::global, GeoidFrame::local}) {
    CoordinateChain chain = shiftOnly;
    chain.SetGeoid(&geoid, frame);
    const Lattice given;
    Lattice p = given;
    ASSERT_EQ(chain.ToLocalBatch(p.b.data(), p.l.data(), p.h.data(), p.b.size()), p.b.size());
    ASSERT_EQ(chain.ToGlobalBatch(p.b.data(), p.l.data(), p.h.data(), p.b.size()), p.b.size());
    for (std::size_t i = 0; i < p.b.size(); ++i) {
      ASSERT_NEAR(p.b[i], given.b[i], 1e-15) << i;
      ASSERT_NEAR(p.l[i], given.l[i], 1e-15) << i;
      ASSERT_NEAR(p.h[i], given.h[i], tolerance::kSameFormulaMetres) << i;
    }
  }
}

TEST(CoordinateChain, BatchAgreesWithPointsForEveryStrideAndReportsFailures) {
  Britain gb;
  const TiltedGeoid geoid;
  gb.chain.SetGeoid(&geoid);
  LocalToGrid site;
  site.mode = LocalToGrid::kHorizontal;
  site.SetPlaneParam(0.2, 3, 2);
  gb.chain.SetLocalization(&site);
  const Lattice given;
  const std::size_t count = given.b.size();
  std::vector<double> triples(3 * count);
  for (std::size_t i = 0; i < count; ++i) {
    triples[3 * i] = i % 100 == 7 ? kNaN : given.b[i];
    triples[3 * i + 1] = i % 100 == 8 ? 0.3 : given.l[i];  // where the geoid has a hole
    triples[3 * i + 2] = given.h[i];
  }
  const std::vector<double> before = triples;

  for (const bool back : {false, true}) {
    const std::vector<double> input = triples;
    std::vector<ChainStep> failed(count, ChainStep::datum);
    const std::size_t converted =
        back ? gb.chain.ToGlobalBatch(&triples[0], &triples[1], &triples[2], count, 3, &failed[0])
             : gb.chain.ToLocalBatch(&triples[0], &triples[1], &triples[2], count, 3, &failed[0]);
    std::size_t expected = 0;
    for (std::size_t i = 0; i < count; ++i) {
      double x = input[3 * i], y = input[3 * i + 1], h = input[3 * i + 2];
      const ChainResult one = back ? gb.chain.ToGlobal(x, y, h) : gb.chain.ToLocal(x, y, h);
      ASSERT_EQ(failed[i], one.failedAt) << i;
      if (!one) {
        ASSERT_TRUE(std::isnan(triples[3 * i]) && std::isnan(triples[3 * i + 1]) &&
                    std::isnan(triples[3 * i + 2]));
        continue;
      }
      ++expected;
      ASSERT_NEAR(triples[3 * i], x, back ? tolerance::kBatchRadians : tolerance::kBatchMetres);
      ASSERT_NEAR(triples[3 * i + 1], y, back ? tolerance::kBatchRadians : tolerance::kBatchMetres);
      ASSERT_NEAR(triples[3 * i + 2], h, tolerance::kBatchMetres);
    }
    EXPECT_EQ(converted, expected);
    EXPECT_LT(converted, count);
  }
  EXPECT_EQ(gb.chain.ToLocalBatch(nullptr, nullptr, nullptr, 0), 0u);
}

// Global pairs stand in the projection's geographic axes, local pairs in its grid axes.
TEST(CoordinateChain, AxesOfTheProjectionHoldAtBothEnds) {
  Britain gb;
  double n = 0.93, e = -0.05, h = 100;
  ASSERT_TRUE(gb.chain.ToLocal(n, e, h));

  gb.grid.SetBLAxes(L"WN");
  gb.grid.SetNEAxes(L"SW");
  double first = 0.05, second = 0.93, up = 100;
  ASSERT_TRUE(gb.chain.ToLocal(first, second, up));
  EXPECT_EQ(first, -n);
  EXPECT_EQ(second, -e);
  EXPECT_EQ(up, h);
  ASSERT_TRUE(gb.chain.ToGlobal(first, second, up));
  EXPECT_NEAR(first, 0.05, 2e-10);  // the footpoint of TTMProj stops at 1 mm of arc
  EXPECT_NEAR(second, 0.93, 2e-10);
  EXPECT_FALSE(gb.chain.ToLocal(second = 0.05, first = 1.6, up));  // latitude is the second now
}

// Every axes text gives the answer of north and east, turned: also after a site and a ground system,
// whose shifts and slopes are not alike in north and east.
TEST(CoordinateChain, AxesTurnTheAnswerOfNorthAndEastAfterSiteAndGround) {
  Britain gb;
  LocalToGrid site;
  const double plane[] = {-9e4, 5e4, 1.0003, 0.2}, heights[] = {-48, 1e-5, 7e-5};
  for (int i = 0; i < 4; ++i) site.SetPlaneParam(plane[i], i, 2);
  for (int i = 0; i < 3; ++i) site.SetHeightParam(heights[i], i, 2);
  site.mode = LocalToGrid::kBoth;
  GridToGround ground;
  ground.flags |= GridToGround::kHasOrigin;
  ground.height = 500;
  ground.rotation = 0.1;
  ground.offsetN = 7;
  ground.offsetE = -3000;
  ground.originN = 2e4;
  ground.originE = 6e4;
  gb.chain.SetLocalization(&site);
  gb.chain.SetGround(&ground);
  const double lat = 0.95, lon = -0.1, up = 300;
  double n = lat, e = lon, h = up;
  ASSERT_TRUE(gb.chain.ToLocal(n, e, h));
  double backLat = n, backLon = e, backH = h;
  ASSERT_TRUE(gb.chain.ToGlobal(backLat, backLon, backH));

  constexpr const wchar_t* texts[] = {L"NE", L"NW", L"SE", L"SW", L"EN",
                                      L"WN", L"ES", L"WS", L"XY"};
  for (const wchar_t* grid : texts) {
    for (const wchar_t* geographic : texts) {
      SCOPED_TRACE(testing::Message() << grid << " from " << geographic);
      gb.grid.SetNEAxes(grid);
      gb.grid.SetBLAxes(geographic);
      const AxisRotation ofGrid(grid), ofGlobal(geographic);
      double x[2] = {lat, lat}, y[2] = {lon, lon}, z[2] = {up, up};
      for (const int i : {0, 1}) ofGlobal.Rotate(0, x[i], y[i]);
      ASSERT_TRUE(gb.chain.ToLocal(x[0], y[0], z[0]));
      ASSERT_EQ(gb.chain.ToLocalBatch(x + 1, y + 1, z + 1, 1), 1u);
      double first = n, second = e;
      ofGrid.Rotate(0, first, second);
      for (const int i : {0, 1}) {
        EXPECT_EQ(x[i], first);
        EXPECT_EQ(y[i], second);
        EXPECT_EQ(z[i], h);
      }
      ASSERT_TRUE(gb.chain.ToGlobal(x[0], y[0], z[0]));
      first = backLat;
      second = backLon;
      ofGlobal.Rotate(0, first, second);
      EXPECT_EQ(x[0], first);
      EXPECT_EQ(y[0], second);
      EXPECT_EQ(z[0], backH);
    }
  }
}

// Grid coordinates of the chain without a site, then the conversions of the two classes.
TEST(CoordinateChain, SiteAndGroundFollowTheGrid) {
  Britain gb;
  LocalToGrid site;
  const double plane[] = {-9e4, 5e4, 1.0003, 0.2}, heights[] = {-48, 1e-5, 2e-5};
  for (int i = 0; i < 4; ++i) site.SetPlaneParam(plane[i], i, 2);
  for (int i = 0; i < 3; ++i) site.SetHeightParam(heights[i], i, 2);
  site.mode = LocalToGrid::kBoth;
  GridToGround ground;
  ground.height = 500;
  ground.rotation = 0.1;
  ground.offsetN = 7;
  const TiltedGeoid geoid;
  gb.chain.SetGeoid(&geoid);

  const double lat = 0.95, lon = -0.1, up = 300;
  double n = lat, e = lon, h = up;
  ASSERT_TRUE(gb.chain.ToLocal(n, e, h));
  const double gridN = n, gridE = e, gridH = h;
  ASSERT_TRUE(site.ToLocal(n, e, h, LocalToGrid::kBoth));
  unsigned long present = kHasNorth | kHasEast;
  ASSERT_TRUE(ground.ToGround(n, e, h, &present));

  gb.chain.SetLocalization(&site);
  gb.chain.SetGround(&ground);
  double x = lat, y = lon, z = up;
  ASSERT_TRUE(gb.chain.ToLocal(x, y, z));
  EXPECT_NEAR(x, n, tolerance::kBatchMetres);
  EXPECT_NEAR(y, e, tolerance::kBatchMetres);
  EXPECT_NEAR(z, h, tolerance::kBatchMetres);
  ASSERT_TRUE(gb.chain.ToGlobal(x, y, z));
  EXPECT_NEAR(x, lat, 1e-9);  // the footpoint of TTMProj stops at 1 mm of arc
  EXPECT_NEAR(y, lon, 1e-9);
  EXPECT_NEAR(z, up, 1e-5);

  // Parts that the site does not have pass through, the disabled ground system too.
  ground.SetEnabled(false);
  site.mode = LocalToGrid::kHorizontal;
  ASSERT_TRUE(gb.chain.ToLocal(x = lat, y = lon, z = up));
  EXPECT_EQ(z, gridH);
  EXPECT_NE(x, gridN);
  ASSERT_TRUE(gb.chain.ToGlobal(x, y, z));
  EXPECT_NEAR(z, up, 1e-5);
  site.mode = LocalToGrid::kVertical;
  ASSERT_TRUE(gb.chain.ToLocal(x = lat, y = lon, z = up));
  EXPECT_EQ(x, gridN);
  EXPECT_EQ(y, gridE);
  EXPECT_EQ(z, h);
  EXPECT_EQ(gb.chain.ToGlobal(x, y, z).failedAt, ChainStep::localization);
  site.mode = LocalToGrid::kNotSetUp;
  EXPECT_EQ(gb.chain.ToLocal(x = lat, y = lon, z = up).failedAt, ChainStep::localization);
  EXPECT_EQ(x, lat);

  site.mode = LocalToGrid::kBoth;
  ground.SetEnabled(true);
  ground.gridScaleFactor = 0;
  EXPECT_EQ(gb.chain.ToLocal(x, y, z).failedAt, ChainStep::ground);
  EXPECT_STREQ(ChainStepName(ChainStep::ground), "the ground system");
  gb.chain.SetLocalization(nullptr);
  gb.chain.SetGround(nullptr);
  ASSERT_TRUE(gb.chain.ToLocal(x, y, z));
  EXPECT_EQ(x, gridN);
}

TEST(CoordinateChain, StaysExactWhereTheScalarLatitudeRefuses) {
  const Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
  Ellipsoid local = wgs84;
  const Datum datum(&local, 1, 2, 3, 0, 0, 0, 0, userTypeUser, nullptr);
  const CoordinateChain chain(&wgs84, &datum, nullptr);
  for (int i = 0; i < 500; ++i) {
    const double lat = (89 + 0.002 * i) * kDegree;
    double b = lat, l = 0.7, h = 1000;
    ASSERT_TRUE(chain.ToLocal(b, l, h)) << lat;
    ASSERT_TRUE(chain.ToGlobal(b, l, h)) << lat;
    ASSERT_NEAR(b, lat, 1e-15);
    ASSERT_NEAR(h, 1000, tolerance::kSameFormulaMetres);
  }
}

TEST(CoordinateChain, OneChainServesManyThreads) {
  Britain gb;
  const TiltedGeoid geoid;
  gb.chain.SetGeoid(&geoid);
  Lattice expected;
  gb.chain.ToLocalBatch(expected.b.data(), expected.l.data(), expected.h.data(), expected.b.size());

  constexpr std::size_t kThreads = 4;
  std::vector<Lattice> results(kThreads);
  std::vector<std::thread> threads;
  for (Lattice& p : results) {
    threads.emplace_back([&chain = gb.chain, &p] {
      chain.ToLocalBatch(p.b.data(), p.l.data(), p.h.data(), p.b.size());
      chain.ToGlobalBatch(p.b.data(), p.l.data(), p.h.data(), p.b.size());
      p = Lattice();
      chain.ToLocalBatch(p.b.data(), p.l.data(), p.h.data(), p.b.size());
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const Lattice& p : results) {
    EXPECT_EQ(p.b, expected.b);
    EXPECT_EQ(p.l, expected.l);
    EXPECT_EQ(p.h, expected.h);
  }
}
