#include "geomath/platform/zel_memory.h"

#include <cstdlib>
#include <limits>

void* zel_operator_new(unsigned int bytes) noexcept { return std::malloc(bytes); }

namespace zel_cs::geomath {

void* OnHostHeap::operator new(std::size_t bytes) noexcept {
  if (bytes > std::numeric_limits<unsigned int>::max()) return nullptr;
  return zel_operator_new(static_cast<unsigned int>(bytes));
}
void* OnHostHeap::operator new[](std::size_t bytes) noexcept { return operator new(bytes); }
void OnHostHeap::operator delete(void* memory) noexcept { std::free(memory); }
void OnHostHeap::operator delete[](void* memory) noexcept { std::free(memory); }

}  // namespace zel_cs::geomath
