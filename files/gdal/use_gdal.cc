#include "files/gdal/use_gdal.h"

#include <ogr_spatialref.h>

#include "files/gdal/ogr.h"
#include "files/models/geoid_raster.h"
#include "files/models/raster_reader.h"
#include "files/models/shift_tiff.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

class GdalRasterReader : public RasterReader {
 public:
  GeoidRaster ReadGeoid(const std::string& path) const override { return ReadGeoidRaster(path); }

  std::unique_ptr<CoordinateShift> ParseShift(const std::string& bytes,
                                              const ShiftChoice& choice) const override {
    return ParseShiftTiff(bytes, choice);
  }

  std::vector<ShiftGridPart> ParseDisplacements(const std::string& bytes, const std::string& file,
                                                const DisplacementSamples& samples) const override {
    return ParseDisplacementTiff(bytes, file, samples);
  }

  std::optional<ShiftSpace> SpaceOf(const std::string& crs) const override {
    OGRSpatialReference system;
    if (!Find(crs, system)) return {};
    if (system.IsProjected()) return ShiftSpace::plane;
    if (system.IsGeographic()) return ShiftSpace::geographic;
    return {};
  }

  std::optional<Ellipsoid> EllipsoidOf(const std::string& crs) const override {
    OGRSpatialReference system;
    if (!Find(crs, system)) return {};
    return MakeEllipsoid(system.GetSemiMajor(), system.GetInvFlattening());
  }

 private:
  static bool Find(const std::string& crs, OGRSpatialReference& system) {
    PrepareOgr();
    constexpr const char* kOptions[] = {"ALLOW_NETWORK_ACCESS=NO", "ALLOW_FILE_ACCESS=NO", nullptr};
    return system.SetFromUserInput(crs.c_str(), kOptions) == OGRERR_NONE;
  }
};

}  // namespace

void UseGdal() {
  static const GdalRasterReader reader;
  SetRasterReader(&reader);
}

}  // namespace geomath_files
