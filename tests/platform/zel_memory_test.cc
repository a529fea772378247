#include "geomath/platform/zel_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

namespace zel_cs::geomath {
namespace {

struct Guest : OnHostHeap {
  virtual ~Guest() = default;
  double payload[3] = {1, 2, 3};
};

TEST(HostHeap, ReleasesWithFree) {
  void* memory = zel_operator_new(24);
  ASSERT_NE(memory, nullptr);
  std::free(memory);

  OnHostHeap::operator delete[](zel_operator_new(8));
}

TEST(HostHeap, CreatesAndDeletesObjectsAndArrays) {
  const std::unique_ptr<OnHostHeap, void (*)(OnHostHeap*)> guest(
      new Guest, [](OnHostHeap* p) { delete static_cast<Guest*>(p); });
  EXPECT_EQ(static_cast<Guest*>(guest.get())->payload[2], 3);
  const std::unique_ptr<Guest[]> guests(new Guest[5]);
  EXPECT_EQ(guests[4].payload[0], 1);

  alignas(Guest) unsigned char place[sizeof(Guest)];
  Guest* placed = new (place) Guest;
  EXPECT_EQ(static_cast<void*>(placed), static_cast<void*>(place));
  placed->~Guest();
}

// As a host's class with a row of SIMD lanes in it.
struct alignas(128) WideGuest : Guest {
  double lanes[16] = {};
};

TEST(HostHeap, AlignsClassesThatAskForMoreThanMallocGives) {
  const auto aligned = [](const void* p) {
    return reinterpret_cast<std::uintptr_t>(p) % alignof(WideGuest) == 0;
  };
  // Several at once: memory that is aligned by chance does not stay so.
  std::unique_ptr<Guest> guests[8];
  std::unique_ptr<WideGuest[]> rows[4];
  for (auto& guest : guests) {
    guest.reset(new WideGuest);  // deleted through its base
    EXPECT_TRUE(aligned(guest.get()));
  }
  for (auto& row : rows) {
    row.reset(new WideGuest[3]);
    EXPECT_TRUE(aligned(row.get()));
  }
}

TEST(HostHeap, GivesNullBeyondTheRangeOfTheHostsCounter) {
  if constexpr (sizeof(std::size_t) > sizeof(unsigned int)) {
    const std::size_t tooMuch = std::size_t{std::numeric_limits<unsigned int>::max()} + 1;
    EXPECT_EQ(OnHostHeap::operator new(tooMuch), nullptr);
    EXPECT_EQ(OnHostHeap::operator new[](tooMuch), nullptr);
    EXPECT_EQ(OnHostHeap::operator new[](tooMuch, std::align_val_t{64}), nullptr);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
