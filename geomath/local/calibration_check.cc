#include "geomath/local/calibration_check.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/local/packed_symmetric.h"
#include "geomath/local/plane_rotation.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr double kNoRedundancy = 1e-9;  // of tr Qvv and of a qvv, which lie between 0 and count
constexpr double kExact = 1e-9;         // metres: predictions below it name no worst point
constexpr double kSmallestDistance = 3.2e-3;  // metres; shorter ones give no scale ratio
constexpr double kSuspicious = 3.29;          // two-sided 1 in 1000 of the normal distribution
constexpr double kThin = 0.1;                 // width over length of nearly one line
constexpr double kUnusualScale = 1e-3;  // 1000 ppm: beyond any height and map projection in use
constexpr double kFarOutside = 0.1;     // of the diameter of the control
constexpr double kExactShift = 1e-6;    // metres: the mean of the residuals of a mean
constexpr double kRounding = 1e-6;      // metres: residuals below it say nothing
constexpr double kSpoils = 2;           // times more precise without the points near the centroid

// Residuals beyond reason: a hundredth of the distances in the site, or a metre, which the
// distortions of an old network reach over a hundred kilometres.
constexpr double kUnreasonableShare = 0.01, kUnreasonable = 1, kDistortion = 1e-5;
constexpr double kMuchBetter = 10;  // a mirrored fit, than the one as it is

/// How one observed coordinate enters the estimated quantities.
template <std::size_t N>
using Influence = std::array<double, N>;

/// Cofactors of the estimated quantities: Σ L·Lᵀ over the observations.
template <std::size_t N>
struct Cofactors {
  double q[N][N] = {};

  void Add(const Influence<N>& l) {
    for (std::size_t i = 0; i < N; ++i)
      for (std::size_t j = 0; j < N; ++j) q[i][j] += l[i] * l[j];
  }
  /// Of the combination w·x.
  double Of(const Influence<N>& w) const {
    double sum = 0;
    for (std::size_t i = 0; i < N; ++i)
      for (std::size_t j = 0; j < N; ++j) sum += w[i] * q[i][j] * w[j];
    return sum;
  }
  /// Of the residual of an observation with design row w and influence l: 1 − 2·w·l + w·Q·w.
  double OfResidual(const Influence<N>& w, const Influence<N>& l) const {
    double leverage = 0;
    for (std::size_t i = 0; i < N; ++i) leverage += w[i] * l[i];
    return 1 - 2 * leverage + Of(w);
  }
};

/// Sums residuals to the variance of unit weight.
struct UnitWeight {
  double squares = 0, redundancy = 0;
  void Add(double residual, double cofactor) {
    squares += residual * residual;
    redundancy += cofactor;
  }
  double Sigma() const {
    return redundancy > kNoRedundancy ? std::sqrt(squares / redundancy) : kNaN;
  }
};

/// Cofactors of a solved similarity in the plane, linearised. Quantities: mean local N and E, s, θ.
/// With the rotated global vector g from the centroid, its length d and direction (c, s) = g/d, an
/// error (eN, eE) of a local position against the mean error changes the distance ratio by
/// (c·eN + s·eE)/d and the direction by (c·eE − s·eN)/(s·d); scale and rotation are the means of the
/// two.
class LinearPlane {
 public:
  /// `reduced` are the rotated vectors: the first `horizontal` are those of points that give position
  /// and scale, the others of points that give the rotation only.
  LinearPlane(std::vector<PlaneVector> reduced, std::size_t horizontal, double scale,
              bool fixedScale)
      : reduced_(std::move(reduced)),
        horizontal_(horizontal),
        count_(static_cast<double>(horizontal)),
        scale_(scale),
        fixedScale_(fixedScale || horizontal < 2),
        fixedRotation_(reduced_.size() < 2) {
    for (std::size_t k = 0; k < reduced_.size(); ++k) {
      const double d = Hypot(reduced_[k].n, reduced_[k].e);
      angles_ += d > 0;
      ratios_ += k < horizontal_ && d >= kSmallestDistance;
    }
    for (std::size_t k = 0; k < reduced_.size(); ++k) {
      const Rows l = Direct(k);
      for (std::size_t j = 2; j < 4; ++j) {
        sum_.n[j] += l.n[j];
        sum_.e[j] += l.e[j];
      }
    }
    for (std::size_t k = 0; k < reduced_.size(); ++k) {
      const Rows l = InfluenceOf(k);
      cofactors_.Add(l.n);
      cofactors_.Add(l.e);
    }
  }

  /// Of all four quantities.
  const Cofactors<4>& All() const { return cofactors_; }
  double OfScale() const { return cofactors_.q[2][2]; }
  double OfRotation() const { return cofactors_.q[3][3]; }
  /// Of northing and easting computed at a reduced position.
  PlaneVector OfPosition(PlaneVector at) const {
    const Rows w = DesignAt(at);
    return {cofactors_.Of(w.n), cofactors_.Of(w.e)};
  }
  /// Of the residuals of a horizontal point.
  PlaneVector OfResiduals(std::size_t k) const {
    const Rows w = DesignAt(reduced_[k]), l = InfluenceOf(k);
    return {cofactors_.OfResidual(w.n, l.n), cofactors_.OfResidual(w.e, l.e)};
  }

 private:
  /// For a northing and an easting.
  struct Rows {
    Influence<4> n = {}, e = {};
  };

  Rows DesignAt(PlaneVector at) const {
    return {{1, 0, at.n, -scale_ * at.e}, {0, 1, at.e, scale_ * at.n}};
  }
  Rows InfluenceOf(std::size_t k) const {
    Rows l = Direct(k);
    if (k >= horizontal_) return l;  // rotation-only points do not enter the mean
    l.n[0] = l.e[1] = 1 / count_;
    for (std::size_t j = 2; j < 4; ++j) {
      l.n[j] -= sum_.n[j] / count_;
      l.e[j] -= sum_.e[j] / count_;
    }
    return l;
  }
  /// Without the share of the mean.
  Rows Direct(std::size_t k) const {
    Rows l;
    const auto [n, e] = reduced_[k];
    const double d2 = n * n + e * e;
    if (!fixedScale_ && k < horizontal_ && std::sqrt(d2) >= kSmallestDistance) {
      l.n[2] = n / (d2 * ratios_);
      l.e[2] = e / (d2 * ratios_);
    }
    if (!fixedRotation_ && d2 > 0) {
      l.n[3] = -e / (scale_ * d2 * angles_);
      l.e[3] = n / (scale_ * d2 * angles_);
    }
    return l;
  }

  std::vector<PlaneVector> reduced_;
  std::size_t horizontal_;
  double count_, scale_;
  bool fixedScale_, fixedRotation_;
  double ratios_ = 0, angles_ = 0;  // how many points give one
  Rows sum_;                        // of Direct
  Cofactors<4> cofactors_;
};

std::vector<IdenticalPoint> CopiesOf(const IdenticalPoint* const* points, int count) {
  std::vector<IdenticalPoint> copies(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < copies.size(); ++i)
    if (points[i]) copies[i] = *points[i];
  return copies;
}

std::vector<IdenticalPoint*> PointersTo(std::vector<IdenticalPoint>& points) {
  std::vector<IdenticalPoint*> pointers;
  for (IdenticalPoint& p : points) pointers.push_back(&p);
  return pointers;
}

/// A solver of its own for copies of another's points, in the grid that they are in already. A null
/// point becomes one without coordinates.
class SolvedAgain {
 public:
  SolvedAgain(const IdenticalPoint* const* points, int count, const TLocalizationParam& solved)
      : copies_(CopiesOf(points, count)),
        pointers_(PointersTo(copies_)),
        solver_(pointers_.data(), count, solved.IsScaleFixed(), solved.GetBaseProjection(), 0, 0,
                0) {}

  IdenticalPoint& operator[](int i) { return copies_[static_cast<std::size_t>(i)]; }
  const IdenticalPoint* const* Points() const { return pointers_.data(); }
  const TLocalizationParam& Solver() const { return solver_; }

  /// Solves with the uses that the points have; returns which parts are solved.
  unsigned Solve() {
    solver_.Init();
    return solver_.UpdateParameters() ? solver_.GetInitialization() : 0;
  }

 private:
  std::vector<IdenticalPoint> copies_;
  std::vector<IdenticalPoint*> pointers_;
  TLocalizationParam solver_;
};

template <class... Values>
std::string Printed(const char* format, Values... values) {
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, format, values...)), '\0');
  std::snprintf(text.data(), text.size() + 1, format, values...);
  return text;
}

double Standardised(double residual, double sigma, double cofactor) {
  if (!(sigma > 0 && cofactor > kNoRedundancy)) return kNaN;
  return std::abs(residual) > kRounding ? residual / (sigma * std::sqrt(cofactor)) : 0;
}

}  // namespace

CalibrationCheck::CalibrationCheck(const IdenticalPoint* const* points, int count,
                                   const TLocalizationParam& solved,
                                   const std::function<void()>& onPoint)
    : points_(points),
      count_(points ? std::max(count, 0) : 0),
      solved_(&solved),
      checks_(static_cast<std::size_t>(count_), PointCheck{kNaN, kNaN, kNaN, kNaN, kNaN, kNaN}),
      deviations_{kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN},
      horizontalSigma_(kNaN),
      verticalSigma_(kNaN) {
  horizontal_ = Where(&TLocalizationParam::UseForHorParams);
  vertical_ = Where(&TLocalizationParam::UseForVertParams);
  directions_ = horizontal_;
  for (int i : Where(&TLocalizationParam::UseForRotationOnly)) directions_.push_back(i);
  CheckPlane();
  CheckHeights();
  FindPointsNearCentroid();
  LeaveOneOut(onPoint);
  FindHull(horizontal_.empty() ? vertical_ : horizontal_);
  Warn();
}

std::vector<int> CalibrationCheck::Where(bool (TLocalizationParam::*used)(int) const) const {
  std::vector<int> which;
  for (int i = 0; i < count_; ++i)
    if (points_[i] && (solved_->*used)(i)) which.push_back(i);
  return which;
}

PlaneVector CalibrationCheck::Mean(const std::vector<int>& which) const {
  PlaneVector mean{0, 0};
  for (int i : which) {
    mean.n += At(i).globalN / static_cast<double>(which.size());
    mean.e += At(i).globalE / static_cast<double>(which.size());
  }
  return mean;
}

// Ratio of the axes of inertia.
double CalibrationCheck::WidthOverLength(const std::vector<int>& which) const {
  const PlaneVector mean = Mean(which);
  double nn = 0, ne = 0, ee = 0;
  for (int i : which) {
    const double n = At(i).globalN - mean.n, e = At(i).globalE - mean.e;
    nn += n * n;
    ne += n * e;
    ee += e * e;
  }
  const double length2 = 0.5 * (nn + ee + Hypot(nn - ee, 2 * ne));
  const double width2 = length2 > 0 ? (nn * ee - ne * ne) / length2 : 0;
  return length2 > 0 ? std::sqrt(std::max(0.0, width2) / length2) : 0;
}

void CalibrationCheck::CheckPlane() {
  double tN, tE, scale, theta;
  if (horizontal_.empty() || !solved_->GetPlaneParameters(tN, tE, scale, theta)) return;
  const PlaneVector centre = Mean(horizontal_);
  const PlaneRotation rotation(theta);
  std::vector<PlaneVector> reduced;
  for (int i : directions_)
    reduced.push_back(rotation.Turn(At(i).globalN - centre.n, At(i).globalE - centre.e));
  const LinearPlane plane(std::move(reduced), horizontal_.size(), scale, solved_->IsScaleFixed());

  UnitWeight unit;
  std::vector<PlaneVector> cofactors;
  for (std::size_t k = 0; k < horizontal_.size(); ++k) {
    const IdenticalPoint& p = At(horizontal_[k]);
    cofactors.push_back(plane.OfResiduals(k));
    unit.Add(p.residualN, cofactors[k].n);
    unit.Add(p.residualE, cofactors[k].e);
  }
  horizontalSigma_ = unit.Sigma();
  for (std::size_t k = 0; k < horizontal_.size(); ++k) {
    const IdenticalPoint& p = At(horizontal_[k]);
    PointCheck& check = checks_[static_cast<std::size_t>(horizontal_[k])];
    check.standardN = Standardised(p.residualN, horizontalSigma_, cofactors[k].n);
    check.standardE = Standardised(p.residualE, horizontalSigma_, cofactors[k].e);
  }

  const auto [centreN, centreE] = rotation.Turn(centre.n, centre.e);
  const PlaneVector shifts = plane.OfPosition({-centreN, -centreE});
  std::copy_n(&plane.All().q[0][0], 16, &planeCofactors_[0][0]);
  deviations_.tN = horizontalSigma_ * std::sqrt(shifts.n);
  deviations_.tE = horizontalSigma_ * std::sqrt(shifts.e);
  deviations_.scale = horizontalSigma_ * std::sqrt(plane.OfScale());
  deviations_.rotation = horizontalSigma_ * std::sqrt(plane.OfRotation());
}

// Quantities: height shift at the centroid, aN, aE. Of three and more heights a least-squares plane,
// whose cofactors are the inverse of the normal matrix; of two, or of a line, their mean.
void CalibrationCheck::CheckHeights() {
  double h0, aN, aE;
  const bool shifted = HeightsAreShifted();
  if (vertical_.empty() || !(shifted || solved_->GetHeightParameters(h0, aN, aE))) return;
  const PlaneVector centre = Mean(vertical_);
  const bool plane = !shifted && vertical_.size() >= 3;
  double normal[6] = {0, 0, 0, 0, 0, 0};
  const auto design = [&](double n, double e) -> Influence<3> {
    return {1, plane ? n - centre.n : 0, plane ? e - centre.e : 0};
  };
  const auto designOf = [&](int i) { return design(At(i).globalN, At(i).globalE); };
  for (int i : vertical_) {
    const Influence<3> w = designOf(i);
    for (std::size_t row = 0, at = 0; row < 3; ++row)
      for (std::size_t column = 0; column <= row; ++column) normal[at++] += w[row] * w[column];
  }
  if (!InvertPackedSymmetric(normal, plane ? 3 : 1)) return;
  const auto influence = [&](const Influence<3>& w) -> Influence<3> {
    const auto& q = normal;
    if (!plane) return {q[0], 0, 0};
    return {q[0] * w[0] + q[1] * w[1] + q[3] * w[2], q[1] * w[0] + q[2] * w[1] + q[4] * w[2],
            q[3] * w[0] + q[4] * w[1] + q[5] * w[2]};
  };
  Cofactors<3> cofactors;
  for (int i : vertical_) cofactors.Add(influence(designOf(i)));

  UnitWeight unit;
  std::vector<double> residualCofactors;
  for (int i : vertical_) {
    const Influence<3> w = designOf(i);
    residualCofactors.push_back(cofactors.OfResidual(w, influence(w)));
    unit.Add(At(i).residualH, residualCofactors.back());
  }
  verticalSigma_ = unit.Sigma();
  for (std::size_t k = 0; k < vertical_.size(); ++k)
    checks_[static_cast<std::size_t>(vertical_[k])].standardH =
        Standardised(At(vertical_[k]).residualH, verticalSigma_, residualCofactors[k]);
  std::copy_n(&cofactors.q[0][0], 9, &heightCofactors_[0][0]);
  deviations_.h0 = verticalSigma_ * std::sqrt(cofactors.Of(design(0, 0)));
  deviations_.aN = verticalSigma_ * std::sqrt(cofactors.q[1][1]);
  deviations_.aE = verticalSigma_ * std::sqrt(cofactors.q[2][2]);
}

// Heights about another pivot: h0 + aN·(n − n0) + aE·(e − e0).
unsigned char CalibrationCheck::Covariance(SiteCovariance& covariance) const {
  covariance = {};
  const PlaneVector heights = Mean(vertical_);
  const PlaneVector pivot = horizontal_.empty() ? heights : Mean(horizontal_);
  covariance.pivotN = pivot.n;
  covariance.pivotE = pivot.e;
  unsigned char parts = LocalToGrid::kNotSetUp;
  if (std::isfinite(horizontalSigma_)) {
    parts |= LocalToGrid::kHorizontal;
    const double variance = horizontalSigma_ * horizontalSigma_;
    for (int r = 0; r < 4; ++r)
      for (int c = 0; c < 4; ++c) covariance.ofPlane[r][c] = variance * planeCofactors_[r][c];
  }
  if (std::isfinite(verticalSigma_)) {
    parts |= LocalToGrid::kVertical;
    const double toPivot[] = {1, pivot.n - heights.n, pivot.e - heights.e};
    const double variance = verticalSigma_ * verticalSigma_;
    double shift[3] = {};  // cofactors of the height at the pivot with the three about the centroid
    for (int c = 0; c < 3; ++c)
      for (int k = 0; k < 3; ++k) shift[c] += toPivot[k] * heightCofactors_[k][c];
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) covariance.ofHeight[r][c] = variance * heightCofactors_[r][c];
    covariance.ofHeight[0][0] = 0;
    for (int c = 0; c < 3; ++c) covariance.ofHeight[0][0] += variance * toPivot[c] * shift[c];
    for (int c = 1; c < 3; ++c)
      covariance.ofHeight[0][c] = covariance.ofHeight[c][0] = variance * shift[c];
  }
  return parts;
}

// Only a caller's own mean shift leaves residuals whose sum is zero where the solver has no heights
// (its estimate of the rms leaves those of no shift at all).
bool CalibrationCheck::HeightsAreShifted() const {
  if (vertical_.size() < 3 || solved_->GetInitialization() & 2) return false;
  double sum = 0;
  for (int i : vertical_) sum += At(i).residualH;
  return std::abs(sum) <= kExactShift * static_cast<double>(vertical_.size());
}

CalibrationFit CalibrationCheck::Fit(const IdenticalPoint* const* points,
                                     const TLocalizationParam& site) const {
  double tN, tE, squares = 0, count = 0;
  CalibrationFit fit{kNaN, kNaN, kNaN};
  if (!site.GetPlaneParameters(tN, tE, fit.scale, fit.rotation)) return fit;
  for (int i : horizontal_) {
    if (!site.UseForHorParams(i)) continue;
    const double n = points[i]->residualN, e = points[i]->residualE;
    squares += n * n + e * e;
    ++count;
  }
  fit.rms = std::sqrt(squares / count);
  return fit;
}

// Nearest first: of all numbers of points, the one without which the rotation is most precise. Its
// cofactor, in local units, is the sum of 1/d² over the square of their number.
void CalibrationCheck::FindPointsNearCentroid() {
  constexpr int kLeastLeft = 3;  // horizontal points: a site of two always fits
  if (horizontal_.empty() || IsMirrored()) return;
  const CalibrationFit fit = Fit(points_, *solved_);
  if (!(fit.rms > kRounding)) return;
  struct Ray {
    double distance;
    int point;
  };
  std::vector<Ray> rays;
  const PlaneVector centre = Mean(horizontal_);
  for (int i : directions_) {
    const double d = Hypot(At(i).globalN - centre.n, At(i).globalE - centre.e);
    if (d > 0) rays.push_back({d, i});
  }
  std::sort(rays.begin(), rays.end(),
            [](const Ray& a, const Ray& b) { return a.distance < b.distance; });

  double weakness = 0, cofactor = 0, best = std::numeric_limits<double>::infinity();
  std::size_t near = 0;
  int horizontalLeft = 0;
  for (std::size_t k = rays.size(); k-- > 0;) {
    const double left = static_cast<double>(rays.size() - k);
    weakness += 1 / (rays[k].distance * rays[k].distance);
    cofactor = weakness / (left * left);
    horizontalLeft += solved_->UseForHorParams(rays[k].point);
    if (horizontalLeft >= kLeastLeft && cofactor < best) {
      best = cofactor;
      near = k;
    }
  }
  if (near == 0 || cofactor < kSpoils * kSpoils * best) return;

  SolvedAgain others(points_, count_, *solved_);
  for (std::size_t k = 0; k < near; ++k) others[rays[k].point].use = PointUseNone;
  if (!(others.Solve() & 1)) return;
  const CalibrationFit without = Fit(others.Points(), others.Solver());
  for (std::size_t k = 0; k < near; ++k)
    warnings_.push_back(
        {CalibrationWarning::Kind::nearCentroid, rays[k].point, rays[k].distance, fit, without});
}

void CalibrationCheck::LeaveOneOut(const std::function<void()>& onPoint) {
  constexpr std::size_t kLeastHorizontal = 3, kLeastVertical = 4;
  const bool plane = horizontal_.size() >= kLeastHorizontal;
  const bool heights = vertical_.size() >= kLeastVertical && !HeightsAreShifted();
  if (HeightsAreShifted()) PredictMeanHeights();
  if (!plane && !heights) return;
  SolvedAgain others(points_, count_, *solved_);
  const bool spoiled = !warnings_.empty();  // by a point near the centroid

  double worstPlane = kExact, worstHeight = kExact;
  for (int i = 0; i < count_; ++i) {
    const bool ofPlane = plane && solved_->UseForHorParams(i);
    const bool ofHeights = heights && solved_->UseForVertParams(i);
    if (!ofPlane && !ofHeights) continue;
    PointCheck& check = checks_[static_cast<std::size_t>(i)];
    IdenticalPoint& point = others[i];
    point.use = PointUseNone;
    const unsigned solvedParts = others.Solve();
    if (ofPlane && (solvedParts & 1)) {
      check.predictedN = point.residualN;
      check.predictedE = point.residualE;
      if (const double d = Hypot(point.residualN, point.residualE); !spoiled && d > worstPlane) {
        worstPlane = d;
        worstHorizontal_ = i;
      }
    }
    if (ofHeights && (solvedParts & 2)) {
      check.predictedH = point.residualH;
      if (const double d = std::abs(point.residualH); d > worstHeight) {
        worstHeight = d;
        worstVertical_ = i;
      }
    }
    point.use = points_[i]->use;
    if (onPoint) onPoint();
  }
}

// A residual v against the mean of n is v·n/(n − 1) against the mean of the others.
void CalibrationCheck::PredictMeanHeights() {
  const double n = static_cast<double>(vertical_.size());
  double worst = kExact;
  for (int i : vertical_) {
    const double predicted = At(i).residualH * n / (n - 1);
    checks_[static_cast<std::size_t>(i)].predictedH = predicted;
    if (std::abs(predicted) <= worst) continue;
    worst = std::abs(predicted);
    worstVertical_ = i;
  }
}

// The rms of the similarity with a reflection that fits best. With positions from the centroids as
// complex numbers g = N + iE and l, the fit l = c·conj(g) leaves Σ|l|² − |Σ g·l|²/Σ|g|².
double CalibrationCheck::MirroredRms() const {
  const PlaneVector centre = Mean(horizontal_);
  const double count = static_cast<double>(horizontal_.size());
  PlaneVector localCentre{0, 0};
  for (int i : horizontal_) {
    localCentre.n += At(i).localN / count;
    localCentre.e += At(i).localE / count;
  }
  double ll = 0, gg = 0, real = 0, imaginary = 0;
  for (int i : horizontal_) {
    const double gN = At(i).globalN - centre.n, gE = At(i).globalE - centre.e;
    const double lN = At(i).localN - localCentre.n, lE = At(i).localE - localCentre.e;
    ll += lN * lN + lE * lE;
    gg += gN * gN + gE * gE;
    real += gN * lN - gE * lE;
    imaginary += gN * lE + gE * lN;
  }
  const double rest = ll - (real * real + imaginary * imaginary) / gg;
  return std::sqrt(std::max(0.0, rest) / count);
}

// Whether the control fits its mirror image, and not the site.
bool CalibrationCheck::IsMirrored() const {
  constexpr std::size_t kLeast = 3;
  if (horizontal_.size() < kLeast) return false;
  const double rms = Fit(points_, *solved_).rms;
  return rms > kRounding && kMuchBetter * MirroredRms() < rms;
}

void CalibrationCheck::WarnOfMisfit() {
  using enum CalibrationWarning::Kind;
  constexpr std::size_t kLeast = 2;
  if (horizontal_.size() < kLeast) return;
  const PlaneVector centre = Mean(horizontal_);
  double distance = 0;
  for (int i : horizontal_)
    distance += Hypot(At(i).globalN - centre.n, At(i).globalE - centre.e) /
                static_cast<double>(horizontal_.size());
  const double reason =
      std::min(kUnreasonableShare * distance, std::max(kUnreasonable, kDistortion * distance));
  const CalibrationFit fit = Fit(points_, *solved_);
  if (!(fit.rms > reason)) return;
  if (IsMirrored())
    warnings_.push_back({mirrored, -1, MirroredRms(), fit, {}});
  else
    warnings_.push_back({misfit, -1, distance, fit, {}});
}

// Counter-clockwise, by the two monotone chains of Andrew (1979).
void CalibrationCheck::FindHull(const std::vector<int>& control) {
  std::vector<PlaneVector> sorted;
  for (int i : control)
    if (std::isfinite(At(i).globalN) && std::isfinite(At(i).globalE))
      sorted.push_back({At(i).globalN, At(i).globalE});
  std::sort(sorted.begin(), sorted.end(), [](const PlaneVector& a, const PlaneVector& b) {
    return a.n < b.n || (a.n == b.n && a.e < b.e);
  });
  const auto addChain = [&](auto first, auto last) {
    const std::size_t start = hull_.size();
    for (; first != last; ++first) {
      while (hull_.size() >= start + 2) {
        const PlaneVector &a = hull_[hull_.size() - 2], &b = hull_.back();
        if ((b.n - a.n) * (first->e - a.e) - (b.e - a.e) * (first->n - a.n) > 0) break;
        hull_.pop_back();
      }
      hull_.push_back(*first);
    }
    if (hull_.size() > start + 1) hull_.pop_back();  // the other chain begins with it
  };
  addChain(sorted.begin(), sorted.end());
  if (sorted.size() > 1) addChain(sorted.rbegin(), sorted.rend());
}

double CalibrationCheck::DistanceOutside(double gridN, double gridE) const {
  if (hull_.empty()) return 0;
  bool inside = hull_.size() >= 3;
  double nearest = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < hull_.size(); ++i) {
    const PlaneVector &a = hull_[i], &b = hull_[(i + 1) % hull_.size()];
    const double bn = b.n - a.n, be = b.e - a.e, pn = gridN - a.n, pe = gridE - a.e;
    inside = inside && bn * pe - be * pn >= 0;
    const double length2 = bn * bn + be * be;
    const double along = length2 > 0 ? std::clamp((pn * bn + pe * be) / length2, 0.0, 1.0) : 0;
    nearest = std::min(nearest, Hypot(pn - along * bn, pe - along * be));
  }
  return inside ? 0 : nearest;
}

void CalibrationCheck::Warn() {
  using enum CalibrationWarning::Kind;
  const auto warn = [&](CalibrationWarning::Kind kind, double value, int point = -1) {
    warnings_.push_back({kind, point, value});
  };
  const std::size_t count = horizontal_.size(), heights = vertical_.size();
  const bool spoiled =
      !warnings_.empty();  // by a point near the centroid, which is what to look at
  if (!spoiled) WarnOfMisfit();
  if (count >= 1 && count <= 2) warn(fewPoints, static_cast<double>(count));
  if (count >= 3 && WidthOverLength(horizontal_) < kThin)
    warn(pointsInLine, WidthOverLength(horizontal_));
  double tN, tE, scale, theta;
  if (solved_->GetPlaneParameters(tN, tE, scale, theta) && !(std::abs(scale - 1) < kUnusualScale))
    warn(scaleFarFromOne, scale);
  if (HeightsAreShifted())
    warn(heightsShifted, static_cast<double>(heights));
  else if (heights <= 3)
    warn(fewHeights, static_cast<double>(heights));
  if (!HeightsAreShifted() && heights >= 3 && WidthOverLength(vertical_) < kThin)
    warn(heightsInLine, WidthOverLength(vertical_));

  double diameter = 0;
  for (const PlaneVector& a : hull_)
    for (const PlaneVector& b : hull_) diameter = std::max(diameter, Hypot(a.n - b.n, a.e - b.e));
  for (int i = 0; i < count_; ++i) {
    const PointCheck& check = checks_[static_cast<std::size_t>(i)];
    double largest = 0;
    for (const double value : {check.standardN, check.standardE, check.standardH})
      if (std::abs(value) > std::abs(largest)) largest = value;
    if (spoiled) largest = std::isnan(check.standardH) ? 0 : check.standardH;
    if (std::abs(largest) > kSuspicious) warn(suspiciousPoint, largest, i);
    constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
    const bool unused = points_[i] && points_[i]->use == PointUseNone &&
                        (points_[i]->globalFlags & kPlane) == kPlane;
    if (!unused) continue;
    const double outside = DistanceOutside(points_[i]->globalN, points_[i]->globalE);
    if (outside > kFarOutside * diameter && diameter > 0) warn(outsideTheControl, outside, i);
  }
}

std::string CalibrationWarningText(const CalibrationWarning& warning, std::string_view pointName) {
  using enum CalibrationWarning::Kind;
  std::string name(pointName);
  if (name.empty()) name = "Point " + std::to_string(warning.point + 1);
  const double value = warning.value;
  switch (warning.kind) {
    case fewPoints:
      return Printed(
          "Only %.0f horizontal control point(s): nothing shows an error in them. Use at least "
          "three, better four or more.",
          value);
    case pointsInLine:
      return Printed(
          "The horizontal control lies nearly in one line (width/length %.3f): positions far "
          "to its sides are not controlled.",
          value);
    case scaleFarFromOne:
      return Printed(
          "The scale %.6f is further from 1 than height and map projection explain: look for "
          "a wrong unit, a wrong projection or a wrong point.",
          value);
    case fewHeights:
      if (value < 1) return "No control heights (0): heights are not calibrated.";
      return Printed(value < 3 ? "Only %.0f control height(s): a constant shift without "
                                 "inclination, and nothing shows an error in them."
                               : "Only %.0f control heights: the inclined plane fits them "
                                 "exactly, and nothing shows an error in them.",
                     value);
    case heightsInLine:
      return Printed(
          "The control heights lie nearly in one line (width/length %.3f): the inclination "
          "across it is not determined.",
          value);
    case suspiciousPoint:
      return Printed(
          "%s does not fit the others: its residual is %.1f times its standard deviation. "
          "Check the point, or leave it out.",
          name.c_str(), std::abs(value));
    case outsideTheControl:
      return Printed("%s lies %.0f m outside the control: the calibration is extrapolated there.",
                     name.c_str(), value);
    case nearCentroid:
      return Printed(
          "%s lies %.2f m from the centre of the control, where an error of its position turns and "
          "scales the whole site: rms %.4f m. Without points so near, the site has scale %.10f, "
          "rotation %.7f degrees and rms %.4f m. Use the point for its height only.",
          name.c_str(), value, warning.fit.rms, warning.without.scale,
          warning.without.rotation * kDegPerRad, warning.without.rms);
    case mirrored:
      return Printed(
          "The control does not fit (rms %.3f m), but its mirror image does (rms %.3f m): north "
          "and east are exchanged in the local or in the global coordinates, or one of them counts "
          "the other way.",
          warning.fit.rms, value);
    case misfit:
      return Printed(
          "The horizontal rms of %.3f m is beyond reason for points %.0f m from their centre: look "
          "for exchanged points, a wrong unit, a wrong coordinate or a wrong projection.",
          warning.fit.rms, value);
    case heightsShifted:
      return Printed(
          "The %.0f control heights lie in one line, which determines no inclined plane: they have "
          "a constant shift, their mean, without inclination.",
          value);
  }
  return "";
}

}  // namespace zel_cs::geomath
