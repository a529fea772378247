// outside_files EXAMPLES: a site of examples/site is calibrated, reported and converted by.
#include <cmath>
#include <cstdio>

#include "files/files.h"
#include "geomath/geomath.h"

using namespace geomath_files;
using zel_cs::geomath::kRadPerDeg;

namespace {

// RDNAPTRANS2018 self-validation, point 30010187.
constexpr double kLat = 52.641738585, kLon = 5.534935707, kHeight = 210.2470;
constexpr double kNorth = 517148.3218, kEast = 164999.3137;

bool Agrees(const CoordinateSystem& system, double tolerance) {
  double north = kLat * kRadPerDeg, east = kLon * kRadPerDeg, height = kHeight;
  if (!system.Chain().ToLocal(north, east, height)) return false;
  std::printf("N %.3f  E %.3f\n", north, east);
  return std::hypot(north - kNorth, east - kEast) < tolerance;
}

bool Run(const std::string& examples) {
  constexpr double kGridDistortion = 0.3, kSiteMisfit = 0.04;  // metres; examples/site/README.md
  const std::string system = examples + "/site/system.json",
                    points = examples + "/site/control.csv";
  const auto frame = LoadSystem(system, ProjectionNeed::optional);
  const Calibration site(*frame, ReadControl({points}).points, {});
  const std::string text = site.SystemText(ReadSystemText(system), system, "site.json");
  WriteTextFiles({{"site.json", text}, {"report.html", CalibrationPage(site, {points, system})}});
  return Agrees(*LoadSystem("EPSG:28992"), kGridDistortion) &&
         Agrees(*LoadSystem("site.json"), kSiteMisfit);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return argc == 2 && Run(argv[1]) ? 0 : 1;
  } catch (const UserError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
