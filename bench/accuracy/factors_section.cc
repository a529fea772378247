#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <ostream>

#include "bench/accuracy/markdown.h"
#include "bench/accuracy/sections.h"
#include "geomath/geomath.h"

// Scale and convergence of every class beside the derivatives of its definition.
namespace {

using namespace zel_cs::geomath;
using exact::Real;

// Coefficients of the central difference of the eighth order; with this step, radians, its
// truncation and the rounding of extended precision are both below 1e-16.
constexpr Real kCentral[] = {4.0L / 5, -1.0L / 5, 4.0L / 105, -1.0L / 280};
constexpr Real kStep = 1e-3L;

constexpr Real kLine = 1e6L;  // metres; what an error of a factor does to it is printed

exact::Plane Derivative(const exact::Projection& map, exact::Geographic p,
                        exact::Geographic along) {
  Real north = 0, east = 0;
  for (int i = 0; i < 4; ++i) {
    const Real step = (i + 1) * kStep;
    const exact::Plane ahead = map({p.phi + step * along.phi, p.lambda + step * along.lambda});
    const exact::Plane behind = map({p.phi - step * along.phi, p.lambda - step * along.lambda});
    north += kCentral[i] * (ahead.north - behind.north);
    east += kCentral[i] * (ahead.east - behind.east);
  }
  return {north / kStep, east / kStep};
}

struct Worst {
  Real scale = 0, convergence = 0, between = 0;  // directions
  int refused = 0;
};

void Include(Worst& worst, const Subject& subject, exact::Geographic p) {
  constexpr Real kReach = std::size(kCentral) * kStep;
  if (std::abs(p.phi) + kReach >= std::numbers::pi_v<Real> / 2) return;
  Distortion ours;
  if (!DistortionAt(*subject.projection, static_cast<double>(p.phi), static_cast<double>(p.lambda),
                    ours))
    return void(++worst.refused);
  const Ellipsoid& own = subject.projection->GetEllipsoid();
  const exact::Ellipsoid ell{own.a, own.f};
  const exact::Plane northward = Derivative(subject.reference, p, {1, 0});
  const exact::Plane eastward = Derivative(subject.reference, p, {0, 1});
  const Real h = std::hypot(northward.north, northward.east) / exact::MeridianRadius(ell, p.phi);
  const Real k = std::hypot(eastward.north, eastward.east) /
                 (exact::PrimeVerticalRadius(ell, p.phi) * std::cos(p.phi));
  const Real gamma = -std::atan2(northward.east, northward.north);
  worst.scale = std::max(
      {worst.scale, std::abs(ours.meridianScale / h - 1), std::abs(ours.parallelScale / k - 1)});
  worst.convergence =
      std::max(worst.convergence,
               std::abs(std::remainder(ours.convergence - gamma, 2 * std::numbers::pi_v<Real>)));
  worst.between = std::max<Real>(worst.between, ours.semiMajor / ours.semiMinor - 1);
}

}  // namespace

void WriteFactors(std::ostream& out, const std::vector<Family>& families) {
  out << R"(
## Scale and convergence

`DistortionAt` against the derivatives of the definitions above, over the domain of use: what the
errors of scale, along meridian and parallel, and of convergence do to a line of 1000 km. The last
column is what the scale differs by in two directions; a conformal map has none, but for what its
series leave out. Classes with series have the derivatives of their series, those of the tables of
1927 the factors of the tables.

)";
  WriteHead(out, {"class", "scale", "convergence", "between directions"});
  for (const Family& family : families)
    for (const Subject& subject : family.subjects) {
      Worst worst;
      for (std::size_t i = 0; i < subject.inUse; ++i)
        for (const exact::Geographic& p : subject.bands[i].points) Include(worst, subject, p);
      WriteRow(out, {"**" + subject.name + "**" + (worst.refused ? ", some refused" : ""),
                     Length(worst.scale * kLine), Length(worst.convergence * kLine),
                     Length(worst.between * kLine)});
    }
}
