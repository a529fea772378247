#pragma once

#include "geomath/export.h"
#include "geomath/platform/smart_array.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

/// The parabola through three equidistant nodes v[0], v[1], v[2] at −step, 0 and +step, evaluated at
/// `offset` (Stirling's formula to second differences). `offset` and `step` have one unit. The
/// second difference is formed in single precision (Kept: it changes the last digits). Fewer than
/// three nodes give kNoHeight.
GEOMATH_API double PIP(double step, double offset, const CSmartArray<float, 1>& v);

/// The same over 16-bit nodes, the second difference formed in integers.
GEOMATH_API double PIPWord(double step, double offset, const CSmartArray<short, 1>& v);

/// Writes the `n` bytes of `src` into `dst` in reverse order and returns `dst`; nothing below 1.
/// The two may be the same, but not otherwise overlap.
GEOMATH_API unsigned char* ConvertBytes(unsigned char* dst, const unsigned char* src, int n);

}  // namespace zel_cs::geomath
