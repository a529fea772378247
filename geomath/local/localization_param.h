#pragma once

#include <optional>

#include "geomath/export.h"
#include "geomath/local/identical_point.h"
#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/ster_proj.h"

namespace zel_cs::geomath {

/// Solves a site calibration (localization) from control points that are known in the global and
/// in the local system: a similarity in the plane of a projection and an inclined plane for the
/// heights, in the model of LocalToGrid. Without a base projection the solver makes a stereographic
/// one of its own, centred on the site, and takes the points' global coordinates as latitude and
/// longitude; with one it takes them as grid coordinates of it. Kept: its Inverse, which finds the
/// geodetic origin and the height scale of one point, speaks the axes of the base projection; the
/// model speaks north and east, and so a base without axes of its own is wanted.
///
/// A projection of its own stands at the middle of the longitudes as they are: those of a site across
/// ±π must go on beyond it.
///
/// The estimators are not a common least-squares adjustment: the rotation is a least-squares fit of
/// directions from the centroid, the scale the mean of the distance ratios, the shifts carry one
/// centroid to the other, the heights are a least-squares plane. Kept: all directions and ratios weigh
/// alike, so that a point near the centroid spoils the site; CalibrationCheck names it.
///
/// The points stay the caller's and must outlive the solver, which writes into them: Init replaces
/// latitude and longitude by grid coordinates (so that they must be restored before Init runs
/// again), CalcResiduals writes the residuals. Null points are not used. Radians and metres.
/// Nothing throws; an object must not be used from two threads at once.
class GEOMATH_API TLocalizationParam {
 public:
  static constexpr int kCentreOfExtent = -2;  ///< placement: centre of the points' extent

  /// `fixScale` keeps the scale at exactly 1; `base` may be null, `a` (metres) and `invf` are then
  /// the ellipsoid of the solver's own projection; any other placement than −2 centres on the
  /// first usable point. Runs Init.
  TLocalizationParam(IdenticalPoint** points, int count, bool fixScale, TGeoProj* base, double a,
                     double invf, int placement);
  /// Copies share the points and the base projection; a projection of the solver's own is copied.
  TLocalizationParam(const TLocalizationParam&) = default;
  /// Likewise.
  TLocalizationParam& operator=(const TLocalizationParam&) = default;
  ~TLocalizationParam() = default;

  /// Counts the points, chooses the centre, places the own projection there and projects the
  /// points. Points without global northing or easting, or that cannot be projected, get use 0.
  void Init();
  /// Chooses the central point. False when no point can serve.
  bool SetCentralPt(int placement);

  /// Solves both parts and writes the residuals. False when nothing was solved.
  bool UpdateParameters();

  /// Horizontal solvers and their steps; false when the points do not suffice.
  bool Calculate4Params();
  bool Calculate4ParamsBy1Point();
  bool CalculateRotOnly();
  bool CalculateHorRotation(double& theta);  ///< in [0, 2π)
  bool CalculateHorScale(double& s);
  bool CalculateHorOffsets(double& tN, double& tE);
  void CalculateScaleBy1Point(double& s);

  /// Vertical solvers: inclined plane, one point, mean of two.
  bool Calculate3Params();
  bool Calculate3ParamsBy1Point();
  bool Calculate3ParamsBy2Points();

  /// Whether point i takes part. False for an index outside.
  bool UseForHorParams(int i) const;
  bool UseForVertParams(int i) const;
  bool UseForRotationOnly(int i) const;

  /// Writes local minus computed into every point, DBL_MAX where not computed.
  bool CalcResiduals(bool horizontal, bool vertical) const;
  /// Root mean square of the horizontal residuals, metres.
  bool GetDEstimation(double& rms) const;
  /// The rms, and the angle (radians) at which it is seen over the mean distance of the points from
  /// their centroid, multiplied by the rotation precision factor when that is 0.8 or more.
  bool GetEstimations(double& rms, double& angle) const;
  /// Mean distance of the horizontal points from their local centroid. Kept: point 0 is left out
  /// unless the placement is the centre of the extent, and so is a point within 1 mm of the
  /// centroid's northing or easting.
  bool AvgOffCenter(double& meanDistance) const;

  /// The solved parameters; false until that part is solved. A fixed scale reads 1.0.
  bool GetPlaneParameters(double& tN, double& tE, double& s, double& theta) const;
  bool GetHeightParameters(double& h0, double& aN, double& aE) const;
  /// The origin in both systems; false until Init has succeeded. Components that the central point
  /// does not have are DBL_MAX.
  bool GetGeodeticOrigin(double& lat, double& lon, double& h) const;
  bool GetLocalOrigin(double& N, double& E, double& H) const;
  /// 1 when the horizontal part is solved, plus 2 when the vertical part is.
  unsigned char GetInitialization() const;
  /// 1 with a projection of the solver's own, 5 with a base projection.
  char GetLocalizationType() const;
  /// kCentreOfExtent, or what else the constructor was given.
  int GetLocalizationPlacement() const { return placement_; }
  /// Whether the scale is kept at 1.
  bool IsScaleFixed() const { return fixScale_; }
  /// The projection in use, own or base.
  TGeoProj* GetBaseProjection() const;

  /// Scale factor, origin and false origin of the solver's own projection; 1.0 and 0 with a base
  /// projection.
  double GetProjScale() const;
  double GetLat0() const;
  double GetLon0() const;
  double GetFEast() const;
  double GetFNorth() const;

 private:
  using Test = bool (TLocalizationParam::*)(int) const;

  int Count() const { return points_ && count_ > 0 ? count_ : 0; }
  IdenticalPoint* Point(int i) const { return i >= 0 && i < Count() ? points_[i] : nullptr; }
  bool CentreOnExtent();
  bool CentreOnFirstPoint();
  const IdenticalPoint* First(Test usable) const;
  template <class Visit>
  void ForEach(Test usable, Visit visit) const;
  void PlaceProjection();
  void ProjectPoints();
  bool AvgCenter();
  PlaneVector CentreOf(Test usable) const;
  int CountOf(Test usable) const;
  bool VerticalPointsInLine(PlaneVector centre) const;

  IdenticalPoint** points_;
  int count_;
  bool fixScale_;
  TGeoProj* base_;
  mutable std::optional<TSterProj> own_;  // handed out writable like a base, by const queries too
  int placement_;

  IdenticalPoint centre_;
  bool initialized_ = false;
  int verticalCount_ = 0, horizontalCount_ = 0, rotationOnlyCount_ = 0;
  bool horizontalSolved_ = false, verticalSolved_ = false;
  double rotationPrecisionFactor_ = 0;

  double originLat_ = 0, originLon_ = 0, originH_ = 0;
  double localOriginN_ = 0, localOriginE_ = 0, localOriginH_ = 0;
  PlaneVector localCentroid_, globalCentroid_;
  double scale_ = 1.0, theta_ = 0, tN_ = 0, tE_ = 0;
  double h0_ = 0, aN_ = 0, aE_ = 0;
};

}  // namespace zel_cs::geomath
