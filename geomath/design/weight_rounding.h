#pragma once

namespace zel_cs::geomath {

/// Share of all weight that sums of weights lose to rounding: what percentiles allow for.
inline constexpr double kWeightRounding = 1e-12;

}  // namespace zel_cs::geomath
