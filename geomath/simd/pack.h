#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath::simd {

/// Doubles in one register of the instruction set that a kernel source is compiled for.
template <class Target>
constexpr std::size_t RegisterLanes() {
#if defined(__AVX512F__)
  return 8;
#elif defined(__AVX__)
  return 4;
#else
  return 2;
#endif
}

/// N doubles that go through the same operations side by side, for a recurrence whose terms follow
/// each other while its points are independent. The compilers vectorise a plain loop over columns;
/// a loop over lanes inside of a loop over terms they keep in memory, where this type keeps it in
/// registers. N is a multiple of RegisterLanes<Target>(): one register leaves the processor waiting
/// for the recurrence, two or more fill the wait. A smaller power of two takes a part of a register.
///
/// Every operation is that of a double, lane by lane, so that a lane's result depends neither on its
/// neighbours nor on N nor on the instruction set. A double stands for N equal lanes. For kernel
/// sources only: Target is the tag of the one that is being compiled.
template <class Target, std::size_t N>
class Pack {
 public:
  static constexpr std::size_t kLanes = N;

  /// Leaves the lanes uninitialised.
  GEOMATH_INLINE Pack() {}  // NOLINT(modernize-use-equals-default): {} must not zero the lanes
  GEOMATH_INLINE Pack(double all) {
    for (Register& r : registers_) r = all - Register{};  // x − 0 is x, −0 too
  }
  /// Register by register, since GCC takes a copy of the whole array through memory.
  GEOMATH_INLINE Pack(const Pack& other) { *this = other; }
  GEOMATH_INLINE Pack& operator=(const Pack& other) {
    for (std::size_t i = 0; i < kRegisters; ++i) registers_[i] = other.registers_[i];
    return *this;
  }
  /// N doubles from `from` on, of any alignment.
  static GEOMATH_INLINE Pack Load(const double* from) {
    Pack pack;
    for (std::size_t i = 0; i < kRegisters; ++i)
      std::memcpy(&pack.registers_[i], from + i * kRegisterLanes, sizeof(Register));
    return pack;
  }
  GEOMATH_INLINE void Store(double* to) const {
    for (std::size_t i = 0; i < kRegisters; ++i)
      std::memcpy(to + i * kRegisterLanes, &registers_[i], sizeof(Register));
  }

  GEOMATH_INLINE Pack& operator+=(const Pack& other) {
    for (std::size_t i = 0; i < kRegisters; ++i) registers_[i] += other.registers_[i];
    return *this;
  }
  GEOMATH_INLINE Pack& operator-=(const Pack& other) {
    for (std::size_t i = 0; i < kRegisters; ++i) registers_[i] -= other.registers_[i];
    return *this;
  }
  GEOMATH_INLINE Pack& operator*=(const Pack& other) {
    for (std::size_t i = 0; i < kRegisters; ++i) registers_[i] *= other.registers_[i];
    return *this;
  }
  GEOMATH_INLINE Pack& operator/=(const Pack& other) {
    for (std::size_t i = 0; i < kRegisters; ++i) registers_[i] /= other.registers_[i];
    return *this;
  }
  friend GEOMATH_INLINE Pack operator+(Pack a, const Pack& b) { return a += b; }
  friend GEOMATH_INLINE Pack operator-(Pack a, const Pack& b) { return a -= b; }
  friend GEOMATH_INLINE Pack operator*(Pack a, const Pack& b) { return a *= b; }
  friend GEOMATH_INLINE Pack operator/(Pack a, const Pack& b) { return a /= b; }

 private:
#if defined(__GNUC__)
  // A vector type that is wider than the registers would be lowered through memory.
  static constexpr std::size_t kRegisterLanes = std::min(N, RegisterLanes<Target>());
  using Register [[gnu::vector_size(kRegisterLanes * sizeof(double))]] = double;
#else
  static constexpr std::size_t kRegisterLanes = 1;
  using Register = double;
#endif
  static constexpr std::size_t kRegisters = N / kRegisterLanes;
  static_assert(kRegisters * kRegisterLanes == N);

  Register registers_[kRegisters];
};

}  // namespace zel_cs::geomath::simd
