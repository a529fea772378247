#include "files/models/geoid_raster.h"

#include <fmt/format.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <cmath>
#include <limits>
#include <utility>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

class GeoidRasterReader {
 public:
  explicit GeoidRasterReader(const std::string& path) : file_(path) {
    const GDALDatasetUniquePtr raster = OpenGridFile(file_);
    if (!raster || raster->GetRasterCount() < 1)
      throw UserError(
          fmt::format("{}: is no grid that can be read (GeoTIFF, GTX, BYN, ISG, NGS, "
                      "ASCII, Surfer, EHdr, XYZ){}",
                      file_, OgrComplaint()));
    PlaceNodes(*raster);
    ReadNodes(*raster->GetRasterBand(1));
  }

  GeoidRaster Take() { return std::move(raster_); }

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
    GridPlace& place = raster_.place;
    place.columns = raster.GetRasterXSize();
    place.rows = raster.GetRasterYSize();
    place.latStep = std::abs(t[5]);
    place.lonStep = t[1];
    raster_.northFirst = t[5] < 0;
    const double first = t[3] + t[5] / 2;
    place.south = raster_.northFirst ? first - (place.rows - 1) * place.latStep : first;
    place.west = t[0] + t[1] / 2;
    if (const std::string problem = PlaceProblem(place); !problem.empty()) Refuse(problem);
  }

  // A hole is NaN, which every scheme carries into its result.
  void ReadNodes(GDALRasterBand& band) {
    const auto& [south, west, latStep, lonStep, rows, columns] = raster_.place;
    std::vector<float>& nodes = raster_.nodes;
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
      if (SameName(row.name, unit)) return row.metres;
    Refuse(fmt::format("its unit \"{}\" is no length that is known", Printable(unit)));
  }

  const std::string& file_;
  GeoidRaster raster_;
};

}  // namespace

GeoidRaster ReadGeoidRaster(const std::string& path) { return GeoidRasterReader(path).Take(); }

}  // namespace geomath_files
