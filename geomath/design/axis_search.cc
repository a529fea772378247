#include "geomath/design/axis_search.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kFarthest = 800e3;                          // metres from the middle to an axis
constexpr double kLeastParallel = 10.0 / 3600 * kRadPerDeg;  // a cone needs one off the equator
constexpr double kLargestLat = 89 * kRadPerDeg;              // of an origin
constexpr std::size_t kSample = 600;                         // points of the search over the window
constexpr std::size_t kRanked = 50000;  // points that a percentile is refined on
constexpr std::size_t kCells = 8;       // a side, of the sample of extremes
constexpr double kMeanRadius = 6371e3;  // metres, for sizes of windows

struct Minimum {
  double x, value;
};

// The minimum of f in an interval where it has one, within the tolerance (Kiefer 1953).
template <class F>
Minimum GoldenSection(F f, double low, double high, double tolerance) {
  constexpr double kGolden = 0.618033988749894848;
  double a = high - kGolden * (high - low), b = low + kGolden * (high - low);
  double fa = f(a), fb = f(b);
  while (high - low > tolerance) {
    if (fa <= fb) {
      high = b;
      b = a;
      fb = fa;
      a = high - kGolden * (high - low);
      fa = f(a);
    } else {
      low = a;
      a = b;
      fa = fb;
      b = low + kGolden * (high - low);
      fb = f(b);
    }
  }
  return fa <= fb ? Minimum{a, fa} : Minimum{b, fb};
}

// The least of `scans` values over middle ± half, the middle where they are equal, and the minimum
// about it.
template <class F>
Minimum ScanAndRefine(F f, double middle, double half, int scans, double tolerance) {
  const double step = 2 * half / (scans - 1);
  Minimum best{middle, f(middle)};
  for (int i = 1; i <= scans / 2; ++i)
    for (const double x : {middle + i * step, middle - i * step})
      if (const double value = f(x); value < best.value) best = {x, value};
  const Minimum fine = GoldenSection(f, best.x - step, best.x + step, tolerance);
  return fine.value < best.value ? fine : best;
}

// The next whole minute, where no digit is owed to the computation.
double WholeMinute(double angle) {
  constexpr double kMinute = kRadPerDeg / 60;
  return std::round(angle / kMinute) * kMinute;
}

double Within(double x, double bound) { return std::clamp(x, -bound, bound); }

}  // namespace

AxisSearch::AxisSearch(const GroundPoints& points, ZoneFamily family,
                       const DesignCriterion& criterion, DesignWatch& watch)
    : points_(points),
      frame_(points),
      family_(family),
      criterion_(criterion),
      // The range has the axis of the largest |δ|: both are smallest where the extreme factors are closest.
      fitter_(criterion.measure == DesignMeasure::range ? DesignCriterion{DesignMeasure::largest}
                                                        : criterion),
      watch_(watch),
      unknowns_(family == ZoneFamily::obliqueMercator || family == ZoneFamily::stereographic ? 2
                                                                                             : 1) {}

ZoneDefinition AxisSearch::ZoneAt(const Axis& axis) const {
  ZoneDefinition zone{.family = family_,
                      .lat0 = WholeMinute(frame_.MiddleLat()),
                      .lon0 = WholeMinute(frame_.MiddleLon())};
  switch (family_) {
    case ZoneFamily::transverseMercator:
      zone.lon0 = frame_.Lon(axis[0]);
      break;
    case ZoneFamily::lambert:
      zone.lat0 = frame_.Lat(axis[0]);
      if (std::abs(zone.lat0) < kLeastParallel)
        zone.lat0 = std::copysign(kLeastParallel, zone.lat0);
      break;
    case ZoneFamily::obliqueMercator:
      zone.azimuth = std::remainder(axis[0], kPi);
      zone.lat0 = frame_.Lat(-axis[1] * Sin(axis[0]));
      zone.lon0 = frame_.Lon(axis[1] * Cos(axis[0]));
      break;
    case ZoneFamily::stereographic:
      zone.lat0 = frame_.Lat(axis[0]);
      zone.lon0 = frame_.Lon(axis[1]);
      break;
  }
  zone.lat0 = Within(zone.lat0, kLargestLat);
  return zone;
}

ZoneFit AxisSearch::FitAt(const GroundPoints& points, const Axis& axis) {
  ZoneFit found{ZoneAt(axis), kInfinite};
  if (!points.Factors(*found.zone.Projection(points.ellipsoid), m_)) return found;
  const ScaleFit fit = ScaleFitter(criterion_).Best(m_, points.weight);
  found.zone.scale = fit.scale;
  found.value = fit.value;
  return found;
}

double AxisSearch::ValueAt(const GroundPoints& points, const Axis& axis) {
  if (watch_.Stopped()) return kInfinite;
  if (!points.Factors(*ZoneAt(axis).Projection(points.ellipsoid), m_)) return kInfinite;
  return fitter_.Best(m_, points.weight).value;
}

AxisSearch::Axis AxisSearch::SearchAbout(const GroundPoints& sample, const Axis& middle,
                                         const Axis& half, int scans, double fine) {
  const double reach = unknowns_ == 1 ? half[0] : half[1];  // of the inner unknown
  const auto least = [&](double x, const auto& value) {
    return ScanAndRefine(value, x, reach, scans, fine * reach);
  };
  if (unknowns_ == 1)
    return {least(middle[0], [&](double x) { return ValueAt(sample, {x, 0}); }).x, 0};
  Minimum best{0, kInfinite};
  Axis found = middle;
  const auto inner = [&](double x) {
    const Minimum at = least(middle[1], [&](double y) { return ValueAt(sample, {x, y}); });
    if (at.value < best.value) {
      best = at;
      found = {x, at.x};
    }
    watch_.Step();
    return at.value;
  };
  const bool oblique = family_ == ZoneFamily::obliqueMercator;
  ScanAndRefine(inner, middle[0], half[0], oblique ? 3 * scans : scans, fine * half[0]);
  return found;
}

AxisSearch::Axis AxisSearch::SearchWindow(const GroundPoints& sample) {
  constexpr int kScans = 7;
  constexpr double kCoarse = 2e-3;  // of the window
  // A plane that rises by q across an axis moves it by R·q, a point by 2·R·q.
  const double length = std::max(frame_.Diagonal(), 1.0);
  double half = std::min(length + 2 * kMeanRadius * frame_.Relief() / length, kFarthest);
  const bool oblique = family_ == ZoneFamily::obliqueMercator;
  for (;;) {
    const Axis found =
        SearchAbout(sample, {0, 0}, {oblique ? kHalfPi : half, half}, kScans, kCoarse);
    const double away = std::max(oblique ? 0 : std::abs(found[0]), std::abs(found[1]));
    if (away < half * (1 - 2 * kCoarse) || half >= kFarthest || watch_.Stopped())
      return {oblique ? found[0] : Within(found[0], kFarthest), Within(found[1], kFarthest)};
    half = std::min(3 * half, kFarthest);
  }
}

bool AxisSearch::GaussNewtonStep(Axis& axis) {
  constexpr double kStep[2] = {1000, 1e-3};  // metres and radians of a difference quotient
  const std::size_t count = points_.Size();
  if (!points_.Factors(*ZoneAt(axis).Projection(points_.ellipsoid), m_)) return false;
  const std::vector<double> m = m_;
  const ScaleFit fit = fitter_.Best(m, points_.weight);
  std::vector<double> slope[2];
  double step[2] = {};
  for (int j = 0; j < unknowns_; ++j) {
    step[j] = kStep[family_ == ZoneFamily::obliqueMercator && j == 0];
    Axis up = axis, down = axis;
    const auto at = static_cast<std::size_t>(j);
    up[at] += step[j];
    down[at] -= step[j];
    if (!points_.Factors(*ZoneAt(up).Projection(points_.ellipsoid), slope[j])) return false;
    if (!points_.Factors(*ZoneAt(down).Projection(points_.ellipsoid), m_)) return false;
    for (std::size_t i = 0; i < count; ++i) slope[j][i] = (slope[j][i] - m_[i]) / 2;
    if (!watch_.Step()) return false;
  }
  // Normal equations of dk0 and the steps for k0·m − 1 = 0.
  const int n = 1 + unknowns_;
  double N[3][3] = {}, right[3] = {};
  for (std::size_t i = 0; i < count; ++i) {
    double row[3] = {m[i]};
    for (int j = 0; j < unknowns_; ++j) row[1 + j] = fit.scale * slope[j][i];
    const double w = points_.weight[i], misfit = 1 - fit.scale * m[i];
    for (int r = 0; r < n; ++r) {
      right[r] += w * row[r] * misfit;
      for (int c = 0; c <= r; ++c) N[r][c] += w * row[r] * row[c];
    }
  }
  // Cholesky; an unknown that the points do not determine stays.
  constexpr double kUndetermined = 1e-13;
  for (int r = 0; r < n; ++r) {
    const double diagonal = N[r][r];
    for (int c = 0; c <= r; ++c) {
      for (int k = 0; k < c; ++k) N[r][c] -= N[r][k] * N[c][k];
      if (c < r) N[r][c] = N[c][c] == kInfinite ? 0 : N[r][c] / N[c][c];
    }
    N[r][r] = N[r][r] > kUndetermined * diagonal ? std::sqrt(N[r][r]) : kInfinite;
  }
  for (int r = 0; r < n; ++r) {
    for (int k = 0; k < r; ++k) right[r] -= N[r][k] * right[k];
    right[r] /= N[r][r];
  }
  for (int r = n - 1; r >= 0; --r) {
    for (int k = r + 1; k < n; ++k) right[r] -= N[k][r] * right[k];
    right[r] /= N[r][r];
  }
  Axis next = axis;
  for (int j = 0; j < unknowns_; ++j) next[static_cast<std::size_t>(j)] += right[1 + j] * step[j];
  for (int j = 0; j < unknowns_; ++j)
    if (family_ != ZoneFamily::obliqueMercator || j == 1)
      next[static_cast<std::size_t>(j)] = Within(next[static_cast<std::size_t>(j)], kFarthest);
  if (!(ValueAt(points_, next) < fit.value)) return false;
  const bool moved = std::abs(right[1]) > 1e-5 || std::abs(right[2]) > 1e-5;
  axis = next;
  return moved;
}

AxisSearch::Axis AxisSearch::RefineSquare(Axis axis) {
  constexpr int kSteps = 8;  // two or three do
  for (int i = 0; i < kSteps && GaussNewtonStep(axis); ++i) {
  }
  return axis;
}

AxisSearch::Axis AxisSearch::RefineLargest(Axis axis, GroundPoints sample) {
  constexpr int kRounds = 25;
  constexpr double kSame = 1e-10;  // of δ: what decimetres of an axis are worth
  const bool oblique = family_ == ZoneFamily::obliqueMercator;
  constexpr double kFine = 1e-4;  // of what is searched about the best axis: less than a metre
  const double near = std::max(frame_.Diagonal() / 20, 1000.0);
  Axis best = axis;
  double least = kInfinite;
  for (int round = 0; round < kRounds && watch_.Step(); ++round) {
    const double onAll = ValueAt(points_, axis);
    if (onAll < least) {
      least = onAll;
      best = axis;
    }
    const auto [low, high] = std::minmax_element(m_.begin(), m_.end());
    for (const auto at : {low, high}) {
      const auto i = static_cast<std::size_t>(at - m_.begin());
      sample.Add(points_.b[i], points_.l[i], points_.h[i], points_.weight[i]);
    }
    axis = SearchAbout(sample, axis, {oblique ? 0.02 : near, near}, 3, kFine);
    // The sample's optimum bounds that of all points from below.
    if (least <= ValueAt(sample, axis) + kSame) break;
  }
  return best;
}

AxisSearch::Axis AxisSearch::RefinePercentile(const GroundPoints& sample, Axis axis) {
  const bool oblique = family_ == ZoneFamily::obliqueMercator;
  double metres = std::max(frame_.Diagonal() / 30, 1000.0), radians = 0.02;
  double least = ValueAt(sample, axis);
  constexpr double kFinest = 10;  // metres: the minimum of a percentile is a plateau
  while (metres > kFinest) {
    Axis best = axis;
    for (int j = 0; j < unknowns_; ++j)
      for (const double sign : {1.0, -1.0}) {
        Axis next = axis;
        next[static_cast<std::size_t>(j)] += sign * (oblique && j == 0 ? radians : metres);
        if (const double value = ValueAt(sample, next); value < least) {
          least = value;
          best = next;
        }
        if (!watch_.Step()) return axis;
      }
    if (best == axis) {
      metres /= 2;
      radians /= 2;
    }
    axis = best;
  }
  return axis;
}

ZoneFit AxisSearch::Find() {
  const DesignMeasure measure = criterion_.measure;
  if (measure == DesignMeasure::square)
    return FitAt(points_, RefineSquare(SearchWindow(points_.Thinned(kSample))));
  if (measure == DesignMeasure::percentile)
    return FitAt(points_, RefinePercentile(points_.Thinned(kRanked),
                                           SearchWindow(points_.Thinned(kSample))));
  const GroundPoints extremes = points_.Extremes(kCells);
  return FitAt(points_, RefineLargest(SearchWindow(extremes), extremes));
}

ZoneFit AxisSearch::Centred(const ZoneDefinition& found) {
  return FitAt(points_, {family_ == ZoneFamily::obliqueMercator ? found.azimuth : 0, 0});
}

}  // namespace zel_cs::geomath
