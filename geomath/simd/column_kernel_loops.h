#pragma once

/// The loops of ColumnKernel; included by kernel sources only.

#include <cstdint>
#include <utility>

#include "geomath/simd/column_kernel.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/instruction_set.h"
#include "geomath/simd/kernel.h"
#include "geomath/simd/pack.h"

namespace zel_cs::geomath::simd {

/// Whether a conversion uses polynomials, which hold for some points only.
template <class Conversion>
concept HasDomain = requires {
  &Conversion::Serves;
};

/// The constants come by value: no column can alias them.
template <class Target, class Conversion>
struct ColumnLoops {
  /// Registers of each column that go side by side, operation by operation. In a polynomial each waits
  /// for the one before, and a processor does not look ahead as far as the next register's. A build whose
  /// size counts takes one after the other.
#if defined(GEOMATH_COMPACT)
  static constexpr std::size_t kAbreast = 1;
#else
  static constexpr std::size_t kAbreast = HasDomain<Conversion> ? 4 : 1;
#endif

  template <class... Column>
  static void Convert(Conversion conversion, std::size_t count,
                      Column* GEOMATH_RESTRICT... columns) {
    std::size_t i = 0;
    if constexpr (kAbreast > 1) i = ConvertAbreast(conversion, count, columns...);
    for (; i < count; ++i) conversion.template Convert<Polynomial<Target>>(columns[i]...);
  }

  /// The points of whole groups of registers; returns how many.
  template <class... Column>
  static GEOMATH_INLINE std::size_t ConvertAbreast(const Conversion& conversion, std::size_t count,
                                                   Column* GEOMATH_RESTRICT... columns) {
    const std::size_t whole = count & ~(kAbreast * RegisterLanes<Target>() - 1);
#if defined(__clang__)
#pragma clang loop interleave_count(4)
    for (std::size_t i = 0; i < whole; ++i)
      conversion.template Convert<Polynomial<Target>>(columns[i]...);
#else
    // A step of GCC is as many points as fill a register with the narrowest numbers of a loop: these have
    // a quarter of a double's width, and do nothing else.
    std::uint16_t narrow = 0;
    for (std::size_t i = 0; i < whole; ++i) {
      narrow = static_cast<std::uint16_t>(narrow | i);
      conversion.template Convert<Polynomial<Target>>(columns[i]...);
    }
#if defined(__GNUC__)
    asm volatile("" ::"r"(narrow));  // as if somebody needed it
#endif
#endif
    return whole;
  }

#if defined(GEOMATH_COMPACT) && defined(__wasm_simd128__)
  /// Pairs of points, whole vectors, and of an odd number the last one twice: no second form of the
  /// statements is needed for a rest.
  template <std::size_t... C>
  static void ConvertPairs(const Conversion& conversion, std::size_t count, double* const* columns,
                           std::index_sequence<C...>) {
    if (const std::size_t even = count & ~std::size_t{1}) Pairs(conversion, even, columns[C]...);
    if (count % 2 == 0) return;
    double last[sizeof...(C)][2];
    ((last[C][0] = last[C][1] = columns[C][count - 1]), ...);
    Pairs(conversion, 2, last[C]...);
    ((columns[C][count - 1] = last[C][0]), ...);
  }

  template <class... Column>
  [[gnu::noinline]] static void Pairs(Conversion conversion, std::size_t count,
                                      Column* GEOMATH_RESTRICT... columns) {
#pragma clang loop unroll(disable)
    for (std::size_t i = 0; i < count; i += 2) {
#pragma clang loop vectorize_width(2) interleave_count(1) unroll(disable)
      for (std::size_t k = i; k < i + 2; ++k)
        conversion.template Convert<Polynomial<Target>>(columns[k]...);
    }
  }
#endif

  template <class... Column>
  static bool ServesAll(Conversion conversion, std::size_t count, const Column*... columns) {
    std::size_t refused = 0;
    for (std::size_t i = 0; i < count; ++i) refused |= !conversion.Serves(columns[i]...);
    return refused == 0;
  }
};

template <class Target, class Conversion>
bool ColumnKernel<Target, Conversion>::ServesAll(const Conversion& conversion,
                                                 const double* const* columns, std::size_t count) {
  if constexpr (HasDomain<Conversion>) {
    return [&]<std::size_t... C>(std::index_sequence<C...>) {
      return ColumnLoops<Target, Conversion>::ServesAll(conversion, count, columns[C]...);
    }
    (std::make_index_sequence<Conversion::kColumns>());
  } else {
    return true;
  }
}

template <class Target, class Conversion>
void ColumnKernel<Target, Conversion>::Convert(const Conversion& conversion, double* const* columns,
                                               std::size_t count) {
  constexpr std::make_index_sequence<Conversion::kColumns> indices;
#if defined(GEOMATH_COMPACT) && defined(__wasm_simd128__)
  ColumnLoops<Target, Conversion>::ConvertPairs(conversion, count, columns, indices);
#else
  [&]<std::size_t... C>(std::index_sequence<C...>) {
    ColumnLoops<Target, Conversion>::Convert(conversion, count, columns[C]...);
  }
  (indices);
#endif
}

}  // namespace zel_cs::geomath::simd
