#pragma once

#include "geomath/proj/projection_codes.h"

namespace zel_cs::geomath {

/// The most parameters that a projection has.
inline constexpr int kMaxParams = 16;

/// A kind of projection with the number of its parameters.
struct Kind {
  ProjType type;
  int paramCount;
};

/// What an object takes for them: a kind or a count beyond all becomes kind 40 without parameters,
/// and so does the kind alone where there are none.
inline Kind KindOf(unsigned int type, int paramCount) {
  if (type > static_cast<unsigned int>(ProjTypeNone) || paramCount > kMaxParams)
    return {ProjTypeNone, 0};
  return {paramCount > 0 ? static_cast<ProjType>(type) : ProjTypeNone, paramCount};
}

}  // namespace zel_cs::geomath
