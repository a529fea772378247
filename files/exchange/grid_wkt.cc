#include "files/exchange/grid_wkt.h"

#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "files/exchange/proj_projection.h"
#include "files/gdal/ogr.h"
#include "files/points/layer_crs.h"
#include "files/system/projection_names.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kAgreed = 0.01;         // metres, of PROJ from our projection
constexpr double kReach = 1;             // degrees, of the lattice either way
constexpr std::size_t kLatticeRows = 5;  // of the points that are compared
constexpr double kFarthestLattice = 88;  // degrees of latitude, of its centre
constexpr const char* kWgs84 = "EPSG:4326";

struct Place {
  double latitude, longitude;  // degrees
};

// Where a projection is at home: the mean of its latitudes, and its first longitude.
Place OriginOf(const NamedProjection& named) {
  double latitudes = 0, count = 0;
  std::optional<double> longitude;
  for (std::size_t i = 0; i < named.values.size(); ++i) {
    const ProjectionParameter& parameter = named.kind->parameters[i];
    if (parameter.unit == ParameterUnit::latitude) {
      latitudes += named.values[i];
      ++count;
    }
    if (parameter.unit == ParameterUnit::degrees && parameter.quantity == "longitude" && !longitude)
      longitude = named.values[i];
  }
  return {count > 0 ? latitudes / count : 0, longitude.value_or(0)};
}

Place MiddleOf(const GeoBox& area) {
  const double east = area.east < area.west ? area.east + 360 : area.east;
  return {(area.south + area.north) / 2, (area.west + east) / 2};
}

// Compares the projected system with our projection, on their common ellipsoid.
bool Agrees(const OGRSpatialReference& projected, const TGeoProj& projection, const Place& centre) {
  std::unique_ptr<OGRSpatialReference> geographic(projected.CloneGeogCS());
  geographic->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  std::unique_ptr<OGRSpatialReference> grid(projected.Clone());
  grid->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  const std::unique_ptr<OGRCoordinateTransformation> change(
      OGRCreateCoordinateTransformation(geographic.get(), grid.get()));
  if (!change) return false;

  constexpr std::size_t kCount = kLatticeRows * kLatticeRows;
  std::vector<double> north(kCount), east(kCount), x(kCount), y(kCount);
  const double latitude = std::clamp(centre.latitude, -kFarthestLattice, kFarthestLattice);
  const auto offset = [](std::size_t i) {
    return kReach * (2.0 * static_cast<double>(i) / (kLatticeRows - 1) - 1);
  };
  for (std::size_t i = 0; i < kCount; ++i) {
    y[i] = latitude + offset(i / kLatticeRows);
    x[i] = centre.longitude + offset(i % kLatticeRows);
    north[i] = y[i] * kRadPerDeg;
    east[i] = x[i] * kRadPerDeg;
  }
  projection.ForwardBatch(north.data(), east.data(), kCount);
  if (!change->Transform(static_cast<int>(kCount), x.data(), y.data())) return false;
  for (std::size_t i = 0; i < kCount; ++i)
    if (!(std::hypot(y[i] - north[i], x[i] - east[i]) <= kAgreed)) return false;
  return true;
}

// The seven parameters towards WGS 84 as position vector, seconds and parts per million.
void AddDatum(const Datum& datum, OGRSpatialReference& projected) {
  const TAbstractPoint3<double>&shift = datum.Shift(), &rotation = datum.Rotation();
  projected.SetTOWGS84(shift[0], shift[1], shift[2], -rotation[0], -rotation[1], -rotation[2],
                       datum.Scale() * 1e6);
}

}  // namespace

std::string GridWkt(const CoordinateSystem& system) {
  const NamedProjection& named = system.Named();
  const CoordinateChain& chain = system.Chain();
  const AxisPair axes = system.Grid();
  const std::string& positions = system.GeographicCrs();
  const bool moved = chain.GetLocalization() || chain.GetGround();
  const bool turned = axes.northSign < 0 || axes.eastSign < 0;
  if (!named.kind || moved || turned) return {};
  // Shifts lead from the system of the positions to another one, which has no name here.
  const bool shifted = !chain.GetShifts(ShiftPlace::beforeDatum).empty() ||
                       !chain.GetShifts(ShiftPlace::afterDatum).empty();
  if (chain.GetDatum() && (positions != kWgs84 || shifted)) return {};

  const Ellipsoid& on = system.LocalEllipsoid();
  const auto projection = MakeProjection(*named.kind, on.a, on.invF, named.values);
  const auto text = ProjProjection(*projection, named.kind->name);
  if (!text) return {};
  PrepareOgr();
  OGRSpatialReference projected;
  if (projected.SetFromUserInput((*text + " +type=crs").c_str()) != OGRERR_NONE) return {};
  const auto& area = system.Area();
  if (!Agrees(projected, *projection, area ? MiddleOf(*area) : OriginOf(named))) return {};
  if (!system.Name().empty()) projected.SetProjCS(system.Name().c_str());
  if (const Datum* datum = chain.GetDatum())
    AddDatum(*datum, projected);
  else if (!positions.empty() && !shifted)
    projected.CopyGeogCSFrom(CrsOf(positions).get());
  return WktOf(projected);
}

}  // namespace geomath_files
