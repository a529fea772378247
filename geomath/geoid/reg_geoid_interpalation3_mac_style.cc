#include "geomath/geoid/reg_geoid_interpalation3_mac_style.h"

#include <cstring>
#include <optional>

#include "geomath/geoid/biquadratic.h"
#include "geomath/geoid/three_point.h"

namespace zel_cs::geomath {
namespace {

constexpr int kSize = sizeof(float);

}  // namespace

int RegGeoidInterpalation3MACStyle::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                           int NX, double* point, double& height) const {
  const GridNodes nodes(data, rowStride, NX, NY);
  const TGridRgn& grid = data_.grid;
  const auto rowValue = [&](NodeIndex row, NodeIndex j, double offset) -> std::optional<double> {
    unsigned char stored[3][kSize], native[3][kSize];
    if (!nodes.Read(row, j - 1, stored)) return std::nullopt;
    for (int k = 0; k < 3; ++k) ConvertBytes(native[k], stored[k], kSize);
    float z[3];
    std::memcpy(z, native, sizeof z);
    return ParabolaOfRow(grid.lonStep, offset, z);
  };
  height = Biquadratic(grid, NY, NX, point, rowValue);
  return 0;
}

}  // namespace zel_cs::geomath
