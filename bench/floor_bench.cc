// The floors of rows that miss their goals or come near: the time of a loop over the same columns that
// does the products, sums, divisions and roots of the row's batch and nothing else (floor_kernel.h).
// What a batch takes beyond it are comparisons, choices, roundings, the gathering of nodes, and waiting
// for results.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/floor_kernel.h"
#include "bench/measure.h"
#include "geomath/simd/instruction_set.h"

namespace {

namespace simd = zel_cs::geomath::simd;

struct Floor {
  const char* row;
  std::size_t columns;
  Operations perPoint;
};

constexpr Operations operator+(const Operations& a, const Operations& b) {
  return {a.products + b.products, a.sums + b.sums, a.divisions + b.divisions, a.roots + b.roots};
}

// Of the statements of one point, as compilers leave them, their elementary functions among them:
// bench/count_operations.py counts them in the library.
constexpr Operations kBlhToXyz{47, 45, 1, 1}, kXyzToBlh{73, 48, 4, 5};
constexpr Operations kToLocal{9, 15, 0, 0}, kToGlobal{9, 12, 0, 0};
constexpr Operations kTmForward{65, 50, 2, 1}, kTmInverse{145, 113, 2, 1};
constexpr Operations kUtmInverse{82, 77, 9, 1};
constexpr Operations kNzmgInverse{196, 181, 5, 0};  // with three refinements
// Locating a point, placing it among the nodes, and the height from them.
constexpr Operations kLocate{2, 9, 2, 0}, kPlace{0, 14, 2, 0}, kBilinear{8, 7, 0, 0};

constexpr Floor kFloors[] = {
    {"UTM inverse", 2, kUtmInverse},
    {"whole chain forward", 3, kBlhToXyz + kToLocal + kXyzToBlh + kTmForward},
    {"whole chain inverse", 3, kTmInverse + kBlhToXyz + kToGlobal + kXyzToBlh},
    {"geoid grid, bilinear", 3, kLocate + kPlace + kBilinear},
    {"transverse mercator forward", 2, kTmForward},
    {"transverse mercator inverse", 2, kTmInverse},
    {"transverse mercator, 1983 inverse", 2, kUtmInverse},
    {"transverse mercator, 1927 forward", 2, {79, 47, 2, 1}},
    {"new zealand map grid inverse", 2, kNzmgInverse},
};

void Run(benchmark::State& state, const Floor& floor) {
  Columns points = SpreadPoints({1, 1, 1}, {2, 2, 2});
  if (floor.columns == 2) points.third.clear();
  const auto run = simd::ForActiveSet([](auto set) { return &FloorKernel<decltype(set)>::Run; });
  MeasureInPlace(state, points, [&](Columns& c) {
    double* const columns[] = {c.first.data(), c.second.data(), c.third.data()};
    run(floor.perPoint, columns, floor.columns, kBenchPoints);
  });
}

const bool kRegistered = [] {
  for (const Floor& floor : kFloors)
    benchmark::RegisterBenchmark((std::string(floor.row) + "/floor").c_str(), Run, floor);
  return true;
}();

}  // namespace
