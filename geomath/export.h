#pragma once

/// @file
/// GEOMATH_API marks what the shared library exports; everything else stays hidden.
/// A program that links the static library sees GEOMATH_STATIC from the package.
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
