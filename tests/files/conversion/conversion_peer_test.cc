// Conversions between national systems beside PROJ's best operation with the same grids.
#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "files/conversion/conversion.h"
#include "files/epsg/epsg_registry.h"
#include "geomath/base/angle.h"
#include "tests/files/epsg/registry_peer.h"
#include "tests/support/reference_data.h"

using namespace geomath_files;
using namespace zel_cs::geomath;

namespace {

constexpr double kAgreement = 1e-4;  // metres: a tenth of what surveyors measure
constexpr double kRoundTrip = 1e-4;  // metres; New Zealand Map Grid leaves half of it
constexpr double kEarth = 6378137;   // metres for a radian

using Point = std::array<double, 3>;

// How PROJ orders the coordinates of a system, and in which units.
struct PeerAxes {
  std::size_t north = 0, east = 1;
  double unit = 1;    // metres, or degrees in a radian's place
  double height = 1;  // metres
  bool angles = false;
};

class Peer {
 public:
  Peer() : context_(ContextWith(ReferenceFile("grids").string())) {}

  bool Take(const std::string& from, const std::string& to) {
    change_.reset(proj_create_crs_to_crs(context_.get(), from.c_str(), to.c_str(), nullptr));
    const Owned<PJ> source(proj_create(context_.get(), from.c_str()));
    const Owned<PJ> target(proj_create(context_.get(), to.c_str()));
    enter_.reset(proj_create_crs_to_crs(context_.get(), "EPSG:4326", from.c_str(), nullptr));
    from_ = AxesOf(source.get());
    to_ = AxesOf(target.get());
    return change_ && enter_;
  }

  // A place, degrees, in the source system, in the order and the units of ours.
  Point Enter(double latitude, double longitude, double height) const {
    const PJ_COORD at =
        proj_trans(enter_.get(), PJ_FWD, proj_coord(latitude, longitude, 0, HUGE_VAL));
    Point point = Ours(at, from_);
    if (from_.north != 2) point[2] = height;
    return point;
  }
  Point Run(const Point& point, bool inverse, double date = HUGE_VAL) const {
    const PeerAxes &from = inverse ? to_ : from_, &to = inverse ? from_ : to_;
    PJ_COORD at = Theirs(point, from);
    at.xyzt.t = date;
    return Ours(proj_trans(change_.get(), inverse ? PJ_INV : PJ_FWD, at), to);
  }
  // Metres between two points of the target, or of the source.
  double Distance(const Point& p, const Point& q, bool inSource) const {
    const PeerAxes& axes = inSource ? from_ : to_;
    double dn = p[0] - q[0], de = p[1] - q[1];
    if (axes.angles) {
      de = std::remainder(de, 360) * kRadPerDeg * kEarth * std::cos(p[0] * kRadPerDeg);
      dn *= kRadPerDeg * kEarth;
    } else {
      dn *= axes.unit;
      de *= axes.unit;
    }
    return std::hypot(dn, de, (p[2] - q[2]) * axes.height);
  }

 private:
  static Point Ours(const PJ_COORD& at, const PeerAxes& axes) {
    const double unit = axes.angles ? axes.unit * kDegPerRad : 1;
    return {at.v[axes.north] * unit, at.v[axes.east] * unit, at.v[2]};
  }
  static PJ_COORD Theirs(const Point& point, const PeerAxes& axes) {
    const double unit = axes.angles ? axes.unit * kDegPerRad : 1;
    PJ_COORD at = proj_coord(0, 0, point[2], HUGE_VAL);
    at.v[axes.north] = point[0] / unit;
    at.v[axes.east] = point[1] / unit;
    return at;
  }

  PeerAxes AxesOf(const PJ* crs) const {
    PeerAxes axes;
    const PJ_TYPE type = proj_get_type(crs);
    if (type == PJ_TYPE_COMPOUND_CRS) {
      axes = AxesOf(Owned<PJ>(proj_crs_get_sub_crs(context_.get(), crs, 0)).get());
      const Owned<PJ> heights(proj_crs_get_sub_crs(context_.get(), crs, 1));
      const Owned<PJ> system(proj_crs_get_coordinate_system(context_.get(), heights.get()));
      proj_cs_get_axis_info(context_.get(), system.get(), 0, nullptr, nullptr, nullptr,
                            &axes.height, nullptr, nullptr, nullptr);
      return axes;
    }
    const Owned<PJ> system(proj_crs_get_coordinate_system(context_.get(), crs));
    if (type == PJ_TYPE_GEOCENTRIC_CRS) return axes;
    axes.angles = type != PJ_TYPE_PROJECTED_CRS;
    for (int i = 0; i < 2; ++i) {
      const char* direction = nullptr;
      proj_cs_get_axis_info(context_.get(), system.get(), i, nullptr, nullptr, &direction,
                            &axes.unit, nullptr, nullptr, nullptr);
      const std::string text = direction;
      (text == "north" || text == "south" ? axes.north : axes.east) = static_cast<std::size_t>(i);
    }
    return axes;
  }

  Owned<PJ_CONTEXT> context_;
  Owned<PJ> change_, enter_;
  PeerAxes from_, to_;
};

constexpr double kHeight = 100;  // metres

// Angles of geographic coordinates.
void Scale(Point& point, EndKind kind, double factor) {
  if (kind != EndKind::geographic) return;
  point[0] *= factor;
  point[1] *= factor;
}

void Convert(const Conversion& conversion, Point& point, bool toTarget, double date = kNoDate) {
  const EndKind source = conversion.Source().Kind(), target = conversion.Target().Kind();
  ConversionOutcome outcome;
  Scale(point, toTarget ? source : target, kRadPerDeg);
  if (toTarget)
    conversion.ToTarget(&point[0], &point[1], &point[2], 1, &outcome, PointDates(date));
  else
    conversion.ToSource(&point[0], &point[1], &point[2], 1, &outcome, PointDates(date));
  Scale(point, toTarget ? target : source, kDegPerRad);
  EXPECT_TRUE(outcome) << ChainStepName(outcome.failed);
}

// What PROJ leaves, metres. It has Paris at 2°20′14.025″ in radians of 15 digits, the registry at
// 2.5969213 grads.
constexpr double kParis = 4e-4;
// It takes the transposed matrix of small angles for the inverse one.
constexpr double kTransposed = 5e-3;
// GRS80 and WGS 84, whose semi-minor axes differ by 0.1 mm, are one ellipsoid here.
constexpr double kOneEllipsoid = 1.2e-4;
// The registry rounds the skew angle of the oblique Mercator, which here follows from the azimuth.
constexpr double kSkewAngle = 1e-3;

struct Pair {
  const char *from, *to;
  double south, west, north, east;               // degrees, where both are used
  double there = kAgreement, back = kAgreement;  // metres
  const char* operation = "";                    // where PROJ has no better one
};

const Pair kPairs[] = {
    // Projected to projected, by grids and by parameters.
    {"EPSG:31467", "EPSG:25832", 47.5, 7.6, 54.5, 10.4},
    {"EPSG:31468", "EPSG:25833", 47.8, 11.2, 53.5, 13.0},
    {"EPSG:31466", "EPSG:3034", 49.5, 6.2, 52.5, 7.4},
    {"EPSG:5678", "EPSG:25832", 47.8, 11.0, 50.0, 11.9},
    {"EPSG:27700", "EPSG:25830", 50.5, -4.5, 55.5, -1.0, kAgreement, kAgreement, "7709"},
    {"EPSG:27700", "EPSG:32630", 50.5, -4.5, 55.5, -1.0, kAgreement, kAgreement, "7710"},
    {"EPSG:28992", "EPSG:25831", 51.3, 4.5, 53.0, 5.9, kAgreement, kAgreement, "9282"},
    {"EPSG:28992", "EPSG:25832", 52.0, 6.1, 52.9, 6.9, kAgreement, kAgreement, "9282"},
    {"EPSG:31370", "EPSG:3812", 50.0, 3.2, 51.2, 5.8},
    {"EPSG:31370", "EPSG:25831", 50.0, 3.2, 51.2, 5.8},
    {"EPSG:27572", "EPSG:2154", 44.5, 0.0, 49.0, 5.0, kParis, kParis},
    {"EPSG:27561", "EPSG:2154", 48.5, 0.5, 49.8, 5.5, kParis, kParis},
    {"EPSG:21781", "EPSG:2056", 46.2, 6.6, 47.4, 9.5},
    {"EPSG:2056", "EPSG:25832", 46.2, 6.6, 47.4, 9.5},
    {"EPSG:31254", "EPSG:25832", 47.0, 9.8, 47.5, 11.6, kAgreement, kTransposed},
    {"EPSG:31256", "EPSG:25833", 47.0, 15.0, 47.7, 15.9, kAgreement, kTransposed},
    {"EPSG:3003", "EPSG:25832", 43.5, 7.5, 46.0, 11.5, kAgreement, kTransposed},
    {"EPSG:23030", "EPSG:25830", 37.5, -5.5, 42.5, -1.0},
    {"EPSG:20790", "EPSG:3763", 38.0, -9.0, 41.5, -7.0},
    {"EPSG:3021", "EPSG:3006", 56.5, 13.0, 65.0, 18.0, kAgreement, kTransposed},
    {"EPSG:27391", "EPSG:25832", 58.5, 5.5, 62.0, 8.5, kAgreement, kTransposed},
    {"EPSG:3120", "EPSG:2180", 50.0, 17.5, 52.5, 21.5},
    {"EPSG:3333", "EPSG:2180", 50.0, 17.0, 53.0, 19.0},
    {"EPSG:5514", "EPSG:25833", 49.8, 13.5, 50.6, 16.0, kAgreement, kTransposed},
    {"EPSG:5514", "EPSG:3045", 49.8, 13.5, 50.6, 16.0, kAgreement, kTransposed},
    {"EPSG:23700", "EPSG:25834", 46.0, 18.3, 48.0, 21.5},
    {"EPSG:3844", "EPSG:25835", 44.5, 24.2, 47.5, 29.0},
    {"EPSG:29902", "EPSG:2157", 52.0, -9.5, 55.0, -6.2, kOneEllipsoid, kOneEllipsoid},
    {"EPSG:29903", "EPSG:2157", 52.0, -9.5, 55.0, -6.2},
    {"EPSG:3057", "EPSG:32627", 64.0, -22.5, 66.0, -19.0},
    {"EPSG:28991", "EPSG:32631", 51.5, 4.5, 52.8, 5.9, kAgreement, kTransposed, "4833"},
    {"EPSG:2039", "EPSG:32636", 30.0, 34.6, 32.8, 35.4, kAgreement, kTransposed},
    {"EPSG:27200", "EPSG:2193", -45.0, 169.0, -36.0, 176.0},
    {"EPSG:20255", "EPSG:28355", -33.5, 144.5, -30.0, 148.0},
    {"EPSG:28355", "EPSG:7855", -37.5, 144.5, -30.0, 149.5},
    {"EPSG:30169", "EPSG:32654", 35.0, 138.6, 36.8, 140.7},
    {"EPSG:24378", "EPSG:32643", 29.0, 73.0, 33.0, 77.0},
    {"EPSG:3168", "EPSG:32647", 1.5, 100.5, 6.0, 102.0, kSkewAngle, kSkewAngle},
    {"EPSG:22992", "EPSG:32636", 25.0, 30.5, 31.0, 33.0, kAgreement, kTransposed},
    {"EPSG:26191", "EPSG:32629", 32.0, -8.5, 35.0, -6.1},
    {"EPSG:31981", "EPSG:29191", -8.0, -59.5, -2.0, -54.5},
    {"EPSG:29193", "EPSG:31983", -23.0, -47.0, -18.0, -43.0},
    {"EPSG:24879", "EPSG:2202", 8.0, -71.5, 10.5, -66.5, kAgreement, kTransposed},
    // Feet.
    {"EPSG:2263", "EPSG:26918", 40.5, -74.2, 41.0, -72.0},
    {"EPSG:2229", "EPSG:26911", 33.8, -118.8, 34.8, -117.8},
    {"EPSG:32040", "EPSG:2278", 28.2, -100.0, 30.0, -94.5, kAgreement, kAgreement, "1241"},
    {"EPSG:26741", "EPSG:26910", 40.2, -123.5, 41.5, -121.0, kAgreement, kAgreement, "1241"},
    {"EPSG:2222", "EPSG:26912", 31.6, -110.9, 34.5, -109.2},
    {"EPSG:2277", "EPSG:4326", 29.6, -104.0, 31.5, -94.5},
    {"EPSG:2256", "EPSG:26912", 45.0, -113.5, 48.5, -105.0},
    // Axes to the south and west.
    {"EPSG:2053", "EPSG:32735", -28.0, 28.2, -24.0, 29.8},
    {"EPSG:22279", "EPSG:32735", -29.0, 28.2, -24.0, 29.8},
    {"EPSG:2065", "EPSG:2180", 49.4, 15.2, 50.5, 18.2, kOneEllipsoid, kTransposed},
    // Geographic and geocentric.
    {"EPSG:4314", "EPSG:4258", 47.8, 7.0, 54.0, 13.0},
    {"EPSG:4277", "EPSG:4326", 50.5, -4.5, 55.5, -1.0},
    {"EPSG:4807", "EPSG:4171", 44.5, 0.0, 49.0, 5.0, kParis, kParis},
    {"EPSG:4267", "EPSG:4269", 30.5, -110.0, 44.0, -90.0},
    {"EPSG:4937", "EPSG:4936", 47.0, 7.0, 54.0, 13.0},
    {"EPSG:4936", "EPSG:25832", 47.0, 7.0, 54.0, 11.5},
    {"EPSG:4978", "EPSG:31467", 47.8, 7.6, 54.0, 10.4},
    {"EPSG:4326", "EPSG:4978", -60.0, -170.0, 60.0, 170.0},
    // With systems of heights.
    {"EPSG:4937", "EPSG:27700+5701", 50.5, -4.5, 55.5, -2.0, kAgreement, kAgreement, "7709"},
    {"EPSG:7415", "EPSG:4937", 51.5, 4.5, 52.8, 6.5, kAgreement, kAgreement, "9282"},
    {"EPSG:7415", "EPSG:25831", 51.5, 4.5, 52.8, 5.9, kAgreement, kAgreement, "9282"},
    {"EPSG:25832+7837", "EPSG:31467+7837", 48.0, 7.6, 54.0, 10.4},
    {"EPSG:5972", "EPSG:25832", 58.5, 7.5, 62.0, 10.5},
    {"EPSG:6349", "EPSG:6318", 30.0, -110.0, 45.0, -85.0},
};

}  // namespace

TEST(ConversionsOfNationalSystems, AgreeWithProj) {
  if (!std::filesystem::exists(ReferenceFile("grids"))) GTEST_SKIP() << "no grids";
  Peer peer;
  ConversionWish wish;
  wish.grids = {ReferenceFile("grids").string()};
  static_assert(std::size(kPairs) >= 60);
  for (const Pair& pair : kPairs) {
    SCOPED_TRACE(std::string(pair.from) + " to " + pair.to);
    ASSERT_TRUE(peer.Take(pair.from, pair.to));
    wish.operation = pair.operation;
    std::unique_ptr<Conversion> conversion, opposite;
    EXPECT_NO_THROW(conversion = std::make_unique<Conversion>(pair.from, pair.to, wish));
    EXPECT_NO_THROW(opposite = std::make_unique<Conversion>(pair.to, pair.from, wish));
    if (!conversion || !opposite) continue;
    double there = 0, back = 0, again = 0;
    constexpr int kLattice = 5;
    for (int i = 0; i < kLattice; ++i) {
      for (int j = 0; j < kLattice; ++j) {
        const double latitude = pair.south + (pair.north - pair.south) * (i + 0.37) / kLattice;
        const double longitude = pair.west + (pair.east - pair.west) * (j + 0.61) / kLattice;
        const Point given = peer.Enter(latitude, longitude, kHeight);
        Point point = given;
        Convert(*conversion, point, true);
        const Point expected = peer.Run(given, false);
        there = std::max(there, peer.Distance(point, expected, false));
        const Point target = point;
        Convert(*conversion, point, false);
        again = std::max(again, peer.Distance(point, given, true));
        point = target;
        Convert(*opposite, point, true);
        back = std::max(back, peer.Distance(point, peer.Run(target, true), true));
      }
    }
    EXPECT_LE(there, pair.there);
    EXPECT_LE(back, pair.back);
    EXPECT_LE(again, kRoundTrip);
  }
}

// Frames that move, with heights, both ways.
TEST(ConversionsOfMovingFrames, AgreeWithProj) {
  if (!std::filesystem::exists(ReferenceFile("grids"))) GTEST_SKIP() << "no grids";
  const Pair pairs[] = {
      {"EPSG:7789", "EPSG:7930", 36, -10, 70, 40},       // ITRF2014 to ETRF2000, geocentric
      {"EPSG:7911", "EPSG:8403", 36, -10, 70, 40},       // ITRF2008 to ETRF2014
      {"EPSG:7912", "EPSG:6319", 25, -120, 48, -70},     // ITRF2014 to NAD83(2011)
      {"EPSG:7911", "EPSG:8254", 45, -120, 65, -60},     // ITRF2008 to NAD83(CSRS)v7
      {"EPSG:7912", "EPSG:7843", -40, 115, -12, 150},    // ITRF2014 to GDA2020
      {"EPSG:7910", "EPSG:4939", -40, 115, -12, 150},    // ITRF2005 to GDA94
      {"EPSG:9989", "EPSG:7909", -60, -170, 60, 170},    // ITRF2020 to ITRF2000
      {"EPSG:7664", "EPSG:9989", -60, -170, 60, 170},    // WGS 84 (G1762) to ITRF2020
      {"EPSG:9989", "EPSG:4959", -46, 167, -35, 178.4},  // to NZGD2000, by a deformation model
  };
  constexpr double kDated = 1e-5;  // metres: PROJ's inverse misses by products of small angles
  Peer peer;
  ConversionWish wish;
  wish.grids = {ReferenceFile("grids").string()};
  for (const Pair& pair : pairs) {
    SCOPED_TRACE(std::string(pair.from) + " to " + pair.to);
    ASSERT_TRUE(peer.Take(pair.from, pair.to));
    const Conversion conversion(pair.from, pair.to, wish), opposite(pair.to, pair.from, wish);
    EXPECT_TRUE(conversion.NeedsDates());
    for (const double date : {1994.0, 2000.0, 2010.5, 2020.25, 2026.9}) {
      for (const double share : {0.13, 0.46, 0.82}) {
        const Point given = peer.Enter(pair.south + (pair.north - pair.south) * share,
                                       pair.west + (pair.east - pair.west) * share, kHeight);
        Point point = given;
        Convert(conversion, point, true, date);
        EXPECT_LE(peer.Distance(point, peer.Run(given, false, date), false), kDated) << date;
        const Point target = point;
        Convert(conversion, point, false, date);
        EXPECT_LE(peer.Distance(point, given, true), 1e-8) << date;
        point = target;
        Convert(opposite, point, true, date);
        EXPECT_LE(peer.Distance(point, peer.Run(target, true, date), true), kDated) << date;
      }
    }
  }
}

// ETRS89 and what the registry takes for it, as ETRF2000, from which it has no published way.
TEST(ConversionsOfMovingFrames, ReachNationalSystemsByTheTableOfFrames) {
  const auto run = [](const char* to, Point point) {
    const Conversion conversion("EPSG:9989", to, {});
    Convert(conversion, point, true, 2026.9);
    Point back = point;
    Convert(conversion, back, false, 2026.9);
    EXPECT_NEAR(back[0], 46.5, 1e-13) << to;
    EXPECT_NEAR(back[1], 3, 1e-13) << to;
    return point;
  };
  const Point given{46.5, 3, kHeight};
  const Point etrf2000 = run("EPSG:7931", given);
  // The registry of PROJ 9.5 and later has one set of ITRF2020 to ETRF2000, where the table has two.
  const Point ensemble = run("EPSG:4937", given);
  constexpr double kSameSum[] = {1e-13, 1e-13, 1e-8};  // degrees and metres: terms of second order
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(ensemble[c], etrf2000[c], kSameSum[c]);
  const Point lambert = run("EPSG:2154", given);
  Point expected = etrf2000;
  Convert(Conversion("EPSG:4171", "EPSG:2154", {}), expected, true);
  EXPECT_NEAR(lambert[0], expected[0], 1e-8);
  EXPECT_NEAR(lambert[1], expected[1], 1e-8);
}

// ---- publishers' routes ----

namespace {

// The rows of a published file of points, behind its header, without the name.
std::vector<std::vector<double>> ReadRows(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::vector<std::vector<double>> rows;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream fields(line.substr(line.find(',') + 1));
    std::vector<double>& row = rows.emplace_back();
    for (std::string field; std::getline(fields, field, ',');) row.push_back(std::stod(field));
  }
  return rows;
}

// Distances between published positions and grid coordinates by a conversion with a route, both ways.
void ExpectPublished(const char* grid, const char* points, std::size_t north, std::size_t east) {
  constexpr double kPrinted =
      1.2e-3;  // metres: both sides are printed to a millimetre, or nearly so
  ConversionWish wish;
  wish.grids = {ReferenceFile("grids").string()};
  const Conversion conversion("EPSG:4258", grid, wish), opposite(grid, "EPSG:4258", wish);
  for (const std::vector<double>& row : ReadRows(ReferenceFile(points))) {
    const Point position{row[0], row[1], 0}, plane{row[north], row[east], 0};
    Point point = position;
    Convert(conversion, point, true);
    EXPECT_NEAR(point[0], plane[0], kPrinted) << row[0] << ' ' << row[1];
    EXPECT_NEAR(point[1], plane[1], kPrinted) << row[0] << ' ' << row[1];
    Convert(conversion, point, false);
    EXPECT_NEAR(point[0], position[0], kRoundTrip / 110e3);
    EXPECT_NEAR(point[1], position[1], kRoundTrip / 65e3);
    point = plane;
    Convert(opposite, point, true);
    EXPECT_NEAR(point[0], position[0], kPrinted / 110e3);
    EXPECT_NEAR(point[1], position[1], kPrinted / 65e3);
  }
}

}  // namespace

TEST(ConversionsByRoutes, GiveThePointsOfOrdnanceSurvey) {
  REQUIRE_REFERENCE_FILE(grid, "grids/ostn15_plane_shifts.tif");
  ExpectPublished("EPSG:27700", "survey_points/gb_ostn15_points.csv", 4, 3);
}

// Its publisher has defined the Dutch route outside of its grid too.
TEST(ConversionsByRoutes, GiveThePointsOfTheNetherlands) {
  REQUIRE_REFERENCE_FILE(grid, "grids/nl_nsgi_rdcorr2018.tif");
  ExpectPublished("EPSG:28992", "rd/rdnaptrans2018_points.csv", 4, 3);
}

// A geoid that PROJ alone has an operation for, under the name of its collection.
TEST(ConversionsOfHeights, TakeTheSwedishGeoid) {
  REQUIRE_REFERENCE_FILE(grid, "grids/se_lantmateriet_SWEN17_RH2000.tif");
  ConversionWish wish;
  wish.grids = {ReferenceFile("grids").string()};
  Peer peer;
  ASSERT_TRUE(peer.Take("EPSG:4977", "EPSG:3006+5613"));
  const Conversion conversion("EPSG:4977", "EPSG:3006+5613", wish);
  const Point given{59.3, 18.05, 30};
  Point point = given;
  Convert(conversion, point, true);
  EXPECT_LE(peer.Distance(point, peer.Run(given, false), false), kAgreement);
}
