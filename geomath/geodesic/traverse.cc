#include "geomath/geodesic/traverse.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kMaxLegSteps = 20;        // of the search for a leg's geodesic
constexpr double kLegTolerance = 1e-8;  // metres, some units in the last place of a coordinate
constexpr int kMaxAdjustments = 10;
constexpr double kAdjusted = 1e-8;  // metres and, a radius of the Earth away, radians

// The conditions of a traverse: its end in north and east, and its closing azimuth.
using Conditions = std::array<double, 3>;

// Solves the normal equations of at most three conditions by Gaussian elimination with the largest
// pivot of a column; false when they are singular.
bool Solve(std::array<Conditions, 3> m, Conditions& x, std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < count; ++r)
      if (std::abs(m[r][k]) > std::abs(m[pivot][k])) pivot = r;
    if (!(std::abs(m[pivot][k]) > 0)) return false;
    std::swap(m[k], m[pivot]);
    std::swap(x[k], x[pivot]);
    for (std::size_t r = k + 1; r < count; ++r) {
      const double factor = m[r][k] / m[k][k];
      for (std::size_t c = k; c < count; ++c) m[r][c] -= factor * m[k][c];
      x[r] -= factor * x[k];
    }
  }
  for (std::size_t k = count; k-- > 0;) {
    for (std::size_t c = k + 1; c < count; ++c) x[k] -= m[k][c] * x[c];
    x[k] /= m[k][k];
  }
  return true;
}

bool Closes(const TraverseField& field) { return field.endAzimuth && field.endAngle; }

}  // namespace

struct Traverse::Path {
  std::vector<GridPoint> stations;
  double lastBackAzimuth = 0;

  // Computed minus known.
  Conditions Misclosure(const TraverseField& field, double endAngle) const {
    const GridPoint& last = stations.back();
    return {field.end ? last.n - field.end->n : kNaN, field.end ? last.e - field.end->e : kNaN,
            Closes(field) ? std::remainder(lastBackAzimuth + endAngle - *field.endAzimuth, kTwoPi)
                          : kNaN};
  }
};

// The geodesic whose distance of the asked kind is the observed one: each step multiplies by the
// ratio of the two, which is constant but for the curvature of scale along the leg.
bool Traverse::Leg(const GridPoint& from, double azimuth, double distance, TraverseDistance kind,
                   GridPoint& to, double& backAzimuth) const {
  const TGeoProj& proj = lines_->GetProjection();
  double b, l;
  if (!(distance > 0) || !std::isfinite(distance) || !lines_->Position(from, b, l)) return false;
  const GeodesicLine geodesic = lines_->GetGeodesic().Line(b, l, azimuth);

  double length = distance;
  for (int i = 0; i < kMaxLegSteps; ++i) {
    const GeodesicEnd end = geodesic.At(length);
    to.n = end.b;
    to.e = end.l;
    backAzimuth = end.backAzimuth;
    if (!(std::isfinite(end.b) && proj.ForwardPoint(to.n, to.e))) return false;
    if (kind == TraverseDistance::geodesic) return true;

    GridLine line;
    if (!lines_->Between(from, to, line)) return false;
    double observed = distance, computed = line.gridDistance;
    if (kind == TraverseDistance::ground) {
      computed = line.groundDistance;
    } else if (kind == TraverseDistance::slope) {
      const double rise = line.height2 - line.height1;
      observed = std::sqrt((distance - rise) * (distance + rise));
      computed = std::sqrt((line.slopeDistance - rise) * (line.slopeDistance + rise));
    }
    const double ratio = observed / computed;
    if (!(std::isfinite(ratio) && ratio > 0)) return false;
    if (std::abs(observed - computed) < kLegTolerance) return true;
    length *= ratio;
  }
  return false;
}

bool Traverse::Walk(const TraverseField& field, const std::vector<double>& angles,
                    const std::vector<double>& distances, Path& path) const {
  path.stations.assign(1, field.start);
  double back = field.startAzimuth;  // as a telescope about the plumb line would have it
  for (std::size_t i = 0; i < field.legs.size(); ++i) {
    const GridPoint from = path.stations.back();
    GridPoint to{0, 0, field.legs[i].height};
    const double azimuth = std::remainder(back + angles[i], kTwoPi);
    if (!Leg(from, azimuth, distances[i], field.kind, to, back)) return false;
    if (field.deflections) {
      // What the correction of the azimuth moves the station by does not change the correction.
      PlumbLine forth, behind;
      if (!lines_->PlumbAt(from, to, forth)) return false;
      const double turned = std::remainder(azimuth + forth.directionCorrection, kTwoPi);
      if (!Leg(from, turned, distances[i], field.kind, to, back)) return false;
      if (!lines_->PlumbAt(to, from, behind)) return false;
      back -= behind.directionCorrection;
    }
    path.stations.push_back(to);
  }
  path.lastBackAzimuth = back;
  return true;
}

bool Traverse::Compute(const TraverseField& field, TraverseAdjustment adjustment,
                       TraverseResult& result) const {
  const std::size_t legs = field.legs.size();
  std::vector<double> angles, distances;
  for (const TraverseLeg& leg : field.legs) {
    angles.push_back(leg.angle);
    distances.push_back(leg.distance);
  }
  Path path;
  if (!Walk(field, angles, distances, path)) return false;

  result = {};
  const double endAngle = field.endAngle.value_or(kNaN);
  const Conditions misclosure = path.Misclosure(field, endAngle);
  result.misclosureN = misclosure[0];
  result.misclosureE = misclosure[1];
  result.misclosureAngle = misclosure[2];
  for (std::size_t i = 0; i < legs; ++i)
    result.length += Hypot(path.stations[i + 1].n - path.stations[i].n,
                           path.stations[i + 1].e - path.stations[i].e);
  result.relativeMisclosure = Hypot(misclosure[0], misclosure[1]) / result.length;
  result.angleCorrections.assign(legs + (Closes(field) ? 1 : 0), 0.0);
  result.distanceCorrections.assign(legs, 0.0);
  result.sigma0 = kNaN;

  if (adjustment != TraverseAdjustment::none) {
    if (!field.end || legs == 0) return false;
    if (!(adjustment == TraverseAdjustment::bowditch ? Bowditch(field, path, result)
                                                     : LeastSquares(field, path, result)))
      return false;
  }
  result.stations = path.stations;
  return true;
}

bool Traverse::Bowditch(const TraverseField& field, Path& path, TraverseResult& result) const {
  const std::size_t legs = field.legs.size();
  if (Closes(field)) {
    const double share = -result.misclosureAngle / static_cast<double>(legs + 1);
    result.angleCorrections.assign(legs + 1, share);
    std::vector<double> angles, distances;
    for (const TraverseLeg& leg : field.legs) {
      angles.push_back(leg.angle + share);
      distances.push_back(leg.distance);
    }
    if (!Walk(field, angles, distances, path)) return false;
  }
  const Conditions gap = path.Misclosure(field, kNaN);
  std::vector<double> upTo(1, 0.0);
  for (std::size_t i = 0; i < legs; ++i)
    upTo.push_back(upTo[i] + Hypot(path.stations[i + 1].n - path.stations[i].n,
                                   path.stations[i + 1].e - path.stations[i].e));
  for (std::size_t i = 1; i <= legs; ++i) {
    path.stations[i].n -= gap[0] * upTo[i] / upTo[legs];
    path.stations[i].e -= gap[1] * upTo[i] / upTo[legs];
  }
  return true;
}

// Observations l with cofactors Q obey conditions f(l) = 0. With B = ∂f/∂l the corrections are
// v = −Q·Bᵀ·(B·Q·Bᵀ)⁻¹·(f(l + v) − B·v), repeated until they stay (Mikhail 1976, chapter 8). An angle
// turns what follows about its station, a distance moves it along the leg.
bool Traverse::LeastSquares(const TraverseField& field, Path& path, TraverseResult& result) const {
  const std::size_t legs = field.legs.size();
  const std::size_t count = Closes(field) ? 3 : 2;
  const double earth = field.start.h + lines_->GetProjection().GetEllipsoid().a;
  std::vector<double> angles(legs), distances(legs), cofactors(2 * legs + 1);
  const double sigmaAngle2 = field.sigmaAngle * field.sigmaAngle;
  for (std::size_t i = 0; i < legs; ++i) {
    const double sigma = field.sigmaDistance + field.sigmaPerMetre * field.legs[i].distance;
    cofactors[i] = sigmaAngle2;
    cofactors[legs + 1 + i] = sigma * sigma;
  }
  cofactors[legs] = count == 3 ? sigmaAngle2 : 0;

  std::vector<double> v(2 * legs + 1, 0.0);
  std::vector<Conditions> B(2 * legs + 1);
  for (int step = 0; step < kMaxAdjustments; ++step) {
    for (std::size_t i = 0; i < legs; ++i) {
      const GridPoint &at = path.stations[i], &next = path.stations[i + 1],
                      &end = path.stations[legs];
      const double length = field.legs[i].distance + v[legs + 1 + i];
      B[i] = {-(end.e - at.e), end.n - at.n, 1};
      B[legs + 1 + i] = {(next.n - at.n) / length, (next.e - at.e) / length, 0};
    }
    B[legs] = {0, 0, 1};

    std::array<Conditions, 3> normal = {};
    Conditions x = path.Misclosure(field, field.endAngle.value_or(0) + v[legs]);
    for (std::size_t o = 0; o < v.size(); ++o)
      for (std::size_t r = 0; r < count; ++r) {
        x[r] -= B[o][r] * v[o];
        for (std::size_t c = 0; c < count; ++c) normal[r][c] += B[o][r] * cofactors[o] * B[o][c];
      }
    if (!Solve(normal, x, count)) return false;

    double change = 0;
    for (std::size_t o = 0; o < v.size(); ++o) {
      double sum = 0;
      for (std::size_t r = 0; r < count; ++r) sum += B[o][r] * x[r];
      const double next = -cofactors[o] * sum;
      change = std::max(change, std::abs(next - v[o]) * (o <= legs ? earth : 1));
      v[o] = next;
    }
    for (std::size_t i = 0; i < legs; ++i) {
      angles[i] = field.legs[i].angle + v[i];
      distances[i] = field.legs[i].distance + v[legs + 1 + i];
    }
    if (!std::isfinite(change) || !Walk(field, angles, distances, path)) return false;
    if (change < kAdjusted) break;
  }

  double vPv = 0;
  for (std::size_t o = 0; o < v.size(); ++o)
    if (cofactors[o] > 0) vPv += v[o] * v[o] / cofactors[o];
  result.sigma0 = std::sqrt(vPv / static_cast<double>(count));
  std::copy_n(v.begin(), result.angleCorrections.size(), result.angleCorrections.begin());
  std::copy_n(v.begin() + static_cast<std::ptrdiff_t>(legs) + 1, legs,
              result.distanceCorrections.begin());
  return true;
}

}  // namespace zel_cs::geomath
