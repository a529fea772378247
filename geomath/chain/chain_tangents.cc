#include "geomath/chain/chain_tangents.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/base/tangent_formulas.h"
#include "geomath/chain/covariance_formulas.h"
#include "geomath/local/plane_rotation.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

TangentFrame FrameAt(const Ellipsoid& ell, double b, double l, double h) {
  return TangentFrame::At<simd::Scalar>(ell.a, ell.e2, b, l, h);
}

}  // namespace

// A conversion of the derivatives that depends on the positions.
template <class Conversion>
void ChainTangents::RunAt(const Conversion& conversion, Points geographic, std::size_t count) {
  double* position[3];  // which stay
  for (int c = 0; c < 3; ++c) position[c] = const_cast<double*>(geographic[c]);
  auto& t = tangent_;
  RunKernel(
      conversion,
      {position[0], position[1], position[2], t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]},
      count, [&](double(&p)[12]) {
        conversion.template Convert<simd::Scalar>(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7],
                                                  p[8], p[9], p[10], p[11]);
      });
}

Matrix3 ChainTangents::At(std::size_t i) const {
  const auto& t = tangent_;
  if (level_) return {{{t[0][i], t[1][i], 0}, {t[3][i], t[4][i], 0}, {0, 0, 1}}};
  Matrix3 tangent;
  for (int k = 0; k < 9; ++k) tangent.m[k / 3][k % 3] = t[k][i];
  return tangent;
}

Matrix3 ChainTangents::Added(std::size_t i) const {
  if (!adds_) return {};
  const auto& a = added_;
  return Symmetric3{a[0][i], a[1][i], a[2][i], a[3][i], a[4][i], a[5][i]}.Full();
}

const Ellipsoid* ChainTangents::GlobalEllipsoid() const {
  if (chain_.GetGlobalEllipsoid() || chain_.GetDatum()) return chain_.GetGlobalEllipsoid();
  return chain_.GetProjection() ? &chain_.GetProjection()->GetEllipsoid() : nullptr;
}

const Ellipsoid* ChainTangents::LocalEllipsoid() const {
  return chain_.GetDatum() ? chain_.GetDatum()->GetEllipsoid() : GlobalEllipsoid();
}

void ChainTangents::Start(Points geographic, std::size_t count) {
  std::fill_n(failed_, count, ChainStep::none);
  std::copy_n(geographic[2], count, ellipsoidal_);
  ellipsoid_ = GlobalEllipsoid();
  inMetres_ = global_ == CovarianceFrame::northEastUp && ellipsoid_;
  if (inMetres_) return;
  SetIdentity(count);
  if (global_ == CovarianceFrame::geographic) return;
  if (!ellipsoid_) return FailAll(ChainStep::globalEllipsoid, count);
  RunAt(TangentToGeographic(*ellipsoid_), geographic, count);
}

void ChainTangents::SetIdentity(std::size_t count) {
  for (int k = 0; k < 9; ++k) std::fill_n(tangent_[k], count, k % 4 == 0 ? 1.0 : 0.0);
}

// Writes what the heights add to derivatives that leave them alone.
void ChainTangents::Raise(std::size_t count) {
  if (!level_) return;
  level_ = false;
  for (const int k : {2, 5, 6, 7}) std::fill_n(tangent_[k], count, 0.0);
  std::fill_n(tangent_[8], count, 1.0);
}

// Behind the projection; `level` for a matrix that leaves heights alone.
void ChainTangents::Times(const Matrix3& matrix, bool level, std::size_t count) {
  auto& t = tangent_;
  const auto& m = matrix.m;
  if (level_ && level) {
    const TimesLevel times{m[0][0], m[0][1], m[1][0], m[1][1]};
    return RunKernel(times, {t[0], t[1], t[3], t[4]}, count);
  }
  Raise(count);
  RunKernel(TimesTangent{matrix}, {t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]}, count);
}

// Writes the derivatives that are still those of metres at the geographic positions.
void ChainTangents::Settle(Points geographic, std::size_t count) {
  if (!inMetres_) return;
  inMetres_ = false;
  SetIdentity(count);
  double position[2][kBatchBlock];
  std::copy_n(geographic[0], count, position[0]);
  std::copy_n(ellipsoidal_, count, position[1]);
  const RadiansPerMetre conversion(*ellipsoid_);
  RunKernel(conversion, {position[0], position[1], tangent_[0], tangent_[4]}, count,
            [&](double(&p)[4]) { conversion.Convert<simd::Scalar>(p[0], p[1], p[2], p[3]); });
}

void ChainTangents::ToGeocentric(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) {
  if (inMetres_)
    RunAt(MetresToGeocentric(), geographic, count);
  else
    RunAt(TangentToGeocentric(ellipsoid), geographic, count);
  inMetres_ = false;
}

void ChainTangents::ToGeographic(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) {
  ellipsoid_ = &ellipsoid;
  RunAt(TangentToGeographic(ellipsoid), geographic, count);
}

void ChainTangents::Transform(const Datum& datum, Points local, std::size_t count) {
  TimesTangent times;
  datum.ToLocalDerivatives(times.matrix.m);
  auto& t = tangent_;
  RunKernel(times, {t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]}, count);
  AddDatumNoise(datum, local, count);
}

// With local = R·(W − T)/(1 + s) and R = Rx·Ry·Rz, every rotation turns the result about an axis of its
// own: ∂local/∂r = w × local with w = ex, Rx·ey and Rx·Ry·ez.
void ChainTangents::AddDatumNoise(const Datum& datum, Points local, std::size_t count) {
  const auto& sigma = uncertainty_.datumSigma_;
  if (sigma) {
    const double s = *sigma;
    const Vector images[] = {{s, 0, 0}, {0, s, 0}, {0, 0, s}};
    for (std::size_t i = 0; i < count; ++i) AddNoise(i, images, 3, uncertainty_.datumExtent_);
  }
  if (!uncertainty_.datum_) return;
  const double x = datum.Rotation()[0] * kRadPerArcSecond;
  const double y = datum.Rotation()[1] * kRadPerArcSecond, q = 1 + datum.Scale();
  const double turns[3][3] = {
      {1, 0, 0}, {0, Cos(x), Sin(x)}, {Sin(y), -Sin(x) * Cos(y), Cos(x) * Cos(y)}};
  Matrix3 matrix;
  datum.ToLocalDerivatives(matrix.m);
  for (std::size_t i = 0; i < count; ++i) {
    const double p[] = {local[0][i], local[1][i], local[2][i]};
    double byParameter[7][3];
    for (int c = 0; c < 3; ++c) {
      for (int k = 0; k < 3; ++k) byParameter[k][c] = -matrix.m[c][k];
      byParameter[6][c] = -p[c] / q;
    }
    for (int k = 0; k < 3; ++k) {
      const double(&w)[3] = turns[k];
      for (int c = 0; c < 3; ++c) {
        const int d = (c + 1) % 3, e = (c + 2) % 3;
        byParameter[3 + k][c] = (w[d] * p[e] - w[e] * p[d]) * kRadPerArcSecond;
      }
    }
    Vector images[7] = {};
    for (int k = 0; k < 7; ++k)
      for (int parameter = 0; parameter < 7; ++parameter)
        for (std::size_t c = 0; c < 3; ++c)
          images[k][c] += byParameter[parameter][c] * uncertainty_.datum_->factor[parameter][k];
    AddNoise(i, images, 7, uncertainty_.datum_->extent);
  }
}

void ChainTangents::ShiftDerivatives(const ChainShift& step, Points before, Points after,
                                     std::size_t count, ChainStep place, Jacobians& found) {
  Points source = step.direction == ShiftDirection::forward ? before : after;
  const PointDates dates = std::isnan(step.date) ? dates_ : PointDates(step.date);
  ShiftStatus status[kBatchBlock];
  step.shift->ForwardDerivativesBatch(
      dates, source[0], source[1], source[2],
      {found[0], found[1], found[2], found[3], found[4], found[5], found[6], found[7], found[8]},
      count, status);
  const bool stays = step.outside == ShiftOutside::unchanged;
  for (std::size_t i = 0; i < count; ++i) {
    if (status[i] == ShiftStatus::converted) continue;
    const bool beyond = status[i] == ShiftStatus::outside || status[i] == ShiftStatus::extrapolated;
    if (!(beyond && stays) && HasResult(status[i])) continue;
    for (int k = 0; k < 9; ++k) found[k][i] = k % 4 == 0 ? 1 : 0;
    if (!(beyond && stays)) Fail(i, place);
  }
}

void ChainTangents::ShiftDeviations(const ChainUncertainty::ShiftNoise* noise,
                                    const ChainShift& step, Points before, Points after,
                                    std::size_t i, ChainStep place, double (&sigma)[3]) {
  std::copy_n(noise->sigma, 3, sigma);
  if (noise->nodes) {
    Points source = step.direction == ShiftDirection::forward ? before : after;
    double found[3] = {};
    if (!noise->nodes->Accuracy(source[0][i], source[1][i], found)) {
      if (step.outside != ShiftOutside::unchanged) Fail(i, place);
      return;
    }
    const bool vertical = noise->nodes->Components() == ShiftComponents::vertical;
    sigma[0] = vertical ? 0 : found[0] * noise->units[0];
    sigma[1] = vertical ? 0 : found[1] * noise->units[0];
    sigma[2] = found[vertical ? 0 : 2] * noise->units[1];
    // Files state −1 where an accuracy is not known.
    if (!(sigma[0] >= 0 && sigma[1] >= 0 && sigma[2] >= 0)) return Fail(i, place);
  }
  if (step.shift->Space() == ShiftSpace::geographic && (sigma[0] != 0 || sigma[1] != 0)) {
    if (!ellipsoid_) return Fail(i, ChainStep::globalEllipsoid);
    const TangentFrame frame = FrameAt(*ellipsoid_, after[0][i], after[1][i], after[2][i]);
    sigma[0] /= frame.perLatitude;
    sigma[1] /= frame.perLongitude;
  }
}

const ChainUncertainty::ShiftNoise* ChainTangents::NoiseOf(const ChainShift& step) const {
  const auto& shifts = uncertainty_.shifts_;
  const auto noise = std::find_if(shifts.begin(), shifts.end(),
                                  [&](const auto& n) { return n.shift == step.shift; });
  return noise == shifts.end() ? nullptr : &*noise;
}

void ChainTangents::Shift(const ChainShift& step, ChainStep place, Points before, Points after,
                          std::size_t count) {
  if (step.shift->Space() == ShiftSpace::geographic) Settle(before, count);
  Raise(count);
  const ChainUncertainty::ShiftNoise* const noise = NoiseOf(step);
  Jacobians j;
  ShiftDerivatives(step, before, after, count, place, j);
  auto& t = tangent_;
  const auto run = [&](const auto& times) {
    RunKernel(times,
              {j[0], j[1], j[2], j[3], j[4], j[5], j[6], j[7], j[8], t[0], t[1], t[2], t[3], t[4],
               t[5], t[6], t[7], t[8]},
              count);
  };
  if (step.direction == ShiftDirection::forward)
    run(TimesEach<false>());
  else
    run(TimesEach<true>());
  for (std::size_t i = 0; noise && i < count; ++i) {
    double sigma[3];
    ShiftDeviations(noise, step, before, after, i, place, sigma);
    const Vector images[] = {{sigma[0], 0, 0}, {0, sigma[1], 0}, {0, 0, sigma[2]}};
    AddNoise(i, images, 3, noise->extent);
  }
}

void ChainTangents::LowerByGeoid(Points geographic, const double* perLatitude,
                                 const double* perLongitude, std::size_t count) {
  Settle(geographic, count);
  for (std::size_t i = 0; i < count; ++i)
    if (!std::isfinite(perLatitude[i] + perLongitude[i])) Fail(i, ChainStep::geoid);
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t i = 0; i < count; ++i)
      heights_[c][i] = tangent_[6 + c][i] - perLatitude[i] * tangent_[c][i] -
                       perLongitude[i] * tangent_[3 + c][i];
  Part();
  if (!uncertainty_.geoid_) return;
  const auto& noise = *uncertainty_.geoid_;
  double sigma[kBatchBlock];
  std::fill_n(sigma, count, noise.sigma);
  if (noise.sigmas) noise.sigmas->Heights(geographic[0], geographic[1], sigma, count);
  for (std::size_t i = 0; i < count; ++i) {
    if (!(sigma[i] >= 0)) Fail(i, ChainStep::geoid);
    AddHeightNoise(i, sigma[i], noise.extent);
  }
}

void ChainTangents::LowerByShift(const ChainShift& step, Points before, Points after,
                                 std::size_t count) {
  Settle(before, count);
  if (!apart_)
    for (std::size_t c = 0; c < 3; ++c) std::copy_n(tangent_[6 + c], count, heights_[c]);
  Part();
  const ChainUncertainty::ShiftNoise* const noise = NoiseOf(step);
  Jacobians j;
  ShiftDerivatives(step, before, after, count, ChainStep::verticalShift, j);
  auto& t = tangent_;
  const auto run = [&](const auto& lower) {
    for (int c = 0; c < 3; ++c)
      RunKernel(lower, {j[6], j[7], j[8], t[c], t[3 + c], heights_[c]}, count);
  };
  if (step.direction == ShiftDirection::forward)
    run(LowerHeight<false>());
  else
    run(LowerHeight<true>());
  for (std::size_t i = 0; noise && i < count; ++i) {
    double sigma[3];
    ShiftDeviations(noise, step, before, after, i, ChainStep::verticalShift, sigma);
    AddHeightNoise(i, sigma[2], noise->extent);
  }
}

// From here on heights are on their own.
void ChainTangents::Part() {
  if (apart_) return;
  apart_ = true;
  if (common_) firstApart_ = common_->size();
  std::fill_n(heightVariance_, kBatchBlock, 0.0);
  for (auto& column : apartAdded_) std::fill_n(column, kBatchBlock, 0.0);
}

// Errors of positions behind the parting have no effect on heights, those of heights none on positions.
// With the derivatives T of positions and T' of the positions with these heights, an error v of the
// global position of the first kind is one of T'⁻¹·diag(1, 1, 0)·T·v, a height's one of T'⁻¹·e3.
void ChainTangents::Arrive(Points geographic, std::size_t count) {
  if (!chain_.GetProjection()) Settle(geographic, count);
  std::copy_n(geographic[2], count, ellipsoidal_);
  if (!apart_) return;
  apart_ = false;
  for (std::size_t i = 0; i < count; ++i) {
    Matrix3 ofPositions = At(i);
    for (std::size_t c = 0; c < 3; ++c) {
      ofPositions.m[2][c] = 0;
      tangent_[6 + c][i] = heights_[c][i];
    }
    if (!adds_) continue;
    const Matrix3 back = At(i).Inverse(), through = back * ofPositions;
    const Vector up{back.m[0][2], back.m[1][2], back.m[2][2]};
    const auto& a = apartAdded_;
    const Symmetric3 moved =
        Symmetric3{a[0][i], a[1][i], a[2][i], a[3][i], a[4][i], a[5][i]}.Through(through);
    const double variance = heightVariance_[i];
    added_[0][i] += moved.xx + variance * up[0] * up[0];
    added_[1][i] += moved.xy + variance * up[0] * up[1];
    added_[2][i] += moved.xz + variance * up[0] * up[2];
    added_[3][i] += moved.yy + variance * up[1] * up[1];
    added_[4][i] += moved.yz + variance * up[1] * up[2];
    added_[5][i] += moved.zz + variance * up[2] * up[2];
    if (!common_) continue;
    for (std::size_t k = firstApart_; k < common_->size(); ++k) {
      Vector& v = (*common_)[k];
      const bool ofHeight = std::isnan(v[0]);  // as AddHeightNoise marks it
      const Vector given = v;
      for (std::size_t r = 0; r < 3; ++r)
        v[r] = ofHeight ? up[r] * given[2]
                        : through.m[r][0] * given[0] + through.m[r][1] * given[1] +
                              through.m[r][2] * given[2];
    }
  }
}

// From metres at the positions to the grid, heights are left alone.
void ChainTangents::Project(const TGeoProj& projection, Points geographic, std::size_t count) {
  double columns[4][kBatchBlock];
  auto& t = tangent_;
  double* const d[] = {inMetres_ ? t[0] : columns[0], inMetres_ ? t[3] : columns[1],
                       inMetres_ ? t[1] : columns[2], inMetres_ ? t[4] : columns[3]};
  for (int c = 0; c < 2; ++c) std::copy_n(geographic[c], count, d[c]);
  if (projection.ForwardDerivativesBatch(d[0], d[1], d[2], d[3], count) < count)
    for (std::size_t i = 0; i < count; ++i)
      if (std::isnan(d[0][i])) Fail(i, ChainStep::projection);
  if (!inMetres_) {
    RunKernel(ProjectTangent(), {d[0], d[1], d[2], d[3], t[0], t[1], t[2], t[3], t[4], t[5]},
              count);
    return;
  }
  inMetres_ = false;
  level_ = true;
  const GridPerMetre conversion(*ellipsoid_);
  RunKernel(
      conversion, {const_cast<double*>(geographic[0]), ellipsoidal_, d[0], d[1], d[2], d[3]}, count,
      [&](double(&p)[6]) { conversion.Convert<simd::Scalar>(p[0], p[1], p[2], p[3], p[4], p[5]); });
}

void ChainTangents::ToSite(const LocalToGrid& site, Points grid, std::size_t count) {
  Matrix3 matrix = Matrix3::Identity();
  auto& m = matrix.m;
  const double s = site.GetPlaneParam(2, 0), theta = site.GetPlaneParam(3, 0);
  if (site.mode & LocalToGrid::kHorizontal) {
    const auto north = PlaneRotation(theta).Turn(s, 0.0), east = PlaneRotation(theta).Turn(0.0, s);
    m[0][0] = north.n;
    m[1][0] = north.e;
    m[0][1] = east.n;
    m[1][1] = east.e;
  }
  if (site.mode & LocalToGrid::kVertical) {
    m[2][0] = site.GetHeightParam(1, 0);
    m[2][1] = site.GetHeightParam(2, 0);
  }
  Times(matrix, !(site.mode & LocalToGrid::kVertical), count);
  AddSiteNoise(site, grid, count);
}

void ChainTangents::AddSiteNoise(const LocalToGrid& site, Points grid, std::size_t count) {
  if (!uncertainty_.site_) return;
  const auto& noise = *uncertainty_.site_;
  const double s = site.GetPlaneParam(2, 0);
  const PlaneRotation rotation(site.GetPlaneParam(3, 0));
  for (std::size_t i = 0; i < count; ++i) {
    const double n = grid[0][i] - noise.pivotN, e = grid[1][i] - noise.pivotE;
    const auto turned = rotation.Turn(n, e);
    Vector images[4];
    if (site.mode & LocalToGrid::kHorizontal) {
      for (int k = 0; k < 4; ++k) {
        const auto f = [&](int parameter) { return noise.plane.factor[parameter][k]; };
        images[k] = {f(0) + turned.n * f(2) - s * turned.e * f(3),
                     f(1) + turned.e * f(2) + s * turned.n * f(3), 0};
      }
      AddNoise(i, images, 4, noise.plane.extent);
    }
    if (site.mode & LocalToGrid::kVertical) {
      for (int k = 0; k < 3; ++k) {
        const auto f = [&](int parameter) { return noise.height.factor[parameter][k]; };
        images[k] = {0, 0, f(0) + n * f(1) + e * f(2)};
      }
      AddNoise(i, images, 3, noise.height.extent);
    }
  }
}

void ChainTangents::ToGround(const GridToGround& ground, std::size_t count) {
  Matrix3 matrix = Matrix3::Identity();
  auto& m = matrix.m;
  const double k = ground.EffectiveScale();
  const PlaneRotation rotation(ground.rotation);
  const auto north = rotation.Turn(k, 0.0), east = rotation.Turn(0.0, k);
  m[0][0] = north.n;
  m[1][0] = north.e;
  m[0][1] = east.n;
  m[1][1] = east.e;
  Times(matrix, true, count);
}

void ChainTangents::Finish(Points geographic, std::size_t count) {
  if (chain_.GetProjection() || local_ == CovarianceFrame::geographic) return;
  const Ellipsoid* const ellipsoid = LocalEllipsoid();
  if (!ellipsoid) return FailAll(ChainStep::globalEllipsoid, count);
  if (local_ == CovarianceFrame::geocentric)
    return RunAt(TangentToGeocentric(*ellipsoid), geographic, count);
  double at[2][kBatchBlock];
  std::copy_n(geographic[0], count, at[0]);
  std::copy_n(ellipsoidal_, count, at[1]);
  auto& t = tangent_;
  const TangentToMetres conversion(*ellipsoid);
  RunKernel(conversion, {at[0], at[1], t[0], t[1], t[2], t[3], t[4], t[5]}, count,
            [&](double(&p)[8]) {
              conversion.Convert<simd::Scalar>(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
            });
}

void ChainTangents::AddNoise(std::size_t i, const Vector* images, std::size_t count,
                             ErrorExtent extent) {
  const Matrix3 back = At(i).Inverse();
  StartAdding();
  Covariances& added = apart_ ? apartAdded_ : added_;
  for (std::size_t k = 0; k < count; ++k) {
    Vector v;
    for (std::size_t r = 0; r < 3; ++r)
      v[r] =
          back.m[r][0] * images[k][0] + back.m[r][1] * images[k][1] + back.m[r][2] * images[k][2];
    if (common_ && extent == ErrorExtent::job) {
      common_->push_back(v);
      continue;
    }
    added[0][i] += v[0] * v[0];
    added[1][i] += v[0] * v[1];
    added[2][i] += v[0] * v[2];
    added[3][i] += v[1] * v[1];
    added[4][i] += v[1] * v[2];
    added[5][i] += v[2] * v[2];
  }
}

void ChainTangents::AddHeightNoise(std::size_t i, double sigma, ErrorExtent extent) {
  StartAdding();
  if (common_ && extent == ErrorExtent::job)
    common_->push_back({std::numeric_limits<double>::quiet_NaN(), 0, sigma});
  else
    heightVariance_[i] += sigma * sigma;
}

void ChainTangents::StartAdding() {
  if (!adds_)
    for (auto& column : added_) std::fill_n(column, kBatchBlock, 0.0);
  adds_ = true;
}

template <bool kInverse>
void ChainTangents::PropagateBy(const Symmetric& c, std::size_t count) {
  auto& t = tangent_;
  if (level_)
    return RunKernel(PropagateLevel<kInverse>(),
                     {c[0], c[1], c[2], c[3], c[4], c[5], t[0], t[1], t[3], t[4]}, count);
  RunKernel(
      Propagate<kInverse>(),
      {c[0], c[1], c[2], c[3], c[4], c[5], t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]},
      count);
}

void ChainTangents::ToLocal(const Symmetric& c, std::size_t count) {
  if (adds_)
    for (int k = 0; k < 6; ++k)
      for (std::size_t i = 0; i < count; ++i) c[k][i] += added_[k][i];
  PropagateBy<false>(c, count);
}

void ChainTangents::ToGlobal(const Symmetric& c, std::size_t count) {
  PropagateBy<true>(c, count);
  if (!adds_) return;
  for (int k = 0; k < 6; ++k)
    for (std::size_t i = 0; i < count; ++i) c[k][i] += added_[k][i];
}

}  // namespace zel_cs::geomath
