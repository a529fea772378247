#include "files/models/geoid_file.h"

#include <algorithm>
#include <utility>

#include "files/models/raster_reader.h"
#include "files/words/user_error.h"
#include "geomath/chain/geoid_models.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// Rows in the order of the scheme.
void OrderRows(GeoidRaster& raster, const GridScheme& scheme) {
  if (raster.northFirst == scheme.northFirst) return;
  const auto width = static_cast<std::ptrdiff_t>(raster.place.columns);
  const auto begin = raster.nodes.begin();
  for (std::ptrdiff_t low = 0, high = raster.place.rows - 1; low < high; ++low, --high)
    std::swap_ranges(begin + low * width, begin + (low + 1) * width, begin + high * width);
}

GeoidGrid ReadGrid(const GeoidChoice& choice) {
  GeoidRaster raster = RequireRasterReader(choice.grid).ReadGeoid(choice.grid);
  if (auto closed = CloseSeam(raster.place, raster.nodes.data()); !closed.empty())
    raster.nodes = std::move(closed);
  const GridScheme& scheme = ChooseScheme(choice.interpolation);
  OrderRows(raster, scheme);
  return {raster.place, &scheme, std::move(raster.nodes)};
}

class GridGeoid : public LoadedGeoid {
 public:
  explicit GridGeoid(const GeoidChoice& choice)
      : grid_(ReadGrid(choice)), model_(*grid_.scheme, grid_.place, grid_.nodes.data()) {}

  const GeoidHeight& Heights() const override { return model_; }
  const GeoidGrid* Grid() const override { return &grid_; }

 private:
  GeoidGrid grid_;
  GridModel model_;
};

class ModelGeoid : public LoadedGeoid {
 public:
  explicit ModelGeoid(CoefficientSet set)
      : coefficients_(std::move(set.coefficients)),
        model_(MakeHarmonicModel(coefficients_)),
        heights_(*model_) {
    warning = std::move(set.warning);
  }

  const GeoidHeight& Heights() const override { return heights_; }
  const GeoidCoefficients* Coefficients() const override { return &coefficients_; }

 private:
  GeoidCoefficients coefficients_;
  std::unique_ptr<GlobalGeoid> model_;
  GlobalGeoidHeight heights_;
};

}  // namespace

std::unique_ptr<LoadedGeoid> OpenGeoid(const GeoidChoice& choice) {
  if (choice.grid.empty() == choice.model.empty())
    throw UserError("a geoid is a grid or a model: give one of them");
  if (!choice.grid.empty()) return std::make_unique<GridGeoid>(choice);
  return std::make_unique<ModelGeoid>(
      ReadCoefficients({choice.model, choice.correction, choice.subtractNormalField}));
}

}  // namespace geomath_files
