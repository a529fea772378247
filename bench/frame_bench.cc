// Changes of frame, velocity grids and deformation models beside PROJ, at one date and at a date for
// each point. The rows of grids need the published files of tests/support/reference_data.h.
#include <algorithm>
#include <numeric>
#include <string>

#include "bench/measure.h"
#include "bench/measure_covariance.h"
#include "geomath/geomath.h"
#include "tests/support/reference_data.h"
#ifdef GEOMATH_HAVE_FILES
#include "files/gdal/use_gdal.h"
#include "files/models/shift_file.h"
#endif

namespace {

using namespace zel_cs::geomath;

constexpr double kDate = 2008.4;

const Ellipsoid& Grs80() {
  static const Ellipsoid grs80 = MakeEllipsoid(6378137, 298.257222101);
  return grs80;
}

Columns Geocentric(Columns points) {
  Grs80().BLH_to_XYZ_Batch(points.first.data(), points.second.data(), points.third.data(),
                           kBenchPoints);
  return points;
}

/// The points in the order of rows to the north, as a raster is worked through.
Columns Sorted(const Columns& points) {
  constexpr double kRow = 0.002;  // rad
  std::vector<std::size_t> order(kBenchPoints);
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const double rowA = std::floor(points.first[a] / kRow);
    const double rowB = std::floor(points.first[b] / kRow);
    return rowA != rowB ? rowA < rowB : points.second[a] < points.second[b];
  });
  Columns sorted;
  for (const std::size_t i : order) {
    sorted.first.push_back(points.first[i]);
    sorted.second.push_back(points.second[i]);
    sorted.third.push_back(points.third[i]);
  }
  return sorted;
}

void RegisterOurs(const std::string& name, const CoordinateShift& shift, const Columns& points,
                  bool forward) {
  benchmark::RegisterBenchmark((name + "/scalar").c_str(), [=, &shift](benchmark::State& state) {
    MeasureInPlace(state, points, [&](Columns& c) {
      for (std::size_t i = 0; i < kBenchPoints; ++i)
        forward ? shift.Forward(c.first[i], c.second[i], c.third[i], kDate)
                : shift.Inverse(c.first[i], c.second[i], c.third[i], kDate);
    });
  });
  benchmark::RegisterBenchmark((name + "/batch").c_str(), [=, &shift](benchmark::State& state) {
    const auto convert =
        forward ? &CoordinateShift::ForwardDatedBatch : &CoordinateShift::InverseDatedBatch;
    MeasureInPlace(state, points, [&](Columns& c) {
      (shift.*convert)(PointDates(kDate), c.first.data(), c.second.data(), c.third.data(),
                       kBenchPoints, 1, nullptr);
    });
  });
}

void RegisterEach(const std::string& name, const CoordinateShift& shift, const Columns& points) {
  benchmark::RegisterBenchmark((name + "/batch").c_str(), [=, &shift](benchmark::State& state) {
    std::vector<double> dates;
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      dates.push_back(2001 + 0.005 * static_cast<double>(i));
    MeasureInPlace(state, points, [&](Columns& c) {
      shift.ForwardDatedBatch(PointDates(dates.data()), c.first.data(), c.second.data(),
                              c.third.data(), kBenchPoints);
    });
  });
}

#ifdef GEOMATH_HAVE_PROJ
/// Geographic points are turned around: PROJ has the longitude first.
void RegisterPeer(const std::string& name, const std::string& definition, const Columns& points,
                  bool forward, bool geographic = false, const std::string& folder = "") {
  benchmark::RegisterBenchmark((name + "/PROJ").c_str(), [=](benchmark::State& state) {
    const ProjPeer peer(definition.c_str(), folder);
    if (!peer.Good()) return state.SkipWithError("PROJ does not take the definition");
    MeasureInPlace(state, points, [&](Columns& c) {
      double* const x = geographic ? c.second.data() : c.first.data();
      double* const y = geographic ? c.first.data() : c.second.data();
      peer.ConvertAt(kDate, forward ? PJ_FWD : PJ_INV, x, y, c.third.data(), kBenchPoints);
    });
  });
}
#endif

void RegisterSigma(const std::string& name, const CoordinateShift& shift, const Columns& points) {
  const auto chain = std::make_shared<CoordinateChain>(&Grs80(), nullptr, nullptr);
  chain->AddShift(ShiftPlace::beforeDatum, {&shift});
  RegisterCovariances(name, chain, points, kDate);
}

void RegisterFrames() {
  static const auto change =
      FrameChange::Make(ReferenceFrame::itrf2014, ReferenceFrame::nad83CsrsV7);
  const Columns geographic = SpreadPoints({0.5, -2.2, 0.0}, {1.1, -1.0, 2000.0});
  const Columns points = Geocentric(geographic);
  RegisterCopy("copy of triples/batch", points);
  RegisterOurs("14 parameters forward", *change, points, true);
  RegisterOurs("14 parameters inverse", *change, points, false);
  RegisterEach("14 parameters, a date each", *change, points);
  RegisterSigma("14 parameters", *change, geographic);
#ifdef GEOMATH_HAVE_PROJ
  const std::string set =
      "+proj=helmert +x=1.0053 +y=-1.9092 +z=-0.5416 +rx=-0.0267814 +ry=0.0004203 +rz=-0.0109321"
      " +s=0.00037 +dx=0.0008 +dy=-0.0006 +dz=-0.0014 +drx=-0.0000667 +dry=0.0007574"
      " +drz=0.0000513 +ds=-0.00007 +t_epoch=2010 +convention=position_vector";
  RegisterPeer("14 parameters forward", set, points, true);
  RegisterPeer("14 parameters inverse", set, points, false);
#endif
}

#ifdef GEOMATH_HAVE_FILES
void RegisterVelocities() {
  const auto file = ReferenceFile("grids/eur_nkg_nkgrf03vel_realigned.tif");
  if (!std::filesystem::exists(file)) return;
  static const auto grid = geomath_files::OpenShift({.file = file.string(), .epoch = 2000});
  const Columns random = SpreadPoints({0.93, 0.06, 0.0}, {1.27, 0.69, 500.0});
  const Columns spread = Geocentric(random), sorted = Geocentric(Sorted(random));
  RegisterOurs("velocity grid, random", *grid, spread, true);
  RegisterOurs("velocity grid, sorted", *grid, sorted, true);
  RegisterOurs("velocity grid inverse, sorted", *grid, sorted, false);
  RegisterSigma("velocity grid", *grid, random);
#ifdef GEOMATH_HAVE_PROJ
  const std::string definition =
      "+proj=deformation +ellps=GRS80 +t_epoch=2000 +grids=" + file.string();
  RegisterPeer("velocity grid, random", definition, spread, true);
  RegisterPeer("velocity grid, sorted", definition, sorted, true);
  RegisterPeer("velocity grid inverse, sorted", definition, sorted, false);
#endif
}

void RegisterDeformation() {
  const auto file = ReferenceFile("grids/nz_linz_nzgd2000-20180701.json");
  if (!std::filesystem::exists(file)) return;
  static const auto model = geomath_files::OpenShift({.file = file.string()});
  const Columns points = SpreadPoints({-0.82, 2.91, 0.0}, {-0.61, 3.11, 500.0});
  RegisterOurs("deformation model forward", *model, points, true);
  RegisterOurs("deformation model inverse", *model, points, false);
  RegisterEach("deformation model, a date each", *model, points);
  RegisterSigma("deformation model", *model, points);
#ifdef GEOMATH_HAVE_PROJ
  const std::string definition = "+proj=defmodel +ellps=GRS80 +model=" + file.string();
  const std::string folder = file.parent_path().string();
  RegisterPeer("deformation model forward", definition, points, true, true, folder);
  RegisterPeer("deformation model inverse", definition, points, false, true, folder);
#endif
}
#endif

[[maybe_unused]] const bool registered = [] {
  RegisterFrames();
#ifdef GEOMATH_HAVE_FILES
  geomath_files::UseGdal();
  RegisterVelocities();
  RegisterDeformation();
#endif
  return true;
}();

}  // namespace
