#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/system/axis_pair.h"
#include "files/system/length_unit.h"
#include "geomath/adjust/site_adjustment.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/local/calibration_check.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/local/localization_param.h"

namespace geomath_files {

/// A control point as a file or a caller gives it: global latitude, longitude (degrees) and height
/// in the record's global fields, local coordinates, and its use.
struct ControlPoint {
  std::string name;                       ///< empty for none
  zel_cs::geomath::IdenticalPoint given;  ///< what the point does not have is not set
  /// In the order of kAccuracyColumns, where known: of the local coordinates (of both systems together
  /// where the global ones have none), then of the global ones.
  std::array<std::optional<double>, 12> accuracy = {};
};

/// The columns of control points: the global and local coordinates, in the order of kControlFields.
inline constexpr const char* kControlColumns[] = {"lat",     "lon",     "h",
                                                  "local_n", "local_e", "local_h"};

/// The columns of how good they are: standard deviations of northing, easting and height, metres, and
/// the correlations between these; those of global positions are to the north, to the east and up.
inline constexpr const char* kAccuracyColumns[] = {
    "sigma_n",        "sigma_e",        "sigma_h",         //
    "corr_ne",        "corr_nh",        "corr_eh",         //
    "global_sigma_n", "global_sigma_e", "global_sigma_h",  //
    "global_corr_ne", "global_corr_nh", "global_corr_eh"};
/// What is wrong with those of a point, for its message; empty for nothing.
std::string AccuracyProblem(const ControlPoint& point);
/// The covariance of a point, metres squared; zeros where nothing is known.
struct PointCovariance {
  double of[3][3] = {};  ///< northing, easting, height; symmetric
};
/// That of its local coordinates, or of its global ones.
PointCovariance CovarianceOf(const ControlPoint& point, bool global);

/// Whether it has both global coordinates of the plane.
bool HasPosition(const zel_cs::geomath::IdenticalPoint& point);

/// Sets a coordinate, by the index of its column, and that the point has it.
void SetControl(zel_cs::geomath::IdenticalPoint& point, std::size_t column, double value);

/// A coordinate, where the point has it.
std::optional<double> GetControl(const zel_cs::geomath::IdenticalPoint& point, std::size_t column);

/// The unit of a column of the control: that of the local ones, metres else (degrees are turned by
/// nobody).
LengthUnit UnitOfControl(std::size_t column, const GridUnits& units);

/// A point without coordinates, residuals and use.
zel_cs::geomath::IdenticalPoint NewControl();

/// The words for a PointUse, by its code.
const std::vector<std::string>& PointUseWords();

/// The use that a word or a code from 0 to 4 names.
std::optional<std::int32_t> PointUseOf(const std::string& text);

/// The use for everything that a point has in both systems.
std::int32_t WholeUse(const zel_cs::geomath::IdenticalPoint& point);

/// What a site calibration needs of a coordinate system.
struct SiteFrame {
  const zel_cs::geomath::CoordinateChain& chain;  ///< carries the control to the grid
  /// That of the chain, on axes north and east, for the site alone: its factors change. Null where
  /// the chain has none.
  std::unique_ptr<zel_cs::geomath::TGeoProj> projection;
  const zel_cs::geomath::Ellipsoid& ellipsoid;  ///< of a projection of the site's own
  AxisPair geographic, grid;                    ///< of the control's columns
  double date = zel_cs::geomath::kNoDate;       ///< of its global positions
};

/// How a site is solved.
struct CalibrationOptions {
  bool fixedScale = false;     ///< the horizontal scale is 1
  bool centreOnFirst = false;  ///< the solver's own projection stands on the first control point
  /// Of the global positions, a decimal year; kNoDate takes that of the system.
  double date = zel_cs::geomath::kNoDate;
  /// How the adjustment beside the site takes the accuracies of the control.
  zel_cs::geomath::AdjustmentOptions adjustment = {};
  /// Called between the points, of which many take long; what it throws ends the work.
  std::function<void()> onPoint = {};
};

/// A site calibration of control points: carries the points to the grid of a system (or, without a
/// projection, to its ellipsoid), solves, and examines the result. What the solver makes of three
/// heights and more in one line, nothing, becomes their mean shift here. Whatever the axes of the columns
/// are, parameters, points and residuals count to north and east. It stays where it was made.
class SiteSolution {
 public:
  /// Throws UserError when a point cannot be converted, or the points do not suffice.
  SiteSolution(SiteFrame frame, const std::vector<ControlPoint>& control,
               const CalibrationOptions& options);
  SiteSolution(const SiteSolution&) = delete;
  SiteSolution& operator=(const SiteSolution&) = delete;

  /// The site that was solved.
  const zel_cs::geomath::LocalToGrid& Site() const { return site_; }
  /// For what does not write: its estimates, which rewrite residuals, are kept here.
  const zel_cs::geomath::TLocalizationParam& Solver() const { return *solver_; }
  /// Root mean square of the horizontal residuals, metres, and the estimated error of the rotation,
  /// radians; where there are.
  std::optional<double> Rms() const { return rms_; }
  std::optional<double> RotationError() const { return rotationError_; }
  /// What the residuals say of the points.
  const zel_cs::geomath::CalibrationCheck& Check() const { return *check_; }
  /// The projection in use: that of the system, or a stereographic one of the site's own.
  const zel_cs::geomath::TGeoProj& Projection() const { return *solver_->GetBaseProjection(); }

  /// In grid coordinates, with residuals.
  const std::vector<zel_cs::geomath::IdenticalPoint>& Points() const { return points_; }
  /// Of a control point, by its index.
  const std::string& NameOf(std::size_t i) const { return control_[i].name; }
  /// The control points as they were given.
  const std::vector<ControlPoint>& Control() const { return control_; }
  /// The covariances of the points' coordinates in the grid, from those of their positions.
  const std::vector<PointCovariance>& GridCovariances() const { return gridCovariances_; }
  /// How the adjustment beside the site takes the accuracies of the control.
  const zel_cs::geomath::AdjustmentOptions& Adjustment() const { return adjustment_; }
  /// What the user should know of the site, in sentences.
  std::vector<std::string> Warnings() const;

 private:
  /// Throws UserError when there is horizontal control and no horizontal site.
  void RefuseOnePlace() const;
  /// Through the chain to the grid, which is of the site's own projection where there is no other.
  void TakeCovariances(zel_cs::geomath::CoordinateChain& chain, const AxisPair& geographic,
                       double date);
  void TakeParameters();
  void TakeEstimates();
  bool ShiftHeightsInLine();
  void RefuseMissedPoint() const;

  std::unique_ptr<zel_cs::geomath::TGeoProj> projection_;
  std::vector<ControlPoint> control_;
  std::vector<PointCovariance> gridCovariances_;
  zel_cs::geomath::AdjustmentOptions adjustment_;
  std::vector<zel_cs::geomath::IdenticalPoint> points_;
  std::vector<zel_cs::geomath::IdenticalPoint*> pointers_;
  std::optional<zel_cs::geomath::TLocalizationParam> solver_;
  std::optional<zel_cs::geomath::CalibrationCheck> check_;
  zel_cs::geomath::LocalToGrid site_;
  std::optional<double> rms_, rotationError_;
};

/// The name of a site's own projection in a system file, and its parameters in the units there.
inline constexpr const char* kOwnProjection = "STER";
std::vector<double> OwnProjectionValues(const SiteSolution& solution);

}  // namespace geomath_files
