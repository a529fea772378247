#pragma once

#include <cstddef>

/// Every operation of a Pack in one expression, on doubles and on packs of them.
template <class Number>
inline Number OperationsOfPack(const Number& a, const Number& b) {
  Number sum = 3.0 * a + b / 7.0;
  sum += a * b;
  sum -= b;
  sum *= a;
  sum /= 1.5 - b;
  return sum + -0.0;
}

/// The same over columns of 16 doubles in packs of 8 and of 16 lanes.
template <class Target>
struct PackColumns {
  static constexpr std::size_t kLength = 16;
  static void ByEight(const double* a, const double* b, double* result);
  static void BySixteen(const double* a, const double* b, double* result);
};
