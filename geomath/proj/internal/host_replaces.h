#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geomath/proj/geo_proj.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

#if defined(__GXX_ABI_VERSION) && !defined(_MSC_VER) && !defined(GEOMATH_COMPACT)

/// The table of virtual functions of an object's class: an object begins with its address (Itanium
/// C++ ABI, 2.4, which GCC and Clang follow).
GEOMATH_INLINE const char* VirtualTable(const TGeoProj& proj) {
  const char* table;
  std::memcpy(&table, static_cast<const void*>(&proj), sizeof table);
  return table;
}

/// What a class runs for a virtual member function: a pointer to one holds the offset of its entry
/// in the table and, there in the lowest bit or beside it, that it is virtual (2.3).
template <class Function>
GEOMATH_INLINE const void* VirtualEntry(const char* table, Function function) {
  struct {
    std::uintptr_t offset;
    std::ptrdiff_t adjustment;
  } pointer;
  static_assert(sizeof pointer == sizeof function);
  std::memcpy(&pointer, &function, sizeof pointer);
  const void* entry;
  std::memcpy(&entry, table + (pointer.offset & ~std::uintptr_t{1}), sizeof entry);
  return entry;
}

inline const char* LibraryTable() {
  static const char* const table = VirtualTable(TGeoProj());
  return table;
}

/// Whether a host's class has replaced a virtual function that none of the library's own classes
/// replaces, as HostReplaces<&TGeoProj::_Forward>(proj). Each point asks: the function is a constant,
/// so that two loads and a comparison answer.
template <auto kFunction>
GEOMATH_INLINE bool HostReplaces(const TGeoProj& proj) {
  return VirtualEntry(VirtualTable(proj), kFunction) != VirtualEntry(LibraryTable(), kFunction);
}

#else

/// With another ABI nothing counts as replaced: a host's class there overrides the blocks as well. A
/// compact build, a module that is closed, has no hosts.
template <auto kFunction>
bool HostReplaces(const TGeoProj&) {
  return false;
}

#endif

}  // namespace zel_cs::geomath
