// libFuzzer: any text as a system file, and points through the chain that it describes.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "files/system/system_file.h"
#include "files/words/user_error.h"

using namespace geomath_files;

namespace {

void ConvertPoints(const zel_cs::geomath::CoordinateChain& chain) {
  constexpr double kHalfPi = 1.5707963267948966;
  double b[] = {0, 0.9, -0.7, kHalfPi, -kHalfPi, 1.2, 0.1, 1e-300},
         l[] = {0, 0.2, 2.5, 0.3, 3.2, -3.1, 6.2, -1.5}, h[] = {0, 50, -30, 8000, 1e300, 0, 1, 2};
  double n[] = {0, 5e6, -3e6, 1e7, 1e300, 2e5, 4e5, -1e-300},
         e[] = {0, 5e5, 4e6, -1e7, 1e300, 6e5, -2e5, 9}, z[] = {0, 50, -30, 8000, 0, 1, 2, 3};
  const zel_cs::geomath::PointDates dates(2026.9);
  chain.ToLocalDatedBatch(dates, b, l, h, std::size(b));
  chain.ToGlobalDatedBatch(dates, b, l, h, std::size(b));
  chain.ToGlobalDatedBatch(dates, n, e, z, std::size(n));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (text.find("geoid") != std::string::npos) return 0;  // grid_file_fuzz reads files
  try {
    ConvertPoints(ParseSystem(text, "fuzz.json", ProjectionNeed::optional)->Chain());
  } catch (const UserError&) {
  }
  return 0;
}
