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

/// What a class of regional geoids is that has one rule over one layout of nodes: those that
/// INTRP3 is given, or those of the model's record, with the rule on their grid.
template <class Rule, RowLayout kLayout = RowLayout{}>
struct RuledGeoid {
  Rule rule;
  GridNodes nodes;

  using Node = NodeOf<Rule>;

  RuledGeoid(const Rule& anyRule, const void* data, int rowStride, int NY, int NX)
      : rule(anyRule), nodes(data, rowStride, NX, NY, kLayout) {}
  RuledGeoid(const TGridRgn& grid, const void* data, int rowStride, int NY, int NX)
      : RuledGeoid(Rule{{grid, NY, NX}}, data, rowStride, NY, NX) {}
  RuledGeoid(const RegionalGeoidData& record, int rowStride)
      : RuledGeoid(record.grid, record.data, rowStride, record.NY, record.NX) {}

  /// The height at a point, kNoHeight where its stencil is not among the nodes. `start` is what the
  /// point's slot holds.
  double HeightAt(const double* point, double start) const {
    Node z[Rule::kSize][Rule::kSize];
    const Stencil at = rule.Place(point[0], point[1]);
    if (!at.inside || !HoldsStencils()) return kNoHeight;
    nodes.ReadStencil(at.row, at.column, z);
    return rule.Height(at, z, start);
  }

  /// Runs a query by the kernels of the rule. Returns false, nothing done, when the nodes do not
  /// hold its stencils, and when `model` is of a class derived from `Model`, whose INTRP3 may be
  /// another one.
  template <class Model>
  bool Run(const Model& model, GridQuery& query) const {
    if (!Runs(model)) return false;
    query.sloped = query.slopes.perLatitude && kHasSlopes<Rule>;
    RunBlocks(query, [&](std::size_t first, std::size_t n, const double* lat, const double* lon) {
      const GridTally tally =
          Heights(query.bounds, lat, lon, query.heights + first, query.slopes.From(first), n);
      query.tally.outside += tally.outside;
      query.tally.invalid += tally.invalid;
      return true;
    });
    return true;
  }

  /// The same for a rule that serves some points of the class only: the others, and those at a hole,
  /// go to `single`, int (double* point, double& height), as in RunPoints.
  template <class Model, class Single>
  bool Run(const Model& model, GridQuery& query, Single single) const {
    if (!Runs(model)) return false;
    query.sloped = query.slopes.perLatitude && kHasSlopes<Rule>;
    RunBlocks(query, [&](std::size_t first, std::size_t n, const double* lat, const double* lon) {
      double heights[kGridBlock];
      std::copy_n(query.heights + first, n, heights);
      const GridTally tally = Heights(query.bounds, lat, lon, heights, query.slopes.From(first), n);
      query.sloped &= tally.invalid == 0;  // the single form has no slopes
      return TakeHeights(query, first, n, heights, single);
    });
    return true;
  }

 private:
  bool HoldsStencils() const { return nodes.template HoldStencils<Node, Rule::kSize>(); }

  template <class Model>
  bool Runs(const Model& model) const {
    return typeid(model) == typeid(Model) && HoldsStencils();
  }

  GridTally Heights(const RectBounds& bounds, const double* lat, const double* lon, double* heights,
                    const GridSlopes& slopes, std::size_t count) const {
    const auto kernel = simd::ForActiveSet(
        [](auto target) { return &GridKernel<decltype(target), Rule>::Heights; });
    return kernel(rule, nodes, bounds, lat, lon, heights, slopes, count);
  }
};

}  // namespace zel_cs::geomath
