#include "geomath/adjust/site_adjustment.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "geomath/adjust/quantiles.h"
#include "geomath/base/matrix3.h"
#include "geomath/local/plane_rotation.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallestPivot = 1e-11;  // of normal equations with a unit diagonal
constexpr double kNoRedundancy = 1e-9;
constexpr int kMaxRounds = 30, kRobustRounds = 30;
constexpr double kSettled = 1e-13;         // change of a parameter over its column's length
constexpr double kNonCentrality = 4.1321;  // 3.2905 + 0.8416: level 0.001, power 0.80

// The inverse of a symmetric positive definite matrix of order u, row by row, scaled to a unit diagonal
// first; false where it has none to speak of.
bool Invert(std::vector<double>& matrix, std::size_t u) {
  std::vector<double> scale(u), R(u * u, 0.0);
  for (std::size_t i = 0; i < u; ++i) {
    if (!(matrix[i * u + i] > 0)) return false;
    scale[i] = 1 / std::sqrt(matrix[i * u + i]);
  }
  for (std::size_t c = 0; c < u; ++c)
    for (std::size_t r = c; r < u; ++r) {
      double rest = matrix[r * u + c] * scale[r] * scale[c];
      for (std::size_t k = 0; k < c; ++k) rest -= R[r * u + k] * R[c * u + k];
      if (r == c && !(rest > kSmallestPivot)) return false;
      R[r * u + c] = r == c ? std::sqrt(rest) : rest / R[c * u + c];
    }
  std::vector<double> inverse(u * u, 0.0);  // of R, lower
  for (std::size_t c = 0; c < u; ++c)
    for (std::size_t r = c; r < u; ++r) {
      double sum = r == c ? 1 : 0;
      for (std::size_t k = c; k < r; ++k) sum -= R[r * u + k] * inverse[k * u + c];
      inverse[r * u + c] = sum / R[r * u + r];
    }
  for (std::size_t r = 0; r < u; ++r)
    for (std::size_t c = 0; c < u; ++c) {
      double sum = 0;
      for (std::size_t k = std::max(r, c); k < u; ++k)
        sum += inverse[k * u + r] * inverse[k * u + c];
      matrix[r * u + c] = sum * scale[r] * scale[c];
    }
  return true;
}

}  // namespace

double AdjustmentPart::Variance() const { return Freedom() > 0 ? sumOfSquares / Freedom() : kNaN; }

// A point as a model computes it: local coordinates, their derivatives by the parameters and by the
// grid coordinates.
struct SiteAdjustment::Computed {
  double local[3] = {};
  double byParameter[3][7] = {};
  Matrix3 byGrid{};
};

// The observations of one point in one part: `size` coordinates from `first` on.
struct SiteAdjustment::Block {
  std::size_t point;
  int first, size;
  Computed at;
  double v[3];     // local minus computed
  double C[3][3];  // covariance
  double P[3][3];  // its inverse, with the robust weights
  double weight[3] = {1, 1, 1};

  const double (&Row(int i) const)[7] { return at.byParameter[first + i]; }
};

int SiteAdjustment::Unknowns(bool heights) const {
  if (!heights) return static_cast<int>(options_.model);
  return options_.model == SiteModel::spatial ? 0 : static_cast<int>(options_.heights);
}

bool SiteAdjustment::Takes(const AdjustmentPoint& point, bool heights) const {
  if (options_.model == SiteModel::spatial) return !heights && point.usePlane && point.useHeight;
  return Unknowns(heights) > 0 && (heights ? point.useHeight : point.usePlane);
}

// d is the point from the pivot. Rigid and similarity: t + s·R(θ)·d. Affine: t + A·d. Spatial:
// t + s·Rz(θ)·Rn(α)·Re(β)·d, α and β tilts about north and east. Heights: H + t + aN·dN + aE·dE.
SiteAdjustment::Computed SiteAdjustment::Compute(bool heights, const std::vector<double>& x,
                                                 const double (&grid)[3]) const {
  Computed at;
  const double d[] = {grid[0] - pivot_[0], grid[1] - pivot_[1], grid[2] - pivot_[2]};
  auto& J = at.byParameter;
  if (heights) {
    const double slopes[] = {x.size() == 3 ? x[1] : 0, x.size() == 3 ? x[2] : 0};
    at.local[2] = grid[2] + x[0] + slopes[0] * d[0] + slopes[1] * d[1];
    J[2][0] = 1;
    J[2][1] = d[0];
    J[2][2] = d[1];
    at.byGrid.m[2][0] = slopes[0];
    at.byGrid.m[2][1] = slopes[1];
    at.byGrid.m[2][2] = 1;
    return at;
  }
  J[0][0] = J[1][1] = 1;
  auto& G = at.byGrid.m;
  if (options_.model == SiteModel::affine) {
    for (int r = 0; r < 2; ++r) {
      const auto row = static_cast<std::size_t>(2 + 2 * r);
      at.local[r] = x[static_cast<std::size_t>(r)] + x[row] * d[0] + x[row + 1] * d[1];
      for (int c = 0; c < 2; ++c) {
        G[r][c] = x[row + static_cast<std::size_t>(c)];
        J[r][row + static_cast<std::size_t>(c)] = d[c];
      }
    }
    return at;
  }
  const bool spatial = options_.model == SiteModel::spatial;
  const std::size_t scaleAt = spatial ? 3 : 2;
  const bool fixed = options_.model == SiteModel::rigid;
  const double s = fixed ? 1 : x[scaleAt], theta = x[fixed ? 2 : scaleAt + 1];
  const auto [q, c] = SinCos(theta);
  const Matrix3 turn{{{c, -q, 0}, {q, c, 0}, {0, 0, 1}}};
  const Matrix3 turning{{{-q, -c, 0}, {c, -q, 0}, {0, 0, 0}}};  // its derivative
  Matrix3 tilt = Matrix3::Identity(), byNorth{}, byEast{};
  if (spatial) {
    const double a = x[5], b = x[6];
    const auto [sa, ca] = SinCos(a);
    const auto [sb, cb] = SinCos(b);
    const Matrix3 aboutN{{{1, 0, 0}, {0, ca, -sa}, {0, sa, ca}}};
    const Matrix3 aboutE{{{cb, 0, -sb}, {0, 1, 0}, {sb, 0, cb}}};
    tilt = aboutN * aboutE;
    byNorth = Matrix3{{{0, 0, 0}, {0, -sa, -ca}, {0, ca, -sa}}} * aboutE;
    byEast = aboutN * Matrix3{{{-sb, 0, -cb}, {0, 0, 0}, {cb, 0, -sb}}};
  }
  const Matrix3 R = turn * tilt;
  const auto times = [&](const Matrix3& m, int r) {
    return m.m[r][0] * d[0] + m.m[r][1] * d[1] + (spatial ? m.m[r][2] * d[2] : 0);
  };
  for (int r = 0; r < (spatial ? 3 : 2); ++r) {
    const std::size_t rotationAt = fixed ? 2 : scaleAt + 1;
    at.local[r] = x[static_cast<std::size_t>(r)] + s * times(R, r);
    if (spatial) J[r][r] = 1;
    if (!fixed) J[r][scaleAt] = times(R, r);
    J[r][rotationAt] = s * times(turning * tilt, r);
    if (spatial) {
      J[r][5] = s * times(turn * byNorth, r);
      J[r][6] = s * times(turn * byEast, r);
    }
    for (int k = 0; k < 3; ++k) G[r][k] = spatial || k < 2 ? s * R.m[r][k] : 0;
  }
  return at;
}

// First values: a similarity of unit weights in closed form, which every model contains.
bool SiteAdjustment::Start(bool heights, std::vector<double>& x) const {
  double count = 0, a = 0, b = 0, d2 = 0, up = 0;
  for (const AdjustmentPoint& p : points_) {
    if (!Takes(p, heights)) continue;
    const double dn = p.grid[0] - pivot_[0], de = p.grid[1] - pivot_[1];
    const double ln = p.local[0] - localPivot_[0], le = p.local[1] - localPivot_[1];
    ++count;
    a += dn * ln + de * le;
    b += dn * le - de * ln;
    d2 += dn * dn + de * de;
    up += p.local[2] - p.grid[2];
  }
  x.assign(static_cast<std::size_t>(Unknowns(heights)), 0.0);
  if (heights) {
    x[0] = up / count;
    return count >= static_cast<double>(options_.heights);
  }
  if (!(d2 > 0) || a * a + b * b == 0) return false;
  x[0] = localPivot_[0];
  x[1] = localPivot_[1];
  const double s = Hypot(a, b) / d2, theta = Atan2(b, a);
  switch (options_.model) {
    case SiteModel::rigid:
      x[2] = theta;
      break;
    case SiteModel::affine:
      x[2] = x[5] = a / d2;
      x[3] = -b / d2;
      x[4] = b / d2;
      break;
    case SiteModel::spatial:
      x[2] = localPivot_[2];
      x[3] = s;
      x[4] = theta;
      break;
    default:
      x[2] = s;
      x[3] = theta;
  }
  return true;
}

// The point with these parameters: its residuals, covariance and weights. False for what has no
// weight.
bool SiteAdjustment::Weigh(bool heights, const std::vector<double>& x, Block& block) const {
  const AdjustmentPoint& p = points_[block.point];
  block.at = Compute(heights, x, p.grid);
  Matrix3 grid, local;
  std::copy_n(&p.gridCovariance[0][0], 9, &grid.m[0][0]);
  std::copy_n(&p.localCovariance[0][0], 9, &local.m[0][0]);
  const Matrix3 carried = block.at.byGrid * grid * block.at.byGrid.Transposed();
  Matrix3 C = Matrix3::Identity();
  for (int r = 0; r < block.size; ++r) {
    const int i = block.first + r;
    block.v[r] = p.local[i] - block.at.local[i];
    for (int c = 0; c < block.size; ++c) {
      const int k = block.first + c;
      if (weighted_[heights]) C.m[r][c] = local.m[i][k] + carried.m[i][k];
      block.C[r][c] = C.m[r][c];
    }
  }
  const Matrix3 inverse = C.Inverse();
  for (int r = 0; r < block.size; ++r) {
    if (!(C.m[r][r] > 0 && inverse.m[r][r] > 0) || !std::isfinite(inverse.m[r][r])) return false;
    for (int c = 0; c < block.size; ++c)
      block.P[r][c] = inverse.m[r][c] * std::sqrt(block.weight[r] * block.weight[c]);
  }
  return true;
}

bool SiteAdjustment::Prepare() {
  constexpr double kAsymmetry = 1e-9;
  double count = 0;
  for (const AdjustmentPoint& p : points_) {
    for (const auto* C : {&p.gridCovariance, &p.localCovariance})
      for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
          const double size = std::sqrt((*C)[r][r] * (*C)[c][c]);
          if (!(std::abs((*C)[r][c] - (*C)[c][r]) <= kAsymmetry * size)) return false;
          if (!(std::abs((*C)[r][c]) <= size * (1 + kAsymmetry)) || !std::isfinite(size))
            return false;
          const bool ofHeight = options_.model != SiteModel::spatial && r == 2 && c == 2;
          weighted_[ofHeight] |= (*C)[r][c] != 0;
        }
    const bool plane = p.usePlane, height = p.useHeight;
    for (int i = 0; i < 3; ++i) {
      // Inclined planes and positions need a place in the grid, heights one in height.
      const bool used = i < 2 ? plane || height : height;
      if (used && !std::isfinite(p.grid[i])) return false;
      if ((i < 2 ? plane : height) && !std::isfinite(p.local[i])) return false;
    }
    if (!Takes(p, false) && !Takes(p, true)) continue;
    ++count;
    for (int i = 0; i < 3; ++i) {
      const bool known = i < 2 || height;
      if (known) pivot_[i] += (p.grid[i] - pivot_[i]) / count;
    }
  }
  double positions = 0;
  for (const AdjustmentPoint& p : points_) {
    if (!Takes(p, false)) continue;
    ++positions;
    for (int i = 0; i < 3; ++i)
      if (i < 2 || p.useHeight) localPivot_[i] += (p.local[i] - localPivot_[i]) / positions;
  }
  for (const double sigma : options_.common)
    if (!(sigma >= 0 && std::isfinite(sigma))) return false;
  coordinates_.assign(3 * points_.size(), {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN});
  return count > 0;
}

// Gauss-Newton: normal equations of the linearised model until the parameters rest.
bool SiteAdjustment::Run(bool heights) {
  const auto u = static_cast<std::size_t>(Unknowns(heights));
  if (u == 0) return true;
  AdjustmentPart& part = parts_[heights];
  System& system = systems_[heights];
  std::vector<Block> blocks;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    if (!Takes(points_[i], heights)) continue;
    Block block{};
    block.point = i;
    block.first = heights ? 2 : 0;
    block.size = heights ? 1 : options_.model == SiteModel::spatial ? 3 : 2;
    std::fill_n(block.weight, 3, 1.0);
    blocks.push_back(block);
    part.observations += block.size;
  }
  part.unknowns = static_cast<int>(u);
  if (part.Freedom() < 0 || !Start(heights, system.parameters)) return false;

  const int rounds = options_.robust ? kMaxRounds + kRobustRounds : kMaxRounds;
  for (int round = 0; round < rounds; ++round) {
    std::vector<double> normal(u * u, 0.0), right(u, 0.0), length(u, 0.0);
    for (Block& block : blocks) {
      if (!Weigh(heights, system.parameters, block)) return false;
      for (int r = 0; r < block.size; ++r)
        for (int c = 0; c < block.size; ++c)
          for (std::size_t i = 0; i < u; ++i) {
            const double half = block.Row(r)[i] * block.P[r][c];
            right[i] += half * block.v[c];
            for (std::size_t k = 0; k < u; ++k) normal[i * u + k] += half * block.Row(c)[k];
          }
    }
    for (std::size_t i = 0; i < u; ++i) length[i] = std::sqrt(normal[i * u + i]);
    system.cofactors = normal;
    if (!Invert(system.cofactors, u)) return false;
    double change = 0, size = 0;
    for (std::size_t i = 0; i < u; ++i) {
      double step = 0;
      for (std::size_t k = 0; k < u; ++k) step += system.cofactors[i * u + k] * right[k];
      system.parameters[i] += step;
      change = std::max(change, std::abs(step) * length[i]);
      size = std::max(size, std::abs(system.parameters[i]) * length[i]);
    }
    if (!std::isfinite(change)) return false;
    const bool settled = change <= kSettled * size || (round > 3 && change <= 1e-9 * size);
    if (settled && (!options_.robust || round >= kRobustRounds)) break;
    if (options_.robust && round > 0) {
      for (Block& block : blocks) Weigh(heights, system.parameters, block);
      Reweigh(heights, blocks);
    }
  }
  for (Block& block : blocks)
    if (!Weigh(heights, system.parameters, block)) return false;
  Judge(heights, blocks);
  return true;
}

// Weights of IGG-III: 1 up to 1.5 standard deviations, falling to 0 at 3. The standard deviation is the
// median of the standardised residuals over 0.6745, which half of the observations cannot spoil.
void SiteAdjustment::Reweigh(bool heights, std::vector<Block>& blocks) const {
  constexpr double k0 = 1.5, k1 = 3, kMedianOfNormal = 0.6745;
  const std::size_t u = systems_[heights].parameters.size();
  const std::vector<double>& Q = systems_[heights].cofactors;
  std::vector<double> sizes;
  const auto size = [&](const Block& block, int r) {
    double q = block.C[r][r];
    for (std::size_t i = 0; i < u; ++i)
      for (std::size_t k = 0; k < u; ++k) q -= block.Row(r)[i] * Q[i * u + k] * block.Row(r)[k];
    return std::abs(block.v[r]) / std::sqrt(std::max(q, kNoRedundancy * block.C[r][r]));
  };
  for (const Block& block : blocks)
    for (int r = 0; r < block.size; ++r) sizes.push_back(size(block, r));
  std::vector<double> sorted = sizes;
  const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
  std::nth_element(sorted.begin(), middle, sorted.end());
  const double sigma = options_.sigmaKnown ? 1 : *middle / kMedianOfNormal;
  std::size_t next = 0;
  for (Block& block : blocks)
    for (int r = 0; r < block.size; ++r) {
      const double w = sizes[next++] / sigma, rest = (k1 - w) / (k1 - k0);
      block.weight[r] = !(w > k0) ? 1 : w >= k1 ? 1e-6 : std::max(1e-6, k0 / w * rest * rest);
    }
}

// Redundancy numbers are the diagonal of R = Qvv·P, by blocks Qvv = C − A·Qxx·Aᵀ. With correlated
// coordinates of a point the statistic of one is e·P·v over the root of e·P·Qvv·P·e.
void SiteAdjustment::Judge(bool heights, const std::vector<Block>& blocks) {
  AdjustmentPart& part = parts_[heights];
  const auto& Q = systems_[heights].cofactors;
  const std::size_t u = systems_[heights].parameters.size();
  for (const Block& block : blocks)
    for (int r = 0; r < block.size; ++r)
      for (int c = 0; c < block.size; ++c)
        part.sumOfSquares += block.v[r] * block.P[r][c] * block.v[c];
  const double s0 = std::sqrt(part.Variance());
  const double sigma = options_.sigmaKnown ? 1 : s0;

  for (const Block& block : blocks) {
    Matrix3 P{}, Qv{}, own = Matrix3::Identity();
    for (int r = 0; r < block.size; ++r)
      for (int c = 0; c < block.size; ++c) {
        P.m[r][c] = block.P[r][c];
        Qv.m[r][c] = block.C[r][c];
        for (std::size_t i = 0; i < u; ++i)
          for (std::size_t k = 0; k < u; ++k)
            Qv.m[r][c] -= block.Row(r)[i] * Q[i * u + k] * block.Row(c)[k];
      }
    const Matrix3 R = Qv * P, PR = P * R;
    for (int r = 0; r < block.size; ++r)
      for (int c = 0; c < block.size; ++c) own.m[r][c] = R.m[r][c];
    const Matrix3 without = own.Inverse();
    for (int r = 0; r < block.size; ++r) {
      AdjustedCoordinate& at =
          coordinates_[3 * block.point + static_cast<std::size_t>(block.first + r)];
      double g = 0;
      for (int c = 0; c < block.size; ++c) g += block.P[r][c] * block.v[c];
      const bool controlled = R.m[r][r] > kNoRedundancy && part.Freedom() > 0;
      const double root = std::sqrt(PR.m[r][r]);
      at.residual = block.v[r];
      at.redundancy = controlled ? R.m[r][r] : 0;
      at.weight = block.weight[r];
      at.standardised = controlled && s0 > 0 ? g / (s0 * root) : kNaN;
      at.normalised = controlled ? g / root : kNaN;
      at.detectable =
          controlled ? kNonCentrality * sigma / root : std::numeric_limits<double>::infinity();
      at.predicted = 0;
      for (int c = 0; c < block.size; ++c) at.predicted += without.m[r][c] * block.v[c];
      if (!controlled || !std::isfinite(at.predicted)) at.predicted = kNaN;

      double shift[7] = {};  // of the parameters: Qxx·Aᵀ·P·e times the error
      for (std::size_t i = 0; i < u; ++i)
        for (std::size_t k = 0; k < u; ++k)
          for (int c = 0; c < block.size; ++c)
            shift[i] += Q[i * u + k] * block.Row(c)[k] * block.P[c][r] * at.detectable;
      at.effect = controlled ? 0 : at.detectable;
      if (!controlled) continue;
      for (const Block& other : blocks) {
        double moved = 0;
        for (int c = 0; c < other.size; ++c) {
          double one = 0;
          for (std::size_t i = 0; i < u; ++i) one += other.Row(c)[i] * shift[i];
          moved = Hypot(moved, one);
        }
        at.effect = std::max(at.effect, moved);
      }
    }
  }
}

std::optional<SiteAdjustment> SiteAdjustment::Solve(std::vector<AdjustmentPoint> points,
                                                    const AdjustmentOptions& options) {
  SiteAdjustment made(std::move(points), options);
  if (made.Unknowns(false) + made.Unknowns(true) == 0) return {};
  if (!made.Prepare() || !made.Run(false) || !made.Run(true)) return {};
  return made;
}

double SiteAdjustment::UnitVariance(bool heights) const {
  return options_.sigmaKnown ? 1 : parts_[heights].Variance();
}

double SiteAdjustment::Deviation(std::size_t parameter) const {
  const std::size_t u = Parameters().size();
  if (parameter >= u) return kNaN;
  const bool shift = parameter < (options_.model == SiteModel::spatial ? 3U : 2U);
  const double common = shift ? options_.common[parameter] : 0;
  return std::sqrt(UnitVariance(false) * systems_[0].cofactors[parameter * (u + 1)] +
                   common * common);
}

double SiteAdjustment::HeightDeviation(std::size_t parameter) const {
  const std::size_t u = HeightParameters().size();
  if (parameter >= u) return kNaN;
  const double common = parameter == 0 ? options_.common[2] : 0;
  return std::sqrt(UnitVariance(true) * systems_[1].cofactors[parameter * (u + 1)] +
                   common * common);
}

SitePrediction SiteAdjustment::Predict(const double (&grid)[3], double probability,
                                       double observed) const {
  SitePrediction found;
  std::fill_n(found.local, 3, kNaN);
  std::fill_n(found.halfWidth, 3, kNaN);
  std::fill_n(&found.covariance[0][0], 9, kNaN);
  found.radius = kNaN;
  double freedom[3] = {};
  for (const bool heights : {false, true}) {
    const System& system = systems_[heights];
    const std::size_t u = system.parameters.size();
    if (u == 0) continue;
    const Computed at = Compute(heights, system.parameters, grid);
    const int first = heights ? 2 : 0;
    const int last = heights || options_.model == SiteModel::spatial ? 3 : 2;
    const double variance = UnitVariance(heights);
    for (int r = first; r < last; ++r) {
      found.local[r] = at.local[r];
      for (int c = first; c < last; ++c) {
        double q = r == c ? observed * observed : 0;
        for (std::size_t i = 0; i < u; ++i)
          for (std::size_t k = 0; k < u; ++k)
            q += at.byParameter[r][i] * system.cofactors[i * u + k] * at.byParameter[c][k];
        const double common = r == c ? options_.common[r] * options_.common[r] : 0;
        found.covariance[r][c] = variance * q + common;
        if (r != c) continue;
        const double share = found.covariance[r][r] / (variance * q);
        freedom[r] = parts_[heights].Freedom() * share * share;
      }
      for (int c = 0; c < 3; ++c)
        if ((c < first || c >= last) && std::isnan(found.covariance[r][c]))
          found.covariance[r][c] = found.covariance[c][r] = 0;
      const double p = 0.5 + probability / 2;
      const double factor =
          options_.sigmaKnown ? NormalQuantile(p) : StudentQuantile(p, freedom[r]);
      found.halfWidth[r] = factor * std::sqrt(found.covariance[r][r]);
    }
  }
  if (Parameters().empty()) return found;
  const auto& C = found.covariance;
  const double half = (C[0][0] - C[1][1]) / 2;
  const double major = (C[0][0] + C[1][1]) / 2 + Hypot(half, C[0][1]);
  const double least = std::min(freedom[0], freedom[1]);
  const double squared = options_.sigmaKnown ? ChiSquareQuantile(probability, 2)
                                             : 2 * FisherQuantile(probability, 2, least);
  found.radius = std::sqrt(major * squared);
  return found;
}

double SiteAdjustment::Critical(double alpha, bool heights) const {
  const AdjustmentPart& part = parts_[heights];
  if (options_.sigmaKnown) return NormalQuantile(1 - alpha / 2);
  return TauCritical(alpha, part.observations, part.Freedom());
}

double SiteAdjustment::FitProbability(bool heights) const {
  const AdjustmentPart& part = parts_[heights];
  if (!options_.sigmaKnown || part.Freedom() < 1) return kNaN;
  return 1 - ChiSquareProbability(part.sumOfSquares, part.Freedom());
}

std::vector<ModelComparison> SiteAdjustment::CompareModels() const {
  std::vector<ModelComparison> found;
  AdjustmentOptions options = options_;
  options.heights = HeightModel::none;
  options.robust = false;
  std::optional<AdjustmentPart> before;
  SiteModel smaller = SiteModel::none;
  for (const SiteModel model : {SiteModel::rigid, SiteModel::similarity, SiteModel::affine}) {
    options.model = model;
    const auto solved = Solve(points_, options);
    if (!solved) break;
    const AdjustmentPart part = solved->Positions();
    if (before && part.Freedom() > 0) {
      const double more = before->Freedom() - part.Freedom();
      const double ratio = (before->sumOfSquares - part.sumOfSquares) / more / part.Variance();
      found.push_back({smaller, model, ratio, 1 - FisherProbability(ratio, more, part.Freedom())});
    }
    before = part;
    smaller = model;
  }
  return found;
}

bool SiteAdjustment::Apply(LocalToGrid& site) const {
  const bool fixed = options_.model == SiteModel::rigid;
  const bool plane = fixed || options_.model == SiteModel::similarity;
  if (!plane && options_.model != SiteModel::none) return false;
  site.mode = LocalToGrid::kNotSetUp;
  if (plane) {
    const auto& x = Parameters();
    const double s = fixed ? 1 : x[2], theta = x.back();
    const auto turned = PlaneRotation(theta).Turn(pivot_[0], pivot_[1]);
    site.SetPlaneParam(x[0] - s * turned.n, 0, 0);
    site.SetPlaneParam(x[1] - s * turned.e, 1, 0);
    site.SetPlaneParam(s, 2, 0);
    site.SetPlaneParam(theta, 3, 0);
    site.mode |= LocalToGrid::kHorizontal;
  }
  if (const auto& x = HeightParameters(); !x.empty()) {
    const double aN = x.size() == 3 ? x[1] : 0, aE = x.size() == 3 ? x[2] : 0;
    site.SetHeightParam(x[0] - aN * pivot_[0] - aE * pivot_[1], 0, 0);
    site.SetHeightParam(aN, 1, 0);
    site.SetHeightParam(aE, 2, 0);
    site.mode |= LocalToGrid::kVertical;
  }
  return true;
}

bool SiteAdjustment::Covariance(SiteCovariance& covariance) const {
  const bool fixed = options_.model == SiteModel::rigid;
  const bool plane = fixed || options_.model == SiteModel::similarity;
  if (!plane && options_.model != SiteModel::none) return false;
  covariance = {};
  covariance.pivotN = pivot_[0];
  covariance.pivotE = pivot_[1];
  const std::size_t u = Parameters().size(), h = HeightParameters().size();
  const auto place = [&](std::size_t i) { return fixed && i == 2 ? 3U : i; };  // past the scale
  for (std::size_t r = 0; r < u; ++r)
    for (std::size_t c = 0; c < u; ++c)
      covariance.ofPlane[place(r)][place(c)] =
          UnitVariance(false) * systems_[0].cofactors[r * u + c];
  for (std::size_t r = 0; r < h; ++r)
    for (std::size_t c = 0; c < h; ++c)
      covariance.ofHeight[r][c] = UnitVariance(true) * systems_[1].cofactors[r * h + c];
  for (std::size_t i = 0; i < 2 && u > 0; ++i)
    covariance.ofPlane[i][i] += options_.common[i] * options_.common[i];
  if (h > 0) covariance.ofHeight[0][0] += options_.common[2] * options_.common[2];
  return true;
}

}  // namespace zel_cs::geomath
