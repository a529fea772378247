#include "files/system/ellipsoid_names.h"

#include "files/words/name_match.h"

namespace geomath_files {
namespace {

// Defining constants. Where a publisher gives a and b, 1/f = a/(a − b).
constexpr NamedEllipsoid kEllipsoids[] = {
    {"WGS84", 6378137.0, 298.257223563},          // NGA.STND.0036, 2014
    {"GRS80", 6378137.0, 298.257222101},          // Moritz 1980, Geodetic Reference System 1980
    {"WGS72", 6378135.0, 298.26},                 // Seppelin 1974, Department of Defense WGS 1972
    {"Airy 1830", 6377563.396, 299.3249646},      // Ordnance Survey, D00659, annexe A
    {"Airy Modified", 6377340.189, 299.3249646},  // Ordnance Survey Ireland, 1996
    {"Australian National", 6378160.0, 298.25},   // Australian Map Grid manual, 1968
    {"Bessel 1841", 6377397.155, 299.1528128},    // Bessel 1841, Astron. Nachr. 19 (438)
    {"Clarke 1866", 6378206.4, 294.978698214},    // Snyder 1987, table 1: b = 6356583.8 m
    {"Clarke 1880 (RGS)", 6378249.145, 293.465},  // EPSG 7012
    {"Everest 1830", 6377276.345, 300.8017},      // NIMA TR8350.2, 2000, appendix A
    {"GRS67", 6378160.0, 298.247167427},          // Geodetic Reference System 1967
    {"Helmert 1906", 6378200.0, 298.3},           // NIMA TR8350.2, 2000, appendix A
    {"International 1924", 6378388.0, 297.0},     // Hayford 1909; IUGG, Madrid 1924
    {"Krassovsky 1940", 6378245.0, 298.3},        // NIMA TR8350.2, 2000, appendix A
    {"PZ-90", 6378136.0, 298.257839303},          // Parametry Zemli 1990
};

}  // namespace

std::span<const NamedEllipsoid> NamedEllipsoids() { return kEllipsoids; }

std::vector<std::string> EllipsoidNames() {
  std::vector<std::string> names;
  for (const NamedEllipsoid& row : kEllipsoids) names.emplace_back(row.name);
  return names;
}

const NamedEllipsoid* FindEllipsoid(const std::string& name) {
  for (const NamedEllipsoid& row : kEllipsoids) {
    if (SameName(row.name, name)) return &row;
  }
  return nullptr;
}

}  // namespace geomath_files
