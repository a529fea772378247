#include "geomath/proj/geo_proj.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/utm_proj.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kNotComputed = 2147483647.0;

// A host's own projection, written against the described virtual operations alone: a plate carrée
// of one radian to the metre that fails beyond 80 m, with a scale that the test sets.
class HostProj : public TGeoProj {
 public:
  HostProj() : TGeoProj(ProjTypeMercator, 2, kWgs84A, kWgs84InvF, true) {}

  bool _Forward(double& b, double& l) override {
    ++calls;
    scale_ = pointScale;
    convergence_ = l;
    l += offset[0];
    return std::abs(b) <= 80;
  }
  bool _Inverse(double& n, double& e) override {
    ++calls;
    scale_ = pointScale;
    e -= offset[0] - inverseDrift;
    return inverseWorks && std::abs(n) <= 80;
  }
  void SetParam(double value, int index, unsigned int) override {
    if (index >= 0 && index < 2) offset[index] = value;
  }
  double GetParam(int index, unsigned int) const override {
    return index >= 0 && index < 2 ? offset[index] : 0.0;
  }

  double offset[2] = {0, 0};
  double pointScale = 0.5;
  bool inverseWorks = true;
  double inverseDrift = 0;
  int calls = 0;
};

TEST(GeoProj, ByItselfIsTheInvalidProjection) {
  TGeoProj proj;
  EXPECT_EQ(proj.GetType(), ProjTypeNone);
  EXPECT_EQ(proj.GetQParam(), 0);
  EXPECT_EQ(proj.GetScale(), kNotComputed);
  EXPECT_EQ(proj.GetConvergence(), kNotComputed);
  EXPECT_EQ(proj.GetEllipsoid().a, 6378137.0);
  EXPECT_EQ(proj.GetEllipsoid().invF, 298.257223563);
  EXPECT_EQ(proj.GetNEDir(), 0x21);
  EXPECT_EQ(proj.GetNEAxes(), nullptr);
  EXPECT_EQ(proj.GetBLAxes(), nullptr);
  EXPECT_FALSE(proj.IsEllipsoidFixed());
  EXPECT_EQ(proj.FNorth(), 0);
  EXPECT_EQ(proj.FEast(), 0);

  double b = 0.5, l = 0.25, db = 7, dl = 8, k = 9;
  EXPECT_FALSE(proj.Forward(b, l) || proj.Inverse(b, l));
  EXPECT_FALSE(proj._Forward(b, l) || proj._Inverse(b, l));
  EXPECT_FALSE(proj.GetCentralPoint(b, l, db, dl));
  EXPECT_TRUE(b == 0.5 && l == 0.25 && db == 7 && dl == 8);
  EXPECT_FALSE(proj.GetBLScale(k, b, l));
  EXPECT_EQ(k, 1.0);
  k = 9;
  EXPECT_FALSE(proj.GetNEScale(k, b, l));
  EXPECT_EQ(k, 1.0);
  proj.SetParam(5, 0, 2);
  EXPECT_EQ(proj.GetParam(0, 2), 0.0);
  EXPECT_EQ(proj.ForwardBatch(&b, &l, 1), 0u);
  EXPECT_TRUE(std::isnan(b) && std::isnan(l));
}

TEST(GeoProj, GivesItsKindThroughEitherMemberPointer) {
  ProjType (TGeoProj::*const plain)() = &TGeoProj::GetType;
  ProjType (TGeoProj::*const constant)() const = &TGeoProj::GetType;
  TGeoProj proj;
  EXPECT_EQ((proj.*plain)(), ProjTypeNone);
  EXPECT_EQ((std::as_const(proj).*constant)(), ProjTypeNone);
}

TEST(GeoProj, ChecksKindAndParameterCount) {
  struct Case {
    unsigned type;
    int count;
    int expectedType, expectedCount;
  };
  constexpr Case kCases[] = {{40, 16, 40, 16}, {41, 5, 40, 0}, {0xffffffff, 5, 40, 0},
                             {0, 17, 40, 0},   {5, 0, 40, 0},  {5, -1, 40, -1},
                             {5, 1, 5, 1}};
  for (const Case& c : kCases) {
    const TGeoProj proj(c.type, c.count, 6377397.155, 299.1528128, false);
    EXPECT_EQ(proj.GetType(), c.expectedType) << c.type << ' ' << c.count;
    EXPECT_EQ(proj.GetQParam(), c.expectedCount) << c.type << ' ' << c.count;
    EXPECT_EQ(proj.GetScale(), 1.0);
    EXPECT_EQ(proj.GetConvergence(), 0.0);
    EXPECT_EQ(proj.GetEllipsoid().a, 6377397.155);
    EXPECT_DOUBLE_EQ(proj.GetEllipsoid().e2, MakeEllipsoid(6377397.155, 299.1528128).e2);
  }
}

TEST(GeoProj, TurnsAxesBeforeAndAfterTheProjection) {
  HostProj proj;
  proj.offset[0] = 100;
  proj.SetBLAxes(L"WN");  // the caller gives west longitude, then latitude
  proj.SetNEAxes(L"ES");
  EXPECT_STREQ(proj.GetBLAxes(), L"WN");
  EXPECT_STREQ(proj.GetNEAxes(), L"ES");
  EXPECT_EQ(proj.GetNEDir(), 0x42);

  double first = -2, second = 1;
  EXPECT_TRUE(proj.Forward(first, second));
  EXPECT_EQ(first, 102);
  EXPECT_EQ(second, -1);
  EXPECT_EQ(proj.GetConvergence(), 2);
  EXPECT_TRUE(proj.Inverse(first, second));
  EXPECT_EQ(first, -2);
  EXPECT_EQ(second, 1);

  first = 3;
  second = 81;  // fails: the pair has been turned to internal axes and shifted
  EXPECT_FALSE(proj.Forward(first, second));
  EXPECT_EQ(first, 81);
  EXPECT_EQ(second, 97);
}

TEST(GeoProj, KeepsALooseTestOfAngles) {
  TGeoProj proj;
  for (const double sign : {1.0, -1.0}) {
    EXPECT_TRUE(proj.IsAngleCoordValid(sign * 3.14, sign * 12.0));
    EXPECT_TRUE(proj.IsAngleCoordValid(sign * kPi, sign * 12.566370614359172));
    EXPECT_FALSE(proj.IsAngleCoordValid(sign * 3.2, 0));
    EXPECT_FALSE(proj.IsAngleCoordValid(0, sign * 12.57));
  }
  EXPECT_FALSE(proj.IsAngleCoordValid(kNaN, 0));
  EXPECT_FALSE(proj.IsAngleCoordValid(0, kNaN));
}

TEST(GeoProj, AnswersScalesThroughTheCache) {
  HostProj proj;
  double k = 9;
  EXPECT_TRUE(proj.GetBLScale(k, 1, 2));
  EXPECT_EQ(k, 0.5);
  EXPECT_EQ(proj.calls, 2);
  k = 9;
  EXPECT_TRUE(proj.GetNEScale(k, 1, 2));
  EXPECT_EQ(k, 0.5);

  EXPECT_EQ(proj.GetHScale(0), 1.0);
  EXPECT_EQ(proj.GetHScale(6371000), 2.0);
  EXPECT_TRUE(proj.GetAvgBLHScale(k, 1, 2, 0));
  EXPECT_EQ(k, 2.0);
  EXPECT_TRUE(proj.GetAvgGridScale(k, 1, 2, 6371000));
  EXPECT_EQ(k, 4.0);
}

TEST(GeoProj, SaysNoScaleWhereAStepFails) {
  HostProj proj;
  double k = 9;
  EXPECT_FALSE(proj.GetBLScale(k, 4, 0));  // no valid angle
  EXPECT_EQ(k, 1.0);
  EXPECT_EQ(proj.calls, 0);
  EXPECT_FALSE(proj.GetNEScale(k, 81, 0));
  proj.offset[0] = -20;  // the grid position inverts to a longitude of 22 rad
  EXPECT_FALSE(proj.GetNEScale(k, 1, 2));
  proj.inverseDrift = 20;  // neither is the geographic position one after both ways
  EXPECT_FALSE(proj.GetBLScale(k, 1, 2));
  EXPECT_EQ(k, 1.0);
  proj.inverseDrift = 0;
  proj.inverseWorks = false;
  EXPECT_FALSE(proj.GetBLScale(k, 1, 2));
  EXPECT_FALSE(proj.GetAvgBLHScale(k, 1, 2, 0));
  EXPECT_FALSE(proj.GetAvgGridScale(k, 1, 2, 5));
  EXPECT_EQ(k, 1.0);
}

TEST(GeoProj, KeepsDividingByAZeroScaleAtHeightZeroOnly) {
  HostProj proj;
  proj.pointScale = 0;
  double k = 9;
  EXPECT_TRUE(proj.GetAvgBLHScale(k, 1, 2, 0));
  EXPECT_EQ(k, kInf);
  EXPECT_FALSE(proj.GetAvgBLHScale(k, 1, 2, 100));
  EXPECT_EQ(k, 0);
  proj.pointScale = -9e-21;
  EXPECT_FALSE(proj.GetAvgGridScale(k, 1, 2, 100));
  EXPECT_EQ(k, -9e-21);
  proj.pointScale = -1e-20;
  EXPECT_TRUE(proj.GetAvgGridScale(k, 1, 2, 100));
}

TEST(GeoProj, FixesTheEllipsoid) {
  TGeoProj proj;
  proj.SetEllipsoidFixed(true);
  proj.SetEllipsoid(6377563.396, 299.3249646);
  EXPECT_EQ(proj.GetEllipsoid().a, kWgs84A);
  proj.SetEllipsoidFixed(false);
  proj.SetEllipsoid(6377563.396, 299.3249646);
  EXPECT_EQ(proj.GetEllipsoid().invF, 299.3249646);
  EXPECT_DOUBLE_EQ(proj.GetEllipsoid().b, 6377563.396 * (1 - 1 / 299.3249646));
}

void MakeDifferent(HostProj& proj) {
  proj.SetEllipsoid(6377397.155, 299.1528128);
  proj.SetEllipsoidFixed(true);
  proj.SetNEAxes(L"SW");
  proj.SetBLAxes(L"EN");
  proj.SetParam(12.5, 1, 2);
  double b = 0.25, l = 0.125;
  proj._Forward(b, l);
}

void ExpectSame(const HostProj& actual, const HostProj& expected) {
  EXPECT_EQ(actual.GetType(), expected.GetType());
  EXPECT_EQ(actual.GetQParam(), expected.GetQParam());
  EXPECT_EQ(actual.GetEllipsoid().b, expected.GetEllipsoid().b);
  EXPECT_EQ(actual.GetScale(), expected.GetScale());
  EXPECT_EQ(actual.GetConvergence(), expected.GetConvergence());
  EXPECT_STREQ(actual.GetNEAxes(), expected.GetNEAxes());
  EXPECT_STREQ(actual.GetBLAxes(), expected.GetBLAxes());
  EXPECT_EQ(HostProj(actual).GetNEDir(), HostProj(expected).GetNEDir());
  EXPECT_EQ(actual.GetParam(1, 2), expected.GetParam(1, 2));
  double b = 0.5, l = 0.75, n = 0.5, e = 0.75;
  EXPECT_EQ(HostProj(actual).Forward(b, l), HostProj(expected).Forward(n, e));
  EXPECT_TRUE(b == n && l == e);
}

TEST(GeoProj, CopiesEveryMember) {
  HostProj source;
  MakeDifferent(source);
  source.SetNEAxes(source.GetNEAxes());  // text "SW", identity
  HostProj copy(source), assigned;
  assigned = source;
  for (HostProj* proj : {&copy, &assigned}) {
    EXPECT_TRUE(proj->IsEllipsoidFixed());
    EXPECT_EQ(proj->GetNEDir(), 0x21);
    EXPECT_NE(proj->GetNEAxes(), source.GetNEAxes());
    ExpectSame(*proj, source);
  }
  HostProj& same = assigned;
  assigned = same;
  ExpectSame(assigned, source);
}

TEST(GeoProj, TakesOverAnotherProjection) {
  HostProj source, target;
  MakeDifferent(source);
  target.SetNEAxes(L"EN");
  EXPECT_FALSE(target.CopyGeoProj(nullptr));
  EXPECT_TRUE(target.CopyGeoProj(&target));
  EXPECT_EQ(target.GetNEDir(), 0x12) << "copying from itself changes nothing";

  EXPECT_TRUE(target.CopyGeoProj(&source));
  EXPECT_FALSE(target.IsEllipsoidFixed());
  ExpectSame(target, source);

  target.SetEllipsoidFixed(true);
  HostProj plain;
  EXPECT_TRUE(target.CopyGeoProj(&plain));
  EXPECT_TRUE(target.IsEllipsoidFixed());
  EXPECT_EQ(target.GetEllipsoid().a, kWgs84A) << "the fixed flag does not hold off a copy";
  EXPECT_STREQ(target.GetNEAxes(), L"SW") << "a source without text leaves the text";
  EXPECT_EQ(target.GetNEDir(), 0x21);
}

TEST(GeoProj, TakesOverConstantsWithTheEllipsoid) {
  TUTMProj source(6377563.396, 299.3249646, 0.1, 0.9996, 0.5, 500000, 100), target;
  target.SetEllipsoidFixed(true);
  EXPECT_TRUE(target.CopyGeoProj(&source));
  double b = 0.9, l = 0.15, n = 0.9, e = 0.15;
  EXPECT_TRUE(source.Forward(b, l) && target.Forward(n, e));
  EXPECT_TRUE(b == n && l == e);
}

TEST(GeoProj, LivesOnTheHostsHeap) {
  // The deleting destructor frees with the C runtime whichever base the pointer has.
  std::unique_ptr<AxisRotation> asAxes(new TGeoProj);
  std::unique_ptr<TGeoProj> asBase(new HostProj);
  std::unique_ptr<TGeoProj[]> several(new TGeoProj[3]);
  EXPECT_EQ(several[2].GetType(), ProjTypeNone);
  EXPECT_EQ(asBase->GetType(), ProjTypeMercator);
}

TEST(GeoProj, ConvertsAnglesAsDecimalDegrees) {
  const TGeoProj proj;
  EXPECT_EQ(proj.DMSToRad(10.5), 10.5 * 0.017453292519943295);
  EXPECT_EQ(proj.RadToDMS(0.25), 0.25 * 57.29577951308232);
  EXPECT_EQ(proj.GradToDMS(45.3), 45.3);
  EXPECT_EQ(proj.SecToRad(7200), 2 * 0.017453292519943295);
}

TEST(GeoProjBatch, KeepsConvertingNothingForAHostsClassWithoutConstForm) {
  const HostProj proj;
  double b[] = {0.1, 0.2}, l[] = {0.3, 0.4};
  EXPECT_EQ(proj.ForwardBatch(b, l, 2), 0u);
  for (const double value : {b[0], b[1], l[0], l[1]}) EXPECT_TRUE(std::isnan(value));
  double n[] = {1, 2}, e[] = {3, 4};
  EXPECT_EQ(proj.InverseBatch(n, e, 2), 0u);
  EXPECT_TRUE(std::isnan(n[0]) && std::isnan(e[1]));
}

// What a host's class derived from one of the library does to a point. Coordinates that differ from
// the library's by more than 1000 km show which of the two ran.
constexpr double kHostShift = 5e6;

struct HostForward_ : TUTMProj {
  using TUTMProj::TUTMProj;
  bool _Forward(double& b, double& l) override {
    const bool done = TUTMProj::_Forward(b, l);
    b += kHostShift;
    return done;
  }
  bool _Inverse(double& n, double& e) override {
    n -= kHostShift;
    return TUTMProj::_Inverse(n, e);
  }
};

struct HostForward : TUTMProj {
  using TUTMProj::TUTMProj;
  bool Forward(double& b, double& l) override {
    const bool done = TUTMProj::Forward(b, l);
    b += kHostShift;
    return done;
  }
  bool Inverse(double& n, double& e) override {
    n -= kHostShift;
    return TUTMProj::Inverse(n, e);
  }
};

struct HostPoint : TUTMProj {
  using TUTMProj::TUTMProj;
  bool ForwardPoint(double& b, double& l, PointFactors* factors) const override {
    const bool done = TUTMProj::ForwardPoint(b, l, factors);
    b += kHostShift;
    return done;
  }
  bool InversePoint(double& n, double& e, PointFactors* factors) const override {
    n -= kHostShift;
    return TUTMProj::InversePoint(n, e, factors);
  }
};

struct HostBoth : HostPoint {
  using HostPoint::HostPoint;
  bool _Forward(double& b, double& l) override { return ForwardPoint(b, l, nullptr); }
  bool _Inverse(double& n, double& e) override { return InversePoint(n, e, nullptr); }
};

// Takes longitudes from its own meridian, gives northings from its own parallel.
struct HostAxes : TUTMProj {
  using TUTMProj::TUTMProj;
  void RotateBL(unsigned int dir, double&, double& l) const override {
    l += dir == 0 ? -0.01 : 0.01;
  }
  void RotateNE(unsigned int dir, double& n, double&) const override {
    n += dir == 0 ? kHostShift : -kHostShift;
  }
};

struct HostName : TUTMProj {
  using TUTMProj::TUTMProj;
  double FEast() const override { return -1; }
};

template <class Host>
Host MakeHost() {
  return Host(kWgs84A, kWgs84InvF, 0.05, 0.9996, 0, 500000, 0);
}

// The batches of a class that has const forms are its single calls; a block and a bit.
template <class Host>
void ExpectRunByItsOwnForms() {
  Host host = MakeHost<Host>();
  std::vector<double> first(300, 0.9), second(300, 0.07);
  for (std::size_t i = 0; i < first.size(); ++i) first[i] += 1e-4 * static_cast<double>(i);
  std::vector<double> n = first, e = second;
  ASSERT_EQ(host.ForwardBatch(n.data(), e.data(), n.size()), n.size());
  for (std::size_t i = 0; i < n.size(); ++i) {
    double b = first[i], l = second[i];
    ASSERT_TRUE(host.Forward(b, l));
    ASSERT_NEAR(n[i], b, tolerance::BatchMetres(b));
    ASSERT_NEAR(e[i], l, tolerance::BatchMetres(l));
  }
  ASSERT_EQ(host.InverseBatch(n.data(), e.data(), n.size()), n.size());
  for (std::size_t i = 0; i < n.size(); ++i) {
    ASSERT_NEAR(n[i], first[i], tolerance::kRoundTripRadians);
    ASSERT_NEAR(e[i], second[i], tolerance::kRoundTripRadians);
  }
}

TEST(GeoProjBatch, RunsAHostsOwnConstForms) {
  ExpectRunByItsOwnForms<HostPoint>();
  ExpectRunByItsOwnForms<HostBoth>();
  ExpectRunByItsOwnForms<HostAxes>();
  ExpectRunByItsOwnForms<HostName>();
}

template <class Host>
void ExpectNothingConverted(bool pointToo) {
  Host host = MakeHost<Host>();
  double b = 0.9, l = 0.07, n = 0.9, e = 0.07;
  ASSERT_TRUE(host.Forward(b, l));
  EXPECT_GT(b, kHostShift + 5e6);
  EXPECT_EQ(host.ForwardBatch(&n, &e, 1), 0u);
  EXPECT_TRUE(std::isnan(n) && std::isnan(e));
  n = b;
  e = l;
  EXPECT_EQ(host.InverseBatch(&n, &e, 1), 0u);
  EXPECT_TRUE(std::isnan(n) && std::isnan(e));
  n = 0.9;
  e = 0.07;
  EXPECT_EQ(host.ForwardPoint(n, e), !pointToo);
  EXPECT_EQ(host.InversePoint(b, l), !pointToo);
}

TEST(GeoProjBatch, ConvertsNothingThatOnlyAHostsOwnCallsWouldConvertRightly) {
  ExpectNothingConverted<HostForward_>(true);
  ExpectNothingConverted<HostForward>(false);  // without axes the library's form is its own
}

TEST(GeoProjBatch, WalksAnyStrideWithAxesAndLeavesTheCache) {
  TUTMProj proj(kWgs84A, kWgs84InvF, 0.05, 0.9996, 0, 500000, 0);
  proj.SetNEAxes(L"EN");
  proj.SetBLAxes(L"NW");
  constexpr std::size_t kCount = 600;  // more than two blocks
  constexpr double kGuard = -77;
  for (const std::ptrdiff_t stride : {1, 2, 5, -2}) {
    const std::size_t step = static_cast<std::size_t>(std::abs(stride));
    std::vector<double> values(2 * kCount * step + 1, kGuard);
    const std::size_t second = step == 1 ? kCount : 1;  // two arrays, or interleaved
    const std::size_t start = stride > 0 ? 0 : (kCount - 1) * step;
    const auto at = [&](std::size_t i) { return stride > 0 ? i * step : start - i * step; };
    for (std::size_t i = 0; i < kCount; ++i) {
      values[at(i)] = 1e-3 * static_cast<double>(i);
      values[at(i) + second] = -1e-4 * static_cast<double>(i);
    }
    values[at(300)] = kNaN;

    const double scaleBefore = proj.GetScale();
    std::vector<double> expected = values;
    double* const data = values.data() + start;
    EXPECT_EQ(proj.ForwardBatch(data, data + second, kCount, stride), kCount - 1);
    EXPECT_EQ(proj.GetScale(), scaleBefore);
    std::vector<double> forward = values;
    EXPECT_EQ(proj.InverseBatch(data, data + second, kCount, stride), kCount - 1);
    EXPECT_EQ(values.back(), kGuard);

    for (std::size_t i = 0; i < kCount; ++i) {
      const std::size_t a = at(i), b = at(i) + second;
      EXPECT_EQ(std::isnan(forward[a]) && std::isnan(forward[b]), i == 300);
      if (i == 300) continue;
      const double phi = expected[a], lambda = expected[b];
      proj.Forward(expected[a], expected[b]);
      EXPECT_NEAR(forward[a], expected[a], 1e-9);
      EXPECT_NEAR(forward[b], expected[b], 2e-9);  // half a unit in the last place of 1e7
      EXPECT_NEAR(values[a], phi, 1e-9);
      EXPECT_NEAR(values[b], lambda, 1e-9);
    }
  }
}

}  // namespace
}  // namespace zel_cs::geomath
