#include "geomath/chain/chain_uncertainty.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/batch.h"
#include "geomath/chain/chain_tangents.h"
#include "geomath/chain/covariance_formulas.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kRounding = MarkCovariance::kRounding;

bool IsSigma(double sigma) { return sigma >= 0 && std::isfinite(sigma); }

bool AnyFailed(const ChainStep* failed, std::size_t count) {
  auto last = ChainStep::none;
  for (std::size_t i = 0; i < count; ++i) last = std::max(last, failed[i]);
  return last != ChainStep::none;
}

// C = F·Fᵀ with a lower triangle F (Cholesky), by way of correlations: parameters have units of all
// sizes. Directions without any error are columns of zeros. False for what is no covariance.
template <int N>
bool Factor(const double (&C)[N][N], double (&F)[N][N]) {
  double deviation[N];
  for (int i = 0; i < N; ++i) {
    if (!IsSigma(C[i][i])) return false;
    deviation[i] = std::sqrt(C[i][i]);
  }
  for (int c = 0; c < N; ++c) {
    for (int r = 0; r < N; ++r) {
      const double scale = deviation[r] * deviation[c];
      if (!(std::abs(C[r][c] - C[c][r]) <= kRounding * scale)) return false;
      double rest = scale > 0 ? C[r][c] / scale : 0;
      if (scale == 0 && C[r][c] != 0) return false;
      for (int k = 0; k < c; ++k) rest -= F[r][k] * F[c][k];
      if (r < c) {
        F[r][c] = 0;
      } else if (r == c) {
        if (rest < -kRounding) return false;
        F[c][c] = rest > kRounding ? std::sqrt(rest) : 0;
      } else if (F[c][c] > 0) {
        F[r][c] = rest / F[c][c];
      } else {
        if (std::abs(rest) > std::sqrt(kRounding)) return false;
        F[r][c] = 0;
      }
    }
  }
  for (int r = 0; r < N; ++r)
    for (int c = 0; c <= r; ++c) F[r][c] *= deviation[r];
  return true;
}

bool FactorSite(const SiteCovariance& covariance, double (&plane)[4][4], double (&height)[3][3]) {
  return std::isfinite(covariance.pivotN) && std::isfinite(covariance.pivotE) &&
         Factor(covariance.ofPlane, plane) && Factor(covariance.ofHeight, height);
}

}  // namespace

bool ChainUncertainty::SetDatum(double sigma, ErrorExtent extent) {
  if (!IsSigma(sigma)) return false;
  datumSigma_ = sigma;
  datumExtent_ = extent;
  datum_.reset();
  return true;
}

bool ChainUncertainty::SetDatum(const DatumCovariance& covariance, ErrorExtent extent) {
  Noise<7> noise{{}, extent};
  if (!Factor(covariance.of, noise.factor)) return false;
  datum_ = noise;
  datumSigma_.reset();
  return true;
}

bool ChainUncertainty::SetGeoid(double sigma, ErrorExtent extent) {
  if (!IsSigma(sigma)) return false;
  geoid_ = {sigma, nullptr, extent};
  return true;
}

void ChainUncertainty::SetGeoid(const GeoidHeight* sigmas, ErrorExtent extent) {
  geoid_.reset();
  if (sigmas) geoid_ = {0, sigmas, extent};
}

bool ChainUncertainty::IsCovariance(const SiteCovariance& covariance) {
  double plane[4][4], height[3][3];
  return FactorSite(covariance, plane, height);
}

bool ChainUncertainty::SetSite(const SiteCovariance& covariance, ErrorExtent extent) {
  SiteNoise noise{covariance.pivotN, covariance.pivotE, {{}, extent}, {{}, extent}};
  if (!FactorSite(covariance, noise.plane.factor, noise.height.factor)) return false;
  site_ = noise;
  return true;
}

void ChainUncertainty::Replace(const ShiftNoise& noise) {
  std::erase_if(shifts_, [&](const ShiftNoise& other) { return other.shift == noise.shift; });
  shifts_.push_back(noise);
}

bool ChainUncertainty::SetShift(const CoordinateShift& shift, double first, double second,
                                double third, ErrorExtent extent) {
  if (!IsSigma(first) || !IsSigma(second) || !IsSigma(third)) return false;
  Replace({&shift, {first, second, third}, nullptr, {}, extent});
  return true;
}

bool ChainUncertainty::SetShiftNodes(const ShiftGrid& grid, double horizontalUnit,
                                     double verticalUnit, ErrorExtent extent) {
  const bool units = horizontalUnit > 0 && verticalUnit > 0 && std::isfinite(horizontalUnit) &&
                     std::isfinite(verticalUnit);
  if (!units || !grid.HasAccuracies()) return false;
  Replace({&grid, {}, &grid, {horizontalUnit, verticalUnit}, extent});
  return true;
}

// Whether the chain has these sides.
bool ChainUncertainty::HasFrames(CovarianceFrame global, CovarianceFrame local) const {
  const auto known = [](CovarianceFrame frame) { return frame <= CovarianceFrame::geographic; };
  if (!known(global) || !known(local)) return false;
  if (chain_->GetProjection()) return local == CovarianceFrame::northEastUp;
  return !chain_->HasHeights() || local != CovarianceFrame::geocentric;
}

// Runs points to local, or to global, and says which have derivatives.
void ChainUncertainty::Trace(bool toLocal, double* const (&columns)[3], PointDates dates,
                             std::size_t count, ChainStep* failed, ChainTangents& tangents) const {
  const auto steps = toLocal ? &CoordinateChain::ToLocalBlock : &CoordinateChain::ToGlobalBlock;
  chain_->RunBlock(steps, columns, dates, count, failed, &tangents);
  for (std::size_t i = 0; tangents.Refuses() && i < count; ++i)
    if (failed[i] == ChainStep::none) failed[i] = tangents.FailedAt(i);
}

// One block; the way back has its derivatives where the positions end.
void ChainUncertainty::RunBlock(bool toLocal, double* const (&points)[3], double* covariances,
                                std::size_t count, ChainStep* failed, Manner manner) const {
  const CovarianceFrame global = toLocal ? manner.from : manner.to;
  const CovarianceFrame local = toLocal ? manner.to : manner.from;
  ChainTangents tangents(*this, manner.dates, global, local);
  if (!toLocal) tangents.LeaveGrid();
  if (HasFrames(global, local))
    Trace(toLocal, points, manner.dates, count, failed, tangents);
  else
    std::fill_n(failed, count, ChainStep::input);
  Carry(toLocal, covariances, count, failed, tangents);
  const bool someFailed = AnyFailed(failed, count);
  for (std::size_t i = 0; someFailed && i < count; ++i)
    if (failed[i] != ChainStep::none) points[0][i] = kNaN;
}

// The covariances of a block, a few at a time so that the first-level cache holds them beside the
// derivatives. A matrix that is none fails its point as input.
void ChainUncertainty::Carry(bool toLocal, double* covariances, std::size_t count,
                             ChainStep* failed, const ChainTangents& tangents) const {
  double m[9][kMatrixBlock], refused[kMatrixBlock];
  for (std::size_t first = 0; first < count; first += kMatrixBlock) {
    const std::size_t n = std::min(kMatrixBlock, count - first);
    double* const matrices = covariances + 9 * first;
    Separate(matrices, m, n);
    RunKernel(MarkCovariance(), {m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], refused}, n);
    const ChainTangents::Symmetric c = {m[0], m[1], m[2], m[4], m[5], m[8]};
    if (toLocal)
      tangents.ToLocal(c, first, n);
    else
      tangents.ToGlobal(c, first, n);
    for (const auto& [upper, lower] : {std::pair{1, 3}, {2, 6}, {5, 7}})
      std::copy_n(m[upper], n, m[lower]);
    const bool all = AllWithin(refused, n, 0) && !AnyFailed(failed + first, n);
    for (std::size_t i = 0; !all && i < n; ++i) {
      ChainStep& step = failed[first + i];
      if (refused[i] != 0) step = ChainStep::input;
      if (step == ChainStep::none) continue;
      for (auto& column : m) column[i] = kNaN;
    }
    Interleave(m, matrices, n);
  }
}

std::size_t ChainUncertainty::RunBatch(bool toLocal, double* x, double* y, double* h,
                                       double* covariances, std::size_t count,
                                       std::ptrdiff_t stride, ChainStep* failedAt,
                                       Manner manner) const {
  std::size_t first = 0;
  const auto convert = [&](double* const(&points)[3], std::size_t n) {
    ChainStep failed[kBatchBlock];
    const Manner block{manner.from, manner.to, manner.dates.From(first)};
    RunBlock(toLocal, points, covariances + 9 * first, n, failed, block);
    if (failedAt) std::copy_n(failed, n, failedAt + first);
    first += n;
  };
  return ConvertBlocks(convert, count, stride, x, y, h);
}

ChainResult ChainUncertainty::RunPoint(bool toLocal, double& x, double& y, double& h,
                                       double (&covariance)[3][3], Manner manner) const {
  double point[] = {x, y, h}, c[9];
  std::copy_n(&covariance[0][0], 9, c);
  ChainResult result;
  if (RunBatch(toLocal, &point[0], &point[1], &point[2], c, 1, 1, &result.failedAt, manner) == 1) {
    x = point[0];
    y = point[1];
    h = point[2];
    std::copy_n(c, 9, &covariance[0][0]);
  }
  return result;
}

ChainResult ChainUncertainty::ToLocal(double& b, double& l, double& h, double (&covariance)[3][3],
                                      CovarianceFrame from, CovarianceFrame to, double date) const {
  return RunPoint(true, b, l, h, covariance, {from, to, PointDates(date)});
}

ChainResult ChainUncertainty::ToGlobal(double& n, double& e, double& h, double (&covariance)[3][3],
                                       CovarianceFrame from, CovarianceFrame to,
                                       double date) const {
  return RunPoint(false, n, e, h, covariance, {from, to, PointDates(date)});
}

std::size_t ChainUncertainty::ToLocalBatch(double* b, double* l, double* h, double* covariances,
                                           std::size_t count, std::ptrdiff_t stride,
                                           ChainStep* failedAt, CovarianceFrame from,
                                           CovarianceFrame to, PointDates dates) const {
  return RunBatch(true, b, l, h, covariances, count, stride, failedAt, {from, to, dates});
}

std::size_t ChainUncertainty::ToGlobalBatch(double* n, double* e, double* h, double* covariances,
                                            std::size_t count, std::ptrdiff_t stride,
                                            ChainStep* failedAt, CovarianceFrame from,
                                            CovarianceFrame to, PointDates dates) const {
  return RunBatch(false, n, e, h, covariances, count, stride, failedAt, {from, to, dates});
}

ChainResult ChainUncertainty::Derivatives(double b, double l, double h, double (&jacobian)[3][3],
                                          CovarianceFrame from, CovarianceFrame to,
                                          double date) const {
  ChainResult result{ChainStep::input};
  if (!HasFrames(from, to)) return result;
  ChainTangents tangents(*this, PointDates(date), from, to);
  Trace(true, {&b, &l, &h}, PointDates(date), 1, &result.failedAt, tangents);
  const Matrix3 found = tangents.At(0);
  if (result) std::copy_n(&found.m[0][0], 9, &jacobian[0][0]);
  return result;
}

// With derivatives Jᵢ and the errors of a job as vectors gᵢ on the global side of each point, the block
// of two points is Jᵢ·(Cᵢⱼ + Σ gᵢ·gⱼᵀ)·Jⱼᵀ; one point's own errors are added on the diagonal.
ChainResult ChainUncertainty::JointToLocal(double* b, double* l, double* h, double* joint,
                                           std::size_t count, CovarianceFrame from,
                                           CovarianceFrame to, PointDates dates) const {
  ChainResult result{ChainStep::input};
  if (!HasFrames(from, to)) return result;
  struct Point {
    double at[3];
    Matrix3 tangent, own;
    std::vector<ChainTangents::Vector> common;
  };
  const std::size_t rows = 3 * count;
  std::vector<Point> points(count);
  for (std::size_t i = 0; i < count; ++i) {
    Point& p = points[i];
    p.at[0] = b[i];
    p.at[1] = l[i];
    p.at[2] = h[i];
    ChainTangents tangents(*this, dates.From(i), from, to, &p.common);
    Trace(true, {&p.at[0], &p.at[1], &p.at[2]}, dates.From(i), 1, &result.failedAt, tangents);
    if (!result) return result;
    p.tangent = tangents.At(0);
    p.own = tangents.Added(0);
    for (std::size_t k = 0; k < rows * 3; ++k)
      if (!std::isfinite(joint[3 * i * rows + k])) return {ChainStep::input};
  }
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < count; ++j) {
      Matrix3 block = i == j ? points[i].own : Matrix3{};
      for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
          block.m[r][c] += joint[(3 * i + r) * rows + 3 * j + c];
          for (std::size_t k = 0; k < points[i].common.size(); ++k)
            block.m[r][c] += points[i].common[k][r] * points[j].common[k][c];
        }
      block = points[i].tangent * block * points[j].tangent.Transposed();
      for (std::size_t r = 0; r < 3; ++r)
        std::copy_n(block.m[r], 3, joint + (3 * i + r) * rows + 3 * j);
    }
    b[i] = points[i].at[0];
    l[i] = points[i].at[1];
    h[i] = points[i].at[2];
  }
  return result;
}

}  // namespace zel_cs::geomath
