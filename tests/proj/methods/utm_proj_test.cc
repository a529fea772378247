#include "geomath/proj/methods/utm_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/proj/methods/tm_series.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

TEST(TUTMProj, StaysWithinItsTruncation) {
  constexpr Truncation kStated[] = {{3, 4e-5, 1e-5}, {6, 0.9e-3, 2e-3}};
  ExpectTruncation(TUTMProj(), kStated);
}

// The same series with 50 digits (mpmath), arcs as sums of multiple angles; the inverse rows start
// from the rounded grid position.
const TmSeriesRow<TUTMProj> kSeries[] = {
    {kTmAiry<TUTMProj>,
     {49.9, -6.3, 8917.2068960778313479, 91271.643009447606801, 1.0007723209932844519,
      -5.7451810613902916005e-2},
     {8917.207, 91271.643, 8.7091929674219052563e-1, -1.0995574287855718993e-1,
      1.0007723209933837171, -5.7451810615993637535e-2}},
    {kTmAiry<TUTMProj>,
     {52.65757, 1.71792, 313177.23081610481878, 651409.79764075408291, 1.0003773155792276259,
      5.1615938430057665326e-2},
     {313177.231, 651409.798, 9.1904797261734924342e-1, 2.9983360380466200326e-2,
      1.0003773155814532308, 5.1615938506094500384e-2}},
    {kTmAiry<TUTMProj>,
     {57, -2.00001, 789852.22497543784089, 399999.39258021231435, 9.9960127170000454099e-1,
      -1.4637562750482965253e-7},
     {789852.225, 399999.393, 9.948376736383825904e-1, -3.4906759452192131824e-2,
      9.9960127170000453474e-1, -1.4627446734479022604e-7}},
    {kTmAiry<TUTMProj>,
     {60.8, -0.8, 1213535.5446181231698, 465301.781977021668, 9.99653531473025885e-1,
      1.8283076510433316515e-2},
     {1213535.545, 465301.782, 1.0611601852710233257, -1.39626340063954422e-2,
      9.9965353147306263301e-1, 1.8283076519375950299e-2}},
    {kTmAiry<TUTMProj>,
     {50, 4, 28434.623749974842803, 829824.36859093520198, 1.0018714984908512315,
      8.0342218921387274727e-2},
     {28434.624, 829824.369, 8.7266462578494474698e-1, 6.9813170125996525196e-2,
      1.0018714984940102559, 8.0342218942713994289e-2}},
    {kTmHayford<TUTMProj>,
     {25.3, -80.2, 116538.90953568489393, 280559.86691222761644, 9.9998011192668923773e-1,
      5.9673636862876849407e-3},
     {116538.91, 280559.867, 4.4156830082837797297e-1, -1.3997540600837553019,
      9.9998011192686375118e-1, 5.9673636939287758892e-3}},
    {kTmHayford<TUTMProj>,
     {31, -87, 763436.64915915482606, -373488.01952507565769, 1.0039579385197931325,
      -5.4082067392993703674e-2},
     {763436.649, -373488.02, 5.4105206784745389994e-1, -1.5184364493568303045,
      1.0039579385305875623, -5.4082067431897615485e-2}},
    {kTmHayford<TUTMProj>,
     {28, -81, 415429.48256950938005, 200000.0, 9.9990000000000001101e-1, 0},
     {415429.483, 200000.0, 4.886921906285144369e-1, -1.4137166941154069022,
      9.9990000000000001101e-1, 0}},
    {kTmHayford<TUTMProj>,
     {-12, -76.5, -4013723.9403383492954, 690496.47457866074827, 1.0028768534450265977,
      -1.6362171384810569371e-2},
     {-4013723.94, 690496.475, -2.0943951016180550358e-1, -1.3351768777184562711,
      1.0028768534494726148, -1.6362171390810391291e-2}},
    {kTmSouth<TUTMProj>,
     {-27.5, 153.02, 6958183.0247078732095, 501975.4522813313696, 9.9960004816877783358e-1,
      -1.6118067758248085991e-4},
     {6958183.025, 501975.452, -4.7996554425561162484e-1, 2.670702821352003953,
      9.9960004816876411382e-1, -1.6118065461131495743e-4}},
    {kTmSouth<TUTMProj>,
     {-43.6, 147.2, 5156182.8066202048257, 31838.150940886909092, 1.0022969979587802979,
      6.9936090543241479683e-2},
     {5156182.807, 31838.151, -7.6096355362897080732e-1, 2.5691246589625997765,
      1.0022969979585886124, 6.9936090506949647217e-2}},
    {kTmSouth<TUTMProj>,
     {-0.001, 156, 9999889.3172440172118, 833978.55685330100097, 1.0009810596380958178,
      -9.147052619335441956e-7},
     {9999889.317, 833978.557, -1.7453330997662510484e-5, 2.722713633132293741,
      1.000981059639212286, -9.1470727887274441147e-7}},
    {kTmSouth<TUTMProj>,
     {-79, 158.9, 1223678.5343732590695, 625470.46429014182181, 9.9979237361504635146e-1,
      -1.0109548865362770057e-1},
     {1223678.534, 625470.464, -1.3788101090474865447, 2.7733281810753038302,
      9.9979237361382192952e-1, -1.0109548831557909426e-1}},
    {kTmSouth<TUTMProj>,
     {-10, 150.1, 8893189.3429106734875, 182044.57231500541676, 1.000851187436832248,
      8.7965536606332796589e-3},
     {8893189.343, 182044.572, -1.7453292517953708397e-1, 2.6197392071945898839,
      1.0008511874392611116, 8.796553668153498775e-3}},
};

TEST(TUTMProj, EvaluatesItsSeries) { ExpectTmSeries<TUTMProj>(kSeries); }

TEST(TUTMProj, GivesTheExactScaleAndConvergenceNearby) {
  // Truncated after Δλ⁴ (scale) and Δλ⁵ (convergence).
  constexpr double kScale3 = 5e-9, kScale6 = 3e-7, kAngle3 = 3e-9, kAngle6 = 3e-7;
  const TUTMProj proj;
  for (const ExactTmRow& row : kExactTm) {
    SCOPED_TRACE(testing::Message() << row.phiDeg << ' ' << row.lambdaDeg);
    const bool near = row.lambdaDeg <= 3;
    PointFactors factors;
    double b = row.phiDeg * kDegree, l = row.lambdaDeg * kDegree;
    proj.ForwardPoint(b, l, &factors);
    EXPECT_NEAR(factors.scale, row.scale, near ? kScale3 : kScale6);
    EXPECT_NEAR(factors.convergence, row.convergence, near ? kAngle3 : kAngle6);
  }
}

// Scale and convergence of a conformal map from its own coordinates: a five-point derivative along
// the meridian, of step 1e-3 rad (rounding 3e-13, remainder 1e-12).
PointFactors Derived(const TUTMProj& proj, double phi, double lambda) {
  constexpr double h = 1e-3;
  double dN = 0, dE = 0;
  const double weights[] = {1.0 / 12, -8.0 / 12, 0, 8.0 / 12, -1.0 / 12};
  for (int i = 0; i < 5; ++i) {
    double n = phi + (i - 2) * h, e = lambda;
    proj.ForwardPoint(n, e);
    dN += weights[i] * n / h;
    dE += weights[i] * e / h;
  }
  const Ellipsoid& ell = proj.GetEllipsoid();
  const double w2 = 1 - ell.e2 * std::sin(phi) * std::sin(phi);
  const double rho = ell.a * (1 - ell.e2) / (w2 * std::sqrt(w2));
  return {.scale = std::hypot(dN, dE) / rho, .convergence = std::atan2(-dE, dN)};
}

TEST(TUTMProj, ItsFactorsAreThoseOfItsCoordinates) {
  constexpr double kTruncated = 1e-8;  // within 3°
  const TUTMProj proj(kWgs84A, kWgs84InvF, 0.1, 0.9996, 0, 500000, 10000000);
  for (double phi = -1.4; phi <= 1.4; phi += 0.35)
    for (double offset = -0.05; offset <= 0.05; offset += 0.025) {
      SCOPED_TRACE(testing::Message() << phi << ' ' << offset);
      double b = phi, l = 0.1 + offset;
      PointFactors forward, inverse;
      proj.ForwardPoint(b, l, &forward);
      proj.InversePoint(b, l, &inverse);
      const PointFactors derived = Derived(proj, phi, 0.1 + offset);
      for (const PointFactors& factors : {forward, inverse}) {
        EXPECT_NEAR(factors.scale, derived.scale, kTruncated);
        EXPECT_NEAR(factors.convergence, derived.convergence, kTruncated);
      }
    }
}

TEST(TUTMProj, TakesTheSignOfConvergenceFromHemisphereAndSide) {
  TUTMProj proj(kWgs84A, kWgs84InvF, 0.1, 1, 0, 0, 0);
  for (const double phi : {0.5, -0.5})
    for (const double offset : {0.05, -0.05}) {
      double b = phi, l = 0.1 + offset;
      proj.Forward(b, l);
      EXPECT_EQ(proj.GetConvergence() > 0, phi * offset > 0) << phi << ' ' << offset;
    }
  double b = 0, l = 0.2;
  proj.Forward(b, l);
  EXPECT_EQ(proj.GetConvergence(), 0);
}

TEST(TUTMProj, KeepsTheSideOfTheUnfoldedLongitude) {
  // Central meridian 179°, point 179° W: 2° east of it, but 358° west before folding.
  TUTMProj proj(kWgs84A, kWgs84InvF, 179 * kDegree, 1, 0, 0, 0);
  double b = 0.5, l = -179 * kDegree;
  proj.Forward(b, l);
  EXPECT_GT(l, 0);
  EXPECT_LT(proj.GetConvergence(), 0);
  proj.Inverse(b, l);  // the longitude comes back as 181°
  EXPECT_GT(proj.GetConvergence(), 0);
}

TEST(TUTMProj, KeepsTheForwardArcWithoutItsFourthTerm) {
  // u8·sin 8φ with u8 = 315/512·n⁴ is 3.1e-5 m at most; between the two directions it remains.
  const TUTMProj proj;
  const double n = proj.GetEllipsoid().n;
  const double phi = 11.25 * kDegree;  // sin 8φ = 1
  double b = phi, l = 0;
  proj.ForwardPoint(b, l);
  proj.InversePoint(b, l);
  constexpr double kNextTerms = 1e-13;  // radians, of n⁵ and rounding; 2.2e-14 found
  const double missing = 315.0 / 512 * n * n * n * n;
  EXPECT_NEAR(b - phi, -missing, kNextTerms);
}

TEST(TUTMProj, AnswersScaleQueries) {
  TUTMProj proj(kWgs84A, kWgs84InvF, 0.1, 0.9996, 0, 500000, 0);
  double k = 0;
  EXPECT_TRUE(proj.GetBLScale(k, 0.8, 0.1));
  EXPECT_EQ(k, 0.9996);
  EXPECT_TRUE(proj.GetBLScale(k, 0, 0.1 + 3 * kDegree));
  EXPECT_NEAR(k, 0.9996 * 1.0013816141533346, 5e-9);  // the exact row at the equator
  double n = 0.8, e = 0.12;
  proj.Forward(n, e);
  EXPECT_TRUE(proj.GetNEScale(k, n, e));
  EXPECT_NEAR(k, Derived(proj, 0.8, 0.12).scale, 1e-9);
}

}  // namespace
}  // namespace zel_cs::geomath
