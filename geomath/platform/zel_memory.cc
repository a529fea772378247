#include "geomath/platform/zel_memory.h"

#include <cstdlib>
#include <limits>

#if defined(_WIN32)
#include <malloc.h>
#endif

void* zel_operator_new(unsigned int bytes) noexcept { return std::malloc(bytes); }

namespace zel_cs::geomath {
namespace {

// The hosts' counter of bytes ends here, whatever the allocation.
constexpr std::size_t kMaxBytes = std::numeric_limits<unsigned int>::max();

#if defined(_WIN32)
void* AllocateAligned(std::size_t bytes, std::size_t alignment) {
  return _aligned_malloc(bytes, alignment);
}
void FreeAligned(void* memory) { _aligned_free(memory); }
#else
void* AllocateAligned(std::size_t bytes, std::size_t alignment) {
  const std::size_t wholeBlocks = (bytes + alignment - 1) / alignment * alignment;  // as C11 asks
  return std::aligned_alloc(alignment, wholeBlocks);
}
void FreeAligned(void* memory) { std::free(memory); }
#endif

}  // namespace

void* OnHostHeap::operator new(std::size_t bytes) noexcept {
  return bytes <= kMaxBytes ? zel_operator_new(static_cast<unsigned int>(bytes)) : nullptr;
}
void* OnHostHeap::operator new[](std::size_t bytes) noexcept { return operator new(bytes); }
void OnHostHeap::operator delete(void* memory) noexcept { std::free(memory); }
void OnHostHeap::operator delete[](void* memory) noexcept { std::free(memory); }

void* OnHostHeap::operator new(std::size_t bytes, std::align_val_t alignment) noexcept {
  const auto boundary = static_cast<std::size_t>(alignment);
  return bytes <= kMaxBytes - boundary ? AllocateAligned(bytes, boundary) : nullptr;
}
void* OnHostHeap::operator new[](std::size_t bytes, std::align_val_t alignment) noexcept {
  return operator new(bytes, alignment);
}
void OnHostHeap::operator delete(void* memory, std::align_val_t) noexcept { FreeAligned(memory); }
void OnHostHeap::operator delete[](void* memory, std::align_val_t) noexcept { FreeAligned(memory); }

}  // namespace zel_cs::geomath
