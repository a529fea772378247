#pragma once

#include <cstddef>
#include <new>

#include "geomath/export.h"

/// Allocates for the classes of this library that hosts create and delete across module borders:
/// the C runtime's malloc. Null when there is no memory; the memory is released with free.
GEOMATH_API void* zel_operator_new(unsigned int bytes) noexcept;

namespace zel_cs::geomath {

/// Gives a class hierarchy one allocator, whichever module creates or deletes an object: memory
/// comes from zel_operator_new and returns to free. The noexcept forms make a new-expression
/// yield null, instead of throwing, when there is no memory. A class that asks for more alignment
/// than malloc gives gets it, from the aligned allocation of the C runtime. The placement forms do
/// nothing.
struct GEOMATH_API OnHostHeap {
  /// From zel_operator_new and back to free.
  static void* operator new(std::size_t bytes) noexcept;
  static void* operator new[](std::size_t bytes) noexcept;
  static void operator delete(void* memory) noexcept;
  static void operator delete[](void* memory) noexcept;
  /// For classes of more alignment than std::max_align_t, which the compiler sends here.
  static void* operator new(std::size_t bytes, std::align_val_t alignment) noexcept;
  static void* operator new[](std::size_t bytes, std::align_val_t alignment) noexcept;
  static void operator delete(void* memory, std::align_val_t alignment) noexcept;
  static void operator delete[](void* memory, std::align_val_t alignment) noexcept;
  /// In memory of the caller.
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new[](std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}
  static void operator delete[](void*, void*) noexcept {}
};

}  // namespace zel_cs::geomath
