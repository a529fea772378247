#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "geomath/export.h"
#include "geomath/local/identical_point.h"
#include "geomath/local/localization_param.h"
#include "geomath/local/site_covariance.h"

namespace zel_cs::geomath {

/// What a calibration says about one of its control points. Metres; NaN where there is nothing to
/// say: the point is not used for that part, or the part has no redundancy.
struct PointCheck {
  /// Residual over its own standard deviation, without unit. Beyond ±3.29 (1 in 1000) suspicious.
  double standardN, standardE, standardH;
  /// Given minus computed, from a calibration on all other points.
  double predictedN, predictedE, predictedH;
};

/// Formal standard deviations: metres, radians, metres per metre. NaN where there is no redundancy;
/// 0 for what is not estimated (a fixed scale, the slopes of one or two heights).
struct CalibrationDeviations {
  double tN;        ///< of the shift of northings
  double tE;        ///< of the shift of eastings
  double scale;     ///< of the scale
  double rotation;  ///< of the rotation
  double h0;        ///< of the height shift
  double aN;        ///< of the slope towards north
  double aE;        ///< of the slope towards east
};

/// A horizontal calibration in three figures.
struct CalibrationFit {
  double scale;     ///< of the site
  double rotation;  ///< radians
  double rms;       ///< of the residuals, metres
};

/// What is weak about a calibration.
struct CalibrationWarning {
  /// What is weak, and what `value` then holds.
  enum class Kind {
    fewPoints,          ///< one or two horizontal points; value: how many
    pointsInLine,       ///< horizontal points nearly in one line; value: width over length
    scaleFarFromOne,    ///< value: the scale
    fewHeights,         ///< no more than three heights; value: how many
    heightsInLine,      ///< heights nearly in one line; value: width over length
    suspiciousPoint,    ///< value: the largest standardised residual of `point`
    outsideTheControl,  ///< an unused point beyond the control; value: the distance, metres
    nearCentroid,       ///< `point` is so near the centroid that it spoils the site; value: metres
    mirrored,           ///< the control fits its mirror image; value: the rms of that fit, metres
    misfit,             ///< the residuals are beyond reason; value: the mean distance, metres
    heightsShifted,     ///< heights in one line have a mean shift; value: how many
  };
  Kind kind;     ///< what is weak
  int point;     ///< its index, −1 where the warning is not about one point
  double value;  ///< as the kind says
  /// The site (nearCentroid, mirrored, misfit), and what it is without points near the centroid.
  CalibrationFit fit = {}, without = {};
};

/// The warning as a sentence for a surveyor. `pointName` is the name of its point.
GEOMATH_API std::string CalibrationWarningText(const CalibrationWarning& warning,
                                               std::string_view pointName = {});

/// Examines a solved site calibration: how well each point fits, which one fits worst, how precise
/// the parameters are, and where the geometry is weak.
///
/// Precision is that of the estimators in use, by the law of propagation of variances (Mikhail
/// 1976, chapter 4): every estimate is linearised as L·l in the local coordinates l, which are
/// taken as uncorrelated and equally precise, so that its cofactors are L·Lᵀ. With the design rows
/// W the residuals v = l − W·L·l have the cofactors Qvv = (I − W·L)·(I − W·L)ᵀ, the variance of
/// unit weight is σ0² = vᵀv/tr Qvv (for a least-squares estimate the usual vᵀv over the degrees of
/// freedom), and the standardised residual is v/(σ0·√qvv) (Baarda 1968, with σ0 estimated as in
/// Pope 1976). Horizontal and vertical parts have a σ0 each.
///
/// A point near the centroid of the control is a danger of its own: the estimators take the unit
/// direction and the distance ratio of every point with the same weight, while an error of its
/// position turns and scales by that error over its distance. With distances d the rotation has the
/// cofactor Σ d⁻²/n²; where leaving out the nearest points divides its square root by two or more,
/// they are named, with what the site is without them.
///
/// Heights in one line give no plane. Where a caller has given such control a mean shift, and its
/// residuals to all of its points, they are examined as those of a mean.
///
/// Everything is computed at construction; queries are const and may run from many threads.
class GEOMATH_API CalibrationCheck {
 public:
  /// `points` are those of `solved`, after its UpdateParameters; they are only read. The solver's
  /// projection converts points meanwhile, nothing else of it changes. Time grows with the square
  /// of the number of points (each is left out once), 1000 points take some hundredths of a second.
  /// `onPoint`, when it is given, is called after each: what it throws ends the check.
  CalibrationCheck(const IdenticalPoint* const* points, int count, const TLocalizationParam& solved,
                   const std::function<void()>& onPoint = {});

  /// One entry a point, in their order.
  const std::vector<PointCheck>& Points() const { return checks_; }
  /// How precise the parameters are.
  const CalibrationDeviations& Deviations() const { return deviations_; }
  /// The same with their correlations, about the centroid of the horizontal control (or of the
  /// heights where there is none). Returns the parts that have redundancy, as LocalToGrid::mode
  /// counts them; the others are zeros.
  unsigned char Covariance(SiteCovariance& covariance) const;
  /// Standard deviation of one local coordinate, metres; NaN without redundancy.
  double HorizontalSigma() const { return horizontalSigma_; }
  double VerticalSigma() const { return verticalSigma_; }

  /// The point that the others predict worst, horizontally or in height; −1 where the points do not
  /// suffice (three horizontal ones, four heights) or all are exact. Horizontally also −1 where a
  /// point near the centroid spoils what the others predict.
  int WorstHorizontal() const { return worstHorizontal_; }
  int WorstVertical() const { return worstVertical_; }

  /// Distance of a grid position from the convex hull of the control, metres; 0 inside.
  double DistanceOutside(double gridN, double gridE) const;

  /// What is weak; empty when nothing is.
  const std::vector<CalibrationWarning>& Warnings() const { return warnings_; }

 private:
  const IdenticalPoint& At(int i) const { return *points_[i]; }
  std::vector<int> Where(bool (TLocalizationParam::*used)(int) const) const;
  PlaneVector Mean(const std::vector<int>& which) const;
  double WidthOverLength(const std::vector<int>& which) const;
  void CheckPlane();
  void CheckHeights();
  bool HeightsAreShifted() const;
  void FindPointsNearCentroid();
  void LeaveOneOut(const std::function<void()>& onPoint);
  void PredictMeanHeights();
  CalibrationFit Fit(const IdenticalPoint* const* points, const TLocalizationParam& site) const;
  double MirroredRms() const;
  bool IsMirrored() const;
  void WarnOfMisfit();
  void FindHull(const std::vector<int>& control);
  void Warn();

  const IdenticalPoint* const* points_;
  int count_;
  const TLocalizationParam* solved_;
  std::vector<int> horizontal_, vertical_, directions_;

  std::vector<PointCheck> checks_;
  CalibrationDeviations deviations_;
  double horizontalSigma_, verticalSigma_;
  double planeCofactors_[4][4] = {}, heightCofactors_[3][3] = {};  // about the centroids
  int worstHorizontal_ = -1, worstVertical_ = -1;
  std::vector<PlaneVector> hull_;
  std::vector<CalibrationWarning> warnings_;
};

}  // namespace zel_cs::geomath
