// Geodesics on WGS84 beside GeographicLib, random pairs over the whole Earth, and lines in a grid.
#include <cstddef>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "geomath/geomath.h"

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
#include <GeographicLib/Geodesic.hpp>
#endif

namespace {

using namespace zel_cs::geomath;

const Geodesic& Wgs84() {
  static const Geodesic geodesic(MakeEllipsoid(kWgs84A, kWgs84InvF));
  return geodesic;
}

/// Two positions, and the line between them.
struct Lines {
  Columns from, to;
  std::vector<double> distance, azimuth, back;
};

const Lines& Random() {
  static const Lines lines = [] {
    Lines l;
    l.from = SpreadPoints({-1.5, -3.1}, {1.5, 3.1});
    l.to = SpreadPoints({-1.5, -3.1}, {1.5, 3.1});
    // The same lattice the other way round: no line depends on its place in it.
    for (std::vector<double>* column : {&l.to.first, &l.to.second})
      for (std::size_t i = 0; i < kBenchPoints / 2; ++i)
        std::swap((*column)[i], (*column)[kBenchPoints - 1 - i]);
    l.distance.resize(kBenchPoints), l.azimuth.resize(kBenchPoints), l.back.resize(kBenchPoints);
    Wgs84().InverseBatch(l.from.first.data(), l.from.second.data(), l.to.first.data(),
                         l.to.second.data(), l.distance.data(), l.azimuth.data(), l.back.data(),
                         kBenchPoints);
    return l;
  }();
  return lines;
}

template <class Run>
void Register(const char* name, Run run) {
  benchmark::RegisterBenchmark(name, [run](benchmark::State& state) {
    std::vector<double> a(kBenchPoints), b(kBenchPoints), c(kBenchPoints);
    const Lines& lines = Random();
    for (auto _ : state) {
      run(lines, a.data(), b.data(), c.data());
      benchmark::DoNotOptimize(a.data());
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
  });
}

void RegisterOurs() {
  Register("geodesic inverse/scalar", [](const Lines& l, double* a, double* b, double* c) {
    for (std::size_t i = 0; i < kBenchPoints; ++i) {
      const GeodesicMeasure line =
          Wgs84().Inverse(l.from.first[i], l.from.second[i], l.to.first[i], l.to.second[i]);
      a[i] = line.distance;
      b[i] = line.azimuth;
      c[i] = line.backAzimuth;
    }
  });
  Register("geodesic inverse/batch", [](const Lines& l, double* a, double* b, double* c) {
    Wgs84().InverseBatch(l.from.first.data(), l.from.second.data(), l.to.first.data(),
                         l.to.second.data(), a, b, c, kBenchPoints);
  });
  Register("geodesic direct/scalar", [](const Lines& l, double* a, double* b, double* c) {
    for (std::size_t i = 0; i < kBenchPoints; ++i) {
      const GeodesicEnd end =
          Wgs84().Direct(l.from.first[i], l.from.second[i], l.azimuth[i], l.distance[i]);
      a[i] = end.b;
      b[i] = end.l;
      c[i] = end.backAzimuth;
    }
  });
  Register("geodesic direct/batch", [](const Lines& l, double* a, double* b, double* c) {
    Wgs84().DirectBatch(l.from.first.data(), l.from.second.data(), l.azimuth.data(),
                        l.distance.data(), a, b, c, kBenchPoints);
  });
}

// Lines of some kilometres in a zone, with everything between the ground and the grid.
void RegisterReduction() {
  static const TUTMProj zone(kWgs84A, kWgs84InvF, 9 * kRadPerDeg, 0.9996, 0, 500000, 0);
  static const GridLines lines(zone);
  static const Columns ends = SpreadPoints({5.2e6, 3e5, 0}, {5.3e6, 7e5, 3000});
  static std::vector<GridPoint> from, to;
  for (std::size_t i = 0; i < kBenchPoints; ++i) {
    from.push_back({ends.first[i], ends.second[i], ends.third[i]});
    to.push_back({from[i].n + 2000, from[i].e - 3000, from[i].h + 50});
  }
  benchmark::RegisterBenchmark("line reduction/scalar", [](benchmark::State& state) {
    GridLine line;
    for (auto _ : state)
      for (std::size_t i = 0; i < kBenchPoints; ++i)
        benchmark::DoNotOptimize(lines.Between(from[i], to[i], line));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
  });
  benchmark::RegisterBenchmark("line reduction/batch", [](benchmark::State& state) {
    std::vector<GridLine> reduced(kBenchPoints);
    for (auto _ : state) {
      lines.Between(from.data(), to.data(), reduced.data(), kBenchPoints);
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
  });
}

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
std::vector<double> InDegrees(std::vector<double> angles) {
  for (double& angle : angles) angle *= kDegPerRad;
  return angles;
}

void RegisterPeer() {
  static const Lines degrees = [] {
    Lines l = Random();
    for (std::vector<double>* column :
         {&l.from.first, &l.from.second, &l.to.first, &l.to.second, &l.azimuth})
      *column = InDegrees(*column);
    return l;
  }();
  Register("geodesic inverse/GeographicLib", [](const Lines&, double* a, double* b, double* c) {
    const GeographicLib::Geodesic& peer = GeographicLib::Geodesic::WGS84();
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      peer.Inverse(degrees.from.first[i], degrees.from.second[i], degrees.to.first[i],
                   degrees.to.second[i], a[i], b[i], c[i]);
  });
  Register("geodesic direct/GeographicLib", [](const Lines&, double* a, double* b, double* c) {
    const GeographicLib::Geodesic& peer = GeographicLib::Geodesic::WGS84();
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      peer.Direct(degrees.from.first[i], degrees.from.second[i], degrees.azimuth[i],
                  degrees.distance[i], a[i], b[i], c[i]);
  });
}
#endif

[[maybe_unused]] const bool registered = [] {
  RegisterOurs();
  RegisterReduction();
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  RegisterPeer();
#endif
  return true;
}();

}  // namespace
