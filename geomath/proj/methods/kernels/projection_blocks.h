#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

#include "geomath/base/batch.h"
#include "geomath/proj/geo_proj.h"
#include "geomath/proj/internal/formula_view.h"
#include "geomath/proj/internal/host_replaces.h"
#include "geomath/proj/methods/kernels/projection_kernel.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// A single point that the columns serve, to their bits.
template <class Formulas>
auto ForwardServed(const Formulas& formulas, double& b, double& l) {
  return formulas.template Forward<simd::BatchMath>(b, l);
}

template <class Formulas>
auto InverseServed(const Formulas& formulas, double& n, double& e) {
  return formulas.template Inverse<simd::BatchMath>(n, e);
}

/// A single point in the functions that the columns use, so that it gives the batch's bits; outside
/// their domain in those of one number. For formulas where a unit in the last place of a
/// function is more than the nanometre that a batch may differ by, or moves a stop rule. Returns
/// what the formulas return.
template <class Formulas>
auto ForwardOne(const Formulas& formulas, double& b, double& l) {
  if (formulas.ServesForward(b, l)) return ForwardServed(formulas, b, l);
  return formulas.template Forward<simd::Scalar>(b, l);
}

template <class Formulas>
auto InverseOne(const Formulas& formulas, double& n, double& e) {
  if (formulas.ServesInverse(n, e)) return InverseServed(formulas, n, e);
  return formulas.template Inverse<simd::Scalar>(n, e);
}

/// Sine and cosine of an angle for the factors of a single point, likewise.
inline SineCosine SineCosineOne(double angle) {
  SineCosine result;
  if (std::abs(angle) < simd::kMaxAngle)
    simd::BatchMath::SinCos(angle, result.sin, result.cos);
  else
    simd::Scalar::SinCos(angle, result.sin, result.cos);
  return result;
}

/// FormulaView::Differentiate: false where the derivatives or the point, which formulas make NaN
/// beyond their limits, are not finite.
template <class Formulas>
bool DerivativesOf(const Formulas& formulas, double b, double l, GridDerivatives& derivatives) {
  const DerivativesBy<Formulas> kernel{formulas};
  double northL, eastL, n, e;
  if (kernel.ServesDerivatives(b, l))
    kernel.template Convert<simd::BatchMath>(b, l, northL, eastL, n, e);
  else if (StatesDerivatives<Formulas> && std::abs(b) < kHalfPi)
    kernel.template Convert<simd::Scalar>(b, l, northL, eastL, n, e);
  else
    return false;
  if (!std::isfinite(b + l + northL + eastL)) return false;
  derivatives = {b, l, northL, eastL};
  return true;
}

/// Whether derivatives run in loops over columns. A build whose size counts (GEOMATH_COMPACT) takes them
/// point by point, to the same bits.
#ifdef GEOMATH_COMPACT
inline constexpr bool kDerivativesInColumns = false;
#else
inline constexpr bool kDerivativesInColumns = true;
#endif

/// FormulaView::DifferentiateBlock.
template <class Formulas>
void DerivativesByKernel(const Formulas& formulas, const TGeoProj& proj,
                         double* const (&columns)[6], std::size_t count) {
  constexpr double kRefused = std::numeric_limits<double>::quiet_NaN();
  using Derivatives = DerivativesBy<Formulas>;
  const auto single = [&](double(&point)[6]) {
    GridDerivatives d{kRefused, kRefused, kRefused, kRefused};
    DerivativesOf(formulas, point[0], point[1], d);
    point[4] = point[0];
    point[5] = point[1];
    if (!proj.ForwardPoint(point[4], point[5])) point[4] = kRefused;
    point[0] = d.northB;
    point[1] = d.eastB;
    point[2] = d.northL;
    point[3] = d.eastL;
  };
  if constexpr (kDerivativesInColumns)
    RunKernel(Derivatives{formulas}, columns, count, single);
  else
    for (std::size_t i = 0; i < count; ++i)
      ConvertUnserved<Derivatives::kInputs>(i, columns, single);
}

/// Runs `single`, which converts one point, over a block in place.
template <class Single>
void RunSingly(double* const (&columns)[2], std::size_t count, Single single) {
  for (std::size_t i = 0; i < count; ++i) {
    double point[] = {columns[0][i], columns[1][i]};
    single(point);
    columns[0][i] = point[0];
    columns[1][i] = point[1];
  }
}

/// FormulaView::Forward and Inverse.
template <class Formulas>
void ForwardByKernel(const Formulas& formulas, const TGeoProj& proj, double* b, double* l,
                     std::size_t count) {
  const auto single = [&](double(&point)[2]) {
    if (!proj.ForwardPoint(point[0], point[1])) point[0] = std::numeric_limits<double>::quiet_NaN();
  };
  if (HostReplaces<&TGeoProj::ForwardPoint>(proj)) return RunSingly({b, l}, count, single);
  if (count == 1 && formulas.ServesForward(*b, *l)) return void(ForwardServed(formulas, *b, *l));
  RunKernel(ForwardOf<Formulas>{formulas}, {b, l}, count, single);
}

template <class Formulas>
void InverseByKernel(const Formulas& formulas, const TGeoProj& proj, double* n, double* e,
                     std::size_t count) {
  const auto single = [&](double(&point)[2]) {
    if (!proj.InversePoint(point[0], point[1])) point[0] = std::numeric_limits<double>::quiet_NaN();
  };
  if (HostReplaces<&TGeoProj::InversePoint>(proj)) return RunSingly({n, e}, count, single);
  if (count == 1 && formulas.ServesInverse(*n, *e)) return void(InverseServed(formulas, *n, *e));
  RunKernel(InverseOf<Formulas>{formulas}, {n, e}, count, single);
}

/// A view of a record of formulas that have a kernel.
template <class Formulas>
FormulaView ViewOf(const Formulas& formulas) {
  static constexpr FormulaView::Operations operations{
      [](const void* record, double b, double l, GridDerivatives& derivatives) {
        return DerivativesOf(*static_cast<const Formulas*>(record), b, l, derivatives);
      },
      [](const void* record, const TGeoProj& proj, double* const(&columns)[6], std::size_t count) {
        DerivativesByKernel(*static_cast<const Formulas*>(record), proj, columns, count);
      },
      [](const void* record, const TGeoProj& proj, double* b, double* l, std::size_t count) {
        ForwardByKernel(*static_cast<const Formulas*>(record), proj, b, l, count);
      },
      [](const void* record, const TGeoProj& proj, double* n, double* e, std::size_t count) {
        InverseByKernel(*static_cast<const Formulas*>(record), proj, n, e, count);
      }};
  return {&formulas, operations};
}

}  // namespace zel_cs::geomath
