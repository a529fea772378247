#include "geomath/local/packed_symmetric.h"

#include <cmath>

namespace zel_cs::geomath {
namespace {

// Index of (row, column), row ≤ column, both from 0.
int At(int row, int column) { return column * (column + 1) / 2 + row; }

}  // namespace

bool InvertPackedSymmetric(double* a, int n) {
  for (int k = 0; k < n; ++k) {  // A = RᵀR
    double pivot = a[At(k, k)];
    for (int i = 0; i < k; ++i) pivot -= a[At(i, k)] * a[At(i, k)];
    if (!(pivot > 0)) return false;
    a[At(k, k)] = std::sqrt(pivot);
    for (int j = k + 1; j < n; ++j) {
      double sum = a[At(k, j)];
      for (int i = 0; i < k; ++i) sum -= a[At(i, k)] * a[At(i, j)];
      a[At(k, j)] = sum / a[At(k, k)];
    }
  }
  for (int j = 0; j < n; ++j) {  // R becomes R⁻¹, column by column
    for (int i = 0; i < j; ++i) {
      double sum = 0;
      for (int k = i; k < j; ++k) sum += a[At(i, k)] * a[At(k, j)];
      a[At(i, j)] = -sum / a[At(j, j)];
    }
    a[At(j, j)] = 1 / a[At(j, j)];
  }
  for (int j = 0; j < n; ++j) {  // R⁻¹·R⁻ᵀ; an element needs only later columns
    for (int i = 0; i <= j; ++i) {
      double sum = 0;
      for (int k = j; k < n; ++k) sum += a[At(i, k)] * a[At(j, k)];
      a[At(i, j)] = sum;
    }
  }
  return true;
}

}  // namespace zel_cs::geomath
