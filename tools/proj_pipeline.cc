#include "tools/proj_pipeline.h"

#include <fmt/format.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/proj/param_table.h"
#include "tools/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

// A projection of ours that PROJ has too, with its names for our parameters in index order.
struct PeerRow {
  std::string_view name, peer;
  std::vector<std::string_view> parameters;
};
const PeerRow kPeers[] = {
    {"STER", "stere", {"lat_0", "lon_0", "k_0", "x_0", "y_0"}},
    {"DSTER", "sterea", {"lat_0", "lon_0", "k_0", "x_0", "y_0"}},
    {"TMERC", "tmerc", {"lon_0", "k_0", "lat_0", "x_0", "y_0"}},
    {"TM", "tmerc", {"lon_0", "k_0", "lat_0", "x_0", "y_0"}},
    {"LC", "lcc", {"lat_1", "lat_2", "lon_0", "lat_0", "x_0", "y_0", "k_0"}},
    {"AlbersConic", "aea", {"lat_1", "lat_2", "lon_0", "lat_0", "x_0", "y_0"}},
};

std::string EllipsoidText(const Ellipsoid& ellipsoid) {
  return fmt::format("+a={} +b={}", ellipsoid.a, ellipsoid.b);
}

std::string DatumText(const Ellipsoid& global, const Datum& datum) {
  const TAbstractPoint3<double>&shift = datum.Shift(), &rotation = datum.Rotation();
  return fmt::format(
      " +step +proj=cart {}"
      " +step +inv +proj=helmert +exact +convention=coordinate_frame"
      " +x={} +y={} +z={} +rx={} +ry={} +rz={} +s={}"
      " +step +inv +proj=cart {}",
      EllipsoidText(global), shift[0], shift[1], shift[2], rotation[0], rotation[1], rotation[2],
      datum.Scale() * 1e6, EllipsoidText(*datum.GetEllipsoid()));
}

bool IsNorthEast(const wchar_t* axes) { return !axes || std::wstring_view(axes) == L"NE"; }

std::string ProjectionText(const TGeoProj& projection, const std::string& name) {
  if (!IsNorthEast(projection.GetNEAxes()) || !IsNorthEast(projection.GetBLAxes()))
    throw UserError("--pipeline: only axes \"NE\" can be written for PROJ");
  for (const PeerRow& row : kPeers) {
    if (row.name != name) continue;
    std::string text =
        fmt::format(" +step +proj={} {}", row.peer, EllipsoidText(projection.GetEllipsoid()));
    for (std::size_t i = 0; i < row.parameters.size(); ++i)
      text += fmt::format(" +{}={}", row.parameters[i],
                          projection.GetParam(static_cast<int>(i), kUnitDegrees));
    return text;
  }
  std::string known;
  for (const PeerRow& row : kPeers) known += fmt::format(" {}", row.name);
  throw UserError(
      fmt::format("--pipeline: the projection {} cannot be written for PROJ; those that "
                  "can:{}, and a system without projection",
                  name, known));
}

// PROJ counts x to the east and y to the north.
std::string AffineText(const LocalToGrid& site) {
  std::string text = " +step +proj=affine";
  if (site.mode & LocalToGrid::kHorizontal) {
    const double s = site.GetPlaneParam(2, 0), theta = site.GetPlaneParam(3, 0);
    const double along = s * std::cos(theta), across = s * std::sin(theta);
    text +=
        fmt::format(" +xoff={} +yoff={} +s11={} +s12={} +s21={} +s22={}", site.GetPlaneParam(1, 0),
                    site.GetPlaneParam(0, 0), along, across, -across, along);
  }
  if (site.mode & LocalToGrid::kVertical)
    text += fmt::format(" +zoff={} +s31={} +s32={}", site.GetHeightParam(0, 0),
                        site.GetHeightParam(2, 0), site.GetHeightParam(1, 0));
  return text;
}

}  // namespace

std::string ProjPipeline(const Calibration& calibration) {
  const CoordinateChain& chain = calibration.System().Chain();
  if (chain.GetGeoid())
    throw UserError("--pipeline: heights above a geoid cannot be written for PROJ");
  std::string text = "+proj=pipeline";
  if (const Datum* datum = chain.GetDatum()) text += DatumText(*chain.GetGlobalEllipsoid(), *datum);
  text += ProjectionText(calibration.Projection(), calibration.ProjectionName());
  return text + AffineText(calibration.Site());
}

}  // namespace geomath_tools
