#include "geomath/proj/geo_proj.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/base/height_scale.h"
#include "geomath/proj/internal/angle_bounds.h"
#include "geomath/proj/internal/formula_view.h"
#include "geomath/proj/internal/host_replaces.h"
#include "geomath/proj/internal/kind.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kNotComputed = 2147483647.0;
constexpr double kSmallestScale = 1e-20;

constexpr unsigned int kToUser = 0, kToInternal = 1;

bool IsAngle(Quantity quantity) {
  using enum Quantity;
  return quantity == latitude || quantity == longitude || quantity == azimuth || quantity == angle;
}

bool InDegrees(const ParamRow& row, unsigned int unit) {
  return unit == kUnitDegrees && row.unit == ParamUnit::internal && IsAngle(row.quantity);
}

}  // namespace

TGeoProj::TGeoProj()
    : ell_(MakeEllipsoid(kWgs84A, kWgs84InvF)),
      scale_(kNotComputed),
      convergence_(kNotComputed),
      paramCount_(0),
      type_(ProjTypeNone),
      flag_(true) {}

TGeoProj::TGeoProj(unsigned int type, int paramCount, double a, double invF, bool flag)
    : ell_(MakeEllipsoid(a, invF)),
      scale_(1.0),
      convergence_(0.0),
      paramCount_(KindOf(type, paramCount).paramCount),
      type_(KindOf(type, paramCount).type),
      flag_(flag) {}

TGeoProj::TGeoProj(ProjType type, std::span<const ParamRow> params, double a, double invF)
    : TGeoProj(static_cast<unsigned int>(type), static_cast<int>(params.size()), a, invF, true) {}

TGeoProj::TGeoProj(const TGeoProj&) = default;

TGeoProj& TGeoProj::operator=(const TGeoProj& other) {
  if (this == &other) return *this;
  CopyAxes(other);
  geographicAxes_.CopyAxes(other.geographicAxes_);
  ell_ = other.ell_;
  scale_ = other.scale_;
  convergence_ = other.convergence_;
  paramCount_ = other.paramCount_;
  type_ = other.type_;
  flag_ = other.flag_;
  ellipsoidFixed_ = other.ellipsoidFixed_;
  return *this;
}

TGeoProj::~TGeoProj() = default;

bool TGeoProj::Forward(double& b, double& l) {
  RotateBL(kToInternal, b, l);
  if (!_Forward(b, l)) return false;
  RotateNE(kToUser, b, l);
  return true;
}

bool TGeoProj::Inverse(double& n, double& e) {
  RotateNE(kToInternal, n, e);
  if (!_Inverse(n, e)) return false;
  RotateBL(kToUser, n, e);
  return true;
}

double TGeoProj::GetScale() const { return scale_; }
double TGeoProj::GetConvergence() const { return convergence_; }

std::span<const ParamRow> TGeoProj::Params() const { return {}; }

const ParamRow* TGeoProj::FindParam(int index) const {
  const std::span<const ParamRow> rows = Params();
  const auto at = static_cast<std::size_t>(index);  // a negative one lies beyond all rows
  return at < rows.size() ? &rows[at] : nullptr;
}

double TGeoProj::GetParam(int index, unsigned int unit) const {
  const ParamRow* row = FindParam(index);
  if (!row) return 0.0;
  const double value = this->*row->field;
  return InDegrees(*row, unit) ? value * kDegPerRad : value;
}

void TGeoProj::SetParam(double value, int index, unsigned int unit) {
  const ParamRow* row = FindParam(index);
  if (!row) return;
  StoreParam(*row, value, unit);
  if (row->refresh.prepares) Prepare();
}

void TGeoProj::SetParams(std::span<const double> values, unsigned int unit) {
  if (HostReplaces<&TGeoProj::SetParam>(*this)) {
    for (std::size_t i = 0; i < values.size(); ++i) SetParam(values[i], static_cast<int>(i), unit);
    return;
  }
  const std::span<const ParamRow> rows = Params();
  const std::size_t count = std::min(rows.size(), values.size());
  for (std::size_t i = 0; i < count; ++i) StoreParam(rows[i], values[i], unit);
  if (count > 0) Prepare();
}

void TGeoProj::StoreParam(const ParamRow& row, double value, unsigned int unit) {
  this->*row.field = InDegrees(row, unit) ? value * kRadPerDeg : value;
  if (row.refresh.run) row.refresh.run(*this);
}

void TGeoProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

bool TGeoProj::GetCentralPoint(double&, double&, double&, double&) const { return false; }

void TGeoProj::SetEllipsoid(double a, double invF) {
  if (ellipsoidFixed_) return;
  ell_ = MakeEllipsoid(a, invF);
  Prepare();
}

double TGeoProj::FNorth() const { return 0.0; }
double TGeoProj::FEast() const { return 0.0; }

bool TGeoProj::IsAngleCoordValid(double b, double l) { return IsLooselyValid(b, l); }

double TGeoProj::GetHScale(double h) { return HeightScale(h); }

namespace {

// Whether a direction has a const form: a host's class that replaces the call with axes or the one
// without them, and not the point's, has none.
template <auto kWithAxes, auto kWithoutAxes, auto kPoint>
bool HasConstForm(const TGeoProj& proj) {
  const bool hosts = HostReplaces<kWithAxes>(proj) || HostReplaces<kWithoutAxes>(proj);
  return !hosts || HostReplaces<kPoint>(proj);
}

// A host's own map, of which a class of the library that it derives from knows nothing.
bool HostProjects(const TGeoProj& proj) {
  return HostReplaces<&TGeoProj::_Forward>(proj) || HostReplaces<&TGeoProj::ForwardPoint>(proj);
}

// Fills a block with the derivatives of each position, NaN where `differentiate` leaves them.
template <class Differentiate>
void DifferentiateSingly(double* const (&columns)[4], std::size_t count,
                         Differentiate differentiate) {
  for (std::size_t i = 0; i < count; ++i) {
    GridDerivatives d{kNaN, kNaN, kNaN, kNaN};
    differentiate(columns[0][i], columns[1][i], d);
    columns[0][i] = d.northB;
    columns[1][i] = d.eastB;
    columns[2][i] = d.northL;
    columns[3][i] = d.eastL;
  }
}

void ProjectSingly(const TGeoProj& proj, double* b, double* l, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (!proj.ForwardPoint(b[i], l[i])) b[i] = kNaN;
}

bool HostRotates(const TGeoProj& proj) {
  return HostReplaces<&TGeoProj::RotateNE>(proj) || HostReplaces<&TGeoProj::RotateBL>(proj) ||
         HostReplaces<&TGeoProj::Rotate>(proj);
}

// Point scale to the factor from grid to ground.
bool CarryToGround(TGeoProj& proj, double h, double& k) {
  if (h == 0.0) {
    k = 1 / k;
    return true;
  }
  if (!(std::abs(k) >= kSmallestScale)) return false;
  k = proj.GetHScale(h) / k;
  return true;
}

}  // namespace

bool TGeoProj::GetAvgGridScale(double& k, double n, double e, double h) {
  return GetNEScale(k, n, e) && CarryToGround(*this, h, k);
}

bool TGeoProj::GetAvgBLHScale(double& k, double b, double l, double h) {
  return GetBLScale(k, b, l) && CarryToGround(*this, h, k);
}

bool TGeoProj::GetNEScale(double& k, double n, double e) {
  k = 1.0;
  if (!Inverse(n, e) || !IsAngleCoordValid(n, e) || !Forward(n, e)) return false;
  k = GetScale();
  return true;
}

bool TGeoProj::GetBLScale(double& k, double b, double l) {
  k = 1.0;
  if (!IsAngleCoordValid(b, l) || !Forward(b, l) || !Inverse(b, l)) return false;
  if (!IsAngleCoordValid(b, l)) return false;
  k = GetScale();
  return true;
}

void TGeoProj::SetEllipsoidFixed(bool fixed) { ellipsoidFixed_ = fixed; }
bool TGeoProj::IsEllipsoidFixed() { return ellipsoidFixed_; }

void TGeoProj::RotateNE(unsigned int dir, double& n, double& e) const { Rotate(dir, n, e); }
void TGeoProj::RotateBL(unsigned int dir, double& b, double& l) const {
  geographicAxes_.Rotate(dir, b, l);
}
void TGeoProj::SetNEAxes(const wchar_t* axes) { SetAxes(axes); }
void TGeoProj::SetBLAxes(const wchar_t* axes) { geographicAxes_.SetAxes(axes); }
unsigned char TGeoProj::GetNEDir() { return direction_; }

// A host's _Forward may call this one, whose const form is then not to ask for the host's.
bool TGeoProj::_Forward(double& b, double& l) {
  PointFactors factors{scale_, convergence_};
  const bool hosts = HostReplaces<&TGeoProj::ForwardPoint>(*this);
  if (!(hosts ? ForwardPoint(b, l, &factors) : ProjectPoint(b, l, &factors))) return false;
  scale_ = factors.scale;
  convergence_ = factors.convergence;
  return true;
}

bool TGeoProj::_Inverse(double& n, double& e) {
  PointFactors factors{scale_, convergence_};
  const bool hosts = HostReplaces<&TGeoProj::InversePoint>(*this);
  if (!(hosts ? InversePoint(n, e, &factors) : UnprojectPoint(n, e, &factors))) return false;
  scale_ = factors.scale;
  convergence_ = factors.convergence;
  return true;
}

bool TGeoProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  if (HostReplaces<&TGeoProj::_Forward>(*this) && !HostReplaces<&TGeoProj::ForwardPoint>(*this))
    return false;
  return ProjectPoint(b, l, factors);
}

bool TGeoProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  if (HostReplaces<&TGeoProj::_Inverse>(*this) && !HostReplaces<&TGeoProj::InversePoint>(*this))
    return false;
  return UnprojectPoint(n, e, factors);
}

bool TGeoProj::ForwardDerivatives(double b, double l, GridDerivatives& derivatives) const {
  return HostProjects(*this) ? DifferentiateConformal(b, l, derivatives)
                             : Differentiate(b, l, derivatives);
}

std::size_t TGeoProj::ForwardWithDerivativesBatch(double* b, double* l,
                                                  double* const (&derivatives)[4],
                                                  std::size_t count) const {
  const bool hosts = HostProjects(*this);
  const bool isConst =
      HasConstForm<&TGeoProj::Forward, &TGeoProj::_Forward, &TGeoProj::ForwardPoint>(*this);
  const FormulaView formulas = hosts || !isConst ? FormulaView() : Formulas();
  std::size_t converted = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    double *const n = b + start, *const e = l + start;
    double* d[4];
    for (std::size_t k = 0; k < 4; ++k) d[k] = derivatives[k] + start;
    const std::size_t size = std::min(kBatchBlock, count - start);
    std::copy_n(n, size, d[0]);
    std::copy_n(e, size, d[1]);
    if (formulas) {
      formulas.DifferentiateBlock(*this, {d[0], d[1], d[2], d[3], n, e}, size);
    } else {
      ForwardDerivativesBatch(d[0], d[1], d[2], d[3], size);
      if (!isConst)
        std::fill_n(n, size, kNaN);
      else if (hosts)
        ProjectSingly(*this, n, e, size);
      else
        ForwardBlock(n, e, size);
    }
    converted += MarkFailures<6>({n, e, d[0], d[1], d[2], d[3]}, size);
  }
  return converted;
}

std::size_t TGeoProj::ForwardDerivativesBatch(double* b, double* l, double* northL, double* eastL,
                                              std::size_t count) const {
  const bool hosts = HostProjects(*this);
  std::size_t found = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    double* const columns[] = {b + start, l + start, northL + start, eastL + start};
    const std::size_t n = std::min(kBatchBlock, count - start);
    if (hosts)
      DifferentiateSingly(columns, n, [this](double phi, double lambda, GridDerivatives& d) {
        DifferentiateConformal(phi, lambda, d);
      });
    else
      DifferentiateBlock(columns, n);
    found += MarkFailures(columns, n);
  }
  return found;
}

void TGeoProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  if (const FormulaView formulas = Formulas()) {
    double n[kBatchBlock], e[kBatchBlock];
    const auto& c = columns;
    return formulas.DifferentiateBlock(*this, {c[0], c[1], c[2], c[3], n, e}, count);
  }
  DifferentiateSingly(columns, count, [this](double b, double l, GridDerivatives& derivatives) {
    Differentiate(b, l, derivatives);
  });
}

bool TGeoProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  const FormulaView formulas = Formulas();
  return formulas ? formulas.Differentiate(b, l, derivatives)
                  : DifferentiateConformal(b, l, derivatives);
}

bool TGeoProj::DifferentiateConformal(double b, double l, GridDerivatives& derivatives) const {
  const auto [s, c] = SinCos(b);
  const double w2 = 1 - ell_.e2 * (s * s);
  const double N = ell_.a / std::sqrt(w2), M = N * (1 - ell_.e2) / w2;
  PointFactors factors{kNaN, kNaN};  // what a class does not compute stays
  if (!(std::abs(b) < kHalfPi) || !ForwardPoint(b, l, &factors)) return false;
  const double k = factors.scale, gamma = factors.convergence;
  if (!std::isfinite(k) || !std::isfinite(gamma)) return false;
  const double north = k * Cos(gamma), east = k * Sin(gamma);
  derivatives = {M * north, -M * east, N * c * east, N * c * north};
  return true;
}

bool TGeoProj::ProjectPoint(double&, double&, PointFactors*) const { return false; }
bool TGeoProj::UnprojectPoint(double&, double&, PointFactors*) const { return false; }

bool TGeoProj::TurnsAxes() const {
  return !IsIdentity() || !geographicAxes_.IsIdentity() || HostRotates(*this);
}

void TGeoProj::RotateBLBatch(unsigned int dir, double* b, double* l, std::size_t count) const {
  if (geographicAxes_.IsIdentity() && !HostRotates(*this)) return;
  for (std::size_t i = 0; i < count; ++i) RotateBL(dir, b[i], l[i]);
}

void TGeoProj::RotateNEBatch(unsigned int dir, double* n, double* e, std::size_t count) const {
  if (IsIdentity() && !HostRotates(*this)) return;
  for (std::size_t i = 0; i < count; ++i) RotateNE(dir, n[i], e[i]);
}

std::size_t TGeoProj::ForwardBatch(double* first, double* second, std::size_t count,
                                   std::ptrdiff_t stride) const {
  const bool isConst =
      HasConstForm<&TGeoProj::Forward, &TGeoProj::_Forward, &TGeoProj::ForwardPoint>(*this);
  const auto convert = [&](double* const(&pair)[2], std::size_t n) {
    if (!isConst) return void(std::fill_n(pair[0], n, kNaN));
    RotateBLBatch(kToInternal, pair[0], pair[1], n);
    ForwardBlock(pair[0], pair[1], n);
    RotateNEBatch(kToUser, pair[0], pair[1], n);
  };
  return ConvertBlocks(convert, count, stride, first, second);
}

std::size_t TGeoProj::InverseBatch(double* first, double* second, std::size_t count,
                                   std::ptrdiff_t stride) const {
  const bool isConst =
      HasConstForm<&TGeoProj::Inverse, &TGeoProj::_Inverse, &TGeoProj::InversePoint>(*this);
  const auto convert = [&](double* const(&pair)[2], std::size_t n) {
    if (!isConst) return void(std::fill_n(pair[0], n, kNaN));
    RotateNEBatch(kToInternal, pair[0], pair[1], n);
    InverseBlock(pair[0], pair[1], n);
    RotateBLBatch(kToUser, pair[0], pair[1], n);
  };
  return ConvertBlocks(convert, count, stride, first, second);
}

FormulaView TGeoProj::Formulas() const { return {}; }

void TGeoProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  if (const FormulaView formulas = Formulas()) return formulas.Forward(*this, b, l, count);
  ProjectSingly(*this, b, l, count);
}

void TGeoProj::InverseBlock(double* n, double* e, std::size_t count) const {
  if (const FormulaView formulas = Formulas()) return formulas.Inverse(*this, n, e, count);
  for (std::size_t i = 0; i < count; ++i)
    if (!InversePoint(n[i], e[i])) n[i] = kNaN;
}

bool TGeoProj::CopyGeoProj(const TGeoProj* src) {
  if (!src) return false;
  if (src == this) return true;
  type_ = src->type_;
  paramCount_ = src->paramCount_;
  scale_ = src->GetScale();
  convergence_ = src->GetConvergence();
  ell_ = src->ell_;
  flag_ = src->flag_;
  Prepare();
  SetNEAxes(src->GetNEAxes());
  SetBLAxes(src->GetBLAxes());
  for (int i = 0; i < paramCount_; ++i) SetParam(src->GetParam(i, kUnitInternal), i, kUnitInternal);
  return true;
}

// The text is this object's own, writable copy; AxisRotation only hands it out as const.
wchar_t* TGeoProj::GetNEAxes() const { return const_cast<wchar_t*>(GetAxes()); }
wchar_t* TGeoProj::GetBLAxes() const { return const_cast<wchar_t*>(geographicAxes_.GetAxes()); }

double TGeoProj::DMSToRad(double degrees) const { return degrees * kRadPerDeg; }
double TGeoProj::RadToDMS(double radians) const { return radians * kDegPerRad; }
double TGeoProj::GradToDMS(double x) const { return x; }
double TGeoProj::SecToRad(double arcSeconds) const { return (arcSeconds / 3600.0) * kRadPerDeg; }

void TGeoProj::Prepare() {}

}  // namespace zel_cs::geomath
