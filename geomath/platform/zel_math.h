#pragma once

#include <cmath>

#include "geomath/platform/smart_array.h"

namespace zel_math {

/// N numbers with element-wise arithmetic and exact comparison. Index access is unchecked.
/// Used as (B, L, H) or (X, Y, Z) with N = 3, as a pair with N = 2, and row by row as a 2 × 2
/// matrix with N = 4.
template <class T, int N>
class TAbstractPoint {
 public:
  /// Leaves the elements uninitialised.
  TAbstractPoint() {}  // NOLINT(modernize-use-equals-default): {} must not zero the elements
  /// Fills every element with `value`.
  TAbstractPoint(const T& value) {
    for (T& x : v_) x = value;
  }

  /// Fills every element with `value`.
  TAbstractPoint& operator=(const T& value) {
    for (T& x : v_) x = value;
    return *this;
  }

  /// Exact comparison, element by element; a NaN is equal to nothing.
  bool operator==(const TAbstractPoint& other) const {
    for (int i = 0; i < N; ++i)
      if (!(v_[i] == other.v_[i])) return false;
    return true;
  }
  bool operator==(T value) const { return *this == TAbstractPoint(value); }
  bool operator!=(const TAbstractPoint& other) const { return !(*this == other); }
  bool operator!=(T value) const { return !(*this == value); }

  /// The elements. Unchecked.
  T& operator[](int i) { return v_[i]; }
  T operator[](int i) const { return v_[i]; }
  operator T*() { return v_; }
  operator const T*() const { return v_; }

  /// Every element times or over one number, by the rules of T.
  TAbstractPoint operator*(T factor) const { return TAbstractPoint(*this) *= factor; }
  TAbstractPoint operator/(T divisor) const { return TAbstractPoint(*this) /= divisor; }
  TAbstractPoint& operator*=(T factor) {
    for (T& x : v_) x *= factor;
    return *this;
  }
  TAbstractPoint& operator/=(T divisor) {
    for (T& x : v_) x /= divisor;
    return *this;
  }

  /// The dot product.
  T operator*(const TAbstractPoint& other) const {
    T total = v_[0] * other.v_[0];
    for (int i = 1; i < N; ++i) total += v_[i] * other.v_[i];
    return total;
  }

  /// Element by element; the quotient as in operator/=.
  TAbstractPoint operator+(const TAbstractPoint& other) const {
    return TAbstractPoint(*this) += other;
  }
  TAbstractPoint operator-(const TAbstractPoint& other) const {
    return TAbstractPoint(*this) -= other;
  }
  TAbstractPoint operator/(const TAbstractPoint& other) const {
    return TAbstractPoint(*this) /= other;
  }
  TAbstractPoint operator-() const { return TAbstractPoint(*this).uminus(); }

  /// Element by element, in place.
  TAbstractPoint& operator+=(const TAbstractPoint& other) {
    for (int i = 0; i < N; ++i) v_[i] += other.v_[i];
    return *this;
  }
  TAbstractPoint& operator-=(const TAbstractPoint& other) {
    for (int i = 0; i < N; ++i) v_[i] -= other.v_[i];
    return *this;
  }
  TAbstractPoint& operator*=(const TAbstractPoint& other) {
    for (int i = 0; i < N; ++i) v_[i] *= other.v_[i];
    return *this;
  }
  /// Element-wise quotient. An element whose operands are finite but whose quotient is not
  /// becomes 0.
  TAbstractPoint& operator/=(const TAbstractPoint& other) {
    for (int i = 0; i < N; ++i) v_[i] = QuotientOrZero(v_[i], other.v_[i]);
    return *this;
  }

  /// Negates in place.
  TAbstractPoint& uminus() {
    for (T& x : v_) x = -x;
    return *this;
  }
  /// In place: x stays when x > 0, otherwise becomes −x, so that +0 becomes −0.
  TAbstractPoint& abs() {
    for (T& x : v_) x = x > 0 ? x : -x;
    return *this;
  }
  /// In place, per element: keeps this one when it is strictly greater, else takes the other's.
  TAbstractPoint& maximum(const TAbstractPoint& other) {
    for (int i = 0; i < N; ++i) v_[i] = v_[i] > other.v_[i] ? v_[i] : other.v_[i];
    return *this;
  }
  /// In place, per element: keeps this one when it is strictly smaller, else takes the other's.
  TAbstractPoint& minimum(const TAbstractPoint& other) {
    for (int i = 0; i < N; ++i) v_[i] = v_[i] < other.v_[i] ? v_[i] : other.v_[i];
    return *this;
  }

  /// Square of the length, length, and sum of the elements.
  T ModuleSq() const { return *this * *this; }
  T Module() const { return std::sqrt(ModuleSq()); }
  T sum() const {
    T total = v_[0];
    for (int i = 1; i < N; ++i) total += v_[i];
    return total;
  }

  /// A new point with `function` applied to each element.
  TAbstractPoint f(T (*function)(T)) const {
    TAbstractPoint result(*this);
    for (T& x : result.v_) x = function(x);
    return result;
  }

 private:
  static T QuotientOrZero(T dividend, T divisor) {
    const T quotient = dividend / divisor;
    const bool fault =
        !std::isfinite(quotient) && std::isfinite(dividend) && std::isfinite(divisor);
    return fault ? T(0) : quotient;
  }

  T v_[N];
};

/// A pair.
template <class T>
class TAbstractPoint2 : public TAbstractPoint<T, 2> {
 public:
  TAbstractPoint2() {}  // NOLINT(modernize-use-equals-default): leaves the elements uninitialised
  /// Fills both elements.
  TAbstractPoint2(const T& value) : TAbstractPoint<T, 2>(value) {}
  /// The same pair.
  TAbstractPoint2(const TAbstractPoint<T, 2>& point) : TAbstractPoint<T, 2>(point) {}
  /// From its elements.
  TAbstractPoint2(T x, T y) {
    (*this)[0] = x;
    (*this)[1] = y;
  }
};

/// A triple: (B, L, H) in radians and metres, or (X, Y, Z) in metres.
template <class T>
class TAbstractPoint3 : public TAbstractPoint<T, 3> {
 public:
  TAbstractPoint3() {}  // NOLINT(modernize-use-equals-default): leaves the elements uninitialised
  /// Fills all elements.
  TAbstractPoint3(const T& value) : TAbstractPoint<T, 3>(value) {}
  /// The same triple.
  TAbstractPoint3(const TAbstractPoint<T, 3>& point) : TAbstractPoint<T, 3>(point) {}
  /// From its elements.
  TAbstractPoint3(T x, T y, T z) {
    (*this)[0] = x;
    (*this)[1] = y;
    (*this)[2] = z;
  }
};

/// A rectangle by its four edges, in the unit that its user states.
template <class T>
struct TAbstractRect {
  /// The edges; 0 until set.
  T west{}, south{}, east{}, north{};

  /// West, south, east, north for 0 to 3. Unchecked.
  constexpr T& operator[](int i) { return this->*Edge(i); }
  constexpr T operator[](int i) const { return this->*Edge(i); }

 private:
  static constexpr T TAbstractRect::*Edge(int i) {
    constexpr T TAbstractRect::*edges[] = {&TAbstractRect::west, &TAbstractRect::south,
                                           &TAbstractRect::east, &TAbstractRect::north};
    return edges[i];
  }
};

/// A matrix type of the host. Only its address travels through this library.
class TSMatrix;

}  // namespace zel_math

namespace zel_cs::geomath {
using zel_math::CSmartArray;
using zel_math::TAbstractPoint;
using zel_math::TAbstractPoint2;
using zel_math::TAbstractPoint3;
using zel_math::TAbstractRect;
using zel_math::TSMatrix;
}  // namespace zel_cs::geomath
