#include "geomath/adjust/quantiles.h"

#include <cmath>
#include <limits>

#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kTiny = 1e-300;
constexpr int kMaxTerms = 100000;

// ln Γ(x) for x > 0: Stirling's series (5.11.1) from 15 on, where nine terms are below 1e-17. The
// standard library's function writes a global.
double LogGamma(double x) {
  double product = 1;
  for (; x < 15; x += 1) product *= x;
  constexpr double terms[] = {1.0 / 12,   -1.0 / 360,      1.0 / 1260, -1.0 / 1680,
                              1.0 / 1188, -691.0 / 360360, 1.0 / 156,  -3617.0 / 122400};
  double sum = 0, power = 1 / x;
  for (const double term : terms) {
    sum += term * power;
    power /= x * x;
  }
  constexpr double kHalfLogTwoPi = 0.91893853320467274178;
  return (x - 0.5) * Log(x) - x + kHalfLogTwoPi + sum - Log(product);
}

// P(a, x), or Q(a, x) = 1 − P, whichever is small: the series 8.7.1 below a + 1, the continued fraction
// 8.9.2 above (Lentz's method).
struct Tails {
  double below, above;
};

Tails IncompleteGamma(double a, double x) {
  if (!(x > 0)) return {0, 1};
  if (std::isinf(x)) return {1, 0};
  const double scale = Exp(a * Log(x) - x - LogGamma(a));
  if (x < a + 1) {
    double term = 1 / a, sum = term;
    for (int n = 1; n < kMaxTerms && term > sum * kEpsilon; ++n) sum += term *= x / (a + n);
    return {sum * scale, 1 - sum * scale};
  }
  double b = x + 1 - a, c = 1 / kTiny, d = 1 / b, h = d;
  for (int n = 1; n < kMaxTerms; ++n) {
    const double an = -n * (n - a);
    b += 2;
    d = 1 / (an * d + b);
    c = b + an / c;
    h *= d * c;
    if (std::abs(d * c - 1) < kEpsilon) break;
  }
  return {1 - h * scale, h * scale};
}

// Ix(a, b) by the continued fraction 8.17.22, with y = 1 − x given apart.
double BetaFraction(double a, double b, double x, double y) {
  const double front =
      Exp(LogGamma(a + b) - LogGamma(a) - LogGamma(b) + a * Log(x) + b * Log(y)) / a;
  double c = 1, d = 1 - (a + b) * x / (a + 1);
  d = 1 / (std::abs(d) < kTiny ? kTiny : d);
  double h = d;
  const auto step = [&](double coefficient) {
    d = 1 + coefficient * d;
    d = 1 / (std::abs(d) < kTiny ? kTiny : d);
    c = 1 + coefficient / c;
    c = std::abs(c) < kTiny ? kTiny : c;
    h *= d * c;
    return std::abs(d * c - 1) < kEpsilon;
  };
  for (int m = 1; m < kMaxTerms; ++m) {
    step(m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m)));
    if (step(-(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1)))) break;
  }
  return front * h;
}

Tails IncompleteBeta(double a, double b, double x, double y) {
  if (!(x > 0)) return {0, 1};
  if (!(y > 0)) return {1, 0};
  if (x < (a + 1) / (a + b + 2)) {
    const double below = BetaFraction(a, b, x, y);
    return {below, 1 - below};
  }
  const double above = BetaFraction(b, a, y, x);
  return {1 - above, above};
}

// P(F ≤ x) and the rest.
Tails Fisher(double x, double f1, double f2) {
  if (!(x > 0)) return {0, 1};
  if (std::isinf(x)) return {1, 0};
  const double sum = f1 * x + f2;
  return IncompleteBeta(f1 / 2, f2 / 2, f1 * x / sum, f2 / sum);
}

// The positive x whose tail has the probability: bisection of ln x, which is what the tails are smooth
// in, until the halves are the same number.
template <class TailsOf>
double Solve(double probability, TailsOf tails) {
  if (!(probability > 0 && probability < 1)) return kNaN;
  const bool lower = probability < 0.5;
  const double wanted = lower ? probability : 1 - probability;
  double low = -700, high = 700;
  for (int i = 0; i < 200; ++i) {
    const double middle = 0.5 * (low + high);
    if (middle <= low || middle >= high) break;
    const Tails at = tails(Exp(middle));
    const bool above = lower ? at.below > wanted : at.above < wanted;
    (above ? high : low) = middle;
  }
  return Exp(0.5 * (low + high));
}

}  // namespace

double NormalProbability(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

double NormalQuantile(double probability) {
  if (!(probability > 0 && probability < 1)) return kNaN;
  const double x2 = ChiSquareQuantile(std::abs(2 * probability - 1), 1);
  if (probability == 0.5) return 0;
  return std::copysign(std::sqrt(x2), probability - 0.5);
}

double StudentProbability(double t, double freedom) {
  if (!(freedom > 0) || std::isnan(t)) return kNaN;
  const Tails at = Fisher(t * t, 1, freedom);
  return t < 0 ? 0.5 * at.above : 1 - 0.5 * at.above;
}

double StudentQuantile(double probability, double freedom) {
  if (!(freedom > 0) || !(probability > 0 && probability < 1)) return kNaN;
  if (probability == 0.5) return 0;
  const double tail = probability < 0.5 ? 2 * probability : 2 * (1 - probability);
  const double t2 = Solve(1 - tail, [&](double x) { return Fisher(x, 1, freedom); });
  return std::copysign(std::sqrt(t2), probability - 0.5);
}

double ChiSquareProbability(double x, double freedom) {
  if (!(freedom > 0) || std::isnan(x)) return kNaN;
  return IncompleteGamma(freedom / 2, x / 2).below;
}

double ChiSquareQuantile(double probability, double freedom) {
  if (!(freedom > 0)) return kNaN;
  return Solve(probability, [&](double x) { return IncompleteGamma(freedom / 2, x / 2); });
}

double FisherProbability(double x, double freedom1, double freedom2) {
  if (!(freedom1 > 0 && freedom2 > 0) || std::isnan(x)) return kNaN;
  return Fisher(x, freedom1, freedom2).below;
}

double FisherQuantile(double probability, double freedom1, double freedom2) {
  if (!(freedom1 > 0 && freedom2 > 0)) return kNaN;
  return Solve(probability, [&](double x) { return Fisher(x, freedom1, freedom2); });
}

double TauCritical(double alpha, double count, double freedom) {
  if (!(freedom >= 1)) return kNaN;
  if (freedom == 1) return 1;
  const double t = StudentQuantile(1 - alpha / (2 * count), freedom - 1);
  return t * std::sqrt(freedom) / std::sqrt(freedom - 1 + t * t);
}

}  // namespace zel_cs::geomath
