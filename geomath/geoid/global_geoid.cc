#include "geomath/geoid/global_geoid.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/geoid/harmonic_kernel.h"
#include "geomath/simd/instruction_set.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kE2 = 0.00669437999013;  // WGS84 first eccentricity squared
constexpr double kOneLessE2 = 0.99330562000987;
constexpr double kEquatorGravity = 9.7803253359;  // Somigliana, m/s²
constexpr double kSomigliana = 0.00193185265246;  // Somigliana's constant

// Fewer latitudes than this are summed faster one by one than as a group.
constexpr std::size_t kWorthGrouping = 4;

/// RADGRA: geocentric radius re, geocentric latitude and normal gravity gr of a latitude.
Station RADGRA(double lat) {
  const auto [sinPhi, cosPhi] = SinCos(lat);
  const double t = sinPhi * sinPhi;
  const double W = std::sqrt(1 - kE2 * t), N = kWgs84A / W;
  const double p = std::abs(N * cosPhi), Z = N * kOneLessE2 * sinPhi;
  const auto [sinTheta, cosTheta] = SinCos(kHalfPi - Atan(Z / p));
  const double gr = kEquatorGravity * (1 + kSomigliana * t) / W, re = std::sqrt(p * p + Z * Z);
  return {.cosTheta = cosTheta,
          .sinTheta = sinTheta,
          .ar = kWgs84A / re,
          .metres = kModelGM / (gr * re)};
}

/// The kernels of the instruction set in force.
struct Kernels {
  using Any = HarmonicKernel<simd::Baseline>;
  decltype(&Any::SumOne) sumOne;
  decltype(&Any::SumGroup) sumGroup;
  decltype(&Any::Scattered) scattered;
  decltype(&Any::Rows) rows;
};

Kernels ActiveKernels() {
  const auto of = [](auto target) -> Kernels {
    using Kernel = HarmonicKernel<decltype(target)>;
    return {&Kernel::SumOne, &Kernel::SumGroup, &Kernel::Scattered, &Kernel::Rows};
  };
  return simd::ForActiveSet(of);
}

/// `count` longitudes lonAt(0), …, at most kLongitudes.
template <class LonAt>
Longitudes MultiplesOf(std::size_t count, LonAt lonAt) {
  Longitudes lambda{.cosine = {}, .sine = {}, .count = count};
  for (std::size_t i = 0; i < count; ++i) {
    const auto [sine, cosine] = SinCos(lonAt(i));
    lambda.cosine[i] = cosine;
    lambda.sine[i] = sine;
  }
  return lambda;
}

/// One model's synthesis in the working space of one thread.
class Synthesis {
 public:
  static std::size_t SpaceFor(std::size_t orders) { return (2 * kLatitudes + kWorkRows) * orders; }

  Synthesis(const HarmonicSeries& series, double* space)
      : series_(series),
        orders_(series.Orders()),
        cosine_(space),
        sine_(cosine_ + kLatitudes * orders_),
        work_(sine_ + kLatitudes * orders_) {}

  /// Sums of one latitude.
  OrderSums Sum(double lat) const {
    const OrderSums sums{cosine_, sine_, 1};
    kernels_.sumOne(series_, RADGRA(lat), work_, sums);
    return sums;
  }

  /// Sums of 1 to kLatitudes latitudes, read from the coefficients once.
  OrderSums Sum(const double* lat, std::size_t latitudes) const {
    Station at[kLatitudes];
    for (std::size_t i = 0; i < kLatitudes; ++i)
      at[i] = i < latitudes ? RADGRA(lat[i]) : at[latitudes - 1];
    const OrderSums sums{cosine_, sine_, kLatitudes};
    kernels_.sumGroup(series_, at, latitudes, work_, sums);
    return sums;
  }

  /// Heights at the longitudes lonAt(0 … n − 1) of `rows` latitudes, row after row.
  template <class LonAt>
  void Rows(const OrderSums& sums, std::size_t rows, std::size_t n, LonAt lonAt,
            double* heights) const {
    for (std::size_t first = 0; first < n; first += kLongitudes) {
      const Longitudes lambda = MultiplesOf(std::min(kLongitudes, n - first),
                                            [&](std::size_t i) { return lonAt(first + i); });
      kernels_.rows(sums, orders_, lambda, rows, heights + first, n);
    }
  }

  /// Heights of `n` points, one on each latitude of a group.
  template <class LonAt>
  void Scattered(const OrderSums& sums, std::size_t n, LonAt lonAt,
                 double (&heights)[kLatitudes]) const {
    kernels_.scattered(sums, orders_, MultiplesOf(n, lonAt), heights);
  }

 private:
  HarmonicSeries series_;
  std::size_t orders_;
  double *cosine_, *sine_, *work_;
  Kernels kernels_ = ActiveKernels();
};

/// Consecutive points on one latitude.
struct Run {
  std::size_t first, count;
};

/// The run that begins with point `first` of `total`.
Run RunFrom(const TAbstractPoint3<double>* points, std::size_t first, std::size_t total) {
  const double lat = points[first][0];
  std::size_t last = first + 1;
  while (last < total && points[last][0] == lat) ++last;
  return {first, last - first};
}

}  // namespace

GlobalGeoidData::GlobalGeoidData(int degrees, const double* cosines, const double* sines,
                                 bool carriedFlag, double carriedValue,
                                 const double* correctionCosines, const double* correctionSines)
    : correctionC(correctionCosines),
      correctionS(correctionSines),
      C(cosines),
      S(sines),
      count(degrees),
      flag(carriedFlag),
      value(carriedValue) {}

GlobalGeoid::GlobalGeoid(const GlobalGeoidData& data) : data_(data) { Init(); }

GlobalGeoid::GlobalGeoid(int count, const double* C, const double* S, bool flag, double value,
                         const double* correctionC, const double* correctionS)
    : GlobalGeoid(GlobalGeoidData(count, C, S, flag, value, correctionC, correctionS)) {}

// The tables of the Legendre recursion. Without memory they stay empty and no height can be
// computed.
void GlobalGeoid::Init() {
  if (data_.count < 1) return;
  const std::size_t count = static_cast<std::size_t>(data_.count), size = 2 * count + 2;
  try {
    std::vector<double> tables(2 * size + 2 * count);
    double *root = tables.data(), *inverseRoot = root + size;
    double *degreeRoot = inverseRoot + size, *degreeRatio = degreeRoot + count;
    for (std::size_t k = 1; k < size; ++k) {
      root[k] = std::sqrt(static_cast<double>(k));
      inverseRoot[k] = 1 / root[k];
    }
    for (std::size_t n = 1; n < count; ++n) {
      degreeRoot[n] = root[2 * n + 1] * root[2 * n - 1];
      if (n > 1) degreeRatio[n] = root[2 * n + 1] * inverseRoot[2 * n - 3];
    }
    tables_.swap(tables);
    own_.space_.resize(Synthesis::SpaceFor(Series().Orders()));
  } catch (const std::bad_alloc&) {
  }
}

HarmonicSeries GlobalGeoid::Series() const {
  const std::size_t count = static_cast<std::size_t>(data_.count), size = 2 * count + 2;
  const bool corrected = data_.correctionC && data_.correctionS;
  const double* root = tables_.data();
  return {.count = count,
          .C = data_.C,
          .S = data_.S,
          .cC = corrected ? data_.correctionC : nullptr,
          .cS = corrected ? data_.correctionS : nullptr,
          .root = root,
          .inverseRoot = root + size,
          .degreeRoot = root + 2 * size,
          .degreeRatio = root + 2 * size + count};
}

bool GlobalGeoid::Prepared(GlobalGeoidScratch& scratch) const {
  if (tables_.empty() || !data_.C || !data_.S) return false;
  try {
    scratch.space_.resize(Synthesis::SpaceFor(Series().Orders()));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

long GlobalGeoid::CountHeight(const TAbstractPoint3<double>* points, double* heights, int n,
                              TSMatrix*) const {
  return CountHeight(points, heights, n, own_);
}

long GlobalGeoid::CountHeight(const TAbstractPoint3<double>* points, double* heights, int n,
                              GlobalGeoidScratch& scratch) const {
  if (data_.count < 1) return 1;
  const std::size_t total = n > 0 ? static_cast<std::size_t>(n) : 0;
  if (!Prepared(scratch)) {
    std::fill_n(heights, total, kNoHeight);
    return 0;
  }
  const Synthesis synthesis(Series(), scratch.space_.data());
  const auto longitudesFrom = [points](std::size_t first) {
    return [points, first](std::size_t i) { return points[first + i][1]; };
  };
  Run runs[kLatitudes];
  for (std::size_t next = 0; next < total;) {
    std::size_t count = 0;
    for (; count < kLatitudes && next < total; next += runs[count++].count)
      runs[count] = RunFrom(points, next, total);
    if (count < kWorthGrouping) {
      for (std::size_t r = 0; r < count; ++r) {
        const auto [first, length] = runs[r];
        synthesis.Rows(synthesis.Sum(points[first][0]), 1, length, longitudesFrom(first),
                       heights + first);
      }
      continue;
    }
    double lat[kLatitudes], height[kLatitudes];
    for (std::size_t r = 0; r < count; ++r) lat[r] = points[runs[r].first][0];
    const OrderSums sums = synthesis.Sum(lat, count);
    synthesis.Scattered(
        sums, count, [&](std::size_t r) { return points[runs[r].first][1]; }, height);
    for (std::size_t r = 0; r < count; ++r) {
      const auto [first, length] = runs[r];
      heights[first] = height[r];
      synthesis.Rows(sums.From(r), 1, length - 1, longitudesFrom(first + 1), heights + first + 1);
    }
  }
  return 0;
}

bool GlobalGeoid::CountHeightOnGrid(const TGridRgn& grid, double* heights, TSMatrix*) const {
  return CountHeightOnGrid(grid, heights, own_);
}

bool GlobalGeoid::CountHeightOnGrid(const TGridRgn& grid, double* heights,
                                    GlobalGeoidScratch& scratch) const {
  const int latDim = grid.GetLatDim(), lonDim = grid.GetLonDim();
  if (latDim < 1 || lonDim < 1) return true;
  const auto rows = static_cast<std::size_t>(latDim), columns = static_cast<std::size_t>(lonDim);
  if (!Prepared(scratch)) {
    std::fill_n(heights, rows * columns, kNoHeight);
    return true;
  }
  const Synthesis synthesis(Series(), scratch.space_.data());
  const auto latAt = [&](std::size_t a) { return static_cast<double>(a) * grid.latStep + grid.B0; };
  const auto lonAt = [&](std::size_t b) { return static_cast<double>(b) * grid.lonStep + grid.L0; };
  for (std::size_t a = 0, group; a < rows; a += group, heights += group * columns) {
    group = std::min(kLatitudes, rows - a);
    if (group < kWorthGrouping) {
      group = 1;
      synthesis.Rows(synthesis.Sum(latAt(a)), 1, columns, lonAt, heights);
      continue;
    }
    double lat[kLatitudes];
    for (std::size_t i = 0; i < group; ++i) lat[i] = latAt(a + i);
    synthesis.Rows(synthesis.Sum(lat, group), group, columns, lonAt, heights);
  }
  return true;
}

TAbstractRect<double> GlobalGeoid::GetBounds() const { return {-180, -90, 180, 90}; }

TRectRgn GlobalGeoid::GetRegion(bool) const { return {-kHalfPi, kPi, -kPi, kTwoPi}; }

bool GlobalGeoid::GetSteps(double&, double&) const { return false; }

}  // namespace zel_cs::geomath
