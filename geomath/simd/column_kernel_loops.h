#pragma once

/// The loops of ColumnKernel; included by kernel sources only.

#include <utility>

#include "geomath/simd/column_kernel.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/instruction_set.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath::simd {

/// The constants come by value: no column can alias them.
template <class Target, class Conversion>
struct ColumnLoops {
  template <class... Column>
  static void Convert(Conversion conversion, std::size_t count,
                      Column* GEOMATH_RESTRICT... columns) {
    for (std::size_t i = 0; i < count; ++i)
      conversion.template Convert<Polynomial<Target>>(columns[i]...);
  }

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
  if constexpr (requires { &Conversion::Serves; }) {
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
  [&]<std::size_t... C>(std::index_sequence<C...>) {
    ColumnLoops<Target, Conversion>::Convert(conversion, count, columns[C]...);
  }
  (std::make_index_sequence<Conversion::kColumns>());
}

}  // namespace zel_cs::geomath::simd
