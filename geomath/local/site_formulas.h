#pragma once

#include <cstddef>

#include "geomath/local/plane_rotation.h"
#include "geomath/simd/kernel.h"

/// The plane transformations of a site for one point, in place: single calls and the column kernels
/// are both made of these.
namespace zel_cs::geomath {

/// The parameters of a LocalToGrid.
struct SiteParameters {
  PlaneRotation rotation;  // θ
  double tN, tE, s;
  double h0, aN, aE;
};

struct GridToSite {
  static constexpr std::size_t kColumns = 3;
  SiteParameters site;

  template <class Math>
  GEOMATH_INLINE void Convert(double& N, double& E, double& H) const {
    const auto [rotation, tN, tE, s, h0, aN, aE] = site;
    const auto [n, e] = rotation.Turn(N, E);
    H = H + aN * N + aE * E + h0;
    N = s * n + tN;
    E = s * e + tE;
  }
};

struct SiteToGrid {
  static constexpr std::size_t kColumns = 3;
  SiteParameters site;

  template <class Math>
  GEOMATH_INLINE void Convert(double& N, double& E, double& H) const {
    const auto [rotation, tN, tE, s, h0, aN, aE] = site;
    const auto [n, e] = rotation.TurnBack((N - tN) / s, (E - tE) / s);
    H = H - h0 - aN * n - aE * e;
    N = n;
    E = e;
  }
};

/// The parameters of a GridToGround. A component that is not given is not written, but enters the
/// rotation with its raw value.
struct GroundParameters {
  PlaneRotation rotation;
  double originN, originE, offsetN, offsetE;
  double k;  // ground over grid
  bool hasN = true, hasE = true;
};

struct GridToGroundPlane {
  static constexpr std::size_t kColumns = 2;
  GroundParameters ground;

  template <class Math>
  GEOMATH_INLINE void Convert(double& N, double& E) const {
    const auto [rotation, originN, originE, offsetN, offsetE, k, hasN, hasE] = ground;
    const auto [n, e] = rotation.Turn(hasN ? N - originN : N, hasE ? E - originE : E);
    N = hasN ? originN + n * k + offsetN : N;
    E = hasE ? originE + e * k + offsetE : E;
  }
};

struct GroundToGridPlane {
  static constexpr std::size_t kColumns = 2;
  GroundParameters ground;

  template <class Math>
  GEOMATH_INLINE void Convert(double& N, double& E) const {
    const auto [rotation, originN, originE, offsetN, offsetE, k, hasN, hasE] = ground;
    const auto [n, e] =
        rotation.TurnBack(hasN ? N - offsetN - originN : N, hasE ? E - offsetE - originE : E);
    N = hasN ? originN + n / k : N;
    E = hasE ? originE + e / k : E;
  }
};

}  // namespace zel_cs::geomath
