#pragma once

#include <cstddef>

namespace zel_cs::geomath::simd {

/// A conversion of points of N coordinates over columns, in place. `Conversion` is a plain record of
/// prepared constants with
///   static constexpr std::size_t kColumns;                 N
///   template <class Math> void Convert(double&, …) const;  the statements of one point
///   bool Serves(double, …) const;                          absent where they hold for every point
/// both always inlined. Serves tells for which points the statements hold with Polynomial functions;
/// it is false for NaN.
/// Every Conversion is instantiated in a kernel source, which includes column_kernel_loops.h.
template <class Target, class Conversion>
struct ColumnKernel {
  /// Whether the conversion serves all points.
  static bool ServesAll(const Conversion& conversion, const double* const* columns,
                        std::size_t count);
  static void Convert(const Conversion& conversion, double* const* columns, std::size_t count);
};

}  // namespace zel_cs::geomath::simd
