#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/system/json_section.h"
#include "files/system/system_shift.h"
#include "geomath/base/ellipsoid.h"

namespace geomath_files {

/// One entry of the list "shifts"; `path` stands for it in messages ("shifts[0]"). Files are looked
/// for beside the system file; `bytes`, when given, are those of its files, which are not opened then.
/// Throws UserError.
SystemShift ReadShift(const std::string& file, const std::string& path,
                      const nlohmann::json& object, const zel_cs::geomath::Ellipsoid& global,
                      const ShiftBytes* bytes = nullptr);

/// Puts the shifts of a system into its chain. A datum with a fixed height is a shift itself, between
/// those before and behind it; null where there is none.
void AddShifts(zel_cs::geomath::CoordinateChain& chain,
               const std::vector<const SystemShift*>& shifts,
               const zel_cs::geomath::CoordinateShift* fixedHeight);

}  // namespace geomath_files
