#include "geomath/geodesic/distortion.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/batch.h"
#include "geomath/geodesic/distortion_formulas.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The functions of the columns: a single call gives the bits of a batch.
using Math = simd::Polynomial<simd::Baseline>;

DistortionFormulas FormulasOn(const Ellipsoid& ellipsoid) { return {ellipsoid.a, ellipsoid.e2}; }

// `count` positions, at most kBatchBlock.
std::size_t DistortBlock(const TGeoProj& proj, const double* b, const double* l,
                         Distortion* distortions, std::size_t count) {
  double columns[7][kBatchBlock];
  auto& [h, k, areal, convergence, angular, major, minor] = columns;
  std::copy_n(b, count, h);
  std::copy_n(l, count, k);
  std::copy_n(b, count, angular);  // where the formulas want the latitude
  const std::size_t found = proj.ForwardDerivativesBatch(h, k, areal, convergence, count);
  RunKernel(FormulasOn(proj.GetEllipsoid()), {h, k, areal, convergence, angular, major, minor},
            count);
  constexpr Distortion kFailed = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
  for (std::size_t i = 0; i < count; ++i)
    distortions[i] =
        std::isfinite(h[i])
            ? Distortion{h[i], k[i], areal[i], convergence[i], angular[i], major[i], minor[i]}
            : kFailed;
  return found;
}

}  // namespace

UnitImages UnitImagesOf(const GridDerivatives& d, const Ellipsoid& ellipsoid, double b) {
  UnitImages images{d.northB, d.eastB, d.northL, d.eastL};
  FormulasOn(ellipsoid).ToImages<Math>(images.northN, images.northE, images.eastN, images.eastE, b);
  return images;
}

bool DistortionAt(const TGeoProj& proj, double b, double l, Distortion& distortion) {
  GridDerivatives d;
  if (!proj.ForwardDerivatives(b, l, d)) return false;
  double major, minor;
  FormulasOn(proj.GetEllipsoid())
      .Convert<Math>(d.northB, d.eastB, d.northL, d.eastL, b, major, minor);
  distortion = {d.northB, d.eastB, d.northL, d.eastL, b, major, minor};
  return true;
}

bool DistortionAtGrid(const TGeoProj& proj, double n, double e, Distortion& distortion) {
  return proj.InversePoint(n, e) && DistortionAt(proj, n, e, distortion);
}

std::size_t DistortionAt(const TGeoProj& proj, const double* b, const double* l,
                         Distortion* distortions, std::size_t count) {
  std::size_t found = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock)
    found += DistortBlock(proj, b + start, l + start, distortions + start,
                          std::min(kBatchBlock, count - start));
  return found;
}

std::size_t DistortionAtGrid(const TGeoProj& proj, const double* n, const double* e,
                             Distortion* distortions, std::size_t count) {
  std::size_t found = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t size = std::min(kBatchBlock, count - start);
    double b[kBatchBlock], l[kBatchBlock];
    for (std::size_t i = 0; i < size; ++i) {
      b[i] = n[start + i];
      l[i] = e[start + i];
      if (!proj.InversePoint(b[i], l[i])) b[i] = kNaN;
    }
    found += DistortBlock(proj, b, l, distortions + start, size);
  }
  return found;
}

PointFactors FactorsAt(const TGeoProj& proj, double b, double l) {
  PointFactors factors{kNaN, kNaN};
  double n = b, e = l;
  if (!proj.ForwardPoint(n, e, &factors)) return {kNaN, kNaN};
  Distortion distortion;
  const bool complete = std::isfinite(factors.scale) && std::isfinite(factors.convergence);
  if (complete || !DistortionAt(proj, b, l, distortion)) return factors;
  if (std::isnan(factors.scale)) factors.scale = std::sqrt(std::abs(distortion.arealScale));
  if (std::isnan(factors.convergence)) factors.convergence = distortion.convergence;
  return factors;
}

}  // namespace zel_cs::geomath
