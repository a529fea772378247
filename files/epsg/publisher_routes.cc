#include "files/epsg/publisher_routes.h"

#include "files/epsg/epsg_projection.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/projjson.h"
#include "files/system/ellipsoid_names.h"

using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

constexpr int kEtrs89 = 4258;

constexpr PublisherRoute kRoutes[] = {
    // Ordnance Survey 2016, "Transformations and OSGM15 user guide": shifts on the lattice of the
    // national projection of ETRS89, of which the registry's NTv2 file is a copy by interpolation.
    {27700, "OSTN15 of Ordnance Survey on its own plane grid", 0.001, "ostn15_plane_shifts.tif",
     kEtrs89,
     R"({"global": {"ellipsoid": "GRS80"},
         "shifts": [{"place": "after projection", "unit": "metre"}]})",
     27700, "GRS80"},
    // NSGI 2019, RDNAPTRANS2018, variant 1: defined outside of the grid as well.
    {4289, "RDNAPTRANS2018 of NSGI, variant 1", 0.001, "nl_nsgi_rdcorr2018.tif", kEtrs89,
     R"({"global": {"ellipsoid": "GRS80"}, "local": {"ellipsoid": "Bessel 1841"},
         "datum": {"dX": 565.7381, "dY": 50.4018, "dZ": 465.2904,
                   "rX": 0.395026, "rY": -0.330772, "rZ": 1.876074, "ppm": 4.07244,
                   "fixedHeight": 43},
         "shifts": [{"place": "after datum", "inverse": "yes", "outside": "identity"}]})",
     0, nullptr},
    // National Land Survey of Finland, JHS 197: affine in triangles between the two planes.
    {2393, "KKJ to EUREF-FIN by triangles of the National Land Survey of Finland", 0.1,
     "fi_nls_ykj_etrs35fin.json", kEtrs89,
     R"({"global": {"ellipsoid": "GRS80"},
         "shifts": [{"place": "after projection", "inverse": "yes"}]})",
     3067, "GRS80"},
};

}  // namespace

std::span<const PublisherRoute> PublisherRoutes() { return kRoutes; }

ordered_json RouteSections(const EpsgRegistry& registry, const PublisherRoute& route,
                           const std::string& file) {
  ordered_json sections = ordered_json::parse(route.sections);
  sections["shifts"][0]["file"] = file;
  if (!route.projection) return sections;
  json projected = registry.Crs(std::to_string(route.projection)).document;
  const NamedEllipsoid& named = *FindEllipsoid(route.ellipsoid);
  json& base = projected.at("base_crs");
  base.at(base.contains("datum") ? "datum" : "datum_ensemble")["ellipsoid"] = {
      {"semi_major_axis", named.a}, {"inverse_flattening", named.invF}};
  sections["projection"] = ProjectionOf(projected, route.title).section;
  return sections;
}

ordered_json PlaneOfRoute(const EpsgRegistry& registry, const PublisherRoute& route) {
  const json& document = registry.Crs(std::to_string(route.system)).document;
  const EpsgProjection projection = ProjectionOf(document, route.title);
  return {{"local", EllipsoidFigures(projection.ellipsoid)}, {"projection", projection.section}};
}

}  // namespace geomath_files
