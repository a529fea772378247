// Map projections, both directions, one point at a time and in batches, beside PROJ.
#include <memory>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/measure_covariance.h"
#include "geomath/geomath.h"

namespace {

using namespace zel_cs::geomath;

constexpr double kDeg = kRadPerDeg;

struct Row {
  const char* name;
  std::shared_ptr<TGeoProj> projection;
  const char* peer;                 // PROJ's definition of the same projection
  double south, west, north, east;  // degrees
  const char* shortPeer = nullptr;  // the same by PROJ's short series, where ours is one too
};

template <class Projection, class... Args>
std::shared_ptr<TGeoProj> Make(Args... args) {
  return std::make_shared<Projection>(args...);
}

constexpr const char* kZone32 = "+proj=tmerc +lon_0=9 +k_0=0.9996 +x_0=500000 +ellps=WGS84";
constexpr const char* kZone32Short =
    "+proj=tmerc +approx +lon_0=9 +k_0=0.9996 +x_0=500000 +ellps=WGS84";

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      {"lambert",
       Make<TLCProj>(kWgs84A, kWgs84InvF, 33 * kDeg, 45 * kDeg, -96 * kDeg, 23 * kDeg, 0, 0, 1.0),
       "+proj=lcc +lat_1=33 +lat_2=45 +lat_0=23 +lon_0=-96 +ellps=WGS84", 25, -120, 50, -70},
      {"lambert, 1983",
       Make<TSPC_LC83Proj>(kWgs84A, kWgs84InvF, 30.11666666666667 * kDeg, 31.88333333333333 * kDeg,
                           -100.3333333333333 * kDeg, 29.66666666666667 * kDeg, 700000, 3e6, 4203),
       "+proj=lcc +lat_1=30.11666666666667 +lat_2=31.88333333333333 +lat_0=29.66666666666667 "
       "+lon_0=-100.3333333333333 +x_0=700000 +y_0=3000000 +ellps=WGS84",
       29, -106, 33, -93},
      {"albers",
       Make<TAlbersEAConicProj>(kWgs84A, kWgs84InvF, 29.5 * kDeg, 45.5 * kDeg, -96 * kDeg,
                                23 * kDeg, 0, 0),
       "+proj=aea +lat_1=29.5 +lat_2=45.5 +lat_0=23 +lon_0=-96 +ellps=WGS84", 25, -120, 50, -70},
      {"stereographic, oblique",
       Make<TSterProj>(kWgs84A, kWgs84InvF, 40 * kDeg, -100 * kDeg, 1.0, 0, 0),
       "+proj=stere +lat_0=40 +lon_0=-100 +ellps=WGS84", 25, -120, 50, -70},
      {"stereographic, polar", Make<TSterProj>(kWgs84A, kWgs84InvF, kHalfPi, 0, 0.994, 2e6, 2e6),
       "+proj=stere +lat_0=90 +k_0=0.994 +x_0=2000000 +y_0=2000000 +ellps=WGS84", 60, -180, 90,
       180},
      {"stereographic, double",
       Make<TDoubleSter>(kWgs84A, kWgs84InvF, 52 * kDeg, 5 * kDeg, 0.9999, 155000, 463000),
       "+proj=sterea +lat_0=52 +lon_0=5 +k=0.9999 +x_0=155000 +y_0=463000 +ellps=WGS84", 50, 3, 54,
       8},
      {"dutch",
       Make<TRDProj>(6377397.155, 299.1528128, 52.156160555556 * kDeg, 5.387638888889 * kDeg,
                     155000, 463000),
       "+proj=sterea +lat_0=52.156160555556 +lon_0=5.387638888889 +k=0.9999079 +x_0=155000 "
       "+y_0=463000 +ellps=bessel",
       50, 3, 54, 8},
      {"krovak", Make<TKrovakProj>(),
       "+proj=krovak +lat_0=49.5 +lon_0=24.83333333333333 +k=0.9999 +ellps=WGS84", 48, 12, 51, 22},
      {"transverse mercator", Make<TTMProj>(kWgs84A, kWgs84InvF, 9 * kDeg, 0.9996, 0, 500000, 0),
       kZone32, -80, 6, 80, 12, kZone32Short},
      {"transverse mercator, 1983",
       Make<TSPC_TM83Proj>(kWgs84A, kWgs84InvF, 9 * kDeg, 0.9996, 0, 500000, 0, 0), kZone32, -80, 6,
       80, 12, kZone32Short},
      {"transverse mercator, danish",
       Make<TDenmarkTMProj>(kWgs84A, kWgs84InvF, 9 * kDeg, 0.9996, 0, 500000, 0), kZone32, 50, 4,
       60, 16},
      {"transverse mercator, kms",
       Make<TKMSProjTM>(kWgs84A, kWgs84InvF, 9 * kDeg, 0.9996, 0, 500000, 0), kZone32, 50, 4, 60,
       16},
      {"transverse mercator, kms grid",
       Make<TKMSTransProj>(kWgs84A, kWgs84InvF, 9 * kDeg, 0.9996, 0, 500000, 0, kKmsOwnSystem),
       kZone32, 50, 4, 60, 16},
      {"oblique mercator",
       Make<TOMercatorProj>(kWgs84A, kWgs84InvF, 30 * kDeg, 0.9996, 10 * kDeg, 47 * kDeg, 0, 0),
       "+proj=omerc +no_uoff +alpha=30 +lonc=10 +lat_0=47 +k_0=0.9996 +ellps=WGS84", 37, 0, 57, 20},
      {"rectified skew orthomorphic", Make<TRSOProj>(),
       "+proj=omerc +no_uoff +alpha=-36.97420943711801 +gamma=-36.86989764584402 +lonc=102.25 "
       "+lat_0=4 +k_0=0.99984 +x_0=804671.2996 +ellps=WGS84",
       1, 99, 7, 105},
      {"swiss",
       Make<TSwissProj>(6377397.155, 299.1528128, (7 + 26 / 60.0 + 22.5 / 3600) * kDeg,
                        (46 + 57 / 60.0 + 8.66 / 3600) * kDeg, 2600000, 1200000),
       "+proj=somerc +lat_0=46.952405555555555 +lon_0=7.439583333333333 +x_0=2600000 +y_0=1200000 "
       "+ellps=bessel",
       45.5, 5.5, 48, 10.5},
      {"cassini", Make<TCassiniProj>(kWgs84A, kWgs84InvF, 2 * kDeg, 103 * kDeg, 0, 0, 0),
       "+proj=cass +lat_0=2 +lon_0=103 +ellps=WGS84", -1, 101.5, 5, 104.5},
      {"mercator", Make<TMercatorProj>(kWgs84A, kWgs84InvF, 51 * kDeg, 42 * kDeg, 0, 0),
       "+proj=merc +lat_ts=42 +lon_0=51 +ellps=WGS84", -80, -100, 80, 200},
      {"gauss-schreiber",
       Make<TMonSpher>(kWgs84A, kWgs84InvF, -21 * kDeg, 55 * kDeg, -21 * kDeg, 1, 1, 160000, 50000,
                       0),
       "+proj=gstmerc +lat_0=-21 +lon_0=55 +k_0=1 +x_0=160000 +y_0=50000 +ellps=WGS84", -22, 54,
       -20, 56},
      {"city plane",
       Make<TColombiaProj>(kWgs84A, kWgs84InvF, 4.68 * kDeg, -74.15 * kDeg, 92334.879, 109320.965),
       "+proj=col_urban +lat_0=4.68 +lon_0=-74.15 +h_0=0 +x_0=92334.879 +y_0=109320.965 "
       "+ellps=WGS84",
       4.4, -74.5, 5, -73.8},
      {"lambert, 1927",
       Make<TLC27Proj>(2000000, 439200, 24245358.05, 24792436.23, 0.9998946358, 0.6538843192,
                       146486.75847, 3.80992, 3.93575, 0, 401),
       "+proj=lcc +lat_1=40 +lat_2=41.66666666666667 +lat_0=39.33333333333333 +lon_0=-122 "
       "+x_0=609601.2192 +ellps=clrk66",
       39.5, -124, 42, -120},
      {"transverse mercator, 1927",
       Make<TTM27Proj>(500000, 309000, 109341.00903, 0.99996, 0.3817065, 101),
       "+proj=tmerc +lat_0=30.5 +lon_0=-85.83333333333333 +k_0=0.99996 +x_0=152400.3048 "
       "+ellps=clrk66",
       30.5, -87, 35, -85,
       "+proj=tmerc +approx +lat_0=30.5 +lon_0=-85.83333333333333 +k_0=0.99996 +x_0=152400.3048 "
       "+ellps=clrk66"},
      {"new zealand map grid", Make<TNZMGProj>(), "+proj=nzmg", -47, 166.5, -34.5, 178.5},
  };
  return rows;
}

template <class Convert>
void Register(const std::string& name, const std::shared_ptr<Columns>& points, Convert convert) {
  benchmark::RegisterBenchmark(name.c_str(), [points, convert](benchmark::State& state) {
    MeasureInPlace(state, *points, [&](Columns& c) { convert(c.first.data(), c.second.data()); });
  });
}

#ifdef GEOMATH_HAVE_PROJ
void RegisterPeer(const std::string& name, const std::shared_ptr<Columns>& geographic,
                  const char* definition, PJ_DIRECTION direction) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    const ProjPeer peer(definition);
    if (!peer.Good()) {
      state.SkipWithError("PROJ does not know the definition");
      return;
    }
    Columns points = *geographic;  // PROJ's grid points are its own, whatever its axes
    if (direction == PJ_INV)
      peer.Convert(PJ_FWD, points.second.data(), points.first.data(), nullptr, kBenchPoints);
    MeasureInPlace(state, points, [&](Columns& c) {
      peer.Convert(direction, c.second.data(), c.first.data(), nullptr, kBenchPoints);
    });
  });
}
#endif

// Scale, convergence and the rest of a point's distortion.
template <class Run>
void RegisterFactors(const std::string& name, const std::shared_ptr<Columns>& points, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [points, run](benchmark::State& state) {
    for (auto _ : state) {
      run(points->first.data(), points->second.data());
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
  });
}

void RegisterFactors(const Row& row, const std::shared_ptr<Columns>& geographic) {
  const std::string name = std::string(row.name) + " factors/";
  const auto distortions = std::make_shared<std::vector<Distortion>>(kBenchPoints);
  const std::shared_ptr<TGeoProj> p = row.projection;
  RegisterFactors(name + "batch", geographic, [p, distortions](const double* b, const double* l) {
    DistortionAt(*p, b, l, distortions->data(), kBenchPoints);
  });
#ifdef GEOMATH_HAVE_PROJ
  const auto peer = std::make_shared<ProjPeer>(row.peer);
  RegisterFactors(name + "PROJ", geographic, [peer](const double* b, const double* l) {
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      benchmark::DoNotOptimize(peer->Factors(l[i], b[i]));
  });
#endif
}

// A chain of the projection alone.
void RegisterCovariances(const Row& row, const Columns& geographic) {
  const auto chain = std::make_shared<CoordinateChain>(nullptr, nullptr, row.projection.get());
  Columns points = geographic;
  points.third.assign(kBenchPoints, 100.0);
  RegisterCovariances(row.name, chain, points);
}

void RegisterRow(const Row& row) {
  const std::shared_ptr<TGeoProj> p = row.projection;
  const auto geographic = std::make_shared<Columns>(
      SpreadPoints({row.south * kDeg, row.west * kDeg}, {row.north * kDeg, row.east * kDeg}));
  const auto grid = std::make_shared<Columns>(*geographic);
  p->ForwardBatch(grid->first.data(), grid->second.data(), kBenchPoints);
  const std::string forward = std::string(row.name) + " forward/";
  const std::string inverse = std::string(row.name) + " inverse/";

  Register(forward + "scalar", geographic, [p](double* b, double* l) {
    for (std::size_t i = 0; i < kBenchPoints; ++i) p->Forward(b[i], l[i]);
  });
  Register(forward + "batch", geographic,
           [p](double* b, double* l) { p->ForwardBatch(b, l, kBenchPoints); });
  Register(inverse + "scalar", grid, [p](double* n, double* e) {
    for (std::size_t i = 0; i < kBenchPoints; ++i) p->Inverse(n[i], e[i]);
  });
  Register(inverse + "batch", grid,
           [p](double* n, double* e) { p->InverseBatch(n, e, kBenchPoints); });
  RegisterFactors(row, geographic);
  RegisterCovariances(row, *geographic);
#ifdef GEOMATH_HAVE_PROJ
  RegisterPeer(forward + "PROJ", geographic, row.peer, PJ_FWD);
  RegisterPeer(inverse + "PROJ", geographic, row.peer, PJ_INV);
  if (!row.shortPeer) return;
  RegisterPeer(forward + "PROJ, short series", geographic, row.shortPeer, PJ_FWD);
  RegisterPeer(inverse + "PROJ, short series", geographic, row.shortPeer, PJ_INV);
#endif
}

const bool kRegistered = [] {
  RegisterCopy("copy of two columns/batch", SpreadPoints({0, 0}, {1, 1}));
  for (const Row& row : Rows()) RegisterRow(row);
  return true;
}();

}  // namespace
