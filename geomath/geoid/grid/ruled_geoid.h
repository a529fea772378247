#pragma once

#include <algorithm>
#include <cstddef>
#include <typeinfo>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_kernel.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/grid_query.h"
#include "geomath/geoid/regional_geoid_data.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

/// What a class of regional geoids is that has one rule over one layout of floats: the nodes that
/// INTRP3 is given, or those of the model's record, with the rule on their grid.
template <class Rule, RowLayout kLayout = RowLayout{}>
struct RuledGeoid {
  Rule rule;
  GridNodes nodes;

  RuledGeoid(const TGridRgn& grid, const void* data, int rowStride, int NY, int NX)
      : rule{{grid, NY, NX}}, nodes(data, rowStride, NX, NY, kLayout) {}
  RuledGeoid(const RegionalGeoidData& record, int rowStride)
      : RuledGeoid(record.grid, record.data, rowStride, record.NY, record.NX) {}

  /// The height at a point, kNoHeight where its stencil is not among the nodes. `start` is what the
  /// point's slot holds.
  double HeightAt(const double* point, double start) const {
    float z[Rule::kSize][Rule::kSize];
    const Stencil at = rule.Place(point[0], point[1]);
    if (!at.inside || !nodes.template HoldStencils<float, Rule::kSize>()) return kNoHeight;
    nodes.ReadStencil(at.row, at.column, z);
    return rule.Height(at, z, start);
  }

  /// Runs a query by the kernels of the rule. Returns false, nothing done, when the nodes do not
  /// hold its stencils, and when `model` is of a class derived from `Model`, whose INTRP3 may be
  /// another one.
  template <class Model>
  bool Run(const Model& model, GridQuery& query) const {
    if (typeid(model) != typeid(Model) || !nodes.template HoldStencils<float, Rule::kSize>())
      return false;
    const auto kernel = simd::ForActiveSet(
        [](auto target) { return &GridKernel<decltype(target), Rule>::Heights; });
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
};

}  // namespace zel_cs::geomath
