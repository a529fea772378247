#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "geomath/geoid/global_geoid.h"

/// Coefficients of a spherical-harmonic geoid model in triangular order, degrees from 0.
struct HarmonicModel {
  std::vector<double> C, S, correctionC, correctionS;

  static void Put(int n, int m, std::vector<double>& a, double x, std::vector<double>& b,
                  double y) {
    const std::size_t k = static_cast<std::size_t>(n) * (static_cast<std::size_t>(n) + 1) / 2 +
                          static_cast<std::size_t>(m);
    if (a.size() <= k) a.resize(k + 1);
    if (b.size() <= k) b.resize(k + 1);
    a[k] = x;
    b[k] = y;
  }

  zel_cs::geomath::GlobalGeoidData Record(int count, bool corrected = true) const {
    return {count,
            C.data(),
            S.data(),
            false,
            0,
            corrected ? correctionC.data() : nullptr,
            corrected ? correctionS.data() : nullptr};
  }
};

/// Rows of numbers; `skip` header lines; commas count as blanks.
inline std::vector<std::vector<double>> ReadRows(std::istream& in, int skip) {
  std::vector<std::vector<double>> rows;
  std::string line;
  while (std::getline(in, line)) {
    if (skip-- > 0) continue;
    for (char& c : line)
      if (c == ',') c = ' ';
    std::istringstream fields(line);
    std::vector<double> row;
    for (double x; fields >> x;) row.push_back(x);
    rows.push_back(row);
  }
  return rows;
}

inline std::vector<std::vector<double>> ReadRows(const std::filesystem::path& file, int skip = 1) {
  std::ifstream in(file);
  return ReadRows(in, skip);
}

/// EGM96 to degree 36, normal field subtracted, with its correction.
inline HarmonicModel Egm96Degree36() {
  HarmonicModel model;
  const std::filesystem::path data = std::filesystem::path(GEOMATH_SOURCE_DIR) / "tests/data";
  for (const auto& row : ReadRows(data / "egm96_degree36.csv")) {
    const int n = static_cast<int>(row[0]), m = static_cast<int>(row[1]);
    HarmonicModel::Put(n, m, model.C, row[2], model.S, row[3]);
    HarmonicModel::Put(n, m, model.correctionC, row[4], model.correctionS, row[5]);
  }
  return model;
}
