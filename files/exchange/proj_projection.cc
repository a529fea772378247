#include "files/exchange/proj_projection.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "files/system/projection_names.h"
#include "geomath/base/angle.h"
#include "geomath/proj/param_table.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// A projection of ours with PROJ's method and its names for our parameters in index order. A
// parameter without a name is one that the method has not; such a one moves, turns or scales the
// plane, which the fitted steps of a pipeline take up.
struct PeerRow {
  std::string_view name, method;
  std::vector<std::string_view> parameters;
};
const std::vector<std::string_view> kTransverse = {"lon_0", "k_0", "lat_0", "x_0", "y_0"};
const std::vector<std::string_view> kOblique = {"alpha", "k_0", "lonc", "lat_0", "x_0", "y_0"};
const std::vector<std::string_view> kConic = {"lat_1", "lat_2", "lon_0", "lat_0",
                                              "x_0",   "y_0",   "k_0"};
const std::vector<std::string_view> kOrigin = {"lat_0", "lon_0", "x_0", "y_0"};
const std::vector<std::string_view> kScaledOrigin = {"lat_0", "lon_0", "k_0", "x_0", "y_0"};
const PeerRow kPeers[] = {
    {"STER", "stere", kScaledOrigin},
    {"DSTER", "sterea", kScaledOrigin},
    {"TMERC", "etmerc", kTransverse},
    {"TM", "etmerc", kTransverse},
    {"TMERCSPHER", "etmerc", kTransverse},
    {"TM83", "etmerc", kTransverse},
    {"TMERC_NZ", "etmerc", kTransverse},
    {"LC", "lcc", kConic},
    {"LC83", "lcc", {kConic.begin(), kConic.end() - 1}},
    {"AlbersConic", "aea", {kConic.begin(), kConic.end() - 1}},
    {"OM", "omerc +no_uoff", kOblique},
    {"OM83", "omerc +no_uoff", kOblique},
    {"RSO", "omerc +no_uoff", kOblique},
    {"SWISS", "somerc", {"lon_0", "lat_0", "x_0", "y_0"}},
    {"CASSINI", "cass", {"lat_0", "lon_0", "", "x_0", "y_0"}},
    {"MERCATOR", "merc", {"lon_0", "lat_ts", "x_0", "y_0"}},
    {"COLOMBIA", "col_urban +h_0=0", kOrigin},
    {"TMSPHER", "gstmerc", {"", "lon_0", "lat_0", "k_0"}},
    {"NZMG", "nzmg", {}},
    {"KROVAK", "krovak", {}},
};

}  // namespace

std::optional<std::string> ProjProjection(const TGeoProj& projection, const std::string& name) {
  const auto row = std::find_if(std::begin(kPeers), std::end(kPeers),
                                [&](const PeerRow& peer) { return peer.name == name; });
  if (row == std::end(kPeers)) return std::nullopt;
  const std::vector<ProjectionParameter>& parameters = FindProjection(name)->parameters;
  std::string text =
      fmt::format("+proj={} {}", row->method, ProjEllipsoid(projection.GetEllipsoid()));
  for (std::size_t i = 0; i < row->parameters.size(); ++i) {
    if (row->parameters[i].empty()) continue;
    const ParameterUnit unit = parameters[i].unit;
    const bool angle = unit == ParameterUnit::latitude || unit == ParameterUnit::degrees;
    const double value = projection.GetParam(static_cast<int>(i), kUnitInternal);
    text += fmt::format(" +{}={}", row->parameters[i], angle ? value * kDegPerRad : value);
  }
  return text;
}

std::vector<std::string> ProjProjectionNames() {
  std::vector<std::string> names;
  for (const PeerRow& peer : kPeers) names.emplace_back(peer.name);
  return names;
}

std::string ProjEllipsoid(const Ellipsoid& ellipsoid) {
  return fmt::format("+a={} +b={}", ellipsoid.a, ellipsoid.b);
}

}  // namespace geomath_files
