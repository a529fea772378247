#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/shift/coordinate_offset.h"
#include "geomath/shift/shift_grid.h"
#include "geomath/shift/small_angle_similarity.h"
#include "geomath/shift/triangulation.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRoundTripRadians = 1.5e-14, kRoundTripMetres = 1e-7;  // 1e-4 mm

struct Point {
  double b, l, h;
};
constexpr Point kGiven{0.83, 0.151, 412};

const Ellipsoid kGlobal = MakeEllipsoid(6378137, 298.257222101);
Ellipsoid bessel = MakeEllipsoid(6377397.155, 299.1528128);

// 0.7 to 0.9 by 0.1 to 0.2 rad; shifts of seconds.
std::unique_ptr<ShiftGrid> Grid(ShiftComponents components) {
  ShiftGridDefinition definition;
  definition.components = components;
  definition.horizontalUnit = kRadPerArcSecond;
  ShiftGridPart part{"", 0, 0.7, 0.1, 0.02, 0.01, 11, 11, {}, {}};
  for (int i = 0; i < 11; ++i)
    for (int j = 0; j < 11; ++j) {
      const auto x = static_cast<float>(i), y = static_cast<float>(j);
      if (components != ShiftComponents::vertical)
        part.values.insert(part.values.end(), {-4 + 0.1F * x, 3 - 0.05F * y});
      if (components != ShiftComponents::horizontal) part.values.push_back(0.25F + 0.01F * x * y);
    }
  definition.parts = {part};
  return ShiftGrid::Make(definition);
}

class FlatGeoid : public GeoidHeight {
 public:
  bool Height(double b, double, double& height) const override {
    height = 47 + 10 * (b - 0.8);
    return true;
  }
};

TTMProj Projection() { return TTMProj(bessel.a, bessel.invF, 0.15, 1, 0, 500000, 0); }

void ExpectComesBack(const CoordinateChain& chain, Point local,
                     double radians = kRoundTripRadians) {
  ASSERT_TRUE(chain.ToGlobal(local.b, local.l, local.h));
  EXPECT_NEAR(local.b, kGiven.b, radians);
  EXPECT_NEAR(local.l, kGiven.l, radians);
  EXPECT_NEAR(local.h, kGiven.h, kRoundTripMetres);
}

// Every step by its own object, one after the other.
TEST(ChainShifts, RunInTheirPlaces) {
  const auto before = Grid(ShiftComponents::horizontal), levels = Grid(ShiftComponents::vertical);
  const auto after = CoordinateOffset::Geographic(3e-6, -2e-6);
  const auto geocentric =
      SmallAngleSimilarity({10, 20, -30}, {1, -2, 3}, 2e-6, RotationSense::positionVector);
  const auto plane = CoordinateOffset(ShiftSpace::plane, 5, -7, 0.5);
  const Datum datum(&bessel, 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7e-6, userTypeUser,
                    nullptr);
  const TTMProj projection = Projection();
  const FlatGeoid geoid;
  for (const GeoidFrame frame : {GeoidFrame::global, GeoidFrame::local}) {
    CoordinateChain chain(&kGlobal, &datum, &projection);
    chain.SetGeoid(&geoid, frame);
    using enum ShiftPlace;
    ASSERT_TRUE(chain.AddShift(beforeDatum, {before.get()}));
    ASSERT_TRUE(chain.AddShift(beforeDatum, {&geocentric, ShiftDirection::inverse}));
    ASSERT_TRUE(chain.AddShift(afterDatum, {&after}));
    ASSERT_TRUE(chain.AddShift(ShiftPlace::heights, {levels.get()}));
    ASSERT_TRUE(chain.AddShift(afterProjection, {&plane}));

    Point p = kGiven, local = kGiven;
    double undulation, unused1 = kGiven.b, unused2 = kGiven.l, height = kGiven.h;
    const auto lower = [&] {
      unused1 = p.b;
      unused2 = p.l;
      height = p.h;
      ASSERT_TRUE(geoid.Height(p.b, p.l, undulation));
      height -= undulation;
      ASSERT_TRUE(levels->Forward(unused1, unused2, height));
    };
    if (frame == GeoidFrame::global) lower();
    ASSERT_TRUE(before->Forward(p.b, p.l, p.h));
    kGlobal.BLH_to_XYZ_Batch(&p.b, &p.l, &p.h, 1);
    ASSERT_TRUE(geocentric.Inverse(p.b, p.l, p.h));
    ASSERT_TRUE(datum.ToLocalDatum(p.b, p.l, p.h));
    bessel.XYZ_to_BLH_Batch(&p.b, &p.l, &p.h, 1);
    ASSERT_TRUE(after.Forward(p.b, p.l, p.h));
    if (frame == GeoidFrame::local) lower();
    ASSERT_EQ(projection.ForwardBatch(&p.b, &p.l, 1), 1U);
    p.h = height;
    ASSERT_TRUE(plane.Forward(p.b, p.l, p.h));

    ASSERT_TRUE(chain.ToLocal(local.b, local.l, local.h));
    EXPECT_NEAR(local.b, p.b, 2e-9);
    EXPECT_NEAR(local.l, p.l, 2e-9);
    EXPECT_NEAR(local.h, p.h, 2e-9);
    ExpectComesBack(chain, local, tolerance::kRoundTripRadians);  // that of the projection

    // A batch gives the same bits.
    std::vector<double> b(300, kGiven.b), l(300, kGiven.l), h(300, kGiven.h);
    b[7] = 0.2;
    std::vector<ChainStep> failed(300);
    EXPECT_EQ(chain.ToLocalBatch(b.data(), l.data(), h.data(), 300, 1, failed.data()), 299U);
    EXPECT_EQ(failed[7],
              frame == GeoidFrame::global ? ChainStep::verticalShift : ChainStep::geographicShift);
    EXPECT_TRUE(b[299] == local.b && l[299] == local.l && h[299] == local.h && std::isnan(h[7]));
  }
}

// Without a datum: positions pass through one ellipsoid, heights alone stay where they are.
TEST(ChainShifts, RunWithoutADatum) {
  const auto grid = Grid(ShiftComponents::horizontalAndVertical);
  const auto translation = CoordinateOffset::Geocentric(100, -50, 25);
  CoordinateChain chain(&kGlobal, nullptr, nullptr);
  ASSERT_TRUE(chain.AddShift(ShiftPlace::afterDatum, {grid.get(), ShiftDirection::inverse}));
  ASSERT_TRUE(chain.AddShift(ShiftPlace::afterDatum, {&translation}));
  Point p = kGiven, local = kGiven;
  ASSERT_TRUE(grid->Inverse(p.b, p.l, p.h));
  kGlobal.BLH_to_XYZ_Batch(&p.b, &p.l, &p.h, 1);
  ASSERT_TRUE(translation.Forward(p.b, p.l, p.h));
  kGlobal.XYZ_to_BLH_Batch(&p.b, &p.l, &p.h, 1);
  ASSERT_TRUE(chain.ToLocal(local.b, local.l, local.h));
  EXPECT_TRUE(local.b == p.b && local.l == p.l && local.h == p.h);
  ExpectComesBack(chain, local);

  chain.SetGlobalEllipsoid(nullptr);
  local = kGiven;
  EXPECT_EQ(chain.ToLocal(local.b, local.l, local.h).failedAt, ChainStep::globalEllipsoid);
}

// A grid moves positions by 100 m; the geoid is taken where it belongs, both ways.
TEST(ChainShifts, TakeTheGeoidAtItsPosition) {
  const auto grid = Grid(ShiftComponents::horizontal);
  const FlatGeoid geoid;
  for (const GeoidFrame frame : {GeoidFrame::global, GeoidFrame::local}) {
    CoordinateChain chain;
    chain.SetGeoid(&geoid, frame);
    ASSERT_TRUE(chain.AddShift(ShiftPlace::beforeDatum, {grid.get()}));
    Point local = kGiven;
    ASSERT_TRUE(chain.ToLocal(local.b, local.l, local.h));
    const double b = frame == GeoidFrame::global ? kGiven.b : local.b;
    EXPECT_NEAR(local.h, kGiven.h - 47 - 10 * (b - 0.8), 1e-12);
    ExpectComesBack(chain, local);
  }
}

TEST(ChainShifts, TreatPointsOutsideAsTheSystemSays) {
  TriangulationDefinition network;
  network.fallback = TriangulationFallback::nearestSide;
  network.vertices = {{0, 0, 1, 0, 0}, {0, 100, 1, 100, 0}, {100, 0, 101, 0, 0}};
  network.triangles = {{0, 1, 2}};
  const auto tin = Triangulation::Make(network);
  ASSERT_TRUE(tin);
  using enum ShiftOutside;
  for (const ShiftOutside outside : {refuse, extrapolate, unchanged}) {
    // Plane coordinates pass a chain without a projection only as small numbers.
    CoordinateChain chain;
    ASSERT_TRUE(
        chain.AddShift(ShiftPlace::afterProjection, {tin.get(), ShiftDirection::forward, outside}));
    double n = -0.5, e = 10, h = 3;
    const ChainResult result = chain.ToLocal(n, e, h);
    EXPECT_EQ(result.failedAt, outside == refuse ? ChainStep::planeShift : ChainStep::none);
    EXPECT_EQ(n, outside == extrapolate ? 0.5 : -0.5);
  }
  const auto grid = Grid(ShiftComponents::horizontal);
  for (const ShiftOutside outside : {refuse, extrapolate, unchanged}) {
    CoordinateChain chain;
    ASSERT_TRUE(
        chain.AddShift(ShiftPlace::beforeDatum, {grid.get(), ShiftDirection::forward, outside}));
    double b[] = {0.3, 0.83}, l[] = {0.15, 0.15}, h[] = {0, 0};
    EXPECT_EQ(chain.ToLocalBatch(b, l, h, 2), outside == unchanged ? 2U : 1U);
    if (outside == unchanged) {
      EXPECT_TRUE(b[0] == 0.3 && l[0] == 0.15);
    }
    EXPECT_NE(b[1], 0.83);
  }
}

TEST(ChainShifts, StandWhereTheirSpaceBelongs) {
  const auto geographic = CoordinateOffset::Geographic(0, 0);
  const auto geocentric = CoordinateOffset::Geocentric(0, 0, 0);
  const auto plane = CoordinateOffset(ShiftSpace::plane, 0, 0, 0);
  CoordinateChain chain;
  using enum ShiftPlace;
  for (const ShiftPlace place : {beforeDatum, afterDatum, heights, afterProjection}) {
    const bool aroundDatum = place == beforeDatum || place == afterDatum;
    EXPECT_EQ(chain.AddShift(place, {&geographic}), aroundDatum || place == heights);
    EXPECT_EQ(chain.AddShift(place, {&geocentric}), aroundDatum);
    EXPECT_EQ(chain.AddShift(place, {&plane}), place == afterProjection);
    EXPECT_FALSE(chain.AddShift(place, {}));
  }
  EXPECT_EQ(chain.GetShifts(beforeDatum).size(), 2U);
  EXPECT_STREQ(ChainStepName(ChainStep::planeShift), "the plane shift");
}

// Plane shifts are northings and eastings, whatever axes the caller has.
TEST(ChainShifts, ShiftPlanesOnInternalAxes) {
  const auto plane = CoordinateOffset(ShiftSpace::plane, 1000, 0, 0);
  TTMProj projection = Projection();
  for (const wchar_t* axes : {L"NE", L"EN", L"SW"}) {
    projection.SetNEAxes(axes);
    const CoordinateChain bare(&kGlobal, nullptr, &projection);
    CoordinateChain chain = bare;
    ASSERT_TRUE(chain.AddShift(ShiftPlace::afterProjection, {&plane}));
    Point with = kGiven, without = kGiven;
    ASSERT_TRUE(chain.ToLocal(with.b, with.l, with.h));
    ASSERT_TRUE(bare.ToLocal(without.b, without.l, without.h));
    projection.RotateNE(1, with.b, with.l);
    projection.RotateNE(1, without.b, without.l);
    EXPECT_EQ(with.b, without.b + 1000);
    EXPECT_EQ(with.l, without.l);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
