#include "geomath/simd/scalar.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "geomath/simd/minimax.h"

// The arguments are reduced to small ones exactly, and what the rounding of a first term loses is
// carried along in a second number (Dekker 1971, "A floating-point technique for extending the
// available precision"), so that one rounding, the last, makes most of the error.
namespace zel_cs::geomath {
namespace {

using namespace minimax;

using Bits = std::uint64_t;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The sum of two doubles, the second small beside the first.
struct Twofold {
  double high, low;
  double Rounded() const { return high + low; }
};

/// a + b without error; |a| ≥ |b| or a = 0.
Twofold OrderedSum(double a, double b) {
  const double sum = a + b;
  return {sum, (a - sum) + b};
}

/// a + b without error (Knuth).
Twofold Sum(double a, double b) {
  const double sum = a + b, second = sum - a;
  return {sum, (a - (sum - second)) + (b - second)};
}

/// a·b without error (Veltkamp's splitting, Dekker's product), factors below 2⁹⁹⁰.
Twofold Product(double a, double b) {
  constexpr double kSplit = 0x1p27 + 1;
  const double ta = kSplit * a, a1 = ta - (ta - a), a2 = a - a1;
  const double tb = kSplit * b, b1 = tb - (tb - b), b2 = b - b1;
  const double product = a * b;
  return {product, ((a1 * b1 - product) + a1 * b2 + a2 * b1) + a2 * b2};
}

Twofold Quotient(Twofold a, Twofold b) {
  const double q = a.high / b.high;
  const Twofold back = Product(q, b.high);
  return {q, (((a.high - back.high) - back.low) + (a.low - q * b.low)) / b.high};
}

struct TwofoldPair {
  Twofold sin, cos;
};

// Cody and Waite 1980, chapter 8: x = k·π/2 + r with π/2 cut into two 33-bit pieces, exact products
// for |k| < 2²⁰, and a tail. Beyond that whole turns are taken off first, of 4·kPiOver2.
TwofoldPair SinCosOf(double x) {
  constexpr double kFar = 1e6;
  if (!(std::abs(x) <= kFar)) x = std::fmod(x, 4 * kPiOver2);  // NaN for ±∞

  const double shifted = x * kTwoOverPi + kRound;
  const Bits quadrant = std::bit_cast<Bits>(shifted);
  const double k = shifted - kRound;
  Twofold r = Sum(x - k * kPiOver2Pieces[0], -k * kPiOver2Pieces[1]);
  r.low -= k * kPiOver2Pieces[2];

  const double u = r.high, z = u * u, z2 = z * z;
  const double sinTail = (kSin[1] + z2 * (kSin[3] + z2 * kSin[5])) + z * (kSin[2] + z2 * kSin[4]);
  const double cosTail = (kCos[1] + z2 * (kCos[3] + z2 * kCos[5])) + z * (kCos[2] + z2 * kCos[4]);
  const double half = 0.5 * z, w = 1.0 - half;
  const Twofold s{u, u * z * (kSin[0] + z * sinTail) + (r.low - half * r.low)};
  const Twofold c{w, ((1.0 - w) - half) + (z2 * (kCos[0] + z * cosTail) - u * r.low)};
  switch (quadrant & 3) {
    case 0:
      return {s, c};
    case 1:
      return {c, {-s.high, -s.low}};
    case 2:
      return {{-s.high, -s.low}, {-c.high, -c.low}};
    default:
      return {{-c.high, -c.low}, s};
  }
}

// atan t for |t| ≤ tan(π/8), less t.
double AtanTail(double t) {
  const double z = t * t, z2 = z * z, z4 = z2 * z2;
  const double* const k = kAtan;
  const double even = (k[0] + z2 * k[2]) + z4 * ((k[4] + z2 * k[6]) + z4 * (k[8] + z2 * k[10]));
  const double odd = (k[1] + z2 * k[3]) + z4 * ((k[5] + z2 * k[7]) + z4 * (k[9] + z2 * k[11]));
  return t * z * (even + z * odd);
}

/// log x = k·ln 2 + log m with √½ ≤ m < √2; log m from s = f/(2 + f), f = m − 1, in the arrangement
/// that keeps f exact (Tang 1990). For positive finite x.
Twofold LogOf(double x) {
  double lift = 0;
  if (x < std::numeric_limits<double>::min()) {
    lift = -54;
    x *= 0x1p54;
  }
  const Bits offset = std::bit_cast<Bits>(x) - 0x3fe6a09e667f3bcdULL + (Bits{1023} << 52);
  const Bits biased = offset >> 52;
  const double k = static_cast<double>(static_cast<int>(biased) - 1023) + lift;
  const double f = std::bit_cast<double>(std::bit_cast<Bits>(x) - ((biased - 1023) << 52)) - 1.0;
  const double s = f / (2.0 + f), z = s * s;
  const double h = 0.5 * f * f;
  const Twofold main = OrderedSum(k * kLn2, f);
  return {main.high, main.low - (h - (s * (h + z * LogTail(z)) + k * kLn2Low))};
}

Twofold Log1pOf(Twofold x) {
  const Twofold u = Sum(1.0, x.high);
  const Twofold log = LogOf(u.high);
  const Twofold sum = Sum(log.high, (u.low + x.low) / u.high);
  return {sum.high, sum.low + log.low};
}

/// exp x = 2ᵏ·(1 + excess), |excess| < 0.42.
struct ExpParts {
  Twofold excess;
  int k;
};

// x = k·ln 2 + r, |r| ≤ ln 2/2.
ExpParts ExpOf(Twofold x) {
  const double k = (x.high * kLog2E + kRound) - kRound;
  const Twofold main = Sum(x.high - k * kLn2, -k * kLn2Low);
  const double r = main.high, low = main.low + x.low;
  return {{r, r * r * ExpTail(r) + (low + r * low)}, static_cast<int>(k)};
}

double Scaled(double x, int k) {
  if (k > -1000 && k < 1000) return x * std::bit_cast<double>(static_cast<Bits>(k + 1023) << 52);
  return std::ldexp(x, k);
}

double RoundedExp(Twofold x) {
  constexpr double kOverflow = 710, kUnderflow = -746;
  if (!(x.high < kOverflow)) return x.high + kInfinity;  // NaN stays
  if (x.high < kUnderflow) return 0;
  const auto [excess, k] = ExpOf(x);
  const Twofold one = OrderedSum(1.0, excess.high);
  return Scaled(one.high + (one.low + excess.low), k);
}

/// eˣ − 1 for |x| < 700.
Twofold Expm1Of(double x) {
  const auto [excess, k] = ExpOf({x, 0});
  if (k == 0) return OrderedSum(excess.high, excess.low);
  const Twofold one = OrderedSum(1.0, excess.high);
  const Twofold sum = Sum(Scaled(one.high, k), -1.0);
  return OrderedSum(sum.high, sum.low + Scaled(one.low + excess.low, k));
}

Twofold Plus(Twofold x, double y) {
  const Twofold sum = Sum(x.high, y);
  return OrderedSum(sum.high, sum.low + x.low);
}

/// sinh and cosh of a positive number below 700, times 2.
Twofold TwiceSinh(double x) {
  const Twofold grow = Expm1Of(x), shrink = Quotient(grow, Plus(grow, 1.0));  // 1 − e⁻ˣ
  const Twofold sum = Sum(grow.high, shrink.high);
  return {sum.high, sum.low + (grow.low + shrink.low)};
}

constexpr double kHyperbolicLimit = 700;

/// eˣ/2 where e⁻ˣ counts no more, up to the largest numbers.
double HalfExp(double x) {
  const double root = RoundedExp({0.5 * x, 0});
  return 0.5 * root * root;
}

}  // namespace

SineCosine SinCos(double x) {
  const auto [sine, cosine] = SinCosOf(x);
  return {sine.Rounded(), cosine.Rounded()};
}

double Sin(double x) { return x == 0 ? x : SinCosOf(x).sin.Rounded(); }
double Cos(double x) { return SinCosOf(x).cos.Rounded(); }

double Tan(double x) {
  if (x == 0) return x;
  const auto [sine, cosine] = SinCosOf(x);
  return Quotient(OrderedSum(sine.high, sine.low), OrderedSum(cosine.high, cosine.low)).Rounded();
}

double Atan(double x) { return Atan2(x, 1.0); }

// Smaller over larger of |x| and |y|, reduced by π/4 above tan(π/8); the octant is put back with
// the rounding errors of its multiple of π/4.
double Atan2(double y, double x) {
  constexpr double kSmall = 0x1p-900, kLarge = 0x1p900;
  double ax = std::abs(x), ay = std::abs(y);
  if (!(ax + ay < kLarge && ax + ay > kSmall)) {
    if (std::isnan(x) || std::isnan(y)) return x + y;
    if (ax == kInfinity || ay == kInfinity) {
      ax = ax == kInfinity ? 1 : 0;
      ay = ay == kInfinity ? 1 : 0;
    } else {
      const double scale = ax + ay > 1 ? 0x1p-200 : 0x1p200;
      ax *= scale;
      ay *= scale;
    }
  }
  const bool steep = ax < ay, left = std::signbit(x);
  const double larger = steep ? ay : ax, smaller = steep ? ax : ay;
  const bool reduce = smaller > kTanPiOver8 * larger;
  const double reduction = reduce ? larger : 0.0, increase = reduce ? smaller : 0.0;
  const Twofold numerator = Sum(smaller, -reduction), denominator = OrderedSum(larger, increase);
  const Twofold t = larger > 0 ? Quotient(numerator, denominator) : Twofold{0, 0};
  const double tail = AtanTail(t.high) + t.low;

  const double first = reduce ? 1.0 : 0.0, second = steep ? 2.0 - first : first;
  const double quarters = left ? 4.0 - second : second, sign = steep == left ? 1.0 : -1.0;
  const Twofold base = OrderedSum(quarters * (0.5 * kPiOver2), sign * t.high);
  const double angle = base.high + (base.low + (sign * tail + quarters * (0.5 * kPiOver2Low)));
  return std::copysign(angle, y);
}

// asin x = atan(x/√(1 − x²)).
double Asin(double x) {
  const Twofold square = Product(x, x);
  const Twofold rest = Sum(1.0, -square.high);
  return Atan2(x, std::sqrt(rest.high + (rest.low - square.low)));
}

double Exp(double x) { return RoundedExp({x, 0}); }

double Expm1(double x) {
  if (x == 0) return x;
  if (!(std::abs(x) < kHyperbolicLimit)) return Exp(x) - 1;
  return Expm1Of(x).Rounded();
}

double Log(double x) {
  if (!(x > 0 && x < kInfinity)) return x == 0 ? -kInfinity : x < 0 ? std::sqrt(x) : x;
  return LogOf(x).Rounded();
}

double Log1p(double x) {
  if (!(x > -1 && x < kInfinity) || x == 0) return x == 0 ? x : Log(1 + x);
  return Log1pOf({x, 0}).Rounded();
}

double Sinh(double x) {
  const double size = std::abs(x);
  if (x == 0) return x;
  return std::copysign(size < kHyperbolicLimit ? 0.5 * TwiceSinh(size).Rounded() : HalfExp(size),
                       x);
}

double Cosh(double x) {
  const double size = std::abs(x);
  if (!(size < kHyperbolicLimit)) return HalfExp(size);
  const Twofold grow = Plus(Expm1Of(size), 1.0), decay = Quotient({1.0, 0}, grow);
  const Twofold sum = OrderedSum(grow.high, decay.high);
  return 0.5 * (sum.high + (sum.low + (grow.low + decay.low)));
}

double Tanh(double x) {
  constexpr double kOne = 20;  // beyond it the result rounds to 1
  if (x == 0) return x;
  const double size = std::abs(x);
  if (!(size < kOne)) return std::isnan(x) ? x : std::copysign(1.0, x);
  const Twofold u = Expm1Of(2 * size);
  return std::copysign(Quotient(u, Plus(u, 2.0)).Rounded(), x);
}

// asinh x = log(1 + (x + x²/(1 + √(1 + x²)))).
double Asinh(double x) {
  constexpr double kLarge = 0x1p30;
  const double size = std::abs(x);
  if (x == 0) return x;
  if (!(size < kLarge)) return std::copysign(Log(size) + (kLn2 + kLn2Low), x);
  const Twofold square = Product(size, size), radicand = Plus(square, 1.0);
  const double root = std::sqrt(radicand.high);
  const Twofold back = Product(root, root);
  const double rootLow = ((radicand.high - back.high) - back.low + radicand.low) / (2 * root);
  const Twofold ratio = Quotient(square, Plus({root, rootLow}, 1.0));
  const Twofold sum = Sum(size, ratio.high);
  return std::copysign(Log1pOf({sum.high, sum.low + ratio.low}).Rounded(), x);
}

// artanh x = ½·log(1 + 2x/(1 − x)).
double Atanh(double x) {
  const double size = std::abs(x);
  if (x == 0) return x;
  if (!(size < 1)) return x / (1 - size) + (size > 1 ? std::sqrt(-1.0) : 0);
  const Twofold ratio = Quotient({2 * size, 0}, Sum(1.0, -size));
  return std::copysign(0.5 * Log1pOf(ratio).Rounded(), x);
}

double Pow(double x, double y) {
  if (y == 0 || x == 1) return 1;
  if (std::isnan(y)) return y;
  if (x == 0) return y > 0 ? 0 : kInfinity;
  if (!(x > 0 && x < kInfinity)) return x == kInfinity ? (y > 0 ? kInfinity : 0) : std::sqrt(x);
  const Twofold log = LogOf(x), sum = OrderedSum(log.high, log.low);
  const Twofold product = Product(sum.high, y);
  return RoundedExp({product.high, product.low + sum.low * y});
}

double Hypot(double x, double y) {
  constexpr double kSmall = 0x1p-400, kLarge = 0x1p400;
  const double larger = std::abs(x) < std::abs(y) ? std::abs(y) : std::abs(x);
  if (larger > kSmall && larger < kLarge) return std::sqrt(x * x + y * y);
  if (std::abs(x) == kInfinity || std::abs(y) == kInfinity) return kInfinity;
  if (larger == 0) return std::abs(x) + std::abs(y);  // NaN stays
  const double scale = larger < 1 ? 0x1p600 : 0x1p-600;
  return std::sqrt((x * scale) * (x * scale) + (y * scale) * (y * scale)) / scale;
}

}  // namespace zel_cs::geomath
