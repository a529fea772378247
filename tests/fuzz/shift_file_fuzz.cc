// libFuzzer: any bytes as a file of shifts (geodetic TIFF with its metadata, triangulation or the
// master file of a deformation model in JSON, NTv2), and points shifted by what is read from them.
#include <cstddef>
#include <cstdint>
#include <string>

#include "files/models/shift_file.h"
#include "files/words/user_error.h"

using namespace geomath_files;
using namespace zel_cs::geomath;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const ShiftChoice choice{"fuzz", "", GridPosition::source, ShiftSpace::geographic, 2000};
  try {
    const auto shift = ParseShift({{"", bytes}}, choice);
    for (const double north : {0.0, 0.9, -0.9, 1.5707963267948966, 5e6, 1e300})
      for (const double east : {0.0, 0.18, -3.14159, 6.2, 5e5, 1e300}) {
        double x = north, y = east, z = 0;
        if (shift->Forward(x, y, z, 2001)) shift->Inverse(x, y, z, 2001);
      }
  } catch (const UserError&) {
  }
  return 0;
}
