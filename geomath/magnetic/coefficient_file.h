#pragma once

#include <memory>
#include <string_view>

#include "geomath/export.h"
#include "geomath/magnetic/magnetic_model.h"

namespace zel_cs::geomath {

/// Reads a model from a coefficient file of the World Magnetic Model. Two layouts are known:
///
/// - COF: one line "epoch name release-date", then lines "n m g h gdot hdot", then a line of
///   nines. The model ends five years after its epoch.
/// - SHDF (Spherical Harmonic Data Format), known by a first character '%': lines "%Key: value", of
///   which ModelName, ReleaseDate, ModelStartDate (the epoch) and ModelEndDate count, comments
///   after '#', and lines "I,n,m,g,h,gdot,hdot" with empty fields for 0. The first model counts.
///
/// Tolerant as the publisher's reader is: rows stand in any order, a line that is no row of numbers
/// and a row whose order exceeds its degree are passed over, a missing term is 0, and the line of
/// nines may be missing. The highest degree that occurs is the model's, so a file that was cut off
/// reads as a lower or incomplete degree; CountMissingTerms tells.
///
/// Null when there is nothing to use: the path is null, not a regular file, cannot be opened or is
/// larger than 4 MiB; the epoch is no number; no row is left; a degree is above
/// kMaxMagneticDegree; there is no memory. Writes no message.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> ReadCoefficientFile(const char* path) noexcept;

/// The same from the text of a file.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> ParseCoefficients(
    std::string_view text) noexcept;

/// How many of the terms up to the model's degree are 0 in all four figures: none in the published
/// models of 2010 to 2025, some in a file that was cut off.
GEOMATH_API int CountMissingTerms(const WMMtype_MagneticModel& model) noexcept;

}  // namespace zel_cs::geomath
