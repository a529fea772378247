#pragma once

#include <optional>
#include <string>
#include <vector>

#include "files/site/site_solution.h"
#include "geomath/adjust/site_adjustment.h"

namespace geomath_files {

/// The least-squares adjustment of the points that a site was solved from, each for what it was used;
/// their standard deviations are weights. Where the heights give no plane they give a shift. Nothing
/// where the points do not determine the model.
std::optional<zel_cs::geomath::SiteAdjustment> AdjustSite(
    const SiteSolution& solution, const zel_cs::geomath::AdjustmentOptions& options = {});

/// A rectangle in the grid, metres.
struct GridExtent {
  double south;  ///< smallest northing
  double north;  ///< largest northing
  double west;   ///< smallest easting
  double east;   ///< largest easting
};
/// Of all control points that have a position, used or not.
GridExtent ExtentOf(const SiteSolution& solution);

/// What a least-squares adjustment says of a site beside its own solution.
class SiteJudgement {
 public:
  /// Judges at once; `solution` must outlive the judgement.
  explicit SiteJudgement(const SiteSolution& solution);

  /// Null where the points do not determine a similarity.
  const zel_cs::geomath::SiteAdjustment* Adjusted() const {
    return adjusted_ ? &*adjusted_ : nullptr;
  }
  /// Whether nothing speaks against using the site.
  bool Usable() const { return usable_; }
  /// In sentences: usable or not, the weakest point, what to measure next.
  const std::vector<std::string>& Verdict() const { return verdict_; }

 private:
  void JudgePoints();
  void JudgeAccuracies();
  void JudgeWeakest();
  void JudgePlace();
  void JudgeModel();
  std::string NameOf(std::size_t point, int coordinate) const;

  const SiteSolution& solution_;
  std::optional<zel_cs::geomath::SiteAdjustment> adjusted_;
  bool usable_ = false;
  std::vector<std::string> verdict_;
};

}  // namespace geomath_files
