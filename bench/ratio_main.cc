// Runs the benchmarks, then prints one line a row: time per point of each contender, and how many
// times faster ours are than the fastest peer of that row in the same run. A benchmark is named
// "row/contender"; contenders of ours are "scalar" and "batch", every other one is a peer. With
// repetitions the medians are compared.
//
// --instruction_set=baseline (or avx2, avx512) makes batches run on that set.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "geomath/simd/instruction_set.h"

#ifdef GEOMATH_HAVE_PROJ
#include <proj.h>
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
#include <GeographicLib/Config.h>
#endif

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) Keep(run);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%-34s %10s  %s\n", "row", "ns/point", "times faster than the fastest peer");
    for (const std::string& row : order_) PrintRow(row, rows_.at(row));
  }

 private:
  using Contenders = std::map<std::string, double>;  // seconds per point

  void Keep(const Run& run) {
    const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
    const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
    const auto rate = run.counters.find("items_per_second");
    if (!(median || single) || rate == run.counters.end()) return;
    const std::string name = run.run_name.function_name;
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos) return;
    const std::string row = name.substr(0, slash);
    if (!rows_.contains(row)) order_.push_back(row);
    rows_[row][name.substr(slash + 1)] = 1 / rate->second.value;
  }

  static bool IsOurs(const std::string& contender) {
    return contender == "scalar" || contender == "batch";
  }

  static void PrintRow(const std::string& row, const Contenders& contenders) {
    double peer = 0;
    for (const auto& [name, seconds] : contenders)
      if (!IsOurs(name)) peer = peer == 0 ? seconds : std::min(peer, seconds);
    for (const auto& [name, seconds] : contenders) {
      std::printf("%-34s %10.1f", (row + "/" + name).c_str(), seconds * 1e9);
      if (IsOurs(name) && peer > 0) std::printf("  %.1f", peer / seconds);
      std::printf("\n");
    }
  }

  std::vector<std::string> order_;
  std::map<std::string, Contenders> rows_;
};

using zel_cs::geomath::simd::InstructionSet;

constexpr struct {
  InstructionSet set;
  std::string_view name;
} kInstructionSets[] = {{InstructionSet::baseline, "baseline"},
                        {InstructionSet::avx2, "avx2"},
                        {InstructionSet::avx512, "avx512"}};

// Takes --instruction_set out of the arguments; false for a value that is no set.
bool TakeInstructionSet(int& argc, char** argv) {
  constexpr std::string_view kFlag = "--instruction_set=";
  char** const found = std::find_if(argv + 1, argv + argc, [&](std::string_view argument) {
    return argument.starts_with(kFlag);
  });
  if (found == argv + argc) return true;
  const std::string_view wanted = std::string_view(*found).substr(kFlag.size());
  std::copy(found + 1, argv + argc, found);
  --argc;
  for (const auto& [set, name] : kInstructionSets)
    if (name == wanted) {
      zel_cs::geomath::simd::ForceInstructionSet(set);
      return true;
    }
  std::fprintf(stderr, "no such instruction set: %.*s\n", static_cast<int>(wanted.size()),
               wanted.data());
  return false;
}

// What a figure depends on, for the head of the report and the JSON output.
void AddContext() {
#ifdef __clang__
  benchmark::AddCustomContext("compiler", "Clang " __clang_version__);
#else
  benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
  const InstructionSet active = zel_cs::geomath::simd::ActiveInstructionSet();
  for (const auto& [set, name] : kInstructionSets)
    if (set == active) benchmark::AddCustomContext("instruction set", std::string(name));
#ifdef GEOMATH_HAVE_PROJ
  benchmark::AddCustomContext("PROJ", proj_info().version);
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  benchmark::AddCustomContext("GeographicLib", GEOGRAPHICLIB_VERSION_STRING);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  if (!TakeInstructionSet(argc, argv)) return 1;
  AddContext();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
