#include "files/models/geoid_schemes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/geomath.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

template <class Model>
std::unique_ptr<RegionalGeoid> Make(const RegionalGeoidData& data) {
  return std::make_unique<Model>(data);
}

constexpr GridScheme kInterpolations[] = {
    {"RegGeoid2x2SW", Make<RegGeoid2x2SW>, false, true},
    {"RegGeoid2x2NW", Make<RegGeoid2x2NW>, true, true},
    {"RegGeoid2x2Denmark", Make<RegGeoid2x2Denmark>, true, true},
    {"RegionalGeoid", Make<RegionalGeoid>, false, false},
    {"RegGeoidSwedishInterpalation3", Make<RegGeoidSwedishInterpalation3>, true, false},
    {"RegGeoidInterpalation4", Make<RegGeoidInterpalation4>, false, false},
    {"RegGeoidInterpalation4x4SW", Make<RegGeoidInterpalation4x4SW>, false, false},
    {"RegGeoidInterpalation4x4NW", Make<RegGeoidInterpalation4x4NW>, true, false},
    {"RegGeoidIntrp_Lagrange4x4SW", Make<RegGeoidIntrp_Lagrange4x4SW>, false, false},
    {"RegGeoidIntrp_Spline4x4SW", Make<RegGeoidIntrp_Spline4x4SW>, false, false},
    {"RegGeoidInterpalation_GG2008SW", Make<RegGeoidInterpalation_GG2008SW>, false, false},
    {"RegGeoidKrigingIntrp", Make<RegGeoidKrigingIntrp>, false, false},
};
constexpr const char* kUsual = "RegGeoid2x2SW";

TGridRgn RegionOf(const GridPlace& place) {
  const double latStep = place.latStep * kRadPerDeg, lonStep = place.lonStep * kRadPerDeg;
  return {{place.south * kRadPerDeg, (place.rows - 1) * latStep, place.west * kRadPerDeg,
           (place.columns - 1) * lonStep},
          latStep,
          lonStep};
}

}  // namespace

std::vector<std::string> InterpolationNames() {
  std::vector<std::string> names;
  for (const GridScheme& row : kInterpolations) names.emplace_back(row.name);
  return names;
}

std::string PlaceProblem(const GridPlace& place) {
  constexpr double kMostNodes = 250e6;
  constexpr double kRounding = 1e-6;
  constexpr double kWidest = 3 * 360;  // coarse grids that were closed at their seam reach past 720
  if (1.0 * place.rows * place.columns > kMostNodes)
    return fmt::format("{} by {} nodes are too many", place.rows, place.columns);
  const double north = place.south + (place.rows - 1) * place.latStep;
  if (!(place.south >= -90 - kRounding && north <= 90 + kRounding))
    return "the grid does not lie between the poles, in degrees";
  // Closing at the seam puts columns before the west edge, as many as go past a turn at most.
  const double pastTurn = std::max(0.0, place.LonExtent() - 360);
  const bool onTurn = place.west >= -360 - pastTurn - kRounding && place.west <= 360 + kRounding &&
                      place.LonExtent() <= kWidest;
  return onTurn ? "" : "the longitudes of the grid go beyond 360 degrees";
}

const GridScheme& ChooseScheme(const std::string& name) {
  const std::string wanted = FoldName(name.empty() ? kUsual : name);
  for (const GridScheme& row : kInterpolations)
    if (FoldName(row.name) == wanted) return row;
  throw UserError(fmt::format("interpolation \"{}\" is unknown; {}", Printable(name),
                              SuggestName(name, InterpolationNames())));
}

std::vector<float> CloseSeam(GridPlace& place, const float* nodes) {
  auto closed = zel_cs::geomath::CloseSeam(RegionOf(place), place.columns, place.rows, nodes);
  if (!closed) return {};
  place.columns = closed->NX;
  place.west -= closed->repeated * place.lonStep;
  return std::move(closed->nodes);
}

// The parts share the columns at their borders; each holds whole cells.
GridModel::GridModel(const GridScheme& scheme, const GridPlace& place, const float* nodes) {
  constexpr double kWidest = 120;  // degrees, well below half a turn
  const TGridRgn region = RegionOf(place);
  const int cells = place.columns - 1;
  const bool divided = scheme.halfTurnOnly && place.LonExtent() > 180;
  const int count = divided ? static_cast<int>(std::ceil(place.LonExtent() / kWidest)) : 1;
  const int width = std::max(1, (cells + count - 1) / count);
  for (int first = 0; first == 0 || first < cells; first += width) {
    const int columns = std::min(width, cells - first) + 1;
    TGridRgn part = region;
    part.L0 = (place.west + first * place.lonStep) * kRadPerDeg;
    part.dL = (columns - 1) * region.lonStep;
    RegionalGeoidData data(part, columns, place.rows, nodes + first, 0, L"", L"", 4, 1.0, L"");
    data.rowPadding = static_cast<double>(sizeof(float)) * (place.columns - columns);
    auto model = scheme.make(data);
    const RegionalGeoidHeight heights(*model);
    parts_.push_back({std::move(model), heights});
  }
  west_ = region.L0;
  centre_ = region.L0 + region.dL / 2;
  partWidth_ = width * region.lonStep;
}

// Null for a longitude that is no number.
const GridModel::Part* GridModel::PartOf(double l) const {
  const double last = static_cast<double>(parts_.size() - 1);
  const double fromWest = centre_ + std::remainder(l - centre_, kTwoPi) - west_;
  const double part = std::clamp(std::floor(fromWest / partWidth_), 0.0, last);
  return part >= 0 ? &parts_[static_cast<std::size_t>(part)] : nullptr;
}

bool GridModel::Height(double b, double l, double& height) const {
  const Part* part = PartOf(l);
  return part && part->heights.Height(b, l, height);
}

void GridModel::Heights(const double* b, const double* l, double* heights,
                        std::size_t count) const {
  if (parts_.size() == 1) return parts_[0].heights.Heights(b, l, heights, count);
  GeoidHeight::Heights(b, l, heights, count);
}

void GridModel::HeightsAndSlopes(const double* b, const double* l, double* heights,
                                 double* perLatitude, double* perLongitude,
                                 std::size_t count) const {
  if (parts_.size() == 1)
    return parts_[0].heights.HeightsAndSlopes(b, l, heights, perLatitude, perLongitude, count);
  for (std::size_t i = 0; i < count; ++i) {
    const Part* part = PartOf(l[i]);
    heights[i] = perLatitude[i] = perLongitude[i] = std::numeric_limits<double>::quiet_NaN();
    if (part)
      part->heights.HeightsAndSlopes(b + i, l + i, heights + i, perLatitude + i, perLongitude + i,
                                     1);
  }
}

}  // namespace geomath_files
