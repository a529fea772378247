#include "geomath/chain/chain_tangents.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/base/tangent_formulas.h"
#include "geomath/chain/covariance_formulas.h"
#include "geomath/local/plane_rotation.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

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

// Derivatives of latitude, and as many of longitude, between radians and metres at the positions.
template <class Factors, class... Columns>
void ChainTangents::Scale(const Ellipsoid& ellipsoid, const double* latitudes, std::size_t count,
                          Columns*... derivatives) const {
  using Conversion = ScaleTangent<Factors, sizeof...(derivatives) / 2>;
  const Conversion conversion(ellipsoid);
  const auto single = [&](double(&p)[Conversion::kColumns]) {
    [&]<std::size_t... K>(std::index_sequence<K...>) {
      conversion.template Convert<simd::Scalar>(p[K]...);
    }
    (std::make_index_sequence<Conversion::kColumns>());
  };
  RunKernel(conversion,
            {const_cast<double*>(latitudes), const_cast<double*>(ellipsoidal_), derivatives...},
            count, single);
}

Matrix3 ChainTangents::At(std::size_t i) const {
  const auto& t = tangent_;
  Matrix3 tangent = Matrix3::Identity();
  const auto take = [&](std::initializer_list<int> members) {
    for (const int k : members) tangent.m[k / 3][k % 3] = t[k][i];
  };
  if (plane_) take({0, 1, 3, 4});
  if (heights_ != Heights::level) take({6, 7, 8});
  if (heights_ == Heights::mixed) take({2, 5});
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
  inMetres_ = global_ != CovarianceFrame::geographic && ellipsoid_;
  if (global_ == CovarianceFrame::geographic) return;
  if (!ellipsoid_) return FailAll(ChainStep::globalEllipsoid, count);
  if (global_ == CovarianceFrame::northEastUp) return;
  Mix(count);
  RunAt(TurnTangent<false>(), geographic, count);
}

// Writes the derivatives of the plane, if nobody has.
void ChainTangents::WritePlane(std::size_t count) {
  if (plane_) return;
  plane_ = true;
  for (const int k : {0, 1, 3, 4}) std::fill_n(tangent_[k], count, k % 4 == 0 ? 1.0 : 0.0);
}

// Writes those of heights by the plane.
void ChainTangents::Slope(std::size_t count) {
  if (heights_ != Heights::level) return;
  heights_ = Heights::sloped;
  for (const int k : {6, 7, 8}) std::fill_n(tangent_[k], count, k == 8 ? 1.0 : 0.0);
}

// Writes all nine.
void ChainTangents::Mix(std::size_t count) {
  WritePlane(count);
  Slope(count);
  if (heights_ == Heights::mixed) return;
  heights_ = Heights::mixed;
  for (const int k : {2, 5}) std::fill_n(tangent_[k], count, 0.0);
}

// Behind the projection.
void ChainTangents::Times(const Matrix3& matrix, std::size_t count) {
  auto& t = tangent_;
  const auto& m = matrix.m;
  const PlaneTangent plane{m[0][0], m[0][1], m[1][0], m[1][1]};
  const TimesInclined inclined{plane, m[2][0], m[2][1]};
  const bool tilts = inclined.m20 != 0 || inclined.m21 != 0;
  if (heights_ == Heights::mixed)
    return RunKernel(TimesTangent{matrix}, {t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]},
                     count);
  if (!tilts) return RunKernel(TimesLevel{plane}, {t[0], t[1], t[3], t[4]}, count);
  Slope(count);
  RunKernel(inclined, {t[0], t[1], t[3], t[4], t[6], t[7]}, count);
}

// The rows of geographic positions are of latitude and longitude from here on.
void ChainTangents::ToRadians(Points geographic, std::size_t count) {
  if (!inMetres_) return;
  inMetres_ = false;
  auto& t = tangent_;
  if (!plane_) {
    WritePlane(count);
    return Scale<RadiansPerMetre>(*ellipsoid_, geographic[0], count, t[0], t[4]);
  }
  Mix(count);
  Scale<RadiansPerMetre>(*ellipsoid_, geographic[0], count, t[0], t[1], t[2], t[3], t[4], t[5]);
}

void ChainTangents::ToGeocentric(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) {
  const bool identity = inMetres_ && !plane_ && heights_ == Heights::level;
  Mix(count);
  if (identity)
    RunAt(MetresToGeocentric(), geographic, count);
  else if (inMetres_)
    RunAt(TurnTangent<true>(), geographic, count);
  else
    RunAt(TangentToGeocentric(ellipsoid), geographic, count);
}

void ChainTangents::ToGeographic(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) {
  ellipsoid_ = &ellipsoid;
  inMetres_ = true;
  std::copy_n(geographic[2], count, ellipsoidal_);
  RunAt(TurnTangent<false>(), geographic, count);
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

// Whether a step leaves heights alone, and they it.
bool ChainTangents::IsLevel(const Jacobians& j, std::size_t count) {
  for (const int k : {2, 5, 6, 7})
    if (!AllWithin(j[k], count, 0)) return false;
  return std::all_of(j[8], j[8] + count, [](double height) { return height == 1; });
}

const ChainUncertainty::ShiftNoise* ChainTangents::NoiseOf(const ChainShift& step) const {
  const auto& shifts = uncertainty_.shifts_;
  const auto noise = std::find_if(shifts.begin(), shifts.end(),
                                  [&](const auto& n) { return n.shift == step.shift; });
  return noise == shifts.end() ? nullptr : &*noise;
}

void ChainTangents::Shift(const ChainShift& step, ChainStep place, Points before, Points after,
                          std::size_t count) {
  if (step.shift->Space() == ShiftSpace::geographic) ToRadians(before, count);
  const ChainUncertainty::ShiftNoise* const noise = NoiseOf(step);
  Jacobians j;
  ShiftDerivatives(step, before, after, count, place, j);
  auto& t = tangent_;
  const bool forward = step.direction == ShiftDirection::forward;
  const auto run = [&](const auto& times, const auto& columns) {
    RunKernel(times, columns, count);
  };
  if (heights_ != Heights::mixed && IsLevel(j, count)) {
    WritePlane(count);
    double* const columns[] = {j[0], j[3], j[1], j[4], t[0], t[1], t[3], t[4]};
    forward ? run(ProjectPlane<false>(), columns) : run(ProjectPlane<true>(), columns);
  } else {
    Mix(count);
    double* const columns[] = {j[0], j[1], j[2], j[3], j[4], j[5], j[6], j[7], j[8],
                               t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]};
    forward ? run(TimesEach<false>(), columns) : run(TimesEach<true>(), columns);
  }
  for (std::size_t i = 0; noise && i < count; ++i) {
    double sigma[3];
    ShiftDeviations(noise, step, before, after, i, place, sigma);
    const Vector images[] = {{sigma[0], 0, 0}, {0, sigma[1], 0}, {0, 0, sigma[2]}};
    AddNoise(i, images, 3, noise->extent);
  }
}

void ChainTangents::LowerByGeoid(Points geographic, const double* perLatitude,
                                 const double* perLongitude, std::size_t count) {
  double slopes[2][kBatchBlock];
  for (std::size_t i = 0; i < count; ++i) {
    slopes[0][i] = -perLatitude[i];
    slopes[1][i] = -perLongitude[i];
  }
  if (!(AllWithin(perLatitude, count, kLargest) && AllWithin(perLongitude, count, kLargest)))
    for (std::size_t i = 0; i < count; ++i)
      if (!std::isfinite(perLatitude[i] + perLongitude[i])) Fail(i, ChainStep::geoid);
  if (inMetres_) Scale<RadiansPerMetre>(*ellipsoid_, geographic[0], count, slopes[0], slopes[1]);
  Lower(LowerHeight<false>(), slopes[0], slopes[1], nullptr, count);
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

// Heights on their own, by way of the derivatives of a step that moves them: by metres or radians, as
// those of the positions are, and by the height, null for 1.
template <class Step>
void ChainTangents::Lower(const Step& step, double* perNorth, double* perEast, double* perHeight,
                          std::size_t count) {
  Part(count);
  WritePlane(count);
  double ones[kBatchBlock], zeros[kBatchBlock];
  if (!perHeight) {
    std::fill_n(ones, count, 1.0);
    perHeight = ones;
  }
  auto& t = tangent_;
  const bool mixed = heights_ == Heights::mixed;
  if (!mixed) std::fill_n(zeros, count, 0.0);
  for (int c = 0; c < 3; ++c) {
    const bool written = mixed || c < 2;
    RunKernel(step,
              {perNorth, perEast, perHeight, written ? t[c] : zeros, written ? t[3 + c] : zeros,
               apartHeights_[c]},
              count);
  }
}

void ChainTangents::LowerByShift(const ChainShift& step, Points before, Points after,
                                 std::size_t count) {
  const ChainUncertainty::ShiftNoise* const noise = NoiseOf(step);
  Jacobians j;
  ShiftDerivatives(step, before, after, count, ChainStep::verticalShift, j);
  if (inMetres_) Scale<RadiansPerMetre>(*ellipsoid_, before[0], count, j[6], j[7]);
  if (step.direction == ShiftDirection::forward)
    Lower(LowerHeight<false>(), j[6], j[7], j[8], count);
  else
    Lower(LowerHeight<true>(), j[6], j[7], j[8], count);
  for (std::size_t i = 0; noise && i < count; ++i) {
    double sigma[3];
    ShiftDeviations(noise, step, before, after, i, ChainStep::verticalShift, sigma);
    AddHeightNoise(i, sigma[2], noise->extent);
  }
}

// From here on heights are on their own.
void ChainTangents::Part(std::size_t count) {
  if (apart_) return;
  apart_ = true;
  if (common_) firstApart_ = common_->size();
  for (int c = 0; c < 3; ++c)
    if (heights_ == Heights::level)
      std::fill_n(apartHeights_[c], count, c == 2 ? 1.0 : 0.0);
    else
      std::copy_n(tangent_[6 + c], count, apartHeights_[c]);
  std::fill_n(heightVariance_, count, 0.0);
  for (auto& column : apartAdded_) std::fill_n(column, count, 0.0);
}

// Errors of positions behind the parting have no effect on heights, those of heights none on positions.
// With the derivatives T of positions and T' of the positions with these heights, an error v of the
// global position of the first kind is one of T'⁻¹·diag(1, 1, 0)·T·v, a height's one of T'⁻¹·e3.
void ChainTangents::Arrive(Points geographic, std::size_t count) {
  std::copy_n(geographic[2], count, ellipsoidal_);
  if (!apart_) return;
  apart_ = false;
  if (!adds_) {
    Slope(count);
    for (std::size_t c = 0; c < 3; ++c) std::copy_n(apartHeights_[c], count, tangent_[6 + c]);
    return;
  }
  Mix(count);
  for (std::size_t i = 0; i < count; ++i) {
    Matrix3 ofPositions = At(i);
    for (std::size_t c = 0; c < 3; ++c) {
      ofPositions.m[2][c] = 0;
      tangent_[6 + c][i] = apartHeights_[c][i];
    }
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

// To the grid, heights are left alone.
std::size_t ChainTangents::Project(const TGeoProj& projection, Points geographic, double* north,
                                   double* east, std::size_t count) {
  double columns[4][kBatchBlock], latitudes[kBatchBlock];
  auto& t = tangent_;
  double* const d[] = {plane_ ? columns[0] : t[0], plane_ ? columns[1] : t[3],
                       plane_ ? columns[2] : t[1], plane_ ? columns[3] : t[4]};
  std::copy_n(geographic[0], count, latitudes);
  if (north != geographic[0]) std::copy_n(geographic[0], count, north);
  if (east != geographic[1]) std::copy_n(geographic[1], count, east);
  const std::size_t converted =
      projection.ForwardWithDerivativesBatch(north, east, {d[0], d[1], d[2], d[3]}, count);
  if (inMetres_) Scale<RadiansPerMetre>(*ellipsoid_, latitudes, count, d[0], d[1], d[2], d[3]);
  inMetres_ = false;
  if (!plane_) {
    plane_ = true;
  } else if (heights_ == Heights::mixed) {
    RunKernel(ProjectTangent(), {d[0], d[1], d[2], d[3], t[0], t[1], t[2], t[3], t[4], t[5]},
              count);
  } else {
    RunKernel(ProjectPlane<false>(), {d[0], d[1], d[2], d[3], t[0], t[1], t[3], t[4]}, count);
  }
  return converted;
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
  Times(matrix, count);
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
  Times(matrix, count);
}

void ChainTangents::Finish(Points geographic, std::size_t count) {
  if (local_ == CovarianceFrame::geographic) return ToRadians(geographic, count);
  const Ellipsoid* const ellipsoid = LocalEllipsoid();
  if (!ellipsoid) return FailAll(ChainStep::globalEllipsoid, count);
  if (local_ == CovarianceFrame::geocentric) return ToGeocentric(*ellipsoid, geographic, count);
  if (inMetres_) return;
  auto& t = tangent_;
  if (heights_ != Heights::mixed) {
    WritePlane(count);
    return Scale<MetresPerRadian>(*ellipsoid, geographic[0], count, t[0], t[1], t[3], t[4]);
  }
  Scale<MetresPerRadian>(*ellipsoid, geographic[0], count, t[0], t[1], t[2], t[3], t[4], t[5]);
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
void ChainTangents::PropagateBy(const Symmetric& c, std::size_t first, std::size_t count) const {
  double* t[9];  // which stay
  for (int k = 0; k < 9; ++k) t[k] = const_cast<double*>(tangent_[k]) + first;
  if (heights_ == Heights::mixed)
    return RunKernel(
        Propagate<kInverse>(),
        {c[0], c[1], c[2], c[3], c[4], c[5], t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]},
        count);
  if (heights_ == Heights::sloped)
    return RunKernel(PropagateSloped<kInverse>(),
                     {c[0], c[1], c[2], c[3], c[4], c[5], t[0], t[1], t[3], t[4], t[6], t[7], t[8]},
                     count);
  if (plane_)
    RunKernel(PropagateLevel<kInverse>(),
              {c[0], c[1], c[2], c[3], c[4], c[5], t[0], t[1], t[3], t[4]}, count);
}

void ChainTangents::ToLocal(const Symmetric& c, std::size_t first, std::size_t count) const {
  if (adds_)
    for (int k = 0; k < 6; ++k)
      for (std::size_t i = 0; i < count; ++i) c[k][i] += added_[k][first + i];
  PropagateBy<false>(c, first, count);
}

void ChainTangents::ToGlobal(const Symmetric& c, std::size_t first, std::size_t count) const {
  PropagateBy<true>(c, first, count);
  if (!adds_) return;
  for (int k = 0; k < 6; ++k)
    for (std::size_t i = 0; i < count; ++i) c[k][i] += added_[k][first + i];
}

}  // namespace zel_cs::geomath
