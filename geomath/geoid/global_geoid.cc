#include "geomath/geoid/global_geoid.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "geomath/base/angle.h"

// The stages bear the names of the published program's routines:
//   RADGRA  geocentric radius re, geocentric latitude and normal gravity gr of a latitude
//   LEGFDN  fully normalised associated Legendre functions P(n, m), here one degree at a time for
//           all orders, so that coefficients are read in the order in which they are stored
//   DSCML   sines and cosines of multiples of the longitude
//   HUNDU   the sum
namespace zel_cs::geomath {
namespace {

constexpr double kA = 6378137.0;          // WGS84 semi-major axis, metres
constexpr double kE2 = 0.00669437999013;  // WGS84 first eccentricity squared
constexpr double kOneLessE2 = 0.99330562000987;
constexpr double kGM = 3.986004418e14;            // WGS84, m³/s²
constexpr double kEquatorGravity = 9.7803253359;  // Somigliana, m/s²
constexpr double kSomigliana = 0.00193185265246;  // Somigliana's constant
constexpr double kZeroDegree = -0.53;             // metres
constexpr double kCentimetres = 100.0;            // of the correction coefficients, in a metre
constexpr std::size_t kColumns = 32;              // longitudes that are summed together

struct Station {
  double cosTheta, sinTheta;  // of the geocentric colatitude
  double gr;                  // normal gravity, m/s²
  double re;                  // geocentric radius, metres
};

Station RADGRA(double lat) {
  const double sinPhi = std::sin(lat), t = sinPhi * sinPhi;
  const double W = std::sqrt(1 - kE2 * t), N = kA / W;
  const double p = std::abs(N * std::cos(lat)), Z = N * kOneLessE2 * sinPhi;
  const double theta = kHalfPi - std::atan(Z / p);
  return {.cosTheta = std::cos(theta),
          .sinTheta = std::sin(theta),
          .gr = kEquatorGravity * (1 + kSomigliana * t) / W,
          .re = std::sqrt(p * p + Z * Z)};
}

/// P(n, 0 … n) from the two degrees before, n ≥ 2; `p2` holds degree n − 2, zero beyond its last
/// order, and receives degree n. Holmes and Featherstone 2002, eq. 11-13.
void LEGFDN(std::size_t n, const Station& at, const double* root, const double* inverseRoot,
            const double* __restrict p1, double* __restrict p2) {
  const double k1 = root[2 * n + 1] * root[2 * n - 1] * at.cosTheta;
  const double k2 = root[2 * n + 1] * inverseRoot[2 * n - 3];
  for (std::size_t m = 0; m < n; ++m) {
    const double scale = inverseRoot[n + m] * inverseRoot[n - m];
    const double k3 = root[n + m - 1] * root[n - m - 1];
    p2[m] = scale * (k1 * p1[m] - k2 * k3 * p2[m]);
  }
  p2[n] = root[2 * n + 1] * inverseRoot[2 * n] * at.sinTheta * p1[n - 1];
}

/// Adds one degree's terms, times `factor`, to the sums of each order.
void AddDegree(std::size_t n, double factor, const double* __restrict p, const double* __restrict C,
               const double* __restrict S, double* __restrict cosSum, double* __restrict sinSum) {
  for (std::size_t m = 0; m <= n; ++m) {
    const double term = factor * p[m];
    cosSum[m] += term * C[m];
    sinSum[m] += term * S[m];
  }
}

/// HUNDU for up to kColumns longitudes: Σ cosSum[m]·cos mλ + sinSum[m]·sin mλ over m < `orders`,
/// an even number, and the zero-degree term. DSCML's recurrence runs along, two orders a step.
void HUNDU(const double* cosSum, const double* sinSum, std::size_t orders, const double* lambda,
           std::size_t columns, double* heights) {
  double even[2][kColumns], odd[2][kColumns];  // cosine and sine of the even and the odd order
  double twoCos[kColumns], sum[kColumns];
  for (std::size_t i = 0; i < columns; ++i) {
    even[0][i] = 1;
    even[1][i] = 0;
    odd[0][i] = std::cos(lambda[i]);
    odd[1][i] = std::sin(lambda[i]);
    twoCos[i] = 2 * odd[0][i];
    sum[i] = cosSum[0] + (cosSum[1] * odd[0][i] + sinSum[1] * odd[1][i]);
  }
  for (std::size_t m = 2; m < orders; m += 2) {
    const double A0 = cosSum[m], B0 = sinSum[m], A1 = cosSum[m + 1], B1 = sinSum[m + 1];
    for (std::size_t i = 0; i < columns; ++i) {
      const double c0 = twoCos[i] * odd[0][i] - even[0][i];
      const double s0 = twoCos[i] * odd[1][i] - even[1][i];
      const double c1 = twoCos[i] * c0 - odd[0][i];
      const double s1 = twoCos[i] * s0 - odd[1][i];
      even[0][i] = c0;
      even[1][i] = s0;
      odd[0][i] = c1;
      odd[1][i] = s1;
      sum[i] += (A0 * c0 + B0 * s0) + (A1 * c1 + B1 * s1);
    }
  }
  for (std::size_t i = 0; i < columns; ++i) heights[i] = sum[i] + kZeroDegree;
}

/// Length of one work row: all orders, filled up with zeros to an even number of at least 2.
std::size_t RowLength(int count) { return (static_cast<std::size_t>(count) + 1) / 2 * 2; }

enum WorkRow {
  kCosSum,
  kSinSum,
  kCosCorrection,
  kSinCorrection,
  kDegree,
  kDegreeBefore,
  kWorkRows
};

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

// Every square root and quotient that the Legendre recursion needs. Without memory the tables stay
// empty and no height can be computed.
void GlobalGeoid::Init() {
  if (data_.count < 1) return;
  const std::size_t size = 2 * static_cast<std::size_t>(data_.count) + 2;
  try {
    std::vector<double> root(size), inverseRoot(size);
    for (std::size_t k = 1; k < size; ++k) {
      root[k] = std::sqrt(static_cast<double>(k));
      inverseRoot[k] = 1 / root[k];
    }
    root_.swap(root);
    inverseRoot_.swap(inverseRoot);
    own_.rows_.resize(kWorkRows * RowLength(data_.count));
  } catch (const std::bad_alloc&) {
  }
}

bool GlobalGeoid::Prepared(GlobalGeoidScratch& scratch) const {
  if (root_.empty() || inverseRoot_.empty() || !data_.C || !data_.S) return false;
  try {
    scratch.rows_.resize(kWorkRows * RowLength(data_.count));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

// The sums over the degrees, one pair for each order, of potential and correction together, so that
// the undulation is Σ cosSum[m]·cos mλ + sinSum[m]·sin mλ less the zero-degree term.
void GlobalGeoid::SumDegrees(double lat, double* rows) const {
  const std::size_t length = RowLength(data_.count), count = static_cast<std::size_t>(data_.count);
  const auto row = [=](WorkRow which) { return rows + which * length; };
  std::fill_n(rows, kWorkRows * length, 0.0);
  double *cosSum = row(kCosSum), *sinSum = row(kSinSum);
  double *cosCorrection = row(kCosCorrection), *sinCorrection = row(kSinCorrection);
  double *p1 = row(kDegree), *p2 = row(kDegreeBefore);
  const double *cC = data_.correctionC, *cS = data_.correctionS;
  const bool corrected = cC && cS;

  const Station at = RADGRA(lat);
  p2[0] = 1;
  if (corrected) cosCorrection[0] = cC[0];
  if (count > 1) {
    p1[0] = root_[3] * at.cosTheta;
    p1[1] = root_[3] * at.sinTheta;
    if (corrected) {
      cosCorrection[0] += cC[1] * p1[0];
      cosCorrection[1] = cC[2] * p1[1];
      sinCorrection[1] = cS[2] * p1[1];
    }
  }

  const double ar = kA / at.re;
  double arn = ar;
  for (std::size_t n = 2; n < count; ++n) {
    arn *= ar;
    LEGFDN(n, at, root_.data(), inverseRoot_.data(), p1, p2);
    std::swap(p1, p2);
    const std::size_t k = n * (n + 1) / 2;
    AddDegree(n, arn, p1, data_.C + k, data_.S + k, cosSum, sinSum);
    if (corrected) AddDegree(n, 1, p1, cC + k, cS + k, cosCorrection, sinCorrection);
  }

  const double metres = kGM / (at.gr * at.re);
  for (std::size_t m = 0; m < count; ++m) {
    cosSum[m] = cosSum[m] * metres + cosCorrection[m] / kCentimetres;
    sinSum[m] = sinSum[m] * metres + sinCorrection[m] / kCentimetres;
  }
}

/// Heights of `n` points on one latitude whose longitudes are lonAt(0 … n − 1).
template <class LonAt>
void GlobalGeoid::Row(double lat, LonAt lonAt, std::size_t n, double* heights,
                      GlobalGeoidScratch& scratch) const {
  if (!Prepared(scratch)) {
    std::fill_n(heights, n, kNoHeight);
    return;
  }
  const std::size_t orders = RowLength(data_.count);
  double* rows = scratch.rows_.data();
  SumDegrees(lat, rows);
  for (std::size_t first = 0; first < n; first += kColumns) {
    const std::size_t columns = std::min(kColumns, n - first);
    double lambda[kColumns];
    for (std::size_t i = 0; i < columns; ++i) lambda[i] = lonAt(first + i);
    HUNDU(rows + kCosSum * orders, rows + kSinSum * orders, orders, lambda, columns,
          heights + first);
  }
}

long GlobalGeoid::CountHeight(const TAbstractPoint3<double>* points, double* heights, int n,
                              TSMatrix*) const {
  return CountHeight(points, heights, n, own_);
}

long GlobalGeoid::CountHeight(const TAbstractPoint3<double>* points, double* heights, int n,
                              GlobalGeoidScratch& scratch) const {
  if (data_.count < 1) return 1;
  const std::size_t total = n > 0 ? static_cast<std::size_t>(n) : 0;
  for (std::size_t first = 0, last; first < total; first = last) {
    const double lat = points[first][0];
    last = first + 1;
    while (last < total && points[last][0] == lat) ++last;
    Row(
        lat, [=](std::size_t i) { return points[first + i][1]; }, last - first, heights + first,
        scratch);
  }
  return 0;
}

bool GlobalGeoid::CountHeightOnGrid(const TGridRgn& grid, double* heights, TSMatrix*) const {
  return CountHeightOnGrid(grid, heights, own_);
}

bool GlobalGeoid::CountHeightOnGrid(const TGridRgn& grid, double* heights,
                                    GlobalGeoidScratch& scratch) const {
  const int rows = grid.GetLatDim(), columns = grid.GetLonDim();
  if (columns < 1) return true;
  const double west = grid.L0, step = grid.lonStep;
  for (int a = 0; a < rows; ++a, heights += columns) {
    Row(
        a * grid.latStep + grid.B0,
        [=](std::size_t b) { return static_cast<double>(b) * step + west; },
        static_cast<std::size_t>(columns), heights, scratch);
  }
  return true;
}

TAbstractRect<double> GlobalGeoid::GetBounds() const { return {-180, -90, 180, 90}; }

TRectRgn GlobalGeoid::GetRegion(bool) const { return {-kHalfPi, kPi, -kPi, kTwoPi}; }

bool GlobalGeoid::GetSteps(double&, double&) const { return false; }

}  // namespace zel_cs::geomath
