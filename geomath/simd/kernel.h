#pragma once

/// @file
/// What a kernel source needs to keep code of one instruction set out of the other's reach.
///
/// A kernel source is compiled once per instruction set with GEOMATH_KERNEL_TARGET naming the tag.
/// Whatever it defines carries the tag as a template argument or is inlined, because the linker
/// merges inline functions of equal names: a machine without AVX2 would then meet AVX2 code.

#if defined(__GNUC__)
#define GEOMATH_INLINE inline __attribute__((always_inline))
#else
#define GEOMATH_INLINE inline
#endif

#if defined(__GNUC__) || defined(_MSC_VER)
#define GEOMATH_RESTRICT __restrict
#else
#define GEOMATH_RESTRICT
#endif
