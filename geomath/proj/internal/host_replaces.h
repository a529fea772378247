#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

#if defined(__GXX_ABI_VERSION) && !defined(_MSC_VER)

/// The table of virtual functions of an object's class: an object begins with its address (Itanium
/// C++ ABI, 2.4, which GCC and Clang follow).
inline const char* VirtualTable(const TGeoProj& proj) {
  const char* table;
  std::memcpy(&table, static_cast<const void*>(&proj), sizeof table);
  return table;
}

/// What a class runs for a virtual member function: a pointer to one holds the offset of its entry
/// in the table and, there in the lowest bit or beside it, that it is virtual (2.3).
template <class Function>
const void* VirtualEntry(const char* table, Function function) {
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

/// Whether a host's class has replaced a virtual function that none of the library's own classes
/// replaces, as HostReplaces(proj, &TGeoProj::_Forward).
template <class Function>
bool HostReplaces(const TGeoProj& proj, Function function) {
  static const char* const library = VirtualTable(TGeoProj());
  return VirtualEntry(VirtualTable(proj), function) != VirtualEntry(library, function);
}

#else

/// With another ABI nothing counts as replaced: a host's class there overrides the blocks as well.
template <class Function>
bool HostReplaces(const TGeoProj&, Function) {
  return false;
}

#endif

}  // namespace zel_cs::geomath
