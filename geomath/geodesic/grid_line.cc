#include "geomath/geodesic/grid_line.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/geodesic/distortion.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kBlock = 64;  // lines whose geodesics are solved together

double FullTurn(double angle) {
  const double turned = angle < 0 ? angle + kTwoPi : angle;
  return turned >= kTwoPi ? 0.0 : turned;
}

// M and N of an ellipsoid at a latitude.
struct Radii {
  double M, N;
};
Radii RadiiAt(const Ellipsoid& ell, double b) {
  const double s = Sin(b), w2 = 1 - ell.e2 * s * s, N = ell.a / std::sqrt(w2);
  return {N * (1 - ell.e2) / w2, N};
}

}  // namespace

struct GridLines::End {
  GridPoint at;
  double b, l, height;
  double x, y, z;
  UnitImages images;  // NaN where the class has no derivatives

  // A direction of the geodesic in the grid: its bearing T and its scale.
  struct InGrid {
    double bearing, scale;
  };
  InGrid Image(double azimuth) const {
    const auto [s, c] = SinCos(azimuth);
    const double north = c * images.northN + s * images.eastN;
    const double east = c * images.northE + s * images.eastE;
    return {Atan2(east, north), Hypot(north, east)};
  }
  double Convergence() const { return -Atan2(images.northE, images.northN); }
};

GridLines::GridLines(const TGeoProj& proj, const GeoidHeight* geoid)
    : proj_(&proj), geoid_(geoid), geodesic_(proj.GetEllipsoid()) {}

// The position is the one that is mapped to `at`, where the series of a class leave more than rounding
// between its two directions as well: small rests are taken back by the derivatives there, for larger
// ones the inverse is repeated with what it missed.
bool GridLines::Locate(const GridPoint& at, End& end) const {
  constexpr double kRounding = 1e-8, kSmall = 1e-4, kUnrelated = 1;  // metres
  end.at = at;
  end.b = at.n;
  end.l = at.e;
  if (!proj_->InversePoint(end.b, end.l)) return false;
  double n = end.b, e = end.l;
  if (!proj_->ForwardPoint(n, e)) return false;
  const double restN = at.n - n, restE = at.e - e, rest = Hypot(restN, restE);
  if (!(rest < kUnrelated)) return false;
  GridDerivatives d = {kNaN, kNaN, kNaN, kNaN};
  const bool differentiable = proj_->ForwardDerivatives(end.b, end.l, d);
  if (rest > kRounding && rest < kSmall && differentiable) {
    const double area = d.northB * d.eastL - d.northL * d.eastB;
    end.b += (restN * d.eastL - restE * d.northL) / area;
    end.l += (restE * d.northB - restN * d.eastB) / area;
  } else if (rest > kRounding) {
    end.b = at.n + restN;
    end.l = at.e + restE;
    if (!proj_->InversePoint(end.b, end.l)) return false;
    proj_->ForwardDerivatives(end.b, end.l, d);
  }
  end.images = UnitImagesOf(d, proj_->GetEllipsoid(), end.b);
  double undulation = 0;
  if (geoid_ && !geoid_->Height(end.b, end.l, undulation)) return false;
  end.height = at.h + undulation;
  end.x = end.b;
  end.y = end.l;
  end.z = end.height;
  return proj_->GetEllipsoid().BLH_to_XYZ(end.x, end.y, end.z);
}

void GridLines::Describe(const End& from, const End& to, const GeodesicMeasure& geodesic,
                         GridLine& line) const {
  const double dn = to.at.n - from.at.n, de = to.at.e - from.at.e;
  const double chord = Atan2(de, dn);
  const End::InGrid arc1 = from.Image(geodesic.azimuth), arc2 = to.Image(geodesic.backAzimuth);
  line.gridDistance = Hypot(dn, de);
  line.gridBearing = FullTurn(chord);
  line.geodesicDistance = geodesic.distance;
  line.azimuth = geodesic.azimuth;
  line.backAzimuth = geodesic.backAzimuth;
  line.scale1 = arc1.scale;
  line.scale2 = arc2.scale;
  line.convergence1 = from.Convergence();
  line.convergence2 = to.Convergence();
  line.arcToChord1 = FoldTurn(chord - arc1.bearing);
  line.arcToChord2 = FoldTurn(chord + kPi - arc2.bearing);
  line.lineScale = line.gridDistance / line.geodesicDistance;

  const double turn = FoldTurn(geodesic.backAzimuth - kPi - geodesic.azimuth);
  const double R =
      RadiusInAzimuth(proj_->GetEllipsoid(), (from.b + to.b) / 2, geodesic.azimuth + turn / 2);
  line.height1 = from.height;
  line.height2 = to.height;
  line.elevationFactor = R / (R + (from.height + to.height) / 2);
  line.combinedFactor = line.lineScale * line.elevationFactor;
  line.groundDistance = line.geodesicDistance / line.elevationFactor;
  const double dx = to.x - from.x, dy = to.y - from.y, dz = to.z - from.z;
  line.slopeDistance = std::sqrt(dx * dx + dy * dy + dz * dz);
}

bool GridLines::Position(const GridPoint& at, double& b, double& l) const {
  End end;
  if (!Locate(at, end)) return false;
  b = end.b;
  l = end.l;
  return true;
}

bool GridLines::Between(const GridPoint& from, const GridPoint& to, GridLine& line) const {
  End first, second;
  if (!Locate(from, first) || !Locate(to, second)) return false;
  const GeodesicMeasure geodesic = geodesic_.Inverse(first.b, first.l, second.b, second.l);
  Describe(first, second, geodesic, line);
  return std::isfinite(geodesic.distance);
}

std::size_t GridLines::Between(const GridPoint* from, const GridPoint* to, GridLine* lines,
                               std::size_t count) const {
  constexpr GridLine kFailed = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN,
                                kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
  End first[kBlock] = {}, second[kBlock] = {};
  double b1[kBlock], l1[kBlock], b2[kBlock], l2[kBlock], distance[kBlock], azimuth[kBlock],
      back[kBlock];
  std::size_t reduced = 0;
  for (std::size_t start = 0; start < count; start += kBlock) {
    const std::size_t n = std::min(kBlock, count - start);
    for (std::size_t i = 0; i < n; ++i) {
      const bool located = Locate(from[start + i], first[i]) && Locate(to[start + i], second[i]);
      b1[i] = located ? first[i].b : kNaN;
      l1[i] = first[i].l;
      b2[i] = second[i].b;
      l2[i] = second[i].l;
    }
    geodesic_.InverseBatch(b1, l1, b2, l2, distance, azimuth, back, n);
    for (std::size_t i = 0; i < n; ++i) {
      GridLine& line = lines[start + i];
      line = kFailed;
      if (std::isnan(distance[i])) continue;
      Describe(first[i], second[i], {distance[i], azimuth[i], back[i]}, line);
      ++reduced;
    }
  }
  return reduced;
}

bool GridLines::PlumbAt(const GridPoint& from, const GridPoint& to, PlumbLine& plumb) const {
  End here, there;
  if (!geoid_ || !Locate(from, here) || !Locate(to, there)) return false;
  if (!DeflectionAt(*geoid_, proj_->GetEllipsoid(), here.b, here.l, here.height, plumb.deflection))
    return false;
  const double azimuth = geodesic_.Inverse(here.b, here.l, there.b, there.l).azimuth;
  const double x = there.x - here.x, y = there.y - here.y, z = there.z - here.z;
  const auto [sinB, cosB] = SinCos(here.b);
  const auto [sinL, cosL] = SinCos(here.l);
  const double outward = x * cosL + y * sinL, east = y * cosL - x * sinL;
  const double up = outward * cosB + z * sinB, north = z * cosB - outward * sinB;
  plumb.zenith = Atan2(Hypot(north, east), up);
  plumb.azimuthCorrection = plumb.deflection.AzimuthCorrection(here.b);
  plumb.directionCorrection = plumb.deflection.DirectionCorrection(azimuth, plumb.zenith);
  plumb.zenithCorrection = plumb.deflection.ZenithCorrection(azimuth);
  return std::isfinite(plumb.directionCorrection);
}

double GridLines::AzimuthOfBearing(const GridPoint& from, double bearing) const {
  End end;
  if (!Locate(from, end)) return kNaN;
  const auto& [nn, ne, en, ee] = end.images;
  const auto [s, c] = SinCos(bearing);
  const double sign = nn * ee - ne * en < 0 ? -1 : 1;  // Cramer's rule, its denominator left out
  return FullTurn(Atan2(sign * (nn * s - ne * c), sign * (ee * c - en * s)));
}

double GridLines::AzimuthTo(const GridPoint& from, const GridPoint& to) const {
  GridLine line;
  return Between(from, to, line) ? line.azimuth : kNaN;
}

double RadiusInAzimuth(const Ellipsoid& ellipsoid, double b, double azimuth) {
  const auto [M, N] = RadiiAt(ellipsoid, b);
  const auto [s, c] = SinCos(azimuth);
  return M * N / (c * c * N + s * s * M);
}

double SlopeToEllipsoid(double slope, double h1, double h2, double R) {
  const double rise = h2 - h1;
  const double chord2 = (slope - rise) * (slope + rise) / ((1 + h1 / R) * (1 + h2 / R));
  return 2 * R * Asin(std::sqrt(chord2) / (2 * R));
}

double Deflection::AzimuthCorrection(double b) const { return -eta * Tan(b); }

double Deflection::DirectionCorrection(double azimuth, double zenith) const {
  return -(xi * Sin(azimuth) - eta * Cos(azimuth)) / Tan(zenith);
}

double Deflection::ZenithCorrection(double azimuth) const {
  return xi * Cos(azimuth) + eta * Sin(azimuth);
}

void DeflectionsAt(const GeoidHeight& geoid, const Ellipsoid& ellipsoid, const double* b,
                   const double* l, const double* h, Deflection* deflections, std::size_t count) {
  double heights[kBlock], perLatitude[kBlock], perLongitude[kBlock];
  for (std::size_t start = 0; start < count; start += kBlock) {
    const std::size_t n = std::min(kBlock, count - start);
    geoid.HeightsAndSlopes(b + start, l + start, heights, perLatitude, perLongitude, n);
    for (std::size_t i = 0; i < n; ++i) {
      const double lat = b[start + i], height = h[start + i];
      const auto [M, N] = RadiiAt(ellipsoid, lat);
      const double east = std::abs(lat) < kHalfPi ? (N + height) * Cos(lat) : kNaN;
      const Deflection found{-perLatitude[i] / (M + height), -perLongitude[i] / east};
      deflections[start + i] = std::isfinite(found.xi + found.eta) ? found : Deflection{kNaN, kNaN};
    }
  }
}

bool DeflectionAt(const GeoidHeight& geoid, const Ellipsoid& ellipsoid, double b, double l,
                  double h, Deflection& deflection) {
  DeflectionsAt(geoid, ellipsoid, &b, &l, &h, &deflection, 1);
  return !std::isnan(deflection.xi);
}

}  // namespace zel_cs::geomath
