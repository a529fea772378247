#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/frame/deformation_model.h"
#include "geomath/frame/velocity_grid.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {
namespace {

const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

// 0.7 to 0.9 by 0.1 to 0.2 rad; the components of a node run with its row and column.
ShiftGridPart Part(std::size_t components, float size = 1) {
  ShiftGridPart part{"", 0, 0.7, 0.1, 0.02, 0.01, 11, 11, {}, {}};
  for (int i = 0; i < 11; ++i)
    for (int j = 0; j < 11; ++j)
      for (std::size_t k = 0; k < components; ++k)
        part.values.push_back(size * (static_cast<float>(k) - 0.7F + 0.1F * static_cast<float>(i) -
                                      0.04F * static_cast<float>(j * (i + 1))));
  return part;
}

constexpr GeographicExtent kAll{0.7, 0.1, 0.9, 0.2};

DeformationComponent Component(ShiftComponents displacement, const TimeFunction& time) {
  DeformationComponent component;
  component.displacement = displacement;
  component.extent = kAll;
  component.time = time;
  component.parts = {Part(static_cast<std::size_t>(displacement) + 1)};
  return component;
}

TimeFunction Velocity(double epoch) {
  TimeFunction f;
  f.kind = TimeFunctionKind::velocity;
  f.epoch = epoch;
  return f;
}

TimeFunction Step(double epoch, TimeFunctionKind kind = TimeFunctionKind::step) {
  TimeFunction f;
  f.kind = kind;
  f.epoch = epoch;
  return f;
}

DeformationModelDefinition Model() {
  DeformationModelDefinition model;
  model.ellipsoid = kGrs80;
  model.extent = kAll;
  model.years = {1990, 2040};
  model.components = {Component(ShiftComponents::horizontal, Velocity(2000)),
                      Component(ShiftComponents::vertical, Step(2010)),
                      Component(ShiftComponents::horizontalAndVertical,
                                Step(2016.5, TimeFunctionKind::reverseStep))};
  model.components[1].extent = {0.75, 0.12, 0.82, 0.18};
  return model;
}

TEST(TimeFunction, CountsItsEpochAsAfter) {
  EXPECT_EQ(TimeFunction().At(1900), 1);
  EXPECT_EQ(Velocity(2000).At(1997.5), -2.5);
  EXPECT_EQ(Step(2010).At(2009.999), 0);
  EXPECT_EQ(Step(2010).At(2010), 1);
  EXPECT_EQ(Step(2010, TimeFunctionKind::reverseStep).At(2009.999), -1);
  EXPECT_EQ(Step(2010, TimeFunctionKind::reverseStep).At(2010), 0);
}

// The Dusky Sound earthquake of the model of New Zealand, and the other ways beyond the points.
TEST(TimeFunction, Piecewise) {
  TimeFunction f;
  f.kind = TimeFunctionKind::piecewise;
  f.points = {{2009.5, -1.34}, {2009.5, -0.29}, {2011.5, 0}};
  f.before = BeyondPoints::constant;
  f.after = BeyondPoints::zero;
  EXPECT_EQ(f.At(1990), -1.34);
  EXPECT_EQ(f.At(2009.5), -0.29);
  EXPECT_DOUBLE_EQ(f.At(2010.5), -0.145);
  EXPECT_EQ(f.At(2012), 0);
  f.points = {{2000, 1}, {2001, 3}, {2002, 4}};
  f.before = f.after = BeyondPoints::linear;
  EXPECT_EQ(f.At(1999), -1);
  EXPECT_EQ(f.At(2001), 3);
  EXPECT_EQ(f.At(2004), 6);
  f.before = BeyondPoints::zero;
  EXPECT_EQ(f.At(1999.999), 0);
  EXPECT_EQ(f.At(2000), 1);
}

TEST(TimeFunction, Exponential) {
  TimeFunction f;
  f.kind = TimeFunctionKind::exponential;
  f.epoch = 2010;
  f.relaxation = 2;
  f.beforeFactor = -0.5;
  f.initialFactor = 1;
  f.finalFactor = 3;
  EXPECT_EQ(f.At(2009.9), -0.5);
  EXPECT_EQ(f.At(2010), 1);
  EXPECT_DOUBLE_EQ(f.At(2012), 1 + 2 * (1 - std::exp(-1.0)));
  f.end = 2012;
  EXPECT_EQ(f.At(2030), f.At(2012));
}

// In the southern row and western column the components are those of one node.
TEST(DeformationModel, AddsComponentsTimesTheirFactors) {
  const auto model = DeformationModel::Make(Model());
  ASSERT_TRUE(model);
  const double b0 = 0.7, l0 = 0.1;  // outside the extent of the second component
  const double n = -0.7F, e = 0.3F, u = 1.3F;
  const double factor = 10 - 1;  // ten years of velocity, and before the reverse step
  double b = b0, l = l0, h = 5;
  ASSERT_TRUE(model->Forward(b, l, h, 2010));
  const double W2 = 1 - kGrs80.e2 * std::sin(b0) * std::sin(b0), W = std::sqrt(W2);
  const double M = kGrs80.a * (1 - kGrs80.e2) / (W2 * W), N = kGrs80.a / W;
  EXPECT_NEAR((b - b0) * M, factor * n, 2e-9);
  EXPECT_NEAR((l - l0) * N * std::cos(b0), factor * e, 2e-9);
  EXPECT_NEAR(h - 5, -u, 1e-9);
}

// As a vector in space a displacement of metres differs by its own curvature only, micrometres.
TEST(DeformationModel, MethodsAgreeAwayFromThePoles) {
  const auto added = DeformationModel::Make(Model());
  DeformationModelDefinition definition = Model();
  definition.method = HorizontalMethod::geocentric;
  const auto inSpace = DeformationModel::Make(definition);
  for (DeformationComponent& c : definition.components)
    c.interpolation = DisplacementInterpolation::geocentricBilinear;
  const auto interpolated = DeformationModel::Make(definition);
  ASSERT_TRUE(added && inSpace && interpolated);
  double p[] = {0.787, 0.155, 5}, q[] = {0.787, 0.155, 5}, r[] = {0.787, 0.155, 5};
  ASSERT_TRUE(added->Forward(p[0], p[1], p[2], 2012));
  ASSERT_TRUE(inSpace->Forward(q[0], q[1], q[2], 2012));
  ASSERT_TRUE(interpolated->Forward(r[0], r[1], r[2], 2012));
  constexpr double kCurvature = 3e-5;   // metres: 12 m times 12 m over the radius of the Earth
  constexpr double kDirections = 0.02;  // 2 m by which nodes differ, times 0.01 rad between them
  EXPECT_NEAR(p[0], q[0], kCurvature / 6.4e6);
  EXPECT_NEAR(p[1], q[1], kCurvature / 4.5e6);
  EXPECT_NEAR(p[2], q[2], kCurvature);
  EXPECT_NEAR(r[0], q[0], kDirections / 6.4e6);
  EXPECT_NEAR(r[1], q[1], kDirections / 4.5e6);
  EXPECT_NEAR(r[2], q[2], kDirections);
  EXPECT_NE(r[0], q[0]);

  const double node[] = {0.78, 0.15, 5};
  std::copy_n(node, 3, q);
  std::copy_n(node, 3, r);
  ASSERT_TRUE(inSpace->Forward(q[0], q[1], q[2], 2012));
  ASSERT_TRUE(interpolated->Forward(r[0], r[1], r[2], 2012));
  constexpr double kSinglePrecision = 2e-6;  // of vectors of 12 m
  EXPECT_NEAR(r[0], q[0], kSinglePrecision / 6.4e6);
  EXPECT_NEAR(r[1], q[1], kSinglePrecision / 4.5e6);
  EXPECT_NEAR(r[2], q[2], kSinglePrecision);
}

TEST(DeformationModel, LongitudesKeepTheirTurn) {
  DeformationModelDefinition definition = Model();
  for (const auto method : {HorizontalMethod::addition, HorizontalMethod::geocentric}) {
    definition.method = method;
    const auto model = DeformationModel::Make(definition);
    double b = 0.78, l = 0.15 + kTwoPi, h = 0, b1 = 0.78, l1 = 0.15, h1 = 0;
    ASSERT_TRUE(model->Forward(b, l, h, 2012));
    ASSERT_TRUE(model->Forward(b1, l1, h1, 2012));
    EXPECT_NEAR(l - kTwoPi, l1, 2e-15);
    ASSERT_TRUE(model->Inverse(b, l, h, 2012));
    EXPECT_NEAR(l, 0.15 + kTwoPi, 2e-15);
  }
}

TEST(DeformationModel, RefusesUnsoundDefinitions) {
  const auto fault = [](auto change) {
    DeformationModelDefinition definition = Model();
    change(definition);
    std::string reason;
    EXPECT_FALSE(DeformationModel::Make(std::move(definition), &reason));
    return reason;
  };
  using Definition = DeformationModelDefinition;
  EXPECT_EQ(fault([](Definition& d) { d.components.clear(); }), "a model has 1 to 4096 components");
  EXPECT_EQ(fault([](Definition& d) {
              d.ellipsoid = Ellipsoid();
              d.ellipsoid.a = 0;
            }),
            "the ellipsoid has no positive semi-major axis");
  EXPECT_EQ(fault([](Definition& d) { d.extent.east = 0; }),
            "the extent is not on the Earth, or turned around");
  EXPECT_EQ(fault([](Definition& d) { d.years.last = 1980; }), "the years end before they begin");
  EXPECT_EQ(fault([](Definition& d) { d.components[1].parts[0].values.pop_back(); }),
            "component 2: part '': its size does not fit its values");
  EXPECT_EQ(fault([](Definition& d) {
              d.components[2].interpolation = DisplacementInterpolation::geocentricBilinear;
              d.components[2].parts[0].values.pop_back();
            }),
            "component 3: the size of a part does not fit its values");
  EXPECT_EQ(fault([](Definition& d) { d.components[0].time.kind = TimeFunctionKind::piecewise; }),
            "component 1: its time function has no points");
  EXPECT_EQ(fault([](Definition& d) {
              d.components[0].time.kind = TimeFunctionKind::piecewise;
              d.components[0].time.points = {{2001, 0}, {2000, 1}};
            }),
            "component 1: the points of its time function go back in time");
  EXPECT_EQ(fault([](Definition& d) {
              d.angles = true;
              d.method = HorizontalMethod::geocentric;
            }),
            "angles are not applied as vectors in space");
}

// A hole refuses where its component adds something, and nowhere else.
TEST(DeformationModel, HolesRefuseAtTheDatesThatNeedThem) {
  DeformationModelDefinition definition = Model();
  for (float& value : definition.components[2].parts[0].values) value = NAN;
  const auto model = DeformationModel::Make(definition);
  double b = 0.78, l = 0.15, h = 0;
  EXPECT_EQ(model->Forward(b, l, h, 2012).status, ShiftStatus::hole);
  EXPECT_EQ(model->Inverse(b, l, h, 2012).status, ShiftStatus::hole);
  EXPECT_TRUE(model->Forward(b, l, h, 2018));
}

TEST(VelocityGrid, ComponentsSayTheSame) {
  VelocityGridDefinition definition;
  definition.ellipsoid = kGrs80;
  definition.epoch = 2010;
  definition.parts = {Part(3)};
  const auto local = VelocityGrid::Make(definition);
  definition.components = VelocityComponents::geocentric;
  definition.parts = {Part(3)};
  const auto geocentric = VelocityGrid::Make(definition);
  definition.components = VelocityComponents::northEast;
  definition.parts = {Part(2)};
  const auto level = VelocityGrid::Make(definition);
  ASSERT_TRUE(local && geocentric && level);
  const double b = 0.7, l = 0.1, years = 15;
  const double n = -0.7F * 1e-3F, e = 0.3F * 1e-3F, u = 1.3F * 1e-3F;
  double x0[] = {b, l, 100};
  kGrs80.BLH_to_XYZ_Batch(x0, x0 + 1, x0 + 2, 1);
  const double N[] = {-std::sin(b) * std::cos(l), -std::sin(b) * std::sin(l), std::cos(b)};
  const double E[] = {-std::sin(l), std::cos(l), 0};
  const double U[] = {std::cos(b) * std::cos(l), std::cos(b) * std::sin(l), std::sin(b)};
  double p[] = {x0[0], x0[1], x0[2]}, q[] = {x0[0], x0[1], x0[2]}, r[] = {x0[0], x0[1], x0[2]};
  ASSERT_TRUE(local->Forward(p[0], p[1], p[2], 2010 + years));
  ASSERT_TRUE(geocentric->Forward(q[0], q[1], q[2], 2010 + years));
  ASSERT_TRUE(level->Forward(r[0], r[1], r[2], 2010 + years));
  const double velocity[] = {n, e, u};
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(p[i], x0[i] + years * (N[i] * n + E[i] * e + U[i] * u), 2e-9);
    EXPECT_NEAR(q[i], x0[i] + years * velocity[i], 2e-9);
    EXPECT_NEAR(r[i], x0[i] + years * (N[i] * n + E[i] * e), 2e-9);
  }
}

// Against symmetric differences over some 60 m within a cell, whose rounding is 1e-11.
void ExpectDerivatives(const CoordinateShift& shift, const double (&at)[3], double date) {
  constexpr double kDerivative = 2e-10, kEarthRadius = 6.4e6;
  const bool angles = shift.Space() == ShiftSpace::geographic;
  const auto unit = [&](int c) { return angles && c < 2 ? kEarthRadius : 1; };
  double found[3][3];
  ASSERT_TRUE(shift.ForwardDerivatives(at[0], at[1], at[2], found, date));
  for (int c = 0; c < 3; ++c) {
    double low[] = {at[0], at[1], at[2]}, high[] = {at[0], at[1], at[2]};
    low[c] -= 64 / unit(c);
    high[c] += 64 / unit(c);
    const double width = high[c] - low[c];
    ASSERT_TRUE(shift.Forward(low[0], low[1], low[2], date));
    ASSERT_TRUE(shift.Forward(high[0], high[1], high[2], date));
    for (int r = 0; r < 3; ++r)
      EXPECT_NEAR(found[r][c] * unit(r) / unit(c), (high[r] - low[r]) / width * unit(r) / unit(c),
                  kDerivative)
          << r << c;
  }
  EXPECT_EQ(shift.ForwardDerivatives(at[0], at[1], at[2], found).status, ShiftStatus::noDate);
  EXPECT_EQ(shift.ForwardDerivatives(0.1, 0.1, 0.1, found, date).status, ShiftStatus::outside);
}

TEST(VelocityGrid, HasTheDerivativesOfItsMotion) {
  using enum VelocityComponents;
  for (const auto components : {northEast, northEastUp, geocentric}) {
    VelocityGridDefinition definition;
    definition.ellipsoid = kGrs80;
    definition.epoch = 2010;
    definition.unit = 10;  // metres a year, so that slopes are seen
    definition.components = components;
    definition.parts = {Part(components == northEast ? 2 : 3)};
    const auto grid = VelocityGrid::Make(definition);
    double at[] = {0.833, 0.1432, 900};
    kGrs80.BLH_to_XYZ_Batch(&at[0], &at[1], &at[2], 1);
    ExpectDerivatives(*grid, at, 2026);
  }
}

TEST(DeformationModel, HasTheDerivativesOfItsDisplacement) {
  using enum DisplacementInterpolation;
  for (const auto method : {HorizontalMethod::addition, HorizontalMethod::geocentric})
    for (const auto interpolation : {bilinear, geocentricBilinear}) {
      DeformationModelDefinition definition = Model();
      definition.method = method;
      definition.horizontalUnit = definition.verticalUnit = 10;
      definition.components[2].interpolation = interpolation;
      ExpectDerivatives(*DeformationModel::Make(definition), {0.773, 0.1432, 900}, 2014);
    }
  DeformationModelDefinition angles = Model();
  angles.angles = true;
  angles.horizontalUnit = 1e-6;
  ExpectDerivatives(*DeformationModel::Make(angles), {0.773, 0.1432, 900}, 2014);
}

// One point, many, a date each, on every instruction set; and back.
void ExpectSameBits(const CoordinateShift& shift, const std::vector<double>& given,
                    const double (&tolerance)[3]) {
  const std::size_t count = given.size() / 3;
  std::vector<double> dates;
  for (std::size_t i = 0; i < count; ++i)
    dates.push_back(1990 + std::fmod(0.37 * static_cast<double>(i), 50));
  const PointDates each(dates.data());
  const auto best = simd::ActiveInstructionSet();
  using enum simd::InstructionSet;
  std::vector<double> there, back;
  for (const auto set : {baseline, avx2, avx512}) {
    simd::ForceInstructionSet(set);
    std::vector<double> all = given;
    std::vector<ShiftStatus> status(count);
    shift.ForwardDatedBatch(each, &all[0], &all[1], &all[2], count, 3, status.data());
    for (std::size_t i = 0; i < count; ++i) {
      double p[] = {given[3 * i], given[3 * i + 1], given[3 * i + 2]};
      ASSERT_EQ(shift.Forward(p[0], p[1], p[2], dates[i]).status, status[i]);
      ASSERT_EQ(status[i], ShiftStatus::converted);
      for (std::size_t k = 0; k < 3; ++k) ASSERT_EQ(p[k], all[3 * i + k]) << i;
    }
    if (there.empty()) there = all;
    ASSERT_EQ(all, there);
    shift.InverseDatedBatch(each, &all[0], &all[1], &all[2], count, 3, status.data());
    for (std::size_t i = 0; i < count; ++i) {
      double p[] = {there[3 * i], there[3 * i + 1], there[3 * i + 2]};
      ASSERT_EQ(shift.Inverse(p[0], p[1], p[2], dates[i]).status, status[i]);
      ASSERT_EQ(status[i], ShiftStatus::converted);
      for (std::size_t k = 0; k < 3; ++k) {
        ASSERT_EQ(p[k], all[3 * i + k]) << i;
        ASSERT_NEAR(p[k], given[3 * i + k], tolerance[k]);
      }
    }
    if (back.empty()) back = all;
    ASSERT_EQ(all, back);
  }
  simd::ForceInstructionSet(best);
}

std::vector<double> Geographic(std::size_t count) {
  std::vector<double> points;
  for (std::size_t i = 0; i < count; ++i) {
    const double t = static_cast<double>(i);
    points.insert(points.end(),
                  {0.71 + std::fmod(t * 0.618e-2, 0.18), 0.11 + std::fmod(t * 0.755e-2, 0.08), t});
  }
  return points;
}

TEST(DeformationModel, SameBitsEverywhere) {
  for (const auto method : {HorizontalMethod::addition, HorizontalMethod::geocentric}) {
    DeformationModelDefinition definition = Model();
    definition.method = method;
    definition.components.erase(definition.components.begin() + 1);  // its extent is a crack
    definition.components[1].interpolation = DisplacementInterpolation::geocentricBilinear;
    const auto model = DeformationModel::Make(definition);
    ASSERT_TRUE(model);
    // 1 nm; in space the rounding of X, Y and Z is added.
    if (method == HorizontalMethod::addition)
      ExpectSameBits(*model, Geographic(700), {1.7e-16, 1.7e-16, 1e-9});
    else
      ExpectSameBits(*model, Geographic(700), {5e-16, 5e-16, 3e-9});
  }
}

TEST(VelocityGrid, SameBitsEverywhere) {
  std::vector<double> points = Geographic(700);
  kGrs80.BLH_to_XYZ_Batch(&points[0], &points[1], &points[2], 700, 3);
  VelocityGridDefinition definition;
  definition.ellipsoid = kGrs80;
  definition.epoch = 2010;
  definition.unit = 0.1;
  definition.parts = {Part(3)};
  const auto grid = VelocityGrid::Make(definition);
  ASSERT_TRUE(grid);
  ExpectSameBits(*grid, points, {1.5e-9, 1.5e-9, 1.5e-9});
}

// Positions whose origin lies in another cell or part: a finer part begins in the middle of a cell, the
// displacement grows from zero at its edge. Every one is found to 1 nm, as if it were far from lines.
TEST(DeformationModel, FindsOriginsAcrossLines) {
  DeformationModelDefinition definition = Model();
  definition.components = {Component(ShiftComponents::horizontal, Step(2000))};
  std::vector<ShiftGridPart>& parts = definition.components[0].parts;
  std::fill(parts[0].values.begin(), parts[0].values.end(), 2.0F);  // metres
  ShiftGridPart finer{"finer", 1, 0.771, 0.1333, 1e-4, 1e-4, 5, 5, {}, {}};
  for (int i = 0; i < 25; ++i) {
    const bool edge = i / 5 % 4 == 0 || i % 5 % 4 == 0;
    finer.values.insert(finer.values.end(), {edge ? 2.0F : 5.0F, edge ? 2.0F : -1.0F});
  }
  parts.push_back(finer);
  const auto model = DeformationModel::Make(definition);
  ASSERT_TRUE(model);
  for (int i = 0; i < 2000; ++i) {
    const double b0 = 0.771 + 5e-9 * (i - 1000), l0 = 0.1333 + 4.4e-7 * (i % 1000);
    double b = b0, l = l0, h = 9;
    ASSERT_TRUE(model->Forward(b, l, h, 2010));
    ASSERT_TRUE(model->Inverse(b, l, h, 2010)) << i;
    ASSERT_NEAR(b, b0, 3.5e-16) << i;
    ASSERT_NEAR(l, l0, 1.7e-16) << i;
  }
}

// A position that no point moves to: across the edge of a component that moves them apart.
TEST(DeformationModel, CracksAreRefused) {
  DeformationModelDefinition definition = Model();
  definition.components = {Component(ShiftComponents::horizontal, Step(2000))};
  DeformationComponent& half = definition.components[0];
  half.extent.south = 0.8;
  for (float& value : half.parts[0].values) value = 5;  // metres, to the north and east
  const auto model = DeformationModel::Make(definition);
  double b = 0.8 + 2 / 6.37e6, l = 0.15, h = 0;
  EXPECT_EQ(model->Inverse(b, l, h, 2010).status, ShiftStatus::notInvertible);
  EXPECT_TRUE(model->Inverse(b, l, h, 1999));
}

}  // namespace
}  // namespace zel_cs::geomath
