#include "files/points/layer_crs.h"

#include <fmt/format.h>
#include <ogr_spatialref.h>

#include <cmath>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constexpr const char* kWayOut = "; --ignore-crs takes the coordinates as they stand";

std::string NameOf(const OGRSpatialReference& crs) {
  const char* name = crs.GetName();
  const char* code = crs.GetAuthorityCode(nullptr);
  const std::string text = name ? Printable(name) : "an unnamed system";
  return code ? fmt::format("{} ({}:{})", text, crs.GetAuthorityName(nullptr), code) : text;
}

bool IsSame(const OGRSpatialReference& a, const OGRSpatialReference& b) {
  const char* options[] = {"IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES",
                           "CRITERION=EQUIVALENT_EXCEPT_AXIS_ORDER_GEOGCRS", nullptr};
  return a.IsSame(&b, options) != 0;
}

// GeoJSON with heights is in the system with them.
OGRSpatialReference WithoutHeights(OGRSpatialReference crs) {
  crs.DemoteTo2D(nullptr);
  return crs;
}

// Latitude and longitude on the system's own datum, where the grid has this place.
bool PositionOf(const OGRSpatialReference& grid, double& east, double& north) {
  const std::unique_ptr<OGRSpatialReference> positions(grid.CloneGeogCS());
  if (!positions) return false;
  positions->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  const std::unique_ptr<OGRCoordinateTransformation> change(
      OGRCreateCoordinateTransformation(&grid, positions.get()));
  return change && change->Transform(1, &east, &north);
}

// Whether two grids put the same positions at the same coordinates, whatever their datums are
// called: a system that is described by its parameters alone has no name for its datum.
bool IsSameGrid(const OGRSpatialReference& a, const OGRSpatialReference& b) {
  constexpr double kCentimetre = 1e-7, kAside = 50000;  // degrees, metres
  if (!a.IsProjected() || !b.IsProjected() || a.GetLinearUnits() != b.GetLinearUnits())
    return false;
  const double middle[] = {a.GetProjParm(SRS_PP_FALSE_EASTING),
                           a.GetProjParm(SRS_PP_FALSE_NORTHING)};
  for (const double aside : {-kAside, kAside}) {
    double eastA = middle[0] + aside, northA = middle[1] + kAside;
    double eastB = eastA, northB = northA;
    if (!PositionOf(a, eastA, northA) || !PositionOf(b, eastB, northB)) return false;
    if (!(std::abs(std::remainder(eastA - eastB, 360)) <= kCentimetre)) return false;
    if (!(std::abs(northA - northB) <= kCentimetre)) return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<OGRSpatialReference> CrsOf(const std::string& text, const LengthUnit& unit) {
  if (text.empty()) return nullptr;
  PrepareOgr();
  auto crs = std::make_unique<OGRSpatialReference>();
  if (crs->SetFromUserInput(text.c_str()) != OGRERR_NONE)
    throw UserError(fmt::format("\"{}\" is no coordinate system that is known here{}",
                                Printable(text), OgrComplaint()));
  constexpr double kRounding = 1e-12;  // of a factor: feet differ in the sixth figure
  if (crs->IsProjected() && std::abs(crs->GetLinearUnits() / unit.metres - 1) > kRounding)
    crs->SetLinearUnitsAndUpdateParameters(unit.name.c_str(), unit.metres);
  crs->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return crs;
}

LayerCrs::LayerCrs(const std::string& name, const std::string& given, const ExpectedCrs& expected) {
  if (given.empty()) return;
  PrepareOgr();
  OGRSpatialReference layer;
  if (layer.importFromWkt(given.c_str()) != OGRERR_NONE) return;
  layer.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  const auto refuse = [&](const std::string& why) {
    throw UserError(fmt::format("{} is in {}: {}{}", name, NameOf(layer), why, kWayOut));
  };
  if (layer.IsCompound()) {
    if (expected.geographic && expected.heights)
      refuse("its heights are not above the ellipsoid (--fixed-height METRES gives others)");
    layer.StripVertical();
  }
  const auto wanted = CrsOf(expected.text, expected.unit);
  const OGRSpatialReference flat = WithoutHeights(layer);
  if (wanted && IsSame(flat, WithoutHeights(*wanted))) return;
  if (!expected.geographic) {
    if (wanted && IsSameGrid(flat, *wanted)) return;
    if (wanted) refuse("the system's grid is " + NameOf(*wanted));
    if (layer.IsGeographic()) refuse("grid coordinates are lengths, not degrees");
    note_ = fmt::format(
        "{} is in {}, of which the system file says nothing; its coordinates are "
        "taken as they stand",
        name, NameOf(layer));
    return;
  }
  if (!wanted) {
    note_ = fmt::format(
        "{} is in {}, and the system file does not name the system of its positions; "
        "they are taken as they stand",
        name, NameOf(layer));
    if (!layer.IsGeographic()) refuse("positions are degrees");
    return;
  }
  OGRCoordinateTransformationOptions options;
  options.SetBallparkAllowed(false);
  change_.reset(OGRCreateCoordinateTransformation(&layer, wanted.get(), options));
  if (!change_) refuse("PROJ has no way from there to " + NameOf(*wanted));
  note_ = fmt::format("{} is in {}; its positions are converted to {} by PROJ", name, NameOf(layer),
                      NameOf(*wanted));
}

LayerCrs::~LayerCrs() = default;

bool LayerCrs::Convert(std::array<double, 3>& point) const {
  return !change_ || change_->Transform(1, &point[1], &point[0], &point[2]);
}

}  // namespace geomath_files
