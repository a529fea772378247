// Prints docs/accuracy.md: how far the library's results are from exact ones. With
// `--check docs/accuracy.md` it says instead whether that file is what would be printed now.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/accuracy/markdown.h"
#include "bench/accuracy/sections.h"

namespace {

constexpr std::string_view kIntroduction =
    R"(# Accuracy

How far the results of the library are from exact ones. The references are the definitions in
extended precision, written for this page and sharing no code with the library (`bench/accuracy`);
the last section sets them beside other programs. `scripts/accuracy.sh` writes the page, and a test
compares it with what the program prints.

Each row is the worst of 600 points, half of them on the outer edge of its band. Rows in bold are the
domain that the class is meant for; the others show what becomes of it farther out.

- **forward**: from the exact grid position, on the grid.
- **inverse**: of the exact grid position, as a double, from the true geographic position, on the
  ground.
- **round trip**: forward and back, on the ground.
- **batch − one point**: the largest difference, either direction. "Same bits" is meant literally.

A coordinate of 5000 km is a multiple of 0.93 nm, and a longitude of 170° one of 2.8 nm on the
equator: errors of some nanometres are the rounding of arguments and results. Whether a point is
refused, and what the other columns are for, stands in the comment of each class.
)";

std::string Page() {
  std::ostringstream out;
  const std::vector<Family> families = Families();
  out << kIntroduction;
  WriteProjections(out, families);
  WriteFactors(out, families);
  WriteGeocentric(out);
  WriteDatum(out);
  WriteGeoid(out);
  WritePeers(out, families);
  return out.str();
}

std::vector<std::string> Split(const std::string& text, char mark) {
  std::istringstream in(text);
  std::vector<std::string> parts;
  for (std::string part; std::getline(in, part, mark);) parts.push_back(part);
  return parts;
}

// Rounding errors depend on the last bit of the machine's mathematical functions: figures below
// 0.1 µm may differ by a factor of two, counts of points ("3 of 4000") by a few. All others are the
// same everywhere.
bool SameFigure(const std::string& a, const std::string& b) {
  constexpr long double kRounding = 1e-7L, kFactor = 2;
  constexpr int kFewPoints = 5;
  if (a == b) return true;
  const auto x = ParseLength(a), y = ParseLength(b);
  if (x && y) return std::max(*x, *y) < kRounding && std::max(*x, *y) <= kFactor * std::min(*x, *y);
  int m = 0, n = 0, ofM = 0, ofN = 0;
  return std::sscanf(a.c_str(), "%d of %d", &m, &ofM) == 2 &&
         std::sscanf(b.c_str(), "%d of %d", &n, &ofN) == 2 && ofM == ofN &&
         std::abs(m - n) <= kFewPoints;
}

// The cells of a row, or the line itself.
std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells = Split(line, '|');
  for (std::string& cell : cells) {
    const std::size_t first = cell.find_first_not_of(' '), last = cell.find_last_not_of(' ');
    cell = first == std::string::npos ? "" : cell.substr(first, last - first + 1);
  }
  return cells;
}

bool SameLine(const std::string& a, const std::string& b) {
  const std::vector<std::string> left = Cells(a), right = Cells(b);
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), SameFigure);
}

// Compares up to the figures of other programs, and these where their versions are the same.
int Check(const char* file) {
  std::ifstream in(file);
  const std::string committed{std::istreambuf_iterator<char>(in), {}};
  const std::vector<std::string> was = Split(committed, '\n'), is = Split(Page(), '\n');
  bool inPeers = false;
  for (std::size_t i = 0; i < std::max(was.size(), is.size()); ++i) {
    const std::string left = i < was.size() ? was[i] : "", right = i < is.size() ? is[i] : "";
    if (!SameLine(left, right)) {
      if (inPeers && i < was.size() && left.find('|') == std::string::npos) {
        std::cout << "The figures of other programs are not compared: the page has " << left
                  << "; here: " << right << '\n';
        return 0;
      }
      std::cout << file << " line " << i + 1 << " is\n  " << left << "\nand would be\n  " << right
                << "\nscripts/accuracy.sh writes the page anew.\n";
      return 1;
    }
    inPeers = inPeers || right == kPeersHeading;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (std::numeric_limits<exact::Real>::digits < 64) {
    std::cerr << "long double has no extended precision here: there is no exact reference\n";
    return 77;
  }
  if (argc == 3 && std::string_view(argv[1]) == "--check") return Check(argv[2]);
  if (argc != 1) {
    std::cerr << "usage: accuracy_report [--check FILE]\n";
    return 2;
  }
  std::cout << Page();
}
