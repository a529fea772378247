#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "geomath/shift/grid/part_frame.h"

namespace zel_cs::geomath {

/// The lists of a PartRaster, made once. Parts are in the order in which they are to be asked.
class PartRasterLists {
 public:
  PartRasterLists() = default;
  PartRasterLists(std::span<const PartFrame> parts, const Turn& turn);

  /// The raster over these lists, which it points to.
  PartRaster View() const;

 private:
  PartRaster frame_{};
  std::vector<std::uint32_t> starts_, listed_;
};

}  // namespace zel_cs::geomath
