#include "geomath/proj/methods/tm_proj.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "geomath/proj/methods/utm_proj.h"
#include "tests/proj/methods/tm_control_points.h"
#include "tests/proj/methods/tm_series.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

// What TTMProj and TUTMProj share: parameters, control points, behaviour at the edges.
template <class Proj>
class TransverseMercator : public testing::Test {};
using Both = testing::Types<TTMProj, TUTMProj>;
TYPED_TEST_SUITE(TransverseMercator, Both);

TYPED_TEST(TransverseMercator, HasFiveParametersInOrder) {
  TypeParam proj(6377563.396, 299.3249646, 0.1, 0.9996, 0.2, 400000, -100000);
  EXPECT_EQ(proj.GetType(), ProjTypeTM);
  ASSERT_EQ(proj.GetQParam(), 5);
  constexpr double kExpected[] = {0.1, 0.9996, 0.2, 400000, -100000};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(proj.GetParam(i, 2), kExpected[i]) << i;
  EXPECT_TRUE(proj.CM() == 0.1 && proj.Scale() == 0.9996 && proj.Lat0() == 0.2);
  EXPECT_TRUE(proj.FEast() == 400000 && proj.FNorth() == -100000);

  proj.SetParam(10.5, 0, 3);
  EXPECT_EQ(proj.CM(), 0.1832595714594046);
  EXPECT_EQ(proj.GetParam(0, 3), 10.5);
  proj.SetParam(-30, 2, 3);
  EXPECT_EQ(proj.Lat0(), -30 * 0.017453292519943295);
  for (const int plain : {1, 3, 4}) {
    proj.SetParam(2.5, plain, 3);
    EXPECT_EQ(proj.GetParam(plain, 3), 2.5);
  }
  for (const int outside : {-1, 5, 1000}) {
    proj.SetParam(77, outside, 2);
    EXPECT_EQ(proj.GetParam(outside, 2), 0.0);
  }

  double b0 = 9, l0 = 9, db = 9, dl = 9;
  EXPECT_TRUE(proj.GetCentralPoint(b0, l0, db, dl));
  EXPECT_TRUE(b0 == 0 && l0 == proj.CM() && db == kHalfPi && dl == kPi / 20);
}

// Metres on the ground within 3° that the inverse may be off: TTMProj stops its footpoint
// iteration at 1 mm, TUTMProj has it in closed form.
template <class Proj>
constexpr double kFootpoint = 1e-3;
template <>
constexpr double kFootpoint<TUTMProj> = 1e-5;

TYPED_TEST(TransverseMercator, ReproducesPublishedGrids) {
  constexpr double kSeries = 4e-5;  // metres within 3°, of the third-order and sin 6φ arcs
  for (const TmControlPoint& point : kTmControlPoints) {
    SCOPED_TRACE(point.name);
    TypeParam proj = point.Make<TypeParam>();
    double n = point.phiDeg * kRadPerDeg, e = point.lambdaDeg * kRadPerDeg;
    EXPECT_TRUE(proj.Forward(n, e));
    EXPECT_NEAR(n, point.north, point.printed + kSeries);
    EXPECT_NEAR(e, point.east, point.printed + kSeries);

    double b = point.north, l = point.east;
    EXPECT_TRUE(proj.Inverse(b, l));
    const double metresToRad = (point.printed + kFootpoint<TypeParam>) / point.grid.a;
    EXPECT_NEAR(b, point.phiDeg * kRadPerDeg, metresToRad);
    EXPECT_NEAR(l, point.lambdaDeg * kRadPerDeg, 2 * metresToRad);
  }
}

// Coordinates so large that a millimetre of arc is below their rounding never settle, as with a scale
// given in parts per million; nor do they leave the accuracy of a latitude.
TEST(TMProj, EndsTheFootpointAtAnySize) {
  const TTMProj proj(kWgs84A, kWgs84InvF, 0, 1, 0, 0, 0);
  for (const double size : {1e5, 3.2e5, 1e6, 1e9, 1e15})
    for (const double latitude : {0.3, 0.9, 1.2}) {
      double north = latitude, east = 0.01;
      ASSERT_TRUE(proj.ForwardPoint(north, east));
      const TTMProj large(kWgs84A, kWgs84InvF, 0, size, 0, 0, 0);
      double b = size * north, l = size * east, batchB = b, batchL = l;
      ASSERT_TRUE(large.InversePoint(b, l));
      EXPECT_NEAR(b, latitude, 2e-10);  // 1 mm of the Earth's
      EXPECT_NEAR(l, 0.01, 2e-10);
      ASSERT_EQ(large.InverseBatch(&batchB, &batchL, 1), 1u);
      EXPECT_NEAR(batchB, b, tolerance::kBatchRadians);
      EXPECT_NEAR(batchL, l, tolerance::kBatchRadians);
    }
}

TYPED_TEST(TransverseMercator, MapsItsOriginExactly) {
  TypeParam proj(kWgs84A, kWgs84InvF, 0.3, 0.9999, 0.7, 400000, -100000);
  double b = 0.7, l = 0.3;
  EXPECT_TRUE(proj.Forward(b, l));
  EXPECT_TRUE(b == -100000 && l == 400000);
  EXPECT_TRUE(proj.Inverse(b, l));
  EXPECT_NEAR(b, 0.7, 1e-12);  // 6 µm: TUTMProj's arcs of the two directions differ by sin 8φ
  EXPECT_EQ(l, 0.3);
}

TYPED_TEST(TransverseMercator, FoldsTheLongitudeDifferenceForwardOnly) {
  TypeParam proj(kWgs84A, kWgs84InvF, 3.1, 1, 0, 0, 0);
  double n = 0.5, e = -3.1, folded = 0.5, east = -3.1 + kTwoPi;
  EXPECT_TRUE(proj.Forward(n, e) && proj.Forward(folded, east));
  EXPECT_NEAR(n, folded, 1e-8);
  EXPECT_NEAR(e, east, 1e-8);
  EXPECT_TRUE(proj.Inverse(n, e));
  EXPECT_NEAR(e, -3.1 + kTwoPi, 1e-9) << "the inverse leaves the longitude beyond π";
}

TYPED_TEST(TransverseMercator, NeverFails) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  TypeParam proj(kWgs84A, kWgs84InvF, 0.1, 0.9996, 0, 500000, 0);
  for (const double x : {0.0, kHalfPi, -kHalfPi, 3.0, 1e9, 1e300, kInf, -kInf, kNaN})
    for (const double y : {0.0, kPi, 1e9, -1e300, kInf, kNaN}) {
      double b = x, l = y, n = x, e = y, k = 0;
      EXPECT_TRUE(proj.Forward(b, l));
      EXPECT_TRUE(proj.Inverse(n, e));
      proj.GetBLScale(k, x, y);
      n = x;
      e = y;
      EXPECT_EQ(proj.ForwardBatch(&n, &e, 1), std::isfinite(b) && std::isfinite(l) ? 1u : 0u);
    }
}

TEST(TTMProj, StaysWithinItsTruncation) {
  constexpr Truncation kStated[] = {{3, 1.5e-4, 1e-3}, {6, 12e-3, 28e-3}};
  ExpectTruncation(TTMProj(), kStated);
}

// The same series with the same footpoint rule, evaluated with 50 digits (mpmath) term by term as
// the Ordnance Survey guide prints them.
const TmSeriesRow<TTMProj> kSeries[] = {
    {kTmAiry<TTMProj>,
     {49.9, -6.3, 8917.2069180000319915, 91271.642805144191398},
     {8917.207, 91271.643, 8.7091929671527524143e-1, -1.0995574271302713358e-1}},
    {kTmAiry<TTMProj>,
     {52.65757, 1.71792, 313177.23083780434326, 651409.797685037668},
     {313177.231, 651409.798, 9.1904797260599969227e-1, 2.9983360316680854605e-2}},
    {kTmAiry<TTMProj>,
     {57, -2.00001, 789852.22499999643324, 399999.39258021231435},
     {789852.225, 399999.393, 9.9483767363126601251e-1, -3.4906759452192129916e-2}},
    {kTmAiry<TTMProj>,
     {60.8, -0.8, 1213535.5446539489277, 465301.7819770168114},
     {1213535.545, 465301.782, 1.0611601852682596135, -1.3962634006595057612e-2}},
    {kTmAiry<TTMProj>,
     {50, 4, 28434.624094235231706, 829824.37066290985827},
     {28434.624, 829824.371, 8.7266462559261124728e-1, 6.9813169744024990697e-2}},
    {kTmHayford<TTMProj>,
     {25.3, -80.2, 116538.90953258263866, 280559.86691223001608},
     {116538.91, 280559.867, 4.4156830081746723131e-1, -1.3997540600839546265}},
    {kTmHayford<TTMProj>,
     {31, -87, 763436.64602455836109, -373488.02479694092549},
     {763436.646, -373488.025, 5.410520673423179986e-1, -1.5184364477136314174}},
    {kTmHayford<TTMProj>,
     {28, -81, 415429.48255955664786, 200000.0},
     {415429.483, 200000.0, 4.8869219059908753967e-1, -1.4137166941154069022}},
    {kTmHayford<TTMProj>,
     {-12, -76.5, -4013723.9393998505045, 690496.47378467583576},
     {-4013723.939, 690496.474, -2.0943951006587366312e-1, -1.3351768788247484213}},
    {kTmSouth<TTMProj>,
     {-27.5, 153.02, 6958183.0247080955697, 501975.4522813313696},
     {6958183.025, 501975.452, -4.7996554425120830204e-1, 2.6707028213520031571}},
    {kTmSouth<TTMProj>,
     {-43.6, 147.2, 5156182.8068726735271, 31838.147669839614912},
     {5156182.807, 31838.148, -7.6096355345825236329e-1, 2.5691246594648490275}},
    {kTmSouth<TTMProj>,
     {-0.001, 156, 9999889.3172440267559, 833978.55677004611234},
     {9999889.317, 833978.557, -1.7453325762985219498e-5, 2.7227136329993738572}},
    {kTmSouth<TTMProj>,
     {-79, 158.9, 1223678.5343728369585, 625470.46415494158185},
     {1223678.534, 625470.464, -1.378810109125581687, 2.7733281811126179592}},
    {kTmSouth<TTMProj>,
     {-10, 150.1, 8893189.3429801200136, 182044.57235976824077},
     {8893189.343, 182044.572, -1.7453292518796546326e-1, 2.6197392073011612264}},
};

TEST(TTMProj, EvaluatesItsSeries) { ExpectTmSeries<TTMProj>(kSeries); }

TEST(TTMProj, KeepsScaleAndConvergenceUncomputed) {
  TTMProj proj(kWgs84A, kWgs84InvF, 0, 0.9996, 0, 500000, 0);
  double n = 0.8, e = 0.05, k = 0;
  proj.Forward(n, e);
  proj.Inverse(n, e);
  EXPECT_EQ(proj.GetScale(), 1.0);
  EXPECT_EQ(proj.GetConvergence(), 0.0);
  EXPECT_TRUE(proj.GetBLScale(k, 0.8, 0.05));
  EXPECT_EQ(k, 1.0);
  EXPECT_TRUE(proj.GetAvgBLHScale(k, 0.8, 0.05, 6371000));
  EXPECT_EQ(k, 2.0);
}

TEST(TTMProj, KeepsTheFootpointToleranceOfOneMillimetre) {
  // A northing whose first residual arc is just inside 1 mm takes no correction at all: on the
  // equator the first guess N/a·k0 is off by the ratio of a to the rectifying radius.
  const TTMProj proj;
  double n = 0.1, e = 0;
  proj.InversePoint(n, e);
  EXPECT_EQ(n, 0.1 / kWgs84A);
  n = 100;
  e = 0;
  proj.InversePoint(n, e);
  const double arc = kWgs84A * (1 - MakeEllipsoid(kWgs84A, kWgs84InvF).e2) * n;  // small latitude
  EXPECT_LT(std::abs(arc - 100), 1e-3);
  EXPECT_GT(std::abs(arc - 100), 1e-8);
}

}  // namespace
}  // namespace zel_cs::geomath
