#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "files/models/shift_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/shift/shift_grid.h"
#include "tests/support/proj_peer.h"
#include "tests/support/reference_data.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
namespace fs = std::filesystem;

namespace {

constexpr double kEarth = 6378137;   // metres for a radian
constexpr double kAgreement = 1e-5;  // metres
// PROJ 9.1 stays in the grid of Quebec where CENTRE1M, which lies in it, is finer.
constexpr const char* kQuebec = "ca_nrc_NA83SCRS.tif";
constexpr double kParent = 0.3;
// Points that one of the two refuses: coming back beside an edge, where PROJ's first step leaves the
// grid, and beside holes, where PROJ weighs the nodes that are left.
constexpr int kAlone = 100;
constexpr int kPoints = 10000;  // of each file, both ways

struct Point {
  double b, l, h;  // radians, metres
};

// Metres on the ground and in height.
double Distance(const Point& p, const Point& q) {
  return std::hypot(kEarth * (p.b - q.b),
                    kEarth * std::remainder(p.l - q.l, kTwoPi) * std::cos(p.b), p.h - q.h);
}

// What PROJ 9.1 runs a grid by; nothing for plane grids, those of three offsets and those of NADCON 5,
// which it interpolates bilinearly.
std::string OperationOf(const CoordinateShift& shift, const std::string& file) {
  if (shift.Space() == ShiftSpace::geocentric)
    return "+proj=pipeline +step +proj=cart +ellps=clrk80ign +step +proj=xyzgridshift +grids=" +
           file + " +grid_ref=output_crs +ellps=GRS80 +step +inv +proj=cart +ellps=GRS80";
  const auto* grid = dynamic_cast<const ShiftGrid*>(&shift);
  if (!grid || shift.Space() != ShiftSpace::geographic ||
      grid->Interpolation() != ShiftInterpolation::bilinear)
    return {};
  if (grid->Components() == ShiftComponents::horizontal) return "+proj=hgridshift +grids=" + file;
  if (grid->Components() == ShiftComponents::vertical) return "+proj=vgridshift +grids=" + file;
  return {};
}

class Peer {
 public:
  explicit Peer(const std::string& definition)
      : context_(proj_context_create()), pj_(proj_create(context_, definition.c_str())) {}
  ~Peer() {
    proj_destroy(pj_);
    proj_context_destroy(context_);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  bool Good() const { return pj_ != nullptr; }
  Point Run(const Point& p, bool inverse) const {
    const PJ_COORD q =
        proj_trans(pj_, inverse ? PJ_INV : PJ_FWD, proj_coord(p.l, p.b, p.h, HUGE_VAL));
    return {q.v[1], q.v[0], q.v[2]};
  }

 private:
  PJ_CONTEXT* context_;
  PJ* pj_;
};

// Geocentric translations stand between the two ellipsoids of France.
bool Run(const CoordinateShift& shift, bool inverse, Point& p) {
  const auto step = [&](double& x, double& y, double& z) {
    return bool(inverse ? shift.Inverse(x, y, z) : shift.Forward(x, y, z));
  };
  if (shift.Space() == ShiftSpace::geographic) return step(p.b, p.l, p.h);
  Ellipsoid clarke = MakeEllipsoid(6378249.2, 293.4660212936269);
  Ellipsoid grs80 = MakeEllipsoid(6378137, 298.257222101);
  if (inverse) std::swap(clarke, grs80);
  return clarke.BLH_to_XYZ_Batch(&p.b, &p.l, &p.h, 1, 1) == 1 && step(p.b, p.l, p.h) &&
         grs80.XYZ_to_BLH_Batch(&p.b, &p.l, &p.h, 1, 1) == 1;
}

// PROJ does not tell that of translations: France.
PJ_GRID_INFO ExtentOf(const CoordinateShift& shift, const std::string& file) {
  if (shift.Space() != ShiftSpace::geocentric) return proj_grid_info(file.c_str());
  PJ_GRID_INFO france{};
  france.lowerleft = {-4.9 * kRadPerDeg, 41.1 * kRadPerDeg};
  france.upperright = {9.9 * kRadPerDeg, 51.4 * kRadPerDeg};
  return france;
}

struct Comparison {
  double worst[2] = {0, 0};
  int compared = 0, alone = 0;  // the latter refused by one of the two
};

Comparison Compare(const CoordinateShift& shift, const Peer& peer, const PJ_GRID_INFO& extent) {
  std::mt19937 random(2026);
  std::uniform_real_distribution<double> latitude(extent.lowerleft.phi, extent.upperright.phi);
  std::uniform_real_distribution<double> longitude(extent.lowerleft.lam, extent.upperright.lam);
  std::uniform_real_distribution<double> height(0, 3000);
  Comparison result;
  for (int i = 0; i < kPoints; ++i) {
    const Point p{latitude(random), longitude(random), height(random)};
    for (const bool inverse : {false, true}) {
      const Point expected = peer.Run(p, inverse);
      Point q = p;
      const bool done = Run(shift, inverse, q);
      if (done != std::isfinite(expected.b)) ++result.alone;
      if (!done || !std::isfinite(expected.b)) continue;
      ++result.compared;
      result.worst[inverse] = std::max(result.worst[inverse], Distance(q, expected));
    }
  }
  return result;
}

std::vector<fs::path> GridsIn(const fs::path& folder) {
  std::vector<fs::path> files;
  if (!fs::exists(folder)) return files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == ".tif" || entry.path().extension() == ".gsb")
      files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

void CompareAll(const fs::path& folder) {
  for (const fs::path& file : GridsIn(folder)) {
    const std::string name = file.filename().string();
    std::shared_ptr<const CoordinateShift> shift;
    try {
      shift = OpenShift({.file = file.string(), .position = GridPosition::target});
    } catch (const UserError& error) {
      std::cout << name << ": not read: " << error.what() << "\n";
      continue;
    }
    const std::string operation = OperationOf(*shift, file.string());
    const Peer peer(operation);
    const PJ_GRID_INFO extent = ExtentOf(*shift, file.string());
    if (operation.empty() || !peer.Good()) {
      std::cout << name << ": not run by PROJ\n";
      continue;
    }
    const Comparison c = Compare(*shift, peer, extent);
    std::cout << name << ": " << c.worst[0] << " m forward, " << c.worst[1] << " m back\n";
    EXPECT_GT(c.compared, kPoints / 10) << name;
    const double tolerance = name == kQuebec ? kParent : kAgreement;
    EXPECT_LE(c.worst[0], tolerance) << name;
    EXPECT_LE(c.worst[1], tolerance) << name;
    EXPECT_LE(c.alone, kAlone) << name;
  }
}

// A file of NADCON 5 as GDAL reads it, interpolated as its memorandum says (Smith and Bilich 2019, NOAA
// Technical Memorandum NOS NGS 84): parabolas in their Lagrange form and extended precision.
class Nadcon5 {
 public:
  explicit Nadcon5(const fs::path& file) {
    const std::unique_ptr<GDALDataset> raster(GDALDataset::Open(file.c_str()));
    double t[6];
    raster->GetGeoTransform(t);
    columns_ = raster->GetRasterXSize();
    rows_ = raster->GetRasterYSize();
    north_ = t[3] + t[5] / 2;
    west_ = t[0] + t[1] / 2;
    step_ = t[1];
    for (int k = 0; k < 2; ++k) {
      seconds_[k].resize(static_cast<std::size_t>(columns_ * rows_));
      EXPECT_EQ(
          raster->GetRasterBand(k + 1)->RasterIO(GF_Read, 0, 0, columns_, rows_, seconds_[k].data(),
                                                 columns_, rows_, GDT_Float32, 0, 0),
          CE_None);
    }
  }

  PJ_GRID_INFO Extent() const {
    PJ_GRID_INFO extent{};
    extent.lowerleft = {west_ * kRadPerDeg, (north_ - (rows_ - 1) * step_) * kRadPerDeg};
    extent.upperright = {(west_ + (columns_ - 1) * step_) * kRadPerDeg, north_ * kRadPerDeg};
    return extent;
  }

  // Both directions take the shift at the point that they are given.
  Point Shifted(const Point& p, double sign) const {
    const long double fromSouth = (p.b * kDegPerRad - north_) / step_ + rows_ - 1;
    const long double fromWest = (p.l * kDegPerRad - west_) / step_;
    const int row = WindowStart(fromSouth, rows_), column = WindowStart(fromWest, columns_);
    Point q = p;
    double* const to[] = {&q.b, &q.l};
    for (int k = 0; k < 2; ++k) {
      long double lines[3];
      for (int r = 0; r < 3; ++r) {
        const auto first = static_cast<std::size_t>((rows_ - 1 - row - r) * columns_ + column);
        lines[r] = Parabola(fromWest - column, &seconds_[k][first]);
      }
      *to[k] += sign * static_cast<double>(Parabola(fromSouth - row, lines)) / 3600 * kRadPerDeg;
    }
    return q;
  }

 private:
  static int WindowStart(long double x, int nodes) {
    const int cell = std::min(static_cast<int>(x), nodes - 2);
    return (x - cell <= 0.5L && cell > 0) || cell + 2 >= nodes ? cell - 1 : cell;
  }
  template <class Value>
  static long double Parabola(long double x, const Value* f) {
    return f[0] * (x - 1) * (x - 2) / 2 - f[1] * x * (x - 2) + f[2] * x * (x - 1) / 2;
  }

  int columns_, rows_;
  double north_, west_, step_;  // degrees
  std::vector<float> seconds_[2];
};

}  // namespace

TEST(ShiftFiles, InterpolateNadcon5AsItsMemorandumSays) {
  REQUIRE_REFERENCE_FILE(grids, "grids");
  constexpr double kSinglePrecision = 6e-6;  // metres: nodes of up to 100 m, kept in radians
  int files = 0;
  for (const fs::path& file : GridsIn(grids)) {
    if (file.filename().string().find("nadcon5") == std::string::npos) continue;
    ++files;
    const auto shift = OpenShift({.file = file.string()});
    const Nadcon5 memorandum(file);
    const PJ_GRID_INFO extent = memorandum.Extent();
    std::mt19937 random(5);
    std::uniform_real_distribution<double> b(extent.lowerleft.phi, extent.upperright.phi);
    std::uniform_real_distribution<double> l(extent.lowerleft.lam, extent.upperright.lam);
    for (int i = 0; i < kPoints; ++i) {
      const Point p{b(random), l(random), 0};
      for (const bool inverse : {false, true}) {
        Point q = p;
        ASSERT_TRUE(::Run(*shift, inverse, q)) << file;
        ASSERT_LE(Distance(q, memorandum.Shifted(p, inverse ? -1 : 1)), kSinglePrecision) << file;
      }
    }
  }
  EXPECT_EQ(files, 2);
}

TEST(ShiftFilesBesideProj, AgreeForFilesOfProj) { CompareAll("/usr/share/proj"); }

TEST(ShiftFilesBesideProj, AgreeForFilesOfTheReferenceData) {
  REQUIRE_REFERENCE_FILE(grids, "grids");
  CompareAll(grids);
}
