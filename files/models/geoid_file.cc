#include "files/models/geoid_file.h"

#include <fmt/format.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/chain/geoid_models.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// Reads a raster into a grid.
class GridReader {
 public:
  explicit GridReader(const GeoidChoice& choice) : file_(choice.grid) {
    const GDALDatasetUniquePtr raster = OpenGridFile(file_);
    if (!raster || raster->GetRasterCount() < 1)
      throw UserError(
          fmt::format("{}: is no grid that can be read (GeoTIFF, GTX, BYN, ISG, NGS, "
                      "ASCII, Surfer, EHdr, XYZ){}",
                      file_, OgrComplaint()));
    PlaceNodes(*raster);
    ReadNodes(*raster->GetRasterBand(1));
    if (auto closed = CloseSeam(grid_.place, grid_.nodes.data()); !closed.empty())
      grid_.nodes = std::move(closed);
    grid_.scheme = &ChooseScheme(choice.interpolation);
    OrderRows();
  }

  GeoidGrid Take() { return std::move(grid_); }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw UserError(fmt::format("{}: {}", file_, reason));
  }

  void PlaceNodes(GDALDataset& raster) {
    const OGRSpatialReference* system = raster.GetSpatialRef();
    if (system && !system->IsGeographic())
      Refuse("the grid is not in latitude and longitude, which geoid grids must be");
    double t[6];
    if (raster.GetGeoTransform(t) != CE_None || t[2] != 0 || t[4] != 0 || !(t[1] > 0) || t[5] == 0)
      Refuse("the grid has no position, or is rotated");
    GridPlace& place = grid_.place;
    place.columns = raster.GetRasterXSize();
    place.rows = raster.GetRasterYSize();
    place.latStep = std::abs(t[5]);
    place.lonStep = t[1];
    northFirst_ = t[5] < 0;
    const double first = t[3] + t[5] / 2;
    place.south = northFirst_ ? first - (place.rows - 1) * place.latStep : first;
    place.west = t[0] + t[1] / 2;
    if (const std::string problem = PlaceProblem(place); !problem.empty()) Refuse(problem);
  }

  // A hole is NaN, which every scheme carries into its result.
  void ReadNodes(GDALRasterBand& band) {
    const auto& [south, west, latStep, lonStep, rows, columns] = grid_.place;
    std::vector<float>& nodes = grid_.nodes;
    const auto width = static_cast<std::size_t>(columns);
    nodes.reserve(static_cast<std::size_t>(rows) * width);
    for (int row = 0; row < rows; ++row) {  // memory is touched only for what the file has
      const std::size_t first = nodes.size();
      nodes.resize(first + width);
      if (band.RasterIO(GF_Read, 0, row, columns, 1, nodes.data() + first, columns, 1, GDT_Float32,
                        0, 0) != CE_None)
        Refuse("cannot be read to its end" + OgrComplaint());
    }
    int marked = 0, scaled = 0, shifted = 0;
    const auto noData = static_cast<float>(band.GetNoDataValue(&marked));
    const double scale = band.GetScale(&scaled), offset = band.GetOffset(&shifted);
    if (scaled && (scale == 0 || !std::isfinite(scale)))
      Refuse(fmt::format("its scale factor is {}: no height can be told from it", scale));
    const double unit = MetresIn(band.GetUnitType());
    for (float& z : nodes) {
      const bool hole = (marked && z == noData) || !std::isfinite(z);
      const double metres = unit * ((scaled ? scale : 1) * z + (shifted ? offset : 0));
      z = hole ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(metres);
    }
  }

  // The unit that a band states; none is the metre.
  double MetresIn(const std::string& unit) const {
    struct Row {
      const char* name;
      double metres;
    };
    constexpr double kUsFoot = 1200.0 / 3937;
    static constexpr Row rows[] = {{"", 1},
                                   {"m", 1},
                                   {"metre", 1},
                                   {"meter", 1},
                                   {"metres", 1},
                                   {"meters", 1},
                                   {"dm", 0.1},
                                   {"decimetre", 0.1},
                                   {"cm", 0.01},
                                   {"centimetre", 0.01},
                                   {"centimeter", 0.01},
                                   {"mm", 0.001},
                                   {"millimetre", 0.001},
                                   {"millimeter", 0.001},
                                   {"km", 1000},
                                   {"kilometre", 1000},
                                   {"kilometer", 1000},
                                   {"ft", 0.3048},
                                   {"foot", 0.3048},
                                   {"feet", 0.3048},
                                   {"us survey foot", kUsFoot},
                                   {"us-ft", kUsFoot},
                                   {"ftus", kUsFoot},
                                   {"us survey feet", kUsFoot},
                                   {"foot_us", kUsFoot}};
    for (const Row& row : rows)
      if (FoldName(row.name) == FoldName(unit)) return row.metres;
    Refuse(fmt::format("its unit \"{}\" is no length that is known", Printable(unit)));
  }

  void OrderRows() {
    if (northFirst_ == grid_.scheme->northFirst) return;
    const auto width = static_cast<std::ptrdiff_t>(grid_.place.columns);
    const auto begin = grid_.nodes.begin();
    for (std::ptrdiff_t low = 0, high = grid_.place.rows - 1; low < high; ++low, --high)
      std::swap_ranges(begin + low * width, begin + (low + 1) * width, begin + high * width);
  }

  std::string file_;
  bool northFirst_ = false;
  GeoidGrid grid_;
};

class GridGeoid : public LoadedGeoid {
 public:
  explicit GridGeoid(const GeoidChoice& choice)
      : grid_(GridReader(choice).Take()), model_(*grid_.scheme, grid_.place, grid_.nodes.data()) {}

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
