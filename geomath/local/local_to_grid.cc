#include "geomath/local/local_to_grid.h"

#include <algorithm>
#include <cfloat>
#include <iterator>
#include <limits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/local/site_formulas.h"
#include "geomath/proj/factory.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned int kUnitInDegrees = 1;  // of SetLat0 and SetLon0
enum PlaneIndex { kShiftN, kShiftE, kScale, kRotation };
enum HeightIndex { kShiftH, kSlopeN, kSlopeE };

std::unique_ptr<TGeoProj> CopyByKind(const TGeoProj& source) {
  const Ellipsoid& ell = source.GetEllipsoid();
  std::unique_ptr<TGeoProj> copy(_GetProjByType(source.GetType(), ell.a, ell.invF));
  if (copy) copy->CopyGeoProj(&source);
  return copy;
}

// A conversion that writes all parts, and after it the marks of those that the outcome leaves out.
template <class Conversion, class Outcome>
bool ConvertPoint(const Conversion& conversion, const Outcome& outcome, double& N, double& E,
                  double& H) {
  if (!outcome.ok) return false;
  conversion.template Convert<simd::Scalar>(N, E, H);
  if (!outcome.plane) N = E = DBL_MAX;
  if (!outcome.height) H = DBL_MAX;
  return true;
}

template <class Conversion, class Outcome>
void ConvertBlock(const Conversion& conversion, const Outcome& outcome, double* const (&columns)[3],
                  std::size_t count) {
  const auto fill = [count](double* column, double value) { std::fill_n(column, count, value); };
  if (!outcome.ok) return fill(columns[0], kNaN);
  RunKernel(conversion, columns, count);
  if (!outcome.plane) fill(columns[0], DBL_MAX), fill(columns[1], DBL_MAX);
  if (!outcome.height) fill(columns[2], DBL_MAX);
}

template <std::size_t N>
bool IsIndexOf(int index, const double (&)[N]) {
  return index >= 0 && static_cast<std::size_t>(index) < N;
}

}  // namespace

LocalToGrid::LocalToGrid() {
  *rotation_ = PlaneRotation(0);
  SetSterProj(kWgs84A, kWgs84InvF);
}

LocalToGrid::LocalToGrid(const LocalToGrid& other) { *this = other; }

LocalToGrid& LocalToGrid::operator=(const LocalToGrid& other) {
  if (this == &other) return *this;
  projection_ = other.projection_ ? CopyByKind(*other.projection_) : nullptr;
  mode = other.mode;
  std::copy(std::begin(other.planeParams_), std::end(other.planeParams_), planeParams_);
  std::copy(std::begin(other.heightParams_), std::end(other.heightParams_), heightParams_);
  rotation_ = other.rotation_;
  lat0_ = other.lat0_;
  lon0_ = other.lon0_;
  originN_ = other.originN_;
  originE_ = other.originE_;
  geoidName_ = other.geoidName_;
  return *this;
}

LocalToGrid::~LocalToGrid() = default;

void LocalToGrid::SetSterProj(double a, double invf) {
  std::unique_ptr<TGeoProj> stereographic(new TSterProj(a, invf, 0, 0, 1.0, 0, 0));
  if (stereographic) {
    stereographic->SetParam(lat0_, 0, kUnitInternal);
    stereographic->SetParam(lon0_, 1, kUnitInternal);
  }
  ReplaceProjection(std::move(stereographic));
}

void LocalToGrid::SetProj(TGeoProj* proj) {
  if (proj) ReplaceProjection(CopyByKind(*proj));
}

void LocalToGrid::SetEllipsoid(double a, double invf) {
  if (!projection_) return SetSterProj(a, invf);
  projection_->SetEllipsoid(a, invf);
  UpdateOrigin();
}

void LocalToGrid::SetLat0(double value, unsigned int unit) {
  lat0_ = unit == kUnitInDegrees ? value * kRadPerDeg : value;
  SetOriginParam(lat0_, 0);
}

void LocalToGrid::SetLon0(double value, unsigned int unit) {
  lon0_ = unit == kUnitInDegrees ? value * kRadPerDeg : value;
  SetOriginParam(lon0_, 1);
}

void LocalToGrid::SetOriginParam(double value, int index) {
  if (!projection_) return;
  projection_->SetParam(value, index, kUnitInternal);
  UpdateOrigin();
}

void LocalToGrid::ReplaceProjection(std::unique_ptr<TGeoProj> projection) {
  projection_ = std::move(projection);
  UpdateOrigin();
}

void LocalToGrid::UpdateOrigin() {
  originN_ = lat0_;
  originE_ = lon0_;
  if (!projection_ || !projection_->Forward(originN_, originE_)) originN_ = originE_ = 0;
}

void LocalToGrid::SetPlaneParam(double value, int index, unsigned int) {
  if (!IsIndexOf(index, planeParams_)) return;
  planeParams_[index] = value;
  if (index == kRotation) *rotation_ = PlaneRotation(value);
}

double LocalToGrid::GetPlaneParam(int index, unsigned int) const {
  return IsIndexOf(index, planeParams_) ? planeParams_[index] : 0.0;
}

void LocalToGrid::SetHeightParam(double value, int index, unsigned int) {
  if (IsIndexOf(index, heightParams_)) heightParams_[index] = value;
}

double LocalToGrid::GetHeightParam(int index, unsigned int) const {
  return IsIndexOf(index, heightParams_) ? heightParams_[index] : 0.0;
}

void LocalToGrid::SetParam(double value, int index, unsigned int unit) {
  if (projection_) projection_->SetParam(value, index, unit);
}

double LocalToGrid::GetParam(int index, unsigned int unit) const {
  return projection_ ? projection_->GetParam(index, unit) : 0.0;
}

void LocalToGrid::SetGeoidName(const wchar_t* name) {
  geoidName_.Set(name && *name ? name : nullptr);
}

LocalToGrid::Outcome LocalToGrid::OutcomeToLocal(unsigned int what) const {
  if (mode == kNotSetUp || what == kNotSetUp) return {};
  return {.ok = true,
          .plane = mode != kVertical && what != kVertical,
          .height = mode != kHorizontal && what != kHorizontal};
}

LocalToGrid::Outcome LocalToGrid::OutcomeToGrid(unsigned int what) const {
  return mode == kVertical ? Outcome{} : OutcomeToLocal(what);
}

SiteParameters LocalToGrid::Parameters() const {
  const auto [tN, tE, s, theta] = planeParams_;
  const auto [h0, aN, aE] = heightParams_;
  return {*rotation_, tN, tE, s, h0, aN, aE};
}

bool LocalToGrid::ToLocal(double& N, double& E, double& H, unsigned int what) const {
  return ConvertPoint(GridToSite{Parameters()}, OutcomeToLocal(what), N, E, H);
}

bool LocalToGrid::ToGrid(double& N, double& E, double& H, unsigned int what) const {
  return ConvertPoint(SiteToGrid{Parameters()}, OutcomeToGrid(what), N, E, H);
}

bool LocalToGrid::Forward(double& lat, double& lon, double& H, unsigned char what) {
  if (mode == kNotSetUp || !projection_ || !projection_->Forward(lat, lon)) return false;
  return ToLocal(lat, lon, H, what);
}

bool LocalToGrid::Inverse(double& N, double& E, double& H, unsigned char what) {
  if (!ToGrid(N, E, H, what)) return false;
  if (N == DBL_MAX || E == DBL_MAX || !projection_) return false;
  return projection_->Inverse(N, E);
}

std::size_t LocalToGrid::ToLocalBatch(double* N, double* E, double* H, std::size_t count,
                                      unsigned int what, std::ptrdiff_t stride) const {
  const GridToSite conversion{Parameters()};
  const auto convert = [&](double* const(&columns)[3], std::size_t n) {
    ConvertBlock(conversion, OutcomeToLocal(what), columns, n);
  };
  return ConvertBlocks(convert, count, stride, N, E, H);
}

std::size_t LocalToGrid::ToGridBatch(double* N, double* E, double* H, std::size_t count,
                                     unsigned int what, std::ptrdiff_t stride) const {
  const SiteToGrid conversion{Parameters()};
  const auto convert = [&](double* const(&columns)[3], std::size_t n) {
    ConvertBlock(conversion, OutcomeToGrid(what), columns, n);
  };
  return ConvertBlocks(convert, count, stride, N, E, H);
}

// The projection converts whole blocks; what it fails is NaN, and stays so in either step.
std::size_t LocalToGrid::ForwardBatch(double* lat, double* lon, double* H, std::size_t count,
                                      unsigned int what, std::ptrdiff_t stride) const {
  const GridToSite conversion{Parameters()};
  const Outcome outcome = projection_ ? OutcomeToLocal(what) : Outcome{};
  const auto convert = [&](double* const(&columns)[3], std::size_t n) {
    if (projection_) projection_->ForwardBatch(columns[0], columns[1], n);
    ConvertBlock(conversion, outcome, columns, n);
  };
  return ConvertBlocks(convert, count, stride, lat, lon, H);
}

std::size_t LocalToGrid::InverseBatch(double* N, double* E, double* H, std::size_t count,
                                      unsigned int what, std::ptrdiff_t stride) const {
  const SiteToGrid conversion{Parameters()};
  const Outcome onGrid = OutcomeToGrid(what), outcome = onGrid.plane ? onGrid : Outcome{};
  const auto convert = [&](double* const(&columns)[3], std::size_t n) {
    ConvertBlock(conversion, projection_ ? outcome : Outcome{}, columns, n);
    if (projection_) projection_->InverseBatch(columns[0], columns[1], n);
  };
  return ConvertBlocks(convert, count, stride, N, E, H);
}

}  // namespace zel_cs::geomath
