#include "files/design/distortion_map.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/design/linear_distortion.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSize = 640, kMargin = 20, kLegend = 50;  // pixels
constexpr int kCells = 80;                                 // along the longer side
constexpr double kPpm = 1e6;

// Means of the distortions in cells.
class CellMeans {
 public:
  CellMeans(const Ground& ground, const std::vector<double>& deltas) {
    const auto [south, north] = std::minmax_element(ground.b.begin(), ground.b.end());
    const auto [west, east] = std::minmax_element(ground.l.begin(), ground.l.end());
    const double shrink = std::cos((*south + *north) / 2);
    const double height = std::max(*north - *south, 1e-9);
    const double width = std::max((*east - *west) * shrink, 1e-9);
    const int across = std::clamp(static_cast<int>(std::sqrt(ground.b.size())), 1, kCells);
    cell_ = std::max(height, width) / across * (1 + 1e-9);
    rows_ = static_cast<int>(height / cell_) + 1;
    columns_ = static_cast<int>(width / cell_) + 1;
    means_.assign(static_cast<std::size_t>(rows_ * columns_), 0);
    std::vector<double> counts(means_.size(), 0);
    for (std::size_t i = 0; i < deltas.size(); ++i) {
      if (std::isnan(deltas[i])) continue;
      const auto row = static_cast<int>((*north - ground.b[i]) / cell_);
      const auto column = static_cast<int>((ground.l[i] - *west) * shrink / cell_);
      const auto at = static_cast<std::size_t>(row * columns_ + column);
      means_[at] += deltas[i];
      counts[at] += 1;
    }
    for (std::size_t i = 0; i < means_.size(); ++i)
      means_[i] = counts[i] > 0 ? means_[i] / counts[i] : kNaN;
  }

  int Rows() const { return rows_; }
  int Columns() const { return columns_; }
  double At(int row, int column) const {
    return means_[static_cast<std::size_t>(row * columns_ + column)];
  }

 private:
  double cell_ = 1;
  int rows_ = 1, columns_ = 1;
  std::vector<double> means_;
};

// Blue below 0, red above, white at 0, full at `full`.
std::string Colour(double value, double full) {
  const double share = std::min(std::abs(value) / full, 1.0);
  const auto mix = [share](int dark) {
    return static_cast<int>(std::lround(255 + share * (dark - 255)));
  };
  return value < 0 ? fmt::format("#{:02x}{:02x}{:02x}", mix(26), mix(95), mix(180))
                   : fmt::format("#{:02x}{:02x}{:02x}", mix(192), mix(28), mix(40));
}

// The contour of a level between the middles of cells (marching squares), as the path of an SVG.
std::string ContourPath(const CellMeans& cells, double level, double side) {
  std::string path;
  for (int row = 0; row + 1 < cells.Rows(); ++row)
    for (int column = 0; column + 1 < cells.Columns(); ++column) {
      // Corners in turn.
      constexpr int kRow[] = {0, 0, 1, 1}, kColumn[] = {0, 1, 1, 0};
      double v[4];
      bool whole = true;
      for (int i = 0; i < 4; ++i) {
        v[i] = cells.At(row + kRow[i], column + kColumn[i]) - level;
        whole = whole && std::isfinite(v[i]);
      }
      if (!whole) continue;
      double x[4], y[4];
      int crossings = 0;
      for (int i = 0; i < 4; ++i) {
        const int j = (i + 1) % 4;
        if ((v[i] < 0) == (v[j] < 0)) continue;
        const double share = v[i] / (v[i] - v[j]);
        x[crossings] = column + kColumn[i] + share * (kColumn[j] - kColumn[i]);
        y[crossings] = row + kRow[i] + share * (kRow[j] - kRow[i]);
        ++crossings;
      }
      for (int i = 0; i + 1 < crossings; i += 2)
        path += fmt::format("M{:.1f},{:.1f}L{:.1f},{:.1f}", kMargin + (x[i] + 0.5) * side,
                            kMargin + (y[i] + 0.5) * side, kMargin + (x[i + 1] + 0.5) * side,
                            kMargin + (y[i + 1] + 0.5) * side);
    }
  return path;
}

std::string Opening(const char* id, const char* label, double width, double height) {
  return fmt::format(
      "<svg id=\"{0}\" xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" aria-label=\"{1}\" "
      "viewBox=\"0 0 {2:.0f} {3:.0f}\" width=\"{2:.0f}\" height=\"{3:.0f}\">\n",
      id, label, width, height);
}

}  // namespace

std::string DistortionMap(const Ground& ground, const std::vector<double>& deltas,
                          std::optional<double> limit) {
  const CellMeans cells(ground, deltas);
  const DistortionFigures figures(deltas, ground.weight);
  constexpr double kMost = 0.98;  // of the ground, which has shades of its own
  const double full = std::max(limit.value_or(0), figures.Percentile(kMost));
  const double side = kSize / std::max(cells.Rows(), cells.Columns());
  const double width = std::max(cells.Columns() * side, kSize) + 2 * kMargin;
  const double height = cells.Rows() * side + 2 * kMargin + kLegend;
  std::string svg = Opening("map", "Map of the linear distortion", width, height);
  for (int row = 0; row < cells.Rows(); ++row)
    for (int column = 0; column < cells.Columns(); ++column)
      if (const double value = cells.At(row, column); !std::isnan(value))
        svg += fmt::format(
            "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" fill=\"{}\"/>\n",
            kMargin + column * side, kMargin + row * side, side + 0.3, side + 0.3,
            Colour(value, full));
  if (limit)
    for (const double level : {*limit, -*limit})
      svg += fmt::format("<path d=\"{}\" class=\"contour\"/>\n", ContourPath(cells, level, side));
  const double y = height - kLegend;
  for (int i = -2; i <= 2; ++i) {
    const double value = full * i / 2;
    svg += fmt::format(
        "<rect x=\"{0:.1f}\" y=\"{1:.1f}\" width=\"90\" height=\"14\" fill=\"{2}\"/>"
        "<text x=\"{0:.1f}\" y=\"{3:.1f}\">{4:+.1f} ppm</text>\n",
        kMargin + 90 * (i + 2), y, Colour(value, full), y + 30, value * kPpm);
  }
  return svg + "</svg>\n";
}

std::string DistortionHistogram(const Ground& ground, const std::vector<double>& deltas,
                                std::optional<double> limit) {
  constexpr int kBars = 48;
  constexpr double kHeight = 200;
  const DistortionFigures figures(deltas, ground.weight);
  const double low = figures.Least(), step = std::max(figures.Range(), 1e-12) / kBars;
  std::vector<double> weights(kBars, 0);
  double all = 0;
  for (std::size_t i = 0; i < deltas.size(); ++i) {
    if (std::isnan(deltas[i])) continue;
    const int bar = std::min(static_cast<int>((deltas[i] - low) / step), kBars - 1);
    weights[static_cast<std::size_t>(bar)] += ground.weight[i];
    all += ground.weight[i];
  }
  const double most = *std::max_element(weights.begin(), weights.end());
  const double side = kSize / kBars, base = kMargin + kHeight;
  std::string svg = Opening("histogram", "Histogram of the linear distortion", kSize + 2 * kMargin,
                            base + kLegend);
  for (int i = 0; i < kBars; ++i) {
    const double weight = weights[static_cast<std::size_t>(i)], middle = low + (i + 0.5) * step;
    const bool outside = limit && std::abs(middle) > *limit;
    const double height = most > 0 ? weight / most * kHeight : 0;
    svg += fmt::format(
        "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" "
        "class=\"{}\"><title>{:+.1f} "
        "ppm: {:.1f} %</title></rect>\n",
        kMargin + i * side, base - height, side - 1, height, outside ? "bar-out" : "bar-in",
        middle * kPpm, 100 * weight / all);
  }
  for (int i = 0; i <= 4; ++i)
    svg += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"middle\">{:+.1f}</text>\n",
                       kMargin + kSize * i / 4, base + 18, (low + figures.Range() * i / 4) * kPpm);
  svg += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"middle\">ppm</text>\n",
                     kMargin + kSize / 2, base + 38);
  return svg + "</svg>\n";
}

}  // namespace geomath_files
