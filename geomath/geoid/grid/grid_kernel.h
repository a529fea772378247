#pragma once

#include <cstddef>

#include "geomath/base/rect_bounds.h"
#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/grid_stencil.h"

namespace zel_cs::geomath {

/// Points that go through a kernel together: their columns stay in the first-level cache.
inline constexpr std::size_t kGridBlock = 128;

/// What became of the points of a query.
struct GridTally {
  std::size_t outside = 0;  // of the region that the query allows
  std::size_t invalid = 0;  // without a height, among them those outside
};

/// What the nodes of a rule are: its Node, floats where it names none.
template <class Rule>
struct NodeOfRule {
  using Node = float;
};
template <class Rule>
requires requires { typename Rule::Node; }
struct NodeOfRule<Rule> {
  using Node = typename Rule::Node;
};
template <class Rule>
using NodeOf = typename NodeOfRule<Rule>::Node;

/// Whether a rule says how its stencils move, so that heights have slopes.
template <class Rule>
inline constexpr bool kHasSlopes = requires(const Rule& rule) {
  rule.PerRadian();
};

/// Whether it states the slopes of heights by u and v; else they are taken by differences.
template <class Rule>
inline constexpr bool kStatesSlopes = requires(const Rule& rule, const Stencil& at,
                                               const NodeOf<Rule> (&z)[Rule::kSize][Rule::kSize]) {
  rule.Slopes(at, z);
};

/// Columns for the slopes of heights along latitude and longitude, metres per radian; null where
/// nobody asks.
struct GridSlopes {
  double *perLatitude = nullptr, *perLongitude = nullptr;

  GridSlopes From(std::size_t first) const {
    return perLatitude ? GridSlopes{perLatitude + first, perLongitude + first} : GridSlopes{};
  }
};

/// A rule of interpolation over columns of points. `Rule` is a plain record with
///   static constexpr int kSize                              // a stencil has kSize × kSize nodes
///   Stencil Place(double lat, double lon) const
///   double Height(const Stencil&, const Node (&z)[kSize][kSize], double start) const
///   StencilSlopes PerRadian() const    // of u by latitude and v by longitude; absent without
///   StencilSlopes Slopes(const Stencil&, const Node (&z)[kSize][kSize]) const   // may be absent
/// the statements that a single point runs too; Height gives kNoHeight at a hole, and `start` is
/// what the point's slot holds. Every Rule is instantiated in a kernel source.
template <class Target, class Rule>
struct GridKernel {
  /// Heights of at most kGridBlock points, cut to the resolution of a query and brought into
  /// `bounds`, from nodes that hold stencils of the rule; kNoHeight where there is none. Slopes are
  /// those in the stencil, nothing without kHasSlopes.
  static GridTally Heights(const Rule& rule, const GridNodes& nodes, const RectBounds& bounds,
                           const double* lat, const double* lon, double* heights,
                           const GridSlopes& slopes, std::size_t count);
};

/// The same for a grid in a map projection, whose points were located and projected before: Place is
/// given northing and easting, NaN for a point outside.
template <class Target, class Rule>
struct ProjectedGridKernel {
  static void Heights(const Rule& rule, const GridNodes& nodes, const double* north,
                      const double* east, double* heights, std::size_t count);
};

}  // namespace zel_cs::geomath
