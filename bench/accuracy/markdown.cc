#include "bench/accuracy/markdown.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>

namespace {

constexpr struct {
  long double metres;
  const char* name;
} kUnits[] = {{1e3L, "km"}, {1, "m"}, {1e-3L, "mm"}, {1e-6L, "µm"}, {1e-9L, "nm"}};
constexpr long double kFloor = 1e-9L;       // the spacing of doubles at 8e6 m
constexpr long double kMeaningless = 1e7L;  // metres, about the distance of a pole

}  // namespace

std::string Length(long double metres) {
  if (metres < kFloor) return "< 1 nm";
  if (!(metres < kMeaningless)) return "none";
  char text[40];
  std::snprintf(text, sizeof text, "%.1Le", metres);
  const long double rounded = std::strtold(text, nullptr);
  for (const auto& unit : kUnits) {
    const bool last = &unit == std::end(kUnits) - 1;
    if (rounded < unit.metres * (1 - 1e-9L) && !last) continue;
    std::snprintf(text, sizeof text, "%.3Lg %s", rounded / unit.metres, unit.name);
    break;
  }
  return text;
}

std::string BatchDeviation(long double metres) {
  return metres == 0 ? "same bits" : Length(metres);
}

std::optional<long double> ParseLength(const std::string& text) {
  if (text == "< 1 nm") return kFloor;
  char* rest = nullptr;
  const long double value = std::strtold(text.c_str(), &rest);
  if (rest == text.c_str()) return std::nullopt;
  for (const auto& [metres, name] : kUnits)
    if (std::string(" ") + name == rest) return value * metres;
  return std::nullopt;
}

void WriteRow(std::ostream& out, const std::vector<std::string>& cells) {
  for (const std::string& cell : cells) out << "| " << cell << (cell.empty() ? "" : " ");
  out << "|\n";
}

void WriteHead(std::ostream& out, const std::vector<std::string>& cells) {
  WriteRow(out, cells);
  for (std::size_t i = 0; i < cells.size(); ++i) out << "|---";
  out << "|\n";
}
