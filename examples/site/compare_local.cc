// Compares check points converted without and with a site calibration with their given local
// coordinates: reads the two CSV files that `geomath convert` wrote and prints both rms.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Rms {
  double horizontal = 0, height = 0, largest = 0;
  int points = 0;
};

// Columns: name, lat, lon, h, local_n, local_e, local_h, n, e, h_local.
constexpr std::size_t kGiven = 4, kConverted = 7, kColumns = 10;

Rms Compare(const char* path) {
  std::ifstream file(path);
  Rms rms;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::vector<double> row;
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');)
      row.push_back(std::strtod(field.c_str(), nullptr));
    if (row.size() != kColumns) {
      std::fprintf(stderr, "%s: a point without result: %s\n", path, line.c_str());
      std::exit(EXIT_FAILURE);
    }
    const auto misfit = [&](std::size_t i) { return row[kGiven + i] - row[kConverted + i]; };
    const double d = std::hypot(misfit(0), misfit(1));
    rms.horizontal += d * d;
    rms.height += misfit(2) * misfit(2);
    rms.largest = std::max(rms.largest, d);
    ++rms.points;
  }
  if (rms.points == 0) {
    std::fprintf(stderr, "%s: no points\n", path);
    std::exit(EXIT_FAILURE);
  }
  rms.horizontal = std::sqrt(rms.horizontal / rms.points);
  rms.height = std::sqrt(rms.height / rms.points);
  return rms;
}

void Print(const char* what, const Rms& rms) {
  std::printf("%-30s horizontal rms %8.4f m, largest %8.4f m; height rms %8.4f m\n", what,
              rms.horizontal, rms.largest, rms.height);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: compare_local BEFORE.csv AFTER.csv\n");
    return EXIT_FAILURE;
  }
  const Rms before = Compare(argv[1]), after = Compare(argv[2]);
  std::printf("\n%d check points, given minus converted\n", after.points);
  Print("before, datum and projection:", before);
  Print("after the calibration:", after);
  return EXIT_SUCCESS;
}
