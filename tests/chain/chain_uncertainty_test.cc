#include "geomath/chain/chain_uncertainty.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/chain/fixed_height_datum.h"
#include "geomath/frame/deformation_model.h"
#include "geomath/frame/frame_change.h"
#include "geomath/frame/plate_motion.h"
#include "geomath/frame/time_dependent_similarity.h"
#include "geomath/frame/velocity_grid.h"
#include "geomath/proj/factory.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/mercator_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/shift/affine_transformation.h"
#include "geomath/shift/coordinate_offset.h"
#include "geomath/shift/geocentric_shift_grid.h"
#include "geomath/shift/small_angle_similarity.h"
#include "geomath/shift/triangulation.h"
#include "geomath/shift/vertical_slope.h"
#include "tests/support/covariance_draws.h"

namespace zel_cs::geomath {
namespace {

using enum CovarianceFrame;
using Nine = double[3][3];

// Relative to derivatives of size 1; the differences of a chain have 6e-10 themselves.
constexpr double kDerivatives = 1e-9;

const Ellipsoid kGlobal = MakeEllipsoid(6378137, 298.257222101);
Ellipsoid bessel = MakeEllipsoid(6377397.155, 299.1528128);

class SmoothGeoid : public GeoidHeight {
 public:
  bool Height(double b, double l, double& height) const override {
    height = 44 + 20 * std::sin(30 * b) * std::cos(20 * l);
    return true;
  }
};

// 5 mm in the south, growing by 1 mm a degree.
class GrowingSigma : public GeoidHeight {
 public:
  bool Height(double b, double, double& height) const override {
    height = 0.005 + 0.001 * (b - 0.8) / (kPi / 180);
    return true;
  }
};

std::unique_ptr<ShiftGrid> Grid(ShiftComponents components, ShiftInterpolation interpolation,
                                ShiftSpace space = ShiftSpace::geographic) {
  const bool plane = space == ShiftSpace::plane;
  ShiftGridDefinition definition;
  definition.space = space;
  definition.components = components;
  definition.interpolation = interpolation;
  definition.horizontalUnit = plane ? 1 : kRadPerArcSecond;
  ShiftGridPart part{"", 0, 0.78, 0.12, 0.013, 0.011, 9, 9, {}, {}};
  if (plane) {
    part.south = 4.9e6;
    part.west = 2e5;
    part.northStep = part.eastStep = 7e4;
  }
  for (int i = 0; i < 81; ++i) {
    const auto x = static_cast<float>(i / 9), y = static_cast<float>(i % 9);
    if (components != ShiftComponents::vertical)
      part.values.insert(part.values.end(), {-4 + 0.1F * x + 0.02F * x * y, 3 - 0.05F * y * y});
    if (components != ShiftComponents::horizontal) part.values.push_back(0.25F + 0.01F * x * y);
    if (components != ShiftComponents::vertical)
      part.accuracies.insert(part.accuracies.end(), {0.05F, 0.03F});
    if (components != ShiftComponents::horizontal) part.accuracies.push_back(0.02F);
  }
  definition.parts = {part};
  return ShiftGrid::Make(definition);
}

// A chain with everything in it. The parameters that have an uncertainty are arguments.
struct Errors {
  double datum[7] = {}, plane[4] = {}, heights[3] = {}, geoid = 0;
  double before[3] = {}, levels = 0;
};

constexpr double kPivotN = 5.35e6, kPivotE = 4.5e5;

struct Everything {
  explicit Everything(GeoidFrame frame, const Errors& x = {})
      : datum(&bessel, 598.1 + x.datum[0], 73.7 + x.datum[1], 418.2 + x.datum[2],
              0.202 + x.datum[3], 0.045 + x.datum[4], -2.455 + x.datum[5], 6.7e-6 + x.datum[6],
              userTypeUser, nullptr),
        noise(ShiftSpace::geographic, x.before[0], x.before[1], x.before[2]),
        levelNoise(CoordinateOffset::Vertical(x.levels)),
        geoidNoise(CoordinateOffset::Vertical(-x.geoid)),
        chain(&kGlobal, &datum, &projection) {
    // The site's parameters of a pivot are those of the origin less what the pivot turns to.
    const double s = 1.00002 + x.plane[2], theta = 0.3 + x.plane[3];
    const auto shift = [](double scale, double turn, double& n, double& e) {
      n = -scale * (std::cos(turn) * kPivotN - std::sin(turn) * kPivotE);
      e = -scale * (std::sin(turn) * kPivotN + std::cos(turn) * kPivotE);
    };
    double n, e;
    shift(s, theta, n, e);
    const double aN = 2e-5 + x.heights[1], aE = -1e-5 + x.heights[2];
    site.mode = LocalToGrid::kBoth;
    site.SetPlaneParam(1000 + n + x.plane[0], 0, 0);
    site.SetPlaneParam(2000 + e + x.plane[1], 1, 0);
    site.SetPlaneParam(s, 2, 0);
    site.SetPlaneParam(theta, 3, 0);
    site.SetHeightParam(0.4 - aN * kPivotN - aE * kPivotE + x.heights[0], 0, 0);
    site.SetHeightParam(aN, 1, 0);
    site.SetHeightParam(aE, 2, 0);
    ground.flags = GridToGround::kHasOrigin;
    ground.scale = 1.0003;
    ground.rotation = 0.01;
    ground.originN = 900;
    chain.SetGeoid(&geoid, frame);
    chain.SetLocalization(&site);
    chain.SetGround(&ground);
    chain.AddShift(ShiftPlace::beforeDatum, {grid.get()});
    chain.AddShift(ShiftPlace::beforeDatum, {&noise});
    chain.AddShift(ShiftPlace::afterDatum, {&small, ShiftDirection::inverse});
    chain.AddShift(ShiftPlace::heights, {levels.get()});
    chain.AddShift(ShiftPlace::heights, {&levelNoise});
    chain.AddShift(ShiftPlace::heights, {&geoidNoise});
    chain.AddShift(ShiftPlace::afterProjection, {&affine});
  }
  Datum datum;
  TTMProj projection{bessel.a, bessel.invF, 0.15, 1, 0, 500000, 0};
  SmoothGeoid geoid;
  std::unique_ptr<ShiftGrid> grid = Grid(ShiftComponents::horizontalAndVertical, {});
  std::unique_ptr<ShiftGrid> levels = Grid(ShiftComponents::vertical, {});
  CoordinateOffset noise, levelNoise, geoidNoise;
  SmallAngleSimilarity small{{10, 20, -30}, {1, -2, 3}, 2e-6, RotationSense::positionVector};
  AffineTransformation affine{{12, 1.0001, 2e-4, -3, 1e-4, 0.9998}};
  LocalToGrid site;
  GridToGround ground;
  CoordinateChain chain;
};

constexpr double kPoint[] = {0.842, 0.161, 412};
constexpr double kGiven[3][3] = {{4e-4, 1e-4, -2e-4}, {1e-4, 9e-4, 3e-4}, {-2e-4, 3e-4, 25e-4}};

// Derivatives of a chain by fourth-order differences over 1 km of latitude, longitude and height.
void Differences(const CoordinateChain& chain, const double (&p)[3], Nine& found) {
  for (int c = 0; c < 3; ++c) {
    const double step = c == 2 ? 100 : 1e-4;
    double sum[3] = {};
    const double weights[][2] = {{-2, 1.0 / 12}, {-1, -8.0 / 12}, {1, 8.0 / 12}, {2, -1.0 / 12}};
    for (const auto& [steps, weight] : weights) {
      double at[] = {p[0], p[1], p[2]};
      at[c] += steps * step;
      ASSERT_TRUE(chain.ToLocal(at[0], at[1], at[2]));
      for (int r = 0; r < 3; ++r) sum[r] += weight * at[r];
    }
    for (int r = 0; r < 3; ++r) found[r][c] = sum[r] / step;
  }
}

void ExpectDerivatives(const CoordinateChain& chain, const double (&p)[3], double tolerance) {
  const ChainUncertainty exact(chain);
  Nine found, wanted;
  ASSERT_TRUE(exact.Derivatives(p[0], p[1], p[2], found, geographic));
  Differences(chain, p, wanted);
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      const double perUnit = c == 2 ? 1 : 6.4e6;
      EXPECT_NEAR(found[r][c], wanted[r][c], tolerance * perUnit) << r << ' ' << c;
    }
}

TEST(ChainUncertainty, HasTheDerivativesOfEveryStep) {
  for (const GeoidFrame frame : {GeoidFrame::global, GeoidFrame::local}) {
    const Everything all(frame);
    // The nodes of grids are crossed by the differences: only their slopes' steps are seen.
    CoordinateChain smooth = CoordinateChain(&kGlobal, &all.datum, &all.projection);
    smooth.SetGeoid(&all.geoid, frame);
    smooth.SetLocalization(&all.site);
    smooth.SetGround(&all.ground);
    smooth.AddShift(ShiftPlace::afterDatum, {&all.small, ShiftDirection::inverse});
    smooth.AddShift(ShiftPlace::afterProjection, {&all.affine});
    ExpectDerivatives(smooth, kPoint, kDerivatives);
  }
}

// Mercator behind a datum in 40 digits (tests/chain/make_chain_derivatives.py): φ 48°, λ 9°, h 300 m,
// rows northing, easting, height, columns metres north, east, up on the global ellipsoid.
TEST(ChainUncertainty, HasTheDerivativesOfFortyDigits) {
  const Datum datum(&bessel, 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7e-6, userTypeUser,
                    nullptr);
  const TMercatorProj mercator(bessel.a, bessel.invF, 0, 0, 0, 0);
  const CoordinateChain chain(&kGlobal, &datum, &mercator);
  Nine found;
  ASSERT_TRUE(ChainUncertainty(chain).Derivatives(48 * kPi / 180, 9 * kPi / 180, 300, found));
#include "tests/chain/chain_derivatives.inc"
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(found[r][c], kExact[r][c], 1e-14 * 1.5);
}

struct ExactCovariances {
  const char* chain;
  double local[9], global[9];
};

#include "tests/chain/chain_covariances.inc"

// The chains of make_chain_covariances.py, in the order of its table, at its position.
struct ExactChains {
  ExactChains() {
    site.mode = LocalToGrid::kBoth;
    site.SetPlaneParam(1.00002, 2, 0);
    site.SetPlaneParam(0.3, 3, 0);
    site.SetHeightParam(2e-5, 1, 0);
    site.SetHeightParam(-1e-5, 2, 0);
    ground.flags = GridToGround::kHasOrigin;
    ground.scale = 1.0003;
    ground.rotation = 0.01;
    for (CoordinateChain* const chain : {&utm, &all}) chain->SetGround(&ground);
    for (CoordinateChain* const chain : {&oblique, &affine, &all}) chain->SetLocalization(&site);
    for (CoordinateChain* const chain : {&lowered, &lambert, &all})
      chain->SetGeoid(&geoid, GeoidFrame::local);
    for (CoordinateChain* const chain : {&affine, &all})
      chain->AddShift(ShiftPlace::afterProjection, {&plane});
    shifted.AddShift(ShiftPlace::beforeDatum, {grid.get()});
    framed.AddShift(ShiftPlace::beforeDatum, {.shift = &fourteen, .date = 2026.9});
  }

  static std::unique_ptr<ShiftGrid> OneCell() {
    ShiftGridDefinition definition;
    definition.horizontalUnit = kRadPerArcSecond;
    definition.parts = {{"", 0, 0.78, 0.1, 0.12, 0.12, 2, 2, {}, {}}};
    definition.parts[0].values = {-4, 2, -2.5, -1.5, 3.25, 4.75, 5, -3};  // from the south west
    return ShiftGrid::Make(definition);
  }

  const Datum datum{&bessel, 598.1,  73.7,   418.2,        0.202,
                    0.045,   -2.455, 6.7e-6, userTypeUser, nullptr};
  const TTMProj zone{kGlobal.a, kGlobal.invF, 9 * kRadPerDeg, 0.9996, 0, 500000, 0};
  const TTMProj gauss{bessel.a, bessel.invF, 9 * kRadPerDeg, 1, 0, 3500000, 0};
  const TLCProj cone{bessel.a, bessel.invF, 46 * kRadPerDeg, 49 * kRadPerDeg, 0.2, 0.8, 0, 0, 1};
  const TOMercatorProj skew{
      kGlobal.a, kGlobal.invF, 30 * kRadPerDeg, 0.9998, 9 * kRadPerDeg, 47 * kRadPerDeg, 0, 0};
  const TSterProj ster{kGlobal.a, kGlobal.invF, 48 * kRadPerDeg, 10 * kRadPerDeg, 0.9999, 0, 0};
  const TMercatorProj mercator{kGlobal.a, kGlobal.invF, 0, 0, 0, 0};
  const SmoothGeoid geoid;
  const std::unique_ptr<ShiftGrid> grid = OneCell();
  const TimeDependentSimilarity fourteen{{.shift = {1.0053, -1.9092, -0.5416},
                                          .rotation = {0.0267814, -0.0004203, 0.0109321},
                                          .scale = 3.7e-10,
                                          .shiftRate = {0.0008, -0.0006, -0.0014},
                                          .rotationRate = {0.0000667, -0.0007574, -0.0000513},
                                          .scaleRate = -7e-11,
                                          .epoch = 2010}};
  const AffineTransformation plane{{0, 1.0001, 2e-4, 0, 1e-4, 0.9998}};
  LocalToGrid site;
  GridToGround ground;
  CoordinateChain utm{&kGlobal, nullptr, &zone}, moved{&kGlobal, &datum, nullptr};
  CoordinateChain national{&kGlobal, &datum, &gauss}, lowered{&kGlobal, nullptr, &zone};
  CoordinateChain lambert{&kGlobal, &datum, &cone}, oblique{&kGlobal, nullptr, &skew};
  CoordinateChain shifted{&kGlobal, nullptr, &gauss}, framed{&kGlobal, nullptr, &ster};
  CoordinateChain affine{&kGlobal, nullptr, &mercator}, all{&kGlobal, &datum, &gauss};
};

// Both ways, for one point and in a batch, whose columns carry covariances by statements of their own.
TEST(ChainUncertainty, EqualsTheProductOfJacobiansOfFortyDigits) {
  const ExactChains chains;
  const CoordinateChain* const inOrder[] = {
      &chains.utm,     &chains.moved,   &chains.national, &chains.lowered, &chains.lambert,
      &chains.oblique, &chains.shifted, &chains.framed,   &chains.affine,  &chains.all};
  ASSERT_EQ(std::size(inOrder), std::size(kExactCovariances));
  constexpr std::size_t kPoints = 70;  // more than one group of matrices
  for (std::size_t k = 0; k < std::size(inOrder); ++k) {
    const ExactCovariances& exact = kExactCovariances[k];
    const ChainUncertainty uncertainty(*inOrder[k]);
    for (const std::size_t count : {std::size_t{1}, kPoints})
      for (const bool toLocal : {true, false}) {
        std::vector<double> x(count, 0.842), y(count, 0.161), h(count, 412), c;
        for (std::size_t i = 0; i < count; ++i) c.insert(c.end(), &kGiven[0][0], &kGiven[0][0] + 9);
        if (!toLocal) inOrder[k]->ToLocalBatch(x.data(), y.data(), h.data(), count);
        const auto convert =
            toLocal ? &ChainUncertainty::ToLocalBatch : &ChainUncertainty::ToGlobalBatch;
        ASSERT_EQ((uncertainty.*convert)(x.data(), y.data(), h.data(), c.data(), count, 1, nullptr,
                                         northEastUp, northEastUp, {}),
                  count)
            << exact.chain;
        const double(&wanted)[9] = toLocal ? exact.local : exact.global;
        for (std::size_t i = 0; i < c.size(); ++i) {
          const std::size_t at = i % 9;
          const double size = std::sqrt(wanted[at / 3 * 4] * wanted[at % 3 * 4]);
          ASSERT_NEAR(c[i], wanted[at], kDerivatives * size)
              << exact.chain << (toLocal ? ", to local, " : ", to global, ") << i;
        }
      }
  }
}

// Each kind of shift against differences of its own, in both directions.
TEST(ChainUncertainty, HasTheDerivativesOfEveryShift) {
  using enum ShiftComponents;
  const auto bilinear = Grid(horizontalAndVertical, ShiftInterpolation::bilinear);
  const auto biquadratic = Grid(horizontalAndVertical, ShiftInterpolation::biquadratic);
  const auto levels = Grid(ShiftComponents::vertical, ShiftInterpolation::biquadratic);
  const VerticalSlope slope(bessel, {0.8, 0.15, 0.3, 1e-5, -2e-5});
  TriangulationDefinition triangles;
  triangles.space = ShiftSpace::geographic;
  triangles.components = horizontalAndVertical;
  triangles.vertices = {{0.8, 0.1, 0.80001, 0.10002, 0.1},
                        {0.8, 0.2, 0.80003, 0.20001, 0.3},
                        {0.9, 0.15, 0.90002, 0.14999, -0.2}};
  triangles.triangles = {{0, 1, 2}};
  const auto mesh = Triangulation::Make(triangles);
  Datum datum(&bessel, 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7e-6, userTypeUser, nullptr);
  const FixedHeightDatum fixed(kGlobal, datum, 43);
  GeocentricShiftGridDefinition translations;
  translations.ellipsoid = kGlobal;
  ShiftGridPart part{"", 0, 0.78, 0.12, 0.1, 0.1, 2, 2, {}, {}};
  part.values = {-168, -60, 320, -170, -62, 321, -165, -59, 322, -167, -61, 319};
  translations.parts = {part};
  const auto atSource = GeocentricShiftGrid::Make(translations);
  translations.position = GridPosition::target;
  const auto atTarget = GeocentricShiftGrid::Make(translations);
  const auto offset = CoordinateOffset::Geographic(1e-5, 2e-5, 3);

  for (const CoordinateShift* shift : std::initializer_list<const CoordinateShift*>{
           bilinear.get(), biquadratic.get(), levels.get(), &slope, mesh.get(), &fixed,
           atSource.get(), atTarget.get(), &offset}) {
    double p[] = {kPoint[0], kPoint[1], kPoint[2]};
    const bool geocentricSpace = shift->Space() == ShiftSpace::geocentric;
    if (geocentricSpace) kGlobal.BLH_to_XYZ_Batch(&p[0], &p[1], &p[2], 1);
    Nine found;
    ASSERT_TRUE(shift->ForwardDerivatives(p[0], p[1], p[2], found));
    for (int c = 0; c < 3; ++c) {
      const double step = geocentricSpace || c == 2 ? 1000 : 1.5e-4;
      double low[] = {p[0], p[1], p[2]}, high[] = {p[0], p[1], p[2]};
      low[c] -= step;
      high[c] += step;
      const double width = high[c] - low[c];
      ASSERT_TRUE(shift->Forward(low[0], low[1], low[2]));
      ASSERT_TRUE(shift->Forward(high[0], high[1], high[2]));
      for (int r = 0; r < 3; ++r) {
        const double perUnit = r == 2 && c != 2 && !geocentricSpace ? 6.4e6 : 1;
        EXPECT_NEAR(found[r][c], (high[r] - low[r]) / width, 2 * kDerivatives * perUnit) << r << c;
      }
    }
  }
  Nine untouched = {{7}};
  EXPECT_EQ(bilinear->ForwardDerivatives(0.1, 0.1, 0, untouched).status, ShiftStatus::outside);
  EXPECT_EQ(bilinear->ForwardDerivatives(NAN, 0.1, 0, untouched).status, ShiftStatus::input);
  EXPECT_EQ(untouched[0][0], 7);
}

// Draws of all parameters and of the point against the propagated covariance.
using Sample = std::function<bool(std::mt19937_64&, double (&)[3])>;

void ExpectCovariance(const Nine& wanted, const double (&at)[3], const Sample& sample) {
  std::mt19937_64 random(20261123);
  const std::size_t draws = Draws();
  double sum[3][3] = {}, mean[3] = {};
  for (std::size_t i = 0; i < draws; ++i) {
    double p[3];
    ASSERT_TRUE(sample(random, p));
    for (int r = 0; r < 3; ++r) {
      mean[r] += p[r] - at[r];
      for (int c = 0; c < 3; ++c) sum[r][c] += (p[r] - at[r]) * (p[c] - at[c]);
    }
  }
  const auto n = static_cast<double>(draws);
  const double tolerance = DrawsTolerance();
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      const double drawn = (sum[r][c] - mean[r] * mean[c] / n) / (n - 1);
      EXPECT_NEAR(drawn, wanted[r][c], tolerance * std::sqrt(wanted[r][r] * wanted[c][c]))
          << r << c;
    }
}

TEST(ChainUncertainty, EqualsDrawsOfEveryErrorBothWays) {
  DatumCovariance ofDatum;
  SiteCovariance ofSite{kPivotN, kPivotE, {}, {}};
  const double datumSigmas[] = {0.02, 0.03, 0.01, 0.0005, 0.0007, 0.0004, 3e-9};
  const double planeSigmas[] = {0.01, 0.012, 2e-7, 3e-7}, heightSigmas[] = {0.01, 2e-7, 3e-7};
  for (int i = 0; i < 7; ++i) ofDatum.of[i][i] = datumSigmas[i] * datumSigmas[i];
  for (int i = 0; i < 4; ++i) ofSite.ofPlane[i][i] = planeSigmas[i] * planeSigmas[i];
  for (int i = 0; i < 3; ++i) ofSite.ofHeight[i][i] = heightSigmas[i] * heightSigmas[i];
  const GrowingSigma sigmas;
  double geoidSigma;
  sigmas.Height(kPoint[0], 0, geoidSigma);

  const Everything all(GeoidFrame::global);
  ChainUncertainty uncertainty(all.chain);
  ASSERT_TRUE(uncertainty.SetDatum(ofDatum));
  ASSERT_TRUE(uncertainty.SetSite(ofSite));
  uncertainty.SetGeoid(&sigmas);
  ASSERT_TRUE(uncertainty.SetShiftNodes(*all.grid, 1, 1));
  ASSERT_TRUE(uncertainty.SetShiftNodes(*all.levels, 1, 1));

  double local[] = {kPoint[0], kPoint[1], kPoint[2]};
  ASSERT_TRUE(all.chain.ToLocal(local[0], local[1], local[2]));
  std::normal_distribution<double> normal;
  const double metresB = 6.38e6;  // of a radian, near enough for an error of 5 cm
  const auto draw = [&](std::mt19937_64& random) {
    Errors x;
    for (int i = 0; i < 7; ++i) x.datum[i] = datumSigmas[i] * normal(random);
    for (int i = 0; i < 4; ++i) x.plane[i] = planeSigmas[i] * normal(random);
    for (int i = 0; i < 3; ++i) x.heights[i] = heightSigmas[i] * normal(random);
    x.geoid = geoidSigma * normal(random);
    x.before[0] = 0.05 / metresB * normal(random);
    x.before[1] = 0.03 / (metresB * std::cos(kPoint[0])) * normal(random);
    x.before[2] = 0.02 * normal(random);
    x.levels = 0.02 * normal(random);
    return x;
  };
  // The point's own error: a Cholesky factor of kGiven.
  double factor[3][3] = {};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c <= r; ++c) {
      double rest = kGiven[r][c];
      for (int k = 0; k < c; ++k) rest -= factor[r][k] * factor[c][k];
      factor[r][c] = r == c ? std::sqrt(rest) : rest / factor[c][c];
    }
  const auto own = [&](std::mt19937_64& random, double(&error)[3]) {
    const double z[] = {normal(random), normal(random), normal(random)};
    for (int r = 0; r < 3; ++r)
      error[r] = factor[r][0] * z[0] + factor[r][1] * z[1] + factor[r][2] * z[2];
  };

  Nine covariance;
  std::copy_n(&kGiven[0][0], 9, &covariance[0][0]);
  double p[] = {kPoint[0], kPoint[1], kPoint[2]};
  ASSERT_TRUE(uncertainty.ToLocal(p[0], p[1], p[2], covariance));
  for (int c = 0; c < 3; ++c) EXPECT_EQ(p[c], local[c]);
  Nine toXyz;
  const CoordinateChain geodetic(&kGlobal, nullptr, nullptr);
  ASSERT_TRUE(ChainUncertainty(geodetic).Derivatives(kPoint[0], kPoint[1], kPoint[2], toXyz,
                                                     northEastUp, geographic));
  const auto forward = [&](std::mt19937_64& random, double(&q)[3]) {
    const Everything drawn(GeoidFrame::global, draw(random));
    double error[3];
    own(random, error);
    for (int r = 0; r < 3; ++r) {
      q[r] = kPoint[r];
      for (int c = 0; c < 3; ++c) q[r] += toXyz[r][c] * error[c];
    }
    return static_cast<bool>(drawn.chain.ToLocal(q[0], q[1], q[2]));
  };
  ExpectCovariance(covariance, local, forward);

  std::copy_n(&kGiven[0][0], 9, &covariance[0][0]);
  ASSERT_TRUE(uncertainty.ToGlobal(p[0], p[1], p[2], covariance, northEastUp, geocentric));
  double global[] = {kPoint[0], kPoint[1], kPoint[2]};
  kGlobal.BLH_to_XYZ_Batch(&global[0], &global[1], &global[2], 1);
  const auto backward = [&](std::mt19937_64& random, double(&q)[3]) {
    const Everything drawn(GeoidFrame::global, draw(random));
    double error[3];
    own(random, error);
    for (int r = 0; r < 3; ++r) q[r] = local[r] + error[r];
    const bool converted = static_cast<bool>(drawn.chain.ToGlobal(q[0], q[1], q[2]));
    kGlobal.BLH_to_XYZ_Batch(&q[0], &q[1], &q[2], 1);
    return converted;
  };
  ExpectCovariance(covariance, global, backward);
}

// The point's own error through each step alone.
TEST(ChainUncertainty, EqualsDrawsInEveryStepBothWays) {
  const Everything all(GeoidFrame::global);
  const auto expect = [](const char* name, CoordinateChain chain, double date = kNoDate) {
    ExpectDrawsBothWays(chain, kPoint, name, date);
  };
  const auto with = [&](ShiftPlace place, const CoordinateShift& shift, ShiftDirection direction) {
    const bool plane = place == ShiftPlace::afterProjection;
    CoordinateChain chain(&kGlobal, nullptr, plane ? &all.projection : nullptr);
    chain.AddShift(place, {&shift, direction});
    return chain;
  };
  using enum ShiftDirection;
  using enum ShiftPlace;
  CoordinateChain chain(&kGlobal, &all.datum, nullptr);
  expect("datum", chain);
  chain.SetGeoid(&all.geoid, GeoidFrame::global);
  expect("geoid, global", chain);
  chain.SetGeoid(&all.geoid, GeoidFrame::local);
  expect("geoid, local", chain);
  chain = CoordinateChain(&kGlobal, nullptr, &all.projection);
  chain.SetLocalization(&all.site);
  expect("site", chain);
  chain.SetLocalization(nullptr);
  chain.SetGround(&all.ground);
  expect("ground", chain);

  using enum ShiftComponents;
  const auto biquadratic = Grid(horizontalAndVertical, ShiftInterpolation::biquadratic);
  const auto plane = Grid(horizontal, {}, ShiftSpace::plane);
  const VerticalSlope slope(bessel, {0.8, 0.15, 0.3, 1e-5, -2e-5});
  const FixedHeightDatum fixed(kGlobal, all.datum, 43);
  for (const ShiftDirection direction : {forward, inverse}) {
    expect("shift grid", with(beforeDatum, *all.grid, direction));
    expect("shift grid, biquadratic", with(beforeDatum, *biquadratic, direction));
    expect("plane shift grid", with(afterProjection, *plane, direction));
    expect("vertical shift grid", with(heights, *all.levels, direction));
    expect("small-angle similarity", with(beforeDatum, all.small, direction));
    expect("affine transformation", with(afterProjection, all.affine, direction));
    expect("vertical slope", with(heights, slope, direction));
    expect("datum at one height", with(beforeDatum, fixed, direction));
  }
  constexpr double kDate = 2026.5;
  const auto change = FrameChange::Make(ReferenceFrame::itrf2014, ReferenceFrame::nad83CsrsV7);
  expect("change of frame", with(beforeDatum, *change, forward), kDate);
  const PlateMotion motion({-3e4, -2e4, 4e4}, 2010);
  expect("plate motion", with(beforeDatum, motion, inverse), kDate);
  ShiftGridPart velocities{"", 0, 0.78, 0.12, 0.1, 0.1, 2, 2, {}, {}};
  velocities.values = {10, 20, -5, 30, 25, 12, -15, 40, 3, 9, -30, 11};
  VelocityGridDefinition moving;
  moving.ellipsoid = kGlobal;
  moving.epoch = 2010;
  moving.unit = 1;
  moving.parts = {velocities};
  expect("velocity grid", with(beforeDatum, *VelocityGrid::Make(moving), forward), kDate);
  DeformationModelDefinition model;
  model.ellipsoid = kGlobal;
  model.extent = {0.78, 0.12, 0.88, 0.22};
  model.horizontalUnit = model.verticalUnit = 10;
  model.components.resize(1);
  model.components[0].displacement = horizontalAndVertical;
  model.components[0].extent = model.extent;
  model.components[0].parts = {velocities};
  expect("deformation model", with(beforeDatum, *DeformationModel::Make(model), inverse), kDate);
}

// A job's error is shared by its points: the difference of two neighbours has none of it.
TEST(ChainUncertainty, SharesTheErrorsOfAJob) {
  const Everything all(GeoidFrame::local);
  for (const ErrorExtent extent : {ErrorExtent::job, ErrorExtent::point}) {
    ChainUncertainty uncertainty(all.chain);
    SiteCovariance ofSite{kPivotN, kPivotE, {}, {}};
    ofSite.ofPlane[0][0] = ofSite.ofPlane[1][1] = ofSite.ofHeight[0][0] = 1e-4;
    ASSERT_TRUE(uncertainty.SetSite(ofSite, extent));
    ASSERT_TRUE(uncertainty.SetDatum(0.3, extent));
    ASSERT_TRUE(uncertainty.SetGeoid(0.02, extent));
    ASSERT_TRUE(uncertainty.SetShift(*all.grid, 0.1, 0.2, 0.3, extent));
    double b[] = {kPoint[0], kPoint[0] + 1e-7}, l[] = {kPoint[1], kPoint[1] - 1e-7}, h[] = {1, 2};
    double joint[36] = {};
    for (int i = 0; i < 6; ++i) joint[7 * i] = 1e-6;
    ASSERT_TRUE(uncertainty.JointToLocal(b, l, h, joint, 2));
    Nine single = {{1e-6, 0, 0}, {0, 1e-6, 0}, {0, 0, 1e-6}};
    double n = kPoint[0], e = kPoint[1], u = 1;
    ASSERT_TRUE(uncertainty.ToLocal(n, e, u, single));
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) EXPECT_NEAR(joint[6 * r + c], single[r][c], 1e-12);
      const double difference = joint[7 * r] + joint[7 * (r + 3)] - 2 * joint[6 * r + r + 3];
      if (extent == ErrorExtent::job) {
        EXPECT_NEAR(difference, 2e-6, 2e-8) << r;  // the points' own, through scales near 1
      } else {
        EXPECT_NEAR(difference, 2 * single[r][r], 1e-4 * single[r][r]) << r;
      }
    }
  }
}

TEST(ChainUncertainty, KeepsFramesApart) {
  const Everything all(GeoidFrame::global);
  const ChainUncertainty uncertainty(all.chain);
  // There and back without errors of the steps is the covariance given.
  for (const CovarianceFrame frame : {northEastUp, geocentric, geographic}) {
    const double scale[] = {frame == geographic ? 1e-7 : 1, frame == geographic ? 1e-7 : 1, 1};
    Nine given, covariance;
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c)
        given[r][c] = covariance[r][c] = kGiven[r][c] * scale[r] * scale[c];
    double p[] = {kPoint[0], kPoint[1], kPoint[2]};
    ASSERT_TRUE(uncertainty.ToLocal(p[0], p[1], p[2], covariance, frame));
    EXPECT_NEAR(covariance[0][1], covariance[1][0], 0);
    ASSERT_TRUE(uncertainty.ToGlobal(p[0], p[1], p[2], covariance, northEastUp, frame));
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(covariance[r][c], given[r][c], 1e-12 * scale[r] * scale[c]);
  }
  // A turn of axes turns the coordinates, not the covariance.
  Everything turned(GeoidFrame::global);
  turned.projection.SetNEAxes(L"EN");
  turned.projection.SetBLAxes(L"EN");
  Nine straight, swapped;
  std::copy_n(&kGiven[0][0], 9, &straight[0][0]);
  std::copy_n(&kGiven[0][0], 9, &swapped[0][0]);
  double p[] = {kPoint[0], kPoint[1], kPoint[2]}, q[] = {kPoint[1], kPoint[0], kPoint[2]};
  ASSERT_TRUE(uncertainty.ToLocal(p[0], p[1], p[2], straight));
  ASSERT_TRUE(ChainUncertainty(turned.chain).ToLocal(q[0], q[1], q[2], swapped));
  EXPECT_EQ(p[0], q[1]);
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) EXPECT_EQ(straight[r][c], swapped[r][c]);
}

TEST(ChainUncertainty, RefusesWhatIsNoCovariance) {
  const Everything all(GeoidFrame::global);
  ChainUncertainty uncertainty(all.chain);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double bad[][9] = {{-1, 0, 0, 0, 1, 0, 0, 0, 1},          {1, 0.1, 0, 0.2, 1, 0, 0, 0, 1},
                           {1, 2, 0, 2, 1, 0, 0, 0, 1},           {1, 0, 0, 0, nan, 0, 0, 0, 1},
                           {1, .9, -.9, .9, 1, .9, -.9, .9, 1.0}, {0, 0, 1, 0, 1, 0, 1, 0, 1}};
  for (const auto& matrix : bad) {
    double p[] = {kPoint[0], kPoint[1], kPoint[2]};
    Nine covariance;
    std::copy_n(matrix, 9, &covariance[0][0]);
    EXPECT_EQ(uncertainty.ToLocal(p[0], p[1], p[2], covariance).failedAt, ChainStep::input);
    EXPECT_EQ(p[0], kPoint[0]);
    EXPECT_EQ(covariance[0][0], matrix[0]);
  }
  Nine covariance = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  double p[] = {kPoint[0], kPoint[1], kPoint[2]};
  EXPECT_EQ(uncertainty.ToLocal(p[0], p[1], p[2], covariance, northEastUp, geocentric).failedAt,
            ChainStep::input);
  const CoordinateChain nothing;
  EXPECT_EQ(ChainUncertainty(nothing).ToLocal(p[0], p[1], p[2], covariance).failedAt,
            ChainStep::globalEllipsoid);
  EXPECT_TRUE(
      ChainUncertainty(nothing).ToLocal(p[0], p[1], p[2], covariance, geographic, geographic));
  EXPECT_FALSE(uncertainty.SetDatum(-1));
  EXPECT_FALSE(uncertainty.SetGeoid(nan));
  EXPECT_FALSE(uncertainty.SetShift(*all.grid, 1, nan, 1));
  EXPECT_FALSE(uncertainty.SetShiftNodes(*all.grid, 0, 1));
  DatumCovariance indefinite;
  indefinite.of[0][0] = indefinite.of[1][1] = 1;
  indefinite.of[0][1] = indefinite.of[1][0] = 2;
  EXPECT_FALSE(uncertainty.SetDatum(indefinite));
}

// Many points, some of which fail, give what each gives alone.
// Some of the points fail: as input, in the datum's surroundings, or for their matrix.
void ExpectBatchesOfPoints(const CoordinateChain& chain) {
  ChainUncertainty uncertainty(chain);
  ASSERT_TRUE(uncertainty.SetDatum(0.2));
  ASSERT_TRUE(uncertainty.SetGeoid(0.01));
  constexpr std::size_t kCount = 700;
  for (const bool toLocal : {true, false}) {
    std::vector<double> points(3 * kCount), covariances(9 * kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
      const auto x = static_cast<double>(i);
      double* const p = &points[3 * i];
      p[0] = 0.775 + 1e-4 * x;
      p[1] = 0.13 + 0.9e-4 * x;
      p[2] = x;
      if (!toLocal && i % 7 != 0) chain.ToLocal(p[0], p[1], p[2]);
      if (i % 7 == 0) p[0] = i % 2 == 0 ? 4e9 : NAN;
      std::copy_n(&kGiven[0][0], 9, &covariances[9 * i]);
      if (i % 11 == 0) covariances[9 * i] = -1;
    }
    auto given = points;
    std::vector<ChainStep> steps(kCount);
    const auto batch = toLocal ? &ChainUncertainty::ToLocalBatch : &ChainUncertainty::ToGlobalBatch;
    const auto single = toLocal ? &ChainUncertainty::ToLocal : &ChainUncertainty::ToGlobal;
    const std::size_t converted =
        (uncertainty.*batch)(&points[0], &points[1], &points[2], covariances.data(), kCount, 3,
                             steps.data(), northEastUp, northEastUp, {});
    std::size_t good = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
      Nine c;
      std::copy_n(&kGiven[0][0], 9, &c[0][0]);
      if (i % 11 == 0) c[0][0] = -1;
      double* const p = &given[3 * i];
      const ChainResult result =
          (uncertainty.*single)(p[0], p[1], p[2], c, northEastUp, northEastUp, kNoDate);
      ASSERT_EQ(result.failedAt, steps[i]) << i;
      good += static_cast<bool>(result);
      for (std::size_t k = 0; k < 9; ++k) {
        if (result)
          EXPECT_NEAR(covariances[9 * i + k], c[k / 3][k % 3], 1e-12) << i;
        else
          EXPECT_TRUE(std::isnan(covariances[9 * i + k]) && std::isnan(points[3 * i]));
      }
    }
    EXPECT_EQ(converted, good);
    EXPECT_GT(good, kCount / 2);
  }
}

TEST(ChainUncertainty, BatchesAreItsPoints) {
  const Everything all(GeoidFrame::global);
  const ExactChains exact;
  for (const CoordinateChain* const chain : {&all.chain, &exact.shifted, &exact.framed})
    ExpectBatchesOfPoints(*chain);
}

}  // namespace
}  // namespace zel_cs::geomath
