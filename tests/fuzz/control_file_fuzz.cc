// libFuzzer: any bytes as a file of control points, solved when they are some.
#include <cstddef>
#include <cstdint>

#include "files/site/control_file.h"
#include "files/site/site_solution.h"
#include "files/words/user_error.h"
#include "geomath/base/ellipsoid.h"
#include "tests/fuzz/scratch_file.h"

using namespace geomath_files;
using namespace zel_cs::geomath;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const CalibrationOptions options{(data[0] & 1) != 0, (data[0] & 2) != 0};
  const ScratchFile file(".csv", data + 1, size - 1);
  const Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
  const CoordinateChain chain;  // without a projection: the site gets its own
  try {
    const SiteSolution solution({chain, nullptr, wgs84, {}, {}}, ReadControl({file.Path()}).points,
                                options);
    solution.Warnings();
  } catch (const UserError&) {
  }
  return 0;
}
