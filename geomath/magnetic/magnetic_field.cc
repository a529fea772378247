#include "geomath/magnetic/magnetic_field.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string_view>

// Symbols of Chulliat et al. 2020, section 1.2:
//   φ phi, λ lambda, h height   geodetic        φ′ r   geocentric latitude and radius, km
//   X′ Y′ Z′                    north, east, down in the geocentric frame
//   s = sin φ′, c = cos φ′, ρ = a/r with a = 6371.2 km
//
// The report's Schmidt functions are P(n,m)(s) = S(n,m)·c^m·Q(n,m)(s), Q monic of degree n − m in s
// (Gauss normalisation). The factors S go into the coefficients, and what is left is
//   Q(n+1,m) = s·Q(n,m) − K(n+1,m)·Q(n−1,m)    K(n+1,m) = (n² − m²)/((2n + 1)(2n − 1))
//   dQ(n,m)/ds = (n − m)·Q(n,m+1)
// (Chapman and Bartels 1940, chapter 17). With the powers of c kept apart nothing is divided by
// cos φ′, so that a pole is a point like any other, and with one order after the other no array of
// functions is needed.
namespace zel_cs::geomath {

struct MagneticErrorModel {
  std::string_view modelName;
  double x, y, z, h, f;     // nT
  double inclination;       // degrees
  double declination;       // degrees, where h is large
  double declinationSlope;  // degrees·nT, over h
};

namespace {

constexpr double kSemiMajorAxis = 6378.137;         // km, WGS84
constexpr double kSemiMinorAxis = 6356.7523142;     // km, WGS84 as the model rounds it
constexpr double kGeomagneticRadius = 6371.2;       // km, reference radius of the coefficients
constexpr double kPolarGridLatitude = 55;           // degrees, from here grid north is that of UPS
constexpr double kZoneWidth = 6;                    // degrees, UTM
constexpr double kDegree = std::numbers::pi / 180;  // radians
constexpr double kE2 =
    1 - kSemiMinorAxis * kSemiMinorAxis / (kSemiMajorAxis * kSemiMajorAxis);  // e²
constexpr double kEp2 = kE2 / (1 - kE2);                                      // e′²

constexpr int kBatchLanes = 4;

// Error models of the technical reports of the World Magnetic Model (2015, 2020: table of section
// 3; 2025): one standard deviation, that of the declination √(declination² + (slope/h)²).
constexpr MagneticErrorModel kErrorModels[] = {
    {"WMM-2015", 138, 89, 165, 133, 152, 0.22, 0.23, 5430},
    {"WMM-2015v2", 138, 89, 165, 133, 152, 0.22, 0.23, 5430},
    {"WMM-2020", 131, 94, 157, 128, 145, 0.21, 0.26, 5625},
    {"WMM-2025", 137, 89, 141, 133, 138, 0.20, 0.26, 5417},
};

const MagneticErrorModel* FindErrorModel(std::string_view modelName) {
  const auto* found = std::ranges::find(kErrorModels, modelName, &MagneticErrorModel::modelName);
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

struct Vector {
  double x, y, z;
};

// One number for each of several points.
template <int kLanes>
struct Lanes {
  double v[kLanes];

  double& operator[](int i) { return v[i]; }
  double operator[](int i) const { return v[i]; }

  friend Lanes operator+(Lanes a, const Lanes& b) {
    for (int i = 0; i < kLanes; ++i) a.v[i] += b.v[i];
    return a;
  }
  friend Lanes operator-(Lanes a, const Lanes& b) {
    for (int i = 0; i < kLanes; ++i) a.v[i] -= b.v[i];
    return a;
  }
  friend Lanes operator*(Lanes a, const Lanes& b) {
    for (int i = 0; i < kLanes; ++i) a.v[i] *= b.v[i];
    return a;
  }
  friend Lanes operator*(double a, Lanes b) {
    for (int i = 0; i < kLanes; ++i) b.v[i] *= a;
    return b;
  }
  Lanes& operator+=(const Lanes& other) { return *this = *this + other; }
};

// Where points lie on the sphere, and what turns the field there into the geodetic frame.
template <int kLanes>
struct SphericalPoints {
  Lanes<kLanes> s, c, rho;  // sin φ′, cos φ′, a/r
  Lanes<kLanes> sinLambda, cosLambda;
  Lanes<kLanes> sinPsi, cosPsi;  // ψ = φ′ − φ
  Lanes<kLanes> sinPhi, cosPhi;

  SphericalPoints(const double* latitudes, const double* longitudes, const double* heights) {
    for (int i = 0; i < kLanes; ++i) Set(i, latitudes[i], longitudes[i], heights[i]);
  }

 private:
  void Set(int i, double latitude, double longitude, double height) {
    const double phi = latitude * kDegree, lambda = longitude * kDegree;
    const double sPhi = std::sin(phi), cPhi = std::cos(phi);
    const double rc = kSemiMajorAxis / std::sqrt(1 - kE2 * (sPhi * sPhi));  // equation 8
    const double p = (rc + height) * cPhi;                                  // equation 7
    const double z = (rc * (1 - kE2) + height) * sPhi;                      // equation 7
    const double r = std::sqrt(p * p + z * z);

    s[i] = z / r;
    c[i] = p / r;
    rho[i] = kGeomagneticRadius / r;
    sinLambda[i] = std::sin(lambda);
    cosLambda[i] = std::cos(lambda);
    sinPhi[i] = sPhi;
    cosPhi[i] = cPhi;
    sinPsi[i] = s[i] * cPhi - c[i] * sPhi;
    cosPsi[i] = c[i] * cPhi + s[i] * sPhi;
  }
};

// The sums over n of one order m: coefficient times ρ^(n+2)·Q(n,m), and the same times n + 1; and
// what completes those of order m − 1, its derivatives with respect to s.
template <int kLanes>
struct OrderSums {
  using Lane = Lanes<kLanes>;
  Lane g{}, h{}, radialG{}, radialH{}, derivativeG{}, derivativeH{};

  void Add(const Lane& q, double nPlus1, double gNm, double hNm, double dg, double dh) {
    const Lane gq = gNm * q, hq = hNm * q;
    g += gq;
    h += hq;
    radialG += nPlus1 * gq;
    radialH += nPlus1 * hq;
    derivativeG += dg * q;
    derivativeH += dh * q;
  }
};

// cos mλ and sin mλ times cos^m φ′ (u, v) and times cos^(m−1) φ′ (uLow, vLow; 0 for m = 0).
template <int kLanes>
struct Harmonic {
  using Lane = Lanes<kLanes>;
  Lane u, v{}, uLow{}, vLow{}, uBefore{}, vBefore{};

  Harmonic() {
    for (int i = 0; i < kLanes; ++i) u[i] = 1;
  }
  void Next(const SphericalPoints<kLanes>& at) {
    uBefore = u;
    vBefore = v;
    uLow = u * at.cosLambda - v * at.sinLambda;
    vLow = v * at.cosLambda + u * at.sinLambda;
    u = at.c * uLow;
    v = at.c * vLow;
  }
};

template <int kLanes>
struct FieldSums {
  using Lane = Lanes<kLanes>;
  Lane x{}, y{}, z{};  // X′, Y′, Z′; equations 10 to 12

  void Add(int m, const OrderSums<kLanes>& sums, const Harmonic<kLanes>& w,
           const SphericalPoints<kLanes>& at) {
    const double order = m;
    x += order * (at.s * (sums.g * w.uLow + sums.h * w.vLow)) -
         at.c * (sums.derivativeG * w.uBefore + sums.derivativeH * w.vBefore);
    y += order * (sums.g * w.vLow - sums.h * w.uLow);
    z = z - (sums.radialG * w.u + sums.radialH * w.v);
  }

  // Into the geodetic frame: equation 17.
  Vector Rotated(int i, const SphericalPoints<kLanes>& at) const {
    return {x[i] * at.cosPsi[i] - z[i] * at.sinPsi[i], y[i],
            x[i] * at.sinPsi[i] + z[i] * at.cosPsi[i]};
  }
};

double WrappedDegrees(double angle) {
  if (angle > 180) return angle - 360 * std::ceil((angle - 180) / 360);
  if (angle < -180) return angle + 360 * std::ceil((-180 - angle) / 360);
  return angle;
}

// The convergence of the UTM zone of the longitude, degrees; within a zone and below latitude 55°
// exact to 1e-9 degrees (Stem 1989, NOAA Manual NOS NGS 5, p. 33).
double UtmConvergence(double longitude, double sinPhi, double cosPhi) {
  const double offset = longitude - kZoneWidth * std::floor(longitude / kZoneWidth);
  const double L = (offset - kZoneWidth / 2) * kDegree * cosPhi, L2 = L * L;
  const double t = sinPhi / cosPhi, t2 = t * t;
  const double eta2 = kEp2 * (cosPhi * cosPhi), eta4 = eta2 * eta2;
  return t * L * (1 + L2 * ((1 + 3 * eta2 + 2 * eta4) / 3 + L2 * ((2 - t2) / 15))) / kDegree;
}

double GridConvergence(double latitude, double longitude, double sinPhi, double cosPhi) {
  if (latitude >= kPolarGridLatitude) return longitude;
  if (latitude <= -kPolarGridLatitude) return -longitude;
  return UtmConvergence(longitude, sinPhi, cosPhi);
}

// Equation 19, and the change of the elements by the chain rule.
MagneticPoint Elements(const Vector& b, const Vector& change, double convergence) {
  const double h2 = b.x * b.x + b.y * b.y, h = std::sqrt(h2);
  const double f2 = h2 + b.z * b.z, f = std::sqrt(f2);
  const double hDot = (b.x * change.x + b.y * change.y) / h;
  const double fDot = (b.x * change.x + b.y * change.y + b.z * change.z) / f;
  const double declination = std::atan2(b.y, b.x) / kDegree;
  const double declinationDot = (b.x * change.y - b.y * change.x) / h2 / kDegree;
  const double inclinationDot = (h * change.z - b.z * hDot) / f2 / kDegree;
  return {.field = {b.x, b.y, b.z, h, f, declination, std::atan2(b.z, h) / kDegree,
                    WrappedDegrees(declination - convergence)},
          .yearlyChange = {change.x, change.y, change.z, hDot, fDot, declinationDot, inclinationDot,
                           declinationDot}};
}

}  // namespace

MagneticField::MagneticField(const WMMtype_MagneticModel& model, double decimalYear)
    : decimalYear_(decimalYear),
      inModelYears_(decimalYear >= model.epoch && decimalYear <= model.coefficientFileEndDate),
      degree_(UsableDegree(model)),
      errors_(FindErrorModel(model.modelName)) {
  const Normalisation& norms = Norms();
  const double years = decimalYear - model.epoch;
  terms_.resize(TermCount(degree_));
  Term* term = terms_.data();
  const Term* lowerOrder = term;  // that of (n, m − 1)
  for (int m = 0; m <= degree_; ++m) {
    const Term* const first = term;
    if (m > 0) ++lowerOrder;  // n starts one higher than it did for m − 1
    for (int n = m; n <= degree_; ++n, ++term) {
      const std::size_t i = TermIndex(n, m);
      const double norm = norms.schmidt[i], normDot = n <= model.nMaxSecVar ? norm : 0;
      term->recursion = norms.recursion[i];
      if (n > 0) {
        term->gDot = normDot * model.gDot[i];
        term->hDot = normDot * model.hDot[i];
        term->g = norm * model.g[i] + years * term->gDot;  // equation 9
        term->h = norm * model.h[i] + years * term->hDot;
      }
      if (m > 0) {
        const double derivative = n - m + 1;
        term->dg = derivative * lowerOrder->g;
        term->dh = derivative * lowerOrder->h;
        term->dgDot = derivative * lowerOrder->gDot;
        term->dhDot = derivative * lowerOrder->hDot;
        ++lowerOrder;
      }
    }
    lowerOrder = first;
  }
}

template <int kLanes>
void MagneticField::Evaluate(const double* latitudes, const double* longitudes,
                             const double* heights, MagneticPoint* results) const noexcept {
  using Lane = Lanes<kLanes>;
  const SphericalPoints<kLanes> at(latitudes, longitudes, heights);
  const Lane sRho = at.s * at.rho, rho2 = at.rho * at.rho;

  FieldSums<kLanes> field, change;
  Harmonic<kLanes> harmonic;
  Lane sectoral = rho2;  // ρ^(m+2)
  const Term* term = terms_.data();
  for (int m = 0; m <= degree_; ++m) {
    OrderSums<kLanes> sums, changes;
    Lane q = sectoral, before{};  // ρ^(n+2)·Q(n,m) and the one before
    for (int n = m; n <= degree_; ++n, ++term) {
      sums.Add(q, n + 1, term->g, term->h, term->dg, term->dh);
      changes.Add(q, n + 1, term->gDot, term->hDot, term->dgDot, term->dhDot);
      const Lane next = sRho * q - term->recursion * (rho2 * before);
      before = q;
      q = next;
    }
    field.Add(m, sums, harmonic, at);
    change.Add(m, changes, harmonic, at);
    harmonic.Next(at);
    sectoral = sectoral * at.rho;
  }

  for (int i = 0; i < kLanes; ++i)
    results[i] = Elements(field.Rotated(i, at), change.Rotated(i, at),
                          GridConvergence(latitudes[i], longitudes[i], at.sinPhi[i], at.cosPhi[i]));
}

MagneticPoint MagneticField::At(double latitude, double longitude, double height) const noexcept {
  MagneticPoint result;
  Evaluate<1>(&latitude, &longitude, &height, &result);
  return result;
}

std::size_t MagneticField::AtBatch(const double* latitudes, const double* longitudes,
                                   const double* heights, std::size_t count,
                                   MagneticPoint* results) const noexcept {
  std::size_t i = 0;
  for (; i + kBatchLanes <= count; i += kBatchLanes)
    Evaluate<kBatchLanes>(latitudes + i, longitudes + i, heights + i, results + i);
  for (; i < count; ++i) results[i] = At(latitudes[i], longitudes[i], heights[i]);
  return static_cast<std::size_t>(std::count_if(
      results, results + count, [](const MagneticPoint& p) { return !std::isnan(p.field.f); }));
}

std::optional<MagneticUncertainty> MagneticField::Uncertainty(double h) const noexcept {
  if (!errors_) return std::nullopt;
  const MagneticErrorModel& e = *errors_;
  return MagneticUncertainty{.x = e.x,
                             .y = e.y,
                             .z = e.z,
                             .h = e.h,
                             .f = e.f,
                             .declination = std::hypot(e.declination, e.declinationSlope / h),
                             .inclination = e.inclination};
}

}  // namespace zel_cs::geomath
