// Geoid heights: spherical-harmonic models of degree 360 and 2190 beside GeographicLib's GravityModel
// and GravityCircle, interpolation in a grid beside PROJ's vgridshift and GeographicLib's Geoid. Both
// sides read one synthetic model (Kaula's rule) and synthetic grids of ordinary size, written to a
// temporary directory.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure_covariance.h"
#include "geomath/geomath.h"

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
#include <GeographicLib/Geoid.hpp>
#include <GeographicLib/GravityCircle.hpp>
#include <GeographicLib/GravityModel.hpp>
#endif

namespace {

using namespace zel_cs::geomath;

constexpr int kRowDegree = 360, kRowColumns = 1440;
constexpr std::size_t kPlaces = 64;  // as many as two passes over the coefficients serve

/// Numbers between −1 and 1 without a pattern.
double Noise(std::size_t k) {
  const double x = std::sin(static_cast<double>(k) * 12.9898 + 78.233) * 43758.5453;
  return 2 * (x - std::floor(x)) - 1;
}

struct Coefficients {
  std::vector<double> C, S, correctionC, correctionS;
};

template <int kDegree>
const Coefficients& Synthetic() {
  static const Coefficients coefficients = [] {
    Coefficients c;
    for (std::size_t n = 0, k = 0; n <= kDegree; ++n) {
      const double size = n < 2 ? 0 : 1e-5 / static_cast<double>(n * n);
      for (std::size_t m = 0; m <= n; ++m, ++k) {
        c.C.push_back(n == 2 && m == 0 ? 0 : size * Noise(4 * k));
        c.S.push_back(m ? size * Noise(4 * k + 1) : 0);
        c.correctionC.push_back(1e4 * size * Noise(4 * k + 2));
        c.correctionS.push_back(m ? 1e4 * size * Noise(4 * k + 3) : 0);
      }
    }
    return c;
  }();
  return coefficients;
}

template <int kDegree>
const GlobalGeoid& Model() {
  const Coefficients& c = Synthetic<kDegree>();
  static const GlobalGeoid model(kDegree + 1, c.C.data(), c.S.data(), false, 0,
                                 c.correctionC.data(), c.correctionS.data());
  return model;
}

const std::vector<TAbstractPoint3<double>>& Places() {
  static const std::vector<TAbstractPoint3<double>> places = [] {
    const Columns c = SpreadPoints({-1.5, -3.1, 0}, {1.5, 3.1, 1});
    std::vector<TAbstractPoint3<double>> points;
    for (std::size_t i = 0; i < kPlaces; ++i) points.emplace_back(c.first[i], c.second[i], 0.0);
    return points;
  }();
  return places;
}

template <int kDegree>
void HarmonicScalar(benchmark::State& state) {
  GlobalGeoidScratch scratch;
  for (auto _ : state)
    for (const TAbstractPoint3<double>& place : Places()) {
      double height;
      Model<kDegree>().CountHeight(&place, &height, 1, scratch);
      benchmark::DoNotOptimize(height);
    }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPlaces));
}

template <int kDegree>
void HarmonicBatch(benchmark::State& state) {
  GlobalGeoidScratch scratch;
  std::vector<double> heights(kPlaces);
  for (auto _ : state) {
    Model<kDegree>().CountHeight(Places().data(), heights.data(), static_cast<int>(kPlaces),
                                 scratch);
    benchmark::DoNotOptimize(heights.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPlaces));
}

/// `rows` rows of longitudes all around the Earth.
void HarmonicRows(benchmark::State& state, int rows) {
  GlobalGeoidScratch scratch;
  std::vector<double> heights(static_cast<std::size_t>(rows * kRowColumns));
  const double step = kTwoPi / kRowColumns;
  double south = 0.5;
  for (auto _ : state) {
    south = south < 1 ? south + 0.01 : 0.5;
    Model<kRowDegree>().CountHeightOnGrid(
        {{south, (rows - 1) * step, 0, kTwoPi - step}, step, step}, heights.data(), scratch);
    benchmark::DoNotOptimize(heights.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * rows * kRowColumns);
}

/// Names of temporary files that are removed with the program.
class TemporaryFiles {
 public:
  TemporaryFiles()
      : directory_(std::filesystem::temp_directory_path() /
                   ("geomath_geoid_bench_" + std::to_string(std::bit_cast<std::uintptr_t>(this)))) {
    std::filesystem::create_directories(directory_);
  }
  ~TemporaryFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
  TemporaryFiles(const TemporaryFiles&) = delete;
  TemporaryFiles& operator=(const TemporaryFiles&) = delete;
  const std::filesystem::path& Directory() const { return directory_; }

 private:
  std::filesystem::path directory_;
};

const std::filesystem::path& Directory() {
  static const TemporaryFiles files;
  return files.Directory();
}

template <class Value>
void Put(std::ostream& out, Value value) {
  out.write(reinterpret_cast<const char*>(&value), sizeof value);
}

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
// GeographicLib stores coefficients order by order, each from its first degree.
void PutByOrder(std::ostream& out, const std::vector<double>& c, std::size_t degree,
                std::size_t firstOrder) {
  for (std::size_t m = firstOrder; m <= degree; ++m)
    for (std::size_t n = m; n <= degree; ++n) Put(out, c[n * (n + 1) / 2 + m]);
}

template <int kDegree>
const GeographicLib::GravityModel& Peer() {
  static const GeographicLib::GravityModel model = [] {
    const std::string name = "bench" + std::to_string(kDegree);
    std::ofstream header(Directory() / (name + ".egm"));
    header << "EGMF-1\nName bench\nID GEOMATH1\nModelRadius 6378137\nModelMass 3986004.418e8\n"
              "AngularVelocity 7292115e-11\nReferenceRadius 6378137\n"
              "ReferenceMass 3986004.418e8\nFlattening 1/298.257223563\nHeightOffset -0.53\n"
              "CorrectionMultiplier 0.01\nNormalization full\n";
    header.close();
    std::ofstream out(Directory() / (name + ".egm.cof"), std::ios::binary);
    out << "GEOMATH1";
    const Coefficients& c = Synthetic<kDegree>();
    for (const auto& [cosines, sines] :
         {std::pair(&c.C, &c.S), std::pair(&c.correctionC, &c.correctionS)}) {
      Put(out, std::int32_t{kDegree});
      Put(out, std::int32_t{kDegree});
      PutByOrder(out, *cosines, kDegree, 0);
      PutByOrder(out, *sines, kDegree, 1);
    }
    out.close();
    return GeographicLib::GravityModel(name, Directory().string());
  }();
  return model;
}

template <int kDegree>
void PeerPoint(benchmark::State& state) {
  const GeographicLib::GravityModel& model = Peer<kDegree>();
  for (auto _ : state)
    for (const TAbstractPoint3<double>& place : Places())
      benchmark::DoNotOptimize(model.GeoidHeight(place[0] * kDegPerRad, place[1] * kDegPerRad));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPlaces));
}

void PeerRows(benchmark::State& state, int rows) {
  const GeographicLib::GravityModel& model = Peer<kRowDegree>();
  const double step = 360.0 / kRowColumns;
  double south = 30;
  for (auto _ : state) {
    south = south < 60 ? south + 0.5 : 30;
    for (int a = 0; a < rows; ++a) {
      const auto circle =
          model.Circle(south + a * step, 0, GeographicLib::GravityModel::GEOID_HEIGHT);
      for (int b = 0; b < kRowColumns; ++b) benchmark::DoNotOptimize(circle.GeoidHeight(b * step));
    }
  }
  state.SetItemsProcessed(state.iterations() * rows * kRowColumns);
}
#endif

// A grid of a quarter of a degree around the Earth, as global models are published, the form that
// every side can read.
constexpr int kRows = 721, kGridColumns = 1440;
constexpr double kSouth = -90, kWest = 0, kStep = 0.25;  // degrees

double NodeHeight(int row, int column) {
  return 40 + 5 * std::sin(row / 30.0) + 3 * std::cos(column / 25.0);
}

const std::vector<float>& Nodes() {
  static const std::vector<float> nodes = [] {
    std::vector<float> z;
    for (int r = 0; r < kRows; ++r)
      for (int c = 0; c < kGridColumns; ++c) z.push_back(static_cast<float>(NodeHeight(r, c)));
    return z;
  }();
  return nodes;
}

// Places of one country.
const Columns& GridPlaces() {
  static const Columns points = SpreadPoints({40.1 * kRadPerDeg, 5.1 * kRadPerDeg, 0},
                                             {45.9 * kRadPerDeg, 9.9 * kRadPerDeg, 1});
  return points;
}

template <class Interpolator>
const Interpolator& GridModel() {
  constexpr double step = kStep * kRadPerDeg;
  static const Interpolator model(
      {{kSouth * kRadPerDeg, (kRows - 1) * step, kWest * kRadPerDeg, (kGridColumns - 1) * step},
       step,
       step},
      kGridColumns, kRows, Nodes().data(), 0, L"", L"");
  return model;
}

/// Heights at GridPlaces, `together` points a call.
template <class Interpolator>
void Grid(benchmark::State& state, std::size_t together) {
  const Interpolator& model = GridModel<Interpolator>();
  std::vector<TAbstractPoint3<double>> points;
  for (std::size_t i = 0; i < kBenchPoints; ++i)
    points.emplace_back(GridPlaces().first[i], GridPlaces().second[i], 0.0);
  std::vector<double> heights(kBenchPoints);
  for (auto _ : state) {
    for (std::size_t i = 0; i < kBenchPoints; i += together)
      benchmark::DoNotOptimize(
          model.CountHeight(points.data() + i, heights.data() + i, static_cast<int>(together)));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
}

/// Heights of a chain with covariances.
void RegisterSigma(const std::string& row, const GeoidHeight& geoid, const Columns& places) {
  static const Ellipsoid ellipsoid = MakeEllipsoid(kWgs84A, kWgs84InvF);
  const auto chain = std::make_shared<CoordinateChain>(&ellipsoid, nullptr, nullptr);
  chain->SetGeoid(&geoid);
  RegisterCovariances(row, chain, places);
}

/// One rule, one point at a time and all of them in one call.
template <class Interpolator>
void RegisterGrid(const std::string& row) {
  benchmark::RegisterBenchmark((row + "/scalar").c_str(), Grid<Interpolator>, 1);
  benchmark::RegisterBenchmark((row + "/batch").c_str(), Grid<Interpolator>, kBenchPoints);
  static const RegionalGeoidHeight geoid(GridModel<Interpolator>());
  RegisterSigma(row, geoid, GridPlaces());
}

template <class Value>
Value BigEndian(Value value) {
  auto bytes = std::bit_cast<std::array<unsigned char, sizeof(Value)>>(value);
  if constexpr (std::endian::native == std::endian::little)
    std::reverse(bytes.begin(), bytes.end());
  return std::bit_cast<Value>(bytes);
}

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
void PeerGeoid(benchmark::State& state, bool cubic) {
  constexpr double kOffset = -108, kScale = 0.003;  // metres of the stored 16-bit numbers
  std::ofstream out(Directory() / "bench.pgm", std::ios::binary);
  out << "P5\n# Offset " << kOffset << "\n# Scale " << kScale << '\n'
      << kGridColumns << ' ' << kRows << "\n65535\n";
  for (int r = kRows - 1; r >= 0; --r)
    for (int c = 0; c < kGridColumns; ++c)
      Put(out, BigEndian(static_cast<std::uint16_t>((NodeHeight(r, c) - kOffset) / kScale)));
  out.close();
  const GeographicLib::Geoid geoid("bench", Directory().string(), cubic);
  geoid.CacheAll();
  Columns places = GridPlaces();
  for (std::size_t i = 0; i < kBenchPoints; ++i) {
    places.first[i] *= kDegPerRad;
    places.second[i] *= kDegPerRad;
  }
  for (auto _ : state) {
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      benchmark::DoNotOptimize(geoid(places.first[i], places.second[i]));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
}
#endif

#ifdef GEOMATH_HAVE_PROJ
void PeerGrid(benchmark::State& state) {
  const std::filesystem::path file = Directory() / "bench.gtx";
  std::ofstream out(file, std::ios::binary);
  for (const double value : {kSouth, kWest, kStep, kStep}) Put(out, BigEndian(value));
  for (const std::int32_t value : {kRows, kGridColumns}) Put(out, BigEndian(value));
  for (const float z : Nodes()) Put(out, BigEndian(z));
  out.close();
  const ProjPeer peer(("+proj=vgridshift +multiplier=1 +grids=" + file.string()).c_str());
  if (!peer.Good()) {
    state.SkipWithError("PROJ does not read the grid");
    return;
  }
  Columns work = GridPlaces();
  for (auto _ : state) {
    work.third = GridPlaces().third;
    peer.Convert(PJ_FWD, work.second.data(), work.first.data(), work.third.data(), kBenchPoints);
    benchmark::DoNotOptimize(work.third.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBenchPoints));
}
#endif

const bool registered = [] {
  constexpr int kFewRows = 8;
  benchmark::RegisterBenchmark("geoid of degree 360, points/scalar", HarmonicScalar<360>);
  benchmark::RegisterBenchmark("geoid of degree 360, points/batch", HarmonicBatch<360>);
  benchmark::RegisterBenchmark("geoid of degree 360, a row/batch", HarmonicRows, 1);
  benchmark::RegisterBenchmark("geoid of degree 360, 8 rows/batch", HarmonicRows, kFewRows);
  benchmark::RegisterBenchmark("geoid of degree 2190, points/scalar", HarmonicScalar<2190>);
  benchmark::RegisterBenchmark("geoid of degree 2190, points/batch", HarmonicBatch<2190>);
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  benchmark::RegisterBenchmark("geoid of degree 360, points/GravityModel", PeerPoint<360>);
  benchmark::RegisterBenchmark("geoid of degree 360, a row/GravityCircle", PeerRows, 1);
  benchmark::RegisterBenchmark("geoid of degree 360, 8 rows/GravityCircle", PeerRows, kFewRows);
  benchmark::RegisterBenchmark("geoid of degree 2190, points/GravityModel", PeerPoint<2190>);
#endif
  static const GlobalGeoidHeight harmonic(Model<360>());
  RegisterSigma("geoid of degree 360", harmonic, GridPlaces());
  RegisterGrid<RegGeoid2x2SW>("geoid grid, bilinear");
#ifdef GEOMATH_HAVE_PROJ
  benchmark::RegisterBenchmark("geoid grid, bilinear/vgridshift", PeerGrid);
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  benchmark::RegisterBenchmark("geoid grid, bilinear/Geoid", PeerGeoid, false);
#endif
  RegisterGrid<RegionalGeoid>("geoid grid, biquadratic");  // no peer has the rule
  RegisterGrid<RegGeoidInterpalation4>("geoid grid, cubic");
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  benchmark::RegisterBenchmark("geoid grid, cubic/Geoid", PeerGeoid, true);
#endif
  RegisterGrid<RegGeoidIntrp_Lagrange4x4SW>("geoid grid, Lagrange");
  RegisterGrid<RegGeoidKrigingIntrp>("geoid grid, kriging");
  RegisterGrid<RegGeoidIntrp_Spline4x4SW>("geoid grid, spline");
  RegisterGrid<RegGeoidInterpalation_GG2008SW>("geoid grid, spline of 6 nodes");
  return true;
}();

}  // namespace
