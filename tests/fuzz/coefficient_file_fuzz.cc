// libFuzzer: any bytes as a coefficient file, and what is read from them evaluated.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "geomath/magnetic/magnetic_field.h"
#include "geomath/magnetic/model_series.h"

using namespace zel_cs::geomath;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto models = ParseModelSeries({reinterpret_cast<const char*>(data), size});
  if (models.empty()) return 0;
  const WMMtype_MagneticModel* model = &ModelOfYear(models, 2012.5);
  const bool sound = model->nMax >= 1 && model->nMax <= kMaxMagneticDegree &&
                     model->g.size() == TermCount(model->nMax) &&
                     model->hDot.size() == model->g.size() &&
                     model->modelName.size() <= kMaxModelName;
  if (!sound) std::abort();

  const double latitudes[] = {50, 90, -90, 0, 12.5}, longitudes[] = {14.5, 0, 180, -180, 1e300},
               heights[] = {0, -1, 850, -6378.137, 1e300};
  MagneticPoint results[5];
  MagneticField(*model, 2012.5).AtBatch(latitudes, longitudes, heights, 5, results);
  return 0;
}
