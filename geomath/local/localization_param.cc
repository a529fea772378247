#include "geomath/local/localization_param.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/local/packed_symmetric.h"
#include "geomath/local/plane_rotation.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Symbols: (tN, tE) shifts, s scale, θ rotation; h0 height shift, (aN, aE) slopes; p = s-free cosine
// and q = sine of the rotation as the direction fit finds them.
namespace zel_cs::geomath {
namespace {

constexpr std::uint32_t kHasPlane = kHasNorth | kHasEast;
constexpr double kSmallestSquaredDistance = 1e-5;  // m², below it a distance gives no ratio
constexpr double kOnAxis = 0.001;                  // metres from the centroid's axes
constexpr double kWeakRotation = 0.8;              // rotation precision factor
constexpr double kInLine = 1e-8;  // width over length below which points count as one line
constexpr char kOwnProjection = 1, kGivenProjection = 5;

bool Has(std::uint32_t flags, std::uint32_t components) {
  return (flags & components) == components;
}

class Extent {
 public:
  void Add(double x) {
    if (x <= min_) {
      min_ = x;
      hasMin_ = true;
    }
    if (x >= max_) {
      max_ = x;
      hasMax_ = true;
    }
  }
  bool Exists() const { return hasMin_ && hasMax_; }
  double Middle() const { return max_ == min_ ? max_ : min_ + (max_ - min_) * 0.5; }

 private:
  double min_ = DBL_MAX, max_ = -DBL_MAX;
  bool hasMin_ = false, hasMax_ = false;
};

// The unit vector along (n, e); a vector no longer than `rounding` is zero, and stays so.
PlaneVector UnitVector(double n, double e, double rounding) {
  const double length = std::sqrt(n * n + e * e);
  return length <= rounding ? PlaneVector{0, 0} : PlaneVector{n / length, e / length};
}

// How far the mean of `count` equal points can lie from them, by its rounding alone.
double RoundingOfMean(double n, double e, int count) {
  return count * DBL_EPSILON * std::max(std::abs(n), std::abs(e));
}

}  // namespace

TLocalizationParam::TLocalizationParam(IdenticalPoint** points, int count, bool fixScale,
                                       TGeoProj* base, double a, double invf, int placement)
    : points_(points), count_(count), fixScale_(fixScale), base_(base), placement_(placement) {
  if (!base_) own_.emplace(a, invf, 0, 0, 1.0, 0, 0);
  Init();
}

TGeoProj* TLocalizationParam::GetBaseProjection() const { return base_ ? base_ : &*own_; }

template <class Visit>
void TLocalizationParam::ForEach(Test usable, Visit visit) const {
  for (int i = 0; i < Count(); ++i)
    if ((this->*usable)(i)) visit(*points_[i]);
}

const IdenticalPoint* TLocalizationParam::First(Test usable) const {
  for (int i = 0; i < Count(); ++i)
    if ((this->*usable)(i)) return points_[i];
  return nullptr;
}

int TLocalizationParam::CountOf(Test usable) const {
  int count = 0;
  ForEach(usable, [&](const IdenticalPoint&) { ++count; });
  return count;
}

bool TLocalizationParam::UseForHorParams(int i) const {
  const IdenticalPoint* p = Point(i);
  return p && (p->use == PointUseHorizontal || p->use == PointUseBoth) &&
         Has(p->globalFlags, kHasPlane) && Has(p->localFlags, kHasPlane);
}

bool TLocalizationParam::UseForVertParams(int i) const {
  const IdenticalPoint* p = Point(i);
  return p && (p->use == PointUseVertical || p->use == PointUseBoth) &&
         Has(p->globalFlags, kHasPlane | kHasHeight) && Has(p->localFlags, kHasHeight);
}

bool TLocalizationParam::UseForRotationOnly(int i) const {
  const IdenticalPoint* p = Point(i);
  return p && p->use == PointUseRotation && Has(p->globalFlags, kHasPlane) &&
         Has(p->localFlags, kHasPlane);
}

void TLocalizationParam::Init() {
  initialized_ = false;
  originLat_ = originLon_ = 0;
  originH_ = localOriginN_ = localOriginE_ = localOriginH_ = DBL_MAX;

  // These counts stay, also when a point is found unusable below.
  verticalCount_ = CountOf(&TLocalizationParam::UseForVertParams);
  horizontalCount_ = CountOf(&TLocalizationParam::UseForHorParams);
  rotationOnlyCount_ = CountOf(&TLocalizationParam::UseForRotationOnly);
  if (verticalCount_ == 0 && horizontalCount_ == 0) return;
  if (!SetCentralPt(placement_)) return;

  if (Has(centre_.localFlags, kHasPlane)) {
    localOriginN_ = centre_.localN;
    localOriginE_ = centre_.localE;
  }
  if (Has(centre_.localFlags, kHasHeight)) localOriginH_ = centre_.localH;
  if (Has(centre_.globalFlags, kHasHeight)) originH_ = centre_.globalH;

  PlaceProjection();
  ProjectPoints();
  if (!AvgCenter()) {
    localCentroid_ = {localOriginN_, localOriginE_};
    globalCentroid_ = {originLat_, originLon_};
    if (!GetBaseProjection()->Forward(globalCentroid_.n, globalCentroid_.e)) globalCentroid_ = {};
  }
  initialized_ = true;
}

bool TLocalizationParam::SetCentralPt(int placement) {
  if (placement != kCentreOfExtent) return CentreOnFirstPoint();
  if (!CentreOnExtent()) return false;
  placement_ = kCentreOfExtent;
  return true;
}

bool TLocalizationParam::CentreOnExtent() {
  Extent globalN, globalE, globalH, localN, localE, localH;
  ForEach(&TLocalizationParam::UseForHorParams, [&](const IdenticalPoint& p) {
    globalN.Add(p.globalN);
    globalE.Add(p.globalE);
    localN.Add(p.localN);
    localE.Add(p.localE);
  });
  ForEach(&TLocalizationParam::UseForVertParams, [&](const IdenticalPoint& p) {
    globalH.Add(p.globalH);
    localH.Add(p.localH);
  });
  if (!globalN.Exists() || !globalE.Exists()) return false;

  const auto addHeight = [](const Extent& extent, double& h, std::uint32_t& flags) {
    h = 0;
    if (!extent.Exists()) return;
    h = extent.Middle();
    flags |= kHasHeight;
  };
  centre_.globalN = globalN.Middle();
  centre_.globalE = globalE.Middle();
  centre_.globalFlags = kHasPlane;
  centre_.localFlags = 0;
  addHeight(globalH, centre_.globalH, centre_.globalFlags);
  if (localN.Exists() && localE.Exists()) {
    centre_.localN = localN.Middle();
    centre_.localE = localE.Middle();
    centre_.localFlags = kHasPlane;
    addHeight(localH, centre_.localH, centre_.localFlags);
  }
  return true;
}

bool TLocalizationParam::CentreOnFirstPoint() {
  const IdenticalPoint* horizontal = First(&TLocalizationParam::UseForHorParams);
  const IdenticalPoint* vertical = First(&TLocalizationParam::UseForVertParams);
  if (!horizontal && !vertical) return false;
  centre_ = horizontal ? *horizontal : *vertical;
  if (horizontal) {
    centre_.globalH = vertical ? vertical->globalH : 0;
    centre_.localH = vertical ? vertical->localH : 0;
  }
  return true;
}

void TLocalizationParam::PlaceProjection() {
  if (base_) {
    double lat = centre_.globalN, lon = centre_.globalE;
    if (!base_->Inverse(lat, lon)) return;
    originLat_ = lat;
    originLon_ = lon;
    return;
  }
  own_->SetParam(centre_.globalN, 0, kUnitInternal);
  own_->SetParam(centre_.globalE, 1, kUnitInternal);
  own_->SetParam(0, 3, kUnitDegrees);
  own_->SetParam(0, 4, kUnitDegrees);
  originLat_ = own_->Lat0();
  originLon_ = own_->Lon0();
}

void TLocalizationParam::ProjectPoints() {
  for (int i = 0; i < Count(); ++i) {
    if (!points_[i]) continue;
    IdenticalPoint& p = *points_[i];
    if (!Has(p.globalFlags, kHasPlane)) {
      p.use = PointUseNone;
    } else if (own_) {
      double n = p.globalN, e = p.globalE;
      if (own_->Forward(n, e)) {
        p.globalN = n;
        p.globalE = e;
      } else {
        p.use = PointUseNone;
      }
    }
    if (!Has(p.globalFlags, kHasHeight)) p.globalH = 0;
  }
}

// The mean global position of points of which there is one at least.
PlaneVector TLocalizationParam::CentreOf(Test usable) const {
  PlaneVector sum;
  double count = 0;
  ForEach(usable, [&](const IdenticalPoint& p) {
    sum.n += p.globalN;
    sum.e += p.globalE;
    ++count;
  });
  return {sum.n / count, sum.e / count};
}

bool TLocalizationParam::AvgCenter() {
  PlaneVector local, global;
  int count = 0;
  ForEach(&TLocalizationParam::UseForHorParams, [&](const IdenticalPoint& p) {
    local.n += p.localN;
    local.e += p.localE;
    global.n += p.globalN;
    global.e += p.globalE;
    ++count;
  });
  if (count == 0) return false;
  localCentroid_ = {local.n / count, local.e / count};
  globalCentroid_ = {global.n / count, global.e / count};
  return true;
}

bool TLocalizationParam::UpdateParameters() {
  horizontalSolved_ = verticalSolved_ = false;
  if (!initialized_) return false;

  if (horizontalCount_ >= 1 && rotationOnlyCount_ >= 1)
    horizontalSolved_ = CalculateRotOnly();
  else if (horizontalCount_ >= 2)
    horizontalSolved_ = Calculate4Params();
  else if (horizontalCount_ == 1)
    horizontalSolved_ = Calculate4ParamsBy1Point();

  if (verticalCount_ >= 3)
    verticalSolved_ = Calculate3Params();
  else if (verticalCount_ == 2)
    verticalSolved_ = Calculate3ParamsBy2Points();
  else if (verticalCount_ == 1)
    verticalSolved_ = Calculate3ParamsBy1Point();

  if (!horizontalSolved_ && !verticalSolved_) return false;
  CalcResiduals(horizontalSolved_, verticalSolved_);
  return true;
}

bool TLocalizationParam::Calculate4Params() {
  double theta = 0, s = 1.0, tN = 0, tE = 0;
  if (!CalculateHorRotation(theta)) return false;
  if (!fixScale_ && !CalculateHorScale(s)) return false;
  theta_ = theta;
  scale_ = s;
  if (!CalculateHorOffsets(tN, tE)) return false;
  tN_ = tN;
  tE_ = tE;
  return true;
}

bool TLocalizationParam::CalculateRotOnly() {
  double theta = 0, s = 1.0, tN = 0, tE = 0;
  if (!fixScale_) {
    if (horizontalCount_ < 2)
      CalculateScaleBy1Point(s);
    else
      CalculateHorScale(s);
  }
  if (!CalculateHorRotation(theta)) return false;
  theta_ = theta;
  scale_ = s;
  if (!CalculateHorOffsets(tN, tE)) return false;
  tN_ = tN;
  tE_ = tE;
  return true;
}

bool TLocalizationParam::Calculate4ParamsBy1Point() {
  const IdenticalPoint* p = First(&TLocalizationParam::UseForHorParams);
  if (!p) return false;
  CalculateScaleBy1Point(scale_);  // Kept: also when the scale is fixed and reads 1.0
  theta_ = 0;
  tN_ = p->localN - scale_ * p->globalN;
  tE_ = p->localE - scale_ * p->globalE;
  return true;
}

// Least squares on directions: every point observes the unit vector u of its local direction from
// the centroid as the rotated unit vector g of its global one,
//   p·gN − q·gE = uN      q·gN + p·gE = uE
// with p = cos θ and q = sin θ as the unknowns. Zero vectors carry no weight, and points that all
// stand in one place give no rotation.
bool TLocalizationParam::CalculateHorRotation(double& theta) {
  if (horizontalCount_ == 0) return false;
  double normal[3] = {0, 0, 0};  // packed 2 × 2
  double right[2] = {0, 0};
  bool anyDirection = false;
  const auto direction = [&](double n, double e, PlaneVector centroid) {
    return UnitVector(n - centroid.n, e - centroid.e, RoundingOfMean(n, e, horizontalCount_));
  };
  const auto observe = [&](const IdenticalPoint& point) {
    const PlaneVector g = direction(point.globalN, point.globalE, globalCentroid_);
    const PlaneVector u = direction(point.localN, point.localE, localCentroid_);
    anyDirection = anyDirection || u.n != 0 || u.e != 0;
    normal[0] += g.n * g.n + g.e * g.e;
    normal[1] += g.e * g.n - g.n * g.e;
    normal[2] += g.e * g.e + g.n * g.n;
    right[0] += g.n * u.n + g.e * u.e;
    right[1] += g.n * u.e - g.e * u.n;
  };
  ForEach(&TLocalizationParam::UseForHorParams, observe);
  ForEach(&TLocalizationParam::UseForRotationOnly, observe);
  if (!anyDirection || !InvertPackedSymmetric(normal, 2)) return false;

  const double p = normal[0] * right[0] + normal[1] * right[1];
  const double q = normal[1] * right[0] + normal[2] * right[1];
  rotationPrecisionFactor_ = std::sqrt(std::abs(normal[0]) + std::abs(normal[2]));
  theta = Atan2(q, p);
  if (theta < 0) theta += kTwoPi;
  if (theta >= kTwoPi) theta = 0;  // a turn of less than -4e-16 rounds up to a full one
  return true;
}

bool TLocalizationParam::CalculateHorScale(double& s) {
  s = 1.0;
  if (horizontalCount_ < 2) return false;
  double sum = 0;
  int count = 0;
  ForEach(&TLocalizationParam::UseForHorParams, [&](const IdenticalPoint& p) {
    const double lN = p.localN - localCentroid_.n, lE = p.localE - localCentroid_.e;
    const double gN = p.globalN - globalCentroid_.n, gE = p.globalE - globalCentroid_.e;
    const double local2 = lN * lN + lE * lE, global2 = gN * gN + gE * gE;
    if (!(local2 >= kSmallestSquaredDistance && global2 >= kSmallestSquaredDistance)) return;
    sum += std::sqrt(local2 / global2);
    ++count;
  });
  if (count == 0) return false;
  s = sum / count;
  return true;
}

bool TLocalizationParam::CalculateHorOffsets(double& tN, double& tE) {
  const auto [n, e] = PlaneRotation(theta_).Turn(globalCentroid_.n, globalCentroid_.e);
  tN = localCentroid_.n - scale_ * n;
  tE = localCentroid_.e - scale_ * e;
  return true;
}

void TLocalizationParam::CalculateScaleBy1Point(double& s) {
  s = 1.0;
  for (int i = 0; i < Count(); ++i) {
    if (!UseForHorParams(i)) continue;
    const IdenticalPoint& p = *points_[i];
    const double h = UseForVertParams(i) ? p.scaleHeight : 0;
    double lat = p.globalN, lon = p.globalE;
    TGeoProj& projection = *GetBaseProjection();
    if (projection.Inverse(lat, lon)) {
      const double radius = projection.GetEllipsoid().GetGaussianRadius(lat);
      s = 1 + (radius == 0 ? 0 : h / radius);
    }
    return;
  }
}

// Points in one line leave the slope across it undetermined, which rounding can hide from the
// factorisation of the normal matrix.
bool TLocalizationParam::VerticalPointsInLine(PlaneVector centre) const {
  double nn = 0, ne = 0, ee = 0;
  const auto forEachReduced = [&](auto visit) {
    ForEach(&TLocalizationParam::UseForVertParams,
            [&](const IdenticalPoint& p) { visit(p.globalN - centre.n, p.globalE - centre.e); });
  };
  forEachReduced([&](double dN, double dE) {
    nn += dN * dN;
    ne += dN * dE;
    ee += dE * dE;
  });
  // The width is summed from the distances to the main axis: the determinant nn·ee − ne² would
  // drown a width below 1e-8 of the length in its own rounding.
  const PlaneRotation axis(0.5 * Atan2(2 * ne, nn - ee));
  double width2 = 0;
  forEachReduced([&](double dN, double dE) {
    const double off = axis.TurnBack(dN, dE).e;
    width2 += off * off;
  });
  return !(width2 > kInLine * kInLine * (nn + ee));
}

// d = h0 + aN·N + aE·E over the vertical points, solved with x and y from the mean of the points and
// carried back: in the coordinates as they are, of 5e6 m, the normal matrix of a site of 200 m by 6 m
// leaves 69 mm.
bool TLocalizationParam::Calculate3Params() {
  const PlaneVector centre = CentreOf(&TLocalizationParam::UseForVertParams);
  double normal[6] = {0, 0, 0, 0, 0, 0};  // packed: Σx², Σxy, Σy², Σx, Σy, n
  double dx = 0, dy = 0, d = 0;
  ForEach(&TLocalizationParam::UseForVertParams, [&](const IdenticalPoint& p) {
    const double x = p.globalN - centre.n, y = p.globalE - centre.e;
    const double difference = p.localH - p.globalH;
    normal[0] += x * x;
    normal[1] += x * y;
    normal[2] += y * y;
    normal[3] += x;
    normal[4] += y;
    normal[5] += 1;
    dx += difference * x;
    dy += difference * y;
    d += difference;
  });
  if (VerticalPointsInLine(centre) || !InvertPackedSymmetric(normal, 3)) return false;
  aN_ = normal[0] * dx + normal[1] * dy + normal[3] * d;
  aE_ = normal[1] * dx + normal[2] * dy + normal[4] * d;
  h0_ = normal[3] * dx + normal[4] * dy + normal[5] * d - aN_ * centre.n - aE_ * centre.e;
  return true;
}

bool TLocalizationParam::Calculate3ParamsBy1Point() {
  h0_ = aN_ = aE_ = 0;
  const IdenticalPoint* p = First(&TLocalizationParam::UseForVertParams);
  if (!p) return false;
  h0_ = p->localH - p->globalH;
  return true;
}

bool TLocalizationParam::Calculate3ParamsBy2Points() {
  h0_ = aN_ = aE_ = 0;
  double sum = 0;
  int count = 0;
  ForEach(&TLocalizationParam::UseForVertParams, [&](const IdenticalPoint& p) {
    if (count == 2) return;
    sum += p.localH - p.globalH;
    ++count;
  });
  if (count < 2) return false;
  h0_ = sum / 2;
  return true;
}

bool TLocalizationParam::CalcResiduals(bool horizontal, bool vertical) const {
  LocalToGrid site;
  if (double tN, tE, s, theta; horizontal && GetPlaneParameters(tN, tE, s, theta)) {
    const double plane[] = {tN, tE, s, theta};
    for (int i = 0; i < 4; ++i) site.SetPlaneParam(plane[i], i, kUnitInternal);
  }
  if (double h0, aN, aE; vertical && GetHeightParameters(h0, aN, aE)) {
    const double height[] = {h0, aN, aE};
    for (int i = 0; i < 3; ++i) site.SetHeightParam(height[i], i, kUnitInternal);
  }
  const unsigned mode =
      (horizontal ? LocalToGrid::kHorizontal : 0) + (vertical ? LocalToGrid::kVertical : 0);
  site.mode = static_cast<unsigned char>(mode);

  for (int i = 0; i < Count(); ++i) {
    if (!points_[i]) continue;
    IdenticalPoint& p = *points_[i];
    p.residualN = p.residualE = p.residualH = DBL_MAX;
    const bool hasHeight = Has(p.globalFlags, kHasHeight);
    if (!Has(p.globalFlags, kHasPlane) || (!hasHeight && mode == LocalToGrid::kVertical)) continue;

    double n = p.globalN, e = p.globalE, h = hasHeight ? p.globalH : 0;
    if (!site.ToLocal(n, e, h, hasHeight ? mode : LocalToGrid::kHorizontal)) continue;
    if (horizontal && Has(p.localFlags, kHasNorth)) p.residualN = p.localN - n;
    if (horizontal && Has(p.localFlags, kHasEast)) p.residualE = p.localE - e;
    if (vertical && hasHeight && Has(p.localFlags, kHasHeight)) p.residualH = p.localH - h;
  }
  return true;
}

bool TLocalizationParam::GetDEstimation(double& rms) const {
  if (Count() == 0) return false;
  CalcResiduals(true, true);
  double sum = 0;
  int count = 0;
  ForEach(&TLocalizationParam::UseForHorParams, [&](const IdenticalPoint& p) {
    if (p.residualN == DBL_MAX || p.residualE == DBL_MAX) return;
    sum += p.residualN * p.residualN + p.residualE * p.residualE;
    ++count;
  });
  if (count == 0) return false;
  rms = std::sqrt(sum / count);
  return true;
}

bool TLocalizationParam::AvgOffCenter(double& meanDistance) const {
  double sum = 0;
  int count = 0;
  for (int i = placement_ == kCentreOfExtent ? 0 : 1; i < Count(); ++i) {
    if (!UseForHorParams(i)) continue;
    const double dN = points_[i]->localN - localCentroid_.n;
    const double dE = points_[i]->localE - localCentroid_.e;
    if (!(std::abs(dN) >= kOnAxis && std::abs(dE) >= kOnAxis)) continue;
    sum += std::sqrt(dN * dN + dE * dE);
    ++count;
  }
  if (count == 0) return false;
  meanDistance = sum / count;
  return true;
}

bool TLocalizationParam::GetEstimations(double& rms, double& angle) const {
  double distance = 0;
  if (!GetDEstimation(rms) || !AvgOffCenter(distance)) return false;
  angle = Atan2(rms, distance);
  if (rotationPrecisionFactor_ >= kWeakRotation) angle *= rotationPrecisionFactor_;
  return true;
}

bool TLocalizationParam::GetPlaneParameters(double& tN, double& tE, double& s,
                                            double& theta) const {
  if (!horizontalSolved_) return false;
  tN = tN_;
  tE = tE_;
  s = fixScale_ ? 1.0 : scale_;
  theta = theta_;
  return true;
}

bool TLocalizationParam::GetHeightParameters(double& h0, double& aN, double& aE) const {
  if (!verticalSolved_) return false;
  h0 = h0_;
  aN = aN_;
  aE = aE_;
  return true;
}

bool TLocalizationParam::GetGeodeticOrigin(double& lat, double& lon, double& h) const {
  if (!initialized_) return false;
  lat = originLat_;
  lon = originLon_;
  h = originH_;
  return true;
}

bool TLocalizationParam::GetLocalOrigin(double& N, double& E, double& H) const {
  if (!initialized_) return false;
  N = localOriginN_;
  E = localOriginE_;
  H = localOriginH_;
  return true;
}

unsigned char TLocalizationParam::GetInitialization() const {
  return static_cast<unsigned char>((horizontalSolved_ ? 1 : 0) + (verticalSolved_ ? 2 : 0));
}

char TLocalizationParam::GetLocalizationType() const {
  return base_ ? kGivenProjection : kOwnProjection;
}

double TLocalizationParam::GetProjScale() const { return own_ ? own_->Scale() : 1.0; }
double TLocalizationParam::GetLat0() const { return own_ ? own_->Lat0() : 0; }
double TLocalizationParam::GetLon0() const { return own_ ? own_->Lon0() : 0; }
double TLocalizationParam::GetFEast() const { return own_ ? own_->FEast() : 0; }
double TLocalizationParam::GetFNorth() const { return own_ ? own_->FNorth() : 0; }

}  // namespace zel_cs::geomath
