#include "bench/accuracy/exact.h"

#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <utility>

namespace exact {
namespace {

using Complex = std::complex<Real>;

constexpr Real kPi = std::numbers::pi_v<Real>;

Real Square(Real x) { return x * x; }

// The rule of Gauss and Legendre on [0, 1]: with 20 nodes and the analytic integrands here the
// error is below the last digit.
class Quadrature {
 public:
  template <class T, class Integrand>
  static T Integrate(T to, Integrand integrand) {
    static const Quadrature rule;
    T sum{};
    for (const auto& [node, weight] : rule.points_) sum += weight * integrand(node * to);
    return sum * to;
  }

 private:
  static constexpr int kNodes = 20;

  Quadrature() {
    for (int i = 0; i < kNodes; ++i) {
      Real x = std::cos(kPi * (i + 0.75L) / (kNodes + 0.5L)), slope = 0;
      for (int step = 0; step < 10; ++step) {
        Real p = 1, before = 0;
        for (int n = 1; n <= kNodes; ++n)
          before = std::exchange(p, ((2 * n - 1) * x * p - (n - 1) * before) / n);
        slope = kNodes * (x * p - before) / (x * x - 1);
        x -= p / slope;
      }
      points_[static_cast<std::size_t>(i)] = {(1 + x) / 2, 1 / ((1 - x * x) * Square(slope))};
    }
  }

  std::array<std::pair<Real, Real>, kNodes> points_;
};

// ψ(φ), for complex latitudes too.
template <class T>
T IsometricLatitude(const Ellipsoid& ell, T phi) {
  const Real e = std::sqrt(ell.e2);
  return std::asinh(std::tan(phi)) - e * std::atanh(e * std::sin(phi));
}

Real Gudermannian(Real psi) { return std::atan(std::sinh(psi)); }

// a·cos φ/√(1 − e²·sin²φ) over a: Snyder's m.
Real ParallelRadius(const Ellipsoid& ell, Real phi) {
  return std::cos(phi) / std::sqrt(1 - ell.e2 * Square(std::sin(phi)));
}

template <class T>
T MeridianArc(const Ellipsoid& ell, T phi) {
  return Quadrature::Integrate(phi, [&](T theta) {
    const T s = std::sin(theta), w2 = Real{1} - ell.e2 * (s * s);
    return ell.a * (1 - ell.e2) / (w2 * std::sqrt(w2));
  });
}

// The latitude of an isometric latitude, both complex, by Newton's method.
Complex LatitudeOfIsometric(const Ellipsoid& ell, Complex psi) {
  Complex phi = std::atan(std::sinh(psi));
  for (int step = 0; step < 8; ++step) {
    const Complex s = std::sin(phi), c = std::cos(phi);
    const Complex slope = (1 - ell.e2) / ((Real{1} - ell.e2 * (s * s)) * c);
    phi -= (IsometricLatitude(ell, phi) - psi) / slope;
  }
  return phi;
}

// The Gaussian conformal sphere of a normal latitude.
struct GaussianSphere {
  GaussianSphere(const Ellipsoid& ellipsoid, Real phi0)
      : ell(ellipsoid),
        R(std::sqrt(MeridianRadius(ell, phi0) * PrimeVerticalRadius(ell, phi0))),
        alpha(std::sqrt(1 + ell.ep2 * Square(Square(std::cos(phi0))))),
        chi0(std::asin(std::sin(phi0) / alpha)),
        K(std::asinh(std::tan(chi0)) - alpha * IsometricLatitude(ell, phi0)) {}

  Real Latitude(Real phi) const { return Gudermannian(alpha * IsometricLatitude(ell, phi) + K); }

  Ellipsoid ell;
  Real R, alpha, chi0, K;
};

// Stereographic projection of a sphere about (chi0, 0), Snyder 21-2 to 21-4.
Plane SphereStereographic(Real chi, Real Lambda, Real chi0, Real diameter) {
  const Real across = std::cos(chi) * std::cos(Lambda);
  const Real k = diameter / (1 + std::sin(chi0) * std::sin(chi) + std::cos(chi0) * across);
  return {k * (std::cos(chi0) * std::sin(chi) - std::sin(chi0) * across),
          k * std::cos(chi) * std::sin(Lambda)};
}

Plane OnCone(Real rho0, Real rho, Real theta) {
  return {rho0 - rho * std::cos(theta), rho * std::sin(theta)};
}

}  // namespace

Real MeridianRadius(const Ellipsoid& ell, Real phi) {
  const Real w2 = 1 - ell.e2 * Square(std::sin(phi));
  return ell.a * (1 - ell.e2) / (w2 * std::sqrt(w2));
}

Real PrimeVerticalRadius(const Ellipsoid& ell, Real phi) {
  return ell.a / std::sqrt(1 - ell.e2 * Square(std::sin(phi)));
}

Projection TransverseMercator(const Ellipsoid& ell, const Origin& origin) {
  const Real m0 = MeridianArc(ell, origin.phi);
  return [=](Geographic p) -> Plane {
    const Complex psi = {IsometricLatitude(ell, p.phi), p.lambda - origin.lambda};
    const Complex arc = MeridianArc(ell, LatitudeOfIsometric(ell, psi));
    return {origin.k * (arc.real() - m0), origin.k * arc.imag()};
  };
}

Projection GaussSchreiber(const Ellipsoid& ell, const Origin& origin) {
  const GaussianSphere sphere(ell, origin.phi);
  return [=](Geographic p) -> Plane {
    const Real chi = sphere.Latitude(p.phi), Lambda = sphere.alpha * (p.lambda - origin.lambda);
    const Real north = std::atan2(std::tan(chi), std::cos(Lambda)) - sphere.chi0;
    const Real east = std::atanh(std::cos(chi) * std::sin(Lambda));
    return {origin.k * sphere.R * north, origin.k * sphere.R * east};
  };
}

// β, β1 reduced latitudes of the point and of the geodesic's foot on the meridian of the origin,
// which is its vertex; σ, ω arc and longitude from there on the auxiliary sphere.
Projection CassiniByGeodesic(const Ellipsoid& ell, const Origin& origin) {
  const Real m0 = MeridianArc(ell, origin.phi);
  return [=](Geographic p) -> Plane {
    const Real n = 1 - ell.f, lambda = p.lambda - origin.lambda;
    const Real tanBeta = n * std::tan(p.phi), cosBeta = 1 / std::hypot(Real{1}, tanBeta);
    Real omega = lambda, beta1 = 0, sigma = 0, k2 = 0;
    for (int round = 0; round < 12; ++round) {  // each shrinks the error by the flattening
      beta1 = std::atan(tanBeta / std::cos(omega));
      sigma = std::asin(cosBeta * std::sin(omega));
      k2 = ell.ep2 * Square(std::sin(beta1));
      const Real turn = Quadrature::Integrate(sigma, [&](Real s) {
        return (2 - ell.f) / (1 + n * std::sqrt(1 + k2 * Square(std::cos(s))));
      });
      omega = lambda + ell.f * std::cos(beta1) * turn;
    }
    const Real east = Quadrature::Integrate(
        sigma, [&](Real s) { return ell.a * n * std::sqrt(1 + k2 * Square(std::cos(s))); });
    const Real phi1 = std::atan(std::tan(beta1) / n);
    return {origin.k * (MeridianArc(ell, phi1) - m0), origin.k * east};
  };
}

Projection CassiniBySeries(const Ellipsoid& ell, const Origin& origin) {
  const Real m0 = MeridianArc(ell, origin.phi);
  return [=](Geographic p) -> Plane {
    const Real t = std::tan(p.phi), c = std::cos(p.phi), nu = PrimeVerticalRadius(ell, p.phi);
    const Real A = (p.lambda - origin.lambda) * c, T = t * t, C = ell.ep2 * c * c;
    const Real A2 = A * A, A3 = A2 * A, A4 = A2 * A2, A5 = A4 * A;
    const Real x = nu * (A - T * A3 / 6 - (8 - T + 8 * C) * T * A5 / 120);
    const Real y = MeridianArc(ell, p.phi) - m0 + nu * t * (A2 / 2 + (5 - T + 6 * C) * A4 / 24);
    return {origin.k * y, origin.k * x};
  };
}

Projection ColombiaUrban(const Ellipsoid& ell, const Origin& origin) {
  const Real rho0 = MeridianRadius(ell, origin.phi), nu0 = PrimeVerticalRadius(ell, origin.phi);
  const Real B = std::tan(origin.phi) / (2 * rho0 * nu0);
  return [=](Geographic p) -> Plane {
    const Real x = PrimeVerticalRadius(ell, p.phi) * std::cos(p.phi) * (p.lambda - origin.lambda);
    return {rho0 * (p.phi - origin.phi + B * x * x), x};
  };
}

Projection Mercator(const Ellipsoid& ell, Real trueScale, Real lambda0) {
  const Real radius = ell.a * ParallelRadius(ell, trueScale);
  return [=](Geographic p) -> Plane {
    return {radius * IsometricLatitude(ell, p.phi), radius * (p.lambda - lambda0)};
  };
}

// With ψ = −ln t.
Projection Lambert(const Ellipsoid& ell, Real south, Real north, const Origin& origin) {
  const Real mS = ParallelRadius(ell, south), psiS = IsometricLatitude(ell, south);
  const Real mN = ParallelRadius(ell, north), psiN = IsometricLatitude(ell, north);
  const Real n = south == north ? std::sin(south) : std::log(mS / mN) / (psiN - psiS);  // 15-8
  const auto radius = [=](Real phi) {
    return ell.a * origin.k * mS / n * std::exp(n * (psiS - IsometricLatitude(ell, phi)));  // 15-7
  };
  const Real rho0 = radius(origin.phi);
  return [=](Geographic p) { return OnCone(rho0, radius(p.phi), n * (p.lambda - origin.lambda)); };
}

Projection Albers(const Ellipsoid& ell, Real south, Real north, const Origin& origin) {
  const auto q = [=](Real phi) {  // 3-12
    const Real e = std::sqrt(ell.e2), s = std::sin(phi);
    return (1 - ell.e2) * (s / (1 - ell.e2 * s * s) + std::atanh(e * s) / e);
  };
  const Real mS2 = Square(ParallelRadius(ell, south)), mN2 = Square(ParallelRadius(ell, north));
  const Real n = (mS2 - mN2) / (q(north) - q(south));                                   // 14-14
  const Real C = mS2 + n * q(south);                                                    // 14-13
  const auto radius = [=](Real phi) { return ell.a * std::sqrt(C - n * q(phi)) / n; };  // 14-12
  const Real rho0 = radius(origin.phi);
  return [=](Geographic p) { return OnCone(rho0, radius(p.phi), n * (p.lambda - origin.lambda)); };
}

Projection Stereographic(const Ellipsoid& ell, const Origin& origin) {
  const Real e = std::sqrt(ell.e2), hemisphere = std::copysign(Real{1}, origin.phi);
  if (std::abs(origin.phi) > kPi / 2 - 1e-12L) {
    const Real numerator = 2 * ell.a * origin.k;
    const Real c = std::sqrt(std::pow(1 + e, 1 + e) * std::pow(1 - e, 1 - e));
    return [=](Geographic p) -> Plane {
      const Real rho =
          numerator / c * std::exp(-hemisphere * IsometricLatitude(ell, p.phi));  // 21-33
      const Real theta = p.lambda - origin.lambda;
      return {-hemisphere * rho * std::cos(theta), rho * std::sin(theta)};
    };
  }
  const Real chi1 = Gudermannian(IsometricLatitude(ell, origin.phi));
  const Real m1 = ParallelRadius(ell, origin.phi);
  const Real diameter = 2 * ell.a * origin.k * m1 / std::cos(chi1);  // 21-27
  return [=](Geographic p) {
    const Real chi = Gudermannian(IsometricLatitude(ell, p.phi));
    return SphereStereographic(chi, p.lambda - origin.lambda, chi1, diameter);
  };
}

Projection DoubleStereographic(const Ellipsoid& ell, const Origin& origin) {
  const GaussianSphere sphere(ell, origin.phi);
  return [=](Geographic p) {
    return SphereStereographic(sphere.Latitude(p.phi), sphere.alpha * (p.lambda - origin.lambda),
                               sphere.chi0, 2 * origin.k * sphere.R);
  };
}

Projection Hotine(const Ellipsoid& ell, Real azimuth, const Origin& centre, Turn turn) {
  const Real s0 = std::sin(centre.phi), c0 = std::cos(centre.phi), root = std::sqrt(1 - ell.e2);
  const Real w2 = 1 - ell.e2 * s0 * s0;
  const Real B = std::sqrt(1 + ell.ep2 * Square(c0 * c0));                   // 9-11
  const Real A = ell.a * B * centre.k * root / w2;                           // 9-12
  const Real D = B * root / (c0 * std::sqrt(w2));                            // 9-13
  const Real F = D + std::copysign(std::sqrt(D * D - 1), centre.phi);        // 9-35
  const Real lnE = std::log(F) - B * IsometricLatitude(ell, centre.phi);     // 9-36
  const Real G = (F - 1 / F) / 2;                                            // 9-19
  const Real gamma0 = std::asin(std::sin(azimuth) / D);                      // 9-37
  const Real lambda0 = centre.lambda - std::asin(G * std::tan(gamma0)) / B;  // 9-38
  const Real angle = turn == Turn::byAzimuth ? azimuth : gamma0;
  return [=](Geographic p) -> Plane {
    const Real S = std::sinh(B * IsometricLatitude(ell, p.phi) + lnE);   // 9-25, 9-26
    const Real T = std::hypot(Real{1}, S);                               // 9-27
    const Real turned = B * (p.lambda - lambda0), V = std::sin(turned);  // 9-28
    const Real U = (S * std::sin(gamma0) - V * std::cos(gamma0)) / T;    // 9-29
    const Real v = -A / B * std::atanh(U);                               // 9-30
    const Real u =
        A / B * std::atan2(S * std::cos(gamma0) + V * std::sin(gamma0), std::cos(turned));  // 9-31
    return {u * std::cos(angle) - v * std::sin(angle), u * std::sin(angle) + v * std::cos(angle)};
  };
}

Projection Swiss(const Ellipsoid& ell, const Origin& origin) {
  const GaussianSphere sphere(ell, origin.phi);
  const Real s0 = std::sin(sphere.chi0), c0 = std::cos(sphere.chi0);
  return [=](Geographic p) -> Plane {
    const Real b = sphere.Latitude(p.phi), l = sphere.alpha * (p.lambda - origin.lambda);
    const Real longitude = std::atan2(std::sin(l), s0 * std::tan(b) + c0 * std::cos(l));
    const Real sinLatitude = c0 * std::sin(b) - s0 * std::cos(b) * std::cos(l);
    return {sphere.R * std::atanh(sinLatitude), sphere.R * longitude};
  };
}

Projection Krovak(const Ellipsoid& ell, const Origin& origin, Real pole, Real pseudoParallel) {
  const GaussianSphere sphere(ell, origin.phi);
  const Real n = std::sin(pseudoParallel), quarter = kPi / 4;
  const Real rho0 = origin.k * sphere.R / std::tan(pseudoParallel);
  return [=](Geographic p) -> Plane {
    const Real U = sphere.Latitude(p.phi), V = sphere.alpha * (origin.lambda - p.lambda);
    const Real S =
        std::asin(std::sin(pole) * std::sin(U) + std::cos(pole) * std::cos(U) * std::cos(V));
    const Real D = std::asin(std::cos(U) * std::sin(V) / std::cos(S));
    const Real rho =
        rho0 * std::pow(std::tan(pseudoParallel / 2 + quarter) / std::tan(S / 2 + quarter), n);
    return {rho * std::cos(n * D), rho * std::sin(n * D)};
  };
}

Projection Shifted(Projection projection, Real north, Real east) {
  return [=](Geographic p) -> Plane {
    const Plane plane = projection(p);
    return {plane.north + north, plane.east + east};
  };
}

Projection Scaled(Projection projection, Real factor) {
  return [=](Geographic p) -> Plane {
    const Plane plane = projection(p);
    return {plane.north * factor, plane.east * factor};
  };
}

}  // namespace exact
