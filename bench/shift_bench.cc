// Shift grids and triangulations beside PROJ, which reads the same made-up files.
#include <unistd.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/measure_covariance.h"
#include "geomath/geomath.h"
#ifdef GEOMATH_HAVE_FILES
#include "files/models/shift_file.h"
#endif

namespace {

using namespace zel_cs::geomath;

/// A directory for the files that PROJ reads, removed at the end.
class Scratch {
 public:
  Scratch()
      : path_(std::filesystem::temp_directory_path() /
              ("geomath_shift_bench_" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path_);
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  std::string File(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

const Scratch& Files() {
  static const Scratch scratch;
  return scratch;
}

/// A grid of the size of the German one: 84 by 62 nodes, shifts of 4 to 6 seconds.
constexpr int kRows = 84, kColumns = 62;
constexpr double kSouth = 169200, kEast = -57000, kLatStep = 360, kLonStep = 600;  // seconds, west

const char* GridFile() {
  static const std::string name = [] {
    static_assert(std::endian::native == std::endian::little);
    std::string bytes;
    const auto append = [&](const auto& value) {
      bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    const auto text = [&](const char* key, const char* value) {
      bytes += std::string(key).append(8 - std::strlen(key), ' ');
      bytes += std::string(value).append(8 - std::strlen(value), ' ');
    };
    const auto number = [&](const char* key, auto value) {
      bytes += std::string(key).append(8 - std::strlen(key), ' ');
      append(value);
      if (sizeof value == 4) append(0);
    };
    number("NUM_OREC", 11), number("NUM_SREC", 11), number("NUM_FILE", 1);
    text("GS_TYPE", "SECONDS"), text("VERSION", "BENCH"), text("SYSTEM_F", "A");
    text("SYSTEM_T", "B"), number("MAJOR_F", kWgs84A), number("MINOR_F", 6356752.3142);
    number("MAJOR_T", kWgs84A), number("MINOR_T", 6356752.3142);
    text("SUB_NAME", "ALL"), text("PARENT", "NONE"), text("CREATED", ""), text("UPDATED", "");
    number("S_LAT", kSouth), number("N_LAT", kSouth + (kRows - 1) * kLatStep);
    number("E_LONG", kEast), number("W_LONG", kEast + (kColumns - 1) * kLonStep);
    number("LAT_INC", kLatStep), number("LONG_INC", kLonStep);
    number("GS_COUNT", kRows * kColumns);
    for (int i = 0; i < kRows; ++i)
      for (int j = 0; j < kColumns; ++j)
        for (const double value :
             {-5 + std::sin(0.1 * i + 0.2 * j), 5 + std::cos(0.2 * i), 0.0, 0.0})
          append(static_cast<float>(value));
    text("END", "");
    std::string path = Files().File("bench.gsb");
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }();
  return name.c_str();
}

const ShiftGrid& Grid() {
  static const auto grid = ReadNtv2File(GridFile());
  return *grid;
}

const Columns& InGrid() {
  static const Columns points = SpreadPoints({47.2 * kRadPerDeg, 5.8 * kRadPerDeg, 0.0},
                                             {55.1 * kRadPerDeg, 15.6 * kRadPerDeg, 500.0});
  return points;
}

/// A network of `side` by `side` vertices over 400 by 400 km, moved off their lattice.
TriangulationDefinition Network(std::uint32_t side) {
  TriangulationDefinition network;
  for (std::uint32_t i = 0; i < side; ++i)
    for (std::uint32_t j = 0; j < side; ++j) {
      const double step = 400000.0 / (side - 1);
      const bool rim = i == 0 || j == 0 || i == side - 1 || j == side - 1;
      const double off = rim ? 0 : 0.3 * step;
      const double n = 6700000 + i * step + off * std::sin(12.9898 * i + 78.233 * j);
      const double e = 3200000 + j * step + off * std::sin(39.346 * i + 11.135 * j);
      network.vertices.push_back(
          {n, e, n - 2800 + std::sin(0.3 * i), e - 3000000 + std::cos(0.2 * j), 0});
    }
  for (std::uint32_t i = 0; i + 1 < side; ++i)
    for (std::uint32_t j = 0; j + 1 < side; ++j) {
      const std::uint32_t a = i * side + j;
      network.triangles.push_back({a, a + 1, a + side});
      network.triangles.push_back({a + 1, a + side + 1, a + side});
    }
  return network;
}

constexpr std::uint32_t kFinland = 28, kNorway = 162;  // 1458 and 51,842 triangles

#ifdef GEOMATH_HAVE_PROJ
std::string NetworkFile(std::uint32_t side, const char* name) {
  const TriangulationDefinition network = Network(side);
  const std::string path = Files().File(name);
  std::ofstream file(path);
  file.precision(12);
  file << R"({"file_type":"triangulation_file","format_version":"1.0",)"
       << R"("transformed_components":["horizontal"],"vertices_columns":)"
       << R"(["source_x","source_y","target_x","target_y"],)"
       << R"("triangles_columns":["idx_vertex1","idx_vertex2","idx_vertex3"],"vertices":[)";
  const char* separator = "";
  for (const TriangulationVertex& v : network.vertices) {
    file << separator << '[' << v.east << ',' << v.north << ',' << v.targetEast << ','
         << v.targetNorth << ']';
    separator = ",";
  }
  file << R"(],"triangles":[)";
  separator = "";
  for (const auto& t : network.triangles) {
    file << separator << '[' << t[0] << ',' << t[1] << ',' << t[2] << ']';
    separator = ",";
  }
  file << "]}";
  return path;
}
#endif

const Triangulation& Finland() {
  static const auto network = Triangulation::Make(Network(kFinland));
  return *network;
}

const Columns& InNetwork(bool target) {
  static const Columns source = SpreadPoints({6700100, 3200100, 0}, {7099900, 3599900, 100});
  static const Columns shifted = [] {
    Columns points = source;
    Finland().ForwardBatch(points.first.data(), points.second.data(), points.third.data(),
                           kBenchPoints);
    return points;
  }();
  return target ? shifted : source;
}

void RegisterShift(const std::string& name, const CoordinateShift& shift, const Columns& points,
                   bool forward) {
  benchmark::RegisterBenchmark((name + "/scalar").c_str(), [&, forward](benchmark::State& state) {
    MeasureInPlace(state, points, [&](Columns& c) {
      for (std::size_t i = 0; i < kBenchPoints; ++i)
        forward ? shift.Forward(c.first[i], c.second[i], c.third[i])
                : shift.Inverse(c.first[i], c.second[i], c.third[i]);
    });
  });
  benchmark::RegisterBenchmark((name + "/batch").c_str(), [&, forward](benchmark::State& state) {
    MeasureInPlace(state, points, [&](Columns& c) {
      const auto convert =
          forward ? &CoordinateShift::ForwardBatch : &CoordinateShift::InverseBatch;
      (shift.*convert)(c.first.data(), c.second.data(), c.third.data(), kBenchPoints, 1, nullptr);
    });
  });
}

#ifdef GEOMATH_HAVE_PROJ
void RegisterProj(const std::string& name, const std::string& definition, const Columns& points,
                  PJ_DIRECTION direction) {
  benchmark::RegisterBenchmark((name + "/PROJ").c_str(), [=, &points](benchmark::State& state) {
    const ProjPeer peer(definition.c_str());
    if (!peer.Good()) return state.SkipWithError("PROJ does not take the file");
    MeasureInPlace(state, points, [&](Columns& c) {
      peer.Convert(direction, c.second.data(), c.first.data(), c.third.data(), kBenchPoints);
    });
  });
}
#endif

/// The Dutch definition (RDNAPTRANS2018, variant 1) with the grid of this program in the place of the
/// Dutch one: the datum at a height of 43 m, the corrections, the double stereographic projection.
class DutchChain {
 public:
  DutchChain()
      : global_(MakeEllipsoid(6378137, 298.257222101)),
        local_(MakeEllipsoid(6377397.155, 299.1528128)),
        datum_(global_,
               Datum(&local_, 565.7381, 50.4018, 465.2904, 0.395026, -0.330772, 1.876074,
                     4.07244e-6, userTypeUser, nullptr),
               43),
        projection_(local_.a, local_.invF, 52.1561605555556 * kRadPerDeg,
                    5.38763888888889 * kRadPerDeg, 0.9999079, 155000, 463000),
        chain_(&global_, nullptr, &projection_) {
    chain_.AddShift(ShiftPlace::beforeDatum, {&datum_});
    chain_.AddShift(ShiftPlace::afterDatum, {&Grid(), ShiftDirection::inverse});
  }
  DutchChain(const DutchChain&) = delete;
  DutchChain& operator=(const DutchChain&) = delete;

  const CoordinateChain& Chain() const { return chain_; }
  static std::string OfProj() {
    return std::string(
               "+proj=pipeline +step +proj=push +v_3 +step +proj=set +v_3=43 "
               "+step +proj=cart +ellps=GRS80 +step +inv +proj=helmert +x=565.7381 +y=50.4018 "
               "+z=465.2904 +rx=0.395026 +ry=-0.330772 +rz=1.876074 +s=4.07244 +exact "
               "+convention=coordinate_frame +step +inv +proj=cart +ellps=bessel "
               "+step +proj=pop +v_3 +step +inv +proj=hgridshift +grids=") +
           GridFile() +
           " +step +proj=sterea +lat_0=52.1561605555556 +lon_0=5.38763888888889 +k=0.9999079 "
           "+x_0=155000 +y_0=463000 +ellps=bessel";
  }

 private:
  Ellipsoid global_, local_;
  FixedHeightDatum datum_;
  TDoubleSter projection_;
  CoordinateChain chain_;
};

const Columns& InNetherlands() {
  static const Columns points = SpreadPoints({50.8 * kRadPerDeg, 5.8 * kRadPerDeg, 0.0},
                                             {53.4 * kRadPerDeg, 7.2 * kRadPerDeg, 100.0});
  return points;
}

void RegisterDutchChain() {
  benchmark::RegisterBenchmark("Dutch chain/batch", [](benchmark::State& state) {
    static const DutchChain dutch;
    MeasureInPlace(state, InNetherlands(), [](Columns& c) {
      dutch.Chain().ToLocalBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
    });
  });
#ifdef GEOMATH_HAVE_PROJ
  RegisterProj("Dutch chain", DutchChain::OfProj(), InNetherlands(), PJ_FWD);
#endif
}

std::shared_ptr<CoordinateChain> ChainOf(const CoordinateShift& shift, ShiftPlace place) {
  static const Ellipsoid grs80 = MakeEllipsoid(6378137, 298.257222101);
  static const TTMProj plane(grs80.a, grs80.invF, 27 * kRadPerDeg, 1, 0, 3500000, 0);
  const bool inPlane = place == ShiftPlace::afterProjection;
  const auto chain = std::make_shared<CoordinateChain>(&grs80, nullptr, inPlane ? &plane : nullptr);
  chain->AddShift(place, {&shift});
  return chain;
}

void RegisterSigma() {
  static const Ellipsoid bessel = MakeEllipsoid(6377397.155, 299.1528128);
  static const SmallAngleSimilarity similarity({10, 20, -30}, {1, -2, 3}, 2e-6,
                                               RotationSense::positionVector);
  static const VerticalSlope slope(bessel, {51 * kRadPerDeg, 10 * kRadPerDeg, 0.3, 1e-5, -2e-5});
  static const AffineTransformation affine({12, 1.0001, 2e-4, -3, 1e-4, 0.9998});
  using enum ShiftPlace;
  RegisterCovariances("shift grid", ChainOf(Grid(), beforeDatum), InGrid());
  RegisterCovariances("similarity", ChainOf(similarity, beforeDatum), InGrid());
  RegisterCovariances("vertical slope", ChainOf(slope, heights), InGrid());
  RegisterCovariances("affine", ChainOf(affine, afterProjection), InGrid());
  Columns inFinland = InNetwork(false);
  for (std::size_t i = 0; i < kBenchPoints; ++i) {
    inFinland.first[i] = (60.5 + (inFinland.first[i] - 6700000) / 111000) * kRadPerDeg;
    inFinland.second[i] = (22.5 + (inFinland.second[i] - 3200000) / 55000) * kRadPerDeg;
  }
  RegisterCovariances("triangulation", ChainOf(Finland(), afterProjection), inFinland);
  static const DutchChain dutch;
  RegisterCovariances("Dutch chain", std::make_shared<CoordinateChain>(dutch.Chain()),
                      InNetherlands());
}

void RegisterLoading() {
#if defined(GEOMATH_HAVE_PROJ) && defined(GEOMATH_HAVE_FILES)
  benchmark::RegisterBenchmark("load 51,842 triangles/batch", [](benchmark::State& state) {
    const std::string file = NetworkFile(kNorway, "norway.json");
    const geomath_files::ShiftChoice choice{file, "", {}, ShiftSpace::plane};
    for (auto _ : state) {  // from the file each time, as OpenShift would not
      const auto bytes = geomath_files::ReadShiftBytes(file);
      benchmark::DoNotOptimize(geomath_files::ParseShift(bytes, choice));
    }
    state.SetItemsProcessed(state.iterations());
  });
  // PROJ reads its file at the first point.
  benchmark::RegisterBenchmark("load 51,842 triangles/PROJ", [](benchmark::State& state) {
    const std::string definition = "+proj=tinshift +file=" + NetworkFile(kNorway, "norway.json");
    double x = 3300000, y = 6800000, z = 0;
    for (auto _ : state) {
      const ProjPeer peer(definition.c_str());
      peer.Convert(PJ_FWD, &x, &y, &z, 1);
      x = 3300000;
      y = 6800000;
    }
    state.SetItemsProcessed(state.iterations());
  });
#endif
  benchmark::RegisterBenchmark("set up 51,842 triangles/batch", [](benchmark::State& state) {
    const TriangulationDefinition network = Network(kNorway);
    for (auto _ : state) benchmark::DoNotOptimize(Triangulation::Make(network));
    state.SetItemsProcessed(state.iterations());
  });
}

[[maybe_unused]] const bool registered = [] {
  RegisterCopy("copy of triples/batch", InGrid());
  RegisterShift("shift grid forward", Grid(), InGrid(), true);
  RegisterShift("shift grid inverse", Grid(), InGrid(), false);
  RegisterShift("triangulation forward", Finland(), InNetwork(false), true);
  RegisterShift("triangulation inverse", Finland(), InNetwork(true), false);
#ifdef GEOMATH_HAVE_PROJ
  const std::string grid = std::string("+proj=hgridshift +grids=") + GridFile();
  const std::string network = "+proj=tinshift +file=" + NetworkFile(kFinland, "finland.json");
  RegisterProj("shift grid forward", grid, InGrid(), PJ_FWD);
  RegisterProj("shift grid inverse", grid, InGrid(), PJ_INV);
  RegisterProj("triangulation forward", network, InNetwork(false), PJ_FWD);
  RegisterProj("triangulation inverse", network, InNetwork(true), PJ_INV);
#endif
  RegisterDutchChain();
  RegisterSigma();
  RegisterLoading();
  return true;
}();

}  // namespace
