#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "geomath/export.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

/// Why an NTv2 file cannot be used.
enum class Ntv2Fault : unsigned char {
  none,        ///< it can
  unreadable,  ///< no such file, no regular file, or reading fails
  notNtv2,     ///< it does not begin as an NTv2 file does, in neither byte order
  truncated,   ///< it ends inside a header or the nodes of a sub-grid
  header,      ///< a header has another record, or another text or number, than it must have
  extent,      ///< limits and increments of a sub-grid do not make a grid
  parent,      ///< a sub-grid's parent is not in the file, or is its own descendant
  noMemory,    ///< no memory
};

/// What is wrong with an NTv2 file, and where.
struct Ntv2Error {
  Ntv2Fault fault = Ntv2Fault::none;  ///< the kind of fault
  std::size_t offset = 0;             ///< the byte of the file at which it shows
  std::string reason;                 ///< for a report: "sub-grid 'ONtronto': LAT_INC is 0"
};

/// What the overview of an NTv2 file says, without trailing blanks.
struct Ntv2Overview {
  /// Texts as stored; semi-axes in metres.
  std::string version, systemFrom, systemTo;
  double majorFrom = 0, minorFrom = 0, majorTo = 0, minorTo = 0;
};

/// Reads a horizontal shift grid from an NTv2 file (National Transformation version 2, Geomatics
/// Canada 1995; the binary form, usually named .gsb): from the system SYSTEM_F to SYSTEM_T.
///
/// Both byte orders, GS_TYPE seconds, minutes and degrees, sub-grids in any order and to any depth,
/// parents by their names as stored. Tolerant where files in use are: the number of nodes follows
/// from the limits and increments, whatever GS_COUNT says; the record END may be missing, and
/// anything may follow it. Node accuracies are kept as stated, in the unit that the publisher chose.
///
/// The path is UTF-8 on Windows, bytes elsewhere. Null on a fault, which `error`, when given, describes;
/// nothing outside the file is read, and no more memory taken than its size accounts for. `overview`,
/// when given, is filled on success.
GEOMATH_API std::unique_ptr<ShiftGrid> ReadNtv2File(const char* path, Ntv2Error* error = nullptr,
                                                    Ntv2Overview* overview = nullptr) noexcept;

/// The same from the bytes of a file.
GEOMATH_API std::unique_ptr<ShiftGrid> ParseNtv2(std::span<const std::byte> file,
                                                 Ntv2Error* error = nullptr,
                                                 Ntv2Overview* overview = nullptr) noexcept;

}  // namespace zel_cs::geomath
