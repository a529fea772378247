#include "geomath/magnetic/magnetic_field.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>

#include "geomath/magnetic/magnetic_kernel.h"
#include "geomath/simd/instruction_set.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

using magnetic::MagneticKernel;

struct MagneticErrorModel {
  std::string_view modelName;
  double x, y, z, h, f;     // nT
  double inclination;       // degrees
  double declination;       // degrees, where h is large
  double declinationSlope;  // degrees·nT, over h
};

namespace {

// One standard deviation, that of the declination √(declination² + (slope/h)²).
//
// WMM-2015: Chulliat et al. 2015, technical report; copies differ in the declination, 0.23 and 5430
//   or 0.24 and 5432, by 0.01° at most. The out-of-cycle version 2 has the same.
// WMM-2020: Chulliat et al. 2020, technical report; F as in the publisher's software, where others
//   that quote the report have 148.
// WMM-2025: the publisher's page "Accuracy, Limitations, and Error Model", table 3 (NOAA National
//   Centers for Environmental Information).
// WMMHR-2025: the publisher's software for the high-resolution model (CIRES-Geomagnetism/wmmhr).
constexpr MagneticErrorModel kErrorModels[] = {
    {"WMM-2015", 138, 89, 165, 133, 152, 0.22, 0.23, 5430},
    {"WMM-2015v2", 138, 89, 165, 133, 152, 0.22, 0.23, 5430},
    {"WMM-2020", 131, 94, 157, 128, 145, 0.21, 0.26, 5625},
    {"WMM-2025", 137, 89, 141, 133, 138, 0.20, 0.26, 5417},
    {"WMMHR-2025", 135, 85, 134, 130, 134, 0.19, 0.25, 5205},
};

const MagneticErrorModel* FindErrorModel(std::string_view modelName) {
  const auto* found =
      std::find_if(std::begin(kErrorModels), std::end(kErrorModels),
                   [&](const MagneticErrorModel& row) { return row.modelName == modelName; });
  return found == std::end(kErrorModels) ? nullptr : found;
}

// What depends on degree and order alone, for all degrees that are accepted, at TermIndex(n, m).
struct Normalisation {
  using Table = std::array<double, TermCount(kMaxMagneticDegree)>;
  Table schmidt;    // S(n,m)
  Table recursion;  // K(n + 1,m)
};

Normalisation MakeNorms() {
  Normalisation norms{};
  Normalisation::Table& s = norms.schmidt;
  s[0] = 1;
  for (int n = 1; n <= kMaxMagneticDegree; ++n) {
    s[TermIndex(n, 0)] = s[TermIndex(n - 1, 0)] * (2 * n - 1) / n;
    for (int m = 1; m <= n; ++m) {
      const double both = m == 1 ? 2 : 1;  // the Schmidt norm counts cosine and sine of m > 0
      s[TermIndex(n, m)] = s[TermIndex(n, m - 1)] * std::sqrt(both * (n - m + 1) / (n + m));
    }
    for (int m = 0; m <= n; ++m) {
      const double numerator = n * n - m * m, denominator = (2 * n + 1) * (2 * n - 1);
      norms.recursion[TermIndex(n, m)] = numerator / denominator;
    }
  }
  return norms;
}

const Normalisation& Norms() {
  static const Normalisation norms = MakeNorms();
  return norms;
}

// The degree up to which the record holds coefficients, 0 at least.
int UsableDegree(const WMMtype_MagneticModel& model) {
  const std::size_t length =
      std::min({model.g.size(), model.h.size(), model.gDot.size(), model.hDot.size()});
  int degree = std::clamp(model.nMax, 0, kMaxMagneticDegree);
  while (degree > 0 && TermCount(degree) > length) --degree;
  return degree;
}

// g, h, ġ, ḣ of one term in Gauss normalisation, `years` after the epoch: equation 9 of Chulliat et
// al. 2020.
using Coefficients = std::array<double, 4>;
Coefficients CoefficientsAt(const WMMtype_MagneticModel& model, int n, int m, double years) {
  if (n == 0) return {};
  const std::size_t i = TermIndex(n, m);
  const double norm = Norms().schmidt[i], normDot = n <= model.nMaxSecVar ? norm : 0;
  const double gDot = normDot * model.gDot[i], hDot = normDot * model.hDot[i];
  return {norm * model.g[i] + years * gDot, norm * model.h[i] + years * hDot, gDot, hDot};
}

MagneticTerm TermAt(const WMMtype_MagneticModel& model, int n, int m, double years) {
  MagneticTerm term;
  const Coefficients own = CoefficientsAt(model, n, m, years);
  const Coefficients lower = m > 0 ? CoefficientsAt(model, n, m - 1, years) : Coefficients{};
  term.recursion = Norms().recursion[TermIndex(n, m)];
  for (std::size_t k = 0; k < own.size(); ++k) {
    term.value[k] = own[k];
    term.radial[k] = -(n + 1) * own[k];
    term.slope[k] = (n - m + 1) * lower[k];
  }
  return term;
}

std::unique_ptr<WMMtype_MagneticModel> BuiltIn(double decimalYear) {
  auto model = BuiltInMagneticModel(decimalYear);
  if (!model) throw std::bad_alloc();
  return model;
}

// Any number of turns into what the kernels take; the remainder is exact.
double WithinTurn(double degrees) {
  return std::abs(degrees) <= magnetic::kMaxDegrees ? degrees : std::remainder(degrees, 360.0);
}

// The same for up to a block of angles: themselves when there is nothing to do, else `buffer`.
const double* WithinTurn(const double* degrees, std::size_t count, double* buffer) {
  const bool within = std::all_of(degrees, degrees + count, [](double angle) {
    return std::abs(angle) <= magnetic::kMaxDegrees;
  });
  if (within) return degrees;
  std::transform(degrees, degrees + count, buffer, [](double angle) { return WithinTurn(angle); });
  return buffer;
}

// From here on it pays to form the sums of a row first.
constexpr std::size_t kShortestRow = 8;

bool SameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

}  // namespace

MagneticField::MagneticField(double decimalYear)
    : MagneticField(*BuiltIn(decimalYear), decimalYear) {}

MagneticField::MagneticField(const WMMtype_MagneticModel& model, double decimalYear)
    : decimalYear_(decimalYear),
      inModelYears_(decimalYear >= model.epoch && decimalYear <= model.coefficientFileEndDate),
      degree_(UsableDegree(model)),
      errors_(FindErrorModel(model.modelName)) {
  terms_.reserve(TermCount(degree_));
  for (int m = 0; m <= degree_; ++m)
    for (int n = m; n <= degree_; ++n)
      terms_.push_back(TermAt(model, n, m, decimalYear - model.epoch));
}

magnetic::Series MagneticField::SeriesAt(double decimalYear) const noexcept {
  return {terms_.data(), degree_, decimalYear - decimalYear_};
}

MagneticPoint MagneticField::At(double latitude, double longitude, double height) const noexcept {
  return At(latitude, longitude, height, decimalYear_);
}

MagneticPoint MagneticField::At(double latitude, double longitude, double height,
                                double decimalYear) const noexcept {
  MagneticPoint result;
  EvaluateRow(decimalYear, latitude, height, &longitude, 1, &result);
  return result;
}

std::size_t MagneticField::AtRow(double latitude, double height, const double* longitudes,
                                 std::size_t count, MagneticPoint* results) const noexcept {
  return EvaluateRow(decimalYear_, latitude, height, longitudes, count, results);
}

std::size_t MagneticField::EvaluateRow(double decimalYear, double latitude, double height,
                                       const double* longitudes, std::size_t count,
                                       MagneticPoint* results) const noexcept {
  const auto prepare =
      simd::ForActiveSet([](auto target) { return &MagneticKernel<decltype(target)>::PrepareRow; });
  const auto along =
      simd::ForActiveSet([](auto target) { return &MagneticKernel<decltype(target)>::AlongRow; });
  magnetic::Row row;
  prepare(SeriesAt(decimalYear), WithinTurn(latitude), height, row);
  std::size_t numbers = 0;
  for (std::size_t i = 0; i < count; i += magnetic::kBlock) {
    const std::size_t n = std::min(magnetic::kBlock, count - i);
    double turned[magnetic::kBlock];
    numbers += along(row, WithinTurn(longitudes + i, n, turned), n, results + i);
  }
  return numbers;
}

std::size_t MagneticField::AtBatch(const double* latitudes, const double* longitudes,
                                   const double* heights, std::size_t count,
                                   MagneticPoint* results) const noexcept {
  const auto points =
      simd::ForActiveSet([](auto target) { return &MagneticKernel<decltype(target)>::Points; });
  const magnetic::Series series = SeriesAt(decimalYear_);
  std::size_t numbers = 0;
  for (std::size_t i = 0, n = 0; i < count; i += n) {
    n = 1;
    while (i + n < count && SameBits(latitudes[i + n], latitudes[i]) &&
           SameBits(heights[i + n], heights[i]))
      ++n;
    if (n >= kShortestRow) {
      numbers +=
          EvaluateRow(decimalYear_, latitudes[i], heights[i], longitudes + i, n, results + i);
      continue;
    }
    n = std::min(magnetic::kBlock, count - i);
    double turnedLatitudes[magnetic::kBlock], turnedLongitudes[magnetic::kBlock];
    numbers += points(series, WithinTurn(latitudes + i, n, turnedLatitudes),
                      WithinTurn(longitudes + i, n, turnedLongitudes), heights + i, n, results + i);
  }
  return numbers;
}

std::optional<MagneticUncertainty> MagneticField::Uncertainty(double h) const noexcept {
  if (!errors_) return std::nullopt;
  const MagneticErrorModel& e = *errors_;
  return MagneticUncertainty{.x = e.x,
                             .y = e.y,
                             .z = e.z,
                             .h = e.h,
                             .f = e.f,
                             .declination = Hypot(e.declination, e.declinationSlope / h),
                             .inclination = e.inclination};
}

}  // namespace zel_cs::geomath
