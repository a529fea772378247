#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "geomath/export.h"
#include "geomath/magnetic/magnetic_model.h"

namespace zel_cs::geomath {

/// Why a file or text of coefficients is not used.
struct CoefficientFault {
  long line = 0;       ///< where, from 1; 0 when no line is at fault
  std::string reason;  ///< what is wrong there, without a full stop
};

/// Reads a model from a coefficient file of the World Magnetic Model. Two layouts are known:
///
/// - COF: one line "epoch name release-date", then lines "n m g h gdot hdot", then a line of
///   nines. The model ends five years after its epoch.
/// - SHDF (Spherical Harmonic Data Format), known by a first character '%': lines "%Key: value", of
///   which ModelName, ReleaseDate, ModelStartDate (the epoch), ModelEndDate and IntStaticDeg (the
///   highest degree) count, comments after '#', and lines "I,n,m,g,h,gdot,hdot" with empty fields
///   for 0. The first model counts.
///
/// A UTF-8 mark, blank lines and any order of the rows do not matter; numbers have a decimal point
/// under every locale. A file whose field would look right and be wrong is refused as damaged: a row
/// that is not whole and of numbers, a term that is missing or given twice, a COF file without its
/// line of nines, an SHDF file that does not reach its highest degree.
///
/// The path is UTF-8 on Windows, bytes elsewhere. Null when there is nothing to use: the file is
/// damaged; the path is null, not a regular file, cannot be opened or is larger than 4 MiB; the epoch is
/// no number; a degree is above kMaxMagneticDegree; there is no memory. `fault`, unless null, then says
/// why. Writes no message.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> ReadCoefficientFile(
    const char* path, CoefficientFault* fault = nullptr) noexcept;

/// The same from the text of a file.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> ParseCoefficients(
    std::string_view text, CoefficientFault* fault = nullptr) noexcept;

}  // namespace zel_cs::geomath
