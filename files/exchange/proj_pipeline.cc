#include "files/exchange/proj_pipeline.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>
#include <vector>

#include "files/exchange/proj_operation.h"
#include "files/exchange/proj_projection.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/shift/shift_grid.h"
#include "geomath/shift/triangulation.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kPromised = 1e-5;        // metres, of PROJ from the system's own conversion
constexpr double kNegligible = 1e-6;      // metres: a difference that needs no step
constexpr double kSmallestSite = 20e3;    // metres, side of the square that is looked at
constexpr std::size_t kLatticeRows = 21;  // of the points that are compared
constexpr double kRadiusOfEarth = 6.4e6;  // metres, rounded up

std::string DatumText(const Ellipsoid& global, const Datum& datum) {
  const TAbstractPoint3<double>&shift = datum.Shift(), &rotation = datum.Rotation();
  return fmt::format(
      " +step +proj=cart {}"
      " +step +inv +proj=helmert +exact +convention=coordinate_frame"
      " +x={} +y={} +z={} +rx={} +ry={} +rz={} +s={}"
      " +step +inv +proj=cart {}",
      ProjEllipsoid(global), shift[0], shift[1], shift[2], rotation[0], rotation[1], rotation[2],
      datum.Scale() * 1e6, ProjEllipsoid(*datum.GetEllipsoid()));
}

// The steps of the grids and triangulations of a place, from global to local.
std::string ShiftsText(const CoordinateSystem& system, ShiftPlace place) {
  std::string text;
  for (const SystemShift& each : system.Shifts()) {
    if (each.place != place) continue;
    const std::string& file = each.choice.file;
    const auto* grid = dynamic_cast<const ShiftGrid*>(each.shift.get());
    const bool horizontal = grid && grid->Space() == ShiftSpace::geographic &&
                            grid->Components() == ShiftComponents::horizontal &&
                            grid->Interpolation() == ShiftInterpolation::bilinear;
    const bool triangles = dynamic_cast<const Triangulation*>(each.shift.get()) &&
                           each.shift->Space() == ShiftSpace::plane;
    if (!(horizontal || triangles) || file.find_first_of(" ,\"") != std::string::npos)
      throw UserError(fmt::format("--pipeline: the shift {} cannot be written for PROJ",
                                  file.empty() ? each.entry : file));
    text += each.direction == ShiftDirection::inverse ? " +step +inv" : " +step";
    const std::string path = std::filesystem::absolute(file).lexically_normal().string();
    text += horizontal ? " +proj=hgridshift +grids=" + path : " +proj=tinshift +file=" + path;
    if (horizontal && each.outside == ShiftOutside::unchanged) text += ",null";
  }
  return text;
}

bool IsNorthEast(const AxisPair& axes) {
  return axes.northFirst && axes.northSign > 0 && axes.eastSign > 0;
}

std::string ProjectionText(const TGeoProj& projection, const std::string& name) {
  if (auto text = ProjProjection(projection, name)) return *std::move(text);
  throw UserError(
      fmt::format("--pipeline: the projection {} cannot be written for PROJ; those that can: {}, "
                  "and a system without projection",
                  name, fmt::join(ProjProjectionNames(), " ")));
}

// The centres of a lattice's points in the grid: the extent of the control, made a square of
// kSmallestSite where it is smaller.
CoordinateColumns SiteLattice(const std::vector<IdenticalPoint>& points) {
  struct Range {
    double low = HUGE_VAL, high = -HUGE_VAL;
    void Include(double value) {
      low = std::min(low, value);
      high = std::max(high, value);
    }
    double At(std::size_t i) const {
      const double half = std::max(high - low, kSmallestSite) / 2;
      const double place = 2.0 * static_cast<double>(i) / (kLatticeRows - 1) - 1;
      return (low + high) / 2 + half * place;
    }
  } north, east;
  for (const IdenticalPoint& p : points) {
    if (p.use == 0) continue;
    north.Include(p.globalN);
    east.Include(p.globalE);
  }
  CoordinateColumns lattice(kLatticeRows * kLatticeRows);
  for (std::size_t i = 0; i < lattice.Count(); ++i) {
    lattice.first[i] = north.At(i / kLatticeRows);
    lattice.second[i] = east.At(i % kLatticeRows);
  }
  return lattice;
}

double MeanOf(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

// value = offset + byEast·E + byNorth·N
struct PlaneFunction {
  double offset, byEast, byNorth;
};

// The function of the grid that fits `values` best (least squares about the centroid).
PlaneFunction FitPlane(const CoordinateColumns& grid, const std::vector<double>& values) {
  const double n0 = MeanOf(grid.first), e0 = MeanOf(grid.second), v0 = MeanOf(values);
  double nn = 0, ne = 0, ee = 0, nv = 0, ev = 0;
  for (std::size_t i = 0; i < grid.Count(); ++i) {
    const double n = grid.first[i] - n0, e = grid.second[i] - e0, v = values[i] - v0;
    nn += n * n;
    ne += n * e;
    ee += e * e;
    nv += n * v;
    ev += e * v;
  }
  const double det = nn * ee - ne * ne;
  const double byEast = (nn * ev - ne * nv) / det, byNorth = (ee * nv - ne * ev) / det;
  return {v0 - byEast * e0 - byNorth * n0, byEast, byNorth};
}

// PROJ counts x to the east and y to the north.
std::string PlaneStep(const PlaneFunction& east, const PlaneFunction& north) {
  return fmt::format(" +step +proj=affine +xoff={} +yoff={} +s11={} +s12={} +s21={} +s22={}",
                     east.offset, north.offset, east.byEast, east.byNorth, north.byEast,
                     north.byNorth);
}

// The largest of `misses`, or NaN when one is.
double Largest(const std::vector<double>& misses) {
  double largest = 0;
  for (const double miss : misses) {
    if (std::isnan(miss)) return miss;
    largest = std::max(largest, miss);
  }
  return largest;
}

// Metres between two sets of points in the grid, and on the ground.
double MissInGrid(const CoordinateColumns& a, const CoordinateColumns& b) {
  std::vector<double> misses;
  for (std::size_t i = 0; i < a.Count(); ++i)
    misses.push_back(
        std::hypot(a.first[i] - b.first[i], a.second[i] - b.second[i], a.height[i] - b.height[i]));
  return Largest(misses);
}

double MissOnGround(const CoordinateColumns& a, const CoordinateColumns& b) {
  std::vector<double> misses;
  for (std::size_t i = 0; i < a.Count(); ++i) {
    const double toEast = std::remainder(a.second[i] - b.second[i], kTwoPi) * std::cos(a.first[i]);
    misses.push_back(std::hypot(kRadiusOfEarth * (a.first[i] - b.first[i]), kRadiusOfEarth * toEast,
                                a.height[i] - b.height[i]));
  }
  return Largest(misses);
}

// Steps from the grid of PROJ's formulas to that of ours. Our two directions can differ from PROJ's
// in different ways, since series end at different terms: each gets a step that runs in it alone.
std::string CorrectionText(const TGeoProj& projection, const std::string& definition,
                           const CoordinateColumns& lattice) {
  const std::size_t count = lattice.Count();
  CoordinateColumns peer = lattice;
  projection.InverseBatch(peer.first.data(), peer.second.data(), count);
  CoordinateColumns forward = peer;
  projection.ForwardBatch(forward.first.data(), forward.second.data(), count);
  ProjOperation(definition).Forward(peer);
  const auto stepTo = [&](const CoordinateColumns& ours, const char* only) -> std::string {
    if (MissInGrid(peer, ours) <= kNegligible) return "";
    return PlaneStep(FitPlane(peer, ours.second), FitPlane(peer, ours.first)) + only;
  };
  return stepTo(forward, " +omit_inv") + stepTo(lattice, " +omit_fwd");
}

std::string SiteText(const LocalToGrid& site) {
  std::string text = " +step +proj=affine";
  if (site.mode & LocalToGrid::kHorizontal) {
    const double s = site.GetPlaneParam(2, 0), theta = site.GetPlaneParam(3, 0);
    const double along = s * std::cos(theta), across = s * std::sin(theta);
    text = PlaneStep({site.GetPlaneParam(1, 0), along, across},
                     {site.GetPlaneParam(0, 0), -across, along});
  }
  if (site.mode & LocalToGrid::kVertical)
    text += fmt::format(" +zoff={} +s31={} +s32={}", site.GetHeightParam(0, 0),
                        site.GetHeightParam(2, 0), site.GetHeightParam(1, 0));
  return text;
}

// The ground system is linear in the plane, so that the fit over any points is the system itself.
std::string GroundText(const GridToGround* ground, const CoordinateColumns& lattice) {
  if (!ground || ground->IsDisabled()) return "";
  CoordinateColumns image = lattice;
  ground->ToGroundBatch(image.first.data(), image.second.data(), image.Count());
  return PlaneStep(FitPlane(lattice, image.second), FitPlane(lattice, image.first));
}

// Runs the pipeline over the lattice beside the system's own conversion with the calibration.
void RefuseDifference(const Calibration& calibration, const std::string& pipeline,
                      const CoordinateColumns& lattice) {
  const LocalToGrid& site = calibration.Site();
  CoordinateChain chain = calibration.System().Chain();
  chain.SetProjection(&calibration.Projection());
  const std::size_t count = lattice.Count();
  const auto refuseBeyond = [&](double metres, const char* direction) {
    if (metres <= kPromised) return;
    throw UserError(
        fmt::format("--pipeline: over this site {} and PROJ's formulas differ by {:.3f} mm from "
                    "{}, more than the 0.01 mm that are promised",
                    calibration.ProjectionName(), metres * 1e3, direction));
  };

  CoordinateColumns global = lattice;
  CoordinateChain toGrid = chain;
  toGrid.SetLocalization(nullptr);
  toGrid.SetGround(nullptr);
  toGrid.ToGlobalBatch(global.first.data(), global.second.data(), global.height.data(), count);
  chain.SetLocalization(&site);
  CoordinateColumns local = global, peer = global;
  chain.ToLocalBatch(local.first.data(), local.second.data(), local.height.data(), count);
  const ProjOperation operation(pipeline);
  operation.Forward(peer);
  refuseBeyond(MissInGrid(peer, local), "global to local");

  if (!(site.mode & LocalToGrid::kHorizontal)) return;
  peer = local;
  global = local;
  chain.ToGlobalBatch(global.first.data(), global.second.data(), global.height.data(), count);
  operation.Inverse(peer);
  refuseBeyond(MissOnGround(peer, global), "local to global");
}

// Local coordinates in the units of the site; what was compared before is in metres.
std::string UnitText(const GridUnits& units) {
  if (units.AreMetres()) return "";
  return fmt::format(" +step +proj=unitconvert +xy_in=m +xy_out={} +z_in=m +z_out={}",
                     units.plane.metres, units.height.metres);
}

}  // namespace

std::string ProjPipeline(const Calibration& calibration) {
  const CoordinateChain& chain = calibration.System().Chain();
  if (chain.GetGeoid())
    throw UserError("--pipeline: heights above a geoid cannot be written for PROJ");
  const CoordinateSystem& system = calibration.System();
  if (system.FixedHeight() || !chain.GetShifts(ShiftPlace::heights).empty())
    throw UserError(
        "--pipeline: a datum at a fixed height and shifts of heights cannot be written for PROJ");
  if (!IsNorthEast(system.Grid()) || !IsNorthEast(system.Geographic()))
    throw UserError("--pipeline: only axes \"NE\" can be written for PROJ");
  const TGeoProj& projection = calibration.Projection();
  const std::string definition = ProjectionText(projection, calibration.ProjectionName());
  const CoordinateColumns lattice = SiteLattice(calibration.Points());
  std::string text = "+proj=pipeline" + ShiftsText(system, ShiftPlace::beforeDatum);
  if (const Datum* datum = chain.GetDatum()) text += DatumText(*chain.GetGlobalEllipsoid(), *datum);
  text += ShiftsText(system, ShiftPlace::afterDatum);
  text += " +step " + definition + CorrectionText(projection, definition, lattice);
  text += ShiftsText(system, ShiftPlace::afterProjection);
  text += SiteText(calibration.Site()) + GroundText(chain.GetGround(), lattice);
  RefuseDifference(calibration, text, lattice);
  return text + UnitText(calibration.Units());
}

}  // namespace geomath_files
