#pragma once

#include <optional>
#include <span>
#include <string>

#include "geomath/frame/frame_table.h"

namespace geomath_files {

/// The reference frame in which a geographic system of the registry has its positions.
struct NationalFrame {
  zel_cs::geomath::ReferenceFrame frame;
  /// What is taken for what, where the name of the system does not say it; null where it does.
  const char* remark = nullptr;
  /// A file with a deformation model that leads from the date to the positions of the system; null
  /// where they stay at their date.
  const char* model = nullptr;
};

/// By the name of the system; nothing where no published parameters lead to it.
std::optional<NationalFrame> NationalFrameOf(const std::string& system);

/// The codes of geographic systems with such a frame, through which others are reached.
std::span<const char* const> NationalSystems();

/// The code of the geographic system of a frame; empty where the registry has none.
std::string CodeOfFrame(zel_cs::geomath::ReferenceFrame frame);

}  // namespace geomath_files
