#pragma once

#include <cstddef>
#include <cstdint>

#include "geomath/export.h"

namespace zel_cs::geomath {

struct GroundParameters;

/// Carries plane coordinates between a projection grid and a ground system: a rotation and a scale
/// about a grid origin, then a shift. The parameters are public data of the caller; metres and
/// radians. Northing and easting only, heights pass through. Conversions are const, allocate
/// nothing and may run on one object from many threads at once.
class GEOMATH_API GridToGround {
 public:
  /// Bits of `flags`.
  static constexpr std::uint32_t kDeriveScale = 0x2;  ///< scale from height and grid scale factor
  static constexpr std::uint32_t kHasOrigin = 0x4;    ///< originN and originE are valid
  static constexpr std::uint32_t kDisabled = 0x8;     ///< for the caller; conversions ignore it

  GridToGround() = default;

  /// Makes the transformation the identity, with flags 1.
  void SetTrivial();

  /// The grid origin, or 0.0 when it is not valid.
  double FNgrid() const;
  double FEgrid() const;

  /// The bit kDisabled, for the caller: conversions do not look at it.
  bool IsDisabled() const { return (flags & kDisabled) != 0; }
  void SetEnabled(bool on);

  /// Ground over grid as the conversions apply it: derived or given.
  double EffectiveScale() const;

  /// In place, grid to ground and back. `present` points to a component word (0x4 northing given,
  /// 0x8 easting given). False, arguments unchanged, when it is null, or when only one of the two
  /// is given and there is a rotation above 1e-14. Kept: a component that is not given is not
  /// written, but enters the rotation with its raw value.
  bool ToGround(double& N, double& E, double& H, unsigned long* present) const;
  bool ToGrid(double& N, double& E, double& H, unsigned long* present) const;

  /// Both components of `count` points in place; point i stands at index i * stride. A point
  /// without finite result becomes NaN in both slots. Returns the number of points converted.
  std::size_t ToGroundBatch(double* N, double* E, std::size_t count,
                            std::ptrdiff_t stride = 1) const;
  std::size_t ToGridBatch(double* N, double* E, std::size_t count, std::ptrdiff_t stride = 1) const;

  double offsetN = 0;   ///< shift of the northing, added on the ground side, metres
  double offsetE = 0;   ///< shift of the easting
  double scale = 1.0;   ///< ground over grid, used when the scale is not derived
  double height = 0;    ///< project height of the derived scale, metres
  double rotation = 0;  ///< radians, positive from north towards east
  double originN = 0;   ///< northing of the grid point about which rotation and scale act, metres
  double originE = 0;   ///< its easting
  double gridScaleFactor = 1.0;        ///< of the projection at the site, for the derived scale
  std::uint32_t flags = kDeriveScale;  ///< the bits above

 private:
  GroundParameters Parameters(unsigned long present) const;
};

}  // namespace zel_cs::geomath
