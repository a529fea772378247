#include "geomath/geodesic/geodesic_search.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "geomath/simd/scalar.h"

// Equation numbers are Karney 2013.
namespace zel_cs::geomath {
namespace {

using Unit = GeodesicFormulas::Unit;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kTolerance = 0.5 * kEpsilon;  // radians of longitude: 1 nm on the Earth
constexpr int kNewtonSteps = 20;               // of which most pairs take three
constexpr int kMaxSteps = kNewtonSteps + 80;   // the others halve the bracket
constexpr double kShortArc = 1;                // radians; shorter meridian arcs are shortest lines

Unit FromAngle(double x) { return GeodesicFormulas::SinCos<simd::Scalar>(x); }
Unit ToUnit(double y, double x) {
  const double h = Hypot(y, x);
  return {y / h, x / h};
}

/// One candidate: the geodesic that leaves β1 at α1 up to where it meets β2.
struct Candidate {
  Unit alpha2;
  double sigma12, omega12, lambda12;
  double eps;
  Unit sigma1, sigma2;
};

// The problem in the position that section 4 begins with: β1 ≤ 0, β1 ≤ β2 ≤ −β1, 0 ≤ λ12 ≤ π.
class Search {
 public:
  Search(const GeodesicFormulas& g, const Unit& beta1, const Unit& beta2, double lambda12)
      : g_(g), beta1_(beta1), beta2_(beta2), lambda12_(lambda12) {}

  GeodesicArc Solve() const {
    GeodesicArc arc;
    if (Meridional(arc) || Equatorial(arc)) return arc;
    return General();
  }

 private:
  // λ12 = 0 or π, or a start at the pole: a meridian, where it is the shortest line (a prolate
  // ellipsoid has shorter ones beside it).
  bool Meridional(GeodesicArc& arc) const {
    const bool atPole = beta1_.cos < kEpsilon;
    if (!(lambda12_ == 0 || lambda12_ == kPi || atPole)) return false;
    const Unit alpha1 = FromMeridian(lambda12_), alpha2 = FromMeridian(0);
    const Unit sigma1{beta1_.sin, alpha1.cos * beta1_.cos}, sigma2{beta2_.sin, beta2_.cos};
    const double sigma12 = Arc(sigma1, sigma2), eps = g_.Expansion(1);
    if (sigma12 >= kShortArc && ReducedLength(sigma1, sigma2, sigma12, eps) < 0) return false;
    const bool coincident = sigma12 == 0;
    arc = {Distance(sigma1, sigma2, sigma12, eps), coincident ? Unit{0, 0} : alpha1,
           coincident ? Unit{0, 0} : alpha2, lambda12_};
    return true;
  }

  static Unit FromMeridian(double lambda) {
    return lambda == kPi ? Unit{0, -1} : FromAngle(lambda);
  }

  bool Equatorial(GeodesicArc& arc) const {
    if (beta1_.sin != 0 || lambda12_ > (1 - g_.f) * kPi) return false;
    arc = {g_.a * lambda12_, {1, 0}, {1, 0}, lambda12_ / (1 - g_.f)};
    return true;
  }

  // λ12 grows with α1 up to the shortest line (section 4), so that a bracket holds the azimuth; its
  // bounds are kept as units, where a difference from 0 or π keeps its digits.
  GeodesicArc General() const {
    Unit low{std::numeric_limits<double>::min(), 1}, high{std::numeric_limits<double>::min(), -1};
    Unit alpha1 = Start();
    Candidate at = Try(alpha1);
    for (int i = 0; i < kMaxSteps; ++i) {
      const double excess = at.lambda12 - lambda12_;
      if (std::abs(excess) <= kTolerance) break;
      (excess > 0 ? high : low) = alpha1;
      const double step = -excess / Slope(at);
      Unit next = GeodesicFormulas::Sum(alpha1, FromAngle(step));
      next = ToUnit(next.sin, next.cos);
      const bool inside = next.sin > 0 && GeodesicFormulas::Difference(next, low).sin > 0 &&
                          GeodesicFormulas::Difference(high, next).sin > 0;
      if (!(inside && std::abs(step) < kPi && i < kNewtonSteps))
        next = ToUnit(low.sin + high.sin, low.cos + high.cos);
      if (next.sin == alpha1.sin && next.cos == alpha1.cos) break;
      alpha1 = next;
      at = Try(alpha1);
    }
    return {Distance(at.sigma1, at.sigma2, at.sigma12, at.eps), alpha1, at.alpha2, at.omega12};
  }

  Candidate Try(const Unit& alpha1) const {
    Candidate c;
    const double sinAlpha0 = alpha1.sin * beta1_.cos;                     // 5
    const double cosAlpha0 = Hypot(alpha1.cos, alpha1.sin * beta1_.sin);  // 10
    c.alpha2 = {beta1_.cos == beta2_.cos ? alpha1.sin : sinAlpha0 / beta2_.cos, CosAlpha2(alpha1)};
    c.sigma1 = ToUnit(beta1_.sin, alpha1.cos * beta1_.cos);  // 11
    c.sigma2 = ToUnit(beta2_.sin, c.alpha2.cos * beta2_.cos);
    const Unit omega1{sinAlpha0 * c.sigma1.sin, c.sigma1.cos};  // 12
    const Unit omega2{sinAlpha0 * c.sigma2.sin, c.sigma2.cos};
    c.sigma12 = Arc(c.sigma1, c.sigma2);
    c.omega12 = Arc(omega1, omega2);
    c.eps = g_.Expansion(cosAlpha0);
    const GeodesicTerms<5> c3 = g_.longitude.C3(c.eps);
    const double i3 = c.sigma12 + (c3.Sine(c.sigma2.sin, c.sigma2.cos) -
                                   c3.Sine(c.sigma1.sin, c.sigma1.cos));      // 23
    c.lambda12 = c.omega12 - g_.f * sinAlpha0 * g_.longitude.A3(c.eps) * i3;  // 8
    return c;
  }

  // Eq. 45, with cos²β2 − cos²β1 from the smaller of sines and cosines.
  double CosAlpha2(const Unit& alpha1) const {
    if (beta2_.cos == beta1_.cos && std::abs(beta2_.sin) == -beta1_.sin)
      return std::abs(alpha1.cos);
    const double north = alpha1.cos * beta1_.cos;
    const double squares = beta1_.cos < -beta1_.sin
                               ? (beta2_.cos - beta1_.cos) * (beta1_.cos + beta2_.cos)
                               : (beta1_.sin - beta2_.sin) * (beta1_.sin + beta2_.sin);
    return std::sqrt(std::max(0.0, north * north + squares)) / beta2_.cos;
  }

  // dλ12/dα1, eqs. 46 and 47.
  double Slope(const Candidate& c) const {
    if (c.alpha2.cos == 0)
      return -2 * std::sqrt(1 - (1 - (1 - g_.f) * (1 - g_.f)) * beta1_.cos * beta1_.cos) /
             beta1_.sin;
    return ReducedLength(c.sigma1, c.sigma2, c.sigma12, c.eps) / (g_.a * c.alpha2.cos * beta2_.cos);
  }

  static double Arc(const Unit& from, const Unit& to) {
    const Unit d = GeodesicFormulas::Difference(to, from);
    return Atan2(std::max(0.0, d.sin) + 0.0, d.cos);
  }

  // Eqs. 7 and 15.
  double Distance(const Unit& sigma1, const Unit& sigma2, double sigma12, double eps) const {
    const GeodesicTerms<6> c1 = GeodesicC1(eps);
    return g_.b * GeodesicA1(eps) *
           (sigma12 + (c1.Sine(sigma2.sin, sigma2.cos) - c1.Sine(sigma1.sin, sigma1.cos)));
  }

  // m12, eqs. 38 and 40, with √(1 + k² sin²σ) from ε.
  double ReducedLength(const Unit& sigma1, const Unit& sigma2, double sigma12, double eps) const {
    const double a1 = GeodesicA1(eps), a2 = GeodesicA2(eps);
    const GeodesicTerms<6> c1 = GeodesicC1(eps), c2 = GeodesicC2(eps);
    const auto change = [&](const GeodesicTerms<6>& c) {
      return c.Sine(sigma2.sin, sigma2.cos) - c.Sine(sigma1.sin, sigma1.cos);
    };
    const double j12 = (a1 - a2) * sigma12 + (a1 * change(c1) - a2 * change(c2));
    const double k2 = 4 * eps / ((1 - eps) * (1 - eps));
    const auto root = [k2](double s) { return std::sqrt(1 + k2 * s * s); };
    return g_.b * (root(sigma2.sin) * (sigma1.cos * sigma2.sin) -
                   root(sigma1.sin) * (sigma1.sin * sigma2.cos) - sigma1.cos * sigma2.cos * j12);
  }

  Unit Start() const {
    const double meanCos = (beta1_.cos + beta2_.cos) / 2;
    const double e2 = g_.f * (2 - g_.f);
    const double omega12 = lambda12_ / std::sqrt(1 - e2 * meanCos * meanCos);  // 48
    const Unit omega = FromAngle(std::min(omega12, kPi));
    const double east = beta2_.cos * omega.sin;  // 49
    const double north = beta1_.cos * beta2_.sin - beta1_.sin * beta2_.cos * omega.cos;
    const double cosSigma = beta1_.sin * beta2_.sin + beta1_.cos * beta2_.cos * omega.cos;
    const double near = 6 * kPi * std::abs(g_.f) * beta1_.cos * beta1_.cos;
    if (g_.f > 0 && cosSigma < 0 && Hypot(east, north) < near) return FromAstroid();
    return east > 0 ? ToUnit(east, north) : Unit{1, 0};
  }

  // The antipode is the centre of an astroid, the envelope of the geodesics (section 4).
  Unit FromAstroid() const {
    const double eps = g_.Expansion(beta1_.sin);
    const double lambdaScale = g_.f * beta1_.cos * g_.longitude.A3(eps) * kPi;
    const double x = (lambda12_ - kPi) / lambdaScale;  // 53
    const double y =
        (beta2_.sin * beta1_.cos + beta2_.cos * beta1_.sin) / (lambdaScale * beta1_.cos);
    if (y == 0)
      return ToUnit(std::min(1.0, -x), -std::sqrt(std::max(0.0, (1 - x) * (1 + x))));  // 57
    const double mu = Astroid(x, y);
    return ToUnit(-x / (1 + mu), y / mu);  // 56
  }

  // The positive root of μ⁴ + 2μ³ + (1 − x² − y²)μ² − 2y²μ − y² = 0 (55), by Newton's method on the
  // equivalent (x/(1 + μ))² + (y/μ)² = 1, whose left side is convex and falls with μ: from below the
  // root it climbs to it.
  static double Astroid(double x, double y) {
    double mu = std::abs(y);  // there (y/μ)² is 1 already
    for (int i = 0; i < 50; ++i) {
      const double p = x / (1 + mu), q = y / mu;
      const double excess = p * p + q * q - 1;
      const double step = excess / (2 * (p * p / (1 + mu) + q * q / mu));
      mu += step;
      if (step <= 1e-3 * mu) break;
    }
    return mu;
  }

  const GeodesicFormulas& g_;
  Unit beta1_, beta2_;
  double lambda12_;
};

}  // namespace

GeodesicArc SearchGeodesic(const GeodesicFormulas& g, double phi1, double phi2, double lambda12) {
  const bool swapped = std::abs(phi1) < std::abs(phi2);
  if (swapped) std::swap(phi1, phi2);
  const double northward = phi1 >= 0 ? -1 : 1, eastward = std::signbit(lambda12) ? -1 : 1;
  const Unit beta1 = g.Reduced(FromAngle(northward * phi1));
  const Unit beta2 = g.Reduced(FromAngle(northward * phi2));

  GeodesicArc arc = Search(g, beta1, beta2, std::abs(lambda12)).Solve();
  if (swapped) std::swap(arc.alpha1, arc.alpha2);
  const double north = northward * (swapped ? -1 : 1);  // reversed and mirrored
  for (Unit* alpha : {&arc.alpha1, &arc.alpha2})
    *alpha = {eastward * alpha->sin, north * alpha->cos};
  arc.omega12 *= eastward;
  return arc;
}

}  // namespace zel_cs::geomath
