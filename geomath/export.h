#pragma once

/// @file
/// @def GEOMATH_API
/// Marks what the shared library exports; users of the static one see GEOMATH_STATIC instead.
#if defined(GEOMATH_STATIC)
#define GEOMATH_API
#elif defined(_WIN32)
#if defined(GEOMATH_BUILDING)
#define GEOMATH_API __declspec(dllexport)
#else
#define GEOMATH_API __declspec(dllimport)
#endif
#else
#define GEOMATH_API __attribute__((visibility("default")))
#endif

// The library's own sources: results are promised to the bit, which these settings break.
#if defined(GEOMATH_BUILDING)
#include <cfloat>
#if defined(__FAST_MATH__)
#error "geomath cannot be built with -ffast-math or -Ofast"
#endif
#if FLT_EVAL_METHOD != 0
#error "geomath needs doubles that are computed as doubles: on 32-bit x86 build with -mfpmath=sse"
#endif
#endif
