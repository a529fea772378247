// The NTv2 grids of Debian's proj-data beside PROJ.
#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>
#include <string>

#include "geomath/base/angle.h"
#include "geomath/shift/ntv2_file.h"

namespace zel_cs::geomath {
namespace {

constexpr double kSameMetres = 1e-5;
constexpr double kEarthRadius = 6371000;

struct File {
  const char* name;
  double south, north, west, east;  // degrees, within its limits
};

void PrintTo(const File& file, std::ostream* out) { *out << file.name; }

class Ntv2Peer : public testing::TestWithParam<File> {};

TEST_P(Ntv2Peer, AgreesBothWays) {
  const File& file = GetParam();
  const std::string path = std::string("/usr/share/proj/") + file.name;
  if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " is absent";
  const auto grid = ReadNtv2File(path.c_str());
  ASSERT_TRUE(grid);
  PJ_CONTEXT* context = proj_context_create();
  PJ* peer = proj_create(context, ("+proj=hgridshift +grids=" + path).c_str());
  ASSERT_TRUE(peer);
  std::mt19937 random(16);
  std::uniform_real_distribution<> lat(file.south, file.north), lon(file.west, file.east);
  double worst = 0;
  for (int i = 0; i < 1000; ++i) {
    const double b0 = lat(random) * kRadPerDeg, l0 = lon(random) * kRadPerDeg;
    for (const PJ_DIRECTION direction : {PJ_FWD, PJ_INV}) {
      double b = b0, l = l0, h = 0;
      const bool converted =
          direction == PJ_FWD ? bool(grid->Forward(b, l, h)) : bool(grid->Inverse(b, l, h));
      ASSERT_TRUE(converted) << b0 << ' ' << l0;
      const PJ_COORD out = proj_trans(peer, direction, proj_coord(l0, b0, 0, 0));
      worst = std::max(
          worst, kEarthRadius * std::hypot(b - out.lp.phi,
                                           std::remainder(l - out.lp.lam, kTwoPi) * std::cos(b)));
    }
  }
  proj_destroy(peer);
  proj_context_destroy(context);
  EXPECT_LE(worst, kSameMetres);
  RecordProperty("worst_metres", std::to_string(worst));
}

INSTANTIATE_TEST_SUITE_P(ProjData, Ntv2Peer,
                         testing::Values(File{"BETA2007.gsb", 47, 55.1, 5.6, 15.5},
                                         File{"CHENYX06_etrs.gsb", 45.8, 47.8, 5.9, 10.4},
                                         File{"CHENYX06a.gsb", 45.8, 47.8, 5.9, 10.4},
                                         File{"ntf_r93.gsb", 41.1, 51.9, -5.4, 9.9},
                                         File{"nzgd2kgrid0005.gsb", -47.9, -34.1, 166.1, 178.9}));

}  // namespace
}  // namespace zel_cs::geomath
