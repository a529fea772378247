#include "geomath/base/ellipsoid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/base/curvature.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

// Beside the evolute, which meets the equator's plane 42.7 km from the centre, the rounding of p
// turns the normal 31 times as much as elsewhere, 0.1 nm over the 42 km of its length.
constexpr double kBesideEvolute = 4e-15;  // radians

struct Row {
  double X, Y, Z, B, L, H;
  double toleranceOfB = tolerance::kBatchRadians;
};

// WGS84. B, L, H of the X, Y, Z at the left (each exactly the double that is written): bisection of
// the equation for the reduced latitude with 50 digits (mpmath).
constexpr Row kRows[] = {
    {6378137.0, 0.0, 0.0, 0, 0, 0},
    {-42164137.0, 0.0, 0.0, 0, 3.1415926535897932385, 35786000.0},
    {6238857.218, 1326110.039, 0.011, 1.736237348166319744e-9, 2.0943951023804980853e-1,
     99.999526380544077101},
    {-6377896.766, -0.011, -55286.459, -8.7266462586398799309e-3, -3.1415926518650867398,
     1.0002469598385897969},
    {-1069985.813, 6068191.089, 1639996.613, 2.6179938786119083912e-1, 1.7453292519806834441,
     -399.99983675430624836},
    {-4643988.213, 2553054.125, -3537277.697, -5.9166661644740400698e-1, 2.6389378289865119394,
     57.999580322233754849},
    {0.0, -4520419.306, 4490176.836, 7.8539816339556289354e-1, -1.5707963267948966192,
     4000.0000252131416239},
    {4285639.881, 640493.172, 4664447.659, 8.2554073622960303398e-1, 1.4835298650232174759e-1,
     1.0001564237551633271},
    {3908788.174, 369489.269, 5009679.982, 9.0931654027955087516e-1, 9.4247779702161524908e-2,
     43.000321272901062833},
    {7046391.879, -11276584.229, -22994190.29, -1.0471975512009153168, -1.0122909661520027668,
     20199999.99948998181},
    {1558248.092, 567155.923, 6147312.194, 1.3089969389623286377, 3.4906585034780675203e-1,
     8847.9999856557829276},
    {-278899.676, -483068.41, 6332998.581, 1.4835298641781403453, -2.0943951015384958737,
     600.00020525582784506},
    {93669.748, 60829.845, 6355787.625, 1.5533430342815759432, 5.7595864862194778764e-1,
     9.9998828048029944154},
    {11169.436, -194.963, 6357742.566, 1.5690509975562418767, -1.7453271881359939831e-2,
     1000.0004136239080648},
    {2321.252, 4020.527, 26556751.909, 1.5706217938825663635, 1.0471976156907868386,
     20199999.999889740441},
    {-0.091, 0.064, 6356754.314, 1.5707963094106784928, 2.528657561719175039, 1.999754821713525231},
    {-0.011, -0.002, -6359752.314, -1.5707963250486761746, -2.961739153797314954,
     2999.9997548207562727},
    {2537610.688, 1465090.214, 1670373.735, 5.235987755314804694e-1, 5.235987756528960286e-1,
     -3000000.0003794108421},
    {-258368.666, -94038.504, -244707.722, -7.8539816432959114478e-1, -2.7925268028186260867,
     -5999999.999984139632},
    {47856.947, 4186.94, 1055.583, 1.7453291845727807747e-1, 8.7266455684775413336e-2,
     -6330000.0003157910245},
    {15855.148, -2795.69, 3991.865, 1.221730475614506154, -1.7453290222882630262e-1,
     -6350000.0001243072792},
    {426.192, 75.149, 6750.426, 1.5620696711024684426, 1.7453258713017032729e-1,
     -6349999.9999615878366},
    {5199125.377, 0.0, 4335100.616, 6.9813170081968262151e-1, 0, 399999.99970644512773},
    {-6240053.544, 0.0, 1317485.696, 2.0943951025753080422e-1, 3.1415926535897932385,
     399.99990939374060478},
    {0.0, 0.0, 6356752.5, 1.5707963267948966192, 0, 1.8575482050064184693e-1},
    {0.0, 0.0, -26000000.0, -1.5707963267948966192, 0, 19643247.685754820501},
    {0.0, 0.0, 100000.0, 1.5707963267948966192, 0, -6256752.3142451794994},
    {20000.0, 0.0, 20000.0, 1.2523840130894829625, 0, -6333595.4655517748042},
    {5e-10, 0.0, 6356752.5, 1.5707963267948965411, 0, 1.8575482050064184693e-1},
    {-42000.0, 0.001, 0.001, 1.8161862960133702236e-1, 3.1415926297802694289,
     -6336131.2621073283822, kBesideEvolute},
    {1.0, 1.0, -1.0, -1.5707633170549297264, 7.8539816339744830962e-1, -6356751.3142218380884},
    {6378137.0, 0.0, 1e-07, 1.578422502906846292e-14, 0, 7.8921125145342311028e-22},
};

const Ellipsoid kWgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);

double Distance(const Row& row) { return std::hypot(row.X, row.Y, row.Z); }

TEST(Ellipsoid, DerivesItsConstants) {
  // 50-digit evaluation of the definitions for WGS84 (mpmath).
  EXPECT_DOUBLE_EQ(kWgs84.f, 3.3528106647474804385e-3);
  EXPECT_DOUBLE_EQ(kWgs84.e2, 6.6943799901413164354e-3);
  EXPECT_DOUBLE_EQ(kWgs84.e, 8.1819190842621490908e-2);
  EXPECT_DOUBLE_EQ(kWgs84.ep2, 6.7394967422764343865e-3);
  EXPECT_DOUBLE_EQ(kWgs84.b, 6356752.3142451794994);
  EXPECT_NEAR(kWgs84.n, 1.679220386383704554e-3, kEps);  // a − b loses digits
  EXPECT_FALSE(kWgs84.flag);

  Ellipsoid fromAxes;
  fromAxes.a = kWgs84.a;
  fromAxes.b = kWgs84.b;
  fromAxes.SetEllipsoid(true);
  EXPECT_NEAR(fromAxes.invF, kWgs84InvF, 1e-10);
  EXPECT_EQ(fromAxes.b, kWgs84.b);
  EXPECT_NEAR(fromAxes.e2, kWgs84.e2, 1e-14);
}

TEST(Ellipsoid, OfInfiniteInverseFlatteningIsASphere) {
  const Ellipsoid sphere = MakeEllipsoid(6371000, kInf);
  EXPECT_EQ(sphere.e2, 0);
  EXPECT_EQ(sphere.b, sphere.a);
  double x = 0.5, y = -2, z = 10;
  sphere.BLH_to_XYZ(x, y, z);
  EXPECT_NEAR(std::hypot(x, y, z), 6371010, 2e-9);
  EXPECT_TRUE(sphere.XYZ_to_BLH(x, y, z));
  EXPECT_NEAR(x, 0.5, kEps);
  EXPECT_NEAR(z, 10, 2e-9);
}

TEST(Ellipsoid, GivesTheRadiiOfCurvature) {
  // √(ρν), ρ and ν at 0°, 46°57′08.66″ and 90°, 50 digits (mpmath).
  EXPECT_NEAR(kWgs84.GetGaussianRadius(0), 6356752.3142451794994, 2e-9);
  EXPECT_NEAR(kWgs84.GetGaussianRadius(0.81947406867611), 6379560.0740838960175, 3e-9);
  EXPECT_NEAR(kWgs84.GetGaussianRadius(-kHalfPi), 6399593.6257584930717, 3e-9);
  EXPECT_NEAR(MeridianRadius(kWgs84, 0), 6335439.3272928200308, 2e-9);
  EXPECT_NEAR(MeridianRadius(kWgs84, 0.81947406867611), 6369566.8282271278849, 3e-9);
  EXPECT_NEAR(MeridianRadius(kWgs84, -kHalfPi), 6399593.6257584930735, 3e-9);
  EXPECT_EQ(PrimeVerticalRadius(kWgs84, 0), kWgs84A);
  EXPECT_NEAR(PrimeVerticalRadius(kWgs84, 0.81947406867611), 6389568.9983950154392, 3e-9);
  EXPECT_NEAR(PrimeVerticalRadius(kWgs84, -kHalfPi), 6399593.6257584930735, 3e-9);
}

// Half a unit in the last place for each of the roundings of B, L, N + H and the products.
constexpr double kForwardRelative = 4 * kEps;

TEST(Ellipsoid, ConvertsToGeocentric) {
  for (const Row& row : kRows) {
    double x = row.B, y = row.L, z = row.H;
    EXPECT_TRUE(kWgs84.BLH_to_XYZ(x, y, z));
    const double tolerance = kForwardRelative * std::max(Distance(row), kWgs84.a);
    EXPECT_NEAR(x, row.X, tolerance);
    EXPECT_NEAR(y, row.Y, tolerance);
    EXPECT_NEAR(z, row.Z, tolerance);
  }
}

// Where the scalar iteration is at home: it settles, and H = p/cos B − N keeps its digits.
bool IsOrdinary(const Row& row) {
  return std::abs(row.B) < 76 * tolerance::kDegree && row.H > -4e6;
}

constexpr double kScalarRadians = 5e-16;  // atan of a tangent settled to 1e-14; worst 2.2e-16
constexpr double kScalarHeight = 2e-8;    // metres, near latitude 75°; worst 3.8e-9

TEST(Ellipsoid, ConvertsOrdinaryPointsToGeodetic) {
  for (const Row& row : kRows) {
    if (!IsOrdinary(row)) continue;
    double x = row.X, y = row.Y, z = row.Z;
    ASSERT_TRUE(kWgs84.XYZ_to_BLH(x, y, z)) << row.B;
    EXPECT_NEAR(x, row.B, kScalarRadians);
    EXPECT_NEAR(y, row.L, kScalarRadians);
    EXPECT_NEAR(z, row.H, kScalarHeight) << row.B;
  }
}

// Up to tan B = 16 the columns stand for the iteration: one point on both sides of that.
TEST(Ellipsoid, ConvertsAlikeWhereTheIterationBegins) {
  for (const double Z : {-1.0, 1.0})
    for (const double tangent : {15.999999, 16.000001}) {
      double x = 4e5, y = 0, z = Z * tangent * x;
      double X = x, Y = y, H = z;
      ASSERT_TRUE(kWgs84.XYZ_to_BLH(x, y, z));
      ASSERT_EQ(kWgs84.XYZ_to_BLH_Batch(&X, &Y, &H, 1), 1u);
      EXPECT_NEAR(x, X, kScalarRadians);
      EXPECT_NEAR(z, H, kScalarHeight) << tangent;
    }
}

// The iteration reads a, e² and e′² only; the columns read f, which nobody set here.
TEST(Ellipsoid, ConvertsWithConstantsThatWereSetOneByOne) {
  Ellipsoid byHand;
  byHand.a = kWgs84.a;
  byHand.e2 = kWgs84.e2;
  byHand.ep2 = kWgs84.ep2;
  byHand.f = 0;
  double x = 4e6, y = 1e6, z = 4.8e6, X = x, Y = y, Z = z;
  ASSERT_TRUE(byHand.XYZ_to_BLH(x, y, z));
  ASSERT_TRUE(kWgs84.XYZ_to_BLH(X, Y, Z));
  EXPECT_NEAR(x, X, kScalarRadians);
  EXPECT_NEAR(z, Z, kScalarHeight);
}

TEST(Ellipsoid, ConvertsTheAxisAndTheCentre) {
  struct Case {
    double X, Y, Z, B, H;
  };
  const double b = kWgs84.b;
  const Case cases[] = {
      {0, 0, 0, 0, -kWgs84.a},
      {0, 0, -0.0, 0, -kWgs84.a},
      {0, 0, b, kHalfPi, 0},
      {0, 0, -b, -kHalfPi, 0},
      {5e-11, 5e-11, b + 5, kHalfPi, 5},
      {-9e-11, 0, -b - 5, -kHalfPi, 5},
      {0, -9e-11, 2 * b, kHalfPi, b},
  };
  for (const Case& c : cases) {
    double x = c.X, y = c.Y, z = c.Z;
    EXPECT_TRUE(kWgs84.XYZ_to_BLH(x, y, z));
    EXPECT_EQ(x, c.B);
    EXPECT_EQ(y, 0);
    EXPECT_NEAR(z, c.H, 2e-9);

    x = c.X;
    y = c.Y;
    z = c.Z;
    EXPECT_EQ(kWgs84.XYZ_to_BLH_Batch(&x, &y, &z, 1), 1u);
    EXPECT_NEAR(x, c.B, 2e-16);
    EXPECT_EQ(y, 0);
    EXPECT_NEAR(z, c.H, 2e-9);
  }
}

TEST(Ellipsoid, KeepsTheLimitOfTwentySteps) {
  struct Case {
    double X, Z;
    int steps;  // with which |Δ tan B| first is at most 1e-14, counted in Python floats
  };
  // Deep inside, where each step gains little. Y = 0, so that the iteration needs only arithmetic
  // and a square root, which round alike everywhere.
  constexpr Case kCases[] = {{120000, 60000, 20},
                             {190000, 20000, 20},
                             {65000, 40000, 21},
                             {180000, 30000, 21},
                             {170000, 5000, 21}};
  for (const Case& c : kCases) {
    double x = c.X, y = 0, z = c.Z;
    const bool converted = kWgs84.XYZ_to_BLH(x, y, z);
    EXPECT_EQ(converted, c.steps <= 20) << c.X;
    EXPECT_EQ(x == c.X && y == 0 && z == c.Z, !converted) << "unchanged exactly on refusal";
  }
}

struct PolarCount {
  int scalar = 0, batch = 0;      // points converted
  double worstB = 0, worstH = 0;  // of the batch, against what the points were made from
};

PolarCount ConvertPolarRing(double fromDeg, double toDeg, int points) {
  PolarCount result;
  for (int i = 0; i < points; ++i) {
    const double B = (fromDeg + (toDeg - fromDeg) * i / points) * tolerance::kDegree;
    const double L = 0.1 * (i % 60 - 30), H = i % 9000;
    double X = B, Y = L, Z = H;
    kWgs84.BLH_to_XYZ(X, Y, Z);
    double x = X, y = Y, z = Z;
    if (kWgs84.XYZ_to_BLH(x, y, z))
      ++result.scalar;
    else
      EXPECT_TRUE(x == X && y == Y && z == Z) << "unchanged on refusal";
    result.batch += static_cast<int>(kWgs84.XYZ_to_BLH_Batch(&X, &Y, &Z, 1));
    result.worstB = std::max(result.worstB, std::abs(X - B));
    result.worstH = std::max(result.worstH, std::abs(Z - H));
  }
  return result;
}

// Around the poles a last-bit flicker of the tangent exceeds the absolute tolerance: about one
// point in 500 never settles.
TEST(Ellipsoid, KeepsRefusingSomePointsNearThePolesThatTheBatchConverts) {
  constexpr int kPoints = 20000;
  const PolarCount polar = ConvertPolarRing(89.0, 89.9999999, kPoints);
  EXPECT_LT(polar.scalar, kPoints);
  EXPECT_GT(polar.scalar, kPoints - kPoints / 50);
  EXPECT_EQ(polar.batch, kPoints);
  EXPECT_LE(polar.worstB, 2 * kEps);
  EXPECT_LE(polar.worstH, 6e-9);  // of which 3e-9 from making the points; worst 4.1e-9

  EXPECT_EQ(ConvertPolarRing(75, 88.5, kPoints).scalar, kPoints);
}

// H = p/cos B − N takes the cosine of a rounded latitude; the row 89.9999999° S loses 5 digits.
TEST(Ellipsoid, KeepsTheHeightThatLosesDigitsNearThePoles) {
  double worst = 0;
  for (const Row& row : kRows) {
    double x = row.X, y = row.Y, z = row.Z;
    if (std::abs(row.B) < 89 * tolerance::kDegree || std::hypot(x, y) < 1e-10) continue;
    if (kWgs84.XYZ_to_BLH(x, y, z)) worst = std::max(worst, std::abs(z - row.H));
  }
  EXPECT_GT(worst, 1e-3);
}

// Roundings of X, Y, Z seen from the centre of curvature; metres.
constexpr double kBatchHeight = 2e-9;

TEST(EllipsoidBatch, IsExactToRoundingEverywhere) {
  for (const Row& row : kRows) {
    double x = row.X, y = row.Y, z = row.Z;
    EXPECT_EQ(kWgs84.XYZ_to_BLH_Batch(&x, &y, &z, 1), 1u);
    EXPECT_NEAR(x, row.B, row.toleranceOfB) << row.B << ' ' << row.H;
    EXPECT_NEAR(y, row.L, 2 * kEps);
    EXPECT_NEAR(z, row.H, std::max(kBatchHeight, 2 * kEps * std::abs(row.H))) << row.B;
  }
}

TEST(EllipsoidBatch, AgreesWithTheScalarCalls) {
  std::vector<double> points;
  for (double B = -75; B <= 75; B += 2.5)
    for (double L = -180; L <= 180; L += 22.5)
      for (const double H : {-400.0, 0.0, 8848.0, 20.2e6})
        points.insert(points.end(), {B * tolerance::kDegree, L * tolerance::kDegree, H});
  const std::size_t count = points.size() / 3;

  std::vector<double> batch = points;
  EXPECT_EQ(kWgs84.BLH_to_XYZ_Batch(&batch[0], &batch[1], &batch[2], count, 3), count);
  for (std::size_t i = 0; i < points.size(); i += 3) {
    kWgs84.BLH_to_XYZ(points[i], points[i + 1], points[i + 2]);
    for (std::size_t j = i; j < i + 3; ++j)
      EXPECT_NEAR(batch[j], points[j],
                  std::max(tolerance::kBatchMetres, 2 * kEps * std::abs(points[j])));
  }

  batch = points;
  EXPECT_EQ(kWgs84.XYZ_to_BLH_Batch(&batch[0], &batch[1], &batch[2], count, 3), count);
  for (std::size_t i = 0; i < points.size(); i += 3) {
    ASSERT_TRUE(kWgs84.XYZ_to_BLH(points[i], points[i + 1], points[i + 2]));
    EXPECT_NEAR(batch[i], points[i], tolerance::kBatchRadians);
    EXPECT_NEAR(batch[i + 1], points[i + 1], tolerance::kBatchRadians);
    EXPECT_NEAR(batch[i + 2], points[i + 2], kScalarHeight);
  }
}

TEST(EllipsoidBatch, MarksPointsWithoutAFiniteResult) {
  double B[] = {0.5, kNaN, 0.5, 1.0}, L[] = {0, 0, kInf, 2}, H[] = {1, 1, 1, 1e308};
  EXPECT_EQ(kWgs84.BLH_to_XYZ_Batch(B, L, H, 4), 2u);
  for (const int i : {1, 2}) EXPECT_TRUE(std::isnan(B[i]) && std::isnan(L[i]) && std::isnan(H[i]));
  EXPECT_TRUE(std::isfinite(B[0]) && std::isfinite(B[3]));

  double X[] = {kNaN, kInf, 0, 1.7e308, 4e6}, Y[] = {0, 0, 0, 1.7e308, 0},
         Z[] = {0, 0, -kInf, 0, 4e6};
  EXPECT_EQ(kWgs84.XYZ_to_BLH_Batch(X, Y, Z, 5), 1u);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(std::isnan(X[i]) && std::isnan(Y[i]) && std::isnan(Z[i]));
  EXPECT_EQ(kWgs84.XYZ_to_BLH_Batch(nullptr, nullptr, nullptr, 0), 0u);
}

// Points of every kind side by side: near the surface, deep inside, on the axis, too large an angle
// for the columns, none at all. Each gives the bits that it gives alone.
TEST(EllipsoidBatch, DoesNotMixNeighbours) {
  constexpr std::size_t kCount = 700;
  std::vector<double> around, alone;
  for (std::size_t i = 0; i < kCount; ++i) {
    const double t = 2.0 * static_cast<double>(i) / kCount - 1;
    const double L = i % 50 == 7 ? 1e6 : 3 * std::cos(9 * t), H = i % 3 == 0 ? -6.3e6 * t * t : 9e3;
    around.insert(around.end(), {i % 97 == 5 ? kNaN : i % 90 == 3 ? kHalfPi : 1.5 * t, L, H});
  }
  const auto expectSameBits = [&](auto batch) {
    alone = around;
    const std::size_t count = batch(around.data(), kCount);
    std::size_t one = 0;
    for (std::size_t i = 0; i < kCount; ++i) one += batch(&alone[3 * i], std::size_t{1});
    EXPECT_EQ(count, one);
    for (std::size_t i = 0; i < around.size(); ++i)
      ASSERT_EQ(std::bit_cast<std::uint64_t>(around[i]), std::bit_cast<std::uint64_t>(alone[i]))
          << i;
  };
  expectSameBits([](double* p, std::size_t count) {
    return kWgs84.BLH_to_XYZ_Batch(p, p + 1, p + 2, count, 3);
  });
  expectSameBits([](double* p, std::size_t count) {
    return kWgs84.XYZ_to_BLH_Batch(p, p + 1, p + 2, count, 3);
  });
}

TEST(EllipsoidBatch, TakesPointsWhereverTheyStand) {
  constexpr std::size_t kCount = 300;  // a block and a rest
  std::vector<double> B(kCount), L(kCount), H(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    const double t = static_cast<double>(i) / kCount;
    B[i] = 1.5 * t;
    L[i] = 3 - 6 * t;
    H[i] = 8000 * t;
  }
  std::vector<double> x = B, y = L, z = H;
  kWgs84.BLH_to_XYZ_Batch(x.data(), y.data(), z.data(), kCount);
  for (const std::ptrdiff_t stride : {3, 5, -4}) {
    constexpr double kUntouched = 77;
    const std::size_t step = static_cast<std::size_t>(std::abs(stride));
    std::vector<double> points(step * kCount, kUntouched);
    const auto at = [&](std::size_t i) { return step * (stride < 0 ? kCount - 1 - i : i); };
    for (std::size_t i = 0; i < kCount; ++i) {
      points[at(i)] = B[i];
      points[at(i) + 1] = L[i];
      points[at(i) + 2] = H[i];
    }
    double* first = &points[at(0)];
    EXPECT_EQ(kWgs84.BLH_to_XYZ_Batch(first, first + 1, first + 2, kCount, stride), kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
      ASSERT_EQ(points[at(i)], x[i]) << stride;
      ASSERT_EQ(points[at(i) + 1], y[i]);
      ASSERT_EQ(points[at(i) + 2], z[i]);
      if (step > 3) {
        ASSERT_EQ(points[at(i) + 3], kUntouched);
      }
    }
  }
}

TEST(Ellipsoid, SurvivesAnyNumbers) {
  const double values[] = {0, -0.0, 1e-320, 1e-10, 1, -6.4e6, 1e154, 1e308, kInf, -kInf, kNaN};
  for (const double a : {kWgs84A, 0.0, -1.0, kNaN, kInf})
    for (const double invF : {kWgs84InvF, 0.0, 0.5, 1.0, -300.0, kNaN, kInf}) {
      const Ellipsoid ell = MakeEllipsoid(a, invF);
      for (const double v : values)
        for (const double w : values) {
          double x = v, y = w, z = v;
          EXPECT_TRUE(ell.BLH_to_XYZ(x, y, z));
          x = v;
          y = v;
          z = w;
          ell.XYZ_to_BLH(x, y, z);
          x = w;
          y = v;
          z = v;
          const bool converted = ell.XYZ_to_BLH_Batch(&x, &y, &z, 1) == 1;
          EXPECT_EQ(std::isfinite(x) && std::isfinite(y) && std::isfinite(z), converted);
        }
    }
}

}  // namespace
}  // namespace zel_cs::geomath
