#include "geomath/platform/zel_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zel_math {
namespace {

using Point4 = TAbstractPoint<double, 4>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Point4 Make(double a, double b, double c, double d) {
  Point4 p;
  p[0] = a;
  p[1] = b;
  p[2] = c;
  p[3] = d;
  return p;
}

TEST(AbstractPoint, IsNothingButItsElements) {
  EXPECT_EQ(sizeof(Point4), 4 * sizeof(double));
  EXPECT_EQ(sizeof(TAbstractPoint3<double>), 3 * sizeof(double));
  EXPECT_EQ(sizeof(TAbstractPoint2<double>), 2 * sizeof(double));

  Point4 p = Make(1, 2, 3, 4);
  double* elements = p;
  elements[2] = 30;
  const Point4& fixed = p;
  EXPECT_EQ(static_cast<const double*>(fixed)[2], 30);
  EXPECT_EQ(fixed[3], 4);
}

TEST(AbstractPoint, FillsAndCompares) {
  Point4 p(2.5);
  EXPECT_TRUE(p == 2.5 && p == Make(2.5, 2.5, 2.5, 2.5));
  EXPECT_FALSE(p != 2.5);
  p = -1.0;
  EXPECT_TRUE(p == -1.0);
  p[3] = 0;
  EXPECT_TRUE(p != -1.0 && p != Point4(-1.0));
  EXPECT_FALSE(p == -1.0);

  const Point4 unknown = Make(0, 0, kNaN, 0);
  EXPECT_FALSE(unknown == unknown);
  EXPECT_TRUE(unknown != unknown);
  EXPECT_TRUE(Point4(0.0) == Point4(-0.0));
}

TEST(AbstractPoint, DoesArithmeticByElement) {
  const Point4 a = Make(1, -2, 3, 8), b = Make(4, 5, -6, 2);
  EXPECT_TRUE(a + b == Make(5, 3, -3, 10));
  EXPECT_TRUE(a - b == Make(-3, -7, 9, 6));
  EXPECT_TRUE(-a == Make(-1, 2, -3, -8));
  EXPECT_TRUE(a * 2.0 == Make(2, -4, 6, 16));
  EXPECT_TRUE(a / 2.0 == Make(0.5, -1, 1.5, 4));
  EXPECT_TRUE(b / a == Make(4, -2.5, -2, 0.25));
  EXPECT_EQ(a * b, 4 - 10 - 18 + 16);
  EXPECT_EQ(a.sum(), 10);
  EXPECT_EQ(a.ModuleSq(), 78);
  EXPECT_EQ(a.Module(), std::sqrt(78.0));
  EXPECT_TRUE(b.f(&std::fabs) == Make(4, 5, 6, 2));

  Point4 c = a;
  EXPECT_TRUE((c += b) == a + b);
  EXPECT_TRUE((c -= b) == a);
  EXPECT_TRUE((c *= b) == Make(4, -10, -18, 16));
  EXPECT_TRUE((c /= b) == a);
  EXPECT_TRUE((c *= 3.0) == Make(3, -6, 9, 24));
  EXPECT_TRUE((c /= 3.0) == a);
  EXPECT_TRUE(c.uminus() == -a);
  EXPECT_TRUE(c == -a);
}

TEST(AbstractPoint, DividesByScalarPlainlyButGuardsElementWiseDivision) {
  EXPECT_EQ((Point4(1.0) / 0.0)[0], kInf);
  const Point4 dividend = Make(1, 0, 1e300, kInf);
  const Point4 divisor = Make(0, 0, 1e-300, 2);
  EXPECT_TRUE(dividend / divisor == Make(0, 0, 0, kInf));
  EXPECT_TRUE(std::isnan((Make(kNaN, 1, 1, 1) / Point4(1.0))[0]));
}

TEST(AbstractPoint, KeepsMinusZeroFromAbs) {
  Point4 p = Make(0.0, -3, 4, -0.0);
  p.abs();
  EXPECT_TRUE(p == Make(0, 3, 4, 0));
  EXPECT_TRUE(std::signbit(p[0]));
  EXPECT_FALSE(std::signbit(p[3]));
}

TEST(AbstractPoint, KeepsTheOthersElementWhenNotStrictlyGreaterOrSmaller) {
  Point4 p = Make(1, 5, 0.0, kNaN);
  EXPECT_TRUE(p.maximum(Make(2, 4, -0.0, 7)) == Make(2, 5, 0, 7));
  EXPECT_TRUE(std::signbit(p[2]));
  Point4 q = Make(1, 5, -0.0, kNaN);
  EXPECT_TRUE(q.minimum(Make(2, 4, 0.0, 7)) == Make(1, 4, 0, 7));
  EXPECT_FALSE(std::signbit(q[2]));
}

TEST(AbstractPoint, PairsAndTriplesShareTheArithmetic) {
  TAbstractPoint2<double> shift(0.5, -1);
  shift += TAbstractPoint2<double>(1.0, 1.0);
  EXPECT_TRUE(shift == TAbstractPoint2<double>(1.5, 0));

  const TAbstractPoint3<double> p(1, 2, 3), q(4, 5, 6);
  const TAbstractPoint3<double> sum = p + q * 2.0;
  EXPECT_TRUE(sum == TAbstractPoint3<double>(9, 12, 15));
  EXPECT_EQ(p * q, 32);
  EXPECT_TRUE(TAbstractPoint3<double>(7.0) == 7.0);
}

// In constant expressions the compiler refuses arithmetic beyond a member.
static_assert(TAbstractRect<int>{1, 2, 3, 4}[3] == 4);

TEST(AbstractRect, CountsFromTheWestEdge) {
  TAbstractRect<double> rect{-10, 40, 5, 60};
  EXPECT_EQ(rect[0], rect.west);
  EXPECT_EQ(rect[1], rect.south);
  EXPECT_EQ(rect[2], rect.east);
  rect[3] = 61;
  EXPECT_EQ(rect.north, 61);
}

TEST(SmartArray, OwnsItsElements) {
  CSmartArray<double, 1> first{1, 2, 3};
  CSmartArray<double, 1> second = first;
  second[1] = 20;
  EXPECT_EQ(first[1], 2);
  EXPECT_EQ(second.size(), 3u);
  const CSmartArray<int, 1> zeros(std::size_t{4});
  EXPECT_EQ(zeros.size(), 4u);
  EXPECT_EQ(zeros[3], 0);
}

}  // namespace
}  // namespace zel_math
