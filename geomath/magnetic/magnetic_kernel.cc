#include "geomath/magnetic/magnetic_kernel.h"

#include "geomath/simd/elementary.h"
#include "geomath/simd/instruction_set.h"
#include "geomath/simd/pack.h"

namespace zel_cs::geomath::magnetic {
namespace {

using Tag = simd::GEOMATH_KERNEL_TARGET;
using Math = simd::Polynomial<Tag>;
constexpr std::size_t kLanes = 2 * simd::RegisterLanes<Tag>();
using Lanes = simd::Pack<Tag, kLanes>;
static_assert(kBlock % kLanes == 0);

using Column = double[kBlock];

// What a block's points need for the sum over the orders, and what comes of it.
struct Block {
  Column cosLambda, sinLambda, convergence;
  Column x, y, z, xDot, yDot, zDot;
};

GEOMATH_INLINE GeodeticLatitude GeodeticLatitudeOf(double latitude) {
  GeodeticLatitude result;
  Math::SinCos(latitude * kDegree, result.sinPhi, result.cosPhi);
  return result;
}

// Lanes beyond the last point repeat it.
GEOMATH_INLINE void Pad(Column& column, std::size_t count) {
  for (std::size_t i = count; i % kLanes != 0; ++i) column[i] = column[count - 1];
}

GEOMATH_INLINE void Put(double value, double* to) { *to = value; }
GEOMATH_INLINE void Put(const Lanes& value, double* to) { value.Store(to); }

template <class Real>
GEOMATH_INLINE void PutVector(const FieldVector<Real>& b, Block& block, std::size_t i) {
  Put(b.x, block.x + i);
  Put(b.y, block.y + i);
  Put(b.z, block.z + i);
  Put(b.xDot, block.xDot + i);
  Put(b.yDot, block.yDot + i);
  Put(b.zDot, block.zDot + i);
}

template <class Real>
GEOMATH_INLINE void SumOrders(const Row& row, const Real& cosLambda, const Real& sinLambda,
                              Block& block, std::size_t i) {
  LongitudeSum<Real> sum{cosLambda, sinLambda};
  for (int m = 0; m <= row.degree; ++m) sum.Add(row.orders[m].x, row.orders[m].y, row.orders[m].z);
  PutVector(ToGeodetic<Real>(sum.b, row.sinPsi, row.cosPsi, row.years), block, i);
}

// Several loops with short bodies run faster than one: more points are under way at a time.
// Returns how many of the results are numbers.
GEOMATH_INLINE std::size_t WriteElements(const Block& at, std::size_t count,
                                         MagneticPoint* results) {
  Column h, f, declination, inclination;
  for (std::size_t i = 0; i < count; ++i) {
    const double h2 = at.x[i] * at.x[i] + at.y[i] * at.y[i];
    h[i] = std::sqrt(h2);
    f[i] = std::sqrt(h2 + at.z[i] * at.z[i]);
    declination[i] = Math::Atan2(at.y[i], at.x[i]) * kPerRadian;
  }
  for (std::size_t i = 0; i < count; ++i) inclination[i] = Math::Atan2(at.z[i], h[i]) * kPerRadian;
  for (std::size_t i = 0; i < count; ++i)
    results[i] = Elements({at.x[i], at.y[i], at.z[i], at.xDot[i], at.yDot[i], at.zDot[i]},
                          {h[i], f[i], declination[i], inclination[i]}, at.convergence[i]);
  std::size_t numbers = 0;
  for (std::size_t i = 0; i < count; ++i) numbers += f[i] == f[i];
  return numbers;
}

}  // namespace

template <class Target>
void MagneticKernel<Target>::PrepareRow(const Series& series, double latitude, double height,
                                        Row& row) {
  using Four = simd::Pack<Target, 4>;
  row.degrees = latitude;
  row.latitude = GeodeticLatitudeOf(latitude);
  row.degree = series.degree;
  row.years = series.years;
  const Parallel<double> at = ToGeocentric(row.latitude, height);
  row.sinPsi = at.sinPsi;
  row.cosPsi = at.cosPsi;
  ForEachOrder<Four>(series, at, [&](int m, const Four& x, const Four& y, const Four& z) {
    x.Store(row.orders[m].x);
    y.Store(row.orders[m].y);
    z.Store(row.orders[m].z);
  });
}

template <class Target>
std::size_t MagneticKernel<Target>::AlongRow(const Row& row, const double* longitudes,
                                             std::size_t count, MagneticPoint* results) {
  Block block;
  const double degrees = row.degrees;
  const GeodeticLatitude latitude = row.latitude;
  for (std::size_t i = 0; i < count; ++i) {
    Math::SinCos(longitudes[i] * kDegree, block.sinLambda[i], block.cosLambda[i]);
    block.convergence[i] = GridConvergence(degrees, latitude, longitudes[i]);
  }
  if (count == 1) {
    SumOrders(row, block.cosLambda[0], block.sinLambda[0], block, 0);
  } else {
    Pad(block.cosLambda, count);
    Pad(block.sinLambda, count);
    for (std::size_t i = 0; i < count; i += kLanes)
      SumOrders(row, Lanes::Load(block.cosLambda + i), Lanes::Load(block.sinLambda + i), block, i);
  }
  return WriteElements(block, count, results);
}

template <class Target>
std::size_t MagneticKernel<Target>::Points(const Series& series, const double* latitudes,
                                           const double* longitudes, const double* heights,
                                           std::size_t count, MagneticPoint* results) {
  using Four = Quad<Lanes>;
  Block block;
  Column s, c, rho, sinPsi, cosPsi;
  for (std::size_t i = 0; i < count; ++i) {
    const GeodeticLatitude latitude = GeodeticLatitudeOf(latitudes[i]);
    const Parallel<double> at = ToGeocentric(latitude, heights[i]);
    s[i] = at.s;
    c[i] = at.c;
    rho[i] = at.rho;
    sinPsi[i] = at.sinPsi;
    cosPsi[i] = at.cosPsi;
    Math::SinCos(longitudes[i] * kDegree, block.sinLambda[i], block.cosLambda[i]);
    block.convergence[i] = GridConvergence(latitudes[i], latitude, longitudes[i]);
  }
  for (Column* column : {&s, &c, &rho, &sinPsi, &cosPsi, &block.cosLambda, &block.sinLambda})
    Pad(*column, count);

  for (std::size_t i = 0; i < count; i += kLanes) {
    const Parallel<Lanes> at = {Lanes::Load(s + i), Lanes::Load(c + i), Lanes::Load(rho + i),
                                Lanes::Load(sinPsi + i), Lanes::Load(cosPsi + i)};
    LongitudeSum<Lanes> sum{Lanes::Load(block.cosLambda + i), Lanes::Load(block.sinLambda + i)};
    ForEachOrder<Four>(series, at, [&](int, const Four& x, const Four& y, const Four& z) {
      sum.Add(x.v, y.v, z.v);
    });
    PutVector(ToGeodetic(sum.b, at.sinPsi, at.cosPsi, series.years), block, i);
  }
  return WriteElements(block, count, results);
}

template struct MagneticKernel<simd::GEOMATH_KERNEL_TARGET>;

}  // namespace zel_cs::geomath::magnetic
