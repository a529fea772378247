// One const object, many threads, every instruction set: the same results bit for bit. Run under the
// thread sanitizer this also shows that nothing const writes. A class is added as a row of Shared().
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "geomath/geomath.h"
#include "geomath/simd/instruction_set.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

/// Everything that a shared object computes, run by each thread on data of its own.
using Work = std::function<std::vector<double>()>;

struct Row {
  std::string name;
  Work (*make)(int argument);
  int argument = 0;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

constexpr std::size_t kPoints = 700;  // several blocks of a batch and a rest
constexpr int kThreads = 4;

/// A value that runs from −1 to 1 over the points.
double Spread(std::size_t i, int step) {
  return 2.0 * static_cast<double>(i * static_cast<std::size_t>(step) % kPoints) / kPoints - 1;
}

std::vector<double> Around(double centre, double extent, int step) {
  std::vector<double> values(kPoints);
  for (std::size_t i = 0; i < kPoints; ++i) values[i] = centre + extent * Spread(i, step);
  return values;
}

void Append(std::vector<double>& all, const std::vector<double>& some) {
  all.insert(all.end(), some.begin(), some.end());
}

std::vector<double> RunProjection(const TGeoProj& proj) {
  double b0 = 0, l0 = 0, db = 1, dl = 1;
  proj.GetCentralPoint(b0, l0, db, dl);
  std::vector<double> b = Around(b0, 0.3 * db, 1), l = Around(l0, 0.3 * dl, 13);
  std::vector<double> results;
  for (std::size_t i = 0; i < kPoints; ++i) {
    double n = b[i], e = l[i];
    PointFactors factors;
    const bool there = proj.ForwardPoint(n, e, &factors);
    results.insert(results.end(), {n, e, factors.scale, factors.convergence});
    const bool back = there && proj.InversePoint(n, e, &factors);
    results.insert(results.end(), {n, e, factors.scale, factors.convergence, back ? 1.0 : 0.0});
  }
  proj.ForwardBatch(b.data(), l.data(), kPoints);
  Append(results, b);
  Append(results, l);
  proj.InverseBatch(b.data(), l.data(), kPoints);
  Append(results, b);
  Append(results, l);
  return results;
}

Work ProjectionOfCode(int code) {
  const std::shared_ptr<TGeoProj> proj(_GetProjByType(code, kWgs84A, kWgs84InvF));
  proj->SetBLAxes(L"EN");
  proj->SetNEAxes(L"SW");
  return [proj] { return RunProjection(*proj); };
}

Work SeriesTm(int) {
  const auto proj = std::make_shared<const TTMProj>(kWgs84A, kWgs84InvF, 0.1, 0.9996, 0.2, 5e5, 0);
  return [proj] { return RunProjection(*proj); };
}

Work EllipsoidItself(int) {
  const auto ell = std::make_shared<const Ellipsoid>(MakeEllipsoid(kWgs84A, kWgs84InvF));
  return [ell] {
    std::vector<double> x = Around(0, kHalfPi, 1), y = Around(0, kPi, 13), z = Around(0, 1e5, 31);
    std::vector<double> results;
    ell->BLH_to_XYZ_Batch(x.data(), y.data(), z.data(), kPoints);
    for (const auto* column : {&x, &y, &z}) Append(results, *column);
    for (std::size_t i = 0; i < kPoints; ++i) {
      double b = x[i], l = y[i], h = z[i];
      ell->XYZ_to_BLH(b, l, h);
      results.insert(results.end(), {b, l, h});
    }
    ell->XYZ_to_BLH_Batch(x.data(), y.data(), z.data(), kPoints);
    for (const auto* column : {&x, &y, &z}) Append(results, *column);
    return results;
  };
}

Datum British(Ellipsoid* airy) {
  return {airy,    446.448, -125.157,    542.060,         -0.1502,
          -0.2470, -0.8421, -20.4894e-6, userTypeLibrary, L"EN"};
}

Work DatumItself(int) {
  const auto airy = std::make_shared<Ellipsoid>(MakeEllipsoid(6377563.396, 299.3249646));
  const auto datum = std::make_shared<const Datum>(British(airy.get()));
  return [airy, datum] {
    std::vector<double> x = Around(4e6, 1e4, 1), y = Around(0, 1e5, 13), z = Around(5e6, 1e4, 31);
    std::vector<double> results;
    for (std::size_t i = 0; i < kPoints; ++i) {
      double a = x[i], b = y[i], c = z[i];
      datum->ToWGS84Datum(a, b, c);
      datum->ToLocalDatum(a, b, c);
      datum->XYZ_to_BLH(a, b, c);
      results.insert(results.end(), {a, b, c});
    }
    datum->ToLocalDatumBatch(x.data(), y.data(), z.data(), kPoints);
    for (const auto* column : {&x, &y, &z}) Append(results, *column);
    datum->ToWGS84DatumBatch(x.data(), y.data(), z.data(), kPoints);
    for (const auto* column : {&x, &y, &z}) Append(results, *column);
    return results;
  };
}

Work Chain(int) {
  struct Britain {
    Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
    Ellipsoid airy = MakeEllipsoid(6377563.396, 299.3249646);
    Datum datum = British(&airy);
    TUTMProj grid{airy.a, airy.invF, -2 * kDegree, 0.9996012717, 49 * kDegree, 400000, -100000};
    CoordinateChain chain{&wgs84, &datum, &grid};
  };
  const auto britain = std::make_shared<const Britain>();
  return [britain] {
    std::vector<double> b = Around(54 * kDegree, 0.1, 1), l = Around(0, 0.05, 13);
    std::vector<double> h = Around(100, 100, 31), results;
    britain->chain.ToLocalBatch(b.data(), l.data(), h.data(), kPoints);
    for (const auto* column : {&b, &l, &h}) Append(results, *column);
    britain->chain.ToGlobalBatch(b.data(), l.data(), h.data(), kPoints);
    for (const auto* column : {&b, &l, &h}) Append(results, *column);
    return results;
  };
}

std::vector<double> RunShift(const CoordinateShift& shift, double b0, double l0, double extent) {
  std::vector<double> b = Around(b0, extent, 1), l = Around(l0, extent, 13), h = Around(0, 1e3, 31);
  std::vector<double> results;
  shift.ForwardBatch(b.data(), l.data(), h.data(), kPoints);
  for (const auto* column : {&b, &l, &h}) Append(results, *column);
  shift.InverseBatch(b.data(), l.data(), h.data(), kPoints);
  for (const auto* column : {&b, &l, &h}) Append(results, *column);
  return results;
}

// Two nested grids, an argument that is not 0 for the biquadratic rule.
Work ShiftGridItself(int biquadratic) {
  ShiftGridDefinition definition;
  definition.components = ShiftComponents::horizontalAndVertical;
  definition.horizontalUnit = kDegree / 3600;
  if (biquadratic) definition.interpolation = ShiftInterpolation::biquadratic;
  for (const int level : {0, 1}) {
    ShiftGridPart part;
    part.level = level;
    part.south = part.west = 0.8 + 0.03 * level;
    part.northStep = part.eastStep = level ? 0.002 : 0.01;
    part.rows = part.columns = 11;
    for (std::size_t i = 0; i < 3 * 121; ++i)
      part.values.push_back(static_cast<float>(std::sin(static_cast<double>(i) * 0.7)));
    definition.parts.push_back(part);
  }
  return [grid = std::shared_ptr<const ShiftGrid>(ShiftGrid::Make(definition))] {
    return RunShift(*grid, 0.85, 0.85, 0.051);
  };
}

Work TriangulationItself(int) {
  TriangulationDefinition definition;
  definition.fallback = TriangulationFallback::nearestSide;
  definition.vertices = {{0, 0, 5, 1}, {0, 100, 4, 102}, {100, 0, 101, 3}, {100, 100, 99, 98}};
  definition.triangles = {{0, 1, 2}, {1, 2, 3}};
  return [network = std::shared_ptr<const Triangulation>(Triangulation::Make(definition))] {
    return RunShift(*network, 50, 50, 60);
  };
}

Work SiteItself(int) {
  const auto site = std::make_shared<LocalToGrid>();
  site->mode = LocalToGrid::kBoth;
  site->SetLat0(0.9, 2);
  site->SetPlaneParam(0.3, 3, 2);
  const auto ground = std::make_shared<GridToGround>();
  ground->rotation = 0.1;
  return [site = std::shared_ptr<const LocalToGrid>(site),
          ground = std::shared_ptr<const GridToGround>(ground)] {
    std::vector<double> b = Around(0.9, 0.01, 1), l = Around(0, 0.02, 13), h = Around(0, 1e3, 31);
    std::vector<double> results;
    site->ForwardBatch(b.data(), l.data(), h.data(), kPoints, LocalToGrid::kBoth);
    ground->ToGroundBatch(b.data(), l.data(), kPoints);
    for (const auto* column : {&b, &l, &h}) Append(results, *column);
    ground->ToGridBatch(b.data(), l.data(), kPoints);
    site->InverseBatch(b.data(), l.data(), h.data(), kPoints, LocalToGrid::kBoth);
    for (const auto* column : {&b, &l, &h}) Append(results, *column);
    return results;
  };
}

std::vector<Row> Shared() {
  std::vector<Row> rows = {{"Ellipsoid", &EllipsoidItself},
                           {"Datum", &DatumItself},
                           {"CoordinateChain", &Chain},
                           {"ShiftGrid", &ShiftGridItself},
                           {"ShiftGridBiquadratic", &ShiftGridItself, 1},
                           {"Triangulation", &TriangulationItself},
                           {"LocalToGridAndGround", &SiteItself},
                           {"TTMProj", &SeriesTm}};
  for (int code = 0; code < ProjTypeNone; ++code) {
    const std::unique_ptr<TGeoProj> known(_GetProjByType(code, kWgs84A, kWgs84InvF));
    if (known->GetType() != ProjTypeNone)
      rows.push_back({"ProjectionCode" + std::to_string(code), &ProjectionOfCode, code});
  }
  return rows;
}

class SharedObject : public testing::TestWithParam<Row> {};

void ExpectSameBits(const std::vector<double>& result, const std::vector<double>& expected) {
  ASSERT_EQ(result.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    ASSERT_EQ(std::bit_cast<std::uint64_t>(result[i]), std::bit_cast<std::uint64_t>(expected[i]))
        << i;
}

// The threads go first, so that whatever is prepared on first use is prepared among them.
TEST_P(SharedObject, GivesEveryThreadTheSameBits) {
  const Work work = GetParam().make(GetParam().argument);
  std::vector<std::vector<double>> results(kThreads);
  std::vector<std::thread> threads;
  for (std::vector<double>& result : results)
    threads.emplace_back([&work, &result] { result = work(); });
  for (std::thread& thread : threads) thread.join();

  const std::vector<double> expected = work();
  std::size_t finite = 0;
  for (const double value : expected) finite += std::isfinite(value);
  EXPECT_GT(finite, expected.size() / 4) << "too few points convert to prove anything";
  for (const std::vector<double>& result : results) ExpectSameBits(result, expected);
}

TEST_P(SharedObject, GivesTheSameBitsOnEveryInstructionSet) {
  const Work work = GetParam().make(GetParam().argument);
  const std::vector<double> best = work();
  const simd::InstructionSet set = simd::ActiveInstructionSet();
  for (const auto narrower : {simd::InstructionSet::baseline, simd::InstructionSet::avx2}) {
    simd::ForceInstructionSet(narrower);
    ExpectSameBits(work(), best);
  }
  simd::ForceInstructionSet(set);
}

INSTANTIATE_TEST_SUITE_P(Classes, SharedObject, testing::ValuesIn(Shared()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace zel_cs::geomath
