#pragma once

#include <optional>
#include <vector>

#include "geomath/chain/chain_uncertainty.h"
#include "geomath/export.h"
#include "geomath/local/local_to_grid.h"

namespace zel_cs::geomath {

/// A point of a SiteAdjustment: known in a grid and in the local system of a site, metres.
struct AdjustmentPoint {
  double grid[3] = {};                ///< northing, easting, height
  double local[3] = {};               ///< likewise
  bool usePlane = true;               ///< whether northing and easting take part
  bool useHeight = true;              ///< whether the height does
  double gridCovariance[3][3] = {};   ///< of the grid coordinates, metres²
  double localCovariance[3][3] = {};  ///< of the local ones; independent of the grid's
};

/// How a site turns into the local system, by the number of its parameters.
enum class SiteModel : unsigned char {
  none = 0,        ///< no positions
  rigid = 3,       ///< two shifts and a rotation
  similarity = 4,  ///< and a scale
  affine = 6,      ///< two shifts and four coefficients
  spatial = 7,     ///< of positions with heights: three shifts, a scale, a rotation, two tilts
};

/// How heights turn, where the model is not spatial.
enum class HeightModel : unsigned char {
  none = 0,   ///< no heights
  shift = 1,  ///< a shift
  plane = 3,  ///< an inclined plane over the grid
};

/// What is asked of a SiteAdjustment.
struct AdjustmentOptions {
  SiteModel model = SiteModel::similarity;   ///< of positions
  HeightModel heights = HeightModel::plane;  ///< of heights
  /// Whether the points' covariances are what they say: then intervals are those of the normal
  /// distribution, and χ² tests the fit. Else they are relative weights, all equal where a point has
  /// none, and the variance of unit weight is estimated.
  bool sigmaKnown = false;
  /// Standard deviations of an error that all points share in the local system, metres: the base
  /// station's. No residual shows it; it enters every prediction.
  double common[3] = {};
  /// Whether outlying observations lose weight (IGG-III: Yang, Song and Xu 2002, Journal of Geodesy 76,
  /// 353-358, k0 = 1.5, k1 = 3).
  bool robust = false;
};

/// What an adjustment says about one coordinate of a point. NaN where it takes no part.
struct AdjustedCoordinate {
  double residual;      ///< local minus computed, metres
  double redundancy;    ///< the share of an error that shows in its own residual, 0 to 1
  double standardised;  ///< residual over its standard deviation, with the estimated σ0
  double normalised;    ///< with σ0 = 1: Baarda's w, where covariances are known
  double detectable;    ///< smallest error found with power 0.80 at 0.001 (Baarda 1968), metres
  double effect;        ///< what that error does to the worst control point, if not found, metres
  double predicted;     ///< local minus what all other points make of it
  double weight;        ///< share of its weight that the robust solution left it; else 1
};

/// One of the two adjustments, or both in one.
struct GEOMATH_API AdjustmentPart {
  int observations = 0;     ///< coordinates that take part
  int unknowns = 0;         ///< parameters
  double sumOfSquares = 0;  ///< vᵀPv
  /// Observations less parameters.
  int Freedom() const { return observations - unknowns; }
  /// The estimated variance of unit weight; NaN without redundancy.
  double Variance() const;
};

/// A position that an adjustment predicts.
struct SitePrediction {
  double local[3];          ///< northing, easting, height; NaN where the model has none
  double covariance[3][3];  ///< metres²
  double halfWidth[3];      ///< of the interval that holds each with the probability asked for
  double radius;            ///< of the circle that holds the position; NaN without one
};

/// Whether more parameters are worth it: the larger of two nested models against the smaller.
struct ModelComparison {
  SiteModel smaller;   ///< of positions
  SiteModel larger;    ///< of positions
  double ratio;        ///< F = ((R1 − R2)/(f1 − f2))/(R2/f2)
  double probability;  ///< of such a ratio, or a larger one, when the smaller model is true
};

/// A site calibration by least squares, judged: beside TLocalizationParam, whose estimators are others.
///
/// Local coordinates are observations of unknown parameters, with the covariance of each point: its
/// local one and, turned and scaled, that of the grid coordinates. Positions and heights are two
/// adjustments unless the model is spatial. Statistics are those of the Gauss-Markov model (Baarda
/// 1968; Pope 1976; Koch 1999, Parameter Estimation and Hypothesis Testing, chapters 3 and 4).
/// Parameters are about the centroid of the control (`Pivot`), which they are hardly correlated at.
///
/// Made by Solve; queries are const, and safe from many threads.
class GEOMATH_API SiteAdjustment {
 public:
  /// Nothing when the points do not determine the parameters: too few, in one place, for an affine or
  /// inclined-plane model on one line, or a coordinate or covariance that is none (an entry that is
  /// not finite, a variance below 0; where some points of a part have covariances, all of them must).
  static std::optional<SiteAdjustment> Solve(std::vector<AdjustmentPoint> points,
                                             const AdjustmentOptions& options = {});

  /// What was asked for, and the points.
  const AdjustmentOptions& Options() const { return options_; }
  const std::vector<AdjustmentPoint>& Points() const { return points_; }

  /// The adjustment of positions, or of both in a spatial model; and that of heights.
  const AdjustmentPart& Positions() const { return parts_[0]; }
  const AdjustmentPart& Heights() const { return parts_[1]; }

  /// One coordinate (0 northing, 1 easting, 2 height) of a point.
  const AdjustedCoordinate& At(std::size_t point, int coordinate) const {
    return coordinates_[3 * point + static_cast<std::size_t>(coordinate)];
  }

  /// The parameters of positions in the order of the model, about the pivot: shifts (the local
  /// coordinates of the pivot), then scale and rotation, or the four coefficients ∂n/∂N, ∂n/∂E, ∂e/∂N,
  /// ∂e/∂E, or scale, rotation and the tilts about north and east. Metres and radians.
  const std::vector<double>& Parameters() const { return systems_[0].parameters; }
  /// Those of heights: the shift at the pivot, and the slopes towards north and east.
  const std::vector<double>& HeightParameters() const { return systems_[1].parameters; }
  /// Standard deviation of a parameter of positions or heights, common error included; NaN where the
  /// variance is estimated without redundancy.
  double Deviation(std::size_t parameter) const;
  double HeightDeviation(std::size_t parameter) const;
  /// The grid point that the parameters are about: northing, easting, height.
  const double (&Pivot() const)[3] { return pivot_; }

  /// A grid position in the local system: s² = σ0²·(w·Qxx·wᵀ + q) and the common error. `probability` is
  /// that of the intervals, of each coordinate alone, with Student's t where the variance is estimated
  /// (beside a common error with the degrees of freedom of Welch 1947). They hold the true coordinate;
  /// with `observed`, √q, an observation of it: 1 for one like the control's where weights are equal,
  /// metres where points have covariances.
  SitePrediction Predict(const double (&grid)[3], double probability = 0.95,
                         double observed = 0) const;

  /// The critical value of standardised residuals for all of a part at the level alpha: Pope's τ, or
  /// with known covariances Baarda's 3.29 at alpha 0.001.
  double Critical(double alpha = 0.05, bool heights = false) const;
  /// Probability of a sum of squares as large or larger, with known covariances (χ²); NaN else.
  double FitProbability(bool heights = false) const;

  /// Rigid against similarity, similarity against affine, as far as the points suffice.
  std::vector<ModelComparison> CompareModels() const;

  /// The site as a LocalToGrid uses it, on its projection: for rigid and similarity models, with the
  /// heights. False, nothing changed, for the others.
  bool Apply(LocalToGrid& site) const;
  /// The covariance of its parameters, for a ChainUncertainty. Likewise.
  bool Covariance(SiteCovariance& covariance) const;

 private:
  struct System {
    std::vector<double> parameters, cofactors;
  };
  struct Block;
  SiteAdjustment(std::vector<AdjustmentPoint> points, const AdjustmentOptions& options)
      : options_(options), points_(std::move(points)) {}

  bool Prepare();
  bool Run(bool heights);
  bool Start(bool heights, std::vector<double>& parameters) const;
  int Unknowns(bool heights) const;
  bool Takes(const AdjustmentPoint& point, bool heights) const;
  struct Computed;
  Computed Compute(bool heights, const std::vector<double>& parameters,
                   const double (&grid)[3]) const;
  void Judge(bool heights, const std::vector<Block>& blocks);
  bool Weigh(bool heights, const std::vector<double>& parameters, Block& block) const;
  void Reweigh(bool heights, std::vector<Block>& blocks) const;
  /// The variance that cofactors are multiplied by.
  double UnitVariance(bool heights) const;

  AdjustmentOptions options_;
  std::vector<AdjustmentPoint> points_;
  bool weighted_[2] = {};  // whether points have covariances, positions and heights
  double pivot_[3] = {}, localPivot_[3] = {};
  AdjustmentPart parts_[2];
  System systems_[2];
  std::vector<AdjustedCoordinate> coordinates_;
};

}  // namespace zel_cs::geomath
