// Published velocity grids and the deformation model of New Zealand beside PROJ.
#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <random>
#include <string>

#include "files/models/shift_file.h"
#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/frame/deformation_model.h"
#include "geomath/frame/frame_change.h"
#include "geomath/frame/velocity_grid.h"
#include "tests/support/reference_data.h"

namespace zel_cs::geomath {
namespace {

constexpr double kSameMetres = 1e-5;
constexpr double kEarthRadius = 6378137;
const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

class Peer {
 public:
  // Grids that a model names are looked for in `folder`.
  explicit Peer(const std::string& definition, const std::string& folder = "")
      : context_(proj_context_create()) {
    const char* const paths[] = {folder.c_str(), "/usr/share/proj"};
    if (!folder.empty()) proj_context_set_search_paths(context_, 2, paths);
    pj_ = proj_create(context_, definition.c_str());
  }
  ~Peer() {
    proj_destroy(pj_);
    proj_context_destroy(context_);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  explicit operator bool() const { return pj_ != nullptr; }
  PJ_COORD Run(bool forward, double x, double y, double z, double t) const {
    proj_errno_reset(pj_);
    return proj_trans(pj_, forward ? PJ_FWD : PJ_INV, proj_coord(x, y, z, t));
  }

 private:
  PJ_CONTEXT* context_;
  PJ* pj_;
};

double Distance(const PJ_COORD& a, const double (&b)[3]) {
  const double d = std::hypot(a.xyz.x - b[0], a.xyz.y - b[1], a.xyz.z - b[2]);
  return std::isnan(d) ? HUGE_VAL : d;
}

// The files as the library of files reads them.
std::shared_ptr<const VelocityGrid> Velocities(const std::string& path, double epoch) {
  return std::dynamic_pointer_cast<const VelocityGrid>(
      geomath_files::OpenShift({.file = path, .epoch = epoch}));
}

struct Region {
  const char* file;
  double south, north, west, east;  // degrees, within the grid
};

void PrintTo(const Region& region, std::ostream* out) { *out << region.file; }

class VelocityPeer : public testing::TestWithParam<Region> {};

TEST_P(VelocityPeer, AgreesBothWays) {
  const Region& region = GetParam();
  REQUIRE_REFERENCE_FILE(path, std::string("grids/") + region.file);
  const auto grid = Velocities(path.string(), 2000);
  ASSERT_TRUE(grid);
  const Peer peer("+proj=deformation +t_epoch=2000 +ellps=GRS80 +grids=" + path.string());
  ASSERT_TRUE(peer);
  std::mt19937 random(17);
  std::uniform_real_distribution<> lat(region.south, region.north), lon(region.west, region.east);
  std::uniform_real_distribution<> date(1985, 2040), height(-100, 3000);
  double worst = 0, turnBack = 0;
  for (int i = 0; i < 2000; ++i) {
    double p[] = {lat(random) * kRadPerDeg, lon(random) * kRadPerDeg, height(random)};
    const double t = date(random);
    kGrs80.BLH_to_XYZ_Batch(p, p + 1, p + 2, 1);
    // PROJ's own inverse is up to some millimetres off; its forward shows that ours is not.
    double to[] = {p[0], p[1], p[2]}, from[] = {p[0], p[1], p[2]};
    ASSERT_TRUE(grid->Forward(to[0], to[1], to[2], t));
    ASSERT_TRUE(grid->Inverse(from[0], from[1], from[2], t));
    worst = std::max(worst, Distance(peer.Run(true, p[0], p[1], p[2], t), to));
    worst = std::max(worst, Distance(peer.Run(true, from[0], from[1], from[2], t), p));
    ASSERT_TRUE(grid->Inverse(to[0], to[1], to[2], t));
    turnBack = std::max(turnBack, std::hypot(to[0] - p[0], to[1] - p[1], to[2] - p[2]));
  }
  EXPECT_LE(worst, kSameMetres);
  EXPECT_LE(turnBack, 3e-9);  // 1 nm and the rounding of 6.4e6 m in three coordinates, twice
  std::cout << region.file << ": worst difference " << worst << " m, there and back " << turnBack
            << " m\n";
}

INSTANTIATE_TEST_SUITE_P(
    Grids, VelocityPeer,
    testing::Values(Region{"eur_nkg_nkgrf03vel_realigned.tif", 53.1, 72.9, 3.1, 39.9},
                    Region{"ca_nrc_NAD83v70VG.tif", 41.1, 84.9, -141.9, -40.1},
                    Region{"is_lmi_ISN_vel_beta.tif", 63.3, 66.7, -24.6, -13.3}));

// 21.5° E 63° N, one year: 40-digit evaluation of the grid.
TEST(VelocityGrid, WorkedNumber) {
  REQUIRE_REFERENCE_FILE(path, "grids/eur_nkg_nkgrf03vel_realigned.tif");
  const auto grid = Velocities(path.string(), 2000);
  ASSERT_TRUE(grid);
  double p[] = {63 * kRadPerDeg, 21.5 * kRadPerDeg, 0};
  kGrs80.BLH_to_XYZ_Batch(p, p + 1, p + 2, 1);
  ASSERT_TRUE(grid->Forward(p[0], p[1], p[2], 2001));
  kGrs80.XYZ_to_BLH_Batch(p, p + 1, p + 2, 1);
  EXPECT_NEAR(p[0] * kDegPerRad, 62.9999999937, 0.6e-10);
  EXPECT_NEAR(p[1] * kDegPerRad, 21.5000000049, 0.6e-10);
  EXPECT_NEAR(p[2], 0.0083, 0.6e-4);
  kGrs80.BLH_to_XYZ_Batch(p, p + 1, p + 2, 1);
  double far[] = {0, kEarthRadius, 0};
  EXPECT_EQ(grid->Forward(far[0], far[1], far[2], 2001).status, ShiftStatus::outside);
  EXPECT_EQ(grid->Inverse(p[0], p[1], p[2]).status, ShiftStatus::noDate);
}

// The way from ITRF2014 at the date to the national frames of the Nordic countries (Häkli et al. 2016,
// Journal of Geodetic Science 6): PROJ runs the same steps from its own copies of them.
struct Country {
  const char* name;
  double shift[3], rotation[3], ppm;  // NKG_ETRF00 to the national frame, table 8
  double epoch;
};
constexpr Country kCountries[] = {
    {"DK", {0.03863, 0.147, 0.02776}, {0.00617753, 5.064e-05, 4.729e-05}, -0.009420, 1994.704},
    {"EE", {0.12194, 0.02225, -0.03541}, {0.00227196, -0.00323934, 0.00247008}, -0.005626, 1997.56},
    {"FI", {0.07251, -0.13019, -0.11323}, {-0.00157399, -0.00308833, 0.00410332}, 0.013012, 1997},
    {"LV", {0.41812, -0.78105, -0.01335}, {-0.0216436, -0.0115184, 0.01719911}, 0.000757, 1992.75},
    {"LT",
     {0.05692, 0.11549, -0.00078},
     {0.00314291, -0.00147975, -0.00134758},
     -0.006182,
     2003.75},
    {"NO", {-0.13116, -0.02817, 0.02036}, {-0.00038674, 0.00408947, 0.00103588}, 0.006569, 1995},
    {"SE", {-0.01642, -0.00064, -0.0305}, {0.00187431, 0.00046382, 0.00228487}, 0.001861, 1999.5},
};

class NordicChain {
 public:
  NordicChain(const std::string& grid, const Country& country)
      : itrf2000_(FrameChange::Make(ReferenceFrame::itrf2014, ReferenceFrame::itrf2000)),
        etrf2000_(FrameChange::Make(ReferenceFrame::itrf2000, ReferenceFrame::etrf2000)),
        to2000_(Velocities(grid, 2000)),
        national_({country.shift[0], country.shift[1], country.shift[2]},
                  {country.rotation[0], country.rotation[1], country.rotation[2]},
                  country.ppm * 1e-6, RotationSense::positionVector) {
    chain_.SetGlobalEllipsoid(&kGrs80);
    const auto add = [&](const ChainShift& step) {
      ASSERT_TRUE(chain_.AddShift(ShiftPlace::beforeDatum, step));
    };
    add({.shift = itrf2000_.get()});
    add({.shift = etrf2000_.get()});
    add({.shift = to2000_.get(), .direction = ShiftDirection::inverse});
    add({.shift = &national_});
    add({.shift = to2000_.get(), .date = country.epoch});
  }
  const CoordinateChain* operator->() const { return &chain_; }

 private:
  std::unique_ptr<FrameChange> itrf2000_, etrf2000_;
  std::shared_ptr<const VelocityGrid> to2000_;
  SmallAngleSimilarity national_;
  CoordinateChain chain_;
};

// Twelve stations. PROJ's own inverse of a velocity grid is up to some millimetres off, so that it
// runs the way back to 2000.0 with the velocities at the date, 1e-7 m from those at the epoch.
TEST(NordicChain, AgreesWithThePeerInSevenCountries) {
  REQUIRE_REFERENCE_FILE(path, "grids/eur_nkg_nkgrf03vel_realigned.tif");
  constexpr double kStations[][2] = {{55.74, 12.5}, {56.1, 9.5},  {58.8, 25.3}, {60.2, 24.4},
                                     {66.9, 26.1},  {56.9, 24.1}, {55.2, 23.9}, {59.9, 10.7},
                                     {69.6, 18.9},  {59.3, 18.0}, {63.6, 19.5}, {57.4, 11.9}};
  double worst = 0;
  for (const Country& c : kCountries) {
    const NordicChain chain(path.string(), c);
    char text[1200];
    std::snprintf(text, sizeof text,
                  "+proj=pipeline +ellps=GRS80 +step +proj=cart"
                  " +step +init=ITRF2014:ITRF2000"
                  " +step +proj=helmert +x=0.054 +y=0.051 +z=-0.048 +rx=0.000891 +ry=0.00539"
                  " +rz=-0.008712 +drx=8.1e-05 +dry=0.00049 +drz=-0.000792 +t_epoch=2000"
                  " +convention=position_vector"
                  " +step +proj=deformation +dt=-23.4 +grids=%s"
                  " +step +proj=helmert +x=%.10g +y=%.10g +z=%.10g +rx=%.10g +ry=%.10g +rz=%.10g"
                  " +s=%.10g +convention=position_vector"
                  " +step +proj=deformation +dt=%.10g +grids=%s +step +inv +proj=cart",
                  path.c_str(), c.shift[0], c.shift[1], c.shift[2], c.rotation[0], c.rotation[1],
                  c.rotation[2], c.ppm, c.epoch - 2000, path.c_str());
    const Peer peer(text);
    ASSERT_TRUE(peer) << c.name;
    for (const auto& station : kStations) {
      const double given[] = {station[0] * kRadPerDeg, station[1] * kRadPerDeg, 55};
      double p[] = {given[0], given[1], given[2]};
      ASSERT_TRUE(chain->ToLocal(p[0], p[1], p[2], 2023.4)) << c.name;
      const PJ_COORD out = peer.Run(true, given[1], given[0], given[2], 2023.4);
      worst = std::max(worst, kEarthRadius * std::hypot(p[0] - out.lpz.phi,
                                                        (p[1] - out.lpz.lam) * std::cos(p[0])));
      worst = std::max(worst, std::abs(p[2] - out.lpz.z));
      ASSERT_TRUE(chain->ToGlobal(p[0], p[1], p[2], 2023.4));
      EXPECT_NEAR(p[0], given[0], 5e-16);
      EXPECT_NEAR(p[1], given[1], 5e-16);
      EXPECT_NEAR(p[2], given[2], 5e-9);
    }
  }
  EXPECT_LE(worst, kSameMetres);
  std::cout << "worst difference " << worst << " m\n";
}

const DeformationModel* NewZealand(const std::string& path) {
  static const auto model = geomath_files::OpenShift({.file = path});
  return dynamic_cast<const DeformationModel*>(model.get());
}

struct Worked {
  double b, l, h, date, toB, toL, toH;
};

// Evaluations of the published grids in 40 digits, and the documented point of the format.
constexpr Worked kWorked[] = {
    {-43.55, 172.6, 10, 2010.0, -43.5499974450, 172.5999935619, 10.1015249},
    {-43.55, 172.6, 10, 2011.2, -43.5499968084, 172.5999949843, 10.0366760},
    {-43.55, 172.6, 10, 2016.0, -43.5499956983, 172.5999936066, 10.0305820},
    {-43.55, 172.6, 10, 2026.9, -43.5499932702, 172.5999890627, 10.0},
    {-44.5105886020, 166.7133850980, 293.3700, 2007.689, -44.5105852371, 166.7133857242,
     293.3858239},
};

TEST(DeformationModel, WorkedNumbersBothWays) {
  REQUIRE_REFERENCE_FILE(path, "grids/nz_linz_nzgd2000-20180701.json");
  const DeformationModel* model = NewZealand(path.string());
  ASSERT_TRUE(model);
  for (const Worked& w : kWorked) {
    double b = w.b * kRadPerDeg, l = w.l * kRadPerDeg, h = w.h;
    ASSERT_TRUE(model->Forward(b, l, h, w.date));
    EXPECT_NEAR(b * kDegPerRad, w.toB, 0.6e-10);
    EXPECT_NEAR(l * kDegPerRad, w.toL, 0.6e-10);
    EXPECT_NEAR(h, w.toH, 0.6e-7);
    b = w.toB * kRadPerDeg;
    l = w.toL * kRadPerDeg;
    h = w.toH;
    ASSERT_TRUE(model->Inverse(b, l, h, w.date));
    EXPECT_NEAR(b * kDegPerRad, w.b, 0.6e-10);
    EXPECT_NEAR(l * kDegPerRad, w.l, 0.6e-10);
    EXPECT_NEAR(h, w.h, 0.6e-7);
  }
}

TEST(DeformationModel, NewZealandAgreesAtTenThousandPointsAndTenDates) {
  REQUIRE_REFERENCE_FILE(path, "grids/nz_linz_nzgd2000-20180701.json");
  const DeformationModel* model = NewZealand(path.string());
  ASSERT_TRUE(model);
  const Peer peer("+proj=defmodel +ellps=GRS80 +model=" + path.string(),
                  path.parent_path().string());
  ASSERT_TRUE(peer);
  constexpr double kDates[] = {1995.3, 2000.0,  2003.8, 2005.1, 2008.0,
                               2010.9, 2011.35, 2013.7, 2016.9, 2026.9};
  std::mt19937 random(17);
  std::uniform_real_distribution<> lat(-57.9, -25.1), lon(158.1, 193.9);
  std::uniform_real_distribution<> nearLat(-47.5, -34), nearLon(165.9, 179);
  double worst = 0, turnBack = 0;
  int noOrigin = 0, unmoved = 0;
  for (int i = 0; i < 10000; ++i) {
    const bool island = i % 4 != 0;
    const double b0 = (island ? nearLat : lat)(random)*kRadPerDeg;
    const double l0 = (island ? nearLon : lon)(random)*kRadPerDeg;
    for (const double t : kDates) {
      double b = b0, l = l0, h = 50;
      ASSERT_TRUE(model->Forward(b, l, h, t)) << b0 * kDegPerRad << ' ' << l0 * kDegPerRad;
      const PJ_COORD out = peer.Run(true, l0, b0, 50, t);
      const double d = std::hypot(
          kEarthRadius * (b - out.lpz.phi),
          kEarthRadius * std::remainder(l - out.lpz.lam, kTwoPi) * std::cos(b), h - out.lpz.z);
      worst = d <= worst ? worst : d;
      unmoved += out.lpz.phi == b0;
      if (const ShiftResult back = model->Inverse(b, l, h, t)) {
        turnBack = std::max(turnBack, std::hypot(kEarthRadius * (b - b0),
                                                 kEarthRadius * (l - l0) * std::cos(b), h - 50));
      } else {
        ++noOrigin;
      }
    }
  }
  EXPECT_LE(worst, kSameMetres);
  EXPECT_LE(turnBack, 5e-9);  // the rounding of 3.1 rad is 2.8 nm
  EXPECT_EQ(noOrigin, 0);
  EXPECT_LE(unmoved, 10000);  // at the epoch of the model, 2000.0
  std::cout << "worst difference " << worst << " m, there and back " << turnBack << " m\n";
}

TEST(DeformationModel, RefusesOtherYearsAndPlaces) {
  REQUIRE_REFERENCE_FILE(path, "grids/nz_linz_nzgd2000-20180701.json");
  const DeformationModel* model = NewZealand(path.string());
  ASSERT_TRUE(model);
  double b = -0.75, l = 3.0, h = 0;
  EXPECT_EQ(model->Forward(b, l, h, 2050.1).status, ShiftStatus::otherDate);
  EXPECT_EQ(model->Inverse(b, l, h, 1899).status, ShiftStatus::otherDate);
  EXPECT_EQ(model->Forward(b, l, h).status, ShiftStatus::noDate);
  double north = 0.3;
  EXPECT_EQ(model->Forward(north, l, h, 2020).status, ShiftStatus::outside);
  CoordinateChain chain;
  chain.AddShift(ShiftPlace::beforeDatum, {.shift = model, .direction = ShiftDirection::inverse});
  EXPECT_EQ(chain.ToLocal(north, l, h, 2020).failedAt, ChainStep::pointMotion);
  EXPECT_EQ(chain.ToLocal(b, l, h, 2051).failedAt, ChainStep::modelYears);
}

}  // namespace
}  // namespace zel_cs::geomath
