#include "files/site/site_judgement.h"

#include <fmt/format.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kLevel = 0.05;         // of the test of all residuals together
constexpr double kHardlyChecked = 0.1;  // a redundancy below which an error hides
constexpr const char* kCoordinates[] = {"northing", "easting", "height"};

// Millimetres below a metre.
std::string Length(double metres) {
  return metres < 1 ? fmt::format("{:.0f} mm", metres * 1000) : fmt::format("{:.2f} m", metres);
}

}  // namespace

std::optional<SiteAdjustment> AdjustSite(const SiteSolution& solution,
                                         const AdjustmentOptions& options) {
  std::vector<AdjustmentPoint> points;
  bool heights = false;
  for (std::size_t i = 0; i < solution.Points().size(); ++i) {
    const IdenticalPoint& p = solution.Points()[i];
    const int index = static_cast<int>(i);
    AdjustmentPoint point;
    point.grid[0] = p.globalN;
    point.grid[1] = p.globalE;
    point.grid[2] = p.globalH;
    point.local[0] = p.localN;
    point.local[1] = p.localE;
    point.local[2] = p.localH;
    point.usePlane = solution.Solver().UseForHorParams(index);
    point.useHeight = solution.Solver().UseForVertParams(index);
    heights |= point.useHeight;
    const PointCovariance local = CovarianceOf(solution.Control()[i], false);
    std::copy_n(&local.of[0][0], 9, &point.localCovariance[0][0]);
    std::copy_n(&solution.GridCovariances()[i].of[0][0], 9, &point.gridCovariance[0][0]);
    points.push_back(point);
  }
  AdjustmentOptions asked = options;
  if (!heights) asked.heights = HeightModel::none;
  auto adjusted = SiteAdjustment::Solve(points, asked);
  if (adjusted || asked.heights != HeightModel::plane) return adjusted;
  asked.heights = HeightModel::shift;
  return SiteAdjustment::Solve(points, asked);
}

GridExtent ExtentOf(const SiteSolution& solution) {
  GridExtent extent{DBL_MAX, -DBL_MAX, DBL_MAX, -DBL_MAX};
  for (const IdenticalPoint& p : solution.Points()) {
    if (!HasPosition(p)) continue;
    extent.south = std::min(extent.south, p.globalN);
    extent.north = std::max(extent.north, p.globalN);
    extent.west = std::min(extent.west, p.globalE);
    extent.east = std::max(extent.east, p.globalE);
  }
  return extent;
}

SiteJudgement::SiteJudgement(const SiteSolution& solution)
    : solution_(solution), adjusted_(AdjustSite(solution, solution.Adjustment())) {
  if (!adjusted_) {
    verdict_.push_back(
        "Not to be judged: an adjustment wants two points with positions or more, and standard "
        "deviations of all points or of none.");
    return;
  }
  JudgePoints();
  JudgeAccuracies();
  JudgeWeakest();
  JudgePlace();
  JudgeModel();
}

std::string SiteJudgement::NameOf(std::size_t point, int coordinate) const {
  return fmt::format("point {} ({})", solution_.NameOf(point), kCoordinates[coordinate]);
}

// Usable or not: is there surplus control, and does every residual pass?
void SiteJudgement::JudgePoints() {
  const int free = adjusted_->Positions().Freedom();
  if (free == 0) {
    verdict_.push_back(
        "Not to be judged: the positions are fitted exactly, and no error of any size would show. "
        "Measure at least one more control point.");
    return;
  }
  double worst = 0;
  std::string who;
  for (std::size_t i = 0; i < adjusted_->Points().size(); ++i)
    for (int c = 0; c < 3; ++c) {
      const bool height = c == 2;
      const AdjustedCoordinate& at = adjusted_->At(i, c);
      const double size =
          std::abs(adjusted_->Options().sigmaKnown ? at.normalised : at.standardised);
      const double ratio = size / adjusted_->Critical(kLevel, height);
      if (!(ratio > worst)) continue;
      worst = ratio;
      who = NameOf(i, c) + fmt::format(" does not fit: it is {} from what the others make of it",
                                       Length(std::abs(adjusted_->At(i, c).predicted)));
    }
  // With one surplus observation all standardised residuals are the critical value itself.
  constexpr double kBeyond = 1 + 1e-9;
  usable_ = worst <= kBeyond;
  if (usable_)
    verdict_.push_back(fmt::format(
        "Usable: the control agrees with itself (standard deviation of a coordinate {}, {} surplus "
        "observations).",
        Length(std::sqrt(adjusted_->Positions().Variance())), free));
  else
    verdict_.push_back(
        fmt::format("Not usable as it is: {}. Check it, measure it again, or leave it out.", who));
}

// What was said of the control, held against its residuals.
void SiteJudgement::JudgeAccuracies() {
  const AdjustmentOptions& options = adjusted_->Options();
  for (const bool heights : {false, true}) {
    const double probability = adjusted_->FitProbability(heights);
    if (std::isfinite(probability) && probability < kLevel)
      verdict_.push_back(fmt::format(
          "The residuals of {} are larger than the standard deviations of the control allow (by "
          "chance in {:.1f} of 100 cases): these are too good, or a point is wrong.",
          heights ? "heights" : "positions", 100 * probability));
  }
  const double common = std::hypot(options.common[0], options.common[1]);
  if (common > 0 || options.common[2] > 0)
    verdict_.push_back(fmt::format(
        "An error that all points share, {} in position and {} in height, is part of every "
        "uncertainty here; no residual shows it.",
        Length(common), Length(options.common[2])));
}

// The error that would do most harm without being found.
void SiteJudgement::JudgeWeakest() {
  if (adjusted_->Positions().Freedom() == 0) return;
  std::size_t point = 0;
  int coordinate = -1;
  double largest = 0;
  bool unchecked = false;
  for (std::size_t i = 0; i < adjusted_->Points().size(); ++i)
    for (int c = 0; c < 2; ++c) {
      const AdjustedCoordinate& at = adjusted_->At(i, c);
      if (!(at.effect > largest)) continue;
      largest = at.effect;
      point = i;
      coordinate = c;
      unchecked = at.redundancy < kHardlyChecked;
    }
  if (coordinate < 0) return;
  const AdjustedCoordinate& at = adjusted_->At(point, coordinate);
  verdict_.push_back(
      std::isfinite(at.detectable)
          ? fmt::format(
                "The weakest point is {}: an error below {} would not be noticed there, and "
                "would move the site by up to {}.{}",
                NameOf(point, coordinate), Length(at.detectable), Length(at.effect),
                unchecked ? " The other points hardly check it: another one on its side "
                            "of the site is needed."
                          : "")
          : fmt::format("The weakest point is {}: no other checks it.", NameOf(point, coordinate)));
}

// Where on the site the prediction is worst: there the next control point does most.
void SiteJudgement::JudgePlace() {
  constexpr int kSteps = 20;
  const GridExtent extent = ExtentOf(solution_);
  double least = DBL_MAX, most = 0, at[2] = {};
  for (int i = 0; i <= kSteps; ++i)
    for (int k = 0; k <= kSteps; ++k) {
      const double n = extent.south + (extent.north - extent.south) * i / kSteps;
      const double e = extent.west + (extent.east - extent.west) * k / kSteps;
      const double radius = adjusted_->Predict({n, e, adjusted_->Pivot()[2]}).radius;
      if (!std::isfinite(radius)) return;
      least = std::min(least, radius);
      if (radius > most) {
        most = radius;
        at[0] = n;
        at[1] = e;
      }
    }
  verdict_.push_back(
      fmt::format("Over the control's extent a position is certain within {} to {} (95 %, the "
                  "site's own part). "
                  "Measure next near grid northing {:.0f}, easting {:.0f}, where it is least so.",
                  Length(least), Length(most), at[0], at[1]));
  if (adjusted_->HeightParameters().size() == 3 && adjusted_->Heights().Freedom() == 0)
    verdict_.push_back(
        "The inclined plane stands on three heights: nothing checks it. Measure a fourth.");
}

void SiteJudgement::JudgeModel() {
  for (const ModelComparison& models : adjusted_->CompareModels()) {
    if (models.larger == SiteModel::similarity && models.probability > kLevel)
      verdict_.push_back(fmt::format(
          "The data do not need a scale (a ratio as large comes by chance in {:.0f} of 100 cases).",
          100 * models.probability));
    if (models.larger == SiteModel::affine && models.probability <= kLevel)
      verdict_.push_back(
          "An affine site would fit markedly better: the local system is distorted, or several "
          "points are wrong.");
  }
  AdjustmentOptions robust = adjusted_->Options();
  robust.robust = true;
  const auto opinion = AdjustSite(solution_, robust);
  if (!opinion || adjusted_->Positions().Freedom() < 3) return;
  std::vector<std::string> left;
  for (std::size_t i = 0; i < opinion->Points().size(); ++i)
    if (std::min(opinion->At(i, 0).weight, opinion->At(i, 1).weight) < 0.1)
      left.push_back(solution_.NameOf(i));
  if (!left.empty())
    verdict_.push_back(fmt::format("A robust solution, an opinion only, gives no weight to {}.",
                                   fmt::join(left, ", ")));
}

}  // namespace geomath_files
