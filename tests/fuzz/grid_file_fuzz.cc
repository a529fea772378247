// libFuzzer: any bytes as a grid of geoid heights in one of the formats, and heights from it.
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "files/models/geoid_file.h"
#include "files/words/user_error.h"
#include "tests/fuzz/scratch_file.h"

using namespace geomath_files;

namespace {

// Formats that GDAL knows by the name; the first byte chooses.
constexpr const char* kSuffixes[] = {".tif", ".gtx", ".byn", ".isg",
                                     ".asc", ".bin", ".grd", ".xyz"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const ScratchFile file(kSuffixes[data[0] % std::size(kSuffixes)], data + 1, size - 1);
  try {
    const auto geoid = OpenGeoid({file.Path(), "", "", "", false});
    const double b[] = {0.8, 0.9, -0.9, 1.57, -1.57, 0, 1e300},
                 l[] = {0.1, 0.2, 3.14, -3.14, 6.28, 0, 1e300};
    double heights[std::size(b)];
    geoid->Heights().Heights(b, l, heights, std::size(b));
  } catch (const UserError&) {
  }
  return 0;
}
