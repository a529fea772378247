#include "geomath/geoid/harmonic_kernel.h"

#include <algorithm>
#include <utility>

#include "geomath/simd/instruction_set.h"
#include "geomath/simd/pack.h"

// The stages bear the names of the published program's routines:
//   LEGFDN  fully normalised associated Legendre functions P(n, m)
//   DSCML   sines and cosines of multiples of the longitude
//   HUNDU   the sum
// One latitude runs degree by degree with the orders side by side, so that coefficients are read in
// the order in which they are stored. A group of latitudes runs order by order with the latitudes
// side by side in registers. An order's terms are added by ascending degree in both.
namespace zel_cs::geomath {
namespace {

constexpr double kZeroDegree = -0.53;    // metres
constexpr std::size_t kFirstDegree = 2;  // of the potential; the correction begins with 0
constexpr double kCentimetres = 100.0;   // of the correction coefficients, in a metre

// Towards the poles the functions P(m, m) fall below the range of a double before P(n, m) of higher
// degrees do: at sin θ = 1/e and degree 2190 to e^−806. All functions are carried kLift times their
// size, a power of two that changes no bit, and the sums put back (Holmes and Featherstone 2002,
// section 3). The functions of orders that vanish all the same stay below 1e-25 up to degree 3000.
constexpr double kLift = 0x1p800, kDrop = 0x1p-800;

/// a(n, m) and b(n, m) of the recursion over the degrees, m < n. Holmes and Featherstone 2002,
/// eq. 12:  P(n, m) = a·cos θ·P(n − 1, m) − b·P(n − 2, m).
struct LegendreFactors {
  double a, b;
};
GEOMATH_INLINE LegendreFactors FactorsOf(const HarmonicSeries& s, std::size_t n, std::size_t m) {
  const double scale = s.inverseRoot[n + m] * s.inverseRoot[n - m];
  return {scale * s.degreeRoot[n],
          scale * (s.degreeRatio[n] * (s.root[n + m - 1] * s.root[n - m - 1]))};
}

/// P(m, m)/(sin θ·P(m − 1, m − 1)), m ≥ 1. Holmes and Featherstone 2002, eq. 13.
GEOMATH_INLINE double SectorialFactor(const HarmonicSeries& s, std::size_t m) {
  return m == 1 ? s.root[3] : s.root[2 * m + 1] * s.inverseRoot[2 * m];
}

/// Where (n, m) stands in triangular order.
GEOMATH_INLINE std::size_t At(std::size_t n, std::size_t m) { return n * (n + 1) / 2 + m; }

/// DSCML: cosines and sines of two consecutive multiples of the longitude, an even and an odd one.
template <class Number>
struct Multiples {
  Number evenCos, evenSin, oddCos, oddSin, twoCos;

  GEOMATH_INLINE Multiples(const Number& cosLambda, const Number& sinLambda)
      : evenCos(1.0), evenSin(0.0), oddCos(cosLambda), oddSin(sinLambda), twoCos(2.0 * cosLambda) {}

  GEOMATH_INLINE void Advance() {
    evenCos = twoCos * oddCos - evenCos;
    evenSin = twoCos * oddSin - evenSin;
    oddCos = twoCos * evenCos - oddCos;
    oddSin = twoCos * evenSin - oddSin;
  }
};

/// HUNDU for `kRows` sums over N points each, two orders a step. coefficient(from, row) gives what
/// a row's points are multiplied with, a number or a pack, where `from` is the place of an order.
template <class Target, std::size_t N, std::size_t kRows, class Coefficient>
GEOMATH_INLINE void HUNDU(const OrderSums& sums, std::size_t orders, const double* cosLambda,
                          const double* sinLambda, Coefficient coefficient, double* heights,
                          std::size_t rowStride) {
  using Points = simd::Pack<Target, N>;
  Multiples<Points> at(Points::Load(cosLambda), Points::Load(sinLambda));
  const double *A = sums.cosine, *B = sums.sine;
  Points sum[kRows];
  for (std::size_t r = 0; r < kRows; ++r)
    sum[r] = coefficient(A, r) + (coefficient(A + sums.stride, r) * at.oddCos +
                                  coefficient(B + sums.stride, r) * at.oddSin);
  for (std::size_t m = 2; m < orders; m += 2) {
    at.Advance();
    A += 2 * sums.stride;
    B += 2 * sums.stride;
    for (std::size_t r = 0; r < kRows; ++r)
      sum[r] += (coefficient(A, r) * at.evenCos + coefficient(B, r) * at.evenSin) +
                (coefficient(A + sums.stride, r) * at.oddCos +
                 coefficient(B + sums.stride, r) * at.oddSin);
  }
  for (std::size_t r = 0; r < kRows; ++r) (sum[r] + kZeroDegree).Store(heights + r * rowStride);
}

/// LEGFDN: P(n, 0 … n) from the two degrees before, n ≥ 1; `p2` holds degree n − 2, zero beyond its
/// last order, and receives degree n. Orders from `orders` on are left out.
void LEGFDN(const HarmonicSeries& s, std::size_t n, std::size_t orders, const Station& at,
            const double* GEOMATH_RESTRICT p1, double* GEOMATH_RESTRICT p2) {
  const HarmonicSeries local = s;  // plain pointers that no store can alias
  const double cosTheta = at.cosTheta;
  for (std::size_t m = 0; m < std::min(n, orders); ++m) {
    const LegendreFactors f = FactorsOf(local, n, m);
    p2[m] = f.a * cosTheta * p1[m] - f.b * p2[m];
  }
  if (n < orders) p2[n] = SectorialFactor(local, n) * at.sinTheta * p1[n - 1];
}

/// Adds the terms of a degree, P(n, m) = p[m], to the sums of its first orders: those of the potential
/// times `power`, or those of the correction as they are.
void AddDegree(std::size_t orders, double power, const double* GEOMATH_RESTRICT p,
               const double* GEOMATH_RESTRICT C, const double* GEOMATH_RESTRICT S,
               double* GEOMATH_RESTRICT cosSum, double* GEOMATH_RESTRICT sinSum) {
  for (std::size_t m = 0; m < orders; ++m) {
    const double term = power * p[m];
    cosSum[m] += term * C[m];
    sinSum[m] += term * S[m];
  }
}
void AddCorrection(std::size_t orders, const double* GEOMATH_RESTRICT p,
                   const double* GEOMATH_RESTRICT C, const double* GEOMATH_RESTRICT S,
                   double* GEOMATH_RESTRICT cosSum, double* GEOMATH_RESTRICT sinSum) {
  for (std::size_t m = 0; m < orders; ++m) {
    cosSum[m] += p[m] * C[m];
    sinSum[m] += p[m] * S[m];
  }
}

/// Coefficients of kOrdersTogether orders by degree: row j holds those of the j-th order.
struct OrderRows {
  double *C, *S, *cC, *cS;
  std::size_t length;  // of a row

  OrderRows(double* space, std::size_t orders)
      : C(space),
        S(C + kOrdersTogether * orders),
        cC(S + kOrdersTogether * orders),
        cS(cC + kOrdersTogether * orders),
        length(orders) {}
};

/// Asks for the line of the cache that an address is in, which need not be one of ours.
GEOMATH_INLINE void Prefetch([[maybe_unused]] const double* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address);
#endif
}

/// Copies orders m to m + kOrdersTogether − 1 of one set of coefficients. In triangular order those of
/// one degree stand in one line of the cache, and each degree's are elsewhere: order by order the lines
/// of a high degree would come from memory again and again.
void CopyOrders(std::size_t count, std::size_t m, const double* GEOMATH_RESTRICT from,
                double* GEOMATH_RESTRICT rows, std::size_t length) {
  constexpr std::size_t kAhead = 12;                  // degrees
  constexpr std::size_t kLine = 64 / sizeof(double);  // of a cache
  for (std::size_t n = m; n < count; ++n) {
    const double *line = from + At(n, m), *ahead = from + At(std::min(n + kAhead, count - 1), m);
    for (std::size_t j = 0; j < kOrdersTogether; j += kLine) Prefetch(ahead + j);
    const std::size_t present = std::min(n - m + 1, kOrdersTogether);
    for (std::size_t j = 0; j < present; ++j) rows[j * length + n] = line[j];
  }
}

/// The factors of order m for every degree.
void FactorsOfOrder(const HarmonicSeries& series, std::size_t m, double* GEOMATH_RESTRICT a,
                    double* GEOMATH_RESTRICT b) {
  const HarmonicSeries s = series;
  for (std::size_t n = m + 1; n < s.count; ++n) {
    const LegendreFactors f = FactorsOf(s, n, m);
    a[n] = f.a;
    b[n] = f.b;
  }
}

/// A group of stations as columns, and what its orders share.
struct Group {
  Group(double* work, std::size_t orders)
      : power(work), a(power + kLatitudes * orders), b(a + orders), rows(b + orders, orders) {}

  double cosTheta[kLatitudes], sinTheta[kLatitudes], metres[kLatitudes];
  double sectorial[kLatitudes];  // P(m, m) of the order at hand
  double* power;                 // (a/r)ⁿ of every latitude, degree after degree
  double *a, *b;                 // of the order at hand, by degree
  OrderRows rows;                // of the orders at hand
};

/// P(m, m) of a group, m ≥ 1, from that of the order before. False where it vanishes at every
/// latitude.
GEOMATH_INLINE bool NextSectorial(const HarmonicSeries& s, std::size_t m, Group& group) {
  if (m >= s.count) return false;
  bool any = false;
  for (std::size_t i = 0; i < kLatitudes; ++i) {
    group.sectorial[i] = SectorialFactor(s, m) * group.sinTheta[i] * group.sectorial[i];
    any |= group.sectorial[i] != 0;
  }
  return any;
}

/// One order's sums of the terms that are proportional to C and to S.
template <class Points>
struct TermSums {
  Points cosine = 0.0, sine = 0.0;

  GEOMATH_INLINE void Add(const Points& factor, double C, double S) {
    cosine += factor * C;
    sine += factor * S;
  }
};

/// The sums of order m for the N latitudes of a group from `first` on.
template <class Target, std::size_t N, bool kCorrected>
void SumTerms(std::size_t count, std::size_t m, const Group& group, std::size_t first,
              const OrderSums& sums) {
  using Points = simd::Pack<Target, N>;
  const std::size_t row = m % kOrdersTogether * group.rows.length;
  const double *C = group.rows.C + row, *S = group.rows.S + row;
  const double *cC = group.rows.cC + row, *cS = group.rows.cS + row;
  const double *a = group.a, *b = group.b, *power = group.power + first;
  const Points cosTheta = Points::Load(group.cosTheta + first);
  Points p = Points::Load(group.sectorial + first), before = 0.0;
  TermSums<Points> potential, correction;

  for (std::size_t n = m; n < count; ++n) {
    if (n > m) {
      const Points next = a[n] * cosTheta * p - b[n] * before;
      before = p;
      p = next;
    }
    if (n >= kFirstDegree) potential.Add(Points::Load(power + n * kLatitudes) * p, C[n], S[n]);
    if constexpr (kCorrected) correction.Add(p, cC[n], cS[n]);
  }
  const Points metres = Points::Load(group.metres + first);
  ((potential.cosine * metres + correction.cosine / kCentimetres) * kDrop)
      .Store(sums.cosine + m * sums.stride + first);
  ((potential.sine * metres + correction.sine / kCentimetres) * kDrop)
      .Store(sums.sine + m * sums.stride + first);
}

template <class Target, std::size_t N>
void SumOrder(const HarmonicSeries& series, std::size_t m, const Group& group, std::size_t first,
              const OrderSums& sums) {
  if (series.cC)
    SumTerms<Target, N, true>(series.count, m, group, first, sums);
  else
    SumTerms<Target, N, false>(series.count, m, group, first, sums);
}

/// Heights of `lambda` on kRows latitudes.
template <class Target, std::size_t N, std::size_t kRows>
void SumRows(const OrderSums& sums, std::size_t orders, const Longitudes& lambda, double* heights,
             std::size_t rowStride) {
  double block[kRows * kLongitudes];
  const auto equal = [](const double* from, std::size_t row) {
    return simd::Pack<Target, N>(from[row]);
  };
  for (std::size_t i = 0; i < lambda.count; i += N)
    HUNDU<Target, N, kRows>(sums, orders, lambda.cosine + i, lambda.sine + i, equal, block + i,
                            kLongitudes);
  for (std::size_t r = 0; r < kRows; ++r)
    std::copy_n(block + r * kLongitudes, lambda.count, heights + r * rowStride);
}

}  // namespace

template <class Target>
void HarmonicKernel<Target>::SumOne(const HarmonicSeries& s, const Station& at, double* work,
                                    const OrderSums& sums) {
  const std::size_t orders = s.Orders();
  double *cosSum = sums.cosine, *sinSum = sums.sine;
  double *cosCorrection = work, *sinCorrection = work + orders;
  double *p1 = work + 2 * orders, *p2 = work + 3 * orders;
  std::fill_n(cosSum, orders, 0.0);
  std::fill_n(sinSum, orders, 0.0);
  std::fill_n(work, 4 * orders, 0.0);

  p1[0] = kLift;
  double power = 1;
  std::size_t present = s.count;  // orders before the first that vanishes
  for (std::size_t n = 0; n < s.count; ++n) {
    if (n > 0) {
      power *= at.ar;
      LEGFDN(s, n, present, at, p1, p2);
      std::swap(p1, p2);
      if (n < present && p1[n] == 0) present = n;
    }
    const std::size_t k = At(n, 0), terms = std::min(n + 1, present);
    if (n >= kFirstDegree) AddDegree(terms, power, p1, s.C + k, s.S + k, cosSum, sinSum);
    if (s.cC) AddCorrection(terms, p1, s.cC + k, s.cS + k, cosCorrection, sinCorrection);
  }
  for (std::size_t m = 0; m < s.count; ++m) {
    cosSum[m] = (cosSum[m] * at.metres + cosCorrection[m] / kCentimetres) * kDrop;
    sinSum[m] = (sinSum[m] * at.metres + sinCorrection[m] / kCentimetres) * kDrop;
  }
}

template <class Target>
void HarmonicKernel<Target>::SumGroup(const HarmonicSeries& s, const Station* at,
                                      std::size_t latitudes, double* work, const OrderSums& sums) {
  constexpr std::size_t kRegister = simd::RegisterLanes<Target>();
  const std::size_t orders = s.Orders();
  Group group(work, orders);
  for (std::size_t i = 0; i < kLatitudes; ++i) {
    group.cosTheta[i] = at[i].cosTheta;
    group.sinTheta[i] = at[i].sinTheta;
    group.metres[i] = at[i].metres;
    group.sectorial[i] = kLift;
    double power = 1;
    for (std::size_t n = 0; n < s.count; ++n, power *= at[i].ar)
      group.power[n * kLatitudes + i] = power;
  }
  std::size_t present = s.count;  // orders before the first that vanishes at every latitude
  for (std::size_t m = 0; m < present; ++m) {
    if (m % kOrdersTogether == 0) {
      const OrderRows& rows = group.rows;
      CopyOrders(s.count, m, s.C, rows.C, orders);
      CopyOrders(s.count, m, s.S, rows.S, orders);
      if (s.cC) CopyOrders(s.count, m, s.cC, rows.cC, orders);
      if (s.cC) CopyOrders(s.count, m, s.cS, rows.cS, orders);
    }
    FactorsOfOrder(s, m, group.a, group.b);
    if (latitudes <= kRegister) {
      SumOrder<Target, kRegister>(s, m, group, 0, sums);
    } else {
      for (std::size_t first = 0; first < latitudes; first += 2 * kRegister)
        SumOrder<Target, 2 * kRegister>(s, m, group, first, sums);
    }
    if (!NextSectorial(s, m + 1, group)) present = m + 1;
  }
  // Those, and the order that fills the rows up to an even number.
  std::fill_n(sums.cosine + present * sums.stride, (orders - present) * sums.stride, 0.0);
  std::fill_n(sums.sine + present * sums.stride, (orders - present) * sums.stride, 0.0);
}

template <class Target>
void HarmonicKernel<Target>::Scattered(const OrderSums& sums, std::size_t orders,
                                       const Longitudes& lambda, double* heights) {
  constexpr std::size_t kPoints = 2 * simd::RegisterLanes<Target>();
  for (std::size_t i = 0; i < lambda.count; i += kPoints) {
    const auto own = [i](const double* from, std::size_t) {
      return simd::Pack<Target, kPoints>::Load(from + i);
    };
    HUNDU<Target, kPoints, 1>(sums, orders, lambda.cosine + i, lambda.sine + i, own, heights + i,
                              0);
  }
}

template <class Target>
void HarmonicKernel<Target>::Rows(const OrderSums& sums, std::size_t orders,
                                  const Longitudes& lambda, std::size_t rows, double* heights,
                                  std::size_t rowStride) {
  constexpr std::size_t kRegister = simd::RegisterLanes<Target>(), kTogether = 4;
  std::size_t r = 0;
  for (; r + kTogether <= rows; r += kTogether)
    SumRows<Target, 2 * kRegister, kTogether>(sums.From(r), orders, lambda, heights + r * rowStride,
                                              rowStride);
  for (; r < rows; ++r)
    SumRows<Target, 4 * kRegister, 1>(sums.From(r), orders, lambda, heights + r * rowStride,
                                      rowStride);
}

template struct HarmonicKernel<simd::GEOMATH_KERNEL_TARGET>;

}  // namespace zel_cs::geomath
