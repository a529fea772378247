#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace zel_math {

/// An owning array; one dimension is all that this library uses.
template <class T, int Dimensions>
class CSmartArray;

template <class T>
class CSmartArray<T, 1> {
 public:
  CSmartArray() = default;
  explicit CSmartArray(std::size_t size) : elements_(size) {}
  CSmartArray(std::initializer_list<T> elements) : elements_(elements) {}

  T& operator[](std::size_t index) { return elements_[index]; }
  const T& operator[](std::size_t index) const { return elements_[index]; }
  std::size_t size() const { return elements_.size(); }

 private:
  std::vector<T> elements_;
};

}  // namespace zel_math
