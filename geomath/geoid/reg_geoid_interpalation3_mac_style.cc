#include "geomath/geoid/reg_geoid_interpalation3_mac_style.h"

#include <array>
#include <bit>
#include <optional>

#include "geomath/geoid/biquadratic.h"
#include "geomath/geoid/three_point.h"

namespace zel_cs::geomath {
namespace {

float Swapped(const std::array<unsigned char, sizeof(float)>& stored) {
  std::array<unsigned char, sizeof(float)> bytes;
  ConvertBytes(bytes.data(), stored.data(), sizeof(float));
  return std::bit_cast<float>(bytes);
}

}  // namespace

int RegGeoidInterpalation3MACStyle::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                           int NX, double* point, double& height) const {
  const GridNodes nodes(data, rowStride, NX, NY);
  const TGridRgn& grid = data_.grid;
  height = Biquadratic(grid, NY, NX, point, [&](NodeIndex row, NodeIndex j, double offset) {
    return ParabolaOfRow(grid.lonStep, offset, j, [&](NodeIndex column) {
      const auto stored = nodes.Read<std::array<unsigned char, sizeof(float)>>(row, column);
      return stored ? std::optional(Swapped(*stored)) : std::nullopt;
    });
  });
  return 0;
}

}  // namespace zel_cs::geomath
