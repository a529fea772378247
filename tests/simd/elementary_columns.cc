#include "tests/simd/elementary_columns.h"

#include "geomath/simd/elementary.h"

using Functions = zel_cs::geomath::simd::Polynomial<zel_cs::geomath::simd::GEOMATH_KERNEL_TARGET>;

namespace {

template <class Function>
GEOMATH_INLINE void Apply(const double* GEOMATH_RESTRICT x, double* GEOMATH_RESTRICT y,
                          std::size_t count, Function function) {
  for (std::size_t i = 0; i < count; ++i) y[i] = function(x[i]);
}

}  // namespace

template <class Target>
void ElementaryColumns<Target>::Sin(const double* x, double* y, std::size_t count) {
  Apply(x, y, count, [](double v) {
    double s, c;
    Functions::SinCos(v, s, c);
    return s;
  });
}

template <class Target>
void ElementaryColumns<Target>::Cos(const double* x, double* y, std::size_t count) {
  Apply(x, y, count, [](double v) {
    double s, c;
    Functions::SinCos(v, s, c);
    return c;
  });
}

template <class Target>
void ElementaryColumns<Target>::Atan(const double* x, double* y, std::size_t count) {
  Apply(x, y, count, [](double v) { return Functions::Atan(v); });
}

template <class Target>
void ElementaryColumns<Target>::Log(const double* x, double* y, std::size_t count) {
  Apply(x, y, count, [](double v) { return Functions::Log(v); });
}

template <class Target>
void ElementaryColumns<Target>::Log1p(const double* x, double* y, std::size_t count) {
  Apply(x, y, count, [](double v) { return Functions::Log1p(v); });
}

template <class Target>
void ElementaryColumns<Target>::Exp(const double* x, double* y, std::size_t count) {
  Apply(x, y, count, [](double v) { return Functions::Exp(v); });
}

template <class Target>
void ElementaryColumns<Target>::Atan2(const double* GEOMATH_RESTRICT y,
                                      const double* GEOMATH_RESTRICT x,
                                      double* GEOMATH_RESTRICT angle, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) angle[i] = Functions::Atan2(y[i], x[i]);
}

template struct ElementaryColumns<zel_cs::geomath::simd::GEOMATH_KERNEL_TARGET>;
