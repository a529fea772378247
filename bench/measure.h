#pragma once

#include <benchmark/benchmark.h>

#include "bench/peers.h"

/// Measures `convert(Columns&)`, which works in place, on fresh copies of the points. The copies of
/// the columns that there are belong to every contender's time alike; the rows "copy of …" of
/// RegisterCopy show how much that is.
template <class Convert>
void MeasureInPlace(benchmark::State& state, const Columns& points, Convert convert) {
  Columns work = points;
  for (auto _ : state) {
    work.first = points.first;
    work.second = points.second;
    if (!points.third.empty()) work.third = points.third;
    convert(work);
    benchmark::DoNotOptimize(work.first.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
}

/// The floor of all rows on such points: what MeasureInPlace takes for nothing but the copies.
inline void RegisterCopy(const char* name, const Columns& points) {
  benchmark::RegisterBenchmark(
      name, [points](benchmark::State& state) { MeasureInPlace(state, points, [](Columns&) {}); });
}
