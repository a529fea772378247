#pragma once

namespace zel_cs::geomath {

/// Direction codes, as AxisRotation keeps them, of the classes that state theirs.
inline constexpr unsigned char kNorthWestDirection = 0x81;
inline constexpr unsigned char kSouthWestDirection = 0x84;

}  // namespace zel_cs::geomath
