#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>

#include "bench/accuracy/markdown.h"
#include "bench/accuracy/sections.h"
#include "geomath/geomath.h"

namespace {

using namespace zel_cs::geomath;
using exact::Real;

// The worst errors over some points, metres.
struct Worst {
  Real forward = 0, inverse = 0, roundTrip = 0, batch = 0;
  int points = 0, refused = 0;

  void Include(const Worst& other) {
    forward = std::max(forward, other.forward);
    inverse = std::max(inverse, other.inverse);
    roundTrip = std::max(roundTrip, other.roundTrip);
    batch = std::max(batch, other.batch);
    points += other.points;
    refused += other.refused;
  }
};

Real OnGround(const TGeoProj& projection, exact::Geographic at, Real dPhi, Real dLambda) {
  const Ellipsoid& own = projection.GetEllipsoid();
  const exact::Ellipsoid ell{own.a, own.f};
  const Real turn = std::remainder(dLambda, 2 * std::numbers::pi_v<Real>);
  return std::hypot(exact::MeridianRadius(ell, at.phi) * dPhi,
                    exact::PrimeVerticalRadius(ell, at.phi) * std::cos(at.phi) * turn);
}

// The one-point calls: forward against the reference; there and back; and the inverse of the exact
// grid position. A result that is no number counts as infinitely wrong.
Worst MeasurePoint(const Subject& subject, exact::Geographic p) {
  constexpr Worst kRefused{.points = 1, .refused = 1};
  const TGeoProj& projection = *subject.projection;
  const exact::Plane plane = subject.reference(p);
  double n = static_cast<double>(p.phi), e = static_cast<double>(p.lambda);
  if (!projection.ForwardPoint(n, e)) return kRefused;
  double phi = n, lambda = e;
  if (!projection.InversePoint(phi, lambda)) return kRefused;
  double b = static_cast<double>(plane.north), l = static_cast<double>(plane.east);
  if (!projection.InversePoint(b, l)) return kRefused;

  const auto orInfinite = [](Real x) {
    return std::isnan(x) ? std::numeric_limits<Real>::infinity() : x;
  };
  return {.forward = orInfinite(std::hypot(plane.north - n, plane.east - e)),
          .inverse = orInfinite(OnGround(projection, p, b - p.phi, l - p.lambda)),
          .roundTrip = orInfinite(OnGround(projection, p, phi - p.phi, lambda - p.lambda)),
          .points = 1};
}

// The largest distance of batch from one-point results, in the caller's axes; infinite where one of
// the two gives no result and the other one does.
template <class Distance>
Real Deviation(const std::vector<double> (&batch)[2], const std::vector<double> (&scalar)[2],
               Distance distance) {
  Real worst = 0;
  for (std::size_t i = 0; i < batch[0].size(); ++i) {
    if (std::isfinite(batch[0][i]) != std::isfinite(scalar[0][i]))
      return std::numeric_limits<Real>::infinity();
    if (std::isfinite(batch[0][i]))
      worst = std::max<Real>(
          worst, distance(i, Real{batch[0][i]} - scalar[0][i], Real{batch[1][i]} - scalar[1][i]));
  }
  return worst;
}

Real MeasureBatch(const Subject& subject, const Band& band) {
  TGeoProj& projection = *subject.projection;
  std::vector<double> batch[2], scalar[2];
  for (const auto& [phi, lambda] : band.points) {
    batch[0].push_back(static_cast<double>(phi));
    batch[1].push_back(static_cast<double>(lambda));
  }
  const std::size_t count = band.points.size();
  const auto oneByOne = [&](bool (TGeoProj::*convert)(double&, double&)) {
    for (std::size_t i = 0; i < count; ++i)
      if (!(projection.*convert)(scalar[0][i], scalar[1][i]))
        scalar[0][i] = scalar[1][i] = std::numeric_limits<double>::quiet_NaN();
  };

  scalar[0] = batch[0];
  scalar[1] = batch[1];
  oneByOne(&TGeoProj::Forward);
  projection.ForwardBatch(batch[0].data(), batch[1].data(), count);
  const Real forward =
      Deviation(batch, scalar, [](std::size_t, Real dN, Real dE) { return std::hypot(dN, dE); });

  batch[0] = scalar[0];
  batch[1] = scalar[1];
  oneByOne(&TGeoProj::Inverse);
  projection.InverseBatch(batch[0].data(), batch[1].data(), count);
  const Real inverse = Deviation(batch, scalar, [&](std::size_t i, Real dPhi, Real dLambda) {
    return OnGround(projection, band.points[i], dPhi, dLambda);
  });
  return std::max(forward, inverse);
}

Worst MeasureBand(const Subject& subject, const Band& band) {
  Worst worst;
  for (const exact::Geographic& p : band.points) worst.Include(MeasurePoint(subject, p));
  worst.batch = MeasureBatch(subject, band);
  return worst;
}

std::vector<std::string> Cells(const std::string& name, const std::string& where,
                               const Worst& worst) {
  if (worst.refused == worst.points) return {name, where, "refused", "", "", ""};
  std::string forward = Length(worst.forward);
  if (worst.refused > 0) forward += ", some refused";
  return {name,
          where,
          forward,
          Length(worst.inverse),
          Length(worst.roundTrip),
          BatchDeviation(worst.batch)};
}

void WriteSubject(std::ostream& out, const Subject& subject) {
  std::string name = "**" + subject.name + "**";
  for (std::size_t i = 0; i < subject.bands.size(); ++i) {
    const Band& band = subject.bands[i];
    const std::string where = i < subject.inUse ? "**" + band.label + "**" : band.label;
    WriteRow(out, Cells(name, where, MeasureBand(subject, band)));
    name.clear();
  }
}

}  // namespace

void WriteProjections(std::ostream& out, const std::vector<Family>& families) {
  for (const Family& family : families) {
    out << "\n## " << family.title << "\n" << family.text << "\n\n";
    WriteHead(out, {"class", "where", "forward", "inverse", "round trip", "batch − one point"});
    for (const Subject& subject : family.subjects) WriteSubject(out, subject);
  }
}
