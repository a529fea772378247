// libFuzzer: any bytes as an NTv2 file, and points shifted by what is read from them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "geomath/shift/ntv2_file.h"

using namespace zel_cs::geomath;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Ntv2Error error;
  const auto grid = ParseNtv2({reinterpret_cast<const std::byte*>(data), size}, &error);
  if (!grid) {
    if (error.fault == Ntv2Fault::none || error.offset > size) std::abort();
    return 0;
  }
  const double latitudes[] = {0, 0.9, -0.9, 1.5707963267948966, 1e300};
  const double longitudes[] = {0, -1.5, 0.2, 3.14159, 1e300};
  for (const double lat : latitudes)
    for (const double lon : longitudes) {
      double b = lat, l = lon, h = 0, accuracies[2];
      grid->Accuracy(b, l, accuracies);
      if (!grid->Forward(b, l, h)) continue;
      grid->Inverse(b, l, h);
    }
  return 0;
}
