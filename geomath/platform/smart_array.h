#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace zel_math {

/// An owning array; one dimension is all that this library uses.
template <class T, int Dimensions>
class CSmartArray;

/// The one-dimensional array. Copies are deep; index access is unchecked.
template <class T>
class CSmartArray<T, 1> {
 public:
  CSmartArray() = default;
  /// `size` zeros.
  explicit CSmartArray(std::size_t size) : elements_(size) {}
  /// The elements of a list.
  CSmartArray(std::initializer_list<T> elements) : elements_(elements) {}

  /// The element at an index from 0.
  T& operator[](std::size_t index) { return elements_[index]; }
  const T& operator[](std::size_t index) const { return elements_[index]; }
  /// The number of elements.
  std::size_t size() const { return elements_.size(); }

 private:
  std::vector<T> elements_;
};

}  // namespace zel_math
