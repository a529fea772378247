// The magnetic field beside GeographicLib's MagneticModel, and beside its MagneticCircle on a parallel,
// all on the coefficients of WMM-2010: all elements and their yearly change.
#include <benchmark/benchmark.h>

#include "bench/peers.h"
#include "geomath/geomath.h"

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
#include <GeographicLib/MagneticCircle.hpp>
#include <GeographicLib/MagneticModel.hpp>
#include <bit>
#include <filesystem>
#include <fstream>
#include <memory>
#endif

namespace {

using namespace zel_cs::geomath;

constexpr double kYear = 2012.5;

// Degrees, degrees, kilometres.
const Columns& Places() {
  static const Columns points = SpreadPoints({-90, -180, -1}, {90, 180, 100});
  return points;
}

const WMMtype_MagneticModel& Model() {
  static const auto model = Wmm2010Model();
  return *model;
}

// Measures `evaluate(latitude, longitude, height)` point by point.
template <class Evaluate>
void MeasureEach(benchmark::State& state, Evaluate evaluate) {
  const Columns& c = Places();
  for (auto _ : state)
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      benchmark::DoNotOptimize(evaluate(c.first[i], c.second[i], c.third[i]));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
}

void AnyDate(benchmark::State& state) {
  const MagneticField field(Model(), Model().epoch);
  MeasureEach(state,
              [&](double lat, double lon, double h) { return field.At(lat, lon, h, kYear); });
}

void OneDate(benchmark::State& state) {
  const MagneticField field(Model(), kYear);
  MeasureEach(state, [&](double lat, double lon, double h) { return field.At(lat, lon, h); });
}

void OneDateBatch(benchmark::State& state) {
  const MagneticField field(Model(), kYear);
  const Columns& c = Places();
  std::vector<MagneticPoint> results(kBenchPoints);
  for (auto _ : state) {
    field.AtBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints, results.data());
    benchmark::DoNotOptimize(results.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
}

constexpr std::size_t kRowPoints = 1440;

// One parallel, every quarter of a degree.
const std::vector<double>& RowLongitudes() {
  static const std::vector<double> longitudes = [] {
    std::vector<double> degrees(kRowPoints);
    for (std::size_t i = 0; i < kRowPoints; ++i) degrees[i] = -180 + 0.25 * static_cast<double>(i);
    return degrees;
  }();
  return longitudes;
}
constexpr double kRowLatitude = 47.25, kRowHeight = 0.5;

// Measures `evaluate()` of one whole row.
template <class Evaluate>
void MeasureRow(benchmark::State& state, Evaluate evaluate) {
  for (auto _ : state) {
    evaluate();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRowPoints));
}

void RowScalar(benchmark::State& state) {
  const MagneticField field(Model(), kYear);
  MeasureRow(state, [&] {
    for (double longitude : RowLongitudes())
      benchmark::DoNotOptimize(field.At(kRowLatitude, longitude, kRowHeight));
  });
}

void RowBatch(benchmark::State& state) {
  const MagneticField field(Model(), kYear);
  std::vector<MagneticPoint> results(kRowPoints);
  MeasureRow(state, [&] {
    field.AtRow(kRowLatitude, kRowHeight, RowLongitudes().data(), kRowPoints, results.data());
    benchmark::DoNotOptimize(results.data());
  });
}

// The call with single precision at the borders.
void Declination(benchmark::State& state) {
  TMagneticDeclination object;
  SYSTEMTIME date{};
  date.wYear = 2012;
  date.wMonth = 7;
  date.wDay = 2;
  MeasureEach(state, [&](double lat, double lon, double h) {
    float decl = 0, incl = 0, total = 0;
    object.computeMagneticDeclination(static_cast<float>(lat), static_cast<float>(lon),
                                      static_cast<float>(h), date, decl, incl, total);
    return decl + incl + total;
  });
}

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
void Put(std::ofstream& file, const void* bytes, std::size_t count) {
  file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
}

// One set of coefficients as GeographicLib stores it: degree, order, C and then S (from m = 1),
// order by order.
void PutSet(std::ofstream& file, int degree, const std::vector<double>& c,
            const std::vector<double>& s) {
  const std::int32_t size[] = {degree, degree};
  Put(file, size, sizeof size);
  for (const auto& [terms, first] : {std::pair(&c, 0), std::pair(&s, 1)})
    for (int m = first; m <= degree; ++m)
      for (int n = m; n <= degree; ++n) Put(file, &(*terms)[TermIndex(n, m)], sizeof(double));
}

// GeographicLib reads models from files only: ours goes through a directory that is gone again.
std::unique_ptr<GeographicLib::MagneticModel> MakePeer() {
  static_assert(std::endian::native == std::endian::little);
  namespace fs = std::filesystem;
  const fs::path directory = fs::temp_directory_path() / "geomath_magnetic_bench";
  fs::create_directories(directory);
  std::ofstream(directory / "ours.wmm")
      << "WMMF-1\nName ours\nRadius 6371200\nEpoch 2010\nMinTime 2010\nMaxTime 2015\n"
         "MinHeight -1000\nMaxHeight 850000\nNormalization schmidt\nID OURS2010\n";
  {
    const WMMtype_MagneticModel& model = Model();
    std::ofstream file(directory / "ours.wmm.cof", std::ios::binary);
    Put(file, "OURS2010", 8);
    PutSet(file, model.nMax, model.g, model.h);
    PutSet(file, model.nMaxSecVar, model.gDot, model.hDot);
  }
  auto peer = std::make_unique<GeographicLib::MagneticModel>("ours", directory.string());
  fs::remove_all(directory);
  return peer;
}

const GeographicLib::MagneticModel& Peer() {
  static const auto peer = MakePeer();
  return *peer;
}

void PeerWithChange(benchmark::State& state) {
  MeasureEach(state, [](double lat, double lon, double h) {
    double x, y, z, xt, yt, zt, e[8];
    Peer()(kYear, lat, lon, h * 1000, x, y, z, xt, yt, zt);
    GeographicLib::MagneticModel::FieldComponents(x, y, z, xt, yt, zt, e[0], e[1], e[2], e[3], e[4],
                                                  e[5], e[6], e[7]);
    return x + y + z + xt + yt + zt + e[0] + e[1] + e[2] + e[3] + e[4] + e[5] + e[6] + e[7];
  });
}

void PeerCircle(benchmark::State& state) {
  MeasureRow(state, [] {
    const auto circle = Peer().Circle(kYear, kRowLatitude, kRowHeight * 1000);
    for (double longitude : RowLongitudes()) {
      double x, y, z, xt, yt, zt, e[8];
      circle(longitude, x, y, z, xt, yt, zt);
      GeographicLib::MagneticModel::FieldComponents(x, y, z, xt, yt, zt, e[0], e[1], e[2], e[3],
                                                    e[4], e[5], e[6], e[7]);
      benchmark::DoNotOptimize(x + y + z + xt + yt + zt + e[0] + e[1] + e[2] + e[3] + e[4] + e[5] +
                               e[6] + e[7]);
    }
  });
}

void PeerElements(benchmark::State& state) {
  MeasureEach(state, [](double lat, double lon, double h) {
    double x, y, z, e[4];
    Peer()(kYear, lat, lon, h * 1000, x, y, z);
    GeographicLib::MagneticModel::FieldComponents(x, y, z, e[0], e[1], e[2], e[3]);
    return e[1] + e[2] + e[3];
  });
}
#endif

void RegisterAll() {
  benchmark::RegisterBenchmark("magnetic, a date for each point/scalar", AnyDate);
  benchmark::RegisterBenchmark("magnetic, points at one date/scalar", OneDate);
  benchmark::RegisterBenchmark("magnetic, points at one date/batch", OneDateBatch);
  benchmark::RegisterBenchmark("magnetic, declination call/scalar", Declination);
  benchmark::RegisterBenchmark("magnetic, row of 1440/scalar", RowScalar);
  benchmark::RegisterBenchmark("magnetic, row of 1440/batch", RowBatch);
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  benchmark::RegisterBenchmark("magnetic, a date for each point/GeographicLib", PeerWithChange);
  benchmark::RegisterBenchmark("magnetic, points at one date/GeographicLib", PeerWithChange);
  benchmark::RegisterBenchmark("magnetic, declination call/GeographicLib", PeerElements);
  benchmark::RegisterBenchmark("magnetic, row of 1440/GeographicLib", PeerCircle);
#endif
}

const bool registered = (RegisterAll(), true);

}  // namespace
