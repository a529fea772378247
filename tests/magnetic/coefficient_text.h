#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

#include "geomath/magnetic/wmm2010.h"
#include "tests/support/scratch_folder.h"

/// The start of a coefficient file that is told from WMM-2010 by its epoch.
inline const std::string kCofHeader = "    2020.0            TEST-1        12/10/2019\n";

inline std::string CofRow(int n, int m, double g, double h, double gDot, double hDot) {
  char row[120];
  std::snprintf(row, sizeof row, "%3d %2d %9.1f %9.1f %9.1f %9.1f\n", n, m, g, h, gDot, hDot);
  return row;
}

/// All terms of WMM-2010 below a header, with the line of nines.
inline std::string CofText(const std::string& header = kCofHeader) {
  std::string text = header;
  for (const auto& t : zel_cs::geomath::Wmm2010Terms())
    text += CofRow(t.n, t.m, t.g, t.h, t.gDot, t.hDot);
  return text + std::string(48, '9') + "\n" + std::string(48, '9') + "\n";
}

/// A file that lasts as long as the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text) {
    std::ofstream(path_, std::ios::binary) << text;
  }

  const char* Path() const { return path_.c_str(); }

 private:
  ScratchFolder folder_;
  std::string path_ = (folder_.Path() / "model.cof").string();
};
