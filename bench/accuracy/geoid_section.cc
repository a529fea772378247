#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

#include "bench/accuracy/markdown.h"
#include "bench/accuracy/sections.h"
#include "geomath/geomath.h"
#include "tests/support/harmonic_model.h"

// The harmonic geoid beside undulations that were evaluated in high precision, printed to 1 nm.
void WriteGeoid(std::ostream& out) {
  using namespace zel_cs::geomath;
  const HarmonicModel egm96 = Egm96Degree36();
  const auto rows =
      ReadRows(std::filesystem::path(GEOMATH_SOURCE_DIR) / "tests/data/egm96_degree36_points.csv");
  std::vector<TAbstractPoint3<double>> points;
  for (const auto& row : rows) points.emplace_back(row[0] * kRadPerDeg, row[1] * kRadPerDeg, 0.0);

  out << R"(
## Geoids and magnetics

`GlobalGeoid` with EGM96 to degree 36, over the globe with its poles.

)";
  WriteHead(out, {"undulation", "points", "error"});
  for (const bool corrected : {true, false}) {
    const GlobalGeoid model(egm96.Record(37, corrected));
    std::vector<double> heights(points.size());
    model.CountHeight(points.data(), heights.data(), static_cast<int>(points.size()), nullptr);
    long double worst = 0;
    for (std::size_t i = 0; i < points.size(); ++i)
      worst = std::max<long double>(worst, std::abs(heights[i] - rows[i][corrected ? 2 : 3]));
    WriteRow(out, {corrected ? "with the correction of height anomalies" : "of the potential alone",
                   std::to_string(points.size()), Length(worst)});
  }
  out << R"(
Held by tests: EGM96 to degree 360 at NIMA's published points to the rounding of the publication,
0.5 mm (`tests/geoid/global_geoid_test.cc`); the World Magnetic Model's published values to the last
printed digit, and against a peer to 1.5e-6 nT (`tests/magnetic/magnetic_field_test.cc`).
)";
}
