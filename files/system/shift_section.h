#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/models/shift_file.h"
#include "files/system/json_section.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/chain/coordinate_chain.h"

namespace geomath_files {

/// A shift of a system file with its place in the chain.
struct SystemShift {
  std::unique_ptr<zel_cs::geomath::CoordinateShift> shift;
  zel_cs::geomath::ShiftPlace place;
  zel_cs::geomath::ShiftDirection direction;
  zel_cs::geomath::ShiftOutside outside;
  /// What it was read from; without a file for parameters.
  ShiftChoice choice;
  /// As the system file has it.
  nlohmann::json entry;
};

/// One entry of the list "shifts"; `path` stands for it in messages ("shifts[0]"). Files are looked
/// for beside the system file; `bytes`, when given, are those of its file, which is not opened then.
/// Throws UserError.
SystemShift ReadShift(const std::string& file, const std::string& path,
                      const nlohmann::json& object, const zel_cs::geomath::Ellipsoid& global,
                      const std::string* bytes = nullptr);

/// Puts the shifts of a system into its chain. A datum with a fixed height is a shift itself, between
/// those before and behind it; null where there is none.
void AddShifts(zel_cs::geomath::CoordinateChain& chain,
               const std::vector<const SystemShift*>& shifts,
               const zel_cs::geomath::CoordinateShift* fixedHeight);

}  // namespace geomath_files
