// The set-up of a conversion from two codes of the registry, beside PROJ's: with a context of its own
// as a program that makes one conversion has it, and with one that is kept, as the library keeps its.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "bench/peers.h"
#include "files/conversion/conversion.h"
#include "files/gdal/use_gdal.h"
#include "files/words/user_error.h"

namespace {

struct Pair {
  const char *from, *to;
};

// Grids, parameters, feet, operations put together from several.
constexpr Pair kPairs[] = {
    {"EPSG:31467", "EPSG:25832"}, {"EPSG:4326", "EPSG:27700"},
    {"EPSG:28992", "EPSG:4258"},  {"EPSG:2263", "EPSG:4326"},
    {"EPSG:2154", "EPSG:27572"},  {"EPSG:21781", "EPSG:2056"},
    {"EPSG:31256", "EPSG:25833"}, {"EPSG:2222", "EPSG:26912"},
    {"EPSG:27200", "EPSG:2193"},  {"EPSG:5514", "EPSG:3045"},
    {"EPSG:29193", "EPSG:31983"}, {"EPSG:4978", "EPSG:31467"},  // geocentric
    {"EPSG:7912", "EPSG:7843"},   {"EPSG:7789", "EPSG:7930"},   // frames that move
    {"EPSG:4937", "EPSG:7415"},  // a geoid, where GEOMATH_GRIDS has it
};

bool IsPossible(const Pair& pair) {
  try {
    const geomath_files::Conversion conversion(pair.from, pair.to);
    return true;
  } catch (const geomath_files::UserError&) {
    return false;
  }
}

#ifdef GEOMATH_HAVE_PROJ
struct Destroy {
  void operator()(PJ* object) const { proj_destroy(object); }
  void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
};
template <class T>
using Owned = std::unique_ptr<T, Destroy>;

void MakePeer(PJ_CONTEXT* context, const Pair& pair) {
  const Owned<PJ> change(proj_create_crs_to_crs(context, pair.from, pair.to, nullptr));
  benchmark::DoNotOptimize(change.get());
}
#endif

void Register(const Pair& pair) {
  const std::string name = std::string("set-up ") + pair.from + " to " + pair.to;
  benchmark::RegisterBenchmark((name + "/scalar").c_str(), [=](benchmark::State& state) {
    for (auto _ : state) {
      const geomath_files::Conversion conversion(pair.from, pair.to);
      benchmark::DoNotOptimize(&conversion);
    }
    state.SetItemsProcessed(state.iterations());
  });
#ifdef GEOMATH_HAVE_PROJ
  benchmark::RegisterBenchmark((name + "/PROJ").c_str(), [=](benchmark::State& state) {
    for (auto _ : state) MakePeer(Owned<PJ_CONTEXT>(proj_context_create()).get(), pair);
    state.SetItemsProcessed(state.iterations());
  });
  benchmark::RegisterBenchmark((name + "/PROJ, context kept").c_str(),
                               [=](benchmark::State& state) {
                                 const Owned<PJ_CONTEXT> context(proj_context_create());
                                 for (auto _ : state) MakePeer(context.get(), pair);
                                 state.SetItemsProcessed(state.iterations());
                               });
#endif
}

[[maybe_unused]] const bool registered = [] {
  geomath_files::UseGdal();
  for (const Pair& pair : kPairs)
    if (IsPossible(pair)) Register(pair);
  return true;
}();

}  // namespace
