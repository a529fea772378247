#include "geomath/local/calibration_check.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>

#include "geomath/local/packed_symmetric.h"
#include "geomath/local/plane_rotation.h"

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

double Standardised(double residual, double sigma, double cofactor) {
  return sigma > 0 && cofactor > kNoRedundancy ? residual / (sigma * std::sqrt(cofactor)) : kNaN;
}

}  // namespace

CalibrationCheck::CalibrationCheck(const IdenticalPoint* const* points, int count,
                                   const TLocalizationParam& solved)
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
  LeaveOneOut();
  FindHull(horizontal_.empty() ? vertical_ : horizontal_);
  Warn();
}

std::vector<int> CalibrationCheck::Where(bool (TLocalizationParam::*used)(int) const) const {
  std::vector<int> which;
  for (int i = 0; i < count_; ++i)
    if (points_[i] && (solved_->*used)(i)) which.push_back(i);
  return which;
}

CalibrationCheck::Position CalibrationCheck::Mean(const std::vector<int>& which) const {
  Position mean{0, 0};
  for (int i : which) {
    mean.n += At(i).globalN / static_cast<double>(which.size());
    mean.e += At(i).globalE / static_cast<double>(which.size());
  }
  return mean;
}

// Ratio of the axes of inertia.
double CalibrationCheck::WidthOverLength(const std::vector<int>& which) const {
  const Position mean = Mean(which);
  double nn = 0, ne = 0, ee = 0;
  for (int i : which) {
    const double n = At(i).globalN - mean.n, e = At(i).globalE - mean.e;
    nn += n * n;
    ne += n * e;
    ee += e * e;
  }
  const double length2 = 0.5 * (nn + ee + std::hypot(nn - ee, 2 * ne));
  const double width2 = length2 > 0 ? (nn * ee - ne * ne) / length2 : 0;
  return length2 > 0 ? std::sqrt(std::max(0.0, width2) / length2) : 0;
}

// Quantities: mean local N and E, s, θ. With the rotated global vector g from the centroid, its
// length d and direction (c, s) = g/d, an error (eN, eE) of a local position against the mean error
// changes the distance ratio by (c·eN + s·eE)/d and the direction by (c·eE − s·eN)/(s·d); scale and
// rotation are the means of the two.
void CalibrationCheck::CheckPlane() {
  double tN, tE, scale, theta;
  if (horizontal_.empty() || !solved_->GetPlaneParameters(tN, tE, scale, theta)) return;
  const bool fixedScale = solved_->IsScaleFixed() || horizontal_.size() < 2;
  const bool fixedRotation = directions_.size() < 2;
  const double count = static_cast<double>(horizontal_.size());
  const Position centre = Mean(horizontal_);
  const PlaneRotation rotation(theta);
  const auto reduced = [&](int i) {
    return rotation.Turn(At(i).globalN - centre.n, At(i).globalE - centre.e);
  };

  double ratios = 0, angles = 0;  // how many points give one
  for (std::size_t k = 0; k < directions_.size(); ++k) {
    const auto [n, e] = reduced(directions_[k]);
    angles += std::hypot(n, e) > 0;
    ratios += k < horizontal_.size() && std::hypot(n, e) >= kSmallestDistance;
  }
  struct Pair {
    Influence<4> n, e;
  };
  // Without the share of the mean, which follows below.
  const auto direct = [&](std::size_t k) {
    Pair l{};
    const auto [n, e] = reduced(directions_[k]);
    const double d2 = n * n + e * e;
    const bool ofScale =
        !fixedScale && k < horizontal_.size() && std::sqrt(d2) >= kSmallestDistance;
    const bool ofRotation = !fixedRotation && d2 > 0;
    if (ofScale) l.n[2] = n / (d2 * ratios), l.e[2] = e / (d2 * ratios);
    if (ofRotation) l.n[3] = -e / (scale * d2 * angles), l.e[3] = n / (scale * d2 * angles);
    return l;
  };
  Pair sum{};
  for (std::size_t k = 0; k < directions_.size(); ++k) {
    const Pair l = direct(k);
    for (std::size_t j = 2; j < 4; ++j) sum.n[j] += l.n[j], sum.e[j] += l.e[j];
  }
  const auto influence = [&](std::size_t k) {
    Pair l = direct(k);
    if (k >= horizontal_.size()) return l;  // rotation-only points do not enter the mean
    l.n[0] = l.e[1] = 1 / count;
    for (std::size_t j = 2; j < 4; ++j) l.n[j] -= sum.n[j] / count, l.e[j] -= sum.e[j] / count;
    return l;
  };
  Cofactors<4> cofactors;
  for (std::size_t k = 0; k < directions_.size(); ++k) {
    const Pair l = influence(k);
    cofactors.Add(l.n);
    cofactors.Add(l.e);
  }

  const auto design = [&](double n, double e) {
    return Pair{{1, 0, n, -scale * e}, {0, 1, e, scale * n}};
  };
  UnitWeight unit;
  std::vector<Position> residualCofactors;
  for (std::size_t k = 0; k < horizontal_.size(); ++k) {
    const auto [n, e] = reduced(horizontal_[k]);
    const Pair w = design(n, e), l = influence(k);
    residualCofactors.push_back({cofactors.OfResidual(w.n, l.n), cofactors.OfResidual(w.e, l.e)});
    unit.Add(At(horizontal_[k]).residualN, residualCofactors.back().n);
    unit.Add(At(horizontal_[k]).residualE, residualCofactors.back().e);
  }
  horizontalSigma_ = unit.Sigma();
  for (std::size_t k = 0; k < horizontal_.size(); ++k) {
    const IdenticalPoint& p = At(horizontal_[k]);
    PointCheck& check = checks_[static_cast<std::size_t>(horizontal_[k])];
    check.standardN = Standardised(p.residualN, horizontalSigma_, residualCofactors[k].n);
    check.standardE = Standardised(p.residualE, horizontalSigma_, residualCofactors[k].e);
  }

  const auto [centreN, centreE] = rotation.Turn(centre.n, centre.e);
  const Pair atOrigin = design(-centreN, -centreE);
  deviations_.tN = horizontalSigma_ * std::sqrt(cofactors.Of(atOrigin.n));
  deviations_.tE = horizontalSigma_ * std::sqrt(cofactors.Of(atOrigin.e));
  deviations_.scale = horizontalSigma_ * std::sqrt(cofactors.q[2][2]);
  deviations_.rotation = horizontalSigma_ * std::sqrt(cofactors.q[3][3]);
}

// Quantities: height shift at the centroid, aN, aE. Of three and more heights a least-squares plane,
// whose cofactors are the inverse of the normal matrix; of two their mean.
void CalibrationCheck::CheckHeights() {
  double h0, aN, aE;
  if (vertical_.empty() || !solved_->GetHeightParameters(h0, aN, aE)) return;
  const Position centre = Mean(vertical_);
  const bool plane = vertical_.size() >= 3;
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
  deviations_.h0 = verticalSigma_ * std::sqrt(cofactors.Of(design(0, 0)));
  deviations_.aN = verticalSigma_ * std::sqrt(cofactors.q[1][1]);
  deviations_.aE = verticalSigma_ * std::sqrt(cofactors.q[2][2]);
}

// The same solver on the other points, in the grid that the points are in already.
void CalibrationCheck::LeaveOneOut() {
  constexpr std::size_t kLeastHorizontal = 3, kLeastVertical = 4;
  const bool plane = horizontal_.size() >= kLeastHorizontal;
  const bool heights = vertical_.size() >= kLeastVertical;
  if (!plane && !heights) return;
  std::vector<IdenticalPoint> copies(checks_.size());
  std::vector<IdenticalPoint*> pointers(copies.size(), nullptr);
  for (std::size_t i = 0; i < copies.size(); ++i) {
    if (!points_[i]) continue;
    copies[i] = *points_[i];
    pointers[i] = &copies[i];
  }
  TLocalizationParam others(pointers.data(), count_, solved_->IsScaleFixed(),
                            solved_->GetBaseProjection(), 0, 0, 0);

  double worstPlane = kExact, worstHeight = kExact;
  for (int i = 0; i < count_; ++i) {
    const bool ofPlane = plane && solved_->UseForHorParams(i);
    const bool ofHeights = heights && solved_->UseForVertParams(i);
    if (!ofPlane && !ofHeights) continue;
    const auto at = static_cast<std::size_t>(i);
    copies[at].use = PointUseNone;
    others.Init();
    const unsigned solvedParts = others.UpdateParameters() ? others.GetInitialization() : 0;
    if (ofPlane && (solvedParts & 1)) {
      checks_[at].predictedN = copies[at].residualN;
      checks_[at].predictedE = copies[at].residualE;
      if (const double d = std::hypot(copies[at].residualN, copies[at].residualE); d > worstPlane) {
        worstPlane = d;
        worstHorizontal_ = i;
      }
    }
    if (ofHeights && (solvedParts & 2)) {
      checks_[at].predictedH = copies[at].residualH;
      if (const double d = std::abs(copies[at].residualH); d > worstHeight) {
        worstHeight = d;
        worstVertical_ = i;
      }
    }
    copies[at].use = points_[i]->use;
  }
}

// Counter-clockwise, by the two monotone chains of Andrew (1979).
void CalibrationCheck::FindHull(const std::vector<int>& control) {
  std::vector<Position> sorted;
  for (int i : control)
    if (std::isfinite(At(i).globalN) && std::isfinite(At(i).globalE))
      sorted.push_back({At(i).globalN, At(i).globalE});
  std::sort(sorted.begin(), sorted.end(), [](const Position& a, const Position& b) {
    return a.n < b.n || (a.n == b.n && a.e < b.e);
  });
  const auto addChain = [&](auto first, auto last) {
    const std::size_t start = hull_.size();
    for (; first != last; ++first) {
      while (hull_.size() >= start + 2) {
        const Position &a = hull_[hull_.size() - 2], &b = hull_.back();
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
    const Position &a = hull_[i], &b = hull_[(i + 1) % hull_.size()];
    const double bn = b.n - a.n, be = b.e - a.e, pn = gridN - a.n, pe = gridE - a.e;
    inside = inside && bn * pe - be * pn >= 0;
    const double length2 = bn * bn + be * be;
    const double along = length2 > 0 ? std::clamp((pn * bn + pe * be) / length2, 0.0, 1.0) : 0;
    nearest = std::min(nearest, std::hypot(pn - along * bn, pe - along * be));
  }
  return inside ? 0 : nearest;
}

void CalibrationCheck::Warn() {
  using enum CalibrationWarning::Kind;
  const auto warn = [&](CalibrationWarning::Kind kind, double value, int point = -1) {
    warnings_.push_back({kind, point, value});
  };
  const std::size_t count = horizontal_.size(), heights = vertical_.size();
  if (count >= 1 && count <= 2) warn(fewPoints, static_cast<double>(count));
  if (count >= 3 && WidthOverLength(horizontal_) < kThin)
    warn(pointsInLine, WidthOverLength(horizontal_));
  double tN, tE, scale, theta;
  if (solved_->GetPlaneParameters(tN, tE, scale, theta) && !(std::abs(scale - 1) < kUnusualScale))
    warn(scaleFarFromOne, scale);
  if (heights <= 3) warn(fewHeights, static_cast<double>(heights));
  if (heights >= 3 && WidthOverLength(vertical_) < kThin)
    warn(heightsInLine, WidthOverLength(vertical_));

  double diameter = 0;
  for (const Position& a : hull_)
    for (const Position& b : hull_) diameter = std::max(diameter, std::hypot(a.n - b.n, a.e - b.e));
  for (int i = 0; i < count_; ++i) {
    const PointCheck& check = checks_[static_cast<std::size_t>(i)];
    double largest = 0;
    for (const double value : {check.standardN, check.standardE, check.standardH})
      if (std::abs(value) > std::abs(largest)) largest = value;
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
  const char* format = "";
  switch (warning.kind) {
    case fewPoints:
      format =
          "Only %.0f horizontal control point(s): nothing shows an error in them. Use at least "
          "three, better four or more.";
      break;
    case pointsInLine:
      format =
          "The horizontal control lies nearly in one line (width/length %.3f): positions far "
          "to its sides are not controlled.";
      break;
    case scaleFarFromOne:
      format =
          "The scale %.6f is further from 1 than height and map projection explain: look for "
          "a wrong unit, a wrong projection or a wrong point.";
      break;
    case fewHeights:
      format = warning.value < 1   ? "No control heights (%.0f): heights are not calibrated."
               : warning.value < 3 ? "Only %.0f control height(s): a constant shift without "
                                     "inclination, and nothing shows an error in them."
                                   : "Only %.0f control heights: the inclined plane fits them "
                                     "exactly, and nothing shows an error in them.";
      break;
    case heightsInLine:
      format =
          "The control heights lie nearly in one line (width/length %.3f): the inclination "
          "across it is not determined.";
      break;
    case suspiciousPoint:
      format =
          "%s does not fit the others: its residual is %.1f times its standard deviation. "
          "Check the point, or leave it out.";
      break;
    case outsideTheControl:
      format = "%s lies %.0f m outside the control: the calibration is extrapolated there.";
      break;
  }
  std::string name(pointName);
  if (name.empty()) name = "Point " + std::to_string(warning.point + 1);
  std::string text(300 + name.size(), '\0');
  const int length =
      warning.point < 0
          ? std::snprintf(text.data(), text.size(), format, warning.value)
          : std::snprintf(text.data(), text.size(), format, name.c_str(), std::abs(warning.value));
  text.resize(static_cast<std::size_t>(std::max(length, 0)));
  return text;
}

}  // namespace zel_cs::geomath
