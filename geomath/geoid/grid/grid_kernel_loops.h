#pragma once

/// The loops of GridKernel; included by kernel sources only.

#include "geomath/geoid/grid/grid_kernel.h"
#include "geomath/geoid/grid/grid_location.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

/// A block of points on its way to heights. Nodes are gathered one point after the other between
/// loops that vectorise. Locating and placing are two of these, since a long chain of operations on
/// one point leaves the processor room for few others.
template <class Rule>
class GridBlock {
 public:
  GEOMATH_INLINE explicit GridBlock(std::size_t count) : count_(count) {}

  GEOMATH_INLINE void LocateIn(const RectBounds& bounds, const double* GEOMATH_RESTRICT lat,
                               const double* GEOMATH_RESTRICT lon) {
    for (std::size_t i = 0; i < count_; ++i) {
      double b = lat[i], l = lon[i];
      const bool inside = Locate(bounds, b, l);
      u_[i] = b;
      v_[i] = l;
      place_[i] = inside ? kNoStencil : kOutside;
    }
  }

  GEOMATH_INLINE void Take(const double* GEOMATH_RESTRICT north,
                           const double* GEOMATH_RESTRICT east) {
    for (std::size_t i = 0; i < count_; ++i) {
      u_[i] = north[i];
      v_[i] = east[i];
      place_[i] = kNoStencil;
    }
  }

  GEOMATH_INLINE void PlaceBy(const Rule& rule) {
    for (std::size_t i = 0; i < count_; ++i) {
      const Stencil s = rule.Place(u_[i], v_[i]);
      const bool found = (place_[i] == kNoStencil) & s.inside;
      row_[i] = found ? s.row : 0;
      column_[i] = found ? s.column : 0;
      u_[i] = s.u;
      v_[i] = s.v;
      place_[i] = found ? kStencil : place_[i];
    }
  }

  GEOMATH_INLINE void Gather(const GridNodes& nodes) {
    const GridNodes local = nodes;
    NodeIndex places[kGridBlock];
    for (std::size_t i = 0; i < count_; ++i) places[i] = local.PlaceOf<Node>(row_[i], column_[i]);
    for (std::size_t i = 0; i < count_; ++i) {
      Node z[kSize][kSize];
      local.ReadStencilAt(places[i], z);
      for (std::size_t r = 0; r < kSize; ++r)
        for (std::size_t c = 0; c < kSize; ++c) z_[r][i][c] = z[r][c];
    }
  }

  GEOMATH_INLINE void HeightsBy(const Rule& rule, double* GEOMATH_RESTRICT heights) const {
    for (std::size_t i = 0; i < count_; ++i) heights[i] = HeightOf(rule, i, 0, 0, heights[i]);
  }

  /// By the statements of the rule.
  GEOMATH_INLINE void StatedSlopesBy(const Rule& rule, double* GEOMATH_RESTRICT perLatitude,
                                     double* GEOMATH_RESTRICT perLongitude) const {
    const StencilSlopes perRadian = rule.PerRadian();
    for (std::size_t i = 0; i < count_; ++i) {
      Node z[kSize][kSize];
      ReadNodes(i, z);
      const Stencil at{row_[i], column_[i], u_[i], v_[i], true};
      const StencilSlopes slopes = rule.Slopes(at, z);
      perLatitude[i] = slopes.u * perRadian.u;
      perLongitude[i] = slopes.v * perRadian.v;
    }
  }

  /// Symmetric differences over a small part of a step, in the stencil, which are the slopes of rules of
  /// the second degree.
  GEOMATH_INLINE void SlopesBy(const Rule& rule, double* GEOMATH_RESTRICT perLatitude,
                               double* GEOMATH_RESTRICT perLongitude) const {
    constexpr double kPart = 1.0 / 256;
    const StencilSlopes perRadian = rule.PerRadian();
    const double dB = kPart * rule.grid.latStep, dL = kPart * rule.grid.lonStep;
    const double du = dB * perRadian.u, dv = dL * perRadian.v;
    double ahead[kGridBlock], behind[kGridBlock];
    HeightsBeside(rule, du, 0, ahead);
    HeightsBeside(rule, -du, 0, behind);
    for (std::size_t i = 0; i < count_; ++i) perLatitude[i] = (ahead[i] - behind[i]) / (2 * dB);
    HeightsBeside(rule, 0, dv, ahead);
    HeightsBeside(rule, 0, -dv, behind);
    for (std::size_t i = 0; i < count_; ++i) perLongitude[i] = (ahead[i] - behind[i]) / (2 * dL);
  }

  /// Puts kNoHeight where a height is none.
  GEOMATH_INLINE GridTally Finish(double* GEOMATH_RESTRICT heights) const {
    GridTally tally;
    for (std::size_t i = 0; i < count_; ++i) {
      const bool invalid = IsInvalid(heights[i]), given = (place_[i] == kStencil) & !invalid;
      heights[i] = given ? heights[i] : kNoHeight;
      tally.outside += place_[i] == kOutside;
      tally.invalid += !given;
    }
    return tally;
  }

 private:
  using Node = NodeOf<Rule>;
  static constexpr std::size_t kSize = Rule::kSize;

  GEOMATH_INLINE void ReadNodes(std::size_t i, Node (&z)[kSize][kSize]) const {
    for (std::size_t r = 0; r < kSize; ++r)
      for (std::size_t c = 0; c < kSize; ++c) z[r][c] = z_[r][i][c];
  }

  GEOMATH_INLINE double HeightOf(const Rule& rule, std::size_t i, double du, double dv,
                                 double start) const {
    Node z[kSize][kSize];
    ReadNodes(i, z);
    return rule.Height(Stencil{row_[i], column_[i], u_[i] + du, v_[i] + dv, true}, z, start);
  }

  GEOMATH_INLINE void HeightsBeside(const Rule& rule, double du, double dv,
                                    double* GEOMATH_RESTRICT heights) const {
    for (std::size_t i = 0; i < count_; ++i) heights[i] = HeightOf(rule, i, du, dv, 0);
  }

  static constexpr double kOutside = 0, kNoStencil = 1, kStencil = 2;

  // Numbers of one width, which the loops need not convert.
  double u_[kGridBlock], v_[kGridBlock];  // first latitude and longitude, then those of the stencil
  double row_[kGridBlock], column_[kGridBlock], place_[kGridBlock];
  Node z_[kSize][kGridBlock][kSize];
  std::size_t count_;
};

template <class Target, class Rule>
GridTally GridKernel<Target, Rule>::Heights(const Rule& rule, const GridNodes& nodes,
                                            const RectBounds& bounds, const double* lat,
                                            const double* lon, double* heights,
                                            const GridSlopes& slopes, std::size_t count) {
  const Rule localRule = rule;  // plain numbers that no column can alias
  const RectBounds localBounds = bounds;
  GridBlock<Rule> block(count);
  block.LocateIn(localBounds, lat, lon);
  block.PlaceBy(localRule);
  block.Gather(nodes);
  block.HeightsBy(localRule, heights);
  if (slopes.perLatitude) {
    if constexpr (kStatesSlopes<Rule>)
      block.StatedSlopesBy(localRule, slopes.perLatitude, slopes.perLongitude);
    else if constexpr (kHasSlopes<Rule>)
      block.SlopesBy(localRule, slopes.perLatitude, slopes.perLongitude);
  }
  return block.Finish(heights);
}

template <class Target, class Rule>
void ProjectedGridKernel<Target, Rule>::Heights(const Rule& rule, const GridNodes& nodes,
                                                const double* north, const double* east,
                                                double* heights, std::size_t count) {
  const Rule localRule = rule;
  GridBlock<Rule> block(count);
  block.Take(north, east);
  block.PlaceBy(localRule);
  block.Gather(nodes);
  block.HeightsBy(localRule, heights);
  block.Finish(heights);
}

}  // namespace zel_cs::geomath
