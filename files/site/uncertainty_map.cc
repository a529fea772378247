#include "files/site/uncertainty_map.h"

#include <fmt/format.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <functional>

#include "files/words/markup.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kSize = 640, kMargin = 70, kLegend = 60;  // pixels
constexpr int kCells = 24;                                 // of the shading, along the longer side

// A site drawn with a value in every cell as shading, light where it is small.
class ShadedPlan {
 public:
  using Value = std::function<double(double n, double e)>;

  ShadedPlan(const SiteSolution& solution, const Value& value)
      : solution_(solution), extent_(ExtentOf(solution)) {
    const double length =
        std::max({extent_.north - extent_.south, extent_.east - extent_.west, 1.0});
    perMetre_ = kSize / length;
    cell_ = (length * 1.1) / kCells;
    const double north = extent_.north + 0.05 * length, west = extent_.west - 0.05 * length;
    const double south = extent_.south - 0.05 * length, east = extent_.east + 0.05 * length;
    for (double n = north; n > south; n -= cell_)
      for (double e = west; e < east; e += cell_) {
        const double at = value(n - cell_ / 2, e + cell_ / 2);
        if (!std::isfinite(at)) continue;
        cells_.push_back({n, e, at});
        least_ = std::min(least_, at);
        most_ = std::max(most_, at);
      }
  }

  bool Empty() const { return cells_.empty(); }
  double X(double e) const { return kMargin + (e - extent_.west) * perMetre_; }
  double Y(double n) const { return kMargin + (extent_.north - n) * perMetre_; }
  double PerMetre() const { return perMetre_; }

  // With what else is drawn, and the legend's text for the smallest and the largest value.
  std::string Svg(const char* id, const char* label, const std::string& drawn,
                  const std::function<std::string(double)>& text) const {
    const double height = (extent_.north - extent_.south) * perMetre_ + 2 * kMargin + kLegend;
    const double width = std::max((extent_.east - extent_.west) * perMetre_, kSize) + 2 * kMargin;
    std::string svg = fmt::format(
        "<svg id=\"{2}\" xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" aria-label=\"{3}\" "
        "viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" height=\"{1:.0f}\">\n",
        width, height, id, label);
    const double side = cell_ * perMetre_ + 0.3;  // no seams
    for (const Cell& cell : cells_)
      svg += fmt::format(
          "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" fill=\"{}\"/>\n",
          X(cell.e), Y(cell.n), side, side, Colour(cell.value));
    for (std::size_t i = 0; i < solution_.Points().size(); ++i) {
      const IdenticalPoint& p = solution_.Points()[i];
      if (!(p.globalFlags & kHasNorth) || !(p.globalFlags & kHasEast)) continue;
      svg += fmt::format(
          "<circle cx=\"{0:.1f}\" cy=\"{1:.1f}\" r=\"3\"/><text x=\"{2:.1f}\" "
          "y=\"{3:.1f}\">{4}</text>\n",
          X(p.globalE), Y(p.globalN), X(p.globalE) + 6, Y(p.globalN) + 14,
          Escaped(solution_.NameOf(i)));
    }
    svg += drawn;
    const double y = height - kLegend + 10;
    for (int i = 0; i < 5; ++i) {
      const double value = least_ + (most_ - least_) * i / 4;
      svg += fmt::format(
          "<rect x=\"{0:.1f}\" y=\"{1:.1f}\" width=\"80\" height=\"14\" fill=\"{2}\"/>"
          "<text x=\"{0:.1f}\" y=\"{3:.1f}\">{4}</text>\n",
          kMargin + 80 * i, y, Colour(value), y + 30, text(value));
    }
    return svg + "</svg>\n";
  }

 private:
  struct Cell {
    double n, e, value;
  };

  // From light to a dark blue that black text is still read on.
  std::string Colour(double value) const {
    const double share = most_ > least_ ? (value - least_) / (most_ - least_) : 0;
    const auto mix = [&](int light, int dark) {
      return static_cast<int>(std::lround(light + share * (dark - light)));
    };
    return fmt::format("rgb({},{},{})", mix(250, 110), mix(252, 160), mix(255, 215));
  }

  const SiteSolution& solution_;
  GridExtent extent_;
  double perMetre_ = 1, cell_ = 1;
  std::vector<Cell> cells_;
  double least_ = DBL_MAX, most_ = -DBL_MAX;
};

std::string Millimetres(double metres) { return fmt::format("{:.1f} mm", metres * 1000); }

}  // namespace

std::string UncertaintyMap(const SiteSolution& solution, const SiteJudgement& judgement) {
  const SiteAdjustment* const adjusted = judgement.Adjusted();
  if (!adjusted || adjusted->Positions().Freedom() < 1) return "";
  const double h = adjusted->Pivot()[2];
  const ShadedPlan plan(solution, [&](double n, double e) {
    return adjusted->Predict({n, e, h}).radius;
  });
  if (plan.Empty()) return "";
  // Ellipses of one standard deviation, the longest of 40 pixels. They are in local axes, turned back
  // to those of the map.
  constexpr double kLongest = 40;
  struct Drawn {
    double n, e, major, minor, bearing;
  };
  std::vector<Drawn> ellipses;
  double longest = 0;
  for (const AdjustmentPoint& p : adjusted->Points()) {
    if (!p.usePlane) continue;
    const auto C = adjusted->Predict(p.grid);
    const double nn = C.covariance[0][0], ee = C.covariance[1][1], ne = C.covariance[0][1];
    const double middle = (nn + ee) / 2, half = std::hypot((nn - ee) / 2, ne);
    const double bearing = 0.5 * std::atan2(2 * ne, nn - ee) - solution.Site().GetPlaneParam(3, 0);
    ellipses.push_back({p.grid[0], p.grid[1], std::sqrt(middle + half),
                        std::sqrt(std::max(middle - half, 0.0)), bearing});
    longest = std::max(longest, ellipses.back().major);
  }
  std::string drawn;
  for (const Drawn& at : ellipses)
    drawn += fmt::format(
        "<ellipse cx=\"{0:.1f}\" cy=\"{1:.1f}\" rx=\"{2:.1f}\" ry=\"{3:.1f}\" "
        "transform=\"rotate({4:.1f} {0:.1f} {1:.1f})\" class=\"sigma\"/>\n",
        plan.X(at.e), plan.Y(at.n), at.minor / longest * kLongest, at.major / longest * kLongest,
        at.bearing * kDegPerRad);
  return plan.Svg("uncertainty", "Map of the uncertainty of positions with error ellipses", drawn,
                  Millimetres);
}

std::string HeightPlan(const SiteSolution& solution, const SiteJudgement& judgement) {
  const SiteAdjustment* const adjusted = judgement.Adjusted();
  if (!adjusted || adjusted->HeightParameters().size() != 3) return "";
  const ShadedPlan plan(solution, [&](double n, double e) {
    return adjusted->Predict({n, e, 0}).local[2];
  });
  if (plan.Empty()) return "";
  std::string drawn;
  for (std::size_t i = 0; i < adjusted->Points().size(); ++i) {
    const double residual = adjusted->At(i, 2).residual;
    const AdjustmentPoint& p = adjusted->Points()[i];
    if (p.useHeight && std::isfinite(residual))
      drawn += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" class=\"value\">{:+.1f} mm</text>\n",
                           plan.X(p.grid[1]) + 6, plan.Y(p.grid[0]) - 6, residual * 1000);
  }
  return plan.Svg("heights", "Plan of the height plane with the residuals of heights", drawn,
                  [](double metres) { return fmt::format("{:.3f} m", metres); });
}

}  // namespace geomath_files
