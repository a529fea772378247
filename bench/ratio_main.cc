// Runs the benchmarks, then prints one line a row: time per point of each contender, and how many
// times faster ours are than the fastest peer of that row in the same run. A benchmark is named
// "row/contender"; contenders of ours are "scalar" and "batch", every other one is a peer. With
// repetitions the medians are compared.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

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

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
