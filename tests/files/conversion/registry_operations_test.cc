// Operations of the registry by their codes, each through a Conversion and by PROJ.
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "files/conversion/conversion.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/operation_steps.h"
#include "files/epsg/projjson.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "tests/files/epsg/registry_peer.h"
#include "tests/support/reference_data.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
using nlohmann::json;

namespace {

constexpr double kAgreement = 1e-4;  // metres: a tenth of what surveyors measure
constexpr double kRoundTrip = 1e-5;  // metres
constexpr double kEarth = 6378137;   // metres for a radian
constexpr double kHeight = 50;       // metres, of the points
constexpr double kDate = 2016.37;    // of the points

// Latitude, longitude, height; northing, easting, height; or X, Y, Z, in the units of a system.
using Point = std::array<double, 3>;

bool IsFinite(const Point& point) {
  return std::all_of(point.begin(), point.end(), [](double x) { return std::isfinite(x); });
}

// How PROJ has the coordinates of a system.
struct PeerAxes {
  std::size_t north = 0, east = 1;
  double unit = kRadPerDeg;  // radians
  double heightUnit = 1;     // metres
  double greenwich = 0;      // degrees
  bool geocentric = false, heights = false;
};

class Peer {
 public:
  explicit Peer(const std::string& folder) : context_(ContextWith(folder)) {}

  std::vector<std::string> Codes() const { return OperationCodes(context_.get()); }

  // Whether it can run the operation.
  bool Take(const std::string& code) {
    operation_.reset(proj_create_from_database(context_.get(), "EPSG", code.c_str(),
                                               PJ_CATEGORY_COORDINATE_OPERATION, 1, nullptr));
    PJ_CONTEXT* pj = context_.get();
    if (!operation_ || !proj_coordoperation_is_instantiable(pj, operation_.get())) return false;
    from_ = AxesOf(Owned<PJ>(proj_get_source_crs(pj, operation_.get())).get());
    to_ = AxesOf(Owned<PJ>(proj_get_target_crs(pj, operation_.get())).get());
    return true;
  }

  const PeerAxes& From() const { return from_; }

  Point Run(const Point& point, bool inverse) const {
    const PJ_DIRECTION direction = inverse ? PJ_INV : PJ_FWD;
    const PeerAxes &from = inverse ? to_ : from_, &to = inverse ? from_ : to_;
    // Steps without a system of positions take radians, longitude first.
    const bool angles = proj_angular_input(operation_.get(), direction);
    const PJ_COORD in = Theirs(point, angles ? Bare(from) : from);
    const bool anglesOut = proj_angular_output(operation_.get(), direction);
    return Ours(proj_trans(operation_.get(), direction, in), anglesOut ? Bare(to) : to);
  }

  double Distance(const Point& p, const Point& q, bool atSource) const {
    const PeerAxes& axes = atSource ? from_ : to_;
    if (axes.geocentric) return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
    const double dn = (p[0] - q[0]) * kRadPerDeg * kEarth;
    const double de =
        std::remainder(p[1] - q[1], 360) * kRadPerDeg * kEarth * std::cos(p[0] * kRadPerDeg);
    const double dh = axes.heights ? (p[2] - q[2]) * axes.heightUnit : 0;
    return std::hypot(dn, de, dh);
  }

 private:
  static PeerAxes Bare(PeerAxes axes) {
    axes.north = 1;
    axes.east = 0;
    axes.unit = 1;
    return axes;
  }
  static Point Ours(const PJ_COORD& at, const PeerAxes& axes) {
    if (axes.geocentric) return {at.v[0], at.v[1], at.v[2]};
    const double unit = axes.unit * kDegPerRad;
    return {at.v[axes.north] * unit, at.v[axes.east] * unit, at.v[2]};
  }
  static PJ_COORD Theirs(const Point& point, const PeerAxes& axes) {
    if (axes.geocentric) return proj_coord(point[0], point[1], point[2], kDate);
    PJ_COORD at = proj_coord(0, 0, point[2], kDate);
    at.v[axes.north] = point[0] / (axes.unit * kDegPerRad);
    at.v[axes.east] = point[1] / (axes.unit * kDegPerRad);
    return at;
  }

  PeerAxes AxesOf(const PJ* crs) const {
    PeerAxes axes;
    const PJ_TYPE type = proj_get_type(crs);
    if (type == PJ_TYPE_COMPOUND_CRS) {
      axes = AxesOf(Owned<PJ>(proj_crs_get_sub_crs(context_.get(), crs, 0)).get());
      axes.heights = true;
      axes.heightUnit =
          AxesOf(Owned<PJ>(proj_crs_get_sub_crs(context_.get(), crs, 1)).get()).heightUnit;
      return axes;
    }
    const Owned<PJ> system(proj_crs_get_coordinate_system(context_.get(), crs));
    const auto axis = [&](int i, const char** direction, double* unit) {
      proj_cs_get_axis_info(context_.get(), system.get(), i, nullptr, nullptr, direction, unit,
                            nullptr, nullptr, nullptr);
    };
    axes.geocentric = type == PJ_TYPE_GEOCENTRIC_CRS;
    axes.heights = type == PJ_TYPE_VERTICAL_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS;
    if (type == PJ_TYPE_VERTICAL_CRS) axis(0, nullptr, &axes.heightUnit);
    if (type != PJ_TYPE_GEOGRAPHIC_2D_CRS && type != PJ_TYPE_GEOGRAPHIC_3D_CRS) return axes;
    for (int i = 0; i < 2; ++i) {
      const char* direction = "";
      axis(i, &direction, &axes.unit);
      (std::string(direction) == "north" ? axes.north : axes.east) = static_cast<std::size_t>(i);
    }
    const Owned<PJ> meridian(proj_get_prime_meridian(context_.get(), crs));
    double unit = kRadPerDeg;
    proj_prime_meridian_get_parameters(context_.get(), meridian.get(), &axes.greenwich, &unit,
                                       nullptr);
    axes.greenwich *= unit * kDegPerRad;
    return axes;
  }

  Owned<PJ_CONTEXT> context_;
  Owned<PJ> operation_;
  PeerAxes from_, to_;
};

// What came of the points of an operation.
struct Comparison {
  std::string method = {};
  std::string obstacle = {};                       // why there is none; empty where it was compared
  double forward = 0, inverse = 0, roundTrip = 0;  // the worst, metres
  int points = 0, refusals = 0;                    // the latter by one of the two alone
  double peer = 0;                                 // what PROJ leaves, metres
  double transposed = 0;                           // and more on the way back

  bool Agrees() const {
    return points > 0 && refusals == 0 && forward <= kAgreement + peer &&
           inverse <= kAgreement + peer + transposed && roundTrip <= kRoundTrip;
  }
};

class Proof {
 public:
  Proof() : peer_(ReferenceFile("grids").string()) {
    wish_.grids = {ReferenceFile("grids").string()};
    wish_.one = true;
  }

  std::vector<std::string> Codes() const { return peer_.Codes(); }

  Comparison Compare(const std::string& code) {
    const std::optional<RegisteredOperation> operation = registry_.Operation(code);
    if (!operation) return {.obstacle = "PROJ: it has no such operation"};
    Comparison result;
    const json& document = *operation->document;
    result.method = MemberOf(document, "method").is_object()
                        ? document.at("method").value("name", "?")
                        : "concatenated";
    const std::string from = EndOf(document, "source_crs", "target_crs");
    const std::string to = EndOf(document, "target_crs", "source_crs");
    wish_.operation = code;
    const GeoBox& area = operation->area;
    double width = area.east - area.west;
    if (width < 0) width += 360;
    wish_.near =
        Position{(area.south + area.north) / 2, std::remainder(area.west + width / 2, 360)};
    try {
      const Conversion conversion(from, to, wish_), opposite(to, from, wish_);
      if (peer_.Take(code))
        Run(conversion, opposite, area, width, result);
      else
        result.obstacle = "PROJ: it lacks a file or the method";
    } catch (const UserError& error) {
      result.obstacle = fmt::format("{} to {}: {}", from, to, error.what());
      if (peer_.Take(code)) result.obstacle += " (PROJ runs it)";
    }
    Allow(document, result);
    return result;
  }

 private:
  // What PROJ 9.1 leaves.
  void Allow(const json& document, Comparison& result) const {
    // It has Paris at 2 degrees 20' 14.025" in radians of 15 digits, the registry at 2.5969213 grads.
    constexpr double kParis = 3e-4, kMeridianOfParis = 2.337;
    const auto ellipsoid = [](const json& crs) {
      const bool any = crs.contains("datum") || crs.contains("datum_ensemble");
      return any && crs.value("type", "") != "VerticalCRS" ? EllipsoidOf(crs) : Ellipsoid();
    };
    const json &source = MemberOf(document, "source_crs"),
               &target = MemberOf(document, "target_crs");
    for (const json* crs : {&source, &target})
      if (crs->contains("datum") && std::abs(PrimeMeridianOf(*crs) - kMeridianOfParis) < 1e-3)
        result.peer += kParis;
    // GRS80 and WGS 84 are one ellipsoid here.
    const Ellipsoid a = ellipsoid(source), b = ellipsoid(target);
    if (AreAlike(a, b)) result.peer += std::abs(a.b - b.b);
    // It takes the transposed matrix of small angles for the inverse one.
    for (const OperationStep& step : ReadSteps(registry_, document))
      if (step.similarity) result.transposed += 2 * step.similarity->seven.SmallAngleError();
  }

  // As a conversion takes it; heights beside the positions that the operation names.
  std::string EndOf(const json& document, const char* key, const char* other) const {
    const json& crs = MemberOf(document, key);
    const std::string code = std::to_string(CodeIn(crs));
    if (crs.value("type", "") != "VerticalCRS") return "EPSG:" + code;
    const int place = CodeIn(MemberOf(document, "interpolation_crs"));
    const json& beside = MemberOf(document, other);
    if (beside.value("type", "") == "GeographicCRS")
      return "EPSG:" + registry_.Crs(std::to_string(CodeIn(beside))).geographic + "+" + code;
    return "EPSG:" + (place ? registry_.Crs(std::to_string(place)).geographic : "4326") + "+" +
           code;
  }

  static void Scale(Point& point, EndKind kind, double factor) {
    if (kind != EndKind::geographic) return;
    point[0] *= factor;
    point[1] *= factor;
  }

  static Point Convert(const Conversion& conversion, Point point, bool toTarget) {
    const EndKind source = conversion.Source().Kind(), target = conversion.Target().Kind();
    Scale(point, toTarget ? source : target, kRadPerDeg);
    if (toTarget)
      conversion.ToTarget(&point[0], &point[1], &point[2], 1, nullptr, PointDates(kDate));
    else
      conversion.ToSource(&point[0], &point[1], &point[2], 1, nullptr, PointDates(kDate));
    Scale(point, toTarget ? target : source, kDegPerRad);
    return point;
  }

  void Run(const Conversion& conversion, const Conversion& opposite, const GeoBox& area,
           double width, Comparison& result) const {
    const Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
    const auto compare = [&](const Point& ours, const Point& theirs, bool atSource, double& worst) {
      if (IsFinite(ours) != IsFinite(theirs)) ++result.refusals;
      if (!IsFinite(ours) || !IsFinite(theirs)) return;
      ++result.points;
      worst = std::max(worst, peer_.Distance(ours, theirs, atSource));
    };
    constexpr int kRows = 3, kColumns = 3;
    for (int i = 0; i < kRows; ++i) {
      for (int j = 0; j < kColumns; ++j) {
        Point given{area.south + (area.north - area.south) * (i + 0.37) / kRows,
                    std::remainder(area.west + width * (j + 0.61) / kColumns, 360), 0};
        const bool heights =
            conversion.Source().Kind() == EndKind::geocentric || peer_.From().heights;
        if (heights) given[2] = kHeight;
        if (peer_.From().geocentric) {
          given[0] *= kRadPerDeg;
          given[1] *= kRadPerDeg;
          wgs84.BLH_to_XYZ_Batch(&given[0], &given[1], &given[2], 1);
        } else {
          given[1] = std::remainder(given[1] - peer_.From().greenwich, 360);
        }
        const Point there = Convert(conversion, given, true);
        compare(there, peer_.Run(given, false), false, result.forward);
        if (!IsFinite(there)) continue;
        compare(Convert(opposite, there, true), peer_.Run(there, true), true, result.inverse);
        result.roundTrip = std::max(result.roundTrip,
                                    peer_.Distance(Convert(conversion, there, false), given, true));
      }
    }
  }

  const EpsgRegistry registry_;
  ConversionWish wish_;
  Peer peer_;
};

// Of each method of which files are here, as published and the other way round; superseded ones, between
// geographic and geocentric systems, heights and compound systems.
constexpr const char* kSample[] = {
    "1314",  "1777", "4833",           // seven parameters of both senses
    "1771",  "6889", "6935",           // about a pivot
    "1149",  "1133", "8887",           // translations
    "6936",  "7666", "9020",           // geocentric
    "6313",  "6315", "9079", "10100",  // with rates
    "1763",  "7811",                   // from Paris
    "15596", "1447", "4441", "4651",   // offsets
    "9585",  "9587", "9283", "9877",   // geoids, alone and into compound systems
    "1241",  "7709", "9282", "9327",   // grids
    "3896",  "4837", "8631",           // concatenated
};

}  // namespace

// The sample, or all with GEOMATH_OPERATIONS=all, of which a line each is printed.
TEST(OperationsOfTheRegistry, GiveTheResultsOfProj) {
  if (!std::filesystem::exists(ReferenceFile("grids"))) GTEST_SKIP() << "no grids";
  Proof proof;
  const char* wanted = std::getenv("GEOMATH_OPERATIONS");
  const bool all = wanted && std::string_view(wanted) == "all";
  std::vector<std::string> codes(std::begin(kSample), std::end(kSample));
  if (all) codes = proof.Codes();
  for (const std::string& code : codes) {
    const Comparison c = proof.Compare(code);
    const bool compared = c.obstacle.empty();
    if (all)
      std::cout << fmt::format("EPSG:{}\t{}\t{}\t{:.2g}\t{:.2g}\t{}\n", code,
                               !compared    ? "not compared"
                               : c.Agrees() ? "agrees"
                                            : "DIFFERS",
                               c.method, c.forward, c.inverse, c.obstacle);
    if (all && !compared) continue;
    EXPECT_EQ(c.obstacle, "") << code;
    EXPECT_TRUE(c.Agrees()) << code << ": " << c.points << " points, " << c.refusals
                            << " refused by one alone, there " << c.forward << " m, back "
                            << c.inverse << " m, round trip " << c.roundTrip << " m";
  }
}
