#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <typeinfo>

#include "geomath/base/rect_bounds.h"
#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_kernel.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/platform/zel_math.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

/// Points whose heights are asked for, and what became of them.
struct GridQuery {
  const TAbstractPoint3<double>* points;
  double* heights;
  std::size_t count;
  RectBounds bounds;
  GridTally tally;
};

/// The height that a rule gives at a point, kNoHeight where its stencil is not among the nodes.
template <class Rule>
double HeightAt(const Rule& rule, const GridNodes& nodes, const double* point, double start) {
  float z[Rule::kSize][Rule::kSize];
  const Stencil at = rule.Place(point[0], point[1]);
  if (!at.inside || !nodes.HoldStencils<float, Rule::kSize>()) return kNoHeight;
  nodes.ReadStencil(at.row, at.column, z);
  return rule.Height(at, z, start);
}

/// Runs a query by the kernels of a rule. Returns false, nothing done, when the nodes do not hold
/// its stencils, and when `model` is of a class derived from `Model`, whose INTRP3 may be another
/// one.
template <class Model, class Rule>
bool RunByKernel(const Model& model, const Rule& rule, const GridNodes& nodes, GridQuery& query) {
  if (typeid(model) != typeid(Model) || !nodes.HoldStencils<float, Rule::kSize>()) return false;
  const auto kernel =
      simd::ForActiveSet([](auto target) { return &GridKernel<decltype(target), Rule>::Heights; });
  double lat[kGridBlock], lon[kGridBlock];
  for (std::size_t first = 0; first < query.count; first += kGridBlock) {
    const std::size_t n = std::min(kGridBlock, query.count - first);
    for (std::size_t i = 0; i < n; ++i) {
      lat[i] = query.points[first + i][0];
      lon[i] = query.points[first + i][1];
    }
    const GridTally tally = kernel(rule, nodes, query.bounds, lat, lon, query.heights + first, n);
    query.tally.outside += tally.outside;
    query.tally.invalid += tally.invalid;
  }
  return true;
}

}  // namespace zel_cs::geomath
