#pragma once

namespace zel_cs::geomath {

/// What a height slot holds, and a stored node too, where there is no geoid height.
inline constexpr double kNoHeight = 20000.0;

/// Results of the queries of a regional grid besides 0.
inline constexpr long kGeoidFailed = 1;                               ///< no data, or a failure
inline constexpr long kAllOutside = static_cast<long>(0x80040606UL);  ///< no point in the grid
inline constexpr long kSomeWithoutHeight =
    static_cast<long>(0x80040607UL);  ///< some outside or invalid

}  // namespace zel_cs::geomath
