// What must be done before the first point: making a projection, a chain, a chain from a system file,
// beside what PROJ does for the same definition in a context that is there already. A "point" of the
// table is one object, made and given back.
#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <string>

#include "bench/peers.h"
#include "geomath/geomath.h"

#ifdef GEOMATH_HAVE_FILES
#include <filesystem>
#include <fstream>

#include "files/system/system_file.h"
#endif

namespace {

using namespace zel_cs::geomath;

constexpr double kAiryA = 6377563.396, kAiryInvF = 299.3249646;

// Measures `make()`, whose result goes out of scope.
template <class Make>
void Register(const std::string& name, Make make) {
  benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State& state) {
    for (auto _ : state) {
      auto made = make();
      benchmark::DoNotOptimize(&made);
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
  });
}

#ifdef GEOMATH_HAVE_PROJ
void RegisterProj(const std::string& row, const std::string& definition) {
  static PJ_CONTEXT* const context = proj_context_create();
  Register(row + "/PROJ", [definition] {
    return std::unique_ptr<PJ, PJ* (*)(PJ*)>(proj_create(context, definition.c_str()),
                                             proj_destroy);
  });
}
#else
void RegisterProj(const std::string&, const std::string&) {}
#endif

void RegisterProjections() {
  const auto tm = [] {
    return TTMProj(kAiryA, kAiryInvF, -2 * kRadPerDeg, 0.9996012717, 49 * kRadPerDeg, 400000,
                   -100000);
  };
  Register("making transverse mercator/scalar", tm);
  RegisterProj("making transverse mercator",
               "+proj=tmerc +approx +lat_0=49 +lon_0=-2 +k_0=0.9996012717 +x_0=400000 +y_0=-100000 "
               "+a=6377563.396 +rf=299.3249646");
  Register("making lambert/scalar", [] {
    return TLCProj(kWgs84A, kWgs84InvF, 44 * kRadPerDeg, 49 * kRadPerDeg, 3 * kRadPerDeg,
                   46.5 * kRadPerDeg, 700000, 6600000, 1);
  });
  RegisterProj("making lambert",
               "+proj=lcc +lat_0=46.5 +lon_0=3 +lat_1=44 +lat_2=49 +x_0=700000 +y_0=6600000 "
               "+ellps=WGS84");
  Register("making oblique mercator/scalar", [] {
    return TOMercatorProj(kWgs84A, kWgs84InvF, 53.3 * kRadPerDeg, 0.99984, 115 * kRadPerDeg,
                          4 * kRadPerDeg, 0, 0);
  });
  RegisterProj("making oblique mercator",
               "+proj=omerc +lat_0=4 +lonc=115 +alpha=53.3 +gamma=53.3 +k_0=0.99984 +ellps=WGS84");
  Register("making krovak/scalar", [] { return TKrovakProj(); });
  RegisterProj("making krovak", "+proj=krovak +lat_0=49.5 +lon_0=24.8333333333333 +k=0.9999");
  // As a host does that reads names and numbers.
  Register("lambert by name/scalar", [] {
    std::unique_ptr<TGeoProj> projection(_GetProjByName(L"LC", kWgs84A, kWgs84InvF));
    projection->SetParams(std::array{44.0, 49.0, 3.0, 46.5, 700000.0, 6600000.0, 1.0},
                          kUnitDegrees);
    return projection;
  });
  RegisterProj("lambert by name",
               "+proj=lcc +lat_0=46.5 +lon_0=3 +lat_1=44 +lat_2=49 +x_0=700000 +y_0=6600000 "
               "+ellps=WGS84");
}

constexpr const char* kPipeline =
    "+proj=pipeline +step +proj=cart +ellps=WGS84 +step +proj=helmert +x=-446.448 +y=125.157 "
    "+z=-542.060 +rx=-0.1502 +ry=-0.2470 +rz=-0.8421 +s=20.4894 +convention=position_vector "
    "+step +inv +proj=cart +a=6377563.396 +rf=299.3249646 +step +proj=tmerc +approx +lat_0=49 "
    "+lon_0=-2 +k_0=0.9996012717 +x_0=400000 +y_0=-100000 +a=6377563.396 +rf=299.3249646";

// A chain and what it points to.
struct NationalGrid {
  Ellipsoid global = MakeEllipsoid(kWgs84A, kWgs84InvF), airy = MakeEllipsoid(kAiryA, kAiryInvF);
  Datum datum{&airy,   446.448, -125.157,    542.060,         -0.1502,
              -0.2470, -0.8421, -20.4894e-6, userTypeLibrary, nullptr};
  TTMProj grid{kAiryA, kAiryInvF, -2 * kRadPerDeg, 0.9996012717, 49 * kRadPerDeg, 400000, -100000};
  CoordinateChain chain{&global, &datum, &grid};
};

#ifdef GEOMATH_HAVE_FILES
const std::string& SystemText() {
  static const std::string text = R"({
  "name": "OSGB36 / British National Grid, by seven parameters",
  "global": {"ellipsoid": "WGS84"},
  "local": {"ellipsoid": "Airy 1830"},
  "datum": {"dX": 446.448, "dY": -125.157, "dZ": 542.060,
            "rX": -0.1502, "rY": -0.2470, "rZ": -0.8421, "ppm": -20.4894},
  "projection": {"name": "TM", "Central Meridian": -2, "Scale": 0.9996012717, "Lat0": 49,
                 "East0": 400000, "North0": -100000}
})";
  return text;
}

const std::string& SystemPath() {
  static const struct File {
    std::string path =
        (std::filesystem::temp_directory_path() / "geomath_setup_bench.json").string();
    File() { std::ofstream(path) << SystemText(); }
    ~File() { std::filesystem::remove(path); }
  } file;
  return file.path;
}
#endif

const bool registered = [] {
  RegisterProjections();
  Register("making a chain/scalar", [] { return std::make_unique<NationalGrid>(); });
  RegisterProj("making a chain", kPipeline);
#ifdef GEOMATH_HAVE_FILES
  Register("chain from the text of a system/scalar",
           [] { return geomath_files::ParseSystem(SystemText(), "bench"); });
  RegisterProj("chain from the text of a system", kPipeline);
  Register("chain from a system file/scalar",
           [] { return geomath_files::ReadSystemFile(SystemPath()); });
  RegisterProj("chain from a system file", kPipeline);
#endif
  return true;
}();

}  // namespace
