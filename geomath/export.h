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
